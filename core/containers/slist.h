// TSList<T>: the singly linked list.
//
//      m_pHead             next                next
//      +-----+         +------------+      +------------+
//      |  ---+-------> |  ---  e 0  +----> | null  e 1  |
//      +-----+         +------------+      +------------+
//
//   m_pHead is null in an empty list. It is a link like that of a node, so walks start at its address and the first
//   node needs no special case.
//
// There is no link back and no link to the last node: an operation at a position walks from the head to it, so it costs
// what lies before the position. An rvalue is copied like any other value.
//
// Each element has a node of its own: one allocation of sizeof(SSListNode<T>) from the normal allocator, one Free. An
// element never moves, and an iterator stays valid until its element is erased. End() is the position of the element of
// a null node, so it is the same for all lists of one T.
#pragma once

#include "core/containers/nodeiterator.h"
#include "core/memory/memorymanager.h"

#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <utility>

namespace kx::detail
{
struct SSListLink
{
    SSListLink* m_pNext;

    static SSListLink* Next(SSListLink* pNode) { return pNode->m_pNext; }
};
} // namespace kx::detail

template <class T>
struct SSListNode : kx::detail::SSListLink
{
    explicit SSListNode(const T& value) : m_Element(value) {}

    T m_Element;
};

template <class T>
using TSListIterator = kx::detail::TNodeIterator<T, kx::detail::SSListLink>;

template <class T>
using TSListEnumerator = kx::detail::TNodeEnumerator<T, kx::detail::SSListLink>;

template <class T>
class TSList
{
public:
    using value_type = T;
    using iterator = TSListIterator<T>;
    using const_iterator = TSListIterator<const T>;

    // No allocator call.
    TSList() = default;

    // Copies in the order of the source, one node for each.
    TSList(std::initializer_list<T> values) : m_nSize(static_cast<uint32>(values.size()))
    {
        ChainCopies(values.begin(), values.end());
    }
    TSList(const TSList& other) : m_nSize(other.m_nSize) { ChainCopies(other.Begin(), other.End()); }

    // Takes the nodes over. No element is touched, no allocator is called. The source is empty afterwards and can be
    // used again.
    TSList(TSList&& other) noexcept
        : m_nSize(std::exchange(other.m_nSize, 0)), m_head{std::exchange(other.m_head.m_pNext, nullptr)}
    {
    }

