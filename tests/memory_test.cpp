// The memory facade: who is asked, when, and what stands in the table afterwards.
#include "core/memory/memorymanager.h"
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"

#include <cstring>

namespace
{
ZMemoryManager& Manager()
{
    return *GetMemoryManager();
}

// Owns what it is told to own.
class PageAllocator : public IPageAllocator
{
public:
    IAllocator* FindAllocator(void* pMemory) override { return pMemory == m_pOwned ? m_pOwner : nullptr; }

    void* m_pOwned = nullptr;
    IAllocator* m_pOwner = nullptr;
};

// The distance of a virtual function in its table, as the platform's C++ ABI keeps it in a pointer to member.
template <class TFunction>
std::ptrdiff_t TableOffset(TFunction function)
{
    std::ptrdiff_t nOffset = 0;
    std::memcpy(&nOffset, &function, sizeof(nOffset));
    return nOffset - 1;
}
} // namespace

TEST(MemoryManager, EveryIdentityTakesAnAllocatorAndThenAnother)
{
    ZMallocAllocator first, second;
    for (uint32 nIdentity = 0; nIdentity < ZMemoryManager::kIdentities; ++nIdentity)
    {
        EXPECT_EQ(nullptr, Manager().GetAllocator(nIdentity));
        for (ZMallocAllocator* pAllocator : {&first, &second})
        {
            Manager().InstallAllocator(nIdentity, pAllocator);
            EXPECT_EQ(pAllocator, Manager().GetAllocator(nIdentity));
        }
        nIdentity % 2 == 0 ? Manager().UnInstallAllocator(nIdentity) : Manager().InstallAllocator(nIdentity, nullptr);
        EXPECT_EQ(nullptr, Manager().GetAllocator(nIdentity));
    }
}

TEST(MemoryManager, IdentityOutsideTheTableBreaksAndWritesNothing)
{
    ZMallocAllocator allocator;
    EXPECT_BREAK(Manager().InstallAllocator(ZMemoryManager::kIdentities, &allocator));
    EXPECT_BREAK(Manager().UnInstallAllocator(UINT32_MAX));
    EXPECT_BREAK(Manager().GetAllocator(ZMemoryManager::kIdentities));

    BreakCounter breaks;
    unsigned char before[sizeof(ZMemoryManager)];
    std::memcpy(before, &Manager(), sizeof(before));
    Manager().InstallAllocator(ZMemoryManager::kIdentities, &allocator);
    Manager().UnInstallAllocator(UINT32_MAX);
    EXPECT_EQ(nullptr, Manager().GetAllocator(UINT32_MAX));
    EXPECT_EQ(3, breaks.Take());
    EXPECT_EQ(0, std::memcmp(before, &Manager(), sizeof(before)));
}

TEST(MemoryManager, AllocateWithoutANormalAllocatorBreaks)
{
    EXPECT_BREAK(Manager().Allocate(48, 0));
    BreakCounter breaks;
    EXPECT_EQ(nullptr, Manager().Allocate(48, 0));
    EXPECT_EQ(1, breaks.Take());
    Manager().Free(nullptr);
}

TEST_F(JournalTest, ManagerUsesTheNormalAllocator)
{
    void* pDefault = Manager().Allocate(48, 0);
    void* pAligned = Manager().Allocate(100, 256);
    EXPECT_EQ(0u, kx::detail::AddressOf(static_cast<char*>(pAligned)) % 256);
    Manager().Free(pDefault);
    Manager().Free(pAligned);
    Manager().Free(nullptr);
    EXPECT_EQ((Journal{"alloc 48/16", "alloc 100/256", "free 48", "free 100"}), TakeJournal());
}

TEST_F(JournalTest, ArraysGoBackToTheirOwner)
{
    ZMallocAllocator owner;
    PageAllocator pages;
    pages.m_pOwner = &owner;
    pages.m_pOwned = ::operator new[](32, owner);
    Manager().InstallPageAllocator(&pages);
    ReleaseArrayStorage(pages.m_pOwned);
    pages.m_pOwned = Manager().Allocate(64, 0);
    pages.m_pOwner = &m_allocator;
    Manager().Free(pages.m_pOwned);
    pages.m_pOwned = nullptr;
    ReleaseArrayStorage(::operator new[](8, *GetNormalAllocator()));
    Manager().InstallPageAllocator(nullptr);
    EXPECT_EQ(nullptr, Manager().GetPageAllocator());
    ReleaseArrayStorage(::operator new[](24, *GetNormalAllocator()));
    EXPECT_EQ((Journal{"alloc 64/16", "free 64", "alloc 8/16", "free 8", "alloc 24/16", "free 24"}), TakeJournal());
}

