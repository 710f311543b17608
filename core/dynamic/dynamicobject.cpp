#include "core/dynamic/dynamicobject.h"

#include "core/dynamic/tree.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace
{
using kx::detail::SVariantAccess;
using Tree = kx::detail::TTree<ZDynamicObject, SDynamicObjectKeyValuePair>;

static_assert(sizeof(SDynamicObjectKeyValuePair) == kx::detail::ZPropertyIndex::kPropertySize
                  && kx::detail::kUnindexedProperties == kx::detail::ZPropertyIndex::kUnindexed,
              "the index goes by these numbers");

Tree::SArray& ArrayOf(const ZVariant& variant)
{
    return *static_cast<Tree::SArray*>(SVariantAccess::Held(variant));
}

Tree::SObject& ObjectOf(const ZVariant& variant)
{
    return *static_cast<Tree::SObject*>(SVariantAccess::Held(variant));
}

// Null for anything but an object, too.
SDynamicObjectKeyValuePair* FindIn(const ZDynamicObject& object, std::string_view key)
{
    return object.IsObject() ? Tree::FindProperty(ObjectOf(object), key) : nullptr;
}

template <class TNode>
ZDynamicObject EmptyNode(STypeID* pType)
{
    return SVariantAccess::Adopted<ZDynamicObject>(pType, Tree::NewNode<TNode>(0));
}

// Room for one more. The arrays of a tree grow by doubling, from a first block for four: trees are built element by
// element more often than not.
template <class T>
void MakeRoom(TArray<T>& array)
{
    if (array.Size() == array.Capacity())
        array.Reserve(std::max<uint64>(4, uint64{array.Capacity()} * 2));
}
// Makes the property the last one; the others keep their order. A property is what its bytes are, wherever they lie, so
// they are moved without a look at each.
void MoveToEnd(TArray<SDynamicObjectKeyValuePair>& properties, SDynamicObjectKeyValuePair* pProperty)
{
    using Bytes = std::array<std::byte, sizeof(SDynamicObjectKeyValuePair)>;
    Bytes* const pBytes = reinterpret_cast<Bytes*>(pProperty);
    std::rotate(pBytes, pBytes + 1, reinterpret_cast<Bytes*>(properties.End()));
}
} // namespace

KX_KNOWN_TYPE(SArrayType, &Tree::kValues[Tree::kArray], TArray<ZDynamicObject>);
KX_KNOWN_TYPE(SObjectType, &Tree::kValues[Tree::kObject], TArray<SDynamicObjectKeyValuePair>);
KX_KNOWN_TYPE(SElementType, &Tree::kValues[Tree::kElement], ZDynamicObject);
KX_KNOWN_TYPE(SPropertyType, &Tree::kValues[Tree::kProperty], SDynamicObjectKeyValuePair);

SDynamicObjectKeyValuePair* kx::detail::FindProperty(const ZDynamicObject& object, std::string_view key)
{
    return Tree::FindProperty(ObjectOf(object), key);
}

ZDynamicObject ZDynamicObject::Object()
{
    return EmptyNode<Tree::SObject>(GetTypeID<TArray<SDynamicObjectKeyValuePair>>());
}

ZDynamicObject ZDynamicObject::Array()
{
    return EmptyNode<Tree::SArray>(GetTypeID<TArray<ZDynamicObject>>());
}

EDynamicKind ZDynamicObject::Kind() const
{
    if (IsNull())
        return EDynamicKind::Null;
    if (IsArray() || IsObject())
        return IsArray() ? EDynamicKind::Array : EDynamicKind::Object;
    if (IsValue<bool>() || IsValue<ZString>())
        return IsValue<bool>() ? EDynamicKind::Boolean : EDynamicKind::String;
    const bool bNumber = IsValue<int8>() || IsValue<int16>() || IsValue<int32>() || IsValue<int64>() || IsValue<uint8>()
                         || IsValue<uint16>() || IsValue<uint32>() || IsValue<uint64>() || IsValue<float32>();
    return bNumber ? EDynamicKind::Number : EDynamicKind::Other;
}

bool ZDynamicObject::operator==(const char* pszText) const
{
    return IsValue<ZString>() && *static_cast<const ZString*>(m_pData) == pszText;
}

uint64 ZDynamicObject::Size() const
{
    if (IsArray())
        return ArrayOf(*this).m_children.Size();
    return IsObject() ? ObjectOf(*this).m_children.Size() : 0;
}

const ZDynamicObject& ZDynamicObject::Get(uint64 nIndex) const
{
    if (!IsArray())
        return kx::detail::SharedNull();
    const TArray<ZDynamicObject>& elements = ArrayOf(*this).m_children;
    return nIndex < elements.Size() ? elements.Begin()[nIndex] : kx::detail::SharedNull();
}

ZDynamicObject& ZDynamicObject::Append(ZDynamicObject value)
{
    if (IsNull())
    {
        *this = Array();
        if (IsNull()) // it was the shared null object
            return *this;
    }
    kx::detail::BreakUnless(IsArray());
    if (IsArray())
    {
        kx::detail::BreakIfPart(*this, value.Type(), value.Data());
        TArray<ZDynamicObject>& elements = ArrayOf(*this).m_children;
        MakeRoom(elements);
        elements.Add(std::move(value));
    }
    return *this;
}

void ZDynamicObject::InsertAt(uint64 nIndex, ZDynamicObject value)
{
    const bool bInside = IsArray() && nIndex <= Size();
    kx::detail::BreakUnless(bInside);
    if (!bInside)
        return;
    kx::detail::BreakIfPart(*this, value.Type(), value.Data());
    TArray<ZDynamicObject>& elements = ArrayOf(*this).m_children;
    MakeRoom(elements);
    elements.Insert(elements.Begin() + nIndex, std::move(value));
}

