// A journal of all that a container does where others can see it: the special member functions of its elements and the
// calls of its allocator, in order, as short words. A test states the whole journal of an operation.
#pragma once

#include "core/memory/memorymanager.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

using Journal = std::vector<std::string>;

inline Journal g_journal;

// What has been written since the last call.
inline Journal TakeJournal()
{
    return std::exchange(g_journal, {});
}

// Throws from the operation of an element that is the g_nThrowAt-th since g_nSteps was set to 0.
inline int g_nSteps = 0;
inline int g_nThrowAt = -1;

inline void Step()
{
    if (g_nSteps++ == g_nThrowAt)
        throw g_nSteps;
}

// An element of one int that writes "new 1", "copy 1", "move 1", "2 = copy 1", "2 = move 1", "delete 1". A moved-from
// one holds -1. Without bMoves it has no move operations.
template <bool bMoves>
struct TLogged
{
    TLogged(int nValue) : m_nValue(nValue) { Write("new "); }
    TLogged(const TLogged& other) : m_nValue(other.m_nValue)
    {
        Step();
        Write("copy ");
    }
    TLogged(TLogged&& other) noexcept requires bMoves : m_nValue(std::exchange(other.m_nValue, -1)) { Write("move "); }
    ~TLogged() { Write("delete "); }

    TLogged& operator=(const TLogged& other)
    {
        Step();
        g_journal.push_back(std::to_string(m_nValue) + " = copy " + std::to_string(other.m_nValue));
        m_nValue = other.m_nValue;
        return *this;
    }
    TLogged& operator=(TLogged&& other) noexcept requires bMoves
    {
        g_journal.push_back(std::to_string(m_nValue) + " = move " + std::to_string(other.m_nValue));
        m_nValue = std::exchange(other.m_nValue, -1);
        return *this;
    }

    bool operator==(const TLogged& other) const
    {
        Step();
        return m_nValue == other.m_nValue;
    }

    int m_nValue;

private:
    void Write(const char* pszWhat) const { g_journal.push_back(pszWhat + std::to_string(m_nValue)); }
};

using Logged = TLogged<true>;
using LoggedCopy = TLogged<false>;

// The values of a container of logged elements or of numbers, in the order of its walk.
template <class TContainer>
std::vector<int> Values(const TContainer& container)
{
    std::vector<int> values;
    for (const auto& element : container)
    {
        if constexpr (std::is_convertible_v<decltype(element), int>)
            values.push_back(element);
        else
            values.push_back(element.m_nValue);
    }
    return values;
}

// Writes "alloc <bytes>/<alignment>", "free <bytes>" and "free null". Fresh and freed blocks are filled with rubbish. A
// block that it does not own, and one that is never freed, ends the program, be it a test or a fuzzer's.
class JournalAllocator : public IAllocator
{
public:
    ~JournalAllocator() override { Demand(m_blocks.empty(), "a block was not freed"); }

    void* Allocate(uint64 nSize, uint64 nAlignment, uint32 nReserved) override
    {
        Demand(nReserved == 0, "the third argument must be 0");
        g_journal.push_back("alloc " + std::to_string(nSize) + "/" + std::to_string(nAlignment));
        void* pMemory = m_heap.Allocate(nSize, nAlignment, 0);
        m_blocks[pMemory] = nSize;
        return std::memset(pMemory, 0xCD, nSize);
    }

    void Free(void* pMemory) override
    {
        const auto block = m_blocks.find(pMemory);
        if (block == m_blocks.end())
        {
            Demand(pMemory == nullptr, "a block of another allocator was freed");
            g_journal.push_back("free null");
            return;
        }
        g_journal.push_back("free " + std::to_string(block->second));
        std::memset(pMemory, 0xDD, block->second);
        m_blocks.erase(block);
        m_heap.Free(pMemory);
    }

private:
    static void Demand(bool bCondition, const char* pszFault)
    {
        if (bCondition)
            return;
        std::fprintf(stderr, "JournalAllocator: %s\n", pszFault);
        std::abort();
    }

    ZMallocAllocator m_heap;
    std::map<void*, uint64> m_blocks;
};
