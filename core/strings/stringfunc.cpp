#include "core/strings/stringfunc.h"

#include <cstdarg>
#include <cstdio>
#include <limits>
#include <type_traits>

namespace
{
bool IsSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// The value of a digit, 10 or more for any other character.
uint64 DigitOf(char c)
{
    return static_cast<uint64>(static_cast<unsigned char>(c)) - '0';
}

template <class T>
bool ReadInt(const char* pszText, T* pResult, char** ppEnd)
{
    pszText = detail::TextOf(pszText).data();
    const char* p = pszText;
    while (IsSpace(*p))
        ++p;
    const bool bNegative = std::is_signed_v<T> && *p == '-';
    p += bNegative ? 1 : 0;

    // The number without its sign; the lowest one of a signed type has a magnitude of its own.
    const uint64 nLimit = static_cast<uint64>(std::numeric_limits<T>::max()) + (bNegative ? 1 : 0);
    uint64 nValue = 0;
    bool bInRange = true;
    const char* pDigits = p;
    for (uint64 nDigit = DigitOf(*p); nDigit < 10; nDigit = DigitOf(*++p))
    {
        // Before the multiplication, which would wrap.
        bInRange = bInRange && nValue <= (nLimit - nDigit) / 10;
        nValue = nValue * 10 + nDigit;
    }

    const bool bSuccess = p != pDigits && bInRange;
    if (ppEnd != nullptr)
        *ppEnd = const_cast<char*>(p != pDigits ? p : pszText);
    *pResult = bSuccess ? static_cast<T>(bNegative ? 0 - nValue : nValue) : T{0};
    return bSuccess;
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
    const int nPrinted = std::vsnprintf(pBuffer, nSize, detail::TextOf(pszFormat).data(), arguments);
    va_end(arguments);

    const bool bFits = nPrinted >= 0 && static_cast<uint64>(nPrinted) < nSize;
    detail::BreakUnless(bFits);
    if (bFits)
        return nPrinted;
    if (nSize != 0)
        pBuffer[0] = '\0';
    return -1;
}
