#include "runtime/json/json.h"
#include "runtime/json/utf8.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <ostream>

namespace json
{
namespace
{
constexpr const char* kStopped = "The output was not taken.";
constexpr const char* kBadText = "A string is not UTF-8.";

// Whether one of the eight bytes must be escaped or is not ASCII.
bool NeedsLook(const char* p)
{
    constexpr uint64 kOnes = 0x0101010101010101;
    constexpr uint64 kHigh = 0x8080808080808080;
    uint64 nBytes = 0;
    std::memcpy(&nBytes, p, sizeof(nBytes));
    // The high bit of a byte of (x - n) & ~x tells that x was less than n, if no byte of x has it.
    const uint64 nQuote = nBytes ^ (kOnes * '"');
    const uint64 nSlash = nBytes ^ (kOnes * '\\');
    return ((nBytes | (nBytes - kOnes * 0x20) | (nQuote - kOnes) | (nSlash - kOnes)) & kHigh) != 0;
}

// The characters that are copied as they are.
constexpr auto kPlain = []
{
    std::array<bool, 256> aPlain = {};
    for (std::size_t c = 0x20; c < 0x80; ++c)
        aPlain[c] = c != '"' && c != '\\';
    return aPlain;
}();

bool IsPlain(char c)
{
    return kPlain[static_cast<uint8>(c)];
}

// Writes a tree in pieces. The stack has the arrays and objects that are open, so that nothing recurses.
class ZWriter
{
public:
    using OnPiece = kx::detail::TCallback<bool(std::string_view)>;

    ZWriter(OnPiece onPiece, const SWriteOptions& options) : m_onPiece(onPiece), m_options(options) {}

    bool Write(const ZDynamicObject& tree)
    {
        bool bGood = WriteValue(tree);
        while (bGood && !m_open.IsEmpty())
            bGood = WriteNext(m_open.End()[-1]);
        return bGood && Flush();
    }

    const char* Message() const { return m_pszMessage; }

private:
    // The children of an object are properties, those of an array elements.
    struct SOpen
    {
        const SDynamicObjectKeyValuePair* m_pProperty;
        const ZDynamicObject* m_pElement;
        uint64 m_nLeft;
        bool m_bFirst;
    };

    // What a number, an escape or a piece of punctuation may take.
    static constexpr std::size_t kMargin = 64;

    bool WriteValue(const ZDynamicObject& value);
    template <class... T>
    bool WriteIfAny(const ZDynamicObject& value)
    {
        return ((value.Type() == GetTypeID<T>() && WriteDigits(*static_cast<const T*>(value.Data()))) || ...);
    }
    bool WriteOther(const ZDynamicObject& value);
    bool WriteNumber(float64 fNumber);
    bool WriteString(std::string_view text);
    bool WriteSpecial(const char*& p, const char* pEnd);
    bool WriteNext(SOpen& open);
    bool Open(const ZDynamicObject& value);
    bool NewLine();

    bool Fail(const char* pszMessage)
    {
        m_pszMessage = pszMessage;
        return false;
    }

    template <class T>
    bool WriteDigits(T nNumber)
    {
        m_pEnd = std::to_chars(m_pEnd, m_acBuffer + sizeof(m_acBuffer), nNumber).ptr;
        return true;
    }

    // Has room for kMargin bytes and one more token after them.
    bool MakeRoom() { return m_acBuffer + sizeof(m_acBuffer) - m_pEnd >= std::ptrdiff_t{2 * kMargin} || Flush(); }

    bool Flush()
    {
        const std::string_view piece(m_acBuffer, static_cast<std::size_t>(m_pEnd - m_acBuffer));
        m_pEnd = m_acBuffer;
        return piece.empty() || m_onPiece(piece) || Fail(kStopped);
    }

    void Put(char c) { *m_pEnd++ = c; }

    // For at most kMargin bytes.
    bool PutAll(std::string_view text)
    {
        std::memcpy(m_pEnd, text.data(), text.size());
        m_pEnd += text.size();
        return true;
    }

