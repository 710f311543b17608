// Iterators and enumerators of the hash containers.
#pragma once

#include "core/containers/hashfields.h"
#include "core/containers/iteratorchecks.h"

#include <cstddef>
#include <type_traits>

namespace kx::detail
{
/// Returns the node of an element.
template <class TElement>
auto* HashNodeOf(TElement* pElement)
{
    using TNode = SHashNode<std::remove_const_t<TElement>>;
    constexpr std::uintptr_t kDistance = alignof(TNode); // set by the index or by the element after it
    return reinterpret_cast<TNode*>(detail::AddressOf(pElement) - kDistance);
}

/// Finds the first element in a bucket after nBucket and advances nBucket to it.
/// Returns null and sets nBucket to the bucket count if there is none. kHashNone starts at bucket 0.
template <class TFields>
typename TFields::TElement* NextInBuckets(const TFields& fields, uint32& nBucket)
{
    // The index is 64 bits wide in the loop, because handling 32-bit wrap-around at each step costs a tenth of the
    // iteration time.
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

/// Returns the element after pCurrent in iteration order: the next in its chain, or else the first in a bucket after
/// nBucket.
template <class TFields, class TElement>
TElement* NextElement(const TFields& fields, TElement* pCurrent, uint32& nBucket)
{
    const uint32 nNext = detail::HashNodeOf(pCurrent)->m_nNext;
    return nNext != kHashNone ? detail::PointerTo(fields.m_pNodes[nNext].m_element)
                              : detail::NextInBuckets(fields, nBucket);
}

/// Returns the container whose table starts at pTable.
template <class TFields>
const TFields& FieldsOf(const uint32* pTable)
{
    return *reinterpret_cast<const TFields*>(detail::AddressOf(pTable) - offsetof(TFields, m_nBucketCount));
}

/// A forward iterator over a hash container.
/// TElement is const for read-only access, and always in a set.
template <class TFields, class TElement>
class THashIterator
{
public:
    using value_type = std::remove_const_t<TElement>;
    using difference_type = std::ptrdiff_t;

    /// Creates an iterator that equals every End().
    THashIterator() = default;

    THashIterator(TElement* pCurrent, const uint32* pTable, uint32 nBucket)
        : m_pCurrent(pCurrent), m_pTable(pTable), m_nBucket(nBucket)
    {
    }

    /// Converts to the read-only form, never back.
    operator THashIterator<TFields, const TElement>() const requires(!std::is_const_v<TElement>)
    {
        return {m_pCurrent, m_pTable, m_nBucket};
    }

    [[nodiscard]] KX_CHECK_INLINE TElement& operator*() const { return *operator->(); }
    [[nodiscard]] KX_CHECK_INLINE TElement* operator->() const
    {
        KX_BREAK_IF_AT_END(m_pCurrent == nullptr);
        return m_pCurrent;
    }

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

    /// Compares the element alone, because the bucket of an end position varies.
    /// It is the bucket count after the last step, and kHashNone in End().
    [[nodiscard]] friend bool operator==(const THashIterator& first, const THashIterator& second)
    {
        return first.m_pCurrent == second.m_pCurrent;
    }

private:
    TElement* m_pCurrent = nullptr;
    const uint32* m_pTable = nullptr;
    uint32 m_nBucket = kHashNone;
};

/// Enumerates a hash container, starting before the first element; TElement as in THashIterator.
template <class TFields, class TElement>
class THashEnumerator
{
public:
    explicit THashEnumerator(const uint32* pTable) : m_pTable(pTable) {}

    /// Advances to the next element; returns false if there is none.
    bool MoveNext()
    {
        const TFields& fields = detail::FieldsOf<TFields>(m_pTable);
        m_pCurrent = m_pCurrent != nullptr ? detail::NextElement(fields, m_pCurrent, m_nBucket)
                                           : detail::NextInBuckets(fields, m_nBucket);
        return m_pCurrent != m_pEnd;
    }

    /// Returns the current element; triggers the debug break if there is none.
    [[nodiscard]] TElement& Current() const
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
