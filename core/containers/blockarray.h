// TBlockArray<T>: the double-ended sequence in blocks.
//
//      m_ppBlocks    +--------+--------+--------+--------+
//                    | block 0|  null  | block 2| block 3|        m_nBlocks entries, the ring
//                    +---|----+--------+---|----+---|----+
//                        v                 v        v
//                    [e5 e6 .. ..]   [.. .. .. e0] [e1 e2 e3 e4]  m_nBlockSize elements each
//                                               ^
//                                               m_nFirst, here 11 with blocks of 4
//
//   Element i is in slot m_nFirst + i, counted round the ring; slot / m_nBlockSize is the block, slot % m_nBlockSize
//   the place in it. Invariants: m_nFirst is below the number of slots where there is a table, and 0 in an empty array;
//   the block of each live element is there.
//
// What sets it apart from std::deque: blocks hold 16 elements of any size; once allocated they stay until the array
// dies, Erase and Clear never free one. The table grows by half, from 8 entries on, when the next slot would enter the
// block at the other end of the run. Elements never move when the array grows at either end.
//
// The block size is stored, so each access by index, each step of an iterator too, costs one division. Growing,
// shifting, copying and destroying go block by block.
//
// Blocks and table come from operator new[](bytes, normal allocator) and go back by Free.
//
// References stay valid until their element is erased or shifted. Iterators know their index: insertion and removal
// invalidate all of them.
#pragma once

#include "core/containers/lifetime.h"
#include "core/memory/memorymanager.h"

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <utility>

template <class T>
class TBlockArray;

// A position in a TBlockArray; T is const for a read-only one. A forward iterator. Positions are compared by the
// element's address alone, which is null at the end: so End() equals each position that has run past the last element,
// that of another array too.
template <class T>
class TBlockArrayIterator
{
public:
    using value_type = std::remove_const_t<T>;
    using difference_type = std::ptrdiff_t;

    TBlockArrayIterator() = default;

    // To the read-only form, never back.
    template <class TOther>
    TBlockArrayIterator(const TBlockArrayIterator<TOther>& other) requires std::same_as<T, const TOther>
        : m_pElement(other.m_pElement), m_pArray(other.m_pArray), m_nIndex(other.m_nIndex)
    {
    }

    T& operator*() const { return *m_pElement; }
    T* operator->() const { return m_pElement; }

    // Takes the debug break where it stands on the end.
    TBlockArrayIterator& operator++()
    {
        ++m_nIndex;
        m_pElement = m_nIndex == m_pArray->Size() ? nullptr : kx::detail::PointerTo((*m_pArray)[m_nIndex]);
        return *this;
    }

    TBlockArrayIterator operator++(int)
    {
        TBlockArrayIterator old = *this;
        ++*this;
        return old;
    }

    template <class TOther>
    bool operator==(const TBlockArrayIterator<TOther>& other) const requires std::same_as<const T, const TOther>
    {
        return m_pElement == other.operator->();
    }

private:
    using TOwner = std::conditional_t<std::is_const_v<T>, const TBlockArray<value_type>, TBlockArray<value_type>>;

    template <class TOther>
    friend class TBlockArrayIterator;
    friend class TBlockArray<value_type>;

    TBlockArrayIterator(T* pElement, TOwner* pArray, uint32 nIndex)
        : m_pElement(pElement), m_pArray(pArray), m_nIndex(nIndex)
    {
    }

    T* m_pElement = nullptr;
    TOwner* m_pArray = nullptr;
    uint32 m_nIndex = 0;
};

// A walk over a TBlockArray, by index.
template <class T>
class TBlockArrayEnumerator
{
public:
    using TOwner = std::conditional_t<std::is_const_v<T>, const TBlockArray<std::remove_const_t<T>>, TBlockArray<T>>;

    explicit TBlockArrayEnumerator(TOwner* pArray) : m_pArray(pArray) {}

    // Advances; true exactly when the enumerator then stands on an element. Must not be called again after false.
    bool MoveNext()
    {
        ++m_nIndex;
        m_pElement = m_nIndex == m_pArray->Size() ? nullptr : kx::detail::PointerTo((*m_pArray)[m_nIndex]);
        return m_pElement != nullptr;
    }

