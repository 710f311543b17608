// A text that the fast way (tapereader.h) does not take is read by simdjson's On-Demand parser, which finds all
// structural characters in one pass and then yields value after value, to any depth, and knows where it is. The text is
// copied first, because the parsers read past its end. The copy is one array of one element, so that a number or string
// needs no treatment of its own:
//
//   m_pText -> [ text of the caller ] NUL NUL ...
#include "runtime/json/tapereader.h"

#include "runtime/json/blanker.h"
#include "runtime/json/reader.h"
#include "runtime/json/utf8.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>

namespace json
{
namespace
{
namespace ondemand = simdjson::builtin::ondemand;

constexpr std::string_view kMark = "\xEF\xBB\xBF";
constexpr const char* kNoMemory = "There is not enough memory.";

// Where the text is not UTF-8.
const char* FindBadText(const char* p, const char* pEnd)
{
    while (p != pEnd)
    {
        const uint32 nSize = static_cast<uint8>(*p) < 0x80 ? 1 : CharacterSize(p, pEnd);
        if (nSize == 0)
            return p;
        p += nSize;
    }
    return pEnd;
}

// The first control character in a string, or else the start of the string that has no end.
const char* FindBadString(const char* p, const char* pEnd)
{
    const char* pString = nullptr;
    for (; p != pEnd; ++p)
    {
        if (pString != nullptr && static_cast<uint8>(*p) < 0x20)
            return p;
        if (*p == '"')
            pString = pString != nullptr ? nullptr : p;
        else if (*p == '\\' && pEnd - p > 1)
            ++p;
    }
    return pString != nullptr ? pString : pEnd;
}

// Whether the number, which is written without a fraction, is what the text says.
bool IsExact(float64 fNumber, std::string_view token)
{
    char acDigits[400];
    const auto end = std::to_chars(acDigits, acDigits + sizeof(acDigits), fNumber, std::chars_format::fixed, 0);
    const std::string_view digits(acDigits, static_cast<std::size_t>(end.ptr - acDigits));
    return token == digits;
}
} // namespace

struct ZReader::SState
{
    struct SFrame
    {
        bool m_bObject;
        bool m_bStarted = false;
        uint32 m_nSeen = 0; // the first of its keys in m_seen
        ondemand::array_iterator m_array;
        ondemand::object_iterator m_object;
    };

    struct SSeen
    {
        bool operator<(const SSeen& other) const
        {
            return m_key != other.m_key ? m_key < other.m_key : m_pAt < other.m_pAt;
        }

        std::string_view m_key;
        const char* m_pAt;
    };

    enum class EStep
    {
        Value,
        End,
        Error
    };

    explicit SState(const SReadOptions& options) : m_options(options) {}

    bool Load(std::string_view text);
    bool ReadFast();
    bool Parse();
    bool Walk();
    EStep NextElement(SFrame& frame, ondemand::value& value);
    EStep NextProperty(SFrame& frame, ondemand::value& value);
    bool Take(ondemand::value& value);
    bool TakeNumber(ondemand::value& value);
    bool TakeString(ondemand::value& value);
    bool Open(ondemand::value& value, bool bObject);
    bool TakeKey(ondemand::field& field);
    bool Close();
    bool AreKeysUnique(uint32 nFirst);
    bool Fail(const char* pAt, const char* pszMessage);
    const char* Location();
    const char* TextEnd() const { return m_pText.get() + 1 + m_nSize; }

