// Inside kxbase: what a variant holds for an array or an object, and the walks over trees of these.
//
//   ZDynamicObject      array node                       ZDynamicObject      object node
//   +---------+         +--------------------+           +---------+         +--------------------+
//   | m_pType |         | TArray of elements |           | m_pType |         | TArray of pairs    |
//   | m_pData |-------->| parent, cursor     |           | m_pData |-------->| parent, cursor     |
//   +---------+         +--------------------+           +---------+         | index              |----> slots
//                                                                            +--------------------+
//
// The array comes first, so that the address of the node is that of the array, as for every value. The links after it
// let copying and destroying walk a tree without recursion and without memory: while a node waits for one of its
// children, it remembers its parent and where it was.
//
// The nodes are templates of the elements because ZDynamicObject is built on this file.
#pragma once

#include "core/dynamic/heldvalue.h"
#include "core/dynamic/variant.h"

#include <string_view>

namespace kx::detail
{
/// Where in an object the keys are: a hash table of positions, open addressing, at most half full. An object has one as
/// soon as it has more than kUnindexed properties; searching fewer in order is faster.
class ZPropertyIndex
{
public:
    /// The keys of an object: the first members of its properties, which are kPropertySize bytes apart.
    struct SKeys
    {
        const ZString& operator[](uint32 n) const
        {
            return *reinterpret_cast<const ZString*>(m_pFirst + uint64{n} * kPropertySize);
        }

        const char* m_pFirst;
        uint32 m_nSize;
    };

    static constexpr uint64 kPropertySize = 32;
    static constexpr uint32 kUnindexed = 12;
    static constexpr uint32 kMissing = UINT32_MAX;

    ZPropertyIndex() = default;
    ~ZPropertyIndex() { Release(); }
    ZPropertyIndex(const ZPropertyIndex&) = delete;
    ZPropertyIndex& operator=(const ZPropertyIndex&) = delete;

    /// The position of the key, kMissing if there is none. Not for objects of kUnindexed properties and fewer.
    uint32 Find(SKeys keys, std::string_view key) const;

    /// To be called after the last of the properties was added, or the one at nPosition removed.
    void Added(SKeys keys);
    void Removed(SKeys keys, uint32 nPosition);

    /// Makes the index of an object whose properties are all new.
    void Build(SKeys keys);

    /// Makes an empty index the copy of another one, for a copy of the same properties.
    void CopyFrom(const ZPropertyIndex& other);

    /// Whether every property is found where it is, and nothing else is in the index. For tests.
    bool Validate(SKeys keys) const;

private:
    struct SSlot
    {
        uint32 m_nHash;
        uint32 m_nPosition; // kMissing in a free slot
    };

    void Insert(uint32 nHash, uint32 nPosition);
    void Allocate(uint32 nSlots);
    void Release();

    SSlot* m_pSlots = nullptr;
    uint32 m_nMask = 0;
};

/// What makes up a variant, for the code of trees, which is no member of it.
struct SVariantAccess
{
    template <class TElement>
    static TElement Adopted(STypeID* pType, void* pHeld)
    {
        return TElement(pType, pHeld);
    }

    /// Leaves the variant without a value.
    static void* Released(ZVariant& variant, STypeID*& pType)
    {
        pType = std::exchange(variant.m_pType, nullptr);
        return std::exchange(variant.m_pData, nullptr);
    }

    static void* Held(const ZVariant& variant) { return variant.m_pData; }
};

/// The nodes of trees and the walks over them. TElement is a variant without fields of its own, the child of an array;
/// TProperty, the child of an object, is a key and such an element.
template <class TElement, class TProperty>
class TTree
{
    // What a node needs while it is copied or destroyed. The lowest bit of m_nParent says what the node itself is.
    struct SLinks
    {
        SLinks* Parent() const { return reinterpret_cast<SLinks*>(m_nParent & ~kIsObject); }
        void SetParent(const SLinks* pParent) { m_nParent = detail::AddressOf(pParent) | (m_nParent & kIsObject); }
        bool IsObject() const { return (m_nParent & kIsObject) != 0; }

        static constexpr std::uintptr_t kIsObject = 1;

        std::uintptr_t m_nParent;
        const void* m_pPlace; // copying: the array that is copied; destroying: the next child
    };

    template <class TChild>
    struct SFront
    {
        explicit SFront(uint64 nCapacity) : m_children(nCapacity) {}

        TArray<TChild> m_children;
    };

public:
    struct SArray : SFront<TElement>, SLinks
    {
        using Child = TElement;
        explicit SArray(uint64 nCapacity) : SFront<TElement>(nCapacity), SLinks{0, nullptr} {}
    };

    struct SObject : SFront<TProperty>, SLinks
    {
        using Child = TProperty;
        explicit SObject(uint64 nCapacity) : SFront<TProperty>(nCapacity), SLinks{SLinks::kIsObject, nullptr} {}

        ZPropertyIndex::SKeys Keys() const
        {
            return {reinterpret_cast<const char*>(this->m_children.Begin()), this->m_children.Size()};
        }

