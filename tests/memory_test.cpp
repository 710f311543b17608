// The memory facade: which allocator gets which call, and what the table holds afterwards.
#include "core/memory/memorymanager.h"

#include "core/dynamic/dynamicobject.h"
#include "core/memory/countingallocator.h"
#include "core/memory/pmr.h"
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"

#include <array>
#include <bit>
#include <cstring>
#include <optional>

namespace
{
ZMemoryManager& s_manager = *GetMemoryManager();

// Owns the block at m_pOwned and knows of no other one.
struct ZPageAllocator : IPageAllocator
{
    IAllocator* FindAllocator(void* pMemory) override { return pMemory == m_pOwned ? &m_owner : nullptr; }

    JournalAllocator m_owner;
    void* m_pOwned = ::operator new[](32, m_owner);
};
} // namespace

TEST(MemoryManager, EveryIdentityTakesAnAllocatorAndThenAnother)
{
    ZMallocAllocator first, second;
    for (uint32 nIdentity = 0; nIdentity < ZMemoryManager::kIdentities; ++nIdentity)
    {
        EXPECT_EQ(nullptr, s_manager.GetAllocator(nIdentity));
        for (IAllocator* pAllocator : std::initializer_list<IAllocator*>{&first, &second, nullptr})
        {
            s_manager.InstallAllocator(nIdentity, pAllocator);
            EXPECT_EQ(pAllocator, s_manager.GetAllocator(nIdentity));
        }
    }
}

TEST(MemoryManager, BreaksWithoutAnAllocatorAndWritesNothing)
{
    ZMallocAllocator allocator;
    unsigned char before[sizeof(ZMemoryManager)];
    std::memcpy(before, &s_manager, sizeof(before));
    BreakCounter breaks;
    for (const uint32 nIdentity : {ZMemoryManager::kIdentities, UINT32_MAX})
    {
        EXPECT_EQ(nullptr, s_manager.GetAllocator(nIdentity));
        s_manager.UnInstallAllocator(nIdentity);
        s_manager.InstallAllocator(nIdentity, &allocator);
        EXPECT_EQ(3, breaks.Take());
    }
    EXPECT_EQ(nullptr, s_manager.Allocate(48, 0));
    EXPECT_EQ(1, breaks.Take());
    EXPECT_EQ(0, std::memcmp(before, &s_manager, sizeof(before)));
}

TEST(MemoryManager, IsOfUseWithoutAnAllocator)
{
    GetNormalAllocator()->Free(nullptr);
    static_cast<void>(TArray<int>());
    EXPECT_BREAK(TArray<int>{1});
    ZDynamicObject* pTooOld = nullptr;
    {
        const ZMemAllocatorScope scope;
        pTooOld = new ZDynamicObject(ZDynamicObject().Set("key", 1));
    }
    EXPECT_BREAK(*pTooOld = nullptr);
    const ZMemAllocatorScope scope;
    delete pTooOld;
}

TEST_F(JournalTest, BlocksGoBackToTheirOwner)
{
    s_manager.Free(s_manager.Allocate(48, 0));
    s_manager.Free(s_manager.Allocate(100, 256));
    s_manager.Free(nullptr);

    ZPageAllocator pages;
    s_manager.InstallPageAllocator(&pages);
    s_manager.Free(pages.m_pOwned);
    pages.m_pOwned = nullptr;
    ReleaseArrayStorage(::operator new[](8, m_allocator));
    s_manager.InstallPageAllocator(nullptr);
    EXPECT_EQ(nullptr, s_manager.GetPageAllocator());
    EXPECT_STREQ("allocator", m_allocator.GetName());
    EXPECT_STREQ("page allocator", pages.GetName());
    EXPECT_EQ((Journal{"alloc 48/16", "free 48", "alloc 100/256", "free 100", "alloc 32/16", "free 32", "alloc 8/16",
                       "free 8"}),
              TakeJournal());
}

TEST_F(JournalTest, NewExpressionReleasesWhenTheConstructorThrows)
{
    struct SThrower
    {
        SThrower() { throw 1; }
    };
    EXPECT_THROW(new (*GetNormalAllocator()) SThrower, int);
    EXPECT_THROW(new (*GetNormalAllocator()) SThrower[2], int);
    EXPECT_EQ((Journal{"alloc 1/16", "free 1", "alloc 2/16", "free 2"}), TakeJournal());
}

TEST(MallocAllocator, HonoursEveryAlignment)
{
    static_assert(sizeof(ZMallocAllocator) == sizeof(void*));
    ZMallocAllocator allocator;
    for (uint64 nAlignment = 1; nAlignment <= 4096; nAlignment *= 2)
    {
        for (const uint64 nSize : {uint64{0}, nAlignment, nAlignment + 1})
        {
            void* pMemory = allocator.Allocate(nSize, nAlignment, 0);
            ASSERT_NE(nullptr, pMemory);
            EXPECT_EQ(0u, kx::detail::AddressOf(static_cast<char*>(pMemory)) % nAlignment);
            std::memset(pMemory, 0xAB, nSize);
            allocator.Free(pMemory);
        }
    }
    allocator.Free(nullptr);
    allocator.Free(allocator.Allocate(8, 0, 0));
    EXPECT_EQ(nullptr, allocator.Allocate(UINT64_MAX - 8, 64, 0)) << "the rounded size would wrap";
    BreakCounter breaks;
    EXPECT_EQ(nullptr, allocator.Allocate(8, 12, 0));
    EXPECT_EQ(1, breaks.Take());
}

