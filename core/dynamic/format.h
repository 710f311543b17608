// ZString::Format with fewer than eight arguments, and with arguments that have no identity of their own.
#pragma once

#include "core/dynamic/variant.h"
#include "core/strings/string.h"

#include <concepts>
#include <utility>

namespace kx::detail
{
/// What replaces an argument of Format while the call lasts: the argument itself, or its text if it has no identity.
template <class T>
const T& FormatArgument(const T& value)
{
    return value;
}
inline ZString FormatArgument(const char* pszText)
{
    return ZString(pszText);
}
template <class T>
ZString FormatArgument(const T& value) requires std::same_as<decltype(value.ToString()), ZString>
{
    return value.ToString();
}

struct IncludeCoreDynamicFormatH
{
    template <class... TArgs>
    static ZString Format(const ZString& format, const TArgs&... args)
    {
        return Padded(format, std::make_index_sequence<8 - sizeof...(TArgs)>(), detail::FormatArgument(args)...);
    }

private:
    template <std::size_t... anUnused, class... TArgs>
    static ZString Padded(const ZString& format, std::index_sequence<anUnused...>, const TArgs&... args)
    {
        return ZString::Format(format, ZVariantRef(args)..., (static_cast<void>(anUnused), ZVariantRef())...);
    }
};
} // namespace kx::detail
