// Type identity: one STypeID for each type in the whole process, whichever modules name the type.
//
//        a module                              kxbase                             another module
//
//   slot of T     record of T             the identity of T                    slot of T     record of T
//   +-------+     +---------+             +---------------+                    +-------+     +---------+
//   |   *-----X-->| kind    |      +----->| kind, name,   |<-----+             |   *-----X-->| kind    |
//   +---|---+     | name of |      |      | operations    |      |             +---|---+     | name of |
//       |         | T*      |      |      +---------------+      |                 |         | T*      |
//       +--------------------------+                             +-----------------+
//
// Each module that names T has a slot of its own, one word, which at first points at the module's record of T. When the
// module starts, before any of its other initialisers, its slots are overwritten with the identities: a record tells by
// its name which one it means. From then on a type test is one load of a slot and one comparison, and values may cross
// from module to module.
//
// The standard types that variants know have their slots declared here. A type of your own takes one line beside its
// definition: KX_DECLARE_TYPE of core/dynamic/typeregistry.h.
#pragma once

#include "core/dynamic/forward.h"
#include "core/platform/gather.h"
#include "core/strings/string.h"

#include <string_view>
#include <type_traits>

/// What a module says of a type. Constant data, but for the three fields that the merge works with.
struct STypeIDData
{
    uint32 m_nKind;             // in the high 16 bits: the number of a built-in type, else 0; the low 16 are zero
    void* m_pReserved2;         // null
    STypeID* m_pTypeID;         // null until the merge has found the identity
    const char* (*m_pfnName)(); // the run-time name of T*: what tells two modules that they mean the same type
    void* m_pReserved5;         // null
};

static_assert(sizeof(STypeIDData) == 40 && offsetof(STypeIDData, m_pTypeID) == 16
                  && offsetof(STypeIDData, m_pfnName) == 24,
              "modules that were built apart share this layout");

/// Merges the slots of a module, [ppFirst, ppLast). Each gets the identity of the type that its record names, a new one
/// if no module has named the type before. Null words are skipped, and a slot that is merged already stays as it is.
/// Every module does this when it starts; nobody else need call it. Identities live to the end of the process.
KX_API void SharedInitTypeIDs(STypeIDData** ppFirst, STypeIDData** ppLast);

namespace kx::detail
{
/// The built-in types, as their records number them.
enum class ETypeKind : uint16
{
    NotBuiltIn = 0,
    Int8 = 2,
    Int16 = 3,
    Int32 = 4,
    Int64 = 5,
    UInt8 = 6,
    UInt16 = 7,
    UInt32 = 8,
    UInt64 = 9,
    Float32 = 11,
    Float64 = 12,
    Boolean = 20,
    Text = 32,
};

template <class T>
inline constexpr bool kNever = false;

// Whether the compiler's name of this function, which contains that of the type, has such a namespace in it.
template <class T>
constexpr bool IsInUnnamedNamespace()
{
    constexpr std::string_view kName = __PRETTY_FUNCTION__;
    return kName.find("{anonymous}") != kName.npos || kName.find("(anonymous namespace)") != kName.npos;
}

struct STypeEntry;

// What a module does with its records when it is loaded and unloaded. See STypeEntry in core/dynamic/typeregistry.h.
KX_API void FillTypeRecords(STypeEntry** ppFirst, STypeEntry** ppLast);
KX_API void WithdrawTypeRecords(STypeEntry** ppFirst, STypeEntry** ppLast);
} // namespace kx::detail

KX_GATHERED(STypeIDData*, kxtype);
KX_GATHERED(kx::detail::STypeEntry*, kxtypeentry);

