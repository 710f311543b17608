// A dynamic object is a tree of values of any depth and width. It keeps its rules and frees all of its memory.
#include "core/dynamic/dynamicobject.h"

#include "runtime/resource/dynamicresourceid.h"
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/treemodel.h"

#include <array>
#include <cmath>
#include <ctime>

// The allocator of the fixture ends the program if a test has not freed a block.
using DynamicObject = JournalTest;

TEST_F(DynamicObject, AgreesWithAModel)
{
    ForEachSeed(40,
                [](auto below)
                {
                    ZModelledTree tree;
                    for (int i = 0; i < 300; ++i)
                    {
                        tree.Step(below);
                        ASSERT_TRUE(i % 10 != 0 || tree.Agrees()) << "after step " << i;
                    }
                });
}

TEST(DynamicObjectSize, AnyDepth)
{
    const ZMemAllocatorScope scope;
    const auto deep = [](int nInnermost)
    {
        ZDynamicObject tree(nInnermost);
        for (int i = 0; i < 200000; ++i)
            tree = i % 3 == 1 ? ZDynamicObject::Array().PushBack(std::move(tree))
                              : ZDynamicObject::Object().Set("child", std::move(tree));
        return tree;
    };
    const auto fork = [&](int nFirst, int nSecond)
    { return ZDynamicObject::Array().PushBack(deep(nFirst)).PushBack(deep(nSecond)); };
    const ZDynamicObject tree = fork(1, 2);
    EXPECT_TRUE(ZDynamicObject(tree) == tree);
    EXPECT_FALSE(tree == fork(1, 3) || tree == fork(3, 2)) << "both branches count";

    // Variants that hold dynamic objects as such, one in the other.
    ZDynamicObject boxes;
    ZDynamicObject* pInnermost = &boxes;
    for (int i = 0; i < 200000; ++i, pInnermost = pInnermost->As<ZDynamicObject>())
        pInnermost->Set(GetTypeID<ZDynamicObject>(), std::array{ZDynamicObject()}.data());
    *pInnermost = ZDynamicObject(1);
    const ZDynamicObject copy = boxes;
    EXPECT_TRUE(copy == boxes);
    *pInnermost = ZDynamicObject(2);
    EXPECT_FALSE(copy == boxes);
}

TEST(DynamicObjectSize, AnyWidth)
{
    const ZMemAllocatorScope scope;
    ZDynamicObject object, plain;
    for (int i = 0; i < 100000; ++i)
        object.Set(ZString::Format("property {0}", i), i);
    plain.Set(object.Type(), object.Data());
    EXPECT_TRUE(plain.Validate() && plain == object && plain["property 99999"] == 99999);
    EXPECT_FALSE(ZDynamicObject().PushBack(1) == ZDynamicObject().PushBack(1).PushBack(1));
}

// All of this took 40 seconds when a step could take time linear in the number of properties that there ever were.
TEST(DynamicObjectSize, NoInputIsSlow)
{
    const ZMemAllocatorScope scope;
    const std::clock_t nStart = std::clock(); // of the processor, so that a busy machine does not count
    ASSERT_EQ(HashKey(ZString("costarring")), HashKey(ZString("liquid")));
    ZDynamicObject object;
    for (uint32 i = 0; i < 65536; ++i)
    {
        std::string key;
        for (uint32 nBits = i | 65536; nBits != 1; nBits /= 2)
            key += nBits % 2 == 0 ? "costarring" : "liquid";
        object.Set(ZString(key.c_str()), i);
    }
    EXPECT_EQ(65536u, object.Size()) << "all of these have one public hash";
    object = ZDynamicObject();
    for (int i = 0; i < 20000; ++i)
        object.Set(ZString::Format("{0}", i), i);
    for (int i = 0; i < 19980; ++i)
        object.Remove(ZString::Format("{0}", i));
    for (int i = 0; i < 20000; ++i)
        EXPECT_TRUE(object.Set("one more", 1).Remove("one more"));
    EXPECT_TRUE(object.Validate() && object.Size() == 20);
    EXPECT_LT((std::clock() - nStart) / CLOCKS_PER_SEC, 30);
}

