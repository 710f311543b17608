#include "core/memory/countingallocator.h"

#include "core/memory/blockheader.h"

#include <cstdio>

using kx::detail::SBlockHeader;

ZCountingAllocator::ZCountingAllocator(const char* pszName, IAllocator* pSource)
    : m_pszName(pszName), m_pSource(pSource)
{
}

ZCountingAllocator::~ZCountingAllocator()
{
    ZCountingAllocator::ReportLeaks();
}

const char* ZCountingAllocator::GetName() const
{
    return m_pszName;
}

void* ZCountingAllocator::Allocate(uint64 nSize, uint64 nAlignment, uint32 nReserved)
{
    const auto allocate = [&](uint64 nBytes, uint64 nWidest)
    { return m_pSource->Allocate(nBytes, nWidest, nReserved); };
    void* pMemory = kx::detail::AllocateWithHeader(nSize, nAlignment, allocate);
    if (pMemory == nullptr)
        return nullptr;
    ++m_nAllocations;
    ++m_nBlocks;
    const uint64 nBytes = m_nBytes += nSize;
    for (uint64 nMost = m_nMostBytes; nMost < nBytes && !m_nMostBytes.compare_exchange_weak(nMost, nBytes);)
    {
    }
    return pMemory;
}

void ZCountingAllocator::Free(void* pMemory)
{
    if (pMemory == nullptr)
        return;
    const SBlockHeader header = *SBlockHeader::Of(pMemory);
    --m_nBlocks;
    m_nBytes -= header.m_nSize;
    m_pSource->Free(header.m_pStart);
}

bool ZCountingAllocator::ReportLeaks() const
{
    const uint64 nBlocks = m_nBlocks;
    if (nBlocks == 0)
        return false;
    std::fprintf(stderr, "%s: %llu %s with %llu bytes not freed\n", m_pszName, static_cast<unsigned long long>(nBlocks),
                 nBlocks == 1 ? "block" : "blocks", static_cast<unsigned long long>(m_nBytes));
    return true;
}
