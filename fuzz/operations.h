// Operations on two containers, chosen by bytes, beside standard containers of the same content.
#pragma once

#include "tests/support/journal.h"

#include <algorithm>
#include <cstdlib>

inline void Demand(bool bCondition)
{
    if (!bCondition)
        std::abort();
}

// Takes steps on one of two TPairs of containers, or on both of them whole, until the bytes are used up; below(n) is
// the next byte modulo n. Every block must come back to the allocator.
template <class TPair>
void Operate(const uint8* pData, const uint8* pEnd)
{
    const auto below = [&](uint64 n) { return pData == pEnd ? 0 : *pData++ % n; };
    JournalAllocator allocator;
    GetMemoryManager()->InstallAllocator(ALLOCATOR_NORMAL, &allocator);
    {
        TPair pairs[2];
        while (pData != pEnd)
        {
            const uint64 n = below(2);
            const uint64 nOperation = below(16);
            if (nOperation == 0)
                pairs[n] = pairs[1 - n];
            else if (nOperation == 1)
                pairs[n] = TPair(std::as_const(pairs[1 - n]));
            else if (nOperation == 2)
                pairs[n] = std::exchange(pairs[1 - n], TPair());
            else
                pairs[n].Step(below);
            g_journal.clear();
            Demand(pairs[0].Agrees() && pairs[1].Agrees());
        }
    }
    GetMemoryManager()->UnInstallAllocator(ALLOCATOR_NORMAL);
}

// The first byte picks the container.
template <class... TPairs>
int OperateOneOf(const uint8* pData, std::size_t nSize)
{
    constexpr void (*kBodies[])(const uint8*, const uint8*) = {&Operate<TPairs>...};
    if (nSize != 0)
        kBodies[pData[0] % sizeof...(TPairs)](pData + 1, pData + nSize);
    return 0;
}

// A map or a set of numbers, ordered or hashed, beside pairs of a key and a value.
template <class TContainer, bool bMulti>
struct TKeyed
{
    using Element = typename TContainer::value_type;
    using Model = std::multimap<int, int>;
    static constexpr bool kIsMap = requires(const Element& element) { element.Key(); };

    static Model::value_type PartsOf(const Element& element)
    {
        if constexpr (kIsMap)
            return {element.Key(), element.Value()};
        else
            return {element, 0};
    }

    void Step(auto below)
    {
        const int nKey = static_cast<int>(below(40)) - 20;
        const int nValue = kIsMap ? static_cast<int>(below(256)) : 0;
        const auto found = m_container.Find(nKey);
        Demand((found == m_container.End()) == (m_model.find(nKey) == m_model.end()));
        if (below(3) == 0 && found != m_container.End())
        {
            m_model.erase(std::find(m_model.begin(), m_model.end(), PartsOf(*found)));
            m_container.Erase(found);
            return;
        }
        if (!bMulti)
            m_model.erase(nKey);
        m_model.emplace(nKey, nValue);
        if constexpr (requires { m_container.Insert(nKey, nValue); })
            m_container.Insert(nKey, nValue);
        else if constexpr (kIsMap)
            m_container.Insert(Element(nKey, nValue));
        else
            m_container.Insert(nKey);
    }

    bool Agrees() const
    {
        std::vector<std::pair<int, int>> content, model(m_model.begin(), m_model.end());
        for (const Element& element : m_container)
            content.push_back(PartsOf(element));
        std::sort(content.begin(), content.end());
        std::sort(model.begin(), model.end());
        return content == model && m_container.Size() == model.size() && m_container.Validate();
    }

    TContainer m_container;
    Model m_model;
};
