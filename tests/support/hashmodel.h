// The models of the hash containers, which keep their chains as plain lists; see containermodel.h.
#pragma once

#include "core/containers/hashmap.h"
#include "core/containers/hashset.h"
#include "core/containers/multihashmap.h"
#include "tests/support/keyedmodel.h"

#include <algorithm>

inline uint32 HashKey(const Logged& key)
{
    return HashKey(key.m_nValue);
}

// A container whose fields a test may see, and break.
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

template <bool bMulti, bool bValues>
struct HashModel : KeyedModel<bValues>
{
    static constexpr bool kTakesPairs = false;
    static constexpr size_t kNodeSize = bValues ? 12 : 8;

    Entries& ChainOf(int nKey)
    {
        uint32 nHash = 0x811C9DC5;
        for (int i = 0; i < 4; ++i)
        {
            const uint32 nByte = (static_cast<uint32>(nKey) >> (8 * i)) & 0xFF;
            nHash = (nHash ^ (nByte < 0x80 ? nByte : nByte + 0xFFFFFF00)) * 16777619;
        }
        return m_chains[nHash % m_chains.size()];
    }

    Entries Walk() const
    {
        Entries walk;
        for (const Entries& chain : m_chains)
            walk.insert(walk.end(), chain.begin(), chain.end());
        return walk;
    }

    // The place of the first entry that has the number.
    size_t PlaceOf(auto SEntry::*pNumber, auto nNumber) const
    {
        const Entries walk = Walk();
        return static_cast<size_t>(std::ranges::find(walk, nNumber, pNumber) - walk.begin());
    }
    size_t Find(int nKey) const { return PlaceOf(&SEntry::m_nKey, nKey); }

    void Rehash(size_t nCount)
    {
        const std::vector<Entries> old = std::exchange(m_chains, {});
        m_chains.resize(nCount == 0 ? 0 : std::max<size_t>(nCount, 4));
        if (nCount != 0)
        {
            ExpectAllocation(m_chains.size() * 4, 16);
            ExpectAllocation(m_chains.size() * kNodeSize, 16);
        }
        uint64 nNode = 0;
        for (const Entries& chain : old)
        {
            for (SEntry entry : chain)
            {
                this->ExpectCopy(entry);
                this->ExpectDelete(entry);
                entry.m_nNode = nNode++;
                ChainOf(entry.m_nKey).insert(ChainOf(entry.m_nKey).begin(), entry);
            }
        }
        if (!old.empty())
        {
            ExpectFree(old.size() * kNodeSize);
            ExpectFree(old.size() * 4);
        }
        m_free.clear();
    }

    size_t Insert(int nKey, int nValue, bool)
    {
        const auto find = [this, nKey] { return std::ranges::find(ChainOf(nKey), nKey, &SEntry::m_nKey); };
        if (!bMulti && !m_chains.empty() && find() != ChainOf(nKey).end())
        {
            this->ReplaceValue(*find(), nValue);
            return Find(nKey);
        }
        if (m_chains.size() == m_nSize)
            Rehash(std::max<size_t>(m_chains.size() * 3 / 2, 4));
        SEntry entry = this->MakeEntry(nKey, nValue);
        entry.m_nNode = m_free.empty() ? m_nSize : m_free.back();
        if (!m_free.empty())
            m_free.pop_back();
        this->ExpectCopy(entry);
        const auto end = ChainOf(nKey).end();
        const auto place = bMulti ? std::ranges::next(find(), 1, end) : ChainOf(nKey).begin();
        ChainOf(nKey).insert(place, entry);
        ++m_nSize;
        return PlaceOf(&SEntry::m_nNode, entry.m_nNode);
    }

    void Erase(size_t nPlace)
    {
        const SEntry entry = Walk()[nPlace];
        this->ExpectDelete(entry);
        std::erase(ChainOf(entry.m_nKey), entry);
        m_free.push_back(entry.m_nNode);
        --m_nSize;
    }

    void Clear()
    {
        for (Entries& chain : m_chains)
        {
            std::ranges::for_each(chain, [this](const SEntry& entry) { this->ExpectDelete(entry); });
            chain.clear();
        }
        m_free.clear();
        m_nSize = 0;
    }

    void CopyAssign(const HashModel& other)
    {
        Clear();
        Rehash(other.m_chains.size());
        for (const SEntry& entry : other.Walk())
            Insert(entry.m_nKey, entry.m_nValue, false);
    }

    void Die()
    {
        Clear();
        if (m_chains.empty())
            return;
        ExpectFree(m_chains.size() * 4);
        ExpectFree(m_chains.size() * kNodeSize);
    }

    bool Fits(const auto& container) const { return container.m_nBucketCount == m_chains.size(); }

    template <class TContainer, class TBelow>
    bool StepOther(TContainer& container, const Logged&, TBelow&& below)
    {
        const size_t nCount = m_nSize + below(5);
        Rehash(nCount);
        container.Rehash(static_cast<uint32>(nCount));
        return true;
    }

    std::vector<Entries> m_chains = {};
    std::vector<uint64> m_free = {};
    size_t m_nSize = 0;
};

using ModelledHashMap = Modelled<TOpen<THashMap<Logged, Logged>>, HashModel<false, true>>;
using ModelledMultiHashMap = Modelled<TOpen<TMultiHashMap<Logged, Logged>>, HashModel<true, true>>;
using ModelledHashSet = Modelled<TOpen<THashSet<Logged>>, HashModel<false, false>>;
