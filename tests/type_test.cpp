// A type has one identity in the process, whichever module names it. The operations of its record keep their contract.
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/plugin.h"

#include <cstring>
#include <memory>

// A logged element that has a default value.
struct SNine : Logged
{
    SNine(int nValue = 9) : Logged(nValue) {}
};
KX_DECLARE_TYPE(SNine);
KX_DECLARE_TYPE(TArray<SNine>);
KX_DECLARE_TYPE(TArray<SMatrix>);

using first::STwin;
KX_DECLARE_TYPE(STwin);
STypeID* TypeOfFirstTwin();
STypeID* TypeOfSecondTwin();

// -- Merging

TEST(TypeMerge, TheNameDecides)
{
    using Slots = std::vector<STypeIDData*>;
    STypeIDData a = {0, nullptr, nullptr, [] { return "tests.a"; }, nullptr}, sameAsA = a;
    STypeIDData b = {0, nullptr, nullptr, [] { return "tests.b"; }, nullptr};
    STypeIDData number = {4 << 16, nullptr, nullptr, [] { return typeid(int32*).name(); }, nullptr};
    Slots slots = {nullptr, &a, nullptr, nullptr, &b, &sameAsA, &number, nullptr};
    SharedInitTypeIDs(slots.data(), slots.data() + slots.size());
    auto* pNumber = reinterpret_cast<STypeIDData*>(GetTypeID<int32>());
    EXPECT_EQ((Slots{nullptr, slots[1], nullptr, nullptr, slots[4], slots[1], pNumber, nullptr}), slots);
    EXPECT_TRUE(slots[1] != slots[4] && slots[1] != &a) << "an identity is not a record of a module";

    STypeIDData found = {0, nullptr, a.m_pTypeID, nullptr, nullptr};
    Slots again = {slots[1], &found, slots[4]};
    SharedInitTypeIDs(again.data(), again.data() + again.size());
    EXPECT_EQ((Slots{slots[1], slots[1], slots[4]}), again) << "a record with an identity is not asked for its name";
}

TEST(TypeMerge, ModulesAgree)
{
    const ZMemAllocatorScope scope;
    const ZPlugin plugin(KX_TEST_PLUGIN);
    EXPECT_EQ(GetTypeID<SVertex>(), plugin.RecordOfVertex()->m_pTypeID);
    EXPECT_NE(&TTypeSlot<SVertex>::ms_data, plugin.RecordOfVertex()) << "the modules must not share a record";

    ZDynamicObject object;
    plugin.Fill(object);
    const ZDynamicObject copy = object;
    EXPECT_TRUE(plugin.Reads(copy));
    EXPECT_EQ((SVertex{1, 2, 3}), copy["vertex"].As<SVertex>());
    EXPECT_TRUE(copy["here"] == object["here"]) << "a type that this program does not know";
}

TEST(TypeMerge, SpellingDoesNotCount)
{
    EXPECT_EQ(GetTypeID<STwin>(), TypeOfFirstTwin());
    EXPECT_NE(GetTypeID<STwin>(), TypeOfSecondTwin());
}

TEST(TypeModules, AnotherModuleTakesOver)
{
    const ZMemAllocatorScope scope;
    ZDynamicObject object;
    auto pFirst = std::make_unique<ZPlugin>(KX_TEST_PLUGIN);
    pFirst->Fill(object);
    STypeID* const pOnlyThere = object["here"].Type();
    BreakCounter breaks;
    auto pSecond = std::make_unique<ZPlugin>(KX_TEST_OTHER_PLUGIN);
    EXPECT_EQ(1, breaks.Take()) << "one type has another size there";
    pFirst.reset();
    ASSERT_FALSE(kx::tests::IsModuleLoaded(KX_TEST_PLUGIN));
    ZDynamicObject copy = object;
    EXPECT_TRUE(copy == object && pSecond->Reads(copy) && GetTypeRegistry().Find(pOnlyThere) != nullptr);
    pSecond.reset();
    EXPECT_EQ(nullptr, GetTypeRegistry().Find(pOnlyThere));
    EXPECT_EQ(GetType<SVertex>(), GetTypeRegistry().Find(GetTypeID<SVertex>()));
    EXPECT_EQ(0, breaks.Take());
    object = copy;
    copy = object = ZDynamicObject();
    EXPECT_EQ(4, breaks.Take()) << "nobody can copy or destroy the value";
}

// -- Records

TEST(TypeRecord, IsFilledInWhenTheModuleStarts)
{
    const IType& type = *GetType<TArray<ZDynamicObject>>();
    EXPECT_EQ(24u, type.m_nSize);
    EXPECT_EQ(8u, type.m_nAlignment);
    EXPECT_EQ(GetTypeID<ZDynamicObject>(), type.m_pElementTypeID);

    // The name is part of the block and starts at byte 9.
    STemplateBlock expected = {GetTypeID<ZDynamicObject>(), 1, "TArray"};
    EXPECT_EQ(0, std::memcmp(type.m_pszName - 9, &expected, sizeof(expected)));

    const IType& vertex = *GetType<SVertex>();
    EXPECT_STREQ("SVertex", vertex.m_pszName);
    EXPECT_EQ(12u, vertex.m_nSize);
    for (const IType* pType : {&type, &vertex})
        EXPECT_EQ(48u, pType->m_nArgumentOffset);
    for (const IType* pType : {GetType<TArray<SDynamicObjectKeyValuePair>>(), GetType<SMatrix>()})
        EXPECT_EQ(nullptr, pType->m_pOperations->Equals);
    EXPECT_EQ(nullptr, GetType<SMatrix>()->m_pOperations->Construct);
    EXPECT_EQ(nullptr, GetType<TArray<SMatrix>>()->m_pfnResize);
}

