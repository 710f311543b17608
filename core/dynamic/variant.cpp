#include "core/dynamic/variant.h"

#include "core/dynamic/cellpool.h"
#include "core/dynamic/objectnode.h"
#include "core/dynamic/typetable.h"

#include <cstring>

namespace
{
using detail::EStorage;
using detail::SArrayNode;
using detail::SObjectNode;
using detail::SVariantAccess;
using detail::ZCellPool;

// -- Making values

// The nodes of a tree that have been made and still have to be filled from their sources.
struct SUnfilled
{
    SArrayNode* m_pArrays = nullptr;
    SObjectNode* m_pObjects = nullptr;
};

bool FitsCell(const STypeID& type)
{
    return type.m_nSize <= ZCellPool::kMaxCell && type.m_nAlignment <= ZCellPool::kMaxAlignment;
}

void* AllocateValue(const STypeID& type)
{
    if (FitsCell(type))
        return ZCellPool::For(type.m_nSize).Allocate();
    return GetNormalAllocator()->Allocate(type.m_nSize, type.m_nAlignment, 0);
}

void FreeValue(const STypeID& type, void* pData)
{
    if (FitsCell(type))
        ZCellPool::Free(pData);
    else
        GetNormalAllocator()->Free(pData);
}

// A node with room for a copy of the source.
template <class TNode, class T>
TNode* NewNode(const TArray<T>& source)
{
    return ::new (ZCellPool::For(sizeof(TNode)).Allocate()) TNode{TArray<T>(uint64{source.Size()})};
}

// Copies the value that a variant holds. A node stays empty and joins the unfilled ones.
inline void* CopyHeld(const STypeID& type, const void* pValue, SUnfilled& unfilled)
{
    if (type.m_eStorage == EStorage::Word) [[likely]]
    {
        void* pCell = ZCellPool::For(sizeof(uint64)).Allocate();
        std::memcpy(pCell, pValue, sizeof(uint64));
        return pCell;
    }
    switch (type.m_eStorage)
    {
    case EStorage::String:
        return ::new (ZCellPool::For(sizeof(ZString)).Allocate()) ZString(*static_cast<const ZString*>(pValue));
    case EStorage::Array:
    {
        const SArrayNode* pSource = static_cast<const SArrayNode*>(pValue);
        SArrayNode* pNode = NewNode<SArrayNode>(pSource->m_elements);
        pNode->m_pSource = pSource;
        pNode->m_pNext = std::exchange(unfilled.m_pArrays, pNode);
        return pNode;
    }
    case EStorage::Object:
    {
        const SObjectNode* pSource = static_cast<const SObjectNode*>(pValue);
        SObjectNode* pNode = NewNode<SObjectNode>(pSource->m_properties);
        pNode->m_pSource = pSource;
        pNode->m_pNext = std::exchange(unfilled.m_pObjects, pNode);
        return pNode;
    }
    default:
    {
        void* pData = AllocateValue(type);
        type.m_pOperations->CopyConstruct(pData, pValue);
        return pData;
    }
    }
}

inline ZDynamicObject CopyElement(const ZDynamicObject& source, SUnfilled& unfilled)
{
    STypeID* pType = source.Type();
    return SVariantAccess::Adopted(pType, pType != nullptr ? CopyHeld(*pType, source.Data(), unfilled) : nullptr);
}

void FillArray(TArray<ZDynamicObject>& target, const TArray<ZDynamicObject>& source, SUnfilled& unfilled)
{
    const ZDynamicObject* pSource = source.Begin();
    target.Append(source.Size(), [&](ZDynamicObject* pStorage)
                  { ::new (pStorage) ZDynamicObject(CopyElement(*pSource++, unfilled)); });
}

void FillObject(TArray<SDynamicObjectKeyValuePair>& target, const TArray<SDynamicObjectKeyValuePair>& source,
                SUnfilled& unfilled)
{
    const SDynamicObjectKeyValuePair* pSource = source.Begin();
    target.Append(
        source.Size(),
        [&](SDynamicObjectKeyValuePair* pStorage)
        {
            const SDynamicObjectKeyValuePair& property = *pSource++;
            ::new (pStorage) SDynamicObjectKeyValuePair{property.m_key, CopyElement(property.m_value, unfilled)};
        });
}

void FillAll(SUnfilled& unfilled)
{
    while (true)
    {
        if (SArrayNode* pArray = unfilled.m_pArrays)
        {
            unfilled.m_pArrays = pArray->m_pNext;
            FillArray(pArray->m_elements, pArray->m_pSource->m_elements, unfilled);
        }
        else if (SObjectNode* pObject = unfilled.m_pObjects)
        {
            unfilled.m_pObjects = pObject->m_pNext;
            FillObject(pObject->m_properties, pObject->m_pSource->m_properties, unfilled);
            pObject->m_index.CopyFrom(pObject->m_pSource->m_index);
        }
        else
            return;
    }
}

// A copy of what a variant holds, whole.
void* CopyTree(const STypeID& type, const void* pValue)
{
    SUnfilled unfilled;
    void* pData = CopyHeld(type, pValue, unfilled);
    FillAll(unfilled);
    return pData;
}

// A copy of any value of the type, which other than what a variant holds has nothing around it.
void* CopyPlain(const STypeID& type, const void* pValue)
{
    SUnfilled unfilled;
    switch (type.m_eStorage)
    {
    case EStorage::Word:
    {
        // Most are numbers of eight bytes; for those the copy is one instruction.
        uint64 nWord = 0;
        if (type.m_nSize == sizeof(nWord)) [[likely]]
            std::memcpy(&nWord, pValue, sizeof(nWord));
        else
            std::memcpy(&nWord, pValue, type.m_nSize);
        return ::new (ZCellPool::For(sizeof(uint64)).Allocate()) uint64(nWord);
    }
    case EStorage::Array:
    {
        const auto& source = *static_cast<const TArray<ZDynamicObject>*>(pValue);
        SArrayNode* pNode = NewNode<SArrayNode>(source);
        FillArray(pNode->m_elements, source, unfilled);
        FillAll(unfilled);
        return pNode;
    }
    case EStorage::Object:
    {
        const auto& source = *static_cast<const TArray<SDynamicObjectKeyValuePair>*>(pValue);
        SObjectNode* pNode = NewNode<SObjectNode>(source);
        FillObject(pNode->m_properties, source, unfilled);
        pNode->m_index.Build(pNode->m_properties);
        FillAll(unfilled);
        return pNode;
    }
    default:
        return CopyHeld(type, pValue, unfilled);
    }
}

// -- Destroying them

// The nodes that have lost their variant. The first one to be destroyed destroys its elements, these put their nodes in
// here, and so on until nothing is left.
SArrayNode* g_pDoomedArrays;
SObjectNode* g_pDoomedObjects;
bool g_bDestroying;

void DestroyDoomed()
{
    if (g_bDestroying)
        return;
    g_bDestroying = true;
    while (true)
    {
        if (SArrayNode* pArray = g_pDoomedArrays)
        {
            g_pDoomedArrays = pArray->m_pNext;
            pArray->~SArrayNode();
            ZCellPool::Free(pArray);
        }
        else if (SObjectNode* pObject = g_pDoomedObjects)
        {
            g_pDoomedObjects = pObject->m_pNext;
            pObject->~SObjectNode();
            ZCellPool::Free(pObject);
        }
        else
            break;
    }
    g_bDestroying = false;
}

// -- Comparing them

class ZComparison
{
public:
    // Compares two values of one type. What lies too deep for the stack is left for later.
    bool Equal(const ZObjectRef& left, const ZObjectRef& right, int nDepth)
    {
        STypeID* pType = left.Type();
        if (pType != right.Type())
            return false;
        if (pType == nullptr)
            return true;
        switch (pType->m_eStorage)
        {
        case EStorage::Array:
            if (nDepth == kMaxDepth)
                return Postpone(left, right);
            return EqualArrays(static_cast<const SArrayNode*>(left.Data())->m_elements,
                               static_cast<const SArrayNode*>(right.Data())->m_elements, nDepth + 1);
        case EStorage::Object:
            if (nDepth == kMaxDepth)
                return Postpone(left, right);
            return EqualObjects(static_cast<const SObjectNode*>(left.Data())->m_properties,
                                static_cast<const SObjectNode*>(right.Data())->m_properties, nDepth + 1);
        default:
            return pType->m_pOperations->Equals != nullptr && pType->m_pOperations->Equals(left.Data(), right.Data());
        }
    }

