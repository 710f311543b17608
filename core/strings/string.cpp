#include "core/strings/string.h"

#include <algorithm>
#include <cstring>
#include <ostream>

namespace
{
// Allocates a block for nLength characters and writes their terminator.
char* AllocateChars(uint64 nLength)
{
    char* pChars = static_cast<char*>(GetNormalAllocator()->Allocate(nLength + 1, 1, 0));
    pChars[nLength] = '\0';
    return pChars;
}

char* CopyChars(std::string_view text)
{
    char* pChars = AllocateChars(text.size());
    std::memcpy(pChars, text.data(), text.size());
    return pChars;
}

// Whether there is something to allocate. Too many characters trigger the debug break and count as none.
bool NeedsBlock(uint64 nLength)
{
    kx::detail::BreakUnless(nLength <= ZString::kMaxLength);
    return nLength != 0 && nLength <= ZString::kMaxLength;
}
} // namespace

ZString::ZString(std::string_view text)
{
    if (NeedsBlock(text.size()))
    {
        m_nLength = static_cast<uint32>(text.size());
        m_pChars = CopyChars(text);
    }
}

void ZString::CopyBlock()
{
    m_pChars = CopyChars(*this);
}

ZString ZString::AllocateFromCString(const char* pszText, int64 nLength)
{
    if (pszText == nullptr)
        return {};
    return ZString(std::string_view(pszText, static_cast<uint64>(nLength)));
}

ZString ZString::Reserve(uint64 nLength, char** ppChars)
{
    *ppChars = AllocateChars(nLength);
    ZString text;
    text.m_nLength = static_cast<uint32>(nLength);
    text.m_pChars = *ppChars;
    return text;
}

int ZString::IndexOf(char c, int64 nStart) const
{
    return static_cast<int>(std::string_view(*this).find(c, static_cast<uint64>(std::max<int64>(nStart, 0))));
}

int ZString::LastIndexOf(char c, int64 nStart) const
{
    return nStart < 0 ? -1 : static_cast<int>(std::string_view(*this).rfind(c, static_cast<uint64>(nStart)));
}

int ZString::LastIndexOfAny(const ZString& set, int64 nStart) const
{
    return nStart < 0 ? -1 : static_cast<int>(std::string_view(*this).find_last_of(set, static_cast<uint64>(nStart)));
}

ZString ZString::Substring(int64 nStart, int64 nLength) const
{
    // Never computes nStart + nLength, which may overflow.
    if (nStart < 0 && nLength > 0)
    {
        nLength += nStart;
        nStart = 0;
    }
    if (nStart >= Length() || nLength <= 0)
        return {};

    const int64 nBehind = Length() - nStart;
    ZString piece;
    piece.m_nLength = kBorrowed | static_cast<uint32>(std::min(nLength, nBehind));
    piece.m_pChars = m_pChars + nStart;
    if (IsBorrowed() && nLength >= nBehind)
        return piece;
    piece.m_pChars = CopyChars(piece);
    piece.m_nLength &= ~kBorrowed;
    return piece;
}

ZString operator+(const ZString& first, const ZString& second)
{
    const std::string_view head = first;
    const std::string_view tail = second;
    if (!NeedsBlock(head.size() + tail.size()))
        return {};
    char* pChars = nullptr;
    ZString text = ZString::Reserve(head.size() + tail.size(), &pChars);
    std::memcpy(pChars, head.data(), head.size());
    std::memcpy(pChars + head.size(), tail.data(), tail.size());
    return text;
}

std::ostream& operator<<(std::ostream& stream, const ZString& text)
{
    return stream << std::string_view(text);
}
