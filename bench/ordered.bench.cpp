// TSet, TMultiSet, TMap and TMultiMap beside the node-based trees of the standard library and of Boost, and beside
// Abseil's B-trees. A time is that of a batch of containers with at least 4096 elements together, or of 1024 lookups.
#include "bench/support.h"
#include "core/containers/map.h"
#include "core/containers/set.h"
#include "core/strings/string.h"

#include <absl/container/btree_map.h>
#include <absl/container/btree_set.h>
#include <algorithm>
#include <boost/container/map.hpp>
#include <boost/container/set.hpp>
#include <map>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace
{
// A key whose order is a function of its class. TSet compares a new key twice on its way. The row shows whether the
// compiler drops the second comparisons of a class too.
struct SId
{
    SId(int nValue) : m_nValue(nValue) {}
    bool operator<(const SId& other) const { return m_nValue < other.m_nValue; }

    int m_nValue;
};

int KeyOf(int nKey)
{
    return nKey;
}

template <class TPair>
int KeyOf(const TPair& pair)
{
    if constexpr (requires { pair.Key(); })
        return pair.Key();
    else
        return pair.first;
}

template <class TBase>
struct TOwn : TBase
{
    int64 Count() const { return this->Size(); }
    void RemoveAll() { this->Clear(); }
    bool Has(int nKey) const { return this->Find(nKey) != this->End(); }
    void Drop(int nKey) { this->Remove(nKey); }
    void Put(int nKey)
    {
        if constexpr (requires { this->Insert(nKey, nKey); })
            this->Insert(nKey, nKey);
        else if constexpr (requires { this->Insert({nKey, nKey}); })
            this->Insert({nKey, nKey});
        else
            this->Insert(nKey);
    }
};

template <class TBase>
struct TPeer : TBase
{
    int64 Count() const { return static_cast<int64>(this->size()); }
    void RemoveAll() { this->clear(); }
    bool Has(int nKey) const { return this->find(nKey) != this->end(); }
    void Drop(int nKey) { this->erase(this->find(nKey)); }
    void Put(int nKey)
    {
        if constexpr (requires { this->insert_or_assign(nKey, nKey); })
            this->insert_or_assign(nKey, nKey);
        else if constexpr (requires { typename TBase::mapped_type; })
            this->insert({nKey, nKey});
        else
            this->insert(nKey);
    }
};

// A map whose insertion constructs the pair in place.
template <class TBase>
struct TEmplacing : TBase
{
    void Put(int nKey)
    {
        if constexpr (requires { this->Emplace(nKey, nKey); })
            this->Emplace(nKey, nKey);
        else
            this->try_emplace(nKey, nKey);
    }
};

// The even numbers below 2n in ascending or in random order, once for each container of a batch, so that the branch
// predictor does not learn the order of a small container.
std::vector<int> Keys(int64 n, bool bSorted)
{
    std::mt19937 random(1);
    std::vector<int> keys;
    while (keys.size() < 4096)
    {
        const size_t nOld = keys.size();
        for (int i = 0; i < n; ++i)
            keys.push_back(2 * i);
        if (!bSorted)
            std::shuffle(keys.begin() + static_cast<std::ptrdiff_t>(nOld), keys.end(), random);
    }
    return keys;
}

template <class TContainer>
struct TBatch
{
    TBatch(int64 n, bool bSorted)
        : m_n(static_cast<size_t>(n)), m_keys(Keys(n, bSorted)), m_containers(m_keys.size() / m_n)
    {
    }

    template <class TFunction>
    void ForEachKey(TFunction function)
    {
        for (size_t i = 0; i < m_keys.size(); ++i)
            function(m_containers[i / m_n], m_keys[i]);
    }

    void Fill()
    {
        ForEachKey([](TContainer& container, int nKey) { container.Put(nKey); });
    }

    void RemoveAll()
    {
        for (TContainer& container : m_containers)
            container.RemoveAll();
    }

    size_t m_n;
    std::vector<int> m_keys;
    std::vector<TContainer> m_containers;
};

template <class TContainer, bool bSorted>
void Insert(benchmark::State& state)
{
    TBatch<TContainer> batch(state.range(0), bSorted);
    for (auto _ : state)
    {
        batch.Fill();
        Consume(state, batch.m_containers.back().Count(), state.range(0));
        state.PauseTiming();
        batch.RemoveAll();
        state.ResumeTiming();
    }
}

template <class TContainer>
void Clear(benchmark::State& state)
{
    TBatch<TContainer> batch(state.range(0), false);
    for (auto _ : state)
    {
        state.PauseTiming();
        batch.Fill();
        state.ResumeTiming();
        batch.RemoveAll();
        Consume(state, batch.m_containers.back().Count(), 0);
    }
}

template <class TContainer>
void Erase(benchmark::State& state)
{
    TBatch<TContainer> batch(state.range(0), false);
    std::vector<int> order = batch.m_keys;
    std::rotate(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(batch.m_n), order.end());
    if (batch.m_containers.size() == 1)
        std::reverse(order.begin(), order.end());
    for (auto _ : state)
    {
        state.PauseTiming();
        batch.m_keys.swap(order);
        batch.Fill();
        batch.m_keys.swap(order);
        state.ResumeTiming();
        batch.ForEachKey([](TContainer& container, int nKey) { container.Drop(nKey); });
        Consume(state, batch.m_containers.back().Count(), 0);
    }
}

template <class TContainer>
void Copy(benchmark::State& state)
{
    TBatch<TContainer> batch(state.range(0), false);
    batch.Fill();
    std::vector<TContainer> copies;
    copies.reserve(batch.m_containers.size());
    for (auto _ : state)
    {
        for (const TContainer& container : batch.m_containers)
            copies.push_back(container);
        Consume(state, copies.back().Count(), state.range(0));
        state.PauseTiming();
        copies.clear();
        state.ResumeTiming();
    }
}

template <class TContainer>
void Iterate(benchmark::State& state)
{
    const int64 n = state.range(0);
    TBatch<TContainer> batch(n, false);
    batch.Fill();
    for (auto _ : state)
    {
        int64 nSum = 0;
        for (const TContainer& container : batch.m_containers)
        {
            for (const auto& element : container)
                nSum += KeyOf(element);
        }
        Consume(state, nSum, static_cast<int64>(batch.m_containers.size()) * n * (n - 1));
    }
}

// Random lookups from a list that is too long to be learned. nMiss is 1 for odd keys, which the container does not
// have.
template <class TContainer, int nMiss>
void Find(benchmark::State& state)
{
    constexpr size_t kLookups = 1024;
    const int64 n = state.range(0);
    TBatch<TContainer> batch(n, false);
    batch.Fill();
    const TContainer& container = batch.m_containers.front();
    std::mt19937 random(2);
    std::vector<int> queries(64 * kLookups);
    for (int& nQuery : queries)
        nQuery = static_cast<int>(random() % static_cast<uint64>(n)) * 2 + nMiss;
    size_t nFirst = 0;
    for (auto _ : state)
    {
        int64 nFound = 0;
        for (size_t i = 0; i < kLookups; ++i)
            nFound += container.Has(queries[nFirst + i]);
        Consume(state, nFound, nMiss == 0 ? kLookups : 0);
        nFirst = (nFirst + kLookups) % queries.size();
    }
}

// Looks up strings by views of their characters, in a map of strings.
template <class TMapLike>
void FindByView(benchmark::State& state)
{
    constexpr size_t kLookups = 1024;
    const int64 n = state.range(0);
    TMapLike map;
    std::vector<std::string> keys;
    for (int64 i = 0; i < n; ++i)
        keys.push_back("object" + std::to_string(i * 7919 % n) + ".property");
    for (const std::string& key : keys)
    {
        if constexpr (requires { map.Emplace(key, 1); })
            map.Emplace(key, 1);
        else
            map.try_emplace(key, 1);
    }
    std::mt19937 random(2);
    std::vector<std::string_view> queries(64 * kLookups);
    for (std::string_view& query : queries)
        query = keys[random() % keys.size()];
    size_t nFirst = 0;
    for (auto _ : state)
    {
        int64 nFound = 0;
        for (size_t i = 0; i < kLookups; ++i)
        {
            if constexpr (requires { map.Find(queries[i]); })
                nFound += map.Find(queries[nFirst + i]) != map.End();
            else
                nFound += map.find(queries[nFirst + i]) != map.end();
        }
        Consume(state, nFound, kLookups);
        nFirst = (nFirst + kLookups) % queries.size();
    }
}

template <class TContainer>
void RegisterAll(const std::string& kind, const std::string& contestant)
{
    Register(kind + ", insert sorted", contestant, Insert<TContainer, true>);
    Register(kind + ", insert random", contestant, Insert<TContainer, false>);
    Register(kind + ", find, hit", contestant, Find<TContainer, 0>);
    Register(kind + ", find, miss", contestant, Find<TContainer, 1>);
    Register(kind + ", iterate", contestant, Iterate<TContainer>);
    Register(kind + ", erase random", contestant, Erase<TContainer>);
    Register(kind + ", copy", contestant, Copy<TContainer>);
    Register(kind + ", clear", contestant, Clear<TContainer>);
}
} // namespace

