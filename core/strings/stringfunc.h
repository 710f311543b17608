// Free string functions: numbers out of text, and text into the caller's array.
//
// A null text is the empty text.
#pragma once

#include "core/platform/platform.h"
#include "core/strings/text.h"

#include <cstring>
#include <limits>
#include <string_view>
#include <type_traits>

namespace kx::detail
{
// Whether the number of the digits fits in 64 bits.
KX_API bool DigitsFit(const char* pFirst, const char* pLast);

template <class T, class... TTypes>
constexpr bool kIsOneOf = (std::is_same_v<T, TTypes> || ...);

template <class T>
constexpr bool kIsInt =
    kIsOneOf<T, unsigned char, unsigned short, unsigned int, uint64, signed char, short, int, int64>;
} // namespace kx::detail

// Reads a decimal number of any of the eight types of 8 to 64 bits: white space, for a signed type one "-", digits up
// to the first character that is none. What follows is ignored. Stores the number and returns true; or stores 0 and
// returns false, where no digit stands at that place or the number lies outside the range of the type. A "+" is no
// digit, and nor is the "-" of an unsigned type, in "-0" no more than in "-1". Bytes of 0x80 and more are neither
// digits nor white space. A text may be cut anywhere: what is left of it is read by the same rules. The empty one has
// no digit.
//
// ppEnd, if it is not null, gets the first character that was not consumed: the one behind the digits, even if the
// number was too large, or pszText where there were none.
//
// No locale, no errno, no allocation. In the header, since a call costs as much as reading a digit or two.
template <class T>
bool IntFromString(const char* pszText, T* pResult, char** ppEnd = nullptr) requires kx::detail::kIsInt<T>
{
    pszText = kx::detail::NotNull(pszText);
    const char* pFirst = pszText;
    bool bNegative = false;
    uint64 nValue = kx::detail::DigitOf(*pFirst);
    if (nValue >= 10)
    {
        while (kx::detail::IsSpace(*pFirst))
            ++pFirst;
        bNegative = std::is_signed_v<T> && *pFirst == '-';
        pFirst += bNegative ? 1 : 0;
        nValue = kx::detail::DigitOf(*pFirst);
    }

    bool bFits = nValue < 10;
    const char* pLast = pszText;
    if (bFits)
    {
        // The sum may wrap; then there were too many digits.
        pLast = pFirst + 1;
        for (uint64 nDigit = kx::detail::DigitOf(*pLast); nDigit < 10; nDigit = kx::detail::DigitOf(*++pLast))
            nValue = nValue * 10 + nDigit;
        // The lowest number of a signed type is one further from zero than the highest.
        const uint64 nLimit = static_cast<uint64>(std::numeric_limits<T>::max()) + (bNegative ? 1 : 0);
        bFits = nValue <= nLimit && (pLast - pFirst <= kx::detail::kSafeDigits || kx::detail::DigitsFit(pFirst, pLast));
    }
    if (ppEnd != nullptr)
        *ppEnd = const_cast<char*>(pLast);
    *pResult = bFits ? static_cast<T>(bNegative ? 0 - nValue : nValue) : T{0};
    return bFits;
}

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
    const std::string_view first = kx::detail::TextOf(pszFirst);
    const std::string_view second = kx::detail::TextOf(pszSecond);
    const bool bFits = first.size() < N && second.size() < N - first.size();
    kx::detail::BreakUnless(bFits);
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