    const SReadOptions m_options;
    ZTapeReader m_fastReader;
    ondemand::parser m_parser;
    ondemand::document m_document;
    std::unique_ptr<char[]> m_pText;
    uint64 m_nSize = 0;     // of the caller's text in m_pText
    uint64 m_nCapacity = 0; // what m_nSize may be
    TArray<SFrame> m_frames;
    ZTreeBuilder m_tree;
    ZKeys m_keys;
    TArray<SSeen> m_seen; // the keys of the objects that are open, if they must be unique
    const char* m_pFault = nullptr;
    const char* m_pszMessage = "";
};

bool ZReader::SState::Fail(const char* pAt, const char* pszMessage)
{
    m_pFault = pAt;
    m_pszMessage = pszMessage;
    return false;
}

// The token at which the parser has stopped.
const char* ZReader::SState::Location()
{
    const char* pAt = nullptr;
    return m_document.current_location().get(pAt) == simdjson::SUCCESS ? pAt : TextEnd();
}

bool ZReader::SState::Load(std::string_view text)
{
    m_nSize = text.size();
    if (m_pText == nullptr || m_nSize > m_nCapacity)
    {
        m_nCapacity = m_nSize;
        m_pText.reset(new (std::nothrow) char[m_nCapacity + 2 + simdjson::SIMDJSON_PADDING]);
        if (m_pText == nullptr)
        {
            m_nCapacity = m_nSize = 0;
            return Fail(nullptr, kNoMemory);
        }
    }
    char* pText = m_pText.get();
    pText[0] = '[';
    if (!text.empty())
        std::memcpy(pText + 1, text.data(), m_nSize);
    pText[1 + m_nSize] = ']';
    std::memset(pText + 2 + m_nSize, 0, simdjson::SIMDJSON_PADDING);
    if (text.starts_with(kMark))
        std::memset(pText + 1, ' ', kMark.size());
    if (!m_options.m_bComments && !m_options.m_bTrailingCommas)
        return true;
    const char* pOpen = Blank(pText + 1, TextEnd(), m_options.m_bComments, m_options.m_bTrailingCommas);
    return pOpen == nullptr || Fail(pOpen, "The comment has no end.");
}

bool ZReader::SState::ReadFast()
{
    m_tree.Clear();
    return m_fastReader.Read({m_pText.get() + 1, m_nSize}, m_options, m_keys, m_tree);
}

bool ZReader::SState::Parse()
{
    m_tree.Clear();
    m_frames.Clear();
    m_seen.Clear();
    const uint64 nSize = m_nSize + 2;
    const auto error = m_parser.iterate(m_pText.get(), nSize, nSize + simdjson::SIMDJSON_PADDING).get(m_document);
    if (error == simdjson::SUCCESS)
        return Walk();
    const char* pBegin = m_pText.get() + 1;
    if (error == simdjson::UTF8_ERROR)
        return Fail(FindBadText(pBegin, TextEnd()), "The text is not UTF-8.");
    if (error == simdjson::UNCLOSED_STRING)
        return Fail(FindBadString(pBegin, TextEnd()), "The string has no end.");
    if (error == simdjson::UNESCAPED_CHARS)
        return Fail(FindBadString(pBegin, TextEnd()), "A control character in a string must be escaped.");
    return Fail(nullptr, error == simdjson::CAPACITY ? "The text is too long." : kNoMemory);
}

bool ZReader::SState::Walk()
{
    ondemand::array whole;
    ondemand::array_iterator begin;
    if (m_document.get_array().get(whole) != simdjson::SUCCESS || whole.begin().get(begin) != simdjson::SUCCESS)
        return Fail(TextEnd(), "An array or object has no end.");
    m_frames.Add({false, false, 0, begin, {}});
    while (!m_frames.IsEmpty())
    {
        SFrame& frame = m_frames.End()[-1];
        ondemand::value value;
        const EStep step = frame.m_bObject ? NextProperty(frame, value) : NextElement(frame, value);
        if (step == EStep::Value ? !Take(value) : step == EStep::Error || !Close())
            return false;
    }
    return true;
}

// Ends the innermost array or object.
bool ZReader::SState::Close()
{
    const SFrame& frame = m_frames.End()[-1];
    if (m_frames.Size() == 1)
    {
        const std::string_view text(m_pText.get() + 1, m_nSize);
        if (!frame.m_bStarted)
            return Fail(text.data() + std::min(text.find_first_not_of(" \t\n\r"), text.size()), "There is no value.");
    }
    else
    {
        if (m_options.m_bUniqueKeys && frame.m_bObject && !AreKeysUnique(frame.m_nSeen))
            return false;
        m_tree.End();
    }
    m_frames.Erase(m_frames.End() - 1);
    return true;
}

bool ZReader::SState::AreKeysUnique(uint32 nFirst)
{
    std::sort(m_seen.Begin() + nFirst, m_seen.End());
    const char* pRepeated = nullptr;
    for (const SSeen* p = m_seen.Begin() + nFirst; m_seen.End() - p > 1; ++p)
    {
        if (p[0].m_key == p[1].m_key && (pRepeated == nullptr || p[1].m_pAt < pRepeated))
            pRepeated = p[1].m_pAt;
    }
    while (m_seen.Size() > nFirst)
        m_seen.Erase(m_seen.End() - 1);
    return pRepeated == nullptr || Fail(pRepeated, "The object has this key already.");
}

ZReader::SState::EStep ZReader::SState::NextElement(SFrame& frame, ondemand::value& value)
{
    if (frame.m_bStarted)
    {
        const bool bWhole = m_frames.Size() == 1;
        if (const char* pNext = bWhole ? Location() : nullptr; bWhole && pNext < TextEnd())
        {
            Fail(pNext, "There is more text after the value.");
            return EStep::Error;
        }
        ++frame.m_array;
    }
    if (!(frame.m_array != ondemand::array_iterator()))
        return EStep::End;
    frame.m_bStarted = true;
    if ((*frame.m_array).get(value) == simdjson::SUCCESS)
        return EStep::Value;
    const char* pAt = Location();
    Fail(pAt, pAt >= TextEnd() ? "An array has no end." : "A comma or a closing bracket is expected here.");
    return EStep::Error;
}

ZReader::SState::EStep ZReader::SState::NextProperty(SFrame& frame, ondemand::value& value)
{
    if (frame.m_bStarted)
        ++frame.m_object;
    if (!(frame.m_object != ondemand::object_iterator()))
        return EStep::End;
    frame.m_bStarted = true;
    ondemand::field field;
    if ((*frame.m_object).get(field) == simdjson::SUCCESS)
    {
        value = field.value();
        return TakeKey(field) ? EStep::Value : EStep::Error;
    }
    const char* pAt = Location();
    Fail(pAt, pAt >= TextEnd() ? "The object has no end."
                               : "A key in quotes, a colon, a comma or a closing brace is expected here.");
    return EStep::Error;
}

bool ZReader::SState::TakeKey(ondemand::field& field)
{
    const char* pKey = field.key().raw();
    const char* p = pKey;
    while (*p != '"' && *p != '\\')
        ++p;
    std::string_view key(pKey, static_cast<std::size_t>(p - pKey));
    if (*p == '\\' && field.unescaped_key().get(key) != simdjson::SUCCESS)
        return Fail(pKey - 1, "The key has an invalid escape.");
    if (key.size() > ZString::kMaxLength)
        return Fail(pKey - 1, "The key is too long.");
    if (m_options.m_bUniqueKeys)
        m_seen.Add({key, pKey - 1});
    m_tree.Key(m_keys.Get(key));
    return true;
}

bool ZReader::SState::Take(ondemand::value& value)
{
    const char* pAt = value.raw_json_token().data();
    bool bValue = false;
    switch (*pAt)
    {
    case '"':
        return TakeString(value);
    case '[':
    case '{':
        return Open(value, *pAt == '{');
    case 't':
    case 'f':
        if (value.get_bool().get(bValue) != simdjson::SUCCESS)
            break;
        m_tree.Boolean(bValue);
        return true;
    case 'n':
        if (value.is_null().get(bValue) != simdjson::SUCCESS || !bValue)
            break;
        m_tree.Null();
        return true;
    default:
        if (*pAt == '-' || (*pAt >= '0' && *pAt <= '9'))
            return TakeNumber(value);
    }
    return Fail(pAt, "A value is expected here.");
}

bool ZReader::SState::TakeNumber(ondemand::value& value)
{
    std::string_view token = value.raw_json_token();
    float64 fNumber = 0;
    // The parser refuses exponents of many digits, which the other one reads.
    simdjson::dom::parser other;
    if (value.get_double().get(fNumber) != simdjson::SUCCESS
        && other.parse(token.data(), token.size()).get_double().get(fNumber) != simdjson::SUCCESS)
        return Fail(token.data(), "This is no number, or it is too large.");
    if (m_options.m_bExactIntegers && std::fabs(fNumber) >= 9007199254740992.0)
    {
        token = token.substr(0, token.find_last_of("0123456789") + 1);
        if (token.find_first_of(".eE") == std::string_view::npos && !IsExact(fNumber, token))
            return Fail(token.data(), "The integer cannot be held without rounding.");
    }
    m_tree.Number(fNumber);
    return true;
}

// Most strings have no escape, and are taken from the text itself.
bool ZReader::SState::TakeString(ondemand::value& value)
{
    const std::string_view token = value.raw_json_token();
    std::string_view text = token.substr(1, token.rfind('"') - 1);
    const bool bEscapes = text.find('\\') != std::string_view::npos;
    ondemand::raw_json_string unused;
    const auto error = bEscapes ? value.get_string().get(text) : value.get_raw_json_string().get(unused);
    if (error != simdjson::SUCCESS)
        return Fail(token.data(), "The string has an invalid escape.");
    if (text.size() > ZString::kMaxLength)
        return Fail(token.data(), "The string is too long.");
    m_tree.String(text);
    return true;
}

bool ZReader::SState::Open(ondemand::value& value, bool bObject)
{
    const char* pAt = value.raw_json_token().data();
    if (m_frames.Size() > m_options.m_nMaxDepth)
        return Fail(pAt, "The value is nested too deeply.");
    SFrame frame{bObject, false, m_seen.Size(), {}, {}};
    bool bOpened = false;
    if (bObject)
    {
        ondemand::object object;
        bOpened = value.get_object().get(object) == simdjson::SUCCESS
                  && object.begin().get(frame.m_object) == simdjson::SUCCESS;
    }
    else
    {
        ondemand::array array;
        bOpened =
            value.get_array().get(array) == simdjson::SUCCESS && array.begin().get(frame.m_array) == simdjson::SUCCESS;
    }
    if (!bOpened)
        return Fail(pAt, bObject ? "The object has no end." : "The array has no end.");
    m_frames.Add(frame);
    bObject ? m_tree.BeginObject() : m_tree.BeginArray();
    return true;
}

ZReader::ZReader(const SReadOptions& options) : m_pState(new (std::nothrow) SState(options)) {}

ZReader::~ZReader() = default;

bool ZReader::Read(std::string_view text, ZDynamicObject& result, SError* pError)
{
    if (m_pState == nullptr)
    {
        if (pError != nullptr)
            Locate(text, 0, kNoMemory, *pError);
        return false;
    }
    const bool bRead = m_pState->Load(text) && (m_pState->ReadFast() || m_pState->Parse());
    if (bRead)
        result = m_pState->m_tree.Take();
    else if (pError != nullptr)
    {
        const char* pBegin = m_pState->m_pText.get() + 1;
        const char* pFault = m_pState->m_pFault;
        Locate(text, pFault == nullptr ? 0 : static_cast<uint64>(pFault - pBegin), m_pState->m_pszMessage, *pError);
    }
    return bRead;
}

void Locate(std::string_view text, uint64 nOffset, const char* pszMessage, SError& error)
{
    nOffset = nOffset < text.size() ? nOffset : text.size();
    error = {pszMessage, nOffset, 1, 1};
    for (const char c : text.substr(0, nOffset))
    {
        if (c == '\n')
        {
            ++error.m_nLine;
            error.m_nColumn = 1;
        }
        else if ((static_cast<uint8>(c) & 0xC0) != 0x80)
            ++error.m_nColumn;
    }
}

bool Read(std::string_view text, ZDynamicObject& result, SError* pError, const SReadOptions& options)
{
    return ZReader(options).Read(text, result, pError);
}
} // namespace json
