// Containers and strings whose fields have been overwritten: Validate() sees it, and what relies on a field breaks.
#include "core/strings/stack_string.h"
#include "core/strings/string.h"
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/player.h"

namespace
{
using BrokenTest = JournalTest;
using Links = kx::detail::SRedBlackTreeLinks;

Links* NodeAt(auto pos)
{
    return kx::detail::NodeOf<Links>(pos.Address());
}

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

bool Sees(auto& container, size_t nOffset, auto value)
{
    const auto old = Poke(container, nOffset, value);
    const bool bSeen = !container.Validate();
    Poke(container, nOffset, old);
    return bSeen && container.Validate();
}
} // namespace

TEST_F(BrokenTest, ValidateSeesABrokenSequenceOrString)
{
    TArray<int> array{1, 2, 3}, empty;
    EXPECT_TRUE(Sees(array, 0, array.End() + 1) && Sees(array, 16, array.End() - 1) && Sees(empty, 16, array.End()));
    TMaxArray<int, 3> maxArray{1};
    EXPECT_TRUE(Sees(maxArray, 12, 4));
    TBlockArray<int> blocks{1, 2, 3}, noBlocks;
    EXPECT_TRUE(Sees(blocks, 0, 128) && Sees(blocks, 4, 17) && Sees(noBlocks, 0, 1) && Sees(noBlocks, 8, 1));
    while (blocks.Size() < 128)
        blocks.Insert(blocks.End(), 4);
    EXPECT_TRUE(Sees(blocks, 4, 129));
    noBlocks = std::move(blocks);
    TBlockArray<int> moved(std::move(noBlocks));
    EXPECT_TRUE(Poke(blocks, 12, 0u) == 0 && Poke(noBlocks, 12, 0u) == 0) << "no block size is left";
    TList<int> list{1, 2};
    EXPECT_TRUE(Sees(list, 0, 1) && Sees(list, 0, 3) && Sees(list, 16, &*list.Begin() - 4));
    TSList<int> slist{1, 2};
    EXPECT_TRUE(Sees(slist, 0, 1) && Sees(slist, 0, 3));
    ZString text("abc"), emptyText;
    ZStackString<4> stackText;
    stackText.append("ab");
    EXPECT_TRUE(Sees(text, 0, 0x80000002) && Sees(emptyText, 0, 0u) && Sees(stackText, 8, 1u));
}

TEST_F(BrokenTest, ValidateSeesABrokenTree)
{
    TSet<int> set{1, 2, 3, 4}, none;
    Links& header = *NodeAt(set.End());
    Links& root = *header.m_pChild[0];
    Links& leaf = *NodeAt(set.Find(4));
    const auto sees = [&]<class TField>(TField& field, TField value)
    {
        const TField old = std::exchange(field, value);
        const bool bSeen = !set.Validate();
        field = old;
        return bSeen && set.Validate();
    };
    Links* pNull = nullptr;
    EXPECT_TRUE(sees(header.m_pChild[0], pNull) && sees(header.m_pChild[1], pNull) && Sees(none, 32, 1));
    EXPECT_TRUE(sees(header.m_nColor, kx::detail::kRed) && sees(header.m_pParent, &root));
    EXPECT_TRUE(sees(root.m_nColor, kx::detail::kRed) && sees(root.m_pParent, &leaf));
    EXPECT_TRUE(sees(leaf.m_nColor, kx::detail::kBlack) && sees(leaf.m_nColor, 2u)) << "black height, no colour";
    EXPECT_TRUE(sees(leaf.m_pParent, &root) && sees(leaf.m_pChild[1], &root)) << "a circle";
    EXPECT_TRUE(sees(root.m_pChild[0], root.m_pChild[1]) && sees(root.m_pChild[1], pNull));
    EXPECT_TRUE(sees(*set.Find(4), 0) && sees(*set.End().Address(), 7)) << "order, count";
    for (Links* pChild : root.m_pChild)
        pChild->m_nColor = kx::detail::kRed;
    EXPECT_FALSE(set.Validate()) << "red under red";
    TSet<int> two{1, 2}, three{1, 2, 3};
    NodeAt(two.Find(2))->m_nColor = kx::detail::kBlack;
    NodeAt(three.Find(1))->m_nColor = kx::detail::kBlack;
    EXPECT_FALSE(two.Validate() || three.Validate()) << "black height, with one leaf, and less on the right";
}

TEST_F(BrokenTest, ValidateSeesABrokenTable)
{
    using Set = TOpen<THashSet<int>>;
    // The chains of four buckets are node 0, none, node 2, node 1; node 3 is free.
    void (*const breakages[])(Set&) = {
        [](Set& set) { set.m_nSize = 2; },
        [](Set& set) { set.m_nSize = 4; },
        [](Set& set) { set.m_nBucketCount = 0; },
        [](Set& set) { set.Clear(), set.m_nBucketCount = 3; },
        [](Set& set) { set.m_nFreeHead = 2; },
        [](Set& set) { set.m_nFreeHead = 4; },
        [](Set& set) { set.m_pBuckets[0] = kx::detail::kHashNone; },
        [](Set& set) { set.m_pBuckets[1] = std::exchange(set.m_pBuckets[0], kx::detail::kHashNone); },
        [](Set& set) { set.m_pBuckets[1] = 3; },
        [](Set& set) { set.m_pNodes[0].m_nNext = 0; },
        [](Set& set) { set.m_pNodes[0].m_nNext = 4; },
        [](Set& set) { set.m_pNodes[3].m_nNext = 3; },
        [](Set& set) { set.m_pNodes[3].m_nNext = 0; },
        [](Set& set) { set.Insert(4), set.Remove(3), set.m_nFreeHead = kx::detail::kHashNone; },
        [](Set& set) { set.Remove(3), set.m_nFreeHead = 3, set.m_pNodes[3].m_nNext = kx::detail::kHashNone; },
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

TEST_F(BrokenTest, WhatReliesOnAFieldBreaks)
{
    TArray<int> array{1, 2};
    EXPECT_BREAK((Poke(array, 8, array.Begin() - 1), array.Clear()));

    TBlockArray<int> blocks{1};
    EXPECT_BREAK((Poke(blocks, 4, 0x60000000), Poke(blocks, 8, 0x06000000), blocks.Insert(blocks.Begin(), 0)))
        << "more slots than 32 bits can count";

    TMap<int, int> map{{1, 1}, {2, 2}}, other{{1, 1}};
    Links& header = *NodeAt(map.End());
    Links* pRoot = header.m_pChild[0];
    const auto cutRoot = [&] { header.m_pChild[1] = nullptr; };
    EXPECT_BREAK((cutRoot(), map.Clear()));
    EXPECT_BREAK((cutRoot(), TMap<int, int>(map)));
    EXPECT_BREAK((Poke(other, 32, 2), static_cast<void>(map == other)));
    SRedBlackTreeNode<int64> node(3);
    EXPECT_BREAK(kx::detail::InsertNode(&node, pRoot, 1, &header)) << "there is a node";
    EXPECT_BREAK(kx::detail::InsertNode(&node, pRoot, 2, &header));

    BreakCounter breaks;
    header.m_pChild[0] = nullptr;
    TMap<int, int> moved(std::move(map));
    EXPECT_EQ(1, breaks.Take());
    NodeAt(moved.End())->m_pChild[0] = pRoot;
    EXPECT_TRUE(moved.Validate());
}
