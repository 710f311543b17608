// Compiles as it stands. With one of the names defined it must not.
#include "core/containers/array.h"
#include "core/containers/blockarray.h"
#include "core/containers/hashmap.h"
#include "core/containers/hashset.h"
#include "core/containers/list.h"
#include "core/containers/map.h"
#include "core/containers/maxarray.h"
#include "core/containers/set.h"
#include "core/containers/slist.h"

struct alignas(32) SWide
{
    int m_n;
    bool operator<(const SWide& other) const { return m_n < other.m_n; }
    bool operator==(const SWide&) const = default;
};

struct SMoveOnly
{
    SMoveOnly() = default;
    SMoveOnly(SMoveOnly&&) = default;
    SMoveOnly& operator=(SMoveOnly&&) = default;
    bool operator<(const SMoveOnly&) const { return false; }
    bool operator==(const SMoveOnly&) const = default;
};

struct SText
{
    const char* m_pszText;
    float m_fWeight;
    bool operator==(const SText&) const = default;
};

void Use()
{
    TArray<SWide> wide;
    TSet<SWide> wideSet;
    TArray<SMoveOnly> moved;
    moved.Add(SMoveOnly());
    THashSet<int> numbers{1};
#if defined(LIST_OF_WIDE)
    TList<SWide> refused;
#elif defined(SLIST_OF_WIDE)
    TSList<SWide> refused;
#elif defined(BLOCK_ARRAY_OF_WIDE)
    TBlockArray<SWide> refused;
#elif defined(HASH_SET_OF_WIDE)
    THashSet<SWide> refused{SWide{1}};
#elif defined(LIST_OF_MOVE_ONLY)
    TList<SMoveOnly> refused;
#elif defined(SLIST_OF_MOVE_ONLY)
    TSList<SMoveOnly> refused;
#elif defined(MAX_ARRAY_OF_MOVE_ONLY)
    TMaxArray<SMoveOnly, 4> refused;
#elif defined(SET_OF_MOVE_ONLY)
    TSet<SMoveOnly> refused;
#elif defined(MAP_OF_MOVE_ONLY)
    TMap<int, SMoveOnly> refused;
#elif defined(HASH_MAP_OF_MOVE_ONLY)
    THashMap<int, SMoveOnly> refused;
#elif defined(MAX_ARRAY_OF_NONE)
    TMaxArray<int, 0> refused;
#elif defined(SET_WITHOUT_ORDER)
    TSet<SText> refused;
#elif defined(MAP_WITHOUT_ORDER)
    TMap<SText, int> refused;
#elif defined(HASH_SET_WITHOUT_HASH)
    THashSet<SText> refused;
    refused.Insert(SText());
#endif
}
