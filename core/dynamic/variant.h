// A value together with the identity of its type: referred to, or owned.
//
//   ZObjectRef      m_pType, m_pData      refers; made by code that has type and address in two hands
//     ZVariantRef                         refers; an argument of any type: Format(const ZVariantRef& ...)
//       ZVariant                          owns a copy of the value, at m_pData
//         ZDynamicObject                  a tree (core/dynamic/dynamicobject.h)
//
// All are two pointers, and both are null where there is no value. A ref must not outlive what it refers to. Reading as
// a type takes exactly that type: numbers are not converted here.
//
// The memory of the values is shared by all variants of the process (core/dynamic/cellpool.h says how), so variants
// belong to one thread at a time. Without a normal allocator none may be touched that owns anything.
#pragma once

#include "core/dynamic/typeregistry.h"

#include <concepts>

class ZObjectRef;

namespace detail
{
// What code holds by address even where it asks for the value: the elements of the trees.
template <class T>
inline constexpr bool kReadByAddress = false;

struct SVariantAccess;

// Whether the values are equal: of the same type, and that by its own ==. A tree is equal if all of it is.
KX_API bool EqualValues(const ZObjectRef& left, const ZObjectRef& right);
} // namespace detail

class KX_API ZObjectRef
{
public:
    // Whether a value of the first type can be read as the second where it lies: if both are the same type. Nothing
    // can be read from null, the type of no value.
    static bool CanConvert(STypeID* pFrom, STypeID* pTo) { return pFrom == pTo && pFrom != nullptr; }

    // The type and the address of the value, both null where there is none. What is at the address is not to be changed
    // by way of a variant: it may be more than the value.
    STypeID* Type() const { return m_pType; }
    const void* Data() const { return m_pData; }

    // The value read as T, a copy. Takes the debug break unless CanConvert holds. An element of a tree, ZDynamicObject
    // or SDynamicObjectKeyValuePair, is not copied: the result is its address.
    template <class T>
    KX_LOCAL auto As() const
    {
        detail::BreakUnless(CanConvert(m_pType, GetTypeID<T>()));
        if constexpr (detail::kReadByAddress<T>)
            return static_cast<T*>(m_pData);
        else
            return T(*static_cast<const T*>(m_pData));
    }

protected:
    friend struct detail::SVariantAccess;

    ZObjectRef() = default;
    ZObjectRef(void* pData, STypeID* const pType) : m_pType(pType), m_pData(pData) {}

    STypeID* m_pType = nullptr;
    void* m_pData = nullptr;
};

// A reference to a value of any type that has an identity.
class KX_API ZVariantRef : public ZObjectRef
{
public:
    // Refers to nothing.
    ZVariantRef() = default;

    // Refers to the caller's object, which is read when the reference is used, not now.
    template <class T>
    requires(!std::derived_from<T, ZObjectRef>) KX_LOCAL ZVariantRef(const T& value)
        : ZObjectRef(const_cast<T*>(detail::PointerTo(value)), GetTypeID<T>())
    {
    }

protected:
    ZVariantRef(void* pData, STypeID* const pType) : ZObjectRef(pData, pType) {}
};

// The owner of a value of any type that has an identity. Values of up to 56 bytes lie in the cells that all variants
// share, others in a block of the normal allocator of their own. Copies are deep.
class KX_API ZVariant : public ZVariantRef
{
public:
    // Holds nothing, calls no allocator.
    ZVariant() = default;

    // Holds a copy of the value.
    template <class T>
    requires(!std::derived_from<T, ZObjectRef>) KX_LOCAL ZVariant(const T& value)
    {
        Set(GetTypeID<T>(), detail::PointerTo(value));
    }

    // Holds the string, whose text is taken over.
    ZVariant(ZString&& text) noexcept;

    // A tree is copied without recursion, however deep it is.
    ZVariant(const ZVariant& other);

    // Takes the value over; the source is left without one.
    ZVariant(ZVariant&& other) noexcept
        : ZVariantRef(std::exchange(other.m_pData, nullptr), std::exchange(other.m_pType, nullptr))
    {
    }

    // Destroys the value; that of a tree without recursion.
    ~ZVariant()
    {
        static_assert(sizeof(ZVariant) == 16, "the two pointers are the layout that debugger views rely on");
        if (m_pType != nullptr)
            Destroy(m_pType, m_pData);
    }

    // The new value is complete before the old one is destroyed, so it may be a part of it.
    ZVariant& operator=(const ZVariant& other);
    ZVariant& operator=(ZVariant&& other) noexcept;

    // Whether both hold equal values of the same type, or both none. Values of a type without == are not equal, not
    // even to themselves.
    bool operator==(const ZVariant& other) const { return detail::EqualValues(*this, other); }

    // Holds a copy of the value at pValue from now on; a null type stands for no value. The new value is complete
    // before the old one is destroyed. A type that no module has described takes the debug break, as does a null value;
    // resumed, the variant is left without a value.
    void Set(STypeID* pType, const void* pValue);

protected:
    ZVariant(void* pData, STypeID* const pType) : ZVariantRef(pData, pType) {}

    // Takes over a value that Copy or the like has made, and destroys the old one. The one place where a variant
    // changes its value.
    void Adopt(STypeID* pType, void* pData);

private:
    static void Destroy(STypeID* pType, void* pData);
};

template <class T>
void* detail::TContainerOperations<T>::SetAt(void* pContainer, ZObjectRef value, int32 nIndex)
{
    Array& array = Self(pContainer);
    const bool bReadable = ZObjectRef::CanConvert(value.Type(), GetTypeID<T>());
    const T* pValue = static_cast<const T*>(value.Data());
    const int64 nCount = array.Size();
    if (nIndex == nCount && bReadable)
        return &array.Add(*pValue);
    if (nIndex > nCount)
    {
        // The value may be an element, which the filling can take elsewhere.
        const std::uintptr_t nOffset = AddressOf(pValue) - AddressOf(array.Begin());
        const bool bElement = nOffset < static_cast<uint64>(nCount) * sizeof(T);
        Resize(pContainer, static_cast<uint64>(nIndex) + 1);
        if (bElement)
            pValue = reinterpret_cast<const T*>(AddressOf(array.Begin()) + nOffset);
    }
    const bool bStorable = bReadable && nIndex >= 0 && static_cast<uint64>(nIndex) < array.Size();
    BreakUnless(bStorable);
    if (!bStorable)
        return nullptr;
    T& element = array.Begin()[nIndex];
    element = *pValue;
    return &element;
}

// How ZString::Format takes its arguments.
namespace detail
{
// What stands for an argument of Format while the call lasts: the argument itself, or its text where it has no
// identity.
template <class T>
const T& FormatArgument(const T& value)
{
    return value;
}
inline ZString FormatArgument(const char* pszText)
{
    return ZString(pszText);
}
template <class T>
requires requires(const T& value)
{
    {
        value.ToString()
        } -> std::same_as<ZString>;
}
ZString FormatArgument(const T& value)
{
    return value.ToString();
}

template <std::size_t... anUnused, class... TArgs>
ZString FormatPadded(const ZString& format, std::index_sequence<anUnused...>, const TArgs&... args)
{
    return ZString::Format(format, ZVariantRef(args)..., (static_cast<void>(anUnused), ZVariantRef())...);
}
} // namespace detail

template <class... TArgs>
requires(sizeof...(TArgs) < 8) ZString ZString::Format(const ZString& format, const TArgs&... args)
{
    return detail::FormatPadded(format, std::make_index_sequence<8 - sizeof...(TArgs)>(),
                                detail::FormatArgument(args)...);
}
