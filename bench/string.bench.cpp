// The strings and conversions beside the standard library and {fmt}.
#include "core/strings/string.h"
#include "bench/support.h"
#include "core/strings/stack_string.h"
#include "core/strings/stringfunc.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fmt/format.h>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace
{
std::string Letters(int64 n, char cFirst = 'a')
{
    std::string text;
    for (int64 i = 0; i < n; ++i)
        text += static_cast<char>(cFirst + i % 26);
    return text;
}

// ---- ZString and its peers.

// Replaces a function that takes a string and reads it where the caller cannot see. It is called through a pointer
// that the compiler does not follow.
template <class TText>
int64 ReadText(const TText& text)
{
    return std::string_view(text).back();
}

template <class TText>
int64 (*volatile g_pReadText)(const TText& text) = ReadText<TText>;

template <class TText>
void Literal(benchmark::State& state)
{
    // The address escapes, so the compiler must create the string in memory. A call would cost more than that.
    RunBatches(state, kBatch * '!',
               [](size_t)
               {
                   const TText text = "forty characters of text in the program!";
                   const TText* pText = &text;
                   benchmark::DoNotOptimize(pText);
                   benchmark::ClobberMemory();
                   return ReadText(*pText);
               });
}

template <class TText>
void Copy(benchmark::State& state)
{
    const std::string letters = Letters(state.range(0));
    const TText text{std::string_view(letters)};
    RunBatches(state, kBatch * letters.back(), [&](size_t) { return g_pReadText<TText>(TText(text)); });
}

template <class TText>
void Concatenate(benchmark::State& state)
{
    const std::string letters = Letters(state.range(0) / 2);
    const TText first{std::string_view(letters)};
    const TText second{std::string_view(letters)};
    RunBatches(state, kBatch * letters.back(), [&](size_t) { return g_pReadText<TText>(first + second); });
}

ZString Piece(const ZString& text, size_t nStart, size_t nLength)
{
    return text.Substring(static_cast<int64>(nStart), static_cast<int64>(nLength));
}

template <class TText>
TText Piece(const TText& text, size_t nStart, size_t nLength)
{
    return text.substr(nStart, nLength);
}

template <class TText>
void Substring(benchmark::State& state)
{
    const std::string letters = Letters(state.range(0) * 2);
    const size_t nLength = static_cast<size_t>(state.range(0));
    const TText text{std::string_view(letters)};
    RunBatches(state, kBatch * letters[nLength], [&](size_t) { return g_pReadText<TText>(Piece(text, 1, nLength)); });
}

template <class TText>
void Equal(benchmark::State& state)
{
    const std::string letters = Letters(state.range(0));
    std::array<std::string, 3> sources{letters, letters, letters};
    sources[2].back() = '!';
    const std::vector<TText> texts(sources.begin(), sources.end());
    RunBatches(state, kBatch / 2, [&](size_t i) { return texts[0] == texts[1 + i % 2]; });
}

template <class TText>
void Less(benchmark::State& state)
{
    const std::string letters = Letters(state.range(0));
    std::array<std::string, 3> sources{letters, letters, letters};
    sources[2].back() = '~';
    const std::vector<TText> texts(sources.begin(), sources.end());
    RunBatches(state, kBatch / 2, [&](size_t i) { return texts[0] < texts[1 + i % 2]; });
}

int64 LastOf(const ZString& text, char c)
{
    return text.LastIndexOf(c);
}

template <class TText>
int64 LastOf(const TText& text, char c)
{
    return static_cast<int64>(text.rfind(c));
}

template <class TText>
void LastIndexOf(benchmark::State& state)
{
    std::string letters = Letters(state.range(0));
    letters[0] = '!';
    const TText text{std::string_view(letters)};
    RunBatches(state, 0, [&](size_t) { return LastOf(text, '!'); });
}

template <class TText>
void RegisterText(const char* pszContestant)
{
    RegisterAt("literal, 40 characters", pszContestant, Literal<TText>, {40});
    RegisterAt("copy", pszContestant, Copy<TText>, {10, 40, 1000});
    if constexpr (!std::is_same_v<TText, std::string_view>)
        RegisterAt("concatenation", pszContestant, Concatenate<TText>, {10, 40, 1000});
    RegisterAt("substring", pszContestant, Substring<TText>, {10, 40, 1000});
    RegisterAt("==", pszContestant, Equal<TText>, {10, 40, 1000});
    RegisterAt("<", pszContestant, Less<TText>, {10, 40, 1000});
    RegisterAt("last index", pszContestant, LastIndexOf<TText>, {10, 40, 1000});
}

// ---- Characters in a buffer. Each contestant has its own buffer for the whole run and starts with an empty string.

constexpr size_t kBuffer = 4096;

struct SStackText
{
    void Clear() { m_text.clear(); }
    void Append(const char* pszText) { m_text.append(pszText); }
    void AppendChar(char c) { m_text.appendChar(c); }
    void Prepend(const char* pszText) { m_text.prepend(pszText); }
    void Format(int nNumber, const char* pszText) { m_text.format("x = %d, and str = '%s'", nNumber, pszText); }
    void Encode() { m_text.xmlEncode(); }
    size_t Size() const { return m_text.size(); }

    ZStackString<kBuffer> m_text;
};

struct SStdText
{
    SStdText() { m_text.reserve(kBuffer); }
    void Clear() { m_text.clear(); }
    void Append(const char* pszText) { m_text.append(pszText); }
    void AppendChar(char c) { m_text.push_back(c); }
    void Prepend(const char* pszText) { m_text.insert(0, pszText); }
    void Encode()
    {
        m_encoded.clear();
        for (const char c : m_text)
        {
            switch (c)
            {
            case '<':
                m_encoded += "&lt;";
                break;
            case '>':
                m_encoded += "&gt;";
                break;
            case '&':
                m_encoded += "&amp;";
                break;
            case '"':
                m_encoded += "&quot;";
                break;
            case '\'':
                m_encoded += "&apos;";
                break;
            default:
                m_encoded += c;
            }
        }
        m_text.swap(m_encoded);
    }
    size_t Size() const { return m_text.size(); }

    std::string m_text;
    std::string m_encoded;
};

struct SFmtText
{
    void Clear() { m_text.clear(); }
    void Append(const char* pszText) { m_text.append(std::string_view(pszText)); }
    void AppendChar(char c) { m_text.push_back(c); }
    void Format(int nNumber, const char* pszText)
    {
        fmt::format_to(std::back_inserter(m_text), "x = {}, and str = '{}'", nNumber, pszText);
    }
    size_t Size() const { return m_text.size(); }

    fmt::basic_memory_buffer<char, kBuffer> m_text;
};

struct SPrintfText
{
    void Clear() { m_nSize = 0; }
    void Append(const char* pszText) { Added(std::snprintf(m_acText + m_nSize, kBuffer - m_nSize, "%s", pszText)); }
    void Format(int nNumber, const char* pszText)
    {
        Added(std::snprintf(m_acText + m_nSize, kBuffer - m_nSize, "x = %d, and str = '%s'", nNumber, pszText));
    }
    void Added(int nPrinted) { m_nSize += static_cast<size_t>(nPrinted); }
    size_t Size() const { return m_nSize; }

    char m_acText[kBuffer];
    size_t m_nSize = 0;
};

// Appends ten strings of the given length. They are stored far from the buffer, because strlen reads past the end of a
// string and would wait for a store next to it.
template <class TText>
void Append(benchmark::State& state)
{
    const auto pLetters = std::make_unique<std::string>(Letters(state.range(0)));
    TText text;
    RunBatches(state, kBatch * 55 * state.range(0) / 10,
               [&](size_t i)
               {
                   if (i % 10 == 0)
                       text.Clear();
                   text.Append(pLetters->c_str());
                   return text.Size();
               });
}

template <class TText>
void AppendChar(benchmark::State& state)
{
    TText text;
    RunBatches(state, kBatch * (kBatch + 1) / 2,
               [&](size_t i)
               {
                   if (i == 0)
                       text.Clear();
                   text.AppendChar('x');
                   return text.Size();
               });
}

template <class TText>
void Prepend(benchmark::State& state)
{
    const auto pLetters = std::make_unique<std::string>(Letters(state.range(0)));
    TText text;
    RunBatches(state, kBatch * 55 * state.range(0) / 10,
               [&](size_t i)
               {
                   if (i % 10 == 0)
                       text.Clear();
                   text.Prepend(pLetters->c_str());
                   return text.Size();
               });
}

template <class TText>
void Format(benchmark::State& state)
{
    const auto pLetters = std::make_unique<std::string>(Letters(state.range(0)));
    TText text;
    RunBatches(state, kBatch * (20 + state.range(0)),
               [&](size_t)
               {
                   text.Clear();
                   text.Format(42, pLetters->c_str());
                   return text.Size();
               });
}

// One character in nEvery is markup; 0 means none.
template <class TText, int nEvery>
void Encode(benchmark::State& state)
{
    std::string markup = Letters(state.range(0));
    int64 nMarkup = 0;
    for (size_t i = 0; nEvery != 0 && i < markup.size(); i += nEvery, ++nMarkup)
        markup[i] = nMarkup % 2 == 0 ? '<' : '>';
    TText text;
    RunBatches(state, kBatch * (state.range(0) + 3 * nMarkup),
               [&](size_t)
               {
                   text.Clear();
                   text.Append(markup.c_str());
                   text.Encode();
                   return text.Size();
               });
}

template <class TText>
void RegisterBuffer(const char* pszContestant)
{
    RegisterAt("append", pszContestant, Append<TText>, {5, 20, 300});
    if constexpr (requires(TText text) { text.AppendChar('x'); })
        RegisterAt("append a character", pszContestant, AppendChar<TText>, {1});
    if constexpr (requires(TText text) { text.Prepend("x"); })
        RegisterAt("prepend", pszContestant, Prepend<TText>, {5, 20, 300});
    if constexpr (requires(TText text) { text.Format(1, "x"); })
        RegisterAt("format", pszContestant, Format<TText>, {5, 20, 300});
    if constexpr (requires(TText text) { text.Encode(); })
    {
        RegisterAt("encode, no markup", pszContestant, Encode<TText, 0>, {20, 300});
        RegisterAt("encode, one in ten", pszContestant, Encode<TText, 10>, {20, 300});
    }
}

// ---- Numbers.

bool OwnRead(const std::string& text, int64& nResult)
{
    return IntFromString(text.c_str(), &nResult);
}

bool OwnReadView(const std::string& text, int64& nResult)
{
    return IntFromString(text, &nResult);
}

// Knows the end of the string; finding it is not part of the contest.
bool FromChars(const std::string& text, int64& nResult)
{
    return std::from_chars(text.data(), text.data() + text.size(), nResult).ec == std::errc();
}

bool StrToL(const std::string& text, int64& nResult)
{
    nResult = std::strtol(text.c_str(), nullptr, 10);
    return true;
}

template <class T, bool (*pRead)(const std::string&, T&)>
void ReadInts(benchmark::State& state)
{
    std::mt19937_64 random(1);
    std::vector<std::string> texts;
    int64 nSum = 0;
    for (int64 i = 0; i < kBatch; ++i)
    {
        std::string text(i % 4 == 0 ? "-" : "");
        for (int64 n = 0; n < state.range(0); ++n)
            text += static_cast<char>('0' + (n == 0 ? 1 + random() % 8 : random() % 10));
        texts.push_back(text);
        nSum = static_cast<int64>(static_cast<uint64>(nSum) + static_cast<uint64>(std::stoll(text) % 1000));
    }
    RunBatches(state, nSum,
               [&](size_t i)
               {
                   T nResult = 0;
                   pRead(texts[i], nResult);
                   return nResult % 1000;
               });
}

// ---- Pieces of 25 letters. Adds up their lengths.

size_t CutBySplit(const ZString& text)
{
    size_t nSum = 0;
    for (const std::string_view piece : text.Split('z'))
        nSum += piece.size();
    return nSum;
}

size_t CutByFind(const ZString& text)
{
    std::string_view rest = text;
    size_t nSum = 0;
    for (size_t nFound = rest.find('z'); nFound != rest.npos; nFound = rest.find('z'))
    {
        nSum += nFound;
        rest.remove_prefix(nFound + 1);
    }
    return nSum + rest.size();
}

size_t CutByStrTok(const ZString& text)
{
    static char acCopy[kBuffer];
    std::strcpy(acCopy, text.ToCString());
    size_t nSum = 0;
    for (char* pPiece = std::strtok(acCopy, "z"); pPiece != nullptr; pPiece = std::strtok(nullptr, "z"))
        nSum += std::strlen(pPiece);
    return nSum;
}

template <size_t (*pCut)(const ZString&)>
void Cut(benchmark::State& state)
{
    const ZString text{std::string_view(Letters(26 * state.range(0) - 1))};
    RunBatches(state, kBatch * 25 * state.range(0), [&](size_t) { return pCut(text); });
}

struct SOwnFloat
{
    ZStackString<64> m_text;
    size_t operator()(float value)
    {
        m_text.clear();
        m_text.appendFloat(value, 'f', 6);
        return m_text.size();
    }
};

struct SPrintfFloat
{
    char m_acText[64];
    size_t operator()(float value)
    {
        return static_cast<size_t>(std::snprintf(m_acText, sizeof(m_acText), "%.6f", static_cast<double>(value)));
    }
};

struct SToCharsFloat
{
    char m_acText[64];
    size_t operator()(float value)
    {
        char* pEnd = std::to_chars(m_acText, std::end(m_acText), value, std::chars_format::fixed, 6).ptr;
        return static_cast<size_t>(pEnd - m_acText);
    }
};

struct SFmtFloat
{
    char m_acText[64];
    size_t operator()(float value) { return static_cast<size_t>(fmt::format_to(m_acText, "{:.6f}", value) - m_acText); }
};

// Values with the given number of digits before the point.
template <class TWriter>
void WriteFloats(benchmark::State& state)
{
    std::mt19937 random(1);
    std::vector<float> values;
    const float scale = static_cast<float>(std::pow(10.0, static_cast<double>(state.range(0))));
    while (values.size() < kBatch)
    {
        const float value = static_cast<float>(random()) / 4294967296.0f * 0.8f + 0.1f;
        values.push_back((values.size() % 4 == 0 ? -value : value) * scale);
    }
    TWriter writer;
    RunBatches(state, kBatch * (std::max<int64>(state.range(0), 1) + 7) + kBatch / 4,
               [&](size_t i) { return writer(values[i]); });
}
} // namespace

