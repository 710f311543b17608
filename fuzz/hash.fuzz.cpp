// The hash containers.
#include "fuzz/operations.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    return OperateOneOf<TCompared<THashMap<int, int>, false>, TCompared<TMultiHashMap<int, int>>,
                        TCompared<THashSet<int>, false>>(pData, nSize);
}
