// Free string functions: they read numbers from strings and write strings into the caller's array.
//
// A null string is the empty string.
#pragma once

#include "core/platform/platform.h"
#include "core/strings/text.h"

#include <cstring>
#include <limits>
#include <string_view>
#include <type_traits>

namespace kx::detail
{
/// Whether the number that the digits spell fits in 64 bits.
KX_API bool DigitsFit(const char* pFirst, const char* pLast);

template <class T>
constexpr bool kIsInt = kIsOneOf<T, unsigned char, unsigned short, unsigned int, unsigned long, unsigned long long,
                                 signed char, short, int, long, long long>;

/// Reads an integer by the rules of IntFromString and returns whether it fits. *ppEnd receives the end of the digits,
/// or the start if there are none.
///
/// The digits are read by hand, because that takes at least a tenth less time than std::from_chars: rows
/// "IntFromString, int64" and "IntFromString, int64, view" of the benchmark of strings.
template <class T, class TPosition>
bool ReadInt(TPosition position, T* pResult, const char** ppEnd)
{
    *ppEnd = position.m_p;
    bool bNegative = false;
    uint64 nValue = DigitOf(*position);
    if (nValue >= 10)
    {
        while (IsSpace(*position))
            ++position;
        bNegative = std::is_signed_v<T> && *position == '-';
        position.m_p += bNegative ? 1 : 0;
        nValue = DigitOf(*position);
    }

    bool bFits = nValue < 10;
    if (bFits)
    {
        // If the sum wraps, there are more than kSafeDigits digits.
        const char* const pFirst = position.m_p;
        for (uint64 nDigit = DigitOf(*++position); nDigit < 10; nDigit = DigitOf(*++position))
            nValue = nValue * 10 + nDigit;
        const char* const pLast = position.m_p;
        // The lowest number of a signed type is one further from zero than the highest.
        const uint64 nLimit = static_cast<uint64>(std::numeric_limits<T>::max()) + (bNegative ? 1 : 0);
        bFits = nValue <= nLimit && (pLast - pFirst <= kSafeDigits || DigitsFit(pFirst, pLast));
        *ppEnd = pLast;
    }
    *pResult = bFits ? static_cast<T>(bNegative ? 0 - nValue : nValue) : T{0};
    return bFits;
}
} // namespace kx::detail

/// Reads a decimal integer of any type of 8 to 64 bits, of which char is none.
///
/// Skips white space, accepts one "-" for a signed type, and reads the digits up to the first other character. What
/// follows is ignored. Stores the number and returns true. If there is no digit at that place, or the number is out of
/// the range of the type, stores 0 and returns false.
///
/// "+" is not accepted, nor is "-" for an unsigned type, not even in "-0". Bytes of 0x80 and more are neither digits
/// nor white space. The empty string has no digit. A truncated string is read by the same rules.
///
/// If ppEnd is not null, it receives the first character that was not consumed: the one after the digits, even if the
/// number was too large, or pszText if there were no digits.
///
/// Uses no locale and no errno, and does not allocate. It is in the header because a call costs as much as reading a
/// digit or two.
template <class T>
[[nodiscard]] bool IntFromString(const char* pszText, T* pResult, char** ppEnd = nullptr) requires kx::detail::kIsInt<T>
{
    const char* pEnd = nullptr;
    const bool bFits = kx::detail::ReadInt(kx::detail::SCStringPosition{kx::detail::NotNull(pszText)}, pResult, &pEnd);
    if (ppEnd != nullptr)
        *ppEnd = const_cast<char*>(pEnd);
    return bFits;
}

/// Reads from a ZString, a std::string_view or a std::string by the same rules, and never past its end.
///
/// If pnRead is not null, it receives the number of characters that were consumed: those up to the end of the digits,
/// or 0 if there were no digits.
template <class T, kx::detail::CStringLike TText>
[[nodiscard]] bool IntFromString(const TText& text, T* pResult, uint64* pnRead = nullptr) requires kx::detail::kIsInt<T>
{
    const std::string_view view = text;
    const char* pEnd = nullptr;
    const bool bFits =
        kx::detail::ReadInt(kx::detail::SViewPosition{view.data(), view.data() + view.size()}, pResult, &pEnd);
    if (pnRead != nullptr)
        *pnRead = static_cast<uint64>(pEnd - view.data());
    return bFits;
}

/// Prints into the nSize bytes at pBuffer as printf does. Returns the number of characters without the terminator.
///
/// Nothing is truncated: a result that does not fit with its terminator triggers the debug break, and so does a format
/// that printf rejects. If execution resumes, the buffer holds the empty string (nothing if nSize is 0) and the result
/// is -1. No argument may be in the buffer.
KX_API int FormatToBuffer(char* pBuffer, uint64 nSize, const char* pszFormat, ...) KX_PRINTF(3, 4);

/// Writes the two strings, one after the other, into acResult and returns it.
///
/// If they do not fit with the terminator, that is a mistake in the program and must not be hidden by truncation. So
/// the call triggers the debug break; if execution resumes, acResult holds the empty string. Neither string may be in
/// acResult.
template <int N>
char* GetStringPlusString(const char* pszFirst, const char* pszSecond, char (&acResult KX_LIFETIMEBOUND)[N])
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
