// TMap<K, V> and TMultiMap<K, V>: the ordered maps. Both are the tree of redblacktree.h over pairs of a key and a
// value, with its layout, iterators and operations. They differ in what Insert does with an existing key. Elements are
// looked up by the key alone; no pair is made for that.
#pragma once

#include "core/containers/redblacktree.h"

#include <concepts>
#include <initializer_list>

/// Enumerates the values alone, in the order of the keys; V is const for read-only access.
template <class K, class V>
class TTreeValueEnumerator
{
    using Links = kx::detail::SRedBlackTreeLinks;

public:
    explicit TTreeValueEnumerator(const Links* pHeader) : m_pCurrent(ValueOf(pHeader)), m_pEnd(m_pCurrent) {}

    /// Advances to the next value; returns false if there is none.
    /// The enumerator starts before the first value. After it returned false, it starts over.
    bool MoveNext()
    {
        m_pCurrent = ValueOf(Links::Next(reinterpret_cast<Links*>(kx::detail::AddressOf(m_pCurrent) - kOffset)));
        return m_pCurrent != m_pEnd;
    }

    /// Returns the current value.
    /// Triggers the debug break past the last value, and before the first MoveNext().
    [[nodiscard]] V& Current() const
    {
        kx::detail::BreakUnless(m_pCurrent != m_pEnd);
        return *m_pCurrent;
    }

private:
    // The value follows the key in the way that an element follows its links.
    static constexpr std::uintptr_t kOffset =
        kx::detail::kElementOffset<TKeyValuePair<K, V>, Links> + kx::detail::kElementOffset<V, K>;

    static V* ValueOf(const Links* pNode) { return reinterpret_cast<V*>(kx::detail::AddressOf(pNode) + kOffset); }

    // Both point where a node has its value. For m_pEnd this is in the tree object, which has no value.
    V* m_pCurrent;
    V* m_pEnd;
};

/// An ordered map that keeps one pair per key; a later value replaces the earlier one.
template <class K, class V>
class TMap : public kx::detail::TOrderedTree<TKeyValuePair<K, V>>
{
    using Pair = TKeyValuePair<K, V>;

public:
    /// Creates an empty map. Makes no allocator call.
    TMap() = default;

    /// Inserts the pairs in order.
    TMap(std::initializer_list<Pair> pairs)
    {
        for (const Pair& pair : pairs)
            Insert(pair);
    }

    /// Returns the value of the key; inserts V() as its value if the key is missing.
    /// So reading through this operator changes the map. Logarithmic. A new key costs one allocation and two copies of
    /// key and value, one of them for a temporary pair. If these can only be moved, they are constructed in place.
    V& operator[](const K& key) KX_LIFETIMEBOUND requires std::default_initializable<V>
    {
        if constexpr (!std::is_copy_constructible_v<Pair>)
            return Emplace(key).m_pos->Value();
        else
        {
            typename TMap::SSearchPath path;
            if (auto* pNode = this->template FindNode<true>(key, path))
                return pNode->m_Element.Value();
            return this->InsertMissing(MakePair(key, MakeValue()), path)->Value();
        }
    }

    /// Returns the value of the key, in logarithmic time.
    /// A missing key triggers the debug break; if execution resumes, the result is a null reference.
    const V& operator[](const K& key) const KX_LIFETIMEBOUND
    {
        const auto pos = this->Find(key);
        return pos != this->End() ? pos->Value() : kx::detail::BreakForMissingKey<V>();
    }

    /// Returns the value of the key, or defaultValue if the key is missing. Logarithmic.
    /// For a missing key, the result refers to defaultValue itself, which may be a temporary of the caller.
    [[nodiscard]] const V& GetValue(const K& key, const V& defaultValue KX_LIFETIMEBOUND) const KX_LIFETIMEBOUND
    {
        const auto pos = this->Find(key);
        return pos != this->End() ? pos->Value() : defaultValue;
    }
    template <kx::detail::CComparesWith<K> TOther>
    [[nodiscard]] const V& GetValue(const TOther& key, const V& defaultValue KX_LIFETIMEBOUND) const KX_LIFETIMEBOUND
    {
        const V* pValue = this->TryGet(key);
        return pValue != nullptr ? *pValue : defaultValue;
    }

