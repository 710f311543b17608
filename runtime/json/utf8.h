// Inside runtime.json: UTF-8.
#pragma once

#include "core/platform/platform.h"

namespace json
{
/// The number of bytes of the character at p, which is before pEnd; 0 if these bytes are no UTF-8. Not for ASCII.
inline uint32 CharacterSize(const char* p, const char* pEnd)
{
    const auto byteAt = [&](int64 n) { return n < pEnd - p ? static_cast<uint8>(p[n]) : uint8{0}; };
    const uint8 nFirst = byteAt(0);
    const uint8 nSecond = byteAt(1);
    const auto isNext = [](uint8 nByte) { return (nByte & 0xC0) == 0x80; };
    if (nFirst < 0xC2 || nFirst > 0xF4 || !isNext(nSecond))
        return 0;
    if (nFirst < 0xE0)
        return 2;
    // Longer forms than needed, surrogates, and what is above U+10FFFF show in the second byte.
    if ((nFirst == 0xE0 && nSecond < 0xA0) || (nFirst == 0xED && nSecond > 0x9F) || (nFirst == 0xF0 && nSecond < 0x90)
        || (nFirst == 0xF4 && nSecond > 0x8F) || !isNext(byteAt(2)))
        return 0;
    if (nFirst < 0xF0)
        return 3;
    return isNext(byteAt(3)) ? 4 : 0;
}
} // namespace json
