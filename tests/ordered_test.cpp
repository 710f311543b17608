// The ordered containers: contents and shapes against the standard ones, and the steps that an element or the allocator
// can see.
#include "core/containers/map.h"
#include "core/containers/set.h"
#include "tests/support/breaks.h"
#include "tests/support/journal.h"

#include <algorithm>
#include <random>
#include <set>

// Comparisons of logged elements stand in the journal too.
static bool operator<(const Logged& left, const Logged& right)
{
    g_journal.push_back(std::to_string(left.m_nValue) + " < " + std::to_string(right.m_nValue));
    return left.m_nValue < right.m_nValue;
}

template class TRedBlackTree<int>;
template class TSet<Logged>;
template class TSet<TKeyValuePair<int, int>>;
template class TMultiSet<int>;
template class TMap<Logged, int>;
template class TMultiMap<int, std::string>;

static_assert(std::forward_iterator<TTreeIterator<int>> && std::forward_iterator<TTreeConstIterator<int>>);
static_assert(std::ranges::forward_range<const TSet<int>> && std::ranges::common_range<TMap<int, int>>);
static_assert(!std::bidirectional_iterator<TTreeIterator<int>> && sizeof(TTreeIterator<int>) == sizeof(void*));
static_assert(std::is_convertible_v<TTreeIterator<int>, TTreeConstIterator<int>>);
static_assert(!std::is_convertible_v<TTreeConstIterator<int>, TTreeIterator<int>>);
static_assert(std::is_nothrow_move_constructible_v<TSet<int>> && std::is_nothrow_move_assignable_v<TMap<int, int>>);
static_assert(!std::is_assignable_v<decltype(*std::declval<TMap<int, int>>().Begin()), TKeyValuePair<int, int>>);
static_assert(sizeof(TSet<char>) == 40 && sizeof(TMap<int, int>) == 40 && sizeof(SRedBlackTreeNode<int>) == 40);

namespace
{
using OrderedTest = JournalTest;
using Links = detail::SRedBlackTreeLinks;

template <class T>
Links* NodeAt(TTreeIterator<T> pos)
{
    return detail::NodeOf<Links>(pos.operator->());
}

// The logged numbers 1 to n in that order, and a clean journal.
template <class TContainer = TMultiSet<Logged>>
TContainer MakeSet(int nSize)
{
    TContainer set;
    for (int i = 1; i <= nSize; ++i)
        set.Insert(i);
    TakeJournal();
    return set;
}

// An element of a set that looks like a pair.
struct Item
{
    Item(int nKey, int nValue = 0) : m_nKey(nKey), m_nValue(nValue) {}
    bool operator<(const Item& other) const { return m_nKey < other.m_nKey; }
    int Key() const { return m_nKey; }
    int Value() const { return m_nValue; }

