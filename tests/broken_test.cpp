// Containers and strings whose fields have been overwritten.
#include "core/strings/stack_string.h"
#include "core/strings/string.h"
#include "tests/support/breaks.h"
#include "tests/support/hashmodel.h"
#include "tests/support/modeltest.h"
#include "tests/support/orderedmodel.h"
#include "tests/support/sequencemodel.h"

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
    EXPECT_TRUE(seen(blocks, 0, 128) && seen(blocks, 4, 17));
    for (int i = 3; i < 128; ++i)
        blocks.Insert(blocks.End(), i);
    EXPECT_TRUE(seen(blocks, 4, 129));
    TBlockArray<int> noBlocks;
    EXPECT_TRUE(seen(noBlocks, 0, 1) && seen(noBlocks, 8, 1));
    noBlocks = std::move(blocks);
    TBlockArray<int> moved(std::move(noBlocks));
    EXPECT_TRUE(Poke(blocks, 12, 0u) == 0 && Poke(noBlocks, 12, 0u) == 0) << "no block size is left";
    TList<int> list{1, 2};
    int* pFirst = &*list.Begin();
    EXPECT_TRUE(seen(list, 0, 1) && seen(list, 0, 3) && seen(list, 16, pFirst - 4));
    TSList<int> slist{1, 2};
    EXPECT_TRUE(seen(slist, 0, 1) && seen(slist, 0, 3));
    TSet<int> noNodes;
    EXPECT_TRUE(seen(noNodes, 32, 1));
    ZString text("abc"), emptyText;
    ZStackString<4> stackText;
    stackText.append("ab");
    EXPECT_TRUE(seen(text, 0, 0x80000002) && seen(emptyText, 0, 0u) && seen(stackText, 8, 1u));
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
