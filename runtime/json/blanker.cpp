#include "runtime/json/blanker.h"

#include "core/platform/platform.h"

#include <string_view>

namespace json
{
namespace
{
// Past the string whose opening quote is at p.
char* SkipString(char* p, const char* pEnd)
{
    for (++p; p != pEnd && *p != '"'; ++p)
    {
        if (*p == '\\' && pEnd - p > 1)
            ++p;
    }
    return p == pEnd ? p : p + 1;
}

// Past the comment at p; null if it has no end.
char* BlankComment(char* p, const char* pEnd)
{
    const std::string_view rest(p, static_cast<std::size_t>(pEnd - p));
    std::size_t nSize = 0;
    if (rest[1] == '/')
        nSize = rest.find('\n') < rest.size() ? rest.find('\n') : rest.size();
    else if (const std::size_t nClose = rest.find("*/", 2); nClose != std::string_view::npos)
        nSize = nClose + 2;
    for (std::size_t i = 0; i < nSize; ++i)
    {
        if (p[i] != '\n')
            p[i] = ' ';
    }
    return nSize != 0 ? p + nSize : nullptr;
}
} // namespace

const char* Blank(char* p, const char* pEnd, bool bComments, bool bTrailingCommas)
{
    char cLast = '['; // the last character that is no white space
    char* pComma = nullptr;
    while (p != pEnd)
    {
        const char c = *p;
        if (bComments && c == '/' && pEnd - p > 1 && (p[1] == '/' || p[1] == '*'))
        {
            char* pNext = BlankComment(p, pEnd);
            if (pNext == nullptr)
                return p;
            p = pNext;
            continue;
        }
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r')
        {
            ++p;
            continue;
        }
        if (bTrailingCommas && pComma != nullptr && cLast == ',' && (c == ']' || c == '}'))
            *pComma = ' ';
        // A comma is a trailing one only if there is a value before it.
        pComma = c == ',' && std::string_view("[{,:").find(cLast) == std::string_view::npos ? p : nullptr;
        cLast = c;
        p = c == '"' ? SkipString(p, pEnd) : p + 1;
    }
    return nullptr;
}
} // namespace json
