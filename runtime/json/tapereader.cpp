#include "runtime/json/tapereader.h"

#include <bit>
#include <cstring>
#include <type_traits>

namespace json
{
namespace
{
// The number of children of an array or object. The largest number means that or more.
uint64 CountOf(uint64 nWord)
{
    return nWord >> 32 & 0xFFFFFF;
}

// The tape has -0 as an integer, which has no negative zero.
bool HasNegativeZero(std::string_view text)
{
    for (std::size_t n = text.find("-0"); n != std::string_view::npos; n = text.find("-0", n + 2))
    {
        if (n + 2 == text.size() || std::string_view("0123456789.eE").find(text[n + 2]) == std::string_view::npos)
            return true;
    }
    return false;
}

template <class TInteger>
bool TakeInteger(uint64 nWord, bool bExact, ZTreeBuilder& tree)
{
    const TInteger nNumber = static_cast<TInteger>(nWord);
    const float64 fNumber = static_cast<float64>(nNumber);
    constexpr float64 kEnd = std::is_signed_v<TInteger> ? 0x1p63 : 0x1p64;
    if (bExact && (fNumber == kEnd || static_cast<TInteger>(fNumber) != nNumber))
        return false;
    tree.Number(fNumber);
    return true;
}
} // namespace

bool ZTapeReader::Read(std::string_view text, const SReadOptions& options, ZKeys& keys, ZTreeBuilder& tree)
{
    if (text.size() > ZString::kMaxLength || HasNegativeZero(text)
        || m_parser.parse(text.data(), text.size(), false).error() != simdjson::SUCCESS)
        return false;
    const auto stringAt = [pStrings = m_parser.doc.string_buf.get()](uint64 nWord)
    {
        const uint8* p = pStrings + (nWord & ((uint64{1} << 56) - 1));
        uint32 nSize = 0;
        std::memcpy(&nSize, p, sizeof(nSize));
        return std::string_view(reinterpret_cast<const char*>(p + sizeof(nSize)), nSize);
    };
    m_objects.Clear();
    bool bObject = false;
    for (const uint64* p = m_parser.doc.tape.get() + 1;;)
    {
        if (bObject && *p >> 56 == '"')
            tree.Key(keys.Get(stringAt(*p++)));
        const uint64 nWord = *p++;
        switch (nWord >> 56)
        {
        case '[':
        case '{':
            if (m_objects.Size() >= options.m_nMaxDepth)
                return false;
            m_objects.Add(bObject);
            bObject = nWord >> 56 == '{';
            bObject ? tree.BeginObject(CountOf(nWord)) : tree.BeginArray(CountOf(nWord));
            break;
        case ']':
        case '}':
            bObject = m_objects.Last();
            m_objects.Pop();
            if (!tree.End() && options.m_bUniqueKeys)
                return false;
            break;
        case '"':
            tree.String(stringAt(nWord));
            break;
        case 'd':
            tree.Number(std::bit_cast<float64>(*p++));
            break;
        case 'l':
            if (!TakeInteger<int64>(*p++, options.m_bExactIntegers, tree))
                return false;
            break;
        case 'u':
            if (!TakeInteger<uint64>(*p++, options.m_bExactIntegers, tree))
                return false;
            break;
        case 't':
        case 'f':
            tree.Boolean(nWord >> 56 == 't');
            break;
        case 'n':
            tree.Null();
            break;
        default: // the end
            return true;
        }
    }
}
} // namespace json