    // The element it stands on. Takes the debug break where there is none.
    T& Current() const
    {
        kx::detail::BreakUnless(m_pElement != nullptr);
        return *m_pElement;
    }

private:
    T* m_pElement = nullptr;
    TOwner* m_pArray;
    uint32 m_nIndex = UINT32_MAX; // one before element 0
};

template <class T>
class TBlockArray
{
public:
    using value_type = T;
    using iterator = TBlockArrayIterator<T>;
    using const_iterator = TBlockArrayIterator<const T>;

    // No table, no allocator call.
    TBlockArray() = default;

    // Copies in ascending order, from slot 0 on.
    TBlockArray(std::initializer_list<T> values) { AppendCopies(values.begin(), static_cast<uint32>(values.size())); }
    TBlockArray(const TBlockArray& other) { AppendCopies(other); }

    // Takes table and blocks over. No element is touched, no allocator is called. The source is left without a block
    // size: it has Size() 0 and may be destroyed or move-assigned to. Whatever needs a slot in it divides by zero,
    // which faults in the hardware.
    TBlockArray(TBlockArray&& other) noexcept
        : m_nFirst(std::exchange(other.m_nFirst, 0)),
          m_nSize(std::exchange(other.m_nSize, 0)),
          m_nBlocks(std::exchange(other.m_nBlocks, 0)),
          m_nBlockSize(std::exchange(other.m_nBlockSize, 0)),
          m_ppBlocks(std::exchange(other.m_ppBlocks, nullptr))
    {
    }

