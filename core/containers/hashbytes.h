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
