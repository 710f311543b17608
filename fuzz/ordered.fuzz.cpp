// The operations of the ordered containers, beside their models.
#include "fuzz/operations.h"
#include "tests/support/orderedmodel.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    return OperateOneOf<ModelledTree, ModelledSet, ModelledMultiSet, ModelledMap, ModelledMultiMap>(pData, nSize);
}