TEST(TypeRegistry, KeepsTheFirstRecord)
{
    ZTypeRegistry& registry = GetTypeRegistry();
    EXPECT_EQ(nullptr, registry.Find(GetTypeID<TArray<ZDynamicObject>>()));
    EXPECT_EQ(nullptr, registry.Find(nullptr));
    IType second = *GetType<SVertex>();
    registry.Register(&second);
    EXPECT_EQ(GetType<SVertex>(), registry.Find(GetTypeID<SVertex>()));

    // The library has its own operations for this type, so entering a record does not affect the values.
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

// Calls the operations of T's record and returns what they write into the journal.
template <class T>
Journal CallOperations(const T& source)
{
    const STypeOperations& operations = *GetType<T>()->m_pOperations;
    alignas(T) char acStorage[sizeof(T)];
    std::memset(acStorage, 0xAB, sizeof(acStorage));
    TakeJournal();
    operations.Construct(nullptr);
    operations.Construct(acStorage);
    operations.Assign(acStorage, &source);
    operations.Assign(acStorage, acStorage);
    operations.Destruct(acStorage);
    operations.CopyConstruct(nullptr, nullptr);
    operations.CopyConstruct(acStorage, &source);
    EXPECT_TRUE(operations.Equals(acStorage, &source));
    operations.Destruct(acStorage);
    return TakeJournal();
}

TEST_F(TypeOperations, ConstructCopyAssignCompareAndDestroy)
{
    TArray<SNine> array = {SNine(1), SNine(2)};
    EXPECT_EQ((Journal{"new 9", "9 = copy 7", "delete 7", "copy 7", "delete 7"}), CallOperations(SNine(7)));
    EXPECT_EQ((Journal{"alloc 8/4", "free null", "copy 1", "copy 2", "delete 1", "delete 2", "free 8", "alloc 8/4",
                       "copy 1", "copy 2", "delete 1", "delete 2", "free 8"}),
              CallOperations(array));
    void* const apHalfNull[3] = {nullptr, &array, &array};
    EXPECT_BREAK(GetType<TArray<SNine>>()->m_pOperations->CopyConstruct(&array, apHalfNull));

    // Each of these equals itself alone. The elements of the last one do not, but nobody compares them within a buffer.
    const SVertex one{1, 0, 0}, odd{NAN, 0, 0};
    const TArray<SVertex> aArrays[] = {{}, {one}, {one, one}, {one, SVertex()}, {odd}};
    for (size_t i = 0; i < 25; ++i)
        EXPECT_EQ(i / 5 == i % 5, GetType<TArray<SVertex>>()->m_pOperations->Equals(&aArrays[i / 5], &aArrays[i % 5]));
}

TEST_F(TypeOperations, WalkAndStoreInAContainer)
{
    const IType& type = *GetType<TArray<SNine>>();
    const SContainerOperations& operations = *type.m_pContainerOperations;
    TArray<SNine> array;
    // The index of the element that SetAt returns, -1 for null.
    const auto set = [&](const auto& value, int nIndex)
    {
        const void* pElement = operations.SetAt(&array, ZVariantRef(value), nIndex);
        return pElement == nullptr ? -1 : static_cast<const SNine*>(pElement) - array.Begin();
    };
    EXPECT_EQ(0, set(SNine(1), 0)) << "appended";
    EXPECT_EQ(3, set(SNine(2), 3)) << "the gap is filled";
    EXPECT_EQ(1, set(SNine(1), 1)) << "assigned";
    EXPECT_EQ(4, set(array[3], 4)) << "an element of the array itself";
    EXPECT_EQ(5u, operations.Size(&array));
    std::vector<int> walk;
    for (void* p = operations.Begin(&array); p != operations.End(&array); p = operations.Next(&array, p))
        walk.push_back(static_cast<SNine*>(p)->m_nValue);
    EXPECT_EQ((std::vector{1, 1, 9, 2, 2}), walk);

    BreakCounter breaks;
    EXPECT_EQ(-1, set(SNine(1), -1));
    EXPECT_EQ(-1, set(1, 1));
    EXPECT_EQ(-1, set(1, 5));
    EXPECT_EQ(walk, Values(array));
    EXPECT_EQ(-1, set(1, 7));
    TArray<SMatrix> matrices;
    const SContainerOperations& withoutDefault = *GetType<TArray<SMatrix>>()->m_pContainerOperations;
    EXPECT_EQ(nullptr, withoutDefault.SetAt(&matrices, ZVariantRef(SMatrix(1)), 2));
    EXPECT_EQ(5, breaks.Take());
    EXPECT_EQ(8u, array.Size()) << "the gap is filled before the break";
    set(array[4], static_cast<int>(array.Capacity()) + 1);
    EXPECT_EQ(2, (array.End() - 1)->m_nValue) << "filling the gap moved the element";

    operations.Reserve(&array, 20);
    operations.Reserve(&array, 10);
    TakeJournal();
    for (const uint64 nSize : {7u, 8u})
        type.m_pfnResize(&array, nSize);
    EXPECT_EQ((Journal{"delete 9", "delete 9", "delete 2", "new 9"}), TakeJournal());
    operations.Clear(&array);
    EXPECT_EQ(0u, operations.Size(&array));
    EXPECT_EQ(20u, array.Capacity());
    for (const uint64 nSize : {21u, 21u})
        type.m_pfnResize(&array, nSize);
    EXPECT_EQ(21u, array.Capacity());
}
