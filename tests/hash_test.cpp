// The hash containers: what the journals do not show.
#include "core/containers/seededhash.h"
#include "core/strings/string.h"
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/player.h"

#include <memory>
#include <unordered_map>

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

struct SAddressPolicy
{
    static uint32 Hash(const auto& pointer) { return HashKey(kx::detail::AddressOf(pointer.get())); }
    static bool Equals(const auto& first, const auto& second) { return first == second; }
};

// Finds halves, and knows no good hash.
struct SPolicy
{
    static uint32 Hash(const SKey&) { return 5; }
    static bool Equals(const SKey& first, const SKey& second) { return first.m_nValue / 2 == second.m_nValue / 2; }
};
} // namespace

// The four maps have one face, and the two that repeat keys as much of it as fits.
template <class TMapping>
class MapTest : public JournalTest
{
};

using Mappings =
    testing::Types<TMap<ZString, int>, TMultiMap<ZString, int>, THashMap<ZString, int>, TMultiHashMap<ZString, int>,
                   THashMap<ZString, int, TSeededHashMapPolicy<ZString, int>>>;
TYPED_TEST_SUITE(MapTest, Mappings);

TYPED_TEST(MapTest, FindsByCharactersWithoutAKey)
{
    TypeParam map{{"", 0}, {"ab", 2}, {"abc", 3}, {"\xE9", 4}};
    const TypeParam& constMap = map;
    const std::string text = "abcd";
    const std::string_view view(text.data(), 2);
    const char *pszNone = nullptr, *pszKey = "abc";
    TakeJournal();
    EXPECT_EQ(2, map.Find(view)->Value());
    EXPECT_TRUE(constMap.Find(pszKey)->Value() == 3 && map.Find("\xE9")->Value() == 4);
    EXPECT_TRUE(*map.TryGet(pszNone) == 0 && *constMap.TryGet(view) == 2 && map.TryGet(text) == nullptr);
    EXPECT_TRUE(map.Count(view) == 1 && constMap.EqualRange(pszKey).Begin()->Value() == 3 && map.Count(text) == 0);
    EXPECT_TRUE(map.Contains(pszKey) && !map.Contains(text) && !map.Contains(view.substr(0, 1)));
    if constexpr (requires { map.LowerBound(view); })
    {
        EXPECT_TRUE(map.LowerBound(view.substr(0, 1))->Value() == 2 && constMap.LowerBound(text)->Value() == 4);
    }
    if constexpr (requires { map.Emplace(view).m_bNew; })
    {
        EXPECT_FALSE(map.Emplace(view, 5).m_bNew);
    }
    EXPECT_EQ(Journal(), TakeJournal());
    if constexpr (requires { map.Remove(pszKey); })
    {
        EXPECT_TRUE(map.Remove(pszKey) && !map.Remove(pszKey));
    }
}

TYPED_TEST(MapTest, HasOneFace)
{
    TypeParam map;
    map.Emplace("a", 1);
    map.Emplace(ZString("b"), 2);
    map.Emplace("c");
    TypeParam other{{"c", 0}, {"b", 2}, {"a", 1}};
    EXPECT_TRUE(map == other && map.Count("a") == 1);
    for (auto& [key, value] : map)
    {
        static_assert(std::is_same_v<decltype(key), const ZString> && std::is_same_v<decltype(value), int>);
        value += key == "a";
    }
    for (const auto& [key, value] : std::as_const(map))
        EXPECT_EQ(key == "c" ? 0 : 2, value) << key;
    EXPECT_TRUE(map != other && *map.TryGet("a") == 2);
    map.Swap(other);
    EXPECT_TRUE(*map.TryGet("a") == 1 && *other.TryGet("a") == 2);
    other.Erase(std::as_const(other).Find("b"));
    EXPECT_EQ(1u, other.EraseIf([](const auto& pair) { return pair.Key() == "a"; }));
    EXPECT_TRUE(other.Size() == 1 && other != map && other.Contains("c") && other.Validate());
    EXPECT_TRUE(map.EqualRange("x").IsEmpty() && map.EqualRange("b").Begin()->Value() == 2);
    map.Insert(TKeyValuePair<ZString, int>("b", 3));
    const uint32 nEquals = map.Count("b");
    EXPECT_EQ(map.size() - 2, nEquals);
    map.Emplace(std::string_view("d"), 4);
    EXPECT_TRUE(map.Remove("d") && !map.Remove("d"));
    EXPECT_TRUE(map.RemoveAll(std::string_view("b")) == nEquals && map.RemoveAll("b") == 0);
    EXPECT_TRUE(map.Size() == 2 && !map.empty() && map.Validate());
}

