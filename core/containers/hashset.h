// THashSet<K>: a set of unique keys. What it has in common with THashMap and TMultiHashMap, and how it works, is told
// in hashtable.h; here stands how keys get in.
#pragma once

#include "core/containers/hashpolicy.h"
#include "core/containers/hashtable.h"

#include <initializer_list>

// The element is the key itself, and cannot be changed in place. For TPolicy see hashpolicy.h.
//
// A derived class that holds on to iterators may set m_bNoRehash: a rehash, by growth too, then takes the debug break.
template <class K, class TPolicy = TDefaultHashSetPolicy<K>>
class THashSet : public kx::detail::THashTable<kx::detail::SHashSetFields<K>, TPolicy, false>
{
public:
    THashSet() = default;

    // As by Insert, one after the other.
    THashSet(std::initializer_list<K> keys)
    {
        for (const K& key : keys)
            Insert(key);
    }

    // Copies the key into a new element at the head of its bucket; if it is there already, nothing happens. The result
    // is the element of the key either way. Constant on average; a full table grows first, if the key is new. The key
    // may lie in an element of this container.
    typename THashSet::iterator Insert(const K& key) { return this->InsertElement(key); }
};
