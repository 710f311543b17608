// The ordered containers: beside their models, and what the models do not show.
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/orderedmodel.h"

static_assert(std::forward_iterator<TTreeIterator<int>> && std::forward_iterator<TTreeConstIterator<int>>);
static_assert(std::ranges::forward_range<const TSet<int>> && std::ranges::common_range<TMap<int, int>>);
static_assert(!std::bidirectional_iterator<TTreeIterator<int>> && sizeof(TTreeIterator<int>) == sizeof(void*));
static_assert(std::is_convertible_v<TTreeIterator<int>, TTreeConstIterator<int>>);
static_assert(!std::is_convertible_v<TTreeConstIterator<int>, TTreeIterator<int>>);
static_assert(std::is_nothrow_move_constructible_v<TSet<int>> && std::is_nothrow_move_assignable_v<TMap<int, int>>);
static_assert(!std::is_assignable_v<decltype(*std::declval<TMap<int, int>>().Begin()), TKeyValuePair<int, int>>);
using IntMap = TMap<int, int>;
static_assert(std::is_same_v<decltype(std::declval<const IntMap&>().GetValueEnumerator().Current()), const int&>);
static_assert(std::is_same_v<decltype(IntMap().GetValueEnumerator().Current()), int&>);
static_assert(std::is_same_v<decltype(IntMap().GetEnumerator().Current()), TKeyValuePair<int, int>&>);
static_assert(std::is_same_v<decltype(*std::declval<const IntMap&>().Begin()), const TKeyValuePair<int, int>&>);
static_assert(std::is_same_v<decltype(*std::declval<const IntMap&>().Find(1)), const TKeyValuePair<int, int>&>);
static_assert(!std::is_nothrow_move_constructible_v<TKeyValuePair<Logged, Logged>>);
static_assert(sizeof(TSet<char>) == 40 && sizeof(TMap<int, int>) == 40 && sizeof(SRedBlackTreeNode<int>) == 40);

namespace
{
using OrderedTest = JournalTest;
using Links = detail::SRedBlackTreeLinks;
} // namespace

TEST_F(OrderedTest, AgreesWithItsModel)
{
    AgreesWithItsModel<ModelledTree>(2, 2000);
    AgreesWithItsModel<ModelledMultiSet>(2, 2000);
    AgreesWithItsModel<ModelledSet>(4, 2000);
    AgreesWithItsModel<ModelledMultiMap>(2, 2000);
    AgreesWithItsModel<ModelledMap>(4, 2000);
}

TEST_F(OrderedTest, MapsFindInsertAndCompareByKey)
{
    struct Value : Logged
    {
        Value() : Logged(0) {}
        using Logged::Logged;
    };
    TMap<Logged, Value> map;
    const Logged five(5);
    const Value ten(10);
    TakeJournal();
    map[five] = ten;
    EXPECT_EQ((Journal{"new 0", "copy 5", "copy 0", "alloc 40/16", "copy 5", "copy 0", "delete 0", "delete 5",
                       "delete 0", "0 = copy 10"}),
              TakeJournal());
    map[five] = ten;
    EXPECT_EQ((Journal{"5 < 5", "5 < 5", "5 < 5", "5 < 5", "10 = copy 10"}), TakeJournal());

    // The enumerator of values shows the very values; equality asks < for keys and == for values.
    map.Insert(Logged(4), ten);
    auto values = map.GetValueEnumerator();
    for (auto& element : map)
    {
        ASSERT_TRUE(values.MoveNext());
        EXPECT_EQ(&element.Value(), &values.Current());
    }
    EXPECT_FALSE(values.MoveNext());
    TMap<Logged, Value> other(map);
    TakeJournal();
    EXPECT_TRUE(map == other);
    EXPECT_EQ((Journal{"4 < 4", "4 < 4", "5 < 5", "5 < 5"}), TakeJournal());
    other[five] = Value(11);
    EXPECT_TRUE(map != other);
    other.Remove(five);
    EXPECT_TRUE(map != other);
    other.Insert(Logged(6), ten);
    EXPECT_TRUE(map != other);
    EXPECT_EQ(&ten, &std::as_const(map).GetValue(Logged(9), ten));
    EXPECT_EQ(10, std::as_const(map).GetValue(five, Value()).m_nValue);

    EXPECT_EQ((std::vector<int>{1, 2}), Values(TSet<int>{2, 1, 2}));
    EXPECT_EQ((std::vector<int>{1, 2, 2}), Values(TMultiSet<int>{2, 1, 2}));
    EXPECT_EQ(3, (TMap<int, int>{{1, 2}, {1, 3}}[1]));
    using Pair = TKeyValuePair<int, int>;
    EXPECT_TRUE(Pair(1, 2) == Pair(1, 2) && !(Pair(1, 2) == Pair(1, 3)) && !(Pair(1, 2) == Pair(2, 2)));
    EXPECT_TRUE(Pair(1, 3) < Pair(2, 2) && !(Pair(1, 2) < Pair(1, 3)));
}

