// ZDynamicObject: a tree of values in the manner of a parsed document.
//
//   null                no value
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
// - Every number is held as float64 and can be read as any numeric type; IsValue does not check ranges. A value that a
//   ZVariant brought in keeps its own type and is read as that type only.
// - Copies are deep. Reading never changes a tree: if there is nothing, Get returns a null object, and so does Get on
//   that one. Writing to that object triggers the debug break, and has no effect if execution resumes.
// - Set, PushBack and AssignArray turn a null object into an object or an array. On any other kind of value they
//   trigger the debug break, and have no effect if execution resumes.
// - A tree may have any depth: copying and destroying do not recurse, and comparing recurses to a depth of 256 and no
//   further. Values of your own types are copied, compared and destroyed by their own functions.
// - An object may have any number of properties: with more than 12 it has an index, so that Get and Set take constant
//   time on average, whoever chose the keys. Remove takes linear time in the number of properties there are.
// - A tree must not be moved into a part of itself, as by o["key"] = std::move(o). That triggers the debug break; if
//   execution resumes, the tree holds itself and is never freed.
//
// A reference to an element or property stays valid until its array or object grows, loses an element or is destroyed.
// The thread and memory rules of variants apply (core/dynamic/variant.h).
#pragma once

#include "core/dynamic/dynamicvalue.h"
#include "core/dynamic/format.h"
#include "core/dynamic/variant.h"

#include <concepts>
#include <cstddef>
#include <string_view>
#include <type_traits>

KX_TYPE_SLOT(NotBuiltIn, ZDynamicObject);
KX_TYPE_SLOT(NotBuiltIn, SDynamicObjectKeyValuePair);
KX_TYPE_SLOT(NotBuiltIn, TArray<ZDynamicObject>);
KX_TYPE_SLOT(NotBuiltIn, TArray<SDynamicObjectKeyValuePair>);

template <>
inline constexpr bool kx::detail::kReadByAddress<ZDynamicObject> = true;
template <>
inline constexpr bool kx::detail::kReadByAddress<SDynamicObjectKeyValuePair> = true;

/// What a dynamic object is. Number is any number, also one of a type that a variant brought in; Other is any other
/// value of a variant.
enum class EDynamicKind : uint8
{
    Null,
    Boolean,
    Number,
    String,
    Array,
    Object,
    Other
};

/// The properties of an object, in order.
struct SDynamicProperties
{
    const SDynamicObjectKeyValuePair* begin() const { return m_pBegin; }
    const SDynamicObjectKeyValuePair* end() const { return m_pEnd; }

    const SDynamicObjectKeyValuePair* m_pBegin;
    const SDynamicObjectKeyValuePair* m_pEnd;
};

/// What a dynamic object can be made of: the types of DynamicValue, C strings, variants and dynamic objects.
template <class T>
concept DynamicSource = std::constructible_from<ZDynamicObject, T&&>;

namespace kx::detail
{
// Characters by which a property is looked up without a ZString of its key.
template <class T>
concept CPropertyName = CTextFor<T, ZString> && !CConvertsTo<T, ZString>;

template <class T>
ZString NameOf(const T& name)
{
    const ZLookUpText text(name);
    return SFormatText::Refer({text.Chars(), text.Length()});
}
} // namespace kx::detail

/// A tree of values; see the head of this file.
class KX_VISIBLE ZDynamicObject : public ZVariant
{
public:
    /// Null.
    ZDynamicObject() = default;

    /// A value. A C string is copied, and a null one is the empty string; a ZString of a literal is not copied, and a
    /// temporary ZString is taken over. A variant is held as it is. nullptr is null.
    template <DynamicValue T>
    ZDynamicObject(const T& value) : ZVariant(TDynamicValue<T>::Store(value))
    {
    }
    ZDynamicObject(ZString&& text) noexcept : ZVariant(std::move(text)) {}
    ZDynamicObject(const char* pszText) : ZVariant(ZString(pszText)) {}
    ZDynamicObject(std::nullptr_t) {}
    ZDynamicObject(const ZVariant& value) : ZVariant(value) {}
    ZDynamicObject(ZVariant&& value) noexcept : ZVariant(std::move(value)) {}

    /// Copies are deep. A moved-from object is null.
    ZDynamicObject(const ZDynamicObject& other) = default;
    ZDynamicObject(ZDynamicObject&& other) noexcept = default;
    ~ZDynamicObject() = default;
    ZDynamicObject& operator=(const ZDynamicObject& other) = default;
    ZDynamicObject& operator=(ZDynamicObject&& other) noexcept = default;

