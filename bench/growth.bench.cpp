// How the cost of an element grows with the number of elements: trees, hash tables and dynamic trees of 1000 to
// 10,000,000 elements. A benchmark runs once and reports the CPU time for an element in each phase of its life.
//
// Transparent huge pages are off, because whether the system has one at hand decides more than the container does.
#include "bench/support.h"
#include "core/containers/hashmap.h"
#include "core/containers/map.h"
#include "core/dynamic/dynamicobject.h"

#include <algorithm>
#include <ctime>
#include <map>
#include <nlohmann/json.hpp>
#include <unordered_map>
#include <vector>
#if defined(__linux__)
#include <sys/prctl.h>
#endif

namespace
{
constexpr int64 kSmallest = 1000;
constexpr int64 kLargest = 10'000'000;
constexpr int64 kLookups = 200'000;
constexpr int64 kChildren = 10; // of a node of a dynamic tree

// Different for different numbers, and in no order.
int KeyOf(int64 nNumber)
{
    auto nKey = static_cast<uint32>(nNumber);
    nKey = (nKey ^ nKey >> 16) * 0x85EBCA6B;
    nKey = (nKey ^ nKey >> 13) * 0xC2B2AE35;
    return static_cast<int>(nKey ^ nKey >> 16);
}

float64 Now()
{
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<float64>(time.tv_sec) * 1e9 + static_cast<float64>(time.tv_nsec);
}

// Reports the time that the work takes for each of nElements. The work returns a number that must be nExpected.
template <class TWork>
void Phase(benchmark::State& state, const char* pszName, int64 nElements, int64 nExpected, TWork work)
{
    const float64 fStart = Now();
    const int64 nResult = work();
    state.counters[pszName] = (Now() - fStart) / static_cast<float64>(nElements);
    Consume(state, nResult, nExpected);
}

template <class TMapLike>
void Put(TMapLike& map, int nKey)
{
    if constexpr (requires { map.Insert(nKey, nKey); })
        map.Insert(nKey, nKey);
    else
        map.insert({nKey, nKey});
}

template <class TMapLike>
bool Has(const TMapLike& map, int nKey)
{
    if constexpr (requires { map.Find(nKey); })
        return map.Find(nKey) != map.End();
    else
        return map.find(nKey) != map.end();
}

template <class TMapLike>
void GrowMap(benchmark::State& state)
{
    const int64 n = state.range(0);
    const int64 nMaps = std::max<int64>(1, kLookups / n);
    for (auto _ : state)
    {
        std::vector<TMapLike> maps(static_cast<size_t>(nMaps));
        Phase(state, "insert", n * nMaps, nMaps,
              [&]
              {
                  for (TMapLike& map : maps)
                  {
                      for (int64 i = 0; i < n; ++i)
                          Put(map, KeyOf(i));
                  }
                  return nMaps;
              });
        Phase(state, "find", kLookups, kLookups,
              [&]
              {
                  int64 nFound = 0;
                  for (int64 i = 0; i < kLookups; ++i)
                      nFound += Has(maps.front(), KeyOf(static_cast<uint32>(KeyOf(i)) % n));
                  return nFound;
              });
        Phase(state, "iterate", n * nMaps, n * nMaps,
              [&]
              {
                  int64 nSeen = 0;
                  for (const TMapLike& map : maps)
                  {
                      for ([[maybe_unused]] const auto& [nKey, nValue] : map)
                          nSeen += nKey == nValue;
                  }
                  return nSeen;
              });
        Phase(state, "destroy", n * nMaps, 0,
              [&]
              {
                  maps.clear();
                  return 0;
              });
    }
}

void Append(ZDynamicObject& array, ZDynamicObject&& value)
{
    array.PushBack(std::move(value));
}

void Append(nlohmann::json& array, nlohmann::json&& value)
{
    array.push_back(std::move(value));
}

int64 NumberOf(const ZDynamicObject& value)
{
    return value.GetValue<int>();
}

int64 NumberOf(const nlohmann::json& value)
{
    return value.get<int>();
}

// An array of arrays of ten numbers.
template <class TValue>
TValue Tree(int64 n)
{
    TValue tree;
    for (int64 i = 0; i < n; i += kChildren)
    {
        TValue node;
        for (int64 nChild = 0; nChild < kChildren; ++nChild)
            Append(node, TValue(static_cast<int>(i + nChild)));
        Append(tree, std::move(node));
    }
    return tree;
}

template <class TValue>
int64 SumOf(const TValue& tree)
{
    int64 nSum = 0;
    for (const TValue& node : tree)
    {
        for (const TValue& value : node)
            nSum += NumberOf(value);
    }
    return nSum;
}

template <class TValue>
void GrowTree(benchmark::State& state)
{
    const int64 n = state.range(0);
    const int64 nTrees = std::max<int64>(1, kLookups / n);
    const int64 nSum = n * (n - 1) / 2;
    for (auto _ : state)
    {
        std::vector<TValue> trees(static_cast<size_t>(nTrees));
        std::vector<TValue> copies;
        Phase(state, "insert", n * nTrees, nTrees,
              [&]
              {
                  for (TValue& tree : trees)
                      tree = Tree<TValue>(n);
                  return nTrees;
              });
        Phase(state, "iterate", n * nTrees, nSum * nTrees,
              [&]
              {
                  int64 nTotal = 0;
                  for (const TValue& tree : trees)
                      nTotal += SumOf(tree);
                  return nTotal;
              });
        Phase(state, "copy", n * nTrees, nTrees,
              [&]
              {
                  copies = trees;
                  return static_cast<int64>(copies.size());
              });
        Phase(state, "destroy", n * nTrees, 0,
              [&]
              {
                  trees.clear();
                  return 0;
              });
    }
}

void RegisterSizes(const char* pszName, void (*pFunction)(benchmark::State&))
{
    auto* pBenchmark = benchmark::RegisterBenchmark(pszName, pFunction)->Iterations(1);
    for (int64 n = kSmallest; n <= kLargest; n *= 10)
        pBenchmark->Arg(n);
}
} // namespace

int main(int argc, char** argv)
{
#if defined(__linux__)
    prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0);
#endif
    RegisterSizes("tree/TMap", GrowMap<TMap<int, int>>);
    RegisterSizes("tree/std::map", GrowMap<std::map<int, int>>);
    RegisterSizes("hash table/THashMap", GrowMap<THashMap<int, int>>);
    RegisterSizes("hash table/std::unordered_map", GrowMap<std::unordered_map<int, int>>);
    RegisterSizes("dynamic tree/ZDynamicObject", GrowTree<ZDynamicObject>);
    RegisterSizes("dynamic tree/nlohmann::json", GrowTree<nlohmann::json>);
    return RunBenchmarks(argc, argv);
}
