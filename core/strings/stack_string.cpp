#include "core/strings/stack_string.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace
{
// format uses a temporary of at most this many bytes if its output does not fit.
constexpr uint32 kMaxTemporary = 256 * 1024;

// The entities, none shorter than four characters. The first entry is for all characters that have no entity.
struct SEntity
{
    char m_cCharacter;
    std::string_view m_text;
};

constexpr SEntity kEntities[] = {
    {'\0', {}}, {'<', "&lt;"}, {'>', "&gt;"}, {'&', "&amp;"}, {'"', "&quot;"}, {'\'', "&apos;"},
};

// Maps each character to its index in kEntities. It is a table because every character is looked up.
constexpr auto kEntityOf = []
{
    std::array<uint8, 256> places{};
    for (size_t i = 1; i < std::size(kEntities); ++i)
        places[static_cast<uint8>(kEntities[i].m_cCharacter)] = static_cast<uint8>(i);
    return places;
}();

uint8 EntityOf(char c)
{
    return kEntityOf[static_cast<uint8>(c)];
}

// The longest textual form of a float fits: a sign, 39 digits, the point, 149 digits.
using FloatText = char[192];

// Writes the magnitude of a finite value in fixed notation, truncated after nPrecision digits, and returns the end.
//
// A float is m * 2^e with m below 2^24. For everyday magnitudes, from 10^-11 to 10^19, the integer part fits in 64
// bits, and so does ten times the fraction. So the digits can be extracted one by one.
char* WriteFixed(char* pTo, char* pLimit, float value, int nPrecision)
{
    const uint32 nBits = std::bit_cast<uint32>(value) & 0x7FFFFFFF;
    const int nExponent = nBits != 0 ? static_cast<int>(nBits >> 23) - 150 : 0;
    if (nExponent < -60 || nExponent > 40)
    {
        // All places that a float can have, so that nothing is rounded.
        constexpr int kPlaces = ZStackStringBase::kMaxPrecision;
        char* pEnd = std::to_chars(pTo, pLimit, std::fabs(value), std::chars_format::fixed, kPlaces).ptr;
        return pEnd - kPlaces + (nPrecision > 0 ? nPrecision : -1);
    }

    const uint64 nMantissa = nBits != 0 ? (nBits & 0x7FFFFF) | 0x800000 : 0;
    const int nFractionBits = std::max(-nExponent, 0);
    const uint64 nFractionMask = (uint64{1} << nFractionBits) - 1;
    uint64 nFraction = nMantissa & nFractionMask;
    pTo = std::to_chars(pTo, pLimit, nMantissa >> nFractionBits << std::max(nExponent, 0)).ptr;
    if (nPrecision > 0)
        *pTo++ = '.';
    for (; nPrecision > 0; --nPrecision)
    {
        nFraction *= 10;
        *pTo++ = static_cast<char>('0' + (nFraction >> nFractionBits));
        nFraction &= nFractionMask;
    }
    return pTo;
}

// Writes the same in exponent notation, with an exponent of three digits.
char* WriteExponent(char* pTo, char* pLimit, float value, int nPrecision)
{
    constexpr int kPlaces = ZStackStringBase::kMaxPrecision;
    const char* pExponent =
        std::to_chars(pTo, pLimit, std::fabs(value), std::chars_format::scientific, kPlaces).ptr - 4;
    char* pEnd = pTo + 1 + (nPrecision > 0 ? nPrecision + 1 : 0);
    const char acExponent[] = {'e', pExponent[1], '0', pExponent[2], pExponent[3]};
    return std::copy(std::begin(acExponent), std::end(acExponent), pEnd);
}
} // namespace

ZStackStringBase::~ZStackStringBase() = default;

const char* ZStackStringBase::format(const char* pszFormat, ...)
{
    pszFormat = kx::detail::NotNull(pszFormat);
    char* pBuffer = buffer();
    char* pEnd = pBuffer + m_nSize;
    const uint32 nRoom = capacity() - 1 - m_nSize;

    // Prints one place past the end, then moves the output down: an argument may be this string, and printf has to find
    // its terminator.
    va_list arguments;
    va_start(arguments, pszFormat);
    const int nPrinted = std::vsnprintf(pEnd + 1, nRoom, pszFormat, arguments);
    va_end(arguments);
    if (nPrinted < 0)
        return pBuffer;

    if (static_cast<uint32>(nPrinted) < nRoom)
    {
        std::memmove(pEnd, pEnd + 1, static_cast<uint32>(nPrinted));
        EndAt(pBuffer, m_nSize + static_cast<uint32>(nPrinted));
        return pBuffer;
    }

    // One place past the end there is no space for the last character that fits, so all is printed again.
    char* pText = nRoom < kMaxTemporary ? static_cast<char*>(KX_STACK_ALLOC(nRoom + 1)) : pEnd;
    va_start(arguments, pszFormat);
    std::vsnprintf(pText, nRoom + uint64{1}, pszFormat, arguments);
    va_end(arguments);
    std::memmove(pEnd, pText, nRoom);
    EndAt(pBuffer, m_nSize + nRoom);
    return pBuffer;
}

