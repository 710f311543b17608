// demangle beside LLVM's demangler for the same symbols. A turn reads all symbols of a list that both can read.
#include "core/values/demangle.h"
#include "bench/support.h"

#include <cstdlib>
#include <fstream>
#include <llvm/Demangle/Demangle.h>
#include <string>
#include <vector>

namespace
{
using Symbols = std::vector<std::string>;

struct SOwn
{
    explicit SOwn(bool bVerbose, bool bModern = false) : m_options{.m_bVerbose = bVerbose, .m_bModern = bModern} {}

    uint64 operator()(const std::string& symbol)
    {
        m_text.clear();
        demangle(m_text, std::string_view(symbol), m_options);
        return m_text.size();
    }

    SDemangleOptions m_options;
    ZStackString<4096> m_text;
};

struct SOwnModern : SOwn
{
    explicit SOwnModern(bool bVerbose) : SOwn(bVerbose, true) {}
};

// Gets its output buffer back on each call, which saves it an allocation. The result 0 means that it cannot read the
// symbol.
struct SLlvm
{
    explicit SLlvm(bool bVerbose)
    {
        if (!bVerbose)
            m_flags = static_cast<llvm::MSDemangleFlags>(llvm::MSDF_NoAccessSpecifier | llvm::MSDF_NoCallingConvention);
    }
    SLlvm(const SLlvm&) = delete;
    SLlvm& operator=(const SLlvm&) = delete;
    ~SLlvm() { std::free(m_pBuffer); }

    uint64 operator()(const std::string& symbol)
    {
        uint64 nSize = m_nBuffer;
        int nStatus = 0;
        char* pText = llvm::microsoftDemangle(symbol.c_str(), nullptr, m_pBuffer, &nSize, &nStatus, m_flags);
        return pText != nullptr ? nSize : 0;
    }

    llvm::MSDemangleFlags m_flags = llvm::MSDF_None;
    uint64 m_nBuffer = 4096;
    char* m_pBuffer = static_cast<char*>(std::malloc(m_nBuffer));
};

// The first column of the file, without the symbols that the peer cannot read.
Symbols ReadSymbols(const char* pszFile)
{
    Symbols symbols;
    std::ifstream file(std::string(KX_TEST_DATA) + pszFile);
    SLlvm peer(true);
    for (std::string line; std::getline(file, line);)
    {
        std::string symbol = line.substr(0, line.find('\t'));
        if (symbol.starts_with('?') && peer(symbol) != 0)
            symbols.push_back(std::move(symbol));
    }
    return symbols;
}

template <class TContestant>
void Demangle(benchmark::State& state, const Symbols& symbols, bool bVerbose)
{
    TContestant contestant(bVerbose);
    const auto sum = [&]
    {
        uint64 nSum = 0;
        for (const std::string& symbol : symbols)
            nSum += contestant(symbol);
        return static_cast<int64>(nSum);
    };
    const int64 nExpected = sum();
    for (auto _ : state)
        Consume(state, sum(), nExpected);
}

void RegisterList(const std::string& row, const char* pszFile, bool bModern = false)
{
    const Symbols symbols = ReadSymbols(pszFile);
    for (const bool bVerbose : {true, false})
    {
        const std::string name = row + (bVerbose ? ", verbose" : ", plain");
        const auto add = [&](const char* pszContestant, auto function)
        {
            benchmark::RegisterBenchmark((name + "/" + pszContestant).c_str(), function, symbols, bVerbose)
                ->Arg(static_cast<int64>(symbols.size()));
        };
        add("demangle", bModern ? Demangle<SOwnModern> : Demangle<SOwn>);
        add("llvm::microsoftDemangle", Demangle<SLlvm>);
    }
}
} // namespace

int main(int argc, char** argv)
{
    RegisterList("symbols of the cases", "vectors.tsv");
    RegisterList("every code", "symbols.tsv");
    RegisterList("current symbols, modern", "modern.tsv", true);
    return RunBenchmarks(argc, argv);
}
