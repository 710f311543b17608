#include "core/values/version.h"

#include "core/strings/text.h"

namespace
{
struct SPart
{
    uint64 m_nMax;
    int m_nShift; // of its lowest bit in the word
};

constexpr SPart kParts[] = {{UINT8_MAX, 0}, {UINT8_MAX, 8}, {UINT16_MAX, 16}, {UINT32_MAX, 32}};
} // namespace

bool version::FromString(const char* pszText, Version* pResult)
{
    pResult->abs = 0;
    const char* p = detail::NotNull(pszText);
    while (detail::IsSpace(*p))
        ++p;

    uint64 nAbs = 0;
    for (const SPart& part : kParts)
    {
        uint64 nValue = detail::DigitOf(*p);
        if (nValue >= 10)
            return false;
        for (uint64 nDigit = detail::DigitOf(*++p); nDigit < 10; nDigit = detail::DigitOf(*++p))
        {
            nValue = nValue * 10 + nDigit;
            if (nValue > part.m_nMax)
                return false;
        }
        nAbs |= nValue << part.m_nShift;

        if (*p != '.')
        {
            if (&part == kParts)
                return false;
            break;
        }
        ++p;
    }
    pResult->abs = nAbs;
    return true;
}
