// Plain models of the parsers of values, simple enough to be right at a glance. Tests feed them tables and random
// numbers, fuzzers feed them their input bytes.
//
// The input is copied into a block of its exact size, so that a sanitizer notices a read past the end.
#pragma once

#include "core/values/guid.h"
#include "core/values/linereader.h"
#include "core/values/version.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

// Compares ZGuid with a parser that looks at one character at a time. FromString and WriteTo must not allocate.
inline bool AgreesOnGuid(std::string_view text)
{
    constexpr std::string_view kShape = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    bool bExpected = text.size() == kShape.size();
    std::string lower, digits;
    for (size_t i = 0; bExpected && i < kShape.size(); ++i)
    {
        const auto c = static_cast<unsigned char>(text[i]);
        bExpected = kShape[i] == '-' ? c == '-' : std::isxdigit(c) != 0;
        lower += static_cast<char>(std::tolower(c));
        digits += kShape[i] == '-' ? "" : std::string(1, text[i]);
    }

    const ZGuid before(0x0123456789abcdef, 0xfedcba9876543210);
    ZGuid guid(before);
    const std::vector<char> block(text.begin(), text.end());
    const bool bRead = guid.FromString(std::string_view(block.data(), block.size()));
    if (!bRead || !bExpected)
        return bRead == bExpected && guid == before;

    char acText[ZGuid::kTextSize];
    std::memset(acText, '#', sizeof(acText));
    guid.WriteTo(acText);
    return acText == lower
           && guid
                  == ZGuid(std::stoull(digits.substr(0, 16), nullptr, 16), std::stoull(digits.substr(16), nullptr, 16));
}

// The four parts, or nothing. A number that is too large for 64 bits is read as the largest one.
inline std::optional<std::array<uint64, 4>> ModelVersion(const std::string& text)
{
    static constexpr uint64 kMax[] = {255, 255, 65535, 4294967295};
    const char* p = text.c_str() + std::strspn(text.c_str(), " \t\n\v\f\r");
    std::array<uint64, 4> parts{};
    for (size_t i = 0; i < 4; ++i)
    {
        char* pEnd = nullptr;
        parts[i] = std::strtoull(p, &pEnd, 10);
        if (std::isdigit(static_cast<unsigned char>(*p)) == 0 || parts[i] > kMax[i])
            return {};
        if (*pEnd != '.')
            return i == 0 ? std::nullopt : std::optional(parts);
        p = pEnd + 1;
    }
    return parts;
}

inline bool AgreesOnVersion(std::string_view text)
{
    std::vector<char> block(text.begin(), text.end());
    const auto expected = ModelVersion(std::string(text));
    const auto parts = expected.value_or(std::array<uint64, 4>{});
    const uint64 nExpected = parts[0] | parts[1] << 8 | parts[2] << 16 | parts[3] << 32;
    Version actual;
    actual.abs = 0xCDCDCDCDCDCDCDCD;
    if (version::FromString(std::string_view(block.data(), block.size()), &actual) != expected.has_value()
        || actual.abs != nExpected)
        return false;

    block.push_back('\0');
    actual.abs = 0xCDCDCDCDCDCDCDCD;
    return version::FromString(block.data(), &actual) == expected.has_value() && actual.abs == nExpected;
}

// The number of a line, and the line or a piece of it.
using Piece = std::pair<int, std::string>;

// What a reader with space for nMax characters returns for the data, with two calls past the end.
inline std::vector<Piece> ModelPieces(std::string_view data, size_t nMax)
{
    std::vector<Piece> pieces;
    int nLine = 1;
    while (!data.empty() && data != std::string_view("\0", 1))
    {
        const std::string_view held = data.substr(0, nMax);
        const size_t nNewline = held.find('\n');
        const bool bEnds = nNewline != std::string_view::npos;
        std::string_view piece = held.substr(0, nNewline);
        if (piece.ends_with('\r') && (bEnds || held.size() == nMax))
            piece.remove_suffix(1);
        pieces.emplace_back(nLine, piece);
        nLine += bEnds ? 1 : 0;
        data.remove_prefix(bEnds ? nNewline + 1 : piece.size());
    }
    pieces.resize(pieces.size() + 2);
    return pieces;
}

// A source that returns the data in portions of 1 + below(n) bytes, where n bytes are left and fit. Counts how often it
// reports the end.
template <class TBelow>
struct TPortions
{
    static int Read(uint64 nUser, char* pTarget, uint32 nSize)
    {
        TPortions& self = *reinterpret_cast<TPortions*>(nUser);
        const size_t nMax = std::min<size_t>(nSize, self.m_data.size());
        const size_t nPortion = self.m_data.copy(pTarget, nMax == 0 ? 0 : 1 + self.m_below(nMax));
        self.m_data.remove_prefix(nPortion);
        self.m_nEnds += nPortion == 0 ? 1 : 0;
        return static_cast<int>(nPortion);
    }

    std::string_view m_data;
    TBelow m_below;
    int m_nEnds = 0;
};

template <class TBelow>
bool AgreesOnLines(std::string_view data, uint32 nBufferSize, TBelow below)
{
    TPortions<TBelow> source{data, below};
    const std::string guard(16, '#');
    std::string memory = guard + std::string(nBufferSize, '#') + guard;
    char* const pBuffer = memory.data() + guard.size();
    ZLineReader reader(&source.Read, reinterpret_cast<uint64>(&source), pBuffer, nBufferSize);

    char* pLine = nullptr;
    uint32 nLength = 0;
    for (const auto& [nLine, text] : ModelPieces(data, nBufferSize - 1))
    {
        const int nActual = reader.GetNextLine(&pLine, &nLength);
        if (nActual != nLine || std::string_view(pLine, nLength) != text || (pLine == nullptr) != (nLine == 0))
            return false;
        if (nLine != 0 && (pLine < pBuffer || pLine + nLength >= pBuffer + nBufferSize || pLine[nLength] != '\0'))
            return false;
    }
    return source.m_nEnds == 1 && memory.starts_with(guard) && memory.ends_with(guard);
}
