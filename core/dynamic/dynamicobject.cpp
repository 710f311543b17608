#include "core/dynamic/dynamicobject.h"

#include "core/dynamic/cellpool.h"
#include "core/dynamic/objectnode.h"

#include <algorithm>

using detail::SArrayNode;
using detail::SObjectNode;
using detail::SVariantAccess;

constinit KX_API ZDynamicObject detail::g_nullObject;

namespace
{
template <class TNode>
ZDynamicObject EmptyNode(STypeID* pType)
{
    return SVariantAccess::Adopted(pType, ::new (detail::ZCellPool::For(sizeof(TNode)).Allocate()) TNode);
}

// Room for one more. The arrays of a tree grow by doubling, from a first block for four: trees are built element by
// element more often than not.
template <class T>
void MakeRoom(TArray<T>& array)
{
    if (array.Size() == array.Capacity())
        array.Reserve(std::max<uint64>(4, uint64{array.Capacity()} * 2));
}
} // namespace

ZDynamicObject ZDynamicObject::Object()
{
    return EmptyNode<SObjectNode>(GetTypeID<TArray<SDynamicObjectKeyValuePair>>());
}

ZDynamicObject ZDynamicObject::Array()
{
    return EmptyNode<SArrayNode>(GetTypeID<TArray<ZDynamicObject>>());
}

bool ZDynamicObject::operator==(const char* pszText) const
{
    return IsValue<ZString>() && *static_cast<const ZString*>(m_pData) == pszText;
}

uint64 ZDynamicObject::Size() const
{
    if (IsArray())
        return SVariantAccess::Array(*this)->m_elements.Size();
    return IsObject() ? SVariantAccess::Object(*this)->m_properties.Size() : 0;
}

const ZDynamicObject& ZDynamicObject::Get(uint64 nIndex) const
{
    if (!IsArray())
        return detail::g_nullObject;
    const TArray<ZDynamicObject>& elements = SVariantAccess::Array(*this)->m_elements;
    return nIndex < elements.Size() ? elements.Begin()[nIndex] : detail::g_nullObject;
}

ZDynamicObject& ZDynamicObject::Append(ZDynamicObject value)
{
    if (IsNull())
    {
        *this = Array();
        if (IsNull()) // the one that stays null
            return *this;
    }
    detail::BreakUnless(IsArray());
    if (IsArray())
    {
        TArray<ZDynamicObject>& elements = SVariantAccess::Array(*this)->m_elements;
        MakeRoom(elements);
        elements.Add(std::move(value));
    }
    return *this;
}

TArray<ZDynamicObject>& ZDynamicObject::GetArrayContainer() const
{
    detail::BreakUnless(IsArray());
    return SVariantAccess::Array(*this)->m_elements;
}

const ZDynamicObject* ZDynamicObject::begin() const
{
    return IsArray() ? SVariantAccess::Array(*this)->m_elements.Begin() : nullptr;
}

const ZDynamicObject* ZDynamicObject::end() const
{
    return IsArray() ? SVariantAccess::Array(*this)->m_elements.End() : nullptr;
}

bool ZDynamicObject::TryGet(const ZString& key, ZDynamicObject& result) const
{
    const SDynamicObjectKeyValuePair* pProperty = FindProperty(key);
    if (pProperty != nullptr)
        result = pProperty->m_value;
    return pProperty != nullptr;
}

ZDynamicObject& ZDynamicObject::Store(const ZString& key, ZDynamicObject value)
{
    if (IsNull())
    {
        *this = Object();
        if (IsNull()) // the one that stays null
            return *this;
    }
    detail::BreakUnless(IsObject());
    if (IsObject())
        StoreProperty(key, &key, std::move(value));
    return *this;
}

// The key as a string is given where there is one: a copy of it is cheaper if it refers to a literal.
void ZDynamicObject::StoreProperty(std::string_view key, const ZString* pKey, ZDynamicObject&& value)
{
    if (SDynamicObjectKeyValuePair* pProperty = FindProperty(key))
    {
        pProperty->m_value = std::move(value);
        return;
    }
    SObjectNode& node = *SVariantAccess::Object(*this);
    MakeRoom(node.m_properties);
    node.m_properties.Add({pKey != nullptr ? *pKey : ZString(key), std::move(value)});
    node.m_index.Added(node.m_properties);
}

bool ZDynamicObject::Remove(const ZString& key)
{
    SDynamicObjectKeyValuePair* pProperty = FindProperty(key);
    if (pProperty == nullptr)
        return false;
    SObjectNode& node = *SVariantAccess::Object(*this);
    const uint32 nPosition = static_cast<uint32>(pProperty - node.m_properties.Begin());
    node.m_properties.Erase(pProperty);
    node.m_index.Removed(node.m_properties, nPosition);
    return true;
}

TArrayEnumerator<const SDynamicObjectKeyValuePair> ZDynamicObject::GetPropertiesEnumerator() const
{
    if (!IsObject())
        return {nullptr, nullptr};
    const TArray<SDynamicObjectKeyValuePair>& properties = SVariantAccess::Object(*this)->m_properties;
    return properties.GetEnumerator();
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
        SDynamicObjectKeyValuePair* pProperty = pNode->FindProperty(path.substr(0, nStep));
        if (pProperty == nullptr)
            return nullptr;
        if (nStep == path.size())
            return &pProperty->m_value;
        pNode = &pProperty->m_value;
        path.remove_prefix(nStep + 1);
    }
}

// The empty path has no step.
ZDynamicObject* ZDynamicObject::FindPath(const ZString& path) const
{
    return path.IsEmpty() ? const_cast<ZDynamicObject*>(this) : Walk(path);
}

bool ZDynamicObject::TryGetPath(const ZString& path, ZDynamicObject& result) const
{
    const ZDynamicObject* pNode = FindPath(path);
    if (pNode != nullptr)
        result = *pNode;
    return pNode != nullptr;
}

bool ZDynamicObject::TrySetPathImpl(const ZString& path, ZDynamicObject value)
{
    if (path.IsEmpty())
    {
        *this = std::move(value);
        return true;
    }
    const std::string_view steps = path;
    const std::size_t nLast = steps.rfind('.') + 1;
    ZDynamicObject* pParent = nLast == 0 ? this : Walk(steps.substr(0, nLast - 1));
    if (pParent == nullptr || !pParent->IsObject())
        return false;
    pParent->StoreProperty(steps.substr(nLast), nullptr, std::move(value));
    return true;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): by value, as callers hand in a lambda and nothing else
bool ZDynamicObject::TryUpdatePath(const ZString& path, std::function<bool(ZDynamicObject&)> update)
{
    ZDynamicObject* pNode = FindPath(path);
    return pNode != nullptr && update && update(*pNode);
}

bool ZDynamicObject::Validate() const
{
    if (IsArray())
        return SVariantAccess::Array(*this)->m_elements.Validate();
    if (!IsObject())
        return (m_pType == nullptr) == (m_pData == nullptr);
    const SObjectNode& node = *SVariantAccess::Object(*this);
    return node.m_properties.Validate() && node.m_index.Validate(node.m_properties);
}
