// What is known of a type at run time: how its values live and die, and how a container of it is walked by code that
// does not know the type.
//
//   IType --> STypeOperations        construct, copy, destroy, assign, compare
//         --> SContainerOperations   begin, end, next, size, set, clear, reserve; of an array alone
//
// All are plain records. Those of the types that variants know from the start lie inside kxbase. A type of your own
// gets them by one line at namespace scope beside its definition:
//
//   struct SVertex { float32 m_x, m_y, m_z; bool operator==(const SVertex&) const = default; };
//   KX_DECLARE_TYPE(SVertex);
//   KX_DECLARE_TYPE(TArray<SVertex>);
//
// After that it can be held by a ZVariant, and every module that includes the line agrees on its identity. A type must
// be copyable; without == no two of its values are equal. A module that declares types must not be unloaded while
// values of these types live.
#pragma once

#include "core/containers/array.h"
#include "core/dynamic/typeid.h"

class ZObjectRef;

// The life of a type's values, on raw storage.
struct STypeOperations
{
    void (*Construct)(void* pStorage); // nothing if pStorage is null; null itself if T has no default value
    void (*CopyConstruct)(void* pStorage, const void* pSource); // nothing if pStorage is null
    void (*Destruct)(void* pObject);                            //
    void (*Assign)(void* pTarget, const void* pSource);         // nothing if both are the same object
    bool (*Equals)(const void* pLeft, const void* pRight);      // null where the type has no ==
    void* m_apReserved[3];
};

// An array as seen by code that does not know its element.
struct SContainerOperations
{
    void* (*Begin)(void* pContainer);
    void* (*End)(void* pContainer);
    void* (*Next)(void* pContainer, void* pCursor);
    uint64 (*Size)(const void* pContainer);

    // Stores a copy of the value at the index and returns the element. At the end it is appended; further on, the gap
    // is filled with default values first. A negative index and a value of another type take the debug break, the
    // latter behind the filling of a gap; resumed, null is returned. The value may be an element of the array.
    void* (*SetAt)(void* pContainer, ZObjectRef value, int32 nIndex);

    void (*Clear)(void* pContainer);                     // destroys the elements, keeps the buffer
    void (*Reserve)(void* pContainer, uint64 nCapacity); // never shrinks
    void* m_pReserved;
};

// The description of a type.
struct IType
{
    const STypeOperations* m_pOperations;
    uint16 m_nSize;
    uint16 m_nAlignment;
    uint32 m_nArgumentOffset; // where m_pElementTypeID stands: 48 in every record
    const char* m_pszName;
    STypeID* m_pTypeID; // null until the module has started, like the other identity
    void* m_pReserved7;
    void* m_pReserved8;
    STypeID* m_pElementTypeID; // of an array
    const SContainerOperations* m_pContainerOperations;
    void (*m_pfnResize)(void* pContainer, uint64 nSize); // as TArray::Resize; null like Construct
};

// Stands behind the record of a template: its argument, and the name that the record points at.
struct STemplateBlock
{
    STypeID* m_pArgument; // null until the module has started
    uint8 m_nArguments;
    char m_acName[255]; // "TArray", zero behind it
};

static_assert(sizeof(STypeOperations) == 64 && sizeof(SContainerOperations) == 64 && sizeof(IType) == 72
                  && sizeof(STemplateBlock) == 264 && offsetof(STemplateBlock, m_acName) == 9,
              "modules that were built apart share these layouts");
static_assert(offsetof(IType, m_nSize) == 8 && offsetof(IType, m_nAlignment) == 10
                  && offsetof(IType, m_nArgumentOffset) == 12 && offsetof(IType, m_pszName) == 16
                  && offsetof(IType, m_pTypeID) == 24 && offsetof(IType, m_pElementTypeID) == 48
                  && offsetof(IType, m_pContainerOperations) == 56 && offsetof(IType, m_pfnResize) == 64,
              "modules that were built apart share this layout");

// The descriptions that have been entered, by identity.
class KX_API ZTypeRegistry
{
public:
    ZTypeRegistry(const ZTypeRegistry&) = delete;
    ZTypeRegistry& operator=(const ZTypeRegistry&) = delete;

