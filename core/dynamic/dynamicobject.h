// ZDynamicObject: a tree of values in the manner of a parsed document.
//
//   null                nothing held
//   value               a number (float64), a bool, a ZString, or what a ZVariant brought in
//   array               TArray<ZDynamicObject>
//   object              TArray<SDynamicObjectKeyValuePair>, the properties in the order in which they were added
//
//   const ZDynamicObject ship = ZDynamicObject::Object()
//                                   .Set("name", "Walnut")
//                                   .Set("crew", 12)
//                                   .Set("hold", ZDynamicObject::Array().PushBack(1).PushBack(2));
//   int nCrew = ship["crew"].GetValueOrDefault(0);
//
// The rules:
//
// - Every number is held as float64 and can be read as any numeric type; IsValue asks for no range. A value that a
//   ZVariant brought in keeps its own type and is read as that type alone.
// - Copies are deep. Reading never changes a tree: where there is nothing, Get hands out a null object, on which the
//   next Get hands out the same. It stays null: what is written to it is dropped.
// - On a null object Set, PushBack and AssignArray begin an object or an array. On a value of another kind they take
//   the debug break, and resumed have no effect.
// - A tree may be of any depth: copying, comparing and destroying do not recurse. An object may be of any width: beyond
//   12 properties it keeps an index, so Get and Set take constant time on average; Remove takes linear time.
//
// A reference to an element or property holds until its array or object grows, loses an element or is destroyed. The
// thread and memory rules of variants apply (core/dynamic/variant.h).
#pragma once

#include "core/dynamic/variant.h"
#include "core/values/guid.h"

#include <cmath>
#include <functional>

class ZDynamicObject;
struct SDynamicObjectKeyValuePair;

KX_TYPE_SLOT(0, ZDynamicObject);
KX_TYPE_SLOT(0, SDynamicObjectKeyValuePair);
KX_TYPE_SLOT(0, TArray<ZDynamicObject>);
KX_TYPE_SLOT(0, TArray<SDynamicObjectKeyValuePair>);

template <>
inline constexpr bool detail::kReadByAddress<ZDynamicObject> = true;
template <>
inline constexpr bool detail::kReadByAddress<SDynamicObjectKeyValuePair> = true;

// How values of T are stored in a dynamic object, recognised and read back. A storable type of your own specialises
// this beside its definition, as runtime/resource/dynamicresourceid.h does:
//
//   static ZVariant Store(const T& value);                 what is held for the value
//   static bool Is(const ZDynamicObject& object);          whether Get gives a T
//   static T Get(const ZDynamicObject& object);            the value; takes the debug break where there is none
template <class T>
struct TDynamicValue;

// The types that have it: the ten numeric ones, bool, ZString, ZGuid, and those added beside it. Not char, long long or
// a pointer: say which number or text is meant.
template <class T>
concept DynamicValue = requires
{
    &TDynamicValue<T>::Store;
};

// What a dynamic object can be made of: those, C strings, variants and dynamic objects.
template <class T>
concept DynamicSource = std::constructible_from<ZDynamicObject, T&&>;

class KX_API ZDynamicObject : public ZVariant
{
public:
    // Null.
    ZDynamicObject() = default;

    // A value. A C string is copied, null is the empty text; a ZString of a literal is not, and a temporary's text is
    // taken over. A variant is held as it is.
    template <DynamicValue T>
    ZDynamicObject(const T& value) : ZVariant(TDynamicValue<T>::Store(value))
    {
    }
    ZDynamicObject(ZString&& text) noexcept : ZVariant(std::move(text)) {}
    ZDynamicObject(const char* pszText) : ZVariant(ZString(pszText)) {}
    ZDynamicObject(const ZVariant& value) : ZVariant(value) {}
    ZDynamicObject(ZVariant&& value) noexcept : ZVariant(std::move(value)) {}