        ZPropertyIndex m_index = {};
    };

    /// A node without children, and with room for so many.
    template <class TNode>
    static TNode* NewNode(uint64 nCapacity)
    {
        return ::new (ZCellHeap::Allocate(sizeof(TNode))) TNode(nCapacity);
    }

    /// The property of that key, null if there is none.
    static TProperty* FindProperty(const SObject& object, std::string_view key)
    {
        using Traits = std::char_traits<char>;
        TProperty* const pBegin = const_cast<TProperty*>(object.m_children.Begin());
        if (object.m_children.Size() > ZPropertyIndex::kUnindexed)
        {
            const uint32 nPosition = object.m_index.Find(object.Keys(), key);
            return nPosition != ZPropertyIndex::kMissing ? pBegin + nPosition : nullptr;
        }
        // Keys of one object tend to begin alike, so the last character is compared before the others.
        const std::size_t nSize = key.size();
        for (TProperty* p = pBegin; p != object.m_children.End(); ++p)
        {
            const std::string_view other = p->m_key;
            if (other.size() == nSize
                && (nSize == 0
                    || (other[nSize - 1] == key[nSize - 1]
                        && Traits::compare(other.data(), key.data(), nSize - 1) == 0)))
                return p;
        }
        return nullptr;
    }

private:
    static bool IsNode(const STypeID& type) { return type.m_pValue == &kArrayValue || type.m_pValue == &kObjectValue; }

    static const TElement& ValueOf(const TElement& element) { return element; }
    static const TElement& ValueOf(const TProperty& property) { return property.m_value; }

    // ---- Copying: each node gets copies of its children in order. A child that is a node itself is made empty and is
    // filled before the next one follows.

    template <class TNode>
    static void* Copy(const STypeID&, const void* pArray)
    {
        TNode* pCopy = NewCopy<TNode>(pArray);
        Fill(pCopy);
        if constexpr (std::is_same_v<TNode, SObject>)
            pCopy->m_index.Build(pCopy->Keys());
        return pCopy;
    }

    template <class TNode>
    static void* CopyHeld(const STypeID&, const void* pHeld)
    {
        TNode* pCopy = NewCopy<TNode>(pHeld);
        Fill(pCopy);
        CopyIndex(pCopy, pHeld);
        return pCopy;
    }

    template <class TNode>
    static TNode* NewCopy(const void* pArray)
    {
        TNode* pCopy = NewNode<TNode>(static_cast<const TArray<typename TNode::Child>*>(pArray)->Size());
        pCopy->m_pPlace = pArray;
        return pCopy;
    }

    static void CopyIndex(SArray*, const void*) {}
    static void CopyIndex(SObject* pCopy, const void* pHeld)
    {
        pCopy->m_index.CopyFrom(static_cast<const SObject*>(static_cast<const SFront<TProperty>*>(pHeld))->m_index);
    }

    static void Fill(SLinks* pRoot)
    {
        for (SLinks* pNode = pRoot; pNode != nullptr;)
        {
            pNode = pNode->IsObject() ? FillSome(static_cast<SObject*>(pNode), pRoot)
                                      : FillSome(static_cast<SArray*>(pNode), pRoot);
        }
    }

    // The result is the node to go on with: a child that is empty yet, or the parent of a node that is complete.
    template <class TNode>
    static SLinks* FillSome(TNode* pCopy, const SLinks* pRoot)
    {
        const auto& source = *static_cast<const TArray<typename TNode::Child>*>(pCopy->m_pPlace);
        for (const auto* p = source.Begin() + pCopy->m_children.Size(); p != source.End(); ++p)
        {
            STypeID* pType = ValueOf(*p).Type();
            if (pType == nullptr || !IsNode(*pType))
            {
                AddChild(pCopy, *p, pType,
                         pType != nullptr ? detail::CopyHeldValue(*pType, ValueOf(*p).Data()) : nullptr);
                continue;
            }
            SLinks* pChild = nullptr;
            if (pType->m_pValue == &kObjectValue)
            {
                SObject* pObject = NewCopy<SObject>(ValueOf(*p).Data());
                AddChild(pCopy, *p, pType, pObject);
                pChild = pObject;
            }
            else
            {
                SArray* pArray = NewCopy<SArray>(ValueOf(*p).Data());
                AddChild(pCopy, *p, pType, pArray);
                pChild = pArray;
            }
            pChild->SetParent(pCopy);
            return pChild;
        }
        if (pCopy == pRoot)
            return nullptr;
        CopyIndex(pCopy, pCopy->m_pPlace);
        return pCopy->Parent();
    }

    static void AddChild(SArray* pCopy, const TElement&, STypeID* pType, void* pHeld)
    {
        pCopy->m_children.Add(SVariantAccess::Adopted<TElement>(pType, pHeld));
    }
    static void AddChild(SObject* pCopy, const TProperty& property, STypeID* pType, void* pHeld)
    {
        pCopy->m_children.Add(TProperty{property.m_key, SVariantAccess::Adopted<TElement>(pType, pHeld)});
    }

