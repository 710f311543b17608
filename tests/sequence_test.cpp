// The five sequences beside models that are written from the steps each of them promises: values, all counters of the
// elements, and every call of the allocator.
#include "core/containers/array.h"
#include "core/containers/blockarray.h"
#include "core/containers/list.h"
#include "core/containers/maxarray.h"
#include "core/containers/slist.h"
#include "tests/support/breaks.h"
#include "tests/support/journal.h"
#include "verification/integraltesttype.h"

#include <algorithm>
#include <array>
#include <memory>
#include <random>

template class TMaxArray<E, 10>;
template class TBlockArray<E>;
template class TList<E>;
template class TSList<E>;

namespace
{
// What all models share. The counters and the calls are those of all sequences of a run.
struct Model
{
    static inline STypeStats ms_stats;
    static inline Journal ms_calls;

    static void Made(size_t n, bool bMove)
    {
        ms_stats.m_nInstances += static_cast<int>(n);
        (bMove ? ms_stats.m_nMoveConstructed : ms_stats.m_nCopyConstructed) += static_cast<int>(n);
    }
    static void Assigned(size_t n, bool bMove)
    {
        (bMove ? ms_stats.m_nMoveAssigned : ms_stats.m_nCopyAssigned) += static_cast<int>(n);
    }
    static void Destroyed(size_t n)
    {
        ms_stats.m_nInstances -= static_cast<int>(n);
        ms_stats.m_nDestructed += static_cast<int>(n);
    }
    static void Alloc(size_t nBytes, size_t nAlignment)
    {
        ms_calls.push_back("alloc " + std::to_string(nBytes) + "/" + std::to_string(nAlignment));
    }
    static void Free(size_t nBytes)
    {
        ms_calls.push_back(nBytes == 0 ? "free null" : "free " + std::to_string(nBytes));
    }

    size_t Size() const { return m_values.size(); }
    void Put(size_t nPos, int nValue) { m_values.insert(m_values.begin() + static_cast<std::ptrdiff_t>(nPos), nValue); }
    void Take(size_t nPos) { m_values.erase(m_values.begin() + static_cast<std::ptrdiff_t>(nPos)); }
    int OwnValue(size_t, size_t nFrom) const { return m_values[nFrom]; }
    static bool IsFull() { return false; }

    std::vector<int> m_values;
};

struct ArrayModel : Model
{
    void Insert(size_t nPos, int nValue, bool bMove)
    {
        if (Size() == m_nCapacity)
        {
            Alloc((m_nCapacity + m_nCapacity / 4 + 1) * sizeof(E), alignof(E));
            Made(1, bMove);
            Made(Size(), true);
            Destroyed(Size());
            Free(m_nCapacity * sizeof(E));
            m_nCapacity += m_nCapacity / 4 + 1;
        }
        else if (nPos == Size())
            Made(1, bMove);
        else
        {
            Made(1, true);
            Assigned(Size() - 1 - nPos, true);
            Assigned(1, bMove);
        }
        Put(nPos, nValue);
    }
    void Erase(size_t nPos)
    {
        Assigned(Size() - 1 - nPos, true);
        Destroyed(1);
        Take(nPos);
    }
    void Clear()
    {
        Destroyed(Size());
        m_values.clear();
    }
    void Assign(const ArrayModel& other)
    {
        Clear();
        if (other.Size() > m_nCapacity)
        {
            Alloc(other.Size() * sizeof(E), alignof(E));
            Free(m_nCapacity * sizeof(E));
            m_nCapacity = other.Size();
        }
        Made(other.Size(), false);
        m_values = other.m_values;
    }
    void Copy(const ArrayModel& other)
    {
        m_nCapacity = other.Size();
        if (m_nCapacity != 0)
            Alloc(m_nCapacity * sizeof(E), alignof(E));
        Made(other.Size(), false);
        m_values = other.m_values;
    }
    void Move(ArrayModel& other) { *this = std::exchange(other, {}); }
    void Die()
    {
        Clear();
        Free(m_nCapacity * sizeof(E));
    }

