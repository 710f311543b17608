// Debug breaks as a test sees them.
#pragma once

#include <csignal>
#include <gtest/gtest.h>

// Present in a coverage build alone.
extern "C" void __gcov_dump() __attribute__((weak)); // NOLINT(bugprone-reserved-identifier)

namespace kx::tests
{
// Saves the coverage counters of a process that ends at a break.
inline void SaveCoverageAtBreak()
{
    if (&__gcov_dump == nullptr)
        return;
    std::signal(SIGTRAP,
                [](int)
                {
                    __gcov_dump();
                    std::signal(SIGTRAP, SIG_DFL);
                    std::raise(SIGTRAP);
                });
}
} // namespace kx::tests

// The statement ends the process at a breakpoint instruction, and not by some other fault.
#define EXPECT_BREAK(statement)                                                                                        \
    EXPECT_EXIT(                                                                                                       \
        {                                                                                                              \
            kx::tests::SaveCoverageAtBreak();                                                                          \
            statement;                                                                                                 \
        },                                                                                                             \
        testing::KilledBySignal(SIGTRAP), "")

// Acts as a debugger that resumes: while it lives, every debug break is counted and execution continues.
class BreakCounter
{
public:
    BreakCounter()
    {
        ms_nBreaks = 0;
        m_old = std::signal(SIGTRAP, [](int) { ms_nBreaks = ms_nBreaks + 1; });
    }
    ~BreakCounter() { std::signal(SIGTRAP, m_old); }
    BreakCounter(const BreakCounter&) = delete;
    BreakCounter& operator=(const BreakCounter&) = delete;

    // The breaks since the last call.
    int Take()
    {
        const int nBreaks = ms_nBreaks;
        ms_nBreaks = 0;
        return nBreaks;
    }

private:
    static inline volatile std::sig_atomic_t ms_nBreaks = 0;
    void (*m_old)(int);
};