// A chain as deep as no balanced tree of this size would be.
TEST_F(OrderedTest, RemembersALongWay)
{
    TSet<Logged> set;
    Links* pLast = NodeAt(set.Insert(Logged(0)));
    for (int i = 1; i < 40; ++i)
    {
        auto* pNode = new (*GetNormalAllocator()) SRedBlackTreeNode<Logged>(Logged(i));
        detail::InsertNode(pNode, pLast, 1, NodeAt(set.End()));
        pNode->m_nColor = detail::kBlack;
        pLast = pNode;
    }
    EXPECT_EQ(40, set.Insert(Logged(40))->m_nValue);
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
    EXPECT_TRUE((TSet<Wide>{{2}, {1}}.Validate() && TMultiSet<Wide>{{2}, {1}, {1}}.Validate()));
}

TEST_F(OrderedTest, ValidateSeesWhatIsBroken)
{
    TSet<int> set{1, 2, 3, 4};
    Links* pHeader = NodeAt(set.End());
    Links* pRoot = pHeader->m_pChild[0];
    Links* pLeaf = NodeAt(set.Find(4));
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
    EXPECT_TRUE(breaks(pLeaf->m_nColor, 2u)) << "no colour";
    EXPECT_TRUE(breaks(pLeaf->m_pParent, pRoot) && breaks(pLeaf->m_pChild[1], pRoot)) << "a circle";
    EXPECT_TRUE(breaks(pRoot->m_pChild[0], pRoot->m_pChild[1]) && breaks(pRoot->m_pChild[1], pNull));
    EXPECT_TRUE(breaks(*set.Find(4), 0)) << "order";
    TSet<int> two{1, 2};
    NodeAt(two.Find(2))->m_nColor = detail::kBlack;
    TSet<int> three{1, 2, 3};
    NodeAt(three.Find(1))->m_nColor = detail::kBlack;
    EXPECT_FALSE(two.Validate() || three.Validate()) << "black height, with one leaf, and less on the right";
    EXPECT_TRUE(breaks(*set.End().operator->(), 7)) << "count";
    for (Links* pChild : pRoot->m_pChild)
        pChild->m_nColor = detail::kRed;
    EXPECT_FALSE(set.Validate()) << "red under red";
}

TEST_F(OrderedTest, BreaksOnAViolatedPrecondition)
{
    struct Lawless
    {
        bool operator<(const Lawless&) const { return ++*m_pnCalls > 2; }
        int* m_pnCalls;
    };
    TSet<int64> set{0, 1};
    TSet<int> empty;
    TMap<int, int> map{{1, 2}};
    int nCalls = 0;
    TSet<Lawless> lawless{{&nCalls}};
    Links* pHeader = NodeAt(set.End());
    Links* pRoot = pHeader->m_pChild[0];
    SRedBlackTreeNode<int64> node(3);
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
    TSet<int64> moved(std::move(set));
    EXPECT_EQ(1, breaks.Take());
    NodeAt(moved.End())->m_pChild[0] = pRoot;
    EXPECT_TRUE(moved.Validate());
#ifndef KX_TEST_SANITIZED
    const int* volatile pValue = &std::as_const(map)[3];
    EXPECT_EQ(nullptr, pValue);
    EXPECT_EQ(1, breaks.Take());
#endif
}
