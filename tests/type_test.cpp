// Types have one identity in the process whatever module names them, and their records do what they promise.
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/usertypes.h"

#include <cstring>
#include <dlfcn.h>

KX_DECLARE_TYPE(Logged);
KX_DECLARE_TYPE(TArray<Logged>);

// -- The merge

namespace
{
STypeIDData Record(uint32 nKind, const char* (*pfnName)())
{
    return {nKind << 16, nullptr, nullptr, pfnName, nullptr};
}
} // namespace

TEST(TypeMerge, TheNameDecides)
{
    const auto nameA = [] { return "tests.a"; };
    const auto nameB = [] { return "tests.b"; };
    const auto nameInt = [] { return typeid(int32*).name(); };
    STypeIDData a = Record(0, nameA), a2 = Record(0, nameA), b = Record(0, nameB), number = Record(4, nameInt);
    STypeIDData* slots[] = {nullptr, &a, nullptr, nullptr, &b, &a2, nullptr, &number, nullptr};
    SharedInitTypeIDs(slots, slots + 9);

    EXPECT_EQ(slots[1], slots[5]);
    EXPECT_NE(slots[1], slots[4]);
    EXPECT_NE(&a, slots[1]) << "an identity is no module's record";
    EXPECT_EQ(reinterpret_cast<STypeIDData*>(GetTypeID<int32>()), slots[7]);
    for (const int nNull : {0, 2, 3, 6, 8})
        EXPECT_EQ(nullptr, slots[nNull]);

    STypeIDData* again[] = {slots[1], slots[4], nullptr};
    SharedInitTypeIDs(again, again + 3);
    EXPECT_EQ(slots[1], again[0]);
    EXPECT_EQ(slots[4], again[1]);
    STypeIDData found = {0, nullptr, a.m_pTypeID, nullptr, nullptr};
    STypeIDData* slotOfFound = &found;
    SharedInitTypeIDs(&slotOfFound, &slotOfFound + 1);
    EXPECT_EQ(slots[1], slotOfFound) << "a record that has found its identity is not asked for its name";
    SharedInitTypeIDs(again + 2, again + 3);
    SharedInitTypeIDs(again, again);
}

