// TList<T>: the doubly linked list.
//
//              +---------------------------------------------+
//              v                                             |
//      +---------------+     +--------+     +--------+       |
//      | m_pNext  -----+---> | next --+---> | next --+-------+     a ring of nodes, closed by the
//  +---+- m_pPrev      | <---+- prev  | <---+- prev  | <-----+     pair of links in the list object
//  |   +---------------+     |   e 0  |     |   e 1  |       |
//  |    TList::m_sentinel    +--------+     +--------+       |
//  +---------------------------------------------------------+
//
//   The links of an empty list point at themselves, so no operation has a special case for the first or the last node.
//
// What sets it apart from std::list: moving a list rewrites the two links that point at the list object. Copy
// assignment assigns to the existing elements. Insert copies an rvalue like any other value; Emplace moves it in.
//
// Each element has a node of its own: one allocation of sizeof(SListNode<T>) from the normal allocator, one Free.
// Elements never move. An iterator stays valid until its element is erased, End() until the list is moved or destroyed.
#pragma once

#include "core/containers/lifetime.h"
#include "core/containers/nodeiterator.h"
#include "core/containers/reverseiterator.h"
#include "core/containers/sequence.h"
#include "core/memory/memorymanager.h"

#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <utility>

namespace kx::detail
{
struct SListLinks
{
    SListLinks* m_pNext;
    SListLinks* m_pPrev;

    static SListLinks* Next(SListLinks* pNode) { return pNode->m_pNext; }
    static SListLinks* Previous(SListLinks* pNode) { return pNode->m_pPrev; }

    // In a ring, nothing distinguishes the sentinel from a node.
    static bool IsEnd(const SListLinks*) { return false; }
};
} // namespace kx::detail

/// A node: the links, then the element.
template <class T>
struct SListNode : kx::detail::SListLinks
{
    explicit SListNode(const T& value) noexcept : m_Element(value) {}
    template <class... TArgs>
    explicit SListNode(kx::detail::SInPlace, TArgs&&... args) noexcept
        : m_Element(kx::detail::MakeElement<T>(static_cast<TArgs&&>(args)...))
    {
    }

    T m_Element;
};

/// A bidirectional iterator; see kx::detail::TNodeIterator.
template <class T>
using TListIterator = kx::detail::TNodeIterator<T, kx::detail::SListLinks>;

/// Enumerates a TList; see kx::detail::TNodeEnumerator.
/// After MoveNext() returned false, the next call starts over at the first element, because the ring closes. Do not
/// rely on this in code that must work with other containers.
template <class T>
using TListEnumerator = kx::detail::TNodeEnumerator<T, kx::detail::SListLinks>;

/// The doubly linked list; see the head of this file.
template <class T>
class TList : public kx::detail::TSequence<TList<T>, T>
{
public:
    /// The names that generic code expects.
    using value_type = T;
    using iterator = TListIterator<T>;
    using const_iterator = TListIterator<const T>;

    /// Creates an empty list. Makes no allocator call.
    TList() = default;

    /// Copies the elements in order, one node each.
    TList(std::initializer_list<T> values) : m_nSize(static_cast<uint32>(values.size()))
    {
        AppendCopies(values.begin(), values.end());
    }
    TList(const TList& other) : kx::detail::TSequence<TList, T>(), m_nSize(other.m_nSize)
    {
        AppendCopies(other.Begin(), other.End());
    }

    /// Takes ownership of the nodes, in constant time.
    /// No element is touched and no allocator is called. The source is empty afterwards and can be used again.
    TList(TList&& other) noexcept { TakeNodes(other); }

