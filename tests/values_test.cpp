// The parsers of values: what they accept, to the character, and that they leave alone what they refuse.
#include "core/containers/hashset.h"
#include "core/containers/set.h"
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"

#include <cmath>
#include <iomanip>
#include <random>
#include <set>
#include <sstream>
#include <tuple>
#include <unordered_set>

// As some system headers do.
#define major(device) static_cast<int>((device) >> 8)
#define minor(device) static_cast<int>((device)&0xFF)
#include "tests/support/valuemodel.h"

namespace
{
using GuidValues = JournalTest;

constexpr ZGuid kGuid(0x97f879bdbe59447b, 0xae395c54e0e67d22);
constexpr std::string_view kGuidText = "97f879bd-be59-447b-ae39-5c54e0e67d22";

// Calls function with every text that differs from the given one in one place: cut there, one of the 256 bytes in the
// place of the old one, or put in front of it.
template <class TFunction>
void ForEachNeighbour(std::string_view text, TFunction function)
{
    for (size_t i = 0; i <= text.size(); ++i)
    {
        const std::string head(text.substr(0, i));
        function(head);
        for (int c = 0; c < 256; ++c)
        {
            function((head + static_cast<char>(c)).append(text.substr(i)));
            if (i < text.size())
                function((head + static_cast<char>(c)).append(text.substr(i + 1)));
        }
    }
}
} // namespace

// ---- ZGuid.

static_assert(kGuid != ZGuid::Empty && ZGuid::Empty < kGuid && ZGuid() == ZGuid::Empty);
static_assert(ZGuid(1, 0) > ZGuid(0, ~0ull) && ZGuid(1ull << 63, 0) > ZGuid(1, 5) && ZGuid(0, 256) > ZGuid(0, 255));
static_assert(!std::is_convertible_v<ZString, ZGuid>, "a text that is no GUID would become one unnoticed");

TEST_F(GuidValues, ReadWhatIsAGuidToTheCharacter)
{
    for (const std::string_view text : {kGuidText, std::string_view("ABCDEFab-cdef-FEDC-BAfe-dcba01234567")})
    {
        EXPECT_TRUE(AgreesOnGuid(text));
        ForEachNeighbour(text, [](const std::string& other) { ASSERT_TRUE(AgreesOnGuid(other)) << other; });
    }

    ZGuid guid(kGuid);
    EXPECT_FALSE(guid.FromString(ZString(static_cast<const char*>(nullptr))));
    EXPECT_FALSE(guid.FromString(std::string_view()));
    EXPECT_EQ(kGuid, guid);
    EXPECT_EQ(ZGuid::Empty, ZGuid("97f879bd-be59-447b-ae39-5c54e0e67d2"));
}

TEST_F(GuidValues, AllocateForTheirTextAlone)
{
    EXPECT_EQ(kGuid, ZGuid("97f879bd-be59-447b-ae39-5c54e0e67d22"));
    std::ostringstream stream;
    stream << std::left << std::setfill('.') << std::setw(38) << kGuid;
    EXPECT_EQ(std::string(kGuidText) + "..", stream.str());
    EXPECT_EQ(Journal{}, TakeJournal());
    EXPECT_EQ(kGuidText, std::string_view(kGuid.ToString()));
    EXPECT_EQ((Journal{"alloc 37/1", "free 37"}), TakeJournal());
}

