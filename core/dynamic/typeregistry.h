// What is known of a type at run time: how its values live and die, and how code that does not know the type walks a
// container of it.
//
//   IType --> STypeOperations        construct, copy, destroy, assign, compare
//         --> SContainerOperations   begin, end, next, size, set, clear, reserve (arrays only)
//
// All of these are plain records. kxbase brings those of the types that variants know from the start. A type of your
// own gets them by one line at namespace scope beside its definition:
//
//   struct SVertex { float32 m_x, m_y, m_z; bool operator==(const SVertex&) const = default; };
//   KX_DECLARE_TYPE(SVertex);
//   KX_DECLARE_TYPE(TArray<SVertex>);
//
// After that a ZVariant can hold it, and all modules that include the line agree on its identity. A type must be
// copyable. If it has no ==, no two of its values are equal.
//
// Modules may be loaded and unloaded at any time, by any thread. The operations of a type are those of the first module
// that has described it; when that one is unloaded, those of the next one. When the last one is unloaded, its values
// must be gone: a value that is left triggers the debug break in kx::detail::UsedTypeOfUnloadedModule.
#pragma once

#include "core/dynamic/typeoperations.h"

/// The description of a type.
struct IType
{
    const STypeOperations* m_pOperations;
    uint16 m_nSize;
    uint16 m_nAlignment;
    uint32 m_nArgumentOffset; ///< Where m_pElementTypeID is: 48 in every record.
    const char* m_pszName;
    STypeID* m_pTypeID; ///< Null until the module has started, like the other identity.
    void* m_pReserved7;
    void* m_pReserved8;
    STypeID* m_pElementTypeID;                           ///< Arrays only, like the next two.
    const SContainerOperations* m_pContainerOperations;  //
    void (*m_pfnResize)(void* pContainer, uint64 nSize); ///< As TArray::Resize; null if elements have no default value.
};

/// Belongs to the record of a template: its argument, and the name that the record points at.
struct STemplateBlock
{
    STypeID* m_pArgument; ///< Null until the module has started.
    uint8 m_nArguments;
    char m_acName[255]; ///< "TArray", followed by zeros.
};

static_assert(sizeof(STemplateBlock) == 264 && offsetof(STemplateBlock, m_acName) == 9,
              "modules that were built apart share this layout");
static_assert(sizeof(IType) == 72 && offsetof(IType, m_nSize) == 8 && offsetof(IType, m_nAlignment) == 10
                  && offsetof(IType, m_nArgumentOffset) == 12 && offsetof(IType, m_pszName) == 16
                  && offsetof(IType, m_pTypeID) == 24 && offsetof(IType, m_pElementTypeID) == 48
                  && offsetof(IType, m_pContainerOperations) == 56 && offsetof(IType, m_pfnResize) == 64,
              "modules that were built apart share this layout");

/// The descriptions that have been entered, by identity.
class KX_VISIBLE ZTypeRegistry
{
public:
    ZTypeRegistry(const ZTypeRegistry&) = delete;
    ZTypeRegistry& operator=(const ZTypeRegistry&) = delete;

    /// Enters a description. The first description of a type stays until its module is unloaded; a second one, or the
    /// same one again, has no effect. A description that no module declares must live on. A type whose module has not
    /// started triggers the debug break, and is not entered if execution resumes. Types declared by KX_DECLARE_TYPE are
    /// entered when their module starts.
    KX_API void Register(IType* pType);

    /// The description of the type, null if none is entered. It stays valid until its module is unloaded.
    KX_API const IType* Find(STypeID* pTypeID) const;

private:
    friend KX_API ZTypeRegistry& GetTypeRegistry();
    constexpr ZTypeRegistry() = default;
};

/// The registry of the process.
KX_API ZTypeRegistry& GetTypeRegistry();

