#include "core/containers/map.h"

#include <gtest/gtest.h>

template class TMap<int, int>;

class TMapTest : public testing::Test
{
    ZMemAllocatorScope m_scope;
};
TEST_F(TMapTest, Simple)
{
    TMap<int, int> map;
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(0, map.Size());

    map[1] = 300;
    map[3] = 400;
    map[1] = 500;
    map[5] = 700;
    EXPECT_FALSE(map.IsEmpty());
    EXPECT_EQ(3, map.Size());
    EXPECT_EQ(500, map[1]);

    map.Clear();
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(0, map.Size());
}

TEST_F(TMapTest, CompareMaps)
{
    TMap<int, int> map0;
    TMap<int, int> map1;
    EXPECT_TRUE(map0 == map1);
    map0[5] = 300;
    EXPECT_TRUE(map0 != map1);

    // The same key with another value, then with the same value. Both operators are called each time, because neither
    // is written in terms of the other.

    map1[5] = 600;
    EXPECT_FALSE(map0 == map1);
    EXPECT_TRUE(map0 != map1);
    map1[5] = 300;
    EXPECT_TRUE(map0 == map1);
    EXPECT_FALSE(map0 != map1);
    // Reading a missing key inserts it.
    EXPECT_EQ(0, map0[2]);
    EXPECT_FALSE(map0 == map1);
    EXPECT_TRUE(map0 != map1);
}

TEST_F(TMapTest, GettingElements)
{
    TMap<int, int> map;
    map[5] = 300;
    map[8] = 210;
    map[6] = 250;

    const TMap<int, int>& mapRef = map;
    EXPECT_EQ(300, mapRef[5]);

    // A const map cannot insert a missing key.
    EXPECT_DEATH(mapRef[15], "");

    // GetValue inserts nothing, on any map.
    EXPECT_EQ(300, mapRef.GetValue(5, 77));
    EXPECT_EQ(77, mapRef.GetValue(15, 77));
}

// clang-format off
TEST_F(TMapTest, Iterators)
{
    TMap<int, int> map;
    map[10] = 100;
    map[30] = 200;
    map[50] = 300;
    map[40] = 400;
    map[20] = 500;
    map[0] = 600;
    map[60] = 600;
    map[40] = 401;
    const TMap<int, int>& mapRef = map;
    TMap<int, int>::const_iterator p = mapRef.Begin();
    ASSERT_EQ(0, p->Key()); ASSERT_EQ(600, p->Value()); ++p;
    ASSERT_EQ(10, p->Key()); ASSERT_EQ(100, p->Value()); ++p;
    ASSERT_EQ(20, p->Key()); ASSERT_EQ(500, p->Value()); ++p;
    ASSERT_EQ(30, p->Key()); ASSERT_EQ(200, p->Value()); ++p;
    ASSERT_EQ(40, p->Key()); ASSERT_EQ(401, p->Value()); ++p;
    ASSERT_EQ(50, p->Key()); ASSERT_EQ(300, p->Value()); ++p;
    ASSERT_EQ(60, p->Key()); ASSERT_EQ(600, p->Value()); ++p;
    ASSERT_TRUE(p == mapRef.End());

    TMap<int, int>::iterator q = map.Begin();
    ++q;
    q->Value() = 1000;
    p = mapRef.Begin();
    ++p;
    ASSERT_EQ(10, p->Key()); ASSERT_EQ(1000, p->Value());
}

TEST_F(TMapTest, Enumerators)
{
    TMap<int, int> map;
    map[10] = 100;
    map[30] = 200;
    map[50] = 300;
    map[40] = 400;
    map[20] = 500;
    map[0] = 600;
    map[60] = 600;
    map[40] = 401;

    auto en = map.GetValueEnumerator();
    ASSERT_TRUE(en.MoveNext()); ASSERT_EQ(600, en.Current());
    ASSERT_TRUE(en.MoveNext()); ASSERT_EQ(100, en.Current());
    ASSERT_TRUE(en.MoveNext()); ASSERT_EQ(500, en.Current());
    ASSERT_TRUE(en.MoveNext()); ASSERT_EQ(200, en.Current());
    ASSERT_TRUE(en.MoveNext()); ASSERT_EQ(401, en.Current());
    ASSERT_TRUE(en.MoveNext()); ASSERT_EQ(300, en.Current());
    ASSERT_TRUE(en.MoveNext()); ASSERT_EQ(600, en.Current());
    ASSERT_FALSE(en.MoveNext());
}

