// THashSet<K>: a set of unique keys. hashtable.h documents how it works and what it shares with THashMap and
// TMultiHashMap; this file documents insertion.
#pragma once

#include "core/containers/hashpolicy.h"
#include "core/containers/hashtable.h"

#include <initializer_list>

/// A hash set of unique keys.
/// The element is the key itself and cannot be changed in place. For TPolicy see hashpolicy.h.
///
/// A derived class that keeps iterators may set m_bNoRehash. Any rehash, including growth, then triggers the debug
/// break.
template <class K, class TPolicy = TDefaultHashSetPolicy<K>>
class THashSet : public kx::detail::THashTable<kx::detail::SHashSetFields<K>, TPolicy, false>
{
public:
    /// Creates an empty set. Makes no allocator call.
    THashSet() = default;

    /// Inserts the keys in order, as by Insert.
    THashSet(std::initializer_list<K> keys)
    {
        for (const K& key : keys)
            Insert(key);
    }

    /// Inserts a copy of the key unless it exists; returns an iterator to the element of the key.
    /// A new element goes to the head of its bucket. Constant on average; if the key is new and the table is full, the
    /// table grows first. The key may be stored in an element of this container.
    typename THashSet::iterator Insert(const K& key) { return this->InsertElement(key); }

    /// Inserts a key that is constructed from the arguments unless it exists; says which. Constant on average.
    /// A key itself, or an argument that the policy accepts instead of one, is copied, moved or converted only if it is
    /// new. Of other arguments, a key is made first and moved in. They may be stored in elements of this container.
    TEmplaced<typename THashSet::iterator> Emplace(const K& key) { return this->EmplaceUnlessFound(key, key); }
    TEmplaced<typename THashSet::iterator> Emplace(K&& key) { return this->EmplaceUnlessFound(key, std::move(key)); }
    template <kx::detail::CHashesAs<K, TPolicy> TOther>
    TEmplaced<typename THashSet::iterator> Emplace(const TOther& key)
    {
        return this->EmplaceUnlessFound(key, key);
    }
    template <class... TArgs>
    TEmplaced<typename THashSet::iterator> Emplace(TArgs&&... args) requires(
        !kx::detail::COneThatConverts<K, TArgs...> && !kx::detail::COneThatHashes<K, TPolicy, TArgs...>)
    {
        return Emplace(kx::detail::MakeElement<K>(std::forward<TArgs>(args)...));
    }
};
