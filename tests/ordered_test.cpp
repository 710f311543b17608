// The ordered containers: what the journals do not show.
#include "core/strings/string.h"
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/player.h"

#include <limits>

static_assert(std::bidirectional_iterator<TTreeIterator<int>> && std::bidirectional_iterator<TTreeConstIterator<int>>);
static_assert(sizeof(TTreeIterator<int>) == sizeof(void*));
static_assert(std::is_convertible_v<TTreeIterator<int>, TTreeConstIterator<int>>);
static_assert(!std::is_convertible_v<TTreeConstIterator<int>, TTreeIterator<int>>);
static_assert(std::is_nothrow_move_constructible_v<TSet<int>> && std::is_nothrow_move_assignable_v<TMap<int, int>>);
using IntPair = TKeyValuePair<int, int>;
using IntMap = TMap<int, int>;
static_assert(!std::is_assignable_v<decltype(*std::declval<IntMap>().Begin()), IntPair>);
static_assert(std::is_same_v<decltype(std::declval<const IntMap&>().GetValueEnumerator().Current()), const int&>);
static_assert(std::is_same_v<decltype(IntMap().GetValueEnumerator().Current()), int&>);
static_assert(std::is_same_v<decltype(IntMap().GetEnumerator().Current()), IntPair&>);
static_assert(std::is_same_v<decltype(*std::declval<const IntMap&>().Begin()), const IntPair&>);
static_assert(std::is_same_v<decltype(*std::declval<const IntMap&>().Find(1)), const IntPair&>);
static_assert(!std::is_nothrow_move_constructible_v<TKeyValuePair<Logged, Logged>>);
static_assert(sizeof(TSet<char>) == 40 && sizeof(IntMap) == 40 && sizeof(SRedBlackTreeNode<int>) == 40);

using OrderedTest = JournalTest;
using Links = kx::detail::SRedBlackTreeLinks;

TEST_F(OrderedTest, TakesListsAndComparesPairs)
{
    EXPECT_EQ((std::vector<int>{1, 2}), Values(TSet<int>{2, 1, 2}));
    EXPECT_EQ((std::vector<int>{1, 2, 2}), Values(TMultiSet<int>{2, 1, 2}));
    EXPECT_EQ(3, (IntMap{{1, 2}, {1, 3}}[1]));
    EXPECT_TRUE(IntPair(1, 2) == IntPair(1, 2) && IntPair(1, 2) != IntPair(1, 3) && IntPair(1, 2) != IntPair(2, 2));
    EXPECT_TRUE(IntPair(1, 3) < IntPair(2, 2) && !(IntPair(1, 2) < IntPair(1, 3)));
    const int nDefault = 7;
    EXPECT_EQ(&nDefault, &IntMap().GetValue(1, nDefault));
    const IntMap map{{1, 2}, {3, 4}};
    for (const IntMap& other : {IntMap{{1, 2}}, IntMap{{1, 2}, {3, 5}}, IntMap{{1, 2}, {2, 4}}, IntMap{{1, 2}, {4, 4}}})
        EXPECT_TRUE(map != other && !(map == other));
    EXPECT_TRUE(map == IntMap(map) && !(map != IntMap(map)));
}

// The values themselves, not copies, in the order of the keys.
TEST_F(OrderedTest, EnumeratesValues)
{
    struct alignas(64) OverAligned
    {
        int m_nValue;
    };
    TMap<char, OverAligned> map{{'b', {2}}, {'a', {1}}};
    EXPECT_EQ((Journal{"alloc 192/64", "alloc 192/64"}), TakeJournal());
    auto values = map.GetValueEnumerator();
    for (auto& element : map)
    {
        ASSERT_TRUE(values.MoveNext());
        EXPECT_EQ(&element.Value(), &values.Current());
        EXPECT_EQ(0u, kx::detail::AddressOf(&values.Current()) % 64);
    }
    EXPECT_FALSE(values.MoveNext());
}

TEST_F(OrderedTest, ComparesSetsAndFindsBounds)
{
    const TSet<int> set{1, 2, 4};
    EXPECT_TRUE(set == (TSet<int>{4, 2, 1}) && set != (TSet<int>{1, 2}) && set < (TSet<int>{1, 3})
                && TSet<int>() < set);
    EXPECT_TRUE((TMultiMap<int, int>{{1, 2}}) != (TMultiMap<int, int>{{1, 3}}));
    TMultiSet<int> multi{3, 1, 2, 2};
    EXPECT_TRUE(*multi.UpperBound(1) == 2 && multi.UpperBound(3) == multi.End() && multi.LowerBound(4) == multi.End());
    EXPECT_EQ("b", *(TSet<ZString>{"a", "b"}).UpperBound(std::string_view("a")));
    EXPECT_TRUE((TSet<ZString>{""}).Contains(std::string_view()));
    EXPECT_TRUE(multi.EqualRange(4).IsEmpty() && multi.Count(2) == 2);
    EXPECT_EQ((std::vector<int>{2, 2}), std::vector<int>(multi.EqualRange(2).begin(), multi.EqualRange(2).end()));
}

