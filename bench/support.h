// The code that the benchmark programs share. A benchmark is named "row/contestant/n". bench/table.py turns a program's
// output into one table with a line for each row and n and a column for each contestant.
#pragma once

#include "core/memory/memorymanager.h"

#include <benchmark/benchmark.h>
#include <initializer_list>
#include <string>

// The elements are a plain int and this struct, which fills a cache line.
struct SBlock64
{
    SBlock64(int nValue = 0) : m_anValues{nValue} {}
    operator int() const { return static_cast<int>(m_anValues[0]); }

    int64 m_anValues[8];
};

// Hides a result from the optimiser, and ends the run with an error if the result is wrong. It uses a volatile store,
// because benchmark::DoNotOptimize lets GCC 12 drop a load that belongs to the work.
inline volatile int64 g_nSink = 0;

inline void Consume(benchmark::State& state, int64 nResult, int64 nExpected)
{
    g_nSink = nResult;
    if (nResult != nExpected)
        state.SkipWithError("wrong result");
    benchmark::ClobberMemory();
}

// Registers a benchmark for the three sizes of every table.
template <class TFunction>
void Register(const std::string& row, const std::string& contestant, TFunction function)
{
    benchmark::RegisterBenchmark((row + "/" + contestant).c_str(), function)->Arg(16)->Arg(1000)->Arg(100000);
}

// In benchmarks of operations that take a few nanoseconds, a turn is kBatch operations.
constexpr int64 kBatch = 100;

// Runs operation(i) for i from 0 to kBatch - 1. The operation returns a number that adds up to nExpected.
template <class TOperation>
void RunBatches(benchmark::State& state, int64 nExpected, TOperation operation)
{
    for (auto _ : state)
    {
        int64 nSum = 0;
        for (int64 i = 0; i < kBatch; ++i)
            nSum += static_cast<int64>(operation(static_cast<size_t>(i)));
        Consume(state, nSum, nExpected);
    }
}

inline void RegisterAt(const char* pszRow, const char* pszContestant, void (*pFunction)(benchmark::State&),
                       std::initializer_list<int64> sizes)
{
    auto* pBenchmark = benchmark::RegisterBenchmark((std::string(pszRow) + "/" + pszContestant).c_str(), pFunction);
    for (const int64 n : sizes)
        pBenchmark->Arg(n);
}

// The main function of a benchmark program.
inline int RunBenchmarks(int argc, char** argv)
{
    ZMemAllocatorScope scope;
    benchmark::Initialize(&argc, argv);
    return benchmark::ReportUnrecognizedArguments(argc, argv) ? 1 : benchmark::RunSpecifiedBenchmarks() == 0;
}
