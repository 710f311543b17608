// What the strings share: in all of them a null pointer to text is the empty text.
#pragma once

#include <string_view>

namespace detail
{
constexpr const char* NotNull(const char* pszText)
{
    return pszText != nullptr ? pszText : "";
}

constexpr std::string_view TextOf(const char* pszText)
{
    return NotNull(pszText);
}
} // namespace detail