    // Destroys the elements front to back, each node freed before the next one's turn.
    ~TSList()
    {
        static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__,
                      "TSList: nodes are aligned to 16 bytes; keep elements of a wider alignment in a TArray");
        static_assert(std::is_copy_constructible_v<T>,
                      "TSList copies elements in; keep what can only be moved in a TArray");
        static_assert(offsetof(TSList, m_nSize) == 0 && offsetof(TSList, m_head) == 8 && sizeof(TSList) == 16,
                      "size, then the head link: the layout that debugger views rely on");
        Clear();
    }

    // Clears this list, then copies in the order of the source; no node is used again. Assigning a list to itself has
    // no effect.
    TSList& operator=(const TSList& other)
    {
        if (this == &other)
            return *this;
        Clear();
        ChainCopies(other.Begin(), other.End());
        m_nSize = other.m_nSize;
        return *this;
    }

    // Clears this list and takes the nodes of the other one over. Moving a list onto itself has no effect.
    TSList& operator=(TSList&& other) noexcept
    {
        if (this == &other)
            return *this;
        Clear();
        m_nSize = std::exchange(other.m_nSize, 0);
        m_head.m_pNext = std::exchange(other.m_head.m_pNext, nullptr);
        return *this;
    }

    uint32 Size() const { return m_nSize; }
    bool IsEmpty() const { return m_nSize == 0; }

    iterator Begin() { return PositionOf(m_head.m_pNext); }
    iterator End() { return PositionOf(nullptr); }
    const_iterator Begin() const { return PositionOf(m_head.m_pNext); }
    const_iterator End() const { return PositionOf(nullptr); }
    iterator begin() { return Begin(); }
    iterator end() { return End(); }
    const_iterator begin() const { return Begin(); }
    const_iterator end() const { return End(); }

    // Stands before the first element, which is on the list object itself.
    TSListEnumerator<T> GetEnumerator() { return {kx::detail::ElementOf<T>(&m_head), End().operator->()}; }
    TSListEnumerator<const T> GetEnumerator() const
    {
        return {kx::detail::ElementOf<const T>(const_cast<SSListLink*>(&m_head)), End().operator->()};
    }

    // Prepends a copy, in constant time; mind that TList::Insert(value) appends. The result stands on the new element.
    iterator Insert(const T& value) { return Insert(Begin(), value); }

    // Inserts a copy before pos, which may be End(); walks from the head to pos. The result stands on the new element.
    // The copy is made before any link changes, so the value may be an element of this list. pos is not checked: with
    // one of another list the walk runs off the chain.
    iterator Insert(iterator pos, const T& value)
    {
        SSListLink* pNext = NodeOf(pos);
        SSListLink* pNode = NewNode(value);
        SSListLink* pBefore = NodeBefore(pNext);
        pNode->m_pNext = pNext;
        pBefore->m_pNext = pNode;
        ++m_nSize;
        return PositionOf(pNode);
    }

    // Destroys the element at pos and frees its node; walks from the head to pos. The result stands on the element that
    // followed. pos is not checked: it must stand on an element of this list.
    iterator Erase(iterator pos)
    {
        SSListLink* pNode = NodeOf(pos);
        SSListLink* pNext = pNode->m_pNext;
        NodeBefore(pNode)->m_pNext = pNext;
        FreeNode(pNode);
        --m_nSize;
        return PositionOf(pNext);
    }

    // Destroys the elements front to back and frees their nodes.
    void Clear()
    {
        for (SSListLink* pNode = m_head.m_pNext; pNode != nullptr;)
            FreeNode(std::exchange(pNode, pNode->m_pNext));
        m_head.m_pNext = nullptr;
        m_nSize = 0;
    }

    // Whether the chain has as many nodes as the list says. For tests and debugging.
    bool Validate() const
    {
        uint32 nNodes = 0;
        for (const SSListLink* pNode = m_head.m_pNext; pNode != nullptr; pNode = pNode->m_pNext, ++nNodes)
        {
            if (nNodes == m_nSize)
                return false;
        }
        return nNodes == m_nSize;
    }

private:
    using SSListLink = kx::detail::SSListLink;

    static iterator PositionOf(SSListLink* pNode) { return iterator(kx::detail::ElementOf<T>(pNode)); }
    static SSListLink* NodeOf(iterator pos) { return kx::detail::NodeOf<SSListLink>(pos.operator->()); }

    static SSListLink* NewNode(const T& value) { return new (*GetNormalAllocator()) SSListNode<T>(value); }

    static void FreeNode(SSListLink* pLink)
    {
        auto* pNode = static_cast<SSListNode<T>*>(pLink);
        pNode->~SSListNode();
        GetNormalAllocator()->Free(pNode);
    }

    // Whose link leads to pNode: a node, or the head. Null leads to the last one.
    SSListLink* NodeBefore(const SSListLink* pNode)
    {
        SSListLink* pBefore = &m_head;
        while (pBefore->m_pNext != pNode)
            pBefore = pBefore->m_pNext;
        return pBefore;
    }

    // Copies of the range, chained to the head of a list without nodes; the size is the caller's to set.
    template <class TIterator>
    void ChainCopies(TIterator first, TIterator last)
    {
        SSListLink* pLast = &m_head;
        for (; first != last; ++first)
        {
            pLast->m_pNext = NewNode(*first);
            pLast = pLast->m_pNext;
        }
        pLast->m_pNext = nullptr;
    }

    uint32 m_nSize = 0;
    SSListLink m_head = {nullptr};
};
