// The five sequences: what the journals do not show.
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/player.h"

#ifdef KX_ANNOTATE_SPARE_CAPACITY
#include <sanitizer/asan_interface.h>
#endif
#include <queue>

namespace
{
using SequenceTest = JournalTest;

// The edges of an array of the elements 1 and 2, by index and by address.
template <class TArrayLike>
void BreaksOutside(TArrayLike& array)
{
    volatile int nOne = 1; // hides from the compiler what it would refuse
    for (const uint64 nIndex : {uint64{2}, UINT64_MAX, uint64{1} << 32, uint64{1} << (61 + nOne)})
    {
        EXPECT_BREAK(array[nIndex] = 0) << nIndex;
        EXPECT_BREAK(static_cast<void>(std::as_const(array)[nIndex])) << nIndex;
        EXPECT_BREAK(array.Erase(nIndex)) << nIndex;
        EXPECT_BREAK(array.Insert(nIndex == 2 ? 3 : nIndex, 0)) << nIndex;
    }
    EXPECT_EQ(3, *array.Insert(0, 3));
    EXPECT_EQ((std::vector<int>{3, 1, 2}), Values(array));
    array.Erase(0);
    EXPECT_EQ(4, *array.Insert(2u, 4));
    EXPECT_EQ((std::vector<int>{1, 2, 4}), Values(array));
    array.Erase(2);
    EXPECT_BREAK(array.Insert(array.End() + 1, 0));
    EXPECT_BREAK(array.Insert(array.Begin() - nOne, 0));
    EXPECT_BREAK(array.Erase(array.End()));
    EXPECT_BREAK(array.Erase(array.Begin() - nOne));
    EXPECT_BREAK(array.Erase(reinterpret_cast<int*>(kx::detail::AddressOf(array.End()) - 2)));
    EXPECT_BREAK((array.Clear(), array.Erase(0)));
    EXPECT_EQ(2, std::as_const(array)[1]);

    // If execution resumes, the reference is to what follows, and erasing there removes the last element.
    BreakCounter breaks;
    EXPECT_EQ(array.End(), &array[2]);
    array.Erase(array.End());
    EXPECT_EQ(2, breaks.Take());
    EXPECT_EQ((std::vector<int>{1}), Values(array));
}

struct alignas(16) Wide
{
    int m_nValue;
};
} // namespace

// What the five offer to the standard library.
template <class TSequence>
class SequenceOfIntsTest : public testing::Test
{
    ZMemAllocatorScope m_scope;
};

using SequencesOfInts = testing::Types<TArray<int>, TMaxArray<int, 9>, TBlockArray<int>, TList<int>, TSList<int>>;
TYPED_TEST_SUITE(SequenceOfIntsTest, SequencesOfInts);

TYPED_TEST(SequenceOfIntsTest, IsAStandardRange)
{
    using Iterator = typename TypeParam::iterator;
    using ConstIterator = typename TypeParam::const_iterator;
    static_assert(std::forward_iterator<Iterator> && std::forward_iterator<ConstIterator>);
    static_assert(std::is_convertible_v<Iterator, ConstIterator> && !std::is_convertible_v<ConstIterator, Iterator>);
    static_assert(std::is_same_v<decltype(*std::declval<const TypeParam&>().Begin()), const int&>);
    static_assert(std::is_nothrow_move_constructible_v<TypeParam> && std::is_nothrow_move_assignable_v<TypeParam>);

    const TypeParam sequence{4, 5, 6, 5};
    EXPECT_EQ((std::vector<int>{4, 5, 6, 5}), std::vector<int>(sequence.begin(), sequence.end()));
    EXPECT_EQ(std::next(sequence.Begin()), std::find(sequence.begin(), sequence.end(), 5));
    EXPECT_TRUE(TypeParam({}).IsEmpty());
}

TYPED_TEST(SequenceOfIntsTest, EnumeratesUpToTheBreakPastTheLast)
{
    TypeParam sequence{4};
    auto enumerator = sequence.GetEnumerator();
    ASSERT_TRUE(enumerator.MoveNext());
    enumerator.Current() = 6;
    EXPECT_FALSE(enumerator.MoveNext());
    EXPECT_BREAK(static_cast<void>(enumerator.Current()));
    auto constEnumerator = std::as_const(sequence).GetEnumerator();
    ASSERT_TRUE(constEnumerator.MoveNext());
    static_assert(std::is_same_v<decltype(constEnumerator.Current()), const int&>);
    EXPECT_EQ(6, constEnumerator.Current());
}

