// The stack strings: every operation truncates by its own rule, at every capacity, and writes no byte outside of the
// buffer. There is no normal allocator during these tests, so none of them can have used it.
#include "core/strings/stack_string.h"
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/stringmodel.h"

#include <bit>

template class ZStackString<1>;

TEST(StackStrings, AgreeWithAModelAtEveryCapacity)
{
    ForEachSeed(1,
                [](auto below)
                {
                    for (uint32 nCapacity = 1; nCapacity < 3000; nCapacity += nCapacity < 50 ? 1 : nCapacity / 4)
                    {
                        ModelledString string(nCapacity);
                        for (int nStep = 0; nStep < 1000; ++nStep)
                        {
                            string.Step(below);
                            ASSERT_TRUE(string.Agrees()) << "capacity " << nCapacity << ", step " << nStep;
                        }
                    }
                });
}

TEST(StackStrings, FormatHasNoLimitOfItsOwn)
{
    const std::string filler(400000, 'y');
    for (const uint32 nCapacity : {5000u, 250000u, 400000u})
    {
        std::string model(nCapacity / 9, 'x');
        GuardedString string(nCapacity);
        string.append(model);
        EXPECT_EQ(string.get(), string.format("<%s>", string.get()));
        model += '<' + model + '>';

        // The filler is cut. The string itself can be an argument only if its rest is small enough for a temporary.
        const char* pszOwn = nCapacity < 400000 ? string.get() : "";
        model = (model + '<' + pszOwn + '>' + filler).substr(0, nCapacity - 1);
        EXPECT_EQ(string.get(), string.format("<%s>%s", pszOwn, filler.c_str()));
        EXPECT_TRUE(string.Intact());
        EXPECT_EQ(model, string.get());
    }
}

TEST(StackStrings, FloatsAreCutNotRounded)
{
    std::mt19937 random(20261205);
    for (uint32 i = 0; i < 40000; ++i)
    {
        // Every sign and exponent in turn, with the limits of the mantissa among the random ones.
        const uint32 nMantissa = i % 17 == 0 ? 0 : i % 17 == 1 ? 0x7FFFFF : random() & 0x7FFFFF;
        const auto value = std::bit_cast<float>(i % 512 << 23 | nMantissa);
        const char cFormat = i / 512 % 2 == 0 ? 'f' : 'e';
        const int nPrecision = i % 7 == 0 ? static_cast<int>(random() % 170) - 10 : 6;
        ZStackString<256> string;
        string.appendFloat(value, cFormat, nPrecision);
        ASSERT_EQ(ModelFloat(value, cFormat, nPrecision), string.get()) << cFormat << nPrecision;
    }

    BreakCounter breaks;
    ZStackString<8> string;
    EXPECT_STREQ("1.5", string.appendFloat(1.5f, 'g', 1).get());
    EXPECT_EQ(1, breaks.Take());
}

// A string whose capacity is known does by functions of its own what the base class does.
TEST(StackStrings, DoTheSameThroughTheBaseClass)
{
    const auto agree = [](auto operation)
    {
        for (uint64 nOld = 0; nOld < 8; ++nOld)
        {
            ZStackString<8> known, other;
            known.append(std::string_view("abcdefg", nOld));
            ZStackStringBase& unknown = other = known;
            operation(known);
            operation(unknown);
            EXPECT_TRUE(known.Validate());
            EXPECT_EQ(std::string_view(unknown), std::string_view(known)) << nOld;
            EXPECT_STREQ(unknown.get(), known.get());
        }
    };
    agree([](auto& string) { string.appendChar('#'); });
    agree([](auto& string) { string.clear(); });
    for (uint64 nNew = 0; nNew < 10; ++nNew)
    {
        const std::string text("123456789", nNew);
        agree([&](auto& string) { string.append(text); });
        agree([&](auto& string) { string.append(text.c_str()); });
        agree([&](auto& string) { string.prepend(text); });
        agree([&](auto& string) { string.prepend(text.c_str()); });
        agree([&](auto& string) { string.prepend(string.get() + string.size() / 2); });
    }
}

TEST(StackStrings, IgnoreNullEmptyAndRefusedText)
{
    ZStackString<8> string;
    const char* volatile pszNull = nullptr;
    string.append("ab");
    string.append(pszNull);
    string.prepend(pszNull);
    string.format(pszNull, 0);
    string.append(std::string_view());
    string.prepend(std::string_view());
#if !defined(_WIN32)
    string.format("c%lc", wint_t{0xD800}); // printf refuses this character
#endif
    EXPECT_EQ("ab", std::string_view(string));
}

TEST(StackStrings, CopyTheirTextAndNoByteMore)
{
    using String = ZStackString<8>;
    String source;
    source.append("text");
    source.clear();
    source.append("no");

    // The bytes past the terminator keep their values.
    String target;
    target.append("#######");
    target = source;
    EXPECT_EQ("no", std::string_view(target));
    EXPECT_EQ(std::string_view("no\0####\0", 8), std::string_view(target.get(), 8));
    alignas(String) char acMemory[sizeof(String)];
    std::memset(acMemory, '#', sizeof(acMemory));
    char* volatile pMemory = acMemory;
    String* volatile pNew = new (pMemory) String;
    EXPECT_TRUE(pNew->Validate() && pNew->size() == 0);
    pNew = new (pMemory) String(source);
    EXPECT_EQ("no", std::string_view(*pNew));
    EXPECT_EQ(std::string_view("no\0#####", 8), std::string_view(pNew->get(), 8));
}