    // Destroys the elements in ascending order. If there is a table, calls Free for each of its entries in turn, null
    // or not, then for the table.
    ~TBlockArray()
    {
        static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__,
                      "TBlockArray: blocks are aligned to 16 bytes; keep elements of a wider alignment in a TArray");
        static_assert(offsetof(TBlockArray, m_nFirst) == 0 && offsetof(TBlockArray, m_nSize) == 4
                          && offsetof(TBlockArray, m_nBlocks) == 8 && offsetof(TBlockArray, m_nBlockSize) == 12
                          && offsetof(TBlockArray, m_ppBlocks) == 16 && sizeof(TBlockArray) == 24,
                      "the layout that debugger views rely on");
        FreeAll();
    }

    // Clears this array and keeps its table and blocks; then takes a slot at the back and copy-constructs, for each
    // element in ascending order. So it starts at slot 0 again, and allocates only what the old blocks do not hold.
    // Assigning an array to itself has no effect.
    TBlockArray& operator=(const TBlockArray& other)
    {
        if (this == &other)
            return *this;
        Clear();
        AppendCopies(other);
        return *this;
    }

    // Destroys and frees as the destructor does, then as move construction. Moving an array onto itself has no effect.
    TBlockArray& operator=(TBlockArray&& other) noexcept
    {
        if (this == &other)
            return *this;
        FreeAll();
        m_nFirst = std::exchange(other.m_nFirst, 0);
        m_nSize = std::exchange(other.m_nSize, 0);
        m_nBlocks = std::exchange(other.m_nBlocks, 0);
        m_nBlockSize = std::exchange(other.m_nBlockSize, 0);
        m_ppBlocks = std::exchange(other.m_ppBlocks, nullptr);
        return *this;
    }

    uint32 Size() const { return m_nSize; }
    bool IsEmpty() const { return m_nSize == 0; }

    // Element nIndex, in constant time. Takes the debug break past the end; the index is 64 bits wide so that a
    // negative number is caught.
    T& operator[](uint64 nIndex)
    {
        kx::detail::BreakUnless(nIndex < m_nSize);
        return *SlotAddress(m_nFirst + static_cast<uint32>(nIndex));
    }

    const T& operator[](uint64 nIndex) const { return const_cast<TBlockArray&>(*this)[nIndex]; }

    // The first and the last element. Take the debug break on an empty array.
    T& First() { return (*this)[0]; }
    const T& First() const { return (*this)[0]; }
    T& Last() { return (*this)[uint64{m_nSize} - 1]; }
    const T& Last() const { return (*this)[uint64{m_nSize} - 1]; }

    iterator Begin() { return PositionOf(0); }
    iterator End() { return {nullptr, this, m_nSize}; }
    const_iterator Begin() const { return const_cast<TBlockArray*>(this)->Begin(); }
    const_iterator End() const { return const_cast<TBlockArray*>(this)->End(); }
    iterator begin() { return Begin(); }
    iterator end() { return End(); }
    const_iterator begin() const { return Begin(); }
    const_iterator end() const { return End(); }

    // Stands before the first element.
    TBlockArrayEnumerator<T> GetEnumerator() { return TBlockArrayEnumerator<T>(this); }
    TBlockArrayEnumerator<const T> GetEnumerator() const { return TBlockArrayEnumerator<const T>(this); }

    // Inserts before pos; the result stands on the new element. Only the index of pos counts. At either end this takes
    // constant time and touches no other element; the first insertion of all takes the front road, wherever pos stands.
    // In the middle it shifts the shorter side by one place: one construction at the end, assignments up to pos.
    //
    // The const form does all of it by copying. The value is read last, so a reference to an element of this array that
    // is shifted gives that place's new value.
    //
    // The rvalue form does all of it by moving, and in the middle it constructs the new element over the moved-from one
    // without destroying that. So an element whose moved-from state owns something leaks it there, and counts of living
    // elements rise by two; use the const form for such types.
    iterator Insert(iterator pos, const T& value) { return InsertAt<const T&>(pos.m_nIndex, value); }
    iterator Insert(iterator pos, T&& value) { return InsertAt<T>(pos.m_nIndex, std::move(value)); }

    // Removes the element at pos, of which only the index counts; takes the debug break past the end. The shorter side
    // moves up by one place, by assignment, and the surplus element at that end is destroyed. No block is freed. The
    // result stands on the element that followed.
    iterator Erase(iterator pos)
    {
        const uint32 nIndex = pos.m_nIndex;
        kx::detail::BreakUnless(nIndex < m_nSize);
        if (nIndex < m_nSize / 2)
        {
            ShiftUp<T>(0, nIndex);
            First().~T();
            --m_nSize;
            m_nFirst = m_nFirst + 1 == Slots() ? 0 : m_nFirst + 1;
        }
        else
        {
            ShiftDown<T>(nIndex, m_nSize - 1);
            Last().~T();
            --m_nSize;
        }
        if (m_nSize == 0)
            m_nFirst = 0;
        return PositionOf(nIndex);
    }

    // Destroys the elements in ascending order; keeps the table and all blocks.
    void Clear()
    {
        DestroyElements();
        m_nFirst = 0;
        m_nSize = 0;
    }

    // Whether the invariants hold. For tests and debugging.
    bool Validate() const
    {
        if ((m_nBlocks == 0) != (m_ppBlocks == nullptr) || m_nSize > Slots() || (m_nSize == 0 && m_nFirst != 0)
            || (m_nSize != 0 && m_nFirst >= Slots()))
            return false;
        for (uint32 i = 0; i < m_nSize; ++i)
        {
            if (Block((m_nFirst + i) / m_nBlockSize) == nullptr)
                return false;
        }
        return true;
    }

