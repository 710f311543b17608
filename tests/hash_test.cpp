// The hash containers: exact walks, nodes, bucket counts, element operations and allocator calls, against a model that
// keeps its chains as plain lists.
#include "core/containers/hashmap.h"
#include "core/containers/hashset.h"
#include "core/containers/multihashmap.h"
#include "tests/support/breaks.h"
#include "tests/support/journal.h"

#include <algorithm>
#include <random>
#include <unordered_map>

template class THashMap<int, int64>;
template class TMultiHashMap<int64, int>;
template class THashSet<void*>;

static_assert(std::forward_iterator<THashMap<int, int>::iterator>);
static_assert(std::ranges::forward_range<TMultiHashMap<int, int>> && std::ranges::forward_range<const THashSet<int>>);
static_assert(std::is_convertible_v<THashMap<int, int>::iterator, THashMap<int, int>::const_iterator>);
static_assert(!std::is_convertible_v<THashMap<int, int>::const_iterator, THashMap<int, int>::iterator>);
static_assert(std::is_same_v<decltype(*THashSet<int>().Begin()), const int&>);
static_assert(sizeof(THashMap<int, int>::iterator) == 24 && sizeof(THashMap<int, int>().GetEnumerator()) == 32);
static_assert(std::is_nothrow_move_constructible_v<THashMap<int, int>>);

inline uint32 HashKey(const Logged& key)
{
    return HashKey(key.m_nValue);
}

namespace
{
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

// A live node. The value of a set's element is its key again.
struct SEntry
{
    bool operator==(const SEntry&) const = default;
    friend std::ostream& operator<<(std::ostream& stream, const SEntry& entry)
    {
        return stream << entry.m_nKey << "=" << entry.m_nValue << "@" << entry.m_nNode;
    }

    int m_nKey;
    int m_nValue;
    uint64 m_nNode;
};

using Entries = std::vector<SEntry>;

// Key and value of an element.
template <class TElement>
std::pair<const Logged&, const Logged&> Parts(const TElement& element)
{
    if constexpr (requires { element.Key(); })
        return {element.Key(), element.Value()};
    else
        return {element, element};
}

// What is left of the walk from pos on.
template <class TContainer, class TIterator>
Entries WalkFrom(const TContainer& container, TIterator pos)
{
    Entries walk;
    for (; pos != container.End(); ++pos)
    {
        const auto& [key, value] = Parts(*pos);
        const uint64 nDistance = detail::AddressOf(&*pos) - detail::AddressOf(container.m_pNodes);
        walk.push_back({key.m_nValue, value.m_nValue, nDistance / sizeof(*container.m_pNodes)});
    }
    return walk;
}

template <class TContainer>
auto InsertInto(TContainer& container, const Logged& key, const Logged& value)
{
    if constexpr (requires { container.Insert(key, value); })
        return container.Insert(key, value);
    else
        return container.Insert(key);
}

// What the models' containers must have written into the journal.
Journal g_expected;

void Expect(const std::string& word, auto nNumber)
{
    g_expected.push_back(word + std::to_string(nNumber));
}

// What a container of logged elements must do.
struct SModel
{
    bool m_bMulti;
    bool m_bValues;
    std::vector<Entries> m_chains = {};
    std::vector<uint64> m_free = {};
    size_t m_nSize = 0;

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

    // The walk from the first entry on that has the number; empty if none has.
    Entries WalkFrom(auto SEntry::*pNumber, auto nNumber) const
    {
        const Entries walk = Walk();
        return Entries(std::ranges::find(walk, nNumber, pNumber), walk.end());
    }

    void ExpectCopy(const SEntry& entry) const
    {
        Expect("copy ", entry.m_nKey);
        if (m_bValues)
            Expect("copy ", entry.m_nValue);
    }

    void ExpectDelete(const SEntry& entry) const
    {
        if (m_bValues)
            Expect("delete ", entry.m_nValue);
        Expect("delete ", entry.m_nKey);
    }

    size_t NodeSize() const { return m_bValues ? 12 : 8; }