TEST_F(OrderedTest, WalksBackwardsInACircle)
{
    TSet<int> set;
    EXPECT_EQ(set.End(), --set.End());
    for (int i = 0; i < 100; ++i)
        set.Insert(i * 37 % 100);
    auto pos = std::as_const(set).End();
    for (int i = 99; i >= 0; --i)
        EXPECT_EQ(i, *--pos);
    EXPECT_EQ(set.End(), --pos);
    EXPECT_TRUE(std::is_sorted(set.rbegin(), set.rend(), std::greater<>()) && *std::prev(set.rend()) == 0);
}

// A chain as deep as no balanced tree of this size would be.
TEST_F(OrderedTest, RemembersALongWay)
{
    TSet<Logged> set;
    const auto nodeAt = [](auto pos) { return kx::detail::NodeOf<Links>(pos.Address()); };
    Links* pLast = nodeAt(set.Insert(Logged(0)));
    for (int i = 1; i < 40; ++i)
    {
        auto* pNode = new (*GetNormalAllocator()) SRedBlackTreeNode<Logged>(Logged(i));
        kx::detail::InsertNode(pNode, pLast, 1, nodeAt(set.End()));
        pNode->m_nColor = kx::detail::kBlack;
        pLast = pNode;
    }
    EXPECT_EQ(40, set.Insert(Logged(40))->m_nValue);
}

// Searches among integers are written in machine instructions for each width and sign.
template <class T>
void CheckBoundsOfWords()
{
    const T kMin = std::numeric_limits<T>::min();
    const T kMax = std::numeric_limits<T>::max();
    const T keys[] = {kMin, static_cast<T>(kMin + 2), kMax / 2, kMax / 2 + 2, static_cast<T>(kMax - 1)};
    TSet<T> set;
    for (const T key : {keys[3], keys[0], keys[4], keys[1], keys[2]})
        set.Insert(key);
    auto pos = set.Begin();
    for (const T key : keys)
    {
        EXPECT_TRUE(pos == set.Find(key) && pos == set.LowerBound(key));
        EXPECT_TRUE(++pos == set.UpperBound(key) && pos == set.LowerBound(static_cast<T>(key + 1)));
        EXPECT_FALSE(set.Contains(static_cast<T>(key + 1)));
    }
}

TEST_F(OrderedTest, OrdersIntegersOfEachWidthAndSign)
{
    CheckBoundsOfWords<int32>();
    CheckBoundsOfWords<uint32>();
    CheckBoundsOfWords<int64>();
    CheckBoundsOfWords<uint64>();
}

TEST_F(OrderedTest, BreaksOnAViolatedPrecondition)
{
    struct Lawless
    {
        bool operator<(const Lawless&) const { return ++*m_pnCalls > 2; }
        int* m_pnCalls;
    };
    TSet<int> empty;
    IntMap map{{1, 2}};
    int nCalls = 0;
    TSet<Lawless> lawless{{&nCalls}};
    EXPECT_BREAK(empty.Erase(empty.End()));
    EXPECT_BREAK(static_cast<void>(std::as_const(map)[3]));
    EXPECT_BREAK(static_cast<void>(lawless.Find({&nCalls})));
    EXPECT_BREAK(static_cast<void>(map.GetEnumerator().Current()));

    BreakCounter breaks;
    auto enumerator = std::as_const(map).GetValueEnumerator();
    EXPECT_TRUE(enumerator.MoveNext());
    EXPECT_FALSE(enumerator.MoveNext());
    EXPECT_EQ(kx::detail::AddressOf(&enumerator.Current()), kx::detail::AddressOf(map.End().Address()) + sizeof(int));
    EXPECT_EQ(1, breaks.Take());
    EXPECT_TRUE(enumerator.MoveNext()) << "the walk is a circle";
#ifndef KX_TEST_SANITIZED
    const int* volatile pValue = &std::as_const(map)[3];
    EXPECT_EQ(nullptr, pValue);
    EXPECT_EQ(1, breaks.Take());
#endif
}
