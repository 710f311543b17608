// ZString: a reference to a literal, or the owner of a copy on the heap.
//
//      m_nLength    1 | 7                          m_nLength    0 | 7
//      m_pChars   --------> "abc-abc"              m_pChars   --------> abc-abc NUL
//                           in the program                              a block of the normal allocator
//
//   The top bit of m_nLength says that the text is not the string's own, the low 31 bits are the number of characters.
//   The text is NUL-terminated; a NUL within it is a character like any other and counts. An empty string owns nothing.
//
// What sets it apart from std::string:
//
// - A string of a literal costs two stores: no allocation, no strlen, nothing to release. So an API that takes a
//   const ZString& can be given literals freely, and a constant can be a constexpr ZString.
// - It is 16 bytes, it does not change its text but by assignment, and copies of owned text are always deep: no short
//   text in place, no spare capacity, no shared block.
// - Searches answer -1 where they find nothing, and positions that lie outside of the text are clamped or miss. Nothing
//   is thrown.
//
// Only what the compiler has in front of it is taken for a literal. That is checked: the constructor runs at compile
// time and no other way. An array that is filled at run time is copied, a constant one whose content the compiler does
// not know does not compile, and a const char* is never converted silently.
#pragma once

#include "core/containers/hashpolicy.h"
#include "core/memory/memorymanager.h"
#include "core/strings/text.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <iosfwd>
#include <string_view>
#include <type_traits>
#include <utility>

namespace kx::detail
{
// Not defined: a call stops the compile-time evaluation of the literal constructor, and its name is the message.
void ThisCharacterArrayHasNoTerminator();

// Defined by core/dynamic/format.h, which a program that calls ZString::Format includes; its name is the message.
struct IncludeCoreDynamicFormatH;

template <class T, class...>
struct TDependent
{
    using Type = T;
};

// A pointer to a C string, and no array, which has constructors of its own.
template <class T>
concept CStringPointer = std::convertible_to<const T&, const char*> && !std::is_array_v<T>;
} // namespace kx::detail

class ZVariantRef;

class KX_API ZString
{
public:
    static constexpr uint64 kMaxLength = 0x7FFFFFFF;

    // The empty string, as of the literal "".
    constexpr ZString() noexcept = default;

    // Refers to the literal, or to a constexpr array that ends with NUL. Its length is that of the array, less the
    // terminator. Where the array is handed on by a function before it gets here (emplace_back, std::pair), say
    // ZString("text") at the call; GCC 12 also wants that in a member's initialiser and behind new.
    template <uint64 N>
    consteval ZString(const char (&acLiteral)[N])
        : m_nLength(kBorrowed | static_cast<uint32>(N - 1)), m_pChars(acLiteral)
    {
        static_assert(N - 1 <= kMaxLength, "a ZString holds less than 2^31 characters");
        if (acLiteral[N - 1] != '\0')
            kx::detail::ThisCharacterArrayHasNoTerminator();
    }

    // Copies a filled array, up to its terminator or its end.
    template <uint64 N>
    ZString(char (&acBuffer)[N]) : ZString(TextWithin(acBuffer, N))
    {
    }

    // Copies a text: one allocation of its length and 1, none for an empty text. One of 2^31 characters or more takes
    // the debug break, and resumed gives an empty string.
    explicit ZString(std::string_view text);

    // The same for a C string. Null is the empty text.
    template <kx::detail::CStringPointer TPointer>
    explicit ZString(const TPointer& pszText) : ZString(kx::detail::TextOf(pszText))
    {
    }

    // A copy refers to the same literal, or owns a block of its own. Blocks are not shared, so that a copy is also the
    // way to bring a text under the allocator of the moment.
    constexpr ZString(const ZString& other) noexcept : m_nLength(other.m_nLength), m_pChars(other.m_pChars)
    {
        if (!IsBorrowed())
            CopyBlock();
    }

    // Takes the text over, without an allocator call. The source is left empty.
    constexpr ZString(ZString&& other) noexcept
        : m_nLength(std::exchange(other.m_nLength, kBorrowed)), m_pChars(std::exchange(other.m_pChars, ""))
    {
    }

    // Frees an owned block; for any other string the allocator is not called, so there need be none.
    constexpr ~ZString()
    {
        static_assert(offsetof(ZString, m_nLength) == 0 && offsetof(ZString, m_pChars) == 8 && sizeof(ZString) == 16,
                      "the two fields are the layout that type descriptions and debugger views rely on");
        if (!IsBorrowed())
            FreeBlock();
    }

    // The new text is complete before the old one is freed. Assigning a string to itself has no effect.
    ZString& operator=(const ZString& other)
    {
        if (this != &other)
            *this = ZString(other);
        return *this;
    }

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

