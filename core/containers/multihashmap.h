// TMultiHashMap<K, V>: a map in which keys may repeat. hashtable.h documents how it works and what it shares with
// THashMap and THashSet; this file documents insertion.
#pragma once

#include "core/containers/hashpolicy.h"
#include "core/containers/hashtable.h"

#include <initializer_list>

/// A hash map in which keys may repeat.
/// The element is a TKeyValuePair of K and V. For TPolicy see hashpolicy.h.
///
/// Elements with the same key are adjacent in iteration order: the oldest comes first, then the others, newest first. A
/// rehash reverses their order. Find returns the first of them in the current order.
template <class K, class V, class TPolicy = TDefaultHashMapPolicy<K, V>>
class TMultiHashMap : public kx::detail::THashTable<kx::detail::SHashMapFields<K, V>, TPolicy, true>
{
public:
    /// Creates an empty map. Makes no allocator call.
    TMultiHashMap() = default;

    /// Inserts the pairs in order, as by Insert.
    TMultiHashMap(std::initializer_list<TKeyValuePair<K, V>> pairs)
    {
        for (const TKeyValuePair<K, V>& pair : pairs)
            Insert(pair.Key(), pair.Value());
    }

    /// Inserts copies of key and value as a new element and returns an iterator to it.
    /// The element goes directly after the first one with an equal key, or to the end of its bucket if there is none.
    /// Constant on average, however often the key exists; a full table grows first. Key and value may be stored in
    /// elements of this container.
    typename TMultiHashMap::iterator Insert(const K& key, const V& value) { return this->InsertElement(key, value); }
    typename TMultiHashMap::iterator Insert(const TKeyValuePair<K, V>& pair)
    {
        return Insert(pair.Key(), pair.Value());
    }

    /// Inserts the key with a value that is constructed from the other arguments, and returns an iterator to the
    /// element. The element takes the place that Insert gives it, and no copy or move but those asked for, apart from
    /// growth. The arguments may be stored in elements of this container.
    template <class... TArgs>
    typename TMultiHashMap::iterator Emplace(const K& key, TArgs&&... args)
    {
        return this->EmplaceNew(this->HashOf(key), key, std::forward<TArgs>(args)...);
    }
    template <class... TArgs>
    typename TMultiHashMap::iterator Emplace(K&& key, TArgs&&... args)
    {
        return this->EmplaceNew(this->HashOf(key), std::move(key), std::forward<TArgs>(args)...);
    }
    template <kx::detail::CHashesAs<K, TPolicy> TOther, class... TArgs>
    typename TMultiHashMap::iterator Emplace(const TOther& key, TArgs&&... args)
    {
        return this->EmplaceNew(this->HashOf(key), key, std::forward<TArgs>(args)...);
    }
};
