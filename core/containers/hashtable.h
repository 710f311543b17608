// The table of THashMap, TMultiHashMap and THashSet: separate chaining without an allocation per element. All nodes are
// in one array. Chains are indices into it, and so is the list of free nodes.
//
//   a map after the keys 1, 2, 3, 4 were inserted; its iteration order is 1, 4, 3, 2:
//
//   m_pBuckets    bucket       0      1      2      3
//                 head         0      -      3      1      a node, or none
//
//   m_pNodes      node         0      1      2      3
//                 m_nNext      -      -      -      2      a node, or none
//                 key          1      2      3      4
//                 value        ...
//
//   There are as many nodes as buckets: m_nBucketCount, which is 0 (no arrays) or at least 4, and not below m_nSize. A
//   live node is in the chain of bucket Hash(key) % m_nBucketCount and in no other. A freed node is in the free list,
//   which starts at m_nFreeHead. Nodes that were never used are the last ones of the array. So if the free list is
//   empty, the live nodes are exactly 0 to m_nSize - 1.
//
// What sets it apart from the standard unordered containers:
//
// - A whole table takes two allocations, an element takes none. Chains and nodes can be copied as they are, because an
//   index means the same in any array.
// - It grows when it is full, to one and a half times the buckets: 4, 6, 9, 13, 19, 28, 42, 63, 94, 141, ... Growth
//   copies the elements and destroys the old ones, even if they could be moved. It moves those that can only be moved,
//   and all if the policy has a member type MovesOnGrowth.
// - The iteration order is predictable: by bucket, and within a bucket by chain. It depends on the history of
//   insertions, and growth changes it.
// - Iterators point at the container, so moving a container away invalidates them. Rehash, growth, Clear and assignment
//   invalidate all of them, Erase only those to its element, insertion without growth none. Elements stay where they
//   are until the next rehash.
// - A violated precondition triggers the debug break; see kx::detail::BreakUnless.
#pragma once

#include "core/containers/hashiterator.h"
#include "core/containers/keyedresults.h"
#include "core/containers/keyvaluebindings.h"
#include "core/containers/lifetime.h"
#include "core/containers/lookup.h"
#include "core/memory/memorymanager.h"

#include <concepts>
#include <cstddef>
#include <type_traits>
#include <utility>

namespace kx::detail
{
/// The interface that the three containers have in common.
/// TFields is SHashMapFields or SHashSetFields. With bMulti, a new node goes directly after the first one with an equal
/// key, or to the end of its chain. Without, keys are unique, and a new node goes to the head.
template <class TFields, class TPolicy, bool bMulti>
class THashTable : protected TFields
{
protected:
    using TKey = typename TFields::TKey;
    using TElement = typename TFields::TElement;
    using TNode = SHashNode<std::remove_const_t<TElement>>;
    using TMapped = typename TFields::TMapped;
    static constexpr bool kIsMap = !std::is_void_v<TMapped>;

public:
    /// The names that generic code expects.
    using key_type = TKey;
    using value_type = std::remove_const_t<TElement>;
    using iterator = THashIterator<TFields, TElement>;
    using const_iterator = THashIterator<TFields, const TElement>;

    /// Creates an empty container without arrays. Makes no allocator call.
    THashTable() = default;

    /// Copies as an assignment to an empty container does.
    THashTable(const THashTable& other) : TFields() { *this = other; }

    /// Takes ownership of the arrays and leaves the source as the default constructor does.
    /// No element is touched and no allocator is called.
    THashTable(THashTable&& other) noexcept : TFields(std::exchange<TFields>(other, {})) {}

    /// Destroys the elements in iteration order, each value before its key.
    /// Then releases the bucket array and the node array, if there are any.
    ~THashTable()
    {
        static_assert(
            alignof(TNode) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__,
            "a hash container aligns its nodes to 16 bytes; keep elements of a wider alignment in a TMap or TSet");
        static_assert(sizeof(THashTable) == 32 && offsetof(TFields, m_pBuckets) == 16
                          && offsetof(TFields, m_nFreeHead) == offsetof(TFields, m_nSize) + 4
                          && offsetof(TFields, m_nBucketCount) == offsetof(TFields, m_nFreeHead) + 4,
                      "the fields are the layout that type descriptions and debugger views rely on");
        ReleaseAll();
    }

