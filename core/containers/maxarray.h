// TMaxArray<T, N>: at most N elements, stored in the object itself.
//
//      m_aElements                              m_nSize
//      +-------+-------+-------+-------+-------+-----+
//      |  e 0  |  e 1  |  e 2  |  raw  |  raw  |  3  |      N = 5
//      +-------+-------+-------+-------+-------+-----+
//
// It never calls an allocator. Unlike TArray, it adds and shifts elements by copying, so no operation leaves moved-from
// elements in the array, and Add and Insert copy an rvalue like any other value. Only moving the whole array moves
// elements, one by one. Elements that can only be moved are moved; Emplace brings them in.
//
// Exceeding N triggers the debug break; if execution resumes, it writes past the storage. Iterators are pointers.
// Insert and Erase invalidate those from the position on; Clear, assignment and moving the array away invalidate all of
// them.
#pragma once

#include "core/containers/arrayenumerator.h"
#include "core/containers/lifetime.h"
#include "core/containers/sequence.h"

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <utility>

/// An array of at most N elements, stored in the object itself; see the head of this file.
template <class T, uint32 N>
class TMaxArray : public kx::detail::TContiguousSequence<TMaxArray<T, N>, T>
{
    static_assert(N > 0, "TMaxArray: give it room for at least one element");
    using TBase = kx::detail::TContiguousSequence<TMaxArray, T>;
    using TShift = std::conditional_t<std::is_copy_constructible_v<T>, const T&, T>;
    friend TBase;

public:
    /// The names that generic code expects.
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    /// Creates an empty array and leaves the storage uninitialised.
    TMaxArray() {}

    /// Copies the values in ascending order. More than N values trigger the debug break.
    TMaxArray(std::initializer_list<T> values) : m_nSize(static_cast<uint32>(values.size()))
    {
        kx::detail::RequireCopies<T>();
        kx::detail::BreakUnless(values.size() <= N);
        kx::detail::CopyRange(Begin(), values.begin(), values.end());
    }

    /// Copies the elements in ascending order.
    TMaxArray(const TMaxArray& other) : TBase(), m_nSize(other.m_nSize)
    {
        kx::detail::RequireCopies<T>();
        kx::detail::CopyRange(Begin(), other.Begin(), other.End());
    }

    /// Moves each element here, in ascending order, and destroys the source's at once.
    /// Linear. The source is empty afterwards and can be used again.
    TMaxArray(TMaxArray&& other) noexcept(std::is_nothrow_move_constructible_v<T>) { TakeElements(other); }

    /// Destroys the elements in ascending order.
    ~TMaxArray()
    {
        if constexpr (std::is_standard_layout_v<T>) // for others, offsetof is an extension
        {
            static_assert(offsetof(TMaxArray, m_aElements) == 0 && offsetof(TMaxArray, m_nSize) >= N * sizeof(T)
                              && offsetof(TMaxArray, m_nSize) < N * sizeof(T) + sizeof(uint32)
                              && sizeof(TMaxArray) - offsetof(TMaxArray, m_nSize) <= (alignof(T) > 4 ? alignof(T) : 4),
                          "the elements, then their number: the layout that debugger views rely on");
        }
        kx::detail::DestroyRange(Begin(), End());
    }

    /// Destroys the old elements, then copy-constructs the new ones in ascending order. Self-assignment has no effect.
    TMaxArray& operator=(const TMaxArray& other)
    {
        if (this == &other)
            return *this;
        kx::detail::RequireCopies<T>();
        Clear();
        kx::detail::CopyRange(Begin(), other.Begin(), other.End());
        m_nSize = other.m_nSize;
        return *this;
    }

    /// Destroys the old elements, then moves as the move constructor does. Self-assignment has no effect.
    TMaxArray& operator=(TMaxArray&& other) noexcept(std::is_nothrow_move_constructible_v<T>)
    {
        if (this == &other)
            return *this;
        Clear();
        TakeElements(other);
        return *this;
    }

    /// Return the number of elements, and whether there are none.
    [[nodiscard]] uint32 Size() const { return m_nSize; }
    [[nodiscard]] bool IsEmpty() const { return m_nSize == 0; }

    /// Returns element nIndex; triggers the debug break past the end.
    /// The index is 64 bits wide, so that negative indices fail the check instead of being truncated.
    [[nodiscard]] T& operator[](uint64 nIndex) KX_LIFETIMEBOUND
    {
        kx::detail::BreakUnless(nIndex < m_nSize);
        return Begin()[nIndex];
    }
    [[nodiscard]] const T& operator[](uint64 nIndex) const KX_LIFETIMEBOUND
    {
        kx::detail::BreakUnless(nIndex < m_nSize);
        return Begin()[nIndex];
    }