    /// Destroys the elements front to back, freeing each node before the next element is destroyed.
    ~TList()
    {
        static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__,
                      "TList: nodes are aligned to 16 bytes; keep elements of a wider alignment in a TArray");
        static_assert(offsetof(TList, m_nSize) == 0 && offsetof(TList, m_sentinel) == 8 && sizeof(TList) == 24,
                      "size, then the two links: the layout that debugger views rely on");
        static_assert(
            kElementOffset == 16
                && sizeof(SListNode<T>)
                       == 16 + (sizeof(T) + alignof(SListNode<T>) - 1) / alignof(SListNode<T>) * alignof(SListNode<T>),
            "next, previous, element: the layout that debugger views rely on");
        FreeNodes(m_sentinel.m_pNext);
    }

    /// Copy-assigns to the existing elements, front to back, then adjusts the size.
    /// Destroys and frees the surplus elements, or appends copies of the missing ones. Self-assignment has no effect.
    TList& operator=(const TList& other)
    {
        if (this == &other)
            return *this;
        iterator to = Begin();
        const_iterator from = other.Begin();
        for (; to != End() && from != other.End(); ++to, ++from)
            kx::detail::AssignTo(*to, *from);
        if (to != End())
        {
            SListLinks* pSurplus = NodeOf(to);
            Link(pSurplus->m_pPrev, &m_sentinel);
            FreeNodes(pSurplus);
        }
        AppendCopies(from, other.End());
        m_nSize = other.m_nSize;
        return *this;
    }

    /// Clears this list, then takes ownership of the nodes of the other one. Self-assignment has no effect.
    TList& operator=(TList&& other) noexcept
    {
        if (this == &other)
            return *this;
        Clear();
        TakeNodes(other);
        return *this;
    }

    /// Return the number of elements, and whether there are none.
    [[nodiscard]] uint32 Size() const { return m_nSize; }
    [[nodiscard]] bool IsEmpty() const { return m_nSize == 0; }

    /// Return iterators to the first element and past the last one.
    [[nodiscard]] iterator Begin() KX_LIFETIMEBOUND { return PositionOf(m_sentinel.m_pNext); }
    [[nodiscard]] iterator End() KX_LIFETIMEBOUND { return PositionOf(&m_sentinel); }
    [[nodiscard]] const_iterator Begin() const KX_LIFETIMEBOUND { return const_cast<TList*>(this)->Begin(); }
    [[nodiscard]] const_iterator End() const KX_LIFETIMEBOUND { return const_cast<TList*>(this)->End(); }
    [[nodiscard]] iterator begin() KX_LIFETIMEBOUND { return Begin(); }
    [[nodiscard]] iterator end() KX_LIFETIMEBOUND { return End(); }
    [[nodiscard]] const_iterator begin() const KX_LIFETIMEBOUND { return Begin(); }
    [[nodiscard]] const_iterator end() const KX_LIFETIMEBOUND { return End(); }

    /// Return iterators for walking backwards: to the last element, and past the first one.
    [[nodiscard]] auto rbegin() KX_LIFETIMEBOUND { return TReverseIterator<iterator>(End()); }
    [[nodiscard]] auto rend() KX_LIFETIMEBOUND { return TReverseIterator<iterator>(Begin()); }
    [[nodiscard]] auto rbegin() const KX_LIFETIMEBOUND { return TReverseIterator<const_iterator>(End()); }
    [[nodiscard]] auto rend() const KX_LIFETIMEBOUND { return TReverseIterator<const_iterator>(Begin()); }

    /// Return the last element; trigger the debug break if there is none.
    [[nodiscard]] T& Last() KX_LIFETIMEBOUND { return *--this->NotEmpty(*this).End(); }
    [[nodiscard]] const T& Last() const KX_LIFETIMEBOUND { return *--this->NotEmpty(*this).End(); }

    /// Returns an enumerator that starts before the first element.
    [[nodiscard]] TListEnumerator<T> GetEnumerator() KX_LIFETIMEBOUND { return {End().Address(), End().Address()}; }
    [[nodiscard]] TListEnumerator<const T> GetEnumerator() const KX_LIFETIMEBOUND
    {
        return {End().Address(), End().Address()};
    }

    /// Appends a copy and returns an iterator to it. Note that TSList::Insert(value) prepends.
    iterator Insert(const T& value) { return Insert(End(), value); }

    /// Inserts a copy before pos, which may be End(), and returns an iterator to it.
    /// Constant time. The copy is made before any link changes, so the value may be an element of this list.
    iterator Insert(iterator pos, const T& value)
    {
        kx::detail::RequireCopies<T>();
        return EmplaceAt(pos, value);
    }

    /// Inserts before pos an element that is constructed from the arguments, and returns an iterator to it.
    /// Costs what Insert costs, without a copy or a move. The arguments may refer to elements of this list.
    template <class... TArgs>
    iterator EmplaceAt(const_iterator pos, TArgs&&... args)
    {
        SListLinks* pNode = NewNode(std::forward<TArgs>(args)...);
        SListLinks* pNext = NodeOf(pos);
        Link(pNext->m_pPrev, pNode);
        Link(pNode, pNext);
        ++m_nSize;
        return PositionOf(pNode);
    }

    /// Appends an element that is constructed from the arguments, and returns it.
    /// Constant time, without a copy or a move. The arguments may refer to elements of this list.
    template <class... TArgs>
    T& Emplace(TArgs&&... args)
    {
        return *EmplaceAt(End(), std::forward<TArgs>(args)...);
    }

    /// Destroys the element at pos, frees its node, and returns an iterator to the element that followed.
    /// Constant time. pos is not checked: it must point to an element of this list.
    iterator Erase(iterator pos)
    {
        SListLinks* pNode = NodeOf(pos);
        SListLinks* pNext = pNode->m_pNext;
        Link(pNode->m_pPrev, pNext);
        FreeNode(pNode);
        --m_nSize;
        return PositionOf(pNext);
    }
    template <std::same_as<const_iterator> TConst>
    iterator Erase(TConst pos)
    {
        return Erase(PositionOf(NodeOf(pos)));
    }

    /// Removes the elements for which the predicate is true and returns their number.
    /// Calls predicate(const element) once for each, in order; it must not throw. Linear.
    template <class TPredicate>
    uint32 EraseIf(TPredicate predicate)
    {
        const uint32 nOldSize = m_nSize;
        for (iterator pos = Begin(); pos != End();)
        {
            const iterator current = pos++;
            if (predicate(std::as_const(*current)))
                Erase(current);
        }
        return nOldSize - m_nSize;
    }

    /// Destroys the elements front to back and frees their nodes.
    void Clear()
    {
        FreeNodes(m_sentinel.m_pNext);
        Reset();
    }

    /// Returns whether the invariants hold: both directions of the ring and the count agree. For tests and debugging.
    [[nodiscard]] bool Validate() const
    {
        uint32 nNodes = 0;
        for (const SListLinks* pNode = m_sentinel.m_pNext; pNode != &m_sentinel; pNode = pNode->m_pNext, ++nNodes)
        {
            if (nNodes == m_nSize || pNode->m_pNext->m_pPrev != pNode || pNode->m_pPrev->m_pNext != pNode)
                return false;
        }
        return nNodes == m_nSize && m_sentinel.m_pNext->m_pPrev == &m_sentinel;
    }

