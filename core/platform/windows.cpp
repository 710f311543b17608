// What the other files of this folder need of Windows.
#include "core/platform/gather.h"
#include "core/platform/lock.h"
#include "core/platform/threadobject.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

// ntdll exports it, but no header declares it. It is true while the process ends and its modules are notified.
extern "C" __declspec(dllimport) unsigned char __stdcall RtlDllShutdownInProgress();

bool kx::detail::IsProcessEnding(const void* pInModule)
{
    // The program ends its own objects before the system knows of the end, and is never unloaded otherwise.
    HMODULE pModule = nullptr;
    const DWORD nFlags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    GetModuleHandleExA(nFlags, static_cast<const char*>(pInModule), &pModule);
    return RtlDllShutdownInProgress() != 0 || pModule == GetModuleHandleA(nullptr);
}

namespace
{
void (*s_pfnThreadEnd)(void*) = nullptr;

struct SThreadSlot
{
    static void CALLBACK OnThreadEnd(void* pValue)
    {
        if (pValue != nullptr)
            s_pfnThreadEnd(pValue);
    }

    // Calls OnThreadEnd for the threads that still run: it would be gone when they end.
    ~SThreadSlot()
    {
        if (!kx::detail::IsProcessEnding(this))
            FlsFree(m_nIndex);
    }

    DWORD m_nIndex = FlsAlloc(&OnThreadEnd);
};

DWORD ThreadSlot()
{
    static const SThreadSlot s_slot;
    return s_slot.m_nIndex;
}
} // namespace

void* kx::detail::ThreadValue()
{
    return FlsGetValue(ThreadSlot());
}

void kx::detail::SetThreadValue(void* pValue, void (*pfnEnd)(void*))
{
    s_pfnThreadEnd = pfnEnd;
    FlsSetValue(ThreadSlot(), pValue);
}

static_assert(sizeof(SRWLOCK) == sizeof(void*), "a null pointer is the SRWLOCK that nobody holds");

void kx::detail::ZLock::lock()
{
    AcquireSRWLockExclusive(reinterpret_cast<SRWLOCK*>(&m_pSystemLock));
}

void kx::detail::ZLock::unlock()
{
    ReleaseSRWLockExclusive(reinterpret_cast<SRWLOCK*>(&m_pSystemLock));
}
