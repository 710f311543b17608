#include "core/dynamic/objectnode.h"

#include <algorithm>
#include <cstring>

namespace detail
{
namespace
{
uint32 HashOf(std::string_view key)
{
    return HashBytes(key.data(), key.size());
}
} // namespace

uint32 ZPropertyIndex::Find(const Properties& properties, std::string_view key) const
{
    const uint32 nHash = HashOf(key);
    for (uint32 nSlot = nHash & m_nMask; m_pSlots[nSlot].m_nPosition != kMissing; nSlot = (nSlot + 1) & m_nMask)
    {
        const SSlot& slot = m_pSlots[nSlot];
        if (slot.m_nHash == nHash && properties.Begin()[slot.m_nPosition].m_key == key)
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

void ZPropertyIndex::Added(const Properties& properties)
{
    const uint32 nSize = properties.Size();
    if (nSize <= kUnindexed)
        return;
    if (m_pSlots == nullptr || nSize > (m_nMask + 1) / 2)
        Build(properties);
    else
        Insert(HashOf(properties.Begin()[nSize - 1].m_key), nSize - 1);
}

// The positions behind it have moved down by one. A slot that falls free in the middle of a run would hide what stands
// behind it in the run, so these are inserted anew.
void ZPropertyIndex::Removed(const Properties& properties, uint32 nPosition)
{
    if (m_pSlots == nullptr)
        return;
    if (properties.Size() <= kUnindexed)
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

void ZPropertyIndex::Build(const Properties& properties)
{
    const uint32 nSize = properties.Size();
    if (nSize <= kUnindexed)
        return;
    uint32 nSlots = 64;
    while (nSlots / 4 < nSize)
        nSlots *= 2;
    Allocate(nSlots);
    for (uint32 i = 0; i < nSize; ++i)
        Insert(HashOf(properties.Begin()[i].m_key), i);
}

void ZPropertyIndex::CopyFrom(const ZPropertyIndex& other)
{
    if (other.m_pSlots == nullptr)
        return;
    Allocate(other.m_nMask + 1);
    std::copy_n(other.m_pSlots, other.m_nMask + 1, m_pSlots);
}

bool ZPropertyIndex::Validate(const Properties& properties) const
{
    if ((m_pSlots != nullptr) != (properties.Size() > kUnindexed))
        return false;
    if (m_pSlots == nullptr)
        return true;
    for (const SDynamicObjectKeyValuePair& property : properties)
    {
        if (Find(properties, property.m_key) != static_cast<uint32>(&property - properties.Begin()))
            return false;
    }
    const auto isUsed = [](const SSlot& slot) { return slot.m_nPosition != kMissing; };
    return std::count_if(m_pSlots, m_pSlots + m_nMask + 1, isUsed) == int64{properties.Size()};
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

// The array of an object stands in front of its node.
SDynamicObjectKeyValuePair* FindIndexed(const TArray<SDynamicObjectKeyValuePair>& properties, std::string_view key)
{
    const uint32 nPosition = reinterpret_cast<const SObjectNode&>(properties).m_index.Find(properties, key);
    return nPosition != ZPropertyIndex::kMissing
               ? const_cast<SDynamicObjectKeyValuePair*>(properties.Begin()) + nPosition
               : nullptr;
}
} // namespace detail
