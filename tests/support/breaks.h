// Debug breaks as a test sees them.
#pragma once

#include <csignal>
#include <gtest/gtest.h>
#if defined(_WIN32)
#include "tests/support/windows.h"
#else
#include <ucontext.h>

// Present in a coverage build alone.
extern "C" void __gcov_dump() __attribute__((weak)); // NOLINT(bugprone-reserved-identifier)
#endif

namespace kx::tests
{
// Saves the coverage counters of a process that ends at a break.
inline void SaveCoverageAtBreak()
{
#if !defined(_WIN32)
    if (&__gcov_dump == nullptr)
        return;
    std::signal(SIGTRAP,
                [](int)
                {
                    __gcov_dump();
                    std::signal(SIGTRAP, SIG_DFL);
                    std::raise(SIGTRAP);
                });
#endif
}
} // namespace kx::tests

#if defined(_WIN32)
#define KX_ENDED_AT_BREAK testing::ExitedWithCode(static_cast<int>(kx::tests::kBreakStatus))
#define KX_ENDED_BY_ABORT testing::ExitedWithCode(3)
#else
#define KX_ENDED_AT_BREAK testing::KilledBySignal(SIGTRAP)
#define KX_ENDED_BY_ABORT testing::KilledBySignal(SIGABRT)
#endif

// The statement ends the process at a breakpoint instruction, and not by some other fault.
#define EXPECT_BREAK(statement)                                                                                        \
    EXPECT_EXIT(                                                                                                       \
        {                                                                                                              \
            kx::tests::SaveCoverageAtBreak();                                                                          \
            statement;                                                                                                 \
        },                                                                                                             \
        KX_ENDED_AT_BREAK, "")

// Acts as a debugger that resumes: while it lives, every debug break is counted and execution continues.
class BreakCounter
{
public:
    BreakCounter()
    {
        ms_nBreaks = 0;
        Install();
    }
    ~BreakCounter() { Remove(); }
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

#if defined(_WIN32)
    void Install()
    {
        m_pHandler = kx::tests::InstallBreakHandler(ms_nBreaks);
    }
    void Remove()
    {
        kx::tests::RemoveBreakHandler(m_pHandler);
    }

    void* m_pHandler = nullptr;
#else
    static void OnSignal(int /*nSignal*/, siginfo_t* /*pInfo*/, [[maybe_unused]] void* pContext)
    {
        ms_nBreaks = ms_nBreaks + 1;
#if defined(__aarch64__)
        static_cast<ucontext_t*>(pContext)->uc_mcontext.pc += 4; // the processor reports the instruction itself
#endif
    }
    void Install()
    {
        struct sigaction action = {};
        action.sa_sigaction = OnSignal;
        action.sa_flags = SA_SIGINFO;
        sigaction(SIGTRAP, &action, &m_old);
    }
    void Remove()
    {
        sigaction(SIGTRAP, &m_old, nullptr);
    }

    struct sigaction m_old = {};
#endif
};