    /// Replaces the elements with copies of those of other.
    /// Destroys the old elements and rehashes to the bucket count of other: even to the same count, and to no table if
    /// other has none. Then inserts copies in the iteration order of other, so the chains of a map or a set come out
    /// reversed. Self-assignment has no effect.
    THashTable& operator=(const THashTable& other)
    {
        if (this == &other)
            return *this;
        detail::RequireCopies<value_type>();
        Clear();
        Rehash(other.m_nBucketCount);
        // The number of buckets is the same, so every key has the same bucket in both containers.
        ForEachNode(other, [this](const TNode& node, uint32 nBucket) { AddNode(nBucket, node.m_element); });
        return *this;
    }

    /// Destroys and releases as the destructor does, then takes ownership of the arrays of other.
    /// other is left as by the default constructor. Self-assignment has no effect.
    THashTable& operator=(THashTable&& other) noexcept
    {
        if (this == &other)
            return *this;
        ReleaseAll();
        static_cast<TFields&>(*this) = std::exchange<TFields>(other, {});
        return *this;
    }

    /// Return the number of elements, and whether there are none; also under the names that generic code expects.
    [[nodiscard]] uint32 Size() const { return m_nSize; }
    [[nodiscard]] bool IsEmpty() const { return m_nSize == 0; }
    [[nodiscard]] uint32 size() const { return m_nSize; }
    [[nodiscard]] bool empty() const { return m_nSize == 0; }

    /// Return iterators to the first element and past the last one.
    /// Begin() searches for the first bucket in use, so it is linear in the buckets. A full iteration is linear in
    /// buckets and elements.
    [[nodiscard]] iterator Begin() KX_LIFETIMEBOUND { return First<iterator>(); }
    [[nodiscard]] const_iterator Begin() const KX_LIFETIMEBOUND { return First<const_iterator>(); }
    [[nodiscard]] iterator End() KX_LIFETIMEBOUND { return {nullptr, Table(), kHashNone}; }
    [[nodiscard]] const_iterator End() const KX_LIFETIMEBOUND { return {nullptr, Table(), kHashNone}; }
    [[nodiscard]] iterator begin() KX_LIFETIMEBOUND { return Begin(); }
    [[nodiscard]] const_iterator begin() const KX_LIFETIMEBOUND { return Begin(); }
    [[nodiscard]] iterator end() KX_LIFETIMEBOUND { return End(); }
    [[nodiscard]] const_iterator end() const KX_LIFETIMEBOUND { return End(); }

    /// Returns an enumerator that starts before the first element. What invalidates iterators invalidates it too.
    [[nodiscard]] THashEnumerator<TFields, TElement> GetEnumerator() KX_LIFETIMEBOUND
    {
        return THashEnumerator<TFields, TElement>(Table());
    }
    [[nodiscard]] THashEnumerator<TFields, const TElement> GetEnumerator() const KX_LIFETIMEBOUND
    {
        return THashEnumerator<TFields, const TElement>(Table());
    }

    /// Returns an iterator to the element with the key, or End() if there is none. Constant on average.
    /// Of several, it is the first in iteration order, and the others follow it.
    [[nodiscard]] iterator Find(const TKey& key) KX_LIFETIMEBOUND { return FindAs<iterator>(key); }
    [[nodiscard]] const_iterator Find(const TKey& key) const KX_LIFETIMEBOUND { return FindAs<const_iterator>(key); }

    /// Returns whether there is an element with the key. Constant on average.
    [[nodiscard]] bool Contains(const TKey& key) const { return Find(key) != End(); }

    /// Return the value of the element that Find finds, or null if there is none. Maps only.
    [[nodiscard]] TMapped* TryGet(const TKey& key) KX_LIFETIMEBOUND requires kIsMap { return ValueOrNull(Find(key)); }
    [[nodiscard]] const TMapped* TryGet(const TKey& key) const KX_LIFETIMEBOUND requires kIsMap
    {
        return ValueOrNull(Find(key));
    }

