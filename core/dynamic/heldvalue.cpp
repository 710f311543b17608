#include "core/dynamic/heldvalue.h"

namespace kx::detail
{
namespace
{
// -- Strings

void* CopyString(const STypeID&, const void* pText)
{
    return ::new (ZCellHeap::Allocate(sizeof(ZString))) ZString(*static_cast<const ZString*>(pText));
}

void DestroyString(const STypeID&, void* pText)
{
    static_cast<ZString*>(pText)->~ZString();
    ZCellHeap::Free(pText);
}

// -- All types that need no more than their own operations

bool FitsCell(const STypeID& type)
{
    return type.m_nSize <= ZCellHeap::kMaxCell && type.m_nAlignment <= ZCellHeap::kMaxAlignment;
}

void* CopyOther(const STypeID& type, const void* pValue)
{
    void* pCopy = FitsCell(type) ? ZCellHeap::Allocate(type.m_nSize)
                                 : GetNormalAllocator()->Allocate(type.m_nSize, type.m_nAlignment, 0);
    if (!type.IsDescribed())
        std::memset(pCopy, 0, type.m_nSize); // for a program that goes on after the debug break
    type.Operations().CopyConstruct(pCopy, pValue);
    return pCopy;
}

void DestroyOther(const STypeID& type, void* pHeld)
{
    type.Operations().Destruct(pHeld);
    if (FitsCell(type))
        ZCellHeap::Free(pHeld);
    else
        GetNormalAllocator()->Free(pHeld);
}
} // namespace

constinit const SValueOperations g_wordValue = {};
constinit const SValueOperations g_stringValue = {&CopyString, &CopyString, &DestroyString};
constinit const SValueOperations g_otherValue = {&CopyOther, &CopyOther, &DestroyOther};

KX_KNOWN_TYPE(SInt8Type, &g_wordValue, int8);
KX_KNOWN_TYPE(SInt16Type, &g_wordValue, int16);
KX_KNOWN_TYPE(SInt32Type, &g_wordValue, int32);
KX_KNOWN_TYPE(SInt64Type, &g_wordValue, int64);
KX_KNOWN_TYPE(SUint8Type, &g_wordValue, uint8);
KX_KNOWN_TYPE(SUint16Type, &g_wordValue, uint16);
KX_KNOWN_TYPE(SUint32Type, &g_wordValue, uint32);
KX_KNOWN_TYPE(SUint64Type, &g_wordValue, uint64);
KX_KNOWN_TYPE(SFloat32Type, &g_wordValue, float32);
KX_KNOWN_TYPE(SFloat64Type, &g_wordValue, float64);
KX_KNOWN_TYPE(SBoolType, &g_wordValue, bool);
KX_KNOWN_TYPE(SStringType, &g_stringValue, ZString);
} // namespace kx::detail