TEST_F(DynamicObject, ComparesObjectsThatRepeatAKey)
{
    const auto make = [](std::initializer_list<SDynamicObjectKeyValuePair> properties)
    { return ZDynamicObject(ZVariant(TArray<SDynamicObjectKeyValuePair>(properties))); };
    const ZDynamicObject aaa = make({{"a", 1}, {"a", 1}, {"a", 1}}), aab = make({{"a", 1}, {"a", 1}, {"b", 1}}),
                         baa = make({{"b", 1}, {"a", 1}, {"a", 1}}), bca = make({{"b", 1}, {"c", 1}, {"a", 1}}),
                         ab = make({{"a", 1}, {"b", 1}});
    ZDynamicObject ba = baa;
    ba.Remove("a");
    EXPECT_TRUE(aab == ZDynamicObject(aab) && ab == ba && ba == ab);
    for (const ZDynamicObject* pOther : {&aaa, &baa, &bca})
        EXPECT_FALSE(aab == *pOther || *pOther == aab);
}

TEST_F(DynamicObject, FindsTheRemainingProperties)
{
    for (const ZString& format : {ZString("{0}"), ZString("a{0}"), ZString("{0}b"), ZString("{0}{0}")})
    {
        // 128 keys are as many as the index takes before it grows.
        ZDynamicObject object = ZDynamicObject().Set("first", 1);
        for (int i = 1; i < 128; ++i)
            object.Set(ZString::Format(format, i), i);
        EXPECT_TRUE(ZDynamicObject(object).Validate() && !object.Contains("last"));
        for (int i = 1; i < 128; ++i)
            ASSERT_TRUE(object.Remove(ZString::Format(format, i * 37 % 128)) && object.Validate()) << format << i;
    }
}

// -- Values

// Whether the number is readable as each of the types, and yields the low bits of nCut.
template <class... T>
bool ReadsAs(const ZDynamicObject& number, uint64 nCut)
{
    return ((number.IsValue<T>() && number.GetValue<T>() == static_cast<T>(nCut)) && ...);
}

// One of the two 64-bit types has no fixed-width name, which one depends on the system; so has long where it is short.
TEST_F(DynamicObject, TakesEveryInteger)
{
    ZDynamicObject numbers;
    numbers.PushBack(-5L).PushBack(-5LL).PushBack(5UL).PushBack(5ULL);
    EXPECT_TRUE(numbers[0] == -5LL && numbers[1] == -5L && numbers[2] == 5 && numbers[3] == 5U);
    EXPECT_TRUE(!(numbers[0] == 5LL) && numbers[0].Type() == GetTypeID<float64>());
    EXPECT_TRUE(numbers[0].GetValue<long long>() == -5 && numbers[2].GetValue<unsigned long>() == 5);
    EXPECT_EQ(7LL, ZDynamicObject(ZString("7")).GetValueOrDefault(7LL));
}

TEST_F(DynamicObject, CutsNumbersToTheRequestedType)
{
    // The number cut to 32 bits, to 64 bits, and to a uint64. The narrower types take the low bits of the first two.
    constexpr uint64 kTop = uint64{1} << 63;
    const std::tuple<double, int32, int64, uint64> aRows[] = {
        {12.9, 12, 12, 12},
        {-12.9, -12, -12, UINT64_MAX - 11},
        {2147483647.5, 2147483647, 2147483647, 2147483647},
        {2147483648.0, INT32_MIN, 2147483648, 2147483648},
        {-2147483648.9, INT32_MIN, -2147483648, UINT64_MAX - 2147483647},
        {4294967296.0, INT32_MIN, 4294967296, 4294967296},
        {9223372036854775808.0, INT32_MIN, INT64_MIN, kTop},
        {18446744073709549568.0, INT32_MIN, INT64_MIN, UINT64_MAX - 2047},
        {18446744073709551616.0, INT32_MIN, INT64_MIN, kTop},
        {-1e300, INT32_MIN, INT64_MIN, kTop},
        {NAN, INT32_MIN, INT64_MIN, kTop},
    };
    for (const auto& [fNumber, n32, n64, nU64] : aRows)
    {
        const ZDynamicObject number(fNumber);
        EXPECT_TRUE((ReadsAs<int8, int16, int32>(number, static_cast<uint64>(n32)))) << fNumber;
        EXPECT_TRUE((ReadsAs<uint8, uint16, uint32, int64>(number, static_cast<uint64>(n64)))) << fNumber;
        EXPECT_EQ(nU64, number.GetValue<uint64>()) << fNumber;
    }
    EXPECT_EQ(0.1f, ZDynamicObject(0.1).GetValue<float>());
    EXPECT_EQ(1.8446744073709552e19, ZDynamicObject(UINT64_MAX).GetValue<double>());
    EXPECT_TRUE(ZDynamicObject(UINT64_MAX) == UINT64_MAX);
    EXPECT_FALSE(ZDynamicObject(NAN) == NAN);
    for (const ZDynamicObject& odd : {ZDynamicObject().PushBack(NAN), ZDynamicObject().Set("key", NAN)})
        EXPECT_TRUE(odd == odd && !(odd == ZDynamicObject(odd))) << "one buffer equals itself";
}

