// TMultiHashMap<K, V>: a map in which keys may repeat. What it has in common with THashMap and THashSet, and how it
// works, is told in hashtable.h; here stands how elements get in.
#pragma once

#include "core/containers/hashpolicy.h"
#include "core/containers/hashtable.h"

#include <initializer_list>

// The element is a TKeyValuePair<K, V>. For TPolicy see hashpolicy.h.
//
// The elements of a key stand together in a walk: the one that was inserted first, then the others, newest first. A
// rehash reverses their order. Find gives the first one of them as they stand.
template <class K, class V, class TPolicy = TDefaultHashMapPolicy<K, V>>
class TMultiHashMap : public kx::detail::THashTable<kx::detail::SHashMapFields<K, V>, TPolicy, true>
{
public:
    TMultiHashMap() = default;

    // As by Insert, one after the other.
    TMultiHashMap(std::initializer_list<TKeyValuePair<K, V>> pairs)
    {
        for (const TKeyValuePair<K, V>& pair : pairs)
            Insert(pair.Key(), pair.Value());
    }

    // Copies key and value into a new element directly behind the first one of an equal key, or at the end of its
    // bucket if there is none. Constant on average, however often the key is there; a full table grows first. Key and
    // value may lie in elements of this container.
    typename TMultiHashMap::iterator Insert(const K& key, const V& value) { return this->InsertElement(key, value); }
};
