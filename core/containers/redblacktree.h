// The red-black tree of the ordered containers, and TRedBlackTree<T>, the simplest of them.
//
//        the tree object                       a node (one allocation each)
//      +------------------+                  +------------------+
//      | m_nColor = black |<----------+      | m_nColor         |
//      | m_pParent = null |           |      | m_pParent        |
//      | m_pChild[0] -----+---> root  |      | m_pChild[0], [1] |
//      | m_pChild[1] -----+---> root -+      |                  |
//      | m_nSize          |<-- End()         | m_Element        |<-- iterator
//      +------------------+  m_pParent of    +------------------+
//                            the root
//
//   Both child links of the tree object point to the root, or are null. The root is black; no red node has a red child;
//   every path from a node down to a null link passes the same number of black nodes. In order, no element is less than
//   the one before it.
//
// What sets it apart from std::multiset and its family:
//
// - The tree object has the shape of a node and is the header of the tree. Its left link is the root, so climbing from
//   the last node ends at the header. Its right link is the root too, so the step from there leads to the first node.
//   The nodes in order thus form a circle, and ++, enumerators, Begin() and Erase share one step without a special
//   case.
// - Iterators point at the element. m_nSize has the same offset in the tree object as an element in its node, so End()
//   is the address of m_nSize, read as that of an element. It must not be dereferenced. If a Swap or a move takes the
//   elements elsewhere, End() stays with its tree object.
// - There is no comparator and no allocator parameter. The order is operator<. Memory comes from GetNormalAllocator(),
//   looked up for each allocation and each release.
// - The first node is not cached: Begin() is a descent.
// - Insert copies elements in; Emplace constructs them in place. None changes its address while it is in a tree.
// - A violated precondition triggers the debug break; see kx::detail::BreakUnless.
//
// Iterators and enumerators stay valid until their own element is removed. The size must stay below 2^31.
#pragma once

#include "core/containers/comparewalks.h"
#include "core/containers/keyedresults.h"
#include "core/containers/keyvaluebindings.h"
#include "core/containers/keyvaluepair.h"
#include "core/containers/lifetime.h"
#include "core/containers/lookup.h"
#include "core/containers/nodeiterator.h"
#include "core/containers/reverseiterator.h"
#include "core/memory/memorymanager.h"
#include "core/platform/select.h"

#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <utility>

namespace kx::detail
{
inline constexpr uint32 kBlack = 0;
inline constexpr uint32 kRed = 1;

/// What a node and a tree object have in common, and all that the balancing needs.
struct SRedBlackTreeLinks
{
    uint32 m_nColor;
    SRedBlackTreeLinks* m_pParent;
    SRedBlackTreeLinks* m_pChild[2];

    /// Returns whether this is a header: the parent of a root is the header, and that of a header is null.
    static bool IsEnd(const SRedBlackTreeLinks* pNode) { return pNode->m_pParent == nullptr; }

    /// Returns the in-order successor.
    /// The header follows the last node, the first node follows the header, and the header of an empty tree follows
    /// itself.
    static SRedBlackTreeLinks* Next(SRedBlackTreeLinks* pNode)
    {
        if (SRedBlackTreeLinks* pNext = pNode->m_pChild[1])
        {
            while (pNext->m_pChild[0] != nullptr)
            {
                detail::Prefetch(pNext->m_pChild[1]);
                pNext = pNext->m_pChild[0];
            }
            return pNext;
        }
        SRedBlackTreeLinks* pParent = pNode->m_pParent;
        while (pParent != nullptr && pParent->m_pChild[0] != pNode)
        {
            pNode = pParent;
            pParent = pNode->m_pParent;
        }
        return pParent != nullptr ? pParent : pNode;
    }

    /// Returns the in-order predecessor, by the circle of Next: the header precedes the first node.
    static SRedBlackTreeLinks* Previous(SRedBlackTreeLinks* pNode)
    {
        if (SRedBlackTreeLinks* pPrevious = pNode->m_pChild[0])
        {
            while (pPrevious->m_pChild[1] != nullptr)
                pPrevious = pPrevious->m_pChild[1];
            return pPrevious;
        }
        SRedBlackTreeLinks* pParent = pNode->m_pParent;
        while (pParent != nullptr && pParent->m_pChild[1] != pNode)
        {
            pNode = pParent;
            pParent = pNode->m_pParent;
        }
        return pParent != nullptr ? pParent : pNode;
    }
};
} // namespace kx::detail

