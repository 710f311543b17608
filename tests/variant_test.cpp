// A variant owns a copy of a value of any type, through the operations of the type. Format prints values.
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
    const SLogged64 five(5), six(6);
    TakeJournal();
    {
        ZVariant variant(five);
        ZVariant copy(variant);
        EXPECT_EQ((Journal{"alloc 64/4", "copy 5", "alloc 64/4", "copy 5"}), TakeJournal());
        EXPECT_TRUE(copy == variant);
        ZVariant moved(std::move(copy));
        EXPECT_TRUE(copy.Type() == nullptr && copy.Data() == nullptr);
        copy = std::move(moved);
        EXPECT_TRUE(moved.Type() == nullptr && moved.Data() == nullptr);
        copy.Set(GetTypeID<SLogged64>(), &six);
        EXPECT_FALSE(copy == variant);
        variant = copy;
        EXPECT_EQ(
            (Journal{"alloc 64/4", "copy 6", "delete 5", "free 64", "alloc 64/4", "copy 6", "delete 5", "free 64"}),
            TakeJournal());
        copy.Set(nullptr, nullptr);
        EXPECT_TRUE(copy == ZVariant() && !(copy == variant));
        ZVariant& same = variant;
        variant = same;
        variant = std::move(same);
        variant.Set(variant.Type(), variant.Data());
    }
    EXPECT_EQ((Journal{"delete 6", "free 64", "alloc 64/4", "copy 6", "delete 6", "free 64", "delete 6", "free 64"}),
              TakeJournal());
}

TEST_F(Variant, HoldsEveryType)
{
    const ZVariant matrix(SMatrix(2.5f));
    EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(matrix.Data()) % 32);
    EXPECT_EQ(2.5f, ZVariant(matrix).As<SMatrix>().m_afValues[0]);
    EXPECT_FALSE(matrix == matrix) << "it has no ==";

    const TArray<ZDynamicObject> elements = {1, ZDynamicObject().PushBack(2)};
    const TArray<SDynamicObjectKeyValuePair> properties = {{"key", ZVariant(elements)}};
    const ZVariant aDifferent[] = {
        int8{-1}, UINT64_MAX, 12.5,     true, ZString("text"), SVertex{1, 2, 3}, uint8{1}, int16{1}, uint16{1},
        1,        1u,         int64{1}, 1.0f, elements,        properties};
    for (const ZVariant& left : aDifferent)
    {
        for (const ZVariant& right : aDifferent)
            EXPECT_EQ(&left == &right, left == right);
        EXPECT_TRUE(left == ZVariant(left));
    }
    EXPECT_EQ(-1, aDifferent[0].As<int8>());
    EXPECT_EQ(UINT64_MAX, aDifferent[1].As<uint64>());
    const ZDynamicObject tree{ZVariant(properties)};
    EXPECT_TRUE(tree["key"][1][0] == 2);

    int nLocal = 1;
    const ZVariantRef ref(nLocal);
    nLocal = 2;
    EXPECT_EQ(2, ref.As<int>());

    // The elements of a tree can be values of their own.
    ZVariant element;
    element.Set(GetTypeID<ZDynamicObject>(), &tree);
    EXPECT_TRUE(*element.As<ZDynamicObject>() == tree);
    const ZVariant pair(SDynamicObjectKeyValuePair{"key", 42});
    EXPECT_TRUE(pair.As<SDynamicObjectKeyValuePair>()->m_value == 42);
}

