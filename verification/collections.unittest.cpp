// One contract for all containers, in three typed suites. What a container does in its own way, its own tests show.
//
// - TSequenceCollectionsTest: insertion at a position, of elements of the sequence itself too, and removal.
// - TPairAssociativeCollectionsTest: keys and values.
// - TCollectionsTest: what every container owes: size, copying, moving, iterators, enumerators, the range-based for.
//
// A failure is reported by its line, and these numbers are kept: keep the checks where they stand.
#include "core/containers/array.h"
#include "core/containers/blockarray.h"
#include "core/containers/list.h"
#include "core/containers/maxarray.h"
#include "core/containers/slist.h"
#include "verification/collectionsupport.h"

// Every fixture brings the normal allocator along, and takes it away when the case is over. It is the first member, so
// it outlives the factory, and every collection is a local of its case and gone before both.
template <class TCollection>
class TSequenceCollectionsTest : public testing::Test
{
    ZMemAllocatorScope m_scope;

protected:
    TSequenceCollectionsTest() : f() {}

    ZIntegralTestFactory f; // NOLINT(readability-identifier-naming): the name that the report shows
};

using SequenceCollections = testing::Types<
    // clang-format off
    TArray<E>,
    TBlockArray<E>,
    TMaxArray<E, 10>,
    TList<E>,
    TSList<E>
    // clang-format on
    >;
TYPED_TEST_SUITE(TSequenceCollectionsTest, SequenceCollections);

// Insertion at the end takes its value as an rvalue: whether that is moved or copied is the sequence's own business.
//
// The four insertions after that take an element of the sequence itself. What goes in must be what that element was
// before anything moved, wherever it stands: at the position, before it or behind it, and whether or not the sequence
// has to grow. Each is taken back by removing what the returned iterator stands on. The number of living elements is
// that of the sequence throughout, which an insertion that built its new element in passing, or kept a copy of it,
// would not leave so.
//
// No check depends on how an element got to its place. That differs: TArray shifts and grows by moving, TBlockArray
// shifts by moving and never moves an element when it grows, TMaxArray shifts by copying, and the lists touch no other
// element at all.

TYPED_TEST(TSequenceCollectionsTest, Basic)
{
    TypeParam col;
    typename TypeParam::iterator it, second;

    EXPECT_RANGE(col, {});
    col.Insert(col.End(), this->f.Create(1));
    EXPECT_RANGE(col, {1});
    col.Insert(col.End(), this->f.Create(2));
    EXPECT_RANGE(col, {1, 2});
    col.Insert(col.End(), this->f.Create(3));
    EXPECT_RANGE(col, {1, 2, 3});
    EXPECT_EQ(3, this->f.GetStats().m_nInstances);

    // The first element, before itself.
    it = col.Insert(col.Begin(), std::as_const(*col.Begin()));

    // Now there are two of it.
    EXPECT_RANGE(col, {1, 1, 2, 3});
    EXPECT_EQ(4, this->f.GetStats().m_nInstances);
    col.Erase(it);
    EXPECT_RANGE(col, {1, 2, 3});
    EXPECT_EQ(3, this->f.GetStats().m_nInstances);

    // The first element, behind itself.
    second = col.Begin();
    ++second;
    it = col.Insert(second, std::as_const(*col.Begin()));

    // Now there are two of it.
    EXPECT_RANGE(col, {1, 1, 2, 3});
    EXPECT_EQ(4, this->f.GetStats().m_nInstances);
    col.Erase(it);
    EXPECT_RANGE(col, {1, 2, 3});
    EXPECT_EQ(3, this->f.GetStats().m_nInstances);

    // The second element, before the first one: it shifts while it is needed.
    second = col.Begin();
    ++second;
    it = col.Insert(col.Begin(), std::as_const(*second));

    // Now it also leads.
    EXPECT_RANGE(col, {2, 1, 2, 3});
    EXPECT_EQ(4, this->f.GetStats().m_nInstances);
    col.Erase(it);
    EXPECT_RANGE(col, {1, 2, 3});
    EXPECT_EQ(3, this->f.GetStats().m_nInstances);

    // The second element, before itself.
    second = col.Begin();
    ++second;
    it = col.Insert(second, std::as_const(*second));

    // Now there are two of it, and it stands in
    // the middle.
    EXPECT_RANGE(col, {1, 2, 2, 3});
    EXPECT_EQ(4, this->f.GetStats().m_nInstances);
    col.Erase(it);
    EXPECT_RANGE(col, {1, 2, 3});
    EXPECT_EQ(3, this->f.GetStats().m_nInstances);
}

