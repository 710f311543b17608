// ZStackStringBase, ZStackString<N>: strings of a fixed capacity that truncate instead of overflowing.
//
//                          size()
//                            |
//                            v
//      +-----------------------+------------------------+
//      | t e x t               |NUL       rubbish       |      N bytes inside the object
//      +-----------------------+------------------------+
//
//   size() <= N - 1, and the byte after the last character is NUL.
//
// Nothing here allocates, writes past the N bytes or reports truncation: the cut string is the whole result. What is
// cut differs on purpose:
//
//   format                keeps the old characters and cuts the end of the new ones. For messages: the start says what
//                         a message is about.
//   append, appendChar,   keep the new characters and cut the end of the old ones to make space. For names: the last
//   appendFloat           component matters most.
//   prepend               keeps the new characters and cuts the end of the old ones, like any string in a box.
//   xmlEncode             cuts nothing; a character whose entity does not fit becomes "?".
//
// The algorithms are compiled once, in the base class, which reaches the characters through two virtual functions. A
// function that fills a string takes a ZStackStringBase&.
//
// An argument may point into the string itself; it then means the characters from before the call. A null string is the
// empty string.
#pragma once

#include "core/platform/platform.h"
#include "core/strings/text.h"

#include <cstring>
#include <string_view>

namespace kx::detail
{
// A class of its own, because Windows would import it with the class that is marked.
struct SStackStringLimits
{
    /// No float has more digits after the point.
    static constexpr int kMaxPrecision = 149;
};
} // namespace kx::detail

/// A string of fixed capacity whose buffer is in the derived class; see the head of this file.
class KX_API ZStackStringBase : public kx::detail::SStackStringLimits
{
public:
    virtual ~ZStackStringBase();

    /// Appends what printf would print and returns get(). If it does not fit, cuts the end of the new characters.
    ///
    /// Appends nothing if printf itself fails (for 2^31 characters, say).
    ///
    /// The C library may allocate for a precision of thousands of digits.
    ///
    /// Output that does not fit is printed twice, the second time into a temporary on the stack that is as large as the
    /// free space. If that is more than 256 KB, there is no temporary, and an argument in this string is printed wrong.
    const char* format(const char* pszFormat, ...) KX_LIFETIMEBOUND KX_PRINTF(2, 3);

    /// Appends the characters.
    ///
    /// If they do not fit, cuts the end of the old ones, and of the new ones only what does not fit alone.
    void append(const char* pszText) { append(kx::detail::TextOf(pszText)); }
    void append(std::string_view text) { AppendTo(buffer(), capacity(), text); }

    /// Inserts the characters at the start. If they do not fit, cuts the end of the result.
    void prepend(const char* pszText) { prepend(kx::detail::TextOf(pszText)); }
    void prepend(std::string_view text) { PrependTo(buffer(), capacity(), text); }

    /// Appends one character by the rule of append: in a full string it replaces the last one.
    ///
    /// NUL is a character like any other and counts; as a C string, the string then ends there.
    ZStackStringBase& appendChar(char c) KX_LIFETIMEBOUND { return AppendCharTo(buffer(), capacity(), c); }

    /// Appends the value by the rule of append, with nPrecision digits after the point.
    ///
    /// The format 'f' yields "-63.141498", 'e' yields "-6.314149e+001". The digits are those of the exact binary value,
    /// truncated and never rounded.
    ///
    /// A value below zero has a sign, even if only zeros are left of it; negative zero has none. A precision of 0 omits
    /// the point. The precision is clamped to 0 ... kMaxPrecision. Infinities are "inf" and "-inf", and a NaN is "nan".
    /// Any other format triggers the debug break; if execution resumes, it counts as 'f'.
    ZStackStringBase& appendFloat(float value, char cFormat, int nPrecision) KX_LIFETIMEBOUND;

    /// Replaces the markup characters by their entities (lt, gt, amp, quot, apos), from left to right.
    ///
    /// A character becomes "?" if its entity would exceed the remaining capacity; the next one is judged in the same
    /// way. The string never gets shorter, and nothing is cut. NUL and bytes of 0x80 and more stay as they are.
    void xmlEncode();

    /// Makes the string empty.
    void clear() { EndAt(buffer(), 0); }

    /// The characters, NUL-terminated. They and a view of them are valid while the string lives and is not changed.
    [[nodiscard]] const char* get() const KX_LIFETIMEBOUND { return const_cast<ZStackStringBase*>(this)->buffer(); }
    operator std::string_view() const KX_LIFETIMEBOUND { return {get(), m_nSize}; }

    /// The number of characters without the terminator.
    [[nodiscard]] uint32 size() const { return m_nSize; }

