// No fixture and no allocator scope here: outside a scope there is no normal allocator, as the first check shows.
#include "core/memory/memorymanager.h"

#include <gtest/gtest.h>

TEST(MemoryManagerTest, NormalAllocator)
{
    ZMallocAllocator allocator;

    ASSERT_EQ(0, GetMemoryManager()->GetAllocator(ALLOCATOR_NORMAL));
    GetMemoryManager()->InstallAllocator(ALLOCATOR_NORMAL, &allocator);
    ASSERT_EQ(&allocator, GetMemoryManager()->GetAllocator(ALLOCATOR_NORMAL));

    void* mem = GetMemoryManager()->Allocate(48, 0);
    ASSERT_TRUE(mem != 0);
    GetMemoryManager()->Free(mem);
    GetMemoryManager()->Free(nullptr);

    GetMemoryManager()->UnInstallAllocator(ALLOCATOR_NORMAL);
    ASSERT_EQ(0, GetMemoryManager()->GetAllocator(ALLOCATOR_NORMAL));
}

TEST(MemoryManagerTest, CostumAllocator)
{
    const uint32 custom = 7;
    ZMallocAllocator allocator;

    ASSERT_EQ(0, GetMemoryManager()->GetAllocator(custom));
    GetMemoryManager()->InstallAllocator(custom, &allocator);
    ASSERT_EQ(&allocator, GetMemoryManager()->GetAllocator(custom));

    GetMemoryManager()->UnInstallAllocator(custom);
    ASSERT_EQ(0, GetMemoryManager()->GetAllocator(custom));
}
