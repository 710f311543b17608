#include "core/dynamic/treebuilder.h"

#include "core/dynamic/tree.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace
{
using kx::detail::SVariantAccess;
using kx::detail::ZCellHeap;
using Tree = kx::detail::TTree<ZDynamicObject, SDynamicObjectKeyValuePair>;

template <class T>
KX_NOINLINE void Grow(TArray<T>& children)
{
    children.Reserve(std::max<uint64>(4, uint64{children.Capacity()} * 2));
}

// The children of a node, with room for one more.
template <class TNode>
auto& Growing(void* pNode)
{
    auto& children = static_cast<TNode*>(pNode)->m_children;
    if (children.Size() == children.Capacity()) [[unlikely]]
        Grow(children);
    return children;
}

template <class T>
void Trim(TArray<T>& children)
{
    if (children.Size() != children.Capacity()) [[unlikely]]
        children.Reserve(children.Size(), true);
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

inline ZDynamicObject& ZTreeBuilder::Add(STypeID* pType, void* pHeld)
{
    if (m_pArray != nullptr)
        return Growing<Tree::SArray>(m_pArray).Add(SVariantAccess::Adopted<ZDynamicObject>(pType, pHeld));
    kx::detail::BreakUnless(m_pPlace != nullptr);
    if (m_pPlace == nullptr)
        Clear();
    ZDynamicObject* pPlace = std::exchange(m_pPlace, nullptr);
    SVariantAccess::Fill(*pPlace, pType, pHeld);
    return *pPlace;
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
    const bool bExpected = m_pPlace == nullptr && !m_open.IsEmpty() && m_open.End()[-1].m_bObject;
    kx::detail::BreakUnless(bExpected);
    if (bExpected)
        m_pPlace = &Growing<Tree::SObject>(m_open.End()[-1].m_pNode).Emplace(std::move(key), ZDynamicObject()).m_value;
}

inline void ZTreeBuilder::Begin(STypeID* pType, void* pNode, bool bObject)
{
    ZDynamicObject& value = Add(pType, pNode);
    m_open.Add({&value, pNode, bObject});
    m_pArray = bObject ? nullptr : pNode;
}

void ZTreeBuilder::BeginArray(uint64 nSize)
{
    Begin(GetTypeID<TArray<ZDynamicObject>>(), Tree::NewNode<Tree::SArray>(nSize), false);
}

void ZTreeBuilder::BeginObject(uint64 nSize)
{
    Begin(GetTypeID<TArray<SDynamicObjectKeyValuePair>>(), Tree::NewNode<Tree::SObject>(nSize), true);
}

bool ZTreeBuilder::End()
{
    const bool bExpected = !m_open.IsEmpty() && m_pPlace == nullptr;
    kx::detail::BreakUnless(bExpected);
    if (!bExpected)
        return true;
    const SOpen ended = m_open.End()[-1];
    m_open.Pop();
    const SOpen* pOuter = m_open.IsEmpty() ? nullptr : m_open.End() - 1;
    m_pArray = pOuter == nullptr || pOuter->m_bObject ? nullptr : pOuter->m_pNode;
    if (!ended.m_bObject)
    {
        Trim(static_cast<Tree::SArray*>(ended.m_pNode)->m_children);
        return true;
    }
    auto* pNode = static_cast<Tree::SObject*>(ended.m_pNode);
    Trim(pNode->m_children);
    const bool bIndexed = pNode->m_children.Size() > kx::detail::kUnindexedProperties;
    if (bIndexed ? pNode->m_index.TryBuild(pNode->Keys()) : !HasRepeatedKey(*pNode)) [[likely]]
        return true;
    ZDynamicObject object = ZDynamicObject::Object();
    for (SDynamicObjectKeyValuePair& property : pNode->m_children)
        object.Set(property.m_key, std::move(property.m_value));
    *ended.m_pValue = std::move(object);
    return false;
}

ZDynamicObject ZTreeBuilder::Take()
{
    const bool bWhole = m_open.IsEmpty() && m_pPlace == nullptr;
    kx::detail::BreakUnless(bWhole);
    ZDynamicObject tree;
    if (bWhole)
        tree = std::move(m_tree);
    Clear();
    return tree;
}

void ZTreeBuilder::Clear()
{
    m_open.Clear();
    m_tree = {};
    m_pArray = nullptr;
    m_pPlace = &m_tree;
}