TEST_F(HashTest, MapsTellWhatIsNewAndIndex)
{
    const auto check = []<class TMapping>(TMapping map)
    {
        const auto [pos, bNew] = map.Emplace(1, 2);
        EXPECT_TRUE(bNew && pos->Value() == 2 && !map.Emplace(1, 3).m_bNew && map[1] == 2);
        EXPECT_EQ(0, map[5]);
        map[5] = 6;
        EXPECT_TRUE(std::as_const(map)[5] == 6 && map.GetValue(5, 7) == 6 && map.GetValue(8, 7) == 7
                    && map.Size() == 2);
        EXPECT_BREAK(static_cast<void>(std::as_const(map)[8]));
    };
    check(TMap<int, int>());
    check(THashMap<int, int>());
    const auto checkSet = []<class TSetting>(TSetting set)
    {
        EXPECT_TRUE(set.Emplace("a").m_bNew && !set.Emplace(std::string_view("a")).m_bNew);
        EXPECT_TRUE(set.Emplace(ZString("b")).m_bNew && *set.Emplace("b").m_pos == "b" && set == (TSetting{"b", "a"}));
    };
    checkSet(TSet<ZString>());
    checkSet(THashSet<ZString>());
    TakeJournal();
}

// Through growth, and none of them copies or leaks: the allocator would report a lost array.
TEST_F(HashTest, KeysAndValuesMayBeMoveOnly)
{
    using Element = std::unique_ptr<TArray<int>>;
    const auto check = [](auto container, auto emplace)
    {
        for (int i = 0; i < 7; ++i)
            emplace(container, i, std::make_unique<TArray<int>>(1));
        container.Erase(container.Begin());
        auto moved = std::move(container);
        EXPECT_TRUE(moved.Size() == 6 && moved.Validate() && container.IsEmpty());
    };
    const auto pair = [](auto& map, int nKey, Element value) { map.Emplace(nKey, std::move(value)); };
    const auto single = [](auto& set, int, Element value) { set.Emplace(std::move(value)); };
    check(TMap<int, Element>(), pair);
    check(TMultiMap<int, Element>(), pair);
    check(THashMap<int, Element>(), pair);
    check(TMultiHashMap<int, Element>(), pair);
    check(THashMap<int, Element>(), [](auto& map, int nKey, Element value) { map[nKey] = std::move(value); });
    check(TMap<int, Element>(), [](auto& map, int nKey, Element value) { map[nKey] = std::move(value); });
    check(TSet<Element>(), single);
    check(TRedBlackTree<Element>(), single);
    check(THashSet<Element, SAddressPolicy>(), single);
    TakeJournal();
}

TEST_F(HashTest, MovesOnGrowthIfThePolicyAsks)
{
    THashMap<int, Logged, TMovesOnGrowth<TDefaultHashMapPolicy<int, Logged>>> map;
    for (int i = 1; i < 5; ++i)
        map.Emplace(i, i);
    TakeJournal();
    map.Emplace(5, *map.TryGet(1));
    EXPECT_EQ((Journal{"alloc 24/16", "alloc 72/16", "copy 1", "move 1", "delete -1", "move 4", "delete -1", "move 3",
                       "delete -1", "move 2", "delete -1", "free 48", "free 16"}),
              TakeJournal());
    EXPECT_EQ(1, map.Find(5)->Value().m_nValue);
    EXPECT_TRUE(map.Reserve(9) == 9 && map.Reserve(3) == 9 && map.Validate());
    map.Clear();
    TakeJournal();
}

TEST_F(HashTest, TakesListsOfPairs)
{
    EXPECT_EQ(3, (THashMap<int, int>{{1, 2}, {1, 3}}.Find(1)->Value()));
    const TMultiHashMap<int, int> list = {{1, 1}, {2, 2}, {1, 3}, {4, 4}, {5, 5}, {6, 6}, {7, 7}};
    TMultiHashMap<int, int> byOne;
    for (const int nKey : {1, 2, 1, 4, 5, 6, 7})
        byOne.Insert(nKey, nKey);
    const auto haveOneKey = [](const auto& first, const auto& second) { return first.Key() == second.Key(); };
    EXPECT_TRUE(std::equal(list.begin(), list.end(), byOne.begin(), byOne.end(), haveOneKey)) << "as many buckets";
}

