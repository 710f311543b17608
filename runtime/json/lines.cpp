#include "runtime/json/json.h"
#include "runtime/json/reader.h"

#include <cstring>

namespace
{
constexpr uint64 kBlock = 65536;

// Takes lines from a source.
class ZLines
{
public:
    using Source = kx::detail::TCallback<uint64(char*, uint64)>;

    explicit ZLines(Source source) : m_source(source) {}

    /// The next line without its end; false if there is none. Valid until the next call.
    bool Next(std::string_view& line)
    {
        m_nBegin = m_nNext;
        uint64 nSearched = m_nBegin;
        while (true)
        {
            const char* pFrom = m_buffer.Begin() + nSearched;
            const void* pEnd = m_nEnd == nSearched ? nullptr : std::memchr(pFrom, '\n', m_nEnd - nSearched);
            nSearched = m_nEnd;
            if (pEnd == nullptr && Fill(nSearched))
                continue;
            const uint64 nEnd =
                pEnd != nullptr ? static_cast<uint64>(static_cast<const char*>(pEnd) - m_buffer.Begin()) : m_nEnd;
            m_nNext = nEnd + (pEnd != nullptr ? 1 : 0);
            line = {m_buffer.Begin() + m_nBegin, nEnd - m_nBegin};
            m_nBytes += m_nNext - m_nBegin;
            return m_nNext != m_nBegin;
        }
    }

    uint64 BytesTaken() const { return m_nBytes; }

private:
    // Gets more of the line that begins at m_nBegin; false at the end of the text. Moves the line to the front if that
    // makes the block free, so the positions change.
    bool Fill(uint64& nSearched)
    {
        if (m_nEnd + kBlock > m_buffer.Size())
        {
            const uint64 nLine = m_nEnd - m_nBegin;
            if (nLine != 0)
                std::memmove(m_buffer.Begin(), m_buffer.Begin() + m_nBegin, nLine);
            nSearched -= m_nBegin;
            m_nBegin = 0;
            m_nEnd = nLine;
            if (nLine + kBlock > m_buffer.Size())
                m_buffer.Resize(2 * nLine + kBlock);
        }
        const uint64 nGot = m_source(m_buffer.Begin() + m_nEnd, kBlock);
        m_nEnd += nGot;
        return nGot != 0;
    }

    Source m_source;
    TArray<char> m_buffer;
    uint64 m_nBegin = 0; // the current line
    uint64 m_nNext = 0;  // the next one
    uint64 m_nEnd = 0;   // of what the source has filled in
    uint64 m_nBytes = 0;
};

bool IsBlank(std::string_view line)
{
    return line.find_first_not_of(" \t\r") == std::string_view::npos;
}
} // namespace

bool kx::detail::ReadJsonLines(TCallback<uint64(char*, uint64)> source,
                               TCallback<bool(ZDynamicObject&, const json::SProgress&)> onValue, json::SError* pError,
                               const json::SReadOptions& options)
{
    json::ZReader reader(options);
    ZLines lines(source);
    json::SProgress progress;
    json::SError error;
    std::string_view line;
    uint64 nStart = 0;
    for (uint64 nLine = 1; lines.Next(line); ++nLine, nStart = lines.BytesTaken())
    {
        if (IsBlank(line))
            continue;
        ZDynamicObject value;
        if (reader.Read(line, value, &error))
        {
            ++progress.m_nValues;
            progress.m_nBytes = lines.BytesTaken();
            if (onValue(value, progress))
                continue;
            json::Locate(line, line.size(), "The function has stopped the reading.", error);
        }
        error.m_nOffset += nStart;
        error.m_nLine = nLine;
        if (pError != nullptr)
            *pError = error;
        return false;
    }
    return true;
}