    size_t m_nCapacity = 0;
};

struct MaxArrayModel : Model
{
    void Insert(size_t nPos, int nValue, bool)
    {
        Made(1, false);
        if (nPos != Size())
            Assigned(Size() - nPos, false);
        Put(nPos, nValue);
    }
    void Erase(size_t nPos)
    {
        Assigned(Size() - 1 - nPos, false);
        Destroyed(1);
        Take(nPos);
    }
    void Clear()
    {
        Destroyed(Size());
        m_values.clear();
    }
    void Assign(const MaxArrayModel& other)
    {
        Clear();
        Copy(other);
    }
    void Copy(const MaxArrayModel& other)
    {
        Made(other.Size(), false);
        m_values = other.m_values;
    }
    void Move(MaxArrayModel& other)
    {
        Made(other.Size(), true);
        Destroyed(other.Size());
        m_values = std::exchange(other.m_values, {});
    }
    void Die() { Clear(); }
    bool IsFull() const { return Size() == 10; }
};

struct BlockArrayModel : Model
{
    void GrowIfTight()
    {
        if (m_blocks.size() * 16 - Size() >= 16)
            return;
        const size_t nExtra = m_blocks.empty() ? 8 : m_blocks.size() / 2;
        Alloc((m_blocks.size() + nExtra) * sizeof(void*), 16);
        Free(m_blocks.size() * sizeof(void*));
        std::rotate(m_blocks.begin(), m_blocks.begin() + static_cast<std::ptrdiff_t>(m_nFirst / 16), m_blocks.end());
        m_blocks.resize(m_blocks.size() + nExtra, false);
        m_nFirst %= 16;
    }
    void Use(size_t nBlock)
    {
        if (!m_blocks[nBlock])
            Alloc(16 * sizeof(E), 16);
        m_blocks[nBlock] = true;
    }
    void BackSlot()
    {
        if ((m_nFirst + Size()) % 16 == 0)
            GrowIfTight();
        Use((m_nFirst + Size()) / 16 % m_blocks.size());
    }
    void FrontSlot()
    {
        if (m_nFirst % 16 == 0)
            GrowIfTight();
        m_nFirst = (m_nFirst == 0 ? m_blocks.size() * 16 : m_nFirst) - 1;
        Use(m_nFirst / 16);
    }
    void Insert(size_t nPos, int nValue, bool bMove)
    {
        const bool bMiddle = nPos != 0 && nPos != Size();
        const bool bBack = nPos != 0 && (nPos == Size() || nPos >= Size() / 2);
        bBack ? BackSlot() : FrontSlot();
        Made(1, bMove);
        if (bMiddle)
        {
            Assigned(bBack ? Size() - 1 - nPos : nPos - 1, bMove);
            bMove ? Made(1, true) : Assigned(1, false);
        }
        Put(nPos, nValue);
    }
    // The value is read after the shift.
    int OwnValue(size_t nPos, size_t nFrom) const
    {
        if (nPos == 0 || nPos == Size())
            return m_values[nFrom];
        if (nPos >= Size() / 2)
            return m_values[nFrom > nPos ? nFrom - 1 : nFrom];
        return m_values[nFrom + 1 < nPos ? nFrom + 1 : nFrom];
    }
    void Erase(size_t nPos)
    {
        const bool bFront = nPos < Size() / 2;
        Assigned(bFront ? nPos : Size() - 1 - nPos, true);
        Destroyed(1);
        Take(nPos);
        m_nFirst = Size() == 0 ? 0 : (m_nFirst + (bFront ? 1 : 0)) % (m_blocks.size() * 16);
    }
    void Clear()
    {
        Destroyed(Size());
        m_values.clear();
        m_nFirst = 0;
    }
    void Assign(const BlockArrayModel& other)
    {
        Clear();
        Copy(other);
    }
    void Copy(const BlockArrayModel& other)
    {
        for (const int nValue : other.m_values)
        {
            BackSlot();
            Made(1, false);
            m_values.push_back(nValue);
        }
    }
    void Move(BlockArrayModel& other) { *this = std::exchange(other, {}); }
    void Die()
    {
        Clear();
        for (const bool bUsed : m_blocks)
            Free(bUsed ? 16 * sizeof(E) : 0);
        if (!m_blocks.empty())
            Free(m_blocks.size() * sizeof(void*));
    }

