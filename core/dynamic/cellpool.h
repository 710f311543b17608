// Inside kxbase: the memory of the values of variants, in cells of 8, 16, 24 and so on to 56 bytes.
//
//   chunk, 8 KB at a multiple of 8 KB                           a cell finds its chunk by the front of its address
//   +--------------------------------+------+------+------+---------------------------+
//   | owner, free list, fresh, used  | cell | cell | cell |  never used yet ...       |
//   +--------------------------------+------+------+------+---------------------------+
//
// A number in a variant then costs a few instructions and eight bytes, and no trip to the heap. Chunks come from the
// normal allocator of the moment and go back to the same one as soon as their last cell is free: when all variants are
// gone, so are the chunks. The first chunk of each size is part of the module instead, so that a few values, a
// temporary for a comparison say, take no memory at all. A cell is taken from a chunk of the module or of the normal
// allocator of the moment alone.
//
// Nothing here locks: all variants of a process belong to one thread at a time.
#pragma once

#include "core/memory/memorymanager.h"

#include <new>
#include <utility>

namespace kx::detail
{
class ZCellPool
{
public:
    static constexpr uint64 kMaxCell = 56;
    static constexpr uint64 kMaxAlignment = 8;

    // The pool of cells for nSize bytes, 1 to kMaxCell.
    static ZCellPool& For(uint64 nSize) { return ms_aPools[(nSize - 1) / 8]; }

    void* Allocate()
    {
        SChunk* pChunk = m_pChunks;
        if (pChunk == nullptr || pChunk->m_pFree == nullptr
            || (pChunk->m_pOwner != nullptr && pChunk->m_pOwner != GetNormalAllocator())) [[unlikely]]
            pChunk = FindChunk();
        void* pCell = pChunk->m_pFree;
        pChunk->m_pFree = *static_cast<void**>(pCell);
        ++pChunk->m_nUsed;
        return pCell;
    }

    static void Free(void* pCell)
    {
        SChunk* pChunk = reinterpret_cast<SChunk*>(AddressOf(static_cast<char*>(pCell)) & ~(kChunk - 1));
        *static_cast<void**>(pCell) = std::exchange(pChunk->m_pFree, pCell);
        if (pChunk->m_bFull) [[unlikely]]
            Link(pChunk);
        if (--pChunk->m_nUsed == 0 && pChunk->m_pOwner != nullptr) [[unlikely]]
            Release(pChunk);
    }

private:
    static constexpr uint64 kChunk = 8192;

    struct SChunk
    {
        ZCellPool* m_pPool;
        IAllocator* m_pOwner; // null for a chunk of the module
        SChunk* m_pNext;      // among the chunks of the pool that are not full
        SChunk* m_pPrev;
        void* m_pFree;  // free cells, each pointing at the next
        char* m_pFresh; // the first cell that has not been used yet
        uint32 m_nUsed; // cells
        bool m_bFull;   // as was found when a cell was wanted
    };

    struct alignas(kChunk) SFirstChunk
    {
        SChunk m_header;
        char m_acCells[kChunk - sizeof(SChunk)];
    };

    ZCellPool(uint64 nCell, SFirstChunk& first) : m_nCell(nCell), m_pChunks(&first.m_header)
    {
        first.m_header.m_pPool = this;
        first.m_header.m_pFresh = first.m_acCells;
    }

    KX_NOINLINE SChunk* FindChunk();
    KX_NOINLINE static void Link(SChunk* pChunk);
    KX_NOINLINE static void Release(SChunk* pChunk);
    bool Refill(SChunk* pChunk) const;
    void Unlink(SChunk* pChunk);

    static SFirstChunk ms_aFirst[kMaxCell / 8];
    static ZCellPool ms_aPools[kMaxCell / 8];

    uint64 m_nCell; // bytes
    SChunk* m_pChunks;
};
} // namespace kx::detail
