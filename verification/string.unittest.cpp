#include "core/strings/string.h"

#include <gtest/gtest.h>

class TStringTest : public testing::Test
{
    ZMemAllocatorScope m_scope;
};

TEST_F(TStringTest, Walnut_Quiddits_Test)
{
    const ZString sBody = ZString::AllocateFromCString("Walnut Quiddits Test", 20);

    const ZString sClampedBody0 = sBody.Substring(0, sBody.Length() < 14 ? sBody.Length() : 14);
    ASSERT_STREQ("Walnut Quiddit", sClampedBody0.ToCString());
    const ZString sClampedBody1 = sBody.Substring(0, 14);
    ASSERT_STREQ("Walnut Quiddit", sClampedBody1.ToCString());
    const ZString sClampedBody2 = sBody.Substring(0, sBody.Length() < 31000 ? sBody.Length() : 31000);
    ASSERT_STREQ("Walnut Quiddits Test", sClampedBody2.ToCString());
    const ZString sClampedBody3 = sBody.Substring(0, 31000);
    ASSERT_STREQ("Walnut Quiddits Test", sClampedBody3.ToCString());
}

TEST_F(TStringTest, LastIndexOf_Test)
{
    const ZString test("abc-abc");

    ASSERT_EQ(5, test.LastIndexOf('b'));
    ASSERT_EQ(2, test.LastIndexOf('c', 5));
    ASSERT_EQ(-1, test.LastIndexOf('-', 2));
    ASSERT_EQ(5, test.LastIndexOfAny("ab"));
    ASSERT_EQ(5, test.LastIndexOfAny("ba"));
    ASSERT_EQ(-1, test.LastIndexOfAny("def"));
    ASSERT_EQ(4, test.LastIndexOfAny("abc", 4));
    ASSERT_EQ(2, test.LastIndexOfAny("bc", 4));
    ASSERT_EQ(-1, test.LastIndexOfAny("d-e", 2));
}
