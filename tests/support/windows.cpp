#include "tests/support/windows.h"

#include <windows.h>

namespace
{
volatile std::sig_atomic_t* s_pnBreaks = nullptr;

LONG CALLBACK OnException(EXCEPTION_POINTERS* pException)
{
    if (pException->ExceptionRecord->ExceptionCode != EXCEPTION_BREAKPOINT)
        return EXCEPTION_CONTINUE_SEARCH;
    *s_pnBreaks = *s_pnBreaks + 1;
    pException->ContextRecord->Rip += 1; // the system reports the instruction itself
    return EXCEPTION_CONTINUE_EXECUTION;
}
} // namespace

static_assert(kx::tests::kBreakStatus == EXCEPTION_BREAKPOINT);

void* kx::tests::InstallBreakHandler(volatile std::sig_atomic_t& nBreaks)
{
    s_pnBreaks = &nBreaks;
    return AddVectoredExceptionHandler(1, OnException);
}

void kx::tests::RemoveBreakHandler(void* pHandler)
{
    RemoveVectoredExceptionHandler(pHandler);
}

void* kx::tests::OpenModule(const char* pszFile)
{
    return LoadLibraryA(pszFile);
}

bool kx::tests::CloseModule(void* pModule)
{
    return FreeLibrary(static_cast<HMODULE>(pModule)) != 0;
}

void* kx::tests::FindInModule(void* pModule, const char* pszName)
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(pModule), pszName));
}

bool kx::tests::IsModuleLoaded(const char* pszFile)
{
    return GetModuleHandleA(pszFile) != nullptr;
}
