// The hash containers: what the journals do not show.
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/player.h"

static_assert(std::forward_iterator<THashMap<int, int>::iterator>);
static_assert(std::is_convertible_v<THashMap<int, int>::iterator, THashMap<int, int>::const_iterator>);
static_assert(!std::is_convertible_v<THashMap<int, int>::const_iterator, THashMap<int, int>::iterator>);
static_assert(std::is_same_v<decltype(*THashSet<int>().Begin()), const int&>);
static_assert(sizeof(THashMap<int, int>::iterator) == 24 && sizeof(THashMap<int, int>().GetEnumerator()) == 32);
static_assert(std::is_nothrow_move_constructible_v<THashMap<int, int>>);
static_assert(std::is_nothrow_move_assignable_v<THashMap<int, int>>);

namespace
{
using HashTest = JournalTest;

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
} // namespace

TEST_F(HashTest, TakesListsOfPairs)
{
    EXPECT_EQ(3, (THashMap<int, int>{{1, 2}, {1, 3}}.Find(1)->Value()));
    EXPECT_EQ(4u, (TMultiHashMap<int, int>{{1, 1}, {2, 2}, {1, 3}, {1, 4}}.Size()));
}

TEST_F(HashTest, HashesSignedBytes)
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

TEST_F(HashTest, AsksThePolicyAlone)
{
    THashSet<SKey, SPolicy> set;
    TMultiHashMap<SKey, SKey, SPolicy> map;
    for (int i = 0; i < 5; ++i)
    {
        set.Insert(SKey(i));
        map.Insert(SKey(i), SKey(i));
    }
    EXPECT_EQ((std::vector<int>{4, 2, 0}), Values(set));
    EXPECT_TRUE(set.Remove(SKey(1)));
    EXPECT_EQ((std::vector<int>{4, 2}), Values(set));
    EXPECT_EQ(3, map.Find(SKey(2))->Value().m_nValue);
}

TEST_F(HashTest, ReturnsArraysToTheirOwner)
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

TEST_F(HashTest, BreaksOnAViolatedPrecondition)
{
    THashMap<int, int> map{{1, 1}, {2, 2}};
    THashMap<int, int> other{{1, 1}};
    THashMap<int, int> empty;
    const auto erased = map.Find(2);
    map.Erase(erased);
    EXPECT_BREAK(empty.Erase(map.Begin()));
    EXPECT_BREAK(map.Erase(map.End()));
    EXPECT_BREAK(map.Erase(other.Begin()));
    EXPECT_BREAK(map.Erase(erased));
    EXPECT_BREAK(map.Rehash(0));
    auto enumerator = map.GetEnumerator();
    while (enumerator.MoveNext())
        enumerator.Current().Value() = 3;
    EXPECT_BREAK(static_cast<void>(enumerator.Current()));

    TOpen<TMultiHashMap<int, int>> full;
    full.Rehash(4);
    full.m_nSize = UINT32_MAX;
    EXPECT_BREAK(full.Insert(1, 1)) << "no node is left, and the count of one more wraps to 0";
    full.m_nBucketCount = full.m_nSize = 0x60000000;
    EXPECT_BREAK(full.Insert(1, 1)) << "one and a half times as many wraps to less";
}

TEST_F(HashTest, GoesOnAsIfTheCheckHadPassedIfExecutionResumes)
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