TEST_F(JournalTest, NewExpressionReleasesWhenTheConstructorThrows)
{
    struct Thrower
    {
        Thrower() { throw 1; }
        int m_nUnused = 0;
    };
    EXPECT_THROW(new (*GetNormalAllocator()) Thrower, int);
    EXPECT_EQ((Journal{"alloc 4/16", "free 4"}), TakeJournal());
    EXPECT_THROW(new (*GetNormalAllocator()) Thrower[1], int);
    EXPECT_EQ((Journal{"alloc 4/16", "free 4"}), TakeJournal());
}

TEST(MallocAllocator, HonoursEveryAlignment)
{
    static_assert(sizeof(ZMallocAllocator) == sizeof(void*));
    ZMallocAllocator allocator;
    for (uint64 nAlignment = 1; nAlignment <= 4096; nAlignment *= 2)
    {
        for (const uint64 nSize : {uint64{0}, uint64{1}, nAlignment, nAlignment + 1})
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
}

TEST(MallocAllocator, RefusesWhatItCannotGive)
{
    ZMallocAllocator allocator;
    EXPECT_EQ(nullptr, allocator.Allocate(UINT64_MAX - 8, 64, 0));
    EXPECT_BREAK(allocator.Allocate(8, 12, 0));
    BreakCounter breaks;
    EXPECT_EQ(nullptr, allocator.Allocate(8, 48, 0));
    EXPECT_EQ(1, breaks.Take());
}

TEST(MemAllocatorScope, NestsAndLeavesNothingBehind)
{
    EXPECT_EQ(nullptr, GetNormalAllocator());
    {
        ZMemAllocatorScope outer;
        IAllocator* pNormal = GetNormalAllocator();
        ASSERT_NE(nullptr, pNormal);
        EXPECT_STREQ("process heap", pNormal->GetName());
        {
            ZMemAllocatorScope inner;
            EXPECT_EQ(pNormal, GetNormalAllocator());
        }
        EXPECT_EQ(pNormal, GetNormalAllocator());
    }
    EXPECT_EQ(nullptr, Manager().GetAllocator(ALLOCATOR_NORMAL));
}

TEST(MemAllocatorScope, LeavesTheProgramsOwnAllocatorInPlace)
{
    ZMallocAllocator own;
    Manager().InstallAllocator(ALLOCATOR_NORMAL, &own);
    {
        ZMemAllocatorScope scope;
        EXPECT_EQ(&own, GetNormalAllocator());
    }
    EXPECT_EQ(&own, GetNormalAllocator());
    {
        ZMemAllocatorScope scope;
        for (const uint32 nIdentity : {ALLOCATOR_NORMAL, 5u})
        {
            Manager().UnInstallAllocator(nIdentity);
            EXPECT_EQ(nIdentity == ALLOCATOR_NORMAL, Manager().GetAllocator(nIdentity) != nullptr) << "a scope lives";
            Manager().InstallAllocator(nIdentity, &own);
            Manager().InstallAllocator(nIdentity, nullptr);
            EXPECT_EQ(nIdentity == ALLOCATOR_NORMAL, Manager().GetAllocator(nIdentity) != nullptr);
        }
        Manager().InstallAllocator(ALLOCATOR_NORMAL, &own);
    }
    EXPECT_EQ(&own, GetNormalAllocator());
    Manager().UnInstallAllocator(ALLOCATOR_NORMAL);
    EXPECT_EQ(nullptr, GetNormalAllocator());
}

TEST(AllocatorInterface, SlotsStandInTheOrderThatCallersRelyOn)
{
    EXPECT_EQ(TableOffset(&IAllocator::Allocate) + static_cast<std::ptrdiff_t>(sizeof(void*)),
              TableOffset(&IAllocator::Free));
    EXPECT_EQ(TableOffset(&IAllocator::Allocate), TableOffset(&IPageAllocator::FindAllocator));

    JournalAllocator allocator;
    PageAllocator pages;
    EXPECT_STREQ("allocator", allocator.GetName());
    EXPECT_STREQ("page allocator", pages.GetName());
}