    /// Look up by an argument of another class that the policy accepts, without making a key; see hashpolicy.h.
    template <CHashesAs<TKey, TPolicy> TOther>
    [[nodiscard]] iterator Find(const TOther& key) KX_LIFETIMEBOUND
    {
        return FindAs<iterator>(key);
    }
    template <CHashesAs<TKey, TPolicy> TOther>
    [[nodiscard]] const_iterator Find(const TOther& key) const KX_LIFETIMEBOUND
    {
        return FindAs<const_iterator>(key);
    }
    template <CHashesAs<TKey, TPolicy> TOther>
    [[nodiscard]] bool Contains(const TOther& key) const
    {
        return Find(key) != End();
    }
    template <CHashesAs<TKey, TPolicy> TOther>
    [[nodiscard]] TMapped* TryGet(const TOther& key) KX_LIFETIMEBOUND requires kIsMap
    {
        return ValueOrNull(Find(key));
    }
    template <CHashesAs<TKey, TPolicy> TOther>
    [[nodiscard]] const TMapped* TryGet(const TOther& key) const KX_LIFETIMEBOUND requires kIsMap
    {
        return ValueOrNull(Find(key));
    }
    template <CHashesAs<TKey, TPolicy> TOther>
    [[nodiscard]] TIteratorRange<iterator> EqualRange(const TOther& key) KX_LIFETIMEBOUND
    {
        return FromEqualToPast(Find(key), key);
    }
    template <CHashesAs<TKey, TPolicy> TOther>
    [[nodiscard]] TIteratorRange<const_iterator> EqualRange(const TOther& key) const KX_LIFETIMEBOUND
    {
        return FromEqualToPast(Find(key), key);
    }
    template <CHashesAs<TKey, TPolicy> TOther>
    [[nodiscard]] uint32 Count(const TOther& key) const
    {
        return EqualRange(key).Count();
    }
    template <CHashesAs<TKey, TPolicy> TOther>
    bool Remove(const TOther& key)
    {
        return RemoveFirst(key);
    }
    template <CHashesAs<TKey, TPolicy> TOther>
    uint32 RemoveAll(const TOther& key)
    {
        return RemoveEach(key);
    }

    /// Returns the elements with the key, in iteration order. Constant on average, and linear in their number.
    [[nodiscard]] TIteratorRange<iterator> EqualRange(const TKey& key) KX_LIFETIMEBOUND
    {
        return FromEqualToPast(Find(key), key);
    }
    [[nodiscard]] TIteratorRange<const_iterator> EqualRange(const TKey& key) const KX_LIFETIMEBOUND
    {
        return FromEqualToPast(Find(key), key);
    }

    /// Returns the number of elements with the key. Constant on average, and linear in that number.
    [[nodiscard]] uint32 Count(const TKey& key) const { return EqualRange(key).Count(); }

    /// Removes the element at pos and returns an iterator to the element that followed.
    /// Destroys the value before the key. The next insertion reuses the node. Triggers the debug break for End() and
    /// for an element that is not in this container. Constant on average, apart from the search for the next bucket in
    /// use.
    iterator Erase(iterator pos)
    {
        detail::BreakUnless(m_pBuckets != nullptr && pos != End());
        iterator next = pos;
        ++next;
        TNode* pNode = detail::HashNodeOf(pos.operator->());
        uint32* pLink = FindLink(BucketOf(TFields::KeyOf(*pos)), [pNode](const TNode& node) { return &node == pNode; });
        detail::BreakUnless(*pLink != kHashNone);
        RemoveNode(pLink, *pNode);
        return next;
    }
    template <std::same_as<const_iterator> TConst>
    iterator Erase(TConst pos) requires(!std::same_as<iterator, const_iterator>)
    {
        detail::BreakUnless(m_pBuckets != nullptr && pos != std::as_const(*this).End());
        TElement& element = const_cast<TElement&>(*pos);
        return Erase(iterator(detail::PointerTo(element), Table(), BucketOf(TFields::KeyOf(element))));
    }

    /// Removes the element that Find finds; returns false if there is none. Constant on average.
    bool Remove(const TKey& key) { return RemoveFirst(key); }

    /// Removes all elements with the key and returns their number. The key must not be that of one of them.
    uint32 RemoveAll(const TKey& key) { return RemoveEach(key); }

    /// Removes the elements for which the predicate is true and returns their number.
    /// Calls predicate(const element) once for each, in iteration order; it must not throw. Linear in the buckets.
    template <class TPredicate>
    uint32 EraseIf(TPredicate predicate)
    {
        const uint32 nOldSize = m_nSize;
        for (uint32 nBucket = 0; nBucket < m_nBucketCount; ++nBucket)
        {
            for (uint32* pLink = &m_pBuckets[nBucket]; *pLink != kHashNone;)
            {
                TNode& node = m_pNodes[*pLink];
                if (predicate(std::as_const(node.m_element)))
                    RemoveNode(pLink, node);
                else
                    pLink = &node.m_nNext;
            }
        }
        return nOldSize - m_nSize;
    }

