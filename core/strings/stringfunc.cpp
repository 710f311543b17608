#include "core/strings/stringfunc.h"

#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstdio>

bool kx::detail::DigitsFit(const char* pFirst, const char* pLast)
{
    while (pFirst != pLast && *pFirst == '0')
        ++pFirst;
    // Two numbers of the same length compare like their digit strings.
    constexpr std::string_view kLargest = "18446744073709551615";
    const std::string_view digits(pFirst, static_cast<size_t>(pLast - pFirst));
    return digits.size() < kLargest.size() || (digits.size() == kLargest.size() && digits <= kLargest);
}

bool kx::detail::ReadInt(std::string_view text, int64 nLowest, uint64 nHighest, uint64* pValue, uint64* pnRead)
{
    const char* const pLast = text.data() + text.size();
    const char* pFirst = std::find_if_not(text.data(), pLast, IsSpace);
    const bool bNegative = nLowest < 0 && pFirst != pLast && *pFirst == '-';
    pFirst += bNegative ? 1 : 0;

    uint64 nValue = 0;
    const auto [pEnd, error] = std::from_chars(pFirst, pLast, nValue);
    if (pnRead != nullptr)
        *pnRead = error == std::errc::invalid_argument ? 0 : static_cast<uint64>(pEnd - text.data());
    const bool bFits = error == std::errc() && nValue <= nHighest + (bNegative ? 1 : 0);
    *pValue = !bFits ? 0 : bNegative ? 0 - nValue : nValue;
    return bFits;
}

int FormatToBuffer(char* pBuffer, uint64 nSize, const char* pszFormat, ...)
{
    va_list arguments;
    va_start(arguments, pszFormat);
    const int nPrinted = std::vsnprintf(pBuffer, nSize, kx::detail::NotNull(pszFormat), arguments);
    va_end(arguments);

    const bool bFits = nPrinted >= 0 && static_cast<uint64>(nPrinted) < nSize;
    kx::detail::BreakUnless(bFits);
    if (bFits)
        return nPrinted;
    if (nSize != 0)
        pBuffer[0] = '\0';
    return -1;
}
