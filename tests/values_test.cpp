// The parsers of values: what they accept, to the character, and that they change nothing when they refuse.
#include "core/containers/hashset.h"
#include "core/values/linesource.h"
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"

#include <cstring>
#include <gmock/gmock.h>
#include <iomanip>
#include <sstream>
#include <tuple>
#include <unistd.h>
#include <unordered_set>
#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#endif

// Some system headers define these macros.
#define major(device) static_cast<int>((device) >> 8)
#define minor(device) static_cast<int>((device)&0xFF)
#include "tests/support/valuemodel.h"

namespace
{
using GuidValues = JournalTest;

constexpr ZGuid kGuid(0x97f879bdbe59447b, 0xae395c54e0e67d22);
constexpr std::string_view kGuidText = "97f879bd-be59-447b-ae39-5c54e0e67d22";

// Calls agrees with every text that differs from the given one in one place: cut there, one character replaced by any
// of the 256, or one inserted.
template <class TAgrees>
void ExpectOfNeighbours(std::string_view text, TAgrees agrees)
{
    for (size_t i = 0; i <= text.size(); ++i)
    {
        const std::string head(text.substr(0, i));
        ASSERT_TRUE(agrees(head)) << head;
        for (size_t n = 0; n < 512; ++n)
        {
            const std::string tail(text.substr(std::min(i + n / 256, text.size())));
            const std::string other = head + static_cast<char>(n) + tail;
            ASSERT_TRUE(agrees(other)) << other;
        }
    }
}

// Compares every two elements of an ascending sequence.
template <class T>
void ExpectAscending(const std::vector<T>& values)
{
    for (size_t i = 0; i < values.size(); ++i)
    {
        for (size_t j = 0; j < values.size(); ++j)
        {
            ASSERT_EQ(i <=> j, values[i] <=> values[j]) << i << ' ' << j;
            ASSERT_EQ(i == j, values[i] == values[j]) << i << ' ' << j;
        }
    }
}
} // namespace

// ---- ZGuid.

static_assert(ZGuid() == ZGuid::Empty && ZGuid(1ull << 63, 0) > ZGuid(1, 5));
static_assert(!std::is_convertible_v<ZString, ZGuid>, "a string that is no GUID would become one unnoticed");

TEST_F(GuidValues, ReadWhatIsAGuidToTheCharacter)
{
    ExpectOfNeighbours(kGuidText, AgreesOnGuid);
    ExpectOfNeighbours("ABCDEFab-cdef-FEDC-BAfe-dcba01234567", AgreesOnGuid);

    ZGuid guid(kGuid);
    const char* pszNull = nullptr;
    EXPECT_FALSE(guid.FromString(ZString()) || guid.FromString(std::string_view()) || guid.FromString(pszNull));
    EXPECT_EQ(kGuid, guid);
    EXPECT_TRUE(guid.FromString(kGuidText.data()) && guid.FromString(std::string(kGuidText)));
    EXPECT_EQ(ZGuid::Empty, ZGuid("97f879bd-be59-447b-ae39-5c54e0e67d22\0"));
    EXPECT_TRUE(ZGuid(std::string_view(kGuidText)) == kGuid && ZGuid(std::string_view()) == ZGuid::Empty);
}

TEST_F(GuidValues, AllocateForTheirTextAlone)
{
    EXPECT_EQ(kGuid, ZGuid("97f879bd-be59-447b-ae39-5c54e0e67d22"));
    EXPECT_EQ(0, std::memcmp(&kGuid, "\x97\xf8\x79\xbd\xbe\x59\x44\x7b\xae\x39\x5c\x54\xe0\xe6\x7d\x22", 16));
    std::ostringstream stream;
    stream << std::left << std::setfill('.') << std::setw(38) << kGuid;
    EXPECT_EQ(std::string(kGuidText) + "..", stream.str());
    EXPECT_EQ(Journal{}, TakeJournal());
    EXPECT_EQ(kGuidText, std::string_view(kGuid.ToString()));
    EXPECT_EQ((Journal{"alloc 37/1", "free 37"}), TakeJournal());
}