    /// Exchanges the elements of two containers, in constant time.
    /// No element is touched, so references stay valid; all iterators become invalid.
    void Swap(THashTable& other) { std::swap(static_cast<TFields&>(*this), static_cast<TFields&>(other)); }

    /// Returns whether both hold the same elements, in any order: keys by the policy, values by ==.
    /// Linear on average; with repeated keys, each costs the square of its number.
    [[nodiscard]] friend bool
    operator==(const THashTable& first, const THashTable& second) requires(!kIsMap || std::equality_comparable<TMapped>)
    {
        return first.m_nSize == second.m_nSize && SameElements(first, second);
    }

    /// Ensures that nCount elements fit without growth; returns how many do.
    /// Rehashes to exactly that many buckets if there are fewer, else does nothing.
    uint32 Reserve(uint32 nCount)
    {
        if (nCount > m_nBucketCount)
            Rehash(nCount);
        return m_nBucketCount;
    }

    /// Destroys the elements in iteration order, each value before its key. Keeps both arrays.
    void Clear()
    {
        if (m_nSize != 0)
        {
            DestroyElements();
            EmptyBuckets();
        }
        m_nFreeHead = kHashNone;
        m_nSize = 0;
    }

    /// Copies the elements into new arrays of nCount buckets and nodes, or moves them as the head of this file says.
    /// There are at least 4 buckets and nodes, or no arrays for 0. The arrays are new even if the count stays the same.
    /// Triggers the debug break in a set whose m_bNoRehash is set, and after that for a count below Size().
    ///
    /// Allocates the bucket array first, then the node array. Copies each element, in iteration order, to the next
    /// node, and destroys the old one before the next copy. So every chain comes out reversed, and equal keys stay
    /// together. Finally releases the old node array, then the old bucket array.
    void Rehash(uint32 nCount)
    {
        RehashAfter(nCount, [](TNode*) {});
    }

    /// Returns whether the invariants hold. For tests and debugging; linear.
    [[nodiscard]] bool Validate() const
    {
        if ((m_pBuckets == nullptr) != (m_nBucketCount == 0) || (m_pNodes == nullptr) != (m_nBucketCount == 0)
            || (m_nBucketCount != 0 && m_nBucketCount < kFewestBuckets) || m_nSize > m_nBucketCount)
            return false;

        uint32 nFree = 0;
        uint32 nUsed = 0;
        uint32 nLastFree = kHashNone;
        for (uint32 nNode = m_nFreeHead; nNode != kHashNone; nNode = m_pNodes[nNode].m_nNext)
        {
            if (nNode >= m_nBucketCount || ++nFree > m_nBucketCount - m_nSize)
                return false;
            nUsed = nNode < nUsed ? nUsed : nNode + 1;
            nLastFree = nNode;
        }
        if (nUsed > m_nSize + nFree)
            return false;

        // Live and free nodes are as many as the nodes below that sum, so they are exactly these if none is counted
        // twice. A node in two chains would have two hashes. If a node were in a chain and in the free list, both would
        // have the same last node.
        uint32 nLive = 0;
        for (uint32 nBucket = 0; nBucket < m_nBucketCount; ++nBucket)
        {
            for (uint32 nNode = m_pBuckets[nBucket]; nNode != kHashNone; nNode = m_pNodes[nNode].m_nNext)
            {
                if (nNode >= m_nSize + nFree || ++nLive > m_nSize || nNode == nLastFree
                    || BucketOf(TFields::KeyOf(m_pNodes[nNode].m_element)) != nBucket)
                    return false;
            }
        }
        return nLive == m_nSize;
    }

protected:
    using TFields::m_nBucketCount;
    using TFields::m_nFreeHead;
    using TFields::m_nSize;
    using TFields::m_pBuckets;
    using TFields::m_pNodes;

