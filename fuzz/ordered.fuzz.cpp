// The ordered containers.
#include "fuzz/operations.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    return OperateOneOf<TCompared<TRedBlackTree<int>>, TCompared<TSet<int>, false>, TCompared<TMultiSet<int>>,
                        TCompared<TMap<int, int>, false>, TCompared<TMultiMap<int, int>>>(pData, nSize);
}
