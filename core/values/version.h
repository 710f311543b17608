// Version: a version number of four parts that is also one 64-bit word.
//
//      byte     0     1     2  3    4  5  6  7
//            +-----+-----+-------+-------------+
//            |major|minor| patch |    build    |      "2.1.3" has the abs 0x30102
//            +-----+-----+-------+-------------+
//            |              abs                |
//            +---------------------------------+
//
//   The word is for storing a version and for testing two for equality. It does not order them, because its lowest byte
//   is the most significant part: 1.2 has a larger abs than 2.1. The operators order by the parts.
//
// Some system headers define major and minor as macros with an argument. Code that includes them must not write a
// parenthesis directly after either name.
#pragma once

#include "core/containers/hashbytes.h"
#include "core/platform/platform.h"

#include <compare>
#include <concepts>
#include <typeindex> // declares std::hash, at the least cost

class ZString;

namespace kx::detail
{
// A std::string_view or std::string, without the cost of their headers. A C string has a form of its own.
template <class T>
concept CCharacters =
    !std::convertible_to<const T&, const char*> && requires(const T& text, const char* pText, uint64 nLength)
{
    pText = text.data();
    nLength = text.size();
};

// A stream, without the cost of its header.
template <class T>
concept CTextStream = requires(T& stream, const char* pszText)
{
    stream.width();
    stream << pszText;
};
} // namespace kx::detail

/// A version number of four parts; see the head of this file.
///
/// It is uninitialised by default. Version{} is 0.0.0.0, and Version{{2, 1, 3, 0}} is 2.1.3.
union Version
{
    /// The parts and abs are two views of the same bytes.
    ///
    /// Either may be read whichever was written: compilers define that, although the language does not (and rejects it
    /// in constant expressions).
    KX_EXTENSION struct
    {
        uint8 major;
        uint8 minor;
        uint16 patch;
        uint32 build;
    };
    uint64 abs;

    /// Compares the parts, the major part first.
    constexpr bool operator==(const Version& other) const { return Rank() == other.Rank(); }
    constexpr std::strong_ordering operator<=>(const Version& other) const { return Rank() <=> other.Rank(); }

    /// The size of the longest text with its terminator.
    static constexpr uint32 kTextSize = 25;

    /// Returns the four parts with "." between them, "2.1.3.0". One allocation. The caller includes
    /// core/strings/string.h.
    [[nodiscard]] KX_API ZString ToString() const;

    /// Writes the same text with its terminator and returns its length. No allocation.
    KX_API uint32 WriteTo(char (&acText)[kTextSize]) const;

    /// Writes the same text like a C string, with the stream's width and fill.
    template <kx::detail::CTextStream TStream>
    friend TStream& operator<<(TStream& stream, const Version& version)
    {
        char acText[kTextSize];
        version.WriteTo(acText);
        stream << static_cast<const char*>(acText);
        return stream;
    }

private:
    constexpr uint64 Rank() const { return uint64{major} << 56 | uint64{minor} << 48 | uint64{patch} << 32 | build; }
};

static_assert(sizeof(Version) == 8, "the parts fill the word without a gap");

/// The hash of the hash containers, that of the 8 bytes.
inline uint32 HashKey(const Version& version)
{
    return HashBytes(&version, sizeof(version));
}

/// The standard hash, that of the hash containers.
template <>
struct std::hash<Version>
{
    std::size_t operator()(const Version& version) const noexcept { return HashKey(version); }
};

namespace version
{
/// Reads two to four decimal numbers separated by ".", after any white space: "2.1", "2.1.3", "2.1.3.4".
///
/// Missing parts are 0. Returns true and stores the version; or returns false and stores 0.0.0.0, whatever *pResult was
/// and however much of the string could be read.
///
/// Parsing stops at the first character that is not the expected ".", or after the fourth number. What follows is
/// ignored, including NUL and bytes of 0x80 and more: "2.1beta" is 2.1, and "2.1.3.0.7" is 2.1.3. But an expected "."
/// must be followed by a number, so "2.1." fails. A truncated string therefore fails, or reads as the version that is
/// left.
///
/// A number consists of digits alone, without a sign; white space is allowed only at the start of the string. A number
/// that is too large for its part fails (major and minor 255, patch 65535, build 4294967295). So do a single number, an
/// empty string and null.
///
/// Uses no locale and does not allocate.
[[nodiscard]] KX_API bool FromString(const char* pszText, Version* pResult);

/// Reads nLength characters by the same rules, and never past their end.
[[nodiscard]] KX_API bool FromString(const char* pText, uint64 nLength, Version* pResult);

/// The same for a std::string_view, a std::string or a ZString.
template <kx::detail::CCharacters TText>
[[nodiscard]] bool FromString(const TText& text, Version* pResult)
{
    return FromString(text.data(), text.size(), pResult);
}
template <std::same_as<ZString> TText>
[[nodiscard]] bool FromString(const TText& text, Version* pResult)
{
    return FromString(text.ToCString(), static_cast<uint64>(text.Length()), pResult);
}
} // namespace version