TEST_F(Variant, SharesCellsAndGivesThemBack)
{
    {
        // The first chunk comes from the process heap, the others from the current allocator.
        std::vector<ZVariant> numbers;
        for (int i = 0; i < 5000; ++i)
            numbers.emplace_back(float64(i));
        EXPECT_EQ(Journal(2, "alloc 16384/16"), TakeJournal());
        JournalAllocator other;
        GetMemoryManager()->InstallAllocator(ALLOCATOR_NORMAL, &other);
        ZVariant elsewhere(1.0);
        EXPECT_EQ(Journal{"alloc 16384/16"}, TakeJournal());
        GetMemoryManager()->InstallAllocator(ALLOCATOR_NORMAL, &m_allocator);
        // Fills a chunk while the list also has a chunk of the other allocator.
        numbers.resize(7000, ZVariant(1.0));
        numbers.resize(5000);
        TakeJournal();
        elsewhere = ZVariant(2.0);
        EXPECT_EQ(Journal{"free 16384"}, TakeJournal()) << "a value is in a chunk of its own allocator";
        for (size_t i = 0; i < 5000; ++i)
        {
            EXPECT_EQ(float64(i), numbers[i].As<float64>());
            if (i % 10 != 0)
                numbers[i] = ZVariant();
        }
        TakeJournal();
        for (ZVariant& number : numbers)
            number = ZVariant(2.0);
        EXPECT_EQ(Journal{}, TakeJournal()) << "the free cells of all chunks are used again";
        numbers.erase(numbers.begin(), numbers.end() - 1);
        TakeJournal();
    }
    EXPECT_LE(TakeJournal().size(), 1u);
}

TEST_F(Variant, BreaksOnAWrongType)
{
    EXPECT_BREAK(ZVariant(1.5).As<int>());
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

// The corpus of the fuzz program has unpaired braces.
TEST_F(Format, ReplacesPrintableArguments)
{
    const ZString format = "{1} {0}{0} {2} {3}. {{0}} }} {{ {4}{5}{8}{9}{/}{:} {00} {} { 0} {0 } }0}";
    EXPECT_TRUE(ZString::Format(format, 7, ZString("seven"), true, 12.5, SVertex())
                == "seven 77 true 12.5. {0} } { {4}{5}{8}{9}{/}{:} {00} {} { 0} {0 } }0}");
    EXPECT_TRUE(ZString::Format("a\0{0}{1}", ZVariantRef(), ZString("e\0nd")) == ZString("a\0{0}e\0nd"));
}

TEST_F(Format, PrintsEveryType)
{
    EXPECT_TRUE(ZString::Format("{0} {1} {2} {3} {4} {5} {6} {7}", int8{-128}, uint8{255}, int16{-32768}, uint16{65535},
                                INT32_MIN, UINT32_MAX, INT64_MIN, UINT64_MAX)
                == "-128 255 -32768 65535 -2147483648 4294967295 -9223372036854775808 18446744073709551615");
    EXPECT_TRUE(ZString::Format("{0} {1} {2} {3} {4}", 0.1f, 0.1, -1e300, 2.0, false) == "0.1 0.1 -1e+300 2 false");
    EXPECT_TRUE(ZString::Format("{0} {1} {2}", "literal", ZGuid(), ZDynamicObject(5))
                == "literal 00000000-0000-0000-0000-000000000000 5");
    TakeJournal();
    const std::string_view view("a view of", 6);
    EXPECT_TRUE(ZString::Format("{0} {1} {2} {3} {4} {5} {6}{7}", std::string("text"), view, -5LL, 5ULL, std::byte{200},
                                std::errc{-1}, view, 8)
                == "text a view -5 5 200 -1 a view8");
    EXPECT_EQ((Journal{"alloc 32/1", "free 32"}), TakeJournal());
    EXPECT_FALSE(ZString::Format("{0} and some more text", 1).IsEmpty() || !ZString::Format("").IsEmpty());
    EXPECT_EQ((Journal{"alloc 21/1", "free 21"}), TakeJournal());

    // A string that claims 2^30 characters: two of these are too long, which is found before any of them is read.
    ZString huge = "x";
    const uint32 nWord = 0xC0000000;
    std::memcpy(static_cast<void*>(&huge), &nWord, sizeof(nWord));
    BreakCounter breaks;
    EXPECT_TRUE(ZString::Format("{0}{0}", huge).IsEmpty());
    EXPECT_EQ(1, breaks.Take());
}
