// Each container does today what is recorded of it: every result, element operation, comparison and allocator call, in
// order. A file of tests/journals/ has chosen operations first, each told in a line that can be checked against the
// container's header, and then digests of a long random series, one for each block of operations.
//
// With KX_RECORD=1 in the environment the files are written anew, from the operations that they name. With KX_PRINT=1
// each block of the series is printed before it is compared, so the output ends with the first block that differs.
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/player.h"

#include <fstream>
#include <iostream>
#include <set>

namespace
{
constexpr int kBlock = 50;
constexpr int kSeries = 3000;

struct SName
{
    template <class T>
    static std::string GetName(int nIndex)
    {
        static constexpr const char* kNames[] = {
            "array", "array_of_copies", "max_array",      "block_array", "list",
            "slist", "red_black_tree",  "multi_set",      "set",         "multi_map",
            "map",   "hash_map",        "multi_hash_map", "hash_set"};
        return kNames[nIndex];
    }
};

using Kinds = testing::Types<TArray<Logged>, TArray<LoggedCopy>, TMaxArray<Logged, 10>, TBlockArray<Logged>,
                             TList<Logged>, TSList<Logged>, TRedBlackTree<Logged>, TMultiSet<Logged>, TSet<Logged>,
                             TMultiMap<Logged, Logged>, TMap<Logged, SDefaultLogged>, TOpen<THashMap<Logged, Logged>>,
                             TOpen<TMultiHashMap<Logged, Logged>>, TOpen<THashSet<Logged>>>;

std::vector<std::string> ReadLines(const std::string& file)
{
    std::vector<std::string> lines;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);)
    {
        line.erase(std::min(line.find('\r'), line.size()));
        lines.push_back(line);
    }
    return lines;
}

uint64 DigestOf(const std::string& text)
{
    uint64 nDigest = 0xCBF29CE484222325;
    for (const char c : text)
        nDigest = (nDigest ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    return nDigest;
}

std::string JournalFile()
{
    const std::string suite = testing::UnitTest::GetInstance()->current_test_info()->test_suite_name();
    return KX_TEST_JOURNALS + suite.substr(suite.find('/') + 1) + ".txt";
}

// Lines as a file has them, each with what a failure prints: the operations of a block.
using Lines = std::vector<std::pair<std::string, std::string>>;

// Adds the chosen operations of a file, each with what it does now. Comments, which begin with "#", stay.
template <class TContainer>
void PlayChosen(const std::vector<std::string>& recorded, Lines& played)
{
    TPlayer<TContainer> player;
    for (const std::string& line : recorded)
    {
        if (line.starts_with("end") || line.starts_with("series"))
            break;
        played.emplace_back(line.starts_with('#') ? line : player.Play(line), "");
    }
    played.emplace_back("end: " + player.Finish(), "");
}

// Adds the digests of the blocks of the series.
template <class TContainer>
void PlaySeries(Lines& played)
{
    std::mt19937_64 random(20261121);
    const auto below = [&](uint64 n) { return random() % n; };
    TPlayer<TContainer> player;
    for (int nFirst = 1; nFirst <= kSeries; nFirst += kBlock)
    {
        std::string operations;
        for (int i = 0; i < kBlock; ++i)
            operations += player.Play(player.Draw(below)) + '\n';
        if (nFirst + kBlock > kSeries)
            operations += "end: " + player.Finish() + '\n';
        std::ostringstream digest;
        digest << "series " << nFirst << ' ' << std::hex << std::setw(16) << std::setfill('0') << DigestOf(operations);
        played.emplace_back(digest.str(), operations);
    }
}

template <class TContainer>
class Journals : public JournalTest
{
};
} // namespace

TYPED_TEST_SUITE(Journals, Kinds, SName);

TYPED_TEST(Journals, AreAsRecorded)
{
    const std::string file = JournalFile();
    const std::vector<std::string> recorded = ReadLines(file);
    Lines played;
    PlayChosen<TypeParam>(recorded, played);
    PlaySeries<TypeParam>(played);
    if (std::getenv("KX_RECORD") != nullptr)
    {
        std::ofstream stream(file);
        for (const auto& [line, operations] : played)
            stream << line << '\n';
        return;
    }

    ASSERT_EQ(played.size(), recorded.size()) << file << ": record it, and read what has changed";
    for (size_t i = 0; i < played.size(); ++i)
    {
        const auto& [line, operations] = played[i];
        if (std::getenv("KX_PRINT") != nullptr)
            std::cout << operations;
        ASSERT_EQ(recorded[i], line) << file << ':' << i + 1 << '\n' << operations;
    }
}

// Each operation with each number of steps, once. It is the last step that throws, because the first ones may be those
// of a pair that the caller makes.
TYPED_TEST(Journals, EndTheProcessIfAnElementThrows)
{
    std::set<std::pair<std::string, int>> seen;
    TPlayer<TypeParam> player, ahead;
    for (const std::string& line : ReadLines(JournalFile()))
    {
        if (line.starts_with("end"))
            break;
        if (line.starts_with('#'))
            continue;
        ahead.Play(line);
        const int nSteps = ahead.Steps();
        if (nSteps != 0 && seen.emplace(line.substr(2, line.find_first_of("-0123456789") - 2), nSteps).second)
        {
            EXPECT_EXIT((g_nThrowAt = nSteps - 1, player.Play(line)), KX_ENDED_BY_ABORT, "") << line;
        }
        player.Play(line);
    }
}
