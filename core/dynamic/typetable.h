// Inside kxbase: what an identity is.
#pragma once

#include "core/dynamic/typeregistry.h"

#include <string>

// The kinds of the built-in types, as their records number them.
namespace detail
{
enum class EKind : uint16
{
    None = 0,
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
    Bool = 20,
    String = 32,
};

// How a variant keeps a value of the type.
enum class EStorage : uint8
{
    Unknown, // has no operations: it cannot be kept
    Word,    // up to eight bytes that are copied as they are and need no destruction
    String,  // a ZString
    Array,   // a TArray<ZDynamicObject>, as the front of a node
    Object,  // a TArray<SDynamicObjectKeyValuePair>, as the front of a node
    Other    // by the operations of its type
};
} // namespace detail

// A module's slot points at a record before the merge and at this afterwards. It begins like a record, so that merging
// a slot again finds what is there already.
struct STypeID : STypeIDData
{
    detail::EKind Kind() const { return static_cast<detail::EKind>(m_nKind >> 16); }

    detail::EStorage m_eStorage = detail::EStorage::Unknown;
    uint16 m_nSize = 0;
    uint16 m_nAlignment = 0;
    const STypeOperations* m_pOperations = nullptr;
    const IType* m_pType = nullptr;
};