    // Inserts an element constructed from key and values. If keys are unique and the key exists, the value (if there is
    // one) is assigned instead. A full table grows, but only if an element is added.
    template <class... TValues>
    iterator InsertElement(const TKey& key, const TValues&... values)
    {
        detail::RequireCopies<value_type>();
        const uint32 nHash = HashOf(key);
        if (m_pBuckets == nullptr) [[unlikely]]
            return InsertGrowing(nHash, key, values...);
        const uint32 nBucket = nHash % m_nBucketCount;
        if constexpr (!bMulti)
        {
            if (const uint32 nFound = *FindKey(nBucket, key); nFound != kHashNone)
            {
                TElement& element = m_pNodes[nFound].m_element;
                (detail::AssignTo(element.Value(), values), ...);
                return {detail::PointerTo(element), Table(), nBucket};
            }
        }
        if (m_nBucketCount < m_nSize + 1) [[unlikely]]
            return InsertGrowing(nHash, key, values...);
        return AddNode(nBucket, key, values...);
    }

    // Inserts an element constructed from args unless there is one with the key, which may be one of the args.
    template <class TOther, class... TArgs>
    TEmplaced<iterator> EmplaceUnlessFound(const TOther& key, TArgs&&... args)
    {
        const uint32 nHash = HashOf(key);
        if (m_pBuckets != nullptr)
        {
            const uint32 nBucket = nHash % m_nBucketCount;
            if (const uint32 nFound = *FindKey(nBucket, key); nFound != kHashNone)
                return {{detail::PointerTo(m_pNodes[nFound].m_element), Table(), nBucket}, false};
        }
        return {EmplaceNew(nHash, std::forward<TArgs>(args)...), true};
    }

    // Adds an element constructed from args, which may be stored in elements of this container.
    template <class... TArgs>
    iterator EmplaceNew(uint32 nHash, TArgs&&... args)
    {
        const auto construct = [&](TNode& node)
        {
            if constexpr (kIsMap)
                detail::ConstructAt(detail::PointerTo(node.m_element), SInPlace(), std::forward<TArgs>(args)...);
            else
                detail::ConstructAt(detail::PointerTo(node.m_element), std::forward<TArgs>(args)...);
        };
        uint32 nIndex = m_nSize;
        if (m_nBucketCount < m_nSize + 1) [[unlikely]]
            RehashAfter(GrownBucketCount(), [&](TNode* pNodes) { construct(pNodes[nIndex]); });
        else
            construct(m_pNodes[nIndex = TakeNode()]);
        return LinkNode(nHash % m_nBucketCount, nIndex);
    }

    template <class TOther>
    static uint32 HashOf(const TOther& key) noexcept
    {
        return TPolicy::Hash(key);
    }

private:
    static constexpr uint32 kFewestBuckets = 4;

    // A reference to an argument of an insertion, taken before the table grows. An argument stored in a node moves with
    // it: rehashing copies the nodes in iteration order, so a node's new index is its position in that order. (The
    // table is full, so every node is in it.)
    template <class T>
    struct SArgument
    {
        SArgument(const THashTable& table, const T& argument) : m_pArgument(detail::PointerTo(argument))
        {
            const std::uintptr_t nOffset = detail::AddressOf(m_pArgument) - detail::AddressOf(table.m_pNodes);
            if (nOffset >= table.m_nBucketCount * sizeof(TNode))
                return;
            const TNode* pNode = table.m_pNodes + nOffset / sizeof(TNode);
            std::uintptr_t nNewIndex = 0;
            for (const_iterator pos = table.Begin(); detail::HashNodeOf(pos.operator->()) != pNode; ++pos)
                ++nNewIndex;
            m_pArgument = nullptr;
            m_nNewOffset = nNewIndex * sizeof(TNode) + nOffset % sizeof(TNode);
        }

        const T& In(const THashTable& grown) const
        {
            return m_pArgument != nullptr
                       ? *m_pArgument
                       : *reinterpret_cast<const T*>(detail::AddressOf(grown.m_pNodes) + m_nNewOffset);
        }

        const T* m_pArgument;
        std::uintptr_t m_nNewOffset = 0;
    };

    // Does what Rehash does. In between, construct(new nodes) may construct an element after those that move there: the
    // old elements are still intact.
    template <class TConstruct>
    void RehashAfter(uint32 nCount, TConstruct construct)
    {
        detail::BreakUnless(TFields::MayRehash());
        detail::BreakUnless(m_nSize <= nCount);
        const TFields old = *this;
        m_nFreeHead = kHashNone;
        AllocateArrays(nCount);
        construct(m_pNodes);
        uint32 nIndex = 0;
        ForEachNode(old,
                    [&](TNode& node, uint32)
                    {
                        TNode& copy = m_pNodes[nIndex];
                        Transfer(copy, node);
                        uint32& nHead = m_pBuckets[BucketOf(TFields::KeyOf(copy.m_element))];
                        copy.m_nNext = std::exchange(nHead, nIndex++);
                        detail::DestroyAt(detail::PointerTo(node.m_element));
                    });
        Release(old.m_pNodes);
        Release(old.m_pBuckets);
    }

