// TArray<T>: the growable contiguous array.
//
//      m_pBegin                 m_pEnd            m_pCapacityEnd
//         |                        |                    |
//         v                        v                    v
//         +-------+-------+--------+---------+----------+
//         |  e 0  |  e 1  |  e 2   |   raw   |   raw    |      one block of the normal allocator
//         +-------+-------+--------+---------+----------+
//
//   m_pBegin <= m_pEnd <= m_pCapacityEnd; all three are null if there is no buffer. [m_pBegin, m_pEnd) are the
//   elements, the rest is raw memory.
//
// What sets it apart from std::vector:
//
// - It grows by a quarter: new capacity = old + old / 4 + 1, so 0, 1, 2, 3, 4, 6, 8, 11, 14, 18, ... This leaves less
//   memory unused, but relocates elements more often.
// - Relocation goes element by element: move-construct (copy-construct if T has no move), destroy the old one, next.
// - The allocator is looked up for each allocation and each release. Blocks are aligned for T.
// - Free is called with null if there is no buffer: by the first growth, by the destructor of an array that owns
//   nothing, and so on. So a normal allocator must be installed when a TArray is destroyed, even an empty one.
// - A violated precondition triggers the debug break; see kx::detail::BreakUnless.
//
// Iterators are pointers. Growth, a Reserve that reallocates, Clear and assignment to the array invalidate all of them.
// Insert and Erase without growth invalidate those from the position on. Moving the array away invalidates none: they
// stay with the elements.
#pragma once

#include "core/containers/arrayenumerator.h"
#include "core/containers/lifetime.h"
#include "core/containers/sequence.h"
#include "core/containers/sparecapacity.h"
#include "core/memory/memorymanager.h"

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <new>
#include <utility>

/// The growable contiguous array; see the head of this file.
template <class T>
class TArray : public kx::detail::TContiguousSequence<TArray<T>, T>
{
    using TBase = kx::detail::TContiguousSequence<TArray, T>;
    using TShift = T;
    friend TBase;

public:
    /// The names that generic code expects.
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    /// Creates an empty array without a buffer. Makes no allocator call.
    TArray() = default;

    /// Creates an empty array with a capacity of exactly nCapacity elements.
    /// Makes one allocation, none for 0.
    explicit TArray(uint64 nCapacity)
        : m_pBegin(AllocateElements(nCapacity)), m_pEnd(m_pBegin), m_pCapacityEnd(m_pBegin + nCapacity)
    {
        MoveSpareStart(m_pCapacityEnd, m_pEnd);
    }

    /// Copies the values, in order, into a buffer of exactly that size.
    /// Makes no allocation if there are none. Note that `TArray<int>{10}` holds the element 10, whereas
    /// `TArray<int>(10)` is empty and has a capacity of ten.
    TArray(std::initializer_list<T> values) : TArray(static_cast<uint64>(values.size()))
    {
        MoveSpareStart(m_pEnd, m_pCapacityEnd);
        m_pEnd = kx::detail::CopyRange(m_pEnd, values.begin(), values.end());
    }

    /// Copies into a buffer of exactly other.Size() elements. Makes no allocation if other is empty.
    TArray(const TArray& other) : TArray(Distance(other.m_pBegin, other.m_pEnd))
    {
        MoveSpareStart(m_pEnd, m_pCapacityEnd);
        m_pEnd = kx::detail::CopyRange(m_pEnd, other.m_pBegin, other.m_pEnd);
    }

    /// Takes ownership of the buffer and leaves the source without one.
    /// No element is touched and no allocator is called.
    TArray(TArray&& other) noexcept
        : m_pBegin(std::exchange(other.m_pBegin, nullptr)),
          m_pEnd(std::exchange(other.m_pEnd, nullptr)),
          m_pCapacityEnd(std::exchange(other.m_pCapacityEnd, nullptr))
    {
    }