TEST_F(TMapTest, Swap_Assign_Clear)
{
    TMap<int, int> map0;
    map0[10] = 100;
    map0[30] = 200;
    map0[50] = 300;
    map0[40] = 400;
    map0[20] = 500;
    map0[0] = 600;
    map0[60] = 600;
    map0[40] = 401;
    TMap<int, int> map1;
    map1[7] = 8;
    map1[9] = 10;
    ASSERT_EQ(7, map0.Size());
    ASSERT_EQ(500, map0[20]);
    ASSERT_EQ(2, map1.Size());
    ASSERT_EQ(8, map1[7]);
    map0.Swap(map1);
    ASSERT_EQ(7, map1.Size());
    ASSERT_EQ(500, map1[20]);
    ASSERT_EQ(2, map0.Size());
    ASSERT_EQ(8, map0[7]);

    // A copy does not depend on its source.
    map0 = map1;
    map1.Clear();
    ASSERT_EQ(7, map0.Size());
    ASSERT_EQ(500, map0[20]);
    ASSERT_EQ(0, map1.Size());
    ASSERT_TRUE(map1.IsEmpty());
}

TEST_F(TMapTest, Find_Contains)
{
    TMap<int, int> map;
    map[10] = 100;
    map[30] = 200;
    map[50] = 300;
    map[40] = 400;
    map[20] = 500;
    map[0] = 600;
    map[60] = 600;
    map[40] = 401;
    const TMap<int, int>& mapRef = map;
    ASSERT_TRUE(map.End() == map.Find(25));
    ASSERT_EQ(200, map.Find(30)->Value());
    map.Find(30)->Value() = 202;
    ASSERT_EQ(202, map.Find(30)->Value());

    // The same on a const map.
    ASSERT_TRUE(mapRef.End() == mapRef.Find(45));
    ASSERT_EQ(600, mapRef.Find(60)->Value());

    EXPECT_FALSE(mapRef.Contains(25));
    EXPECT_FALSE(mapRef.Contains(35));
    EXPECT_FALSE(mapRef.Contains(45));
    EXPECT_TRUE(mapRef.Contains(30));
    EXPECT_TRUE(mapRef.Contains(40));
}

TEST_F(TMapTest, Insert_Erase_Remove)
{
    TMap<int, int> map;
    map.Insert(60, 100);
    map.Insert(20, 100);
    map.Insert(30, 200);
    map.Insert(70, 300);
    map.Insert(30, 400);

    TMap<int, int>::iterator p = map.Begin();
    EXPECT_EQ(4, map.Size());
    EXPECT_EQ(20, p->Key()); EXPECT_EQ(100, p->Value()); ++p;
    EXPECT_EQ(30, p->Key()); EXPECT_EQ(400, p->Value()); ++p;
    EXPECT_EQ(60, p->Key()); EXPECT_EQ(100, p->Value()); ++p;
    EXPECT_EQ(70, p->Key()); EXPECT_EQ(300, p->Value()); ++p;
    ASSERT_TRUE(p == map.End());

    map.Erase(map.Find(70));
    EXPECT_EQ(3, map.Size());
    p = map.Begin();
    EXPECT_EQ(20, p->Key()); EXPECT_EQ(100, p->Value()); ++p;
    EXPECT_EQ(30, p->Key()); EXPECT_EQ(400, p->Value()); ++p;
    EXPECT_EQ(60, p->Key()); EXPECT_EQ(100, p->Value()); ++p;
    ASSERT_TRUE(p == map.End());

    map.Remove(20);
    p = map.Begin();
    EXPECT_EQ(30, p->Key()); EXPECT_EQ(400, p->Value()); ++p;
    EXPECT_EQ(60, p->Key()); EXPECT_EQ(100, p->Value()); ++p;
    ASSERT_TRUE(p == map.End());
}
