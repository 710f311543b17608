// A dynamic object is a tree of values: of any depth and width, whatever is done to it, and all its memory comes back.
#include "core/dynamic/dynamicobject.h"

#include "runtime/resource/dynamicresourceid.h"
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/treemodel.h"

#include <cmath>
#include <limits>

// The end of each of these tests finds out what has not been given back.
using DynamicObject = JournalTest;

TEST_F(DynamicObject, AgreesWithAModel)
{
    ForEachSeed(40,
                [](auto below)
                {
                    ModelledTree tree;
                    for (int i = 0; i < 300; ++i)
                    {
                        tree.Step(below);
                        ASSERT_TRUE(i % 10 != 0 || tree.Agrees()) << "after step " << i;
                        TakeJournal();
                    }
                });
}

TEST(DynamicObjectSize, AnyDepth)
{
    const ZMemAllocatorScope scope;
    constexpr int kDepth = 1000000;
    const auto deep = [](int nDepth, int nInnermost)
    {
        ZDynamicObject tree(nInnermost);
        for (int i = 0; i < nDepth; ++i)
            tree = i % 3 == 1 ? ZDynamicObject::Array().PushBack(std::move(tree))
                              : ZDynamicObject::Object().Set("child", std::move(tree));
        return tree;
    };
    const ZDynamicObject tree = deep(kDepth, 1);
    ZDynamicObject copy = tree;
    EXPECT_TRUE(copy == tree && tree == deep(kDepth, 1));
    EXPECT_FALSE(copy == deep(kDepth, 2));
    copy = ZDynamicObject(copy["child"]);
    EXPECT_TRUE(copy.IsObject());

    const auto both = [&](int nFirst, int nSecond)
    { return ZDynamicObject::Array().PushBack(deep(1000, nFirst)).PushBack(deep(1000, nSecond)); };
    EXPECT_TRUE(both(1, 2) == both(1, 2));
    EXPECT_FALSE(both(1, 2) == both(1, 3) || both(1, 2) == both(3, 2)) << "either branch counts";
}

TEST(DynamicObjectSize, AnyWidth)
{
    const ZMemAllocatorScope scope;
    constexpr int kWidth = 100000;
    ZDynamicObject object;
    for (int i = 0; i < kWidth; ++i)
        object.Set(ZString::Format("property {0}", i), i);
    const ZDynamicObject copy = object;
    for (int i = 0; i < kWidth; ++i)
        ASSERT_TRUE(copy[ZString::Format("property {0}", i)] == i);
    EXPECT_TRUE(copy == object);
    EXPECT_FALSE(copy.Contains("property 100000"));
    EXPECT_EQ(100000u, copy.Size());
    EXPECT_TRUE(object.Remove("property 50000"));
    EXPECT_TRUE(object.Validate());
    EXPECT_FALSE(copy == object || object == copy);
    EXPECT_FALSE(ZDynamicObject().Set("a", 1).Set("b", 2) == ZDynamicObject().Set("b", 1).Set("a", 1));
    EXPECT_FALSE(object.Set("another", 50000) == copy) << "as many, of other names";
    EXPECT_FALSE(ZDynamicObject().PushBack(1) == ZDynamicObject().PushBack(1).PushBack(1));
    EXPECT_FALSE(ZDynamicObject().PushBack(1) == ZDynamicObject().PushBack("1"));
}

// Removed at random, the last one found in no index.
TEST_F(DynamicObject, FindsWhatIsLeftOfMany)
{
    TArray<SDynamicObjectKeyValuePair> pairs;
    for (int i = 0; i < 20; ++i)
        pairs.Add({ZString::Format("property {0}", i), i});
    const ZDynamicObject held{ZVariant(pairs)};
    EXPECT_TRUE(held.Validate() && held["property 19"] == 19);
    ForEachSeed(5,
                [](auto below)
                {
                    // As many as the index takes before it grows.
                    ZDynamicObject object;
                    std::vector<ZString> keys = {"costarring"};
                    for (int i = 0; i < 127; ++i)
                        keys.push_back(ZString::Format("{0}", below(UINT64_MAX)));
                    for (const ZString& key : keys)
                        object.Set(key, 1);
                    ASSERT_FALSE(object.Contains("liquid")) << "a key of the same hash";
                    ASSERT_TRUE(ZDynamicObject(object).Validate());
                    while (!keys.empty())
                    {
                        const size_t nKey = below(keys.size());
                        ASSERT_TRUE(object.Remove(keys[nKey]));
                        ASSERT_FALSE(object.Contains(keys[nKey]));
                        keys.erase(keys.begin() + static_cast<std::ptrdiff_t>(nKey));
                        ASSERT_TRUE(object.Validate() && object.Size() == keys.size());
                    }
                });
    EXPECT_EQ(HashKey(ZString("costarring")), HashKey(ZString("liquid")));
}