    // ---- Destroying: each node destroys its children in order, and then itself.

    template <class TNode>
    static void Destroy(const STypeID&, void* pHeld)
    {
        for (SLinks* pNode = Entered<TNode>(pHeld, nullptr); pNode != nullptr;)
        {
            pNode = pNode->IsObject() ? DestroySome(static_cast<SObject*>(pNode))
                                      : DestroySome(static_cast<SArray*>(pNode));
        }
    }

    template <class TNode>
    static SLinks* Entered(void* pHeld, const SLinks* pParent)
    {
        TNode* pNode = static_cast<TNode*>(static_cast<SFront<typename TNode::Child>*>(pHeld));
        pNode->SetParent(pParent);
        pNode->m_pPlace = pNode->m_children.Begin();
        return pNode;
    }

    // The result is the node to go on with: a child, or the parent of a node that is gone.
    template <class TNode>
    static SLinks* DestroySome(TNode* pNode)
    {
        for (auto* p = static_cast<const typename TNode::Child*>(pNode->m_pPlace); p != pNode->m_children.End(); ++p)
        {
            STypeID* pType = nullptr;
            void* pHeld = SVariantAccess::Released(const_cast<TElement&>(ValueOf(*p)), pType);
            if (pType == nullptr)
                continue;
            pNode->m_pPlace = p + 1;
            if (pType->m_pValue == &kArrayValue)
                return Entered<SArray>(pHeld, pNode);
            if (pType->m_pValue == &kObjectValue)
                return Entered<SObject>(pHeld, pNode);
            detail::DestroyHeldValue(*pType, pHeld);
        }
        SLinks* pParent = pNode->Parent();
        pNode->~TNode();
        ZCellHeap::Free(pNode);
        return pParent;
    }

    // ---- Comparing: recursive up to some depth. What is deeper is noted, and compared after the rest.

    struct SPair
    {
        ZObjectRef m_left;
        ZObjectRef m_right;
    };

    template <class TNode>
    static bool Equal(const void* pLeft, const void* pRight)
    {
        TArray<SPair> postponed;
        bool bEqual = EqualNodes(ToNode<TNode>(pLeft), ToNode<TNode>(pRight), 1, postponed);
        while (bEqual && !postponed.IsEmpty())
        {
            const SPair pair = postponed[postponed.Size() - 1];
            postponed.Erase(postponed.End() - 1);
            bEqual = EqualChildren(pair.m_left, pair.m_right, 0, postponed);
        }
        return bEqual;
    }

    static constexpr int kMaxDepth = 256;

    template <class TNode>
    static const TNode& ToNode(const void* pHeld)
    {
        return *static_cast<const TNode*>(static_cast<const SFront<typename TNode::Child>*>(pHeld));
    }

    static bool EqualChildren(const ZObjectRef& left, const ZObjectRef& right, int nDepth, TArray<SPair>& postponed)
    {
        STypeID* pType = left.Type();
        if (pType == nullptr || pType != right.Type() || !IsNode(*pType))
            return detail::EqualValues(left, right);
        if (nDepth == kMaxDepth)
        {
            postponed.Add(SPair{left, right});
            return true;
        }
        if (pType->m_pValue == &kArrayValue)
            return EqualNodes(ToNode<SArray>(left.Data()), ToNode<SArray>(right.Data()), nDepth + 1, postponed);
        return EqualNodes(ToNode<SObject>(left.Data()), ToNode<SObject>(right.Data()), nDepth + 1, postponed);
    }

    // Nodes of one array are equal without a look at the children.
    template <class TNode>
    static bool EqualNodes(const TNode& left, const TNode& right, int nDepth, TArray<SPair>& postponed)
    {
        if (left.m_children.Begin() == right.m_children.Begin())
            return true;
        return left.m_children.Size() == right.m_children.Size()
               && detail::EqualRange(left.m_children.Begin(), left.m_children.End(), right.m_children.Begin(),
                                     [&](const auto& child, const auto& other)
                                     {
                                         const TElement* pOther = Counterpart(child, other, right);
                                         return pOther != nullptr
                                                && EqualChildren(ValueOf(child), *pOther, nDepth, postponed);
                                     });
    }

    static const TElement* Counterpart(const TElement&, const TElement& other, const SArray&) { return &other; }

    // Properties are compared by key, in any order. Most often the order is the same.
    static const TElement* Counterpart(const TProperty& property, const TProperty& other, const SObject& object)
    {
        if (other.m_key == property.m_key)
            return &other.m_value;
        const TProperty* pOther = FindProperty(object, property.m_key);
        return pOther != nullptr ? &pOther->m_value : nullptr;
    }

public:
    static constexpr SValueOperations kArrayValue = {&Copy<SArray>, &CopyHeld<SArray>, &Destroy<SArray>,
                                                     &Equal<SArray>};
    static constexpr SValueOperations kObjectValue = {&Copy<SObject>, &CopyHeld<SObject>, &Destroy<SObject>,
                                                      &Equal<SObject>};
};
} // namespace kx::detail
