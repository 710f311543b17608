// TMap<K, V> and TMultiMap<K, V>: the ordered maps. Both are the tree of redblacktree.h over pairs of a key and a
// value, with its layout, iterators and operations, and differ in what Insert does with a key that is there already.
// Elements are looked up by the key alone; no pair is made for it.
#pragma once

#include "core/containers/redblacktree.h"

#include <concepts>
#include <initializer_list>

// Walks the values alone, in the order of the keys; V is const for a read-only walk. Both pointers stand where a value
// stands in a node; in the tree object, where m_pEnd points, there is none.
template <class K, class V>
class TTreeValueEnumerator
{
    using Links = kx::detail::SRedBlackTreeLinks;

public:
    explicit TTreeValueEnumerator(const Links* pHeader) : m_pCurrent(ValueOf(pHeader)), m_pEnd(m_pCurrent) {}

    // Advances; true exactly when the enumerator then stands on a value. It begins before the first one, and after
    // false it starts over.
    bool MoveNext()
    {
        m_pCurrent = ValueOf(Links::Next(reinterpret_cast<Links*>(kx::detail::AddressOf(m_pCurrent) - kOffset)));
        return m_pCurrent != m_pEnd;
    }

    // The value it stands on. Takes the debug break behind the last one, and before the first MoveNext().
    V& Current() const
    {
        kx::detail::BreakUnless(m_pCurrent != m_pEnd);
        return *m_pCurrent;
    }

private:
    // The value lies behind the key as an element lies behind its links.
    static constexpr std::uintptr_t kOffset =
        kx::detail::kElementOffset<TKeyValuePair<K, V>, Links> + kx::detail::kElementOffset<V, K>;

    static V* ValueOf(const Links* pNode) { return reinterpret_cast<V*>(kx::detail::AddressOf(pNode) + kOffset); }

    V* m_pCurrent;
    V* m_pEnd;
};

// Keeps one pair of each key; a later value replaces the earlier one.
template <class K, class V>
class TMap : public kx::detail::TOrderedTree<TKeyValuePair<K, V>>
{
    using Pair = TKeyValuePair<K, V>;

public:
    // No allocator call.
    TMap() = default;

    // Inserts the pairs in their order.
    TMap(std::initializer_list<Pair> pairs)
    {
        for (const Pair& pair : pairs)
            Insert(pair);
    }

    // The value of the key. A missing key is inserted, with V() as its value: reading through this operator changes the
    // map. Logarithmic; for a new key one allocation and two copies of key and value, of which a temporary pair is one.
    V& operator[](const K& key) requires std::default_initializable<V>
    {
        typename TMap::SSearchPath path;
        if (auto* pNode = this->template FindNode<true>(key, path))
            return pNode->m_Element.Value();
        return this->InsertMissing(Pair(key, V()), path)->Value();
    }

    // The value of the key. A missing key takes the debug break; resumed, the result is a null reference.
    const V& operator[](const K& key) const
    {
        const auto pos = this->Find(key);
        if (pos == this->End()) [[unlikely]]
        {
            kx::detail::BreakUnless(false);
            // Read anew from memory, so that the compiler does not see that the reference is null.
            const V* volatile pNone = nullptr;
            return *pNone;
        }
        return pos->Value();
    }

    // The value of the key, or defaultValue itself, which may be a temporary of the caller.
    const V& GetValue(const K& key, const V& defaultValue) const
    {
        const auto pos = this->Find(key);
        return pos != this->End() ? pos->Value() : defaultValue;
    }

    // Inserts copies, or copy-assigns the value of an existing key, whose key object and node stay. The result is the
    // element. Logarithmic; for a new key one allocation and two copies of key and value, one if they come as a pair.
    TTreeIterator<Pair> Insert(const K& key, const V& value)
    {
        typename TMap::SSearchPath path;
        if (auto* pNode = this->template FindNode<true>(key, path))
            return Assign(pNode, value);
        return this->InsertMissing(Pair(key, value), path);
    }

    TTreeIterator<Pair> Insert(const Pair& pair)
    {
        typename TMap::SSearchPath path;
        if (auto* pNode = this->template FindNode<true>(pair.Key(), path))
            return Assign(pNode, pair.Value());
        return this->InsertMissing(pair, path);
    }

    // Stands before the first value.
    TTreeValueEnumerator<K, V> GetValueEnumerator() { return TTreeValueEnumerator<K, V>(this->Header()); }
    TTreeValueEnumerator<K, const V> GetValueEnumerator() const
    {
        return TTreeValueEnumerator<K, const V>(this->Header());
    }

    // Exchanges the elements. None is touched, and iterators to them stay valid and belong to the other map now.
    void Swap(TMap& other) { this->SwapWith(other); }

    // The same keys with the same values: keys are compared by <, values by ==. Linear; the shapes do not matter.
    bool operator==(const TMap& other) const requires std::equality_comparable<V> { return !Differs(other); }
    bool operator!=(const TMap& other) const requires std::equality_comparable<V> { return Differs(other); }

private:
    TTreeIterator<Pair> Assign(SRedBlackTreeNode<Pair>* pNode, const V& value)
    {
        pNode->m_Element.Value() = value;
        return this->PositionOf(pNode);
    }

    bool Differs(const TMap& other) const requires std::equality_comparable<V>
    {
        if (this->Size() != other.Size())
            return true;
        auto walk = this->GetEnumerator();
        auto otherWalk = other.GetEnumerator();
        while (walk.MoveNext())
        {
            const bool bMoved = otherWalk.MoveNext();
            kx::detail::BreakUnless(bMoved);
            const Pair& pair = walk.Current();
            const Pair& otherPair = otherWalk.Current();
            if (pair.Key() < otherPair.Key() || otherPair.Key() < pair.Key() || !(pair.Value() == otherPair.Value()))
                return true;
        }
        return false;
    }
};

// Keeps every pair that it is given; the pairs of one key are walked newest first.
template <class K, class V>
class TMultiMap : public TRedBlackTree<TKeyValuePair<K, V>>
{
public:
    using TRedBlackTree<TKeyValuePair<K, V>>::TRedBlackTree;
};
