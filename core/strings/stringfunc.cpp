#include "core/strings/stringfunc.h"

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
