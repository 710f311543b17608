// Stops with one of each thing that the debuggers have a view of, in three frames: positions, containers, values.
#include "core/dynamic/dynamicobject.h"
#include "core/strings/stack_string.h"
#include "core/values/version.h"
#include "runtime/resource/resourceid.h"
#include "tests/support/containers.h"

struct SVertex
{
    float32 m_x, m_y;
    bool operator==(const SVertex&) const = default;
};
KX_DECLARE_TYPE(SVertex);

KX_NOINLINE static void Stop(const ZStackStringBase& reference)
{
    asm volatile("" : : "r"(&reference) : "memory");
}

static void StopAmongPositions(const ZStackStringBase& reference)
{
    TArray<int> array{1, 2, 3};
    TBlockArray<int> blocks{4, 5};
    TList<ZString> list{ZString("one"), ZString("two")};
    TSList<int> slist{1, 2};
    TSet<int> set{1, 2};
    TMap<int, ZString> map{{2, "two"}, {1, "one"}};
    THashMap<ZString, int> hashMap{{"one", 1}, {"two", 2}};
    THashSet<int> hashSet{3};

    [[maybe_unused]] auto blockPos = ++blocks.Begin();
    [[maybe_unused]] const auto blockEnd = blocks.End();
    [[maybe_unused]] const auto listPos = list.Begin();
    [[maybe_unused]] const auto slistPos = slist.Begin();
    [[maybe_unused]] const auto slistEnd = slist.End();
    [[maybe_unused]] const auto mapPos = map.Find(2);
    [[maybe_unused]] const auto mapEnd = map.End();
    [[maybe_unused]] const auto hashPos = hashMap.Find("two");
    [[maybe_unused]] const auto hashEnd = hashMap.End();

    auto arrayWalk = array.GetEnumerator(), arrayDone = arrayWalk;
    arrayWalk.MoveNext();
    while (arrayDone.MoveNext())
        ;
    auto blockStart = blocks.GetEnumerator(), blockWalk = blockStart;
    blockWalk.MoveNext();
    auto setStart = set.GetEnumerator(), setWalk = setStart;
    setWalk.MoveNext();
    auto hashStart = hashSet.GetEnumerator(), hashWalk = hashStart, hashDone = hashStart;
    hashWalk.MoveNext();
    while (hashDone.MoveNext())
        ;
    auto valueWalk = map.GetValueEnumerator();
    valueWalk.MoveNext();

    Stop(reference);
}

static void StopAmongContainers(const ZStackStringBase& reference)
{
    TArray<int> array{1, 2, 3};
    array.Add(4);
    array.Add(5);
    TArray<ZString> emptyArray;
    TMaxArray<int16, 4> maxArray{7, 8};
    TBlockArray<int> blockArray;
    for (int i = 0; i < 20; ++i)
        blockArray.Insert(i % 2 == 0 ? blockArray.Begin() : blockArray.End(), i);
    TList<ZString> list{ZString("one"), ZString("two")};
    TSList<long double> slist{1, 2}; // aligned to 16 bytes
    TSList<int> emptySlist;

    TRedBlackTree<int> tree{5, 1, 4, 4, 2, 3};
    TSet<int*> emptySet;
    TSet<ZString> set{ZString("b"), ZString("a")};
    TMultiSet<int> multiSet{2, 1, 2};
    TMap<int, ZString> map{{2, "two"}, {1, "one"}};
    TMultiMap<ZString, float64> multiMap{{"pi", 3.0}, {"pi", 3.25}};

    THashMap<ZString, int> hashMap{{"one", 1}, {"two", 2}, {"three", 3}};
    TMultiHashMap<int, int> multiHashMap{{1, 10}, {1, 11}};
    THashSet<int> hashSet{3}, emptyHashSet;
    TMap<ZString, TArray<int>> nested{{"primes", {2, 3, 5}}, {"squares", {1, 4}}};

    StopAmongPositions(reference);
}

int main()
{
    ZMemAllocatorScope scope;

    const ZString literal = "a \"literal\"";
    const ZString owned = literal + ", owned";
    const ZString emptyString;
    ZStackString<16> stackString;
    stackString.append("on the stack");

    [[maybe_unused]] const ZGuid guid(0x97f879bdbe59447b, 0xae395c54e0e67d22);
    [[maybe_unused]] const Version version{{2, 1, 3, 4}};

    [[maybe_unused]] const ZRuntimeResourceID resource = ZRuntimeResourceID::Create(42), noResource;

    const ZVariant nothing;
    const ZVariant number(uint8{200});
    const ZVariant text(owned);
    const ZVariant vertex(SVertex{1, -0.5F});
    [[maybe_unused]] const ZVariantRef reference(vertex);
    const ZDynamicObject null;
    const ZDynamicObject ship =
        ZDynamicObject::Object()
            .Set("name", "Walnut")
            .Set("crew", 12)
            .Set("afloat", true)
            .Set("bow", vertex)
            .Set("hold", ZDynamicObject::Array().PushBack(1.5).PushBack(ZDynamicObject::Object()));
    const ZVariant shipVariant(ship);
    // Their classes have to be in the debug information, because natvis casts to them.
    const TArray<ZDynamicObject> noTrees;
    const TArray<SDynamicObjectKeyValuePair> noProperties;

    StopAmongContainers(stackString);
}
