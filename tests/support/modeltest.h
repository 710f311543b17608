// What tests that watch the allocator, and tests that run a model beside the real thing, have in common.
#pragma once

#include "tests/support/journal.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

// A test whose normal allocator writes into the journal.
class JournalTest : public testing::Test
{
public:
    JournalTest()
    {
        TakeJournal();
        GetMemoryManager()->InstallAllocator(ALLOCATOR_NORMAL, &m_allocator);
    }
    ~JournalTest() override { GetMemoryManager()->UnInstallAllocator(ALLOCATOR_NORMAL); }

protected:
    JournalAllocator m_allocator;
};

// Calls run(below) for the seeds 1, 2, 3, ..., below(n) being random numbers from 0 to n - 1. The environment variable
// KX_TEST_ROUNDS makes it so many times as many seeds; a failure names the seed.
template <class TRun>
void ForEachSeed(uint32 nSeeds, TRun run)
{
    const char* pszRounds = std::getenv("KX_TEST_ROUNDS");
    const uint64 nLast = nSeeds * (pszRounds != nullptr ? std::strtoull(pszRounds, nullptr, 10) : 1);
    for (uint64 nSeed = 1; nSeed <= nLast && !testing::Test::HasFailure(); ++nSeed)
    {
        SCOPED_TRACE("seed " + std::to_string(nSeed));
        std::mt19937_64 random(nSeed);
        run([&](uint64 n) { return random() % n; });
    }
}
