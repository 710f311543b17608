// THashMap<K, V>: a map of unique keys. hashtable.h documents how it works and what it shares with TMultiHashMap and
// THashSet; this file documents insertion.
#pragma once

#include "core/containers/hashpolicy.h"
#include "core/containers/hashtable.h"

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
};