    static void Transfer(TNode& to, TNode& from)
    {
        auto* pTo = detail::PointerTo(to.m_element);
        constexpr bool kMoves = !std::is_copy_constructible_v<value_type> || requires
        {
            typename TPolicy::MovesOnGrowth;
        };
        if constexpr (!kMoves)
            detail::ConstructAt(pTo, std::as_const(from.m_element));
        else if constexpr (kIsMap)
            detail::ConstructAt(pTo, SRelocate(), from.m_element);
        else
            detail::ConstructAt(pTo, std::move(from.m_element));
    }

    template <class... TArgs>
    KX_NOINLINE iterator InsertGrowing(uint32 nHash, const TArgs&... args)
    {
        const auto growAndAdd = [this, nHash](const auto&... arguments)
        {
            Rehash(GrownBucketCount());
            return AddNode(nHash % m_nBucketCount, arguments.In(*this)...);
        };
        return growAndAdd(SArgument<TArgs>(*this, args)...);
    }

    // Constructs an element from args in a node and links it. Takes the node freed last, or the first that was never
    // used.
    template <class... TArgs>
    iterator AddNode(uint32 nBucket, const TArgs&... args)
    {
        const uint32 nIndex = TakeNode();
        TNode& node = m_pNodes[nIndex];
        detail::ConstructAt(detail::PointerTo(node.m_element), args...);
        return LinkNode(nBucket, nIndex);
    }

    // Links a node whose element has just been constructed.
    iterator LinkNode(uint32 nBucket, uint32 nIndex)
    {
        TNode& node = m_pNodes[nIndex];
        uint32* pLink = &m_pBuckets[nBucket];
        if constexpr (bMulti)
        {
            pLink = FindKey(nBucket, TFields::KeyOf(node.m_element));
            if (*pLink != kHashNone)
                pLink = &m_pNodes[*pLink].m_nNext;
        }
        node.m_nNext = std::exchange(*pLink, nIndex);
        ++m_nSize;
        return {detail::PointerTo(node.m_element), Table(), nBucket};
    }

    uint32 GrownBucketCount() const
    {
        const uint32 nGrown = (m_nBucketCount * 3) >> 1;
        return nGrown != 0 ? nGrown : kFewestBuckets;
    }

    uint32 TakeNode()
    {
        if (m_nFreeHead != kHashNone)
            return std::exchange(m_nFreeHead, m_pNodes[m_nFreeHead].m_nNext);
        detail::BreakUnless(m_nSize < m_nBucketCount);
        return m_nSize;
    }

    // Unlinks the node that pLink leads to, destroys its element, and puts the node at the head of the free list.
    void RemoveNode(uint32* pLink, TNode& node)
    {
        *pLink = node.m_nNext;
        detail::DestroyAt(detail::PointerTo(node.m_element));
        node.m_nNext = std::exchange(m_nFreeHead, static_cast<uint32>(&node - m_pNodes));
        --m_nSize;
    }

    // Returns the link that holds the index of the first matching node in the bucket's chain: the bucket, or m_nNext of
    // the node before it. If there is no such node, returns the chain's last link, which holds kHashNone.
    template <class TMatch>
    uint32* FindLink(uint32 nBucket, TMatch matches) const
    {
        uint32* pLink = &m_pBuckets[nBucket];
        while (*pLink != kHashNone && !matches(m_pNodes[*pLink]))
            pLink = &m_pNodes[*pLink].m_nNext;
        return pLink;
    }

    template <class TOther>
    uint32* FindKey(uint32 nBucket, const TOther& key) const noexcept
    {
        return FindLink(nBucket,
                        [&key](const TNode& node) { return TPolicy::Equals(TFields::KeyOf(node.m_element), key); });
    }

    template <class TOther>
    uint32 BucketOf(const TOther& key) const
    {
        return HashOf(key) % m_nBucketCount;
    }

    const uint32* Table() const { return &m_nBucketCount; }

    // Return an iterator to the first element, and to the element with a key.
    template <class TIterator>
    TIterator First() const
    {
        uint32 nBucket = kHashNone;
        TElement* pFirst = m_nSize != 0 ? detail::NextInBuckets<TFields>(*this, nBucket) : nullptr;
        return {pFirst, Table(), nBucket};
    }

