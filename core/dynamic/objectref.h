// ZObjectRef: the address of a value together with the identity of its type.
#pragma once

#include "core/dynamic/typeid.h"

namespace kx::detail
{
/// Whether As<T>() returns the address of the value instead of a copy: true for the elements of trees.
template <class T>
inline constexpr bool kReadByAddress = false;

struct SVariantAccess;
} // namespace kx::detail

/// Refers to a value of any type. Two pointers, both null if there is no value; it must not outlive the value.
class KX_VISIBLE ZObjectRef
{
public:
    /// Whether a value of type pFrom can be read in place as pTo: only if both are the same type, and not null.
    static bool CanConvert(STypeID* pFrom, STypeID* pTo) { return pFrom == pTo && pFrom != nullptr; }

    /// The identity of the value's type, null if there is no value.
    STypeID* Type() const { return m_pType; }

    /// The address of the value, null if there is no value. The value must not be changed through a variant: what is
    /// stored there may be more than the value.
    const void* Data() const { return m_pData; }

    /// A copy of the value as T. Triggers the debug break unless CanConvert holds. An element of a tree, ZDynamicObject
    /// or SDynamicObjectKeyValuePair, is not copied: the result is its address.
    template <class T>
    KX_LOCAL auto As() const
    {
        kx::detail::BreakUnless(CanConvert(m_pType, GetTypeID<T>()));
        if constexpr (kx::detail::kReadByAddress<T>)
            return static_cast<T*>(m_pData);
        else
            return T(*static_cast<const T*>(m_pData));
    }

protected:
    friend struct kx::detail::SVariantAccess;

    ZObjectRef() = default;
    ZObjectRef(void* pData, STypeID* const pType) : m_pType(pType), m_pData(pData) {}

    STypeID* m_pType = nullptr;
    void* m_pData = nullptr;
};
