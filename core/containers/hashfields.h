// The parts of the hash containers: the node of an element, and the fields of the containers.
#pragma once

#include "core/containers/keyvaluepair.h"
#include "core/platform/platform.h"

namespace kx::detail
{
/// No index: the end of a chain or of the free list, or an empty bucket.
inline constexpr uint32 kHashNone = 0xFFFFFFFF;

/// An element and the index of the node after it. A free node has a next index, but no element.
template <class TElement>
struct SHashNode
{
    uint32 m_nNext;
    TElement m_element;
};

/// The fields of the maps. From m_nBucketCount on, they are the table, which iterators point at.
template <class K, class V>
struct SHashMapFields
{
    using TKey = K;
    using TElement = TKeyValuePair<K, V>;
    using TMapped = V;

    static const K& KeyOf(const TElement& element) { return element.Key(); }
    bool MayRehash() const { return true; }

    uint32 m_nSize = 0;
    uint32 m_nFreeHead = kHashNone;
    uint32 m_nBucketCount = 0;
    uint32* m_pBuckets = nullptr;
    SHashNode<TElement>* m_pNodes = nullptr;
};

/// The fields of the set.
/// The flag at the start takes the place of the padding that the maps have before m_pBuckets. A separate struct for the
/// table would bring that padding back.
template <class K>
struct SHashSetFields
{
    using TKey = K;
    using TElement = const K;
    using TMapped = void;

    static const K& KeyOf(const K& key) { return key; }
    bool MayRehash() const { return !m_bNoRehash; }

    bool m_bNoRehash = false;
    uint32 m_nSize = 0;
    uint32 m_nFreeHead = kHashNone;
    uint32 m_nBucketCount = 0;
    uint32* m_pBuckets = nullptr;
    SHashNode<K>* m_pNodes = nullptr;
};
} // namespace kx::detail
