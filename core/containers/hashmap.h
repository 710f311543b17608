// THashMap<K, V>: a map of unique keys. What it has in common with TMultiHashMap and THashSet, and how it works, is
// told in hashtable.h; here stands how elements get in.
#pragma once

#include "core/containers/hashpolicy.h"
#include "core/containers/hashtable.h"

#include <initializer_list>

// The element is a TKeyValuePair<K, V>. For TPolicy see hashpolicy.h.
template <class K, class V, class TPolicy = TDefaultHashMapPolicy<K, V>>
class THashMap : public kx::detail::THashTable<kx::detail::SHashMapFields<K, V>, TPolicy, false>
{
public:
    THashMap() = default;

    // As by Insert, one after the other.
    THashMap(std::initializer_list<TKeyValuePair<K, V>> pairs)
    {
        for (const TKeyValuePair<K, V>& pair : pairs)
            Insert(pair.Key(), pair.Value());
    }

    // Copies key and value into a new element at the head of its bucket, or copy-assigns the value of the element that
    // has the key, whose own key stays. The result is the element either way. Constant on average; a full table grows
    // first, if the key is new. Key and value may lie in elements of this container.
    typename THashMap::iterator Insert(const K& key, const V& value) { return this->InsertElement(key, value); }
};
