// TSet<T> and TMultiSet<T>: the ordered sets. Both are the tree of redblacktree.h, with its layout, iterators and
// operations, and differ in what Insert does with an element that is there already.
#pragma once

#include "core/containers/redblacktree.h"

#include <initializer_list>

// Keeps one of equivalent elements, the first that came.
template <class T>
class TSet : public kx::detail::TOrderedTree<T>
{
public:
    // No allocator call.
    TSet() = default;

    // Inserts the values in their order.
    TSet(std::initializer_list<T> values)
    {
        for (const T& value : values)
            Insert(value);
    }

    // Inserts a copy unless an equivalent element is there; that one is left as it is. The result is the element in the
    // set, whichever it is; only Size() tells. Logarithmic; one allocation and one copy, or none.
    TTreeIterator<T> Insert(const T& value)
    {
        typename TSet::SSearchPath path;
        if (auto* pNode = this->template FindNode<true>(kx::detail::TTreeKey<T>::Of(value), path))
            return this->PositionOf(pNode);
        return this->InsertMissing(value, path);
    }

    // Exchanges the elements. None is touched, and iterators to them stay valid and belong to the other set now.
    void Swap(TSet& other) { this->SwapWith(other); }
};

// Keeps every element that it is given: the tree itself under its name as a set.
template <class T>
class TMultiSet : public TRedBlackTree<T>
{
public:
    using TRedBlackTree<T>::TRedBlackTree;
};
