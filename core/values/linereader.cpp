#include "core/values/linereader.h"

#include <algorithm>
#include <climits>
#include <cstring>

ZLineReader::ZLineReader(ReadFunction pRead, uint64 nUser, char* pBuffer, uint32 nBufferSize)
    : m_pRead(pRead), m_nUser(nUser), m_pBuffer(pBuffer), m_pBegin(pBuffer), m_pEnd(pBuffer), m_pLimit(pBuffer)
{
    const bool bUsable = pRead != nullptr && pBuffer != nullptr && nBufferSize >= 3;
    kx::detail::BreakUnless(bUsable);
    if (bUsable)
        m_pLimit = pBuffer + nBufferSize - 1;
    m_bEnded = !bUsable;
}

int ZLineReader::GetNextLine(char** ppLine, uint32* pLength)
{
    if (m_bHeldBack)
        *m_pBegin = '\r';
    m_bHeldBack = false;

    char* pNewline = FindNewline(m_pBegin);
    if (pNewline == nullptr && !m_bEnded)
        pNewline = Fill();

    char* const pLine = m_pBegin;
    char* pEnd = pNewline;
    const int nLine = m_nLine;
    if (pNewline != nullptr)
    {
        m_pBegin = pNewline + 1;
        if (pEnd != pLine && pEnd[-1] == '\r')
            --pEnd;
        m_nLine += m_nLine != INT_MAX ? 1 : 0;
    }
    else if (pLine == m_pEnd || (m_pEnd - pLine == 1 && *pLine == '\0'))
    {
        *ppLine = nullptr;
        *pLength = 0;
        return 0;
    }
    else
    {
        // The buffer is full or the data has ended. At the end of the data, a "\r" need not be held back.
        pEnd = m_pEnd;
        m_bHeldBack = !m_bEnded && pEnd[-1] == '\r';
        pEnd -= m_bHeldBack ? 1 : 0;
        m_pBegin = pEnd;
    }

    *pEnd = '\0';
    *ppLine = pLine;
    *pLength = static_cast<uint32>(pEnd - pLine);
    return nLine;
}

char* ZLineReader::FindNewline(char* pFrom) const
{
    if (pFrom == m_pEnd)
        return nullptr; // there may be no buffer at all
    return static_cast<char*>(std::memchr(pFrom, '\n', static_cast<size_t>(m_pEnd - pFrom)));
}

// Moves what is in the buffer, which has no newline, to the front. Then reads until there is a newline, the buffer is
// full or the data ends. Returns the newline, or null.
char* ZLineReader::Fill()
{
    const std::ptrdiff_t nHeld = m_pEnd - m_pBegin;
    std::memmove(m_pBuffer, m_pBegin, static_cast<size_t>(nHeld));
    m_pBegin = m_pBuffer;
    m_pEnd = m_pBuffer + nHeld;
    while (m_pEnd != m_pLimit)
    {
        // The result is an int, so no call may ask for more than INT_MAX bytes.
        const int nRoom = static_cast<int>(std::min<std::ptrdiff_t>(m_pLimit - m_pEnd, INT_MAX));
        const int nRead = m_pRead(m_nUser, m_pEnd, static_cast<uint32>(nRoom));
        kx::detail::BreakUnless(nRead <= nRoom);
        m_bEnded = nRead <= 0;
        if (m_bEnded)
            break;
        char* const pRead = m_pEnd;
        m_pEnd += std::min(nRead, nRoom);
        if (char* pNewline = FindNewline(pRead); pNewline != nullptr)
            return pNewline;
    }
    return nullptr;
}
