// ZGuid beside a plain model: the bytes as a text, and as a value.
#include "tests/support/valuemodel.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    if (!AgreesOnGuid({reinterpret_cast<const char*>(pData), nSize}))
        std::abort();

    ZGuid guid;
    std::copy_n(pData, std::min(nSize, sizeof(guid)), reinterpret_cast<uint8*>(&guid));
    char acText[ZGuid::kTextSize];
    guid.WriteTo(acText);
    ZGuid read;
    if (!AgreesOnGuid(acText) || !read.FromString(std::string_view(acText)) || read != guid)
        std::abort();
    return 0;
}
