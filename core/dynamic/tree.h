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
// A variant may also hold a ZDynamicObject or a pair as such. These are nodes of one child, which comes first, so that
// values nested in that way do not recurse either.
//
// The nodes are templates of the elements because ZDynamicObject is built on this file.
#pragma once

#include "core/dynamic/heldvalue.h"
#include "core/dynamic/propertyindex.h"
#include "core/dynamic/variant.h"

#include <span>
#include <string_view>
#include <utility>

namespace kx::detail
{
/// What makes up a variant, for the code of trees, which is no member of it.
struct SVariantAccess
{
    template <class TElement>
    static TElement Adopted(STypeID* pType, void* pHeld)
    {
        return TElement(pType, pHeld);
    }

    /// Gives a value to a variant that has none.
    static void Fill(ZVariant& variant, STypeID* pType, void* pHeld)
    {
        variant.m_pType = pType;
        variant.m_pData = pHeld;
    }

    /// Leaves the variant without a value, for its destructor alone.
    static void* Released(ZVariant& variant)
    {
        variant.m_pType = nullptr;
        return variant.m_pData;
    }

    static void* Held(const ZVariant& variant) { return variant.m_pData; }
};

/// The nodes of trees and the walks over them. TElement is a variant without fields of its own, the child of an array;
/// TProperty, the child of an object, is a key and such an element.
template <class TElement, class TProperty>
class TTree
{
public:
    /// What a node holds.
    enum EKind : std::uintptr_t
    {
        kArray,
        kObject,
        kElement,
        kProperty
    };

private:
    // What a node needs while it is copied or destroyed. The lowest two bits of m_nParent are its kind.
    struct SLinks
    {
        SLinks* Parent() const { return reinterpret_cast<SLinks*>(m_nParent & ~std::uintptr_t{3}); }
        void SetParent(const SLinks* pParent) { m_nParent = detail::AddressOf(pParent) | Kind(); }
        EKind Kind() const { return static_cast<EKind>(m_nParent & 3); }

        std::uintptr_t m_nParent;
        const void* m_pPlace; // copying: the value that is copied; destroying: the next child
    };

    // As much of an array as the walks use, for a single child.
    template <class TChild>
    struct SSingle
    {
        explicit SSingle(uint64) {}

        const TChild* Begin() const { return &m_child; }
        const TChild* End() const { return &m_child + m_nSize; }
        uint32 Size() const { return m_nSize; }
        template <class... TArgs>
        void Emplace(TArgs&&... args)
        {
            m_child = TChild{std::forward<TArgs>(args)...};
            m_nSize = 1;
        }

        TChild m_child = {};
        uint32 m_nSize = 0;
    };

    template <class TChildren>
    struct SFront
    {
        explicit SFront(uint64 nCapacity) : m_children(nCapacity) {}

        TChildren m_children;
    };

    template <class TChild, class TChildren, EKind kNodeKind>
    struct SNode : SFront<TChildren>, SLinks
    {
        using Child = TChild;
        using Front = SFront<TChildren>;
        static constexpr EKind kKind = kNodeKind;

        explicit SNode(uint64 nCapacity) : Front(nCapacity), SLinks{kNodeKind, nullptr} {}
    };

public:
    using SArray = SNode<TElement, TArray<TElement>, kArray>;

    struct SObject : SNode<TProperty, TArray<TProperty>, kObject>
    {
        using SNode<TProperty, TArray<TProperty>, kObject>::SNode;

        ZPropertyIndex::SKeys Keys() const
        {
            return {reinterpret_cast<const char*>(this->m_children.Begin()), this->m_children.Size()};
        }

        ZPropertyIndex m_index = {};
    };

    using SElement = SNode<TElement, SSingle<TElement>, kElement>;
    using SProperty = SNode<TProperty, SSingle<TProperty>, kProperty>;

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
    // The kind of node that a variant holds for the type, or a number above the kinds.
    static uint64 KindOf(const STypeID& type)
    {
        return (detail::AddressOf(type.m_pValue) - detail::AddressOf(&kValues[0])) / sizeof(SValueOperations);
    }
    static bool IsNode(const STypeID& type) { return !IsWord(type) && KindOf(type) <= kProperty; }

    static const TElement& ValueOf(const TElement& element) { return element; }
    static const TElement& ValueOf(const TProperty& property) { return property.m_value; }

    // Calls function with the node, as its own type.
    template <class TFunction>
    static auto Visit(SLinks* pNode, TFunction function)
    {
        switch (pNode->Kind())
        {
        case kArray:
            return function(static_cast<SArray*>(pNode));
        case kObject:
            return function(static_cast<SObject*>(pNode));
        case kElement:
            return function(static_cast<SElement*>(pNode));
        default:
            return function(static_cast<SProperty*>(pNode));
        }
    }

