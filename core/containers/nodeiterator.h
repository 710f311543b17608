// Iterators and enumerators of the containers that keep each element in a node of its own.
//
// A node is a struct of links with the element behind them:
//
//         +--------+-----------+
//         | links  |  element  |
//         +--------+-----------+
//         ^        ^
//         |        the position: what iterators and enumerators hold
//         the node: position - kElementOffset
//
// The position behind the last element is where the element would stand in a node that has none: the links that the
// container holds itself, or a null node. So it is an address that must never be read, and it is formed on numbers.
#pragma once

#include "core/platform/platform.h"

#include <concepts>
#include <cstddef>
#include <type_traits>

namespace kx::detail
{
// The distance of the element in a node: directly behind the links, or where its alignment takes it.
template <class T, class TLinks>
inline constexpr std::uintptr_t kElementOffset = (sizeof(TLinks) + alignof(T) - 1) / alignof(T) * alignof(T);

template <class T, class TLinks>
T* ElementOf(TLinks* pNode)
{
    return reinterpret_cast<T*>(detail::AddressOf(pNode) + kElementOffset<T, TLinks>);
}

template <class TLinks, class T>
TLinks* NodeOf(T* pElement)
{
    return reinterpret_cast<TLinks*>(detail::AddressOf(pElement) - kElementOffset<T, TLinks>);
}

// A position in a container of nodes; T is const for a read-only one. TLinks::Next tells which node follows.
// A forward iterator. Stays valid, with its element, until that element is erased. Nothing is checked: neither reading
// at the end nor stepping beyond it.
template <class T, class TLinks>
class TNodeIterator
{
public:
    using value_type = std::remove_const_t<T>;
    using difference_type = std::ptrdiff_t;

    TNodeIterator() = default;
    explicit TNodeIterator(T* pElement) : m_pElement(pElement) {}

    // To the read-only form, never back.
    template <class TOther>
    TNodeIterator(const TNodeIterator<TOther, TLinks>& other) requires std::same_as<T, const TOther>
        : m_pElement(other.operator->())
    {
    }

    T& operator*() const { return *m_pElement; }
    T* operator->() const { return m_pElement; }

    TNodeIterator& operator++()
    {
        m_pElement = detail::ElementOf<T>(TLinks::Next(detail::NodeOf<TLinks>(m_pElement)));
        return *this;
    }

    TNodeIterator operator++(int)
    {
        TNodeIterator old = *this;
        ++*this;
        return old;
    }

    template <class TOther>
    bool operator==(const TNodeIterator<TOther, TLinks>& other) const requires std::same_as<const T, const TOther>
    {
        return m_pElement == other.operator->();
    }

private:
    T* m_pElement = nullptr;
};

// A walk over a container of nodes. Starts at the links that the container holds, whose next node is the first one.
template <class T, class TLinks>
class TNodeEnumerator
{
public:
    TNodeEnumerator(T* pBeforeFirst, T* pEnd) : m_pCurrent(pBeforeFirst), m_pEnd(pEnd) {}

    // Advances; true exactly when the enumerator then stands on an element. Must not be called again after false.
    bool MoveNext()
    {
        m_pCurrent = detail::ElementOf<T>(TLinks::Next(detail::NodeOf<TLinks>(m_pCurrent)));
        return m_pCurrent != m_pEnd;
    }

    // The element it stands on. Takes the debug break behind the last element; must not be called before MoveNext().
    T& Current() const
    {
        detail::BreakUnless(m_pCurrent != m_pEnd);
        return *m_pCurrent;
    }

private:
    T* m_pCurrent;
    T* m_pEnd;
};
} // namespace kx::detail
