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
//   Element i is in slot m_nFirst + i, counted around the ring. slot / m_nBlockSize is its block, slot % m_nBlockSize
//   its place in the block. Invariants: m_nFirst is less than the number of slots if there is a table, and 0 in an
//   empty array; the block of each element is allocated.
//
// What sets it apart from std::deque: blocks hold 16 elements of any size. Once allocated, they stay until the array is
// destroyed or move-assigned to; Erase and Clear never free one. The table starts with 8 entries. It grows by half when
// the next slot would enter the block at the other end of the run. Growth at either end never moves elements.
//
// The block size is stored, so each access by index and each step of an iterator costs one division. Growing, shifting,
// copying and destroying go block by block.
//
// Blocks and table come from operator new[](bytes, normal allocator) and are released with Free.
//
// References stay valid until their element is erased or shifted. Iterators store their index, so insertion and removal
// invalidate all of them.
#pragma once

#include "core/containers/iteratorchecks.h"
#include "core/containers/lifetime.h"
#include "core/containers/reverseiterator.h"
#include "core/containers/sequence.h"
#include "core/memory/memorymanager.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <utility>

template <class T>
class TBlockArray;

/// A random-access iterator over a TBlockArray; T is const for read-only access.
/// == compares the element's address alone, which is null at the end. So End() equals every iterator that has advanced
/// past the last element, even one of another array. The order and the distance are those of the indices.
template <class T>
class TBlockArrayIterator
{
public:
    using value_type = std::remove_const_t<T>;
    using difference_type = std::ptrdiff_t;

    TBlockArrayIterator() = default;

    /// Converts to the read-only form, never back.
    template <class TOther>
    TBlockArrayIterator(const TBlockArrayIterator<TOther>& other) requires std::same_as<T, const TOther>
        : m_pElement(other.m_pElement), m_pArray(other.m_pArray), m_nIndex(other.m_nIndex)
    {
    }

    [[nodiscard]] KX_CHECK_INLINE T& operator*() const { return *operator->(); }
    [[nodiscard]] KX_CHECK_INLINE T* operator->() const
    {
        KX_BREAK_IF_AT_END(m_pElement == nullptr);
        return m_pElement;
    }

    /// Advances to the next element; triggers the debug break at the end.
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

    /// Goes back to the element before; triggers the debug break at the first one.
    TBlockArrayIterator& operator--()
    {
        m_pElement = kx::detail::PointerTo((*m_pArray)[--m_nIndex]);
        return *this;
    }

    TBlockArrayIterator operator--(int)
    {
        TBlockArrayIterator old = *this;
        --*this;
        return old;
    }

    /// Move by so many elements, to the end at most; trigger the debug break outside of the array.
    TBlockArrayIterator& operator+=(difference_type nSteps)
    {
        m_nIndex += static_cast<uint32>(nSteps);
        m_pElement = m_nIndex == m_pArray->Size() ? nullptr : kx::detail::PointerTo((*m_pArray)[m_nIndex]);
        return *this;
    }
    TBlockArrayIterator& operator-=(difference_type nSteps) { return *this += -nSteps; }
    [[nodiscard]] TBlockArrayIterator operator+(difference_type nSteps) const
    {
        TBlockArrayIterator moved = *this;
        return moved += nSteps;
    }
    [[nodiscard]] friend TBlockArrayIterator operator+(difference_type nSteps, const TBlockArrayIterator& pos)
    {
        return pos + nSteps;
    }
    [[nodiscard]] TBlockArrayIterator operator-(difference_type nSteps) const { return *this + -nSteps; }
    [[nodiscard]] T& operator[](difference_type nSteps) const
    {
        return (*m_pArray)[m_nIndex + static_cast<uint32>(nSteps)];
    }

    template <class TOther>
    [[nodiscard]] difference_type
    operator-(const TBlockArrayIterator<TOther>& other) const requires std::same_as<const T, const TOther>
    {
        return difference_type{m_nIndex} - difference_type{other.m_nIndex};
    }

