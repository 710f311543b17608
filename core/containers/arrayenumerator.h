// The enumerator of the contiguous containers.
#pragma once

#include "core/platform/platform.h"

// Walks the elements [pBegin, pEnd). T is const for a read-only walk. Any operation that invalidates the container's
// iterators invalidates its enumerators.
//
// A fresh enumerator stands one element before the first, where no pointer may be formed by pointer arithmetic (an
// empty array may begin at null), so the position is stepped as a number.
template <class T>
class TArrayEnumerator
{
public:
    TArrayEnumerator(T* pBegin, T* pEnd) : m_pCurrent(Step(pBegin, 0 - sizeof(T))), m_pEnd(pEnd) {}

    // Advances; true exactly when the enumerator then stands on an element. Must not be called again after false.
    bool MoveNext()
    {
        m_pCurrent = Step(m_pCurrent, sizeof(T));
        return m_pCurrent != m_pEnd;
    }

    // The element it stands on. Takes the debug break behind the last element; must not be called before MoveNext().
    T& Current() const
    {
        kx::detail::BreakUnless(m_pCurrent != m_pEnd);
        return *m_pCurrent;
    }

private:
    static T* Step(T* pElement, std::uintptr_t nBytes)
    {
        return reinterpret_cast<T*>(kx::detail::AddressOf(pElement) + nBytes);
    }

    T* m_pCurrent;
    T* m_pEnd;
};
