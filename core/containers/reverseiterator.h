// The reverse iterator of the containers, without the cost of <iterator>.
#pragma once

#include "core/platform/platform.h"

/// Walks a container backwards: TIterator is its iterator, and its -- the step.
/// Holds the position after its element, so rend() is valid as long as Begin().
template <class TIterator>
class TReverseIterator
{
public:
    using value_type = typename TIterator::value_type;
    using difference_type = typename TIterator::difference_type;

    TReverseIterator() = default;
    explicit TReverseIterator(TIterator after) : m_after(after) {}

    /// Returns the position after the element.
    [[nodiscard]] TIterator Base() const { return m_after; }

    [[nodiscard]] auto& operator*() const
    {
        TIterator pos = m_after;
        return *--pos;
    }
    [[nodiscard]] auto* operator->() const { return kx::detail::PointerTo(**this); }

    TReverseIterator& operator++()
    {
        --m_after;
        return *this;
    }
    TReverseIterator operator++(int) { return TReverseIterator(m_after--); }
    TReverseIterator& operator--()
    {
        ++m_after;
        return *this;
    }
    TReverseIterator operator--(int) { return TReverseIterator(m_after++); }

    [[nodiscard]] bool operator==(const TReverseIterator& other) const { return m_after == other.m_after; }

private:
    TIterator m_after = {};
};
