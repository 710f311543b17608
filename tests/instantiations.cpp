// Every member of every container must compile for the simplest elements, for strings, and for the widest where these
// are allowed.
#include "core/strings/string.h"
#include "tests/support/containers.h"

namespace
{
// Can be copied and destroyed and ordered, and nothing else.
struct SMinimal
{
    SMinimal() = delete;
    SMinimal(const SMinimal& other) noexcept : m_nValue(other.m_nValue) {}
    SMinimal& operator=(const SMinimal&) { return *this; }
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

#define INSTANTIATE(T, ...)                                                                                            \
    template class TMaxArray<T, 3>;                                                                                    \
    template class TBlockArray<T>;                                                                                     \
    template class TList<T>;                                                                                           \
    template class TSList<T>;                                                                                          \
    template class TRedBlackTree<T>;                                                                                   \
    template class TSet<T>;                                                                                            \
    template class TMultiSet<T>;                                                                                       \
    template class TMultiMap<T, T>;                                                                                    \
    template class THashMap<T, T __VA_OPT__(, ) __VA_ARGS__>;                                                          \
    template class TMultiHashMap<T, T __VA_OPT__(, ) __VA_ARGS__>;                                                     \
    template class THashSet<T __VA_OPT__(, ) __VA_ARGS__>
INSTANTIATE(SMinimal, SMinimalPolicy);
INSTANTIATE(ZString);
template class TArray<ZString>;
template class TMap<ZString, ZString>;
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
