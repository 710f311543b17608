// THashMap<K, V>: a map of unique keys. hashtable.h documents how it works and what it shares with TMultiHashMap and
// THashSet; this file documents insertion.
#pragma once

#include "core/containers/hashpolicy.h"
#include "core/containers/hashtable.h"

#include <concepts>
#include <initializer_list>

/// A hash map of unique keys.
/// The element is a TKeyValuePair of K and V. For TPolicy see hashpolicy.h.
template <class K, class V, class TPolicy = TDefaultHashMapPolicy<K, V>>
class THashMap : public kx::detail::THashTable<kx::detail::SHashMapFields<K, V>, TPolicy, false>
{
public:
    /// Creates an empty map. Makes no allocator call.
    THashMap() = default;

    /// Inserts the pairs in order, as by Insert.
    THashMap(std::initializer_list<TKeyValuePair<K, V>> pairs)
    {
        for (const TKeyValuePair<K, V>& pair : pairs)
            Insert(pair.Key(), pair.Value());
    }

    /// Inserts copies, or copy-assigns the value of an existing key; returns an iterator to the element.
    /// A new element goes to the head of its bucket. An existing element keeps its key. Constant on average; if the key
    /// is new and the table is full, the table grows first. Key and value may be stored in elements of this container.
    typename THashMap::iterator Insert(const K& key, const V& value) { return this->InsertElement(key, value); }
    typename THashMap::iterator Insert(const TKeyValuePair<K, V>& pair) { return Insert(pair.Key(), pair.Value()); }

    /// Inserts the key with a value that is constructed from the other arguments, unless the key exists; says which.
    /// An existing element is left unchanged, and nothing is moved from. Constant on average. A new element takes no
    /// copy or move but those asked for, apart from growth. The arguments may be stored in elements of this container.
    /// An argument that the policy accepts instead of a key becomes a key only if it is new.
    template <class... TArgs>
    TEmplaced<typename THashMap::iterator> Emplace(const K& key, TArgs&&... args)
    {
        return this->EmplaceUnlessFound(key, key, std::forward<TArgs>(args)...);
    }
    template <class... TArgs>
    TEmplaced<typename THashMap::iterator> Emplace(K&& key, TArgs&&... args)
    {
        return this->EmplaceUnlessFound(key, std::move(key), std::forward<TArgs>(args)...);
    }
    template <kx::detail::CHashesAs<K, TPolicy> TOther, class... TArgs>
    TEmplaced<typename THashMap::iterator> Emplace(const TOther& key, TArgs&&... args)
    {
        return this->EmplaceUnlessFound(key, key, std::forward<TArgs>(args)...);
    }

    /// Returns the value of the key; inserts V() as its value if the key is missing.
    /// So reading through this operator changes the map. Constant on average. A new value is constructed in place.
    template <std::default_initializable U = V>
    V& operator[](const K& key) KX_LIFETIMEBOUND
    {
        return Emplace(key).m_pos->Value();
    }

    /// Returns the value of the key. Constant on average.
    /// A missing key triggers the debug break; if execution resumes, the result is a null reference.
    const V& operator[](const K& key) const KX_LIFETIMEBOUND
    {
        const V* pValue = this->TryGet(key);
        return pValue != nullptr ? *pValue : kx::detail::BreakForMissingKey<V>();
    }

    /// Returns the value of the key, or defaultValue if the key is missing. Constant on average.
    /// For a missing key, the result refers to defaultValue itself, which may be a temporary of the caller.
    [[nodiscard]] const V& GetValue(const K& key, const V& defaultValue KX_LIFETIMEBOUND) const KX_LIFETIMEBOUND
    {
        const V* pValue = this->TryGet(key);
        return pValue != nullptr ? *pValue : defaultValue;
    }
    template <kx::detail::CHashesAs<K, TPolicy> TOther>
    [[nodiscard]] const V& GetValue(const TOther& key, const V& defaultValue KX_LIFETIMEBOUND) const KX_LIFETIMEBOUND
    {
        const V* pValue = this->TryGet(key);
        return pValue != nullptr ? *pValue : defaultValue;
    }
};