    void Rehash(size_t nCount)
    {
        const std::vector<Entries> old = std::exchange(m_chains, {});
        m_chains.resize(nCount == 0 ? 0 : std::max<size_t>(nCount, 4));
        if (nCount != 0)
        {
            g_expected.push_back("alloc " + std::to_string(m_chains.size() * 4) + "/16");
            g_expected.push_back("alloc " + std::to_string(m_chains.size() * NodeSize()) + "/16");
        }
        uint64 nNode = 0;
        for (const Entries& chain : old)
        {
            for (SEntry entry : chain)
            {
                ExpectCopy(entry);
                ExpectDelete(entry);
                entry.m_nNode = nNode++;
                ChainOf(entry.m_nKey).insert(ChainOf(entry.m_nKey).begin(), entry);
            }
        }
        if (!old.empty())
        {
            Expect("free ", old.size() * NodeSize());
            Expect("free ", old.size() * 4);
        }
        m_free.clear();
    }

    // The result is the node of the element.
    uint64 Insert(int nKey, int nValue)
    {
        const auto find = [this, nKey] { return std::ranges::find(ChainOf(nKey), nKey, &SEntry::m_nKey); };
        if (!m_bMulti && !m_chains.empty() && find() != ChainOf(nKey).end())
        {
            if (m_bValues)
                Expect(std::to_string(std::exchange(find()->m_nValue, nValue)) + " = copy ", nValue);
            return find()->m_nNode;
        }
        if (m_chains.size() == m_nSize)
            Rehash(std::max<size_t>(m_chains.size() * 3 / 2, 4));
        const SEntry entry{nKey, m_bValues ? nValue : nKey, m_free.empty() ? m_nSize : m_free.back()};
        if (!m_free.empty())
            m_free.pop_back();
        ExpectCopy(entry);
        const auto end = ChainOf(nKey).end();
        const auto place = m_bMulti ? std::ranges::next(find(), 1, end) : ChainOf(nKey).begin();
        ChainOf(nKey).insert(place, entry);
        ++m_nSize;
        return entry.m_nNode;
    }

    void Erase(const SEntry& entry)
    {
        ExpectDelete(entry);
        std::erase(ChainOf(entry.m_nKey), entry);
        m_free.push_back(entry.m_nNode);
        --m_nSize;
    }

    void Clear()
    {
        for (Entries& chain : m_chains)
        {
            std::ranges::for_each(chain, [this](const SEntry& entry) { ExpectDelete(entry); });
            chain.clear();
        }
        m_free.clear();
        m_nSize = 0;
    }

    void CopyFrom(const SModel& other)
    {
        Clear();
        Rehash(other.m_chains.size());
        for (const SEntry& entry : other.Walk())
            Insert(entry.m_nKey, entry.m_nValue);
    }

    void MoveFrom(SModel& other)
    {
        Clear();
        if (!m_chains.empty())
        {
            Expect("free ", m_chains.size() * 4);
            Expect("free ", m_chains.size() * NodeSize());
        }
        *this = std::exchange(other, SModel{m_bMulti, m_bValues});
    }
};

template <class TContainer>
class HashTest : public JournalTest
{
};

using HashContainers = testing::Types<THashMap<Logged, Logged>, TMultiHashMap<Logged, Logged>, THashSet<Logged>>;
TYPED_TEST_SUITE(HashTest, HashContainers);

using HashMapTest = JournalTest;

// A key that is copied and destroyed and nothing else.
struct SKey
{
    explicit SKey(int nValue) : m_nValue(nValue) {}
    SKey(const SKey&) = default;
    SKey(SKey&) = delete;
    SKey& operator=(const SKey&) = delete;
    void operator&() const = delete;

    int m_nValue;
};

// Finds halves, and knows no good hash.
struct SPolicy
{
    static uint32 Hash(const SKey&) { return 5; }
    static bool Equals(const SKey& first, const SKey& second) { return first.m_nValue / 2 == second.m_nValue / 2; }
};

template <class TContainer>
std::vector<int> Keys(const TContainer& container)
{
    std::vector<int> keys;
    for (const auto& pair : container)
        keys.push_back(pair.Key());
    return keys;
}
} // namespace

