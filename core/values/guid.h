// ZGuid: a 128-bit identifier, and its text of 36 characters.
//
//      97f879bd-be59-447b-ae39-5c54e0e67d22                 the text
//      97 f8 79 bd be 59 44 7b | ae 39 5c 54 e0 e6 7d 22    the bytes in memory
//               m_nLow         |         m_nHigh
//
//   The 16 bytes lie in the order of the text, as in RFC 4122 and in what others call a UUID, so a value is exchanged
//   by copying its bytes. No version or variant is read into them.
//
// The value of all zeros is the empty one. The order is that of the texts, with the empty one as the first.
//
// A GUID may be a key of any container: THashMap keeps it by its bytes.
#pragma once

#include "core/strings/string.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <iosfwd>
#include <string_view>
#include <type_traits>

class ZGuid
{
public:
    // Of a text, and of a text with its terminator.
    static constexpr uint32 kTextLength = 36;
    static constexpr uint32 kTextSize = kTextLength + 1;

    // The empty GUID.
    constexpr ZGuid() = default;
    static const ZGuid Empty;

    // The GUID with these digits, 16 in each word: ZGuid(0x97f879bdbe59447b, 0xae395c54e0e67d22) is the one in the
    // picture. A GUID that is known to the program is a constexpr constant this way.
    constexpr ZGuid(uint64 nFirstDigits, uint64 nLastDigits)
        : m_nLow(SwapBytes(nFirstDigits)), m_nHigh(SwapBytes(nLastDigits))
    {
    }

    // The GUID of the text; the empty one if the text is none.
    explicit ZGuid(const ZString& text) { FromString(text); }

    // Takes the value over and returns true, if the text is a GUID: groups of 8, 4, 4, 4 and 12 hexadecimal digits,
    // lower or upper case, joined by "-", and nothing else. Any other text, cut, too long, empty, null as a ZString or
    // with a NUL or a byte of 0x80 or more in it, returns false and leaves the value alone.
    bool FromString(const ZString& text) { return Parse(text); }

    // The same for a piece of a text, without making a ZString of it. For a view and nothing that converts to one: a
    // literal is to be a ZString.
    template <std::same_as<std::string_view> TView>
    bool FromString(TView text)
    {
        return Parse(text);
    }

    // The text, its digits in lower case. One allocation.
    KX_API ZString ToString() const;

    // Writes the same text with its terminator. No allocation.
    KX_API void WriteTo(char (&acText)[kTextSize]) const;

    constexpr bool operator==(const ZGuid&) const = default;
    constexpr std::strong_ordering operator<=>(const ZGuid& other) const
    {
        if (m_nLow != other.m_nLow)
            return SwapBytes(m_nLow) <=> SwapBytes(other.m_nLow);
        return SwapBytes(m_nHigh) <=> SwapBytes(other.m_nHigh);
    }

private:
    // To the number with the first byte as its highest digits, and back. Compilers know it as one instruction.
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

// Writes the text as std::string_view is written, with the stream's width and fill.
KX_API std::ostream& operator<<(std::ostream& stream, const ZGuid& guid);

template <>
struct std::hash<ZGuid>
{
    std::size_t operator()(const ZGuid& guid) const noexcept
    {
        return std::hash<std::string_view>()({reinterpret_cast<const char*>(&guid), sizeof(guid)});
    }
};
