#include "core/dynamic/dynamicobject.h"

#include "core/dynamic/cellpool.h"
#include "core/dynamic/objectnode.h"

#include <algorithm>

using detail::SArrayNode;
using detail::SObjectNode;
using detail::SVariantAccess;

constinit ZDynamicObject detail::g_nullObject;

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

SDynamicObjectKeyValuePair* FindProperty(const ZDynamicObject& object, std::string_view key)
{
    if (!object.IsObject())
        return nullptr;
    SObjectNode& node = *SVariantAccess::Object(object);
    const uint32 nPosition = node.m_index.Find(node.m_properties, key);
    return nPosition != detail::ZPropertyIndex::kMissing ? node.m_properties.Begin() + nPosition : nullptr;
}

void StoreProperty(SObjectNode& node, std::string_view key, const ZString* pKey, ZDynamicObject&& value)
{
    const uint32 nPosition = node.m_index.Find(node.m_properties, key);
    if (nPosition != detail::ZPropertyIndex::kMissing)
    {
        node.m_properties.Begin()[nPosition].m_value = std::move(value);
        return;
    }
    MakeRoom(node.m_properties);
    node.m_properties.Add({pKey != nullptr ? *pKey : ZString(key), std::move(value)});
    node.m_index.Added(node.m_properties);
}

// What stands behind the last dot.
std::string_view LastStep(std::string_view path)
{
    return path.substr(path.rfind('.') + 1);
}

// The node at the end of the steps, null where they lead nowhere. The empty path has no step.
ZDynamicObject* Walk(ZDynamicObject* pNode, std::string_view path)
{
    while (true)
    {
        const std::size_t nStep = std::min(path.find('.'), path.size());
        SDynamicObjectKeyValuePair* pProperty = FindProperty(*pNode, path.substr(0, nStep));
        if (pProperty == nullptr)
            return nullptr;
        pNode = &pProperty->m_value;
        if (nStep == path.size())
            return pNode;
        path.remove_prefix(nStep + 1);
    }
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

ZDynamicObject& ZDynamicObject::Get(const ZString& key)
{
    SDynamicObjectKeyValuePair* pProperty = FindProperty(*this, key);
    return pProperty != nullptr ? pProperty->m_value : detail::g_nullObject;
}

const ZDynamicObject& ZDynamicObject::Get(const ZString& key) const
{
    const SDynamicObjectKeyValuePair* pProperty = FindProperty(*this, key);
    return pProperty != nullptr ? pProperty->m_value : detail::g_nullObject;
}

bool ZDynamicObject::Contains(const ZString& key) const
{
    return FindProperty(*this, key) != nullptr;
}

bool ZDynamicObject::TryGet(const ZString& key, ZDynamicObject& result) const
{
    const SDynamicObjectKeyValuePair* pProperty = FindProperty(*this, key);
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
        StoreProperty(*SVariantAccess::Object(*this), key, &key, std::move(value));
    return *this;
}

bool ZDynamicObject::Remove(const ZString& key)
{
    SDynamicObjectKeyValuePair* pProperty = FindProperty(*this, key);
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

ZDynamicObject* ZDynamicObject::FindPath(const ZString& path) const
{
    ZDynamicObject* pNode = const_cast<ZDynamicObject*>(this);
    return path.IsEmpty() ? pNode : Walk(pNode, path);
}

bool ZDynamicObject::TryGetPath(const ZString& path, ZDynamicObject& result) const
{
    const ZDynamicObject* pNode = FindPath(path);
    if (pNode != nullptr)
        result = *pNode;
    return pNode != nullptr;
}

bool ZDynamicObject::TrySetPathImpl(const ZString& path, const ZDynamicObject& value)
{
    if (path.IsEmpty())
    {
        *this = value;
        return true;
    }
    const std::string_view steps = path;
    const std::string_view last = LastStep(steps);
    ZDynamicObject* pParent = this;
    if (last.size() != steps.size())
        pParent = Walk(this, steps.substr(0, steps.size() - last.size() - 1));
    if (pParent == nullptr || !pParent->IsObject())
        return false;
    StoreProperty(*SVariantAccess::Object(*pParent), last, nullptr, ZDynamicObject(value));
    return true;
}

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
