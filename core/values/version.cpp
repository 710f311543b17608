#include "core/values/version.h"

#include "core/strings/text.h"

namespace
{
// Reads the digits at p, moves p past them and adds their value to nAbs, nShift bits up. Returns false if there is no
// digit or the value is above nMax.
inline bool ReadPart(const char*& p, uint64 nMax, int nShift, uint64& nAbs)
{
    const char* pFirst = p;
    uint64 nValue = kx::detail::DigitOf(*p);
    if (nValue >= 10)
        return false;
    for (uint64 nDigit = kx::detail::DigitOf(*++p); nDigit < 10; nDigit = kx::detail::DigitOf(*++p))
        nValue = nValue * 10 + nDigit;

    // More digits may have wrapped the sum, unless the leading ones are zeros.
    while (p - pFirst > kx::detail::kSafeDigits)
    {
        if (*pFirst++ != '0')
            return false;
    }
    nAbs |= nValue << nShift;
    return nValue <= nMax;
}

// Returns false if a number is missing or too large.
inline bool ReadParts(const char* p, uint64& nAbs)
{
    while (kx::detail::IsSpace(*p))
        ++p;
    if (!ReadPart(p, UINT8_MAX, 0, nAbs) || *p++ != '.' || !ReadPart(p, UINT8_MAX, 8, nAbs))
        return false;
    if (*p != '.')
        return true;
    if (!ReadPart(++p, UINT16_MAX, 16, nAbs))
        return false;
    return *p != '.' || ReadPart(++p, UINT32_MAX, 32, nAbs);
}
} // namespace

bool version::FromString(const char* pszText, Version* pResult)
{
    uint64 nAbs = 0;
    const bool bRead = ReadParts(kx::detail::NotNull(pszText), nAbs);
    pResult->abs = bRead ? nAbs : 0;
    return bRead;
}