// A module's slot of T and the record it points at first. Specialised by KX_TYPE_SLOT.
template <class T>
struct TTypeSlot
{
    static_assert(!std::is_pointer_v<T> && !std::is_array_v<T>,
                  "a pointer has no identity: pass what it points at, or a ZString of a text");
    static_assert(!std::is_arithmetic_v<T>,
                  "this number has no identity: cast it to one of int8 to int64, uint8 to uint64, float32 and float64");
    static_assert(std::is_pointer_v<T> || std::is_array_v<T> || std::is_arithmetic_v<T> || kx::detail::kNever<T>,
                  "this type has no identity: write KX_DECLARE_TYPE(T); beside its definition, and include "
                  "core/dynamic/typeregistry.h there");
};

// The slot of a type. KxTypeName only lends its symbol to KX_TYPE_NAME. A specialisation and not a template's own
// static, because GCC 12 leaves such a one out of the section; hidden, because across modules the slots must not become
// one.
#define KX_TYPE_SLOT(kind, ...)                                                                                        \
    KX_LOCAL inline void KxTypeName(std::add_pointer_t<__VA_ARGS__>) {}                                                \
    template <>                                                                                                        \
    struct KX_LOCAL TTypeSlot<__VA_ARGS__>                                                                             \
    {                                                                                                                  \
        static_assert(!kx::detail::IsInUnnamedNamespace<__VA_ARGS__>(),                                                \
                      "a type in an unnamed namespace cannot have an identity: types of the same name in other "       \
                      "sources would be taken for it. Put it into a named namespace");                                 \
        KX_TYPE_NAME(Name, KxTypeName, std::add_pointer_t<__VA_ARGS__>)                                                \
        inline static STypeIDData ms_data = {static_cast<uint32>(kx::detail::ETypeKind::kind) << 16, nullptr, nullptr, \
                                             &Name, nullptr};                                                          \
        KX_GATHERED_WORD(kxtype, STypeIDData*, ms_pSlot, Slot, &ms_data);                                              \
    }

KX_TYPE_SLOT(Int8, int8);
KX_TYPE_SLOT(Int16, int16);
KX_TYPE_SLOT(Int32, int32);
KX_TYPE_SLOT(Int64, int64);
KX_TYPE_SLOT(UInt8, uint8);
KX_TYPE_SLOT(UInt16, uint16);
KX_TYPE_SLOT(UInt32, uint32);
KX_TYPE_SLOT(UInt64, uint64);
KX_TYPE_SLOT(Float32, float32);
KX_TYPE_SLOT(Float64, float64);
KX_TYPE_SLOT(Boolean, bool);
KX_TYPE_SLOT(Text, ZString);

/// Returns the identity of T. Reads this module's slot on every call, because another module writes it. Not to be
/// called before the module has started, which is before its first initialiser.
//
// A library starts before the program that it is linked to. KX_LOCAL here, and on what calls this, keeps a library
// whose inline functions are visible to others from being given those of the program, whose slots are not merged by
// then. A library that makes values before the program has started is best compiled with hidden visibility throughout.
template <class T>
KX_LOCAL inline STypeID* GetTypeID()
{
    static_assert(std::is_same_v<T, std::remove_cv_t<T>>, "identity is that of the type without const and volatile");
    return reinterpret_cast<STypeID*>(*TTypeSlot<T>::Slot());
}

namespace kx::detail
{
// Starts the types of the module that it is compiled into. Whoever includes this header has one of it, hidden, so there
// is one for each module.
struct KX_LOCAL STypeStart
{
    STypeStart()
    {
        ::SharedInitTypeIDs(KX_GATHER_BEGIN(kxtype), KX_GATHER_END(kxtype));
        detail::FillTypeRecords(KX_GATHER_BEGIN(kxtypeentry), KX_GATHER_END(kxtypeentry));
    }
};

KX_LOCAL KX_INIT_FIRST inline const STypeStart g_typeStart;

KX_AT_UNLOAD(EndTypes)
{
    detail::WithdrawTypeRecords(KX_GATHER_BEGIN(kxtypeentry), KX_GATHER_END(kxtypeentry));
}
} // namespace kx::detail