TEST(MemAllocatorScope, NestsAndLeavesTheProgramsOwnAllocatorInPlace)
{
    ZMallocAllocator own;
    for (IAllocator* pOwn : std::initializer_list<IAllocator*>{nullptr, &own})
    {
        s_manager.InstallAllocator(ALLOCATOR_NORMAL, pOwn);
        {
            const ZMemAllocatorScope outer;
            IAllocator* pNormal = GetNormalAllocator();
            EXPECT_EQ(pOwn != nullptr, pNormal == pOwn);
            static_cast<void>(ZMemAllocatorScope());
            EXPECT_EQ(pNormal, GetNormalAllocator());

            s_manager.UnInstallAllocator(ALLOCATOR_NORMAL);
            IAllocator* pHeap = GetNormalAllocator();
            ASSERT_TRUE(pHeap != nullptr && pHeap != pOwn);
            EXPECT_STREQ("process heap", pHeap->GetName());
            s_manager.InstallAllocator(ALLOCATOR_NORMAL, nullptr);
            EXPECT_EQ(pHeap, GetNormalAllocator());
            s_manager.UnInstallAllocator(5);
            EXPECT_EQ(nullptr, s_manager.GetAllocator(5));
            s_manager.InstallAllocator(ALLOCATOR_NORMAL, pNormal);
        }
        EXPECT_EQ(pOwn, s_manager.GetAllocator(ALLOCATOR_NORMAL));
    }
    s_manager.UnInstallAllocator(ALLOCATOR_NORMAL);
    EXPECT_EQ(nullptr, s_manager.GetAllocator(ALLOCATOR_NORMAL));
}

TEST(AllocatorScope, PutsBackWhatWasThere)
{
    ZCountingAllocator outer("outer"), inner("inner");
    {
        const ZAllocatorScope first(outer);
        {
            const ZAllocatorScope second(inner);
            EXPECT_EQ(&inner, GetNormalAllocator());
        }
        EXPECT_EQ(&outer, s_manager.GetAllocator(ALLOCATOR_NORMAL));
    }
    EXPECT_EQ(nullptr, s_manager.GetAllocator(ALLOCATOR_NORMAL));

    // The heap of a scope that has ended is not put back.
    std::optional<ZMemAllocatorScope> heap(std::in_place);
    {
        const ZAllocatorScope scope(outer);
        heap.reset();
    }
    EXPECT_EQ(nullptr, s_manager.GetAllocator(ALLOCATOR_NORMAL));
}

#if __has_include(<memory_resource>)
TEST_F(JournalTest, AllocatorsThatKnowTheSizeOfTheirBlocks)
{
    ZMemoryResource normal;
    ZMemoryResourceAllocator standard(&normal);
    ZCountingAllocator counting("level", &standard);
    for (const uint64 nAlignment : {0u, 1u, 64u})
    {
        void* pMemory = counting.Allocate(5, nAlignment, 0);
        EXPECT_EQ(0u, kx::detail::AddressOf(static_cast<char*>(pMemory)) % std::max<uint64>(nAlignment, 16));
        std::memset(pMemory, '#', 5);
        counting.Free(pMemory);
    }
    EXPECT_EQ((Journal{"alloc 69/16", "free 69", "alloc 69/16", "free 69", "alloc 133/64", "free 133"}), TakeJournal());
    EXPECT_EQ(nullptr, counting.Allocate(UINT64_MAX - 8, 8, 0));
    BreakCounter breaks;
    EXPECT_EQ(nullptr, counting.Allocate(1, 3, 0));
    EXPECT_EQ(1, breaks.Take());
    counting.Free(nullptr);
    standard.Free(nullptr);

    void* pFirst = counting.Allocate(10, 8, 0);
    void* pSecond = counting.Allocate(20, 8, 0);
    counting.Free(pFirst);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(counting.ReportLeaks());
    EXPECT_EQ("level: 1 block with 20 bytes not freed\n", testing::internal::GetCapturedStderr());
    counting.Free(pSecond);
    EXPECT_TRUE(counting.Blocks() == 0 && counting.Bytes() == 0 && counting.MostBytes() == 30
                && counting.Allocations() == 5 && !counting.ReportLeaks());

    // Two resources are equal if they use the same allocator.
    EXPECT_TRUE(normal == ZMemoryResource(GetNormalAllocator()) && !(normal == ZMemoryResource(&counting)));
    EXPECT_EQ(nullptr, ZMemoryResourceAllocator(std::pmr::null_memory_resource()).Allocate(1, 1, 0));
}
#endif

// The first word of a pointer to a virtual function holds its place in the table.
TEST(AllocatorInterface, VirtualFunctionsKeepTheOrderThatCallersRelyOn)
{
    const auto offset = [](auto function) { return std::bit_cast<std::array<std::size_t, 2>>(function)[0]; };
    EXPECT_EQ(offset(&IAllocator::Allocate) + sizeof(void*), offset(&IAllocator::Free));
    EXPECT_EQ(offset(&IAllocator::Allocate), offset(&IPageAllocator::FindAllocator));
}