    size_t m_nFirst = 0;
    std::vector<bool> m_blocks; // whether the table's entries have a block
};

template <size_t nNode, bool bReusesNodes>
struct ListModel : Model
{
    void Insert(size_t nPos, int nValue, bool)
    {
        Alloc(nNode, 16);
        Made(1, false);
        Put(nPos, nValue);
    }
    void Erase(size_t nPos)
    {
        Destroyed(1);
        Free(nNode);
        Take(nPos);
    }
    void Clear() { Shrink(0); }
    void Shrink(size_t nSize)
    {
        while (Size() > nSize)
            Erase(Size() - 1);
    }
    void Assign(const ListModel& other)
    {
        Shrink(bReusesNodes ? other.Size() : 0);
        Assigned(Size(), false);
        for (size_t i = Size(); i < other.Size(); ++i)
            Insert(i, 0, false);
        m_values = other.m_values;
    }
    void Copy(const ListModel& other) { Assign(other); }
    void Move(ListModel& other) { m_values = std::exchange(other.m_values, {}); }
    void Die() { Clear(); }
};

// A run of random operations on two sequences and their models.
template <class TSequence, class TModel>
class RandomRun
{
public:
    explicit RandomRun(unsigned nSeed) : m_random(nSeed) {}

    void Do(int nSteps)
    {
        for (int i = 0; i < nSteps && !testing::Test::HasFailure(); ++i)
        {
            // Long stretches of growth and of shrinking, so that all ways of growing come up.
            const bool bGrow = i / 400 % 2 == 0;
            const size_t nOperation = Below(100);
            if (nOperation < (bGrow ? 70u : 30u))
                Insert();
            else if (nOperation < 96)
                Erase();
            else
                Whole();
            Compare();
        }
        m_sequences.reset();
        m_models[1].Die();
        m_models[0].Die();
        CompareTraces();
    }

private:
    size_t Below(size_t n) { return m_random() % n; }

    static auto At(TSequence& sequence, size_t nPos)
    {
        auto pos = sequence.Begin();
        while (nPos-- > 0)
            ++pos;
        return pos;
    }

    void Insert()
    {
        const size_t i = Below(2);
        TSequence& sequence = (*m_sequences)[i];
        TModel& model = m_models[i];
        if (model.IsFull())
            return;
        const size_t nPos = Below(4) == 0 ? 0 : Below(3) == 0 ? model.Size() : Below(model.Size() + 1);
        const auto pos = nPos == model.Size() ? sequence.End() : At(sequence, nPos);
        int nValue = static_cast<int>(1 + Below(1000));
        auto inserted = sequence.Begin();
        if (model.Size() != 0 && Below(4) == 0)
        {
            const size_t nFrom = Below(model.Size());
            nValue = model.OwnValue(nPos, nFrom);
            model.Insert(nPos, nValue, false);
            inserted = sequence.Insert(pos, std::as_const(*At(sequence, nFrom)));
        }
        else
        {
            const bool bMove = Below(2) == 0;
            E value = m_factory.Create(nValue);
            ++Model::ms_stats.m_nConstructed;
            ++Model::ms_stats.m_nInstances;
            model.Insert(nPos, nValue, bMove);
            inserted = bMove ? sequence.Insert(pos, std::move(value)) : sequence.Insert(pos, std::as_const(value));
            TModel::Destroyed(1);
        }
        EXPECT_TRUE(inserted == At(sequence, nPos));
    }

    void Erase()
    {
        const size_t i = Below(2);
        if (m_models[i].Size() == 0)
            return;
        const size_t nPos = Below(4) == 0 ? 0 : Below(m_models[i].Size());
        m_models[i].Erase(nPos);
        const auto next = (*m_sequences)[i].Erase(At((*m_sequences)[i], nPos));
        EXPECT_TRUE(next == (nPos == m_models[i].Size() ? (*m_sequences)[i].End() : At((*m_sequences)[i], nPos)));
    }

    // Operations on a whole sequence. Each leaves what it moved from assigned anew.
    void Whole()
    {
        const size_t i = Below(2);
        const size_t j = Below(2);
        switch (Below(5))
        {
        case 0:
            m_models[i].Clear();
            (*m_sequences)[i].Clear();
            break;
        case 1:
            (*m_sequences)[i] = std::as_const((*m_sequences)[j]);
            if (i != j)
                m_models[i].Assign(m_models[j]);
            break;
        case 2:
        {
            const TSequence copy((*m_sequences)[i]);
            TModel model;
            model.Copy(m_models[i]);
            EXPECT_EQ(model.m_values, Numbers(copy));
            model.Die();
            break;
        }
        case 3:
        {
            TSequence moved(std::move((*m_sequences)[i]));
            TModel model;
            model.Move(m_models[i]);
            EXPECT_TRUE((*m_sequences)[i].IsEmpty());
            (*m_sequences)[i] = std::move(moved);
            m_models[i].Die();
            m_models[i].Move(model);
            TSequence& same = (*m_sequences)[i];
            (*m_sequences)[i] = std::move(same);
            model.Die();
            break;
        }
        case 4:
            if (i == j)
                break;
            (*m_sequences)[i] = std::move((*m_sequences)[j]);
            m_models[i].Die();
            m_models[i].Move(m_models[j]);
            EXPECT_TRUE((*m_sequences)[j].IsEmpty());
            (*m_sequences)[j] = TSequence();
            m_models[j].Die();
            {
                TModel empty;
                m_models[j].Move(empty);
                empty.Die();
            }
        }
    }

