// No fixture and no allocator scope: nothing in here may reach the normal allocator.
#include "core/values/linereader.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

namespace
{
// A text, its size with the terminator, and how much of it has been read.
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

// clang-format off
TEST(LineReader, basic_tests)
{
    SSource source = {
        "\n"
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

    // A macro, so that a failure shows the line of the step and its number.
#define EXPECT_PIECE(line, piece)                                      \
    do                                                                 \
    {                                                                  \
        pszString = nullptr;                                           \
        nStringLength = 0;                                             \
        nLine = reader.GetNextLine(&pszString, &nStringLength);        \
        EXPECT_STREQ(piece, pszString);                                \
        EXPECT_EQ((line), nLine);                                      \
        if (pszString != nullptr)                                      \
        {                                                              \
            EXPECT_EQ(strlen(pszString), nStringLength);               \
        }                                                              \
    } while (false)

    EXPECT_PIECE(1, "");
    EXPECT_PIECE(2, "0");
    EXPECT_PIECE(3, "01");
    EXPECT_PIECE(4, "012");
    EXPECT_PIECE(5, "0123");
    EXPECT_PIECE(6, "01234");
    EXPECT_PIECE(7, "012345");
    EXPECT_PIECE(8, "0123456");
    EXPECT_PIECE(8, "");
    EXPECT_PIECE(9, "0123456");
    EXPECT_PIECE(9, "7");
    EXPECT_PIECE(10, "0123456");
    EXPECT_PIECE(10, "78");
    EXPECT_PIECE(11, "0123456");
    EXPECT_PIECE(11, "789");
    EXPECT_PIECE(12, "0123456");
    EXPECT_PIECE(12, "789abcd");
    EXPECT_PIECE(12, "efghijk");
    EXPECT_PIECE(12, "lmnopqr");
    EXPECT_PIECE(12, "stuvwxy");
    EXPECT_PIECE(12, "z");
    EXPECT_PIECE(13, "");
    EXPECT_PIECE(14, "0");
    EXPECT_PIECE(15, "01");
    EXPECT_PIECE(16, "012");
    EXPECT_PIECE(17, "0123");
    EXPECT_PIECE(18, "01234");
    EXPECT_PIECE(19, "012345");
    EXPECT_PIECE(19, "");
    EXPECT_PIECE(20, "0123456");
    EXPECT_PIECE(20, "");
    EXPECT_PIECE(21, "0123456");
    EXPECT_PIECE(21, "7");
    EXPECT_PIECE(22, "0123456");
    EXPECT_PIECE(22, "78");
    EXPECT_PIECE(23, "0123456");
    EXPECT_PIECE(23, "789");
    EXPECT_PIECE(24, "0123456");
    EXPECT_PIECE(24, "789abcd");
    EXPECT_PIECE(24, "efghijk");
    EXPECT_PIECE(24, "lmnopqr");
    EXPECT_PIECE(24, "stuvwxy");
    EXPECT_PIECE(24, "z");
    EXPECT_PIECE(25, "\r\r\r\r\r");
    EXPECT_PIECE(26, "\r\r\r\r\r\r");
    EXPECT_PIECE(26, "");
    EXPECT_PIECE(27, "\r\r\r\r\r\r");
    EXPECT_PIECE(27, "\r");
    EXPECT_PIECE(28, "012345");
    EXPECT_PIECE(28, "\ra");
    EXPECT_PIECE(29, "");
    EXPECT_PIECE(30, "");
    EXPECT_PIECE(0, nullptr);
    EXPECT_PIECE(0, nullptr);
#undef EXPECT_PIECE
}
// clang-format on
