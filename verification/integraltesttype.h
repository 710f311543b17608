// The element of the typed suites. Every special member function leaves a trace: in the counters of the factory that
// made the element, and in the value of an element that was moved from or destroyed.
#pragma once

#include "core/platform/platform.h"

#include <ostream>
#include <utility>

// What happened to the elements of one factory. m_nInstances is the number of live ones, including those moved from.
struct STypeStats
{
    int32 m_nInstances;
    int32 m_nConstructed;
    int32 m_nCopyConstructed;
    int32 m_nMoveConstructed;
    int32 m_nDestructed;
    int32 m_nCopyAssigned;
    int32 m_nMoveAssigned;

    bool operator==(const STypeStats&) const = default;
};
static_assert(sizeof(STypeStats) == 28);

// Counts the life of the object that it is a member of, in a record outside the object. An object keeps its record for
// life: assignment is counted, but does not take over the record of the source.
class ZTypeStatsRefMovable
{
public:
    explicit ZTypeStatsRefMovable(STypeStats& stats) : m_pStats(&stats) { Born(&STypeStats::m_nConstructed); }

    ZTypeStatsRefMovable(const ZTypeStatsRefMovable& other) : m_pStats(other.m_pStats)
    {
        Born(&STypeStats::m_nCopyConstructed);
    }

    ZTypeStatsRefMovable(ZTypeStatsRefMovable&& other) noexcept : m_pStats(other.m_pStats)
    {
        Born(&STypeStats::m_nMoveConstructed);
    }

    ~ZTypeStatsRefMovable()
    {
        --m_pStats->m_nInstances;
        ++m_pStats->m_nDestructed;
    }

    ZTypeStatsRefMovable& operator=(const ZTypeStatsRefMovable&) // NOLINT(bugprone-unhandled-self-assignment)
    {
        ++m_pStats->m_nCopyAssigned;
        return *this;
    }

    ZTypeStatsRefMovable& operator=(ZTypeStatsRefMovable&&) noexcept
    {
        ++m_pStats->m_nMoveAssigned;
        return *this;
    }

private:
    void Born(int32 STypeStats::*pCounter)
    {
        ++m_pStats->m_nInstances;
        ++(m_pStats->*pCounter);
    }

    STypeStats* m_pStats;
};

// An element of one number, made by a ZIntegralTestFactory. The numbers in use are small and positive, so the two marks
// are never mistaken for data. A check that reads kDestructed has looked at a destroyed object.
template <class TValue, class TStatsPolicy>
class TIntegralTestType
{
public:
    static constexpr TValue kMoved = -1;
    static constexpr TValue kDestructed = -2;

    TIntegralTestType(TValue value, STypeStats& stats) : m_value(value), m_stats(stats) {}
    TIntegralTestType(const TIntegralTestType&) = default;
    TIntegralTestType(TIntegralTestType&& other) noexcept
        : m_value(std::exchange(other.m_value, kMoved)), m_stats(std::move(other.m_stats))
    {
    }

    // The store is volatile because the compiler would otherwise drop it: nobody may read the value any more.
    ~TIntegralTestType() { static_cast<volatile TValue&>(m_value) = kDestructed; }

    TIntegralTestType& operator=(const TIntegralTestType&) = default;

    // Moving an element to itself leaves the mark, like any other move from it.
    TIntegralTestType& operator=(TIntegralTestType&& other) noexcept
    {
        m_value = other.m_value;
        other.m_value = kMoved;
        m_stats = std::move(other.m_stats);
        return *this;
    }

    // Only the value is compared, because equal elements may come from different factories. No counter changes.
    bool operator==(const TIntegralTestType& other) const { return m_value == other.m_value; }
    bool operator<(const TIntegralTestType& other) const { return m_value < other.m_value; }
    TIntegralTestType& operator++()
    {
        ++m_value;
        return *this;
    }
    TValue GetValue() const { return m_value; }

    friend std::ostream& operator<<(std::ostream& stream, const TIntegralTestType& element)
    {
        if (element.m_value == kMoved)
            return stream << "moved";
        if (element.m_value == kDestructed)
            return stream << "destructed";
        return stream << element.m_value;
    }

private:
    TValue m_value;
    TStatsPolicy m_stats;
};

using E = TIntegralTestType<int, ZTypeStatsRefMovable>;
static_assert(sizeof(E) == 16);

// Makes elements and holds the record that counts them, so it must outlive all of them. A factory filled with zeros is
// a new one, whose first element has the value 1.
class ZIntegralTestFactory
{
public:
    // Makes an element of the next value, or of a given value, after which the next values follow. Returns the element
    // itself and not a copy: each call counts one construction.
    E Create() { return E(++m_nLast, m_stats); }
    E Create(int32 nValue) { return E(m_nLast = nValue, m_stats); }

    const STypeStats& GetStats() const { return m_stats; }

private:
    int32 m_nLast = 0;
    STypeStats m_stats = {};
};
static_assert(sizeof(ZIntegralTestFactory) == 32);
