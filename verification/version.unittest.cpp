// No fixture and no allocator scope: nothing here may reach the normal allocator.
#include "core/values/version.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace
{
struct SVersionCandidate
{
    const char* text;
    Version expected;
    bool wasSuccessful;
};
} // namespace

// One output object for the whole table, which the case never writes: a row that fails must clear all of it.
TEST(Version, Read)
{
    const SVersionCandidate candidates[] = {
        {"0.0.0.0", {{0, 0, 0, 0}}, true},   {"1.0.0.0", {{1, 0, 0, 0}}, true},    {"  1.0.0.0", {{1, 0, 0, 0}}, true},
        {"\t1.0.0.0", {{1, 0, 0, 0}}, true}, {"\n1.0.0.0", {{1, 0, 0, 0}}, true},  {"2.1", {{2, 1, 0, 0}}, true},
        {"2.1    ", {{2, 1, 0, 0}}, true},   {"2.1koarl", {{2, 1, 0, 0}}, true},   {"2.1.3", {{2, 1, 3, 0}}, true},
        {"2.1.3\t ", {{2, 1, 3, 0}}, true},  {"2.1.3Koarl", {{2, 1, 3, 0}}, true}, {"2.1.3.0", {{2, 1, 3, 0}}, true},
        {"2.1.3.0f", {{2, 1, 3, 0}}, true},  {"2-1-3-0", {{0, 0, 0, 0}}, false},   {"#1.0.0.0", {{0, 0, 0, 0}}, false},
        {"2a1", {{0, 0, 0, 0}}, false},      {"2.1.", {{0, 0, 0, 0}}, false},      {"2.1.fadf", {{0, 0, 0, 0}}, false},
        {"foo", {{0, 0, 0, 0}}, false},      {".1.0.0.1", {{0, 0, 0, 0}}, false},  {"", {{0, 0, 0, 0}}, false},
    };

    Version actual;
    int iteration = 0;
    for (const SVersionCandidate& candidate : candidates)
    {
        const bool wasSuccessful = version::FromString(candidate.text, &actual);
        char message[2000] = {};
        sprintf(message, "iteration: %i '%s' expected: '%i.%i.%i.%i', actual: '%i.%i.%i.%i'", iteration, candidate.text,
                candidate.expected.major, candidate.expected.minor, candidate.expected.patch, candidate.expected.build,
                actual.major, actual.minor, actual.patch, actual.build);
        ASSERT_EQ(candidate.wasSuccessful, wasSuccessful) << message;
        ASSERT_EQ(candidate.expected.abs, actual.abs) << message;
        ++iteration;
    }
}