/// A node: the links, then the element.
template <class T>
struct SRedBlackTreeNode : kx::detail::SRedBlackTreeLinks
{
    /// Leaves the links uninitialised; InsertNode and the copying of trees set them.
    explicit SRedBlackTreeNode(const T& value) noexcept : m_Element(value) {}
    template <class... TArgs>
    explicit SRedBlackTreeNode(kx::detail::SInPlace, TArgs&&... args) noexcept
        : m_Element(kx::detail::MakeElement<T>(static_cast<TArgs&&>(args)...))
    {
    }

    T m_Element;
};

namespace kx::detail
{
/// Links pNode below pParent on side nSide (0 left, 1 right) and restores the colours.
/// The link on that side must be free. If pParent is the header, the tree object of an empty tree, pNode becomes the
/// root. Triggers the debug break if nSide is above 1 or the link is not free.
KX_API void InsertNode(SRedBlackTreeLinks* pNode, SRedBlackTreeLinks* pParent, uint32 nSide,
                       SRedBlackTreeLinks* pHeader);

/// Unlinks pNode and restores the colours.
/// The successor takes the place of a node with two children, by changing links alone.
KX_API void RemoveNode(SRedBlackTreeLinks* pNode, const SRedBlackTreeLinks* pHeader);

/// Returns whether links, colours and count are consistent. Does not look at the elements.
KX_API bool ValidateNodes(const SRedBlackTreeLinks* pHeader, int32 nSize);
} // namespace kx::detail

/// A bidirectional iterator; see kx::detail::TNodeIterator.
/// ++ leads from the last element to End() and from there to the first one, -- the other way, in amortised constant
/// time. An element of a set may be changed only in ways that keep its place in the order.
template <class T>
using TTreeIterator = kx::detail::TNodeIterator<T, kx::detail::SRedBlackTreeLinks>;

/// The read-only form of TTreeIterator.
template <class T>
using TTreeConstIterator = TTreeIterator<const T>;

/// Enumerates an ordered container; see kx::detail::TNodeEnumerator.
/// After MoveNext() returned false, the next call starts over at the first element.
template <class T>
using TTreeEnumerator = kx::detail::TNodeEnumerator<T, kx::detail::SRedBlackTreeLinks>;

namespace kx::detail
{
/// What elements are ordered and looked up by: the element itself, or the key of a pair.
template <class T>
struct TTreeKey
{
    using Type = T;
    using TMapped = void;
    static const T& Of(const T& element) { return element; }
};

template <class K, class V>
struct TTreeKey<TKeyValuePair<K, V>>
{
    using Type = K;
    using TMapped = V;
    static const K& Of(const TKeyValuePair<K, V>& pair) { return pair.Key(); }
};

/// Everything that the ordered containers share.
/// They differ in what an insertion does with an existing element.
template <class T>
class TOrderedTree
{
    using Links = SRedBlackTreeLinks;
    using Node = SRedBlackTreeNode<T>;
    using TMapped = typename TTreeKey<T>::TMapped;
    static constexpr bool kIsMap = !std::is_void_v<TMapped>;

public:
    /// The names that generic code expects.
    using value_type = T;
    using key_type = typename TTreeKey<T>::Type;
    using iterator = TTreeIterator<T>;
    using const_iterator = TTreeConstIterator<T>;

protected:
    TOrderedTree() = default;

    /// Copies the nodes with their colours, and so the shape of the tree.
    /// Makes one allocation and one copy per element and no comparison. Parents come before children, left children
    /// before right ones.
    TOrderedTree(const TOrderedTree& other) { CopyFrom(other); }

    /// Takes ownership of the nodes and leaves the source empty.
    /// No element is touched. Triggers the debug break if the two child links of the source differ.
    TOrderedTree(TOrderedTree&& other) noexcept { TakeFrom(other); }

    /// Destroys each element and releases its node, in the order of Clear.
    ~TOrderedTree()
    {
        constexpr std::uintptr_t kOffset = kElementOffset<T, Links>;
        static_assert(
            requires(const key_type& first, const key_type& second) { first < second; },
            "an ordered container compares by operator<: declare one beside the class of the element or map key");
        static_assert(offsetof(TOrderedTree, m_links) == 0 && offsetof(TOrderedTree, m_nSize) == kOffset,
                      "the count must have the offset in the tree object that the element has in a node");
        static_assert(kOffset + sizeof(T) <= sizeof(Node) && sizeof(Node) < kOffset + sizeof(T) + alignof(Node),
                      "the element must follow the links of its node directly");
        if (m_nSize > 0)
            DestroyTree(m_links.m_pChild[1]);
    }