    /// Destroys the elements in ascending order, then calls Free, with null if there is no buffer.
    ~TArray()
    {
        static_assert(offsetof(TArray, m_pBegin) == 0 && offsetof(TArray, m_pEnd) == 8
                          && offsetof(TArray, m_pCapacityEnd) == 16 && sizeof(TArray) == 24,
                      "the three pointers are the layout that type descriptions and debugger views rely on");
        DestroyElements();
        FreeBuffer();
    }

    /// Destroys the old elements, then copy-constructs the new ones.
    /// In between, reallocates to exactly other.Size() if the buffer is too small; the buffer never shrinks.
    /// Self-assignment has no effect.
    TArray& operator=(const TArray& other)
    {
        if (this == &other)
            return *this;
        Clear();
        Reserve(Distance(other.m_pBegin, other.m_pEnd), false);
        MoveSpareStart(m_pBegin, m_pBegin + Distance(other.m_pBegin, other.m_pEnd));
        m_pEnd = kx::detail::CopyRange(m_pBegin, other.m_pBegin, other.m_pEnd);
        return *this;
    }

    /// Destroys the old elements, frees the old buffer, then takes ownership of the other one.
    /// Free is called even if the old buffer is null. The source is left without a buffer. Self-assignment has no
    /// effect.
    TArray& operator=(TArray&& other) noexcept
    {
        if (this == &other)
            return *this;
        DestroyElements();
        FreeBuffer();
        m_pBegin = std::exchange(other.m_pBegin, nullptr);
        m_pEnd = std::exchange(other.m_pEnd, nullptr);
        m_pCapacityEnd = std::exchange(other.m_pCapacityEnd, nullptr);
        return *this;
    }

    /// Return the number of elements, the capacity in elements, and whether there are no elements.
    /// Beyond 2^32 - 1 elements, the two numbers are truncated to their low 32 bits; everything else keeps working.
    [[nodiscard]] uint32 Size() const { return static_cast<uint32>(Distance(m_pBegin, m_pEnd)); }
    [[nodiscard]] uint32 Capacity() const { return static_cast<uint32>(Distance(m_pBegin, m_pCapacityEnd)); }
    [[nodiscard]] bool IsEmpty() const { return m_pBegin == m_pEnd; }

    /// Returns element nIndex; triggers the debug break past the end.
    /// The index is 64 bits wide, so that negative or wrapped indices fail the check instead of being truncated.
    [[nodiscard]] T& operator[](uint64 nIndex) KX_LIFETIMEBOUND
    {
        kx::detail::BreakUnless(nIndex < Distance(m_pBegin, m_pEnd));
        return m_pBegin[nIndex];
    }
    [[nodiscard]] const T& operator[](uint64 nIndex) const KX_LIFETIMEBOUND
    {
        kx::detail::BreakUnless(nIndex < Distance(m_pBegin, m_pEnd));
        return m_pBegin[nIndex];
    }

    /// Return pointers to the first element and past the last one; null if there is no buffer.
    [[nodiscard]] T* Begin() KX_LIFETIMEBOUND { return m_pBegin; }
    [[nodiscard]] T* End() KX_LIFETIMEBOUND { return m_pEnd; }
    [[nodiscard]] const T* Begin() const KX_LIFETIMEBOUND { return m_pBegin; }
    [[nodiscard]] const T* End() const KX_LIFETIMEBOUND { return m_pEnd; }
    [[nodiscard]] T* begin() KX_LIFETIMEBOUND { return m_pBegin; }
    [[nodiscard]] T* end() KX_LIFETIMEBOUND { return m_pEnd; }
    [[nodiscard]] const T* begin() const KX_LIFETIMEBOUND { return m_pBegin; }
    [[nodiscard]] const T* end() const KX_LIFETIMEBOUND { return m_pEnd; }