    template <class TIterator, class TOther>
    TIterator FindAs(const TOther& key) const
    {
        if (m_pBuckets == nullptr)
            return {nullptr, Table(), kHashNone};
        const uint32 nBucket = BucketOf(key);
        const uint32 nFound = *FindKey(nBucket, key);
        if (nFound == kHashNone)
            return {nullptr, Table(), kHashNone};
        return {detail::PointerTo(m_pNodes[nFound].m_element), Table(), nBucket};
    }

    template <class TIterator, class TOther>
    TIteratorRange<TIterator> FromEqualToPast(TIterator pos, const TOther& key) const noexcept
    {
        return {pos, PastEquals(pos, key)};
    }

    template <class TIterator, class TOther>
    TIterator PastEquals(TIterator pos, const TOther& key) const noexcept
    {
        while (pos != TIterator() && TPolicy::Equals(TFields::KeyOf(*pos), key))
            ++pos;
        return pos;
    }

    template <class TIterator>
    static auto* ValueOrNull(TIterator pos)
    {
        return pos != TIterator() ? detail::PointerTo(pos->Value()) : nullptr;
    }

    template <class TOther>
    bool RemoveFirst(const TOther& key)
    {
        if (m_pBuckets == nullptr)
            return false;
        uint32* pLink = FindKey(BucketOf(key), key);
        if (*pLink == kHashNone)
            return false;
        RemoveNode(pLink, m_pNodes[*pLink]);
        return true;
    }

    template <class TOther>
    uint32 RemoveEach(const TOther& key)
    {
        const uint32 nOldSize = m_nSize;
        while (RemoveFirst(key))
        {
        }
        return nOldSize - m_nSize;
    }

    // Whether each element of the first container is as often in the second one.
    static bool SameElements(const THashTable& first, const THashTable& second) noexcept
    {
        for (const value_type& element : first)
        {
            if (CountOf(first, element) != CountOf(second, element))
                return false;
        }
        return true;
    }

    static uint32 CountOf(const THashTable& table, const value_type& element)
    {
        uint32 nCount = 0;
        for ([[maybe_unused]] const value_type& other : table.EqualRange(TFields::KeyOf(element)))
        {
            if constexpr (kIsMap)
                nCount += other.Value() == element.Value();
            else
                ++nCount;
        }
        return nCount;
    }

    // Calls function(node, bucket) for each live node in iteration order. The function may destroy the element.
    template <class TFunction>
    static void ForEachNode(const TFields& fields, TFunction function)
    {
        for (uint32 nBucket = 0; nBucket < fields.m_nBucketCount; ++nBucket)
        {
            for (uint32 nNode = fields.m_pBuckets[nBucket]; nNode != kHashNone;)
            {
                TNode& node = fields.m_pNodes[nNode];
                nNode = node.m_nNext;
                function(node, nBucket);
            }
        }
    }

    void DestroyElements()
    {
        if constexpr (!std::is_trivially_destructible_v<TElement>)
            ForEachNode(*this, [](TNode& node, uint32) { detail::DestroyAt(detail::PointerTo(node.m_element)); });
    }

    void ReleaseAll()
    {
        DestroyElements();
        Release(m_pBuckets);
        Release(m_pNodes);
    }

    void AllocateArrays(uint32 nCount)
    {
        m_nBucketCount = nCount == 0 || nCount >= kFewestBuckets ? nCount : kFewestBuckets;
        m_pBuckets = nullptr;
        m_pNodes = nullptr;
        if (m_nBucketCount == 0)
            return;
        m_pBuckets = static_cast<uint32*>(::operator new[](m_nBucketCount * sizeof(uint32), *GetNormalAllocator()));
        m_pNodes = static_cast<TNode*>(::operator new[](m_nBucketCount * sizeof(TNode), *GetNormalAllocator()));
        EmptyBuckets();
    }

    static void Release(void* pArray)
    {
        if (pArray != nullptr)
            ReleaseArrayStorage(pArray);
    }

    // Compilers make a memset of it, without the cost of <cstring>.
    void EmptyBuckets()
    {
        uint32* pBucket = m_pBuckets;
        for (const uint32* pEnd = pBucket + m_nBucketCount; pBucket != pEnd; ++pBucket)
            *pBucket = kHashNone;
    }
};
} // namespace kx::detail