    int m_nKey;
    int m_nValue;
};

enum class Keeps
{
    All,
    First,
    Last
};

// Random operations against a sorted vector that also knows the addresses of the elements.
template <class TContainer, Keeps keeps>
void AgreeWithAModel(unsigned nKeys, int nSteps, int nCheckEvery)
{
    struct Entry
    {
        int m_nKey;
        int m_nValue;
        const void* m_pElement;
    };
    std::mt19937 random(20261124);
    std::vector<Entry> model;
    TContainer container;
    const auto agrees = [&]
    {
        const auto same = [](const auto& element, const Entry& entry)
        { return element.Key() == entry.m_nKey && element.Value() == entry.m_nValue && &element == entry.m_pElement; };
        return container.Validate() && container.Size() == model.size() && std::ranges::equal(container, model, same);
    };
    const auto takeAddresses = [&](const TContainer& from)
    {
        auto entry = model.begin();
        for (const auto& element : from)
            (entry++)->m_pElement = &element;
    };

    for (int nStep = 0; nStep < nSteps; ++nStep)
    {
        const int nKey = static_cast<int>(random() % nKeys);
        const typename TContainer::key_type key = nKey;
        const auto entry = std::ranges::lower_bound(model, nKey, {}, &Entry::m_nKey);
        const bool bThere = entry != model.end() && entry->m_nKey == nKey;
        const auto bound = container.LowerBound(key);
        ASSERT_EQ(entry == model.end() ? nullptr : entry->m_pElement, bound == container.End() ? nullptr : &*bound);
        const auto found = std::as_const(container).Find(key);
        ASSERT_EQ(bThere, found != container.End() && found->Key() == nKey);
        switch (random() % 8)
        {
        default:
        {
            const auto pos = container.Insert({nKey, nStep});
            if (!bThere || keeps == Keeps::All)
                model.insert(entry, {nKey, nStep, &*pos});
            else if (keeps == Keeps::Last)
                entry->m_nValue = nStep;
            ASSERT_EQ(keeps == Keeps::First && bThere ? entry->m_nValue : nStep, pos->Value());
            break;
        }
        case 4:
        case 5:
            if (bThere)
                model.erase(std::ranges::find(model, &*found, &Entry::m_pElement));
            ASSERT_EQ(bThere, container.Remove(key));
            break;
        case 6:
            if (entry != model.end())
            {
                const auto nextEntry = model.erase(entry);
                const auto next = container.Erase(bound);
                ASSERT_EQ(nextEntry == model.end() ? nullptr : nextEntry->m_pElement,
                          next == container.End() ? nullptr : &*next);
            }
            break;
        case 7:
            if (nStep % 16 == 0)
            {
                TContainer other(container);
                takeAddresses(other);
                container.Swap(other);
                ASSERT_TRUE(agrees());
                other = container;
                container = std::move(other);
                takeAddresses(container);
            }
            else if (nStep % 1024 == 1)
            {
                container.Clear();
                model.clear();
            }
        }
        ASSERT_TRUE(nStep % nCheckEvery != 0 || agrees()) << nKeys << " keys, step " << nStep;
    }
}

template <class TContainer, Keeps keeps>
void AgreeWithAModel()
{
    SCOPED_TRACE(testing::PrintToString(keeps));
    ZMemAllocatorScope scope;
    AgreeWithAModel<TContainer, keeps>(8, 20000, 1);
    AgreeWithAModel<TContainer, keeps>(60, 20000, 1);
    AgreeWithAModel<TContainer, keeps>(2000, 160000, 1000);
}

// Whether the two subtrees have the same shape, colours and keys.
bool SameTree(const Links* pNode, const std::_Rb_tree_node_base* pOther)
{
    if (pNode == nullptr || pOther == nullptr)
        return pNode == nullptr && pOther == nullptr;
    return (pNode->m_nColor == detail::kRed) == (pOther->_M_color == std::_S_red)
           && static_cast<const SRedBlackTreeNode<int>*>(pNode)->m_Element
                  == *static_cast<const std::_Rb_tree_node<int>*>(pOther)->_M_valptr()
           && SameTree(pNode->m_pChild[0], pOther->_M_left) && SameTree(pNode->m_pChild[1], pOther->_M_right);
}
} // namespace

TEST(OrderedModelTest, SetsAgreeWithAModel)
{
    AgreeWithAModel<TRedBlackTree<Item>, Keeps::All>();
    AgreeWithAModel<TMultiSet<Item>, Keeps::All>();
    AgreeWithAModel<TSet<Item>, Keeps::First>();
}

TEST(OrderedModelTest, MapsAgreeWithAModel)
{
    AgreeWithAModel<TMultiMap<int, int>, Keeps::All>();
    AgreeWithAModel<TMap<int, int>, Keeps::Last>();
}

// The standard library at hand balances by the same steps, so every node must match.
TEST_F(OrderedTest, BalancesStepByStep)
{
    std::mt19937 random(1);
    for (const unsigned nKeys : {10u, 100u, 1000u})
    {
        TSet<int> set;
        std::set<int> other;
        for (int nStep = 0; nStep < 3000; ++nStep)
        {
            const int nKey = static_cast<int>(random() % nKeys);
            if (random() % 2 == 0)
                set.Insert(nKey), other.insert(nKey);
            else
                set.Remove(nKey), other.erase(nKey);
            ASSERT_TRUE(SameTree(NodeAt(set.End())->m_pChild[nStep % 2], other.end()._M_node->_M_parent));
        }
        TSet<int> copy;
        copy = set;
        ASSERT_TRUE(SameTree(NodeAt(copy.End())->m_pChild[0], other.end()._M_node->_M_parent));
    }
}

