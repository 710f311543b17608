// What the strings and the parsers share: a null pointer to characters is the empty string everywhere, and characters
// are classified without a locale.
#pragma once

#include "core/platform/platform.h"

#include <cstddef>
#include <string_view>
#include <type_traits>

namespace kx::detail
{
constexpr const char* NotNull(const char* pszText KX_LIFETIMEBOUND)
{
    return pszText != nullptr ? pszText : "";
}

constexpr std::string_view TextOf(const char* pszText KX_LIFETIMEBOUND)
{
    return NotNull(pszText);
}

template <class T, class... TTypes>
constexpr bool kIsOneOf = (std::is_same_v<T, TTypes> || ...);

/// A string that is no C string: a ZString, a std::string, a std::string_view or a stack string.
template <class T>
concept CStringLike =
    std::is_convertible_v<const T&, std::string_view> && !std::is_convertible_v<const T&, const char*>;

constexpr bool IsSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// The value of a digit; 10 or more for any other character.
constexpr uint64 DigitOf(char c)
{
    return static_cast<uint64>(static_cast<unsigned char>(c)) - '0';
}

/// A position in a C string, or in characters whose end is known. That end reads as a NUL, which no number contains.
struct SCStringPosition
{
    constexpr char operator*() const { return *m_p; }
    constexpr SCStringPosition& operator++()
    {
        ++m_p;
        return *this;
    }

    const char* m_p;
};

struct SViewPosition
{
    constexpr char operator*() const { return m_p != m_pEnd ? *m_p : '\0'; }
    constexpr SViewPosition& operator++()
    {
        ++m_p;
        return *this;
    }

    const char* m_p;
    const char* m_pEnd;
};

/// Any number of this many digits fits in 64 bits.
constexpr std::ptrdiff_t kSafeDigits = 19;
} // namespace kx::detail