void ZStackStringBase::AppendCutting(std::string_view text)
{
    if (text.empty())
        return;
    char* pBuffer = buffer();
    const uint64 nMax = capacity() - 1;
    const uint64 nNew = std::min<uint64>(text.size(), nMax);
    std::memmove(pBuffer + nMax - nNew, text.data(), nNew);
    EndAt(pBuffer, nMax);
}

ZStackStringBase& ZStackStringBase::AppendCharCutting(char c)
{
    AppendCutting(std::string_view(&c, 1));
    return *this;
}

void ZStackStringBase::PrependCutting(std::string_view text)
{
    if (text.empty())
        return;
    char* pBuffer = buffer();
    const uint64 nMax = capacity() - 1;
    const char* pText = text.data();
    uint64 nAt = 0;

    // A piece of this string is first rotated to the front. Then only a second copy of it is missing, at its old place,
    // and cutting the end can no longer drop characters that are still to be read.
    const std::uintptr_t nOffset = kx::detail::AddressOf(pText) - kx::detail::AddressOf(pBuffer);
    if (nOffset < m_nSize)
    {
        nAt = nOffset + text.size();
        std::rotate(pBuffer, pBuffer + nOffset, pBuffer + nAt);
        pText = pBuffer;
    }

    const uint64 nNew = std::min<uint64>(text.size(), nMax - nAt);
    const uint64 nBehind = std::min<uint64>(m_nSize - nAt, nMax - nAt - nNew);
    std::memmove(pBuffer + nAt + nNew, pBuffer + nAt, nBehind);
    std::memcpy(pBuffer + nAt, pText, nNew);
    EndAt(pBuffer, nAt + nNew + nBehind);
}

ZStackStringBase& ZStackStringBase::appendFloat(float value, char cFormat, int nPrecision)
{
    kx::detail::BreakUnless(cFormat == 'f' || cFormat == 'e');
    FloatText text;
    char* pEnd = text;
    if (value < 0)
        *pEnd++ = '-';

    nPrecision = std::clamp(nPrecision, 0, kMaxPrecision);
    if (std::isnan(value))
        pEnd = std::copy_n("nan", 3, pEnd);
    else if (std::isinf(value))
        pEnd = std::copy_n("inf", 3, pEnd);
    else if (cFormat == 'e')
        pEnd = WriteExponent(pEnd, std::end(text), value, nPrecision);
    else
        pEnd = WriteFixed(pEnd, std::end(text), value, nPrecision);
    append(std::string_view(text, static_cast<size_t>(pEnd - text)));
    return *this;
}

void ZStackStringBase::xmlEncode()
{
    char* pBuffer = buffer();
    char* const pLimit = pBuffer + capacity() - 1;
    char* const pEnd = pBuffer + m_nSize;
    char* pTo = std::find_if(pBuffer, pEnd, EntityOf);
    if (pTo == pEnd)
        return;

    // The rest moves to the end of the buffer, and is encoded from there back to its place. The gap between the read
    // and the write position is the remaining capacity.
    const char* pFrom = std::copy_backward(pTo, pEnd, pLimit);
    while (pFrom != pLimit)
    {
        const char c = *pFrom++;
        const std::string_view entity = kEntities[EntityOf(c)].m_text;
        if (entity.empty())
        {
            *pTo++ = c;
            continue;
        }
        if (static_cast<std::ptrdiff_t>(entity.size()) > pFrom - pTo)
        {
            *pTo++ = '?';
            continue;
        }
        // Copies the first and the last four characters: two moves, because a copy of variable length would be a call.
        std::memcpy(pTo, entity.data(), 4);
        pTo += entity.size();
        std::memcpy(pTo - 4, entity.data() + entity.size() - 4, 4);
    }
    EndAt(pBuffer, static_cast<uint64>(pTo - pBuffer));
}
