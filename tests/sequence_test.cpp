// The five sequences: beside their models, and what the models do not show.
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/sequencemodel.h"

namespace
{
using SequenceTest = JournalTest;

// The edges of an array of the elements 1 and 2, by index and by address.
template <class TArrayLike>
void BreaksOutside(TArrayLike& array)
{
    volatile int nOne = 1; // what the compiler sees, it refuses
    EXPECT_BREAK(array[2] = 0);
    EXPECT_BREAK(array[UINT64_MAX] = 0);
    EXPECT_BREAK(static_cast<void>(std::as_const(array)[uint64{1} << (31 + nOne)]));
    EXPECT_BREAK(array[uint64{1} << (61 + nOne)] = 0) << "the byte offset wraps to 0";
    EXPECT_BREAK(array.Insert(array.End() + 1, 0));
    EXPECT_BREAK(array.Insert(array.Begin() - nOne, 0));
    EXPECT_BREAK(array.Erase(array.End()));
    EXPECT_BREAK(array.Erase(array.Begin() - nOne));
    EXPECT_BREAK(array.Erase(reinterpret_cast<int*>(detail::AddressOf(array.End()) - 2)));
    EXPECT_BREAK((array.Clear(), array.Erase(0)));
    EXPECT_BREAK(array.Erase(uint64{1} << (61 + nOne))) << "the byte offset wraps to 0";
    EXPECT_BREAK(static_cast<void>(std::as_const(array)[2]));

    EXPECT_EQ(2, std::as_const(array)[1]);

    // Resumed, the reference is to what lies behind, and erasing there takes the last element away.
    BreakCounter breaks;
    EXPECT_EQ(array.End(), &array[2]);
    array.Erase(array.End());
    EXPECT_EQ(2, breaks.Take());
    EXPECT_EQ((std::vector<int>{1}), Values(array));
}
} // namespace

TEST_F(SequenceTest, AgreesWithItsModel)
{
    AgreesWithItsModel<ModelledArray>(3, 2000);
    AgreesWithItsModel<ModelledArrayOfCopies>(1, 2000);
    AgreesWithItsModel<ModelledMaxArray>(3, 2000);
    AgreesWithItsModel<ModelledBlockArray>(3, 6000);
    AgreesWithItsModel<ModelledList>(3, 2000);
    AgreesWithItsModel<ModelledSList>(3, 2000);
}

// What the five offer to the standard library and to users of values that count nothing.
template <class TSequence>
class SequenceOfIntsTest : public testing::Test
{
    ZMemAllocatorScope m_scope;
};

using SequencesOfInts = testing::Types<TArray<int>, TMaxArray<int, 4>, TBlockArray<int>, TList<int>, TSList<int>>;
TYPED_TEST_SUITE(SequenceOfIntsTest, SequencesOfInts);

TYPED_TEST(SequenceOfIntsTest, IsAStandardRange)
{
    using Iterator = typename TypeParam::iterator;
    using ConstIterator = typename TypeParam::const_iterator;
    static_assert(std::forward_iterator<Iterator> && std::forward_iterator<ConstIterator>);
    static_assert(std::ranges::forward_range<TypeParam> && std::ranges::forward_range<const TypeParam>);
    static_assert(std::is_convertible_v<Iterator, ConstIterator> && !std::is_convertible_v<ConstIterator, Iterator>);
    static_assert(std::is_same_v<decltype(*std::declval<const TypeParam&>().Begin()), const int&>);
    static_assert(std::is_nothrow_move_constructible_v<TypeParam> && std::is_nothrow_move_assignable_v<TypeParam>);

    const TypeParam sequence{4, 5, 6, 5};
    EXPECT_EQ(2, std::ranges::count_if(sequence, [](int n) { return n == 5; }));
    EXPECT_TRUE(std::ranges::equal(sequence, std::array{4, 5, 6, 5}));
    EXPECT_EQ(std::next(sequence.Begin()), std::ranges::find(sequence, 5));
    EXPECT_EQ(sequence.End(), std::ranges::find(sequence, 7));
    EXPECT_EQ(sequence.begin(), sequence.Begin());
    EXPECT_TRUE(TypeParam({}).IsEmpty());
}

TYPED_TEST(SequenceOfIntsTest, EnumeratesUpToTheBreakBehindTheLast)
{
    TypeParam sequence{4, 5};
    auto enumerator = sequence.GetEnumerator();
    ASSERT_TRUE(enumerator.MoveNext());
    enumerator.Current() = 6;
    ASSERT_TRUE(enumerator.MoveNext());
    EXPECT_EQ(5, enumerator.Current());
    EXPECT_FALSE(enumerator.MoveNext());
    EXPECT_BREAK(static_cast<void>(enumerator.Current()));
    auto constEnumerator = std::as_const(sequence).GetEnumerator();
    ASSERT_TRUE(constEnumerator.MoveNext());
    static_assert(std::is_same_v<decltype(constEnumerator.Current()), const int&>);
    EXPECT_EQ(6, constEnumerator.Current());
}

static_assert(std::contiguous_iterator<TArray<int>::iterator> && std::contiguous_iterator<TMaxArray<int, 3>::iterator>);
static_assert(sizeof(TMaxArray<double, 10>) == 88 && sizeof(TMaxArray<char, 3>) == 8);