    // A copy is deep; a source that was moved from is null.
    ZDynamicObject(const ZDynamicObject& other) = default;
    ZDynamicObject(ZDynamicObject&& other) noexcept = default;
    ~ZDynamicObject() = default;
    ZDynamicObject& operator=(const ZDynamicObject& other) = default;
    ZDynamicObject& operator=(ZDynamicObject&& other) noexcept = default;

    static const ZDynamicObject Null() { return {}; }
    static ZDynamicObject Object();
    static ZDynamicObject Array();

    bool IsNull() const { return m_pType == nullptr; }
    KX_LOCAL bool IsArray() const { return m_pType == GetTypeID<TArray<ZDynamicObject>>(); }
    KX_LOCAL bool IsObject() const { return m_pType == GetTypeID<TArray<SDynamicObjectKeyValuePair>>(); }

    // -- Values

    // Whether GetValue gives a T: for a numeric T any number that is held as float64, otherwise a value of exactly that
    // type; for a ZGuid and the like a string that can be read as one.
    template <class T>
    bool IsValue() const
    {
        static_assert(DynamicValue<T>, "specialise TDynamicValue for this type, or ask for one of the types it has");
        return TDynamicValue<T>::Is(*this);
    }

    // The value as T. Takes the debug break where IsValue is false; of a string that cannot be read as a ZGuid or the
    // like, the result is the empty one. A number is cut towards zero for an integer type and rounded for float32; what
    // lies outside of the type's range has a defined result: see TDynamicValue of the numbers.
    template <class T>
    T GetValue() const
    {
        static_assert(DynamicValue<T>, "specialise TDynamicValue for this type, or ask for one of the types it has");
        return TDynamicValue<T>::Get(*this);
    }

    // False where IsValue is false, and then out is untouched.
    template <DynamicValue T>
    bool TryGetValue(T& out) const
    {
        if (!IsValue<T>())
            return false;
        out = GetValue<T>();
        return true;
    }

    // The value, or the fallback where IsValue is false.
    template <DynamicValue T>
    T GetValueOrDefault(const T& fallback) const
    {
        return IsValue<T>() ? GetValue<T>() : fallback;
    }
    ZString GetValueOrDefault(const char* pszFallback) const
    {
        return IsValue<ZString>() ? GetValue<ZString>() : ZString(pszFallback);
    }

    // Trees are equal if their kinds and all their values are: arrays in order, objects by key in whatever order. A
    // number equals an operand of any numeric type that converts to it as float64; otherwise the types must be the
    // same.
    bool operator==(const ZDynamicObject& other) const { return detail::EqualValues(*this, other); }
    bool operator==(const ZVariant& other) const { return detail::EqualValues(*this, other); }
    bool operator==(const char* pszText) const;
    template <DynamicValue T>
    bool operator==(const T& value) const
    {
        if constexpr (requires { TDynamicValue<T>::Equals(*this, value); })
            return TDynamicValue<T>::Equals(*this, value);
        else
            return IsValue<T>() && GetValue<T>() == value;
    }

    // -- Arrays

    // The number of elements of an array or of properties of an object, 0 for anything else.
    uint64 Size() const;

    // The element, a null object past the end, for a negative index and on anything but an array.
    const ZDynamicObject& Get(uint64 nIndex) const;
    template <std::integral TIndex>
    const ZDynamicObject& operator[](TIndex nIndex) const
    {
        return Get(static_cast<uint64>(nIndex));
    }

    // Appends; constant time on average. The argument may be a part of this tree. On a temporary the result may be
    // moved from, so a tree that is built by a chain of calls is not copied.
    template <DynamicSource T>
    ZDynamicObject& PushBack(T&& value) &
    {
        return Append(ZDynamicObject(std::forward<T>(value)));
    }
    template <DynamicSource T>
    ZDynamicObject&& PushBack(T&& value) &&
    {
        return std::move(Append(ZDynamicObject(std::forward<T>(value))));
    }

    // The array's own storage, writable. Takes the debug break on anything but an array; there is nothing behind it
    // then.
    TArray<ZDynamicObject>& GetArrayContainer() const;

    // The elements for a range-for, none for anything but an array.
    const ZDynamicObject* begin() const;
    const ZDynamicObject* end() const;

