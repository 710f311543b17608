// ZString and the conversions: what is allocated and when, positions that lie outside, and numbers at the edges.
#include "core/containers/hashmap.h"
#include "core/containers/map.h"
#include "core/strings/string.h"
#include "core/strings/stringfunc.h"
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/stringmodel.h"

#include <iomanip>
#include <sstream>
#include <unordered_set>

// What is not known to be a literal is converted only where the program says so.
static_assert(!std::is_convertible_v<const char*, ZString> && !std::is_convertible_v<std::string_view, ZString>);
static_assert(ZString::kMaxLength == INT32_MAX, "as far as Length() goes");
static_assert(std::is_nothrow_move_constructible_v<ZString> && std::is_nothrow_move_assignable_v<ZString>);

namespace
{
using StringTest = JournalTest;

// printf gives up on it.
constexpr wint_t kNoCharacter = 0xD800;

constexpr ZString kLiteral = "a constant", kConstant = kLiteral;

uint32 LengthWord(const ZString& text)
{
    uint32 nWord = 0;
    std::memcpy(&nWord, static_cast<const void*>(&text), sizeof(nWord));
    return nWord;
}

ZString Owned(std::string_view text)
{
    ZString owned(text);
    TakeJournal();
    return owned;
}
} // namespace

TEST_F(StringTest, LiteralsAreBorrowed)
{
    {
        static constexpr char kText[] = "abc-abc";
        ZString text(kText);
        EXPECT_EQ(kText, text.ToCString());
        EXPECT_EQ(0x80000007, LengthWord(text));
        EXPECT_EQ(0x80000005, LengthWord("em\0ed"));
        const ZString copy(text);
        const ZString tail = copy.Substring(3, 100).Substring(1, 3);
        EXPECT_EQ(kText + 4, tail.ToCString());
        EXPECT_EQ(0x80000003, LengthWord(tail));
        ZString assigned;
        assigned = copy;
        assigned = ZString(std::move(text));
        EXPECT_EQ(kText, assigned.ToCString());
        EXPECT_TRUE(text.IsEmpty() && text == "" && kConstant == "a constant");
        EXPECT_TRUE(ZString::AllocateFromCString("abc", 0).IsEmpty() && (ZString() + "").IsEmpty());
    }
    EXPECT_EQ(Journal{}, TakeJournal());
}

TEST_F(StringTest, FilledArraysAreCopied)
{
    char acBuffer[64] = "filled";
    const ZString text = acBuffer;
    acBuffer[0] = 'k';
    EXPECT_EQ("filled", text);
    EXPECT_EQ((Journal{"alloc 7/1"}), TakeJournal());

    char acFull[3] = {'a', 'b', 'c'};
    EXPECT_EQ("abc", ZString(acFull));
    const char* volatile pszNull = nullptr;
    EXPECT_TRUE(ZString(pszNull).IsEmpty() && ZString() == pszNull && text != pszNull);
    EXPECT_TRUE(ZString::AllocateFromCString(pszNull, 3).IsEmpty());
}

TEST_F(StringTest, BlocksAreOwnedByOneString)
{
    {
        ZString first = ZString::AllocateFromCString("text and more", 4);
        EXPECT_EQ(4u, LengthWord(first));
        ZString copy(first);
        EXPECT_NE(first.ToCString(), copy.ToCString());
        EXPECT_EQ((Journal{"alloc 5/1", "alloc 5/1"}), TakeJournal());
        copy = first + "s";
        EXPECT_EQ((Journal{"alloc 6/1", "free 5"}), TakeJournal());
        first = copy;
        EXPECT_EQ((Journal{"alloc 6/1", "free 5"}), TakeJournal());

        const char* pChars = first.ToCString();
        ZString moved(std::move(first));
        EXPECT_EQ(pChars, moved.ToCString());
        EXPECT_TRUE(first.IsEmpty() && first.Validate());
        ZString& same = moved;
        moved = same;
        moved = std::move(same);
        first = std::move(moved);
        EXPECT_TRUE(moved.IsEmpty() && moved.Validate());
        moved = std::move(first);
        EXPECT_EQ("texts", moved);
        EXPECT_EQ(Journal{}, TakeJournal());
        moved = "literal";
        copy = copy.Substring(1, 3);
        EXPECT_EQ("ext", copy);
        EXPECT_EQ((Journal{"free 6", "alloc 4/1", "free 6"}), TakeJournal());
    }
    EXPECT_EQ((Journal{"free 4"}), TakeJournal());
}