TEST(TypeMerge, ModulesAgree)
{
    const ZMemAllocatorScope scope;
    void* pModule = dlopen(KX_TEST_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(nullptr, pModule) << dlerror();
    const auto typeOfVertex = reinterpret_cast<STypeID* (*)()>(dlsym(pModule, "PluginTypeOfVertex"));
    const auto recordOfVertex = reinterpret_cast<STypeIDData* (*)()>(dlsym(pModule, "PluginRecordOfVertex"));
    const auto fill = reinterpret_cast<void (*)(ZDynamicObject*)>(dlsym(pModule, "PluginFill"));
    const auto reads = reinterpret_cast<bool (*)(const ZDynamicObject*)>(dlsym(pModule, "PluginReads"));
    EXPECT_EQ(GetTypeID<SVertex>(), typeOfVertex());
    EXPECT_NE(&TTypeSlot<SVertex>::ms_data, recordOfVertex()) << "the linker has made one module of two";

    ZDynamicObject object;
    fill(&object);
    const ZDynamicObject copy = object;
    EXPECT_TRUE(reads(&copy));
    EXPECT_EQ((SVertex{1, 2, 3}), copy["vertex"].As<SVertex>());
    EXPECT_TRUE(copy["here"] == object["here"]) << "a type that this program does not know";
}

// -- Records

TEST(TypeRecord, IsFilledInWhenTheModuleStarts)
{
    const IType& type = *GetType<TArray<ZDynamicObject>>();
    EXPECT_EQ(24u, type.m_nSize);
    EXPECT_EQ(8u, type.m_nAlignment);
    EXPECT_EQ(48u, type.m_nArgumentOffset);
    EXPECT_EQ((GetTypeID<TArray<ZDynamicObject>>()), type.m_pTypeID);
    EXPECT_EQ(GetTypeID<ZDynamicObject>(), type.m_pElementTypeID);
    EXPECT_NE(nullptr, type.m_pOperations->Equals);
    EXPECT_EQ(nullptr, GetType<TArray<SDynamicObjectKeyValuePair>>()->m_pOperations->Equals);

    // The name lies in the block, nine bytes behind its front.
    STemplateBlock expected = {GetTypeID<ZDynamicObject>(), 1, "TArray"};
    EXPECT_EQ(0, std::memcmp(type.m_pszName - 9, &expected, sizeof(expected)));

    const IType& vertex = *GetType<SVertex>();
    EXPECT_STREQ("SVertex", vertex.m_pszName);
    EXPECT_EQ(12u, vertex.m_nSize);
    EXPECT_EQ(48u, vertex.m_nArgumentOffset);
    EXPECT_EQ(nullptr, vertex.m_pContainerOperations);
    EXPECT_EQ(nullptr, GetType<TArray<Logged>>()->m_pfnResize);
    EXPECT_EQ(nullptr, GetType<SMatrix>()->m_pOperations->Equals);
}

TEST(TypeRegistry, KeepsTheFirstRecord)
{
    ZTypeRegistry& registry = GetTypeRegistry();
    EXPECT_EQ(GetType<SVertex>(), registry.Find(GetTypeID<SVertex>()));
    EXPECT_EQ(nullptr, registry.Find(GetTypeID<TArray<ZDynamicObject>>()));
    EXPECT_EQ(nullptr, registry.Find(nullptr));

    IType second = *GetType<SVertex>();
    registry.Register(&second);
    registry.Register(GetType<SVertex>());
    EXPECT_EQ(GetType<SVertex>(), registry.Find(GetTypeID<SVertex>()));

    // That of a type that the library knows by itself changes nothing for its values.
    const ZMemAllocatorScope scope;
    IType* pPairs = GetType<TArray<SDynamicObjectKeyValuePair>>();
    registry.Register(pPairs);
    EXPECT_EQ(pPairs, registry.Find(pPairs->m_pTypeID));
    EXPECT_TRUE(ZDynamicObject::Object() == ZDynamicObject::Object());

    IType unstarted = {};
    BreakCounter breaks;
    registry.Register(&unstarted);
    EXPECT_EQ(1, breaks.Take());
}

using TypeOperations = JournalTest;

TEST_F(TypeOperations, OfAnArray)
{
    const STypeOperations& operations = *GetType<TArray<Logged>>()->m_pOperations;
    alignas(TArray<Logged>) char acStorage[2][sizeof(TArray<Logged>)];
    auto& array = *reinterpret_cast<TArray<Logged>*>(acStorage[0]);
    auto& other = *reinterpret_cast<TArray<Logged>*>(acStorage[1]);

    std::memset(acStorage, 0xAB, sizeof(acStorage));
    operations.Construct(nullptr);
    operations.CopyConstruct(nullptr, nullptr);
    operations.Construct(&array);
    EXPECT_EQ(nullptr, array.Begin());
    EXPECT_EQ(0u, array.Capacity());
    operations.CopyConstruct(&other, &array);
    EXPECT_TRUE(operations.Equals(&array, &other));
    array.Reserve(5);
    array.Add(1);
    array.Add(2);
    TakeJournal();

    operations.Assign(&other, &array);
    EXPECT_EQ((Journal{"alloc 8/4", "free null", "copy 1", "copy 2"}), TakeJournal());
    EXPECT_TRUE(operations.Equals(&array, &other));
    operations.Assign(&array, &array);
    EXPECT_EQ(Journal{}, TakeJournal());
    array.Begin()[1].m_nValue = 3;
    EXPECT_FALSE(operations.Equals(&array, &other));
    array.Erase(1);
    EXPECT_FALSE(operations.Equals(&array, &other));
    TakeJournal();
    operations.Destruct(&other);
    EXPECT_EQ((Journal{"delete 1", "delete 2", "free 8"}), TakeJournal());

    operations.CopyConstruct(&other, &array);
    EXPECT_EQ((Journal{"alloc 4/4", "copy 1"}), TakeJournal());
    operations.Destruct(&other);
    EXPECT_BREAK(GetType<TArray<Logged>>()->m_pContainerOperations->SetAt(&array, ZVariantRef(array[0]), 2))
        << "there is nothing to fill the gap with";
    operations.Destruct(&array);
    const TArray<SVertex> odd{SVertex{NAN, 0, 0}};
    EXPECT_TRUE(GetType<TArray<SVertex>>()->m_pOperations->Equals(&odd, &odd)) << "of one buffer no element is asked";
    void* const apHalfNull[3] = {nullptr, acStorage, acStorage};
    EXPECT_BREAK(operations.CopyConstruct(&other, apHalfNull));
}

TEST_F(TypeOperations, OfAnElement)
{
    const STypeOperations& operations = *GetType<Logged>()->m_pOperations;
    EXPECT_EQ(nullptr, operations.Construct) << "it has no default value";
    const Logged source(7);
    alignas(Logged) char acStorage[sizeof(Logged)];
    operations.CopyConstruct(acStorage, &source);
    operations.CopyConstruct(nullptr, &source);
    operations.Assign(acStorage, &source);
    operations.Assign(acStorage, acStorage);
    EXPECT_TRUE(operations.Equals(acStorage, &source));
    operations.Destruct(acStorage);
    SVertex vertex{1, 2, 3};
    GetType<SVertex>()->m_pOperations->Construct(nullptr);
    GetType<SVertex>()->m_pOperations->Construct(&vertex);
    EXPECT_EQ(SVertex(), vertex);
    EXPECT_EQ((Journal{"new 7", "copy 7", "7 = copy 7", "delete 7"}), TakeJournal());
}

TEST_F(TypeOperations, WalkAndStoreInAContainer)
{
    const IType& type = *GetType<TArray<SVertex>>();
    const SContainerOperations& operations = *type.m_pContainerOperations;
    TArray<SVertex> array;
    const SVertex one{1, 0, 0}, two{2, 0, 0};

    void* pElement = operations.SetAt(&array, ZVariantRef(one), 0);
    EXPECT_EQ(array.Begin(), pElement) << "appended";
    pElement = operations.SetAt(&array, ZVariantRef(two), 3);
    EXPECT_EQ(array.Begin() + 3, pElement) << "the gap is filled";
    pElement = operations.SetAt(&array, ZVariantRef(one), 1);
    EXPECT_EQ(array.Begin() + 1, pElement) << "assigned";
    pElement = operations.SetAt(&array, ZVariantRef(array.Begin()[3]), 4);
    EXPECT_EQ(array.Begin() + 4, pElement) << "of a part of itself";
    const SVertex aExpected[] = {one, one, SVertex(), two, two};
    EXPECT_EQ(5u, operations.Size(&array));
    const SVertex* pExpected = aExpected;
    for (void* p = operations.Begin(&array); p != operations.End(&array); p = operations.Next(&array, p))
        EXPECT_EQ(*pExpected++, *static_cast<SVertex*>(p));

    const int nNoVertex = 1;
    EXPECT_BREAK(operations.SetAt(&array, ZVariantRef(nNoVertex), 1));
    BreakCounter breaks;
    EXPECT_EQ(nullptr, operations.SetAt(&array, ZVariantRef(one), -1));
    EXPECT_EQ(nullptr, operations.SetAt(&array, ZVariantRef(nNoVertex), 5));
    EXPECT_EQ(5u, array.Size());
    EXPECT_EQ(nullptr, operations.SetAt(&array, ZVariantRef(nNoVertex), 7));
    EXPECT_EQ(3, breaks.Take());
    EXPECT_EQ(8u, array.Size()) << "the gap was filled before";
    operations.SetAt(&array, ZVariantRef(array[4]), static_cast<int>(array.Capacity()) + 1);
    EXPECT_EQ(two, *(array.End() - 1)) << "of a part of itself, which the filling takes elsewhere";

    operations.Reserve(&array, 20);
    operations.Reserve(&array, 10);
    operations.Clear(&array);
    EXPECT_EQ(20u, array.Capacity());
    EXPECT_EQ(0u, operations.Size(&array));
    type.m_pfnResize(&array, 21);
    EXPECT_EQ(21u, array.Capacity());
    EXPECT_EQ(SVertex(), array[20]);

    // The elements of the two arrays that the trees consist of.
    TArray<SDynamicObjectKeyValuePair> pairs;
    const SContainerOperations& ofPairs = *GetType<TArray<SDynamicObjectKeyValuePair>>()->m_pContainerOperations;
    const SDynamicObjectKeyValuePair pair = {"key", 42};
    ofPairs.SetAt(&pairs, ZVariantRef(pair), 2);
    EXPECT_EQ(32, static_cast<char*>(ofPairs.Next(&pairs, pairs.Begin())) - reinterpret_cast<char*>(pairs.Begin()));
    EXPECT_TRUE(pairs[0].m_key == "" && pairs[0].m_value.IsNull());
    EXPECT_TRUE(pairs[2].m_key == "key" && pairs[2].m_value == 42);
}

using ArrayResize = JournalTest;

TEST_F(ArrayResize, DestroysTheSurplusAndGrowsExactly)
{
    struct Element : Logged
    {
        Element() : Logged(9) {}
    };
    TArray<Element> array;
    array.Resize(2);
    EXPECT_EQ((Journal{"alloc 8/4", "free null", "new 9", "new 9"}), TakeJournal());
    array[0].m_nValue = 0;
    array[1].m_nValue = 1;
    array.Resize(3);
    EXPECT_EQ((Journal{"alloc 12/4", "move 0", "delete -1", "move 1", "delete -1", "free 8", "new 9"}), TakeJournal());
    array.Resize(3);
    EXPECT_EQ(Journal{}, TakeJournal());
    array.Resize(1);
    EXPECT_EQ((Journal{"delete 1", "delete 9"}), TakeJournal());
    EXPECT_EQ(3u, array.Capacity());
}
