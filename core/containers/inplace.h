// Construction of elements from the arguments of the caller, and the message for those that cannot be copied.
#pragma once

#include "core/platform/platform.h"

#include <type_traits>

namespace kx::detail
{
/// Selects the constructor of a node or a pair that constructs its element from the arguments that follow.
struct SInPlace
{
};

/// Selects the constructor of a pair that moves from the pair that follows.
struct SRelocate
{
};

/// Returns an element constructed from the arguments, which are the members of an aggregate.
/// The braces are for compilers that cannot initialise an aggregate with parentheses.
template <class T, class... TArgs>
T MakeElement(TArgs&&... args) noexcept
{
    if constexpr (std::is_aggregate_v<T> && !std::is_constructible_v<T, TArgs...>)
        return T{static_cast<TArgs&&>(args)...};
    else
        return T(static_cast<TArgs&&>(args)...);
}

/// Refuses to compile the operation that calls it if the elements can only be moved.
template <class T>
consteval void RequireCopies()
{
    static_assert(std::is_copy_constructible_v<T>,
                  "this operation copies elements: bring in what can only be moved by Emplace, and move the container");
}
} // namespace kx::detail