// Elements are changed through the loop's reference: here by ++, which touches
// no counter.
TYPED_TEST(TSequenceCollectionsTest, RangeBasedForLoop)
{
    TypeParam col;

    EXPECT_RANGE(col, {});
    col.Insert(col.End(), this->f.Create(1));
    col.Insert(col.End(), this->f.Create(2));
    col.Insert(col.End(), this->f.Create(3));
    EXPECT_RANGE(col, {1, 2, 3});

    for (auto& x : col)
    {
        ++x;
    }

    EXPECT_RANGE(col, {2, 3, 4});

    // The read-only walk.
    int sum = 0;
    for (const auto& x : std::as_const(col))
    {
        sum += x.GetValue();
    }

    EXPECT_EQ(9, sum);
}

// Keys and values come from a factory each, so that each is
// counted for itself.
template <class TCollection>
class TPairAssociativeCollectionsTest : public testing::Test
{
    ZMemAllocatorScope m_scope;

protected:
    TPairAssociativeCollectionsTest() : m_keys(), m_values() {}

    // Both temporaries are gone when the pair is in.
    void Add(TCollection& col, int nKey, int nValue)
    {
        AddValue(col, typename TCollection::value_type(m_keys.Create(nKey), m_values.Create(nValue)));
    }

    ZIntegralTestFactory m_keys;
    ZIntegralTestFactory m_values;
};

using PairAssociativeCollections = testing::Types<
    // clang-format off
    TMap<E, E>, TMultiMap<E, E>,
    THashMap<E, E>, TMultiHashMap<E, E>
    // clang-format on
    >;
TYPED_TEST_SUITE(TPairAssociativeCollectionsTest, PairAssociativeCollections);

// The keys differ, so containers that keep one pair of a key and those that
// keep all of them agree.
TYPED_TEST(TPairAssociativeCollectionsTest, Basic)
{
    TypeParam col;

    this->Add(col, 1, 2);
    EXPECT_RANGE(col, {{1, 2}});

    // The value can be changed through the loop's reference, the key cannot.
    this->Add(col, 3, 7);
    for (auto& x : col)
    {
        ++x.Value();
    }

    int keySum = 0;
    int valueSum = 0;
    for (const auto& x : std::as_const(col))
    {
        keySum += x.Key().GetValue();
        valueSum += x.Value().GetValue();
    }

    EXPECT_EQ(4, keySum);
    EXPECT_EQ(11, valueSum);
}

// What every container owes.
template <class TCollection>
class TCollectionsTest : public testing::Test
{
    ZMemAllocatorScope m_scope;
};

using Collections = testing::Types<
    // clang-format off
    TMap<E, E>,
    TBlockArray<E>, THashMap<E, E>, THashSet<E>, TMultiHashMap<E, E>,
    TMultiMap<E, E>, TMultiSet<E>, TRedBlackTree<E>, TSet<E>,
    TSList<E>, TList<E>,
    TMaxArray<E, 10>, TArray<E>
    // clang-format on
    >;
TYPED_TEST_SUITE(TCollectionsTest, Collections);

// Makes values of a container's kind and adds them. The factory counts what lives; of keys and values, the values.
template <class TCollection>
class TCollectionTestHelper
{
public:
    using Value = typename TCollection::value_type;

    Value CreateValue() { return m_factory.Create(); }

    // Takes a copy, which is gone when the value is in.
    void Add(TCollection& collection, Value value) { AddValue(collection, std::move(value)); }

    TCollection& Fill(TCollection& collection, int n)
    {
        for (int i = 0; i < n; ++i)
            AppendValue(collection, CreateValue());
        return collection;
    }

    void Basic();

    TTestFactory<Value> m_factory = {};
};

TYPED_TEST(TCollectionsTest, Basic)
{
    TCollectionTestHelper<TypeParam>().Basic();
}

template <class TCollection>
void TCollectionTestHelper<TCollection>::Basic()
{
    {
        // The value dies first.
        TCollection collection;
        const Value val = CreateValue();
        EXPECT_EQ(0, collection.Size());
        Add(collection, val);
        EXPECT_EQ(1, collection.Size());
        EXPECT_TRUE(val == *collection.Begin());
        EXPECT_EQ(2, m_factory.GetStats().m_nInstances);
        collection.Erase(collection.Begin());
        EXPECT_EQ(0, collection.Size());
        EXPECT_EQ(1, m_factory.GetStats().m_nInstances);
    }
    EXPECT_EQ(0, m_factory.GetStats().m_nInstances);
}

TYPED_TEST(TCollectionsTest, Assign)
{
    TCollectionTestHelper<TypeParam> helper;
    TypeParam collection1, collection2;
    helper.Fill(collection1, 5), helper.Fill(collection2, 7);
    EXPECT_EQ(12, helper.m_factory.GetStats().m_nInstances);
    collection1 = collection2;
    EXPECT_EQ(14, helper.m_factory.GetStats().m_nInstances);

    // The five old elements are gone, seven
    // copies have come.
    EXPECT_EQ(7, collection1.Size());
    EXPECT_EQ(7, collection2.Size());

    auto i1 = collection1.Begin();
    auto i2 = collection2.Begin();
    for (int i = 0; i < 7; ++i)
    {

        EXPECT_TRUE(i1 != collection1.End());
        EXPECT_TRUE(i2 != collection2.End());
        ++i1;
        ++i2;
    }

    EXPECT_TRUE(i1 == collection1.End());
    EXPECT_TRUE(i2 == collection2.End());

    EXPECT_EQ(14, helper.m_factory.GetStats().m_nInstances);
}

