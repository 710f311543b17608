// A text is read or refused as another parser does. What is read is written and read again, line by line, too.
#include "runtime/json/json.h"

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    const ZMemAllocatorScope scope;
    const uint8 nFlags = nSize != 0 ? *pData : 0;
    const std::string_view text(reinterpret_cast<const char*>(pData) + (nSize != 0), nSize - (nSize != 0));
    const bool bStrict = (nFlags & 3) == 0;
    const json::SReadOptions options{(nFlags & 1) != 0, (nFlags & 2) != 0, (nFlags & 4) != 0, (nFlags & 8) != 0};
    ZDynamicObject tree;
    ZDynamicObject again;
    ZString written;
    json::SError error;
    const bool bRead = json::Read(text, tree, &error, options);
    // The other parser takes NUL for the end.
    if (bStrict && text.find('\0') == text.npos && (bRead || nFlags == 0) && bRead != nlohmann::json::accept(text))
        std::abort();
    if (bRead ? !json::Write(tree, written, nullptr, {.m_nIndent = nFlags / 16U}) : error.m_nOffset > text.size())
        std::abort();
    if (bRead && (!json::Read(written, again) || !(again == tree) || !tree.Validate()))
        std::abort();
    // A negative zero makes the whole text go the slow way, which must read the same.
    const std::string slow = "[-0," + std::string(text) + "\n]";
    if (bRead && !text.starts_with('\xEF') && !(json::Read(slow, again, nullptr, options) && again[1] == tree))
        std::abort();
    // The buffer for lines costs more than everything above.
    if (nSize % 8 == 0)
        json::ReadLines(text, [](ZDynamicObject& value, const json::SProgress&) { return value.Validate(); });
    return 0;
}