TEST_F(GuidValues, AreKeysInTheOrderOfTheirDigits)
{
    constexpr uint64 kWords[] = {0, 1, 255, 256, uint64{1} << 32, uint64{1} << 63, UINT64_MAX};
    std::vector<ZGuid> ascending;
    for (int i = 0; i < 49; ++i)
        ascending.emplace_back(kWords[i / 7], kWords[i % 7]);
    ExpectAscending(ascending);

    // Version and variant are where the text shows them.
    ascending.push_back(ZGuid::Random());
    const ZString random = ascending.back().ToString();
    EXPECT_TRUE(random[14] == '4' && std::strchr("89ab", random[19]) != nullptr) << random;
    EXPECT_NE(ascending.back(), ZGuid::Random());

    THashSet<ZGuid> hashed;
    std::unordered_set<ZGuid> standard;
    for (const ZGuid& guid : ascending)
    {
        hashed.Insert(guid);
        standard.insert(guid);
        const ZString text = guid.ToString();
        const ZGuid read(text);
        ASSERT_TRUE(AgreesOnGuid(text) && read == guid && hashed.Contains(read) && standard.contains(read)) << text;
    }
}

// ---- Version.

TEST(Versions, ReadWhatIsAVersionToTheCharacter)
{
    const ZMemAllocatorScope scope;
    for (const std::string_view text :
         {" \v\f\r\t\n2.1", "2.1.3.4.5", "255.255.65535.4294967295", "0.0.0.42949672950", "18446744073709551617.0"})
        ExpectOfNeighbours(text, AgreesOnVersion);

    Version actual;
    actual.abs = 1;
    EXPECT_FALSE(version::FromString(nullptr, &actual));
    EXPECT_EQ(0u, actual.abs);
    EXPECT_TRUE(version::FromString(ZString(std::string_view("2.1.3").substr(0, 3)), &actual));
    EXPECT_EQ((Version{{2, 1, 0, 0}}), actual);
}

TEST(Versions, AreOrderedByTheirParts)
{
    static_assert(Version{{2, 1, 0, 0}} > Version{{1, 2, 0, 0}} && Version{{1, 2, 3, 4}} == Version{{1, 2, 3, 4}});
    constexpr uint8 kBytes[] = {0, 1, 2, 255};
    constexpr uint16 kPatches[] = {0, 255, 256, 65535};
    constexpr uint32 kBuilds[] = {0, 255, 256, 4294967295};
    std::vector<Version> ascending;
    for (int i = 0; i < 256; ++i)
        ascending.push_back({{kBytes[i / 64], kBytes[i / 16 % 4], kPatches[i / 4 % 4], kBuilds[i % 4]}});
    ExpectAscending(ascending);

    EXPECT_EQ(256u, std::unordered_set<Version>(ascending.begin(), ascending.end()).size());
    ZMemAllocatorScope scope;
    std::ostringstream stream;
    stream << std::setfill('.') << std::setw(10) << Version{{2, 1, 3, 0}} << '|' << ascending.back();
    EXPECT_EQ("...2.1.3.0|255.255.65535.4294967295", stream.str());
    EXPECT_TRUE(ascending.back().ToString() == "255.255.65535.4294967295");
}

// ---- ZLineReader.

TEST(LineReaders, AgreeWithAModelOnEveryShortText)
{
    for (uint32 nLength = 0; nLength <= 7; ++nLength)
    {
        for (uint32 nText = 0; nText >> 2 * nLength == 0; ++nText)
        {
            std::string text;
            for (uint32 i = 0; i < nLength; ++i)
                text += "\n\r\0\xFF"[nText >> 2 * i & 3];
            for (uint32 nSize = 3; nSize <= 9; ++nSize)
            {
                const bool bAgrees = AgreesOnLines(text, nSize, [](uint64 n) { return n - 1; })
                                     && AgreesOnLines(text, nSize, [](uint64) { return uint64{0}; });
                ASSERT_TRUE(bAgrees) << testing::PrintToString(text) << nSize;
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
                        for (uint64 nLines = below(60); nLines != 0; --nLines)
                        {
                            // Lengths around one and two pieces.
                            text.append(below(3) * (nSize - 3) + below(5), "x\xFF\r"[below(3)]);
                            text += below(2) == 0 ? "\r\n" : "\n";
                        }
                        text.append(below(3), "x\r\n\0"[below(4)]);
                        ASSERT_TRUE(AgreesOnLines(text, nSize, below)) << nSize;
                    }
                });
}

