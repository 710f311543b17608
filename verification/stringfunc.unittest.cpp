// No fixture and no allocator scope: nothing here may reach the normal allocator.
#include "core/strings/stringfunc.h"

#include <cstring>
#include <gtest/gtest.h>
#include <type_traits>

namespace
{
// A buffer between two guards, which the destructor checks. get() returns a copy that is written back at the end of the
// full expression.
template <int N>
class ZGuardedBuffer
{
public:
    ZGuardedBuffer()
    {
        memcpy(mem, headGuard, sizeof(headGuard) - 1);
        memcpy(mem + sizeof(headGuard) - 1 + size, footGuard, sizeof(footGuard) - 1);
    }
    ~ZGuardedBuffer() { CheckGuards(); }
    ZGuardedBuffer(const ZGuardedBuffer&) = delete;
    ZGuardedBuffer& operator=(const ZGuardedBuffer&) = delete;

    using Array = char[N];

    class ZTransfer
    {
    public:
        // Out of line, because GCC would warn that uninitialised bytes are copied. They are, and that does no harm.
        KX_NOINLINE explicit ZTransfer(ZGuardedBuffer& buffer) : m_pBuffer(&buffer)
        {
            memcpy(m_aCopy, buffer.Text(), N);
        }
        ~ZTransfer() { memcpy(m_pBuffer->Text(), m_aCopy, N); }
        ZTransfer(const ZTransfer&) = delete;
        ZTransfer& operator=(const ZTransfer&) = delete;
        operator Array&() { return m_aCopy; }

    private:
        ZGuardedBuffer* m_pBuffer;
        Array m_aCopy;
    };

    ZTransfer get() { return ZTransfer(*this); }

private:
    static inline const char headGuard[] = "HEADGUARD";
    static inline const char footGuard[] = "FOOTGUARD";
    static const int size = N;

    char* Text() { return mem + sizeof(headGuard) - 1; }

    // A separate function, because a fatal check returns a void expression, which a destructor cannot.
    // clang-format off
    void CheckGuards() const
    {
        ASSERT_FALSE(memcmp(mem, headGuard, sizeof(headGuard)-1));
        ASSERT_FALSE(memcmp(mem + sizeof(headGuard)-1 + size, footGuard, sizeof(footGuard)-1));
    }
    // clang-format on

    char mem[sizeof(headGuard) - 1 + N + sizeof(footGuard) - 1]; // NOLINT(readability-identifier-naming)
};
} // namespace

TEST(StringFunc, StringPlusString)
{
    char temp[256] = "FAIL";
    GetStringPlusString("hello, ", "world", temp);
    ASSERT_STREQ("hello, world", temp);
}

// clang-format off
TEST(StringFunc, StringPlusString_FirstStringDoesntFit)
{
    ZGuardedBuffer<16> str16;
    ASSERT_DEATH(GetStringPlusString<16>("Killing is my business, ", "and business is good", str16.get()), "");
    ZGuardedBuffer<24> str24;
    ASSERT_DEATH(GetStringPlusString<24>("Killing is my business, ", "and business is good", str24.get()), "");
    ZGuardedBuffer<25> str25;
    ASSERT_DEATH(GetStringPlusString<25>("Killing is my business, ", "and business is good", str25.get()), "");
    ZGuardedBuffer<26> str26;
    ASSERT_DEATH(GetStringPlusString<26>("Killing is my business, ", "and business is good", str26.get()), "");
}

TEST(StringFunc, StringPlusString_SecondStringDoesntFit)
{
    ZGuardedBuffer<44> str44;
    ASSERT_DEATH(GetStringPlusString<44>("Killing is my business, ", "and business is good", str44.get()), "");

    ZGuardedBuffer<45> str45;
    GetStringPlusString<45>("Killing is my business, ", "and business is good", str45.get());
    ASSERT_STREQ("Killing is my business, and business is good", str45.get());

    ZGuardedBuffer<46> str46;
    GetStringPlusString<46>("Killing is my business, ", "and business is good", str46.get());
    ASSERT_STREQ("Killing is my business, and business is good", str46.get());
}
// clang-format on

TEST(StringFunc, StringPlusInt)
{
    ZGuardedBuffer<32> str32;
    FormatToBuffer(str32.get(), 32, "%s%i", "Acacia Avenue ", 22);
    ASSERT_STREQ("Acacia Avenue 22", str32.get());
}

