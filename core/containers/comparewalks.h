// The order of containers whose elements are in order.
#pragma once

#include "core/platform/platform.h"

#include <compare>
#include <concepts>

namespace kx::detail
{
template <class T>
concept COrdered = requires(const T& first, const T& second)
{
    {
        first < second
        } -> std::convertible_to<bool>;
};

/// Compares by the element's own <=>, or else by its <.
template <class T>
auto CompareElements(const T& first, const T& second) noexcept
{
    if constexpr (std::three_way_comparable<T>)
        return first <=> second;
    else if (first < second)
        return std::weak_ordering::less;
    else
        return second < first ? std::weak_ordering::greater : std::weak_ordering::equivalent;
}

/// Compares two walks element by element; a walk that ends first is the lesser one.
template <class TContainer>
auto CompareWalks(const TContainer& first, const TContainer& second) noexcept
{
    using TOrder = decltype(detail::CompareElements(*first.Begin(), *second.Begin()));
    auto pos = first.Begin();
    auto other = second.Begin();
    for (; pos != first.End() && other != second.End(); ++pos, ++other)
    {
        if (const TOrder order = detail::CompareElements(*pos, *other); std::is_neq(order))
            return order;
    }
    return pos != first.End()      ? TOrder(std::strong_ordering::greater)
           : other != second.End() ? TOrder(std::strong_ordering::less)
                                   : TOrder(std::strong_ordering::equal);
}
} // namespace kx::detail