// Random texts of few letters, borrowed tails among them, and positions of every kind.
TEST_F(StringTest, AgreesWithAModel)
{
    ForEachSeed(
        1,
        [](auto below)
        {
            const auto position = [&]() -> int64
            {
                constexpr int64 kExtremes[] = {INT64_MIN, INT64_MIN + 1, -1, int64{1} << 32, INT64_MAX - 1, INT64_MAX};
                return below(4) == 0 ? kExtremes[below(6)] : static_cast<int64>(below(16)) - 4;
            };
            ZString text = "abc-abc";
            std::string model(text.ToCString());
            for (int nStep = 0; nStep < 20000; ++nStep)
            {
                const int64 nStart = position();
                const int64 nLength = position();
                std::string other;
                while (below(3) != 0)
                    other +=
                        static_cast<char>(below(8) == 0 ? "\0\x80\xFF"[below(3)] : 'a' + static_cast<char>(below(4)));
                const ZString otherText{std::string_view(other)};

                // The characters whose distance from the start, which cannot overflow, is below the length.
                std::string piece;
                for (size_t i = 0; i < model.size(); ++i)
                {
                    if (static_cast<int64>(i) >= nStart && nLength > 0
                        && i - static_cast<uint64>(nStart) < static_cast<uint64>(nLength))
                        piece += model[i];
                }
                const size_t nFrom = static_cast<size_t>(std::max<int64>(nStart, 0));
                const auto backwards = [&](size_t nFound) { return nStart < 0 ? -1 : static_cast<int>(nFound); };
                ASSERT_EQ(piece, text.Substring(nStart, nLength)) << model << ' ' << nStart << ' ' << nLength;
                ASSERT_EQ(static_cast<int>(model.find('a', nFrom)), text.IndexOf('a', nStart))
                    << model << ' ' << nStart;
                ASSERT_EQ(backwards(model.rfind('a', nFrom)), text.LastIndexOf('a', nStart)) << model << ' ' << nStart;
                ASSERT_EQ(backwards(model.find_last_of(other, nFrom)), text.LastIndexOfAny(otherText, nStart))
                    << model << other;
                ASSERT_EQ(model <=> other, text <=> otherText) << model << ' ' << other;
                ASSERT_EQ(model == other, text == otherText);
                ASSERT_EQ(std::string_view(model), text);
                ASSERT_EQ(HashKey(ZString(std::string_view(model))), HashKey(text));
                ASSERT_TRUE(text.Validate() && text.Length() == static_cast<int>(model.size()));

                switch (below(5))
                {
                case 0:
                    text = text + otherText;
                    model += other;
                    break;
                case 1:
                    text = otherText + text;
                    model = other + model;
                    break;
                case 2:
                    text = text.Substring(nStart, nLength);
                    model = piece;
                    break;
                case 3:
                    text = "dcba-a";
                    model = "dcba-a";
                    break;
                default:
                    if (model.size() > 12)
                    {
                        text = otherText;
                        model = other;
                    }
                }
                TakeJournal();
            }
        });
}

TEST_F(StringTest, TextsOfTwoToThe31BreakAndNeverWrap)
{
    const char* pszText = "x";
    const uint64 nTooLong = uint64{1} << 31;
    EXPECT_BREAK(ZString(std::string_view(pszText, nTooLong)));
    EXPECT_BREAK(ZString::AllocateFromCString(pszText, -1));

    // A string that claims 2^30 characters: the sum is found too large before one of them is read.
    ZString huge = "x";
    const uint32 nWord = 0xC0000000;
    std::memcpy(static_cast<void*>(&huge), &nWord, sizeof(nWord));
    EXPECT_BREAK(huge + huge);

    BreakCounter breaks;
    EXPECT_TRUE(ZString(std::string_view(pszText, (uint64{1} << 32) + 1)).IsEmpty());
    EXPECT_TRUE(ZString::AllocateFromCString(pszText, INT64_MIN).IsEmpty());
    EXPECT_TRUE((huge + huge).IsEmpty());
    EXPECT_EQ(3, breaks.Take());
    EXPECT_EQ(Journal{}, TakeJournal());
}

