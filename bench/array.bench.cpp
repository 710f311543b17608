// TArray beside std::vector, and beside a std::vector that is grown by hand by the rule of TArray. The latter separates
// the cost of the growth rule from that of the code.
#include "core/containers/array.h"
#include "bench/support.h"

#include <vector>

namespace
{
template <class T>
struct TOwnArray : TArray<T>
{
    using TArray<T>::TArray;

    void Push(const T& value) { this->Add(value); }
    void InsertAt(int64 nIndex, const T& value) { this->Insert(this->Begin() + nIndex, value); }
    void EraseAt(int64 nIndex) { this->Erase(this->Begin() + nIndex); }
    void RemoveAll() { this->Clear(); }
    void Room(int64 nCapacity) { this->Reserve(static_cast<uint64>(nCapacity)); }
};

template <class T>
struct TStdVector : std::vector<T>
{
    void Push(const T& value) { this->push_back(value); }
    void InsertAt(int64 nIndex, const T& value) { this->insert(this->begin() + nIndex, value); }
    void EraseAt(int64 nIndex) { this->erase(this->begin() + nIndex); }
    void RemoveAll() { this->clear(); }
    void Room(int64 nCapacity) { this->reserve(static_cast<size_t>(nCapacity)); }
};

template <class T>
struct TCheckedVector : TStdVector<T>
{
    const T& operator[](uint64 nIndex) const { return this->at(nIndex); }
};

template <class T>
struct TQuarterVector : TStdVector<T>
{
    void Push(const T& value)
    {
        if (this->size() == this->capacity())
            this->reserve(this->capacity() + this->capacity() / 4 + 1);
        this->push_back(value);
    }
};

template <class TArrayLike>
TArrayLike Filled(int64 n, int64 nCapacity)
{
    TArrayLike array;
    array.Room(nCapacity);
    for (int64 i = 0; i < n; ++i)
        array.Push(static_cast<int>(i));
    return array;
}

template <class TArrayLike>
void Push(benchmark::State& state)
{
    const int64 n = state.range(0);
    for (auto _ : state)
    {
        TArrayLike array;
        for (int64 i = 0; i < n; ++i)
            array.Push(static_cast<int>(i));
        Consume(state, *(array.end() - 1), n - 1);
    }
}

template <class TArrayLike>
void RefillAndClear(benchmark::State& state)
{
    const int64 n = state.range(0);
    TArrayLike array = Filled<TArrayLike>(n, n + 1);
    for (auto _ : state)
    {
        array.RemoveAll();
        for (int64 i = 0; i < n; ++i)
            array.Push(static_cast<int>(i));
        Consume(state, *(array.end() - 1), n - 1);
    }
}

template <class TArrayLike>
void Iterate(benchmark::State& state)
{
    const int64 n = state.range(0);
    const TArrayLike array = Filled<TArrayLike>(n, n + 1);
    for (auto _ : state)
    {
        int64 nSum = 0;
        for (const auto& element : array)
            nSum += element;
        Consume(state, nSum, n * (n - 1) / 2);
    }
}

template <class TArrayLike>
void Index(benchmark::State& state)
{
    const int64 n = state.range(0);
    const TArrayLike array = Filled<TArrayLike>(n, n + 1);
    for (auto _ : state)
    {
        int64 nSum = 0;
        for (uint64 i = 0; i < static_cast<uint64>(n); ++i)
            nSum += array[i];
        Consume(state, nSum, n * (n - 1) / 2);
    }
}

// How fast memory is copied depends on the offsets of source and target within a page. So there are several sources, in
// blocks of such a size that each source is an eighth of a page further on.
constexpr size_t kPlacements = 8;
constexpr int64 kPage = 4096;

template <class TArrayLike>
void Copy(benchmark::State& state)
{
    const int64 n = state.range(0);
    const int64 nElement = sizeof(typename TArrayLike::value_type);
    const int64 nBytes = (n * nElement + kPage - 1) / kPage * kPage + kPage / 8 - 16;
    std::vector<TArrayLike> sources;
    while (sources.size() < kPlacements)
        sources.push_back(Filled<TArrayLike>(n, nBytes / nElement));
    size_t nSource = 0;
    for (auto _ : state)
    {
        const TArrayLike copy(sources[nSource++ % kPlacements]);
        Consume(state, *(copy.end() - 1), n - 1);
    }
}

// Inserts one element at nNumerator / 2 of the array, then removes the last one to keep the size.
template <class TArrayLike, int nNumerator>
void Insert(benchmark::State& state)
{
    const int64 n = state.range(0);
    const int64 nIndex = n * nNumerator / 2;
    TArrayLike array = Filled<TArrayLike>(n, n + 1);
    for (auto _ : state)
    {
        array.InsertAt(nIndex, 7);
        array.EraseAt(n);
        Consume(state, *(array.begin() + nIndex), 7);
    }
}

// Removes one element at nNumerator / 2 of the array, then appends one to keep the size.
template <class TArrayLike, int nNumerator>
void Erase(benchmark::State& state)
{
    const int64 n = state.range(0);
    const int64 nIndex = n * nNumerator / 2;
    TArrayLike array = Filled<TArrayLike>(n, n + 1);
    for (auto _ : state)
    {
        array.EraseAt(nIndex);
        array.Push(7);
        Consume(state, *(array.end() - 1), 7);
    }
}

template <class TArrayLike>
void RegisterAll(const std::string& element, const std::string& contestant)
{
    Register("push, " + element, contestant, Push<TArrayLike>);
    Register("refill and clear, " + element, contestant, RefillAndClear<TArrayLike>);
    Register("iterate, " + element, contestant, Iterate<TArrayLike>);
    Register("sum by index, " + element, contestant, Index<TArrayLike>);
    Register("copy, " + element, contestant, Copy<TArrayLike>);
    Register("insert at front, " + element, contestant, Insert<TArrayLike, 0>);
    Register("insert in middle, " + element, contestant, Insert<TArrayLike, 1>);
    Register("erase at front, " + element, contestant, Erase<TArrayLike, 0>);
    Register("erase in middle, " + element, contestant, Erase<TArrayLike, 1>);
}
} // namespace

int main(int argc, char** argv)
{
    RegisterAll<TOwnArray<int>>("int", "TArray");
    RegisterAll<TStdVector<int>>("int", "std::vector");
    RegisterAll<TOwnArray<SBlock64>>("64 bytes", "TArray");
    RegisterAll<TStdVector<SBlock64>>("64 bytes", "std::vector");
    Register("push, int", "grown by a quarter", Push<TQuarterVector<int>>);
    Register("push, 64 bytes", "grown by a quarter", Push<TQuarterVector<SBlock64>>);
    Register("sum by index, int", "at()", Index<TCheckedVector<int>>);
    Register("sum by index, 64 bytes", "at()", Index<TCheckedVector<SBlock64>>);
    return RunBenchmarks(argc, argv);
}
