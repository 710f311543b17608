// What the models of the ordered and of the hash containers have in common; see containermodel.h.
#pragma once

#include "tests/support/containermodel.h"

#include <concepts>

// bValues: keys with values; otherwise keys alone.
template <bool bValues>
struct KeyedModel
{
    using Element = Logged;

    static SEntry MakeEntry(int nKey, int nValue) { return {nKey, bValues ? nValue : 0}; }

    static void ExpectCopy(const SEntry& entry)
    {
        Expect("copy ", entry.m_nKey);
        if (bValues)
            Expect("copy ", entry.m_nValue);
    }

    static void ExpectDelete(const SEntry& entry)
    {
        if (bValues)
            Expect("delete ", entry.m_nValue);
        Expect("delete ", entry.m_nKey);
    }

    static void ReplaceValue(SEntry& entry, int nValue)
    {
        if (bValues)
            Expect(std::to_string(std::exchange(entry.m_nValue, nValue)) + " = copy ", nValue);
    }
};

// Key and value of an element; the key twice where it is all.
template <class TElement>
std::pair<const Logged*, const Logged*> Parts(const TElement& element)
{
    if constexpr (requires { element.Key(); })
        return {&element.Key(), &element.Value()};
    else
        return {&element, &element};
}

// A model's Insert, Find and Erase tell and take places in the walk. Find may be told as the place behind the last one.
template <class TContainer, class TModel, class TBelow>
requires requires(TModel model)
{
    model.MakeEntry(0, 0);
}
bool StepElement(TContainer& container, TModel& model, SArguments<Logged>& arguments, TBelow&& below)
{
    const Entries walk = model.Walk();
    const size_t nAt = below(walk.size() + 1);
    const auto atInsertion = At(container, nAt);
    const auto agrees = [&](auto pos, size_t nPlace)
    {
        const Entries expected = model.Walk();
        return WalkFrom(container, pos)
               == Entries(expected.begin() + static_cast<std::ptrdiff_t>(nPlace), expected.end());
    };
    const Logged* pKey = &arguments.m_key;
    const Logged* pValue = &arguments.m_value;
    switch ((arguments.m_bGrow ? "iiiiiiiiiiieeffro" : "iiiiieeeeeeefrrro")[below(17)])
    {
    case 'i':
    {
        // Key and value may be elements of the container.
        if (nAt < walk.size() && below(3) == 0)
        {
            pValue = Parts(*atInsertion).second;
            const Logged* const apKeys[] = {pKey, pValue, Parts(*container.Begin()).first};
            pKey = apKeys[below(3)];
        }
        const auto insert = [&](const auto&... values)
        {
            const size_t nPlace = model.Insert(pKey->m_nValue, pValue->m_nValue, sizeof...(values) == 1);
            return agrees(container.Insert(values...), nPlace);
        };
        if constexpr (requires { container.Insert(*pKey); })
            return insert(*pKey);
        else if constexpr (!TModel::kTakesPairs)
            return insert(*pKey, *pValue);
        else
        {
            if constexpr (requires { container.Insert(*pKey, *pValue); })
            {
                if (below(2) == 0)
                    return insert(*pKey, *pValue);
            }
            const typename TContainer::value_type pair(*pKey, *pValue);
            TakeJournal();
            const bool bAgrees = insert(pair);
            model.ExpectDelete(EntryOf(container, pair));
            return bAgrees;
        }
    }
    case 'e':
        if (nAt == walk.size())
            return true;
        model.Erase(nAt);
        return agrees(container.Erase(atInsertion), nAt);
    case 'f':
    {
        const size_t nFound = model.Find(pKey->m_nValue);
        const bool bFound = agrees(container.Find(*pKey), nFound);
        model.Find(pKey->m_nValue);
        model.Find(pKey->m_nValue);
        return bFound && agrees(std::as_const(container).Find(*pKey), nFound)
               && std::as_const(container).Contains(*pKey) == (nFound < walk.size());
    }
    case 'r':
        if constexpr (requires { container.Remove(*pKey); })
        {
            const size_t nFound = model.Find(pKey->m_nValue);
            if (nFound < walk.size())
                model.Erase(nFound);
            return container.Remove(*pKey) == (nFound < walk.size());
        }
        return true;
    default:
        return model.StepOther(container, arguments.m_key, below);
    }
}