// -- Numbers

TEST_F(DynamicObject, CutsNumbersToTheTypeThatIsAskedFor)
{
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    struct SRow
    {
        double m_fNumber;
        uint8 m_nU8;
        uint16 m_nU16;
        int32 m_n32;
        uint32 m_nU32;
        int64 m_n64;
        uint64 m_nU64;
    };
    constexpr int32 kMin32 = INT32_MIN;
    constexpr int64 kMin64 = INT64_MIN;
    constexpr uint64 kTop = uint64{1} << 63;
    const SRow aRows[] = {
        {12.9, 12, 12, 12, 12, 12, 12},
        {-12.9, 244, 65524, -12, 4294967284, -12, UINT64_MAX - 11},
        {300.0, 44, 300, 300, 300, 300, 300},
        {65537.0, 1, 1, 65537, 65537, 65537, 65537},
        {2147483647.5, 255, 65535, 2147483647, 2147483647, 2147483647, 2147483647},
        {2147483648.0, 0, 0, kMin32, 2147483648, 2147483648, 2147483648},
        {-2147483648.9, 0, 0, kMin32, 2147483648, -2147483648, UINT64_MAX - 2147483647},
        {4294967295.0, 255, 65535, kMin32, UINT32_MAX, 4294967295, 4294967295},
        {4294967296.0, 0, 0, kMin32, 0, 4294967296, 4294967296},
        {9223372036854775808.0, 0, 0, kMin32, 0, kMin64, kTop},
        {18446744073709549568.0, 0, 0, kMin32, 0, kMin64, UINT64_MAX - 2047},
        {18446744073709551616.0, 0, 0, kMin32, 0, kMin64, kTop},
        {-1e300, 0, 0, kMin32, 0, kMin64, kTop},
        {kNaN, 0, 0, kMin32, 0, kMin64, kTop},
    };
    for (const SRow& row : aRows)
    {
        SCOPED_TRACE(row.m_fNumber);
        const ZDynamicObject number(row.m_fNumber);
        EXPECT_TRUE(number.IsValue<uint8>());
        EXPECT_EQ(static_cast<int8>(row.m_n32), number.GetValue<int8>());
        EXPECT_EQ(static_cast<int16>(row.m_n32), number.GetValue<int16>());
        EXPECT_EQ(row.m_nU8, number.GetValue<uint8>());
        EXPECT_EQ(row.m_nU16, number.GetValue<uint16>());
        EXPECT_EQ(row.m_n32, number.GetValue<int32>());
        EXPECT_EQ(row.m_nU32, number.GetValue<uint32>());
        EXPECT_EQ(row.m_n64, number.GetValue<int64>());
        EXPECT_EQ(row.m_nU64, number.GetValue<uint64>());
    }
    EXPECT_EQ(0.1f, ZDynamicObject(0.1).GetValue<float>());
    EXPECT_EQ(1.8446744073709552e19, ZDynamicObject(UINT64_MAX).GetValue<double>());
    EXPECT_TRUE(ZDynamicObject(UINT64_MAX) == UINT64_MAX);
    EXPECT_FALSE(ZDynamicObject(kNaN) == kNaN);
    for (const ZDynamicObject& odd : {ZDynamicObject().PushBack(kNaN), ZDynamicObject().Set("key", kNaN)})
        EXPECT_TRUE(odd == odd && !(odd == ZDynamicObject(odd))) << "of one buffer no element is asked";
}

TEST_F(DynamicObject, KeepsTheTypeThatAVariantBroughtIn)
{
    const ZDynamicObject held(ZVariant(int32{-5}));
    EXPECT_TRUE(held.IsValue<int32>());
    EXPECT_FALSE(held.IsValue<int64>());
    EXPECT_FALSE(held.IsValue<float64>());
    EXPECT_EQ(-5, held.GetValue<int32>());
    EXPECT_FALSE(held == int64{-5});
    EXPECT_FALSE(held == ZDynamicObject(-5));
    EXPECT_BREAK(held.GetValue<int64>());
    EXPECT_BREAK(ZDynamicObject(1).GetValue<bool>());
    EXPECT_BREAK(ZDynamicObject(1).GetValue<ZGuid>());
    EXPECT_BREAK(ZDynamicObject(1).GetValue<ZRuntimeResourceID>());
    int nOut = 7;
    EXPECT_FALSE(ZDynamicObject("12").TryGetValue(nOut));
    EXPECT_EQ(7, nOut);
    EXPECT_EQ(8, ZDynamicObject("12").GetValueOrDefault(8));
    EXPECT_FALSE(ZDynamicObject(1) == "1" || ZDynamicObject() == "");
}

