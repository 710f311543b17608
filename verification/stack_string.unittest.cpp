// No fixture and no allocator scope: nothing here may reach the normal allocator.
#include "core/strings/stack_string.h"

#include <cstring>
#include <gtest/gtest.h>

namespace
{
// Proves that no operation writes outside the buffer: the destructor checks the guards on both sides.
template <uint32 N>
class ZGuardedStackString : public ZStackStringBase
{
public:
    ZGuardedStackString()
    {
        memcpy(mem, headGuard, sizeof(headGuard) - 1);
        memcpy(mem + sizeof(headGuard) - 1 + maxsize, footGuard, sizeof(footGuard) - 1);
        mem[sizeof(headGuard) - 1] = '\0';
    }
    ~ZGuardedStackString() override { CheckGuards(); }
    ZGuardedStackString(const ZGuardedStackString&) = delete;
    ZGuardedStackString& operator=(const ZGuardedStackString&) = delete;

private:
    static inline const char headGuard[] = "HEADGUARD";
    static inline const char footGuard[] = "FOOTGUARD";
    static const uint32 maxsize = N;

    char* buffer() override { return mem + sizeof(headGuard) - 1; }
    uint32 capacity() const override { return N; }

    // A separate function, because a fatal check returns a void expression, which a destructor cannot.
    // clang-format off
    void CheckGuards() const
    {
        ASSERT_FALSE(memcmp(mem, headGuard, sizeof(headGuard)-1));
        ASSERT_FALSE(memcmp(mem + sizeof(headGuard)-1 + maxsize, footGuard, sizeof(footGuard)-1));
    }
    // clang-format on

    char mem[sizeof(headGuard) - 1 + N + sizeof(footGuard) - 1]; // NOLINT(readability-identifier-naming)
};
} // namespace

TEST(StackString, format)
{
    ZStackString<256> ss;
    ss.format("x = %d, and str = '%s'", 42, "Hello World");
    ASSERT_STREQ("x = 42, and str = 'Hello World'", ss.get());
    ASSERT_EQ(31, ss.size());
}

TEST(StackString, xmlEncode)
{
    ZStackString<256> ss;
    ss.format("template<class T> ZFoo;");
    ASSERT_STREQ("template<class T> ZFoo;", ss.get());
    ASSERT_EQ(23, ss.size());

    ss.xmlEncode();
    ASSERT_STREQ("template&lt;class T&gt; ZFoo;", ss.get());
    ASSERT_EQ(29, ss.size());
}

TEST(StackString, prepend)
{
    ZStackString<256> ss;
    ss.format("World");
    ss.prepend("Hello ");
    ASSERT_STREQ("Hello World", ss.get());
    ASSERT_EQ(11, ss.size());
}

TEST(StackString, append)
{
    ZStackString<256> ss;
    ss.format("Hello");
    ss.append(" World");
    ASSERT_STREQ("Hello World", ss.get());
    ASSERT_EQ(11, ss.size());
}

TEST(StackString, appendChar)
{
    ZStackString<256> ss;
    ss.format("Hello");
    ss.appendChar(' ');
    ss.appendChar('W');
    ASSERT_STREQ("Hello W", ss.get());
    ASSERT_EQ(7, ss.size());
}

TEST(StackString, appendFloat)
{
    ZStackString<256> ss;
    ss.format("Hello");
    ss.appendFloat(34.52f, 'f', 6);
    ss.append("!!");
    ASSERT_STREQ("Hello34.520000!!", ss.get());
    ASSERT_EQ(16, ss.size());
}

TEST(StackString, overflowInFormat)
{
    ZGuardedStackString<24> ss24;
    ss24.format("template");
    ss24.format("<class T> ZFoo;");
    ASSERT_STREQ("template<class T> ZFoo;", ss24.get());
    ASSERT_EQ(23, ss24.size());

    ZGuardedStackString<23> ss23;
    ss23.format("template");
    ss23.format("<class T> ZFoo;");
    ASSERT_STREQ("template<class T> ZFoo", ss23.get());
    ASSERT_EQ(22, ss23.size());
}

