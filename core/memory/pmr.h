// Adaptors between the allocators of this library and those of the standard library.
//
//   ZMemoryResource resource;                          // std::pmr::vector<int> numbers(&resource);
//   ZMemoryResourceAllocator allocator(&arena);        // ZAllocatorScope scope(allocator);
//
// There is nothing here with a standard library that has no <memory_resource>: libc++ before 16.
#pragma once

#include "core/memory/memorymanager.h"

#if __has_include(<memory_resource>)
#include <memory_resource>

/// Lets the containers of std::pmr use an allocator of this library.
class KX_API ZMemoryResource : public std::pmr::memory_resource
{
public:
    /// Uses the normal allocator, which is looked up on every call.
    ZMemoryResource() = default;

    /// Uses the given allocator, which must outlive the resource.
    explicit ZMemoryResource(IAllocator* pAllocator) : m_pAllocator(pAllocator) {}

    ~ZMemoryResource() override;

private:
    IAllocator* Allocator() const { return m_pAllocator != nullptr ? m_pAllocator : GetNormalAllocator(); }

    // Throws std::bad_alloc if the allocator returns null, because the containers of std::pmr rely on that.
    void* do_allocate(std::size_t nSize, std::size_t nAlignment) override;
    void do_deallocate(void* pMemory, std::size_t nSize, std::size_t nAlignment) override;

    // Two resources are equal if they use the same allocator.
    bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override;

    IAllocator* m_pAllocator = nullptr;
};

/// Lets the containers of this library use a resource of the standard library, an arena or a pool.
///
/// Each block is 32 bytes larger than what is asked for, or larger by its alignment if that is more, because the
/// resource wants to know the size of what it gets back.
class KX_API ZMemoryResourceAllocator : public IAllocator
{
public:
    /// The resource must outlive the allocator. Threads may share the allocator if they may share the resource.
    explicit ZMemoryResourceAllocator(std::pmr::memory_resource* pResource) : m_pResource(pResource) {}

    ~ZMemoryResourceAllocator() override;

    const char* GetName() const override;

    /// As ZMallocAllocator::Allocate. Returns null if the resource throws.
    void* Allocate(uint64 nSize, uint64 nAlignment, uint32 nReserved) override;
    void Free(void* pMemory) override;

private:
    std::pmr::memory_resource* m_pResource;
};
#endif