    template <class TOther>
    [[nodiscard]] std::strong_ordering
    operator<=>(const TBlockArrayIterator<TOther>& other) const requires std::same_as<const T, const TOther>
    {
        return m_nIndex <=> other.m_nIndex;
    }

    template <class TOther>
    [[nodiscard]] bool
    operator==(const TBlockArrayIterator<TOther>& other) const requires std::same_as<const T, const TOther>
    {
        return m_pElement == other.m_pElement;
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

/// Enumerates a TBlockArray by index.
template <class T>
class TBlockArrayEnumerator
{
public:
    using TOwner = std::conditional_t<std::is_const_v<T>, const TBlockArray<std::remove_const_t<T>>, TBlockArray<T>>;

    explicit TBlockArrayEnumerator(TOwner* pArray) : m_pArray(pArray) {}

    /// Advances to the next element; returns false if there is none.
    /// Must not be called again after it returned false.
    bool MoveNext()
    {
        ++m_nIndex;
        m_pElement = m_nIndex == m_pArray->Size() ? nullptr : kx::detail::PointerTo((*m_pArray)[m_nIndex]);
        return m_pElement != nullptr;
    }

    /// Returns the current element; triggers the debug break if there is none.
    [[nodiscard]] T& Current() const
    {
        kx::detail::BreakUnless(m_pElement != nullptr);
        return *m_pElement;
    }

private:
    T* m_pElement = nullptr;
    TOwner* m_pArray;
    uint32 m_nIndex = UINT32_MAX; // one before element 0
};

/// The double-ended sequence in blocks; see the head of this file.
template <class T>
class TBlockArray : public kx::detail::TSequence<TBlockArray<T>, T>
{
public:
    /// The names that generic code expects.
    using value_type = T;
    using iterator = TBlockArrayIterator<T>;
    using const_iterator = TBlockArrayIterator<const T>;

    /// Creates an empty array without a table. Makes no allocator call.
    TBlockArray() = default;

    /// Copies the elements in ascending order, starting at slot 0.
    TBlockArray(std::initializer_list<T> values) { AppendCopies(values.begin(), static_cast<uint32>(values.size())); }
    TBlockArray(const TBlockArray& other) : kx::detail::TSequence<TBlockArray, T>() { AppendCopies(other); }

    /// Takes ownership of the table and the blocks.
    /// No element is touched and no allocator is called. The source is left without a block size: its Size() is 0, and
    /// it may be destroyed or move-assigned to. Any operation that needs a slot in it divides by zero, which faults in
    /// the hardware.
    TBlockArray(TBlockArray&& other) noexcept
        : m_nFirst(std::exchange(other.m_nFirst, 0)),
          m_nSize(std::exchange(other.m_nSize, 0)),
          m_nBlocks(std::exchange(other.m_nBlocks, 0)),
          m_nBlockSize(std::exchange(other.m_nBlockSize, 0)),
          m_ppBlocks(std::exchange(other.m_ppBlocks, nullptr))
    {
    }

    /// Destroys the elements in ascending order, then frees the memory.
    /// If there is a table, calls Free for each of its entries in turn, null or not, then for the table.
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

    /// Clears this array, then copies the elements in ascending order.
    /// The table and the blocks are kept. Each element takes a slot at the back and is copy-constructed there. So the
    /// array starts at slot 0 again, and allocates only what the old blocks cannot hold. Self-assignment has no effect.
    TBlockArray& operator=(const TBlockArray& other)
    {
        if (this == &other)
            return *this;
        Clear();
        AppendCopies(other);
        return *this;
    }

    /// Destroys and frees as the destructor does, then takes ownership as the move constructor does.
    /// Self-assignment has no effect.
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

    /// Return the number of elements, and whether there are none.
    [[nodiscard]] uint32 Size() const { return m_nSize; }
    [[nodiscard]] bool IsEmpty() const { return m_nSize == 0; }

    /// Returns element nIndex, in constant time; triggers the debug break past the end.
    /// The index is 64 bits wide, so that negative indices fail the check instead of being truncated.
    [[nodiscard]] T& operator[](uint64 nIndex) KX_LIFETIMEBOUND
    {
        kx::detail::BreakUnless(nIndex < m_nSize);
        return *SlotAddress(m_nFirst + static_cast<uint32>(nIndex));
    }
    [[nodiscard]] const T& operator[](uint64 nIndex) const KX_LIFETIMEBOUND
    {
        return const_cast<TBlockArray&>(*this)[nIndex];
    }

    /// Return the first and the last element; trigger the debug break on an empty array.
    [[nodiscard]] T& First() KX_LIFETIMEBOUND { return (*this)[0]; }
    [[nodiscard]] const T& First() const KX_LIFETIMEBOUND { return (*this)[0]; }
    [[nodiscard]] T& Last() KX_LIFETIMEBOUND { return (*this)[uint64{m_nSize} - 1]; }
    [[nodiscard]] const T& Last() const KX_LIFETIMEBOUND { return (*this)[uint64{m_nSize} - 1]; }

    /// Return iterators to the first element and past the last one.
    [[nodiscard]] iterator Begin() KX_LIFETIMEBOUND { return PositionOf(0); }
    [[nodiscard]] iterator End() KX_LIFETIMEBOUND { return {nullptr, this, m_nSize}; }
    [[nodiscard]] const_iterator Begin() const KX_LIFETIMEBOUND { return const_cast<TBlockArray*>(this)->Begin(); }
    [[nodiscard]] const_iterator End() const KX_LIFETIMEBOUND { return const_cast<TBlockArray*>(this)->End(); }
    [[nodiscard]] iterator begin() KX_LIFETIMEBOUND { return Begin(); }
    [[nodiscard]] iterator end() KX_LIFETIMEBOUND { return End(); }
    [[nodiscard]] const_iterator begin() const KX_LIFETIMEBOUND { return Begin(); }
    [[nodiscard]] const_iterator end() const KX_LIFETIMEBOUND { return End(); }

    /// Return iterators for walking backwards: to the last element, and past the first one.
    [[nodiscard]] auto rbegin() KX_LIFETIMEBOUND { return TReverseIterator<iterator>(End()); }
    [[nodiscard]] auto rend() KX_LIFETIMEBOUND { return TReverseIterator<iterator>(Begin()); }
    [[nodiscard]] auto rbegin() const KX_LIFETIMEBOUND { return TReverseIterator<const_iterator>(End()); }
    [[nodiscard]] auto rend() const KX_LIFETIMEBOUND { return TReverseIterator<const_iterator>(Begin()); }

    /// Returns an enumerator that starts before the first element.
    [[nodiscard]] TBlockArrayEnumerator<T> GetEnumerator() KX_LIFETIMEBOUND { return TBlockArrayEnumerator<T>(this); }
    [[nodiscard]] TBlockArrayEnumerator<const T> GetEnumerator() const KX_LIFETIMEBOUND
    {
        return TBlockArrayEnumerator<const T>(this);
    }

    /// Inserts before pos and returns an iterator to the new element.
    /// Only the index of pos counts. At either end, insertion takes amortised constant time and touches no other
    /// element. Inserting into an empty array uses a front slot, wherever pos is. In the middle, insertion shifts the
    /// shorter side by one place: one construction at the end, then assignments up to pos.
    ///
    /// The const form copies throughout. The value is read last, so a reference to an element of this array that is
    /// shifted yields that place's new value.
    ///
    /// The rvalue form moves throughout. In the middle, it constructs the new element over the moved-from one without
    /// destroying that one. So an element whose moved-from state owns something leaks it there, and counts of living
    /// elements rise by two. Use the const form for such types.
    iterator Insert(iterator pos, const T& value) { return InsertAt<const T&>(pos.m_nIndex, value); }
    iterator Insert(iterator pos, T&& value) { return InsertAt<T>(pos.m_nIndex, std::move(value)); }

    /// Appends an element that is constructed from the arguments, and returns it.
    /// Amortised constant time; no other element is touched. The arguments may refer to elements of this array.
    template <class... TArgs>
    T& Emplace(TArgs&&... args)
    {
        return *EmplaceAt(End(), std::forward<TArgs>(args)...);
    }

    /// Inserts before pos an element that is constructed from the arguments, and returns an iterator to it.
    /// At either end, it is constructed in place. In the middle, it is made first, the shorter side shifts by moves,
    /// and the element is assigned. So it suits every type, and the arguments may refer to elements of this array.
    template <class... TArgs>
    iterator EmplaceAt(const_iterator pos, TArgs&&... args)
    {
        const uint32 nIndex = pos.m_nIndex;
        if (nIndex != 0 && nIndex != m_nSize)
        {
            T value = kx::detail::MakeElement<T>(std::forward<TArgs>(args)...);
            T& gap = OpenGap<T>(nIndex);
            kx::detail::AssignTo(gap, std::move(value));
            return {kx::detail::PointerTo(gap), this, nIndex};
        }
        T* pSlot = nIndex == 0 ? AcquireFrontSlot() : AcquireBackSlot();
        return {kx::detail::ConstructAt(pSlot, std::forward<TArgs>(args)...), this, nIndex};
    }

    /// Removes the element at pos and returns an iterator to the element that followed.
    /// Only the index of pos counts; past the end, it triggers the debug break. The shorter side closes the gap by
    /// assignment, and the surplus element at that end is destroyed. No block is freed.
    iterator Erase(iterator pos) { return EraseAt(pos.m_nIndex); }
    template <std::same_as<const_iterator> TConst>
    iterator Erase(TConst pos)
    {
        return EraseAt(pos.m_nIndex);
    }

    /// Removes the elements for which the predicate is true and returns their number.
    /// Calls predicate(const element) once for each, in order; it must not throw. The other elements move down by
    /// assignment, and the surplus last ones are destroyed, from the end. Linear.
    template <class TPredicate>
    uint32 EraseIf(TPredicate predicate)
    {
        const uint32 nOldSize = m_nSize;
        const uint32 nNewSize = MoveDownUnless(predicate);
        while (m_nSize > nNewSize)
            EraseAt(m_nSize - 1);
        return nOldSize - nNewSize;
    }

    /// Destroys the elements in ascending order; keeps the table and all blocks.
    void Clear()
    {
        DestroyElements();
        m_nFirst = 0;
        m_nSize = 0;
    }

    /// Returns whether the invariants hold. For tests and debugging.
    [[nodiscard]] bool Validate() const
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

    // Block nBlock of the ring, counted from block 0. Numbers from m_nBlocks on wrap around, at most once.
    T*& Block(uint32 nBlock) const { return m_ppBlocks[nBlock >= m_nBlocks ? nBlock - m_nBlocks : nBlock]; }

    // Slot nSlot of the ring, counted likewise. One processor division yields both quotient and remainder.
    T* SlotAddress(uint32 nSlot) const { return Block(nSlot / m_nBlockSize) + nSlot % m_nBlockSize; }

    // The number of slots from that of element nIndex to the end of its block.
    uint32 SlotsToBlockEnd(uint32 nIndex) const { return m_nBlockSize - (m_nFirst + nIndex) % m_nBlockSize; }

    iterator PositionOf(uint32 nIndex)
    {
        return {nIndex < m_nSize ? SlotAddress(m_nFirst + nIndex) : nullptr, this, nIndex};
    }

    // Return a raw slot after the last element, or before the first one. It counts as an element at once. Only at the
    // edge of a block can the table be too small, or the block be missing.
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

    // Return the first slot of the block after the run, or the last slot of the block before it.
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

    // Must be called at the edge of a block. If less than a block's worth of slots is free, the run's other end is in
    // the next block. Elements stay where they are. 2^31 slots or more trigger the debug break, because slot numbers
    // run up to twice the number of slots and have 32 bits.
    void GrowIfRunWouldMeetItself()
    {
        if (Slots() - m_nSize >= m_nBlockSize)
            return;
        const uint32 nExtra = m_nBlocks == 0 ? 8 : m_nBlocks / 2;
        const uint32 nBlocks = m_nBlocks + nExtra;
        kx::detail::BreakUnless(uint64{nBlocks} * m_nBlockSize <= UINT32_MAX / 2);
        T** ppNew = static_cast<T**>(::operator new[](uint64{nBlocks} * sizeof(T*), *GetNormalAllocator()));
        // The run now starts in block 0. All old blocks are kept, because hardly a slot was free.
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

    // Takes the index and not the iterator, so that nobody computes the address in an iterator that is only passed on.
    iterator EraseAt(uint32 nIndex)
    {
        kx::detail::BreakUnless(nIndex < m_nSize);
        if (nIndex < m_nSize / 2)
        {
            ShiftUp<T>(0, nIndex);
            kx::detail::DestroyAt(kx::detail::PointerTo(First()));
            --m_nSize;
            m_nFirst = m_nFirst + 1 == Slots() ? 0 : m_nFirst + 1;
        }
        else
        {
            ShiftDown<T>(nIndex, m_nSize - 1);
            kx::detail::DestroyAt(kx::detail::PointerTo(Last()));
            --m_nSize;
        }
        if (m_nSize == 0)
            m_nFirst = 0;
        return PositionOf(nIndex);
    }

    // TValue is T for moving and const T& for copying. Only the two ends are compiled into the caller.
    template <class TValue>
    iterator InsertAt(uint32 nIndex, TValue&& value)
    {
        if (nIndex == 0)
            return {kx::detail::ConstructAt(AcquireFrontSlot(), static_cast<TValue&&>(value)), this, nIndex};
        if (nIndex == m_nSize)
            return {kx::detail::ConstructAt(AcquireBackSlot(), static_cast<TValue&&>(value)), this, nIndex};
        return InsertInMiddle<TValue>(nIndex, static_cast<TValue&&>(value));
    }

    template <class TValue>
    KX_NOINLINE iterator InsertInMiddle(uint32 nIndex, TValue&& value)
    {
        T* pElement = kx::detail::PointerTo(OpenGap<TValue>(nIndex));
        if constexpr (std::is_lvalue_reference_v<TValue>)
            kx::detail::AssignTo(*pElement, value);
        else
            kx::detail::ConstructAt(pElement,
                                    static_cast<TValue&&>(value)); // without destroying the moved-from one: see Insert
        return {pElement, this, nIndex};
    }

    // Adds an element in the middle by shifting the shorter side; returns the element at nIndex, which is to be
    // replaced.
    template <class TValue>
    T& OpenGap(uint32 nIndex)
    {
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
        return (*this)[nIndex];
    }

    // Moves the elements for which the predicate is false to the front and returns their number.
    template <class TPredicate>
    uint32 MoveDownUnless(TPredicate& predicate) noexcept
    {
        uint32 nKept = 0;
        uint32 nIndex = 0;
        for (T& element : *this)
        {
            if (!predicate(std::as_const(element)))
            {
                if (nKept != nIndex)
                    (*this)[nKept] = std::move(element);
                ++nKept;
            }
            ++nIndex;
        }
        return nKept;
    }

    // Assigns to each element of (nFrom, nTo], from last to first, the element before it. Element nFrom is left to the
    // caller. Within a block, this is a loop over neighbours.
    template <class TValue>
    void ShiftUp(uint32 nFrom, uint32 nTo) noexcept
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

    // Assigns to each element of [nFrom, nTo), from first to last, the element after it. Element nTo is left to the
    // caller.
    template <class TValue>
    void ShiftDown(uint32 nFrom, uint32 nTo) noexcept
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

    // Appends copies of contiguous elements. From a slot at the back to the end of its block, all slots are free.
    void AppendCopies(const T* pFirst, uint32 nCount)
    {
        kx::detail::RequireCopies<T>();
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

    // Calls function(first element, count) for each block's part of the elements, in ascending order.
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
