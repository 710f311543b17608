// ZString::Format with fewer than eight arguments, and with arguments that have no identity of their own: C strings,
// std::string and std::string_view, enumerations, long long, and types that have a ToString().
#pragma once

#include "core/dynamic/variant.h"
#include "core/strings/string.h"

#include <concepts>
#include <string_view>
#include <type_traits>
#include <utility>

namespace kx::detail
{
/// Makes strings that exist during one call alone: of Format, or of a look-up.
struct SFormatText
{
    /// A string that refers to characters that need not have a terminator. The call never looks for one.
    static ZString Refer(std::string_view text)
    {
        if (text.empty() || text.size() > ZString::kMaxLength)
            return ZString(text);
        ZString string;
        string.m_nLength |= static_cast<uint32>(text.size());
        string.m_pChars = text.data();
        return string;
    }
};

template <class T>
concept CHasToString = requires(const T& value)
{
    requires std::same_as<decltype(value.ToString()), ZString>;
};

/// What replaces an argument of Format while the call lasts: the argument itself, or its text or number if it has no
/// identity.
template <class T>
const T& FormatArgument(const T& value)
{
    return value;
}
inline ZString FormatArgument(const char* pszText)
{
    return ZString(pszText);
}
template <CHasToString T>
ZString FormatArgument(const T& value)
{
    return value.ToString();
}
template <class T>
ZString FormatArgument(const T& text) requires(kForeignText<T> && !CHasToString<T>)
{
    return SFormatText::Refer(text);
}
template <class T>
auto FormatArgument(const T& nValue) requires kForeignInt<T>
{
    return static_cast<std::conditional_t<std::is_signed_v<T>, int64, uint64>>(nValue);
}
template <class T>
auto FormatArgument(const T& value) requires std::is_enum_v<T>
{
    return static_cast<std::conditional_t<std::is_signed_v<std::underlying_type_t<T>>, int64, uint64>>(value);
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
