// The JSON module beside JSON libraries: the time to read a text to a tree of the library and to write that tree, on
// three documents of about 2.5 MB. With --memory, prints what each tree takes.
#include "runtime/json/json.h"

#include "bench/support.h"

#include <boost/json/src.hpp>
#include <malloc.h>
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>

#include <cstdio>
#include <memory>
#include <random>
#include <string>

namespace
{
std::mt19937_64 g_random(1);

uint64 Below(uint64 n)
{
    return g_random() % n;
}

template <class... TArgs>
void Print(std::string& text, const char* pszFormat, TArgs... args)
{
    char acBuffer[512];
    text.append(acBuffer, static_cast<size_t>(std::snprintf(acBuffer, sizeof(acBuffer), pszFormat, args...)));
}

// Many small objects, as of a database or a message queue.
std::string Objects()
{
    std::string text = "[";
    for (int i = 0; i < 15000; ++i)
    {
        Print(text, R"(%s{"id":%d,"name":"user %lu","email":"user%lu@example.org","age":%lu,"score":%.3f,)",
              i == 0 ? "" : ",", i, Below(100000), Below(100000), Below(90), static_cast<double>(Below(100000)) / 1000);
        Print(text, R"("active":%s,"tags":["alpha","beta%lu"],"position":{"x":%lu,"y":%lu}})",
              Below(2) == 0 ? "false" : "true", Below(10), Below(1000), Below(1000));
    }
    return text + "]";
}

// Coordinates of a map.
std::string Numbers()
{
    std::string text = "[";
    for (int i = 0; i < 60000; ++i)
        Print(text, "%s[%.15g,%.15g,%lu]", i == 0 ? "" : ",", static_cast<double>(Below(1UL << 53)) * 4e-14 - 180,
              static_cast<double>(Below(1UL << 53)) * 2e-14 - 90, Below(10000));
    return text + "]";
}

// Articles: words, with a line break or a letter of two bytes now and then.
std::string Strings()
{
    std::string text = "[";
    for (int i = 0; i < 2500; ++i)
    {
        text += i == 0 ? "" : ",";
        text += R"({"title":"A title of some length","text":")";
        for (uint64 nWords = 40 + Below(320); nWords > 0; --nWords)
        {
            for (uint64 n = 1 + Below(9); n > 0; --n)
                text += static_cast<char>('a' + Below(26));
            text += Below(60) == 0 ? "\\n" : Below(80) == 0 ? "\xC3\xA4" : " ";
        }
        text += "\"}";
    }
    return text + "]";
}

// Each contestant reads with Read and writes with Write; the result of Write is the length of the text.
struct Ours
{
    using Tree = ZDynamicObject;
    static void Read(const std::string& text, Tree& tree) { json::Read(text, tree); }
    static size_t Write(const Tree& tree)
    {
        ZString text;
        json::Write(tree, text);
        return static_cast<size_t>(text.Length());
    }
};

struct Rapid
{
    using Tree = rapidjson::Document;
    static void Read(const std::string& text, Tree& tree) { tree.Parse(text.data(), text.size()); }
    static size_t Write(const Tree& tree)
    {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        tree.Accept(writer);
        return buffer.GetSize();
    }
};

struct Boost
{
    using Tree = boost::json::value;
    static void Read(const std::string& text, Tree& tree) { tree = boost::json::parse(text); }
    static size_t Write(const Tree& tree) { return boost::json::serialize(tree).size(); }
};

struct Nlohmann
{
    using Tree = nlohmann::ordered_json;
    static void Read(const std::string& text, Tree& tree) { tree = Tree::parse(text); }
    static size_t Write(const Tree& tree) { return tree.dump().size(); }
};

struct Simd
{
    using Tree = simdjson::dom::parser;
    static void Read(const std::string& text, Tree& tree)
    {
        if (tree.parse(text).error() != simdjson::SUCCESS)
            std::abort();
    }
};

template <class TContestant>
void ReadText(benchmark::State& state, const std::string& text)
{
    for (auto _ : state)
    {
        auto pTree = std::make_unique<typename TContestant::Tree>();
        TContestant::Read(text, *pTree);
        benchmark::ClobberMemory();
        state.PauseTiming();
        pTree.reset();
        state.ResumeTiming();
    }
}

template <class TContestant>
void WriteText(benchmark::State& state, const std::string& text)
{
    typename TContestant::Tree tree;
    TContestant::Read(text, tree);
    for (auto _ : state)
        benchmark::DoNotOptimize(TContestant::Write(tree));
}

template <class TContestant>
void RegisterContestant(const char* pszName, const char* pszRow, const std::string& text)
{
    const std::string tail = std::string(pszRow) + "/" + pszName;
    const auto nKilobytes = static_cast<int64>(text.size() / 1000);
    const auto read = [&text](benchmark::State& state) { ReadText<TContestant>(state, text); };
    benchmark::RegisterBenchmark(("read " + tail).c_str(), read)->Arg(nKilobytes);
    if constexpr (requires(const typename TContestant::Tree& tree) { TContestant::Write(tree); })
    {
        const auto write = [&text](benchmark::State& state) { WriteText<TContestant>(state, text); };
        benchmark::RegisterBenchmark(("write " + tail).c_str(), write)->Arg(nKilobytes);
    }
}

template <class TContestant>
void PrintMemory(const char* pszName, const std::string& text)
{
    const auto inUse = []
    {
        const auto info = mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    const size_t nBefore = inUse();
    typename TContestant::Tree tree;
    TContestant::Read(text, tree);
    std::printf("  %s %.2f", pszName, static_cast<double>(inUse() - nBefore) / static_cast<double>(text.size()));
}
} // namespace

int main(int argc, char** argv)
{
    const std::pair<const char*, std::string> aDocuments[] = {
        {"objects", Objects()}, {"numbers", Numbers()}, {"strings", Strings()}};
    const bool bMemory = argc > 1 && std::string_view(argv[1]) == "--memory";
    const ZMemAllocatorScope scope;
    for (const auto& [pszRow, text] : aDocuments)
    {
        if (bMemory)
        {
            std::printf("%s, bytes for each byte of the text:", pszRow);
            PrintMemory<Ours>("ZDynamicObject", text);
            PrintMemory<Rapid>("RapidJSON", text);
            PrintMemory<Boost>("boost::json", text);
            PrintMemory<Nlohmann>("ordered_json", text);
            std::puts("");
            continue;
        }
        RegisterContestant<Ours>("ZDynamicObject", pszRow, text);
        RegisterContestant<Rapid>("RapidJSON", pszRow, text);
        RegisterContestant<Boost>("boost::json", pszRow, text);
        RegisterContestant<Nlohmann>("ordered_json", pszRow, text);
        RegisterContestant<Simd>("simdjson DOM", pszRow, text);
    }
    return bMemory ? 0 : RunBenchmarks(argc, argv);
}
