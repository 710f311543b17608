// The memory facade: every heap block of every container passes through here.
//
//   TArray, TList, ... --> GetNormalAllocator() --> IAllocator::Allocate / Free
//                               |
//                               +-- one slot of the table in ZMemoryManager, read anew at each use
//
// Nothing in this file locks. Allocators are installed before the threads that use them start.
#pragma once

#include "core/platform/platform.h"

#include <cstddef>

// An allocator, used by pointer. Whoever installs one keeps it alive.
//
// The order of the virtual functions is part of the interface: Free stands directly behind Allocate, and
// IPageAllocator::FindAllocator at the place of Allocate.
class KX_API IAllocator
{
public:
    constexpr IAllocator() = default;
    IAllocator(const IAllocator&) = delete;
    IAllocator& operator=(const IAllocator&) = delete;
    virtual ~IAllocator();

    // What a debugger or a memory report shows for this allocator. The library itself never asks.
    virtual const char* GetName() const;

    // A block of at least nSize bytes whose address is a multiple of nAlignment, a power of two. nReserved is always 0.
    // The containers use the result without a test for null.
    virtual void* Allocate(uint64 nSize, uint64 nAlignment, uint32 nReserved) = 0;

    // Releases a block of this allocator. Null must be accepted and ignored: containers pass it as a matter of course.
    virtual void Free(void* pMemory) = 0;
};

// Knows which allocator owns a block. Reached through ZMemoryManager::GetPageAllocator() alone.
class KX_API IPageAllocator
{
public:
    constexpr IPageAllocator() = default;
    IPageAllocator(const IPageAllocator&) = delete;
    IPageAllocator& operator=(const IPageAllocator&) = delete;
    virtual ~IPageAllocator();

    // As IAllocator::GetName.
    virtual const char* GetName() const;

    // The allocator that owns pMemory, or null when this page allocator knows of none.
    virtual IAllocator* FindAllocator(void* pMemory) = 0;
};

// The process heap. No state beyond the table pointer: any instance may free what another one allocated.
class KX_API ZMallocAllocator : public IAllocator
{
public:
    constexpr ZMallocAllocator() = default;
    ~ZMallocAllocator() override;

    const char* GetName() const override;

    // Null when the heap is exhausted. nAlignment 0 asks for the heap's own alignment; one that is no power of two
    // takes the debug break, and resumed gives null. nSize 0 gives a block that can be freed.
    void* Allocate(uint64 nSize, uint64 nAlignment, uint32 nReserved) override;
    void Free(void* pMemory) override;
};

// The identity of the allocator that every container uses. Identities that no constant names are the program's own.
inline constexpr uint32 ALLOCATOR_NORMAL = 1;

// The table of allocators under small numeric identities. One instance for the whole life of the process, usable from
// the first static initialiser to the last static destructor.
class KX_API ZMemoryManager
{
public:
    // Identities run from 0 to kIdentities - 1. Any other takes the debug break in the three functions below; resumed,
    // nothing is written and GetAllocator gives null.
    static constexpr uint32 kIdentities = 32;

    ZMemoryManager(const ZMemoryManager&) = delete;
    ZMemoryManager& operator=(const ZMemoryManager&) = delete;

    // Binds pAllocator to the identity. The caller keeps it alive until it is uninstalled, and until the last block
    // that a container took from it is freed: a release asks the table again. A second install replaces the first one,
    // which is left untouched. Null is the same as UnInstallAllocator.
    void InstallAllocator(uint32 nIdentity, IAllocator* pAllocator);

    // Clears the identity and leaves the allocator untouched. While a ZMemAllocatorScope lives, ALLOCATOR_NORMAL falls
    // back to the scope's allocator instead of to none.
    void UnInstallAllocator(uint32 nIdentity);

    // The allocator under the identity, null when none is installed.
    IAllocator* GetAllocator(uint32 nIdentity) const;

    // A block of nSize bytes from the normal allocator. nAlignment is in bytes; 0 stands for the alignment of operator
    // new. With no normal allocator the call takes the debug break, and resumed gives null.
    void* Allocate(uint64 nSize, uint32 nAlignment);

    // Releases a block that Allocate gave, by way of the owner lookup of ReleaseArrayStorage. Null asks nobody.
    void Free(void* pMemory);

    // Null unless the program has installed one.
    IPageAllocator* GetPageAllocator() const { return m_pPageAllocator; }

    // The caller keeps pPageAllocator alive until it is replaced; null takes it out.
    void InstallPageAllocator(IPageAllocator* pPageAllocator) { m_pPageAllocator = pPageAllocator; }

private:
    friend ZMemoryManager* GetMemoryManager();
    friend IAllocator* GetNormalAllocator();
    friend class ZMemAllocatorScope;

    constexpr ZMemoryManager() = default;

    static ZMemoryManager ms_instance;

    IAllocator* m_apAllocators[kIdentities] = {};
    IPageAllocator* m_pPageAllocator = nullptr;
    uint32 m_nScopes = 0;
};

// The one memory manager.
inline ZMemoryManager* GetMemoryManager()
{
    return &ZMemoryManager::ms_instance;
}

// The allocator that every container uses, null when there is none. Read from the table at each use, never cached: a
// load, or two across a module boundary, and no call.
inline IAllocator* GetNormalAllocator()
{
    return ZMemoryManager::ms_instance.m_apAllocators[ALLOCATOR_NORMAL];
}

// While a scope lives, a normal allocator is available. The first scope installs the process heap if the program has
// not installed an allocator of its own, and the end of the last one takes the heap away again; an allocator that the
// program installed stays in place throughout. Scopes nest.
class KX_API ZMemAllocatorScope
{
public:
    ZMemAllocatorScope();
    ~ZMemAllocatorScope();
    ZMemAllocatorScope(const ZMemAllocatorScope&) = delete;
    ZMemAllocatorScope& operator=(const ZMemAllocatorScope&) = delete;
};

// A block from the given allocator, aligned as plain operator new aligns. Not noexcept, so that a new-expression does
// not test the result: a null block is written through, like everywhere in the containers.
inline void* operator new(std::size_t nSize, IAllocator& allocator)
{
    return allocator.Allocate(nSize, __STDCPP_DEFAULT_NEW_ALIGNMENT__, 0);
}

inline void* operator new[](std::size_t nSize, IAllocator& allocator)
{
    return allocator.Allocate(nSize, __STDCPP_DEFAULT_NEW_ALIGNMENT__, 0);
}

// Called by the language when a constructor throws inside a new-expression of the forms above.
inline void operator delete(void* pMemory, IAllocator& allocator) noexcept
{
    allocator.Free(pMemory);
}

inline void operator delete[](void* pMemory, IAllocator& allocator) noexcept
{
    allocator.Free(pMemory);
}

// Releases an array that came from operator new[](size, allocator): to the allocator that owns it where a page
// allocator can tell, else to the normal allocator. pMemory must not be null.
KX_API void ReleaseArrayStorage(void* pMemory);
