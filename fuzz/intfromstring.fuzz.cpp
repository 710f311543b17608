// IntFromString, all eight widths, beside std::from_chars.
#include "tests/support/stringmodel.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    if (!AgreesOnAllInts(std::string(reinterpret_cast<const char*>(pData), nSize)))
        std::abort();
    return 0;
}
