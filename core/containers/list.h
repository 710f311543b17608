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
//   An empty list's links point at themselves. So no operation has a special case for the first or the last node.
//
// What sets it apart from std::list: iterators go forward only; moving a list rewrites the two links that point at the
// list object; copy assignment assigns to the elements that are there; an rvalue is copied like any other value.
//
// Each element has a node of its own: one allocation of sizeof(SListNode<T>) from the normal allocator, one Free. An
// element never moves, and an iterator stays valid until its element is erased, End() until the list is moved or dies.
#pragma once

#include "core/containers/nodeiterator.h"
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
};
} // namespace kx::detail

template <class T>
struct SListNode : kx::detail::SListLinks
{
    explicit SListNode(const T& value) : m_Element(value) {}

    T m_Element;
};

template <class T>
using TListIterator = kx::detail::TNodeIterator<T, kx::detail::SListLinks>;

// After its MoveNext() was false it would start over from the first element, since the ring closes; do not rely on it
// in code that is to work with other containers.
template <class T>
using TListEnumerator = kx::detail::TNodeEnumerator<T, kx::detail::SListLinks>;

template <class T>
class TList
{
public:
    using value_type = T;
    using iterator = TListIterator<T>;
    using const_iterator = TListIterator<const T>;

    // No allocator call.
    TList() = default;

    // Copies, one node for each.
    TList(std::initializer_list<T> values) : m_nSize(static_cast<uint32>(values.size()))
    {
        AppendCopies(values.begin(), values.end());
    }
    TList(const TList& other) : m_nSize(other.m_nSize) { AppendCopies(other.Begin(), other.End()); }

    // Takes the nodes over, in constant time. No element is touched, no allocator is called. The source is empty
    // afterwards and can be used again.
    TList(TList&& other) noexcept { TakeNodes(other); }

    // Destroys the elements front to back, each node freed before the next one's turn.
    ~TList()
    {
        static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__,
                      "TList: nodes are aligned to 16 bytes; keep elements of a wider alignment in a TArray");
        static_assert(std::is_copy_constructible_v<T>,
                      "TList copies elements in; keep what can only be moved in a TArray");
        static_assert(offsetof(TList, m_nSize) == 0 && offsetof(TList, m_sentinel) == 8 && sizeof(TList) == 24,
                      "size, then the two links: the layout that debugger views rely on");
        static_assert(
            kElementOffset == 16
                && sizeof(SListNode<T>)
                       == 16 + (sizeof(T) + alignof(SListNode<T>) - 1) / alignof(SListNode<T>) * alignof(SListNode<T>),
            "next, previous, element: the layout that debugger views rely on");
        FreeNodes(m_sentinel.m_pNext);
    }

    // Copy-assigns to the elements that are there, front to back; then destroys and frees what is too many, or appends
    // copies of what is missing. Assigning a list to itself has no effect.
    TList& operator=(const TList& other)
    {
        if (this == &other)
            return *this;
        iterator to = Begin();
        const_iterator from = other.Begin();
        for (; to != End() && from != other.End(); ++to, ++from)
            *to = *from;
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

    // Clears this list and takes the nodes of the other one over. Moving a list onto itself has no effect.
    TList& operator=(TList&& other) noexcept
    {
        if (this == &other)
            return *this;
        Clear();
        TakeNodes(other);
        return *this;
    }

    uint32 Size() const { return m_nSize; }
    bool IsEmpty() const { return m_nSize == 0; }

    iterator Begin() { return PositionOf(m_sentinel.m_pNext); }
    iterator End() { return PositionOf(&m_sentinel); }
    const_iterator Begin() const { return const_cast<TList*>(this)->Begin(); }
    const_iterator End() const { return const_cast<TList*>(this)->End(); }
    iterator begin() { return Begin(); }
    iterator end() { return End(); }
    const_iterator begin() const { return Begin(); }
    const_iterator end() const { return End(); }

    // Stands before the first element.
    TListEnumerator<T> GetEnumerator() { return {End().operator->(), End().operator->()}; }
    TListEnumerator<const T> GetEnumerator() const { return {End().operator->(), End().operator->()}; }

    // Appends a copy; mind that TSList::Insert(value) prepends. The result stands on the new element.
    iterator Insert(const T& value) { return Insert(End(), value); }

    // Inserts a copy before pos, which may be End(), in constant time. The result stands on the new element. The copy
    // is made before any link changes, so the value may be an element of this list.
    iterator Insert(iterator pos, const T& value)
    {
        SListLinks* pNode = NewNode(value);
        SListLinks* pNext = NodeOf(pos);
        Link(pNext->m_pPrev, pNode);
        Link(pNode, pNext);
        ++m_nSize;
        return PositionOf(pNode);
    }

    // Destroys the element at pos and frees its node, in constant time. The result stands on the element that followed.
    // pos is not checked: it must stand on an element of this list.
    iterator Erase(iterator pos)
    {
        SListLinks* pNode = NodeOf(pos);
        SListLinks* pNext = pNode->m_pNext;
        Link(pNode->m_pPrev, pNext);
        FreeNode(pNode);
        --m_nSize;
        return PositionOf(pNext);
    }

    // Destroys the elements front to back and frees their nodes.
    void Clear()
    {
        FreeNodes(m_sentinel.m_pNext);
        Reset();
    }

    // Whether the invariants hold: both directions of the ring agree, and the count. For tests and debugging.
    bool Validate() const
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
    static SListLinks* NodeOf(iterator pos) { return kx::detail::NodeOf<SListLinks>(pos.operator->()); }

    static void Link(SListLinks* pFirst, SListLinks* pSecond)
    {
        pFirst->m_pNext = pSecond;
        pSecond->m_pPrev = pFirst;
    }

    static SListLinks* NewNode(const T& value) { return new (*GetNormalAllocator()) SListNode<T>(value); }

    static void FreeNode(SListLinks* pLinks)
    {
        auto* pNode = static_cast<SListNode<T>*>(pLinks);
        pNode->~SListNode();
        GetNormalAllocator()->Free(pNode);
    }

    // The nodes from pNode up to the sentinel.
    void FreeNodes(SListLinks* pNode)
    {
        while (pNode != &m_sentinel)
            FreeNode(std::exchange(pNode, pNode->m_pNext));
    }

    // Appends a copy of each element of the range; the size is the caller's to set. The ring is closed at the end only:
    // nothing sees it before.
    template <class TIterator>
    void AppendCopies(TIterator first, TIterator last)
    {
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
