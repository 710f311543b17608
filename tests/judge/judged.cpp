// A program for verification/judge.cmake to judge: one case passes, one fails, and one ends the process on request.
#include "core/platform/platform.h"

#include <cstdlib>
#include <gtest/gtest.h>

TEST(Judged, Passes) {}

TEST(Judged, Fails)
{
    EXPECT_TRUE(std::getenv("JUDGED_FAILS") == nullptr);
}

TEST(Judged, Dies)
{
    kx::detail::BreakUnless(std::getenv("JUDGED_DIES") == nullptr);
}
