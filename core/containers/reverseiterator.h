// The reverse iterator of the containers, without the cost of <iterator>.
#pragma once

#include "core/platform/platform.h"

#include <compare>
#include <cstddef>
#include <type_traits>

/// Walks a container backwards: TIterator is its iterator, and its -- the step.
/// Holds the position after its element, so rend() is valid as long as Begin().
template <class TIterator>
class TReverseIterator
{
    // Whether the iterators have random access.
    static constexpr bool kFar = requires(const TIterator& first, const TIterator& second) { first - second; };

public:
    using value_type = std::remove_cvref_t<decltype(*TIterator())>;
    using difference_type = std::ptrdiff_t;

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

    /// The steps of iterators with random access.
    TReverseIterator& operator+=(difference_type nSteps) requires kFar
    {
        m_after -= nSteps;
        return *this;
    }
    TReverseIterator& operator-=(difference_type nSteps) requires kFar { return *this += -nSteps; }
    [[nodiscard]] TReverseIterator operator+(difference_type nSteps) const requires kFar
    {
        return TReverseIterator(m_after - nSteps);
    }
    [[nodiscard]] friend TReverseIterator operator+(difference_type nSteps, const TReverseIterator& pos) requires kFar
    {
        return pos + nSteps;
    }
    [[nodiscard]] TReverseIterator operator-(difference_type nSteps) const requires kFar { return *this + -nSteps; }
    [[nodiscard]] difference_type operator-(const TReverseIterator& other) const requires kFar
    {
        return other.m_after - m_after;
    }
    [[nodiscard]] auto& operator[](difference_type nSteps) const requires kFar { return *(*this + nSteps); }
    [[nodiscard]] auto operator<=>(const TReverseIterator& other) const requires kFar
    {
        return other.m_after <=> m_after;
    }

    [[nodiscard]] bool operator==(const TReverseIterator& other) const { return m_after == other.m_after; }

private:
    TIterator m_after = {};
};
