// Inside kxbase: the base of the grammar in demangle.cpp: the symbol that it reads and the output that it writes.
#pragma once

#include "core/platform/platform.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <span>
#include <string_view>

namespace kx::detail
{
/// The strings that a symbol can refer to by one digit: the first ten. Later ones are not entered.
class ZBackReferences
{
public:
    using Text = std::string_view;

    bool IsFull() const { return m_nSize == std::size(m_entries); }
    bool Contains(Text text) const
    {
        for (uint32 i = 0; i < m_nSize; ++i)
        {
            if (Text(m_entries[i].m_pText, m_entries[i].m_nSize) == text)
                return true;
        }
        return false;
    }

    void Add(Text text)
    {
        if (!IsFull())
            m_entries[m_nSize++] = {text.data(), text.size()};
    }

    // The entries from there on move up. In a full table, the last one leaves.
    void Insert(uint32 nIndex, Text text)
    {
        if (nIndex == std::size(m_entries))
            return;
        m_nSize += IsFull() ? 0 : 1;
        std::copy_backward(m_entries + nIndex, m_entries + m_nSize - 1, m_entries + m_nSize);
        m_entries[nIndex] = {text.data(), text.size()};
    }

    uint32 Size() const { return m_nSize; }
    void Shrink(uint32 nSize) { m_nSize = nSize; }

    Text Bytes() const { return {reinterpret_cast<const char*>(m_entries), m_nSize * sizeof(SEntry)}; }
    void Restore(Text bytes)
    {
        bytes.copy(reinterpret_cast<char*>(m_entries), bytes.size());
        m_nSize = static_cast<uint32>(bytes.size() / sizeof(SEntry));
    }

    // Returns the empty string if there is none.
    Text operator[](char cDigit) const
    {
        const uint32 nIndex = static_cast<uint32>(cDigit - '0');
        return nIndex < m_nSize ? Text(m_entries[nIndex].m_pText, m_entries[nIndex].m_nSize) : Text();
    }

private:
    struct SEntry
    {
        const char* m_pText;
        size_t m_nSize;
    };

    SEntry m_entries[10]; // uninitialised beyond m_nSize, which saves a tenth of the time of a short symbol
    uint32 m_nSize = 0;
};

/// The symbol and the output of one call.
///
/// Output is appended. A symbol has some parts in another order than the output. A piece that is decoded before it is
/// needed is written, stashed at the far end of the buffer, and appended later:
///
///      m_pText
///      +---------------------------+------------------------------+--------------------------+
///      | output --->               |  free                        |     <--- stashed pieces  |
///      +---------------------------+------------------------------+--------------------------+
///                                m_nEnd                        m_nStash
///
/// Stashed pieces never move, so they are passed around as views, like pieces of the symbol. A piece that a table
/// refers to is kept until the table ends: KeepStash says that what is stashed so far is not freed by Unstash.
///
/// There is one kind of failure, and it is permanent: the symbol cannot be read. It moves the reading position to the
/// end, where no function finds anything to read, so all of them return soon. What they write is ignored.
class ZDemangleText
{
public:
    using Text = std::string_view;

    /// The output so far.
    Text Written() const { return WrittenSince(0); }

    /// Whether nothing failed and the whole symbol was read.
    bool IsComplete() const { return !m_bFailed && m_pRead == m_pEnd; }

protected:
    ZDemangleText(Text symbol, std::span<char> memory)
        : m_pRead(symbol.data()),
          m_pEnd(m_pRead + symbol.size()),
          m_pText(memory.data()),
          m_nStash(static_cast<uint32>(std::min<size_t>(memory.size(), 0x7FFFFFFF))),
          m_nKept(m_nStash)
    {
    }
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

    void FailFull()
    {
        m_bFull = m_bFull || !m_bFailed;
        Fail();
    }

    bool HasFailed() const { return m_bFailed; }

    // Whether the first failure was that the memory was used up.
    bool IsTextFull() const { return m_bFull; }

    // Checks a string from a table of codes: an empty one is a failure.
    Text Known(Text text)
    {
        if (text.empty())
            Fail();
        return text;
    }

    // ---- Reading.

    const char* Position() const { return m_pRead; }

    // Returns to a position from before, unless there was a failure.
    void Reread(const char* pPosition) { m_pRead = m_bFailed ? m_pEnd : pPosition; }

