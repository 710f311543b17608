// What holds of demangle for any text. Tests drive it with cut symbols, fuzzers with the bytes that they are given.
#pragma once

#include "core/values/demangle.h"
#include "tests/support/stringmodel.h"

#include <memory>

// The result of demangle. The symbol lies in a block of its exact size, so that a sanitizer sees a read behind its end.
inline std::string Demangled(std::string_view symbol, bool bVerbose)
{
    const std::vector<char> block(symbol.begin(), symbol.end());
    const auto pText = std::make_unique<ZStackString<100000>>();
    demangle(*pText, std::string_view(block.data(), block.size()), bVerbose);
    return std::string(std::string_view(*pText));
}

// No text of a symbol begins with a question mark, so a result that does is a symbol that was not read.
inline bool IsRead(std::string_view result)
{
    return !result.starts_with('?');
}

// Whether the demangled text goes into a string of that capacity, behind an old text, as append would put it there.
inline bool IsAppended(std::string_view symbol, bool bVerbose, uint32 nCapacity, const std::string& result)
{
    GuardedString expected(nCapacity);
    GuardedString actual(nCapacity);
    expected.append("old text");
    actual.append("old text");
    expected.append(result);
    demangle(actual, symbol, bVerbose);
    return actual.Intact() && std::string_view(expected) == std::string_view(actual);
}

// Whether both texts of the symbol are sound.
inline bool IsDemangledSoundly(std::string_view symbol, uint32 nCapacity)
{
    const std::string plain = Demangled(symbol, false);
    const std::string verbose = Demangled(symbol, true);
    if (!symbol.starts_with('?'))
        return plain == symbol.substr(symbol.starts_with('_') ? 1 : 0) && plain == verbose;

    // Only a text that would be too long can be missing for one of the two.
    const bool bBothRead = IsRead(plain) && IsRead(verbose);
    if (IsRead(plain) != IsRead(verbose) && (IsRead(verbose) || plain.size() < 1000))
        return false;
    if (!IsRead(plain) && plain != symbol)
        return false;
    if (!IsRead(verbose) && verbose != symbol)
        return false;
    return (!bBothRead || plain.size() <= verbose.size()) && IsAppended(symbol, false, nCapacity, plain)
           && IsAppended(symbol, true, nCapacity, verbose);
}
