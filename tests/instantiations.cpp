// Every member of every container must compile for the simplest elements, for strings, and for the widest where these
// are allowed.
#include "core/containers/array.h"
#include "core/containers/blockarray.h"
#include "core/containers/hashmap.h"
#include "core/containers/hashset.h"
#include "core/containers/list.h"
#include "core/containers/map.h"
#include "core/containers/maxarray.h"
#include "core/containers/multihashmap.h"
#include "core/containers/set.h"
#include "core/containers/slist.h"
#include "core/strings/string.h"

namespace
{
// Can be copied and destroyed and ordered, and nothing else.
struct SMinimal
{
    SMinimal() = delete;
    SMinimal(const SMinimal& other) noexcept : m_nValue(other.m_nValue) {}
    SMinimal& operator=(const SMinimal& other)
    {
        m_nValue = other.m_nValue;
        return *this;
    }
    ~SMinimal() {}
    bool operator<(const SMinimal& other) const { return m_nValue < other.m_nValue; }
    void operator&() const = delete;

    int m_nValue;
};

struct SMinimalPolicy
{
    static uint32 Hash(const SMinimal& key) { return static_cast<uint32>(key.m_nValue); }
    static bool Equals(const SMinimal& left, const SMinimal& right) { return left.m_nValue == right.m_nValue; }
};

struct alignas(64) SWide
{
    bool operator<(const SWide& other) const { return m_nValue < other.m_nValue; }
    int m_nValue;
};
} // namespace

template class TMaxArray<SMinimal, 3>;
template class TBlockArray<SMinimal>;
template class TList<SMinimal>;
template class TSList<SMinimal>;
template class TRedBlackTree<SMinimal>;
template class TSet<SMinimal>;
template class TMultiSet<SMinimal>;
template class TMultiMap<SMinimal, SMinimal>;
template class THashMap<SMinimal, SMinimal, SMinimalPolicy>;
template class TMultiHashMap<SMinimal, SMinimal, SMinimalPolicy>;
template class THashSet<SMinimal, SMinimalPolicy>;
template class TArray<ZString>;
template class TMaxArray<ZString, 3>;
template class TBlockArray<ZString>;
template class TList<ZString>;
template class TSList<ZString>;
template class TRedBlackTree<ZString>;
template class TSet<ZString>;
template class TMultiSet<ZString>;
template class TMap<ZString, ZString>;
template class TMultiMap<ZString, ZString>;
template class THashMap<ZString, ZString>;
template class TMultiHashMap<ZString, ZString>;
template class THashSet<ZString>;
template class TMaxArray<SWide, 3>;
template class TMultiSet<SWide>;
template class TSet<SWide>;
template class TMultiMap<SWide, SWide>;
template class TSet<TKeyValuePair<int, int>>;

#ifndef __clang__ // Clang 14 instantiates the members whose requirements are not met, too
template class TArray<SMinimal>;
template class TArray<SWide>;
template class TMap<SMinimal, SMinimal>;
template class TMap<SWide, SWide>;
#endif
