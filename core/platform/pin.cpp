// Compiled into each library for Windows that must stay in memory once it is loaded, as -z nodelete has it elsewhere.
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace
{
bool StayLoaded()
{
    static const char s_cHere = 0;
    HMODULE pModule = nullptr;
    return GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN, &s_cHere,
                              &pModule);
}

[[maybe_unused]] const bool s_bStays = StayLoaded();
} // namespace