    /// Returns an enumerator that starts before the first element.
    [[nodiscard]] TArrayEnumerator<T> GetEnumerator() KX_LIFETIMEBOUND { return {m_pBegin, m_pEnd}; }
    [[nodiscard]] TArrayEnumerator<const T> GetEnumerator() const KX_LIFETIMEBOUND { return {m_pBegin, m_pEnd}; }

    /// Appends a copy of the value, or moves it in; returns the new element.
    /// Amortised constant time. A full array grows, and the new element is constructed before the old ones are touched,
    /// so the argument may be an element of this array.
    T& Add(const T& value) { return AddValue(value); }
    T& Add(T&& value) { return AddValue(std::move(value)); }

    /// Appends an element that is constructed from the arguments, and returns it.
    /// Costs what Add costs, without a copy or a move of the element. The arguments may refer to elements of this
    /// array.
    template <class... TArgs>
    T& Emplace(TArgs&&... args)
    {
        return AddValue(std::forward<TArgs>(args)...);
    }

    /// Inserts before pos and returns the new element.
    /// Triggers the debug break if pos is outside [Begin(), End()]. Linear in the number of elements after pos, or in
    /// all elements if the array grows. The argument may be an element of this array: the inserted value is its value
    /// before the call.
    T* Insert(T* pos, const T& value) { return InsertAt(pos, value); }
    T* Insert(T* pos, T&& value) { return InsertAt(pos, std::move(value)); }

    /// Inserts before the element at an index, or at the end for Size(); triggers the debug break past it.
    /// Templates, so that the literal 0 is an index and not a null pointer.
    template <std::integral TIndex>
    T* Insert(TIndex nIndex, const T& value)
    {
        return InsertAt(InsertPosition(static_cast<uint64>(nIndex)), value);
    }
    template <std::integral TIndex>
    T* Insert(TIndex nIndex, T&& value)
    {
        return InsertAt(InsertPosition(static_cast<uint64>(nIndex)), std::move(value));
    }

    /// Removes the element at pos and returns the position of the element that followed.
    /// Triggers the debug break if pos is outside [Begin(), End()). The following elements move down by assignment, in
    /// ascending order, and the surplus last one is destroyed. Never reallocates.
    T* Erase(T* pos)
    {
        kx::detail::BreakUnless(kx::detail::IsElement<T>(pos, m_pBegin, m_pEnd));
        kx::detail::EraseShifting<T>(pos, m_pEnd);
        --m_pEnd;
        MoveSpareStart(m_pEnd + 1, m_pEnd);
        return pos;
    }

    using TBase::Erase;

    /// Removes the element at an index; triggers the debug break past the end.
    /// A template, so that the literal 0 is an index and not a null pointer.
    template <std::integral TIndex>
    void Erase(TIndex nIndex)
    {
        kx::detail::BreakUnless(static_cast<uint64>(nIndex) < Distance(m_pBegin, m_pEnd));
        Erase(m_pBegin + nIndex);
    }

    /// Destroys the elements in ascending order and keeps the buffer.
    void Clear()
    {
        DestroyElements();
        MoveSpareStart(m_pEnd, m_pBegin);
        m_pEnd = m_pBegin;
    }

    /// Ensures a capacity of at least nCapacity elements, or changes it to exactly that; returns the capacity.
    /// Reallocates if nCapacity exceeds the capacity, or if bExact is set and nCapacity is not below the size.
    /// Otherwise nothing happens. The new capacity is exactly nCapacity (no buffer for 0), and the elements are
    /// relocated; the growth rule does not apply. So bExact can also shrink the buffer, and reallocates even if the
    /// capacity is already right.
    uint32 Reserve(uint64 nCapacity, bool bExact = false)
    {
        if (nCapacity <= Distance(m_pBegin, m_pCapacityEnd) && (!bExact || nCapacity < Distance(m_pBegin, m_pEnd)))
            return Capacity();
        T* pNew = AllocateElements(nCapacity);
        kx::detail::RelocateRange(pNew, m_pBegin, m_pEnd);
        AdoptBuffer(pNew, Distance(m_pBegin, m_pEnd), nCapacity);
        return Capacity();
    }