    /// Clears this tree, then copies as the copy constructor does. No node is reused. Self-assignment has no effect.
    TOrderedTree& operator=(const TOrderedTree& other)
    {
        if (this == &other)
            return *this;
        Clear();
        CopyFrom(other);
        return *this;
    }

    /// Clears this tree, then takes ownership as the move constructor does. Self-assignment has no effect.
    TOrderedTree& operator=(TOrderedTree&& other) noexcept
    {
        if (this == &other)
            return *this;
        Clear();
        TakeFrom(other);
        return *this;
    }

public:
    /// Return the number of elements, and whether there are none; also under the names that generic code expects.
    [[nodiscard]] uint32 Size() const { return static_cast<uint32>(m_nSize); }
    [[nodiscard]] bool IsEmpty() const { return m_nSize == 0; }
    [[nodiscard]] uint32 size() const { return Size(); }
    [[nodiscard]] bool empty() const { return IsEmpty(); }

    /// Return iterators to the first element and past the last one.
    /// Begin() is a descent, logarithmic in the size; End() takes constant time.
    [[nodiscard]] iterator Begin() KX_LIFETIMEBOUND { return ++End(); }
    [[nodiscard]] iterator End() KX_LIFETIMEBOUND { return PositionOf(Header()); }
    [[nodiscard]] const_iterator Begin() const KX_LIFETIMEBOUND { return ++End(); }
    [[nodiscard]] const_iterator End() const KX_LIFETIMEBOUND { return PositionOf(Header()); }
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
    [[nodiscard]] TTreeEnumerator<T> GetEnumerator() KX_LIFETIMEBOUND { return {End().Address(), End().Address()}; }
    [[nodiscard]] TTreeEnumerator<const T> GetEnumerator() const KX_LIFETIMEBOUND
    {
        return {End().Address(), End().Address()};
    }

    /// Returns an iterator to an element with the key, or End() if there is none. Logarithmic.
    /// Of several, it finds the highest in the tree, which need not be the first in order. Triggers the debug break
    /// if operator< contradicts itself.
    [[nodiscard]] iterator Find(const key_type& key) KX_LIFETIMEBOUND { return PositionOf(FindOrHeader(key)); }
    [[nodiscard]] const_iterator Find(const key_type& key) const KX_LIFETIMEBOUND
    {
        return PositionOf(FindOrHeader(key));
    }

    /// Look up by an argument of another class that compares with the keys, without making a key; see lookup.h.
    template <CComparesWith<key_type> TOther>
    [[nodiscard]] iterator Find(const TOther& key) KX_LIFETIMEBOUND
    {
        return PositionOf(FindOrHeader(detail::LookUpKey<key_type>(key)));
    }
    template <CComparesWith<key_type> TOther>
    [[nodiscard]] const_iterator Find(const TOther& key) const KX_LIFETIMEBOUND
    {
        return PositionOf(FindOrHeader(detail::LookUpKey<key_type>(key)));
    }
    template <CComparesWith<key_type> TOther>
    [[nodiscard]] bool Contains(const TOther& key) const
    {
        return FindOrHeader(detail::LookUpKey<key_type>(key)) != Header();
    }
    template <CComparesWith<key_type> TOther>
    [[nodiscard]] iterator LowerBound(const TOther& key) KX_LIFETIMEBOUND
    {
        return PositionOf(FindLowerBound(detail::LookUpKey<key_type>(key)));
    }
    template <CComparesWith<key_type> TOther>
    [[nodiscard]] const_iterator LowerBound(const TOther& key) const KX_LIFETIMEBOUND
    {
        return PositionOf(FindLowerBound(detail::LookUpKey<key_type>(key)));
    }
    template <CComparesWith<key_type> TOther>
    [[nodiscard]] iterator UpperBound(const TOther& key) KX_LIFETIMEBOUND
    {
        return PositionOf(FindUpperBound(detail::LookUpKey<key_type>(key)));
    }
    template <CComparesWith<key_type> TOther>
    [[nodiscard]] const_iterator UpperBound(const TOther& key) const KX_LIFETIMEBOUND
    {
        return PositionOf(FindUpperBound(detail::LookUpKey<key_type>(key)));
    }
    template <CComparesWith<key_type> TOther>
    [[nodiscard]] TIteratorRange<iterator> EqualRange(const TOther& key) KX_LIFETIMEBOUND
    {
        return {LowerBound(key), UpperBound(key)};
    }
    template <CComparesWith<key_type> TOther>
    [[nodiscard]] TIteratorRange<const_iterator> EqualRange(const TOther& key) const KX_LIFETIMEBOUND
    {
        return {LowerBound(key), UpperBound(key)};
    }
    template <CComparesWith<key_type> TOther>
    [[nodiscard]] uint32 Count(const TOther& key) const
    {
        return EqualRange(key).Count();
    }
    template <CComparesWith<key_type> TOther>
    bool Remove(const TOther& key)
    {
        return RemoveNodeUnlessHeader(FindOrHeader(detail::LookUpKey<key_type>(key)));
    }
    template <CComparesWith<key_type> TOther>
    uint32 RemoveAll(const TOther& key)
    {
        return EraseAll(EqualRange(key));
    }

