// ZString::Format: no byte of the format may lead anywhere but into the result, and braces are replaced by the rule.
#include "core/dynamic/format.h"

#include <cstdlib>
#include <string>

namespace
{
// The rule once more, character by character.
std::string Model(std::string_view format)
{
    std::string result;
    for (size_t i = 0; i < format.size(); ++i)
    {
        const std::string_view rest = format.substr(i);
        const bool bPair = rest.size() >= 2 && (rest[0] == '{' || rest[0] == '}') && rest[1] == rest[0];
        result += rest.substr(0, 3) == "{0}" ? "-7" : rest.substr(0, 3) == "{1}" ? "true" : rest.substr(0, 1);
        i += bPair ? 1 : rest.substr(0, 3) == "{0}" || rest.substr(0, 3) == "{1}" ? 2 : 0;
    }
    return result;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    const ZMemAllocatorScope scope;
    const std::string_view format(reinterpret_cast<const char*>(pData), nSize);
    if (!(ZString::Format(ZString(format), -7, true) == Model(format)))
        std::abort();
    return 0;
}
