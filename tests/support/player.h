// Plays operations on two containers of logged elements, and writes a line for each:
//
//   a insert 1 7 -> 1: alloc 12/4, copy 7, move 5, delete -1, free 8 | 3/3 0/0 5a1c09f2
//
//   container, operation, arguments -> result: element operations, comparisons and allocator calls in order
//   | the sizes of a and b, with the capacity or the number of buckets where there is one, and a hash of both walks
//
// A result is a place in the walk (0 is the first element, or the end), a number, true or false. Operations are read
// from text or drawn at random. Nothing here depends on the compiler, the standard library or the system: a journal is
// the same everywhere.
#pragma once

#include "tests/support/containers.h"
#include "tests/support/journal.h"

#include <algorithm>
#include <array>
#include <functional>
#include <iomanip>
#include <memory>
#include <sstream>

// Comparisons are part of the journal too.
inline bool operator<(const Logged& left, const Logged& right)
{
    Step();
    g_journal.push_back(std::to_string(left.m_nValue) + " < " + std::to_string(right.m_nValue));
    return left.m_nValue < right.m_nValue;
}

inline uint32 HashKey(const Logged& key)
{
    Step();
    return HashKey(key.m_nValue);
}

// A value that TMap::operator[] can make.
struct SDefaultLogged : Logged
{
    SDefaultLogged() : Logged(0) {}
    using Logged::Logged;
};

// A hash container whose fields a test may see, and break.
template <class TContainer>
struct TOpen : TContainer
{
    using TContainer::m_nBucketCount;
    using TContainer::m_nFreeHead;
    using TContainer::m_nSize;
    using TContainer::m_pBuckets;
    using TContainer::m_pNodes;
    using TContainer::TContainer;
};

template <class TContainer>
class TPlayer
{
    // What the container is.
    using Value = typename TContainer::value_type;
    static constexpr bool kIsSequence = requires(TContainer & c, const Value& value) { c.Insert(c.Begin(), value); };
    static constexpr bool kIsList = kIsSequence && requires(TContainer & c, const Value& value) { c.Insert(value); };
    static constexpr bool kIsArray = requires(TContainer & c) { c.Reserve(1u, false); };
    static constexpr bool kIsMaxArray = std::is_same_v<TContainer, TMaxArray<Value, 10>>;
    static constexpr bool kIsMap = requires(const Value& value) { value.Key(); };
    static constexpr bool kIsOrdered = requires(TContainer & c, const Logged& key) { c.LowerBound(key); };
    static constexpr bool kIsHashed = !kIsSequence && !kIsOrdered;
    static constexpr bool kHasIndex = kIsOrdered && requires(TContainer & c, const Logged& key) { c[key]; };
    using First = std::conditional_t<kIsSequence, Value, Logged>;
    using Second = std::conditional_t<kHasIndex, SDefaultLogged, First>;

public:
    TPlayer()
    {
        KnowWhole();
        if constexpr (kIsSequence)
            KnowSequence();
        else
            KnowKeyed();
        Know("erase", "e", 3, 8, [](SCall& x) { return x.c.Erase(x.pos); });
        Know("drain", "np", 1, 2,
             [](SCall& x)
             {
                 auto pos = x.own;
                 for (int i = 0; i < x.nFirst && pos != x.c.End(); ++i)
                     pos = x.c.Erase(pos);
                 return pos;
             });
    }

    // An operation as it is written, whatever follows "->", and what it does.
    std::string Play(const std::string& text)
    {
        const std::string operation = text.substr(0, text.find(" ->"));
        const size_t nNumbers = std::min(operation.find_first_of("-0123456789"), operation.size());
        std::istringstream numbers(operation.substr(nNumbers));
        int anNumbers[2] = {};
        numbers >> anNumbers[0] >> anNumbers[1];
        const std::string name = operation.substr(2, nNumbers - 2 - (nNumbers < operation.size() ? 1 : 0));

        std::vector<First> firsts;
        std::vector<Second> seconds;
        const int nElements = name == "fill" ? anNumbers[0] : 1;
        firsts.reserve(static_cast<size_t>(nElements));
        seconds.reserve(static_cast<size_t>(nElements));
        for (int i = 0; i < nElements; ++i)
        {
            firsts.emplace_back(name == "fill" ? anNumbers[1] + 5 * i : anNumbers[0]);
            seconds.emplace_back(name == "fill" ? m_nFresh++ : anNumbers[1]);
        }
        const size_t n = operation[0] == 'a' ? 0 : 1;
        SCall call{(*m_containers)[n], (*m_containers)[1 - n], anNumbers[0], anNumbers[1], firsts, seconds};
        TakeJournal();
        std::string result = "unknown operation";
        g_nSteps = 0;
        for (const SKnown& known : m_known)
            result = known.m_name == name ? known.m_play(call) : result;
        m_nSteps = g_nSteps;
        const std::string journal = JoinedJournal();
        return operation + " -> " + result + ": " + journal + " | " + State();
    }

