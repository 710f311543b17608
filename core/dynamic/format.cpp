// ZString::Format.
#include "core/dynamic/format.h"

#include "core/dynamic/typetable.h"

#include <array>
#include <charconv>
#include <cstring>

namespace
{
using kx::detail::ETypeKind;

constexpr std::size_t kArguments = 8;

// The text of an argument, the number's own in a buffer beside it.
class ZArgument
{
public:
    explicit ZArgument(const ZObjectRef& value) : m_bText(value.Type() != nullptr && Read(value)) {}
    ZArgument(const ZArgument&) = delete;
    ZArgument& operator=(const ZArgument&) = delete;

    bool HasText() const { return m_bText; }
    std::string_view Text() const { return m_text; }

private:
    // False for a type that has no text.
    bool Read(const ZObjectRef& value)
    {
        switch (value.Type()->Kind())
        {
        case ETypeKind::Int8:
            return Print<int8>(value);
        case ETypeKind::Int16:
            return Print<int16>(value);
        case ETypeKind::Int32:
            return Print<int32>(value);
        case ETypeKind::Int64:
            return Print<int64>(value);
        case ETypeKind::UInt8:
            return Print<uint8>(value);
        case ETypeKind::UInt16:
            return Print<uint16>(value);
        case ETypeKind::UInt32:
            return Print<uint32>(value);
        case ETypeKind::UInt64:
            return Print<uint64>(value);
        case ETypeKind::Float32:
            return Print<float32>(value);
        case ETypeKind::Float64:
            return Print<float64>(value);
        case ETypeKind::Boolean:
            m_text = *static_cast<const bool*>(value.Data()) ? "true" : "false";
            return true;
        case ETypeKind::Text:
            m_text = *static_cast<const ZString*>(value.Data());
            return true;
        case ETypeKind::NotBuiltIn:
            break;
        }
        return false;
    }

    // By unary plus, which makes an int of the types that are narrower: int8 is a character to some functions.
    template <class T>
    bool Print(const ZObjectRef& value)
    {
        const auto printed = +*static_cast<const T*>(value.Data());
        const char* pEnd = std::to_chars(m_acNumber, m_acNumber + sizeof(m_acNumber), printed).ptr;
        m_text = std::string_view(m_acNumber, static_cast<std::size_t>(pEnd - m_acNumber));
        return true;
    }

    std::string_view m_text;
    bool m_bText;
    char m_acNumber[32]; // the longest is a float64: sign, 17 digits, point, exponent of five
};

using Arguments = std::array<ZArgument, kArguments>;

// Calls put for the pieces of the result, in order.
template <class TPut>
void ForEachPiece(std::string_view format, const Arguments& arguments, TPut put)
{
    while (!format.empty())
    {
        const std::size_t nBrace = std::min(format.find_first_of("{}"), format.size());
        put(format.substr(0, nBrace));
        format.remove_prefix(nBrace);
        if (format.empty())
            return;

        std::size_t nRead = 1;
        std::string_view piece = format.substr(0, 1);
        const std::size_t nIndex = format.size() >= 3 ? static_cast<std::size_t>(format[1]) - '0' : kArguments;
        if (format.size() >= 2 && format[1] == format[0])
            nRead = 2;
        else if (format[0] == '{' && nIndex < kArguments && format[2] == '}' && arguments[nIndex].HasText())
        {
            nRead = 3;
            piece = arguments[nIndex].Text();
        }
        put(piece);
        format.remove_prefix(nRead);
    }
}
} // namespace

ZString ZString::Format(const ZString& format, const ZVariantRef& arg0, const ZVariantRef& arg1,
                        const ZVariantRef& arg2, const ZVariantRef& arg3, const ZVariantRef& arg4,
                        const ZVariantRef& arg5, const ZVariantRef& arg6, const ZVariantRef& arg7)
{
    const Arguments arguments = {ZArgument(arg0), ZArgument(arg1), ZArgument(arg2), ZArgument(arg3),
                                 ZArgument(arg4), ZArgument(arg5), ZArgument(arg6), ZArgument(arg7)};
    uint64 nLength = 0;
    ForEachPiece(format, arguments, [&](std::string_view piece) { nLength += piece.size(); });
    kx::detail::BreakUnless(nLength <= kMaxLength);
    if (nLength == 0 || nLength > kMaxLength)
        return {};
    char* pChars = nullptr;
    ZString result = Reserve(nLength, &pChars);
    ForEachPiece(format, arguments,
                 [&](std::string_view piece)
                 {
                     std::memcpy(pChars, piece.data(), piece.size());
                     pChars += piece.size();
                 });
    return result;
}
