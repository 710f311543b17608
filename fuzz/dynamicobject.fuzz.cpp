// The operations of a dynamic object, in an order and with values that the bytes decide, beside a plain model.
#include "tests/support/treemodel.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    const ZMemAllocatorScope scope;
    const uint8* pEnd = pData + nSize;
    const auto below = [&](uint64 n) { return pData == pEnd ? 0 : *pData++ % n; };
    ZModelledTree tree;
    while (pData != pEnd)
        tree.Step(below);
    if (!tree.Agrees())
        std::abort();
    return 0;
}
