#include "core/dynamic/cellpool.h"

#include "core/platform/lock.h"
#include "core/platform/threadobject.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace kx::detail
{
namespace
{
constinit ZLock s_lock;

// Whether the thread has ended its heap. Destructors that run later, those of static objects among them, allocate from
// the orphans.
constinit thread_local bool t_bEnded = false;

char* RoundUp(char* p, uint64 nMultiple)
{
    return reinterpret_cast<char*>((detail::AddressOf(p) + nMultiple - 1) & ~(nMultiple - 1));
}
} // namespace

constinit ZCellHeap ZCellHeap::ms_orphans;
constinit ZCellHeap* ZCellHeap::ms_pHeaps = nullptr;
constinit KX_THREAD_LOCAL ZCellHeap* ZCellHeap::t_pHeap = nullptr;

// ---- The heap of a thread

struct ZCellHeap::SThread
{
    SThread()
    {
        const std::lock_guard lock(s_lock);
        m_pHeap->m_pNext = std::exchange(ms_pHeaps, m_pHeap);
        GetMemoryManager()->m_pfnReleaseUnused = &ReleaseUnused;
    }

    ~SThread()
    {
        t_bEnded = true;
        t_pHeap = nullptr;
        m_pHeap->End();
        delete m_pHeap;
    }

    ZCellHeap* m_pHeap = new ZCellHeap;
};

void* ZCellHeap::AllocateFirst(uint64 nSize)
{
    if (!t_bEnded)
    {
        t_pHeap = ThreadObject<SThread>().m_pHeap;
        return Allocate(nSize);
    }
    SPool& pool = ms_orphans.m_aPools[(nSize - 1) / 8];
    std::unique_lock lock(s_lock);
    SChunk* pChunk = FindUsable(pool);
    while (pChunk == nullptr)
    {
        lock.unlock();
        SChunk* pNew = ms_orphans.NewChunk(pool, false);
        lock.lock();
        pool.Add(pNew);
        pChunk = FindUsable(pool);
    }
    return TakeCell(pChunk);
}

void ZCellHeap::End()
{
    SPool empty;
    {
        const std::lock_guard lock(s_lock);
        ZCellHeap** ppLink = &ms_pHeaps;
        while (*ppLink != this)
            ppLink = &(*ppLink)->m_pNext;
        *ppLink = m_pNext;

        for (SPool& pool : m_aPools)
        {
            pool.m_pCurrent = nullptr;
            while (SChunk* pChunk = pool.m_pFirst)
            {
                pChunk->m_bFirst = false;
                if (UnlinkIfEmpty(pChunk) != nullptr)
                    empty.Add(pChunk);
                else
                    GiveTo(ms_orphans, pChunk);
            }
        }
    }
    FreeChunks(empty);
}

// Called before the normal allocator is replaced, which no thread uses at that time. Afterwards the allocator that
// chunks came from may be gone. Any chunk may be empty, and not the current one alone: when its owner and another
// thread free the last two cells at the same moment, neither sees that.
void ZCellHeap::ReleaseUnused()
{
    SPool empty;
    {
        const std::lock_guard lock(s_lock);
        for (ZCellHeap* pHeap = ms_pHeaps; pHeap != nullptr; pHeap = pHeap->m_pNext)
        {
            for (SPool& pool : pHeap->m_aPools)
            {
                SChunk* const pLast = pool.m_pFirst != nullptr ? pool.m_pFirst->m_pPrev : nullptr;
                for (SChunk* pChunk = pool.m_pFirst; pChunk != nullptr;)
                {
                    SChunk* pNext = pChunk != pLast ? pChunk->m_pNext : nullptr;
                    if (UnlinkIfEmpty(pChunk) != nullptr)
                    {
                        if (pool.m_pCurrent == pChunk)
                            pool.m_pCurrent = nullptr;
                        empty.Add(pChunk);
                    }
                    pChunk = pNext;
                }
            }
        }
    }
    FreeChunks(empty);
}

// ---- Cells that another thread frees

// The last touch of the chunk is that which gives up the cell: from then on the chunk may be released. So whoever may
// be the last one takes the lock first, and so does the first one, who makes a full chunk known to the owner again.
void ZCellHeap::FreeOfAnother(SChunk* pChunk, void* pCell)
{
    const uint32 nOffset = static_cast<uint32>(static_cast<char*>(pCell) - reinterpret_cast<char*>(pChunk));
    const auto tryAdd = [&](uint32& nRemote)
    {
        *static_cast<void**>(pCell) = nRemote != 0 ? reinterpret_cast<char*>(pChunk) + (nRemote & 0xFFFF) : nullptr;
        const uint32 nNew = (RemoteCount(nRemote) + 1) << 16 | nOffset;
        return pChunk->m_nRemote.compare_exchange_weak(nRemote, nNew, std::memory_order_acq_rel,
                                                       std::memory_order_relaxed);
    };

    uint32 nRemote = pChunk->m_nRemote.load(std::memory_order_relaxed);
    while (nRemote != 0 && RemoteCount(nRemote) + 1 < pChunk->m_nUsed.load(std::memory_order_relaxed))
    {
        if (tryAdd(nRemote))
            return;
    }

    SPool empty;
    {
        const std::lock_guard lock(s_lock);
        while (!tryAdd(nRemote))
        {
        }
        if (pChunk->m_bFull.load(std::memory_order_relaxed))
            MoveToFront(pChunk);
        if (PoolOf(pChunk).m_pCurrent != pChunk && UnlinkIfEmpty(pChunk) != nullptr)
            empty.Add(pChunk);
    }
    FreeChunks(empty);
}

// Takes back the cells that other threads have freed. Returns whether there were any.
bool ZCellHeap::Collect(SChunk* pChunk)
{
    const uint32 nRemote = pChunk->m_nRemote.exchange(0, std::memory_order_acquire);
    if (nRemote == 0)
        return false;
    void* pFirst = reinterpret_cast<char*>(pChunk) + (nRemote & 0xFFFF);
    void* pLast = pFirst;
    while (*static_cast<void**>(pLast) != nullptr)
        pLast = *static_cast<void**>(pLast);
    *static_cast<void**>(pLast) = std::exchange(pChunk->m_pFree, pFirst);
    pChunk->m_nUsed.store(pChunk->m_nUsed.load(std::memory_order_relaxed) - RemoteCount(nRemote),
                          std::memory_order_relaxed);
    return true;
}

// ---- Chunks

// A full chunk has a free cell again.
void ZCellHeap::PutInUse(SChunk* pChunk)
{
    const std::lock_guard lock(s_lock);
    MoveToFront(pChunk);
}

// The owner frees the last cell. Counted under the lock, so that no other thread releases the chunk before.
void ZCellHeap::Release(SChunk* pChunk)
{
    SPool empty;
    {
        const std::lock_guard lock(s_lock);
        pChunk->m_nUsed.store(pChunk->m_nUsed.load(std::memory_order_relaxed) - 1, std::memory_order_relaxed);
        SPool& pool = PoolOf(pChunk);
        if (UnlinkIfEmpty(pChunk) != nullptr)
        {
            empty.Add(pChunk);
            if (pool.m_pCurrent == pChunk)
                pool.m_pCurrent = nullptr;
        }
    }
    FreeChunks(empty);
}

// A chunk with a free cell, of the process heap or of the current normal allocator, to take cells from.
ZCellHeap::SChunk* ZCellHeap::FindChunk(SPool& pool)
{
    bool bFirst = false;
    {
        const std::lock_guard lock(s_lock);
        SChunk* pChunk = FindUsable(pool);
        if (pChunk == nullptr && pool.m_pFirst != nullptr)
        {
            pChunk = FindUsable(ms_orphans.m_aPools[&pool - m_aPools]);
            if (pChunk != nullptr)
                GiveTo(*this, pChunk);
        }
        pool.m_pCurrent = pChunk;
        if (pChunk != nullptr)
            return pChunk;
        bFirst = pool.m_pFirst == nullptr && this != &ms_orphans;
    }
    SChunk* pChunk = NewChunk(pool, bFirst);
    const std::lock_guard lock(s_lock);
    pool.Add(pChunk);
    pool.m_pCurrent = pChunk;
    return pChunk;
}

// Allocators are called without the lock, since they may be users of variants.
ZCellHeap::SChunk* ZCellHeap::NewChunk(const SPool& pool, bool bFirst)
{
    IAllocator* pAllocator = bFirst ? nullptr : GetNormalAllocator();
    void* pBlock = bFirst ? std::malloc(kChunk) : pAllocator->Allocate(kChunk, alignof(std::max_align_t), 0);
    char* pBegin = static_cast<char*>(pBlock);
    SChunk* pChunk = ::new (pBlock) SChunk{};
    pChunk->m_pHeap.store(this, std::memory_order_relaxed);
    pChunk->m_pAllocator = pAllocator;
    pChunk->m_bFirst = bFirst;
    pChunk->m_nPool = static_cast<uint8>(&pool - m_aPools);
    pChunk->m_pFresh = RoundUp(pBegin + sizeof(SChunk), kPage);
    pChunk->m_pEnd = RoundUp(pBegin + kChunk - kPage + 1, kPage);
    Refill(pChunk);
    return pChunk;
}

void ZCellHeap::FreeChunks(SPool& chunks)
{
    while (SChunk* pChunk = chunks.m_pFirst)
    {
        chunks.Remove(pChunk);
        if (pChunk->m_pAllocator != nullptr)
            pChunk->m_pAllocator->Free(pChunk);
        else
            std::free(pChunk);
    }
}

// ---- Called with the lock held

ZCellHeap::SChunk* ZCellHeap::FindUsable(SPool& pool)
{
    IAllocator* pAllocator = GetNormalAllocator();
    SChunk* pChunk = pool.m_pFirst;
    while (pChunk != nullptr && !pChunk->m_bFull.load(std::memory_order_relaxed))
    {
        SChunk* pNext = pChunk->m_pNext;
        const bool bLast = pNext == pool.m_pFirst;
        if (pChunk->m_pAllocator == nullptr || pChunk->m_pAllocator == pAllocator)
        {
            if (Refill(pChunk))
                return pChunk;
            pChunk->m_bFull.store(true, std::memory_order_relaxed);
            pool.Remove(pChunk);
            pool.Add(pChunk);
            pool.m_pFirst = pChunk->m_pNext; // turns the ring: the chunk is last now
        }
        pChunk = bLast ? nullptr : pNext;
    }
    return nullptr;
}

// Sees to it that there is a free cell, if need be out of those that have not been used yet: not all of them at once,
// since the first use of a cell is the first use of its memory.
bool ZCellHeap::Refill(SChunk* pChunk)
{
    constexpr uint64 kAtOnce = 32;
    if (pChunk->m_pFree != nullptr || Collect(pChunk))
        return true;
    if (pChunk->m_pFresh == pChunk->m_pEnd)
        return false;

    const uint64 nCell = (pChunk->m_nPool + uint64{1}) * 8;
    uint64 nOffset = detail::AddressOf(pChunk->m_pFresh) % kPage;
    if (nOffset == 0)
    {
        *reinterpret_cast<SChunk**>(pChunk->m_pFresh) = pChunk;
        pChunk->m_pFresh += kPageFront;
        nOffset = kPageFront;
    }
    const uint64 nLeft = (kPage - nOffset) / nCell;
    void** ppLink = &pChunk->m_pFree;
    for (uint64 i = std::min(nLeft, kAtOnce); i != 0; --i)
    {
        *ppLink = pChunk->m_pFresh;
        ppLink = reinterpret_cast<void**>(pChunk->m_pFresh);
        pChunk->m_pFresh += nCell;
    }
    *ppLink = nullptr;
    if (nLeft <= kAtOnce)
        pChunk->m_pFresh = RoundUp(pChunk->m_pFresh, kPage);
    return true;
}

ZCellHeap::SPool& ZCellHeap::PoolOf(SChunk* pChunk)
{
    return pChunk->m_pHeap.load(std::memory_order_relaxed)->m_aPools[pChunk->m_nPool];
}

void ZCellHeap::MoveToFront(SChunk* pChunk)
{
    pChunk->m_bFull.store(false, std::memory_order_relaxed);
    PoolOf(pChunk).Remove(pChunk);
    PoolOf(pChunk).Add(pChunk);
}

void ZCellHeap::GiveTo(ZCellHeap& heap, SChunk* pChunk)
{
    PoolOf(pChunk).Remove(pChunk);
    pChunk->m_pHeap.store(&heap, std::memory_order_relaxed);
    pChunk->m_bFull.store(false, std::memory_order_relaxed); // as the next search may find out
    PoolOf(pChunk).Add(pChunk);
}

// The chunk if no cell of it is in use, now out of its ring; else null. Nobody else can reach such a chunk then.
ZCellHeap::SChunk* ZCellHeap::UnlinkIfEmpty(SChunk* pChunk)
{
    const uint32 nUsed = pChunk->m_nUsed.load(std::memory_order_acquire);
    if (pChunk->m_bFirst || nUsed != RemoteCount(pChunk->m_nRemote.load(std::memory_order_acquire)))
        return nullptr;
    PoolOf(pChunk).Remove(pChunk);
    return pChunk;
}

// To the front.
void ZCellHeap::SPool::Add(SChunk* pChunk)
{
    SChunk* pNext = m_pFirst != nullptr ? m_pFirst : pChunk;
    SChunk* pPrev = m_pFirst != nullptr ? m_pFirst->m_pPrev : pChunk;
    pChunk->m_pNext = pNext;
    pChunk->m_pPrev = pPrev;
    pPrev->m_pNext = pChunk;
    pNext->m_pPrev = pChunk;
    m_pFirst = pChunk;
}

void ZCellHeap::SPool::Remove(SChunk* pChunk)
{
    if (m_pFirst == pChunk)
        m_pFirst = pChunk->m_pNext != pChunk ? pChunk->m_pNext : nullptr;
    pChunk->m_pPrev->m_pNext = pChunk->m_pNext;
    pChunk->m_pNext->m_pPrev = pChunk->m_pPrev;
}
} // namespace kx::detail