    // Enters a description, which must live on. The first one of a type stays, whoever enters a second; entering one
    // again has no effect. A type whose module has not started takes the debug break, and resumed is not entered.
    // Types declared by KX_DECLARE_TYPE are entered when their module starts.
    void Register(IType* pType);

    // The description of the type, null if none has been entered.
    const IType* Find(STypeID* pTypeID) const;

private:
    friend KX_API ZTypeRegistry& GetTypeRegistry();
    constexpr ZTypeRegistry() = default;
};

// The registry of the process.
KX_API ZTypeRegistry& GetTypeRegistry();

namespace detail
{
// The operations of any type.
template <class T>
struct TTypeOperations
{
    static_assert(std::is_copy_constructible_v<T> && std::is_copy_assignable_v<T>,
                  "a type with an identity must be copyable: variants own copies of their values");

    static void Construct(void* pStorage)
    {
        if constexpr (std::is_default_constructible_v<T>)
        {
            if (pStorage != nullptr)
                ::new (pStorage) T();
        }
    }

    static void CopyConstruct(void* pStorage, const void* pSource)
    {
        if (pStorage != nullptr)
            ::new (pStorage) T(*static_cast<const T*>(pSource));
    }

    static void Destruct(void* pObject) { static_cast<T*>(pObject)->~T(); }

    static void Assign(void* pTarget, const void* pSource)
    {
        if (pTarget != pSource)
            *static_cast<T*>(pTarget) = *static_cast<const T*>(pSource);
    }

    static bool Equals(const void* pLeft, const void* pRight)
    {
        if constexpr (std::equality_comparable<T>)
            return *static_cast<const T*>(pLeft) == *static_cast<const T*>(pRight);
        else
            return false;
    }

    static constexpr STypeOperations kOperations = {std::is_default_constructible_v<T> ? &Construct : nullptr,
                                                    &CopyConstruct,
                                                    &Destruct,
                                                    &Assign,
                                                    std::equality_comparable<T> ? &Equals : nullptr,
                                                    {}};
};

// An array is described by the identity of its element, so what it does beyond the array itself is told here.
template <class T>
struct TTypeOperations<TArray<T>>
{
    using Array = TArray<T>;

    static void Construct(void* pStorage)
    {
        if (pStorage != nullptr)
            ::new (pStorage) Array();
    }

    static void CopyConstruct(void* pStorage, const void* pSource)
    {
        if (pStorage == nullptr)
            return;
        const Array& source = *static_cast<const Array*>(pSource);
        BreakUnless((source.Begin() == nullptr) == (source.End() == nullptr));
        ::new (pStorage) Array(source);
    }

    static void Destruct(void* pObject) { static_cast<Array*>(pObject)->~Array(); }

    static void Assign(void* pTarget, const void* pSource)
    {
        *static_cast<Array*>(pTarget) = *static_cast<const Array*>(pSource);
    }

    // The counts are compared as the 32-bit numbers that Size() gives.
    static bool Equals(const void* pLeft, const void* pRight)
    {
        if constexpr (std::equality_comparable<T>)
        {
            const Array& left = *static_cast<const Array*>(pLeft);
            const Array& right = *static_cast<const Array*>(pRight);
            if (left.Begin() == right.Begin())
                return true;
            if (left.Size() != right.Size())
                return false;
            const T* pOther = right.Begin();
            for (const T& element : left)
            {
                if (!(element == *pOther++))
                    return false;
            }
            return true;
        }
        else
        {
            return false;
        }
    }

    static constexpr STypeOperations kOperations = {
        &Construct, &CopyConstruct, &Destruct, &Assign, std::equality_comparable<T> ? &Equals : nullptr, {}};
};

template <class T>
struct TContainerOperations
{
    using Array = TArray<T>;

    static Array& Self(void* pContainer) { return *static_cast<Array*>(pContainer); }