int main(int argc, char** argv)
{
    RegisterAll<TOwn<TSet<int>>>("set", "own");
    RegisterAll<TPeer<std::set<int>>>("set", "std");
    RegisterAll<TPeer<boost::container::set<int>>>("set", "boost::container");
    RegisterAll<TPeer<absl::btree_set<int>>>("set", "absl::btree");
    RegisterAll<TOwn<TMultiSet<int>>>("multiset", "own");
    RegisterAll<TPeer<std::multiset<int>>>("multiset", "std");
    RegisterAll<TOwn<TMap<int, int>>>("map", "own");
    RegisterAll<TPeer<std::map<int, int>>>("map", "std");
    RegisterAll<TPeer<boost::container::map<int, int>>>("map", "boost::container");
    RegisterAll<TPeer<absl::btree_map<int, int>>>("map", "absl::btree");
    RegisterAll<TOwn<TMultiMap<int, int>>>("multimap", "own");
    RegisterAll<TPeer<std::multimap<int, int>>>("multimap", "std");
    Register("map, emplace random", "own", Insert<TEmplacing<TOwn<TMap<int, int>>>, false>);
    Register("map, emplace random", "std", Insert<TEmplacing<TPeer<std::map<int, int>>>, false>);
    Register("map of strings, find by a view", "own", FindByView<TMap<ZString, int>>);
    Register("map of strings, find by a view", "std", FindByView<std::map<std::string, int, std::less<>>>);
    Register("set of a class, insert random", "own", Insert<TOwn<TSet<SId>>, false>);
    Register("set of a class, insert random", "std", Insert<TPeer<std::set<SId>>, false>);
    return RunBenchmarks(argc, argv);
}
