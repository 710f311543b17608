// The hash of the default policies of the hash containers.
#pragma once

#include "core/platform/platform.h"

/// Returns the 32-bit FNV-1a hash of nSize bytes, lowest address first, but with signed bytes.
/// A byte of 0x80 or more flips the upper 24 bits as well, so the hashes of such keys differ from published FNV-1a. The
/// iteration order of the hash containers depends on these values.
inline uint32 HashBytes(const void* pBytes, uint64 nSize)
{
    uint32 nHash = 0x811C9DC5;
    // int8 and not char, which is unsigned on some processors.
    for (const int8* pByte = static_cast<const int8*>(pBytes); nSize != 0; ++pByte, --nSize)
        nHash = (nHash ^ static_cast<uint32>(*pByte)) * 16777619;
    return nHash;
}

namespace kx::detail
{
/// Returns HashBytes of the lowest nSize bytes of the word, without storing it.
/// At -O2 compilers do not unroll the loop of HashBytes, and read the key back byte by byte.
template <uint64 nSize>
constexpr uint32 HashWord(uint64 nWord, uint32 nHash = 0x811C9DC5)
{
    if constexpr (nSize == 0)
        return nHash;
    else
        return HashWord<nSize - 1>(nWord >> 8, (nHash ^ static_cast<uint32>(static_cast<int8>(nWord))) * 16777619);
}
} // namespace kx::detail
