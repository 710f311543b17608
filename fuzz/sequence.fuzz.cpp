// The five sequences.
#include "fuzz/operations.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    return OperateOneOf<TCompared<TArray<int>>, TCompared<TMaxArray<int, 200>>, TCompared<TBlockArray<int>>,
                        TCompared<TList<int>>, TCompared<TSList<int>>>(pData, nSize);
}