private:
    // The number of slots in the ring.
    uint32 Slots() const { return m_nBlocks * m_nBlockSize; }

    // A block counted from block 0 on, up to once round the ring and back to the first element.
    T*& Block(uint32 nBlock) const { return m_ppBlocks[nBlock >= m_nBlocks ? nBlock - m_nBlocks : nBlock]; }

    // A slot, counted likewise. One division of the processor gives both quotient and remainder.
    T* SlotAddress(uint32 nSlot) const { return Block(nSlot / m_nBlockSize) + nSlot % m_nBlockSize; }

    // How many slots there are from that of element nIndex to the end of its block.
    uint32 SlotsToBlockEnd(uint32 nIndex) const { return m_nBlockSize - (m_nFirst + nIndex) % m_nBlockSize; }

    iterator PositionOf(uint32 nIndex)
    {
        return {nIndex < m_nSize ? SlotAddress(m_nFirst + nIndex) : nullptr, this, nIndex};
    }

    // A raw slot behind the last element, or before the first one. It counts as an element at once. Only at the edge of
    // a block can the table be too small, or the block be missing.
    T* AcquireBackSlot()
    {
        const uint32 nSlot = m_nFirst + m_nSize;
        const uint32 nPlace = nSlot % m_nBlockSize;
        if (nPlace == 0) [[unlikely]]
            return AcquireBackBlock();
        ++m_nSize;
        return Block(nSlot / m_nBlockSize) + nPlace;
    }

    T* AcquireFrontSlot()
    {
        const uint32 nPlace = m_nFirst % m_nBlockSize;
        if (nPlace == 0) [[unlikely]]
            return AcquireFrontBlock();
        ++m_nSize;
        --m_nFirst;
        return Block(m_nFirst / m_nBlockSize) + nPlace - 1;
    }

    // The first slot of a block behind the run, or the last slot of one before it.
    KX_NOINLINE T* AcquireBackBlock()
    {
        GrowIfRunWouldMeetItself();
        T* pBlock = AllocatedBlock((m_nFirst + m_nSize) / m_nBlockSize);
        ++m_nSize;
        return pBlock;
    }

    KX_NOINLINE T* AcquireFrontBlock()
    {
        GrowIfRunWouldMeetItself();
        m_nFirst = (m_nFirst == 0 ? Slots() : m_nFirst) - 1;
        ++m_nSize;
        return AllocatedBlock(m_nFirst / m_nBlockSize) + m_nBlockSize - 1;
    }

    T* AllocatedBlock(uint32 nBlock)
    {
        T*& pBlock = Block(nBlock);
        if (pBlock == nullptr)
            pBlock = static_cast<T*>(::operator new[](uint64{m_nBlockSize} * sizeof(T), *GetNormalAllocator()));
        return pBlock;
    }

    // To be called at the edge of a block. Less than a block's worth of free slots means that the run's other end is in
    // the next block. Elements stay where they are. More slots than 32 bits can count take the debug break.
    void GrowIfRunWouldMeetItself()
    {
        if (Slots() - m_nSize >= m_nBlockSize)
            return;
        const uint32 nExtra = m_nBlocks == 0 ? 8 : m_nBlocks / 2;
        const uint32 nBlocks = m_nBlocks + nExtra;
        kx::detail::BreakUnless(uint64{nBlocks} * m_nBlockSize <= UINT32_MAX / 2);
        T** ppNew = static_cast<T**>(::operator new[](uint64{nBlocks} * sizeof(T*), *GetNormalAllocator()));
        // The run now starts in block 0. All old blocks come along, since hardly a slot was free.
        const uint32 nFirstBlock = m_nFirst / m_nBlockSize;
        for (uint32 i = 0; i < m_nBlocks; ++i)
            ppNew[i] = m_ppBlocks[(nFirstBlock + i) % m_nBlocks];
        for (uint32 i = m_nBlocks; i < nBlocks; ++i)
            ppNew[i] = nullptr;
        m_nBlocks = nBlocks;
        m_nFirst %= m_nBlockSize;
        GetNormalAllocator()->Free(m_ppBlocks);
        m_ppBlocks = ppNew;
    }

    // TValue is T for moving and const T& for copying.
    template <class TValue>
    iterator InsertAt(uint32 nIndex, TValue&& value)
    {
        if (nIndex == 0)
            return {kx::detail::ConstructAt(AcquireFrontSlot(), static_cast<TValue&&>(value)), this, nIndex};
        if (nIndex == m_nSize)
            return {kx::detail::ConstructAt(AcquireBackSlot(), static_cast<TValue&&>(value)), this, nIndex};
        if (nIndex >= m_nSize / 2)
        {
            T& last = Last();
            kx::detail::ConstructAt(AcquireBackSlot(), static_cast<TValue&&>(last));
            ShiftUp<TValue>(nIndex, m_nSize - 2);
        }
        else
        {
            T& first = First();
            kx::detail::ConstructAt(AcquireFrontSlot(), static_cast<TValue&&>(first));
            ShiftDown<TValue>(1, nIndex);
        }
        T* pElement = kx::detail::PointerTo((*this)[nIndex]);
        if constexpr (std::is_lvalue_reference_v<TValue>)
            *pElement = value;
        else
            kx::detail::ConstructAt(pElement,
                                    static_cast<TValue&&>(value)); // without destroying the moved-from one: see Insert
        return {pElement, this, nIndex};
    }

    // Each element of (nFrom, nTo] takes the one before it, the last one first; element nFrom is left for the caller.
    // Within a block that is a loop over neighbours.
    template <class TValue>
    void ShiftUp(uint32 nFrom, uint32 nTo)
    {
        while (nFrom < nTo)
        {
            T* pTo = SlotAddress(m_nFirst + nTo);
            const uint32 nPlace = (m_nFirst + nTo) % m_nBlockSize;
            const uint32 nInBlock = nPlace < nTo - nFrom ? nPlace : nTo - nFrom;
            for (T* pStop = pTo - nInBlock; pTo != pStop; --pTo)
                *pTo = static_cast<TValue&&>(pTo[-1]);
            nTo -= nInBlock;
            if (nFrom < nTo)
                *pTo = static_cast<TValue&&>(*SlotAddress(m_nFirst + --nTo));
        }
    }

    // Each element of [nFrom, nTo) takes the one behind it, the first one first; element nTo is left for the caller.
    template <class TValue>
    void ShiftDown(uint32 nFrom, uint32 nTo)
    {
        while (nFrom < nTo)
        {
            T* pTo = SlotAddress(m_nFirst + nFrom);
            const uint32 nPlaces = SlotsToBlockEnd(nFrom) - 1;
            const uint32 nInBlock = nPlaces < nTo - nFrom ? nPlaces : nTo - nFrom;
            for (T* pStop = pTo + nInBlock; pTo != pStop; ++pTo)
                *pTo = static_cast<TValue&&>(pTo[1]);
            nFrom += nInBlock;
            if (nFrom < nTo)
                *pTo = static_cast<TValue&&>(*SlotAddress(m_nFirst + ++nFrom));
        }
    }

    // Appends copies of neighbours: the slots from one at the back to the end of its block are free.
    void AppendCopies(const T* pFirst, uint32 nCount)
    {
        while (nCount > 0)
        {
            const uint32 nFree = SlotsToBlockEnd(m_nSize);
            T* pSlot = AcquireBackSlot();
            const uint32 nNow = nFree < nCount ? nFree : nCount;
            kx::detail::CopyRange(pSlot, pFirst, pFirst + nNow);
            m_nSize += nNow - 1;
            pFirst += nNow;
            nCount -= nNow;
        }
    }

    void AppendCopies(const TBlockArray& other)
    {
        other.ForEachRun([this](const T* pFirst, uint32 nCount) { AppendCopies(pFirst, nCount); });
    }

    // Calls function(first element, number) for each block's part of the elements, in ascending order.
    template <class TFunction>
    void ForEachRun(TFunction function) const
    {
        for (uint32 nIndex = 0, nCount = 0; nIndex < m_nSize; nIndex += nCount)
        {
            const uint32 nInBlock = SlotsToBlockEnd(nIndex);
            nCount = nInBlock < m_nSize - nIndex ? nInBlock : m_nSize - nIndex;
            function(SlotAddress(m_nFirst + nIndex), nCount);
        }
    }

    void DestroyElements()
    {
        if constexpr (!std::is_trivially_destructible_v<T>)
            ForEachRun([](T* pFirst, uint32 nCount) { kx::detail::DestroyRange(pFirst, pFirst + nCount); });
    }

    void FreeAll()
    {
        DestroyElements();
        if (m_ppBlocks == nullptr)
            return;
        for (uint32 i = 0; i < m_nBlocks; ++i)
            GetNormalAllocator()->Free(m_ppBlocks[i]);
        GetNormalAllocator()->Free(m_ppBlocks);
    }

    uint32 m_nFirst = 0;
    uint32 m_nSize = 0;
    uint32 m_nBlocks = 0;
    uint32 m_nBlockSize = 16;
    T** m_ppBlocks = nullptr;
};
