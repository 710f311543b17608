// ZGuid: a 128-bit identifier, and its textual form of 36 characters.
//
//      97f879bd-be59-447b-ae39-5c54e0e67d22                 the text
//      97 f8 79 bd be 59 44 7b | ae 39 5c 54 e0 e6 7d 22    the bytes in memory
//               m_nLow         |         m_nHigh
//
//   The 16 bytes are in the order of the text, as in RFC 4122 and in what others call a UUID. So a value is exchanged
//   by copying its bytes. Version and variant are not interpreted.
//
// The value of all zeros is the empty GUID. GUIDs are ordered like their texts, so the empty one is the first.
//
// A GUID can be a key of any container. The hash containers hash its bytes.
#pragma once

#include "core/strings/string.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <iosfwd>
#include <string_view>
#include <type_traits>

/// A 128-bit identifier; see the head of this file.
class ZGuid
{
public:
    /// The length of the text, and its size with the terminator.
    static constexpr uint32 kTextLength = 36;
    static constexpr uint32 kTextSize = kTextLength + 1;

    /// The empty GUID.
    constexpr ZGuid() = default;
    static const ZGuid Empty;

    /// The GUID with these digits, 16 in each argument.
    ///
    /// ZGuid(0x97f879bdbe59447b, 0xae395c54e0e67d22) is the GUID of the picture. This way, a GUID that the program
    /// knows is a constexpr constant.
    constexpr ZGuid(uint64 nFirstDigits, uint64 nLastDigits)
        : m_nLow(SwapBytes(nFirstDigits)), m_nHigh(SwapBytes(nLastDigits))
    {
    }

    /// The GUID that the string spells, or the empty GUID if it does not spell one.
    explicit ZGuid(const ZString& text) { FromString(text); }
    template <kx::detail::CStringLike TText>
    explicit ZGuid(const TText& text) requires(!std::convertible_to<const TText&, ZString>)
    {
        FromString(text);
    }

    /// Reads a GUID: groups of 8, 4, 4, 4 and 12 hexadecimal digits, lower or upper case, joined by "-", and nothing
    /// else.
    ///
    /// Stores the value and returns true. For any other string, returns false and leaves the value unchanged: one that
    /// is truncated, too long, empty or made from null, or that contains a NUL or a byte of 0x80 or more.
    bool FromString(const ZString& text) { return Parse(text); }

    /// Reads a std::string_view, a std::string or a stack string without making a ZString of it.
    ///
    /// Takes no literal, so that a literal becomes a ZString.
    template <kx::detail::CStringLike TText>
    bool FromString(const TText& text) requires(!std::convertible_to<const TText&, ZString>)
    {
        return Parse(text);
    }

    /// Reads a C string. Null is the empty string.
    template <std::convertible_to<const char*> TPointer>
    bool FromString(const TPointer& pszText) requires std::is_pointer_v<TPointer>
    {
        return Parse(kx::detail::TextOf(pszText));
    }

    /// Returns a new GUID of random bits: one of version 4, as RFC 4122 describes it. No allocation by the library.
    ///
    /// The bits come from the system's generator, `std::random_device`. If that fails, triggers the debug break; if
    /// execution resumes, the result is the empty GUID.
    [[nodiscard]] KX_API static ZGuid Random();

    /// Returns the text, with its digits in lower case. One allocation.
    [[nodiscard]] KX_API ZString ToString() const;

    /// Writes the same text with its terminator. No allocation.
    KX_API void WriteTo(char (&acText)[kTextSize]) const;

    /// Compares the values; the order is that of their texts.
    constexpr bool operator==(const ZGuid&) const = default;
    constexpr std::strong_ordering operator<=>(const ZGuid& other) const
    {
        if (m_nLow != other.m_nLow)
            return SwapBytes(m_nLow) <=> SwapBytes(other.m_nLow);
        return SwapBytes(m_nHigh) <=> SwapBytes(other.m_nHigh);
    }

private:
    // Reverses the bytes, so that the first byte in memory has the highest digits. Compilers make it one instruction.
    static constexpr uint64 SwapBytes(uint64 n)
    {
        n = (n & 0x00FF00FF00FF00FF) << 8 | (n >> 8 & 0x00FF00FF00FF00FF);
        n = (n & 0x0000FFFF0000FFFF) << 16 | (n >> 16 & 0x0000FFFF0000FFFF);
        return n << 32 | n >> 32;
    }

    KX_API bool Parse(std::string_view text);

    uint64 m_nLow = 0;
    uint64 m_nHigh = 0;
};

inline constexpr ZGuid ZGuid::Empty;

static_assert(sizeof(ZGuid) == 16 && std::is_standard_layout_v<ZGuid> && std::is_trivially_copyable_v<ZGuid>,
              "a GUID is exchanged by copying its 16 bytes");

/// Writes the text like a std::string_view, with the stream's width and fill.
KX_API std::ostream& operator<<(std::ostream& stream, const ZGuid& guid);

/// The hash of the hash containers, that of the 16 bytes.
inline uint32 HashKey(const ZGuid& guid)
{
    return HashBytes(&guid, sizeof(guid));
}

/// The standard hash, that of the 16 bytes.
template <>
struct std::hash<ZGuid>
{
    std::size_t operator()(const ZGuid& guid) const noexcept
    {
        return std::hash<std::string_view>()({reinterpret_cast<const char*>(&guid), sizeof(guid)});
    }
};
