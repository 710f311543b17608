// Inside kxbase: how a variant keeps a value of each type.
//
//   a number, a bool     a cell of eight bytes, copied as it is
//   a ZString            a cell
//   any other type       a cell if it fits, else a block of the normal allocator; the type's own operations
//   arrays and objects   nodes of a tree; core/dynamic/dynamicobject.cpp brings their operations, and those of a
//                        ZDynamicObject or a property as such
#pragma once

#include "core/dynamic/cellpool.h"
#include "core/dynamic/typeregistry.h"
#include "core/dynamic/typetable.h"

#include <cstring>

namespace kx::detail
{
/// What a type does with the values that variants hold.
struct SValueOperations
{
    void* (*Copy)(const STypeID& type, const void* pValue);           // of a free-standing value
    void* (*CopyHeld)(const STypeID& type, const void* pHeld);        // of what another variant holds
    void (*Destroy)(const STypeID& type, void* pHeld);                //
    bool (*Equal)(const void* pHeld, const void* pOther) = nullptr;   // null: by the == of the type
    bool (*Holds)(const void* pHeld, const void* pVariant) = nullptr; // null: holds no variants
};

extern const SValueOperations g_wordValue; // only its address counts: words are treated inline
extern const SValueOperations g_stringValue;
extern const SValueOperations g_otherValue;

inline const SValueOperations& ValueOperationsOf(const STypeID& type)
{
    return type.m_pValue != nullptr ? *type.m_pValue : g_otherValue;
}

inline bool IsWord(const STypeID& type)
{
    return type.m_pValue == &g_wordValue;
}

inline void* NewWord(uint64 nWord)
{
    return ::new (ZCellHeap::Allocate(sizeof(nWord))) uint64(nWord);
}

inline void* CopyHeldValue(const STypeID& type, const void* pHeld)
{
    if (IsWord(type)) [[likely]]
    {
        uint64 nWord = 0;
        std::memcpy(&nWord, pHeld, sizeof(nWord));
        return detail::NewWord(nWord);
    }
    return ValueOperationsOf(type).CopyHeld(type, pHeld);
}

inline void* CopyValue(const STypeID& type, const void* pValue)
{
    if (IsWord(type)) [[likely]]
    {
        // Most are numbers of eight bytes; for those the copy is one instruction.
        uint64 nWord = 0;
        if (type.m_nSize == sizeof(nWord)) [[likely]]
            std::memcpy(&nWord, pValue, sizeof(nWord));
        else
            std::memcpy(&nWord, pValue, type.m_nSize);
        return detail::NewWord(nWord);
    }
    return ValueOperationsOf(type).Copy(type, pValue);
}

inline void DestroyHeldValue(const STypeID& type, void* pHeld)
{
    if (IsWord(type)) [[likely]]
        ZCellHeap::Free(pHeld);
    else
        ValueOperationsOf(type).Destroy(type, pHeld);
}
/// To be called before the target takes a value over. Triggers the debug break if the target is a part of that value,
/// which would then hold itself, and would never be freed if execution resumes. A part that is hard to reach, as the
/// hundredth of a wide object, is not seen.
inline void BreakIfPart(const ZObjectRef& target, const STypeID* pType, const void* pHeld)
{
    if (pType == nullptr || IsWord(*pType))
        return;
    const auto pfnHolds = ValueOperationsOf(*pType).Holds;
    BreakUnless(pfnHolds == nullptr || !pfnHolds(pHeld, &target));
}
} // namespace kx::detail

/// Has a source of kxbase describe a type that variants know from the start, and how they keep its values. At namespace
/// scope; the name is that of a struct.
#define KX_KNOWN_TYPE(name, pValueOperations, ...)                                                                     \
    struct KX_LOCAL name                                                                                               \
    {                                                                                                                  \
        using Record = kx::detail::TTypeRecord<__VA_ARGS__>;                                                           \
        inline static IType ms_type = Record::Make(#__VA_ARGS__);                                                      \
        inline static kx::detail::STypeEntry ms_entry = Record::Enter(&ms_type, pValueOperations, false);              \
        KX_GATHERED_ALWAYS KX_GATHERED_WORD(kxtypeentry, kx::detail::STypeEntry*, ms_pEntry, Entry, &ms_entry);        \
    }