TEST_F(DynamicObject, StoresIdentifiersAsText)
{
    const ZGuid guid("6faa7ec1-2a3b-4ca8-a09d-33bab9a8fa0d");
    const ZDynamicObject ofGuid(guid);
    EXPECT_TRUE(ofGuid == "6faa7ec1-2a3b-4ca8-a09d-33bab9a8fa0d");
    EXPECT_TRUE(ofGuid == guid);
    EXPECT_FALSE(ofGuid.IsValue<ZRuntimeResourceID>() && ofGuid == ZRuntimeResourceID::Create(7));
    TakeJournal();
    EXPECT_TRUE(ofGuid.IsValue<ZGuid>());
    EXPECT_TRUE(ofGuid.IsValue<ZRuntimeResourceID>()) << "a number is what a text begins with";
    EXPECT_EQ(Journal{}, TakeJournal()) << "a question is no reason to allocate";
    EXPECT_FALSE(ZDynamicObject("no guid").IsValue<ZGuid>());
    EXPECT_FALSE(ZDynamicObject(1).IsValue<ZGuid>() || ZDynamicObject().IsValue<ZGuid>());
    EXPECT_FALSE(ZDynamicObject("no guid") == ZGuid() || ZDynamicObject() == ZGuid());
    EXPECT_EQ(ZGuid::Empty, ZDynamicObject("no guid").GetValue<ZGuid>());

    const ZDynamicObject ofID(ZRuntimeResourceID::Create(UINT64_MAX - 1));
    EXPECT_TRUE(ofID == "18446744073709551614");
    EXPECT_TRUE(ofID == ZRuntimeResourceID::Create(UINT64_MAX - 1));
    EXPECT_FALSE(ZDynamicObject("no number").IsValue<ZRuntimeResourceID>());
    EXPECT_FALSE(ZDynamicObject(1).IsValue<ZRuntimeResourceID>() || ZDynamicObject().IsValue<ZRuntimeResourceID>());
    EXPECT_TRUE(ZDynamicObject("no number").GetValue<ZRuntimeResourceID>() == ZRuntimeResourceID());
}

// -- What is not there, and what is of another kind

TEST_F(DynamicObject, BreaksWhereTheKindIsWrong)
{
    ZDynamicObject number(1), array = ZDynamicObject::Array(), object = ZDynamicObject::Object();
    EXPECT_BREAK(object.PushBack(1));
    EXPECT_BREAK(array.Set("key", 1));
    EXPECT_BREAK(object.GetArrayContainer());
    EXPECT_BREAK(ZDynamicObject::Array().PushBack("text").MapArray([](int n) { return n; }));
    {
        BreakCounter breaks;
        number.PushBack(1).Set("key", 1).AssignArray(TArray<int>{1});
        EXPECT_EQ(3, breaks.Take());
    }
    EXPECT_TRUE(number == 1);
    EXPECT_TRUE(number.MapArray([](int n) { return n; }).IsNull());
    EXPECT_TRUE(number[0].IsNull() && object[0].IsNull());

    object.Set("key", 1);
    auto properties = object.GetPropertiesEnumerator();
    while (properties.MoveNext())
        EXPECT_TRUE(properties.Current().m_key == "key");
    EXPECT_BREAK(properties.Current());
}

TEST_F(DynamicObject, NothingReachesTheObjectThatIsNotThere)
{
    ZDynamicObject object = ZDynamicObject::Object();
    ZDynamicObject& missing = object["missing"];
    missing = 5;
    missing = ZDynamicObject("a text long enough for a block of its own");
    missing.Set("key", 1).Set("key", ZDynamicObject::Array());
    missing.PushBack(1).AssignArray(TArray<int>{1, 2});
    missing.Set(GetTypeID<int>(), &missing);
    EXPECT_FALSE(missing.TrySetPath("key", 1));
    EXPECT_TRUE(missing.TrySetPath("", 1));
    EXPECT_TRUE(missing.IsNull());
    EXPECT_TRUE(ZDynamicObject(std::move(missing)).IsNull());
    EXPECT_EQ(0u, object.Size());
}

