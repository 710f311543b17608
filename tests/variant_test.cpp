// Variants own copies of values of any type, by the operations of the type; Format prints them.
#include "core/values/guid.h"
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/usertypes.h"

KX_TYPE_SLOT(NotBuiltIn, std::vector<int>);

using Variant = JournalTest;

struct SLogged64 : Logged
{
    using Logged::Logged;
    char m_acRest[60];
};
KX_DECLARE_TYPE(SLogged64);

TEST_F(Variant, CopiesAndDestroysByTheOperationsOfTheType)
{
    {
        const SLogged64 five(5), six(6);
        TakeJournal();
        ZVariant variant(five);
        EXPECT_EQ((Journal{"alloc 64/4", "copy 5"}), TakeJournal());
        ZVariant copy(variant);
        EXPECT_EQ((Journal{"alloc 64/4", "copy 5"}), TakeJournal());
        EXPECT_TRUE(copy == variant);
        ZVariant moved(std::move(copy));
        EXPECT_TRUE(copy.Type() == nullptr && copy.Data() == nullptr);
        copy = std::move(moved);
        EXPECT_TRUE(moved.Type() == nullptr && moved.Data() == nullptr);
        EXPECT_EQ(Journal{}, TakeJournal());
        EXPECT_EQ(five.m_nValue, copy.As<SLogged64>().m_nValue);
        TakeJournal();
        copy.Set(GetTypeID<SLogged64>(), &six);
        EXPECT_EQ((Journal{"alloc 64/4", "copy 6", "delete 5", "free 64"}), TakeJournal());
        variant = copy;
        EXPECT_EQ((Journal{"alloc 64/4", "copy 6", "delete 5", "free 64"}), TakeJournal());
        EXPECT_TRUE(copy == variant);
        copy.Set(nullptr, nullptr);
        EXPECT_EQ((Journal{"delete 6", "free 64"}), TakeJournal());
        EXPECT_TRUE(copy == ZVariant());
        EXPECT_FALSE(copy == variant);
        ZVariant& same = variant;
        variant = same;
        variant = std::move(same);
        EXPECT_EQ(Journal{}, TakeJournal());
        EXPECT_EQ(6, static_cast<const SLogged64*>(variant.Data())->m_nValue);
        variant.Set(variant.Type(), variant.Data());
        EXPECT_EQ((Journal{"alloc 64/4", "copy 6", "delete 6", "free 64"}), TakeJournal());
    }
    EXPECT_EQ((Journal{"delete 6", "free 64", "delete 6", "delete 5"}), TakeJournal());
}

TEST_F(Variant, HoldsEveryType)
{
    const ZVariant matrix(SMatrix(2.5f));
    EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(matrix.Data()) % 32);
    EXPECT_EQ(2.5f, ZVariant(matrix).As<SMatrix>().m_afValues[0]);
    EXPECT_FALSE(matrix == matrix) << "it has no ==";

    const ZVariant number(12.5), flag(true), text(ZString("text"));
    const ZVariant aSame[] = {number,
                              flag,
                              text,
                              ZVariant(int8{-1}),
                              ZVariant(UINT64_MAX),
                              ZVariant(SVertex{1, 2, 3}),
                              ZVariant(uint8{1}),
                              ZVariant(int16{1}),
                              ZVariant(uint16{1}),
                              ZVariant(1),
                              ZVariant(1u),
                              ZVariant(int64{1}),
                              ZVariant(1.0f)};
    for (const ZVariant& left : aSame)
    {
        for (const ZVariant& right : aSame)
            EXPECT_EQ(&left == &right, left == right);
        EXPECT_TRUE(left == ZVariant(left));
    }
    EXPECT_EQ(-1, aSame[3].As<int8>());
    EXPECT_EQ(UINT64_MAX, aSame[4].As<uint64>());

    int nLocal = 1;
    const ZVariantRef ref(nLocal);
    nLocal = 2;
    EXPECT_EQ(2, ref.As<int>());

    const TArray<ZDynamicObject> elements = {1, ZDynamicObject().PushBack(2)};
    const ZVariant array(elements);
    EXPECT_TRUE(ZDynamicObject(array)[1][0] == 2);
    const TArray<SDynamicObjectKeyValuePair> properties = {{"key", array}};
    EXPECT_TRUE(ZDynamicObject(ZVariant(properties))["key"][1][0] == 2);
    const ZDynamicObject tree = ZDynamicObject(array).PushBack(ZDynamicObject::Array().PushBack(3));
    EXPECT_TRUE(ZDynamicObject(tree) == tree);
    ZVariant element;
    element.Set(GetTypeID<ZDynamicObject>(), &tree);
    EXPECT_TRUE(*element.As<ZDynamicObject>() == tree);
    EXPECT_EQ(
        42, ZVariant(SDynamicObjectKeyValuePair{"key", 42}).As<SDynamicObjectKeyValuePair>()->m_value.GetValue<int>());
}

