// The ordered containers.
#include "core/containers/map.h"
#include "core/containers/set.h"
#include "fuzz/operations.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    return OperateOneOf<TKeyed<TRedBlackTree<int>, true>, TKeyed<TSet<int>, false>, TKeyed<TMultiSet<int>, true>,
                        TKeyed<TMap<int, int>, false>, TKeyed<TMultiMap<int, int>, true>>(pData, nSize);
}
