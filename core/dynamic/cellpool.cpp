#include "core/dynamic/cellpool.h"

namespace detail
{
ZCellPool::SFirstChunk ZCellPool::ms_aFirst[kMaxCell / 8];
ZCellPool ZCellPool::ms_aPools[kMaxCell / 8] = {{8, ms_aFirst[0]},  {16, ms_aFirst[1]}, {24, ms_aFirst[2]},
                                                {32, ms_aFirst[3]}, {40, ms_aFirst[4]}, {48, ms_aFirst[5]},
                                                {56, ms_aFirst[6]}};

// A chunk with a free cell that the allocator of the moment may be given back to, brought to the front; a new one where
// there is none.
ZCellPool::SChunk* ZCellPool::FindChunk()
{
    IAllocator* pAllocator = GetNormalAllocator();
    SChunk* pChunk = m_pChunks;
    while (pChunk != nullptr && pChunk->m_pOwner != nullptr && pChunk->m_pOwner != pAllocator)
        pChunk = pChunk->m_pNext;
    if (pChunk != nullptr)
        Unlink(pChunk);
    else
    {
        pChunk = ::new (pAllocator->Allocate(kChunk, kChunk, 0)) SChunk{};
        pChunk->m_pPool = this;
        pChunk->m_pOwner = pAllocator;
        pChunk->m_pFresh = reinterpret_cast<char*>(pChunk + 1);
    }
    Link(pChunk);
    return pChunk;
}

void ZCellPool::Release(SChunk* pChunk)
{
    Unlink(pChunk);
    pChunk->m_pOwner->Free(pChunk);
}

void ZCellPool::Link(SChunk* pChunk)
{
    pChunk->m_pPrev = nullptr;
    pChunk->m_pNext = m_pChunks;
    if (m_pChunks != nullptr)
        m_pChunks->m_pPrev = pChunk;
    m_pChunks = pChunk;
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
} // namespace detail
