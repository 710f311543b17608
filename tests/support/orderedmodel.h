// The models of the ordered containers; see containermodel.h. The tree of the standard library at hand balances by the
// same steps, so every node must match, and with the shape all comparisons and the orders of copying and releasing.
#pragma once

#include "core/containers/map.h"
#include "core/containers/set.h"
#include "tests/support/keyedmodel.h"

#include <iterator>
#include <set>

// Comparisons of logged elements stand in the journal too.
inline bool operator<(const Logged& left, const Logged& right)
{
    g_journal.push_back(std::to_string(left.m_nValue) + " < " + std::to_string(right.m_nValue));
    return left.m_nValue < right.m_nValue;
}

template <class T>
detail::SRedBlackTreeLinks* NodeAt(TTreeIterator<T> pos)
{
    return detail::NodeOf<detail::SRedBlackTreeLinks>(pos.operator->());
}

enum class Keeps
{
    All,
    First,
    Last
};

template <Keeps keeps, bool bValues>
struct OrderedModel : KeyedModel<bValues>
{
    struct SByKey
    {
        bool operator()(const SEntry& left, const SEntry& right) const { return left.m_nKey < right.m_nKey; }
    };
    using Tree = std::multiset<SEntry, SByKey>;
    using Node = std::_Rb_tree_node_base;

    static constexpr bool kTakesPairs = bValues;

    Entries Walk() const { return Entries(m_tree.begin(), m_tree.end()); }
    size_t PlaceOf(typename Tree::const_iterator pos) const
    {
        return static_cast<size_t>(std::distance(m_tree.begin(), pos));
    }
    const Node* Root() const { return m_tree.end()._M_node->_M_parent; }
    static const SEntry& EntryAt(const Node* pNode)
    {
        return *static_cast<const std::_Rb_tree_node<SEntry>*>(pNode)->_M_valptr();
    }

    static bool Less(int nLeft, int nRight)
    {
        Expect(std::to_string(nLeft) + " < ", nRight);
        return nLeft < nRight;
    }
    static void ExpectNode(const SEntry& entry)
    {
        ExpectAllocation(40, 16);
        OrderedModel::ExpectCopy(entry);
    }
    static void ExpectRelease(const SEntry& entry)
    {
        OrderedModel::ExpectDelete(entry);
        ExpectFree(40);
    }

    // The keys that a search passes by are left in m_passed.
    size_t Find(int nKey)
    {
        m_passed.clear();
        for (const Node* pNode = Root(); pNode != nullptr;)
        {
            const int nPassed = EntryAt(pNode).m_nKey;
            const bool bRight = Less(nPassed, nKey);
            if (!bRight && !Less(nKey, nPassed))
            {
                Less(nPassed, nKey);
                Less(nKey, nPassed);
                return PlaceOf(typename Tree::const_iterator(pNode));
            }
            m_passed.push_back(nPassed);
            pNode = bRight ? pNode->_M_right : pNode->_M_left;
        }
        return m_tree.size();
    }

    size_t Insert(int nKey, int nValue, bool bAsPair)
    {
        const SEntry entry = this->MakeEntry(nKey, nValue);
        if (keeps != Keeps::All)
        {
            if (const size_t nFound = Find(nKey); nFound < m_tree.size())
            {
                if (keeps == Keeps::Last)
                    this->ReplaceValue(const_cast<SEntry&>(*std::next(m_tree.begin(), static_cast<int>(nFound))),
                                       nValue);
                return nFound;
            }
            if (!bAsPair)
                this->ExpectCopy(entry);
            ExpectNode(entry);
            for (const int nPassed : m_passed)
                Less(nPassed, nKey);
            if (!bAsPair)
                this->ExpectDelete(entry);
        }
        else
        {
            ExpectNode(entry);
            CompareDownTo(nKey);
        }
        return PlaceOf(m_tree.insert(m_tree.lower_bound(entry), entry));
    }

    void CompareDownTo(int nKey) const
    {
        for (const Node* pNode = Root(); pNode != nullptr;)
            pNode = Less(EntryAt(pNode).m_nKey, nKey) ? pNode->_M_right : pNode->_M_left;
    }

    void Erase(size_t nPlace)
    {
        const auto pos = std::next(m_tree.begin(), static_cast<int>(nPlace));
        ExpectRelease(*pos);
        m_tree.erase(pos);
    }

    void Clear()
    {
        Release(Root());
        m_tree.clear();
    }
    static void Release(const Node* pNode)
    {
        if (pNode == nullptr)
            return;
        Release(pNode->_M_left);
        Release(pNode->_M_right);
        ExpectRelease(EntryAt(pNode));
    }

    void CopyAssign(const OrderedModel& other)
    {
        Clear();
        Copy(other.Root());
        m_tree = other.m_tree;
    }
    static void Copy(const Node* pNode)
    {
        if (pNode == nullptr)
            return;
        ExpectNode(EntryAt(pNode));
        Copy(pNode->_M_left);
        Copy(pNode->_M_right);
    }

    void Die() { Clear(); }

    template <class TContainer>
    bool Fits(const TContainer& container) const
    {
        TakeJournal(); // what Validate has compared
        const auto* pHeader = NodeAt(container.End());
        return IsSame(container, pHeader->m_pChild[0], Root()) && pHeader->m_pChild[0] == pHeader->m_pChild[1];
    }
    template <class TContainer>
    static bool IsSame(const TContainer& container, const detail::SRedBlackTreeLinks* pNode, const Node* pOther)
    {
        using ElementNode = SRedBlackTreeNode<typename TContainer::value_type>;
        if (pNode == nullptr || pOther == nullptr)
            return pNode == nullptr && pOther == nullptr;
        return (pNode->m_nColor == detail::kRed) == (pOther->_M_color == std::_S_red)
               && EntryOf(container, static_cast<const ElementNode*>(pNode)->m_Element) == EntryAt(pOther)
               && IsSame(container, pNode->m_pChild[0], pOther->_M_left)
               && IsSame(container, pNode->m_pChild[1], pOther->_M_right);
    }

    // A look for the bound.
    template <class TContainer>
    bool StepOther(TContainer& container, const Logged& key, auto&&)
    {
        const size_t nBound = PlaceOf(m_tree.lower_bound(SEntry{key.m_nValue}));
        CompareDownTo(key.m_nValue);
        const auto bound = container.LowerBound(key);
        CompareDownTo(key.m_nValue);
        return bound == At(container, nBound) && bound == std::as_const(container).LowerBound(key);
    }

    Tree m_tree;
    std::vector<int> m_passed;
};

using ModelledTree = Modelled<TRedBlackTree<Logged>, OrderedModel<Keeps::All, false>>;
using ModelledMultiSet = Modelled<TMultiSet<Logged>, OrderedModel<Keeps::All, false>>;
using ModelledSet = Modelled<TSet<Logged>, OrderedModel<Keeps::First, false>>;
using ModelledMultiMap = Modelled<TMultiMap<Logged, Logged>, OrderedModel<Keeps::All, true>>;
using ModelledMap = Modelled<TMap<Logged, Logged>, OrderedModel<Keeps::Last, true>>;