    OnPiece m_onPiece;
    const SWriteOptions& m_options;
    TArray<SOpen> m_open;
    const char* m_pszMessage = "";
    char* m_pEnd = m_acBuffer;
    char m_acBuffer[16384];
};

bool ZWriter::WriteValue(const ZDynamicObject& value)
{
    if (!MakeRoom())
        return false;
    if (value.IsNull())
        return PutAll("null");
    if (value.IsArray() || value.IsObject())
        return Open(value);
    if (value.Type() == GetTypeID<float64>())
        return WriteNumber(*static_cast<const float64*>(value.Data()));
    if (value.Type() == GetTypeID<ZString>())
        return WriteString(*static_cast<const ZString*>(value.Data()));
    if (value.Type() == GetTypeID<bool>())
        return PutAll(*static_cast<const bool*>(value.Data()) ? "true" : "false");
    return WriteOther(value);
}

// A value that a variant brought in.
bool ZWriter::WriteOther(const ZDynamicObject& value)
{
    if (WriteIfAny<int8, int16, int32, int64, uint8, uint16, uint32, uint64>(value))
        return true;
    if (value.Type() == GetTypeID<float32>())
    {
        const float32 fNumber = *static_cast<const float32*>(value.Data());
        return std::isfinite(fNumber) ? WriteDigits(fNumber) : WriteNumber(float64{fNumber});
    }
    ZDynamicObject converted;
    const bool bConverted = m_options.m_pfnConvert != nullptr && m_options.m_pfnConvert(value, converted);
    const bool bWritable = converted.IsNull() || converted.IsValue<ZString>() || converted.IsValue<bool>()
                           || converted.Type() == GetTypeID<float64>();
    return bConverted && bWritable ? WriteValue(converted) : Fail("A value has a type that JSON has not.");
}

bool ZWriter::WriteNumber(float64 fNumber)
{
    if (!std::isfinite(fNumber))
        return m_options.m_bNullForNaN ? PutAll("null") : Fail("A number is infinite or NaN.");
    const bool bInteger = std::fabs(fNumber) < 9007199254740992.0 && std::trunc(fNumber) == fNumber;
    if (!bInteger || (fNumber == 0 && std::signbit(fNumber)))
        return WriteDigits(fNumber);
    return WriteDigits(static_cast<int64>(fNumber));
}

bool ZWriter::WriteString(std::string_view text)
{
    Put('"');
    const char* p = text.data();
    const char* const pEnd = p + text.size();
    while (p != pEnd)
    {
        // Most characters are copied eight at a time. The margin stays free for what follows.
        const char* const pLimit = m_acBuffer + sizeof(m_acBuffer) - kMargin;
        char* pOut = m_pEnd;
        for (; pEnd - p >= 8 && pLimit - pOut >= 8 && !NeedsLook(p); p += 8, pOut += 8)
            std::memcpy(pOut, p, 8);
        // The rest together with what precedes it.
        if (const std::ptrdiff_t nRest = pEnd - p;
            nRest < 8 && text.size() >= 8 && pOut - m_acBuffer >= 8 && pOut < pLimit - 8 && !NeedsLook(pEnd - 8))
        {
            std::memcpy(pOut - (8 - nRest), pEnd - 8, 8);
            pOut += nRest;
            p = pEnd;
        }
        while (p != pEnd && pOut != pLimit && IsPlain(*p))
            *pOut++ = *p++;
        m_pEnd = pOut;
        if (!MakeRoom() || (p != pEnd && !IsPlain(*p) && !WriteSpecial(p, pEnd)))
            return false;
    }
    Put('"');
    return true;
}

// One character that is not plain ASCII.
bool ZWriter::WriteSpecial(const char*& p, const char* pEnd)
{
    const uint8 nByte = static_cast<uint8>(*p);
    if (nByte < 0x80)
    {
        ++p;
        constexpr std::string_view kShort = "\"\\\b\f\n\r\t";
        const std::size_t nShort = kShort.find(static_cast<char>(nByte));
        Put('\\');
        if (nShort != std::string_view::npos)
            return PutAll({&"\"\\bfnrt"[nShort], 1});
        const char acEscape[] = {'u', '0', '0', static_cast<char>('0' + nByte / 16), "0123456789abcdef"[nByte % 16]};
        return PutAll({acEscape, sizeof(acEscape)});
    }
    const uint32 nSize = CharacterSize(p, pEnd);
    if (nSize == 0 && !m_options.m_bReplaceBadText)
        return Fail(kBadText);
    PutAll(nSize == 0 ? std::string_view("\xEF\xBF\xBD") : std::string_view(p, nSize));
    p += nSize == 0 ? 1 : nSize;
    return MakeRoom();
}

bool ZWriter::Open(const ZDynamicObject& value)
{
    Put(value.IsArray() ? '[' : '{');
    const SOpen open{value.Properties().begin(), value.begin(), value.Size(), true};
    if (open.m_nLeft == 0)
        Put(value.IsArray() ? ']' : '}');
    else
        m_open.Add(open);
    return true;
}

bool ZWriter::NewLine()
{
    if (m_options.m_nIndent == 0)
        return true;
    Put('\n');
    for (uint64 n = uint64{m_options.m_nIndent} * m_open.Size(); n != 0;)
    {
        const uint64 nSome = n < kMargin ? n : kMargin;
        std::memset(m_pEnd, ' ', nSome);
        m_pEnd += nSome;
        n -= nSome;
        if (!MakeRoom())
            return false;
    }
    return true;
}

// The next child of the innermost array or object, or its end.
bool ZWriter::WriteNext(SOpen& open)
{
    if (!MakeRoom())
        return false;
    if (open.m_nLeft == 0)
    {
        const char cEnd = open.m_pProperty != nullptr ? '}' : ']';
        m_open.Erase(m_open.End() - 1);
        if (!NewLine())
            return false;
        Put(cEnd);
        return true;
    }
    if (!open.m_bFirst)
        Put(',');
    open.m_bFirst = false;
    --open.m_nLeft;
    if (!NewLine())
        return false;
    if (open.m_pProperty == nullptr)
        return WriteValue(*open.m_pElement++);
    const auto& [key, value] = *open.m_pProperty++;
    if (!WriteString(key))
        return false;
    PutAll(m_options.m_nIndent == 0 ? ":" : ": ");
    return WriteValue(value);
}
} // namespace

bool Write(const ZDynamicObject& tree, ZString& result, SError* pError, const SWriteOptions& options)
{
    TArray<char> text;
    const auto append = [&](std::string_view piece)
    {
        const uint64 nSize = text.Size();
        if (nSize + piece.size() > ZString::kMaxLength)
            return false;
        if (nSize + piece.size() > text.Capacity())
            text.Reserve(2 * nSize + piece.size());
        text.Append(piece.size(), [](char*) {}); // the next line writes them
        std::memcpy(text.Begin() + nSize, piece.data(), piece.size());
        return true;
    };
    if (!Write(tree, append, pError, options))
        return false;
    result = ZString(std::string_view(text.Begin(), text.Size()));
    return true;
}

bool Write(const ZDynamicObject& tree, std::ostream& stream, SError* pError, const SWriteOptions& options)
{
    const auto put = [&](std::string_view piece)
    { return static_cast<bool>(stream.write(piece.data(), static_cast<std::streamsize>(piece.size()))); };
    return Write(tree, put, pError, options);
}

ZString SError::ToString() const
{
    if (m_nLine == 0)
        return ZString(m_pszMessage);
    return ZString::Format("line {0}, column {1}: {2}", m_nLine, m_nColumn, m_pszMessage);
}
} // namespace json

bool kx::detail::WriteJson(const ZDynamicObject& tree, TCallback<bool(std::string_view)> onPiece, json::SError* pError,
                           const json::SWriteOptions& options)
{
    json::ZWriter writer(onPiece, options);
    const bool bWritten = writer.Write(tree);
    if (!bWritten && pError != nullptr)
        *pError = {writer.Message()};
    return bWritten;
}