    /// Return the value of the element that Find finds, or null if there is none. Maps only.
    [[nodiscard]] TMapped* TryGet(const key_type& key) KX_LIFETIMEBOUND requires kIsMap
    {
        return ValueOrNull(FindOrHeader(key));
    }
    [[nodiscard]] const TMapped* TryGet(const key_type& key) const KX_LIFETIMEBOUND requires kIsMap
    {
        return ValueOrNull(FindOrHeader(key));
    }
    template <CComparesWith<key_type> TOther>
    [[nodiscard]] TMapped* TryGet(const TOther& key) KX_LIFETIMEBOUND requires kIsMap
    {
        return ValueOrNull(FindOrHeader(detail::LookUpKey<key_type>(key)));
    }
    template <CComparesWith<key_type> TOther>
    [[nodiscard]] const TMapped* TryGet(const TOther& key) const KX_LIFETIMEBOUND requires kIsMap
    {
        return ValueOrNull(FindOrHeader(detail::LookUpKey<key_type>(key)));
    }

    /// Returns whether there is an element with the key, searching as Find does.
    [[nodiscard]] bool Contains(const key_type& key) const { return FindOrHeader(key) != Header(); }

    /// Returns an iterator to the first element in order that is not less than the key, or End() if there is none.
    /// Logarithmic. Elements with the same key follow each other from there, newest first.
    [[nodiscard]] iterator LowerBound(const key_type& key) KX_LIFETIMEBOUND { return PositionOf(FindLowerBound(key)); }
    [[nodiscard]] const_iterator LowerBound(const key_type& key) const KX_LIFETIMEBOUND
    {
        return PositionOf(FindLowerBound(key));
    }

    /// Returns an iterator to the first element in order that is greater than the key, or End(). Logarithmic.
    [[nodiscard]] iterator UpperBound(const key_type& key) KX_LIFETIMEBOUND { return PositionOf(FindUpperBound(key)); }
    [[nodiscard]] const_iterator UpperBound(const key_type& key) const KX_LIFETIMEBOUND
    {
        return PositionOf(FindUpperBound(key));
    }

    /// Returns the elements with the key, which are in order newest first. Logarithmic.
    [[nodiscard]] TIteratorRange<iterator> EqualRange(const key_type& key) KX_LIFETIMEBOUND
    {
        return {LowerBound(key), UpperBound(key)};
    }
    [[nodiscard]] TIteratorRange<const_iterator> EqualRange(const key_type& key) const KX_LIFETIMEBOUND
    {
        return {LowerBound(key), UpperBound(key)};
    }

    /// Returns the number of elements with the key. Logarithmic, and linear in that number.
    [[nodiscard]] uint32 Count(const key_type& key) const { return EqualRange(key).Count(); }

    /// Removes the element at pos and returns an iterator to the element that followed.
    /// Destroys the element, then releases its node. Triggers the debug break at End(). Logarithmic, and constant on
    /// average.
    iterator Erase(const_iterator pos)
    {
        Links* pNode = detail::NodeOf<Links>(pos.Address());
        detail::BreakUnless(pNode != Header());
        Links* pNext = Links::Next(pNode);
        RemoveElement(pNode);
        return PositionOf(pNext);
    }

    /// Removes the element that Find finds; returns false if there is none.
    /// Of several elements with the key, one call removes one. Logarithmic.
    bool Remove(const key_type& key) { return RemoveNodeUnlessHeader(FindOrHeader(key)); }

    /// Removes all elements with the key and returns their number. The key must not be that of one of them.
    uint32 RemoveAll(const key_type& key) { return EraseAll(EqualRange(key)); }

    /// Removes the elements for which the predicate is true and returns their number.
    /// Calls predicate(const element) once for each, in order; it must not throw. Linear.
    template <class TPredicate>
    uint32 EraseIf(TPredicate predicate)
    {
        const uint32 nOldSize = Size();
        for (iterator pos = Begin(); pos != End();)
        {
            const iterator current = pos++;
            if (predicate(std::as_const(*current)))
                Erase(current);
        }
        return nOldSize - Size();
    }