TEST_F(OrderedTest, SearchesAndCopiesStepByStep)
{
    TSet<Logged> set;
    set.Insert(2);
    EXPECT_EQ((Journal{"new 2", "alloc 40/16", "copy 2", "delete 2"}), TakeJournal());
    const Logged one(1), three(3), four(4);
    set.Insert(one);
    set.Insert(three);
    TakeJournal();
    set.Insert(four);
    EXPECT_EQ((Journal{"2 < 4", "3 < 4", "alloc 40/16", "copy 4", "2 < 4", "3 < 4"}), TakeJournal());
    set.Insert(one);
    EXPECT_EQ((Journal{"2 < 1", "1 < 2", "1 < 1", "1 < 1", "1 < 1", "1 < 1"}), TakeJournal());
    set.LowerBound(three);
    EXPECT_EQ((Journal{"2 < 3", "3 < 3"}), TakeJournal());
    EXPECT_TRUE(set.Remove(three));
    EXPECT_EQ((Journal{"2 < 3", "3 < 3", "3 < 3", "3 < 3", "3 < 3", "delete 3", "free 40"}), TakeJournal());

    TMultiSet<Logged> multiSet = MakeSet(3);
    multiSet.Insert(one);
    EXPECT_EQ((Journal{"alloc 40/16", "copy 1", "2 < 1", "1 < 1"}), TakeJournal());
}

TEST_F(OrderedTest, MapsCopyKeysAndValuesAsTheyMust)
{
    struct Value : Logged
    {
        Value() : Logged(0) {}
        using Logged::Logged;
    };
    TMap<Logged, Value> map;
    const Logged five(5);
    const Value ten(10), eleven(11);
    TakeJournal();
    map[five] = ten;
    EXPECT_EQ((Journal{"new 0", "copy 5", "copy 0", "alloc 40/16", "copy 5", "copy 0", "delete 0", "delete 5",
                       "delete 0", "0 = copy 10"}),
              TakeJournal());
    map.Insert(five, eleven);
    EXPECT_EQ((Journal{"5 < 5", "5 < 5", "5 < 5", "5 < 5", "10 = copy 11"}), TakeJournal());
    map.Clear();
    TakeJournal();
    map.Insert(five, ten);
    EXPECT_EQ((Journal{"copy 5", "copy 10", "alloc 40/16", "copy 5", "copy 10", "delete 10", "delete 5"}),
              TakeJournal());
    const TKeyValuePair<Logged, Value> pair(Logged(4), eleven);
    TakeJournal();
    map.Insert(pair);
    EXPECT_EQ((Journal{"5 < 4", "4 < 5", "alloc 40/16", "copy 4", "copy 11", "5 < 4"}), TakeJournal());

    // The enumerator of values shows the very values; equality asks < for keys and == for values.
    auto values = map.GetValueEnumerator();
    for (auto& element : map)
    {
        ASSERT_TRUE(values.MoveNext());
        EXPECT_EQ(&element.Value(), &values.Current());
    }
    EXPECT_FALSE(values.MoveNext());
    TakeJournal();
    EXPECT_TRUE(map == map);
    EXPECT_EQ((Journal{"4 < 4", "4 < 4", "5 < 5", "5 < 5"}), TakeJournal());
    EXPECT_EQ(&ten, &std::as_const(map).GetValue(Logged(9), ten));
}

TEST_F(OrderedTest, WholeTreesAreCopiedAndReleasedInOneOrder)
{
    TMultiSet<Logged> target = MakeSet(1);
    {
        TMultiSet<Logged> source = MakeSet(4);
        target = source;
        EXPECT_EQ((Journal{"delete 1", "free 40", "alloc 40/16", "copy 2", "alloc 40/16", "copy 1", "alloc 40/16",
                           "copy 3", "alloc 40/16", "copy 4"}),
                  TakeJournal());
        target = static_cast<const TMultiSet<Logged>&>(target);
        source.Swap(target);
        TMultiSet<Logged> moved(std::move(source));
        target = std::move(moved);
        const Journal released{"delete 1", "free 40", "delete 4", "free 40",
                               "delete 3", "free 40", "delete 2", "free 40"};
        EXPECT_EQ(released, TakeJournal());
        EXPECT_TRUE(source.Validate() && source.IsEmpty() && moved.Validate() && moved.IsEmpty() && target.Validate());
        TakeJournal();
        target = moved;
        EXPECT_TRUE(target.Validate() && target.IsEmpty());
        EXPECT_EQ(released, TakeJournal());
        source.Insert(7);
        TakeJournal();
    }
    EXPECT_EQ((Journal{"delete 7", "free 40"}), TakeJournal());
}