// Random operations on two containers. In some insertions key and value are elements of the container, in full tables
// too.
TYPED_TEST(HashTest, AgreesWithAModel)
{
    using Container = TOpen<TypeParam>;
    const bool bMulti = std::is_same_v<TypeParam, TMultiHashMap<Logged, Logged>>;
    const bool bValues = !std::is_same_v<TypeParam, THashSet<Logged>>;
    for (uint32 nSeed = 1; nSeed <= 60; ++nSeed)
    {
        std::mt19937 random(nSeed);
        const auto below = [&](size_t n) { return static_cast<size_t>(random() % n); };
        SModel models[3] = {{bMulti, bValues}, {bMulti, bValues}, {bMulti, bValues}};
        {
            Container containers[2];
            for (int nStep = 0; nStep < 200; ++nStep)
            {
                SCOPED_TRACE(testing::Message() << "seed " << nSeed << ", step " << nStep);
                const size_t nWhich = below(2);
                Container& container = containers[nWhich];
                SModel& model = models[nWhich];
                Container& other = containers[1 - nWhich];
                SModel& otherModel = models[1 - nWhich];
                const Entries walk = model.Walk();
                const size_t nAt = below(walk.size() + 1);
                const bool bAtElement = nAt < walk.size();
                auto pos = std::ranges::next(container.Begin(), static_cast<std::ptrdiff_t>(nAt));
                const Logged key(static_cast<int>(below(60)) * 5 - 100);
                const Logged value(1000 + nStep);
                const Logged* pKey = &key;
                const Logged* pValue = &value;
                TakeJournal();
                switch (below(20))
                {
                case 0:
                case 1:
                case 2:
                case 3:
                    if (bAtElement)
                    {
                        pValue = &Parts(*pos).second;
                        const Logged* apKeys[] = {&key, pValue, &Parts(*container.Begin()).first};
                        pKey = apKeys[below(3)];
                    }
                    [[fallthrough]];
                case 4:
                case 5:
                case 6:
                case 7:
                {
                    const uint64 nNode = model.Insert(pKey->m_nValue, pValue->m_nValue);
                    pos = InsertInto(container, *pKey, *pValue);
                    EXPECT_EQ(model.WalkFrom(&SEntry::m_nNode, nNode), WalkFrom(container, pos));
                    break;
                }
                case 8:
                case 9:
                case 10:
                case 11:
                    if (bAtElement)
                    {
                        model.Erase(walk[nAt]);
                        pos = container.Erase(pos);
                        EXPECT_EQ(Entries(walk.begin() + static_cast<std::ptrdiff_t>(nAt) + 1, walk.end()),
                                  WalkFrom(container, pos));
                    }
                    break;
                case 12:
                case 13:
                {
                    const Entries found = model.WalkFrom(&SEntry::m_nKey, key.m_nValue);
                    EXPECT_EQ(found, WalkFrom(container, container.Find(key)));
                    EXPECT_EQ(!found.empty(), std::as_const(container).Contains(key));
                    if constexpr (requires { container.Remove(key); })
                    {
                        if (!found.empty())
                            model.Erase(found[0]);
                        EXPECT_EQ(!found.empty(), container.Remove(key));
                    }
                    break;
                }
                case 14:
                    model.Rehash(model.m_nSize + below(5));
                    container.Rehash(static_cast<uint32>(model.m_chains.size()));
                    break;
                case 15:
                    model.CopyFrom(otherModel);
                    container = std::as_const(other);
                    break;
                case 16:
                    models[2].CopyFrom(model);
                    otherModel.MoveFrom(models[2]);
                    other = Container(container);
                    break;
                case 17:
                    otherModel.MoveFrom(model);
                    other = std::move(container);
                    break;
                case 18:
                    std::swap(model, otherModel);
                    std::swap(container, other);
                    break;
                default:
                    if (below(4) == 0)
                    {
                        model.Clear();
                        container.Clear();
                    }
                }
                EXPECT_EQ(std::exchange(g_expected, {}), TakeJournal());
                for (const size_t i : {0u, 1u})
                {
                    ASSERT_EQ(models[i].Walk(), WalkFrom(containers[i], containers[i].Begin()));
                    ASSERT_EQ(models[i].m_nSize, containers[i].Size());
                    ASSERT_EQ(models[i].m_chains.size(), containers[i].m_nBucketCount);
                    ASSERT_TRUE(containers[i].Validate());
                    auto enumerator = std::as_const(containers[i]).GetEnumerator();
                    for (const auto& element : containers[i])
                    {
                        ASSERT_TRUE(enumerator.MoveNext());
                        EXPECT_EQ(&element, &enumerator.Current());
                    }
                    EXPECT_FALSE(enumerator.MoveNext());
                }
            }
            TakeJournal();
        }
        for (const size_t i : {1u, 0u})
            models[i].MoveFrom(models[2]);
        EXPECT_EQ(std::exchange(g_expected, {}), TakeJournal());
    }
}