    /// Returns whether both hold the same elements in the same order: keys by <, and the values of maps by ==. Linear.
    [[nodiscard]] friend bool operator==(const TOrderedTree& first,
                                         const TOrderedTree& second) requires(!kIsMap
                                                                              || std::equality_comparable<TMapped>)
    {
        return first.Size() == second.Size() && EqualWalks(first, second);
    }

    /// Compares the elements of two sets in order; a set that ends first is the lesser one. Linear.
    [[nodiscard]] friend auto operator<=>(const TOrderedTree& first, const TOrderedTree& second) requires(!kIsMap)
    {
        return detail::CompareWalks(first, second);
    }

    /// Destroys each element and releases its node: children before parents, left children before right ones.
    void Clear()
    {
        if (m_nSize > 0)
            DestroyTree(m_links.m_pChild[1]);
        m_nSize = 0;
        m_links.m_pChild[0] = nullptr;
        m_links.m_pChild[1] = nullptr;
    }

    /// Returns whether the invariants hold. For tests and debugging.
    [[nodiscard]] bool Validate() const noexcept
    {
        if (!detail::ValidateNodes(Header(), m_nSize))
            return false;
        for (const_iterator pos = Begin(), next = pos; pos != End() && ++next != End(); pos = next)
        {
            if (TTreeKey<T>::Of(*next) < TTreeKey<T>::Of(*pos))
                return false;
        }
        return true;
    }

protected:
    // Where a new node is linked: below m_pParent, on side m_nSide.
    struct SInsertPosition
    {
        Links* m_pParent;
        uint32 m_nSide;
    };

    // The path of a search that found nothing, to the place where the key would be. Bit i of m_nTurns is the side taken
    // at step i. A tree of fewer than 2^31 elements is at most 62 steps high.
    struct SSearchPath
    {
        SInsertPosition m_position;
        uint64 m_nTurns;
        uint32 m_nSteps;
    };

    void SwapWith(TOrderedTree& other)
    {
        std::swap(m_links, other.m_links);
        std::swap(m_nSize, other.m_nSize);
        other.AdoptRoot();
        AdoptRoot();
    }

    // Returns the node of the element with the key. If there is none, returns null, and path leads to its place.
    //
    // The child is selected without a branch, because a search turns at random and the processor mispredicts every
    // other turn. But insertions often come in ascending order. So with bInserting, there is a branch as long as the
    // path follows the right edge. After that, both children are prefetched, because the balancing will look at the one
    // that is not on the path. A search among strings prefetches both while it waits for their characters.
    template <bool bInserting, class TKey>
    Node* FindNode(const TKey& key, SSearchPath& path) const noexcept
    {
        path = {{Header(), 0}, 0, 0};
        [[maybe_unused]] bool bRightEdge = true;
        Links* pNode = m_links.m_pChild[1];
        while (pNode != nullptr)
        {
            uint32 nSide = 0;
            if constexpr (kComparesOnce<key_type, TKey>)
            {
                PrefetchChildren(pNode);
                const auto order = detail::CompareOnce(KeyOf(pNode), key);
                if (std::is_eq(order))
                    break;
                nSide = std::is_lt(order);
            }
            else
            {
                nSide = KeyOf(pNode) < key;
                if (nSide == 0 && !(key < KeyOf(pNode)))
                {
                    detail::BreakUnless(!(KeyOf(pNode) < key) && !(key < KeyOf(pNode)));
                    break;
                }
            }
            path = {{pNode, nSide}, path.m_nTurns | uint64{nSide} << path.m_nSteps, path.m_nSteps + 1};
            if constexpr (bInserting)
            {
                bRightEdge = bRightEdge && nSide == 1;
                if (bRightEdge)
                {
                    pNode = pNode->m_pChild[1];
                    continue;
                }
                PrefetchChildren(pNode);
            }
            pNode = NextOnPath(pNode, nSide, key);
        }
        return static_cast<Node*>(pNode);
    }

    // Inserts a copy before all equivalent elements. Makes one allocation; the copy is made before its place is
    // searched for.
    iterator InsertNew(const T& value)
    {
        detail::RequireCopies<T>();
        Node* pNode = CreateNode(value);
        return LinkIn(pNode, FindInsertPosition(TTreeKey<T>::Of(value)));
    }

