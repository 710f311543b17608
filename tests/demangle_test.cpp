// demangle: the text of each code, what is not read, and hostile symbols. No normal allocator is set while these tests
// run, so no call can have used it.
#include "core/values/demangle.h"
#include "tests/support/demanglemodel.h"

#include <array>
#include <fstream>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sstream>

namespace
{
// The rows of a file, without those that begin with "#": a symbol, its plain text and its verbose text. A text that is
// missing is empty.
std::vector<std::array<std::string, 3>> ReadTable(const std::string& file)
{
    std::vector<std::array<std::string, 3>> rows;
    std::ifstream stream(KX_TEST_DATA + file);
    for (std::string line; std::getline(stream, line);)
    {
        if (line.starts_with('#'))
            continue;
        std::istringstream columns(line);
        for (std::string& column : rows.emplace_back())
            std::getline(columns, column, '\t');
    }
    EXPECT_LE(46u, rows.size()) << file;
    return rows;
}

std::string Repeat(int nCount, const std::string& text)
{
    std::string result;
    for (int i = 0; i < nCount; ++i)
        result += text;
    return result;
}

// The stack that the call is documented to take, and 6 KB for the thread itself.
#if defined(__OPTIMIZE__)
[[maybe_unused]] constexpr size_t kStack = size_t{116} * 1024;
#else
[[maybe_unused]] constexpr size_t kStack = size_t{196} * 1024;
#endif

// What the default options of the modern form allow, in any build.
[[maybe_unused]] constexpr size_t kModernStack = size_t{96 + 33 + 6} * 1024;

// Runs into the guard page of the thread if the call takes more.
void DemangleOnASmallStack(std::string symbol, bool bModern)
{
#if !defined(KX_TEST_SANITIZED)
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, bModern ? kModernStack : kStack);
    static ZStackString<100000> s_text;
    static SDemangleOptions s_options;
    s_options = {.m_bVerbose = true, .m_bModern = bModern};
    const auto run = [](void* pSymbol) -> void*
    {
        demangle(s_text, *static_cast<std::string*>(pSymbol), s_options);
        return nullptr;
    };
    pthread_t thread{};
    ASSERT_EQ(0, pthread_create(&thread, &attributes, run, &symbol));
    pthread_join(thread, nullptr);
#else
    static_cast<void>(symbol), static_cast<void>(bModern);
#endif
}
} // namespace

// The tables have at least one symbol for each code, the symbols of the verification cases, which check the verbose
// text of these, and symbols that are appended as they are. The others are complete only at their end, so each of them
// is appended as it is when it is cut.
TEST(Demangle, ReadsEveryCodeAndAppendsAsItIsWhatItCannotRead)
{
    for (const char* pszFile : {"symbols.tsv", "vectors.tsv", "malformed.tsv"})
        for (const auto& [symbol, plain, verbose] : ReadTable(pszFile))
        {
            EXPECT_EQ(plain.empty() ? symbol : plain, Demangled(symbol, false)) << symbol;
            const std::string demangled = Demangled(symbol, true);
            EXPECT_TRUE(verbose.empty() || verbose == demangled) << symbol << " is " << demangled;
            for (size_t i = 0; i <= symbol.size(); ++i)
            {
                const std::string cut = symbol.substr(0, i);
                const bool bPart = i < symbol.size() && symbol.starts_with('?') && !plain.empty();
                EXPECT_TRUE(IsDemangledSoundly(cut, 1 + static_cast<uint32>(i) % 40)) << cut;
                EXPECT_TRUE(!bPart || Demangled(cut, true) == cut) << cut;
            }
        }
}

