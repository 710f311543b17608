// Version: a version number of four parts, which is also one 64-bit word.
//
//      byte     0     1     2  3    4  5  6  7
//            +-----+-----+-------+-------------+
//            |major|minor| patch |    build    |      "2.1.3" has the abs 0x30102
//            +-----+-----+-------+-------------+
//            |              abs                |
//            +---------------------------------+
//
//   The word is for storing and for telling two versions apart. It does not order them, since its lowest byte is the
//   part that counts most: 1.2 has a larger abs than 2.1. The operators order by the parts.
//
// Some system headers define major and minor as macros with an argument, so in code that includes them neither name may
// stand before a parenthesis.
#pragma once

#include "core/platform/platform.h"

#include <compare>

// Left uninitialised unless it is given a value: Version{} is 0.0.0.0, Version{{2, 1, 3, 0}} is 2.1.3.
union Version
{
    // Two views on the same bytes. Either may be read whichever was written; compilers define that, though the language
    // does not (and refuses it in constant expressions).
    KX_EXTENSION struct
    {
        uint8 major;
        uint8 minor;
        uint16 patch;
        uint32 build;
    };
    uint64 abs;

    constexpr bool operator==(const Version& other) const { return Rank() == other.Rank(); }
    constexpr std::strong_ordering operator<=>(const Version& other) const { return Rank() <=> other.Rank(); }

private:
    constexpr uint64 Rank() const { return uint64{major} << 56 | uint64{minor} << 48 | uint64{patch} << 32 | build; }
};

static_assert(sizeof(Version) == 8, "the parts fill the word without a gap");

namespace version
{
// Reads two to four decimal numbers with a "." between them, behind any white space: "2.1", "2.1.3", "2.1.3.4". The
// parts that are not there are 0. Returns true and stores the version; or returns false and stores 0.0.0.0, whatever
// there was in *pResult and in the front of the text.
//
// The text ends where a "." would have to stand and does not, or behind the fourth number; what follows is ignored, a
// NUL and bytes of 0x80 and more like anything else: "2.1beta" is 2.1, "2.1.3.0.7" is 2.1.3. But a "." has to be
// followed by a number ("2.1." fails), and so a text that is cut either fails or reads as the version that it then is.
//
// A number is digits alone: no sign, and no white space but at the front. Digits that are too large for their part
// (major and minor 255, patch 65535, build 4294967295) fail. So do one number alone, an empty text and null.
//
// No locale, no allocation.
KX_API bool FromString(const char* pszText, Version* pResult);
} // namespace version