    // Returns NUL at the end. No code contains NUL.
    char Peek() const { return m_pRead != m_pEnd ? *m_pRead : '\0'; }

    char Next()
    {
        if (m_pRead == m_pEnd)
            return Fail(), '\0';
        return *m_pRead++;
    }

    Text Rest() const { return {m_pRead, static_cast<size_t>(m_pEnd - m_pRead)}; }

    bool IsAt(Text text) const { return Rest().starts_with(text); }

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

    // Consumes the end of a list. A failure ends the list too, so that loops end.
    bool ConsumeEnd(char c) { return Consume(c) || m_bFailed; }

    static bool IsDigit(char c) { return c >= '0' && c <= '9'; }
    static bool IsNibble(char c) { return c >= 'A' && c <= 'P'; }

    // Returns the characters before the next "@" and moves past it. It is a failure if there are none.
    Text ReadToAt()
    {
        const void* pAt = std::memchr(m_pRead, '@', static_cast<size_t>(m_pEnd - m_pRead));
        if (pAt == nullptr || pAt == m_pRead)
            return Fail(), Text();
        const Text text(m_pRead, static_cast<size_t>(static_cast<const char*>(pAt) - m_pRead));
        m_pRead += text.size() + 1;
        return text;
    }

    // Reads an optional "?" for a negative number, then one digit, which is the number less 1, or hexadecimal digits A
    // to P and "@".
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

    Text WrittenSince(uint32 nBegin) const { return {m_pText + nBegin, m_nEnd - nBegin}; }

    void Put(Text text)
    {
        if (text.size() > m_nStash - m_nEnd)
            return FailFull();
        text.copy(m_pText + m_nEnd, text.size());
        m_nEnd += static_cast<uint32>(text.size());
    }

    template <class T>
    void PutInteger(T value)
    {
        const auto result = std::to_chars(m_pText + m_nEnd, m_pText + m_nStash, value);
        if (result.ec != std::errc())
            return FailFull();
        m_nEnd = static_cast<uint32>(result.ptr - m_pText);
    }

    // Removes what was written since nBegin.
    void Drop(uint32 nBegin) { m_nEnd = nBegin; }

    // Stashes a copy of what was written since nBegin.
    Text StashCopy(uint32 nBegin)
    {
        const uint32 nSize = m_nEnd - nBegin;
        if (nSize > m_nStash - m_nEnd)
            return FailFull(), Text();
        m_nStash -= nSize;
        std::memcpy(m_pText + m_nStash, m_pText + nBegin, nSize);
        return {m_pText + m_nStash, nSize};
    }

    // Stashes what was written since nBegin and removes it from the output.
    Text Stash(uint32 nBegin)
    {
        const Text text = StashCopy(nBegin);
        Drop(nBegin);
        return text;
    }

    // Writes a piece that is not needed again. If it was stashed last, its space is free again.
    void Unstash(Text text)
    {
        Put(text);
        if (text.data() == m_pText + m_nStash && m_nStash < m_nKept)
            m_nStash += static_cast<uint32>(text.size());
    }

    // Frees all that was stashed between the two calls, kept or not.
    struct SMark
    {
        uint32 m_nStash, m_nKept;
    };
    SMark StashMark() const { return {m_nStash, m_nKept}; }
    void ReleaseStash(SMark mark)
    {
        m_nStash = mark.m_nStash;
        m_nKept = mark.m_nKept;
    }

    void KeepStash() { m_nKept = m_nStash; }

    // Stashes the entries of a table and leaves it empty.
    Text SetAside(ZBackReferences& table)
    {
        const Text entries = table.Bytes();
        if (entries.size() > m_nStash - m_nEnd)
            return FailFull(), Text();
        m_nStash -= static_cast<uint32>(entries.size());
        entries.copy(m_pText + m_nStash, entries.size());
        table.Shrink(0);
        return {m_pText + m_nStash, entries.size()};
    }

private:
    const char* m_pRead;
    const char* const m_pEnd;
    bool m_bFailed = false;
    bool m_bFull = false;
    char* const m_pText;
    uint32 m_nEnd = 0;
    uint32 m_nStash;
    uint32 m_nKept;
};

} // namespace kx::detail
