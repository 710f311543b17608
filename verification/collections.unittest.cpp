// One contract for all containers, in three typed suites. What a container does differently is tested elsewhere.
//
// - TSequenceCollectionsTest: insertion at a position, of elements of the sequence itself too, and removal.
// - TPairAssociativeCollectionsTest: keys and values.
// - TCollectionsTest: what every container owes: size, copying, moving, iterators, enumerators, the range-based for.
//
// A failure is reported with its line number, and these numbers are fixed: keep every check on its line.
#include "core/containers/array.h"
#include "core/containers/blockarray.h"
#include "core/containers/list.h"
#include "core/containers/maxarray.h"
#include "core/containers/slist.h"
#include "verification/collectionsupport.h"

// Every fixture installs the normal allocator and removes it when the case is over. The scope is its first member, so
// it outlives the factory. Every collection is a local variable of its case, so it is destroyed before both.
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

// Insertion at the end takes its value as an rvalue. Whether the sequence moves or copies it is left open.
//
// The four insertions after that take an element of the sequence itself. The inserted value must be the one that this
// element had before anything moved, wherever it is: at the position, before it or after it, and whether or not the
// sequence has to grow. Each insertion is undone by erasing the element at the returned iterator. The number of live
// elements always equals the size of the sequence. An insertion that left a temporary or a second copy alive would
// break that.
//
// No check depends on how an element gets to its place, because that differs. TArray shifts and grows by moving.
// TBlockArray shifts by moving, and never moves an element when it grows. TMaxArray shifts by copying, and the lists
// touch no other element.

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

    // Inserts the first element before itself.
    it = col.Insert(col.Begin(), std::as_const(*col.Begin()));

    // Now it is there twice.
    EXPECT_RANGE(col, {1, 1, 2, 3});
    EXPECT_EQ(4, this->f.GetStats().m_nInstances);
    col.Erase(it);
    EXPECT_RANGE(col, {1, 2, 3});
    EXPECT_EQ(3, this->f.GetStats().m_nInstances);

    // Inserts the first element after itself.
    second = col.Begin();
    ++second;
    it = col.Insert(second, std::as_const(*col.Begin()));

    // Now it is there twice.
    EXPECT_RANGE(col, {1, 1, 2, 3});
    EXPECT_EQ(4, this->f.GetStats().m_nInstances);
    col.Erase(it);
    EXPECT_RANGE(col, {1, 2, 3});
    EXPECT_EQ(3, this->f.GetStats().m_nInstances);

    // Inserts the second element before the first one, so it shifts while it is needed.
    second = col.Begin();
    ++second;
    it = col.Insert(col.Begin(), std::as_const(*second));

    // Now it is also the first one.
    EXPECT_RANGE(col, {2, 1, 2, 3});
    EXPECT_EQ(4, this->f.GetStats().m_nInstances);
    col.Erase(it);
    EXPECT_RANGE(col, {1, 2, 3});
    EXPECT_EQ(3, this->f.GetStats().m_nInstances);

    // Inserts the second element before itself.
    second = col.Begin();
    ++second;
    it = col.Insert(second, std::as_const(*second));

    // Now it is there twice, in the middle of the
    // sequence.
    EXPECT_RANGE(col, {1, 2, 2, 3});
    EXPECT_EQ(4, this->f.GetStats().m_nInstances);
    col.Erase(it);
    EXPECT_RANGE(col, {1, 2, 3});
    EXPECT_EQ(3, this->f.GetStats().m_nInstances);
}

// The loop's reference can change the elements. Here ++ does, which touches
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

    // A loop over the const collection.
    int sum = 0;
    for (const auto& x : std::as_const(col))
    {
        sum += x.GetValue();
    }

    EXPECT_EQ(9, sum);
}

// Keys and values come from two factories, so that they are counted
// separately.
template <class TCollection>
class TPairAssociativeCollectionsTest : public testing::Test
{
    ZMemAllocatorScope m_scope;

protected:
    TPairAssociativeCollectionsTest() : m_keys(), m_values() {}

    // Both temporaries are destroyed when the pair is in.
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

// The keys differ, so containers with unique keys agree with those that keep
// equal keys.
TYPED_TEST(TPairAssociativeCollectionsTest, Basic)
{
    TypeParam col;

    this->Add(col, 1, 2);
    EXPECT_RANGE(col, {{1, 2}});

    // The loop's reference can change the value but not the key.
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

// What every container must provide.
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

// Makes values for a container and adds them. The factory counts the live ones; of pairs, it counts the values.
template <class TCollection>
class TCollectionTestHelper
{
public:
    using Value = typename TCollection::value_type;

    Value CreateValue() { return m_factory.Create(); }

    // Takes a copy, which is destroyed when the value is in.
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
        // The value is destroyed first.
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

    // The five old elements are destroyed, and
    // there are seven copies.
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

    // A collection of one element.
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

// A new enumerator is before the first element. MoveNext returns false after the last element, and so at once if the
// collection is empty.
TYPED_TEST(TCollectionsTest, Enumerator)
{
    TCollectionTestHelper<TypeParam> helper;
    TypeParam collection;
    const TypeParam& constCollection = collection;

    // The collection is empty, so there is no
    // first element.

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
    // A loop over the const collection.
    for (const auto& x : constCollection)
    {
        EXPECT_TRUE(x == *(cit++));
    }
}
