#include "core/dynamic/tree.h"

#include <algorithm>
#include <cstring>

namespace kx::detail
{
namespace
{
uint32 HashOf(std::string_view key)
{
    return HashBytes(key.data(), key.size());
}
} // namespace

uint32 ZPropertyIndex::Find(SKeys keys, std::string_view key) const
{
    const uint32 nHash = HashOf(key);
    for (uint32 nSlot = nHash & m_nMask; m_pSlots[nSlot].m_nPosition != kMissing; nSlot = (nSlot + 1) & m_nMask)
    {
        const SSlot& slot = m_pSlots[nSlot];
        if (slot.m_nHash == nHash && keys[slot.m_nPosition] == key)
            return slot.m_nPosition;
    }
    return kMissing;
}

void ZPropertyIndex::Insert(uint32 nHash, uint32 nPosition)
{
    uint32 nSlot = nHash & m_nMask;
    while (m_pSlots[nSlot].m_nPosition != kMissing)
        nSlot = (nSlot + 1) & m_nMask;
    m_pSlots[nSlot] = {nHash, nPosition};
}

void ZPropertyIndex::Added(SKeys keys)
{
    const uint32 nSize = keys.m_nSize;
    if (nSize <= kUnindexed)
        return;
    if (m_pSlots == nullptr || nSize > (m_nMask + 1) / 2)
        Build(keys);
    else
        Insert(HashOf(keys[nSize - 1]), nSize - 1);
}

// The positions behind it have moved down by one. A slot that falls free in the middle of a run would hide what stands
// behind it in the run, so these are inserted anew.
void ZPropertyIndex::Removed(SKeys keys, uint32 nPosition)
{
    if (m_pSlots == nullptr)
        return;
    if (keys.m_nSize <= kUnindexed)
        return Release();
    uint32 nFree = 0;
    for (uint32 nSlot = 0; nSlot <= m_nMask; ++nSlot)
    {
        SSlot& slot = m_pSlots[nSlot];
        if (slot.m_nPosition == nPosition)
        {
            slot.m_nPosition = kMissing;
            nFree = nSlot;
        }
        else if (slot.m_nPosition != kMissing && slot.m_nPosition > nPosition)
            --slot.m_nPosition;
    }
    for (uint32 nSlot = (nFree + 1) & m_nMask; m_pSlots[nSlot].m_nPosition != kMissing; nSlot = (nSlot + 1) & m_nMask)
    {
        const SSlot moved = m_pSlots[nSlot];
        m_pSlots[nSlot].m_nPosition = kMissing;
        Insert(moved.m_nHash, moved.m_nPosition);
    }
}

void ZPropertyIndex::Build(SKeys keys)
{
    const uint32 nSize = keys.m_nSize;
    if (nSize <= kUnindexed)
        return;
    uint32 nSlots = 64;
    while (nSlots / 4 < nSize)
        nSlots *= 2;
    Allocate(nSlots);
    for (uint32 i = 0; i < nSize; ++i)
        Insert(HashOf(keys[i]), i);
}

void ZPropertyIndex::CopyFrom(const ZPropertyIndex& other)
{
    if (other.m_pSlots == nullptr)
        return;
    Allocate(other.m_nMask + 1);
    std::copy_n(other.m_pSlots, other.m_nMask + 1, m_pSlots);
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
    const auto isUsed = [](const SSlot& slot) { return slot.m_nPosition != kMissing; };
    return std::count_if(m_pSlots, m_pSlots + m_nMask + 1, isUsed) == int64{keys.m_nSize};
}

void ZPropertyIndex::Allocate(uint32 nSlots)
{
    Release();
    m_pSlots = static_cast<SSlot*>(GetNormalAllocator()->Allocate(nSlots * sizeof(SSlot), alignof(SSlot), 0));
    m_nMask = nSlots - 1;
    std::fill_n(m_pSlots, nSlots, SSlot{0, kMissing});
}

void ZPropertyIndex::Release()
{
    if (m_pSlots != nullptr)
        GetNormalAllocator()->Free(m_pSlots);
    m_pSlots = nullptr;
}
} // namespace kx::detail