TEST_F(Variant, SharesCellsAndGivesThemBack)
{
    {
        // The first few live in the module; later ones take whole chunks of the allocator, and its own only.
        std::vector<ZVariant> numbers;
        for (int i = 0; i < 5000; ++i)
            numbers.emplace_back(float64(i));
        const Journal first = TakeJournal();
        EXPECT_EQ(Journal(first.size(), "alloc 8192/8192"), first);
        EXPECT_LE(first.size(), 5u);
        JournalAllocator other;
        GetMemoryManager()->InstallAllocator(ALLOCATOR_NORMAL, &other);
        ZVariant elsewhere(1.0);
        EXPECT_EQ(Journal{"alloc 8192/8192"}, TakeJournal());
        GetMemoryManager()->InstallAllocator(ALLOCATOR_NORMAL, &m_allocator);
        for (int i = 0; i < 1000; ++i) // past the end of a chunk while that of the other allocator is in the list
            numbers.emplace_back(1.0);
        numbers.resize(5000);
        TakeJournal();
        elsewhere = ZVariant(2.0);
        EXPECT_EQ(Journal{"free 8192"}, TakeJournal()) << "a value lies in a chunk of its own allocator";
        for (int i = 0; i < 5000; ++i)
            EXPECT_EQ(i, numbers[static_cast<size_t>(i)].As<float64>());
        const auto setMost = [&](const ZVariant& value)
        {
            for (size_t i = 0; i < 5000; ++i)
                numbers[i] = i % 10 == 0 ? numbers[i] : value;
        };
        setMost(ZVariant());
        TakeJournal();
        setMost(ZVariant(2.0));
        EXPECT_EQ(Journal{}, TakeJournal()) << "the free cells of all chunks are used again";
        numbers.erase(numbers.begin(), numbers.begin() + 4990);
        TakeJournal();
    }
    EXPECT_LE(TakeJournal().size(), 1u);
}

TEST_F(Variant, BreaksOnAWrongType)
{
    const ZVariant number(1.5), nothing;
    EXPECT_BREAK(number.As<int>());
    EXPECT_BREAK(nothing.As<int>());
    EXPECT_FALSE(ZObjectRef::CanConvert(nullptr, nullptr));

    const std::vector<int> unknown;
    EXPECT_BREAK(ZVariant().Set(GetTypeID<int>(), nullptr));
    BreakCounter breaks;
    ZVariant variant(1);
    variant.Set(GetTypeID<std::vector<int>>(), &unknown);
    EXPECT_EQ(1, breaks.Take());
    EXPECT_EQ(nullptr, variant.Type());
}

// -- Format

using Format = JournalTest;

// Unpaired braces are in the corpus of the fuzz program.
TEST_F(Format, ReplacesWhatHasAText)
{
    const auto format = [](const ZString& text)
    { return std::string(std::string_view(ZString::Format(text, 7, ZString("seven"), true, 12.5, SVertex()))); };
    const std::pair<ZString, const char*> aTexts[] = {
        {ZString(""), ""},
        {ZString("{1} {0}{0} {2} {3}."), "seven 77 true 12.5."},
        {ZString("{4} {5} {8} {9} {/} {:}"), "{4} {5} {8} {9} {/} {:}"},
        {ZString("{{0}} }} {{"), "{0} } {"},
        {ZString("{00} {} { 0} {0 } }0}"), "{00} {} { 0} {0 } }0}"},
        {ZString("a\0{0}b"), "a"},
    };
    for (const auto& [text, expected] : aTexts)
        EXPECT_STREQ(expected, format(text).c_str()) << expected;
    EXPECT_EQ(std::string("a\0"
                          "7b",
                          4),
              format("a\0{0}b"));
}

TEST_F(Format, PrintsEveryType)
{
    EXPECT_TRUE(ZString::Format("{0} {1} {2} {3}", int8{-128}, uint8{255}, int16{-32768}, uint16{65535})
                == "-128 255 -32768 65535");
    EXPECT_TRUE(ZString::Format("{0} {1} {2} {3}", INT32_MIN, UINT32_MAX, INT64_MIN, UINT64_MAX)
                == "-2147483648 4294967295 -9223372036854775808 18446744073709551615");
    EXPECT_TRUE(ZString::Format("{0} {1} {2} {3} {4}", 0.1f, 0.1, -1e300, 2.0, false) == "0.1 0.1 -1e+300 2 false");
    EXPECT_TRUE(ZString::Format("{0} {1} {2}", "literal", ZGuid(), ZDynamicObject(5))
                == "literal 00000000-0000-0000-0000-000000000000 5");
    EXPECT_TRUE(ZString::Format("{0}{1}{2}{3}{4}{5}{6}{7}", ZVariantRef(), 1, 2, 3, 4, 5, 6, ZString("e\0nd"))
                == ZString("{0}123456e\0nd"));
    TakeJournal();
    {
        const ZString text = ZString::Format("{0} and some more text", 1);
    }
    EXPECT_EQ((Journal{"alloc 21/1", "free 21"}), TakeJournal());
    EXPECT_TRUE(ZString::Format("").IsEmpty());
    EXPECT_EQ(Journal{}, TakeJournal());

    // A string that claims 2^30 characters: twice that is too long, before one of them is read.
    ZString huge = "x";
    const uint32 nWord = 0xC0000000;
    std::memcpy(static_cast<void*>(&huge), &nWord, sizeof(nWord));
    BreakCounter breaks;
    EXPECT_TRUE(ZString::Format("{0}{0}", huge).IsEmpty());
    EXPECT_EQ(1, breaks.Take());
}
