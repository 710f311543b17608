// ZString and the conversions: what is allocated and when, positions outside of the string, and numbers at the limits.
#include "core/containers/hashset.h"
#include "core/strings/string.h"
#include "core/strings/stringfunc.h"
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/stringmodel.h"

#include <iomanip>
#include <ranges>
#include <sstream>
#include <tuple>
#include <unordered_set>

// A pointer and a view are converted only explicitly.
static_assert(!std::is_convertible_v<const char*, ZString> && !std::is_convertible_v<std::string_view, ZString>);
static_assert(ZString::kMaxLength == INT32_MAX, "the largest number that Length() can return");
static_assert(std::is_nothrow_move_constructible_v<ZString> && std::is_nothrow_move_assignable_v<ZString>);

static_assert(ZString("abc") == ZString("abc") && ZString("a\0b").Length() == 3 && ZString("a") < ZString("b"));
static_assert(ZString(" \v\f\t a b\r\n ").Trim() == "a b" && TrimSpace("  ").empty() && TrimSpaceAtEnd(" a ") == " a");
static_assert(std::ranges::contiguous_range<ZString> && std::ranges::input_range<ZTextPieces>);

namespace
{
using StringTest = JournalTest;

constexpr ZString kLiteral = "a constant", kConstant = kLiteral;

// The characters at nStart to nStart + nLength - 1. That sum may overflow, the distance from nStart cannot.
std::string ModelSubstring(const std::string& text, int64 nStart, int64 nLength)
{
    const auto nEnd = static_cast<uint64>(std::max<int64>(nLength, 0));
    std::string piece;
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (static_cast<int64>(i) >= nStart && i - static_cast<uint64>(nStart) < nEnd)
            piece += text[i];
    }
    return piece;
}
} // namespace

TEST_F(StringTest, LiteralsAreBorrowed)
{
    static constexpr char kText[] = "abc-abc";
    ZString text(kText);
    const ZString copy(text);
    ZString assigned = copy.Substring(3, 100).Substring(1, 3);
    EXPECT_EQ(kText + 4, assigned.ToCString());
    assigned = copy;
    assigned = ZString(std::move(text));
    EXPECT_EQ(kText, assigned.ToCString());
    EXPECT_TRUE(text.StartsWith("") && kConstant.EndsWith("tant") && kConstant.Contains("con"));
    EXPECT_TRUE(text.IsEmpty() && text == "" && kConstant == "a constant" && kConstant.IndexOf('a') == 0);
    EXPECT_TRUE(ZString::AllocateFromCString("abc", 0).IsEmpty() && (ZString() + "").IsEmpty());
    EXPECT_EQ(Journal{}, TakeJournal());
}

TEST_F(StringTest, FilledArraysAreCopied)
{
    char acBuffer[64] = "filled";
    const ZString text = acBuffer;
    EXPECT_EQ("filled", text);
    EXPECT_EQ((Journal{"alloc 7/1"}), TakeJournal());
    char acFull[3] = {'a', 'b', 'c'};
    EXPECT_EQ("abc", ZString(acFull));
    const char* volatile pszNull = nullptr;
    EXPECT_TRUE(ZString(pszNull).IsEmpty() && ZString() == pszNull && text != pszNull);
    EXPECT_TRUE(ZString::AllocateFromCString(pszNull, 3).IsEmpty() && text.Contains(pszNull));
    EXPECT_EQ('d', text[5]);
    BreakCounter breaks;
    EXPECT_EQ('\0', text[6]);
    EXPECT_EQ(1, breaks.Take());
}

