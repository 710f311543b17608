// The primitive steps of an element's life, shared by the containers. Which special member function runs, in which
// order and how often, is part of every container's contract, so each step is written out once, here, and does exactly
// what it says: no memcpy stands in for an element's own operations.
#pragma once

#include "core/platform/platform.h"

#include <new>
#include <utility>

namespace detail
{
template <class T, class... TArgs>
T* ConstructAt(T* pStorage, TArgs&&... args)
{
    return ::new (static_cast<void*>(pStorage)) T(std::forward<TArgs>(args)...);
}

// Destroys [pFirst, pLast), the lowest first.
template <class T>
void DestroyRange(T* pFirst, T* pLast)
{
    for (; pFirst < pLast; ++pFirst)
        pFirst->~T();
}

// Copy-constructs [pFirst, pLast) into raw storage, the lowest first. The result is one behind the last copy.
//
// This and RelocateRange are kept out of line because inlining loses the promise that the ranges do not overlap, and
// with it the compiler's leave to turn the loop over a trivial T into a call of memmove: twice the time for 1000 ints.
template <class T>
KX_NOINLINE T* CopyRange(T* KX_RESTRICT pTo, const T* pFirst, const T* pLast)
{
    for (; pFirst != pLast; ++pFirst, ++pTo)
        ConstructAt(pTo, *pFirst);
    return pTo;
}

// Relocates [pFirst, pLast) into raw storage that does not overlap it, the lowest first: each element is
// move-constructed (copy-constructed where T has no move) and the old one destroyed at once, before the next one's
// turn. The result is one behind the last element.
template <class T>
KX_NOINLINE T* RelocateRange(T* KX_RESTRICT pTo, T* pFirst, T* pLast)
{
    for (; pFirst != pLast; ++pFirst, ++pTo)
    {
        ConstructAt(pTo, std::move(*pFirst));
        pFirst->~T();
    }
    return pTo;
}
} // namespace detail
