#include "core/memory/memorymanager.h"

#include "core/platform/heap.h"
#include "core/platform/lock.h"

namespace
{
// Is the normal allocator while there is none.
class ZNoAllocator final : public IAllocator
{
public:
    constexpr ZNoAllocator() = default;

    const char* GetName() const override { return "no allocator"; }

    void* Allocate(uint64, uint64, uint32) override
    {
        kx::detail::NoAllocatorInstalled_UseProcessHeapOrScope();
        return nullptr;
    }

    void Free(void* pMemory) override
    {
        if (pMemory != nullptr)
            kx::detail::NoAllocatorInstalled_UseProcessHeapOrScope();
    }
};

// An allocator whose destructor never runs: containers with static storage may be released after this file's own
// statics would be gone.
template <class TAllocator>
union SImmortal
{
    TAllocator m_allocator;

    constexpr SImmortal() : m_allocator() {}
    ~SImmortal() {}
};

constinit SImmortal<ZMallocAllocator> s_processHeap;
constinit SImmortal<ZMallocAllocator> s_scopeHeap; // another one, to tell a scope from a program that installs the heap
constinit SImmortal<ZNoAllocator> s_none;
constinit kx::detail::ZLock s_scopes;

// The table slot of an identity, or null after the debug break.
template <class TTable>
auto* FindSlot(TTable& table, uint32 nIdentity)
{
    const bool bInTable = nIdentity < ZMemoryManager::kIdentities;
    kx::detail::BreakUnless(bInTable);
    return bInTable ? &table[nIdentity] : nullptr;
}
} // namespace

constinit ZMemoryManager ZMemoryManager::ms_instance(&s_none.m_allocator);

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

    return kx::detail::AllocateFromHeap(nSize != 0 ? nSize : 1, nAlignment);
}

void ZMallocAllocator::Free(void* pMemory)
{
    kx::detail::FreeToHeap(pMemory);
}

IAllocator* GetProcessHeap()
{
    return &s_processHeap.m_allocator;
}

void ZMemoryManager::InstallAllocator(uint32 nIdentity, IAllocator* pAllocator)
{
    IAllocator** ppSlot = FindSlot(m_apAllocators, nIdentity);
    if (ppSlot == nullptr)
        return;
    const bool bNormal = nIdentity == ALLOCATOR_NORMAL;
    if (pAllocator == nullptr && bNormal && m_nScopes != 0)
        pAllocator = &s_scopeHeap.m_allocator;
    if (bNormal && m_pfnReleaseUnused != nullptr)
        m_pfnReleaseUnused();
    *ppSlot = pAllocator;
    if (bNormal)
        m_pNormal = pAllocator != nullptr ? pAllocator : &s_none.m_allocator;
}

void ZMemoryManager::UnInstallAllocator(uint32 nIdentity)
{
    InstallAllocator(nIdentity, nullptr);
}

IAllocator* ZMemoryManager::GetAllocator(uint32 nIdentity) const
{
    IAllocator* const* ppSlot = FindSlot(m_apAllocators, nIdentity);
    return ppSlot != nullptr ? *ppSlot : nullptr;
}

void* ZMemoryManager::Allocate(uint64 nSize, uint32 nAlignment)
{
    return m_pNormal->Allocate(nSize, nAlignment != 0 ? nAlignment : __STDCPP_DEFAULT_NEW_ALIGNMENT__, 0);
}

void ZMemoryManager::Free(void* pMemory)
{
    if (pMemory != nullptr)
        ReleaseArrayStorage(pMemory);
}

ZMemAllocatorScope::ZMemAllocatorScope()
{
    const std::lock_guard lock(s_scopes);
    ZMemoryManager& manager = *GetMemoryManager();
    ++manager.m_nScopes;
    if (manager.GetAllocator(ALLOCATOR_NORMAL) == nullptr)
        manager.InstallAllocator(ALLOCATOR_NORMAL, &s_scopeHeap.m_allocator);
}

ZMemAllocatorScope::~ZMemAllocatorScope()
{
    const std::lock_guard lock(s_scopes);
    ZMemoryManager& manager = *GetMemoryManager();
    --manager.m_nScopes;
    if (manager.m_nScopes == 0 && manager.GetAllocator(ALLOCATOR_NORMAL) == &s_scopeHeap.m_allocator)
        manager.UnInstallAllocator(ALLOCATOR_NORMAL);
}

ZAllocatorScope::ZAllocatorScope(IAllocator& allocator)
    : m_pPrevious(GetMemoryManager()->GetAllocator(ALLOCATOR_NORMAL))
{
    GetMemoryManager()->InstallAllocator(ALLOCATOR_NORMAL, &allocator);
}

ZAllocatorScope::~ZAllocatorScope()
{
    // The last ZMemAllocatorScope may have ended in the meantime. Installing null selects its heap only while one
    // lives.
    IAllocator* pPrevious = m_pPrevious != &s_scopeHeap.m_allocator ? m_pPrevious : nullptr;
    GetMemoryManager()->InstallAllocator(ALLOCATOR_NORMAL, pPrevious);
}

KX_NOINLINE void kx::detail::NoAllocatorInstalled_UseProcessHeapOrScope()
{
    BreakUnless(false);
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
