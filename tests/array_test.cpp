// TArray: every step that an element or the allocator can see, in its order.
#include "core/containers/array.h"
#include "tests/support/breaks.h"
#include "tests/support/journal.h"

#include <algorithm>

template class TArray<int>;
template class TArray<LoggedCopy>;

static_assert(std::contiguous_iterator<TArray<int>::iterator>);
static_assert(std::ranges::contiguous_range<TArray<int>> && std::ranges::contiguous_range<const TArray<int>>);
static_assert(
    std::is_nothrow_move_constructible_v<TArray<Logged>> && std::is_nothrow_move_assignable_v<TArray<Logged>>);

namespace
{
using ArrayTest = JournalTest;

// An array of 1 to n with the given capacity, and a clean journal.
template <class T = Logged>
TArray<T> MakeArray(int nSize, uint64 nCapacity)
{
    TArray<T> array(nCapacity);
    for (int i = 1; i <= nSize; ++i)
        array.Add(T(i));
    TakeJournal();
    return array;
}
} // namespace

TEST_F(ArrayTest, AddGrowsBeforeTheOldElementsAreTouched)
{
    {
        TArray<Logged> array;
        const Logged first(1);
        array.Add(first);
        EXPECT_EQ((Journal{"new 1", "alloc 4/4", "copy 1", "free null"}), TakeJournal());
        array.Add(Logged(2));
        EXPECT_EQ((Journal{"new 2", "alloc 8/4", "move 2", "move 1", "delete -1", "free 4", "delete -1"}),
                  TakeJournal());
        array.Add(array[0]);
        EXPECT_EQ((Journal{"alloc 12/4", "copy 1", "move 1", "delete -1", "move 2", "delete -1", "free 8"}),
                  TakeJournal());
        array.Add(std::move(array[1]));
        EXPECT_EQ((std::vector<int>{1, -1, 1, 2}), Values(array));
        TakeJournal();
    }
    EXPECT_EQ((Journal{"delete 1", "delete 1", "delete -1", "delete 1", "delete 2", "free 16"}), TakeJournal());
}

TEST_F(ArrayTest, ElementsWithoutAMoveAreCopied)
{
    TArray<LoggedCopy> array = MakeArray<LoggedCopy>(2, 2);
    array.Add(LoggedCopy(3));
    EXPECT_EQ(
        (Journal{"new 3", "alloc 12/4", "copy 3", "copy 1", "delete 1", "copy 2", "delete 2", "free 8", "delete 3"}),
        TakeJournal());
    array.Erase(0);
    EXPECT_EQ((Journal{"1 = copy 2", "2 = copy 3", "delete 3"}), TakeJournal());
}

TEST_F(ArrayTest, InsertWithRoomShiftsFromTheEnd)
{
    TArray<Logged> array = MakeArray(4, 6);
    const Logged value(9);
    const Logged* pInserted = array.Insert(array.Begin() + 1, value);
    EXPECT_EQ(array.Begin() + 1, pInserted);
    EXPECT_EQ((Journal{"new 9", "move 4", "-1 = move 3", "-1 = move 2", "-1 = copy 9"}), TakeJournal());
    pInserted = array.Insert(array.End(), Logged(8));
    EXPECT_EQ(array.End() - 1, pInserted);
    EXPECT_EQ((Journal{"new 8", "move 8", "delete -1"}), TakeJournal());
    EXPECT_EQ((std::vector<int>{1, 9, 2, 3, 4, 8}), Values(array));
}

TEST_F(ArrayTest, InsertIntoAFullArrayBuildsTheNewElementFirst)
{
    TArray<Logged> array = MakeArray(2, 2);
    array.Insert(array.Begin() + 1, array[1]);
    EXPECT_EQ((Journal{"alloc 12/4", "copy 2", "move 1", "delete -1", "move 2", "delete -1", "free 8"}), TakeJournal());
    EXPECT_EQ((std::vector<int>{1, 2, 2}), Values(array));

    TArray<Logged> empty;
    const Logged* pInserted = empty.Insert(empty.End(), Logged(7));
    EXPECT_EQ(empty.Begin(), pInserted);
    EXPECT_EQ((Journal{"new 7", "alloc 4/4", "move 7", "free null", "delete -1"}), TakeJournal());
}

// For every position, every element of the array as the argument, with room and full: the value from before the call.
TEST_F(ArrayTest, InsertTakesAnElementOfItsOwn)
{
    for (const uint64 nCapacity : {4u, 5u})
    {
        for (int nPos = 0; nPos <= 4; ++nPos)
        {
            for (int nFrom = 0; nFrom < 4; ++nFrom)
            {
                std::vector<int> expected{1, 2, 3, 4};
                expected.insert(expected.begin() + nPos, nFrom + 1);
                TArray<Logged> copied = MakeArray(4, nCapacity);
                copied.Insert(copied.Begin() + nPos, *(copied.Begin() + nFrom));
                EXPECT_EQ(expected, Values(copied)) << nPos << " from " << nFrom;

                // Moved out of: the source keeps the mark, wherever the shift has taken it.
                TArray<Logged> moved = MakeArray(4, nCapacity);
                moved.Insert(moved.Begin() + nPos, std::move(*(moved.Begin() + nFrom)));
                expected[static_cast<size_t>(nFrom < nPos ? nFrom : nFrom + 1)] = -1;
                EXPECT_EQ(expected, Values(moved)) << nPos << " from " << nFrom;
            }
        }
    }
}