TEST_F(DynamicObject, BeginsWhatIsWrittenToNull)
{
    EXPECT_EQ(5u, ZDynamicObject().AssignArray(TArray<int>{1, 2, 3, 4, 5}).GetArrayContainer().Capacity());
    EXPECT_TRUE(ZDynamicObject::Array().MapArray([](int n) { return n; }).IsArray());

    ZDynamicObject array = ZDynamicObject::Array().PushBack("x").PushBack(false).PushBack(0);
    array.PushBack(array[0]).PushBack(array);
    EXPECT_EQ(5u, array.Size());
    EXPECT_TRUE(array[4][3] == "x" && array[-1].IsNull() && array[uint64{1} << 32].IsNull());
    array.AssignArray(TArray<int>{7, 8});
    EXPECT_EQ(2u, array.Size());
    EXPECT_EQ(8u, array.GetArrayContainer().Capacity());
    EXPECT_TRUE(array.MapArray([&](int n) { return array = n, n + 1; }) == ZDynamicObject().PushBack(8).PushBack(9));
}

TEST_F(DynamicObject, AllocatesForTextsAndArraysAlone)
{
    ZDynamicObject array = ZDynamicObject::Array();
    array.PushBack("copied").PushBack(ZString("borrowed")).PushBack(ZString("taken") + "over");
    EXPECT_EQ((Journal{"alloc 7/1", "alloc 64/8", "free null", "alloc 10/1"}), TakeJournal());
    const ZDynamicObject object = ZDynamicObject().Set("key", array);
    TakeJournal();
    const ZDynamicObject copy(object);
    EXPECT_EQ((Journal{"alloc 32/8", "alloc 48/8", "alloc 7/1", "alloc 10/1"}), TakeJournal());
    EXPECT_TRUE(ZDynamicObject().Set("key", 1).TrySetPath("key", ZVariant(ZString("taken") + "over")));
    EXPECT_EQ((Journal{"alloc 128/8", "free null", "alloc 10/1", "free 10", "free 128"}), TakeJournal());

    // The thirteenth property brings the index.
    ZDynamicObject wide;
    for (const char c : std::string_view("abcdefghijklm"))
    {
        EXPECT_EQ(0, std::ranges::count(TakeJournal(), "alloc 512/4")) << c;
        wide.Set(ZString(std::string_view(&c, 1)), 1);
    }
    EXPECT_EQ(1, std::ranges::count(TakeJournal(), "alloc 512/4"));
}

// -- Paths

TEST_F(DynamicObject, WalksPaths)
{
    ZDynamicObject tree;
    tree.Set("", ZDynamicObject().Set("", 1).Set("a", 2)).Set("a", ZDynamicObject().Set("b", 3)).Set("n", 4);
    const std::pair<ZString, int> aNodes[] = {{ZString("n"), 4},    {ZString("a.b"), 3}, {ZString("."), 1},
                                              {ZString(".a"), 2},   {ZString(".b"), 0},  {ZString("a."), 0},
                                              {ZString("n.x"), 0},  {ZString(".."), 0},  {ZString("a.b.c"), 0},
                                              {ZString("a..b"), 0}, {ZString("b"), 0}};
    for (const auto& [path, nExpected] : aNodes)
    {
        const int nValue = nExpected;
        int nRead = 0;
        EXPECT_EQ(nValue != 0, tree.TryGetPath(path, nRead)) << path;
        EXPECT_EQ(nValue, nRead) << path;
        bool bCalled = false;
        EXPECT_EQ(nValue != 0,
                  tree.TryUpdatePath(path, [&](ZDynamicObject& node) { return bCalled = node == nValue; }));
        EXPECT_EQ(nValue != 0, bCalled);
    }
    EXPECT_FALSE(tree.TryUpdatePath("n", {}));
    EXPECT_FALSE(tree.TryUpdatePath("n", [](ZDynamicObject&) { return false; }));

    const ZDynamicObject before = tree;
    EXPECT_FALSE(tree.TrySetPath("n.x", 1) || tree.TrySetPath("b.c", 1) || tree.TrySetPath("a.b.c", 1));
    EXPECT_TRUE(tree == before);
    EXPECT_TRUE(tree.TrySetPath(".", tree));
    EXPECT_TRUE(tree[""][""] == before);
    ZDynamicObject whole;
    EXPECT_TRUE(tree.TryGetPath("", whole));
    EXPECT_TRUE(whole == tree);
    EXPECT_TRUE(tree.TryGetPath("a", tree));
    EXPECT_TRUE(tree["b"] == 3);
    EXPECT_TRUE(tree.TrySetPath("", "text"));
    EXPECT_TRUE(tree == "text");
}
