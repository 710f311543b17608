// Free string functions: numbers out of text, and text into the caller's array.
//
// A null text is the empty text.
#pragma once

#include "core/platform/platform.h"
#include "core/strings/text.h"

#include <cstring>

// Reads a decimal number: white space, for a signed type one "-", digits up to the first character that is none. What
// follows is ignored. Stores the number and returns true; or stores 0 and returns false, where no digit stands at that
// place or the number lies outside the range of the type. A "+" is no digit, and nor is the "-" of an unsigned type, in
// "-0" no more than in "-1".
//
// ppEnd, if it is not null, gets the first character that was not consumed: the one behind the digits, even if the
// number was too large, or pszText where there were none.
//
// No locale, no errno, no allocation.
KX_API bool IntFromString(const char* pszText, unsigned char* pResult, char** ppEnd = nullptr);
KX_API bool IntFromString(const char* pszText, unsigned short* pResult, char** ppEnd = nullptr);
KX_API bool IntFromString(const char* pszText, unsigned int* pResult, char** ppEnd = nullptr);
KX_API bool IntFromString(const char* pszText, uint64* pResult, char** ppEnd = nullptr);
KX_API bool IntFromString(const char* pszText, signed char* pResult, char** ppEnd = nullptr);
KX_API bool IntFromString(const char* pszText, short* pResult, char** ppEnd = nullptr);
KX_API bool IntFromString(const char* pszText, int* pResult, char** ppEnd = nullptr);
KX_API bool IntFromString(const char* pszText, int64* pResult, char** ppEnd = nullptr);

// Prints into the nSize bytes at pBuffer as printf does; the result is the number of characters, without the
// terminator. A text that does not fit with its terminator takes the debug break, as does one that printf refuses:
// nothing is cut here. Resumed, the buffer holds an empty text and the result is -1. No argument may lie in the buffer.
KX_API int FormatToBuffer(char* pBuffer, uint64 nSize, const char* pszFormat, ...) KX_PRINTF(3, 4);

// Writes the two texts, one behind the other, into acResult and returns it. If they do not fit with the terminator,
// that is a mistake in the program, not something to cut silently: the call takes the debug break, and resumed leaves
// an empty text. Neither text may lie in acResult.
template <int N>
char* GetStringPlusString(const char* pszFirst, const char* pszSecond, char (&acResult)[N])
{
    const std::string_view first = detail::TextOf(pszFirst);
    const std::string_view second = detail::TextOf(pszSecond);
    const bool bFits = first.size() < N && second.size() < N - first.size();
    detail::BreakUnless(bFits);
    char* pEnd = acResult;
    if (bFits)
    {
        std::memcpy(pEnd, first.data(), first.size());
        pEnd += first.size();
        std::memcpy(pEnd, second.data(), second.size());
        pEnd += second.size();
    }
    *pEnd = '\0';
    return acResult;
}
