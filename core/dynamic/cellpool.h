// Inside kxbase: the memory of the values of variants, in cells of 8, 16, 24 and so on to 56 bytes.
//
//   a chunk: one block of an allocator
//   +--------+--+-------------------------+-------------------------+-----
//   | SChunk |  | chunk | cell | cell | . | chunk | cell | cell | . |  ...
//   +--------+--+-------------------------+-------------------------+-----
//               pages of 1 KB at multiples of 1 KB: the address of a cell tells its page, and the page its chunk
//
// A number in a variant then costs a few instructions and eight bytes, and no trip to the heap. Chunks come from the
// current normal allocator and go back to the same one as soon as their last cell is free. The first chunk of each size
// comes from the process heap and stays while its thread lives, so that a few values, such as a temporary for a
// comparison, do not call the allocator.
//
// Threads: each thread allocates cells from chunks of its own, without a lock and without an atomic operation. Another
// thread that frees a cell adds it to a list of the chunk, which is atomic, and the owner takes these back when it
// needs cells. Whatever happens to whole chunks happens under one lock. When a thread ends, its chunks that are in use
// become orphans; threads in need of a chunk adopt them.
//
// A chunk that is emptied by other threads while its owner allocates from it, or at the moment at which its owner frees
// a cell, stays until the owner needs cells or ends, or another allocator is installed.
#pragma once

#include "core/memory/memorymanager.h"

#include <atomic>
#include <utility>

namespace kx::detail
{
/// The cells of one thread.
class ZCellHeap
{
public:
    static constexpr uint64 kMaxCell = 56;
    static constexpr uint64 kMaxAlignment = 8;

    /// A cell for nSize bytes, 1 to kMaxCell.
    static void* Allocate(uint64 nSize)
    {
        ZCellHeap* pHeap = t_pHeap;
        if (pHeap == nullptr) [[unlikely]]
            return AllocateFirst(nSize);
        return pHeap->AllocateCell(pHeap->m_aPools[(nSize - 1) / 8]);
    }

    /// Releases a cell, whichever thread has allocated it.
    static void Free(void* pCell)
    {
        SChunk* pChunk = ChunkOf(pCell);
        if (pChunk->m_pHeap.load(std::memory_order_relaxed) != t_pHeap) [[unlikely]]
            return FreeOfAnother(pChunk, pCell);
        *static_cast<void**>(pCell) = std::exchange(pChunk->m_pFree, pCell);
        if (pChunk->m_bFull.load(std::memory_order_relaxed)) [[unlikely]]
            PutInUse(pChunk);
        const uint32 nUsed = pChunk->m_nUsed.load(std::memory_order_relaxed) - 1;
        if (nUsed == RemoteCount(pChunk->m_nRemote.load(std::memory_order_relaxed)) && !pChunk->m_bFirst) [[unlikely]]
            return Release(pChunk);
        pChunk->m_nUsed.store(nUsed, std::memory_order_release); // the last touch: others may release the chunk now
    }

private:
    // Only the owner changes m_pFree, m_nUsed and m_pFresh, and any thread m_nRemote. All else changes under the lock.
    struct SChunk
    {
        std::atomic<ZCellHeap*> m_pHeap; // the owner, or ms_orphans
        void* m_pFree;                   // free cells, each pointing at the next
        IAllocator* m_pAllocator;        // where the chunk comes from, null for the process heap
        std::atomic<uint32> m_nUsed;     // cells that are not free as far as the owner knows
        std::atomic<uint32> m_nRemote;   // cells that other threads have freed, each pointing at the next: their number
                                         // in the high 16 bits, where the first one is in the chunk in the low 16
        std::atomic<bool> m_bFull;       // without a free cell as far as anyone knows
        bool m_bFirst;                   // of its pool: it stays while the thread lives
        uint8 m_nPool;
        char* m_pFresh;  // the first cell that has never been used
        char* m_pEnd;    // of the last page
        SChunk* m_pNext; // in the ring of its pool
        SChunk* m_pPrev;
    };

    // The chunks of one cell size, in a ring: those with free cells precede those that are full.
    struct SPool
    {
        void Add(SChunk* pChunk);
        void Remove(SChunk* pChunk);

        SChunk* m_pCurrent = nullptr; // where cells are taken from; in the ring, too
        SChunk* m_pFirst = nullptr;
    };

    static constexpr uint64 kPage = 1024;
    static constexpr uint64 kPageFront = 8; // the address of the chunk
    static constexpr uint64 kChunk = 16 * kPage;
    static constexpr uint64 kPools = kMaxCell / 8;

    constexpr ZCellHeap() = default;

    static SChunk* ChunkOf(const void* pCell)
    {
        return *reinterpret_cast<SChunk**>(reinterpret_cast<std::uintptr_t>(pCell) & ~(kPage - 1));
    }

    static uint32 RemoteCount(uint32 nRemote) { return nRemote >> 16; }

    void* AllocateCell(SPool& pool)
    {
        SChunk* pChunk = pool.m_pCurrent;
        if (pChunk == nullptr || pChunk->m_pFree == nullptr
            || (pChunk->m_pAllocator != nullptr && pChunk->m_pAllocator != GetNormalAllocator())) [[unlikely]]
            pChunk = FindChunk(pool);
        return TakeCell(pChunk);
    }

    static void* TakeCell(SChunk* pChunk)
    {
        void* pCell = pChunk->m_pFree;
        pChunk->m_pFree = *static_cast<void**>(pCell);
        pChunk->m_nUsed.store(pChunk->m_nUsed.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
        return pCell;
    }

    KX_NOINLINE static void* AllocateFirst(uint64 nSize);
    KX_NOINLINE static void FreeOfAnother(SChunk* pChunk, void* pCell);
    KX_NOINLINE static void PutInUse(SChunk* pChunk);
    KX_NOINLINE static void Release(SChunk* pChunk);
    KX_NOINLINE SChunk* FindChunk(SPool& pool);
    SChunk* NewChunk(const SPool& pool, bool bFirst);
    void End();
    static void ReleaseUnused();
    static SChunk* FindUsable(SPool& pool);
    static SPool& PoolOf(SChunk* pChunk);
    static void MoveToFront(SChunk* pChunk);
    static void GiveTo(ZCellHeap& heap, SChunk* pChunk);
    static SChunk* UnlinkIfEmpty(SChunk* pChunk);
    static void FreeChunks(SPool& chunks);
    static bool Refill(SChunk* pChunk);
    static bool Collect(SChunk* pChunk);

    struct SThread;

    static ZCellHeap ms_orphans; // chunks of threads that have ended; used under the lock
    static ZCellHeap* ms_pHeaps; // of all threads
    static constinit KX_THREAD_LOCAL ZCellHeap* t_pHeap;

    SPool m_aPools[kPools];
    ZCellHeap* m_pNext = nullptr;
};
} // namespace kx::detail
