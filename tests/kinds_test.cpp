// Every container with strings as its elements, and containers whose fields have been overwritten.
#include "core/strings/string.h"
#include "tests/support/breaks.h"
#include "tests/support/hashmodel.h"
#include "tests/support/modeltest.h"
#include "tests/support/orderedmodel.h"
#include "tests/support/sequencemodel.h"

template <class TContainer>
class KindsTest : public JournalTest
{
};

using ContainersOfStrings =
    testing::Types<TArray<ZString>, TMaxArray<ZString, 5>, TBlockArray<ZString>, TList<ZString>, TSList<ZString>,
                   TRedBlackTree<ZString>, TSet<ZString>, TMultiSet<ZString>, TMap<ZString, ZString>,
                   TMultiMap<ZString, ZString>, THashMap<ZString, ZString>, TMultiHashMap<ZString, ZString>,
                   THashSet<ZString>>;
TYPED_TEST_SUITE(KindsTest, ContainersOfStrings);

// The first text is borrowed, the others are owned: what is not given back, or twice, ends the test.
TYPED_TEST(KindsTest, HoldsStrings)
{
    const auto texts = [](const TypeParam& container)
    {
        std::vector<std::string> walk;
        for (const auto& element : container)
        {
            if constexpr (requires { element.Key(); })
                walk.emplace_back(std::string_view(element.Key() + element.Value()));
            else
                walk.emplace_back(std::string_view(element + element));
        }
        return walk;
    };
    TypeParam container;
    for (const ZString& text : {ZString("a"), ZString("b") + "b", ZString("c") + "c"})
    {
        if constexpr (requires { container.Insert(text, text); })
            container.Insert(text, text);
        else if constexpr (requires { container.Begin()->Key(); })
            container.Insert({text, text});
        else if constexpr (requires { container.Insert(text); })
            container.Insert(text);
        else
            container.Insert(container.End(), text);
    }
    std::vector<std::string> sorted = texts(container);
    std::ranges::sort(sorted);
    EXPECT_EQ((std::vector<std::string>{"aa", "bbbb", "cccc"}), sorted);

    TypeParam copy(container);
    container.Erase(container.Begin());
    EXPECT_EQ(3u, copy.Size());
    copy = container;
    EXPECT_EQ(2u, texts(copy).size());
    TypeParam moved(std::move(copy));
    EXPECT_EQ(texts(moved).size(), texts(container).size());
    moved.Clear();
    moved = std::move(container);
    EXPECT_EQ(2u, moved.Size());
}

using BrokenTest = JournalTest;

// Writes over the field that is so many bytes into the object.
template <class TContainer, class TField>
TField Poke(TContainer& container, size_t nOffset, TField value)
{
    char* pField = reinterpret_cast<char*>(&container) + nOffset;
    TField old;
    std::memcpy(&old, pField, sizeof(old));
    std::memcpy(pField, &value, sizeof(value));
    return old;
}

TEST_F(BrokenTest, ValidateSeesIt)
{
    const auto seen = [](auto& container, size_t nOffset, auto value)
    {
        const auto old = Poke(container, nOffset, value);
        const bool bSeen = !container.Validate();
        Poke(container, nOffset, old);
        return bSeen && container.Validate();
    };
    TArray<int> array{1, 2, 3};
    EXPECT_TRUE(seen(array, 0, array.End() + 1) && seen(array, 16, array.End() - 1));
    TArray<int> empty;
    EXPECT_TRUE(seen(empty, 16, array.End()));
    TMaxArray<int, 3> maxArray{1};
    EXPECT_TRUE(seen(maxArray, 12, 4));
    TBlockArray<int> blocks{1, 2, 3};
    EXPECT_TRUE(seen(blocks, 0, 128) && seen(blocks, 4, 129) && seen(blocks, 4, 17) && seen(blocks, 8, 0));
    TBlockArray<int> noBlocks;
    EXPECT_TRUE(seen(noBlocks, 0, 1));
    TList<int> list{1, 2};
    int* pFirst = &*list.Begin();
    EXPECT_TRUE(seen(list, 0, 1) && seen(list, 0, 3) && seen(list, 16, pFirst - 4));
    TSList<int> slist{1, 2};
    EXPECT_TRUE(seen(slist, 0, 1) && seen(slist, 0, 3));
}

// What the containers rely on themselves.
TEST_F(BrokenTest, TakesTheDebugBreak)
{
    TArray<int> array{1, 2};
    EXPECT_BREAK((Poke(array, 8, array.Begin() - 1), array.Clear()));

    TBlockArray<int> blocks{1};
    EXPECT_BREAK((Poke(blocks, 4, 0x60000000), Poke(blocks, 8, 0x06000000), blocks.Insert(blocks.Begin(), 0)))
        << "more slots than 32 bits can count";

    TMap<int, int> map{{1, 1}, {2, 2}};
    TMap<int, int> other{{1, 1}};
    const auto cutRoot = [&] { NodeAt(map.End())->m_pChild[1] = nullptr; };
    EXPECT_BREAK((cutRoot(), map.Clear()));
    EXPECT_BREAK((cutRoot(), TMap<int, int>(map)));
    EXPECT_BREAK((Poke(other, 32, 2), static_cast<void>(map == other)));
}