    // Replaces the elements by the numbers, in the buffer that is there if it is large enough.
    template <DynamicValue T>
    ZDynamicObject& AssignArray(const TArray<T>& values)
    {
        if (IsNull())
            *this = Array();
        if (IsNull()) // the one that stays null
            return *this;
        detail::BreakUnless(IsArray());
        if (!IsArray())
            return *this;
        TArray<ZDynamicObject>& elements = GetArrayContainer();
        elements.Clear();
        elements.Reserve(values.Size());
        for (const T& value : values)
            elements.Add(ZDynamicObject(value));
        return *this;
    }

    // An array of function(element) for each element read as int, which takes the debug break where it is no number.
    // Null where this is no array. The function may change the source: the walk is over a copy.
    template <class TFunction>
    ZDynamicObject MapArray(TFunction&& function) const
    {
        if (!IsArray())
            return Null();
        ZDynamicObject mapped = Array();
        const TArray<ZDynamicObject> source = GetArrayContainer();
        for (const ZDynamicObject& element : source)
            mapped.PushBack(ZDynamicObject(function(element.GetValue<int>())));
        return mapped;
    }

    // -- Objects

    // The property, a null object where there is none and on anything but an object.
    ZDynamicObject& Get(const ZString& key) { return const_cast<ZDynamicObject&>(std::as_const(*this).Get(key)); }
    const ZDynamicObject& Get(const ZString& key) const;
    ZDynamicObject& operator[](const ZString& key) { return Get(key); }
    const ZDynamicObject& operator[](const ZString& key) const { return Get(key); }

    bool Contains(const ZString& key) const { return FindProperty(key) != nullptr; }

    // Copies the property out. False where there is none, or none that IsValue<T>; then the result is untouched.
    bool TryGet(const ZString& key, ZDynamicObject& result) const;
    template <DynamicValue T>
    bool TryGet(const ZString& key, T& result) const
    {
        return Get(key).TryGetValue(result);
    }

    // Replaces the property, or adds it behind the others. The value may be a part of this tree. On a temporary as
    // PushBack.
    template <DynamicSource T>
    ZDynamicObject& Set(const ZString& key, T&& value) &
    {
        return Store(key, ZDynamicObject(std::forward<T>(value)));
    }
    template <DynamicSource T>
    ZDynamicObject&& Set(const ZString& key, T&& value) &&
    {
        return std::move(Store(key, ZDynamicObject(std::forward<T>(value))));
    }
    using ZVariant::Set;

    // Removes the property; the order of the others stays. False where there is none.
    bool Remove(const ZString& key);

    // Walks the properties, none on anything but an object. Any change of the object invalidates it.
    TArrayEnumerator<const SDynamicObjectKeyValuePair> GetPropertiesEnumerator() const;

    // -- Paths: the keys from here to a node, joined by dots, as in "root.item2.prop2"
    //
    // An empty path is this node itself, and an empty step is a key like any other. There is no escape: a key with a
    // dot in it cannot be reached. A step through anything but an object leads nowhere.

    // Copies the node out. False where the path leads nowhere, or for a typed read to a node that is not IsValue<T>;
    // then the result is untouched.
    bool TryGetPath(const ZString& path, ZDynamicObject& result) const;
    template <DynamicValue T>
    bool TryGetPath(const ZString& path, T& result) const
    {
        const ZDynamicObject* pNode = FindPath(path);
        return pNode != nullptr && pNode->TryGetValue(result);
    }

    // Stores the value at the path, whatever is there, or adds the last step to the object that the others lead to.
    // False, and nothing is changed, where there is no such object.
    template <DynamicSource T>
    bool TrySetPath(const ZString& path, T&& value)
    {
        return TrySetPathImpl(path, ZDynamicObject(std::forward<T>(value)));
    }

    // Calls the function on the node itself. False where the path leads nowhere, without a call, or the function's
    // result.
    bool TryUpdatePath(const ZString& path, std::function<bool(ZDynamicObject&)> update);