bool ZDynamicObject::RemoveAt(uint64 nIndex)
{
    if (!IsArray() || nIndex >= Size())
        return false;
    TArray<ZDynamicObject>& elements = ArrayOf(*this).m_children;
    elements.Erase(elements.Begin() + nIndex);
    return true;
}

void ZDynamicObject::Clear()
{
    kx::detail::BreakUnless(IsArray() || IsObject());
    if (IsArray() || IsObject())
        *this = IsArray() ? Array() : Object();
}

TArray<ZDynamicObject>& ZDynamicObject::GetArrayContainer() const
{
    kx::detail::BreakUnless(IsArray());
    return ArrayOf(*this).m_children;
}

const ZDynamicObject* ZDynamicObject::begin() const
{
    return IsArray() ? ArrayOf(*this).m_children.Begin() : nullptr;
}

const ZDynamicObject* ZDynamicObject::end() const
{
    return IsArray() ? ArrayOf(*this).m_children.End() : nullptr;
}

bool ZDynamicObject::TryGet(const ZString& key, ZDynamicObject& result) const
{
    const SDynamicObjectKeyValuePair* pProperty = FindIn(*this, key);
    if (pProperty != nullptr)
        result = pProperty->m_value;
    return pProperty != nullptr;
}

ZDynamicObject& ZDynamicObject::Store(const ZString& key, ZDynamicObject value)
{
    if (IsNull())
    {
        *this = Object();
        if (IsNull()) // it was the shared null object
            return *this;
    }
    kx::detail::BreakUnless(IsObject());
    if (IsObject())
        StoreProperty(key, &key, std::move(value));
    return *this;
}

// The key as a string is given where there is one: a copy of it is cheaper if it refers to a literal.
void ZDynamicObject::StoreProperty(std::string_view key, const ZString* pKey, ZDynamicObject&& value)
{
    if (SDynamicObjectKeyValuePair* pProperty = FindIn(*this, key))
    {
        pProperty->m_value = std::move(value);
        return;
    }
    kx::detail::BreakIfPart(*this, value.Type(), value.Data());
    Tree::SObject& node = ObjectOf(*this);
    MakeRoom(node.m_children);
    node.m_children.Add({pKey != nullptr ? *pKey : ZString(key), std::move(value)});
    node.m_index.Added(node.Keys());
}

bool ZDynamicObject::Remove(const ZString& key)
{
    SDynamicObjectKeyValuePair* pProperty = FindIn(*this, key);
    if (pProperty == nullptr)
        return false;
    TArray<SDynamicObjectKeyValuePair>& properties = ObjectOf(*this).m_children;
    ObjectOf(*this).m_index.Removing(ObjectOf(*this).Keys(), static_cast<uint32>(pProperty - properties.Begin()));
    MoveToEnd(properties, pProperty);
    properties.Erase(properties.End() - 1);
    return true;
}

TArrayEnumerator<const SDynamicObjectKeyValuePair> ZDynamicObject::GetPropertiesEnumerator() const
{
    if (!IsObject())
        return {nullptr, nullptr};
    const TArray<SDynamicObjectKeyValuePair>& properties = ObjectOf(*this).m_children;
    return properties.GetEnumerator();
}

SDynamicProperties ZDynamicObject::Properties() const
{
    if (!IsObject())
        return {nullptr, nullptr};
    const TArray<SDynamicObjectKeyValuePair>& properties = ObjectOf(*this).m_children;
    return {properties.Begin(), properties.End()};
}

// The node at the end of the steps, null where they lead nowhere.
ZDynamicObject* ZDynamicObject::Walk(std::string_view path) const
{
    const ZDynamicObject* pNode = this;
    while (true)
    {
        std::size_t nStep = 0;
        while (nStep != path.size() && path[nStep] != '.')
            ++nStep;
        SDynamicObjectKeyValuePair* pProperty = FindIn(*pNode, path.substr(0, nStep));
        if (pProperty == nullptr)
            return nullptr;
        if (nStep == path.size())
            return &pProperty->m_value;
        pNode = &pProperty->m_value;
        path.remove_prefix(nStep + 1);
    }
}

// The empty path has no step.
ZDynamicObject* ZDynamicObject::FindPath(std::string_view path) const
{
    return path.empty() ? const_cast<ZDynamicObject*>(this) : Walk(path);
}

bool ZDynamicObject::CopyPath(std::string_view path, ZDynamicObject& result) const
{
    const ZDynamicObject* pNode = FindPath(path);
    if (pNode != nullptr)
        result = *pNode;
    return pNode != nullptr;
}

bool ZDynamicObject::TrySetPathImpl(std::string_view path, ZDynamicObject value)
{
    if (path.empty())
    {
        *this = std::move(value);
        return true;
    }
    const std::size_t nLast = path.rfind('.') + 1;
    ZDynamicObject* pParent = nLast == 0 ? this : Walk(path.substr(0, nLast - 1));
    if (pParent == nullptr || !pParent->IsObject())
        return false;
    pParent->StoreProperty(path.substr(nLast), nullptr, std::move(value));
    return true;
}

bool ZDynamicObject::Validate() const
{
    if (IsArray())
        return ArrayOf(*this).m_children.Validate();
    if (!IsObject())
        return (m_pType == nullptr) == (m_pData == nullptr);
    const Tree::SObject& node = ObjectOf(*this);
    return node.m_children.Validate() && node.m_index.Validate(node.Keys());
}
