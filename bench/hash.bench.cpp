// The hash containers beside those of the standard library, Boost and Abseil, all with int keys and each with its own
// hash. The same design written by hand shows what the design costs and what the container adds to it.
#include "bench/support.h"
#include "core/containers/hashmap.h"
#include "core/containers/hashset.h"
#include "core/containers/multihashmap.h"

#include <absl/container/flat_hash_map.h>
#include <absl/container/node_hash_map.h>
#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/unordered_map.hpp>
#include <random>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace
{
// Key number nIndex. The keys are scattered and distinct.
int Key(int64 nIndex)
{
    uint32 nBits = static_cast<uint32>(nIndex) + 1;
    nBits = (nBits ^ (nBits >> 16)) * 0x7FEB352D;
    nBits = (nBits ^ (nBits >> 15)) * 0x846CA68B;
    return static_cast<int>(nBits ^ (nBits >> 16));
}

// The value that is stored with a key. In a set it represents the key.
int Value(int nKey)
{
    return (nKey & 0xFF) + 1;
}

template <class TElement>
int ValueOf(const TElement& element)
{
    if constexpr (requires { element.Value(); })
        return element.Value();
    else if constexpr (requires { element.second; })
        return element.second;
    else
        return Value(element);
}

template <class TContainer>
struct TOwn : TContainer
{
    void Put(int nKey)
    {
        if constexpr (requires { this->Insert(nKey, nKey); })
            this->Insert(nKey, Value(nKey));
        else
            this->Insert(nKey);
    }
    void Take(int nKey)
    {
        if constexpr (requires { this->Remove(nKey); })
            this->Remove(nKey);
        else
            this->Erase(this->Find(nKey));
    }
    int Get(int nKey) const
    {
        const auto pos = this->Find(nKey);
        return pos != this->End() ? ValueOf(*pos) : 0;
    }
    void RemoveAll() { this->Clear(); }
    void Room(int64 nCount) { this->Rehash(static_cast<uint32>(nCount)); }
};

template <class TContainer>
struct TOther : TContainer
{
    void Put(int nKey)
    {
        if constexpr (requires { typename TContainer::mapped_type; })
            this->emplace(nKey, Value(nKey));
        else
            this->insert(nKey);
    }
    void Take(int nKey) { this->erase(this->find(nKey)); }
    int Get(int nKey) const
    {
        const auto pos = this->find(nKey);
        return pos != this->end() ? ValueOf(*pos) : 0;
    }
    void RemoveAll() { this->clear(); }
    void Room(int64 nCount) { this->reserve(static_cast<size_t>(nCount)); }
};

// The same design written by hand, without removal.
class ZByHand
{
public:
    void Put(int nKey)
    {
        if (m_nodes.size() == m_buckets.size())
            Room(m_buckets.empty() ? 4 : static_cast<int64>(m_buckets.size() * 3 / 2));
        uint32& nHead = m_buckets[Bucket(nKey)];
        m_nodes.push_back({nHead, nKey, Value(nKey)});
        nHead = static_cast<uint32>(m_nodes.size() - 1);
    }

    int Get(int nKey) const
    {
        const SNode* pNodes = m_nodes.data();
        for (uint32 i = m_buckets[Bucket(nKey)]; i != UINT32_MAX; i = pNodes[i].m_nNext)
        {
            if (pNodes[i].m_nKey == nKey)
                return pNodes[i].m_nValue;
        }
        return 0;
    }

    friend int64 Sum(const ZByHand& table)
    {
        const SNode* pNodes = table.m_nodes.data();
        int64 nSum = 0;
        for (const uint32 nHead : table.m_buckets)
        {
            for (uint32 i = nHead; i != UINT32_MAX; i = pNodes[i].m_nNext)
                nSum += pNodes[i].m_nValue;
        }
        return nSum;
    }

    void Room(int64 nCount)
    {
        const std::vector<SNode> old = std::exchange(m_nodes, {});
        m_nodes.reserve(static_cast<size_t>(nCount));
        m_buckets.assign(static_cast<size_t>(nCount), UINT32_MAX);
        for (const SNode& node : old)
            Put(node.m_nKey);
    }

private:
    struct SNode
    {
        uint32 m_nNext;
        int m_nKey;
        int m_nValue;
    };

    uint32 Bucket(int nKey) const
    {
        const uint32 nBits = static_cast<uint32>(nKey);
        uint32 nHash = 0x811C9DC5;
        for (int nShift = 0; nShift < 32; nShift += 8)
            nHash = (nHash ^ static_cast<uint32>(static_cast<int8>(nBits >> nShift))) * 16777619;
        return nHash % static_cast<uint32>(m_buckets.size());
    }

    std::vector<uint32> m_buckets;
    std::vector<SNode> m_nodes;
};

template <class TTable>
int64 Sum(const TTable& table)
{
    int64 nSum = 0;
    for (const auto& element : table)
        nSum += ValueOf(element);
    return nSum;
}

template <class TTable>
void Fill(TTable& table, int64 n, int64 nSameKeys = 1)
{
    for (int64 i = 0; i < n; ++i)
        table.Put(Key(i / nSameKeys));
}

int64 SumOfValues(int64 n, int64 nSameKeys = 1)
{
    int64 nSum = 0;
    for (int64 i = 0; i < n; ++i)
        nSum += Value(Key(i / nSameKeys));
    return nSum;
}

template <class TTable, int nSameKeys>
void Insert(benchmark::State& state)
{
    const int64 n = state.range(0);
    for (auto _ : state)
    {
        TTable table;
        Fill(table, n, nSameKeys);
        Consume(state, table.Get(Key(0)), Value(Key(0)));
    }
}

// Looks keys up in an order that no branch predictor learns: a turn takes the next n of many.
template <class TTable, int nPercentHits>
void Find(benchmark::State& state)
{
    const int64 n = state.range(0);
    TTable table;
    Fill(table, n);
    std::mt19937 random(1);
    std::vector<int> queries;
    std::vector<int64> sums{0};
    while (queries.size() < static_cast<size_t>(n) + (1 << 17))
    {
        const bool bHit = random() % 100 < nPercentHits;
        queries.push_back(Key(static_cast<int64>(random()) % n + (bHit ? 0 : n)));
        sums.push_back(sums.back() + (bHit ? Value(queries.back()) : 0));
    }
    size_t nFirst = 0;
    for (auto _ : state)
    {
        const size_t nLast = nFirst + static_cast<size_t>(n);
        int64 nSum = 0;
        for (size_t i = nFirst; i < nLast; ++i)
            nSum += table.Get(queries[i]);
        Consume(state, nSum, sums[nLast] - sums[nFirst]);
        nFirst = nLast + static_cast<size_t>(n) <= queries.size() ? nLast : 0;
    }
}

template <class TTable, int nSameKeys>
void Iterate(benchmark::State& state)
{
    const int64 n = state.range(0);
    TTable table;
    Fill(table, n, nSameKeys);
    const int64 nExpected = SumOfValues(n, nSameKeys);
    for (auto _ : state)
        Consume(state, Sum(table), nExpected);
}

// Removes each key, in another order than that of insertion, and inserts it again.
template <class TTable>
void EraseAndInsert(benchmark::State& state)
{
    const int64 n = state.range(0);
    TTable table;
    Fill(table, n);
    for (auto _ : state)
    {
        for (int64 i = 0; i < n; ++i)
        {
            const int nKey = Key(i * 7919 % n);
            table.Take(nKey);
            table.Put(nKey);
        }
        Consume(state, table.Get(Key(0)), Value(Key(0)));
    }
}

template <class TTable>
void RefillAndClear(benchmark::State& state)
{
    const int64 n = state.range(0);
    TTable table;
    table.Room(n);
    for (auto _ : state)
    {
        Fill(table, n);
        Consume(state, table.Get(Key(0)), Value(Key(0)));
        table.RemoveAll();
    }
}

template <class TTable, int nSameKeys>
void Copy(benchmark::State& state)
{
    const int64 n = state.range(0);
    TTable table;
    Fill(table, n, nSameKeys);
    for (auto _ : state)
    {
        // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is what is measured.
        const TTable copy(table);
        Consume(state, copy.Get(Key(0)) != 0, 1);
    }
}

void RegisterSizes(const std::string& row, const std::string& contestant, void (*pFunction)(benchmark::State&))
{
    benchmark::RegisterBenchmark((row + "/" + contestant).c_str(), pFunction)
        ->Arg(16)
        ->Arg(1000)
        ->Arg(100'000)
        ->Arg(1'000'000);
}

// The rows of a multimap with four values for each key.
template <class TTable>
void RegisterMulti(const std::string& contestant)
{
    RegisterSizes("insert, four of a key", contestant, Insert<TTable, 4>);
    RegisterSizes("iterate, four of a key", contestant, Iterate<TTable, 4>);
    RegisterSizes("copy, four of a key", contestant, Copy<TTable, 4>);
}

template <class TTable>
void RegisterFind(const std::string& type, const std::string& contestant)
{
    RegisterSizes("find, all there" + type, contestant, Find<TTable, 100>);
    RegisterSizes("find, half there" + type, contestant, Find<TTable, 50>);
    RegisterSizes("find, none there" + type, contestant, Find<TTable, 0>);
    RegisterSizes("iterate" + type, contestant, Iterate<TTable, 1>);
}

template <class TTable>
void RegisterAll(const std::string& type, const std::string& contestant)
{
    RegisterSizes("insert" + type, contestant, Insert<TTable, 1>);
    RegisterFind<TTable>(type, contestant);
    RegisterSizes("erase and insert" + type, contestant, EraseAndInsert<TTable>);
    RegisterSizes("refill and clear" + type, contestant, RefillAndClear<TTable>);
    RegisterSizes("copy" + type, contestant, Copy<TTable, 1>);
}
} // namespace

int main(int argc, char** argv)
{
    RegisterAll<TOwn<THashMap<int, int>>>(", map", "ours");
    RegisterFind<ZByHand>(", map", "by hand");
    RegisterAll<TOther<std::unordered_map<int, int>>>(", map", "std");
    RegisterAll<TOther<boost::unordered_map<int, int>>>(", map", "boost node");
    RegisterAll<TOther<boost::unordered_flat_map<int, int>>>(", map", "boost flat");
    RegisterAll<TOther<absl::node_hash_map<int, int>>>(", map", "absl node");
    RegisterAll<TOther<absl::flat_hash_map<int, int>>>(", map", "absl flat");
    RegisterAll<TOwn<THashSet<int>>>(", set", "ours");
    RegisterAll<TOther<std::unordered_set<int>>>(", set", "std");
    RegisterMulti<TOwn<TMultiHashMap<int, int>>>("ours");
    RegisterMulti<TOther<std::unordered_multimap<int, int>>>("std");
    RegisterMulti<TOther<boost::unordered_multimap<int, int>>>("boost node");
    return RunBenchmarks(argc, argv);
}