    // A new string with nLength characters of pszText, the rules being those of the constructor above: a negative
    // length counts as one that is too large. Null gives an empty string.
    static ZString AllocateFromCString(const char* pszText, int64 nLength);

    // A copy of the format in which {0} to {7} are replaced by the texts of the arguments: of a number the decimal
    // text, the shortest one that reads back as the same value where it has a fraction; "true" and "false"; of a string
    // the string. {{ and }} stand for one brace. Everything else stays as it is: a brace without its partner, a number
    // that has no argument, an argument whose type has no text, NUL, bytes of 0x80 and more. One allocation, none for
    // an empty result.
    //
    // The references are core/dynamic/variant.h's, which is to be included. The shorter form passes empty ones for the
    // rest; it also takes C strings, and what has a ToString(), as arguments.
    static ZString Format(const ZString& format, const ZVariantRef& arg0, const ZVariantRef& arg1,
                          const ZVariantRef& arg2, const ZVariantRef& arg3, const ZVariantRef& arg4,
                          const ZVariantRef& arg5, const ZVariantRef& arg6, const ZVariantRef& arg7);
    template <class... TArgs>
    static ZString Format(const ZString& format, const TArgs&... args) requires(sizeof...(TArgs) < 8)
    {
        return kx::detail::TDependent<kx::detail::IncludeCoreDynamicFormatH, TArgs...>::Type::Format(format, args...);
    }

    // The text, NUL-terminated, for as long as the string lives and is not assigned to. A view has the same life.
    const char* ToCString() const { return m_pChars; }
    operator std::string_view() const { return {m_pChars, m_nLength & ~kBorrowed}; }

    int Length() const { return static_cast<int>(m_nLength & ~kBorrowed); }
    bool IsEmpty() const { return (m_nLength & ~kBorrowed) == 0; }

    // Comparison is by the characters, never by address or ownership; order is that of the bytes as unsigned numbers.
    bool operator==(const ZString& other) const { return std::string_view(*this) == std::string_view(other); }
    bool operator==(const char* pszText) const { return std::string_view(*this) == kx::detail::TextOf(pszText); }
    bool operator==(std::string_view text) const { return std::string_view(*this) == text; }
    std::strong_ordering operator<=>(const ZString& other) const
    {
        return std::string_view(*this) <=> std::string_view(other);
    }

    // The first position from nStart on that holds c, -1 if there is none. A negative start is the first character.
    int IndexOf(char c, int64 nStart = 0) const;

    // The last position that holds c, or any character of the set, -1 if there is none. The search goes backwards from
    // nStart, which is included. A start behind the end is the last character; before a negative one there is nothing.
    int LastIndexOf(char c, int64 nStart = INT64_MAX) const;
    int LastIndexOfAny(const ZString& set, int64 nStart = INT64_MAX) const;

    // The characters at nStart to nStart + nLength - 1, as far as there are such positions: what would lie before the
    // start or behind the end is left away, and a length below 1 gives an empty string. One allocation, none for an
    // empty piece and none for a literal's last characters, which stay a reference to the literal.
    ZString Substring(int64 nStart, int64 nLength) const;

    // Whether the invariants hold. For tests and debugging.
    bool Validate() const { return m_pChars[Length()] == '\0' && (IsBorrowed() || !IsEmpty()); }

private:
    static constexpr uint32 kBorrowed = 0x80000000;

    friend KX_API ZString operator+(const ZString& first, const ZString& second);

    // An owned string of nLength characters, more than none, for the caller to write: *ppChars points at the first.
    static ZString Reserve(uint64 nLength, char** ppChars);

    static std::string_view TextWithin(const char* pBuffer, uint64 nSize)
    {
        const std::string_view buffer(pBuffer, nSize);
        return buffer.substr(0, buffer.find('\0'));
    }

    constexpr bool IsBorrowed() const { return (m_nLength & kBorrowed) != 0; }
    void CopyBlock();
    void FreeBlock() { GetNormalAllocator()->Free(const_cast<char*>(m_pChars)); }

    uint32 m_nLength = kBorrowed;
    const char* m_pChars = "";
};

// Both texts in a new string: one allocation, none if both are empty. 2^31 characters or more take the debug break, and
// resumed give an empty string.
KX_API ZString operator+(const ZString& first, const ZString& second);

// Writes the text as std::string_view is written, with the stream's width and fill.
KX_API std::ostream& operator<<(std::ostream& stream, const ZString& text);

// The hash by which the hash containers keep keys: that of the characters, whoever owns them.
inline uint32 HashKey(const ZString& text)
{
    return HashBytes(text.ToCString(), static_cast<uint64>(text.Length()));
}

template <>
struct std::hash<ZString>
{
    std::size_t operator()(const ZString& text) const noexcept { return std::hash<std::string_view>()(text); }
};