    /// Changes the size to nSize.
    /// To grow, reallocates to exactly nSize if the buffer is too small, then value-initialises the new elements after
    /// the old ones. To shrink, destroys the surplus in ascending order and keeps the buffer.
    template <std::default_initializable U = T>
    void Resize(uint64 nSize)
    {
        T* pOldEnd = m_pEnd;
        if (nSize < Distance(m_pBegin, m_pEnd))
        {
            m_pEnd = m_pBegin + nSize;
            kx::detail::DestroyRange(m_pEnd, pOldEnd);
            MoveSpareStart(pOldEnd, m_pEnd);
            return;
        }
        Append(nSize - Distance(m_pBegin, m_pEnd), [](T* pStorage) { kx::detail::ConstructAt(pStorage); });
    }

    /// Appends nCount elements, each of which construct(pStorage) creates in raw memory.
    /// Reallocates to exactly the new size if the buffer is too small.
    template <class TConstruct>
    void Append(uint64 nCount, TConstruct construct)
    {
        Reserve(Distance(m_pBegin, m_pEnd) + nCount);
        MoveSpareStart(m_pEnd, m_pEnd + nCount);
        [&]() noexcept
        {
            for (T* pNewEnd = m_pEnd + nCount; m_pEnd != pNewEnd; ++m_pEnd)
                construct(m_pEnd);
        }();
    }

    /// Returns whether the invariants hold. For tests and debugging.
    [[nodiscard]] bool Validate() const
    {
        return m_pBegin <= m_pEnd && m_pEnd <= m_pCapacityEnd && (m_pBegin != nullptr || m_pCapacityEnd == nullptr);
    }

private:
    static uint64 Distance(const T* pFrom, const T* pTo) { return static_cast<uint64>(pTo - pFrom); }

    // Returns null for 0. A count whose bytes do not fit in 64 bits triggers the debug break, because the block would
    // be too small.
    static T* AllocateElements(uint64 nCount)
    {
        if (nCount == 0)
            return nullptr;
        kx::detail::BreakUnless(nCount <= UINT64_MAX / sizeof(T));
        return static_cast<T*>(GetNormalAllocator()->Allocate(nCount * sizeof(T), alignof(T), 0));
    }

    uint64 GrownCapacity() const
    {
        const uint64 nCapacity = Distance(m_pBegin, m_pCapacityEnd);
        return nCapacity + nCapacity / 4 + 1;
    }

    void DestroyElements()
    {
        kx::detail::BreakUnless(kx::detail::AddressOf(m_pBegin) <= kx::detail::AddressOf(m_pEnd));
        kx::detail::DestroyRange(m_pBegin, m_pEnd);
    }

    // Makes the buffer of nCapacity elements at pNew this array's own and frees the old one, even if it is null.
    void AdoptBuffer(T* pNew, uint64 nSize, uint64 nCapacity)
    {
        MoveSpareStart(m_pEnd, m_pCapacityEnd);
        m_pCapacityEnd = pNew + nCapacity;
        m_pEnd = pNew + nSize;
        GetNormalAllocator()->Free(m_pBegin);
        m_pBegin = pNew;
        MoveSpareStart(m_pCapacityEnd, m_pEnd);
    }

    // Calls Free even if there is no buffer.
    void FreeBuffer()
    {
        MoveSpareStart(m_pEnd, m_pCapacityEnd);
        GetNormalAllocator()->Free(m_pBegin);
    }

    void MoveSpareStart(const T* pOldEnd, const T* pNewEnd) const
    {
        kx::detail::MoveSpareStart(m_pBegin, m_pCapacityEnd, pOldEnd, pNewEnd);
    }

    void SetEnd(T* pEnd)
    {
        MoveSpareStart(m_pEnd, pEnd);
        m_pEnd = pEnd;
    }

