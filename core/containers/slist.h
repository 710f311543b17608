// TSList<T>: the singly linked list.
//
//      m_head              next                next
//      +-----+         +------------+      +------------+
//      |  ---+-------> |  ---  e 0  +----> | null  e 1  |
//      +-----+         +------------+      +------------+
//
//   m_head is null in an empty list. It is a link like that of a node, so walks start at its address and the first
//   node needs no special case.
//
// There is no link back and no link to the last node. An operation at a position walks from the head to it, so its cost
// is linear in the number of elements before the position. Insert copies an rvalue like any other value; Emplace
// moves it in.
//
// Each element has a node of its own: one allocation of sizeof(SSListNode<T>) from the normal allocator, one Free.
// Elements never move. An iterator stays valid until its element is erased. End() is the address that the element of a
// null node would have, so it is the same for all lists of one T.
#pragma once

#include "core/containers/nodeiterator.h"
#include "core/containers/sequence.h"
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
    static bool IsEnd(const SSListLink* pNode) { return pNode == nullptr; }
};
} // namespace kx::detail

/// A node: the link, then the element.
template <class T>
struct SSListNode : kx::detail::SSListLink
{
    explicit SSListNode(const T& value) noexcept : m_Element(value) {}
    template <class... TArgs>
    explicit SSListNode(kx::detail::SInPlace, TArgs&&... args) noexcept
        : m_Element(kx::detail::MakeElement<T>(static_cast<TArgs&&>(args)...))
    {
    }

    T m_Element;
};

/// A forward iterator; see kx::detail::TNodeIterator.
template <class T>
using TSListIterator = kx::detail::TNodeIterator<T, kx::detail::SSListLink>;

/// Enumerates a TSList; see kx::detail::TNodeEnumerator.
template <class T>
using TSListEnumerator = kx::detail::TNodeEnumerator<T, kx::detail::SSListLink>;

/// The singly linked list; see the head of this file.
template <class T>
class TSList : public kx::detail::TSequence<TSList<T>, T>
{
public:
    /// The names that generic code expects.
    using value_type = T;
    using iterator = TSListIterator<T>;
    using const_iterator = TSListIterator<const T>;

    /// Creates an empty list. Makes no allocator call.
    TSList() = default;

    /// Copies the elements in order, one node each.
    TSList(std::initializer_list<T> values) : m_nSize(static_cast<uint32>(values.size()))
    {
        ChainCopies(values.begin(), values.end());
    }
    TSList(const TSList& other) : kx::detail::TSequence<TSList, T>(), m_nSize(other.m_nSize)
    {
        ChainCopies(other.Begin(), other.End());
    }

    /// Takes ownership of the nodes, in constant time.
    /// No element is touched and no allocator is called. The source is empty afterwards and can be used again.
    TSList(TSList&& other) noexcept
        : m_nSize(std::exchange(other.m_nSize, 0)), m_head{std::exchange(other.m_head.m_pNext, nullptr)}
    {
    }