    static std::vector<int> Numbers(const TSequence& sequence)
    {
        std::vector<int> numbers;
        for (const E& element : sequence)
            numbers.push_back(element.GetValue());
        return numbers;
    }

    void CompareTraces()
    {
        const auto list = [](const STypeStats& s)
        {
            return std::vector<int>{s.m_nInstances,  s.m_nConstructed,  s.m_nCopyConstructed, s.m_nMoveConstructed,
                                    s.m_nDestructed, s.m_nCopyAssigned, s.m_nMoveAssigned};
        };
        EXPECT_EQ(list(Model::ms_stats), list(m_factory.GetStats()));
        EXPECT_EQ(std::exchange(Model::ms_calls, {}), TakeJournal());
    }

    void Compare()
    {
        CompareTraces();
        for (size_t i = 0; i < 2u; ++i)
        {
            EXPECT_TRUE((*m_sequences)[i].Validate());
            EXPECT_EQ(m_models[i].Size(), (*m_sequences)[i].Size());
            EXPECT_EQ(m_models[i].m_values, Numbers((*m_sequences)[i]));
        }
    }

    std::mt19937 m_random;
    ZIntegralTestFactory m_factory;
    std::unique_ptr<std::array<TSequence, 2>> m_sequences = std::make_unique<std::array<TSequence, 2>>();
    std::array<TModel, 2> m_models;
};

class SequenceTest : public JournalTest
{
protected:
    template <class TSequence, class TModel>
    static void Agrees(int nSteps)
    {
        for (unsigned nSeed = 1; nSeed <= 3 && !HasFailure(); ++nSeed)
        {
            SCOPED_TRACE("seed " + std::to_string(nSeed));
            Model::ms_stats = {};
            RandomRun<TSequence, TModel>(nSeed).Do(nSteps);
        }
    }
};
} // namespace

TEST_F(SequenceTest, ArrayAgreesWithItsModel)
{
    Agrees<TArray<E>, ArrayModel>(1600);
}

TEST_F(SequenceTest, MaxArrayAgreesWithItsModel)
{
    Agrees<TMaxArray<E, 10>, MaxArrayModel>(1600);
}

TEST_F(SequenceTest, BlockArrayAgreesWithItsModel)
{
    Agrees<TBlockArray<E>, BlockArrayModel>(8000);
}

TEST_F(SequenceTest, ListAgreesWithItsModel)
{
    Agrees<TList<E>, ListModel<32, true>>(1600);
}

TEST_F(SequenceTest, SListAgreesWithItsModel)
{
    Agrees<TSList<E>, ListModel<24, false>>(1600);
}

// What the five offer to the standard library and to users of values that count nothing.
template <class TSequence>
class SequenceOfIntsTest : public testing::Test
{
    ZMemAllocatorScope m_scope;
};

using SequencesOfInts = testing::Types<TArray<int>, TMaxArray<int, 5>, TBlockArray<int>, TList<int>, TSList<int>>;
TYPED_TEST_SUITE(SequenceOfIntsTest, SequencesOfInts);

