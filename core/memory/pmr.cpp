#include "core/memory/pmr.h"

#include "core/memory/blockheader.h"

#if __has_include(<memory_resource>)
#include <exception>

using kx::detail::SBlockHeader;

ZMemoryResource::~ZMemoryResource() = default;

void* ZMemoryResource::do_allocate(std::size_t nSize, std::size_t nAlignment)
{
    void* pMemory = Allocator()->Allocate(nSize, nAlignment, 0);
    if (pMemory == nullptr)
        throw std::bad_alloc();
    return pMemory;
}

void ZMemoryResource::do_deallocate(void* pMemory, std::size_t /*nSize*/, std::size_t /*nAlignment*/)
{
    Allocator()->Free(pMemory);
}

bool ZMemoryResource::do_is_equal(const std::pmr::memory_resource& other) const noexcept
{
    const auto* pOther = dynamic_cast<const ZMemoryResource*>(&other);
    return pOther != nullptr && pOther->Allocator() == Allocator();
}

ZMemoryResourceAllocator::~ZMemoryResourceAllocator() = default;

const char* ZMemoryResourceAllocator::GetName() const
{
    return "memory resource";
}

void* ZMemoryResourceAllocator::Allocate(uint64 nSize, uint64 nAlignment, uint32 /*nReserved*/)
{
    const auto allocate = [this](uint64 nBytes, uint64 nWidest) -> void*
    {
        try
        {
            return m_pResource->allocate(nBytes, nWidest);
        }
        catch (const std::exception&)
        {
            return nullptr;
        }
    };
    return kx::detail::AllocateWithHeader(nSize, nAlignment, allocate);
}

void ZMemoryResourceAllocator::Free(void* pMemory)
{
    if (pMemory == nullptr)
        return;
    const SBlockHeader header = *SBlockHeader::Of(pMemory);
    m_pResource->deallocate(header.m_pStart, header.BlockSize(), header.m_nAlignment);
}
#endif