TYPED_TEST(SequenceOfIntsTest, ComparesSearchesAndErases)
{
    TypeParam sequence{1, 2, 3, 2};
    EXPECT_TRUE(sequence == TypeParam(sequence) && sequence != (TypeParam{1, 2, 3}) && sequence != TypeParam());
    EXPECT_TRUE((TypeParam{1, 2}) < sequence && sequence < (TypeParam{1, 3}) && TypeParam() < sequence);
    EXPECT_TRUE(sequence.IndexOf(2) == 1 && sequence.IndexOf(4) == -1 && !sequence.Contains(4));
    sequence.EmplaceAt(std::next(sequence.Begin(), 2), *std::next(sequence.Begin(), 2));
    sequence.EmplaceAt(sequence.End(), 5);
    EXPECT_EQ((std::vector<int>{1, 2, 3, 3, 2, 5}), Values(sequence));
    EXPECT_EQ(3, *sequence.Erase(std::next(std::as_const(sequence).Begin())));
    EXPECT_EQ(3u, sequence.EraseIf([](const int& n) { return n == 1 || n == 3; }));
    EXPECT_EQ((std::vector<int>{2, 5}), Values(sequence));
    EXPECT_TRUE(sequence.EraseIf([](int n) { return n > 0; }) == 2 && sequence.empty() && sequence.Validate());
    EXPECT_BREAK(static_cast<void>(sequence.First() == 0));
}

TYPED_TEST(SequenceOfIntsTest, WalksBackwards)
{
    if constexpr (requires(TypeParam sequence) { sequence.rbegin(); })
    {
        const TypeParam sequence{1, 2, 3};
        EXPECT_EQ((std::vector<int>{3, 2, 1}), std::vector<int>(sequence.rbegin(), sequence.rend()));
        EXPECT_EQ(3, sequence.Last());
        EXPECT_EQ(sequence.Begin(), std::prev(sequence.End(), 3));
        if constexpr (std::random_access_iterator<typename TypeParam::iterator>)
        {
            TypeParam sorted{2, 3, 1};
            std::sort(sorted.rbegin(), sorted.rend());
            EXPECT_EQ((std::vector<int>{3, 2, 1}), Values(sorted));
            EXPECT_TRUE(sorted.rbegin()[2] == 3 && sorted.rbegin() < sorted.rend());
            static_assert(std::random_access_iterator<decltype(sorted.rbegin())>);
        }
    }
}

// In any order of positions, and ranges of other containers and of none.
TEST_F(SequenceTest, ArraysTakeAndRemoveRanges)
{
    const auto check = [](auto array)
    {
        array.AddRange(TList<int>{4, 5});
        array.AddRange({6});
        EXPECT_EQ(2, *array.InsertRange(array.Begin() + 1, std::vector<int>{2, 3}));
        EXPECT_EQ(array.Begin(), array.InsertRange(array.Begin(), std::vector<int>()));
        EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5, 6}), Values(array));
        EXPECT_EQ(5, *array.Erase(array.Begin() + 1, array.Begin() + 4));
        EXPECT_EQ(array.End(), array.Erase(array.End(), array.End()));
        array.Pop();
        EXPECT_EQ((std::vector<int>{1, 5}), Values(array));
        EXPECT_BREAK(array.Erase(array.Begin() + 1, array.Begin()));
        EXPECT_BREAK(array.Erase(array.Begin(), array.End() + 1));
        EXPECT_BREAK((array.Clear(), array.Pop()));
        std::copy_n(array.Begin(), 2, std::back_inserter(array));
        EXPECT_TRUE(array.size() == 4 && array.back() == *(array.data() + 1));
    };
    check(TArray<int>{1});
    check(TMaxArray<int, 6>{1});
    TMaxArray<int, 2> full{1, 2};
    EXPECT_BREAK(full.AddRange({3}));
    std::priority_queue<int, TArray<int>> queue;
    for (const int n : {2, 3, 1})
        queue.push(n);
    queue.pop();
    EXPECT_EQ(2, queue.top());
    TakeJournal();
    {
        TArray<Logged> array(3);
        const Logged values[] = {1, 2};
        array.AddRange(values);
        TakeJournal();
        array.EmplaceAt(array.Begin(), 3);
        array.InsertRange(array.Begin() + 2, values);
        EXPECT_EQ((Journal{"new 3", "move 2", "-1 = move 1", "-1 = move 3", "delete -1", "alloc 20/4", "move 3",
                           "delete -1", "move 1", "delete -1", "move 2", "delete -1", "free 12", "copy 1", "copy 2"}),
                  TakeJournal());
    }
    TakeJournal();
}