    // Makes raw memory for nCount elements before pos, which count at once; returns it. Grows by the growth rule, or to
    // what is needed if that is more.
    T* MakeGap(T* pos, uint64 nCount)
    {
        kx::detail::BreakUnless(kx::detail::IsInsertPosition<T>(pos, m_pBegin, m_pEnd));
        const uint64 nSize = Distance(m_pBegin, m_pEnd) + nCount;
        if (nSize <= Distance(m_pBegin, m_pCapacityEnd))
        {
            MoveSpareStart(m_pEnd, m_pEnd + nCount);
            kx::detail::OpenGap<T>(pos, m_pEnd, nCount);
            m_pEnd += nCount;
            return pos;
        }
        const uint64 nCapacity = nSize > GrownCapacity() ? nSize : GrownCapacity();
        T* pNew = AllocateElements(nCapacity);
        T* pGap = kx::detail::RelocateRange(pNew, m_pBegin, pos);
        kx::detail::RelocateRange(pGap + nCount, pos, m_pEnd);
        AdoptBuffer(pNew, nSize, nCapacity);
        return pGap;
    }

    template <class... TArgs>
    T& AddValue(TArgs&&... args)
    {
        T* pNew = nullptr;
        if (m_pEnd == m_pCapacityEnd) [[unlikely]]
        {
            // If a reference to it is passed on, the caller's variable cannot stay in a register.
            if constexpr (std::is_trivially_copyable_v<T> && sizeof(T) <= 64 && sizeof...(TArgs) == 1
                          && (std::is_same_v<std::remove_cvref_t<TArgs>, T> && ...))
                pNew = InsertGrowing(m_pEnd, T(std::forward<TArgs>(args)...));
            else
                pNew = InsertGrowing(m_pEnd, std::forward<TArgs>(args)...);
        }
        else
        {
            MoveSpareStart(m_pEnd, m_pEnd + 1);
            pNew = kx::detail::ConstructAt(m_pEnd, std::forward<TArgs>(args)...);
        }
        m_pEnd = pNew + 1; // also after growth, which has set it: so a loop of calls need not load it again
        return *pNew;
    }

    T* InsertPosition(uint64 nIndex)
    {
        kx::detail::BreakUnless(nIndex <= Distance(m_pBegin, m_pEnd));
        return m_pBegin + nIndex;
    }

    template <class TValue>
    T* InsertAt(T* pos, TValue&& value)
    {
        kx::detail::BreakUnless(kx::detail::IsInsertPosition<T>(pos, m_pBegin, m_pEnd));
        if (m_pEnd == m_pCapacityEnd)
            return InsertGrowing(pos, std::forward<TValue>(value));
        MoveSpareStart(m_pEnd, m_pEnd + 1);
        kx::detail::InsertShifting<T>(pos, m_pEnd, std::forward<TValue>(value));
        ++m_pEnd;
        return pos;
    }

    // Inserts before pos into a new buffer of the grown capacity. The new element is constructed first, so that an
    // argument that is an element of this array is still intact when it is read.
    //
    // No out-of-line callee takes the array or an argument by reference, so a loop of Add keeps the three pointers and
    // the value in registers.
    template <class... TArgs>
    T* InsertGrowing(T* pos, TArgs&&... args)
    {
        const uint64 nSize = Distance(m_pBegin, m_pEnd);
        const uint64 nCapacity = GrownCapacity();
        T* pNew = AllocateElements(nCapacity);
        T* pElement = kx::detail::ConstructAt(pNew + Distance(m_pBegin, pos), std::forward<TArgs>(args)...);
        kx::detail::RelocateRange(pNew, m_pBegin, pos);
        kx::detail::RelocateRange(pElement + 1, pos, m_pEnd);
        AdoptBuffer(pNew, nSize + 1, nCapacity);
        return pElement;
    }

    T* m_pBegin = nullptr;
    T* m_pEnd = nullptr;
    T* m_pCapacityEnd = nullptr;
};