    bool EqualPostponed()
    {
        while (!m_postponed.IsEmpty())
        {
            const SPair pair = *(m_postponed.End() - 1);
            m_postponed.Erase(m_postponed.End() - 1);
            if (!Equal(pair.m_left, pair.m_right, 0))
                return false;
        }
        return true;
    }

private:
    static constexpr int kMaxDepth = 256;

    struct SPair
    {
        ZObjectRef m_left;
        ZObjectRef m_right;
    };

    bool Postpone(const ZObjectRef& left, const ZObjectRef& right)
    {
        m_postponed.Add(SPair{left, right});
        return true;
    }

    bool EqualArrays(const TArray<ZDynamicObject>& left, const TArray<ZDynamicObject>& right, int nDepth)
    {
        if (left.Begin() == right.Begin())
            return true;
        if (left.Size() != right.Size())
            return false;
        const ZDynamicObject* pRight = right.Begin();
        for (const ZDynamicObject& element : left)
        {
            if (!Equal(element, *pRight++, nDepth))
                return false;
        }
        return true;
    }

    // By key, in whatever order. Most often the order is the same.
    bool EqualObjects(const TArray<SDynamicObjectKeyValuePair>& left, const TArray<SDynamicObjectKeyValuePair>& right,
                      int nDepth)
    {
        if (left.Begin() == right.Begin())
            return true;
        if (left.Size() != right.Size())
            return false;
        const SDynamicObjectKeyValuePair* pRight = right.Begin();
        for (const SDynamicObjectKeyValuePair& property : left)
        {
            const SDynamicObjectKeyValuePair* pOther = pRight++;
            if (!(pOther->m_key == property.m_key))
            {
                pOther = detail::FindProperty(right, property.m_key);
                if (pOther == nullptr)
                    return false;
            }
            if (!Equal(property.m_value, pOther->m_value, nDepth))
                return false;
        }
        return true;
    }

