// Helpers of the collection suites: they make elements, add them to any container, and compare a whole collection with
// a list of values.
#pragma once

#include "core/containers/hashmap.h"
#include "core/containers/hashset.h"
#include "core/containers/map.h"
#include "core/containers/multihashmap.h"
#include "core/containers/set.h"
#include "verification/integraltesttype.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

// The factory of a container's values: of elements, or of pairs of them. In a pair, the value is counted, and each
// value gets a new key.
template <class TValue>
struct TTestFactory
{
    TValue Create() { return TValue(m_keys.Create(), m_values.Create()); }
    const STypeStats& GetStats() const { return m_values.GetStats(); }

    ZIntegralTestFactory m_keys;
    ZIntegralTestFactory m_values;
};

template <>
struct TTestFactory<E> : ZIntegralTestFactory
{
};

// An element is hashed by its value alone, just as it is compared.
inline uint32 HashKey(const E& element)
{
    return HashKey(element.GetValue());
}

// Adds by the collection's own operation. The lists and the ordered and hashed containers choose the place themselves.
template <class TCollection, class T>
void AddValue(TCollection& collection, T&& value)
{
    if constexpr (requires { collection.Insert(value); })
        collection.Insert(value);
    else if constexpr (requires { value.Key(); })
        collection.Insert(value.Key(), value.Value());
    else if constexpr (requires { collection.Reserve(0u, false); }) // TArray
        collection.Add(std::forward<T>(value));
    else if constexpr (requires { collection.Add(value); }) // TMaxArray, which copies
        collection.Insert(collection.End(), value);
    else
        collection.Insert(collection.End(), std::forward<T>(value));
}

// Adds one of many values, at the end if the collection has such an operation.
template <class TCollection, class T>
void AppendValue(TCollection& collection, T&& value)
{
    if constexpr (requires { collection.Add(value); })
        collection.Add(std::forward<T>(value));
    else
        AddValue(collection, std::forward<T>(value));
}

// EXPECT_RANGE(col, {1, 2, 3}), or {{1, 2}, {3, 4}} for keys and values: col has these values, in this order. A failure
// prints both, and shows which elements are moved from or destroyed.
#define EXPECT_RANGE(col, ...)                                                                                         \
    do                                                                                                                 \
    {                                                                                                                  \
        /* NOLINTNEXTLINE(bugprone-reserved-identifier): the name that the report shows */                             \
        const std::vector<decltype(kx::tests::Plain(*col.Begin()))> local__range __VA_ARGS__;                          \
        EXPECT_PRED_FORMAT2(kx::tests::RangeEquals, local__range, col);                                                \
    } while (false)

namespace kx::tests
{
// The value of an element, as a list of values spells it.
inline int Plain(const E& element)
{
    return element.GetValue();
}

template <class TPair>
TKeyValuePair<int, int> Plain(const TPair& pair)
{
    return {Plain(pair.Key()), Plain(pair.Value())};
}

template <class TElement>
void PrintElement(std::ostream& stream, const TElement& element)
{
    if constexpr (requires { element.Key(); })
        stream << "(" << element.Key() << ", " << element.Value() << ")";
    else
        stream << element;
}

template <class TRange>
void PrintRange(std::ostream& stream, const TRange& range)
{
    const char* pszSeparator = "";
    stream << "(";
    for (const auto& element : range)
    {
        PrintElement(stream << pszSeparator, element);
        pszSeparator = ", ";
    }
    stream << ")";
}

template <class TValue, class TCollection>
testing::AssertionResult RangeEquals(const char* pszRange, const char* pszCollection, const std::vector<TValue>& range,
                                     const TCollection& collection)
{
    const auto isEqual = [](const TValue& value, const auto& element) { return value == Plain(element); };
    if (range.size() == collection.Size()
        && std::equal(range.begin(), range.end(), collection.Begin(), collection.End(), isEqual))
        return testing::AssertionSuccess();

    std::ostringstream message;
    PrintRange(message << "Expected equality of these collections:\n  " << pszRange << "\n    Which is: ", range);
    PrintRange(message << "\n  " << pszCollection << "\n    Which is: ", collection);
    return testing::AssertionFailure() << message.str();
}
} // namespace kx::tests