TEST(StackString, overflowInXmlEncode)
{
    ZGuardedStackString<30> ss30;
    ss30.format("template<class T> ZFoo;");
    ss30.xmlEncode();
    ASSERT_STREQ("template&lt;class T&gt; ZFoo;", ss30.get());
    ASSERT_EQ(29, ss30.size());

    ZGuardedStackString<29> ss29;
    ss29.format("template<class T> ZFoo;");
    ss29.xmlEncode();
    ASSERT_STREQ("template&lt;class T? ZFoo;", ss29.get());
    ASSERT_EQ(26, ss29.size());

    ZGuardedStackString<27> ss27;
    ss27.format("template<class T> ZFoo;");
    ss27.xmlEncode();
    ASSERT_STREQ("template&lt;class T? ZFoo;", ss27.get());
    ASSERT_EQ(26, ss27.size());

    ZGuardedStackString<26> ss26;
    ss26.format("template<class T> ZFoo;");
    ss26.xmlEncode();
    ASSERT_STREQ("template?class T? ZFoo;", ss26.get());
    ASSERT_EQ(23, ss26.size());
}

TEST(StackString, overflowInPrepend)
{
    ZGuardedStackString<12> ss12;
    ss12.format("World");
    ss12.prepend("Hello ");
    ASSERT_STREQ("Hello World", ss12.get());
    ASSERT_EQ(11, ss12.size());

    ZGuardedStackString<11> ss11;
    ss11.format("World");
    ss11.prepend("Hello ");
    ASSERT_STREQ("Hello Worl", ss11.get());
    ASSERT_EQ(10, ss11.size());

    ZGuardedStackString<7> ss7;
    ss7.format("World");
    ss7.prepend("Hello ");
    ASSERT_STREQ("Hello ", ss7.get());
    ASSERT_EQ(6, ss7.size());

    ZGuardedStackString<6> ss6;
    ss6.format("World");
    ss6.prepend("Hello ");
    ASSERT_STREQ("Hello", ss6.get());
    ASSERT_EQ(5, ss6.size());
}

TEST(StackString, overflowInAppend)
{
    ZGuardedStackString<12> ss12;
    ss12.format("Hello");
    ss12.append(" World");
    ASSERT_STREQ("Hello World", ss12.get());
    ASSERT_EQ(11, ss12.size());

    ZGuardedStackString<11> ss11;
    ss11.format("Hello");
    ss11.append(" World");
    ASSERT_STREQ("Hell World", ss11.get());
    ASSERT_EQ(10, ss11.size());

    ZGuardedStackString<7> ss7;
    ss7.format("Hello");
    ss7.append(" World");
    ASSERT_STREQ(" World", ss7.get());
    ASSERT_EQ(6, ss7.size());

    ZGuardedStackString<6> ss6;
    ss6.format("Hello");
    ss6.append(" World");
    ASSERT_STREQ(" Worl", ss6.get());
    ASSERT_EQ(5, ss6.size());
}

TEST(StringFunc, StringFromFloat)
{
    const struct
    {
        float value;
        char format;
        const char* text;
    } rows[] = {
        {3.1415f, 'f', "3.141499"},       {-63.1415f, 'f', "-63.141498"},     {0.0099999f, 'f', "0.009999"},
        {230.0f, 'f', "230.000000"},      {-0.01f, 'f', "-0.009999"},         {0.0f, 'f', "0.000000"},
        {230.0f, 'e', "2.300000e+002"},   {-63.1415f, 'e', "-6.314149e+001"}, {-0.01f, 'e', "-9.999999e-003"},
        {-0.015f, 'e', "-1.499999e-002"},
    };
    for (const auto& row : rows)
    {
        ZGuardedStackString<256> str0;
        str0.appendFloat(row.value, row.format, 6);
        EXPECT_STREQ(row.text, str0.get());
    }
}
