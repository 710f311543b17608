#include "core/dynamic/heldvalue.h"

namespace kx::detail
{
namespace
{
// -- Strings

void* CopyString(const STypeID&, const void* pText)
{
    return ::new (ZCellPool::For(sizeof(ZString)).Allocate()) ZString(*static_cast<const ZString*>(pText));
}

void DestroyString(const STypeID&, void* pText)
{
    static_cast<ZString*>(pText)->~ZString();
    ZCellPool::Free(pText);
}

// -- All types that need no more than their own operations

bool FitsCell(const STypeID& type)
{
    return type.m_nSize <= ZCellPool::kMaxCell && type.m_nAlignment <= ZCellPool::kMaxAlignment;
}

void* CopyOther(const STypeID& type, const void* pValue)
{
    void* pCopy = FitsCell(type) ? ZCellPool::For(type.m_nSize).Allocate()
                                 : GetNormalAllocator()->Allocate(type.m_nSize, type.m_nAlignment, 0);
    type.m_pOperations->CopyConstruct(pCopy, pValue);
    return pCopy;
}

void DestroyOther(const STypeID& type, void* pHeld)
{
    type.m_pOperations->Destruct(pHeld);
    if (FitsCell(type))
        ZCellPool::Free(pHeld);
    else
        GetNormalAllocator()->Free(pHeld);
}
} // namespace

constinit const SValueOperations g_wordValue = {};
constinit const SValueOperations g_stringValue = {&CopyString, &CopyString, &DestroyString};
constinit const SValueOperations g_otherValue = {&CopyOther, &CopyOther, &DestroyOther};

KX_KNOWN_TYPE(g_int8, &g_wordValue, int8);
KX_KNOWN_TYPE(g_int16, &g_wordValue, int16);
KX_KNOWN_TYPE(g_int32, &g_wordValue, int32);
KX_KNOWN_TYPE(g_int64, &g_wordValue, int64);
KX_KNOWN_TYPE(g_uint8, &g_wordValue, uint8);
KX_KNOWN_TYPE(g_uint16, &g_wordValue, uint16);
KX_KNOWN_TYPE(g_uint32, &g_wordValue, uint32);
KX_KNOWN_TYPE(g_uint64, &g_wordValue, uint64);
KX_KNOWN_TYPE(g_float32, &g_wordValue, float32);
KX_KNOWN_TYPE(g_float64, &g_wordValue, float64);
KX_KNOWN_TYPE(g_bool, &g_wordValue, bool);
KX_KNOWN_TYPE(g_string, &g_stringValue, ZString);
} // namespace kx::detail
