// The enumerator of the contiguous containers.
#pragma once

#include "core/platform/platform.h"

/// Enumerates the elements [pBegin, pEnd); T is const for read-only access.
/// Any operation that invalidates the container's iterators invalidates its enumerators.
template <class T>
class TArrayEnumerator
{
public:
    TArrayEnumerator(T* pBegin, T* pEnd) : m_pCurrent(Step(pBegin, 0 - sizeof(T))), m_pEnd(pEnd) {}

    /// Advances to the next element; returns false if there is none.
    /// Must not be called again after it returned false.
    bool MoveNext()
    {
        m_pCurrent = Step(m_pCurrent, sizeof(T));
        return m_pCurrent != m_pEnd;
    }

    /// Returns the current element.
    /// Triggers the debug break past the last element. Must not be called before MoveNext().
    [[nodiscard]] T& Current() const
    {
        kx::detail::BreakUnless(m_pCurrent != m_pEnd);
        return *m_pCurrent;
    }

private:
    // A new enumerator is one element before the first. Pointer arithmetic must not form that address, because an empty
    // array may begin at null. So the position advances as an integer.
    static T* Step(T* pElement, std::uintptr_t nBytes)
    {
        return reinterpret_cast<T*>(kx::detail::AddressOf(pElement) + nBytes);
    }

    T* m_pCurrent;
    T* m_pEnd;
};