TEST(LineReaders, ReturnALineAsSoonAsItIsThere)
{
    // As a terminal does: one line for each call, and the last one without its end.
    static constexpr std::string_view kTyped[] = {"one\n", "two\r\n", "three", "", "never asked\n"};
    const auto read = [](uint64 nUser, char* pTarget, uint32 nSize)
    { return static_cast<int>(kTyped[(*reinterpret_cast<int*>(nUser))++].copy(pTarget, nSize)); };
    int nCalls = 0;
    char acBuffer[64];
    ZLineReader reader(read, reinterpret_cast<uint64>(&nCalls), acBuffer, sizeof(acBuffer));
    EXPECT_EQ(0, nCalls);
    const int nLast = INT32_MAX; // the reader then believes that it has returned this many lines
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

TEST(LineReaders, ReadFilesDescriptorsAndText)
{
    const std::string text("one\r\n\0two\n\nend\xFF", 15);
    int anEnds[2] = {};
#if defined(_WIN32)
    ASSERT_EQ(0, _pipe(anEnds, 256, _O_BINARY));
#else
    ASSERT_EQ(0, pipe(anEnds));
#endif
    ASSERT_EQ(ssize_t(text.size()), write(anEnds[1], text.data(), static_cast<unsigned>(text.size())));
    close(anEnds[1]);
    std::FILE* pFile = std::tmpfile();
    std::fwrite(text.data(), 1, text.size(), pFile);
    std::rewind(pFile);
    std::string_view rest = text;
    const std::pair<ZLineReader::ReadFunction, uint64> sources[] = {{&ReadLineFile, LineSource(pFile)},
                                                                    {&ReadLineDescriptor, LineSource(anEnds[0])},
                                                                    {&ReadLineDescriptor, LineSource(-1)},
                                                                    {&ReadLineText, LineSource(&rest)}};
    for (const auto& [pRead, nSource] : sources)
    {
        char acBuffer[5];
        ZLineReader reader(pRead, nSource, acBuffer, sizeof(acBuffer));
        char* pLine = nullptr;
        uint32 nLength = 0;
        for (const auto& [nLine, piece] : ModelPieces(nSource == LineSource(-1) ? "" : text, 4))
        {
            EXPECT_EQ(nLine, reader.GetNextLine(&pLine, &nLength));
            EXPECT_EQ(piece, std::string_view(pLine, nLength));
        }
    }
    close(anEnds[0]);
    std::fclose(pFile);
}

TEST(LineReaders, BreakWhereTheyCannotRead)
{
    const ZLineReader::ReadFunction pOverrun = [](uint64, char* pTarget, uint32 nSize)
    {
        std::memset(pTarget, 'x', nSize);
        return static_cast<int>(nSize + 1);
    };
    const ZLineReader::ReadFunction pFailed = [](uint64, char*, uint32) { return -1; };

    // Returns the breaks of the constructor, those of the first call, and its line.
    BreakCounter breaks;
    char acBuffer[16] = "untouched";
    const auto read = [&](ZLineReader::ReadFunction pRead, char* pBuffer, uint32 nSize)
    {
        ZLineReader reader(pRead, 0, pBuffer, nSize);
        const int nConstructor = breaks.Take();
        char* pLine = acBuffer;
        uint32 nLength = 1;
        const int nLine = reader.GetNextLine(&pLine, &nLength);
        return std::tuple(nConstructor, breaks.Take(), nLine, std::string(pLine != nullptr ? pLine : "null"));
    };
    const std::tuple refused(1, 0, 0, std::string("null"));
    for (const uint32 nSize : {0u, 1u, 2u})
        EXPECT_EQ(refused, read(pOverrun, acBuffer, nSize));
    EXPECT_EQ(refused, read(nullptr, acBuffer, 3));
    EXPECT_EQ(refused, read(pOverrun, nullptr, 3));
    EXPECT_EQ(std::tuple(0, 0, 0, "null"), read(pFailed, acBuffer, UINT32_MAX));
    EXPECT_STREQ("untouched", acBuffer);
    EXPECT_EQ(std::tuple(0, 1, 1, "xxxxxxx"), read(pOverrun, acBuffer, 8));
}