TEST_F(DynamicObject, KeepsTheTypeOfAVariant)
{
    const ZDynamicObject held(ZVariant(int32{-5}));
    EXPECT_TRUE(held.IsValue<int32>() && held.GetValue<int32>() == -5);
    EXPECT_FALSE(held.IsValue<int64>() || held.IsValue<float64>());
    EXPECT_FALSE(held == int64{-5} || held == ZDynamicObject(-5));
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

TEST_F(DynamicObject, StoresIdentifiersAsStrings)
{
    const ZGuid guid("6faa7ec1-2a3b-4ca8-a09d-33bab9a8fa0d");
    const ZRuntimeResourceID id = ZRuntimeResourceID::Create(UINT64_MAX - 1);
    const ZDynamicObject ofGuid(guid), ofID(id);
    EXPECT_TRUE(ofGuid == "6faa7ec1-2a3b-4ca8-a09d-33bab9a8fa0d" && ofGuid == guid);
    EXPECT_TRUE(ofID == "18446744073709551614" && ofID == id);
    EXPECT_FALSE(ofGuid == ZRuntimeResourceID::Create(7));
    TakeJournal();
    EXPECT_TRUE(ofGuid.IsValue<ZGuid>());
    EXPECT_TRUE(ofGuid.IsValue<ZRuntimeResourceID>()) << "it starts with a number";
    EXPECT_EQ(Journal{}, TakeJournal()) << "the checks need no memory";
    for (const ZDynamicObject& other : {ZDynamicObject("neither"), ZDynamicObject(1), ZDynamicObject()})
    {
        EXPECT_FALSE(other.IsValue<ZGuid>() || other == ZGuid());
        EXPECT_FALSE(other.IsValue<ZRuntimeResourceID>() || other == ZRuntimeResourceID());
    }
    EXPECT_EQ(ZGuid::Empty, ZDynamicObject("neither").GetValue<ZGuid>());
    EXPECT_TRUE(ZDynamicObject("neither").GetValue<ZRuntimeResourceID>() == ZRuntimeResourceID());
}

// -- Missing values, and values of another kind

TEST_F(DynamicObject, BreaksWhereTheKindIsWrong)
{
    ZDynamicObject number(1), array = ZDynamicObject::Array(), object = ZDynamicObject::Object().Set("key", 1);
    const auto same = [](int n) { return n; };
    BreakCounter breaks;
    number.PushBack(1).Set("key", 1).AssignArray(TArray<int>{1});
    array.Set("key", 1);
    object.PushBack(1);
    static_cast<void>(object.GetArrayContainer());
    static_cast<void>(ZDynamicObject::Array().PushBack("text").MapArray(same));
    auto properties = object.GetPropertiesEnumerator();
    EXPECT_TRUE(properties.MoveNext() && !properties.MoveNext());
    static_cast<void>(properties.Current());
    EXPECT_EQ(8, breaks.Take());
    static_cast<void>(number.GetValue<bool>());
    EXPECT_EQ(2, breaks.Take()) << "the type of a bool and of a string is checked twice";
    EXPECT_TRUE(number == 1 && array.Size() == 0 && object.Size() == 1);
    EXPECT_TRUE(number.MapArray(same).IsNull() && ZDynamicObject::Array().MapArray(same).IsArray());
    EXPECT_TRUE(number[0].IsNull() && object[0].IsNull());
}

TEST_F(DynamicObject, BreaksWhereNothingCanBeWritten)
{
    ZDynamicObject object = ZDynamicObject::Object();
    ZDynamicObject& missing = object["missing"];
    BreakCounter breaks;
    missing["key"] = 1;
    missing = ZDynamicObject("a string that needs a block of its own");
    missing.Set("key", 1).PushBack(1).AssignArray(TArray<int>{1, 2});
    missing.Set(GetTypeID<int>(), &missing);
    EXPECT_FALSE(missing.TrySetPath("key", 1));
    EXPECT_TRUE(missing.TrySetPath("", 1));
    EXPECT_EQ(7, breaks.Take());
    EXPECT_TRUE(missing.IsNull() && ZDynamicObject(std::move(missing)).IsNull());
    EXPECT_EQ(0u, object.Size());
    EXPECT_EQ(0, breaks.Take());
}

TEST_F(DynamicObject, BreaksWhereATreeIsMovedIntoItself)
{
    for (const char* pszPath : {"a", "a.b.c"})
    {
        ZDynamicObject tree = ZDynamicObject().Set("a", ZDynamicObject().Set("b", ZDynamicObject().Set("c", nullptr)));
        const auto part = [&]() -> ZDynamicObject&
        {
            ZDynamicObject* pPart = nullptr;
            tree.TryUpdatePath(ZString(pszPath), [&](ZDynamicObject& node) { return (pPart = &node) != nullptr; });
            return *pPart;
        };
        EXPECT_BREAK(part() = std::move(tree));
        EXPECT_BREAK(part().PushBack(std::move(tree)));
        EXPECT_BREAK(part().Set("d", std::move(tree)));
        tree = std::move(part());
    }
}

TEST_F(DynamicObject, NullptrIsNull)
{
    const ZDynamicObject null = nullptr, object = ZDynamicObject().Set("key", nullptr).Set("text", "");
    EXPECT_TRUE(null.IsNull() && object["key"].IsNull() && object.Contains("key") && null == nullptr);
    EXPECT_FALSE(object["text"] == nullptr || ZDynamicObject(0) == nullptr);
}

TEST_F(DynamicObject, GrowsReplacesAndMapsArrays)
{
    EXPECT_EQ(5u, ZDynamicObject().AssignArray(TArray<int>{1, 2, 3, 4, 5}).GetArrayContainer().Capacity());
    ZDynamicObject array = ZDynamicObject::Array().PushBack("x").PushBack(false).PushBack(0);
    array.PushBack(array[0]).PushBack(array);
    EXPECT_TRUE(array[4][3] == "x" && array[-1].IsNull() && array[uint64{1} << 32].IsNull());
    array.AssignArray(TArray<int>{7, 8});
    EXPECT_EQ(8u, array.GetArrayContainer().Capacity());
    EXPECT_TRUE(array.MapArray([&](int n) { return array = n, n + 1; }) == ZDynamicObject().PushBack(8).PushBack(9));
}

TEST_F(DynamicObject, AllocatesForStringsArraysAndIndexes)
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

    // Look-ups by characters that end before the end of their string, in an object without and with an index.
    ZDynamicObject wide = ZDynamicObject().Set("key", 3);
    const std::string_view name = std::string_view("keys").substr(0, 3);
    for (const bool bIndexed : {false, true})
    {
        for (int i = 0; i < (bIndexed ? 20 : 0); ++i)
            wide.Set(ZString::Format("{0}", i), i);
        TakeJournal();
        int nValue = 0;
        EXPECT_TRUE(wide.Contains(name) && wide[name] == 3 && std::as_const(wide)[std::string("key")] == 3);
        EXPECT_TRUE(wide.TryGet(name, nValue) && nValue == 3 && !wide.Remove(std::string_view("keys")));
        EXPECT_EQ(Journal{}, TakeJournal());
    }
    EXPECT_TRUE(wide.Remove(name) && !wide.Contains("key"));

    wide = {};
    for (int i = 0; i < 12; ++i)
        wide.Set(ZString::Format("{0}", i), i);
    const Journal journal = TakeJournal();
    EXPECT_EQ(0, std::count(journal.begin(), journal.end(), "alloc 512/4"));
    wide.Set("the thirteenth", 12);
    EXPECT_EQ(Journal{"alloc 512/4"}, TakeJournal());
}

// -- Paths

TEST_F(DynamicObject, WalksPaths)
{
    // The model has the paths that lead somewhere, and those that do not.
    ZDynamicObject tree = ZDynamicObject().Set("", ZDynamicObject().Set("", 1)).Set("n", 4);
    int nRead = 7;
    EXPECT_TRUE(tree.TryGetPath("n", nRead) && !tree.TryGetPath("", nRead) && nRead == 4);
    EXPECT_FALSE(tree.TryUpdatePath("n", {}) || tree.TryUpdatePath("n", [](ZDynamicObject&) { return false; }));
    const ZDynamicObject before = tree;
    EXPECT_TRUE(tree.TrySetPath(".", tree));
    EXPECT_TRUE(tree[""][""] == before);
    const std::string path = "n.and more";
    ZDynamicObject node;
    EXPECT_TRUE(tree.TrySetPath(std::string_view(path).substr(0, 1), 5) && tree.TryGetPath(path.substr(0, 1), node));
    EXPECT_TRUE(node == 5 && !tree.TryGetPath(path, nRead));
    EXPECT_TRUE(tree.TrySetPath("", "text") && tree == "text");
}
