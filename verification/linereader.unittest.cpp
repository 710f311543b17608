// No fixture and no allocator scope: nothing here may reach the normal allocator.
#include "core/values/linereader.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <utility>

namespace
{
// A string, its size with the terminator, and how much of it has been read.
struct SSource
{
    const char* m_pszText;
    uint32 m_nSize;
    uint32 m_nPosition;
};

int ReadSource(uint64 nUser, char* pTarget, uint32 nSize)
{
    SSource& source = *reinterpret_cast<SSource*>(nUser);
    const uint32 n = std::min(nSize, source.m_nSize - source.m_nPosition);
    memcpy(pTarget, source.m_pszText + source.m_nPosition, n);
    source.m_nPosition += n;
    return static_cast<int>(n);
}
} // namespace

TEST(LineReader, basic_tests)
{
    SSource source = {"\n"
                      "0\n"
                      "01\n"
                      "012\n"
                      "0123\n"
                      "01234\n"
                      "012345\n"
                      "0123456\n"
                      "01234567\n"
                      "012345678\n"
                      "0123456789\n"
                      "0123456789abcdefghijklmnopqrstuvwxyz\n"
                      "\r\n"
                      "0\r\n"
                      "01\r\n"
                      "012\r\n"
                      "0123\r\n"
                      "01234\r\n"
                      "012345\r\n"
                      "0123456\r\n"
                      "01234567\r\n"
                      "012345678\r\n"
                      "0123456789\r\n"
                      "0123456789abcdefghijklmnopqrstuvwxyz\r\n"
                      "\r\r\r\r\r\r\n"
                      "\r\r\r\r\r\r\r\n"
                      "\r\r\r\r\r\r\r\r\n"
                      "012345\ra\r\n"
                      "\n"
                      "\n",
                      255, 0};
    char buffer[8] = {};
    ZLineReader reader(ReadSource, reinterpret_cast<uint64>(&source), buffer, sizeof(buffer));
    char* pszString = nullptr;
    uint32 nStringLength = 0;
    int nLine = 0;

    // A macro, so that a failure shows the expected number as it is written in the call.
#define EXPECT_PIECE(line, piece)                                                                                      \
    do                                                                                                                 \
    {                                                                                                                  \
        pszString = nullptr;                                                                                           \
        nStringLength = 0;                                                                                             \
        nLine = reader.GetNextLine(&pszString, &nStringLength);                                                        \
        EXPECT_STREQ(piece, pszString);                                                                                \
        EXPECT_EQ((line), nLine);                                                                                      \
        if (pszString != nullptr)                                                                                      \
        {                                                                                                              \
            EXPECT_EQ(strlen(pszString), nStringLength);                                                               \
        }                                                                                                              \
    } while (false)

    // The line numbers, and the pieces into which the buffer cuts the lines.
    // clang-format off
    const std::pair<int, const char*> kPieces[] = {
        {1, ""}, {2, "0"}, {3, "01"}, {4, "012"}, {5, "0123"}, {6, "01234"}, {7, "012345"},
        {8, "0123456"}, {8, ""}, {9, "0123456"}, {9, "7"}, {10, "0123456"}, {10, "78"}, {11, "0123456"}, {11, "789"},
        {12, "0123456"}, {12, "789abcd"}, {12, "efghijk"}, {12, "lmnopqr"}, {12, "stuvwxy"}, {12, "z"},
        {13, ""}, {14, "0"}, {15, "01"}, {16, "012"}, {17, "0123"}, {18, "01234"},
        {19, "012345"}, {19, ""}, {20, "0123456"}, {20, ""},
        {21, "0123456"}, {21, "7"}, {22, "0123456"}, {22, "78"}, {23, "0123456"}, {23, "789"},
        {24, "0123456"}, {24, "789abcd"}, {24, "efghijk"}, {24, "lmnopqr"}, {24, "stuvwxy"}, {24, "z"},
        {25, "\r\r\r\r\r"}, {26, "\r\r\r\r\r\r"}, {26, ""}, {27, "\r\r\r\r\r\r"}, {27, "\r"},
        {28, "012345"}, {28, "\ra"}, {29, ""}, {30, ""},
    };
    // clang-format on
    for (const auto& [line, piece] : kPieces)
    {
        SCOPED_TRACE(testing::Message() << line << ": " << testing::PrintToString(piece));
        EXPECT_PIECE(line, piece);
    }
    EXPECT_PIECE(0, nullptr);
    EXPECT_PIECE(0, nullptr);
}
