// ZString: a reference to a literal, or the owner of a copy on the heap.
//
//      m_nLength    1 | 7                          m_nLength    0 | 7
//      m_pChars   --------> "abc-abc"              m_pChars   --------> abc-abc NUL
//                           in the program                              a block of the normal allocator
//
//   The top bit of m_nLength says that the string does not own its characters. The low 31 bits are their number. The
//   characters are NUL-terminated; a NUL among them is a character like any other and counts. An empty string owns
//   nothing.
//
// What sets it apart from std::string:
//
// - A string of a literal costs two stores: no allocation, no strlen, nothing to release. So literals can be passed
//   freely to an API that takes a const ZString&, and a constant can be a constexpr ZString.
// - It is 16 bytes. Its characters change only by assignment, and copies of owned characters are always deep: there is
//   no buffer for short strings, no spare capacity and no shared block.
// - Searches return -1 if they find nothing. Positions outside the string are clamped or match nothing. Nothing throws.
//
// Only an array whose content the compiler knows is taken for a literal. This is checked, because the constructor runs
// at compile time only. An array that is filled at run time is copied. A constant array whose content the compiler does
// not know does not compile. A const char* is never converted implicitly.
#pragma once

#include "core/containers/hashpolicy.h"
#include "core/memory/memorymanager.h"
#include "core/strings/pieces.h"
#include "core/strings/text.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <iosfwd>
#include <string_view>
#include <type_traits>
#include <utility>

class ZString;

namespace kx::detail
{
// Not defined: a call stops the compile-time evaluation of the literal constructor, and its name is the message.
void ThisCharacterArrayHasNoTerminator();

// Defined by core/dynamic/format.h, which a program that calls ZString::Format includes; its name is the message.
struct IncludeCoreDynamicFormatH;
struct SFormatText;

template <class T, class...>
struct TDependent
{
    using Type = T;
};

// A pointer to a C string. Arrays are excluded because they have constructors of their own.
template <class T>
concept CStringPointer = std::convertible_to<const T&, const char*> && !std::is_array_v<T>;

// The arguments that only core/dynamic/format.h can take: an integer type that is none of the fixed-width types, any
// string but a ZString, and a C string.
template <class T>
constexpr bool kForeignInt =
    !kIsOneOf<T, int64, uint64> && kIsOneOf<T, long, unsigned long, long long, unsigned long long>;
template <class T>
constexpr bool kForeignText = !std::is_same_v<T, ZString> && CStringLike<T>;
template <class T>
constexpr bool kFormatOnly = kForeignInt<T> || kForeignText<T> || CStringPointer<T> || std::is_array_v<T>;

template <class T, class... TArgs>
concept CComplete = requires
{
    sizeof(typename TDependent<T, TArgs...>::Type);
};
} // namespace kx::detail

class ZVariantRef;

namespace kx::detail
{
struct SStringAccess;
}

/// A string of bytes that changes only by assignment; see the head of this file.
class KX_VISIBLE ZString
{
public:
    /// The largest length that a string can have.
    static constexpr uint64 kMaxLength = 0x7FFFFFFF;

    /// The empty string, like a string of the literal "".
    constexpr ZString() noexcept = default;

    /// Refers to a literal, or to a constexpr array that ends with NUL.
    ///
    /// The length is that of the array without the terminator. If another function passes the array on (emplace_back,
    /// std::pair), write ZString("text") at the call. GCC 12 also needs that in a member's initialiser and after new.
    template <uint64 N>
    consteval ZString(const char (&acLiteral KX_LIFETIMEBOUND)[N])
        : m_nLength(kBorrowed | static_cast<uint32>(N - 1)), m_pChars(acLiteral)
    {
        static_assert(N - 1 <= kMaxLength, "a ZString holds fewer than 2^31 characters");
        if (acLiteral[N - 1] != '\0')
            kx::detail::ThisCharacterArrayHasNoTerminator();
    }

    /// Copies an array that was filled at run time, up to its terminator or its end.
    template <uint64 N>
    ZString(char (&acBuffer)[N]) : ZString(TextWithin(acBuffer, N))
    {
    }

    /// Copies the characters: one allocation of their number plus 1, none if there are none.
    ///
    /// 2^31 characters or more trigger the debug break; if execution resumes, the string is empty.
    KX_API explicit ZString(std::string_view text);

    /// Copies a C string by the same rules. Null is the empty string.
    template <kx::detail::CStringPointer TPointer>
    explicit ZString(const TPointer& pszText) : ZString(kx::detail::TextOf(pszText))
    {
    }

    /// Refers to the same literal, or owns a new block.
    ///
    /// Blocks are never shared, so copying also moves owned characters to the current allocator.
    constexpr ZString(const ZString& other) noexcept : m_nLength(other.m_nLength), m_pChars(other.m_pChars)
    {
        if (!IsBorrowed())
            CopyBlock();
    }

    /// Takes over the characters without an allocator call and leaves the source empty.
    constexpr ZString(ZString&& other) noexcept
        : m_nLength(std::exchange(other.m_nLength, kBorrowed)), m_pChars(std::exchange(other.m_pChars, ""))
    {
    }

