// The operations of the hash containers, beside their models.
#include "fuzz/operations.h"
#include "tests/support/hashmodel.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    return OperateOneOf<ModelledHashMap, ModelledMultiHashMap, ModelledHashSet>(pData, nSize);
}
