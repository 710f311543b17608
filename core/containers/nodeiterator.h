// Iterators and enumerators of the containers that store each element in a node of its own.
//
// A node is a struct of links, followed by the element:
//
//         +--------+-----------+
//         | links  |  element  |
//         +--------+-----------+
//         ^        ^
//         |        the position: what iterators and enumerators hold
//         the node: position - kElementOffset
//
// The end position is the address that an element would have after the container's own links, or after a null node. It
// must never be dereferenced. No element is there, so the address is computed as an integer.
#pragma once

#include "core/containers/iteratorchecks.h"
#include "core/platform/platform.h"

#include <concepts>
#include <cstddef>
#include <type_traits>

namespace kx::detail
{
/// The offset of the element in its node: directly after the links, rounded up to its alignment.
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

/// An iterator over a container of nodes; T is const for read-only access.
/// TLinks::Next returns the node that follows. The iterator goes back too if there is a TLinks::Previous. An iterator
/// stays valid until its element is erased. Nothing is checked, neither reading at the end nor advancing past it,
/// unless KX_CHECK_ITERATORS is defined.
template <class T, class TLinks>
class TNodeIterator
{
public:
    using value_type = std::remove_const_t<T>;
    using difference_type = std::ptrdiff_t;

    TNodeIterator() = default;
    explicit TNodeIterator(T* pElement) : m_pElement(pElement) {}

    /// Converts to the read-only form, never back.
    template <class TOther>
    TNodeIterator(const TNodeIterator<TOther, TLinks>& other) requires std::same_as<T, const TOther>
        : m_pElement(other.Address())
    {
    }

    [[nodiscard]] KX_CHECK_INLINE T& operator*() const { return *operator->(); }
    [[nodiscard]] KX_CHECK_INLINE T* operator->() const
    {
        KX_BREAK_IF_AT_END(TLinks::IsEnd(detail::NodeOf<TLinks>(m_pElement)));
        return m_pElement;
    }

    /// Returns the address of the element; at the end, the address that one would have.
    [[nodiscard]] T* Address() const { return m_pElement; }

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

    /// Goes back to the element before. From the end, this is the last one.
    TNodeIterator& operator--() requires requires(TLinks* pNode) { TLinks::Previous(pNode); }
    {
        m_pElement = detail::ElementOf<T>(TLinks::Previous(detail::NodeOf<TLinks>(m_pElement)));
        return *this;
    }

    TNodeIterator operator--(int) requires requires(TLinks* pNode) { TLinks::Previous(pNode); }
    {
        TNodeIterator old = *this;
        --*this;
        return old;
    }

    template <class TOther>
    [[nodiscard]] bool
    operator==(const TNodeIterator<TOther, TLinks>& other) const requires std::same_as<const T, const TOther>
    {
        return m_pElement == other.Address();
    }

private:
    T* m_pElement = nullptr;
};

/// Enumerates a container of nodes.
/// Starts at the links in the container object; the node after these is the first one.
template <class T, class TLinks>
class TNodeEnumerator
{
public:
    TNodeEnumerator(T* pBeforeFirst, T* pEnd) : m_pCurrent(pBeforeFirst), m_pEnd(pEnd) {}

    /// Advances to the next element; returns false if there is none.
    /// Must not be called again after it returned false.
    bool MoveNext()
    {
        m_pCurrent = detail::ElementOf<T>(TLinks::Next(detail::NodeOf<TLinks>(m_pCurrent)));
        return m_pCurrent != m_pEnd;
    }

    /// Returns the current element.
    /// Triggers the debug break past the last element. Must not be called before MoveNext().
    [[nodiscard]] T& Current() const
    {
        detail::BreakUnless(m_pCurrent != m_pEnd);
        return *m_pCurrent;
    }

private:
    T* m_pCurrent;
    T* m_pEnd;
};
} // namespace kx::detail
