// Inside kxbase: blocks that know their size, for allocators whose Free needs it.
//
//   m_pStart                 the address that the user gets
//      |                        |
//      v                        v
//      +---------+--------------+------------------+
//      | unused  | SBlockHeader | nSize bytes      |
//      +---------+--------------+------------------+
#pragma once

#include "core/platform/platform.h"

#include <algorithm>
#include <cstddef>
#include <new>

namespace kx::detail
{
struct SBlockHeader
{
    void* m_pStart;
    uint64 m_nSize;
    uint64 m_nAlignment; // of the whole block

    /// The distance from the start of a block to the address that the user gets.
    static uint64 Offset(uint64 nAlignment) { return std::max<uint64>(nAlignment, 2 * alignof(std::max_align_t)); }

    uint64 BlockSize() const { return m_nSize + Offset(m_nAlignment); }

    static SBlockHeader* Of(void* pMemory) { return static_cast<SBlockHeader*>(pMemory) - 1; }
};

/// Gets a block by allocate(nBytes, nAlignment) and returns the address past its header; null if there is none.
///
/// An alignment of 0 is the default one. One that is no power of two triggers the debug break, and yields null.
template <class TAllocate>
void* AllocateWithHeader(uint64 nSize, uint64 nAlignment, TAllocate allocate)
{
    const bool bPowerOfTwo = (nAlignment & (nAlignment - 1)) == 0;
    BreakUnless(bPowerOfTwo);
    const uint64 nWidest = std::max<uint64>(nAlignment, alignof(std::max_align_t));
    const uint64 nOffset = SBlockHeader::Offset(nWidest);
    void* pStart = bPowerOfTwo && nSize <= UINT64_MAX - nOffset ? allocate(nSize + nOffset, nWidest) : nullptr;
    if (pStart == nullptr)
        return nullptr;
    void* pMemory = static_cast<std::byte*>(pStart) + nOffset;
    ::new (SBlockHeader::Of(pMemory)) SBlockHeader{pStart, nSize, nWidest};
    return pMemory;
}
} // namespace kx::detail
