// The memory facade: every heap block of every container passes through here.
//
//   TArray, TList, ... --> GetNormalAllocator() --> IAllocator::Allocate / Free
//                               |
//                               +-- one word in ZMemoryManager, read on every call
//
// A program makes the process heap the normal allocator by one line in one of its sources,
//
//   KX_USE_PROCESS_HEAP;
//
// or, for a part of its life, by a ZMemAllocatorScope; or it installs an allocator of its own.
//
// Threads: allocators are installed before the threads that use them start, and stay until these have ended. Everything
// else here may be called by any number of threads at the same time. An installed allocator must itself be safe for
// that; the process heap is.
#pragma once

#include "core/platform/platform.h"

#include <cstddef>
#include <new>

namespace kx::detail
{
class ZCellHeap;
}

/// An allocator, used by pointer. Whoever installs one keeps it alive.
///
/// The order of the virtual functions is part of the interface: Free follows Allocate directly, and
/// IPageAllocator::FindAllocator has the place of Allocate.
class KX_API IAllocator
{
public:
    constexpr IAllocator() = default;
    IAllocator(const IAllocator&) = delete;
    IAllocator& operator=(const IAllocator&) = delete;
    virtual ~IAllocator();

    /// The name that a debugger or a memory report shows. The library itself never calls it.
    virtual const char* GetName() const;

    /// Returns a block of at least nSize bytes whose address is a multiple of nAlignment, a power of two. The library
    /// asks for at most 16, or for the alignment of an element type if that is larger. nReserved is always 0. The
    /// containers use the result without a test for null.
    virtual void* Allocate(uint64 nSize, uint64 nAlignment, uint32 nReserved) = 0;

    /// Releases a block of this allocator. Must accept and ignore null, which the containers pass as a matter of
    /// course.
    virtual void Free(void* pMemory) = 0;
};

/// Knows which allocator owns a block. Reached only through ZMemoryManager::GetPageAllocator().
class KX_API IPageAllocator
{
public:
    constexpr IPageAllocator() = default;
    IPageAllocator(const IPageAllocator&) = delete;
    IPageAllocator& operator=(const IPageAllocator&) = delete;
    virtual ~IPageAllocator();

    /// As IAllocator::GetName.
    virtual const char* GetName() const;

    /// The allocator that owns pMemory, null if this page allocator knows of none.
    virtual IAllocator* FindAllocator(void* pMemory) = 0;
};

/// The process heap. It has no state, so any instance may free what another one allocated.
class KX_API ZMallocAllocator : public IAllocator
{
public:
    constexpr ZMallocAllocator() = default;
    ~ZMallocAllocator() override;

    const char* GetName() const override;

    /// Returns null if the heap is exhausted. An nAlignment of 0 means the heap's own alignment. One that is no power
    /// of two triggers the debug break, and yields null if execution resumes. An nSize of 0 yields a block that can be
    /// freed.
    void* Allocate(uint64 nSize, uint64 nAlignment, uint32 nReserved) override;
    void Free(void* pMemory) override;
};

/// The process heap as an allocator that is never destroyed. For InstallAllocator: an allocator that is a static object
/// may be destroyed before the static containers that use it.
KX_API IAllocator* GetProcessHeap();

/// The identity of the allocator that every container uses. Identities that no constant names are the program's own.
inline constexpr uint32 ALLOCATOR_NORMAL = 1;

/// The table of allocators under small numeric identities. One instance for the whole life of the process, usable from
/// the first static initialiser to the last static destructor.
class KX_VISIBLE ZMemoryManager
{
public:
    /// Identities run from 0 to kIdentities - 1. Any other triggers the debug break in the three functions below. If
    /// execution resumes, nothing is written and GetAllocator returns null.
    static constexpr uint32 kIdentities = 32;

    ZMemoryManager(const ZMemoryManager&) = delete;
    ZMemoryManager& operator=(const ZMemoryManager&) = delete;

    /// Binds pAllocator to the identity. The caller keeps it alive until it is uninstalled and the last block that a
    /// container took from it is freed: a release looks the allocator up again. A second allocator replaces the first,
    /// which is left untouched. Null is the same as UnInstallAllocator. Not while other threads use the identity.
    KX_API void InstallAllocator(uint32 nIdentity, IAllocator* pAllocator);

    /// Clears the identity and leaves the allocator untouched. While a ZMemAllocatorScope lives, ALLOCATOR_NORMAL falls
    /// back to the process heap instead. Not while other threads use the identity.
    KX_API void UnInstallAllocator(uint32 nIdentity);

    /// The allocator under the identity, null if none is installed.
    KX_API IAllocator* GetAllocator(uint32 nIdentity) const;

    /// A block of nSize bytes from the normal allocator. nAlignment is in bytes; 0 means the alignment of operator new.
    /// Triggers the debug break if there is no normal allocator, and returns null if execution resumes.
    KX_API void* Allocate(uint64 nSize, uint32 nAlignment);

