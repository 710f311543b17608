// What the tests need of Windows, without its header, which has names of the library.
#pragma once

#include <csignal>

namespace kx::tests
{
inline constexpr unsigned kBreakStatus = 0x80000003;

// Counts debug breaks and resumes after each, until the handler is removed.
void* InstallBreakHandler(volatile std::sig_atomic_t& nBreaks);
void RemoveBreakHandler(void* pHandler);

void* OpenModule(const char* pszFile);
bool CloseModule(void* pModule);
void* FindInModule(void* pModule, const char* pszName);
bool IsModuleLoaded(const char* pszFile);
} // namespace kx::tests