TEST_F(StringTest, BlocksAreOwnedByOneString)
{
    ZString first = ZString::AllocateFromCString("text and more", 4);
    ZString copy(first);
    EXPECT_EQ((Journal{"alloc 5/1", "alloc 5/1"}), TakeJournal());
    copy = first + "s";
    first = copy;
    EXPECT_EQ((Journal{"alloc 6/1", "free 5", "alloc 6/1", "free 5"}), TakeJournal());
    copy = copy.Substring(1, 3);
    EXPECT_EQ((Journal{"alloc 4/1", "free 6"}), TakeJournal());

    ZString moved(std::move(first));
    EXPECT_TRUE(first.IsEmpty() && first.Validate());
    ZString& same = moved;
    moved = same;
    moved = std::move(same);
    first = std::move(moved);
    EXPECT_TRUE(moved.IsEmpty() && moved.Validate());
    EXPECT_EQ("texts", first);
    EXPECT_EQ(Journal{}, TakeJournal());
    first = "literal";
    EXPECT_EQ((Journal{"free 6"}), TakeJournal());
}

// Random strings of few letters, among them borrowed tails, and positions of every kind.
TEST_F(StringTest, AgreesWithAModel)
{
    ForEachSeed(1,
                [](auto below)
                {
                    constexpr int64 kPositions[] = {
                        INT64_MIN,      -INT64_MAX,    -2,       -1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13,
                        int64{1} << 32, INT64_MAX - 1, INT64_MAX};
                    ZString text;
                    std::string model;
                    for (int nStep = 0; nStep < 20000; ++nStep)
                    {
                        const int64 nStart = kPositions[below(std::size(kPositions))];
                        const int64 nLength = kPositions[below(std::size(kPositions))];
                        std::string other;
                        while (below(3) != 0)
                            other += "abcdabcd\0\x80\xFF"[below(11)];
                        const ZString otherText{std::string_view(other)};
                        SCOPED_TRACE(testing::PrintToString(std::tuple(model, other, nStart, nLength)));

                        const auto nFrom = static_cast<size_t>(std::max<int64>(nStart, 0));
                        const auto last = [&](size_t nFound) { return nStart < 0 ? -1 : static_cast<int>(nFound); };
                        ASSERT_EQ(static_cast<int>(model.find('a', nFrom)), text.IndexOf('a', nStart));
                        ASSERT_EQ(last(model.rfind('a', nFrom)), text.LastIndexOf('a', nStart));
                        ASSERT_EQ(last(model.find_last_of(other, nFrom)), text.LastIndexOfAny(otherText, nStart));
                        ASSERT_EQ(model.compare(other) <=> 0, text <=> otherText);
                        ASSERT_EQ(model == other, text == otherText);
                        ASSERT_EQ(HashKey(ZString(std::string_view(model))), HashKey(text));
                        ASSERT_EQ(model.starts_with(other), text.StartsWith(other));
                        ASSERT_EQ(model.ends_with(other), text.EndsWith(other));
                        ASSERT_EQ(model.find(other) != model.npos, text.Contains(other));
                        std::string joined;
                        for (const std::string_view piece : text.Split('a'))
                            joined.append("a").append(piece.find('a') == piece.npos ? piece : "a separator");
                        ASSERT_EQ('a' + model, joined);

                        // The next string is one of these. A long string is replaced, so that it stays short.
                        const std::string piece = ModelSubstring(model, nStart, nLength);
                        const std::string models[] = {other, model + other, other + model, piece, "dcba-a"};
                        ZString texts[] = {otherText, text + otherText, otherText + text,
                                           text.Substring(nStart, nLength), "dcba-a"};
                        ASSERT_TRUE(std::equal(std::begin(models), std::end(models), std::begin(texts)));
                        const uint64 nNext = model.size() > 12 ? 0 : below(5);
                        model = models[nNext];
                        text = std::move(texts[nNext]);
                        ASSERT_TRUE(text == model && text.Validate()
                                    && text.Length() == static_cast<int>(model.size()));
                        TakeJournal();
                    }
                });
}

