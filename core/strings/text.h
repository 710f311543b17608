// What the strings share: in all of them a null pointer to text is the empty text.
#pragma once

#include <string_view>

namespace detail
{
// The characters of a C string. Never null, so that the result can be handed to memcpy.
constexpr std::string_view TextOf(const char* pszText)
{
    return pszText != nullptr ? pszText : "";
}
} // namespace detail
