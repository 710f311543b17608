// A debug break stops at the check, and where someone resumes, the code behind it goes on.
#include "core/platform/platform.h"
#include "tests/support/breaks.h"

TEST(DebugBreak, EndsTheProcessWithoutADebugger)
{
    EXPECT_BREAK(detail::BreakUnless(false));
    detail::BreakUnless(true);
}

TEST(DebugBreak, GoesOnWhenResumed)
{
    BreakCounter breaks;
    int nReached = 0;
    for (int i = 0; i < 4; ++i)
    {
        detail::BreakUnless(i % 2 == 0);
        ++nReached;
    }
    EXPECT_EQ(2, breaks.Take());
    EXPECT_EQ(4, nReached);
}