    // The number of steps of the operation played last that may throw.
    int Steps() const { return m_nSteps; }

    // Destroys both containers. No operation may follow.
    std::string Finish()
    {
        TakeJournal();
        m_containers.reset();
        return JoinedJournal();
    }

    // Any operation; below(n) is a random number from 0 to n - 1. There are long stretches of growth and of shrinking,
    // and a fifth of the operations is on whole containers, a third of these with one that has just become empty.
    template <class TBelow>
    std::string Draw(TBelow below)
    {
        const bool bGrow = m_nDrawn++ / 200 % 2 == 0;
        if (!m_next.empty())
            return std::exchange(m_next, {});
        const uint64 n = below(2);
        const uint64 nSize = (*m_containers)[n].Size();
        m_nKeys = below(100) == 0 ? uint64{8} << below(7) : m_nKeys;
        const SKnown* pKnown = nullptr;
        do
            pKnown = &m_known[below(m_known.size())];
        while (!pKnown->IsPossible(nSize) || below(8) >= (bGrow ? pKnown->m_nWhenGrowing : pKnown->m_nWhenShrinking));
        const uint64 nRoom = kIsMaxArray ? std::max<uint64>(10 - nSize, 1) : uint64{2} << below(8);
        const std::map<char, uint64> drawn = {{'p', below(3) == 0   ? 0
                                                    : below(3) == 0 ? nSize
                                                                    : below(nSize + 1)},
                                              {'e', below(nSize + (nSize == 0))},
                                              {'k', below(m_nKeys) * 5 - 100},
                                              {'v', 1000 + below(1000)},
                                              {'n', 1 + below(nRoom)},
                                              {'f', below(2)},
                                              {'c', below(2 * nSize + 3)},
                                              {'b', nSize + below(5)}};
        std::string operation = "ab"[n] + (' ' + pKnown->m_name);
        for (const char cLetter : pKnown->m_arguments)
            operation += ' ' + std::to_string(static_cast<int>(drawn.at(cLetter)));
        if (pKnown >= &m_known[kWholes] || below(3) != 0)
            return operation;
        m_next = operation;
        operation = "ab"[below(2)];
        return operation + (below(2) == 0 ? " clear" : " reset");
    }

private:
    // What an operation works with: the container and the other one, the arguments as numbers, as positions in the
    // container, and as elements that were made before the journal began.
    struct SCall
    {
        TContainer& c;
        TContainer& other;
        int nFirst;
        int nSecond;
        std::vector<First>& firsts;
        std::vector<Second>& seconds;
        First& first = firsts[0];
        Second& second = seconds[0];
        typename TContainer::iterator pos = At(c, nFirst);
        typename TContainer::iterator own = At(c, nSecond);
    };

    // The arguments are letters: a place, the place of an element, a key, a value, a number of elements, a flag, a
    // capacity, a number of buckets. The weights are up to 8.
    struct SKnown
    {
        bool IsPossible(uint64 nSize) const
        {
            const bool bAdds = m_name != "find" && std::strchr("aif", m_name[0]) != nullptr;
            return (nSize != 0 || m_arguments.find('e') == std::string::npos) && !(bAdds && kIsMaxArray && nSize == 10);
        }

        std::string m_name;
        std::string m_arguments;
        uint64 m_nWhenGrowing;
        uint64 m_nWhenShrinking;
        std::function<std::string(SCall&)> m_play;
    };

    template <class TBody>
    void Know(const char* pszName, const char* pszArguments, uint64 nWhenGrowing, uint64 nWhenShrinking, TBody body)
    {
        const auto play = [body](SCall& x)
        {
            if constexpr (!std::is_void_v<decltype(body(x))>)
                return Told(x.c, body(x));
            else
                return body(x), std::string();
        };
        m_known.push_back({pszName, pszArguments, nWhenGrowing, nWhenShrinking, play});
    }

    // ---- Operations on whole containers.

    static constexpr size_t kWholes = 7;