    // Calls function with what a variant holds for a type that is kept as a node. The address may as well be that of a
    // free-standing value, which has no links; then function must not use them.
    template <class TFunction>
    static auto VisitHeld(const STypeID& type, const void* pHeld, TFunction function)
    {
        switch (KindOf(type))
        {
        case kArray:
            return function(ToNode<SArray>(pHeld));
        case kObject:
            return function(ToNode<SObject>(pHeld));
        case kElement:
            return function(ToNode<SElement>(pHeld));
        default:
            return function(ToNode<SProperty>(pHeld));
        }
    }

    template <class TNode>
    static TNode* ToNode(const void* pHeld)
    {
        return static_cast<TNode*>(static_cast<typename TNode::Front*>(const_cast<void*>(pHeld)));
    }

    // ---- Copying: each node gets copies of its children in order. A child that is a node itself is made empty and is
    // filled before the next one follows.

    template <class TNode>
    static void* Copy(const STypeID&, const void* pValue)
    {
        TNode* pCopy = NewCopy<TNode>(pValue);
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

    // The children of a value that is copied; it need not be a node.
    template <class TNode>
    static std::span<const typename TNode::Child> SourceOf(const void* pValue)
    {
        if constexpr (TNode::kKind == kElement || TNode::kKind == kProperty)
            return {static_cast<const typename TNode::Child*>(pValue), 1};
        else
            return *static_cast<const TArray<typename TNode::Child>*>(pValue);
    }

    template <class TNode>
    static TNode* NewCopy(const void* pValue)
    {
        TNode* pCopy = NewNode<TNode>(SourceOf<TNode>(pValue).size());
        pCopy->m_pPlace = pValue;
        return pCopy;
    }

    template <class TNode>
    static void CopyIndex(TNode*, const void*)
    {
    }
    static void CopyIndex(SObject* pCopy, const void* pHeld)
    {
        pCopy->m_index.CopyFrom(ToNode<SObject>(pHeld)->m_index);
    }

    static void Fill(SLinks* pRoot)
    {
        for (SLinks* pNode = pRoot; pNode != nullptr;)
            pNode = Visit(pNode, [pRoot](auto* pCopy) { return FillSome(pCopy, pRoot); });
    }

    // The result is the node to go on with: a child that is empty yet, or the parent of a node that is complete.
    template <class TNode>
    static SLinks* FillSome(TNode* pCopy, const SLinks* pRoot)
    {
        for (const auto& child : SourceOf<TNode>(pCopy->m_pPlace).subspan(pCopy->m_children.Size()))
        {
            STypeID* pType = ValueOf(child).Type();
            const void* pHeld = ValueOf(child).Data();
            if (pType != nullptr && IsNode(*pType))
            {
                return VisitHeld(*pType, pHeld,
                                 [&]<class TChildNode>(TChildNode*) -> SLinks*
                                 {
                                     TChildNode* pChild = NewCopy<TChildNode>(pHeld);
                                     pChild->SetParent(pCopy);
                                     AddChild(pCopy->m_children, child, pType, pChild);
                                     return pChild;
                                 });
            }
            void* pHeldCopy = pType != nullptr ? detail::CopyHeldValue(*pType, pHeld) : nullptr;
            AddChild(pCopy->m_children, child, pType, pHeldCopy);
        }
        if (pCopy == pRoot)
            return nullptr;
        CopyIndex(pCopy, pCopy->m_pPlace);
        return pCopy->Parent();
    }

    template <class TChildren>
    static void AddChild(TChildren& children, const TElement&, STypeID* pType, void* pHeld)
    {
        children.Emplace(SVariantAccess::Adopted<TElement>(pType, pHeld));
    }
    template <class TChildren>
    static void AddChild(TChildren& children, const TProperty& property, STypeID* pType, void* pHeld)
    {
        children.Emplace(property.m_key, SVariantAccess::Adopted<TElement>(pType, pHeld));
    }

    // ---- Destroying: each node destroys its children in order, and then itself.

    template <class TNode>
    static void Destroy(const STypeID&, void* pHeld)
    {
        for (SLinks* pNode = Entered(ToNode<TNode>(pHeld), nullptr); pNode != nullptr;)
            pNode = Visit(pNode, [](auto* pOwn) { return DestroySome(pOwn); });
    }

    template <class TNode>
    static SLinks* Entered(TNode* pNode, const SLinks* pParent)
    {
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
            STypeID* pType = ValueOf(*p).Type();
            if (pType == nullptr)
                continue;
            void* pHeld = SVariantAccess::Released(const_cast<TElement&>(ValueOf(*p)));
            if (IsNode(*pType))
            {
                pNode->m_pPlace = p + 1;
                return VisitHeld(*pType, pHeld, [pNode](auto* pChild) { return Entered(pChild, pNode); });
            }
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
        bool bEqual = EqualNodes(*ToNode<TNode>(pLeft), *ToNode<TNode>(pRight), 1, postponed);
        while (bEqual && !postponed.IsEmpty())
        {
            const SPair pair = postponed[postponed.Size() - 1];
            postponed.Erase(postponed.End() - 1);
            bEqual = EqualChildren(pair.m_left, pair.m_right, 0, postponed);
        }
        return bEqual;
    }

    static constexpr int kMaxDepth = 256;

    static bool EqualChildren(const ZObjectRef& left, const ZObjectRef& right, int nDepth, TArray<SPair>& postponed)
    {
        STypeID* pType = left.Type();
        if (pType == nullptr || pType != right.Type() || !IsNode(*pType) || KindOf(*pType) == kProperty)
            return detail::EqualValues(left, right);
        if (nDepth == kMaxDepth)
        {
            postponed.Add(SPair{left, right});
            return true;
        }
        return VisitHeld(*pType, left.Data(),
                         [&]<class TNode>(const TNode* pNode)
                         { return EqualNodes(*pNode, *ToNode<TNode>(right.Data()), nDepth + 1, postponed); });
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
                                         const TElement* pOther = Counterpart(child, left, other, right);
                                         return pOther != nullptr
                                                && EqualChildren(ValueOf(child), *pOther, nDepth, postponed);
                                     });
    }