    // Inserts an element constructed from args before all equivalent elements.
    template <class... TArgs>
    iterator EmplaceNew(TArgs&&... args)
    {
        Node* pNode = CreateNode(std::forward<TArgs>(args)...);
        return LinkIn(pNode, FindInsertPosition(KeyOf(pNode)));
    }

    // Inserts an element constructed from args unless there is one with the key, which may be one of the args.
    template <class TKey, class... TArgs>
    TEmplaced<iterator> EmplaceUnlessFound(const TKey& key, TArgs&&... args)
    {
        SSearchPath path;
        if (Node* pFound = FindNode<true>(key, path))
            return {PositionOf(pFound), false};
        return {LinkIn(CreateNode(std::forward<TArgs>(args)...), path.m_position), true};
    }

    // Constructs an element from args, then inserts it unless there is an equivalent one.
    template <class... TArgs>
    TEmplaced<iterator> EmplaceThenFind(TArgs&&... args)
    {
        Node* pNode = CreateNode(std::forward<TArgs>(args)...);
        SSearchPath path;
        Node* pFound = FindNode<true>(KeyOf(pNode), path);
        if (pFound == nullptr)
            return {LinkIn(pNode, path.m_position), true};
        ReleaseNode(pNode);
        return {PositionOf(pFound), false};
    }

    // Does what InsertNew does, after FindNode took this path and found no element. The search for the place would take
    // the same path again, so only its comparisons are made.
    iterator InsertMissing(const T& value, const SSearchPath& path)
    {
        detail::RequireCopies<T>();
        Node* pNode = CreateNode(value);
        CompareAlong(path, TTreeKey<T>::Of(value));
        return LinkIn(pNode, path.m_position);
    }

    // The tree object, seen as a node.
    Links* Header() const { return const_cast<Links*>(&m_links); }

    static iterator PositionOf(Links* pNode) { return iterator(detail::ElementOf<T>(pNode)); }

private:
    static const key_type& KeyOf(const Links* pNode)
    {
        return TTreeKey<T>::Of(static_cast<const Node*>(pNode)->m_Element);
    }

    template <class TKey>
    Links* FindOrHeader(const TKey& key) const
    {
        SSearchPath path;
        Links* pNode = FindNode<false>(key, path);
        return pNode != nullptr ? pNode : Header();
    }

    template <class TKey>
    Links* FindLowerBound(const TKey& key) const noexcept
    {
        return FindBound<false>(key);
    }

    template <class TKey>
    Links* FindUpperBound(const TKey& key) const noexcept
    {
        return FindBound<true>(key);
    }

    // Returns the first node in order whose key is not less than the key, or that is greater. Strings branch, because
    // their comparison takes longer than the fetch of the next node, which a right guess starts at once.
    template <bool bGreater, class TKey>
    Links* FindBound(const TKey& key) const noexcept
    {
        Links* pBound = Header();
        for (Links* pNode = m_links.m_pChild[0]; pNode != nullptr;)
        {
            if constexpr (!kSelectsByWord<TKey>)
            {
                if constexpr (kComparesOnce<key_type, TKey>)
                    PrefetchChildren(pNode);
                const bool bRight = bGreater ? !(key < KeyOf(pNode)) : KeyOf(pNode) < key;
                pBound = bRight ? pBound : pNode;
                if constexpr (kComparesOnce<key_type, TKey>)
                    pNode = bRight ? pNode->m_pChild[1] : pNode->m_pChild[0];
                else
                    pNode = pNode->m_pChild[bRight];
            }
            else if constexpr (bGreater)
            {
                pBound = detail::SelectIfLess(key, KeyOf(pNode), pNode, pBound);
                pNode = detail::SelectIfLess(key, KeyOf(pNode), pNode->m_pChild[0], pNode->m_pChild[1]);
            }
            else
            {
                pBound = detail::SelectIfLess(KeyOf(pNode), key, pBound, pNode);
                pNode = NextOnPath(pNode, 0, key);
            }
        }
        return pBound;
    }

    auto* ValueOrNull(Links* pNode) const
    {
        return pNode != Header() ? detail::PointerTo(static_cast<Node*>(pNode)->m_Element.Value()) : nullptr;
    }

    static bool EqualWalks(const TOrderedTree& first, const TOrderedTree& second) noexcept
    {
        const_iterator other = second.Begin();
        for (const T& element : first)
        {
            if (TTreeKey<T>::Of(element) < TTreeKey<T>::Of(*other)
                || TTreeKey<T>::Of(*other) < TTreeKey<T>::Of(element))
                return false;
            if constexpr (kIsMap)
            {
                if (!(element.Value() == other->Value()))
                    return false;
            }
            ++other;
        }
        return true;
    }

