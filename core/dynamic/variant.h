// ZVariantRef and ZVariant: a value of any type together with the identity of the type, referred to or owned.
//
//   ZObjectRef      m_pType, m_pData      refers; made by code that has a type and an address
//     ZVariantRef                         refers; an argument of any type: Format(const ZVariantRef& ...)
//       ZVariant                          owns a copy of the value, at m_pData
//         ZDynamicObject                  a tree (core/dynamic/dynamicobject.h)
//
// Each is two pointers, and both are null if there is no value. A reference must not outlive what it refers to. A value
// is read as exactly its own type: numbers are not converted here.
//
// The values lie in cells that each thread keeps for itself (core/dynamic/cellpool.h says how). A variant may be built
// by one thread and read, changed or destroyed by another, as long as no two do so at once. A variant that owns
// anything needs a normal allocator.
#pragma once

#include "core/dynamic/objectref.h"
#include "core/dynamic/typeregistry.h"
#include "core/strings/text.h"

#include <concepts>
#include <utility>

namespace kx::detail
{
/// Whether the values are equal: of the same type, by the == of that type. Trees are equal if all of their values are.
KX_API bool EqualValues(const ZObjectRef& left, const ZObjectRef& right);

/// Sixteen zero bytes: the object that is returned where a tree has nothing. Nothing can be stored in it.
alignas(8) extern KX_API unsigned char g_acSharedNull[16];

/// Returns a cell that holds the word.
KX_API void* NewWordCell(uint64 nWord);

/// The types whose values are words, copied as they are. Every program knows them from the start.
template <class T>
constexpr bool kIsWord = kIsOneOf<T, bool, int8, int16, int32, int64, uint8, uint16, uint32, uint64, float32, float64>;

/// Returns what a cell holds for the value: its bytes, then zeros.
template <class T>
uint64 WordOfValue(const T& value)
{
    uint64 nWord = 0;
    __builtin_memcpy(&nWord, detail::PointerTo(value), sizeof(T));
    return nWord;
}
} // namespace kx::detail

/// A reference to a value of any type that has an identity.
class KX_VISIBLE ZVariantRef : public ZObjectRef
{
public:
    /// Refers to nothing.
    ZVariantRef() = default;

    /// Refers to the caller's object. The object is read when the reference is used, not now.
    template <class T>
    KX_LOCAL ZVariantRef(const T& value) requires(!std::derived_from<T, ZObjectRef>)
        : ZObjectRef(const_cast<T*>(kx::detail::PointerTo(value)), GetTypeID<T>())
    {
    }

protected:
    ZVariantRef(void* pData, STypeID* const pType) : ZObjectRef(pData, pType) {}
};

/// The owner of a value of any type that has an identity. Copies are deep. A value of up to 56 bytes is stored in the
/// cells that all variants share, a larger one in a block of its own from the normal allocator.
class KX_VISIBLE ZVariant : public ZVariantRef
{
public:
    /// Holds nothing; no allocator call.
    ZVariant() = default;

    /// Holds a copy of the value.
    template <class T>
    KX_LOCAL ZVariant(const T& value) requires(!std::derived_from<T, ZObjectRef>)
    {
        if constexpr (kx::detail::kIsWord<T>)
        {
            m_pData = kx::detail::NewWordCell(kx::detail::WordOfValue(value));
            m_pType = GetTypeID<T>();
        }
        else
            Set(GetTypeID<T>(), kx::detail::PointerTo(value));
    }

    /// Holds the string, taking its characters over.
    KX_API ZVariant(ZString&& text) noexcept;

    /// Copies a tree without recursion, however deep it is.
    KX_API ZVariant(const ZVariant& other);

    /// Takes the value over; the source is left without one.
    ZVariant(ZVariant&& other) noexcept : ZVariantRef(other.m_pData, other.m_pType)
    {
        // Any thread may move from the shared null object, so an object without a value is not written to.
        if (m_pType != nullptr)
        {
            other.m_pType = nullptr;
            other.m_pData = nullptr;
        }
    }

    /// Destroys the value; a tree without recursion.
    ~ZVariant()
    {
        static_assert(sizeof(ZVariant) == 16, "the two pointers are the layout that debugger views rely on");
        if (m_pType != nullptr)
            Destroy(m_pType, m_pData);
    }

    /// Completes the new value before it destroys the old one, so the new value may be a part of the old. The other way
    /// round, a value that is moved into a part of itself, triggers the debug break.
    KX_API ZVariant& operator=(const ZVariant& other);
    KX_API ZVariant& operator=(ZVariant&& other) noexcept;

    /// Whether both hold equal values of the same type, or both hold none. Values of a type without == are not equal,
    /// not even to themselves.
    bool operator==(const ZVariant& other) const { return kx::detail::EqualValues(*this, other); }

    /// Replaces the value by a copy of the one at pValue; a null type stands for no value. The copy is complete before
    /// the old value is destroyed. A type that no module has described triggers the debug break, as does a null pValue;
    /// if execution resumes, the variant is left without a value.
    KX_API void Set(STypeID* pType, const void* pValue);

protected:
    ZVariant(void* pData, STypeID* const pType) : ZVariantRef(pData, pType) {}

    // Takes over a value that a copy has made, and destroys the old one. The one place where a variant changes its
    // value.
    KX_API void Adopt(STypeID* pType, void* pData);

private:
    KX_API static void Destroy(STypeID* pType, void* pData);
};
