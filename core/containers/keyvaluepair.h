#pragma once

#include "core/platform/platform.h"

#include <concepts>

/// The element of the containers that map keys to values: the key, then the value.
/// A stored key never changes: it is read-only, and a pair cannot be assigned. Through an iterator only the value is
/// writable. A pair is copied, never moved: both copies are made even if K and V could be moved.
template <class K, class V>
class TKeyValuePair
{
public:
    /// Copies both, the key first.
    TKeyValuePair(const K& key, const V& value) : m_key(key), m_value(value) {}
    TKeyValuePair(const TKeyValuePair& other) = default;
    TKeyValuePair& operator=(const TKeyValuePair& other) = delete;
    ~TKeyValuePair() = default;

    /// Return the key, which is read-only, and the value.
    [[nodiscard]] const K& Key() const KX_LIFETIMEBOUND { return m_key; }
    [[nodiscard]] V& Value() KX_LIFETIMEBOUND { return m_value; }
    [[nodiscard]] const V& Value() const KX_LIFETIMEBOUND { return m_value; }

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
