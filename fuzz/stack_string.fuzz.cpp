// The operations of a stack string, in an order and with texts that the bytes decide, beside a plain model.
#include "tests/support/stringmodel.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    const uint8* pEnd = pData + nSize;
    const auto below = [&](uint64 n) { return pData == pEnd ? 0 : *pData++ % n; };
    ModelledString string(1 + static_cast<uint32>(below(64)));
    while (pData != pEnd)
    {
        string.Step(below);
        if (!string.Agrees())
            std::abort();
    }
    return 0;
}
