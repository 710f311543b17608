// TMaxArray<T, N>: at most N elements, held in the object itself.
//
//      m_aElements                              m_nSize
//      +-------+-------+-------+-------+-------+-----+
//      |  e 0  |  e 1  |  e 2  |  raw  |  raw  |  3  |      N = 5
//      +-------+-------+-------+-------+-------+-----+
//
// It never touches an allocator. What else sets it apart from TArray: it adds and shifts by copying, so no operation
// leaves moved-from elements behind, and an rvalue is copied like any other value. Only moving the whole array moves
// elements, and it does so one by one.
//
// Going past N takes the debug break; execution that resumes behind it writes past the storage. Iterators are pointers;
// Insert and Erase invalidate those from the position on, and moving the array away all of them.
#pragma once

#include "core/containers/arrayenumerator.h"
#include "core/containers/lifetime.h"

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <utility>

template <class T, uint32 N>
class TMaxArray
{
    static_assert(N > 0, "TMaxArray: give it room for at least one element");

public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    // Leaves the storage uninitialised.
    TMaxArray() {}

    // Copies in ascending order. More than N values take the debug break.
    TMaxArray(std::initializer_list<T> values) : m_nSize(static_cast<uint32>(values.size()))
    {
        kx::detail::BreakUnless(values.size() <= N);
        kx::detail::CopyRange(Begin(), values.begin(), values.end());
    }

    TMaxArray(const TMaxArray& other) : m_nSize(other.m_nSize)
    {
        kx::detail::CopyRange(Begin(), other.Begin(), other.End());
    }

    // Linear: for each element in ascending order, moves it here and destroys the source's at once. The source is empty
    // afterwards and can be used again.
    TMaxArray(TMaxArray&& other) noexcept(std::is_nothrow_move_constructible_v<T>) { TakeElements(other); }

    // Destroys the elements in ascending order.
    ~TMaxArray()
    {
        static_assert(offsetof(TMaxArray, m_aElements) == 0 && offsetof(TMaxArray, m_nSize) >= N * sizeof(T)
                          && offsetof(TMaxArray, m_nSize) < N * sizeof(T) + sizeof(uint32)
                          && sizeof(TMaxArray) - offsetof(TMaxArray, m_nSize) <= (alignof(T) > 4 ? alignof(T) : 4),
                      "the elements, then their number: the layout that debugger views rely on");
        static_assert(std::is_copy_constructible_v<T>,
                      "TMaxArray copies elements in; keep what can only be moved in a TArray");
        kx::detail::DestroyRange(Begin(), End());
    }

    // Destroys the old elements, then copy-constructs in ascending order. Assigning an array to itself has no effect.
    TMaxArray& operator=(const TMaxArray& other)
    {
        if (this == &other)
            return *this;
        Clear();
        kx::detail::CopyRange(Begin(), other.Begin(), other.End());
        m_nSize = other.m_nSize;
        return *this;
    }

    // Destroys the old elements, then as move construction. Moving an array onto itself has no effect.
    TMaxArray& operator=(TMaxArray&& other) noexcept(std::is_nothrow_move_constructible_v<T>)
    {
        if (this == &other)
            return *this;
        Clear();
        TakeElements(other);
        return *this;
    }

    uint32 Size() const { return m_nSize; }
    bool IsEmpty() const { return m_nSize == 0; }

    // Element nIndex. Takes the debug break past the end; the index is 64 bits wide so that a negative number is
    // caught.
    T& operator[](uint64 nIndex)
    {
        kx::detail::BreakUnless(nIndex < m_nSize);
        return Begin()[nIndex];
    }

    const T& operator[](uint64 nIndex) const
    {
        kx::detail::BreakUnless(nIndex < m_nSize);
        return Begin()[nIndex];
    }

    T* Begin() { return m_aElements; }
    T* End() { return m_aElements + m_nSize; }
    const T* Begin() const { return m_aElements; }
    const T* End() const { return m_aElements + m_nSize; }
    T* begin() { return Begin(); }
    T* end() { return End(); }
    const T* begin() const { return Begin(); }
    const T* end() const { return End(); }

    // Stands before the first element.
    TArrayEnumerator<T> GetEnumerator() { return {Begin(), End()}; }
    TArrayEnumerator<const T> GetEnumerator() const { return {Begin(), End()}; }

    // Appends a copy; takes the debug break if the array is full. The result is the new element.
    T& Add(const T& value)
    {
        // Read once and written last: an element may be of a type that could overlap m_nSize, for all that the compiler
        // knows, and would then cost a loop that only adds a reload each time.
        const uint32 nSize = m_nSize;
        kx::detail::BreakUnless(nSize < N);
        T* pNew = kx::detail::ConstructAt(Begin() + nSize, value);
        m_nSize = nSize + 1;
        return *pNew;
    }

    // Inserts a copy before pos. Takes the debug break if the array is full or pos outside [Begin(), End()]; the result
    // is pos. The last element is copied one place up, the others from pos on by assignment from the end, and the value
    // is assigned. It may be an element of this array: what goes in is what it was before the call.
    T* Insert(T* pos, const T& value)
    {
        kx::detail::BreakUnless(m_nSize < N);
        kx::detail::BreakUnless(kx::detail::IsInsertPosition<T>(pos, Begin(), End()));
        kx::detail::InsertShifting<const T&>(pos, End(), value);
        ++m_nSize;
        return pos;
    }

    // Removes the element at pos, which takes the debug break outside [Begin(), End()); the result is pos. The elements
    // behind move down by copy assignment, in ascending order, and the surplus last one is destroyed.
    T* Erase(T* pos)
    {
        kx::detail::BreakUnless(kx::detail::IsElement<T>(pos, Begin(), End()));
        kx::detail::EraseShifting<const T&>(pos, End());
        --m_nSize;
        return pos;
    }

    // The same by index, which takes the debug break past the end. A template, so that the literal 0 is an index and
    // not a null pointer.
    template <std::integral TIndex>
    void Erase(TIndex nIndex)
    {
        kx::detail::BreakUnless(static_cast<uint64>(nIndex) < m_nSize);
        Erase(Begin() + nIndex);
    }

    // Destroys the elements in ascending order.
    void Clear()
    {
        kx::detail::DestroyRange(Begin(), End());
        m_nSize = 0;
    }

    // Whether the invariants hold. For tests and debugging.
    bool Validate() const { return m_nSize <= N; }

private:
    void TakeElements(TMaxArray& other)
    {
        kx::detail::RelocateRange(Begin(), other.Begin(), other.End());
        m_nSize = std::exchange(other.m_nSize, 0);
    }

    // In a union, so that no element is constructed before its time.
    union
    {
        T m_aElements[N];
    };
    uint32 m_nSize = 0;
};