// None of them copies or leaks: the allocator would report a lost int.
TEST_F(SequenceTest, ElementsMayBeMoveOnly)
{
    const auto check = [](auto sequence)
    {
        sequence.Emplace(std::make_unique<TArray<int>>(1));
        for (int i = 2; i < 5; ++i)
            sequence.EmplaceAt(std::next(sequence.Begin()), std::make_unique<TArray<int>>(i));
        sequence.Erase(sequence.Begin());
        sequence.EraseIf([](const auto& pArray) { return pArray->Capacity() == 3; });
        auto moved = std::move(sequence);
        EXPECT_TRUE(moved.Size() == 2 && moved.First()->Capacity() == 4 && sequence.IsEmpty());
        moved = decltype(moved)();
    };
    using Element = std::unique_ptr<TArray<int>>;
    check(TArray<Element>());
    check(TMaxArray<Element, 4>());
    check(TBlockArray<Element>());
    check(TList<Element>());
    check(TSList<Element>());
    TakeJournal();
}

TEST_F(SequenceTest, BlockArraysCanBeSorted)
{
    TBlockArray<int> array;
    for (int i = 0; i < 100; ++i)
        array.Emplace(i * 37 % 100);
    std::sort(array.begin(), array.end());
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(i, array.Begin()[i]);
    EXPECT_TRUE(array.End() - array.Begin() == 100 && array.Begin() + 99 < array.End() && *(array.End() - 1) == 99);
    EXPECT_BREAK(static_cast<void>(array.Begin() - 1));
    EXPECT_BREAK(static_cast<void>(array.End() + 1));
}

static_assert(std::bidirectional_iterator<TList<int>::iterator> && !std::bidirectional_iterator<TSList<int>::iterator>);
static_assert(std::random_access_iterator<TBlockArray<int>::iterator>);
static_assert(std::random_access_iterator<TBlockArray<int>::const_iterator>);
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
    maxArray.Add(3);
    EXPECT_BREAK(maxArray.Add(4));
    EXPECT_BREAK(maxArray.Insert(maxArray.Begin(), 4));
    EXPECT_BREAK((TMaxArray<int, 1>{1, 2}));
}

#ifdef KX_ANNOTATE_SPARE_CAPACITY
// In buffers of any alignment: what is poisoned is the whole words of the spare capacity and nothing else.
TEST(SpareCapacityTest, IsPoisoned)
{
    alignas(8) static char s_acMemory[128];
    static int s_nShift, s_nBlocks;
    struct Shifting : IAllocator
    {
        void* Allocate(uint64, uint64, uint32) override { return s_acMemory + s_nShift + s_nBlocks++ % 2 * 64; }
        void Free(void*) override {}
    } shifting;
    GetMemoryManager()->InstallAllocator(ALLOCATOR_NORMAL, &shifting);
    using Array = TArray<char>;
    void (*const operations[])(Array&) = {
        [](Array& array) { array.Add('a'), array.Insert(0, 'b'); },
        [](Array& array) { array.Resize(11), array.Erase(5); },
        [](Array& array) { array.Clear(), array.Resize(9), array.Resize(3); },
        [](Array& array) { array.Reserve(30), array.Reserve(17, true); },
        [](Array& array) { static_cast<void>(Array(std::move(array))); },
        [](Array& array) {
            array = Array{'d', 'e', 'f'}, array.Insert(3, 'c');
        },
    };
    for (s_nShift = 0; s_nShift < 8; ++s_nShift)
    {
        Array array(20);
        const auto isExact = [&]
        {
            for (const char& c : s_acMemory)
            {
                const uint64 nWord = kx::detail::AddressOf(&c) / 8 * 8;
                const bool bSpare = nWord >= kx::detail::AddressOf(array.Begin()) && &c >= array.End()
                                    && nWord + 8 <= kx::detail::AddressOf(array.Begin() + array.Capacity());
                if (bSpare != (__asan_address_is_poisoned(&c) != 0))
                    return false;
            }
            return true;
        };
        EXPECT_DEATH(*static_cast<volatile char*>(array.End() + 8) = 1, "container-overflow");
        for (const auto operation : operations)
        {
            operation(array);
            EXPECT_TRUE(isExact()) << s_nShift;
        }
    }
    GetMemoryManager()->UnInstallAllocator(ALLOCATOR_NORMAL);
}
#endif