    /// Whether the invariants hold. For tests and debugging.
    [[nodiscard]] bool Validate() const { return m_nSize < capacity() && get()[m_nSize] == '\0'; }

protected:
    ZStackStringBase() = default;
    ZStackStringBase(const ZStackStringBase&) = default;
    ZStackStringBase& operator=(const ZStackStringBase&) = default;

    // The functions above, for a buffer and a capacity that the caller knows.
    void AppendTo(char* pBuffer, uint32 nCapacity, std::string_view text)
    {
        const uint32 nRoom = nCapacity - 1 - m_nSize;
        if (text.size() - uint64{1} >= nRoom) [[unlikely]] // empty, or too long
            return AppendCutting(text);
        const uint64 nSize = m_nSize + uint64{text.size()};
        std::memcpy(pBuffer + m_nSize, text.data(), text.size());
        EndAt(pBuffer, nSize);
    }

    void PrependTo(char* pBuffer, uint32 nCapacity, std::string_view text)
    {
        const uint32 nRoom = nCapacity - 1 - m_nSize;
        const bool bOwnPiece = kx::detail::AddressOf(text.data()) - kx::detail::AddressOf(pBuffer) < m_nSize;
        if (text.size() - uint64{1} >= nRoom || bOwnPiece) [[unlikely]] // or empty, or too long
            return PrependCutting(text);
        const uint64 nSize = m_nSize + uint64{text.size()};
        std::memmove(pBuffer + text.size(), pBuffer, m_nSize);
        std::memcpy(pBuffer, text.data(), text.size());
        EndAt(pBuffer, nSize);
    }

    ZStackStringBase& AppendCharTo(char* pBuffer, uint32 nCapacity, char c) KX_LIFETIMEBOUND
    {
        const uint64 nSize = m_nSize + uint64{1};
        if (nSize >= nCapacity) [[unlikely]]
            return AppendCharCutting(c);
        pBuffer[m_nSize] = c;
        EndAt(pBuffer, nSize);
        return *this;
    }

    // Writes m_nSize last, so that it can stay in a register: a character that is stored after it may alias it.
    void EndAt(char* pBuffer, uint64 nSize)
    {
        pBuffer[nSize] = '\0';
        m_nSize = static_cast<uint32>(nSize);
    }

private:
    // The first character, and the size of the buffer in bytes, which is at least 1.
    virtual char* buffer() = 0;
    virtual uint32 capacity() const = 0;

    // The rare cases of the functions above: characters that do not fit, no characters, or a piece of this string.
    void AppendCutting(std::string_view text);
    ZStackStringBase& AppendCharCutting(char c);
    void PrependCutting(std::string_view text);

    uint32 m_nSize = 0;
};

static_assert(sizeof(ZStackStringBase) == 16, "the table of functions and the size");

/// A string of up to N - 1 characters, stored in the object itself.
template <uint32 N>
class ZStackString : public ZStackStringBase
{
    static_assert(N > 0, "a ZStackString needs a byte for the terminator");

public:
    /// Empty. Leaves the bytes after the terminator unwritten.
    ZStackString() { m_aBuffer[0] = '\0'; }

    /// Copies the characters and their terminator, and no other byte.
    ZStackString(const ZStackString& other) : ZStackStringBase(other) { CopyText(other); }
    ZStackString& operator=(const ZStackString& other)
    {
        if (this == &other)
            return *this;
        ZStackStringBase::operator=(other);
        CopyText(other);
        return *this;
    }

    /// The same functions as in the base class.
    //
    // They are here again because the buffer and its size are known here. Compilers find that out too late to inline
    // the two virtual functions, whose calls take as long as the rest.
    void append(const char* pszText) { append(kx::detail::TextOf(pszText)); }
    void append(std::string_view text) { AppendTo(m_aBuffer, N, text); }
    void prepend(const char* pszText) { prepend(kx::detail::TextOf(pszText)); }
    void prepend(std::string_view text) { PrependTo(m_aBuffer, N, text); }
    ZStackStringBase& appendChar(char c) KX_LIFETIMEBOUND { return AppendCharTo(m_aBuffer, N, c); }
    void clear() { EndAt(m_aBuffer, 0); }
    [[nodiscard]] const char* get() const KX_LIFETIMEBOUND { return m_aBuffer; }
    operator std::string_view() const KX_LIFETIMEBOUND { return {m_aBuffer, size()}; }

private:
    char* buffer() override { return m_aBuffer; }
    uint32 capacity() const override { return N; }

    void CopyText(const ZStackString& other) { std::memcpy(m_aBuffer, other.m_aBuffer, size() + uint64{1}); }

    char m_aBuffer[N];
};
