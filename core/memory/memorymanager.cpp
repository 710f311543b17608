#include "core/memory/memorymanager.h"

#include <cstdlib>

namespace
{
// The allocator behind ZMemAllocatorScope. A union, so that no destructor runs at exit: containers with static storage
// may be released after this file's own statics would be gone.
union SScopeAllocator
{
    ZMallocAllocator m_allocator;

    constexpr SScopeAllocator() : m_allocator() {}
    ~SScopeAllocator() {}
};

constinit SScopeAllocator s_scope;

// The table slot of an identity, or null behind the debug break.
template <class TTable>
auto* FindSlot(TTable& table, uint32 nIdentity)
{
    const bool bInTable = nIdentity < ZMemoryManager::kIdentities;
    kx::detail::BreakUnless(bInTable);
    return bInTable ? &table[nIdentity] : nullptr;
}
} // namespace

constinit ZMemoryManager ZMemoryManager::ms_instance;

IAllocator::~IAllocator() = default;

const char* IAllocator::GetName() const
{
    return "allocator";
}

IPageAllocator::~IPageAllocator() = default;

const char* IPageAllocator::GetName() const
{
    return "page allocator";
}

ZMallocAllocator::~ZMallocAllocator() = default;

const char* ZMallocAllocator::GetName() const
{
    return "process heap";
}

void* ZMallocAllocator::Allocate(uint64 nSize, uint64 nAlignment, uint32 /*nReserved*/)
{
    const bool bPowerOfTwo = (nAlignment & (nAlignment - 1)) == 0;
    kx::detail::BreakUnless(bPowerOfTwo);
    if (!bPowerOfTwo)
        return nullptr;

    const uint64 nBytes = nSize != 0 ? nSize : 1;
    if (nAlignment <= alignof(std::max_align_t))
        return std::malloc(nBytes);

    // aligned_alloc wants a multiple of the alignment, and rounding up must not wrap to a small number.
    const uint64 nRounded = (nBytes + nAlignment - 1) & ~(nAlignment - 1);
    return nRounded >= nBytes ? std::aligned_alloc(nAlignment, nRounded) : nullptr;
}

void ZMallocAllocator::Free(void* pMemory)
{
    std::free(pMemory);
}

void ZMemoryManager::InstallAllocator(uint32 nIdentity, IAllocator* pAllocator)
{
    if (pAllocator == nullptr)
        UnInstallAllocator(nIdentity);
    else if (IAllocator** ppSlot = FindSlot(m_apAllocators, nIdentity))
        *ppSlot = pAllocator;
}

void ZMemoryManager::UnInstallAllocator(uint32 nIdentity)
{
    const bool bScopeStepsIn = nIdentity == ALLOCATOR_NORMAL && m_nScopes != 0;
    if (IAllocator** ppSlot = FindSlot(m_apAllocators, nIdentity))
        *ppSlot = bScopeStepsIn ? &s_scope.m_allocator : nullptr;
}

IAllocator* ZMemoryManager::GetAllocator(uint32 nIdentity) const
{
    IAllocator* const* ppSlot = FindSlot(m_apAllocators, nIdentity);
    return ppSlot != nullptr ? *ppSlot : nullptr;
}

void* ZMemoryManager::Allocate(uint64 nSize, uint32 nAlignment)
{
    IAllocator* pNormal = GetNormalAllocator();
    kx::detail::BreakUnless(pNormal != nullptr);
    if (pNormal == nullptr)
        return nullptr;
    return pNormal->Allocate(nSize, nAlignment != 0 ? nAlignment : __STDCPP_DEFAULT_NEW_ALIGNMENT__, 0);
}

void ZMemoryManager::Free(void* pMemory)
{
    if (pMemory != nullptr)
        ReleaseArrayStorage(pMemory);
}

ZMemAllocatorScope::ZMemAllocatorScope()
{
    ZMemoryManager& manager = *GetMemoryManager();
    ++manager.m_nScopes;
    if (GetNormalAllocator() == nullptr)
        manager.InstallAllocator(ALLOCATOR_NORMAL, &s_scope.m_allocator);
}

ZMemAllocatorScope::~ZMemAllocatorScope()
{
    ZMemoryManager& manager = *GetMemoryManager();
    --manager.m_nScopes;
    if (manager.m_nScopes == 0 && GetNormalAllocator() == &s_scope.m_allocator)
        manager.UnInstallAllocator(ALLOCATOR_NORMAL);
}

void ReleaseArrayStorage(void* pMemory)
{
    if (IPageAllocator* pPage = GetMemoryManager()->GetPageAllocator())
    {
        if (IAllocator* pOwner = pPage->FindAllocator(pMemory))
        {
            pOwner->Free(pMemory);
            return;
        }
    }
    GetNormalAllocator()->Free(pMemory);
}