    // Whether the invariants of this node hold. For tests and debugging.
    bool Validate() const;

private:
    friend struct detail::SVariantAccess;

    ZDynamicObject(STypeID* pType, void* pData) : ZVariant(pData, pType) {}

    SDynamicObjectKeyValuePair* FindProperty(std::string_view key) const;
    ZDynamicObject& Append(ZDynamicObject value);
    ZDynamicObject& Store(const ZString& key, ZDynamicObject value);
    void StoreProperty(std::string_view key, const ZString* pKey, ZDynamicObject&& value);
    ZDynamicObject* Walk(std::string_view path) const;
    ZDynamicObject* FindPath(const ZString& path) const;
    bool TrySetPathImpl(const ZString& path, ZDynamicObject value);
};

// A property of an object.
struct SDynamicObjectKeyValuePair
{
    ZString m_key;
    ZDynamicObject m_value;
};

static_assert(sizeof(ZDynamicObject) == 16 && sizeof(SDynamicObjectKeyValuePair) == 32,
              "a walk that does not know the types steps by these sizes");

namespace detail
{
// What is handed out where there is nothing. It holds no value, and what is written to it is dropped.
extern KX_API ZDynamicObject g_nullObject;

// Up to so many properties are looked through in order; an object of more has an index.
inline constexpr uint32 kUnindexedProperties = 12;

// The same as FindProperty, by the index.
KX_PURE KX_API SDynamicObjectKeyValuePair* FindIndexed(const TArray<SDynamicObjectKeyValuePair>& properties,
                                                       std::string_view key);

// The property of an object, null where there is none. In the caller's code, and in one piece, for the sake of
// literals: the compiler then has the length and the characters of the key in front of it, and needs two comparisons.
// Other keys of one object tend to begin alike, so the last character is looked at before the others.
inline SDynamicObjectKeyValuePair* FindProperty(const TArray<SDynamicObjectKeyValuePair>& properties,
                                                std::string_view key)
{
    using Traits = std::char_traits<char>;
    if (properties.End() - properties.Begin() > int64{kUnindexedProperties})
        return FindIndexed(properties, key);
    const std::size_t nSize = key.size();
    for (const SDynamicObjectKeyValuePair& property : properties)
    {
        const std::string_view other = property.m_key;
        if (other.size() == nSize
            && (KX_KNOWN(nSize) ? Traits::compare(other.data(), key.data(), nSize) == 0
                                : nSize == 0
                                      || (other[nSize - 1] == key[nSize - 1]
                                          && Traits::compare(other.data(), key.data(), nSize - 1) == 0)))
            return const_cast<SDynamicObjectKeyValuePair*>(&property);
    }
    return nullptr;
}
} // namespace detail

inline SDynamicObjectKeyValuePair* ZDynamicObject::FindProperty(std::string_view key) const
{
    if (!IsObject())
        return nullptr;
    return detail::FindProperty(*static_cast<const TArray<SDynamicObjectKeyValuePair>*>(m_pData), key);
}

inline const ZDynamicObject& ZDynamicObject::Get(const ZString& key) const
{
    const SDynamicObjectKeyValuePair* pProperty = FindProperty(key);
    return pProperty != nullptr ? pProperty->m_value : detail::g_nullObject;
}

KX_TYPE_RECORD(, false, TArray<ZDynamicObject>);
KX_TYPE_RECORD(, false, TArray<SDynamicObjectKeyValuePair>);

