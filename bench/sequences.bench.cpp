// TMaxArray, TBlockArray, TList and TSList beside the standard containers and Boost's of the same kind.
#include "bench/support.h"
#include "core/containers/blockarray.h"
#include "core/containers/list.h"
#include "core/containers/maxarray.h"
#include "core/containers/slist.h"

#include <boost/container/deque.hpp>
#include <boost/container/list.hpp>
#include <boost/container/slist.hpp>
#include <boost/container/static_vector.hpp>
#include <deque>
#include <forward_list>
#include <list>
#include <memory>

namespace
{
constexpr uint32 kMost = 100001;

// The operations that the rows call, by the names of each contestant.
template <class TBase>
struct TOurs : TBase
{
    using Value = typename TBase::value_type;

    void PushBack(const Value& value)
    {
        if constexpr (requires { this->Add(value); })
            this->Add(value);
        else
            this->Insert(this->End(), value);
    }
    void PushFront(const Value& value) { this->Insert(this->Begin(), value); }
    auto InsertAt(typename TBase::iterator pos, const Value& value) { return this->Insert(pos, value); }
    auto EraseAt(typename TBase::iterator pos) { return this->Erase(pos); }
    void RemoveAll() { this->Clear(); }
};

template <class TBase>
struct TPeer : TBase
{
    using Value = typename TBase::value_type;

    void PushBack(const Value& value) { this->push_back(value); }
    void PushFront(const Value& value) { this->push_front(value); }
    auto InsertAt(typename TBase::iterator pos, const Value& value) { return this->insert(pos, value); }
    auto EraseAt(typename TBase::iterator pos) { return this->erase(pos); }
    void RemoveAll() { this->clear(); }
};

// Inserts before a position, by the same walk from the head.
template <class TBase>
struct TForwardPeer : TPeer<TBase>
{
    using Value = typename TBase::value_type;

