// Inside kxbase: what the grammar of demangle.cpp works on: the symbol that is read, and the text that is written.
#pragma once

#include "core/platform/platform.h"

#include <charconv>
#include <cstring>
#include <iterator>
#include <string_view>

namespace kx::detail
{
// Text is written behind the text that there is. Where the code of a symbol has things in another order than the text,
// what comes too early is written, set aside, and later put back:
//
//      m_acText
//      +---------------------------+------------------------------+--------------------------+
//      | text in the making --->   |  free                        |   <--- texts set aside   |
//      +---------------------------+------------------------------+--------------------------+
//                                m_nEnd                        m_nStash
//
// Texts never move while they are aside, so they are handed around as views, as are pieces of the symbol.
//
// There is one failure, and it is for good: a symbol that cannot be read. It moves the reading position to the end,
// where no function finds anything to read, so that all of them return soon. What they write is not looked at.
class ZDemangleText
{
public:
    using Text = std::string_view;

    // The text, as far as it was written.
    Text Written() const { return WrittenSince(0); }

    // Whether nothing failed, and nothing is left of the symbol.
    bool IsComplete() const { return !m_bFailed && m_pRead == m_pEnd; }

protected:
    explicit ZDemangleText(Text symbol) : m_pRead(symbol.data()), m_pEnd(m_pRead + symbol.size()) {}
    ZDemangleText(const ZDemangleText&) = delete;
    ZDemangleText& operator=(const ZDemangleText&) = delete;

    struct SNumber
    {
        uint64 m_nMagnitude = 0;
        bool m_bNegative = false;
    };

    void Fail()
    {
        m_bFailed = true;
        m_pRead = m_pEnd;
    }

    bool HasFailed() const { return m_bFailed; }

    // For the table of a code: an empty text is no text.
    Text Known(Text text)
    {
        if (text.empty())
            Fail();
        return text;
    }

    // ---- Reading.

    const char* Position() const { return m_pRead; }

    // NUL at the end. No code contains one.
    char Peek() const { return m_pRead != m_pEnd ? *m_pRead : '\0'; }

    char Next()
    {
        if (m_pRead == m_pEnd)
            return Fail(), '\0';
        return *m_pRead++;
    }

    bool IsAt(Text text) const { return Text(m_pRead, static_cast<size_t>(m_pEnd - m_pRead)).starts_with(text); }

    bool Consume(char c)
    {
        const bool bIsAt = m_pRead != m_pEnd && *m_pRead == c;
        m_pRead += bIsAt ? 1 : 0;
        return bIsAt;
    }

    bool Consume(Text text)
    {
        const bool bIsAt = IsAt(text);
        m_pRead += bIsAt ? text.size() : 0;
        return bIsAt;
    }

    void Expect(Text text)
    {
        if (!Consume(text))
            Fail();
    }

    // For loops over a list: a failure ends it too.
    bool ConsumeEnd(char c) { return Consume(c) || m_bFailed; }

    static bool IsDigit(char c) { return c >= '0' && c <= '9'; }
    static bool IsNibble(char c) { return c >= 'A' && c <= 'P'; }

    // What stands before the next "@", which must be something. Goes on behind it.
    Text ReadToAt()
    {
        const void* pAt = std::memchr(m_pRead, '@', static_cast<size_t>(m_pEnd - m_pRead));
        if (pAt == nullptr || pAt == m_pRead)
            return Fail(), Text();
        const Text text(m_pRead, static_cast<size_t>(static_cast<const char*>(pAt) - m_pRead));
        m_pRead += text.size() + 1;
        return text;
    }

    // "?" for a negative number; a digit, which is the number less 1, or the letters A to P as hexadecimal digits, and
    // "@".
    SNumber ReadNumber()
    {
        SNumber number{0, Consume('?')};
        if (IsDigit(Peek()))
        {
            number.m_nMagnitude = static_cast<uint64>(Next() - '0') + 1;
            return number;
        }
        for (const char c : ReadToAt())
        {
            if (!IsNibble(c) || number.m_nMagnitude >> 60 != 0)
                return Fail(), SNumber();
            number.m_nMagnitude = number.m_nMagnitude << 4 | static_cast<uint64>(c - 'A');
        }
        return number;
    }

    // ---- Writing.

    uint32 End() const { return m_nEnd; }

    Text WrittenSince(uint32 nBegin) const { return {m_acText + nBegin, m_nEnd - nBegin}; }

    void Put(Text text)
    {
        if (text.size() > m_nStash - m_nEnd)
            return Fail();
        text.copy(m_acText + m_nEnd, text.size());
        m_nEnd += static_cast<uint32>(text.size());
    }

    template <class T>
    void PutInteger(T value, int nBase = 10)
    {
        const auto result = std::to_chars(m_acText + m_nEnd, m_acText + m_nStash, value, nBase);
        if (result.ec != std::errc())
            return Fail();
        m_nEnd = static_cast<uint32>(result.ptr - m_acText);
    }

    // Takes back what was written since nBegin.
    void Drop(uint32 nBegin) { m_nEnd = nBegin; }

    // A copy of what was written since nBegin.
    Text StashCopy(uint32 nBegin)
    {
        const uint32 nSize = m_nEnd - nBegin;
        if (nSize > m_nStash - m_nEnd)
            return Fail(), Text();
        m_nStash -= nSize;
        std::memcpy(m_acText + m_nStash, m_acText + nBegin, nSize);
        return {m_acText + m_nStash, nSize};
    }

    // The same, taken out of the text.
    Text Stash(uint32 nBegin)
    {
        const Text text = StashCopy(nBegin);
        Drop(nBegin);
        return text;
    }

    // Writes a text that is not needed again. If it is the last one set aside, others get its room.
    void Unstash(Text text)
    {
        Put(text);
        if (text.data() == m_acText + m_nStash)
            m_nStash += static_cast<uint32>(text.size());
    }

    // All that was set aside between the two calls is given up.
    uint32 StashMark() const { return m_nStash; }
    void ReleaseStash(uint32 nMark) { m_nStash = nMark; }

private:
    static constexpr uint32 kSize = 32 * 1024;

    const char* m_pRead;
    const char* const m_pEnd;
    bool m_bFailed = false;
    uint32 m_nEnd = 0;
    uint32 m_nStash = kSize;
    char m_acText[kSize]; // stays unwritten but for the texts
};

// The texts that a symbol can refer to by one digit: the first ten. More are not entered.
class ZBackReferences
{
public:
    using Text = std::string_view;

    bool IsFull() const { return m_nSize == std::size(m_texts); }
    bool Contains(Text text) const
    {
        for (uint32 i = 0; i < m_nSize; ++i)
        {
            if (m_texts[i] == text)
                return true;
        }
        return false;
    }

    void Add(Text text)
    {
        if (!IsFull())
            m_texts[m_nSize++] = text;
    }

    // Empty if there is none.
    Text operator[](char cDigit) const
    {
        const uint32 nIndex = static_cast<uint32>(cDigit - '0');
        return nIndex < m_nSize ? m_texts[nIndex] : Text();
    }

private:
    Text m_texts[10];
    uint32 m_nSize = 0;
};
} // namespace kx::detail
