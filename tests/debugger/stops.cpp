// Stops in the way whose number is the argument. The page on stops shows what GDB says of each.
#include "core/containers/array.h"
#include "core/containers/blockarray.h"
#include "core/containers/map.h"
#include "core/containers/maxarray.h"
#include "core/strings/string.h"

#include <cstdlib>
#include <stdexcept>

static void AllocateWithoutAllocator()
{
    TArray<int> numbers;
    numbers.Add(1);
}

static void OutliveTheAllocator()
{
    TArray<int> numbers;
    ZMemAllocatorScope scope; // ends first
    numbers.Add(1);
}

static void ReadPastTheEnd()
{
    ZMemAllocatorScope scope;
    TArray<int> numbers{1, 2, 3};
    numbers[3] = 4;
}

static void ReadMissingKey()
{
    ZMemAllocatorScope scope;
    const TMap<ZString, int> crew{{"cook", 1}};
    [[maybe_unused]] const int nPilots = crew["pilot"];
}

static void EraseFromAnotherArray()
{
    ZMemAllocatorScope scope;
    TArray<int> numbers{1, 2, 3}, others{1, 2, 3};
    numbers.Erase(others.Begin());
}

static void AddToFullArray()
{
    TMaxArray<int, 2> pair{1, 2};
    pair.Add(3);
}

static void ReadAfterTheLast()
{
    ZMemAllocatorScope scope;
    TArray<int> numbers{1};
    auto walk = numbers.GetEnumerator();
    while (walk.MoveNext())
        ;
    walk.Current() = 2;
}

static void RunOutOfMemory()
{
    class ZEmptyAllocator : public IAllocator
    {
        void* Allocate(uint64, uint64, uint32) override { return nullptr; }
        void Free(void*) override {}
    };
    ZEmptyAllocator allocator;
    ZAllocatorScope scope(allocator);
    TArray<int> numbers;
    numbers.Add(1);
}

static void ThrowFromElement()
{
    struct SThrowing
    {
        SThrowing() = default;
        SThrowing(const SThrowing&) { throw std::runtime_error("no copy today"); }
    };
    ZMemAllocatorScope scope;
    TArray<SThrowing> elements;
    elements.Add(SThrowing());
}

static void UseMovedFromBlockArray()
{
    ZMemAllocatorScope scope;
    TBlockArray<int> first{1}, second(std::move(first));
    first.Emplace(2);
}

int main(int, char** ppszArguments)
{
    void (*const apfnWays[])() = {AllocateWithoutAllocator, OutliveTheAllocator,   ReadPastTheEnd,   ReadMissingKey,
                                  EraseFromAnotherArray,    AddToFullArray,        ReadAfterTheLast, RunOutOfMemory,
                                  ThrowFromElement,         UseMovedFromBlockArray};
    apfnWays[std::atoi(ppszArguments[1])]();
}