TEST_F(StringTest, StringsOfTwoToThe31BreakAndNeverWrap)
{
    // This string claims 2^30 characters and has one, so the sum must be refused before any character is read.
    ZString huge = "x";
    const uint32 nWord = 0xC0000000;
    std::memcpy(static_cast<void*>(&huge), &nWord, sizeof(nWord));

    BreakCounter breaks;
    EXPECT_TRUE((huge + huge).IsEmpty());
    EXPECT_EQ(1, breaks.Take());
    for (const uint64 nLength : {uint64{1} << 31, (uint64{1} << 32) + 1, uint64{1} << 63, UINT64_MAX})
    {
        EXPECT_TRUE(ZString::AllocateFromCString("x", static_cast<int64>(nLength)).IsEmpty());
        EXPECT_EQ(1, breaks.Take()) << nLength;
    }
    EXPECT_EQ(Journal{}, TakeJournal());
}

TEST_F(StringTest, MeetsTheStandardLibrary)
{
    const ZString text(std::string_view("text"));
    std::ostringstream stream;
    stream << std::setfill('.') << std::setw(6) << text << '|' << ZString("l\0t");
    EXPECT_EQ(std::string_view("..text|l\0t", 10), stream.str());
    const std::string_view view = text;
    EXPECT_TRUE(view == text && text == view && "text" == text && text != "tex");
    EXPECT_TRUE(ZString("te\0t") != "te" && HashBytes("te\0t", 4) == HashKey(ZString("te\0t")));
    // A literal and an owned copy of it are one key.
    EXPECT_EQ(1u, (THashSet<ZString>{text, "text"}.Size()));
    EXPECT_EQ(1u, (std::unordered_set<ZString>{text, "text"}.size()));
}

// Numbers of every length and around the limits of all types, with everything that may surround them.
TEST(IntFromStringTest, AgreesWithFromChars)
{
    ForEachSeed(1,
                [](auto below)
                {
                    const auto any = [&](std::initializer_list<const char*> choices)
                    { return choices.begin()[below(choices.size())]; };
                    for (int i = 0; i < 100000; ++i)
                    {
                        const uint64 nNumber =
                            i % 2 == 0 ? (uint64{1} << below(64)) + below(5) - 2 : below(UINT64_MAX) >> below(64);
                        std::string text = any({"", "", "", " ", "\t\n ", "\v\f\r", "\b"});
                        text += any({"", "", "-", "-", "+", "--", "- "});
                        text += any({"", "", "", "0", "00000000000000000000000"});
                        text += below(16) == 0 ? "" : std::to_string(nNumber);
                        text += any({"", "", "", "", "aa", "9", ".5", "-", "\xB2", "00"});
                        ASSERT_TRUE(AgreesOnAllInts(text)) << '"' << text << '"';
                    }
                });

    int nNumber = 5;
    char* pEnd = nullptr;
    const char* volatile pszNull = nullptr;
    EXPECT_TRUE(!IntFromString(pszNull, &nNumber, &pEnd) && nNumber == 0 && *pEnd == '\0');
}

TEST(TextIntoABuffer, BreaksWhereItDoesNotFit)
{
    BreakCounter breaks;
    char acBuffer[11] = {};
    const auto check = [&](uint64 nSize, const char* pszFormat, auto argument, const char* pszExpected, int nExpected)
    {
        std::memset(acBuffer, '#', 10);
        EXPECT_EQ(nExpected, FormatToBuffer(acBuffer, nSize, pszFormat, argument));
        EXPECT_EQ(nExpected < 0 ? 1 : 0, breaks.Take());
        EXPECT_STREQ(pszExpected, acBuffer);
        EXPECT_EQ('#', acBuffer[nSize]);
    };
    const char* volatile pszNull = nullptr;
    check(9, "%d", 12345678, "12345678", 8);
    check(9, "%d", 123456789, "", -1);
#if !defined(_WIN32)
    check(9, "a%lc", wint_t{0xD800}, "", -1); // printf refuses this character
#endif
    check(1, pszNull, 0, "", 0);
    check(0, "%d", 1, "##########", -1);

    EXPECT_STREQ("12345678", GetStringPlusString("12345678", pszNull, acBuffer));
    EXPECT_STREQ("90", GetStringPlusString(pszNull, "90", acBuffer));
    EXPECT_STREQ("", GetStringPlusString("12345678", "901", acBuffer));
    EXPECT_EQ(1, breaks.Take());
}
