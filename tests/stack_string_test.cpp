// The stack strings: every operation by its own rule of truncation, at every capacity, never a byte outside of the
// buffer. No normal allocator stands while these tests run, so none of them can have used it.
#include "core/strings/stack_string.h"
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/stringmodel.h"

#include <bit>
#include <random>

template class ZStackString<1>;

TEST(StackStrings, AgreeWithAModelAtEveryCapacity)
{
    ForEachSeed(1,
                [](auto below)
                {
                    for (uint32 nRun = 0; nRun < 400; ++nRun)
                    {
                        const uint32 nCapacity = nRun % 8 == 7 ? 1 + static_cast<uint32>(below(3000)) : 1 + nRun / 8;
                        ModelledString string(nCapacity);
                        for (int nStep = 0; nStep < 200; ++nStep)
                        {
                            const std::string before = string.Model();
                            string.Step(below);
                            ASSERT_TRUE(string.Agrees()) << "run " << nRun << ", step " << nStep << ", capacity "
                                                         << nCapacity << ", from \"" << before << '"';
                        }
                    }
                });
}

TEST(StackStrings, FormatHasNoLimitOfItsOwn)
{
    for (const uint32 nCapacity : {5000u, 100000u, 250000u})
    {
        // The second text is cut, and the string itself is in the part that stays.
        GuardedString string(nCapacity);
        std::string model(nCapacity / 9, 'x');
        string.append(model);
        for (const uint32 nFiller : {1u, nCapacity})
        {
            const std::string filler(nFiller, 'y');
            ASSERT_EQ(string.get(), string.format("<%s>%s", string.get(), filler.c_str()));
            model = (model + '<' + model + '>' + filler).substr(0, nCapacity - 1);
            ASSERT_TRUE(string.Intact());
            ASSERT_EQ(model, string.get());
        }
    }

    // More room than the temporary of a cut text may take.
    const std::string text(400000, 'y');
    GuardedString string(300000);
    string.append("a");
    EXPECT_EQ(string.get(), string.format("%s", text.c_str()));
    EXPECT_TRUE(string.Intact());
    EXPECT_EQ('a' + text.substr(0, 299998), string.get());

    // printf gives up on a character that is none.
    GuardedString refused(16);
    refused.append("old");
    EXPECT_EQ(refused.get(), refused.format("new%lc", wint_t{0xD800}));
    EXPECT_TRUE(refused.Intact());
    EXPECT_STREQ("old", refused.get());
}

TEST(StackStrings, FloatsAreCutNotRounded)
{
    std::mt19937 random(20261205);
    for (uint32 i = 0; i < 40000; ++i)
    {
        // Every exponent in turn, with the mantissa's ends among the random ones.
        const uint32 nMantissa = i % 16 == 0 ? 0 : i % 16 == 1 ? 0x7FFFFF : random() & 0x7FFFFF;
        const float value =
            std::bit_cast<float>(static_cast<uint32>(random() & 0x80000000) | i % 256 << 23 | nMantissa);
        const char cFormat = i / 256 % 2 == 0 ? 'f' : 'e';
        const int nPrecision = i % 7 == 0 ? static_cast<int>(random() % 170) - 10 : 6;
        ZStackString<256> string;
        string.appendFloat(value, cFormat, nPrecision);
        ASSERT_EQ(ModelFloat(value, cFormat, nPrecision), string.get()) << cFormat << nPrecision;
    }

    ZStackString<256> string;
    string.appendFloat(INFINITY, 'f', 2).appendFloat(-INFINITY, 'e', 2).appendFloat(-NAN, 'f', 2);
    EXPECT_STREQ("inf-infnan", string.get());
    EXPECT_BREAK(string.appendFloat(1.5f, 'g', 1));
    BreakCounter breaks;
    string.clear();
    string.appendFloat(1.5f, 'g', 1);
    EXPECT_EQ(1, breaks.Take());
    EXPECT_STREQ("1.5", string.get());
}

TEST(StackStrings, TakeWhatIsNoText)
{
    ZStackString<8> string;
    const char* volatile pszNull = nullptr;
    string.append("ab");
    string.append(pszNull);
    string.prepend(pszNull);
    string.format(pszNull, 0);
    string.append(std::string_view());
    string.prepend(std::string_view());
    EXPECT_STREQ("ab", string.get());

    // NUL counts as a character.
    string.appendChar('\0').appendChar('c');
    EXPECT_EQ(std::string_view("ab\0c", 4), std::string_view(string));
    string.prepend(std::string_view(string));
    EXPECT_EQ(std::string_view("ab\0cab\0", 7), std::string_view(string));
}

TEST(StackStrings, CopyTheirText)
{
    ZStackString<8> first;
    first.append("text");
    ZStackString<8> copy(first);
    first.clear();
    first.append("no");
    EXPECT_STREQ("text", copy.get());
    copy = first;
    copy = static_cast<const ZStackString<8>&>(copy);
    EXPECT_EQ("no", std::string_view(copy));
    EXPECT_TRUE(copy.Validate());

    // A new one is empty, whatever lay in its place.
    alignas(ZStackString<8>) char acMemory[sizeof(ZStackString<8>)];
    std::memset(acMemory, '#', sizeof(acMemory));
    char* volatile pMemory = acMemory;
    ZStackString<8>* volatile pNew = new (pMemory) ZStackString<8>;
    EXPECT_TRUE(pNew->Validate());
}
