// The primitive steps of an element's life, shared by the containers.
//
// Which special member function runs, in which order and how often, is part of every container's contract. Each step is
// therefore written once, here, and does exactly what it says: no memcpy replaces an element's own operations.
//
// The operations that a container calls do not throw: constructors, assignments and destructors of elements, their
// comparisons, and hashes. An exception would find a container in the middle of a change, with elements that nobody
// destroys or that two would. So each step is noexcept here and in the containers, and an exception that leaves an
// element's operation ends the process by std::terminate.
#pragma once

#include "core/containers/inplace.h"
#include "core/platform/platform.h"

#include <new>
#include <type_traits>
#include <utility>

namespace kx::detail
{
/// Constructs an element from the arguments, which are the members of an aggregate; see MakeElement.
template <class T, class... TArgs>
T* ConstructAt(T* pStorage, TArgs&&... args) noexcept
{
    if constexpr (std::is_aggregate_v<T> && !std::is_constructible_v<T, TArgs...>)
        return ::new (static_cast<void*>(pStorage)) T{std::forward<TArgs>(args)...};
    else
        return ::new (static_cast<void*>(pStorage)) T(std::forward<TArgs>(args)...);
}

template <class T>
void DestroyAt(T* pElement) noexcept
{
    pElement->~T();
}

template <class T, class TValue>
void AssignTo(T& element, TValue&& value) noexcept
{
    element = std::forward<TValue>(value);
}

/// Destroys [pFirst, pLast) in ascending order.
template <class T>
void DestroyRange(T* pFirst, T* pLast) noexcept
{
    for (; pFirst < pLast; ++pFirst)
        pFirst->~T();
}

/// Copy-constructs [pFirst, pLast) into raw storage, in ascending order; returns the end of the copies.
///
/// This function and RelocateRange stay out of line because inlining loses the promise that the ranges do not overlap.
/// The compiler could then no longer turn the loop over a trivial T into a memmove: twice the time for 1000 ints.
template <class T>
KX_NOINLINE T* CopyRange(T* KX_RESTRICT pTo, const T* pFirst, const T* pLast) noexcept
{
    for (; pFirst != pLast; ++pFirst, ++pTo)
        detail::ConstructAt(pTo, *pFirst);
    return pTo;
}

/// Relocates [pFirst, pLast) into raw storage that does not overlap it, in ascending order; returns the end of the new
/// range. Each element is move-constructed (copy-constructed if T has no move) and the old one is destroyed before the
/// next one follows.
template <class T>
KX_NOINLINE T* RelocateRange(T* KX_RESTRICT pTo, T* pFirst, T* pLast) noexcept
{
    for (; pFirst != pLast; ++pFirst, ++pTo)
    {
        detail::ConstructAt(pTo, std::move(*pFirst));
        pFirst->~T();
    }
    return pTo;
}

/// Whether pos points at an element of the array [pBegin, pEnd): compared as numbers, since pos may be anything.
template <class T>
bool IsElement(const T* pos, const T* pBegin, const T* pEnd)
{
    const std::uintptr_t nPos = detail::AddressOf(pos);
    return nPos >= detail::AddressOf(pBegin) && nPos < detail::AddressOf(pEnd)
           && nPos + sizeof(T) <= detail::AddressOf(pEnd);
}

/// Whether an element can be inserted before pos: at an element of the array, or at its end.
template <class T>
bool IsInsertPosition(const T* pos, const T* pBegin, const T* pEnd)
{
    return detail::AddressOf(pos) >= detail::AddressOf(pBegin) && detail::AddressOf(pos) <= detail::AddressOf(pEnd);
}

/// Inserts the value before pos; there is raw storage for one more element at pEnd. TShift says how the other elements
/// move up: T moves them, const T& copies them.
///
/// The last element is constructed one place up, the others follow by assignment from the end, and the value is
/// assigned. If it is one of the elements that shift, the value it had before is inserted.
template <class TShift, class T, class TValue>
void InsertShifting(T* pos, T* pEnd, TValue&& value) noexcept
{
    if (pos == pEnd)
    {
        detail::ConstructAt(pEnd, std::forward<TValue>(value));
        return;
    }
    auto* pValue = detail::PointerTo(value);
    if (detail::AddressOf(pValue) >= detail::AddressOf(pos) && detail::AddressOf(pValue) < detail::AddressOf(pEnd))
        ++pValue; // where it is after the shift

    T* pLast = pEnd - 1;
    detail::ConstructAt(pEnd, static_cast<TShift&&>(*pLast));
    for (; pLast > pos; --pLast)
        *pLast = static_cast<TShift&&>(pLast[-1]);
    // Laundered, or GCC 12 may warn of a null pointer: it can see that pos is the End() of an empty array without
    // seeing that an empty array returns above.
    *std::launder(pos) = static_cast<TValue&&>(*pValue);
}

/// Removes the element at pos: the following ones move down by assignment, in ascending order, and the last one is
/// destroyed. TShift as in InsertShifting.
template <class TShift, class T>
void EraseShifting(T* pos, T* pEnd) noexcept
{
    for (T* pNext = pos + 1; pNext < pEnd; ++pNext)
        pNext[-1] = static_cast<TShift&&>(*pNext);
    pEnd[-1].~T();
}

/// Makes [pFirst, pFirst + nCount) raw storage before elements that move up by nCount places, from the end on.
/// There is raw storage for nCount elements at pEnd. TShift as in InsertShifting; the old elements are destroyed.
template <class TShift, class T>
void OpenGap(T* pFirst, T* pEnd, uint64 nCount) noexcept
{
    while (nCount != 0 && pEnd != pFirst)
    {
        --pEnd;
        detail::ConstructAt(pEnd + nCount, static_cast<TShift&&>(*pEnd));
        pEnd->~T();
    }
}

/// Constructs an element from each value of the range, in order, in raw storage.
template <class T, class TRange>
void ConstructFrom(T* pTo, TRange& range) noexcept
{
    for (auto&& value : range)
        detail::ConstructAt(pTo++, std::forward<decltype(value)>(value));
}

/// Removes [pFirst, pLast): the elements after it move down by assignment, and the surplus ones are destroyed, both in
/// ascending order. Returns the new end. TShift as in InsertShifting.
template <class TShift, class T>
T* EraseRangeShifting(T* pFirst, T* pLast, T* pEnd) noexcept
{
    if (pFirst == pLast)
        return pEnd;
    for (; pLast != pEnd; ++pFirst, ++pLast)
        *pFirst = static_cast<TShift&&>(*pLast);
    detail::DestroyRange(pFirst, pEnd);
    return pFirst;
}

/// Removes the elements for which the predicate is true, as EraseRangeShifting does. Returns the new end.
template <class TShift, class T, class TPredicate>
T* EraseMatching(T* pFirst, T* pEnd, TPredicate& predicate) noexcept
{
    while (pFirst != pEnd && !predicate(std::as_const(*pFirst)))
        ++pFirst;
    T* pTo = pFirst;
    for (; pFirst != pEnd; ++pFirst)
    {
        if (pFirst != pTo && !predicate(std::as_const(*pFirst)))
            *pTo++ = static_cast<TShift&&>(*pFirst);
    }
    detail::DestroyRange(pTo, pEnd);
    return pTo;
}

/// Whether equal(element, other) holds for the elements of [pFirst, pLast) and those from pOther on, in order.
template <class T, class TEqual>
bool EqualRange(const T* pFirst, const T* pLast, const T* pOther, TEqual equal) noexcept
{
    for (; pFirst != pLast; ++pFirst, ++pOther)
    {
        if (!equal(*pFirst, *pOther))
            return false;
    }
    return true;
}
} // namespace kx::detail
