#include "core/dynamic/propertyindex.h"

#include "core/containers/hashbytes.h"
#include "core/containers/seededhash.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace kx::detail
{
// Out of line, so that the ordinary search needs no more registers than it has.
KX_NOINLINE static uint32 SeededHashOf(std::string_view key)
{
    return static_cast<uint32>(SeededHash(key.data(), key.size()));
}

uint32 ZPropertyIndex::HashOf(std::string_view key) const
{
    return m_bSeeded ? SeededHashOf(key) : HashBytes(key.data(), key.size());
}

uint32 ZPropertyIndex::Find(SKeys keys, std::string_view key) const
{
    const uint32 nHash = HashOf(key);
    for (uint32 nSlot = nHash & m_nMask; m_pSlots[nSlot].m_nNumber != 0; nSlot = Next(nSlot))
    {
        const SSlot& slot = m_pSlots[nSlot];
        if (slot.m_nHash == nHash && keys[slot.m_nNumber - 1] == key)
            return slot.m_nNumber - 1;
    }
    return kMissing;
}

// Returns how many slots of other properties precede it in its run.
uint32 ZPropertyIndex::Insert(uint32 nHash, uint32 nNumber)
{
    const uint32 nFirst = nHash & m_nMask;
    uint32 nSlot = nFirst;
    while (m_pSlots[nSlot].m_nNumber != 0)
        nSlot = Next(nSlot);
    m_pSlots[nSlot] = {nHash, nNumber};
    return (nSlot - nFirst) & m_nMask;
}

void ZPropertyIndex::Added(SKeys keys)
{
    const uint32 nSize = keys.m_nSize;
    if (nSize <= kUnindexed)
        return;
    if (m_pSlots != nullptr)
    {
        if (nSize > m_nMask / 2 + 1)
            Resize(nSize);
        if (Insert(HashOf(keys[nSize - 1]), nSize) <= kLongRun || m_bSeeded)
            return;
        m_bSeeded = true;
    }
    InsertAll(keys, false);
}

void ZPropertyIndex::Removing(SKeys keys, uint32 nPosition)
{
    if (m_pSlots == nullptr)
        return;
    if (keys.m_nSize - 1 <= kUnindexed)
        return Release();
    const uint32 nNumber = nPosition + 1;
    uint32 nFree = HashOf(keys[nPosition]) & m_nMask;
    while (m_pSlots[nFree].m_nNumber != nNumber)
        nFree = Next(nFree);
    m_pSlots[nFree] = {};

    // The free slot would hide what comes after it in its run, so these are inserted again.
    for (uint32 nSlot = Next(nFree); m_pSlots[nSlot].m_nNumber != 0; nSlot = Next(nSlot))
    {
        const SSlot moved = std::exchange(m_pSlots[nSlot], SSlot{});
        Insert(moved.m_nHash, moved.m_nNumber);
    }

    // The properties after it move down by one. The last one, which is removed most often, has none after it.
    if (nNumber != keys.m_nSize)
    {
        for (SSlot* p = m_pSlots; p != m_pSlots + m_nMask + 1; ++p)
            p->m_nNumber -= p->m_nNumber > nNumber ? 1 : 0;
    }
    if (keys.m_nSize < m_nMask / 16 + 1)
        Resize(keys.m_nSize);
}

bool ZPropertyIndex::TryBuild(SKeys keys)
{
    return keys.m_nSize <= kUnindexed || InsertAll(keys, true);
}

void ZPropertyIndex::Build(SKeys keys)
{
    m_bMayRepeatKeys = true;
    if (keys.m_nSize > kUnindexed)
        InsertAll(keys, false);
}

bool ZPropertyIndex::InsertAll(SKeys keys, bool bRefuseRepeated)
{
    Release();
    Allocate(keys.m_nSize);
    for (uint32 i = 0; i < keys.m_nSize; ++i)
    {
        if (bRefuseRepeated && Find(keys, keys[i]) != kMissing)
        {
            Release();
            return false;
        }
        if (Insert(HashOf(keys[i]), i + 1) > kLongRun && !m_bSeeded)
        {
            m_bSeeded = true;
            return InsertAll(keys, bRefuseRepeated);
        }
    }
    return true;
}

void ZPropertyIndex::CopyFrom(const ZPropertyIndex& other)
{
    m_bMayRepeatKeys = other.m_bMayRepeatKeys;
    m_bSeeded = other.m_bSeeded;
    if (other.m_pSlots == nullptr)
        return;
    m_nMask = other.m_nMask;
    m_pSlots = NewSlots();
    std::copy_n(other.m_pSlots, uint64{m_nMask} + 1, m_pSlots);
}

bool ZPropertyIndex::Validate(SKeys keys) const
{
    if ((m_pSlots != nullptr) != (keys.m_nSize > kUnindexed))
        return false;
    if (m_pSlots == nullptr)
        return true;
    for (uint32 i = 0; i < keys.m_nSize; ++i)
    {
        if (Find(keys, keys[i]) != i)
            return false;
    }
    const auto isUsed = [](const SSlot& slot) { return slot.m_nNumber != 0; };
    return std::count_if(m_pSlots, m_pSlots + m_nMask + 1, isUsed) == int64{keys.m_nSize};
}

ZPropertyIndex::SSlot* ZPropertyIndex::NewSlots() const
{
    return static_cast<SSlot*>(
        GetNormalAllocator()->Allocate((uint64{m_nMask} + 1) * sizeof(SSlot), alignof(SSlot), 0));
}

// Free slots, at most a quarter of which that many properties take.
void ZPropertyIndex::Allocate(uint32 nSize)
{
    const uint64 nSlots = std::max<uint64>(64, std::bit_ceil(uint64{nSize} * 4));
    m_nMask = static_cast<uint32>(std::min<uint64>(nSlots - 1, UINT32_MAX));
    m_pSlots = NewSlots();
    std::fill_n(m_pSlots, uint64{m_nMask} + 1, SSlot{});
}

void ZPropertyIndex::Resize(uint32 nSize)
{
    SSlot* const pOld = m_pSlots;
    SSlot* const pOldEnd = pOld + m_nMask + 1;
    Allocate(nSize);
    for (const SSlot* p = pOld; p != pOldEnd; ++p)
    {
        if (p->m_nNumber != 0)
            Insert(p->m_nHash, p->m_nNumber);
    }
    GetNormalAllocator()->Free(pOld);
}

void ZPropertyIndex::Release()
{
    if (m_pSlots != nullptr)
        GetNormalAllocator()->Free(m_pSlots);
    m_pSlots = nullptr;
}
} // namespace kx::detail