    /// A null object, an empty object, an empty array.
    static const ZDynamicObject Null() { return {}; }
    KX_API static ZDynamicObject Object();
    KX_API static ZDynamicObject Array();

    bool IsNull() const { return m_pType == nullptr; }
    KX_LOCAL bool IsArray() const { return m_pType == GetTypeID<TArray<ZDynamicObject>>(); }
    KX_LOCAL bool IsObject() const { return m_pType == GetTypeID<TArray<SDynamicObjectKeyValuePair>>(); }

    /// For a switch over everything that a node can be.
    KX_API EDynamicKind Kind() const;

    // ---- Values

    /// Whether GetValue returns a T: for a numeric T any number that is held as float64, otherwise a value of exactly
    /// that type; for a ZGuid and the like a string that can be read as one.
    template <class T>
    bool IsValue() const
    {
        static_assert(DynamicValue<T>, "specialise TDynamicValue for this type, or ask for one of the types it has");
        return TDynamicValue<T>::Is(*this);
    }

    /// The value as T. Triggers the debug break if IsValue is false; a string that cannot be read as a ZGuid or the
    /// like yields the empty one. A number is truncated towards zero for an integer type and rounded for float32; for
    /// numbers outside the range of the type see kx::detail::TruncateTo.
    template <class T>
    T GetValue() const
    {
        static_assert(DynamicValue<T>, "specialise TDynamicValue for this type, or ask for one of the types it has");
        return TDynamicValue<T>::Get(*this);
    }

    /// Stores the value in out. If IsValue is false, returns false and leaves out untouched.
    template <DynamicValue T>
    bool TryGetValue(T& out) const
    {
        if (!IsValue<T>())
            return false;
        out = GetValue<T>();
        return true;
    }

    /// The value, or the fallback if IsValue is false.
    template <DynamicValue T>
    T GetValueOrDefault(const T& fallback) const
    {
        return IsValue<T>() ? GetValue<T>() : fallback;
    }
    ZString GetValueOrDefault(const char* pszFallback) const
    {
        return IsValue<ZString>() ? GetValue<ZString>() : ZString(pszFallback);
    }

    /// Trees are equal if their kinds and all their values are: arrays in order, objects by key in any order. A number
    /// equals an operand of any numeric type that converts to the same float64; otherwise the types must be the same.
    /// An array or object equals itself even if it holds a NaN, but then not its copy. An object that was made by hand
    /// and has a key twice equals only those with the same keys in the same order.
    bool operator==(const ZDynamicObject& other) const { return kx::detail::EqualValues(*this, other); }
    bool operator==(const ZVariant& other) const { return kx::detail::EqualValues(*this, other); }
    KX_API bool operator==(const char* pszText) const;
    bool operator==(std::nullptr_t) const { return IsNull(); }
    template <DynamicValue T>
    bool operator==(const T& value) const
    {
        if constexpr (requires { TDynamicValue<T>::Equals(*this, value); })
            return TDynamicValue<T>::Equals(*this, value);
        else
            return IsValue<T>() && GetValue<T>() == value;
    }

    // ---- Arrays

    /// The number of elements of an array or of properties of an object, 0 for any other kind.
    KX_API uint64 Size() const;

    /// The element. A null object past the end, for a negative index, and for any kind but an array.
    KX_API const ZDynamicObject& Get(uint64 nIndex) const;
    template <std::integral TIndex>
    const ZDynamicObject& operator[](TIndex nIndex) const
    {
        return Get(static_cast<uint64>(nIndex));
    }

    /// Appends, in amortised constant time. The argument may be a part of this tree. On a temporary the result may be
    /// moved from, so that a chain of calls builds a tree without copying it.
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

    /// Inserts before the element at nIndex, or appends if nIndex is the size. Any other index, and any kind but an
    /// array, triggers the debug break, and nothing changes if execution resumes. The argument may be a part of this
    /// tree.
    KX_API void InsertAt(uint64 nIndex, ZDynamicObject value);

    /// Removes the element; those after it move down. Returns false if there is none.
    KX_API bool RemoveAt(uint64 nIndex);

    /// Removes all elements of an array or properties of an object. Any other kind triggers the debug break.
    KX_API void Clear();

    /// The storage of an array, writable. Triggers the debug break on any other kind, which has no such storage: there
    /// is no valid result if execution resumes.
    KX_API TArray<ZDynamicObject>& GetArrayContainer() const;

    /// The elements of an array, for a range-based for; no elements for any other kind.
    KX_API const ZDynamicObject* begin() const;
    KX_API const ZDynamicObject* end() const;