TEST_F(SequenceTest, ArraysBreakOutsideOfTheirElements)
{
    TArray<int> array{1, 2};
    BreaksOutside(array);
    EXPECT_BREAK(TArray<int>(UINT64_MAX / 2));

    TMaxArray<int, 3> maxArray{1, 2};
    BreaksOutside(maxArray);
    maxArray.Add(2);
    int& added = maxArray.Add(3);
    EXPECT_EQ(&maxArray[2], &added);
    EXPECT_BREAK(maxArray.Add(4));
    EXPECT_BREAK(maxArray.Insert(maxArray.Begin(), 4));
    EXPECT_BREAK((TMaxArray<int, 1>{1, 2}));
}

TEST_F(SequenceTest, ArrayConstructsExactlyAndCompares)
{
    {
        const TArray<Logged> none(0);
        const TArray<int> room(3);
        EXPECT_EQ(3u, room.Capacity());
        EXPECT_TRUE(room.IsEmpty());
        const TArray<int> list{4, 5};
        EXPECT_EQ(2u, list.Capacity());
        EXPECT_TRUE(room != list && room == TArray<int>());
        EXPECT_EQ((Journal{"alloc 12/4", "alloc 8/4", "free null"}), TakeJournal());
        EXPECT_TRUE(list == (TArray<int>{4, 5}) && list != (TArray<int>{4, 6}) && list != (TArray<int>{4}));
        TakeJournal();
    }
    EXPECT_EQ((Journal{"free 8", "free 12", "free null"}), TakeJournal());
}

TEST_F(SequenceTest, ArrayHandsOnTheAlignmentOfTheElement)
{
    struct alignas(64) Wide
    {
        int m_nValue;
    };
    TArray<Wide> array;
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(0u, detail::AddressOf(&array.Add(Wide{i})) % 64);
    EXPECT_EQ((Journal{"alloc 64/64", "free null", "alloc 128/64", "free 64", "alloc 192/64", "free 128"}),
              TakeJournal());
}

TEST_F(SequenceTest, ElementsOfAnArrayMayBeMoveOnlyOrOverloadTheAddressOperator)
{
    struct Odd
    {
        explicit Odd(int nValue) : m_nValue(nValue) {}
        Odd(Odd&&) = default;
        Odd& operator=(Odd&&) = default;
        void operator&() const = delete;
        int m_nValue;
    };
    TArray<Odd> array(4);
    array.Add(Odd(1));
    array.Insert(array.Begin(), Odd(2));
    array.Insert(array.Begin(), std::move(array[1]));
    array.Erase(1);
    array.Reserve(9);
    EXPECT_EQ((std::vector<int>{1, 1}), Values(array));
}

TEST_F(SequenceTest, BlockArrayBreaksOnWhatIsNotThere)
{
    TBlockArray<int> array;
    EXPECT_BREAK(array.First() = 0);
    EXPECT_BREAK(static_cast<void>(std::as_const(array).Last()));
    const TBlockArray<int>::iterator last = array.Insert(array.End(), 1);
    array.Insert(array.End(), 2);
    EXPECT_TRUE(std::as_const(array).First() == 1 && std::as_const(array).Last() == 2);
    EXPECT_EQ(TBlockArray<int>().End(), array.End()) << "all ends are equal";
    EXPECT_BREAK(array[2] = 0);
    EXPECT_BREAK(static_cast<void>(std::as_const(array)[uint64{1} << 32]));
    EXPECT_BREAK(array.Erase(array.End()));
    EXPECT_BREAK(static_cast<void>(std::next(array.End())));
    // A position further on than the end is found out at the very last.
    array.Insert(array.End(), 3);
    const TBlockArray<int>::iterator end = array.End();
    array.Clear();
    array.Insert(array.End(), 4);
    EXPECT_BREAK(array.Insert(end, 5));
    EXPECT_EQ(4, *last) << "blocks stay, and the first one is used again";
}

TEST_F(SequenceTest, BlockArrayGrowsItsTableByHalf)
{
    TBlockArray<char> array;
    for (int i = 0; i < 433; ++i)
        array.Insert(array.End(), 'x');
    Journal tables = TakeJournal();
    std::erase_if(tables, [](const std::string& word) { return word == "alloc 16/16" || word.starts_with("free"); });
    EXPECT_EQ((Journal{"alloc 64/16", "alloc 96/16", "alloc 144/16", "alloc 216/16", "alloc 320/16"}), tables);
}

TEST_F(SequenceTest, ListsDifferInWhereAValueAloneGoes)
{
    TList<int> list;
    TSList<int> slist;
    for (int i = 1; i <= 3; ++i)
    {
        EXPECT_EQ(i, *list.Insert(i));
        const TSList<int>::iterator inserted = slist.Insert(i);
        EXPECT_EQ(slist.Begin(), inserted);
    }
    EXPECT_EQ((std::vector<int>{1, 2, 3}), Values(list));
    EXPECT_EQ((std::vector<int>{3, 2, 1}), Values(slist));
    EXPECT_EQ(TSList<int>().End(), slist.End());
    EXPECT_EQ(detail::AddressOf(&list + 1), detail::AddressOf(list.End().operator->()));
    EXPECT_EQ(8u, detail::AddressOf(slist.End().operator->())) << "where the element of a null node would be";

    struct alignas(16) Wide
    {
        int m_nValue;
    };
    TList<Wide> wideList{{1}, {2}};
    TSList<Wide> wideSList{{1}, {2}};
    EXPECT_EQ(0u, detail::AddressOf(&*wideList.Begin()) % 16);
    EXPECT_EQ(0u, detail::AddressOf(&*wideSList.Begin()) % 16);
    EXPECT_EQ(wideSList.End(), std::next(wideSList.Begin(), 2));
}