TEST_F(HashMapTest, WalksInTheKnownOrder)
{
    THashMap<int, int> map;
    THashSet<int> set;
    const auto insert = [&](int nFrom, int nTo)
    {
        for (int i = nFrom; i <= nTo; ++i)
        {
            map.Insert(i, i);
            set.Insert(i);
        }
        EXPECT_EQ(Keys(map), Values(set));
        return Keys(map);
    };
    EXPECT_EQ((std::vector<int>{1, 4, 3, 2}), insert(1, 4));
    EXPECT_EQ((std::vector<int>{5, 2, 1, 3, 4}), insert(5, 5));
    EXPECT_EQ((std::vector<int>{4, 11, 7, 12, 10, 6, 9, 3, 5, 1, 8, 2}), insert(6, 12));

    TMultiHashMap<int, int> multi{{1, 1}, {2, 2}, {1, 3}, {1, 4}};
    EXPECT_EQ((std::vector<int>{1, 1, 1, 2}), Keys(multi));
    multi.Insert(2, 5);
    multi.Insert(3, 6);
    EXPECT_EQ((std::vector<int>{2, 2, 1, 1, 1, 3}), Keys(multi));
    std::vector<int> values;
    for (auto pos = multi.Find(1); pos->Key() == 1; ++pos)
        values.push_back(pos->Value());
    EXPECT_EQ((std::vector<int>{3, 4, 1}), values) << "1, 4, 3 as inserted, reversed by the growth";
}

TEST_F(HashMapTest, GrowsByHalfWhenFull)
{
    TOpen<THashSet<int>> set;
    std::vector<uint32> counts;
    for (int i = 0; i < 300; ++i)
    {
        set.Insert(i);
        if (counts.empty() || counts.back() != set.m_nBucketCount)
            counts.push_back(set.m_nBucketCount);
    }
    EXPECT_EQ((std::vector<uint32>{4, 6, 9, 13, 19, 28, 42, 63, 94, 141, 211, 316}), counts);
}

TEST_F(HashMapTest, HashesSignedBytes)
{
    const std::pair<int, uint32> hashes[] = {{0, 0x4B95F515}, {1, 0xFB69B604},   {2, 0xEBEE7337},
                                             {3, 0x9BC23426}, {128, 0xD6248195}, {-1, 0x81DDF9B1}};
    for (const auto& [nKey, nHash] : hashes)
        EXPECT_EQ(nHash, HashKey(nKey));
    struct SPair
    {
        int16 m_nFirst;
        uint16 m_nSecond;
    };
    enum class EKey : uint64
    {
        eOne = 1
    };
    EXPECT_EQ(HashKey(0x00030002), HashKey(SPair{2, 3}));
    EXPECT_EQ(HashKey(int64{1}), HashKey(EKey::eOne));
    EXPECT_EQ((0x811C9DC5 ^ 0xFFFFFFFE) * 16777619u, HashKey(int8{-2}));
    EXPECT_EQ(0x811C9DC5, HashBytes(nullptr, 0));
}

TEST_F(HashMapTest, AsksThePolicyAlone)
{
    THashSet<SKey, SPolicy> set;
    TMultiHashMap<SKey, SKey, SPolicy> map;
    for (int i = 0; i < 5; ++i)
    {
        set.Insert(SKey(i));
        map.Insert(SKey(i), SKey(i));
    }
    EXPECT_EQ((std::vector<int>{4, 2, 0}), Values(set));
    set = THashSet<SKey, SPolicy>(set);
    EXPECT_TRUE(set.Remove(SKey(1)));
    EXPECT_EQ((std::vector<int>{2, 4}), Values(set));
    EXPECT_EQ(3, map.Find(SKey(2))->Value().m_nValue);
}

TEST_F(HashMapTest, GivesArraysBackToTheirOwner)
{
    struct Asked : IPageAllocator
    {
        IAllocator* FindAllocator(void*) override
        {
            g_journal.emplace_back("owner");
            return nullptr;
        }
    } pages;
    GetMemoryManager()->InstallPageAllocator(&pages);
    {
        const THashSet<int> none;
        const THashSet<int> set{1};
    }
    GetMemoryManager()->InstallPageAllocator(nullptr);
    EXPECT_EQ((Journal{"alloc 16/16", "alloc 32/16", "owner", "free 16", "owner", "free 32"}), TakeJournal());
}