TEST_F(StringTest, MeetsTheStandardLibrary)
{
    const ZString text = Owned("text");
    std::ostringstream stream;
    stream << std::setfill('.') << std::setw(6) << text << '|' << ZString("l\0t");
    EXPECT_EQ(std::string_view("..text|l\0t", 10), stream.str());
    const std::string_view view = text;
    EXPECT_TRUE(view == text && text == view && "text" == text && text != "tex" && text < ZString("texts"));
    EXPECT_TRUE(ZString("te\0t") != "te" && HashBytes("te\0t", 4) == HashKey(ZString("te\0t")));
    const std::unordered_set<ZString> set{text, "text", "other"};
    EXPECT_EQ(2u, set.size());
    // A literal and an owned copy of it are one key.
    THashMap<ZString, int> hashed{{"text", 1}, {"two", 2}};
    TMap<ZString, int> ordered{{"two", 2}, {"text", 1}};
    hashed.Insert(text, 3);
    ordered.Insert(text, 3);
    EXPECT_EQ(3, hashed.Find("text")->Value() + hashed.Find("two")->Value() - 2);
    EXPECT_EQ(3, ordered.Begin()->Value());
    EXPECT_TRUE(hashed.Size() == 2 && ordered.Size() == 2 && HashBytes("text", 4) == HashKey(text));
}

// Numbers of every length, around the ends of all types, with all that may stand before and behind them.
TEST(IntFromStringTest, AgreesWithFromChars)
{
    ForEachSeed(1,
                [](auto below)
                {
                    const auto any = [&](std::initializer_list<const char*> choices)
                    { return choices.begin()[below(choices.size())]; };
                    for (int i = 0; i < 100000; ++i)
                    {
                        std::string digits = std::to_string((below(UINT64_MAX) >> below(64)));
                        if (i % 2 == 0)
                            digits = std::to_string((uint64{1} << below(64)) + below(5) - 2);
                        std::string text = any({"", "", "", " ", "\t\n ", "\v\f\r", "\b"});
                        text += any({"", "", "-", "-", "+", "--", "- "});
                        text += any({"", "", "", "0", "00000000000000000000000"});
                        text += below(16) == 0 ? "" : digits;
                        text += any({"", "", "", "", "aa", "9", ".5", "-", "\xB2", "00"});
                        ASSERT_TRUE(AgreesOnAllInts(text)) << '"' << text << '"';
                    }
                });

    int nNumber = 5;
    char* pEnd = nullptr;
    const char* volatile pszNull = nullptr;
    EXPECT_FALSE(IntFromString(pszNull, &nNumber, &pEnd));
    EXPECT_EQ(0, nNumber);
    EXPECT_STREQ("", pEnd);
}

TEST(TextIntoABuffer, BreaksWhereItDoesNotFit)
{
    char acBuffer[9] = "########";
    const char* volatile pszNull = nullptr;
    EXPECT_EQ(acBuffer, GetStringPlusString("1234", "5678", acBuffer));
    EXPECT_STREQ("12345678", acBuffer);
    EXPECT_STREQ("1234", GetStringPlusString("1234", pszNull, acBuffer));
    EXPECT_EQ(8, FormatToBuffer(acBuffer, 9, "%d", 12345678));
    EXPECT_STREQ("12345678", acBuffer);
    EXPECT_EQ(0, FormatToBuffer(acBuffer, 1, pszNull, 0));
    EXPECT_BREAK(FormatToBuffer(acBuffer, 9, "%d", 123456789));
    EXPECT_BREAK(FormatToBuffer(acBuffer, 9, "a%lc", kNoCharacter));

    BreakCounter breaks;
    std::memcpy(acBuffer, "########", 8);
    EXPECT_EQ(-1, FormatToBuffer(acBuffer, 4, "%s", "1234"));
    EXPECT_EQ(0, std::memcmp(acBuffer + 4, "####", 4));
    EXPECT_STREQ("", acBuffer);
    EXPECT_EQ(-1, FormatToBuffer(acBuffer + 4, 0, "%s", "1234"));
    EXPECT_EQ('#', acBuffer[4]);
    EXPECT_STREQ("", GetStringPlusString("1234", "56789", acBuffer));
    EXPECT_EQ(3, breaks.Take());
}
