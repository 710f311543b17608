// Plain models of the string functions, written for being right at a glance. Tests drive them with random numbers,
// fuzzers with the bytes that they are given.
#pragma once

#include "core/strings/stack_string.h"
#include "core/strings/stringfunc.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

// Fixed notation to the last place that a float has, and then cut.
inline std::string ModelFloat(float value, char cFormat, int nPrecision)
{
    if (!std::isfinite(value))
        return std::isnan(value) ? "nan" : value < 0 ? "-inf" : "inf";
    char acText[256];
    std::snprintf(acText, sizeof(acText), cFormat == 'e' ? "%.149e" : "%.149f", std::fabs(static_cast<double>(value)));
    std::string text(acText);
    const std::string exponent = cFormat == 'e' ? text.substr(text.find('e')) : "";
    nPrecision = std::clamp(nPrecision, 0, 149);
    text.resize(text.find('.') + (nPrecision == 0 ? 0 : 1 + static_cast<size_t>(nPrecision)));
    if (cFormat == 'e')
        text += exponent.substr(0, 2) + '0' + exponent.substr(2);
    return value < 0 ? '-' + text : text;
}

// Whether IntFromString says what std::from_chars says of the same number.
template <class T>
bool AgreesOnInt(std::string_view text)
{
    T expected = 0;
    bool bExpected = false;
    const char* pExpectedEnd = text.data();
    const char* pFirst = pExpectedEnd + std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
    const char* pDigits = pFirst + (std::is_signed_v<T> && *pFirst == '-' ? 1 : 0);
    if (*pDigits >= '0' && *pDigits <= '9')
    {
        const auto result = std::from_chars(pFirst, text.data() + text.size(), expected);
        pExpectedEnd = result.ptr;
        bExpected = result.ec == std::errc();
    }

    T first = 77;
    T second = 77;
    char* pEnd = nullptr;
    return IntFromString(text.data(), &first, &pEnd) == bExpected && first == expected && pEnd == pExpectedEnd
           && IntFromString(text.data(), &second) == bExpected && second == expected;
}

// The text lies in a block of its exact size, so that a sanitizer sees a read behind its end.
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
    explicit GuardedString(uint32 nCapacity) : m_memory(nCapacity + 2 * kGuard, '#') { m_memory[kGuard] = '\0'; }

    bool Intact() const
    {
        const std::string guard(kGuard, '#');
        const std::string memory(m_memory.begin(), m_memory.end());
        return Validate() && memory.starts_with(guard) && memory.ends_with(guard);
    }

private:
    static constexpr uint32 kGuard = 9;

    char* buffer() override { return m_memory.data() + kGuard; }
    uint32 capacity() const override { return static_cast<uint32>(m_memory.size()) - 2 * kGuard; }

    std::vector<char> m_memory;
};

// A stack string and what it should be. An operation is done to both of them.
class ModelledString
{
public:
    explicit ModelledString(uint32 nCapacity) : m_string(nCapacity), m_nMax(nCapacity - 1) {}

    bool Agrees() const { return m_string.Intact() && std::string_view(m_string) == m_model; }
    const std::string& Model() const { return m_model; }

    // Any operation. below(n) is a number from 0 to n - 1.
    template <class TBelow>
    void Step(TBelow below)
    {
        std::string text;
        const uint64 nLength = below(below(4) == 0 ? 2 * m_nMax + 3 : 5);
        while (text.size() < nLength)
            text += "<>&\"'?\x80\xB0\xC3\xE9ghijkl"[below(16)];

        // A piece of the string itself, as an argument.
        const uint64 nFrom = below(m_model.size() + 1);
        const uint64 nSize = below(m_model.size() - nFrom + 1);
        const char* pszTail = m_string.get() + nFrom;
        const std::string tail = m_model.substr(nFrom);
        const std::string_view piece(pszTail, nSize);

        switch (below(12))
        {
        case 0:
        case 1:
            m_string.append(text.c_str());
            return Append(text);
        case 2:
            m_string.append(pszTail);
            return Append(tail);
        case 3:
            m_string.append(piece);
            return Append(tail.substr(0, nSize));
        case 4:
            m_string.prepend(text.c_str());
            return Prepend(text);
        case 5:
            m_string.prepend(pszTail);
            return Prepend(tail);
        case 6:
            m_string.prepend(piece);
            return Prepend(tail.substr(0, nSize));
        case 7:
            m_string.format("%d%s%s", static_cast<int>(nFrom), pszTail, text.c_str());
            return Format(std::to_string(nFrom) + tail + text);
        case 8:
            m_string.xmlEncode();
            return Encode();
        case 9:
            m_string.appendChar('x');
            return Append("x");
        case 10:
        {
            const char cFormat = below(2) == 0 ? 'f' : 'e';
            const int nPrecision = static_cast<int>(below(9));
            const float value =
                std::ldexp(static_cast<float>(below(0x1000000)) - 0x800000, static_cast<int>(below(99)) - 60);
            m_string.appendFloat(value, cFormat, nPrecision);
            return Append(ModelFloat(value, cFormat, nPrecision));
        }
        default:
            if (below(4) == 0)
            {
                m_string.clear();
                m_model.clear();
            }
        }
    }

private:
    void Append(const std::string& text)
    {
        m_model = m_model.substr(0, m_nMax - std::min(text.size(), m_nMax)) + text.substr(0, m_nMax);
    }
    void Prepend(const std::string& text) { m_model = (text + m_model).substr(0, m_nMax); }
    void Format(const std::string& text) { m_model = (m_model + text).substr(0, m_nMax); }

    void Encode()
    {
        static const std::string kMarkup = "<>&\"'";
        static const std::string kEntities[] = {"&lt;", "&gt;", "&amp;", "&quot;", "&apos;"};
        size_t nRoom = m_nMax - m_model.size();
        std::string encoded;
        for (const char c : m_model)
        {
            const size_t nEntity = kMarkup.find(c);
            if (nEntity == std::string::npos)
            {
                encoded += c;
            }
            else if (kEntities[nEntity].size() - 1 > nRoom)
            {
                encoded += '?';
            }
            else
            {
                encoded += kEntities[nEntity];
                nRoom -= kEntities[nEntity].size() - 1;
            }
        }
        m_model = encoded;
    }

    GuardedString m_string;
    std::string m_model;
    size_t m_nMax;
};