TEST_F(GuidValues, AreKeysInTheOrderOfTheirTexts)
{
    std::mt19937_64 random(20261121);
    std::vector<ZGuid> guids;
    for (int i = 0; i < 300; ++i)
    {
        // Few values for a word, so that both words, and each byte of them, decide now and then.
        const auto word = [&] { return (random() % 3 == 0 ? random() : random() % 3) << 8 * (random() % 8); };
        const uint64 nFirst = word();
        guids.emplace_back(nFirst, word());
    }
    TSet<ZGuid> ordered;
    THashSet<ZGuid> hashed;
    std::unordered_set<ZGuid> standard;
    std::set<std::string> texts;
    for (const ZGuid& guid : guids)
    {
        ordered.Insert(guid);
        hashed.Insert(guid);
        standard.insert(guid);
        texts.insert(guid.ToString().ToCString());
        ASSERT_TRUE(AgreesOnGuid(std::string_view(guid.ToString())));
    }
    EXPECT_TRUE(std::equal(ordered.begin(), ordered.end(), texts.begin(), texts.end(),
                           [](const ZGuid& guid, const std::string& text) { return guid.ToString() == text; }));
    EXPECT_EQ(texts.size(), hashed.Size());
    EXPECT_EQ(texts.size(), standard.size());
    EXPECT_TRUE(std::all_of(guids.begin(), guids.end(), [&](const ZGuid& guid) { return hashed.Contains(guid); }));
}

// ---- Version.

TEST(Versions, ReadWhatIsAVersionToTheCharacter)
{
    for (const std::string_view text :
         {" \v\f\r\t\n2.1", "2.1.3.4.5", "255.255.65535.4294967295", "0.0.0.42949672950", "18446744073709551617.0"})
    {
        EXPECT_TRUE(AgreesOnVersion(text)) << text;
        ForEachNeighbour(text, [](const std::string& other) { ASSERT_TRUE(AgreesOnVersion(other)) << other; });
    }

    Version actual;
    actual.abs = 1;
    EXPECT_FALSE(version::FromString(nullptr, &actual));
    EXPECT_EQ(0u, actual.abs);
}

TEST(Versions, AreOrderedByTheirParts)
{
    static_assert(Version{{2, 1, 0, 0}} > Version{{1, 2, 0, 0}} && Version{{1, 2, 3, 4}} == Version{{1, 2, 3, 4}});
    std::mt19937 random(20261121);
    for (int i = 0; i < 5000; ++i)
    {
        const auto part = [&](uint64 nMax) { return random() % 3 == 0 ? nMax - random() % 2 : random() % 2; };
        const auto any = [&]
        {
            Version v;
            v.major = static_cast<uint8>(part(255));
            v.minor = static_cast<uint8>(part(255));
            v.patch = static_cast<uint16>(part(65535));
            v.build = static_cast<uint32>(part(4294967295));
            return v;
        };
        const auto parts = [](const Version& v) { return std::tuple(v.major, v.minor, v.patch, v.build); };
        const Version first = any();
        const Version second = any();
        ASSERT_EQ(parts(first) <=> parts(second), first <=> second);
        ASSERT_EQ(parts(first) == parts(second), first == second);
        ASSERT_EQ(first == second, first.abs == second.abs);
    }
}

// ---- ZLineReader.

TEST(LineReaders, AgreeWithAModelOnEveryShortText)
{
    const auto all = [](uint64 n) { return n - 1; };
    const auto one = [](uint64) { return uint64{0}; };
    for (uint32 nLength = 0; nLength <= 7; ++nLength)
    {
        const auto nTexts = static_cast<uint32>(std::pow(4, nLength));
        for (uint32 nText = 0; nText < nTexts; ++nText)
        {
            std::string text;
            for (uint32 i = 0, n = nText; i < nLength; ++i, n /= 4)
                text += std::string_view("\n\r\0\xFF", 4)[n % 4];
            for (uint32 nSize = 3; nSize <= nLength + 2 || nSize == 3; ++nSize)
            {
                ASSERT_TRUE(AgreesOnLines(text, nSize, all)) << testing::PrintToString(text) << nSize;
                ASSERT_TRUE(AgreesOnLines(text, nSize, one)) << testing::PrintToString(text) << nSize;
            }
        }
    }
}

