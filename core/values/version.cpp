#include "core/values/version.h"

#include "core/strings/string.h"
#include "core/strings/text.h"

#include <charconv>

namespace
{
// Reads the digits at the position, moves it past them and adds their value to nAbs, nShift bits up. Returns false if
// there is no digit or the value is above nMax.
//
// By hand, because that takes a fifth less time than std::from_chars for a C string: row "version" of the benchmark of
// values. Views share the code.
template <class TPosition>
inline bool ReadPart(TPosition& position, uint64 nMax, int nShift, uint64& nAbs)
{
    const char* pFirst = position.m_p;
    uint64 nValue = kx::detail::DigitOf(*position);
    if (nValue >= 10)
        return false;
    ++position.m_p;
    for (uint64 nDigit = 0; (nDigit = kx::detail::DigitOf(*position)) < 10; ++position.m_p)
        nValue = nValue * 10 + nDigit;

    // More digits may have wrapped the sum, unless the leading ones are zeros.
    while (position.m_p - pFirst > kx::detail::kSafeDigits)
    {
        if (*pFirst++ != '0')
            return false;
    }
    nAbs |= nValue << nShift;
    return nValue <= nMax;
}

// Moves the position past a ".". Returns false if there is none.
template <class TPosition>
inline bool ReadDot(TPosition& position)
{
    const bool bDot = *position == '.';
    position.m_p += bDot ? 1 : 0;
    return bDot;
}

// Returns false if a number is missing or too large.
template <class TPosition>
inline bool ReadParts(TPosition position, uint64& nAbs)
{
    while (kx::detail::IsSpace(*position))
        ++position.m_p;
    if (!ReadPart(position, UINT8_MAX, 0, nAbs) || !ReadDot(position) || !ReadPart(position, UINT8_MAX, 8, nAbs))
        return false;
    if (!ReadDot(position))
        return true;
    if (!ReadPart(position, UINT16_MAX, 16, nAbs))
        return false;
    return !ReadDot(position) || ReadPart(position, UINT32_MAX, 32, nAbs);
}

template <class TPosition>
inline bool Read(TPosition position, Version* pResult)
{
    uint64 nAbs = 0;
    const bool bRead = ReadParts(position, nAbs);
    pResult->abs = bRead ? nAbs : 0;
    return bRead;
}
} // namespace

bool version::FromString(const char* pszText, Version* pResult)
{
    return Read(kx::detail::SCStringPosition{kx::detail::NotNull(pszText)}, pResult);
}

bool version::FromString(const char* pText, uint64 nLength, Version* pResult)
{
    return Read(kx::detail::SViewPosition{pText, pText + nLength}, pResult);
}

uint32 Version::WriteTo(char (&acText)[kTextSize]) const
{
    char* pEnd = acText;
    for (const uint32 nPart : {uint32{major}, uint32{minor}, uint32{patch}, build})
    {
        if (pEnd != acText)
            *pEnd++ = '.';
        pEnd = std::to_chars(pEnd, acText + kTextSize, nPart).ptr;
    }
    *pEnd = '\0';
    return static_cast<uint32>(pEnd - acText);
}

ZString Version::ToString() const
{
    char acText[kTextSize];
    const uint32 nLength = WriteTo(acText);
    return ZString(std::string_view(acText, nLength));
}