    /// Frees an owned block. For any other string it does not call the allocator, so there need not be one.
    constexpr ~ZString()
    {
        static_assert(offsetof(ZString, m_nLength) == 0 && offsetof(ZString, m_pChars) == 8 && sizeof(ZString) == 16,
                      "the two fields are the layout that type descriptions and debugger views rely on");
        if (!IsBorrowed())
            FreeBlock();
    }

    /// Completes the new string before it frees the old one. Assigning a string to itself has no effect.
    ZString& operator=(const ZString& other)
    {
        if (this != &other)
            *this = ZString(other);
        return *this;
    }

    /// Frees an owned block, then takes over the characters and leaves the source empty. Assigning a string to itself
    /// has no effect.
    ZString& operator=(ZString&& other) noexcept
    {
        if (this == &other)
            return *this;
        if (!IsBorrowed())
            FreeBlock();
        m_nLength = std::exchange(other.m_nLength, kBorrowed);
        m_pChars = std::exchange(other.m_pChars, "");
        return *this;
    }

    /// Returns a string of the first nLength characters of pszText.
    ///
    /// The rules are those of the constructor from a std::string_view; a negative length counts as one that is too
    /// large. Null yields the empty string.
    [[nodiscard]] KX_API static ZString AllocateFromCString(const char* pszText, int64 nLength);

    /// Returns a copy of the format in which {0} to {7} are replaced by the arguments.
    ///
    /// An integer is written in decimal, a floating-point number in the shortest form that reads back as the same
    /// value, a bool as "true" or "false", and a string as it is. {{ and }} yield one brace each. Everything else stays
    /// as it is: a brace without its partner, a number that has no argument, an argument whose type has no textual
    /// form, NUL, and bytes of 0x80 and more.
    ///
    /// One allocation, none for an empty result. A result of 2^31 characters or more triggers the debug break; if
    /// execution resumes, it is empty.
    ///
    /// The first form needs core/dynamic/variant.h for the references. The second needs core/dynamic/format.h: it
    /// passes empty references for the missing arguments. It also accepts C strings and types that have a ToString(),
    /// which it copies; and without a copy, `std::string`, `std::string_view` and stack strings, `long long`, and
    /// enumerations, which it writes as their number.
    [[nodiscard]] KX_API static ZString Format(const ZString& format, const ZVariantRef& arg0, const ZVariantRef& arg1,
                                               const ZVariantRef& arg2, const ZVariantRef& arg3,
                                               const ZVariantRef& arg4, const ZVariantRef& arg5,
                                               const ZVariantRef& arg6, const ZVariantRef& arg7);
    template <class... TArgs>
    [[nodiscard]] static ZString Format(const ZString& format, const TArgs&... args) requires(sizeof...(TArgs) < 8)
    {
        return kx::detail::TDependent<kx::detail::IncludeCoreDynamicFormatH, TArgs...>::Type::Format(format, args...);
    }
    // The second form for eight arguments that the first does not take. If ZVariantRef is unknown, that is any eight,
    // so that the message is the same.
    template <class... TArgs>
    [[nodiscard]] static ZString Format(const ZString& format, const TArgs&... args) requires(
        sizeof...(TArgs) == 8
        && (!kx::detail::CComplete<ZVariantRef, TArgs...> || (kx::detail::kFormatOnly<TArgs> || ...)))
    {
        return kx::detail::TDependent<kx::detail::IncludeCoreDynamicFormatH, TArgs...>::Type::Format(format, args...);
    }

    /// The characters, NUL-terminated. They and a view of them are valid while the string lives and is not assigned to.
    [[nodiscard]] constexpr const char* ToCString() const KX_LIFETIMEBOUND { return m_pChars; }
    constexpr operator std::string_view() const KX_LIFETIMEBOUND { return {m_pChars, m_nLength & ~kBorrowed}; }

    /// The number of characters without the terminator, and whether it is 0.
    [[nodiscard]] constexpr int Length() const { return static_cast<int>(m_nLength & ~kBorrowed); }
    [[nodiscard]] constexpr bool IsEmpty() const { return (m_nLength & ~kBorrowed) == 0; }

    /// Returns character nIndex; triggers the debug break past the end.
    ///
    /// The index is 64 bits wide, so that negative or wrapped indices fail the check instead of being truncated.
    char operator[](uint64 nIndex) const
    {
        kx::detail::BreakUnless(nIndex < (m_nLength & ~kBorrowed));
        return m_pChars[nIndex];
    }

    /// The first character and the terminator, for loops and algorithms. Valid as long as ToCString().
    [[nodiscard]] constexpr const char* begin() const KX_LIFETIMEBOUND { return m_pChars; }
    [[nodiscard]] constexpr const char* end() const KX_LIFETIMEBOUND { return m_pChars + Length(); }

    /// Compares the characters, never addresses or ownership. The order is that of the bytes as unsigned numbers.
    constexpr bool operator==(const ZString& other) const { return std::string_view(*this) == std::string_view(other); }
    constexpr bool operator==(const char* pszText) const
    {
        return std::string_view(*this) == kx::detail::TextOf(pszText);
    }
    constexpr bool operator==(std::string_view text) const { return std::string_view(*this) == text; }
    constexpr std::strong_ordering operator<=>(const ZString& other) const
    {
        return std::string_view(*this).compare(other) <=> 0; // not every standard library has <=> of views yet
    }