TEST(LineReaders, AgreeWithAModelAtEveryBufferSize)
{
    ForEachSeed(1,
                [](auto below)
                {
                    for (uint32 nSize = 3; nSize < 400; ++nSize)
                    {
                        std::string text;
                        const uint64 nLines = below(60);
                        for (uint64 i = 0; i < nLines; ++i)
                        {
                            // Lengths around one and two pieces.
                            const uint64 nLength = below(3) * (nSize - 1) + below(5);
                            text.append(nLength - std::min<uint64>(nLength, below(5)), "x\xFF\r"[below(3)]);
                            text += below(2) == 0 ? "\r\n" : "\n";
                        }
                        text.append(below(3), "x\r\n\0"[below(4)]);
                        ASSERT_TRUE(AgreesOnLines(text, nSize, below)) << nSize;
                    }
                });
}

TEST(LineReaders, HandOutALineAsSoonAsItIsThere)
{
    // As a terminal does: a line for each call, and half of the last one.
    static const char* const kTyped[] = {"one\n", "two\r\n", "three", "", "never asked\n"};
    const auto read = [](uint64 nUser, char* pTarget, uint32 nSize)
    {
        const char* pszTyped = kTyped[(*reinterpret_cast<int*>(nUser))++];
        EXPECT_LT(std::strlen(pszTyped), nSize);
        std::memcpy(pTarget, pszTyped, std::strlen(pszTyped));
        return static_cast<int>(std::strlen(pszTyped));
    };
    int nCalls = 0;
    char acBuffer[64];
    ZLineReader reader(read, reinterpret_cast<uint64>(&nCalls), acBuffer, sizeof(acBuffer));
    EXPECT_EQ(0, nCalls);
    const int nLast = INT32_MAX; // as if there had been so many lines
    std::memcpy(reinterpret_cast<char*>(&reader) + 48, &nLast, sizeof(nLast));
    char* pLine = nullptr;
    uint32 nLength = 0;
    for (const auto& [nExpectedCalls, pszExpected] : {std::pair(1, "one"), {2, "two"}, {4, "three"}, {4, nullptr}})
    {
        EXPECT_EQ(pszExpected != nullptr ? nLast : 0, reader.GetNextLine(&pLine, &nLength));
        EXPECT_STREQ(pszExpected, pLine);
        EXPECT_EQ(nExpectedCalls, nCalls);
    }
}

TEST(LineReaders, BreakWhereTheyCannotRead)
{
    const ZLineReader::ReadFunction pOverrun = [](uint64, char* pTarget, uint32 nSize)
    {
        std::memset(pTarget, 'x', nSize);
        return static_cast<int>(nSize + 1);
    };
    const ZLineReader::ReadFunction pFailed = [](uint64, char*, uint32) { return -1; };
    char acBuffer[16] = "untouched";
    char* pLine = acBuffer;
    uint32 nLength = 1;
    EXPECT_BREAK(ZLineReader(pOverrun, 0, acBuffer, 2));
    EXPECT_BREAK(ZLineReader(pOverrun, 0, acBuffer, 8).GetNextLine(&pLine, &nLength));

    BreakCounter breaks;
    for (const uint32 nSize : {0u, 1u, 2u, 3u, 4u})
    {
        ZLineReader reader(nSize == 3 ? nullptr : pOverrun, 0, nSize == 4 ? nullptr : acBuffer, nSize);
        EXPECT_EQ(1, breaks.Take());
        EXPECT_EQ(0, reader.GetNextLine(&pLine, &nLength));
        EXPECT_EQ(nullptr, pLine);
        EXPECT_STREQ("untouched", acBuffer);
    }

    ZLineReader overrun(pOverrun, 0, acBuffer, 8);
    EXPECT_EQ(1, overrun.GetNextLine(&pLine, &nLength));
    EXPECT_EQ(1, breaks.Take());
    EXPECT_STREQ("xxxxxxx", pLine);

    ZLineReader failed(pFailed, 0, acBuffer, UINT32_MAX);
    EXPECT_EQ(0, failed.GetNextLine(&pLine, &nLength));
    EXPECT_EQ(0, breaks.Take());
}
