// Starts and ends an engine as far as its memory goes, and prints what each part has taken:
//
//   startup [NAME=VALUE...]       for example frames=10 leak=1
//
// The engine and the level have counting allocators of their own. The blocks of the level come from an arena of the
// standard library. What must survive the level is in a container of the standard library, which
// keeps the allocator of the engine.
#include "core/containers/array.h"
#include "core/containers/hashmap.h"
#include "core/containers/map.h"
#include "core/dynamic/format.h"
#include "core/memory/countingallocator.h"
#include "core/memory/pmr.h"
#include "core/strings/stringfunc.h"

#include <cstdio>
#include <vector>

namespace
{
using Settings = TMap<ZString, uint32>;

// Changes a setting by "name=value"; returns whether there is one of that name.
bool Change(Settings& settings, std::string_view change)
{
    const std::size_t nName = change.find('=');
    uint32* pValue = settings.TryGet(change.substr(0, nName));
    return pValue != nullptr && nName != change.npos && IntFromString(change.substr(nName + 1), pValue);
}

void Report(const ZCountingAllocator& allocator)
{
    std::puts(ZString::Format("{0}: {1} allocations, {2} bytes at most", allocator.GetName(), allocator.Allocations(),
                              allocator.MostBytes())
                  .ToCString());
}

// Runs a level and returns whether it has freed all of its blocks.
bool PlayLevel(const Settings& settings, std::pmr::vector<uint64>& scores)
{
    std::pmr::monotonic_buffer_resource arena;
    ZMemoryResourceAllocator inArena(&arena);
    ZCountingAllocator allocator("level", &inArena);
    {
        ZAllocatorScope scope(allocator);
        THashMap<uint32, ZString> names;
        names.Reserve(settings["entities"]);
        for (uint32 i = 0; i < settings["entities"]; ++i)
            names.Emplace(i, ZString::Format("entity {0}", i));
        for (uint32 nFrame = 0; nFrame < settings["frames"]; ++nFrame)
        {
            TArray<uint32> visible;
            for (const auto& [nEntity, name] : names)
            {
                if (nEntity % (nFrame + 1) == 0)
                    visible.Emplace(nEntity);
            }
            scores.push_back(visible.Size());
        }
        for (uint32 i = 0; i < settings["leak"]; ++i)
            static_cast<void>(allocator.Allocate(100, 8, 0));
    }
    Report(allocator);
    return allocator.Blocks() == 0; // if there are any, the destructor of the allocator reports them
}

int Run(char** ppszChanges)
{
    Settings settings{{"frames", 3}, {"entities", 1000}, {"leak", 0}};
    for (; *ppszChanges != nullptr; ++ppszChanges)
    {
        if (Change(settings, *ppszChanges))
            continue;
        std::fputs("Usage: startup [NAME=VALUE...]\nThe names are:\n", stderr);
        for (const auto& [name, nValue] : settings)
            std::fprintf(stderr, "  %s\n", name.ToCString());
        return 2;
    }
    ZMemoryResource ofEngine(GetNormalAllocator());
    std::pmr::vector<uint64> scores(&ofEngine);
    const bool bClean = PlayLevel(settings, scores);
    for (const uint64 nScore : scores)
        std::puts(ZString::Format("{0} visible", nScore).ToCString());
    return bClean ? 0 : 1;
}
} // namespace

int main(int, char** argv)
{
    ZCountingAllocator allocator("engine");
    const ZAllocatorScope scope(allocator);
    const int nStatus = Run(argv + 1);
    return allocator.Blocks() != 0 ? 1 : nStatus;
}