namespace
{
template <class T>
struct SCandidate
{
    const char* text;
    std::conditional_t<std::is_signed_v<T>, int64, uint64> expected;
    bool hasSucceeded;
};

// One output variable for the whole table: a row that fails must store 0.
template <class T, uint32 nCount>
void CheckCandidates(const SCandidate<T> (&candidates)[nCount])
{
    T actual;
    for (uint32 index = 0; index < nCount; ++index)
    {
        char message[32];
        FormatToBuffer(message, sizeof(message), "index: %u", index);
        const bool hasSucceeded = IntFromString(candidates[index].text, &actual, nullptr);
        EXPECT_EQ(candidates[index].expected, actual);
        EXPECT_EQ(candidates[index].hasSucceeded, hasSucceeded) << message;
    }
}
} // namespace

// clang-format off
TEST(StringFunc, IntFromString)
{
    CheckCandidates<unsigned char>({
        {"0", 0, true}, {"12", 12, true}, {"255", 255, true}, {"256", 0, false}, {"-1", 0, false}, {"12aa", 12, true},
        {"aaa", 0, false}, {"a12", 0, false}, {"\t\n 1", 1, true},
    });
    CheckCandidates<unsigned short>({
        {"0", 0, true}, {"12", 12, true}, {"255", 255, true}, {"256", 256, true}, {"12000", 12000, true},
        {"65535", 65535, true}, {"65536", 0, false}, {"-1", 0, false}, {"12aa", 12, true}, {"aaa", 0, false},
        {"a12", 0, false}, {"\t\n 1", 1, true},
    });
    CheckCandidates<unsigned int>({
        {"0", 0, true}, {"12", 12, true}, {"255", 255, true}, {"256", 256, true}, {"12000", 12000, true},
        {"65535", 65535, true}, {"65536", 65536, true}, {"-1", 0, false}, {"12aa", 12, true}, {"aaa", 0, false},
        {"a12", 0, false}, {"\t\n 1", 1, true},
    });
    CheckCandidates<uint64>({
        {"0", 0, true}, {"12", 12, true}, {"255", 255, true}, {"256", 256, true}, {"12000", 12000, true},
        {"65535", 65535, true}, {"65536", 65536, true}, {"-1", 0, false}, {"-2", 0, false}, {"12aa", 12, true},
        {"aaa", 0, false}, {"a12", 0, false}, {"\t\n 1", 1, true},
    });
    CheckCandidates<signed char>({
        {"0", 0, true}, {"12", 12, true}, {"127", 127, true}, {"-1", -1, true}, {"-127", -127, true}, {"128", 0, false},
        {"-128", -128, true}, {"255", 0, false}, {"256", 0, false}, {"12aa", 12, true}, {"aaa", 0, false},
        {"a12", 0, false}, {"\t\n 1", 1, true},
    });
    CheckCandidates<short>({
        {"0", 0, true}, {"12", 12, true}, {"255", 255, true}, {"256", 256, true}, {"12000", 12000, true},
        {"-1", -1, true}, {"32767", 32767, true}, {"-32768", -32768, true}, {"32768", 0, false}, {"-32769", 0, false},
        {"32768", 0, false}, {"65535", 0, false}, {"65536", 0, false}, {"12aa", 12, true}, {"aaa", 0, false},
        {"a12", 0, false}, {"\t\n 1", 1, true},
    });
    CheckCandidates<int>({
        {"0", 0, true}, {"12", 12, true}, {"255", 255, true}, {"256", 256, true}, {"12000", 12000, true},
        {"65535", 65535, true}, {"65536", 65536, true}, {"-1", -1, true}, {"12aa", 12, true}, {"aaa", 0, false},
        {"a12", 0, false}, {"\t\n 1", 1, true},
    });
    CheckCandidates<int64>({
        {"0", 0, true}, {"12", 12, true}, {"255", 255, true}, {"256", 256, true}, {"12000", 12000, true},
        {"65535", 65535, true}, {"65536", 65536, true}, {"12aa", 12, true}, {"aaa", 0, false}, {"a12", 0, false},
        {"\t\n 1", 1, true},
    });
}
// clang-format on