    static void* Begin(void* pContainer) { return Self(pContainer).Begin(); }
    static void* End(void* pContainer) { return Self(pContainer).End(); }
    static void* Next(void*, void* pCursor) { return static_cast<T*>(pCursor) + 1; }
    static uint64 Size(const void* pContainer) { return static_cast<const Array*>(pContainer)->Size(); }
    KX_LOCAL static void* SetAt(void* pContainer, ZObjectRef value, int32 nIndex);
    static void Clear(void* pContainer) { Self(pContainer).Clear(); }
    static void Reserve(void* pContainer, uint64 nCapacity) { Self(pContainer).Reserve(nCapacity, false); }
    static void Resize(void* pContainer, uint64 nSize)
    {
        if constexpr (std::default_initializable<T>)
            Self(pContainer).Resize(nSize);
    }

    static constexpr SContainerOperations kOperations = {&Begin, &End, &Next, &Size, &SetAt, &Clear, &Reserve, nullptr};
};

// What a module's start does with a record: fills in the identities, and enters the type if it is to be known without
// being asked for. The linker gathers pointers to these as it gathers the slots.
struct STypeEntry
{
    IType* m_pType;
    STypeIDData** m_ppSlot;
    STypeIDData** m_ppArgument; // of an array, like the block
    STemplateBlock* m_pBlock;
    bool m_bRegister;
};

template <class T>
struct KX_LOCAL TTypeRecord
{
    static_assert(sizeof(T) <= UINT16_MAX,
                  "a description has 16 bits for the size of a type: declare one that holds the large part by pointer");

    static constexpr IType Make(const char* pszName)
    {
        return {&TTypeOperations<T>::kOperations,
                sizeof(T),
                alignof(T),
                48,
                pszName,
                nullptr,
                nullptr,
                nullptr,
                nullptr,
                nullptr,
                nullptr};
    }

    static constexpr STypeEntry Enter(IType* pType, bool bRegister)
    {
        return {pType, &TTypeSlot<T>::ms_pSlot, nullptr, nullptr, bRegister};
    }
};

template <class T>
struct KX_LOCAL TTypeRecord<TArray<T>>
{
    inline static STemplateBlock ms_block = {nullptr, 1, "TArray"};

    static constexpr IType Make(const char*)
    {
        using Array = TArray<T>;
        return {&TTypeOperations<Array>::kOperations,
                sizeof(Array),
                alignof(Array),
                48,
                ms_block.m_acName,
                nullptr,
                nullptr,
                nullptr,
                nullptr,
                &TContainerOperations<T>::kOperations,
                std::default_initializable<T> ? &TContainerOperations<T>::Resize : nullptr};
    }

    static constexpr STypeEntry Enter(IType* pType, bool bRegister)
    {
        return {pType, &TTypeSlot<TArray<T>>::ms_pSlot, &TTypeSlot<T>::ms_pSlot, &ms_block, bRegister};
    }
};
} // namespace detail

// The record of a type in a module. Specialised by KX_TYPE_RECORD.
template <class T>
struct TTypeEntry
{
    static_assert(detail::kNever<T>, "this type has no description: write KX_DECLARE_TYPE(T); beside its definition");
};

#define KX_TYPE_RECORD(keep, bRegister, ...)                                                                           \
    template <>                                                                                                        \
    struct KX_LOCAL TTypeEntry<__VA_ARGS__>                                                                            \
    {                                                                                                                  \
        inline static IType ms_type = detail::TTypeRecord<__VA_ARGS__>::Make(#__VA_ARGS__);                            \
        inline static detail::STypeEntry ms_entry = detail::TTypeRecord<__VA_ARGS__>::Enter(&ms_type, bRegister);      \
        keep KX_GATHER(kxtypeentry, #__VA_ARGS__) inline static detail::STypeEntry* ms_pEntry = &ms_entry;             \
    }

// Gives a type an identity and a description; see the head of this file. One line at namespace scope for each type,
// where the type is complete.
#define KX_DECLARE_TYPE(...)                                                                                           \
    KX_TYPE_SLOT(0, __VA_ARGS__);                                                                                      \
    KX_TYPE_RECORD(KX_GATHER_ALWAYS, true, __VA_ARGS__)

// This module's description of T.
template <class T>
inline IType* GetType()
{
    return (*const_cast<detail::STypeEntry* const volatile*>(&TTypeEntry<T>::ms_pEntry))->m_pType;
}