TEST_F(HashMapTest, BreaksOnAViolatedPrecondition)
{
    THashMap<int, int> map{{1, 1}, {2, 2}};
    THashMap<int, int> other{{1, 1}};
    THashMap<int, int> empty;
    const auto erased = map.Find(2);
    map.Erase(erased);
    EXPECT_BREAK(empty.Erase(empty.End()));
    EXPECT_BREAK(empty.Erase(map.Begin()));
    EXPECT_BREAK(map.Erase(map.End()));
    EXPECT_BREAK(map.Erase(other.Begin()));
    EXPECT_BREAK(map.Erase(erased));
    EXPECT_BREAK(map.Rehash(0));
    auto enumerator = map.GetEnumerator();
    while (enumerator.MoveNext())
        enumerator.Current().Value() = 3;
    EXPECT_BREAK(static_cast<void>(enumerator.Current()));
    TOpen<THashMap<int, int>> full;
    full.Rehash(4);
    full.m_nSize = UINT32_MAX;
    EXPECT_BREAK(full.Insert(1, 1));
}

TEST_F(HashMapTest, ResumedBreakGoesOnAsIfTheCheckHadPassed)
{
    struct Pinned : THashSet<int>
    {
        using THashSet<int>::m_bNoRehash;
    } set;
    set.Insert(1);
    BreakCounter breaks;
    EXPECT_EQ(0, breaks.Take());
    set.m_bNoRehash = true;
    for (int i = 2; i <= 5; ++i)
        set.Insert(i);
    EXPECT_EQ(1, breaks.Take());
    EXPECT_EQ((std::vector<int>{5, 2, 1, 3, 4}), Values(set));
}

TEST_F(HashMapTest, ValidateSeesABrokenTable)
{
    using Set = TOpen<THashSet<int>>;
    // The chains of four buckets are node 0, none, node 2, node 1; node 3 is free.
    void (*const breakages[])(Set&) = {
        [](Set& set) { set.m_nSize = 2; },
        [](Set& set) { set.m_nSize = 4; },
        [](Set& set) { set.m_nBucketCount = 0; },
        [](Set& set) { set.m_nBucketCount = 3; },
        [](Set& set) { set.m_nFreeHead = 2; },
        [](Set& set) { set.m_nFreeHead = 4; },
        [](Set& set) { set.m_pBuckets[0] = detail::kHashNone; },
        [](Set& set) { set.m_pBuckets[1] = std::exchange(set.m_pBuckets[0], detail::kHashNone); },
        [](Set& set) { set.m_pBuckets[1] = 3; },
        [](Set& set) { set.m_pNodes[0].m_nNext = 0; },
        [](Set& set) { set.m_pNodes[0].m_nNext = 4; },
        [](Set& set) { set.m_pNodes[3].m_nNext = 3; },
        [](Set& set) { set.m_pNodes[3].m_nNext = 0; },
        [](Set& set) { set.Remove(3), set.m_nFreeHead = 3, set.m_pNodes[3].m_nNext = detail::kHashNone; },
    };
    for (size_t i = 0; i < std::size(breakages); ++i)
    {
        Set set{1, 2, 3, 4};
        set.Remove(4);
        ASSERT_TRUE(set.Validate());
        breakages[i](set);
        EXPECT_FALSE(set.Validate()) << i;
    }
}

// A long run beside the standard containers.
TEST_F(HashMapTest, AgreesWithTheStandardContainers)
{
    std::mt19937 random(20261121);
    THashMap<int, int> map;
    TMultiHashMap<int, int> multi;
    std::unordered_map<int, int> mapModel;
    std::unordered_multimap<int, int> multiModel;
    for (int i = 0; i < 300'000; ++i)
    {
        const int nKey = static_cast<int>(random() % 5000) * 400'009;
        if (random() % 8 < 5)
        {
            map.Insert(nKey, i);
            mapModel[nKey] = i;
            multi.Insert(nKey, i);
            multiModel.emplace(nKey, i);
        }
        else
        {
            ASSERT_EQ(mapModel.erase(nKey) != 0, map.Remove(nKey));
            while (multi.Contains(nKey))
                multi.Erase(multi.Find(nKey));
            multiModel.erase(nKey);
        }
        ASSERT_EQ(mapModel.size(), map.Size());
        ASSERT_EQ(multiModel.size(), multi.Size());
    }
    ASSERT_TRUE(map.Validate() && multi.Validate());
    for (const auto& pair : map)
        ASSERT_EQ(mapModel.at(pair.Key()), pair.Value());
    for (const auto& pair : multi)
        ASSERT_NE(0u, std::erase_if(multiModel, [&](const auto& entry) { return entry.second == pair.Value(); }));
    ASSERT_TRUE(multiModel.empty());
}