    void KnowWhole()
    {
        Know("assign", "", 1, 1, [](SCall& x) { x.c = std::as_const(x.other); });
        Know("assign self", "", 1, 1, [](SCall& x) { x.c = std::as_const(x.c); });
        Know("copy", "", 1, 1, [](SCall& x) { x.c = TContainer(std::as_const(x.other)); });
        Know("move", "", 1, 1, [](SCall& x) { return x.c = std::move(x.other), IsEmptied(x.other); });
        Know("move self", "", 1, 1, [&](SCall& x) { x.c = std::move(x.nFirst == 0 ? x.c : x.other); });
        Know("take", "", 1, 1, [](SCall& x) { return x.c = TContainer(std::move(x.other)), IsEmptied(x.other); });
        Know("swap", "", 1, 1,
             [](SCall& x)
             {
                 if constexpr (requires { x.c.Swap(x.other); })
                     x.c.Swap(x.other);
                 else
                     std::swap(x.c, x.other);
             });
        Know("clear", "", 0, 1, [](SCall& x) { x.c.Clear(); });
        Know("reset", "", 0, 1, [](SCall& x) { x.c = TContainer(); });
        if constexpr (kIsArray || kHasIndex)
            Know("equal", "", 1, 1, [](SCall& x) { return x.c == x.other; });
    }

    // A container that was moved from is empty, and usable unless it is a block array.
    static bool IsEmptied(TContainer& container)
    {
        const bool bEmptied = container.IsEmpty() && container.Validate();
        if constexpr (std::is_same_v<TContainer, TBlockArray<Logged>>)
            container = TContainer();
        return bEmptied;
    }

    // ---- Sequences.

    void KnowSequence()
    {
        Know("insert", "pv", 5, 2, [](SCall& x) { return x.c.Insert(x.pos, std::as_const(x.second)); });
        Know("insert move", "pv", 3, 1, [](SCall& x) { return x.c.Insert(x.pos, std::move(x.second)); });
        Know("insert own", "pe", 2, 1, [](SCall& x) { return x.c.Insert(x.pos, std::as_const(*x.own)); });
        Know("fill", "nf", 2, 1,
             [](SCall& x)
             {
                 auto pos = x.nSecond != 0 ? x.c.End() : x.c.Begin();
                 for (const First& value : x.seconds)
                     pos = std::next(x.c.Insert(pos, value), x.nSecond);
             });
        if constexpr (kIsList)
            Know("insert value", "v", 2, 1, [](SCall& x) { return x.c.Insert(x.first); });
        if constexpr (kIsArray || kIsMaxArray)
        {
            Know("add", "v", 3, 1, [](SCall& x) { return &x.c.Add(std::as_const(x.first)); });
            Know("add move", "v", 2, 1, [](SCall& x) { return &x.c.Add(std::move(x.first)); });
            Know("add own", "e", 1, 1, [](SCall& x) { return &x.c.Add(std::as_const(*x.pos)); });
            Know("erase index", "e", 2, 5, [](SCall& x) { x.c.Erase(x.nFirst); });
        }
        if constexpr (kIsArray)
        {
            Know("insert own move", "pe", 1, 1, [](SCall& x) { return x.c.Insert(x.pos, std::move(*x.own)); });
            Know("reserve", "cf", 1, 1, [](SCall& x) { return x.c.Reserve(uint64(x.nFirst), x.nSecond != 0); });
        }
    }

    // ---- Keyed containers.

    void KnowKeyed()
    {
        Know("insert", "kv", 5, 2, [](SCall& x) { return Insert(x.c, x.first, x.second); });
        Know("insert own", "e", 1, 1,
             [](SCall& x) { return Insert(x.c, PartsOf(*x.pos).first, PartsOf(*x.pos).second); });
        Know("insert own value", "ke", 1, 1, [](SCall& x) { return Insert(x.c, x.first, PartsOf(*x.own).second); });
        Know("insert value as key", "e", 1, 1,
             [](SCall& x) { return Insert(x.c, PartsOf(*x.pos).second, PartsOf(*x.pos).second); });
        Know("fill", "nk", 2, 1,
             [](SCall& x)
             {
                 for (size_t i = 0; i < x.firsts.size(); ++i)
                     Insert(x.c, x.firsts[i], x.seconds[i]);
             });
        Know("find", "k", 2, 2, [](SCall& x) { return x.c.Find(x.first); });
        Know("find in const", "k", 1, 1, [](SCall& x) { return std::as_const(x.c).Find(x.first); });
        Know("contains", "k", 1, 1, [](SCall& x) { return std::as_const(x.c).Contains(x.first); });
        // The recorded series of the multi hash map is older than its Remove.
        constexpr bool kIsUnique = requires(TContainer & c, const Logged& key)
        {
            c.GetValue(key, key);
        };
        if constexpr (!kIsHashed || !kIsMap || kIsUnique)
            Know("remove", "k", 1, 2, [](SCall& x) { return x.c.Remove(x.first); });
        if constexpr (kIsHashed)
            Know("rehash", "b", 1, 1, [](SCall& x) { x.c.Rehash(static_cast<uint32>(x.nFirst)); });
        if constexpr (kIsOrdered)
        {
            Know("bound", "k", 1, 1, [](SCall& x) { return x.c.LowerBound(x.first); });
            Know("bound in const", "k", 1, 1, [](SCall& x) { return std::as_const(x.c).LowerBound(x.first); });
        }
        if constexpr (kIsOrdered && kIsMap)
            Know("insert pair", "kv", 3, 2, [](SCall& x) { return x.c.Insert(Value(x.first, x.second)); });
        if constexpr (kHasIndex)
        {
            Know("index", "k", 2, 1, [](SCall& x) { return x.c[x.first].m_nValue; });
            Know("get", "kv", 1, 1, [](SCall& x) { return x.c.GetValue(x.first, x.second).m_nValue; });
        }
    }

