// The module that tests load, while it is loaded.
#pragma once

#include "tests/support/usertypes.h"

#include <gtest/gtest.h>
#if defined(_WIN32)
#define NOMINMAX
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <dlfcn.h>
#endif

class ZPlugin
{
public:
    explicit ZPlugin(const char* pszFile) : m_pModule(Open(pszFile)) { EXPECT_NE(nullptr, m_pModule) << pszFile; }
    ~ZPlugin() { EXPECT_TRUE(Close()); }
    ZPlugin(const ZPlugin&) = delete;
    ZPlugin& operator=(const ZPlugin&) = delete;

    STypeIDData* RecordOfVertex() const { return Call<STypeIDData*()>("PluginRecordOfVertex")(); }
    void Fill(ZDynamicObject& object) const { Call<void(ZDynamicObject*)>("PluginFill")(&object); }
    bool Reads(const ZDynamicObject& object) const { return Call<bool(const ZDynamicObject*)>("PluginReads")(&object); }

#if defined(_WIN32)
    static bool IsLoaded(const char* pszFile)
    {
        return GetModuleHandleA(pszFile) != nullptr;
    }

private:
    static HMODULE Open(const char* pszFile)
    {
        return LoadLibraryA(pszFile);
    }
    bool Close()
    {
        return FreeLibrary(m_pModule) != 0;
    }
    void* Find(const char* pszName) const
    {
        return reinterpret_cast<void*>(GetProcAddress(m_pModule, pszName));
    }

    HMODULE m_pModule;
#else
    static bool IsLoaded(const char* pszFile)
    {
        return dlopen(pszFile, RTLD_NOLOAD | RTLD_NOW) != nullptr;
    }

private:
    static void* Open(const char* pszFile)
    {
        return dlopen(pszFile, RTLD_NOW | RTLD_LOCAL);
    }
    bool Close()
    {
        return dlclose(m_pModule) == 0;
    }
    void* Find(const char* pszName) const
    {
        return dlsym(m_pModule, pszName);
    }

    void* m_pModule;
#endif

    template <class TFunction>
    TFunction* Call(const char* pszName) const
    {
        return reinterpret_cast<TFunction*>(Find(pszName));
    }
};