    /// Replaces the elements by the values, in the existing buffer if it is large enough.
    template <DynamicValue T>
    ZDynamicObject& AssignArray(const TArray<T>& values)
    {
        if (IsNull())
            *this = Array();
        if (IsNull()) // it was the shared null object
            return *this;
        kx::detail::BreakUnless(IsArray());
        if (!IsArray())
            return *this;
        TArray<ZDynamicObject>& elements = GetArrayContainer();
        elements.Clear();
        elements.Reserve(values.Size());
        for (const T& value : values)
            elements.Add(ZDynamicObject(value));
        return *this;
    }

    /// An array of function(element) for each element read as int, which triggers the debug break on an element that is
    /// no number. Null if this is no array. The function may change this array: the walk is over a copy.
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

    // ---- Objects

    /// The property. A null object if there is none, and for any kind but an object.
    ZDynamicObject& Get(const ZString& key) { return const_cast<ZDynamicObject&>(std::as_const(*this).Get(key)); }
    const ZDynamicObject& Get(const ZString& key) const;
    ZDynamicObject& operator[](const ZString& key) { return Get(key); }
    const ZDynamicObject& operator[](const ZString& key) const { return Get(key); }

    bool Contains(const ZString& key) const { return FindProperty(key) != nullptr; }

    /// Copies the property to result. If there is none, or none that IsValue<T>, returns false and leaves result
    /// untouched.
    KX_API bool TryGet(const ZString& key, ZDynamicObject& result) const;
    template <DynamicValue T>
    bool TryGet(const ZString& key, T& result) const
    {
        return Get(key).TryGetValue(result);
    }

    /// The same by a std::string_view, a std::string or a C string, without an allocation for the key.
    template <kx::detail::CPropertyName TName>
    ZDynamicObject& Get(const TName& name)
    {
        return Get(kx::detail::NameOf(name));
    }
    template <kx::detail::CPropertyName TName>
    const ZDynamicObject& Get(const TName& name) const
    {
        return Get(kx::detail::NameOf(name));
    }
    template <kx::detail::CPropertyName TName>
    ZDynamicObject& operator[](const TName& name)
    {
        return Get(name);
    }
    template <kx::detail::CPropertyName TName>
    const ZDynamicObject& operator[](const TName& name) const
    {
        return Get(name);
    }
    template <kx::detail::CPropertyName TName>
    bool Contains(const TName& name) const
    {
        return Contains(kx::detail::NameOf(name));
    }
    template <kx::detail::CPropertyName TName, class T>
    bool TryGet(const TName& name, T& result) const
    {
        return TryGet(kx::detail::NameOf(name), result);
    }
    template <kx::detail::CPropertyName TName>
    bool Remove(const TName& name)
    {
        return Remove(kx::detail::NameOf(name));
    }

    /// Replaces the property, or adds it after the others. The value may be a part of this tree. On a temporary as
    /// PushBack.
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

    /// Removes the property; the others keep their order. Returns false if there is none.
    KX_API bool Remove(const ZString& key);

    /// Walks the properties of an object; there are none for any other kind. Any change of the object invalidates it.
    KX_API TArrayEnumerator<const SDynamicObjectKeyValuePair> GetPropertiesEnumerator() const;

    /// The same walk, for a range-based for: for (const auto& [key, value] : object.Properties())
    KX_API SDynamicProperties Properties() const;

    // ---- Paths: the keys from here to a node, joined by dots, as in "root.item2.prop2"
    //
    // The empty path is this node itself, and an empty step is a key like any other. There is no escape: a key with a
    // dot in it cannot be reached. A step through anything but an object leads nowhere.

    /// Copies the node to result. If the path leads nowhere, or a typed read leads to a node that is not IsValue<T>,
    /// returns false and leaves result untouched.
    bool TryGetPath(const ZString& path, ZDynamicObject& result) const { return CopyPath(path, result); }
    template <DynamicValue T>
    bool TryGetPath(const ZString& path, T& result) const
    {
        return ReadPath(path, result);
    }

    /// The same for a path that is a std::string_view or a std::string, which is not copied.
    template <kx::detail::CStandardString TPath>
    bool TryGetPath(const TPath& path, ZDynamicObject& result) const
    {
        return CopyPath(path, result);
    }
    template <kx::detail::CStandardString TPath, DynamicValue T>
    bool TryGetPath(const TPath& path, T& result) const
    {
        return ReadPath(path, result);
    }

    /// Stores the value at the path, whatever is there, or adds the last step to the object that the others lead to.
    /// Returns false and changes nothing if there is no such object.
    template <DynamicSource T>
    bool TrySetPath(const ZString& path, T&& value)
    {
        return TrySetPathImpl(path, ZDynamicObject(std::forward<T>(value)));
    }
    template <kx::detail::CStandardString TPath, DynamicSource T>
    bool TrySetPath(const TPath& path, T&& value)
    {
        return TrySetPathImpl(path, ZDynamicObject(std::forward<T>(value)));
    }

