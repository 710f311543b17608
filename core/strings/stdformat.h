// std::format with a ZString, if the standard library has <format>. Otherwise this header adds nothing to string.h.
//
//   std::format("{:>10}", name)                        // what may follow the colon is what a std::string_view takes
#pragma once

#include "core/strings/string.h"

#include <version>
#if defined(__cpp_lib_format) && __has_include(<format>)
#include <format>

/// Formats the characters like a std::string_view.
template <>
struct std::formatter<ZString> : std::formatter<std::string_view>
{
    template <class TContext>
    auto format(const ZString& text, TContext& context) const
    {
        return std::formatter<std::string_view>::format(text, context);
    }
};
#endif
