// demangle: the first byte says how large a string the text has to fit in, the rest is the symbol.
#include "tests/support/demanglemodel.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    if (nSize == 0)
        return 0;
    if (!IsDemangledSoundly({reinterpret_cast<const char*>(pData + 1), nSize - 1}, 1 + uint32{pData[0]}))
        std::abort();
    return 0;
}
