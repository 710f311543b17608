#include "core/values/guid.h"

#include <gtest/gtest.h>

class GuidTest : public testing::Test
{
    ZMemAllocatorScope m_scope;
};

TEST_F(GuidTest, Construct)
{
    const ZGuid guid;
    ASSERT_STREQ("00000000-0000-0000-0000-000000000000", guid.ToString().ToCString());
}

TEST_F(GuidTest, StringConversion)
{
    ZGuid guid;
    guid.FromString("97f879bd-be59-447b-ae39-5c54e0e67d22");
    ASSERT_STREQ("97f879bd-be59-447b-ae39-5c54e0e67d22", guid.ToString().ToCString());
}

TEST_F(GuidTest, Compare)
{
    const ZGuid lhs("97f879bd-be59-447b-ae39-5c54e0e67d22");
    const ZGuid rhs("e8a72fe8-7498-47ef-a858-41f1ec50bd6f");
    const ZGuid empty;
    ASSERT_TRUE(lhs != rhs);
    ASSERT_TRUE(lhs == lhs);
    ASSERT_TRUE(empty < rhs);
}

TEST_F(GuidTest, Assign)
{
    ZGuid lhs;
    lhs = ZGuid("e8a72fe8-7498-47ef-a858-41f1ec50bd6f");
    ASSERT_TRUE(lhs == lhs);
}

TEST_F(GuidTest, Empty)
{
    const ZGuid guid = ZGuid::Empty;
    ASSERT_STREQ("00000000-0000-0000-0000-000000000000", guid.ToString().ToCString());
}

TEST_F(GuidTest, Malformed)
{
    ZGuid guid;
    guid.FromString("This is a very long string that is definitely not a GUID!");
    ASSERT_STREQ("00000000-0000-0000-0000-000000000000", guid.ToString().ToCString());
    guid.FromString("00000000-0000-0000-0000-000000000000");
    ASSERT_STREQ("00000000-0000-0000-0000-000000000000", guid.ToString().ToCString());
    guid.FromString("Short non-GUID!");
    ASSERT_STREQ("00000000-0000-0000-0000-000000000000", guid.ToString().ToCString());
    guid.FromString("        -    -    -    -            ");
    ASSERT_STREQ("00000000-0000-0000-0000-000000000000", guid.ToString().ToCString());
    guid.FromString("klklklkl-klkl-klkl-klkl-klklklklklkl");
    ASSERT_STREQ("00000000-0000-0000-0000-000000000000", guid.ToString().ToCString());
    guid.FromString("&*&*&*&*-&*&*-%%%%-####-@!@!@!@!@!@!");
    ASSERT_STREQ("00000000-0000-0000-0000-000000000000", guid.ToString().ToCString());
}