TEST_F(HashTest, HashesSignedBytes)
{
    const std::pair<int, uint32> hashes[] = {{0, 0x4B95F515}, {1, 0xFB69B604},   {2, 0xEBEE7337},
                                             {3, 0x9BC23426}, {128, 0xD6248195}, {-1, 0x81DDF9B1}};
    for (const auto& [nKey, nHash] : hashes)
        EXPECT_EQ(nHash, HashKey(nKey));
    enum class EKey : uint64
    {
        eOne = 1
    };
    EXPECT_EQ(HashBytes("a\0b", 3), HashKey(std::string_view("a\0b", 3)));
    EXPECT_EQ(HashKey(ZString("text")), HashKey(std::string("text")));
    EXPECT_EQ(HashKey(int64{1}), HashKey(EKey::eOne));
    EXPECT_EQ((0x811C9DC5 ^ 0xFFFFFFFE) * 16777619u, HashKey(int8{-2}));
    const uint64 nMixed = 0x80FF7F01FE00AA55;
    EXPECT_EQ(HashBytes(&nMixed, sizeof(nMixed)), HashKey(nMixed));
    EXPECT_EQ(0x811C9DC5, HashBytes(nullptr, 0));
}

TEST(SeededHashTest, IsSipHash)
{
    const SHashSeed seed = {0x0706050403020100, 0x0F0E0D0C0B0A0908};
    const char acBytes[] = "\0\1\2\3\4\5\6\7\10\11\12\13\14\15\16";
    EXPECT_EQ(0xABAC0158050FC4DC, SeededHash(nullptr, 0, seed));
    EXPECT_EQ(0x369095118D299A8E, SeededHash(acBytes, 8, seed));
    EXPECT_EQ(0xD320D86D2A519956, SeededHash(acBytes, 15, seed));
}

// The strings are chains of blocks; at each place, either of two blocks leads the unseeded hash to the same value.
TEST(SeededHashTest, SeparatesKeysWhoseUnseededHashesAreEqual)
{
    std::vector<std::string> keys{""};
    for (int nBit = 0; nBit < 16; ++nBit)
    {
        std::unordered_map<uint32, std::string> seen;
        for (uint32 n = 0; keys.size() < size_t{2} << nBit; ++n)
        {
            const std::string block(reinterpret_cast<const char*>(&n), sizeof(n)), key = keys[0] + block;
            const auto [pos, bNew] = seen.emplace(HashBytes(key.data(), key.size()), block);
            for (size_t i = 0, nKeys = keys.size(); i < nKeys && !bNew; ++i)
            {
                keys.push_back(keys[i] + pos->second);
                keys[i] += block;
            }
        }
    }
    static int s_nComparisons;
    s_nComparisons = 0;
    struct Counting : TSeededHashSetPolicy<std::string>
    {
        static bool Equals(const std::string& first, const std::string& second)
        {
            ++s_nComparisons;
            return first == second;
        }
    };
    const ZMemAllocatorScope scope;
    THashSet<std::string, Counting> set;
    for (const std::string& key : keys)
    {
        EXPECT_EQ(HashBytes(keys[0].data(), keys[0].size()), HashBytes(key.data(), key.size()));
        set.Insert(key);
    }
    EXPECT_EQ(65536u, set.Size());
    EXPECT_LT(s_nComparisons, 2 * 65536);
    const THashMap<ZString, int, TSeededHashMapPolicy<ZString, int>> byName{{ZString("one"), 1}, {ZString("two"), 2}};
    const THashMap<int, int, TSeededHashMapPolicy<int, int>> byNumber{{-1, 1}, {2, 2}};
    EXPECT_EQ(3, byName.Find(ZString("two"))->Value() + byNumber.Find(-1)->Value());
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
    // Insert would take a number on the stack for one in so many nodes.
    EXPECT_BREAK(full.Emplace(1, 1)) << "one and a half times as many wraps to less";
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
