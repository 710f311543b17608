// Operations on two containers, chosen by bytes, beside standard containers of the same content.
#pragma once

#include "tests/support/containers.h"
#include "tests/support/journal.h"

#include <algorithm>
#include <cstdlib>

// A container of numbers, or of pairs of them, beside the same pairs in a vector: in the order of a sequence, or in
// any. Keys repeat in it if bMulti.
template <class TContainer, bool bMulti = true>
struct TCompared
{
    using Element = typename TContainer::value_type;
    static constexpr bool kIsSequence = requires(TContainer & c, const Element& element)
    {
        c.Insert(c.Begin(), element);
    };
    static constexpr bool kIsMap = requires(const Element& element) { element.Key(); };

    static std::pair<int, int> PartsOf(const Element& element)
    {
        if constexpr (kIsMap)
            return {element.Key(), element.Value()};
        else
            return {element, 0};
    }

    void Step(auto below)
    {
        auto place = static_cast<std::ptrdiff_t>(below(m_model.size() + 1));
        const std::pair<int, int> parts(below(40), kIsMap ? below(256) : 0);
        const auto pos = std::next(m_container.Begin(), place);
        if (below(3) == 0 && pos != m_container.End())
        {
            const auto found = std::find(m_model.begin(), m_model.end(), PartsOf(*pos));
            m_model.erase(kIsSequence ? m_model.begin() + place : found);
            m_container.Erase(pos);
        }
        else if (m_model.size() < 200)
        {
            if (!bMulti)
                place -= static_cast<std::ptrdiff_t>(
                    std::erase_if(m_model, [&](const auto& other) { return other.first == parts.first; }));
            m_model.insert(m_model.begin() + std::max<std::ptrdiff_t>(place, 0), parts);
            if constexpr (kIsSequence)
                m_container.Insert(pos, parts.first);
            else if constexpr (requires { m_container.Insert(1, 1); })
                m_container.Insert(parts.first, parts.second);
            else if constexpr (kIsMap)
                m_container.Insert(Element(parts.first, parts.second));
            else
                m_container.Insert(parts.first);
        }
    }

    bool Agrees() const
    {
        std::vector<std::pair<int, int>> content, model = m_model;
        for (const Element& element : m_container)
            content.push_back(PartsOf(element));
        std::sort(content.begin(), kIsSequence ? content.begin() : content.end());
        std::sort(model.begin(), kIsSequence ? model.begin() : model.end());
        return content == model && m_container.Size() == model.size() && m_container.Validate();
    }

    TContainer m_container;
    std::vector<std::pair<int, int>> m_model;
};

// Uses the bytes up; below(n) is the next one modulo n. Every block must come back to the allocator.
template <class TCompared>
void Operate(const uint8* pData, const uint8* pEnd)
{
    const auto below = [&](uint64 n) { return pData == pEnd ? 0 : *pData++ % n; };
    JournalAllocator allocator;
    GetMemoryManager()->InstallAllocator(ALLOCATOR_NORMAL, &allocator);
    {
        TCompared containers[2];
        while (pData != pEnd)
        {
            const uint64 n = below(2);
            const uint64 nOperation = below(16);
            if (nOperation == 0)
                containers[n] = containers[1 - n];
            else if (nOperation == 1)
                containers[n] = TCompared(containers[1 - n]);
            else if (nOperation == 2)
                containers[n] = std::exchange(containers[1 - n], TCompared());
            else
                containers[n].Step(below);
            g_journal.clear();
            if (!containers[0].Agrees() || !containers[1].Agrees())
                std::abort();
        }
    }
    GetMemoryManager()->UnInstallAllocator(ALLOCATOR_NORMAL);
}

// The first byte picks the container.
template <class... TCompared>
int OperateOneOf(const uint8* pData, std::size_t nSize)
{
    constexpr void (*kBodies[])(const uint8*, const uint8*) = {&Operate<TCompared>...};
    if (nSize != 0)
        kBodies[pData[0] % sizeof...(TCompared)](pData + 1, pData + nSize);
    return 0;
}