    /// Whether the characters are at the start, at the end, or anywhere. The empty string is everywhere. No allocation.
    [[nodiscard]] constexpr bool StartsWith(std::string_view text) const
    {
        return std::string_view(*this).starts_with(text);
    }
    [[nodiscard]] constexpr bool StartsWith(const char* pszText) const
    {
        return StartsWith(kx::detail::TextOf(pszText));
    }
    [[nodiscard]] constexpr bool EndsWith(std::string_view text) const
    {
        return std::string_view(*this).ends_with(text);
    }
    [[nodiscard]] constexpr bool EndsWith(const char* pszText) const { return EndsWith(kx::detail::TextOf(pszText)); }
    [[nodiscard]] constexpr bool Contains(std::string_view text) const
    {
        return std::string_view(*this).find(text) != std::string_view::npos;
    }
    [[nodiscard]] constexpr bool Contains(const char* pszText) const { return Contains(kx::detail::TextOf(pszText)); }

    /// The string without the white space around it. A view like that of the whole string.
    [[nodiscard]] constexpr std::string_view Trim() const KX_LIFETIMEBOUND { return TrimSpace(*this); }

    /// The pieces between the separators: `for (const std::string_view piece : text.Split(','))`. No allocation.
    ///
    /// n separators make n + 1 pieces, which may be empty. They are views like that of the whole string.
    [[nodiscard]] constexpr ZTextPieces Split(char cSeparator) const KX_LIFETIMEBOUND { return {*this, cSeparator}; }

    /// Returns the first position of c from nStart on, or -1 if there is none. A negative nStart counts as 0.
    [[nodiscard]] KX_API int IndexOf(char c, int64 nStart = 0) const;

    /// Returns the last position of c, or of any character of the set, or -1 if there is none.
    ///
    /// Searches backwards from nStart, which is included. An nStart past the end is the last character; a negative one
    /// finds nothing. LastIndexOfAny compares each character with all of the set, so its time is the product of the
    /// two lengths.
    [[nodiscard]] KX_API int LastIndexOf(char c, int64 nStart = INT64_MAX) const;
    [[nodiscard]] KX_API int LastIndexOfAny(const ZString& set, int64 nStart = INT64_MAX) const;

    /// Returns the part of [nStart, nStart + nLength) that is inside the string; empty if nLength is less than 1.
    ///
    /// One allocation; none for an empty result, and none for the last characters of a literal, because the result then
    /// refers to the literal.
    [[nodiscard]] KX_API ZString Substring(int64 nStart, int64 nLength) const;

    /// Whether the invariants hold. For tests and debugging.
    [[nodiscard]] bool Validate() const { return m_pChars[Length()] == '\0' && (IsBorrowed() || !IsEmpty()); }

private:
    static constexpr uint32 kBorrowed = 0x80000000;

    friend struct kx::detail::SFormatText;
    friend KX_API ZString operator+(const ZString& first, const ZString& second);
    friend struct kx::detail::SStringAccess;

    // Returns an owned string of nLength > 0 characters for the caller to write; *ppChars points to the first one.
    KX_API static ZString Reserve(uint64 nLength, char** ppChars);

    static std::string_view TextWithin(const char* pBuffer, uint64 nSize)
    {
        const std::string_view buffer(pBuffer, nSize);
        return buffer.substr(0, buffer.find('\0'));
    }

    constexpr bool IsBorrowed() const { return (m_nLength & kBorrowed) != 0; }
    KX_API void CopyBlock();
    void FreeBlock() { GetNormalAllocator()->Free(const_cast<char*>(m_pChars)); }

    uint32 m_nLength = kBorrowed;
    const char* m_pChars = "";
};

namespace kx::detail
{
struct SStringAccess
{
    /// Refers to characters that end with NUL and live as long as the process, as to a literal.
    static ZString Refer(const char* pChars, uint32 nLength)
    {
        ZString text;
        text.m_nLength = ZString::kBorrowed | nLength;
        text.m_pChars = pChars;
        return text;
    }
};
} // namespace kx::detail

/// Returns the two strings joined: one allocation, none if both are empty.
///
/// 2^31 characters or more trigger the debug break; if execution resumes, the result is empty.
[[nodiscard]] KX_API ZString operator+(const ZString& first, const ZString& second);

/// Writes the string like a std::string_view, with the stream's width and fill.
KX_API std::ostream& operator<<(std::ostream& stream, const ZString& text);

/// The hash that the hash containers use: that of the characters, whoever owns them.
[[nodiscard]] inline uint32 HashKey(const ZString& text)
{
    return HashBytes(text.ToCString(), static_cast<uint64>(text.Length()));
}

/// The standard hash, equal to that of a std::string_view of the characters.
template <>
struct std::hash<ZString>
{
    std::size_t operator()(const ZString& text) const noexcept { return std::hash<std::string_view>()(text); }
};
