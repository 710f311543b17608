// What is true of demangle for any text. Tests check it with cut symbols, fuzzers with the bytes that they are given.
#pragma once

#include "core/values/demangle.h"
#include "tests/support/stringmodel.h"

#include <algorithm>
#include <memory>

// The result of demangle. The symbol is in a block of its exact size, so that a sanitizer sees a read past the end.
inline std::string Demangled(std::string_view symbol, const SDemangleOptions& options)
{
    const std::vector<char> block(symbol.begin(), symbol.end());
    const auto pText = std::make_unique<ZStackString<100000>>();
    demangle(*pText, std::string_view(block.data(), block.size()), options);
    return std::string(std::string_view(*pText));
}

inline std::string Demangled(std::string_view symbol, bool bVerbose)
{
    return Demangled(symbol, SDemangleOptions{.m_bVerbose = bVerbose});
}

// No text of a symbol begins with a question mark, so a result that does is a symbol that was not read.
inline bool IsRead(std::string_view result)
{
    return !result.starts_with('?');
}

// Whether demangle appends the result to a string of that capacity, after an old text, as append does.
inline bool IsAppended(std::string_view symbol, const SDemangleOptions& options, uint32 nCapacity,
                       const std::string& result)
{
    GuardedString expected(nCapacity);
    GuardedString actual(nCapacity);
    expected.append("old text");
    actual.append("old text");
    expected.append(result);
    demangle(actual, symbol, options);
    return actual.Intact() && std::string_view(expected) == std::string_view(actual);
}

// Whether demangle writes as much of the result as fits into a buffer of that size.
inline bool IsWritten(std::string_view symbol, const SDemangleOptions& options, uint32 nSize, const std::string& result)
{
    std::vector<char> buffer(nSize, '?');
    const SDemangled demangled = demangle(buffer, symbol, options);
    const std::string text = demangled.m_nLength != 0 ? result.substr(0, nSize - 1) : std::string();
    const bool bRead = IsRead(result);
    const EDemangled eRead = result.size() < nSize ? EDemangled::kRead : EDemangled::kCut;
    return std::equal(text.begin(), text.end(), buffer.begin()) && buffer[text.size()] == '\0'
           && (bRead ? demangled.m_result == eRead && demangled.m_nLength == result.size()
                     : demangled.m_result != EDemangled::kRead && demangled.m_nLength == 0);
}

// Whether the two texts of a form of the symbol are sound.
inline bool IsDemangledSoundly(std::string_view symbol, uint32 nCapacity, bool bModern)
{
    const std::string plain = Demangled(symbol, {.m_bModern = bModern});
    const std::string verbose = Demangled(symbol, {.m_bVerbose = true, .m_bModern = bModern});
    if (!symbol.starts_with('?'))
        return plain == symbol.substr(symbol.starts_with('_') ? 1 : 0) && plain == verbose;

    // A symbol that is not read is appended as it is. The plain text alone is read only if the verbose one is too long.
    const bool bPlain = IsRead(plain);
    const bool bVerbose = IsRead(verbose);
    return (bPlain || plain == symbol) && (bVerbose || verbose == symbol)
           && (bPlain == bVerbose || (bPlain && plain.size() >= 1000))
           && IsWritten(symbol, {.m_bModern = bModern}, nCapacity, plain)
           && (!bPlain || !bVerbose || plain.size() <= verbose.size())
           && IsAppended(symbol, {.m_bModern = bModern}, nCapacity, plain)
           && IsAppended(symbol, {.m_bVerbose = true, .m_bModern = bModern}, nCapacity, verbose);
}

inline bool IsDemangledSoundly(std::string_view symbol, uint32 nCapacity)
{
    return IsDemangledSoundly(symbol, nCapacity, false) && IsDemangledSoundly(symbol, nCapacity, true);
}