    auto Before(typename TBase::iterator pos)
    {
        auto before = this->before_begin();
        while (std::next(before) != pos)
            ++before;
        return before;
    }
    auto InsertAt(typename TBase::iterator pos, const Value& value) { return this->insert_after(Before(pos), value); }
    auto EraseAt(typename TBase::iterator pos) { return this->erase_after(Before(pos)); }
};

enum class EWhere
{
    kBack,
    kFront
};

template <EWhere where, class TSequence>
void Fill(TSequence& sequence, int64 n)
{
    for (int64 i = 0; i < n; ++i)
    {
        if constexpr (where == EWhere::kBack)
            sequence.PushBack(static_cast<int>(i));
        else
            sequence.PushFront(static_cast<int>(i));
    }
}

// On the heap, because a TMaxArray holds its elements in the object.
template <class TSequence, EWhere where>
std::unique_ptr<TSequence> Filled(int64 n)
{
    auto pSequence = std::make_unique<TSequence>();
    Fill<where>(*pSequence, n);
    return pSequence;
}

// Fills a new container with n elements and destroys it.
template <class TSequence, EWhere where>
void Push(benchmark::State& state)
{
    const int64 n = state.range(0);
    for (auto _ : state)
    {
        const auto pSequence = Filled<TSequence, where>(n);
        Consume(state, *pSequence->begin(), where == EWhere::kBack ? 0 : n - 1);
    }
}

template <class TSequence, EWhere where>
void ClearAndRefill(benchmark::State& state)
{
    const int64 n = state.range(0);
    const auto pSequence = Filled<TSequence, where>(n);
    for (auto _ : state)
    {
        pSequence->RemoveAll();
        Fill<where>(*pSequence, n);
        Consume(state, *pSequence->begin(), where == EWhere::kBack ? 0 : n - 1);
    }
}

template <class TSequence, EWhere where>
void Iterate(benchmark::State& state)
{
    const int64 n = state.range(0);
    const auto pSequence = Filled<TSequence, where>(n);
    for (auto _ : state)
    {
        int64 nSum = 0;
        for (const auto& element : *pSequence)
            nSum += element;
        Consume(state, nSum, n * (n - 1) / 2);
    }
}

// Reads n elements by index, in an order that visits each block again and again.
template <class TSequence>
void Index(benchmark::State& state)
{
    const int64 n = state.range(0);
    const uint64 nSize = static_cast<uint64>(n);
    const uint64 nStep = 7919 % nSize; // a prime that divides none of the sizes
    const auto pSequence = Filled<TSequence, EWhere::kBack>(n);
    for (auto _ : state)
    {
        int64 nSum = 0;
        uint64 nIndex = 0;
        for (int64 i = 0; i < n; ++i)
        {
            nSum += (*pSequence)[nIndex];
            nIndex += nStep;
            nIndex -= nIndex >= nSize ? nSize : 0;
        }
        Consume(state, nSum, n * (n - 1) / 2);
    }
}

template <class TSequence, EWhere where>
void Copy(benchmark::State& state)
{
    const int64 n = state.range(0);
    const auto pSequence = Filled<TSequence, where>(n);
    for (auto _ : state)
    {
        const auto pCopy = std::make_unique<TSequence>(*pSequence);
        Consume(state, *pCopy->begin(), *pSequence->begin());
    }
}

template <class TSequence, EWhere where>
void Move(benchmark::State& state)
{
    const auto pSequence = Filled<TSequence, where>(state.range(0));
    const auto pOther = std::make_unique<TSequence>();
    const int nFirst = *pSequence->begin();
    for (auto _ : state)
    {
        *pOther = std::move(*pSequence);
        *pSequence = std::move(*pOther);
        Consume(state, *pSequence->begin(), nFirst);
    }
}

// Inserts an element at a position that is known beforehand, and removes it.
template <class TSequence, EWhere where>
void InsertAndErase(benchmark::State& state)
{
    const int64 n = state.range(0);
    const auto pSequence = Filled<TSequence, where>(n);
    auto middle = std::next(pSequence->begin(), n / 2);
    for (auto _ : state)
    {
        middle = pSequence->InsertAt(middle, 7);
        Consume(state, *middle, 7);
        middle = pSequence->EraseAt(middle);
    }
}

template <class TSequence, EWhere where>
void RegisterAll(const std::string& row, const std::string& contestant)
{
    Register("refill and clear, " + row, contestant, ClearAndRefill<TSequence, where>);
    Register("iterate, " + row, contestant, Iterate<TSequence, where>);
    Register("insert and erase in middle, " + row, contestant, InsertAndErase<TSequence, where>);
    Register("copy, " + row, contestant, Copy<TSequence, where>);
    Register("move there and back, " + row, contestant, Move<TSequence, where>);
}

template <class TOwn, class TStandard, class TBoost, EWhere where>
void RegisterPush(const std::string& row)
{
    Register(row, "own", Push<TOwn, where>);
    Register(row, "standard", Push<TStandard, where>);
    Register(row, "Boost", Push<TBoost, where>);
}

template <class T>
void RegisterElement(const std::string& element)
{
    namespace container = boost::container;
    using OwnBlocks = TOurs<TBlockArray<T>>;
    using StdBlocks = TPeer<std::deque<T>>;
    using BoostBlocks = TPeer<container::deque<T>>;
    using OwnList = TOurs<TList<T>>;
    using StdList = TPeer<std::list<T>>;
    using BoostList = TPeer<container::list<T>>;
    using OwnSList = TOurs<TSList<T>>;
    using StdSList = TForwardPeer<std::forward_list<T>>;
    using BoostSList = TForwardPeer<container::slist<T>>;
    using OwnMax = TOurs<TMaxArray<T, kMost>>;
    using BoostMax = TPeer<container::static_vector<T, kMost>>;

    RegisterAll<OwnMax, EWhere::kBack>("TMaxArray of " + element, "own");
    RegisterAll<BoostMax, EWhere::kBack>("TMaxArray of " + element, "Boost");

    RegisterPush<OwnBlocks, StdBlocks, BoostBlocks, EWhere::kBack>("push back, TBlockArray of " + element);
    RegisterPush<OwnBlocks, StdBlocks, BoostBlocks, EWhere::kFront>("push front, TBlockArray of " + element);
    Register("random access, TBlockArray of " + element, "own", Index<OwnBlocks>);
    Register("random access, TBlockArray of " + element, "standard", Index<StdBlocks>);
    Register("random access, TBlockArray of " + element, "Boost", Index<BoostBlocks>);
    RegisterAll<OwnBlocks, EWhere::kBack>("TBlockArray of " + element, "own");
    RegisterAll<StdBlocks, EWhere::kBack>("TBlockArray of " + element, "standard");
    RegisterAll<BoostBlocks, EWhere::kBack>("TBlockArray of " + element, "Boost");

    RegisterPush<OwnList, StdList, BoostList, EWhere::kBack>("push back, TList of " + element);
    RegisterPush<OwnList, StdList, BoostList, EWhere::kFront>("push front, TList of " + element);
    RegisterAll<OwnList, EWhere::kBack>("TList of " + element, "own");
    RegisterAll<StdList, EWhere::kBack>("TList of " + element, "standard");
    RegisterAll<BoostList, EWhere::kBack>("TList of " + element, "Boost");

    RegisterPush<OwnSList, StdSList, BoostSList, EWhere::kFront>("push front, TSList of " + element);
    RegisterAll<OwnSList, EWhere::kFront>("TSList of " + element, "own");
    RegisterAll<StdSList, EWhere::kFront>("TSList of " + element, "standard");
    RegisterAll<BoostSList, EWhere::kFront>("TSList of " + element, "Boost");
}
} // namespace

int main(int argc, char** argv)
{
    RegisterElement<int>("int");
    RegisterElement<SBlock64>("64 bytes");
    return RunBenchmarks(argc, argv);
}