TEST_F(OrderedTest, PlacesOverAlignedElements)
{
    struct alignas(64) Wide
    {
        bool operator<(const Wide& other) const { return m_nValue < other.m_nValue; }
        int m_nValue;
    };
    TMap<char, Wide> map{{'b', {2}}, {'a', {1}}};
    EXPECT_EQ((Journal{"alloc 192/64", "alloc 192/64"}), TakeJournal());
    auto values = map.GetValueEnumerator();
    for (int i = 1; i <= 2; ++i)
    {
        ASSERT_TRUE(values.MoveNext());
        EXPECT_EQ(0u, detail::AddressOf(&values.Current()) % 64);
        EXPECT_EQ(i, values.Current().m_nValue);
    }
    EXPECT_FALSE(values.MoveNext());
    EXPECT_TRUE((TSet<Wide>{{2}, {1}}.Validate()));
}

TEST_F(OrderedTest, ValidateSeesWhatIsBroken)
{
    TSet<int> set{1, 2, 3, 4, 5, 6, 7, 8};
    Links* pHeader = NodeAt(set.End());
    Links* pRoot = pHeader->m_pChild[0];
    Links* pLeaf = NodeAt(set.Find(8));
    const auto breaks = [&]<class TField>(TField& field, TField value)
    {
        const TField old = std::exchange(field, value);
        const bool bSeen = !set.Validate();
        field = old;
        return bSeen && set.Validate();
    };
    Links* pNull = nullptr;
    EXPECT_TRUE(breaks(pHeader->m_pChild[0], pNull) && breaks(pHeader->m_pChild[1], pNull));
    EXPECT_TRUE(breaks(pHeader->m_nColor, detail::kRed) && breaks(pHeader->m_pParent, pRoot));
    EXPECT_TRUE(breaks(pRoot->m_nColor, detail::kRed) && breaks(pRoot->m_pParent, pLeaf));
    EXPECT_TRUE(breaks(pLeaf->m_nColor, detail::kBlack)) << "black height";
    EXPECT_TRUE(breaks(pLeaf->m_nColor, 2u) && breaks(pLeaf->m_pParent->m_nColor, detail::kRed)) << "colours";
    EXPECT_TRUE(breaks(pLeaf->m_pParent, pRoot) && breaks(pLeaf->m_pChild[1], pRoot)) << "a circle";
    EXPECT_TRUE(breaks(pRoot->m_pChild[0], pRoot->m_pChild[1]) && breaks(pRoot->m_pChild[1], pNull));
    EXPECT_TRUE(breaks(*set.Find(8), 0)) << "order";
    EXPECT_TRUE(breaks(*set.End().operator->(), 7)) << "count";
}

TEST_F(OrderedTest, BreaksOnAViolatedPrecondition)
{
    struct Lawless
    {
        bool operator<(const Lawless&) const { return ++*m_pnCalls > 2; }
        int* m_pnCalls;
    };
    TSet<int> set{1, 2};
    TSet<int> empty;
    TMap<int, int> map{{1, 2}};
    int nCalls = 0;
    TSet<Lawless> lawless{{&nCalls}};
    Links* pHeader = NodeAt(set.End());
    Links* pRoot = pHeader->m_pChild[0];
    SRedBlackTreeNode<int> node(3);
    EXPECT_BREAK(set.Erase(set.End()));
    EXPECT_BREAK(empty.Erase(empty.End()));
    EXPECT_BREAK(static_cast<void>(std::as_const(map)[3]));
    EXPECT_BREAK(lawless.Find({&nCalls}));
    EXPECT_BREAK(detail::InsertNode(&node, pRoot, 1, pHeader));
    EXPECT_BREAK(detail::InsertNode(&node, pRoot, 2, pHeader));
    EXPECT_BREAK(static_cast<void>(set.GetEnumerator().Current()));

    BreakCounter breaks;
    auto enumerator = std::as_const(map).GetValueEnumerator();
    while (enumerator.MoveNext())
    {
    }
    EXPECT_EQ(detail::AddressOf(&enumerator.Current()), detail::AddressOf(map.End().operator->()) + sizeof(int));
    EXPECT_EQ(1, breaks.Take());
    EXPECT_TRUE(enumerator.MoveNext()) << "the walk is a circle";

    pHeader->m_pChild[0] = nullptr;
    TSet<int> moved(std::move(set));
    EXPECT_EQ(1, breaks.Take());
    NodeAt(moved.End())->m_pChild[0] = pRoot;
    EXPECT_TRUE(moved.Validate());
#ifndef __SANITIZE_ADDRESS__
    const int* volatile pValue = &std::as_const(map)[3];
    EXPECT_EQ(nullptr, pValue);
    EXPECT_EQ(1, breaks.Take());
#endif
}
