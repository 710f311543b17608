// demangle: the text of each code, what is not read, and hostile symbols. No normal allocator stands while these tests
// run, so no call can have used it.
#include "core/values/demangle.h"
#include "tests/support/demanglemodel.h"

#include <fstream>
#include <gtest/gtest.h>

namespace
{
struct SExpected
{
    std::string m_symbol;
    std::string m_plain;
    std::string m_verbose;
};

// The rows of a file, without those that begin with "#": a symbol, its plain text and its verbose text; or a symbol
// alone.
std::vector<SExpected> ReadTable(const std::string& file)
{
    std::vector<SExpected> rows;
    std::ifstream stream(KX_TEST_DATA + file);
    for (std::string line; std::getline(stream, line);)
    {
        const size_t nPlain = line.find('\t') + 1;
        const size_t nVerbose = line.find('\t', nPlain) + 1;
        if (!line.starts_with('#'))
            rows.push_back(
                {line.substr(0, nPlain - 1), line.substr(nPlain, nVerbose - 1 - nPlain), line.substr(nVerbose)});
    }
    return rows;
}

std::string Repeat(int nCount, const std::string& text)
{
    std::string result;
    for (int i = 0; i < nCount; ++i)
        result += text;
    return result;
}
} // namespace

// One symbol for each code at least. Each of them is complete only at its end: cut anywhere, it is appended as it is.
TEST(Demangle, ReadsEveryCode)
{
    for (const char* pszFile : {"symbols.tsv", "vectors.tsv"})
    {
        const std::vector<SExpected> rows = ReadTable(pszFile);
        EXPECT_LE(46u, rows.size());
        for (const SExpected& row : rows)
        {
            const std::string_view symbol = row.m_symbol;
            EXPECT_EQ(row.m_plain, Demangled(symbol, false)) << symbol;
            EXPECT_EQ(row.m_verbose, Demangled(symbol, true)) << symbol;
            for (size_t i = 0; i <= symbol.size(); ++i)
            {
                const std::string_view cut = symbol.substr(0, i);
                EXPECT_TRUE(IsDemangledSoundly(cut, 1 + static_cast<uint32>(i) % 40)) << cut;
                EXPECT_TRUE(i == symbol.size() || !symbol.starts_with('?') || Demangled(cut, true) == cut) << cut;
            }
        }
    }
}

TEST(Demangle, AppendsAsItIsWhatItCannotRead)
{
    for (const SExpected& row : ReadTable("malformed.tsv"))
    {
        EXPECT_TRUE(IsDemangledSoundly(row.m_symbol, 10)) << row.m_symbol;
        EXPECT_EQ(row.m_symbol, Demangled(row.m_symbol, true));
    }
}

TEST(Demangle, BoundsTheDepthAndTheText)
{
    // The levels of a pointer to a pointer, of nested templates, scopes, functions, arrays and symbols.
    const struct
    {
        std::string m_begin, m_open, m_middle, m_close, m_end;
        int m_nMax;
    } kNested[] = {
        {"?x@@3", "PA", "H", "", "A", 126},
        {"?x@@3", "V?$T@", "H", "@@", "A", 126},
        {"?x@", "a@", "", "", "@3HA", 126},
        {"?x@@3", "P6A", "X", "XZ", "A", 126},
        {"?x@@3", "P6AX", "H", "@Z", "A", 126},
        {"?x@@3", "PAY01", "H", "", "A", 63},
        {"?x@@3", "V?$T@$1?x@@3", "H", "A@@", "A", 63},
    };
    for (const auto& row : kNested)
    {
        const auto read = [&](int nCount)
        {
            const std::string symbol =
                row.m_begin + Repeat(nCount, row.m_open) + row.m_middle + Repeat(nCount, row.m_close) + row.m_end;
            EXPECT_TRUE(IsDemangledSoundly(symbol, 100)) << nCount << " of " << row.m_open;
            return IsRead(Demangled(symbol, true));
        };
        EXPECT_TRUE(read(row.m_nMax)) << row.m_open;
        EXPECT_FALSE(read(row.m_nMax + 1)) << row.m_open;
        EXPECT_FALSE(read(5000)) << row.m_open;
    }

    // Each type is more than twice as long as the one before.
    std::string symbol = "?f@@YAXP6AXXZ";
    for (char c = '0'; c <= '8'; ++c)
    {
        EXPECT_EQ(c < '8', IsRead(Demangled(symbol + "@Z", true))) << c;
        symbol += std::string("P6AX") + c + c + "0@Z";
    }

    // A name of any length that leaves room for the text to be put together.
    EXPECT_EQ(32767u, Demangled("?x@@3V" + std::string(32765, 'a') + "@@A", false).size());
    EXPECT_FALSE(IsRead(Demangled("?x@@3V" + std::string(32766, 'a') + "@@A", false)));
    for (size_t nLength = 32700; nLength < 32768; ++nLength)
        EXPECT_TRUE(IsDemangledSoundly("?x@@3V?$" + std::string(nLength, 'a') + "@$0BAAAAAAA@@@A", 100)) << nLength;

    // What a template has kept is given up at its end, and what was set aside when it is put back.
    const std::string keeper = "V?$T@P6AXPAV" + std::string(100, 'a') + "@@@Z@@";
    EXPECT_TRUE(IsRead(Demangled("?x@@3V?$T@" + Repeat(110, keeper) + "@@A", false)));
    EXPECT_TRUE(IsRead(Demangled("?f@@YAX" + Repeat(700, "PAY0PPPPPPPPPPPPPPPP@H") + "@Z", false)));
}

TEST(Demangle, TakesItsTextFromAnywhere)
{
    ZStackString<64> text;
    demangle(text, static_cast<const char*>(nullptr), true);
    EXPECT_EQ(0u, text.size());

    // From the string itself, cut or not, read or not.
    text.append("?f@@YAXXZ");
    demangle(text, text.get(), false);
    EXPECT_STREQ("?f@@YAXXZvoid f(void)", text.get());
    ZStackString<12> full;
    full.append("??f@@YAXXZ");
    demangle(full, full.get() + 1, true);
    EXPECT_STREQ("void __cdec", full.get());
    full.clear();
    full.append("_abcdefgh");
    demangle(full, full.get(), true);
    EXPECT_STREQ("_ababcdefgh", full.get());

    // All bytes but "@" can be in a name.
    using namespace std::string_literals;
    EXPECT_EQ("int a\0\xFF b"s, Demangled("?a\0\xFF b@@3HA"s, true));
    EXPECT_EQ("?a@@\0HA"s, Demangled("?a@@\0HA"s, true));
    EXPECT_EQ("a\0b"s, Demangled("_a\0b"s, true));
}