    /// Inserts copies, or copy-assigns the value of an existing key; returns an iterator to the element.
    /// An existing element keeps its key object and its node. Logarithmic. A new key costs one allocation and two
    /// copies of key and value, or one copy if they come as a pair.
    TTreeIterator<Pair> Insert(const K& key, const V& value)
    {
        typename TMap::SSearchPath path;
        if (auto* pNode = this->template FindNode<true>(key, path))
            return Assign(pNode, value);
        return this->InsertMissing(MakePair(key, value), path);
    }
    TTreeIterator<Pair> Insert(const Pair& pair)
    {
        typename TMap::SSearchPath path;
        if (auto* pNode = this->template FindNode<true>(pair.Key(), path))
            return Assign(pNode, pair.Value());
        return this->InsertMissing(pair, path);
    }

    /// Inserts the key with a value that is constructed from the other arguments, unless the key exists; says which.
    /// An existing element is left unchanged, and nothing is moved from. Logarithmic. A new key costs one allocation,
    /// and no copy or move but those asked for. An argument that compares with the keys becomes a key only if it is
    /// new.
    template <class... TArgs>
    TEmplaced<TTreeIterator<Pair>> Emplace(const K& key, TArgs&&... args)
    {
        return this->EmplaceUnlessFound(key, kx::detail::SInPlace(), key, std::forward<TArgs>(args)...);
    }
    template <class... TArgs>
    TEmplaced<TTreeIterator<Pair>> Emplace(K&& key, TArgs&&... args)
    {
        return this->EmplaceUnlessFound(key, kx::detail::SInPlace(), std::move(key), std::forward<TArgs>(args)...);
    }
    template <kx::detail::CComparesWith<K> TOther, class... TArgs>
    TEmplaced<TTreeIterator<Pair>> Emplace(const TOther& key, TArgs&&... args)
    {
        return this->EmplaceUnlessFound(kx::detail::LookUpKey<K>(key), kx::detail::SInPlace(), key,
                                        std::forward<TArgs>(args)...);
    }

    /// Returns an enumerator that starts before the first value.
    [[nodiscard]] TTreeValueEnumerator<K, V> GetValueEnumerator() KX_LIFETIMEBOUND
    {
        return TTreeValueEnumerator<K, V>(this->Header());
    }
    [[nodiscard]] TTreeValueEnumerator<K, const V> GetValueEnumerator() const KX_LIFETIMEBOUND
    {
        return TTreeValueEnumerator<K, const V>(this->Header());
    }

    /// Exchanges the elements of two maps, in constant time.
    /// No element is touched. Iterators to elements stay valid and belong to the other map afterwards.
    void Swap(TMap& other) { this->SwapWith(other); }

    /// Return whether both maps have the same keys with the same values, and whether they do not.
    /// Keys are compared by <, values by ==. Linear; the shapes of the trees do not matter.
    [[nodiscard]] bool operator==(const TMap& other) const requires std::equality_comparable<V>
    {
        return !Differs(other);
    }
    [[nodiscard]] bool operator!=(const TMap& other) const requires std::equality_comparable<V>
    {
        return Differs(other);
    }

private:
    static V MakeValue() noexcept requires std::default_initializable<V> { return V(); }
    static Pair MakePair(const K& key, const V& value) noexcept { return Pair(key, value); }

    TTreeIterator<Pair> Assign(SRedBlackTreeNode<Pair>* pNode, const V& value)
    {
        kx::detail::AssignTo(pNode->m_Element.Value(), value);
        return this->PositionOf(pNode);
    }

    bool Differs(const TMap& other) const noexcept requires std::equality_comparable<V>
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

/// An ordered map that keeps every inserted pair; pairs with the same key are in order newest first.
template <class K, class V>
class TMultiMap : public TRedBlackTree<TKeyValuePair<K, V>>
{
public:
    using TRedBlackTree<TKeyValuePair<K, V>>::TRedBlackTree;

    /// Inserts the key with a value that is constructed from the other arguments, and returns an iterator to the
    /// element. The element goes before those with the same key. Makes one allocation, and no copy or move but those
    /// asked for.
    template <class... TArgs>
    TTreeIterator<TKeyValuePair<K, V>> Emplace(const K& key, TArgs&&... args)
    {
        return this->EmplaceNew(kx::detail::SInPlace(), key, std::forward<TArgs>(args)...);
    }
    template <class... TArgs>
    TTreeIterator<TKeyValuePair<K, V>> Emplace(K&& key, TArgs&&... args)
    {
        return this->EmplaceNew(kx::detail::SInPlace(), std::move(key), std::forward<TArgs>(args)...);
    }
    template <kx::detail::CComparesWith<K> TOther, class... TArgs>
    TTreeIterator<TKeyValuePair<K, V>> Emplace(const TOther& key, TArgs&&... args)
    {
        return this->EmplaceNew(kx::detail::SInPlace(), key, std::forward<TArgs>(args)...);
    }
};