    TArray<SPair> m_postponed;
};
} // namespace

bool detail::EqualValues(const ZObjectRef& left, const ZObjectRef& right)
{
    STypeID* pType = left.Type();
    if (pType != right.Type())
        return false;
    if (pType == nullptr)
        return true;
    if (pType->m_eStorage != EStorage::Array && pType->m_eStorage != EStorage::Object)
        return pType->m_pOperations->Equals != nullptr && pType->m_pOperations->Equals(left.Data(), right.Data());
    ZComparison comparison;
    return comparison.Equal(left, right, 0) && comparison.EqualPostponed();
}

ZVariant::ZVariant(ZString&& text) noexcept
    : ZVariantRef(::new (ZCellPool::For(sizeof(ZString)).Allocate()) ZString(std::move(text)), GetTypeID<ZString>())
{
}

ZVariant::ZVariant(const ZVariant& other) : ZVariant()
{
    if (other.m_pType != nullptr)
    {
        m_pData = CopyTree(*other.m_pType, other.m_pData);
        m_pType = other.m_pType;
    }
}

ZVariant& ZVariant::operator=(const ZVariant& other)
{
    if (this != &other)
        Adopt(other.m_pType, other.m_pType != nullptr ? CopyTree(*other.m_pType, other.m_pData) : nullptr);
    return *this;
}

ZVariant& ZVariant::operator=(ZVariant&& other) noexcept
{
    // A variant that is moved onto itself lets go of its value and takes it back.
    STypeID* pType = std::exchange(other.m_pType, nullptr);
    Adopt(pType, std::exchange(other.m_pData, nullptr));
    return *this;
}

void ZVariant::Set(STypeID* pType, const void* pValue)
{
    if (pType == nullptr)
        return Adopt(nullptr, nullptr);
    const bool bKnown = pType->m_eStorage != EStorage::Unknown && pValue != nullptr;
    detail::BreakUnless(bKnown);
    if (bKnown)
        Adopt(pType, CopyPlain(*pType, pValue));
    else
        Adopt(nullptr, nullptr);
}

void ZVariant::Adopt(STypeID* pType, void* pData)
{
    STypeID* pOldType = pType;
    void* pOldData = pData;
    if (this != &detail::g_nullObject)
    {
        pOldType = std::exchange(m_pType, pType);
        pOldData = std::exchange(m_pData, pData);
    }
    if (pOldType != nullptr)
        Destroy(pOldType, pOldData);
}

void ZVariant::Destroy(STypeID* pType, void* pData)
{
    switch (pType->m_eStorage)
    {
    case EStorage::Word:
        return ZCellPool::Free(pData);
    case EStorage::String:
        static_cast<ZString*>(pData)->~ZString();
        return ZCellPool::Free(pData);
    case EStorage::Array:
    {
        SArrayNode* pNode = static_cast<SArrayNode*>(pData);
        pNode->m_pNext = std::exchange(g_pDoomedArrays, pNode);
        return DestroyDoomed();
    }
    case EStorage::Object:
    {
        SObjectNode* pNode = static_cast<SObjectNode*>(pData);
        pNode->m_pNext = std::exchange(g_pDoomedObjects, pNode);
        return DestroyDoomed();
    }
    default:
        pType->m_pOperations->Destruct(pData);
        FreeValue(*pType, pData);
    }
}
