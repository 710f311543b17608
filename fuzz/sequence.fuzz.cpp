// The operations of the five sequences, beside their models.
#include "fuzz/operations.h"
#include "tests/support/sequencemodel.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    return OperateOneOf<ModelledArray, ModelledMaxArray, ModelledBlockArray, ModelledList, ModelledSList>(pData, nSize);
}
