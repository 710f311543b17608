// ZCountingAllocator: counts blocks and bytes, and names what was not freed.
//
//   ZCountingAllocator allocator("level");
//   {
//       ZAllocatorScope scope(allocator);
//       ...
//   }                                       // level: 2 blocks with 96 bytes not freed
#pragma once

#include "core/memory/memorymanager.h"

#include <atomic>

/// Passes every call on to another allocator and counts. Any number of threads may use it at the same time.
///
/// Each block is 32 bytes larger than what is asked for, or larger by its alignment if that is more. The counts do not
/// include them.
class KX_API ZCountingAllocator : public IAllocator
{
public:
    /// The name appears in the report of leaks. It and the other allocator must outlive this one. By default, the
    /// blocks come from the process heap.
    explicit ZCountingAllocator(const char* pszName = "counting allocator", IAllocator* pSource = GetProcessHeap());

    /// Reports leaks.
    ~ZCountingAllocator() override;

    const char* GetName() const override;

    /// As ZMallocAllocator::Allocate.
    void* Allocate(uint64 nSize, uint64 nAlignment, uint32 nReserved) override;
    void Free(void* pMemory) override;

    /// The number of blocks that are in use, the bytes that were asked for in them, and the highest number of bytes so
    /// far. While other threads use the allocator, each number is right for itself, but two of them may not match.
    uint64 Blocks() const { return m_nBlocks; }
    uint64 Bytes() const { return m_nBytes; }
    uint64 MostBytes() const { return m_nMostBytes; }

    /// The number of blocks so far, freed or not.
    uint64 Allocations() const { return m_nAllocations; }

    /// If blocks are in use, writes their number and size and the name of the allocator to the standard error stream,
    /// as one line, and returns true.
    bool ReportLeaks() const;

private:
    const char* m_pszName;
    IAllocator* m_pSource;
    std::atomic<uint64> m_nBlocks = 0;
    std::atomic<uint64> m_nBytes = 0;
    std::atomic<uint64> m_nMostBytes = 0;
    std::atomic<uint64> m_nAllocations = 0;
};