namespace kx::detail
{
struct SValueOperations;

// Stops a program that uses a value of a type that no loaded module describes. Exported, so that a crash report has its
// name.
KX_API void UsedTypeOfUnloadedModule();

// What the start of a module does with a record: fills in the identities, and enters the type if it is to be known
// without being asked for. The linker gathers pointers to these as it gathers the slots.
struct STypeEntry
{
    IType* m_pType;
    STypeIDData* volatile* (*m_pfnSlot)();
    STypeIDData* volatile* (*m_pfnArgument)(); // arrays only, like the block
    STemplateBlock* m_pBlock;                  //
    const SValueOperations* m_pValue;          // how variants keep a value, for types that kxbase itself knows
    bool m_bRegister;
    STypeEntry* m_pNext = nullptr; // of the same identity
};

template <class T>
struct KX_LOCAL TTypeRecord
{
    static_assert(sizeof(T) <= UINT16_MAX,
                  "a description has 16 bits for the size of a type: declare one that holds the large part by pointer");

    static constexpr IType Make(const char* pszName)
    {
        IType type{};
        type.m_pOperations = &TTypeOperations<T>::kOperations;
        type.m_nSize = sizeof(T);
        type.m_nAlignment = alignof(T);
        type.m_nArgumentOffset = offsetof(IType, m_pElementTypeID);
        type.m_pszName = pszName;
        return type;
    }

    static constexpr STypeEntry Enter(IType* pType, const SValueOperations* pValue, bool bRegister)
    {
        return {pType, &TTypeSlot<T>::Slot, nullptr, nullptr, pValue, bRegister};
    }
};

template <class T>
struct KX_LOCAL TTypeRecord<TArray<T>>
{
    inline static STemplateBlock ms_block = {nullptr, 1, "TArray"};

    static constexpr IType Make(const char*)
    {
        IType type{};
        type.m_pOperations = &TTypeOperations<TArray<T>>::kOperations;
        type.m_nSize = sizeof(TArray<T>);
        type.m_nAlignment = alignof(TArray<T>);
        type.m_nArgumentOffset = offsetof(IType, m_pElementTypeID);
        type.m_pszName = ms_block.m_acName;
        type.m_pContainerOperations = &TContainerOperations<T>::kOperations;
        type.m_pfnResize = std::default_initializable<T> ? &TContainerOperations<T>::Resize : nullptr;
        return type;
    }

    static constexpr STypeEntry Enter(IType* pType, const SValueOperations* pValue, bool bRegister)
    {
        return {pType, &TTypeSlot<TArray<T>>::Slot, &TTypeSlot<T>::Slot, &ms_block, pValue, bRegister};
    }
};
} // namespace kx::detail

/// The record of a type in a module. Specialised by KX_TYPE_RECORD.
template <class T>
struct TTypeEntry
{
    static_assert(kx::detail::kNever<T>,
                  "this type has no description: write KX_DECLARE_TYPE(T); beside its definition");
};

#define KX_TYPE_RECORD(keep, bRegister, ...)                                                                           \
    template <>                                                                                                        \
    struct KX_LOCAL TTypeEntry<__VA_ARGS__>                                                                            \
    {                                                                                                                  \
        using Record = kx::detail::TTypeRecord<__VA_ARGS__>;                                                           \
        inline static IType ms_type = Record::Make(#__VA_ARGS__);                                                      \
        inline static kx::detail::STypeEntry ms_entry = Record::Enter(&ms_type, nullptr, bRegister);                   \
        keep KX_GATHERED_WORD(kxtypeentry, kx::detail::STypeEntry*, ms_pEntry, Entry, &ms_entry);                      \
    }

/// Gives a type an identity and a description; see the head of this file. One line at namespace scope for each type,
/// where the type is complete.
#define KX_DECLARE_TYPE(...)                                                                                           \
    KX_TYPE_SLOT(NotBuiltIn, __VA_ARGS__);                                                                             \
    KX_TYPE_RECORD(KX_GATHERED_ALWAYS, true, __VA_ARGS__)

/// This module's description of T.
template <class T>
inline IType* GetType()
{
    return (*TTypeEntry<T>::Entry())->m_pType;
}
