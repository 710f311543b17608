// Two containers of logged elements beside models that are written from the steps each container promises: every
// special member function of an element, every comparison and every call of the allocator, in order. Tests drive them
// with random numbers, fuzzers with the bytes that they are given.
#pragma once

#include "tests/support/journal.h"

#include <array>
#include <memory>
#include <utility>

// What the containers must have written into the journal, by their models.
inline Journal g_expected;

inline void Expect(const std::string& word, auto nNumber)
{
    g_expected.push_back(word + std::to_string(nNumber));
}

inline void ExpectAllocation(size_t nBytes, size_t nAlignment)
{
    g_expected.push_back("alloc " + std::to_string(nBytes) + "/" + std::to_string(nAlignment));
}

// No bytes stand for null.
inline void ExpectFree(size_t nBytes)
{
    g_expected.push_back(nBytes == 0 ? "free null" : "free " + std::to_string(nBytes));
}

// An element in a walk: its key alone in sets and sequences, with the number of its node in the hash containers.
struct SEntry
{
    bool operator==(const SEntry&) const = default;

    int m_nKey = 0;
    int m_nValue = 0;
    uint64 m_nNode = 0;
};

using Entries = std::vector<SEntry>;

template <class TContainer, class TElement>
SEntry EntryOf(const TContainer& container, const TElement& element)
{
    SEntry entry;
    if constexpr (requires { element.Key(); })
        entry = {element.Key().m_nValue, element.Value().m_nValue};
    else
        entry.m_nKey = element.m_nValue;
    if constexpr (requires { container.m_pNodes; })
        entry.m_nNode =
            (detail::AddressOf(&element) - detail::AddressOf(container.m_pNodes)) / sizeof(*container.m_pNodes);
    return entry;
}

// What is left of the walk from pos on.
template <class TContainer, class TIterator>
Entries WalkFrom(const TContainer& container, TIterator pos)
{
    Entries walk;
    for (; pos != container.End(); ++pos)
        walk.push_back(EntryOf(container, *pos));
    return walk;
}

template <class TContainer>
auto At(TContainer& container, size_t nPos)
{
    auto pos = container.Begin();
    while (nPos-- > 0)
        ++pos;
    return pos;
}

// What one step has to work with. Key and value may be changed.
template <class TElement>
struct SArguments
{
    TElement m_key;
    TElement m_value;
    bool m_bGrow; // rather add than remove
};

// TModel has the operations of whole containers, and StepElement(container, model, arguments, below) does one of those
// on single elements to both; false where a result differs.
template <class TContainer, class TModel>
class Modelled
{
public:
    // Any operation. below(n) is a number from 0 to n - 1. The result says what differs, and is empty if nothing does.
    template <class TBelow>
    std::string Step(TBelow&& below)
    {
        // Long stretches of growth and of shrinking, so that all ways of growing come up.
        SArguments<typename TModel::Element> arguments{static_cast<int>(below(m_nKeys)) * 5 - 100, 1000 + m_nSteps,
                                                       m_nSteps / 1000 % 2 == 0};
        ++m_nSteps;
        m_nKeys = below(200) == 0 ? uint64{8} << below(7) : m_nKeys;
        const size_t i = below(2);
        bool bAgrees = true;
        TakeJournal();
        if (below(100) == 0)
        {
            const size_t j = below(3) == 0 ? i : 1 - i;
            bAgrees = StepWhole(i, j, below(5));
        }
        else
            bAgrees = StepElement((*m_containers)[i], m_models[i], arguments, below);
        return bAgrees ? Difference() : "another result, after\n" + Joined(TakeJournal());
    }

    std::string Finish()
    {
        TakeJournal();
        m_containers.reset();
        m_models[1].Die();
        m_models[0].Die();
        return CompareJournals();
    }

private:
    bool StepWhole(size_t i, size_t j, uint64 nOperation)
    {
        TContainer& container = (*m_containers)[i];
        TContainer& other = (*m_containers)[j];
        TModel& model = m_models[i];
        TModel& otherModel = m_models[j];
        bool bAgrees = true;
        switch (nOperation)
        {
        case 0:
            model.Clear();
            container.Clear();
            break;
        case 1:
            if (i != j)
                model.CopyAssign(otherModel);
            container = std::as_const(other);
            break;
        case 2:
        {
            TModel copy;
            if constexpr (requires { copy.CopyConstruct(otherModel); })
                copy.CopyConstruct(otherModel);
            else
                copy.CopyAssign(otherModel);
            MoveAssign(model, copy);
            copy.Die();
            container = TContainer(other);
            break;
        }
        case 3:
        {
            container = std::move(other);
            if (i == j)
                break;
            // What was moved from can be assigned to, if nothing else.
            MoveAssign(model, otherModel);
            TModel empty;
            MoveAssign(otherModel, empty);
            empty.Die();
            bAgrees = other.IsEmpty() && other.Validate(); // NOLINT(bugprone-use-after-move)
            other = TContainer();
            break;
        }
        default:
        {
            TModel temporary;
            Take(temporary, model);
            if (i != j)
                MoveAssign(model, otherModel);
            MoveAssign(otherModel, temporary);
            temporary.Die();
            if constexpr (requires { container.Swap(other); })
                container.Swap(other);
            else
            {
                TContainer moved(std::move(container));
                bAgrees = container.IsEmpty() && container.Validate(); // NOLINT(bugprone-use-after-move)
                container = std::move(other);
                other = std::move(moved);
            }
        }
        }
        return bAgrees;
    }

    // Most containers give all that they have in one piece.
    static void Take(TModel& model, TModel& other)
    {
        if constexpr (requires { model.TakeElements(other); })
            model.TakeElements(other);
        else
            model = std::exchange(other, TModel());
    }

    static void MoveAssign(TModel& model, TModel& other)
    {
        model.Die();
        Take(model, other);
    }

    std::string Difference() const
    {
        std::string difference = CompareJournals();
        for (size_t i = 0; i < 2u && difference.empty(); ++i)
        {
            const TContainer& container = (*m_containers)[i];
            const Entries walk = m_models[i].Walk();
            if (!container.Validate())
                difference = "broken";
            else if (container.Size() != walk.size() || container.IsEmpty() != walk.empty())
                difference = "another size";
            else if (WalkFrom(container, container.Begin()) != walk)
                difference = "another walk";
            else if (!m_models[i].Fits(container))
                difference = "another shape";
            else if (!EnumeratesItsWalk(container))
                difference = "another enumeration";
        }
        return difference;
    }

    static bool EnumeratesItsWalk(const TContainer& container)
    {
        auto enumerator = container.GetEnumerator();
        for (const auto& element : container)
        {
            if (!enumerator.MoveNext() || &enumerator.Current() != &element)
                return false;
        }
        return !enumerator.MoveNext();
    }

    static std::string CompareJournals()
    {
        const std::string expected = Joined(std::exchange(g_expected, {}));
        const std::string actual = Joined(TakeJournal());
        return actual == expected ? "" : "expected " + expected + "\nactual   " + actual;
    }

    static std::string Joined(const Journal& journal)
    {
        std::string text;
        for (const std::string& word : journal)
            text += word + ", ";
        return text;
    }

    // Made anew by Finish only, and on the heap, so that a sanitizer sees what reaches out of them.
    std::unique_ptr<std::array<TContainer, 2>> m_containers = std::make_unique<std::array<TContainer, 2>>();
    std::array<TModel, 2> m_models;
    uint64 m_nKeys = 32;
    int m_nSteps = 0;
};