    // A pair where the container takes nothing else, the key alone where that is all.
    static auto Insert(TContainer& container, const Logged& key, const auto& value)
    {
        if constexpr (!kIsMap)
            return container.Insert(key);
        else if constexpr (requires { container.Insert(key, value); })
            return container.Insert(key, value);
        else
            return container.Insert(Value(key, value));
    }

    // The key of an element and its value; the element twice where it is no pair.
    static auto PartsOf(const Value& element)
    {
        if constexpr (kIsMap)
            return std::pair<const First&, const Second&>(element.Key(), element.Value());
        else
            return std::pair<const Value&, const Value&>(element, element);
    }

    // ---- Telling.

    // Past the last element: the end.
    static auto At(TContainer& container, int nPlace)
    {
        auto pos = container.Begin();
        for (int i = 0; i < nPlace && pos != container.End(); ++i)
            ++pos;
        return pos;
    }

    // A position is told as its place, which is found by the steps from there to the end.
    template <class TResult>
    static std::string Told(TContainer& container, TResult result)
    {
        if constexpr (std::is_same_v<TResult, bool>)
            return result ? "true" : "false";
        else if constexpr (std::is_integral_v<TResult>)
            return std::to_string(result);
        else
        {
            uint32 nLeft = 0;
            for (auto pos = result; pos != container.End() && nLeft <= container.Size(); ++pos)
                ++nLeft;
            const int nPlace = static_cast<int>(container.Size() - nLeft);
            if (nPlace < 0 || At(container, nPlace) != result)
                return "nowhere";
            return nLeft == 0 ? "end" : std::to_string(nPlace);
        }
    }

    static std::string JoinedJournal()
    {
        std::string text;
        for (const std::string& word : TakeJournal())
            text += (text.empty() ? "" : ", ") + word;
        return text;
    }

    // Sizes, a hash of the walks, and whether all is sound. What it compares itself does not stay in the journal.
    std::string State() const
    {
        std::ostringstream state;
        uint32 nHash = 0;
        const auto add = [&](auto nNumber) { nHash = (nHash ^ static_cast<uint32>(nNumber)) * 0x9E3779B1 + nHash / 8; };
        for (const TContainer& container : *m_containers)
        {
            auto enumerator = container.GetEnumerator();
            bool bSound = container.Validate() && container.IsEmpty() == (container.Size() == 0);
            for (const auto& element : container)
            {
                bSound = enumerator.MoveNext() && &enumerator.Current() == &element && bSound;
                add(PartsOf(element).first.m_nValue);
                add(PartsOf(element).second.m_nValue);
                if constexpr (kIsHashed)
                    add(&kx::detail::HashNodeOf(&element)->m_nNext
                        - &container.m_pNodes->m_nNext); // the index of its node
            }
            add(container.Size());
            state << container.Size();
            if constexpr (kIsArray)
                state << '/' << container.Capacity();
            if constexpr (kIsHashed)
                state << '/' << container.m_nBucketCount;
            state << (bSound && !enumerator.MoveNext() ? " " : " BROKEN ");
        }
        TakeJournal();
        state << std::hex << std::setw(8) << std::setfill('0') << nHash;
        return state.str();
    }

    // On the heap, so that a sanitizer sees what reaches out of them.
    std::unique_ptr<std::array<TContainer, 2>> m_containers = std::make_unique<std::array<TContainer, 2>>();
    std::vector<SKnown> m_known;
    std::string m_next;
    uint64 m_nDrawn = 0;
    uint64 m_nKeys = 32;
    int m_nFresh = 2000;
    int m_nSteps = 0;
};