TYPED_TEST(TCollectionsTest, Move)
{
    TCollectionTestHelper<TypeParam> helper;
    {
        TypeParam collection1;
        TypeParam collection2(std::move(helper.Fill(collection1, 5)));
        EXPECT_TRUE(collection1.IsEmpty());
        EXPECT_EQ(5, helper.m_factory.GetStats().m_nInstances);
    }
    EXPECT_EQ(0, helper.m_factory.GetStats().m_nInstances);
    {
        TypeParam collection1, collection2;
        collection2 = std::move(helper.Fill(collection1, 5));
        EXPECT_TRUE(collection1.IsEmpty());
        EXPECT_EQ(5, helper.m_factory.GetStats().m_nInstances);
    }
    EXPECT_EQ(0, helper.m_factory.GetStats().m_nInstances);
    {
        TypeParam collection1, collection2;
        helper.Fill(collection1, 5), helper.Fill(collection2, 7);
        EXPECT_EQ(12, helper.m_factory.GetStats().m_nInstances);
        collection1 = std::move(collection2);
        EXPECT_TRUE(collection2.IsEmpty());
        EXPECT_EQ(7, helper.m_factory.GetStats().m_nInstances);
    }
    EXPECT_EQ(0, helper.m_factory.GetStats().m_nInstances);
}

TYPED_TEST(TCollectionsTest, Iterators)
{
    TCollectionTestHelper<TypeParam> helper;
    TypeParam collection;
    const TypeParam& constCollection = collection;

    // An empty collection.

    EXPECT_TRUE(collection.Begin() == collection.End());
    EXPECT_FALSE(collection.Begin() != collection.End());
    EXPECT_TRUE(constCollection.Begin() == constCollection.End());
    EXPECT_FALSE(constCollection.Begin() != constCollection.End());

    const auto val = helper.CreateValue();
    helper.Add(collection, val);

    // Now there is one element.
    EXPECT_FALSE(collection.Begin() == collection.End());
    EXPECT_TRUE(collection.Begin() != collection.End());
    EXPECT_FALSE(constCollection.Begin() == constCollection.End());
    EXPECT_TRUE(constCollection.Begin() != constCollection.End());

    // Each kind of iterator.
    auto i = collection.Begin();
    EXPECT_EQ(val, *i);
    EXPECT_TRUE(++i == collection.End());

    auto ci = constCollection.Begin();
    EXPECT_EQ(val, *ci);
    EXPECT_TRUE(++ci == constCollection.End());

    // Assignment, also of an iterator to a const
    // iterator.
    i = collection.Begin();

    EXPECT_EQ(val, *i);
    EXPECT_TRUE(++i == collection.End());

    ci = collection.Begin();

    EXPECT_EQ(val, *ci);
    EXPECT_TRUE(++ci == constCollection.End());

    ci = constCollection.Begin();
    EXPECT_EQ(val, *ci);
    EXPECT_TRUE(++ci == constCollection.End());

    EXPECT_TRUE(i == constCollection.End());
    EXPECT_TRUE(ci == collection.End());
}

// A fresh enumerator stands before the first element, and behind the last one there is none. On an empty collection
// both are the same.
TYPED_TEST(TCollectionsTest, Enumerator)
{
    TCollectionTestHelper<TypeParam> helper;
    TypeParam collection;
    const TypeParam& constCollection = collection;

    // There is nothing to stand on, not even before
    // the first element.

    EXPECT_FALSE(collection.GetEnumerator().MoveNext());
    EXPECT_FALSE(constCollection.GetEnumerator().MoveNext());

    const auto val = helper.CreateValue();
    helper.Add(collection, val);

    auto e = collection.GetEnumerator();
    EXPECT_TRUE(e.MoveNext());
    EXPECT_EQ(val, e.Current());
    EXPECT_FALSE(e.MoveNext());

    auto ce = constCollection.GetEnumerator();
    EXPECT_TRUE(ce.MoveNext());
    EXPECT_EQ(val, ce.Current());
    EXPECT_FALSE(ce.MoveNext());
}

TYPED_TEST(TCollectionsTest, RangeBasedForLoop)
{
    TCollectionTestHelper<TypeParam> helper;
    TypeParam collection;
    const TypeParam& constCollection = collection;
    helper.Fill(collection, 5);
    auto it = collection.Begin();
    for (auto& x : collection)
    {
        EXPECT_TRUE(x == *(it++));
    }

    auto cit = constCollection.Begin();
    // The read-only walk.
    for (const auto& x : constCollection)
    {
        EXPECT_TRUE(x == *(cit++));
    }
}