TYPED_TEST(SequenceOfIntsTest, IsAStandardRange)
{
    using Iterator = typename TypeParam::iterator;
    using ConstIterator = typename TypeParam::const_iterator;
    static_assert(std::forward_iterator<Iterator> && std::forward_iterator<ConstIterator>);
    static_assert(std::ranges::forward_range<TypeParam> && std::ranges::forward_range<const TypeParam>);
    static_assert(std::is_convertible_v<Iterator, ConstIterator> && !std::is_convertible_v<ConstIterator, Iterator>);
    static_assert(std::is_same_v<std::iter_reference_t<ConstIterator>, const int&>);

    const TypeParam sequence{4, 5, 6, 5};
    EXPECT_EQ(2, std::ranges::count_if(sequence, [](int n) { return n == 5; }));
    EXPECT_TRUE(std::ranges::equal(sequence, std::array{4, 5, 6, 5}));
    EXPECT_EQ(std::next(sequence.Begin()), std::ranges::find(sequence, 5));
    EXPECT_EQ(sequence.End(), std::ranges::find(sequence, 7));
    EXPECT_EQ(sequence.begin(), sequence.Begin());
    EXPECT_TRUE(TypeParam({}).IsEmpty());
    EXPECT_TRUE(sequence.Validate());
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

static_assert(std::contiguous_iterator<TMaxArray<int, 3>::iterator>);
static_assert(
    std::is_nothrow_move_constructible_v<TMaxArray<E, 3>> && std::is_nothrow_move_assignable_v<TMaxArray<E, 3>>);
static_assert(sizeof(TMaxArray<E, 10>) == 168 && sizeof(TMaxArray<char, 3>) == 8 && alignof(TMaxArray<E, 10>) == 8);

TEST_F(SequenceTest, MaxArrayBreaksWhereTArrayDoesAndWhenFull)
{
    TMaxArray<int, 3> array{1, 2};
    int* volatile pNull = nullptr;
    volatile int nOne = 1; // what the compiler sees, it refuses
    EXPECT_BREAK(array[2] = 0);
    EXPECT_BREAK(static_cast<void>(std::as_const(array)[uint64{1} << (31 + nOne)]));
    EXPECT_BREAK(array.Insert(array.End() + 1, 0));
    EXPECT_BREAK(array.Insert(array.Begin() - nOne, 0));
    EXPECT_BREAK(array.Erase(array.End()));
    EXPECT_BREAK(array.Erase(array.Begin() - nOne));
    EXPECT_BREAK(array.Erase(reinterpret_cast<int*>(detail::AddressOf(array.End()) - 2)));
    EXPECT_BREAK(array.Erase(pNull));
    EXPECT_BREAK(array.Erase(2));
    EXPECT_BREAK(array.Erase(-nOne));
    int& added = array.Add(3);
    EXPECT_EQ(&array[2], &added);
    EXPECT_BREAK(array.Add(4));
    EXPECT_BREAK(array.Insert(array.Begin(), 4));
    EXPECT_BREAK((TMaxArray<int, 1>{1, 2}));
    array.Erase(0);
    EXPECT_EQ((std::vector<int>{2, 3}), Values(array));
}

TEST_F(SequenceTest, BlockArrayBreaksOnWhatIsNotThere)
{
    TBlockArray<int> array;
    EXPECT_BREAK(array.First() = 0);
    EXPECT_BREAK(static_cast<void>(std::as_const(array).Last()));
    EXPECT_BREAK(array.Erase(array.Begin()));
    const TBlockArray<int>::iterator last = array.Insert(array.End(), 1);
    array.Insert(array.End(), 2);
    EXPECT_BREAK(array[2] = 0);
    EXPECT_BREAK(static_cast<void>(std::as_const(array)[UINT64_MAX]));
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

// The first element goes to the last slot of the ring, so the run is wrapped from the start; the 114th one would enter
// the block of the first and grows the table instead.
TEST_F(SequenceTest, BlockArrayGrowsOnTheEdgeOfABlock)
{
    TBlockArray<int> array;
    std::vector<const int*> elements;
    for (int i = 0; i < 113; ++i)
        elements.push_back(&*array.Insert(array.End(), i));
    EXPECT_EQ(9u, TakeJournal().size() - 1) << "a table, free null, and 8 blocks";
    array.Insert(array.End(), 113);
    EXPECT_EQ((Journal{"alloc 96/16", "free 64", "alloc 64/16"}), TakeJournal());
    for (size_t i = 0; i < elements.size(); ++i)
        EXPECT_EQ(elements[i], &array[i]) << "elements stay where they are";
    EXPECT_EQ(TBlockArray<int>().End(), array.End());
}

// The rvalue form moves over an element without destroying it.
TEST_F(SequenceTest, BlockArrayCountsOneTooManyForAMoveIntoTheMiddle)
{
    TBlockArray<Logged> array;
    for (int i = 1; i <= 4; ++i)
        array.Insert(array.End(), Logged(i));
    TakeJournal();
    array.Insert(std::next(array.Begin()), Logged(9));
    EXPECT_EQ((Journal{"new 9", "move 1", "move 9", "delete -1"}), TakeJournal());
    const Logged value(8);
    array.Insert(std::next(array.Begin(), 2), value);
    EXPECT_EQ((Journal{"new 8", "copy 4", "4 = copy 3", "3 = copy 2", "2 = copy 8"}), TakeJournal());
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
