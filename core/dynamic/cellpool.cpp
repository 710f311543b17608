#include "core/dynamic/cellpool.h"

#include <algorithm>

namespace kx::detail
{
ZCellPool::SFirstChunk ZCellPool::ms_aFirst[kMaxCell / 8];
ZCellPool ZCellPool::ms_aPools[kMaxCell / 8] = {{8, ms_aFirst[0]},  {16, ms_aFirst[1]}, {24, ms_aFirst[2]},
                                                {32, ms_aFirst[3]}, {40, ms_aFirst[4]}, {48, ms_aFirst[5]},
                                                {56, ms_aFirst[6]}};

// A chunk with a free cell, brought to the front: one of the module or of the allocator of the moment, a new one where
// there is none. Chunks that turn out to be full are left out from now on, until a cell of theirs is freed.
ZCellPool::SChunk* ZCellPool::FindChunk()
{
    IAllocator* pAllocator = GetNormalAllocator();
    for (SChunk* pChunk = m_pChunks; pChunk != nullptr;)
    {
        SChunk* pNext = pChunk->m_pNext;
        if (pChunk->m_pOwner == nullptr || pChunk->m_pOwner == pAllocator)
        {
            Unlink(pChunk);
            if (Refill(pChunk))
            {
                Link(pChunk);
                return pChunk;
            }
            pChunk->m_bFull = true;
        }
        pChunk = pNext;
    }

    SChunk* pChunk = ::new (pAllocator->Allocate(kChunk, kChunk, 0)) SChunk{};
    pChunk->m_pPool = this;
    pChunk->m_pOwner = pAllocator;
    pChunk->m_pFresh = reinterpret_cast<char*>(pChunk + 1);
    Refill(pChunk);
    Link(pChunk);
    return pChunk;
}

// Sees that there is a free cell, if need be out of those that have not been used yet: not all at once, since the first
// use of a cell is the first use of its memory.
bool ZCellPool::Refill(SChunk* pChunk) const
{
    constexpr uint64 kAtOnce = 32;
    if (pChunk->m_pFree != nullptr)
        return true;
    const uint64 nLeft = static_cast<uint64>(reinterpret_cast<char*>(pChunk) + kChunk - pChunk->m_pFresh) / m_nCell;
    void** ppLink = &pChunk->m_pFree;
    for (uint64 i = std::min(nLeft, kAtOnce); i != 0; --i)
    {
        *ppLink = pChunk->m_pFresh;
        ppLink = reinterpret_cast<void**>(pChunk->m_pFresh);
        pChunk->m_pFresh += m_nCell;
    }
    *ppLink = nullptr;
    return nLeft != 0;
}

void ZCellPool::Release(SChunk* pChunk)
{
    pChunk->m_pPool->Unlink(pChunk);
    pChunk->m_pOwner->Free(pChunk);
}

void ZCellPool::Link(SChunk* pChunk)
{
    ZCellPool& pool = *pChunk->m_pPool;
    pChunk->m_bFull = false;
    pChunk->m_pPrev = nullptr;
    pChunk->m_pNext = pool.m_pChunks;
    if (pool.m_pChunks != nullptr)
        pool.m_pChunks->m_pPrev = pChunk;
    pool.m_pChunks = pChunk;
}

void ZCellPool::Unlink(SChunk* pChunk)
{
    if (pChunk->m_pPrev != nullptr)
        pChunk->m_pPrev->m_pNext = pChunk->m_pNext;
    else
        m_pChunks = pChunk->m_pNext;
    if (pChunk->m_pNext != nullptr)
        pChunk->m_pNext->m_pPrev = pChunk->m_pPrev;
}
} // namespace kx::detail