namespace detail
{
// A number cut towards zero. Outside of the range of the result, and for NaN, it is the lowest one, as the processors'
// own conversion has it; here that is so on every processor. The lowest one itself needs no conversion then.
inline int32 CutTo32(float64 fNumber)
{
    return std::fabs(fNumber) < 2147483648.0 ? static_cast<int32>(fNumber) : INT32_MIN;
}
inline int64 CutTo64(float64 fNumber)
{
    return std::fabs(fNumber) < 9223372036854775808.0 ? static_cast<int64>(fNumber) : INT64_MIN;
}

template <class T>
T CutTo(float64 fNumber)
{
    if constexpr (std::is_floating_point_v<T>)
        return static_cast<T>(fNumber);
    else if constexpr (std::is_same_v<T, uint64>)
        // Above the signed range there is a second half; a negative number goes round.
        return fNumber >= 9223372036854775808.0 && fNumber < 18446744073709551616.0
                   ? static_cast<uint64>(fNumber)
                   : static_cast<uint64>(CutTo64(fNumber));
    else if constexpr (std::is_unsigned_v<T> || sizeof(T) == 8)
        return static_cast<T>(CutTo64(fNumber));
    else
        return static_cast<T>(CutTo32(fNumber));
}

// Any number is stored as float64. int8, int16 and int32 are read through 32 bits and the unsigned types and int64
// through 64, and then cut to the low bits of the type: 300 read as uint8 is 44, 2^32 - 1 read as int32 is -2^31.
template <class T>
struct TDynamicNumber
{
    static ZVariant Store(T value) { return ZVariant(static_cast<float64>(value)); }
    KX_LOCAL static bool Is(const ZVariant& held)
    {
        return held.Type() == GetTypeID<float64>() || ZObjectRef::CanConvert(held.Type(), GetTypeID<T>());
    }
    KX_LOCAL static T Get(const ZVariant& held)
    {
        if (held.Type() == GetTypeID<float64>())
            return CutTo<T>(*static_cast<const float64*>(held.Data()));
        return held.As<T>();
    }
    KX_LOCAL static bool Equals(const ZVariant& held, T value)
    {
        if (held.Type() == GetTypeID<float64>())
            return *static_cast<const float64*>(held.Data()) == static_cast<float64>(value);
        return EqualValues(held, ZVariantRef(value));
    }
};

// Stored as it is.
template <class T>
struct TDynamicPlain
{
    static ZVariant Store(const T& value) { return ZVariant(value); }
    KX_LOCAL static bool Is(const ZVariant& held) { return ZObjectRef::CanConvert(held.Type(), GetTypeID<T>()); }
    KX_LOCAL static T Get(const ZVariant& held) { return held.As<T>(); }
    KX_LOCAL static bool Equals(const ZVariant& held, const T& value) { return EqualValues(held, ZVariantRef(value)); }
};
} // namespace detail

template <>
struct TDynamicValue<int8> : detail::TDynamicNumber<int8>
{
};
template <>
struct TDynamicValue<int16> : detail::TDynamicNumber<int16>
{
};
template <>
struct TDynamicValue<int32> : detail::TDynamicNumber<int32>
{
};
template <>
struct TDynamicValue<int64> : detail::TDynamicNumber<int64>
{
};
template <>
struct TDynamicValue<uint8> : detail::TDynamicNumber<uint8>
{
};
template <>
struct TDynamicValue<uint16> : detail::TDynamicNumber<uint16>
{
};
template <>
struct TDynamicValue<uint32> : detail::TDynamicNumber<uint32>
{
};
template <>
struct TDynamicValue<uint64> : detail::TDynamicNumber<uint64>
{
};
template <>
struct TDynamicValue<float32> : detail::TDynamicNumber<float32>
{
};
template <>
struct TDynamicValue<float64> : detail::TDynamicNumber<float64>
{
};
template <>
struct TDynamicValue<bool> : detail::TDynamicPlain<bool>
{
};
template <>
struct TDynamicValue<ZString> : detail::TDynamicPlain<ZString>
{
};

// A ZGuid is stored as its text.
template <>
struct TDynamicValue<ZGuid>
{
    static ZVariant Store(const ZGuid& guid) { return ZVariant(guid.ToString()); }
    static bool Is(const ZDynamicObject& object)
    {
        ZGuid guid;
        return object.IsValue<ZString>() && guid.FromString(*static_cast<const ZString*>(object.Data()));
    }
    static ZGuid Get(const ZDynamicObject& object)
    {
        ZGuid guid;
        guid.FromString(object.GetValue<ZString>());
        return guid;
    }
};