TEST_F(SequenceTest, ArraysConstructExactlyAndCompare)
{
    {
        const TArray<Logged> none(0);
        const TArray<int> room(3);
        const TArray<int> list{4, 5};
        EXPECT_EQ((Journal{"alloc 12/4", "alloc 8/4"}), TakeJournal());
        EXPECT_TRUE(room.IsEmpty() && room.Capacity() == 3 && list.Capacity() == 2);
        EXPECT_TRUE(list == (TArray<int>{4, 5}) && list != (TArray<int>{4, 6}) && list != (TArray<int>{4}));
        TakeJournal();
    }
    EXPECT_EQ((Journal{"free 8", "free 12", "free null"}), TakeJournal());
}

// With and without spare capacity, from an element of the array itself, and members of an aggregate.
TEST_F(SequenceTest, ArraysConstructInPlace)
{
    TArray<Logged> array(2);
    EXPECT_EQ(7, array.Emplace(7).m_nValue);
    array.Emplace(array[0]);
    array.Emplace(std::move(array[0]));
    EXPECT_EQ((Journal{"alloc 8/4", "new 7", "copy 7", "alloc 12/4", "move 7", "move -1", "delete -1", "move 7",
                       "delete -1", "free 8"}),
              TakeJournal());
    EXPECT_EQ((std::vector<int>{-1, 7, 7}), Values(array));
    TArray<Wide> wide;
    EXPECT_EQ(3, wide.Emplace(3).m_nValue);

    // Small trivial elements take a road of their own when the array grows.
    TArray<int> numbers{7, 8};
    for (uint64 i = 0; i < 30; ++i)
        EXPECT_EQ(i % 2 == 0 ? 7 : 8, numbers.Add(numbers[i]));
    while (numbers.Size() < numbers.Capacity())
        numbers.Add(9);
    EXPECT_EQ(0, numbers.Emplace());
    EXPECT_TRUE(numbers[31] == 8 && numbers[numbers.Size() - 1] == 0);
    TakeJournal();
}

TEST_F(SequenceTest, ElementsMayBeWideMoveOnlyOrOverloadTheAddressOperator)
{
    struct alignas(64) Odd
    {
        explicit Odd(int nValue) : m_nValue(nValue) {}
        Odd(Odd&&) = default;
        Odd& operator=(Odd&&) = default;
        void operator&() const = delete;
        int m_nValue;
    };
    TArray<Odd> array(3);
    array.Add(Odd(1));
    array.Insert(array.Begin(), Odd(2));
    array.Insert(array.Begin(), std::move(array[1]));
    array.Erase(1);
    array.Reserve(4);
    EXPECT_EQ((std::vector<int>{1, 1}), Values(array));
    EXPECT_EQ((Journal{"alloc 192/64", "alloc 256/64", "free 192"}), TakeJournal());
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
    // A position past the end is found out at the very last.
    array.Insert(array.End(), 3);
    const TBlockArray<int>::iterator end = array.End();
    array.Clear();
    array.Insert(array.End(), 4);
    EXPECT_BREAK(array.Insert(end, 5));
    EXPECT_EQ(4, *last) << "blocks stay, and the first one is used again";
}

TEST_F(SequenceTest, EndOfAListIsWhereAnElementWouldBe)
{
    TList<int> list;
    EXPECT_EQ(kx::detail::AddressOf(&list + 1), kx::detail::AddressOf(list.End().Address()));
    EXPECT_EQ(8u, kx::detail::AddressOf(TSList<int>().End().Address())) << "in a null node";
    TList<Wide> wideList{{1}, {2}};
    TSList<Wide> wideSList{{1}, {2}};
    EXPECT_EQ(0u, kx::detail::AddressOf(&*wideList.Begin()) % 16);
    EXPECT_EQ(0u, kx::detail::AddressOf(&*wideSList.Begin()) % 16);
    EXPECT_EQ(wideSList.End(), std::next(wideSList.Begin(), 2));
}
