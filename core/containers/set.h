// TSet<T> and TMultiSet<T>: the ordered sets. Both are the tree of redblacktree.h, with its layout, iterators and
// operations. They differ in what Insert does with an existing element.
#pragma once

#include "core/containers/redblacktree.h"

#include <initializer_list>

/// An ordered set that keeps one of equivalent elements, the first one inserted.
template <class T>
class TSet : public kx::detail::TOrderedTree<T>
{
public:
    /// Creates an empty set. Makes no allocator call.
    TSet() = default;

    /// Inserts the values in order.
    TSet(std::initializer_list<T> values)
    {
        for (const T& value : values)
            Insert(value);
    }

    /// Inserts a copy unless an equivalent element exists; returns an iterator to the element in the set.
    /// An existing element is left unchanged. Only Size() shows whether one was inserted. Logarithmic; one allocation
    /// and one copy, or none.
    TTreeIterator<T> Insert(const T& value)
    {
        typename TSet::SSearchPath path;
        if (auto* pNode = this->template FindNode<true>(kx::detail::TTreeKey<T>::Of(value), path))
            return this->PositionOf(pNode);
        return this->InsertMissing(value, path);
    }

    /// Inserts an element that is constructed from the arguments unless an equivalent one exists; says which.
    /// Logarithmic, with one allocation. From an element itself, it is constructed only if it is new. From other
    /// arguments, it is constructed first, and destroyed again if it is not new.
    TEmplaced<TTreeIterator<T>> Emplace(const T& value)
    {
        return this->EmplaceUnlessFound(kx::detail::TTreeKey<T>::Of(value), value);
    }
    TEmplaced<TTreeIterator<T>> Emplace(T&& value)
    {
        return this->EmplaceUnlessFound(kx::detail::TTreeKey<T>::Of(value), std::move(value));
    }
    template <class... TArgs>
    TEmplaced<TTreeIterator<T>> Emplace(TArgs&&... args) requires(!kx::detail::COneThatConverts<T, TArgs...>)
    {
        return this->EmplaceThenFind(std::forward<TArgs>(args)...);
    }

    /// Exchanges the elements of two sets, in constant time.
    /// No element is touched. Iterators to elements stay valid and belong to the other set afterwards.
    void Swap(TSet& other) { this->SwapWith(other); }
};

/// An ordered set that keeps every inserted element: TRedBlackTree under its name as a set.
template <class T>
class TMultiSet : public TRedBlackTree<T>
{
public:
    using TRedBlackTree<T>::TRedBlackTree;
};