    /// Return pointers to the first element and past the last one.
    [[nodiscard]] T* Begin() KX_LIFETIMEBOUND { return m_aElements; }
    [[nodiscard]] T* End() KX_LIFETIMEBOUND { return m_aElements + m_nSize; }
    [[nodiscard]] const T* Begin() const KX_LIFETIMEBOUND { return m_aElements; }
    [[nodiscard]] const T* End() const KX_LIFETIMEBOUND { return m_aElements + m_nSize; }
    [[nodiscard]] T* begin() KX_LIFETIMEBOUND { return Begin(); }
    [[nodiscard]] T* end() KX_LIFETIMEBOUND { return End(); }
    [[nodiscard]] const T* begin() const KX_LIFETIMEBOUND { return Begin(); }
    [[nodiscard]] const T* end() const KX_LIFETIMEBOUND { return End(); }

    /// Returns an enumerator that starts before the first element.
    [[nodiscard]] TArrayEnumerator<T> GetEnumerator() KX_LIFETIMEBOUND { return {Begin(), End()}; }
    [[nodiscard]] TArrayEnumerator<const T> GetEnumerator() const KX_LIFETIMEBOUND { return {Begin(), End()}; }

    /// Appends a copy and returns it; triggers the debug break if the array is full.
    T& Add(const T& value)
    {
        kx::detail::RequireCopies<T>();
        return Emplace(value);
    }

    /// Appends an element that is constructed from the arguments, and returns it.
    /// Triggers the debug break if the array is full.
    template <class... TArgs>
    T& Emplace(TArgs&&... args)
    {
        // m_nSize is read once and written last, because constructing the element may alias it. A loop of Add would
        // otherwise reload it each time.
        const uint32 nSize = m_nSize;
        kx::detail::BreakUnless(nSize < N);
        T* pNew = kx::detail::ConstructAt(Begin() + nSize, std::forward<TArgs>(args)...);
        m_nSize = nSize + 1;
        return *pNew;
    }

    /// Inserts a copy before pos and returns pos.
    /// Triggers the debug break if the array is full or pos is outside [Begin(), End()]. The last element is copied one
    /// place up, the others from pos on by assignment from the end, and the value is assigned. It may be an element of
    /// this array: the inserted value is its value before the call.
    T* Insert(T* pos, const T& value)
    {
        kx::detail::RequireCopies<T>();
        return InsertAt(pos, value);
    }

    /// Inserts before the element at an index, or at the end for Size(); triggers the debug break past it.
    /// A template, so that the literal 0 is an index and not a null pointer.
    template <std::integral TIndex>
    T* Insert(TIndex nIndex, const T& value)
    {
        kx::detail::BreakUnless(static_cast<uint64>(nIndex) <= m_nSize);
        return Insert(Begin() + nIndex, value);
    }

    /// Removes the element at pos and returns pos.
    /// Triggers the debug break if pos is outside [Begin(), End()). The following elements move down by copy
    /// assignment, in ascending order, and the surplus last one is destroyed.
    T* Erase(T* pos)
    {
        kx::detail::BreakUnless(kx::detail::IsElement<T>(pos, Begin(), End()));
        kx::detail::EraseShifting<TShift>(pos, End());
        --m_nSize;
        return pos;
    }

    using TBase::Erase;

    /// Removes the element at an index; triggers the debug break past the end.
    /// A template, so that the literal 0 is an index and not a null pointer.
    template <std::integral TIndex>
    void Erase(TIndex nIndex)
    {
        kx::detail::BreakUnless(static_cast<uint64>(nIndex) < m_nSize);
        Erase(Begin() + nIndex);
    }

    /// Destroys the elements in ascending order.
    void Clear()
    {
        kx::detail::DestroyRange(Begin(), End());
        m_nSize = 0;
    }

    /// Returns whether the invariants hold. For tests and debugging.
    [[nodiscard]] bool Validate() const { return m_nSize <= N; }

private:
    template <class TValue>
    T* InsertAt(T* pos, TValue&& value)
    {
        kx::detail::BreakUnless(m_nSize < N);
        kx::detail::BreakUnless(kx::detail::IsInsertPosition<T>(pos, Begin(), End()));
        kx::detail::InsertShifting<TShift>(pos, End(), std::forward<TValue>(value));
        ++m_nSize;
        return pos;
    }

    // Makes raw storage for nCount elements before pos, which count at once; returns it.
    T* MakeGap(T* pos, uint64 nCount)
    {
        kx::detail::BreakUnless(nCount <= N - m_nSize);
        kx::detail::BreakUnless(kx::detail::IsInsertPosition<T>(pos, Begin(), End()));
        kx::detail::OpenGap<TShift>(pos, End(), nCount);
        m_nSize += static_cast<uint32>(nCount);
        return pos;
    }

    void SetEnd(T* pEnd) { m_nSize = static_cast<uint32>(pEnd - Begin()); }

    void TakeElements(TMaxArray& other)
    {
        kx::detail::RelocateRange(Begin(), other.Begin(), other.End());
        m_nSize = std::exchange(other.m_nSize, 0);
    }

    // In a union, so that no element is constructed before it is added.
    union
    {
        T m_aElements[N];
    };
    uint32 m_nSize = 0;
};
