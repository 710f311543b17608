// ZStackStringBase, ZStackString<N>: strings of a fixed capacity that truncate instead of overflowing.
//
//                          size()
//                            |
//                            v
//      +-----------------------+------------------------+
//      | t e x t               |NUL       rubbish       |      N bytes inside the object
//      +-----------------------+------------------------+
//
//   size() <= N - 1, and the byte behind the last character is NUL.
//
// Nothing here allocates, writes past the N bytes or reports that a text did not fit; the cut text is the whole result.
// What is cut differs on purpose:
//
//   format                keeps the old text, and cuts the end of the new one. For messages: the start says what it is.
//   append, appendChar,   keep the new text, and cut the end of the old one to make room. For names: the last component
//   appendFloat           matters most.
//   prepend               keeps the new text, and cuts the end of the old one, as any text in a box is cut.
//   xmlEncode             cuts nothing; a character whose entity does not fit becomes "?".
//
// The algorithms are compiled once, in the base, which reaches the characters through two virtual functions. A
// function that fills a string takes a ZStackStringBase&.
//
// An argument may point into the string itself: it stands for the text before the call. A null text is the empty text.
#pragma once

#include "core/platform/platform.h"
#include "core/strings/text.h"

#include <cstring>
#include <string_view>

class KX_API ZStackStringBase
{
public:
    virtual ~ZStackStringBase();

    // Appends what printf would print; the result is get(). What does not fit is cut from the end of the new text.
    // Nothing is appended where printf itself gives up (a text of 2^31 characters, say).
    //
    // A text that is cut is printed twice, the second time into a temporary as large as the free room, on the stack. If
    // that is more than 256 KB there is no temporary, and an argument in this string is then printed wrong.
    const char* format(const char* pszFormat, ...) KX_PRINTF(2, 3);

    // Appends the text. What does not fit is cut from the end of the old text, and of the new one only what does not
    // fit alone.
    void append(const char* pszText) { append(kx::detail::TextOf(pszText)); }
    void append(std::string_view text)
    {
        char* pBuffer = buffer();
        const uint64 nSize = m_nSize + uint64{text.size()};
        if (text.empty() || nSize >= capacity())
            return AppendCutting(text);
        std::memcpy(pBuffer + m_nSize, text.data(), text.size());
        EndAt(pBuffer, nSize);
    }

    // Puts the text in front. What does not fit is cut from the end of the result.
    void prepend(const char* pszText) { prepend(kx::detail::TextOf(pszText)); }
    void prepend(std::string_view text)
    {
        char* pBuffer = buffer();
        const uint64 nSize = m_nSize + uint64{text.size()};
        const bool bOwnPiece = kx::detail::AddressOf(text.data()) - kx::detail::AddressOf(pBuffer) < m_nSize;
        if (text.empty() || nSize >= capacity() || bOwnPiece)
            return PrependCutting(text);
        std::memmove(pBuffer + text.size(), pBuffer, m_nSize);
        std::memcpy(pBuffer, text.data(), text.size());
        EndAt(pBuffer, nSize);
    }

    // Appends one character, by the rule of append: in a full string it takes the place of the last one. NUL is a
    // character like any other and counts; as a C string the text then ends there.
    ZStackStringBase& appendChar(char c)
    {
        char* pBuffer = buffer();
        const uint64 nSize = m_nSize + uint64{1};
        if (nSize >= capacity())
            return AppendCharCutting(c);
        pBuffer[m_nSize] = c;
        EndAt(pBuffer, nSize);
        return *this;
    }

    // Appends the value, by the rule of append, with nPrecision digits behind the point: "-63.141498" for 'f',
    // "-6.314149e+001" for 'e'. The digits are those of the exact binary value, cut and never rounded.
    //
    // The sign stands for a value below zero, even if only zeros are left of it; negative zero has none. A precision of
    // 0 leaves the point away. A precision is held to 0 ... kMaxPrecision, where the longest float ends. Infinities
    // read "inf" and "-inf", and what is no number "nan". Any other letter takes the debug break, and resumed counts as
    // 'f'.
    ZStackStringBase& appendFloat(float value, char cFormat, int nPrecision);

    static constexpr int kMaxPrecision = 149;

    // Replaces the markup characters by &lt; &gt; &amp; &quot; &apos;, from left to right. An entity is written if what
    // it adds still fits in the room that is left of the room at the start; otherwise the character becomes "?", and
    // the next one is judged in the same way. The text does not get shorter, and nothing is cut from it. NUL and bytes
    // of 0x80 and more stay as they are.
    void xmlEncode();

    // Makes the string empty.
    void clear() { EndAt(buffer(), 0); }

    // The text, NUL-terminated, for as long as the string lives and is not changed.
    const char* get() const { return const_cast<ZStackStringBase*>(this)->buffer(); }
    operator std::string_view() const { return {get(), m_nSize}; }

    // The number of characters, without the terminator.
    uint32 size() const { return m_nSize; }

    // Whether the invariants hold. For tests and debugging.
    bool Validate() const { return m_nSize < capacity() && get()[m_nSize] == '\0'; }

protected:
    ZStackStringBase() = default;
    ZStackStringBase(const ZStackStringBase&) = default;
    ZStackStringBase& operator=(const ZStackStringBase&) = default;

private:
    // The first character, and the number of bytes there, which is at least 1.
    virtual char* buffer() = 0;
    virtual uint32 capacity() const = 0;

    // The rest of the functions above: a text that does not fit, or none at all, or a piece of this string.
    void AppendCutting(std::string_view text);
    ZStackStringBase& AppendCharCutting(char c);
    void PrependCutting(std::string_view text);

    // The size last: it may then stay in a register, where a character that is stored behind it could be part of it.
    void EndAt(char* pBuffer, uint64 nSize)
    {
        pBuffer[nSize] = '\0';
        m_nSize = static_cast<uint32>(nSize);
    }

    uint32 m_nSize = 0;
};

// Holds up to N - 1 characters.
template <uint32 N>
class ZStackString : public ZStackStringBase
{
    static_assert(N > 0, "a ZStackString needs a byte for the terminator");

public:
    // Empty. The bytes behind the terminator stay unwritten.
    ZStackString() { m_aBuffer[0] = '\0'; }

    // Copies the text and no byte more.
    ZStackString(const ZStackString& other) : ZStackStringBase(other) { CopyText(other); }
    ZStackString& operator=(const ZStackString& other)
    {
        if (this == &other)
            return *this;
        ZStackStringBase::operator=(other);
        CopyText(other);
        return *this;
    }

private:
    char* buffer() override { return m_aBuffer; }
    uint32 capacity() const override { return N; }

    void CopyText(const ZStackString& other) { std::memcpy(m_aBuffer, other.m_aBuffer, size() + uint64{1}); }

    char m_aBuffer[N];
};