    /// Destroys the elements front to back, freeing each node before the next element is destroyed.
    ~TSList()
    {
        static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__,
                      "TSList: nodes are aligned to 16 bytes; keep elements of a wider alignment in a TArray");
        static_assert(offsetof(TSList, m_nSize) == 0 && offsetof(TSList, m_head) == 8 && sizeof(TSList) == 16,
                      "size, then the head link: the layout that debugger views rely on");
        Clear();
    }

    /// Clears this list, then copies the elements in order. No node is reused. Self-assignment has no effect.
    TSList& operator=(const TSList& other)
    {
        if (this == &other)
            return *this;
        Clear();
        ChainCopies(other.Begin(), other.End());
        m_nSize = other.m_nSize;
        return *this;
    }

    /// Clears this list, then takes ownership of the nodes of the other one. Self-assignment has no effect.
    TSList& operator=(TSList&& other) noexcept
    {
        if (this == &other)
            return *this;
        Clear();
        m_nSize = std::exchange(other.m_nSize, 0);
        m_head.m_pNext = std::exchange(other.m_head.m_pNext, nullptr);
        return *this;
    }

    /// Return the number of elements, and whether there are none.
    [[nodiscard]] uint32 Size() const { return m_nSize; }
    [[nodiscard]] bool IsEmpty() const { return m_nSize == 0; }

    /// Return iterators to the first element and past the last one.
    [[nodiscard]] iterator Begin() KX_LIFETIMEBOUND { return PositionOf(m_head.m_pNext); }
    [[nodiscard]] iterator End() KX_LIFETIMEBOUND { return PositionOf(nullptr); }
    [[nodiscard]] const_iterator Begin() const KX_LIFETIMEBOUND { return PositionOf(m_head.m_pNext); }
    [[nodiscard]] const_iterator End() const KX_LIFETIMEBOUND { return PositionOf(nullptr); }
    [[nodiscard]] iterator begin() KX_LIFETIMEBOUND { return Begin(); }
    [[nodiscard]] iterator end() KX_LIFETIMEBOUND { return End(); }
    [[nodiscard]] const_iterator begin() const KX_LIFETIMEBOUND { return Begin(); }
    [[nodiscard]] const_iterator end() const KX_LIFETIMEBOUND { return End(); }

    /// Returns an enumerator that starts before the first element, at the link in the list object.
    [[nodiscard]] TSListEnumerator<T> GetEnumerator() KX_LIFETIMEBOUND
    {
        return {kx::detail::ElementOf<T>(&m_head), End().Address()};
    }
    [[nodiscard]] TSListEnumerator<const T> GetEnumerator() const KX_LIFETIMEBOUND
    {
        return {kx::detail::ElementOf<const T>(const_cast<SSListLink*>(&m_head)), End().Address()};
    }

    /// Prepends a copy, in constant time, and returns an iterator to it. Note that TList::Insert(value) appends.
    iterator Insert(const T& value) { return Insert(Begin(), value); }

    /// Inserts a copy before pos, which may be End(), and returns an iterator to it.
    /// Walks from the head to pos. The copy is made before any link changes, so the value may be an element of this
    /// list. pos is not checked: with an iterator of another list, the walk runs past the end of the chain.
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
        SSListLink* pNext = NodeOf(pos);
        SSListLink* pNode = NewNode(std::forward<TArgs>(args)...);
        SSListLink* pBefore = NodeBefore(pNext);
        pNode->m_pNext = pNext;
        pBefore->m_pNext = pNode;
        ++m_nSize;
        return PositionOf(pNode);
    }

    /// Prepends an element that is constructed from the arguments, and returns it.
    /// Constant time, without a copy or a move. The arguments may refer to elements of this list.
    template <class... TArgs>
    T& Emplace(TArgs&&... args)
    {
        return *EmplaceAt(Begin(), std::forward<TArgs>(args)...);
    }

    /// Destroys the element at pos, frees its node, and returns an iterator to the element that followed.
    /// Walks from the head to pos. pos is not checked: it must point to an element of this list.
    iterator Erase(iterator pos)
    {
        SSListLink* pNode = NodeOf(pos);
        SSListLink* pNext = pNode->m_pNext;
        NodeBefore(pNode)->m_pNext = pNext;
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
        for (SSListLink* pBefore = &m_head; pBefore->m_pNext != nullptr;)
        {
            SSListLink* pNode = pBefore->m_pNext;
            if (!predicate(std::as_const(*PositionOf(pNode))))
            {
                pBefore = pNode;
                continue;
            }
            pBefore->m_pNext = pNode->m_pNext;
            FreeNode(pNode);
            --m_nSize;
        }
        return nOldSize - m_nSize;
    }

    /// Destroys the elements front to back and frees their nodes.
    void Clear()
    {
        for (SSListLink* pNode = m_head.m_pNext; pNode != nullptr;)
            FreeNode(std::exchange(pNode, pNode->m_pNext));
        m_head.m_pNext = nullptr;
        m_nSize = 0;
    }

    /// Returns whether the chain has Size() nodes. For tests and debugging.
    [[nodiscard]] bool Validate() const
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
    static SSListLink* NodeOf(const_iterator pos)
    {
        return kx::detail::NodeOf<SSListLink>(const_cast<T*>(pos.Address()));
    }

    template <class... TArgs>
    static SSListLink* NewNode(TArgs&&... args)
    {
        return new (*GetNormalAllocator()) SSListNode<T>(kx::detail::SInPlace(), std::forward<TArgs>(args)...);
    }

    static void FreeNode(SSListLink* pLink) noexcept
    {
        auto* pNode = static_cast<SSListNode<T>*>(pLink);
        pNode->~SSListNode();
        GetNormalAllocator()->Free(pNode);
    }

    // Returns the link that points to pNode: that of a node, or the head. If pNode is null, it is the last link.
    SSListLink* NodeBefore(const SSListLink* pNode)
    {
        SSListLink* pBefore = &m_head;
        while (pBefore->m_pNext != pNode)
            pBefore = pBefore->m_pNext;
        return pBefore;
    }

    // Chains copies of the range to the head of a list without nodes; the caller sets the size.
    template <class TIterator>
    void ChainCopies(TIterator first, TIterator last)
    {
        kx::detail::RequireCopies<T>();
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
