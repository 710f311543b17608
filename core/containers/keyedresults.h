// What the operations of the keyed containers return beyond an iterator.
#pragma once

#include "core/platform/platform.h"

/// The result of an insertion that leaves an existing element as it is.
/// Works with structured bindings: `const auto [pos, bNew] = map.Emplace(key, value);`.
template <class TIterator>
struct TEmplaced
{
    /// The element with the key, and whether it was inserted by this call.
    TIterator m_pos;
    bool m_bNew;
};

namespace kx::detail
{
/// Triggers the debug break of a read-only access by a key that is missing. If execution resumes, the result is a null
/// reference.
template <class V>
const V& BreakForMissingKey()
{
    BreakUnless(false);
    // Read from a volatile, so that the compiler does not see that the reference is null.
    const V* volatile pNone = nullptr;
    return *pNone;
}
} // namespace kx::detail

/// The elements of [Begin(), End()), for a range-based for.
template <class TIterator>
class TIteratorRange
{
public:
    TIteratorRange(TIterator first, TIterator last) : m_first(first), m_last(last) {}

    [[nodiscard]] TIterator Begin() const { return m_first; }
    [[nodiscard]] TIterator End() const { return m_last; }
    [[nodiscard]] TIterator begin() const { return m_first; }
    [[nodiscard]] TIterator end() const { return m_last; }
    [[nodiscard]] bool IsEmpty() const { return m_first == m_last; }

    /// Returns the number of elements. Linear.
    [[nodiscard]] uint32 Count() const
    {
        uint32 nCount = 0;
        for (TIterator pos = m_first; pos != m_last; ++pos)
            ++nCount;
        return nCount;
    }

private:
    TIterator m_first;
    TIterator m_last;
};
