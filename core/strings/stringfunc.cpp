#include "core/strings/stringfunc.h"

#include <cstdarg>
#include <cstdio>
#include <limits>
#include <type_traits>

namespace
{
using detail::DigitOf;
using detail::IsSpace;

// That many digits fit in 64 bits, whatever they are.
constexpr int64 kSafeDigits = 19;

// The end of a call: the digits in [pFirst, pLast) have the value nValue, and bFits if 64 bits hold it.
template <class T>
bool Store(const char* pLast, bool bNegative, uint64 nValue, bool bFits, T* pResult, char** ppEnd)
{
    // The lowest number of a signed type is one further from zero than the highest.
    const uint64 nLimit = static_cast<uint64>(std::numeric_limits<T>::max()) + (bNegative ? 1 : 0);
    bFits = bFits && nValue <= nLimit;
    if (ppEnd != nullptr)
        *ppEnd = const_cast<char*>(pLast);
    *pResult = bFits ? static_cast<T>(bNegative ? 0 - nValue : nValue) : T{0};
    return bFits;
}

// Reads more digits than that, among them zeros in front. Never inlined, so that the common case needs no stack frame.
template <class T>
KX_NOINLINE bool ReadManyDigits(const char* pFirst, const char* pLast, bool bNegative, T* pResult, char** ppEnd)
{
    uint64 nValue = 0;
    bool bFits = true;
    for (; pFirst != pLast && bFits; ++pFirst)
    {
        bFits = nValue <= (UINT64_MAX - DigitOf(*pFirst)) / 10;
        nValue = nValue * 10 + DigitOf(*pFirst);
    }
    return Store(pLast, bNegative, nValue, bFits, pResult, ppEnd);
}

template <class T>
bool ReadInt(const char* pszText, T* pResult, char** ppEnd)
{
    pszText = detail::NotNull(pszText);
    const char* pFirst = pszText;
    bool bNegative = false;
    uint64 nValue = DigitOf(*pFirst);
    if (nValue >= 10)
    {
        while (IsSpace(*pFirst))
            ++pFirst;
        bNegative = std::is_signed_v<T> && *pFirst == '-';
        pFirst += bNegative ? 1 : 0;
        nValue = DigitOf(*pFirst);
        if (nValue >= 10)
            return Store(pszText, false, 0, false, pResult, ppEnd);
    }

    // The loop may wrap; then there were too many digits, and they are read again.
    const char* p = pFirst + 1;
    for (uint64 nDigit = DigitOf(*p); nDigit < 10; nDigit = DigitOf(*++p))
        nValue = nValue * 10 + nDigit;
    if (p - pFirst > kSafeDigits)
        return ReadManyDigits(pFirst, p, bNegative, pResult, ppEnd);
    return Store(p, bNegative, nValue, true, pResult, ppEnd);
}
} // namespace

bool IntFromString(const char* pszText, unsigned char* pResult, char** ppEnd)
{
    return ReadInt(pszText, pResult, ppEnd);
}

bool IntFromString(const char* pszText, unsigned short* pResult, char** ppEnd)
{
    return ReadInt(pszText, pResult, ppEnd);
}

bool IntFromString(const char* pszText, unsigned int* pResult, char** ppEnd)
{
    return ReadInt(pszText, pResult, ppEnd);
}

bool IntFromString(const char* pszText, uint64* pResult, char** ppEnd)
{
    return ReadInt(pszText, pResult, ppEnd);
}

bool IntFromString(const char* pszText, signed char* pResult, char** ppEnd)
{
    return ReadInt(pszText, pResult, ppEnd);
}

bool IntFromString(const char* pszText, short* pResult, char** ppEnd)
{
    return ReadInt(pszText, pResult, ppEnd);
}

bool IntFromString(const char* pszText, int* pResult, char** ppEnd)
{
    return ReadInt(pszText, pResult, ppEnd);
}

bool IntFromString(const char* pszText, int64* pResult, char** ppEnd)
{
    return ReadInt(pszText, pResult, ppEnd);
}

int FormatToBuffer(char* pBuffer, uint64 nSize, const char* pszFormat, ...)
{
    va_list arguments;
    va_start(arguments, pszFormat);
    const int nPrinted = std::vsnprintf(pBuffer, nSize, detail::NotNull(pszFormat), arguments);
    va_end(arguments);

    const bool bFits = nPrinted >= 0 && static_cast<uint64>(nPrinted) < nSize;
    detail::BreakUnless(bFits);
    if (bFits)
        return nPrinted;
    if (nSize != 0)
        pBuffer[0] = '\0';
    return -1;
}
