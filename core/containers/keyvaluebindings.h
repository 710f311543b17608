// Structured bindings for the pairs of the maps. Apart from keyvaluepair.h because of the cost of <utility>.
#pragma once

#include "core/containers/keyvaluepair.h"

#include <cstddef>
#include <type_traits>
#include <utility>

template <class K, class V>
struct std::tuple_size<TKeyValuePair<K, V>> : std::integral_constant<std::size_t, 2>
{
};

template <class K, class V>
struct std::tuple_element<0, TKeyValuePair<K, V>>
{
    using type = const K;
};

template <class K, class V>
struct std::tuple_element<1, TKeyValuePair<K, V>>
{
    using type = V;
};
