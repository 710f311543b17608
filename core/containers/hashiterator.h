// The walk over a hash container.
#pragma once

#include "core/containers/hashfields.h"

#include <cstddef>
#include <type_traits>

namespace kx::detail
{
// The node of an element.
template <class TElement>
auto* HashNodeOf(TElement* pElement)
{
    using TNode = SHashNode<std::remove_const_t<TElement>>;
    constexpr std::uintptr_t kDistance = alignof(TNode); // whichever aligns it: the index, or the element behind it
    return reinterpret_cast<TNode*>(detail::AddressOf(pElement) - kDistance);
}

// The first element in the buckets behind nBucket, which moves there; null, and nBucket is the count, if there is none.
// Behind kHashNone all buckets lie.
template <class TFields>
typename TFields::TElement* NextInBuckets(const TFields& fields, uint32& nBucket)
{
    // The index is 64 bits wide while it runs: minding the wrap of 32 at each step costs a tenth of a walk's time.
    const uint64 nCount = fields.m_nBucketCount;
    for (uint64 i = nBucket + 1; i < nCount; ++i)
    {
        if (const uint32 nHead = fields.m_pBuckets[i]; nHead != kHashNone)
        {
            nBucket = static_cast<uint32>(i);
            return detail::PointerTo(fields.m_pNodes[nHead].m_element);
        }
    }
    nBucket = fields.m_nBucketCount;
    return nullptr;
}

// The element that follows pCurrent in the walk: in its chain, else in the buckets behind nBucket.
template <class TFields, class TElement>
TElement* NextElement(const TFields& fields, TElement* pCurrent, uint32& nBucket)
{
    const uint32 nNext = detail::HashNodeOf(pCurrent)->m_nNext;
    return nNext != kHashNone ? detail::PointerTo(fields.m_pNodes[nNext].m_element)
                              : detail::NextInBuckets(fields, nBucket);
}

// The container whose table starts at pTable.
template <class TFields>
const TFields& FieldsOf(const uint32* pTable)
{
    return *reinterpret_cast<const TFields*>(detail::AddressOf(pTable) - offsetof(TFields, m_nBucketCount));
}

// A forward iterator. TElement is const for a read-only walk, and always in a set.
template <class TFields, class TElement>
class THashIterator
{
public:
    using value_type = std::remove_const_t<TElement>;
    using difference_type = std::ptrdiff_t;

    // Equal to every End().
    THashIterator() = default;

    THashIterator(TElement* pCurrent, const uint32* pTable, uint32 nBucket)
        : m_pCurrent(pCurrent), m_pTable(pTable), m_nBucket(nBucket)
    {
    }

    operator THashIterator<TFields, const TElement>() const requires(!std::is_const_v<TElement>)
    {
        return {m_pCurrent, m_pTable, m_nBucket};
    }

    TElement& operator*() const { return *m_pCurrent; }
    TElement* operator->() const { return m_pCurrent; }

    THashIterator& operator++()
    {
        m_pCurrent = detail::NextElement(detail::FieldsOf<TFields>(m_pTable), m_pCurrent, m_nBucket);
        return *this;
    }

    THashIterator operator++(int)
    {
        THashIterator old = *this;
        ++*this;
        return old;
    }

    // By the element alone: at the end of a walk the bucket is the one behind the last, and in End() none.
    friend bool operator==(const THashIterator& first, const THashIterator& second)
    {
        return first.m_pCurrent == second.m_pCurrent;
    }

private:
    TElement* m_pCurrent = nullptr;
    const uint32* m_pTable = nullptr;
    uint32 m_nBucket = kHashNone;
};

// Stands before the first element. TElement as in THashIterator.
template <class TFields, class TElement>
class THashEnumerator
{
public:
    explicit THashEnumerator(const uint32* pTable) : m_pTable(pTable) {}

    // Advances; true exactly when the enumerator then stands on an element.
    bool MoveNext()
    {
        const TFields& fields = detail::FieldsOf<TFields>(m_pTable);
        m_pCurrent = m_pCurrent != nullptr ? detail::NextElement(fields, m_pCurrent, m_nBucket)
                                           : detail::NextInBuckets(fields, m_nBucket);
        return m_pCurrent != m_pEnd;
    }

    // The element it stands on. Takes the debug break where it stands on none.
    TElement& Current() const
    {
        detail::BreakUnless(m_pCurrent != m_pEnd);
        return *m_pCurrent;
    }

private:
    TElement* m_pCurrent = nullptr;
    TElement* m_pEnd = nullptr;
    const uint32* m_pTable;
    uint32 m_nBucket = kHashNone; // the first step wraps to bucket 0
};
} // namespace kx::detail