    /// Calls update on the node itself and returns its result. Returns false without a call if the path leads nowhere
    /// or update is an empty function. update is anything that can be called as bool(ZDynamicObject&): a lambda, a
    /// function, a std::function, whose header this one need not include for it.
    template <class TUpdate = bool (*)(ZDynamicObject&)>
    bool TryUpdatePath(const ZString& path,
                       TUpdate update) requires std::is_invocable_r_v<bool, TUpdate&, ZDynamicObject&>
    {
        // A lambda is never empty, though it may be comparable with nullptr.
        if constexpr (std::is_constructible_v<TUpdate, std::nullptr_t> && requires { update == nullptr; })
        {
            if (update == nullptr)
                return false;
        }
        ZDynamicObject* pNode = FindPath(path);
        return pNode != nullptr && update(*pNode);
    }

    /// Whether the invariants of this node hold. For tests and debugging.
    KX_API bool Validate() const;

private:
    friend struct kx::detail::SVariantAccess;

    ZDynamicObject(STypeID* pType, void* pData) : ZVariant(pData, pType) {}

    const SDynamicObjectKeyValuePair* FindProperty(std::string_view key) const;
    KX_API ZDynamicObject& Append(ZDynamicObject value);
    KX_API ZDynamicObject& Store(const ZString& key, ZDynamicObject value);
    KX_API void StoreProperty(std::string_view key, const ZString* pKey, ZDynamicObject&& value);
    KX_API ZDynamicObject* Walk(std::string_view path) const;
    KX_API ZDynamicObject* FindPath(std::string_view path) const;
    KX_API bool CopyPath(std::string_view path, ZDynamicObject& result) const;
    KX_API bool TrySetPathImpl(std::string_view path, ZDynamicObject value);

    template <class T>
    bool ReadPath(std::string_view path, T& result) const
    {
        const ZDynamicObject* pNode = FindPath(path);
        return pNode != nullptr && pNode->TryGetValue(result);
    }
};

/// A property of an object.
struct SDynamicObjectKeyValuePair
{
    ZString m_key;
    ZDynamicObject m_value;
};

static_assert(sizeof(ZDynamicObject) == 16 && sizeof(SDynamicObjectKeyValuePair) == 32,
              "a walk that does not know the types steps by these sizes");

namespace kx::detail
{
/// What is returned if there is nothing. It holds no value, and nothing can be written to it.
inline ZDynamicObject& SharedNull()
{
    return reinterpret_cast<ZDynamicObject&>(g_acSharedNull);
}

/// The property of an object, null if there is none.
KX_PURE KX_API SDynamicObjectKeyValuePair* FindProperty(const ZDynamicObject& object, std::string_view key);

/// An object of at most so many properties is searched in order; one of more has an index.
inline constexpr uint32 kUnindexedProperties = 12;
} // namespace kx::detail

// The search is in the caller's code: for a literal key the compiler knows the length and the characters, and needs two
// comparisons for each property. Other keys of one object tend to begin alike, so their last character is compared
// before the others.
inline const SDynamicObjectKeyValuePair* ZDynamicObject::FindProperty(std::string_view key) const
{
    using Traits = std::char_traits<char>;
    if (!IsObject())
        return nullptr;
    const auto& properties = *static_cast<const TArray<SDynamicObjectKeyValuePair>*>(m_pData);
    if (properties.End() - properties.Begin() > int64{kx::detail::kUnindexedProperties})
        return kx::detail::FindProperty(*this, key);
    const std::size_t nSize = key.size();
    for (const SDynamicObjectKeyValuePair& property : properties)
    {
        const std::string_view other = property.m_key;
        if (other.size() == nSize
            && (KX_KNOWN(nSize) ? Traits::compare(other.data(), key.data(), nSize) == 0
                                : nSize == 0
                                      || (other[nSize - 1] == key[nSize - 1]
                                          && Traits::compare(other.data(), key.data(), nSize - 1) == 0)))
            return &property;
    }
    return nullptr;
}

inline const ZDynamicObject& ZDynamicObject::Get(const ZString& key) const
{
    const SDynamicObjectKeyValuePair* pProperty = FindProperty(key);
    return pProperty != nullptr ? pProperty->m_value : kx::detail::SharedNull();
}

KX_TYPE_RECORD(, false, TArray<ZDynamicObject>);
KX_TYPE_RECORD(, false, TArray<SDynamicObjectKeyValuePair>);
