// Fills each container with the numbers 0 to N - 1 and reports its allocator calls and memory:
//
//   containers [N]        1000 if N is not given
//
// The figures come from the counting allocator. It is installed like any other, and the containers know nothing of it.
#include "core/containers/array.h"
#include "core/containers/blockarray.h"
#include "core/containers/hashmap.h"
#include "core/containers/hashset.h"
#include "core/containers/list.h"
#include "core/containers/map.h"
#include "core/containers/maxarray.h"
#include "core/containers/set.h"
#include "core/containers/slist.h"
#include "core/memory/countingallocator.h"
#include "core/strings/string.h"
#include "core/strings/stringfunc.h"

#include <algorithm>
#include <cstdio>

namespace
{
// Runs fill on a new container and prints its line of the report. Blocks that are still allocated when the container is
// destroyed are a leak. Returns whether there was none.
template <class TContainer, class TFill>
bool Report(const char* pszName, TFill fill)
{
    ZCountingAllocator allocator(pszName);
    {
        ZAllocatorScope scope(allocator);
        TContainer container;
        fill(container);
        std::printf("%-24s %11llu %9llu %9llu\n", pszName, static_cast<unsigned long long>(allocator.Allocations()),
                    static_cast<unsigned long long>(allocator.Bytes()),
                    static_cast<unsigned long long>(allocator.MostBytes()));
    }
    return !allocator.ReportLeaks();
}
} // namespace

int main(int argc, char** argv)
{
    int nCount = 1000;
    if (argc > 1 && (!IntFromString(argv[1], &nCount) || nCount < 0))
    {
        std::fputs("Usage: containers [N]\nReports what each container of N numbers asks of the allocator.\n", stderr);
        return 2;
    }

    const auto add = [nCount](auto& container)
    {
        for (int i = 0; i < nCount; ++i)
            container.Add(i);
    };
    const auto addReserved = [nCount, add](TArray<int>& array)
    {
        array.Reserve(static_cast<uint64>(nCount));
        add(array);
    };
    const auto addFew = [nCount](TMaxArray<int, 100>& array)
    {
        for (int i = 0; i < std::min(nCount, 100); ++i)
            array.Add(i);
    };
    const auto append = [nCount](TBlockArray<int>& array)
    {
        for (int i = 0; i < nCount; ++i)
            array.Insert(array.End(), i);
    };
    const auto insert = [nCount](auto& container)
    {
        for (int i = 0; i < nCount; ++i)
            container.Insert(i);
    };
    const auto insertNames = [nCount](auto& container)
    {
        for (int i = 0; i < nCount; ++i)
            container.Insert(i, "a literal, which takes no memory");
    };
    const auto addOwned = [nCount](TArray<ZString>& array)
    {
        const ZString literal = "a literal";
        for (int i = 0; i < nCount; ++i)
            array.Add(literal + ", and more");
    };

    std::printf("%-24s %11s %9s %9s\n", "", "allocations", "bytes", "at most");
    bool bClean = Report<TArray<int>>("TArray<int>", add);
    bClean &= Report<TArray<int>>("  with Reserve", addReserved);
    bClean &= Report<TMaxArray<int, 100>>("TMaxArray<int, 100>", addFew);
    bClean &= Report<TBlockArray<int>>("TBlockArray<int>", append);
    bClean &= Report<TList<int>>("TList<int>", insert);
    bClean &= Report<TSList<int>>("TSList<int>", insert);
    bClean &= Report<TSet<int>>("TSet<int>", insert);
    bClean &= Report<THashSet<int>>("THashSet<int>", insert);
    bClean &= Report<TMap<int, ZString>>("TMap<int, ZString>", insertNames);
    bClean &= Report<THashMap<int, ZString>>("THashMap<int, ZString>", insertNames);
    bClean &= Report<TArray<ZString>>("TArray<ZString>, owned", addOwned);
    return bClean ? 0 : 1;
}
