// Plain models of the string functions, simple enough to be right at a glance. Tests feed them random numbers, fuzzers
// feed them their input bytes.
#pragma once

#include "core/strings/stack_string.h"
#include "core/strings/stringfunc.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>
#include <vector>

// Prints every digit that a float can have, then cuts.
inline std::string ModelFloat(float value, char cFormat, int nPrecision)
{
    if (!std::isfinite(value))
        return std::isnan(value) ? "nan" : value < 0 ? "-inf" : "inf";
    char acText[256];
    std::snprintf(acText, sizeof(acText), cFormat == 'e' ? "%.149e" : "%.149f", std::fabs(static_cast<double>(value)));
    const std::string text(acText);
    const auto nDigits = static_cast<size_t>(std::clamp(nPrecision, 0, 149));
    std::string cut = text.substr(0, text.find('.') + (nDigits == 0 ? 0 : 1 + nDigits));
    if (cFormat == 'e')
        cut += text.substr(text.size() - 4, 2) + '0' + text.substr(text.size() - 2);
    return value < 0 ? '-' + cut : cut;
}

// Whether IntFromString returns what std::from_chars returns for the same number.
template <class T>
bool AgreesOnInt(std::string_view text)
{
    T expected = 0;
    const char* pFirst = text.data() + std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
    const auto [pLast, error] = std::from_chars(pFirst, text.data() + text.size(), expected);
    const char* pExpectedEnd = error == std::errc::invalid_argument ? text.data() : pLast;

    T actual = 77;
    char* pEnd = nullptr;
    const bool bRead = IntFromString(text.data(), &actual, &pEnd);
    if (bRead != (error == std::errc()) || actual != expected || pEnd != pExpectedEnd)
        return false;

    actual = 77;
    uint64 nRead = 77;
    return IntFromString(text, &actual, &nRead) == bRead && actual == expected && text.data() + nRead == pEnd;
}

// The characters are in a block of their exact size, so that a sanitizer notices a read past the end.
inline bool AgreesOnAllInts(const std::string& string)
{
    const std::vector<char> block(string.c_str(), string.c_str() + string.size() + 1);
    const std::string_view text(block.data(), string.size());
    return AgreesOnInt<unsigned char>(text) && AgreesOnInt<unsigned short>(text) && AgreesOnInt<unsigned int>(text)
           && AgreesOnInt<uint64>(text) && AgreesOnInt<signed char>(text) && AgreesOnInt<short>(text)
           && AgreesOnInt<int>(text) && AgreesOnInt<int64>(text);
}

// A stack string of any capacity, between guards.
class GuardedString : public ZStackStringBase
{
public:
    explicit GuardedString(uint32 nCapacity) : m_memory(nCapacity + 2 * kGuard.size(), '#') { clear(); }

    bool Intact() const { return Validate() && m_memory.starts_with(kGuard) && m_memory.ends_with(kGuard); }

private:
    static constexpr std::string_view kGuard = "#########";

    char* buffer() override { return m_memory.data() + kGuard.size(); }
    uint32 capacity() const override { return static_cast<uint32>(m_memory.size() - 2 * kGuard.size()); }

    std::string m_memory;
};

// A stack string and a model of it. Every operation is done on both.
class ModelledString
{
public:
    explicit ModelledString(uint32 nCapacity) : m_string(nCapacity), m_nMax(nCapacity - 1) {}

    bool Agrees() const { return m_string.Intact() && std::string_view(m_string) == m_model; }

    // Does any operation. below(n) returns a number from 0 to n - 1.
    template <class TBelow>
    void Step(TBelow below)
    {
        std::string text;
        for (uint64 n = below(below(4) == 0 ? 2 * m_nMax + 3 : 5); n != 0; --n)
            text += "<>&\"'?\x80\xB0\xC3\xE9ghi\0kl"[below(16)];
        const char* pszText = text.c_str();

        // What is appended or prepended: new characters, the end of the string itself, or any piece of it.
        const uint64 nFrom = below(m_model.size() + 1);
        const uint64 nSize = below(m_model.size() - nFrom + 1);
        const char* pszTail = m_string.get() + nFrom;
        const std::string_view piece(pszTail, nSize);
        const std::string_view arguments[] = {text, text, pszTail, piece, text, pszTail, piece};

        // The model comes first, because the operation may change its own argument.
        const uint64 nOperation = below(12);
        switch (nOperation)
        {
        case 0:
        case 1:
        case 2:
        case 3:
            Append(arguments[nOperation]);
            return m_string.append(arguments[nOperation]);
        case 4:
        case 5:
        case 6:
            m_model = Cut(std::string(arguments[nOperation]) + m_model);
            return m_string.prepend(arguments[nOperation]);
        case 7:
            m_model = Cut(m_model + std::to_string(nFrom) + pszTail + pszText);
            m_string.format("%d%s%s", static_cast<int>(nFrom), pszTail, pszText);
            return;
        case 8:
            Encode();
            return m_string.xmlEncode();
        case 9:
            Append({pszText, 1});
            m_string.appendChar(*pszText);
            return;
        case 10:
        {
            const char cFormat = "fe"[below(2)];
            const int nPrecision = static_cast<int>(below(9));
            const float mantissa = static_cast<float>(below(0x1000000)) - 0x800000;
            const float value = std::ldexp(mantissa, static_cast<int>(below(99)) - 60);
            Append(ModelFloat(value, cFormat, nPrecision));
            m_string.appendFloat(value, cFormat, nPrecision);
            return;
        }
        default:
            if (below(4) != 0)
                return;
            m_model.clear();
            m_string.clear();
        }
    }

private:
    std::string Cut(const std::string& text) const { return text.substr(0, m_nMax); }

    void Append(std::string_view text)
    {
        text = text.substr(0, m_nMax);
        m_model = m_model.substr(0, m_nMax - text.size()).append(text);
    }

    void Encode()
    {
        static const std::map<char, std::string_view> kEntities = {
            {'<', "&lt;"}, {'>', "&gt;"}, {'&', "&amp;"}, {'"', "&quot;"}, {'\'', "&apos;"}};
        size_t nSpace = m_nMax - m_model.size();
        std::string encoded;
        for (const char c : m_model)
        {
            const auto entity = kEntities.find(c);
            std::string_view text = entity == kEntities.end() ? std::string_view(&c, 1) : entity->second;
            if (text.size() - 1 > nSpace)
                text = "?";
            nSpace -= text.size() - 1;
            encoded += text;
        }
        m_model = encoded;
    }

    GuardedString m_string;
    std::string m_model;
    size_t m_nMax;
};