int main(int argc, char** argv)
{
    RegisterText<ZString>("ZString");
    RegisterText<std::string>("std::string");
    RegisterText<std::string_view>("std::string_view");
    RegisterBuffer<SStackText>("ZStackString");
    RegisterBuffer<SStdText>("std::string");
    RegisterBuffer<SFmtText>("fmt");
    RegisterBuffer<SPrintfText>("snprintf");
    RegisterAt("IntFromString, int64", "IntFromString", ReadInts<int64, OwnRead>, {1, 5, 10, 18});
    RegisterAt("IntFromString, int64", "std::from_chars", ReadInts<int64, FromChars>, {1, 5, 10, 18});
    RegisterAt("IntFromString, int64", "strtol", ReadInts<int64, StrToL>, {1, 5, 10, 18});
    RegisterAt("IntFromString, int64, view", "IntFromString", ReadInts<int64, OwnReadView>, {1, 5, 10, 18});
    RegisterAt("IntFromString, int64, view", "std::from_chars", ReadInts<int64, FromChars>, {1, 5, 10, 18});
    RegisterAt("split", "Split", Cut<CutBySplit>, {1, 10, 100});
    RegisterAt("split", "std::string_view", Cut<CutByFind>, {1, 10, 100});
    RegisterAt("split", "strtok", Cut<CutByStrTok>, {1, 10, 100});
    RegisterAt("six decimals", "appendFloat", WriteFloats<SOwnFloat>, {0, 3, 9});
    RegisterAt("six decimals", "snprintf", WriteFloats<SPrintfFloat>, {0, 3, 9});
    RegisterAt("six decimals", "std::to_chars", WriteFloats<SToCharsFloat>, {0, 3, 9});
    RegisterAt("six decimals", "fmt", WriteFloats<SFmtFloat>, {0, 3, 9});
    return RunBenchmarks(argc, argv);
}
