#include "core/dynamic/treebuilder.h"

#include "core/dynamic/tree.h"

#include <algorithm>
#include <bit>

namespace
{
using kx::detail::SVariantAccess;
using kx::detail::ZCellHeap;
using Tree = kx::detail::TTree<ZDynamicObject, SDynamicObjectKeyValuePair>;

template <class T>
T& Push(TArray<T>& array, std::type_identity_t<T>&& value)
{
    if (array.Size() == array.Capacity()) [[unlikely]]
        array.Reserve(std::max<uint64>(64, uint64{array.Capacity()} * 2));
    return array.Add(std::move(value));
}

// A node with the elements or properties from nFirst on, which leave the array.
template <class TNode>
TNode* NodeOf(TArray<typename TNode::Child>& waiting, uint32 nFirst)
{
    TNode* pNode = Tree::NewNode<TNode>(waiting.Size() - nFirst);
    for (auto* p = waiting.Begin() + nFirst; p != waiting.End(); ++p)
        pNode->m_children.Add(std::move(*p));
    waiting.Resize(nFirst);
    return pNode;
}

// Two keys can be equal only if they have the same mark, one of 64.
uint64 MarkOf(std::string_view key)
{
    const uint64 nFirst = key.empty() ? 0 : static_cast<uint8>(key.front());
    const uint64 nLast = key.empty() ? 0 : static_cast<uint8>(key.back());
    return uint64{1} << ((key.size() + nFirst * 9 + nLast * 21) % 64);
}

// For objects without an index.
bool HasRepeatedKey(const Tree::SObject& node)
{
    uint64 nMarks = 0;
    for (const SDynamicObjectKeyValuePair& property : node.m_children)
    {
        const uint64 nMark = MarkOf(property.m_key);
        if ((nMarks & nMark) != 0 && Tree::FindProperty(node, property.m_key) != &property)
            return true;
        nMarks |= nMark;
    }
    return false;
}
} // namespace

inline void ZTreeBuilder::Add(STypeID* pType, void* pHeld)
{
    auto value = SVariantAccess::Adopted<ZDynamicObject>(pType, pHeld);
    if (m_bObject)
        m_properties.End()[-1].m_value = std::move(value);
    else
        Push(m_elements, std::move(value));
}

void ZTreeBuilder::Null()
{
    Add(nullptr, nullptr);
}

void ZTreeBuilder::Boolean(bool bValue)
{
    Add(GetTypeID<bool>(), kx::detail::NewWord(bValue ? 1 : 0));
}

void ZTreeBuilder::Number(float64 fNumber)
{
    Add(GetTypeID<float64>(), kx::detail::NewWord(std::bit_cast<uint64>(fNumber)));
}

void ZTreeBuilder::String(std::string_view text)
{
    Add(GetTypeID<ZString>(), ::new (ZCellHeap::Allocate(sizeof(ZString))) ZString(text));
}

void ZTreeBuilder::Key(ZString&& key)
{
    Push(m_properties, {std::move(key), {}});
}

void ZTreeBuilder::Begin(bool bObject)
{
    Push(m_open, {bObject ? m_properties.Size() : m_elements.Size(), bObject});
    m_bObject = bObject;
}

void ZTreeBuilder::End()
{
    const SOpen open = m_open[m_open.Size() - 1];
    m_open.Erase(m_open.End() - 1);
    m_bObject = !m_open.IsEmpty() && m_open.End()[-1].m_bObject;
    if (!open.m_bObject)
        return Add(GetTypeID<TArray<ZDynamicObject>>(), NodeOf<Tree::SArray>(m_elements, open.m_nFirst));
    Tree::SObject* pNode = NodeOf<Tree::SObject>(m_properties, open.m_nFirst);
    STypeID* pType = GetTypeID<TArray<SDynamicObjectKeyValuePair>>();
    const bool bIndexed = pNode->m_children.Size() > kx::detail::kUnindexedProperties;
    if (bIndexed ? pNode->m_index.TryBuild(pNode->Keys()) : !HasRepeatedKey(*pNode)) [[likely]]
        return Add(pType, pNode);
    const auto repeated = SVariantAccess::Adopted<ZDynamicObject>(pType, pNode);
    ZDynamicObject object = ZDynamicObject::Object();
    for (SDynamicObjectKeyValuePair& property : pNode->m_children)
        object.Set(property.m_key, std::move(property.m_value));
    Add(pType, SVariantAccess::Released(object));
}

ZDynamicObject ZTreeBuilder::Take()
{
    const bool bWhole = m_open.IsEmpty() && m_elements.Size() == 1;
    kx::detail::BreakUnless(bWhole);
    ZDynamicObject tree;
    if (bWhole)
        tree = std::move(m_elements[0]);
    Clear();
    return tree;
}

void ZTreeBuilder::Clear()
{
    m_open.Clear();
    m_elements.Clear();
    m_properties.Clear();
    m_bObject = false;
}
