// Plain models of the parsers of values, written for being right at a glance. Tests drive them with tables and random
// numbers, fuzzers with the bytes that they are given.
//
// A parser gets its text in a block of the exact size, so that a sanitizer sees a read behind the end.
#pragma once

#include "core/values/guid.h"
#include "core/values/linereader.h"
#include "core/values/version.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

// Whether ZGuid says of the text what its 36 places say one by one. Neither call may allocate.
inline bool AgreesOnGuid(std::string_view text)
{
    bool bExpected = text.size() == 36;
    std::string digits;
    for (size_t i = 0; i < 36 && bExpected; ++i)
    {
        const bool bDash = i == 8 || i == 13 || i == 18 || i == 23;
        bExpected = bDash ? text[i] == '-' : std::isxdigit(static_cast<unsigned char>(text[i])) != 0;
        digits += bDash ? "" : std::string(1, text[i]);
    }

    const ZGuid before(0x0123456789abcdef, 0xfedcba9876543210);
    ZGuid guid(before);
    const std::vector<char> block(text.begin(), text.end());
    if (guid.FromString(std::string_view(block.data(), block.size())) != bExpected)
        return false;
    if (!bExpected)
        return guid == before;

    std::array<uint8, 16> bytes{};
    std::memcpy(bytes.data(), static_cast<const void*>(&guid), sizeof(guid));
    for (size_t i = 0; i < 16; ++i)
    {
        if (bytes[i] != std::stoul(digits.substr(2 * i, 2), nullptr, 16))
            return false;
    }
    char acText[ZGuid::kTextSize];
    std::memset(acText, '#', sizeof(acText));
    guid.WriteTo(acText);
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return acText == lower
           && guid
                  == ZGuid(std::stoull(digits.substr(0, 16), nullptr, 16), std::stoull(digits.substr(16), nullptr, 16));
}

// The four parts, or nothing. The text ends at its first NUL.
inline std::optional<std::array<uint64, 4>> ModelVersion(std::string_view text)
{
    static constexpr uint64 kMax[] = {255, 255, 65535, 4294967295};
    text = text.substr(0, text.find('\0'));
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    std::array<uint64, 4> parts{};
    for (size_t i = 0; i < 4; ++i)
    {
        std::string digits(text.substr(0, text.find_first_not_of("0123456789")));
        if (digits.empty())
            return {};
        text.remove_prefix(digits.size());
        digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
        if (digits.size() > 10 || std::stoull(digits) > kMax[i])
            return {};
        parts[i] = std::stoull(digits);
        if (!text.starts_with('.'))
            return i == 0 ? std::nullopt : std::optional(parts);
        text.remove_prefix(1);
    }
    return parts;
}

inline bool AgreesOnVersion(std::string_view text)
{
    std::vector<char> block(text.begin(), text.end());
    block.push_back('\0');
    const auto expected = ModelVersion(text);
    const std::array<uint64, 4> parts = expected.value_or(std::array<uint64, 4>{});

    Version actual;
    actual.abs = 0xCDCDCDCDCDCDCDCD;
    return version::FromString(block.data(), &actual) == expected.has_value() && actual.major == parts[0]
           && actual.minor == parts[1] && actual.patch == parts[2] && actual.build == parts[3]
           && actual.abs == (parts[0] | parts[1] << 8 | parts[2] << 16 | parts[3] << 32);
}

// A piece and the number of its line.
using Piece = std::pair<int, std::string>;

// What a reader with nMax characters of room makes of the data.
inline std::vector<Piece> ModelPieces(std::string_view data, size_t nMax)
{
    std::vector<Piece> pieces;
    int nLine = 1;
    while (!data.empty() && data != std::string_view("\0", 1))
    {
        const std::string_view held = data.substr(0, nMax);
        size_t nLength = held.find('\n');
        if (nLength == std::string_view::npos)
        {
            nLength = held.size() - (held.size() == nMax && held.ends_with('\r') ? 1 : 0);
            data.remove_prefix(nLength);
            pieces.emplace_back(nLine, held.substr(0, nLength));
        }
        else
        {
            data.remove_prefix(nLength + 1);
            nLength -= held.substr(0, nLength).ends_with('\r') ? 1 : 0;
            pieces.emplace_back(nLine++, held.substr(0, nLength));
        }
    }
    return pieces;
}

// A source that hands the data out in portions of 1 + below(what there is and fits) bytes, and sees to it that it is
// asked in order.
template <class TBelow>
struct TPortions
{
    static int Read(uint64 nUser, char* pTarget, uint32 nSize)
    {
        TPortions& self = *reinterpret_cast<TPortions*>(nUser);
        self.m_bOrderly = self.m_bOrderly && nSize > 0 && !self.m_bEnded;
        const size_t nMax = std::min<size_t>(nSize, self.m_data.size());
        const size_t nPortion = nMax == 0 ? 0 : 1 + self.m_below(nMax);
        std::memcpy(pTarget, self.m_data.data(), nPortion);
        self.m_data.remove_prefix(nPortion);
        self.m_bEnded = nPortion == 0;
        return static_cast<int>(nPortion);
    }

    std::string_view m_data;
    TBelow m_below;
    bool m_bEnded = false;
    bool m_bOrderly = true;
};

template <class TBelow>
bool AgreesOnLines(std::string_view data, uint32 nBufferSize, TBelow below)
{
    TPortions<TBelow> source{data, below};
    const std::vector<char> guard(16, '#');
    std::vector<char> memory(guard);
    memory.resize(guard.size() + nBufferSize);
    memory.insert(memory.end(), guard.begin(), guard.end());
    char* const pBuffer = memory.data() + guard.size();
    ZLineReader reader(&source.Read, reinterpret_cast<uint64>(&source), pBuffer, nBufferSize);

    char* pLine = nullptr;
    uint32 nLength = 0;
    for (const auto& [nLine, text] : ModelPieces(data, nBufferSize - 1))
    {
        if (reader.GetNextLine(&pLine, &nLength) != nLine || pLine < pBuffer || nLength != text.size()
            || std::string_view(pLine, nLength) != text || pLine[nLength] != '\0'
            || pLine + nLength >= pBuffer + nBufferSize)
            return false;
    }
    for (int i = 0; i < 2; ++i)
    {
        if (reader.GetNextLine(&pLine, &nLength) != 0 || pLine != nullptr || nLength != 0)
            return false;
    }
    return source.m_bOrderly && source.m_bEnded && std::equal(guard.begin(), guard.end(), memory.begin())
           && std::equal(guard.rbegin(), guard.rend(), memory.rbegin());
}