    SInsertPosition FindInsertPosition(const key_type& key) const noexcept
    {
        // First with a branch, then by index, as in FindNode.
        SInsertPosition position{Header(), 0};
        for (Links* pNode = m_links.m_pChild[0]; pNode != nullptr; pNode = pNode->m_pChild[1])
        {
            position = {pNode, KeyOf(pNode) < key};
            if (position.m_nSide == 0)
                break;
        }
        if (position.m_nSide != 0)
            return position;
        for (Links* pNode = position.m_pParent->m_pChild[0]; pNode != nullptr;)
        {
            PrefetchChildren(pNode);
            position = {pNode, KeyOf(pNode) < key};
            pNode = NextOnPath(pNode, position.m_nSide, key);
        }
        return position;
    }

    // Makes the comparisons of a search along the path, because they may be calls that somebody counts. If the compiler
    // sees that they have no effect, it drops the whole loop.
    void CompareAlong(const SSearchPath& path, const key_type& key) const noexcept
    {
        const Links* pPassed = m_links.m_pChild[0];
        for (uint32 nStep = 0; nStep < path.m_nSteps; ++nStep)
        {
            static_cast<void>(KeyOf(pPassed) < key);
            pPassed = pPassed->m_pChild[path.m_nTurns >> nStep & 1];
        }
    }

    static void PrefetchChildren(const Links* pNode)
    {
        detail::Prefetch(pNode->m_pChild[0]);
        detail::Prefetch(pNode->m_pChild[1]);
    }

    template <class TKey>
    static constexpr bool kSelectsByWord = CWord<key_type>&& std::is_same_v<TKey, key_type>;

    // Returns the child on side nSide, which is 1 if the node's key is less than the key.
    template <class TKey>
    static Links* NextOnPath(const Links* pNode, uint32 nSide, const TKey& key)
    {
        if constexpr (kSelectsByWord<TKey>)
            return detail::SelectIfLess(KeyOf(pNode), key, pNode->m_pChild[1], pNode->m_pChild[0]);
        else
            return pNode->m_pChild[nSide];
    }

    iterator LinkIn(Node* pNode, SInsertPosition position)
    {
        detail::InsertNode(pNode, position.m_pParent, position.m_nSide, Header());
        ++m_nSize;
        return PositionOf(pNode);
    }

    uint32 EraseAll(TIteratorRange<iterator> range)
    {
        const uint32 nOldSize = Size();
        for (iterator pos = range.Begin(); pos != range.End();)
            pos = Erase(pos);
        return nOldSize - Size();
    }

    bool RemoveNodeUnlessHeader(Links* pNode)
    {
        if (pNode == Header())
            return false;
        RemoveElement(pNode);
        return true;
    }

    void RemoveElement(Links* pNode)
    {
        detail::RemoveNode(pNode, Header());
        ReleaseNode(pNode);
        --m_nSize;
    }

    // Nodes are aligned as operator new aligns, or more if the element needs it.
    template <class... TArgs>
    static Node* CreateNode(TArgs&&... args)
    {
        constexpr std::size_t kAlignment =
            alignof(Node) > __STDCPP_DEFAULT_NEW_ALIGNMENT__ ? alignof(Node) : __STDCPP_DEFAULT_NEW_ALIGNMENT__;
        return detail::ConstructAt(static_cast<Node*>(GetNormalAllocator()->Allocate(sizeof(Node), kAlignment, 0)),
                                   SInPlace(), std::forward<TArgs>(args)...);
    }

    static void ReleaseNode(Links* pNode) noexcept
    {
        static_cast<Node*>(pNode)->~Node();
        GetNormalAllocator()->Free(pNode);
    }

    static Links* CopyNode(const Links* pNode, Links* pParent)
    {
        detail::RequireCopies<T>();
        Links* pCopy = CreateNode(static_cast<const Node*>(pNode)->m_Element);
        *pCopy = {pNode->m_nColor, pParent, {nullptr, nullptr}};
        return pCopy;
    }

    // CloneTree and DestroyTree follow links alone, without recursion and without a stack. A null argument triggers the
    // debug break. They detect the end by the root itself or by its parent, before they look for a right sibling,
    // because a tree object has its root on both sides.

