#include "core/values/guid.h"

#include <cstring>
#include <exception>
#include <ostream>
#include <random>

namespace
{
// The text is processed in words of eight digits, one digit in each byte, the first one in the lowest. Each step does
// the same to all eight bytes at once: no byte ever carries into the next one.

constexpr uint64 InEachByte(uint64 n)
{
    return n * 0x0101010101010101;
}

// The top bit of each byte says whether that byte is from nFirst to nLast. No byte may be above 0x7F.
constexpr uint64 BytesBetween(uint64 nBytes, uint8 nFirst, uint8 nLast)
{
    return (nBytes + InEachByte(0x80u - nFirst)) & ~(nBytes + InEachByte(0x7Fu - nLast));
}

// Converts eight digits to four bytes, the first one lowest. Sets a bit of nWrong if a character is not a digit.
uint64 ValueOf(uint64 nDigits, uint64& nWrong)
{
    const uint64 nAscii = nDigits & InEachByte(0x7F);
    const uint64 nLetters = BytesBetween(nAscii | InEachByte(0x20), 'a', 'f');
    nWrong |= (nDigits | ~(BytesBetween(nAscii, '0', '9') | nLetters)) & InEachByte(0x80);

    // The low half of '0' is 0, that of 'a' is 1.
    uint64 n = (nAscii & InEachByte(0x0F)) + (nLetters >> 7 & InEachByte(1)) * 9;
    n = (n << 4 | n >> 8) & 0x00FF00FF00FF00FF;
    n = (n | n >> 8) & 0x0000FFFF0000FFFF;
    return (n | n >> 16) & 0xFFFFFFFF;
}

// The inverse of ValueOf, for the low four bytes.
uint64 DigitsOf(uint64 nValue)
{
    uint64 n = nValue & 0xFFFFFFFF;
    n = (n | n << 16) & 0x0000FFFF0000FFFF;
    n = (n | n << 8) & 0x00FF00FF00FF00FF;
    n = (n >> 4 | n << 8) & InEachByte(0x0F);
    const uint64 nLetters = (n + InEachByte(6)) >> 4 & InEachByte(1);
    return n + InEachByte('0') + nLetters * ('a' - '0' - 10);
}

uint64 Load(const char* pFirst, const char* pSecond)
{
    uint32 nFirst = 0;
    uint32 nSecond = 0;
    std::memcpy(&nFirst, pFirst, 4);
    std::memcpy(&nSecond, pSecond, 4);
    return nFirst | uint64{nSecond} << 32;
}

void Store(uint64 nDigits, char* pFirst, char* pSecond)
{
    std::memcpy(pFirst, &nDigits, 4);
    nDigits >>= 32;
    std::memcpy(pSecond, &nDigits, 4);
}

void WriteText(uint64 nLow, uint64 nHigh, char* pText)
{
    Store(DigitsOf(nLow), pText, pText + 4);
    Store(DigitsOf(nLow >> 32), pText + 9, pText + 14);
    Store(DigitsOf(nHigh), pText + 19, pText + 24);
    Store(DigitsOf(nHigh >> 32), pText + 28, pText + 32);
    pText[8] = pText[13] = pText[18] = pText[23] = '-';
}
} // namespace

bool ZGuid::Parse(std::string_view text)
{
    if (text.size() != kTextLength)
        return false;
    const char* p = text.data();
    uint64 nWrong = p[8] == '-' && p[13] == '-' && p[18] == '-' && p[23] == '-' ? 0 : 1;
    const uint64 nFirst = ValueOf(Load(p, p + 4), nWrong);
    const uint64 nSecond = ValueOf(Load(p + 9, p + 14), nWrong);
    const uint64 nThird = ValueOf(Load(p + 19, p + 24), nWrong);
    const uint64 nFourth = ValueOf(Load(p + 28, p + 32), nWrong);
    if (nWrong != 0)
        return false;
    m_nLow = nFirst | nSecond << 32;
    m_nHigh = nThird | nFourth << 32;
    return true;
}

ZGuid ZGuid::Random()
{
    ZGuid guid;
    bool bDrawn = true;
    try
    {
        std::random_device source;
        std::uniform_int_distribution<uint64> word;
        guid.m_nLow = word(source);
        guid.m_nHigh = word(source);
    }
    catch (const std::exception&)
    {
        bDrawn = false;
    }
    kx::detail::BreakUnless(bDrawn);
    if (!bDrawn)
        return Empty;

    // The version is in the high half of byte 6, the variant in the two top bits of byte 8.
    guid.m_nLow = (guid.m_nLow & ~(uint64{0xF0} << 48)) | uint64{0x40} << 48;
    guid.m_nHigh = (guid.m_nHigh & ~uint64{0xC0}) | 0x80;
    return guid;
}

ZString ZGuid::ToString() const
{
    char acText[kTextLength];
    WriteText(m_nLow, m_nHigh, acText);
    return ZString(std::string_view(acText, kTextLength));
}

void ZGuid::WriteTo(char (&acText)[kTextSize]) const
{
    WriteText(m_nLow, m_nHigh, acText);
    acText[kTextLength] = '\0';
}

std::ostream& operator<<(std::ostream& stream, const ZGuid& guid)
{
    char acText[ZGuid::kTextSize];
    guid.WriteTo(acText);
    return stream << acText;
}
