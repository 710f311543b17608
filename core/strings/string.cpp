#include "core/strings/string.h"

#include <algorithm>
#include <cstring>
#include <ostream>

ZString::ZString(std::string_view first, std::string_view second)
{
    const uint64 nLength = uint64{first.size()} + second.size();
    detail::BreakUnless(nLength <= kMaxLength);
    if (nLength == 0 || nLength > kMaxLength)
        return;

    char* pChars = static_cast<char*>(GetNormalAllocator()->Allocate(nLength + 1, 1, 0));
    std::memcpy(pChars, first.data(), first.size());
    std::memcpy(pChars + first.size(), second.data(), second.size());
    pChars[nLength] = '\0';
    m_nLength = static_cast<uint32>(nLength);
    m_pChars = pChars;
}

ZString::ZString(std::string_view text) : ZString(text, "") {}

ZString::ZString(const ZString& other)
{
    if (other.IsBorrowed())
    {
        m_nLength = other.m_nLength;
        m_pChars = other.m_pChars;
    }
    else
    {
        *this = ZString(std::string_view(other));
    }
}

ZString& ZString::operator=(const ZString& other)
{
    if (this != &other)
        *this = ZString(other);
    return *this;
}

ZString& ZString::operator=(ZString&& other) noexcept
{
    if (this == &other)
        return *this;
    if (!IsBorrowed())
        FreeBlock();
    m_nLength = std::exchange(other.m_nLength, kBorrowed);
    m_pChars = std::exchange(other.m_pChars, "");
    return *this;
}

void ZString::FreeBlock()
{
    GetNormalAllocator()->Free(const_cast<char*>(m_pChars));
}

ZString ZString::AllocateFromCString(const char* pszText, int64 nLength)
{
    if (pszText == nullptr)
        return {};
    return ZString(std::string_view(pszText, static_cast<uint64>(nLength)));
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
    // Never start + length, which may overflow.
    if (nStart < 0 && nLength > 0)
    {
        nLength += nStart;
        nStart = 0;
    }
    if (nStart >= Length() || nLength <= 0)
        return {};

    ZString piece;
    const int64 nBehind = Length() - nStart;
    if (IsBorrowed() && nLength >= nBehind)
    {
        piece.m_nLength = kBorrowed | static_cast<uint32>(nBehind);
        piece.m_pChars = m_pChars + nStart;
        return piece;
    }
    return ZString(std::string_view(m_pChars + nStart, static_cast<uint64>(std::min(nLength, nBehind))));
}

ZString operator+(const ZString& first, const ZString& second)
{
    return ZString(std::string_view(first), std::string_view(second));
}

std::ostream& operator<<(std::ostream& stream, const ZString& text)
{
    return stream << std::string_view(text);
}
