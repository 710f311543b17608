#pragma once

#include <concepts>

// The element of the containers that map keys to values: the key, then the value.
//
// The key is read-only and a pair cannot be assigned, so that an element of a container never gets another key under
// the container's feet; what an iterator gives can change its value alone. A pair is copied, never moved: both copies
// run even where K and V could be moved.
template <class K, class V>
class TKeyValuePair
{
public:
    // Copies both, the key first.
    TKeyValuePair(const K& key, const V& value) : m_key(key), m_value(value) {}
    TKeyValuePair(const TKeyValuePair& other) = default;
    TKeyValuePair& operator=(const TKeyValuePair& other) = delete;
    ~TKeyValuePair() = default;

    const K& Key() const { return m_key; }
    V& Value() { return m_value; }
    const V& Value() const { return m_value; }

    // By keys alone.
    bool operator<(const TKeyValuePair& other) const { return m_key < other.m_key; }

    // Equal keys and equal values, each by its own ==.
    bool
    operator==(const TKeyValuePair& other) const requires std::equality_comparable<K> && std::equality_comparable<V>
    {
        return m_key == other.m_key && m_value == other.m_value;
    }

private:
    K m_key;
    V m_value;
};