    // Makes pParent the parent of the copy's root.
    static Links* CloneTree(const Links* pRoot, Links* pParent)
    {
        detail::BreakUnless(pRoot != nullptr);
        Links* pRootCopy = CopyNode(pRoot, pParent);
        const Links* pNode = pRoot;
        Links* pCopy = pRootCopy;
        for (;;)
        {
            while (const Links* pLeft = pNode->m_pChild[0])
            {
                detail::Prefetch(pNode->m_pChild[1]);
                pNode = pLeft;
                pCopy = pCopy->m_pChild[0] = CopyNode(pLeft, pCopy);
            }
            const Links* pRight = pNode->m_pChild[1];
            while (pRight == nullptr)
            {
                if (pNode == pRoot)
                    return pRootCopy;
                const Links* pDone = pNode;
                pNode = pNode->m_pParent;
                pCopy = pCopy->m_pParent;
                if (pNode->m_pChild[0] == pDone)
                    pRight = pNode->m_pChild[1];
            }
            pNode = pRight;
            pCopy = pCopy->m_pChild[1] = CopyNode(pRight, pCopy);
        }
    }

    static void DestroyTree(Links* pRoot)
    {
        detail::BreakUnless(pRoot != nullptr);
        const Links* pStop = pRoot->m_pParent;
        Links* pNode = pRoot;
        for (;;)
        {
            // Down to a leaf, to the left if there is a choice.
            while (Links* pChild = pNode->m_pChild[0] != nullptr ? pNode->m_pChild[0] : pNode->m_pChild[1])
            {
                detail::Prefetch(pNode->m_pChild[1]);
                pNode = pChild;
            }

            // Up from it, through the nodes that have now lost their last child.
            Links* pRight = nullptr;
            do
            {
                Links* pParent = pNode->m_pParent;
                if (pParent->m_pChild[0] == pNode)
                    pRight = pParent->m_pChild[1];
                ReleaseNode(pNode);
                if (pParent == pStop)
                    return;
                pNode = pParent;
            } while (pRight == nullptr);
            pNode = pRight;
        }
    }

    // CopyFrom and TakeFrom expect an empty tree.

    void CopyFrom(const TOrderedTree& other)
    {
        if (other.m_nSize < 1)
            return;
        m_nSize = other.m_nSize;
        m_links.m_pChild[0] = m_links.m_pChild[1] = CloneTree(other.m_links.m_pChild[1], Header());
    }

    void TakeFrom(TOrderedTree& other)
    {
        m_nSize = std::exchange(other.m_nSize, 0);
        m_links.m_pChild[1] = std::exchange(other.m_links.m_pChild[1], nullptr);
        m_links.m_pChild[0] = std::exchange(other.m_links.m_pChild[0], nullptr);
        detail::BreakUnless(m_links.m_pChild[0] == m_links.m_pChild[1]);
        AdoptRoot();
    }

    void AdoptRoot()
    {
        for (Links* pRoot : m_links.m_pChild)
        {
            if (pRoot != nullptr)
                pRoot->m_pParent = Header();
        }
    }

    Links m_links = {};
    alignas(T) alignas(int32) int32 m_nSize = 0;
};
} // namespace kx::detail

/// The red-black tree as a container: keeps every inserted element, equivalent ones next to each other.
template <class T>
class TRedBlackTree : public kx::detail::TOrderedTree<T>
{
public:
    /// Creates an empty tree. Makes no allocator call.
    TRedBlackTree() = default;

    /// Inserts the values in order.
    TRedBlackTree(std::initializer_list<T> values)
    {
        for (const T& value : values)
            Insert(value);
    }

    /// Inserts a copy and returns an iterator to it.
    /// The copy goes before all equivalent elements, so these are in order newest first. Logarithmic. Makes one
    /// allocation and one copy.
    TTreeIterator<T> Insert(const T& value) { return this->InsertNew(value); }

    /// Inserts an element that is constructed from the arguments, as Insert does, and returns an iterator to it.
    /// Makes one allocation, and no copy or move of the element but the one asked for.
    TTreeIterator<T> Emplace(const T& value) { return this->EmplaceNew(value); }
    TTreeIterator<T> Emplace(T&& value) { return this->EmplaceNew(std::move(value)); }
    template <class... TArgs>
    TTreeIterator<T> Emplace(TArgs&&... args) requires(!kx::detail::COneThatConverts<T, TArgs...>)
    {
        return this->EmplaceNew(std::forward<TArgs>(args)...);
    }

    /// Exchanges the elements of two trees, in constant time.
    /// No element is touched. Iterators to elements stay valid and belong to the other tree afterwards.
    void Swap(TRedBlackTree& other) { this->SwapWith(other); }
};
