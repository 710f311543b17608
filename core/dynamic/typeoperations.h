// What can be done with a value of a type that is known at run time only: tables of functions on untyped storage.
#pragma once

#include "core/containers/array.h"
#include "core/dynamic/objectref.h"

#include <concepts>
#include <new>
#include <type_traits>

/// The life of a type's values, on raw storage.
struct STypeOperations
{
    void (*Construct)(void* pStorage); ///< No effect if pStorage is null. Null: no default value.
    void (*CopyConstruct)(void* pStorage, const void* pSource); ///< No effect if pStorage is null.
    void (*Destruct)(void* pObject);
    void (*Assign)(void* pTarget, const void* pSource);    ///< No effect if both are the same object.
    bool (*Equals)(const void* pLeft, const void* pRight); ///< Null if the type has no ==.
    void* m_apReserved[3];
};

/// An array as seen by code that does not know its element type.
struct SContainerOperations
{
    void* (*Begin)(void* pContainer);
    void* (*End)(void* pContainer);
    void* (*Next)(void* pContainer, void* pCursor);
    uint64 (*Size)(const void* pContainer);

    /// Stores a copy of the value at the index and returns the element. An index equal to the size appends; beyond it,
    /// the gap is first filled with default values. A negative index and a value of another type trigger the debug
    /// break, the latter after a gap was filled; if execution resumes, the result is null. The value may be an element
    /// of the array.
    void* (*SetAt)(void* pContainer, ZObjectRef value, int32 nIndex);

    void (*Clear)(void* pContainer);                     ///< Destroys the elements, keeps the buffer.
    void (*Reserve)(void* pContainer, uint64 nCapacity); ///< Never shrinks.
    void* m_pReserved;
};

static_assert(sizeof(STypeOperations) == 64 && sizeof(SContainerOperations) == 64,
              "modules that were built apart share these layouts");

namespace kx::detail
{
template <class T>
inline constexpr bool kIsArray = false;
template <class T>
inline constexpr bool kIsArray<TArray<T>> = true;

/// The operations of T. An array has the equality of its elements, and compares its size as a 32-bit number.
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
        if (pStorage == nullptr)
            return;
        const T& source = *static_cast<const T*>(pSource);
        if constexpr (kIsArray<T>)
            BreakUnless((source.Begin() == nullptr) == (source.End() == nullptr));
        ::new (pStorage) T(source);
    }

    static void Destruct(void* pObject) { static_cast<T*>(pObject)->~T(); }

    static void Assign(void* pTarget, const void* pSource)
    {
        if (pTarget != pSource)
            *static_cast<T*>(pTarget) = *static_cast<const T*>(pSource);
    }

    static bool Equals(const void* pLeft, const void* pRight)
    {
        if constexpr (kHasEquality)
        {
            const T& left = *static_cast<const T*>(pLeft);
            const T& right = *static_cast<const T*>(pRight);
            if constexpr (kIsArray<T>)
                return EqualArrays(left, right);
            else
                return left == right;
        }
        else
            return false;
    }

    static constexpr bool kHasEquality = std::equality_comparable<T>;
    static constexpr STypeOperations kOperations = {
        .Construct = std::is_default_constructible_v<T> ? &Construct : nullptr,
        .CopyConstruct = &CopyConstruct,
        .Destruct = &Destruct,
        .Assign = &Assign,
        .Equals = kHasEquality ? &Equals : nullptr,
        .m_apReserved = {},
    };

private:
    // Arrays of one buffer are equal without a look at their elements.
    static bool EqualArrays(const T& left, const T& right)
    {
        using Element = typename T::value_type;
        return left.Begin() == right.Begin()
               || (left.Size() == right.Size()
                   && detail::EqualRange(left.Begin(), left.End(), right.Begin(),
                                         [](const Element& element, const Element& other)
                                         { return element == other; }));
    }
};

/// The operations of TArray<T> as a container.
template <class T>
struct TContainerOperations
{
    using Array = TArray<T>;

    static Array& Self(void* pContainer) { return *static_cast<Array*>(pContainer); }

    static void* Begin(void* pContainer) { return Self(pContainer).Begin(); }
    static void* End(void* pContainer) { return Self(pContainer).End(); }
    static void* Next(void*, void* pCursor) { return static_cast<T*>(pCursor) + 1; }
    static uint64 Size(const void* pContainer) { return static_cast<const Array*>(pContainer)->Size(); }
    static void Clear(void* pContainer) { Self(pContainer).Clear(); }
    static void Reserve(void* pContainer, uint64 nCapacity) { Self(pContainer).Reserve(nCapacity, false); }
    static void Resize(void* pContainer, uint64 nSize)
    {
        if constexpr (std::default_initializable<T>)
            Self(pContainer).Resize(nSize);
    }

    KX_LOCAL static void* SetAt(void* pContainer, ZObjectRef value, int32 nIndex)
    {
        Array& array = Self(pContainer);
        const bool bReadable = ZObjectRef::CanConvert(value.Type(), GetTypeID<T>());
        const T* pValue = static_cast<const T*>(value.Data());
        const int64 nCount = array.Size();
        if (nIndex == nCount && bReadable)
            return &array.Add(*pValue);
        if (nIndex > nCount)
        {
            // If the value is an element, filling the gap may move it.
            const std::uintptr_t nOffset = detail::AddressOf(pValue) - detail::AddressOf(array.Begin());
            const bool bElement = nOffset < static_cast<uint64>(nCount) * sizeof(T);
            Resize(pContainer, static_cast<uint64>(nIndex) + 1);
            if (bElement)
                pValue = reinterpret_cast<const T*>(detail::AddressOf(array.Begin()) + nOffset);
        }
        const bool bStorable = bReadable && nIndex >= 0 && static_cast<uint64>(nIndex) < array.Size();
        BreakUnless(bStorable);
        if (!bStorable)
            return nullptr;
        T& element = array.Begin()[nIndex];
        element = *pValue;
        return &element;
    }

    static constexpr SContainerOperations kOperations = {&Begin, &End, &Next, &Size, &SetAt, &Clear, &Reserve, nullptr};
};
} // namespace kx::detail