    /// Releases a block that Allocate returned, through the owner lookup of ReleaseArrayStorage. Ignores null.
    KX_API void Free(void* pMemory);

    /// Null unless the program has installed one.
    IPageAllocator* GetPageAllocator() const { return m_pPageAllocator; }

    /// The caller keeps pPageAllocator alive until it is replaced. Null removes it.
    void InstallPageAllocator(IPageAllocator* pPageAllocator) { m_pPageAllocator = pPageAllocator; }

private:
    friend ZMemoryManager* GetMemoryManager();
    friend IAllocator* GetNormalAllocator();
    friend class ZMemAllocatorScope;
    friend class kx::detail::ZCellHeap;

    constexpr explicit ZMemoryManager(IAllocator* pNormal) : m_pNormal(pNormal) {}

    KX_API static ZMemoryManager ms_instance;

    IAllocator* m_pNormal; // what is installed, or an object that only triggers the debug break
    IAllocator* m_apAllocators[kIdentities] = {};
    IPageAllocator* m_pPageAllocator = nullptr;
    void (*m_pfnReleaseUnused)() = nullptr; // what is kept of the normal allocator without need; before it changes
    uint32 m_nScopes = 0;
};

/// The one memory manager.
inline ZMemoryManager* GetMemoryManager()
{
    return &ZMemoryManager::ms_instance;
}

/// The allocator that every container uses. Read from the manager on every call and never cached: a load, or two across
/// a module boundary, and no call.
///
/// Never null. If no allocator is installed, the result ignores Free(null); anything else that is asked of it triggers
/// the debug break in kx::detail::NoAllocatorInstalled_UseProcessHeapOrScope.
inline IAllocator* GetNormalAllocator()
{
    return ZMemoryManager::ms_instance.m_pNormal;
}

/// While a scope lives, there is a normal allocator. The first scope installs the process heap unless the program has
/// installed an allocator of its own, and the end of the last scope removes the heap again. An allocator of the program
/// stays installed throughout. Scopes nest, and may live in different threads.
class KX_VISIBLE ZMemAllocatorScope
{
public:
    KX_API ZMemAllocatorScope();
    KX_API ~ZMemAllocatorScope();
    ZMemAllocatorScope(const ZMemAllocatorScope&) = delete;
    ZMemAllocatorScope& operator=(const ZMemAllocatorScope&) = delete;
};

/// Installs an allocator as the normal one, and at its end puts back what was installed before.
///
/// Like InstallAllocator, it is not for a time in which other threads use the normal allocator. Blocks from the
/// allocator must be freed before the scope ends, or the previous allocator must be able to free them.
class KX_VISIBLE ZAllocatorScope
{
public:
    KX_API explicit ZAllocatorScope(IAllocator& allocator);
    KX_API ~ZAllocatorScope();
    ZAllocatorScope(const ZAllocatorScope&) = delete;
    ZAllocatorScope& operator=(const ZAllocatorScope&) = delete;

private:
    IAllocator* m_pPrevious;
};

namespace kx::detail
{
// Where a program stops that uses memory without an allocator. Exported, so that a crash report has its name.
KX_API void NoAllocatorInstalled_UseProcessHeapOrScope();

// A scope that never ends.
struct KX_LOCAL SEndlessScope
{
    SEndlessScope() { ::new (m_acStorage) ZMemAllocatorScope; }

    alignas(ZMemAllocatorScope) unsigned char m_acStorage[sizeof(ZMemAllocatorScope)];
};
} // namespace kx::detail

/// Makes the process heap the normal allocator from the first static initialiser of the program, or library, to its
/// last static destructor. One line at namespace scope in one source. An allocator of the program's own can still be
/// installed.
#define KX_USE_PROCESS_HEAP KX_INIT_FIRST static kx::detail::SEndlessScope s_kxUseProcessHeap

/// A block from the given allocator, aligned as plain operator new aligns. Not noexcept, so that a new-expression does
/// not test the result: a null block is written through, as everywhere in the containers.
inline void* operator new(std::size_t nSize, IAllocator& allocator)
{
    return allocator.Allocate(nSize, __STDCPP_DEFAULT_NEW_ALIGNMENT__, 0);
}

inline void* operator new[](std::size_t nSize, IAllocator& allocator)
{
    return allocator.Allocate(nSize, __STDCPP_DEFAULT_NEW_ALIGNMENT__, 0);
}

/// Called by the language when a constructor throws inside a new-expression of the forms above.
inline void operator delete(void* pMemory, IAllocator& allocator) noexcept
{
    allocator.Free(pMemory);
}

inline void operator delete[](void* pMemory, IAllocator& allocator) noexcept
{
    allocator.Free(pMemory);
}

/// Releases an array that came from operator new[](size, allocator): to the allocator that owns it if a page allocator
/// knows it, else to the normal allocator. pMemory must not be null.
KX_API void ReleaseArrayStorage(void* pMemory);