// Each symbol was written by an encoder for a declaration that the modern text repeats.
TEST(Demangle, NamesTheEntitiesOfTheEncoderInTheModernForm)
{
    for (const auto& [symbol, modern, other] : ReadTable("modern.tsv"))
    {
        EXPECT_EQ(modern, Demangled(symbol, {.m_bVerbose = true, .m_bModern = true}));
        EXPECT_EQ(other.empty() ? modern : other, Demangled(symbol, true));
        for (size_t i = 0; i < symbol.size(); ++i)
            EXPECT_TRUE(IsDemangledSoundly(symbol.substr(0, i), 30)) << symbol.substr(0, i);

        // The buffer receives as much as it takes.
        std::string buffer(modern.size() + 1, '?');
        for (size_t i = 0; i <= buffer.size(); ++i)
        {
            const auto [eResult, nLength] =
                demangle(std::span(buffer.data(), i), symbol, {.m_bVerbose = true, .m_bModern = true});
            EXPECT_EQ(i == buffer.size() ? EDemangled::kRead : EDemangled::kCut, eResult);
            EXPECT_EQ(modern.size(), nLength);
            EXPECT_STREQ(i == 0 ? buffer.c_str() : modern.substr(0, i - 1).c_str(), buffer.c_str());
        }
    }
    char acText[9] = "rubbish";
    for (const char* pszOther : {"", "_main", "?x@@", "?f@@YAXXZ rest"})
    {
        EXPECT_EQ(EDemangled::kNotASymbol, demangle(acText, pszOther).m_result) << pszOther;
        EXPECT_STREQ("", acText);
    }
    char acMemory[12];
    EXPECT_EQ(EDemangled::kTooLarge, demangle(acText, "?x@very@long@name@@3HA", {.m_memory = acMemory}).m_result);
    EXPECT_EQ(EDemangled::kRead, demangle(acMemory, "?x@y@@3HA", {.m_memory = acMemory}).m_result);
    EXPECT_STREQ("int y::x", acMemory);
}

TEST(Demangle, BoundsTheDepthAndTheStack)
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
        {"?x@@3", "PQ?$T@", "H", "@@H", "A", 126},
    };
    for (const auto& row : kNested)
    {
        const auto nested = [&](int nCount)
        { return row.m_begin + Repeat(nCount, row.m_open) + row.m_middle + Repeat(nCount, row.m_close) + row.m_end; };
        DemangleOnASmallStack(nested(row.m_nMax), false);
        DemangleOnASmallStack(nested(5000), true);

        // With the memory for it, the modern form reads the deepest symbol that an encoder writes.
        const std::string symbol = nested(static_cast<int>(4096 / (row.m_open.size() + row.m_close.size())));
        static char s_acText[100];
        SDemangleOptions options{.m_bModern = true};
        EXPECT_EQ(EDemangled::kTooLarge, demangle(s_acText, symbol, options).m_result) << row.m_open;
        std::vector<char> memory(4 << 20);
        options.m_memory = memory;
        options.m_nStack = 6 << 20;
        EXPECT_EQ(EDemangled::kCut, demangle(s_acText, symbol, options).m_result) << row.m_open;
        const auto read = [&](int nCount)
        {
            EXPECT_TRUE(IsDemangledSoundly(nested(nCount), 100)) << nCount << " of " << row.m_open;
            return IsRead(Demangled(nested(nCount), true));
        };
        EXPECT_TRUE(read(row.m_nMax)) << row.m_open;
        EXPECT_FALSE(read(row.m_nMax + 1)) << row.m_open;
        EXPECT_FALSE(read(5000)) << row.m_open;
    }
}

TEST(Demangle, BoundsTheText)
{
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

    // With what compilers append.
    EXPECT_EQ("void f(void) [.cold.1]", Demangled("?f@@YAXXZ.cold.1", false));

    // All bytes but "@" can be in a name.
    using namespace std::string_literals;
    EXPECT_EQ("int a\0\xFF b"s, Demangled("?a\0\xFF b@@3HA"s, true));
    EXPECT_EQ("?a@@\0HA"s, Demangled("?a@@\0HA"s, true));
    EXPECT_EQ("a\0b"s, Demangled("_a\0b"s, true));
}