private:
    using SListLinks = kx::detail::SListLinks;

    static constexpr std::uintptr_t kElementOffset = kx::detail::kElementOffset<T, SListLinks>;

    static iterator PositionOf(SListLinks* pNode) { return iterator(kx::detail::ElementOf<T>(pNode)); }
    static SListLinks* NodeOf(const_iterator pos)
    {
        return kx::detail::NodeOf<SListLinks>(const_cast<T*>(pos.Address()));
    }

    static void Link(SListLinks* pFirst, SListLinks* pSecond)
    {
        pFirst->m_pNext = pSecond;
        pSecond->m_pPrev = pFirst;
    }

    template <class... TArgs>
    static SListLinks* NewNode(TArgs&&... args)
    {
        return new (*GetNormalAllocator()) SListNode<T>(kx::detail::SInPlace(), std::forward<TArgs>(args)...);
    }

    static void FreeNode(SListLinks* pLinks) noexcept
    {
        auto* pNode = static_cast<SListNode<T>*>(pLinks);
        pNode->~SListNode();
        GetNormalAllocator()->Free(pNode);
    }

    // Frees the nodes from pNode up to the sentinel.
    void FreeNodes(SListLinks* pNode)
    {
        while (pNode != &m_sentinel)
            FreeNode(std::exchange(pNode, pNode->m_pNext));
    }

    // Appends a copy of each element of the range; the caller sets the size. The ring is closed only at the end,
    // because nothing reads it before.
    template <class TIterator>
    void AppendCopies(TIterator first, TIterator last)
    {
        kx::detail::RequireCopies<T>();
        SListLinks* pLast = m_sentinel.m_pPrev;
        for (; first != last; ++first)
        {
            SListLinks* pNode = NewNode(*first);
            Link(pLast, pNode);
            pLast = pNode;
        }
        Link(pLast, &m_sentinel);
    }

    void TakeNodes(TList& other)
    {
        if (other.IsEmpty())
            return;
        Link(&m_sentinel, other.m_sentinel.m_pNext);
        Link(other.m_sentinel.m_pPrev, &m_sentinel);
        m_nSize = other.m_nSize;
        other.Reset();
    }

    void Reset()
    {
        Link(&m_sentinel, &m_sentinel);
        m_nSize = 0;
    }

    uint32 m_nSize = 0;
    SListLinks m_sentinel = {&m_sentinel, &m_sentinel};
};