    template <class TNode>
    static const TElement* Counterpart(const TElement&, const TNode&, const TElement& other, const TNode&)
    {
        return &other;
    }

    // A pair as such has no ==.
    static const TElement* Counterpart(const TProperty&, const SProperty&, const TProperty&, const SProperty&)
    {
        return nullptr;
    }

    // Properties are compared by key, in any order. Most often the order is the same. Where a key occurs twice, which
    // only an array of pairs that was made by hand can bring, the order must be the same.
    static const TElement* Counterpart(const TProperty& property, const SObject& object, const TProperty& other,
                                       const SObject& otherObject)
    {
        if (other.m_key == property.m_key)
            return &other.m_value;
        if (RepeatsAKey(object) || RepeatsAKey(otherObject))
            return nullptr;
        const TProperty* pOther = FindProperty(otherObject, property.m_key);
        return pOther != nullptr ? &pOther->m_value : nullptr;
    }

    static bool RepeatsAKey(const SObject& object)
    {
        if (!object.m_index.MayRepeatKeys())
            return false;
        for (const TProperty& property : object.m_children)
        {
            if (FindProperty(object, property.m_key) != &property)
                return true;
        }
        return false;
    }

    // ---- Searching a tree for a variant, that a tree be not moved into itself.

    template <class TNode>
    static bool Holds(const void* pHeld, const void* pVariant)
    {
        int nBudget = 32;
        return Holds(*ToNode<TNode>(pHeld), detail::AddressOf(pVariant), nBudget);
    }

    // Looks at so many children and no more, since the search is part of every move.
    template <class TNode>
    static bool Holds(const TNode& node, std::uintptr_t nVariant, int& nBudget)
    {
        const std::uintptr_t nBegin = detail::AddressOf(node.m_children.Begin());
        if (nVariant - nBegin < detail::AddressOf(node.m_children.End()) - nBegin)
            return true;
        for (const auto* p = node.m_children.Begin(); p != node.m_children.End(); ++p)
        {
            if (--nBudget < 0)
                return false;
            STypeID* pType = ValueOf(*p).Type();
            if (pType != nullptr && IsNode(*pType)
                && VisitHeld(*pType, ValueOf(*p).Data(),
                             [&](const auto* pNode) { return Holds(*pNode, nVariant, nBudget); }))
                return true;
        }
        return false;
    }

    template <class TNode>
    static constexpr SValueOperations kOperations = {&Copy<TNode>, &CopyHeld<TNode>, &Destroy<TNode>, &Equal<TNode>,
                                                     &Holds<TNode>};

public:
    /// The operations of the values that are kept as nodes, by kind.
    static constexpr SValueOperations kValues[] = {kOperations<SArray>, kOperations<SObject>, kOperations<SElement>,
                                                   kOperations<SProperty>};
};
} // namespace kx::detail