TEST_F(ArrayTest, EraseShiftsDownAndDestroysTheLast)
{
    TArray<Logged> array = MakeArray(4, 4);
    Logged* pos = array.Erase(array.Begin() + 1);
    EXPECT_EQ((Journal{"2 = move 3", "-1 = move 4", "delete -1"}), TakeJournal());
    EXPECT_EQ(3, pos->m_nValue);
    pos = array.Erase(array.End() - 1);
    EXPECT_EQ(array.End(), pos);
    EXPECT_EQ((Journal{"delete 4"}), TakeJournal());
    array.Erase(0);
    EXPECT_EQ((Journal{"1 = move 3", "delete -1"}), TakeJournal());
    array.Erase(uint8{0});
    EXPECT_EQ((Journal{"delete 3"}), TakeJournal());
    EXPECT_EQ(4u, array.Capacity());
    array.Clear();
    EXPECT_EQ(Journal{}, TakeJournal());
}

TEST_F(ArrayTest, ReserveDecidesByItsTable)
{
    TArray<Logged> array = MakeArray(2, 4);
    for (const uint64 nCapacity : {0u, 2u, 4u})
        EXPECT_EQ(4u, array.Reserve(nCapacity, false));
    for (const uint64 nCapacity : {0u, 1u})
        EXPECT_EQ(4u, array.Reserve(nCapacity, true));
    EXPECT_EQ(Journal{}, TakeJournal());

    const Journal relocated{"move 1", "delete -1", "move 2", "delete -1"};
    const auto expect = [&](uint64 nCapacity, bool bExact, uint64 nOld)
    {
        Journal expected{"alloc " + std::to_string(nCapacity * 4) + "/4"};
        expected.insert(expected.end(), relocated.begin(), relocated.end());
        expected.push_back("free " + std::to_string(nOld * 4));
        EXPECT_EQ(nCapacity, array.Reserve(nCapacity, bExact));
        EXPECT_EQ(expected, TakeJournal());
    };
    expect(4, true, 4);
    expect(3, true, 4);
    expect(2, true, 3);
    expect(5, false, 2);
    expect(6, true, 5);

    TArray<Logged> empty;
    EXPECT_EQ(0u, empty.Reserve(0, true));
    EXPECT_EQ(3u, empty.Reserve(3));
    EXPECT_EQ(0u, empty.Reserve(0, true));
    EXPECT_EQ(nullptr, empty.Begin());
    EXPECT_EQ((Journal{"free null", "alloc 12/4", "free null", "free 12"}), TakeJournal());
}

TEST_F(ArrayTest, ConstructsExactly)
{
    {
        const TArray<Logged> none(0);
        const TArray<Logged> room(3);
        EXPECT_EQ(3u, room.Capacity());
        EXPECT_TRUE(room.IsEmpty());
        const TArray<Logged> copyOfNone(room);
        const TArray<int> list{4, 5};
        const TArray<int> copy(list);
        EXPECT_EQ(2u, copy.Capacity());
        EXPECT_EQ((std::vector<int>{4, 5}), Values(copy));
    }
    EXPECT_EQ(
        (Journal{"alloc 12/4", "alloc 8/4", "alloc 8/4", "free 8", "free 8", "free null", "free 12", "free null"}),
        TakeJournal());
}

TEST_F(ArrayTest, ComparesSizesAndElements)
{
    const TArray<int> array{4, 5};
    EXPECT_TRUE(array == (TArray<int>{4, 5}));
    EXPECT_TRUE(array != (TArray<int>{4, 6}));
    EXPECT_TRUE(array != (TArray<int>{4}));
    EXPECT_TRUE(TArray<int>{} == TArray<int>(5));
}

TEST_F(ArrayTest, CopyAssignmentReallocatesExactlyOrNotAtAll)
{
    const TArray<Logged> two = MakeArray(2, 2);
    TArray<Logged> target = MakeArray(1, 1);
    target = two;
    EXPECT_EQ((Journal{"delete 1", "alloc 8/4", "free 4", "copy 1", "copy 2"}), TakeJournal());
    target = MakeArray(1, 1);
    TakeJournal();
    target.Reserve(7);
    TakeJournal();
    target = two;
    EXPECT_EQ((Journal{"delete 1", "copy 1", "copy 2"}), TakeJournal());
    target = static_cast<const TArray<Logged>&>(target);
    EXPECT_EQ(Journal{}, TakeJournal());
    EXPECT_EQ(7u, target.Capacity());
}

