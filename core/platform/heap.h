// Inside kxbase: blocks of the process heap with an alignment of more than the standard one.
#pragma once

#include "core/platform/platform.h"

#include <cstddef>
#include <cstdlib>
#if defined(_WIN32)
#include <malloc.h>
#endif

namespace kx::detail
{
/// Returns a block of nBytes > 0 bytes, or null if there is none. The alignment is a power of two.
inline void* AllocateFromHeap(uint64 nBytes, uint64 nAlignment)
{
#if defined(_WIN32)
    // A block is freed in the way that it was allocated, and whoever frees it does not know its alignment.
    constexpr uint64 kHead = 64; // more than what the system puts before a block, without the alignment
    return nBytes <= UINT64_MAX - kHead - nAlignment ? _aligned_malloc(nBytes, nAlignment) : nullptr;
#else
    if (nAlignment <= alignof(std::max_align_t))
        return std::malloc(nBytes);
    // aligned_alloc wants a multiple of the alignment, and rounding up must not wrap to a small number.
    const uint64 nRounded = (nBytes + nAlignment - 1) & ~(nAlignment - 1);
    return nRounded >= nBytes ? std::aligned_alloc(nAlignment, nRounded) : nullptr;
#endif
}

/// Ignores null.
inline void FreeToHeap(void* pMemory)
{
#if defined(_WIN32)
    _aligned_free(pMemory);
#else
    std::free(pMemory);
#endif
}
} // namespace kx::detail
