#pragma once

#include "core/containers/inplace.h"
#include "core/platform/platform.h"

#include <concepts>
#include <cstddef>

/// The element of the containers that map keys to values: the key, then the value.
/// A stored key never changes: it is read-only, and a pair cannot be assigned. Through an iterator only the value is
/// writable. A pair is copied, never moved: both copies are made even if K and V could be moved. A pair with a key or a
/// value that can only be moved stays where it was constructed.
///
/// Works with structured bindings: `for (auto& [key, value] : map)`. For these, a file includes the header of a map.
template <class K, class V>
class TKeyValuePair
{
public:
    /// Copies both, the key first.
    TKeyValuePair(const K& key, const V& value) : m_key(key), m_value(value) {}
    TKeyValuePair(const TKeyValuePair& other) = default;

    /// Constructs the key from the first argument, then the value from the others. For the containers.
    template <class TKey, class... TArgs>
    TKeyValuePair(kx::detail::SInPlace, TKey&& key, TArgs&&... args)
        : m_key(static_cast<TKey&&>(key)), m_value(kx::detail::MakeElement<V>(static_cast<TArgs&&>(args)...))
    {
    }

    /// Moves the key, then the value, out of a pair that is about to be destroyed. For the containers.
    TKeyValuePair(kx::detail::SRelocate, TKeyValuePair& other)
        : m_key(static_cast<K&&>(other.m_key)), m_value(static_cast<V&&>(other.m_value))
    {
    }

    TKeyValuePair& operator=(const TKeyValuePair& other) = delete;
    ~TKeyValuePair() = default;

    /// Return the key, which is read-only, and the value.
    [[nodiscard]] const K& Key() const KX_LIFETIMEBOUND { return m_key; }
    [[nodiscard]] V& Value() KX_LIFETIMEBOUND { return m_value; }
    [[nodiscard]] const V& Value() const KX_LIFETIMEBOUND { return m_value; }

    /// Returns the key for 0 and the value for 1, as structured bindings ask for them.
    template <std::size_t nIndex>
    [[nodiscard]] auto& get() KX_LIFETIMEBOUND requires(nIndex < 2)
    {
        if constexpr (nIndex == 0)
            return Key();
        else
            return Value();
    }
    template <std::size_t nIndex>
    [[nodiscard]] auto& get() const KX_LIFETIMEBOUND requires(nIndex < 2)
    {
        if constexpr (nIndex == 0)
            return Key();
        else
            return Value();
    }

    /// Compares the keys alone.
    [[nodiscard]] bool operator<(const TKeyValuePair& other) const { return m_key < other.m_key; }

    /// Returns whether keys and values are equal, each by its own ==.
    [[nodiscard]] bool
    operator==(const TKeyValuePair& other) const requires std::equality_comparable<K> && std::equality_comparable<V>
    {
        return m_key == other.m_key && m_value == other.m_value;
    }

private:
    K m_key;
    V m_value;
};