TEST_F(ArrayTest, MovesTouchNoElement)
{
    TArray<Logged> source = MakeArray(2, 3);
    const Logged* pFirst = source.Begin();
    TArray<Logged> target(std::move(source));
    EXPECT_EQ(pFirst, target.Begin());
    EXPECT_TRUE(source.IsEmpty() && source.Capacity() == 0 && source.Begin() == nullptr);
    source = std::move(target);
    EXPECT_EQ((Journal{"free null"}), TakeJournal());
    target = MakeArray(1, 1);
    TakeJournal();
    source = std::move(target);
    EXPECT_EQ((Journal{"delete 1", "delete 2", "free 12"}), TakeJournal());
    TArray<Logged>& same = source;
    source = std::move(same);
    EXPECT_EQ(Journal{}, TakeJournal());
    EXPECT_EQ((std::vector<int>{1}), Values(source));
    target.Add(Logged(3));
    EXPECT_EQ((std::vector<int>{3}), Values(target));
}

TEST_F(ArrayTest, HandsOnTheAlignmentOfTheElement)
{
    struct alignas(64) Wide
    {
        int m_nValue;
    };
    TArray<Wide> array;
    for (int i = 0; i < 3; ++i)
    {
        Wide& wide = array.Add(Wide{i});
        EXPECT_EQ(0u, detail::AddressOf(&wide) % 64);
    }
    EXPECT_EQ((Journal{"alloc 64/64", "free null", "alloc 128/64", "free 64", "alloc 192/64", "free 128"}),
              TakeJournal());
}

TEST_F(ArrayTest, ElementsMayBeMoveOnlyOrOverloadTheAddressOperator)
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

TEST_F(ArrayTest, EnumeratesFromBeforeTheFirst)
{
    TArray<int> array{4, 5};
    TArrayEnumerator<int> enumerator = array.GetEnumerator();
    ASSERT_TRUE(enumerator.MoveNext());
    enumerator.Current() = 6;
    ASSERT_TRUE(enumerator.MoveNext());
    EXPECT_EQ(5, enumerator.Current());
    EXPECT_FALSE(enumerator.MoveNext());
    EXPECT_BREAK(static_cast<void>(enumerator.Current()));

    const TArray<int>& view = array;
    TArrayEnumerator<const int> constEnumerator = view.GetEnumerator();
    ASSERT_TRUE(constEnumerator.MoveNext());
    EXPECT_EQ(6, constEnumerator.Current());
    EXPECT_FALSE(TArray<int>().GetEnumerator().MoveNext());
    EXPECT_EQ(array.Begin() + 1, std::ranges::find(array, 5));
}

TEST_F(ArrayTest, BreaksOnAViolatedPrecondition)
{
    TArray<int> array(4);
    array.Add(1);
    array.Add(2);
    TArray<int> empty;
    int* volatile pNull = nullptr;
    EXPECT_BREAK(array[2] = 0);
    EXPECT_BREAK(array[UINT64_MAX] = 0);
    EXPECT_BREAK(array[uint64{1} << 32] = 0);
    EXPECT_BREAK(array[uint64{1} << 62] = 0) << "the byte offset wraps to 0";
    EXPECT_BREAK(static_cast<void>(static_cast<const TArray<int>&>(empty)[0]));
    EXPECT_BREAK(array.Insert(array.End() + 1, 0));
    EXPECT_BREAK(array.Insert(array.Begin() - 1, 0));
    EXPECT_BREAK(array.Erase(array.End()));
    EXPECT_BREAK(array.Erase(array.Begin() - 1));
    EXPECT_BREAK(array.Erase(reinterpret_cast<int*>(detail::AddressOf(array.End()) - 2)));
    EXPECT_BREAK(array.Erase(pNull));
    EXPECT_BREAK(array.Erase(2));
    EXPECT_BREAK(array.Erase(-1));
    EXPECT_BREAK(TArray<int>(UINT64_MAX / 2));
}

TEST_F(ArrayTest, ResumedBreakGoesOnAsIfTheCheckHadPassed)
{
    BreakCounter breaks;
    TArray<int> array(4);
    array.Add(1);
    EXPECT_EQ(array.End(), &array[1]);
    EXPECT_EQ(1, breaks.Take());

    TArrayEnumerator<int> enumerator = array.GetEnumerator();
    EXPECT_TRUE(enumerator.MoveNext());
    EXPECT_FALSE(enumerator.MoveNext());
    EXPECT_EQ(array.End(), &enumerator.Current());
    EXPECT_EQ(1, breaks.Take());

    // Erasing behind the last element shifts nothing and takes the last one away.
    array.Add(2);
    array.Erase(array.End());
    EXPECT_EQ((std::vector<int>{1}), Values(array));
    EXPECT_EQ(1, breaks.Take());
}
