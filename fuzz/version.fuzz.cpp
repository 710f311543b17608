// version::FromString beside a plain model.
#include "tests/support/valuemodel.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    if (!AgreesOnVersion({reinterpret_cast<const char*>(pData), nSize}))
        std::abort();
    return 0;
}
