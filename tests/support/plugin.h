// The module that tests load, while it is loaded.
#pragma once

#include "tests/support/usertypes.h"

#include <gtest/gtest.h>
#if defined(_WIN32)
#include "tests/support/windows.h"
#else
#include <dlfcn.h>

namespace kx::tests
{
inline void* OpenModule(const char* pszFile)
{
    return dlopen(pszFile, RTLD_NOW | RTLD_LOCAL);
}

inline bool CloseModule(void* pModule)
{
    return dlclose(pModule) == 0;
}

inline void* FindInModule(void* pModule, const char* pszName)
{
    return dlsym(pModule, pszName);
}

inline bool IsModuleLoaded(const char* pszFile)
{
    return dlopen(pszFile, RTLD_NOLOAD | RTLD_NOW) != nullptr;
}
} // namespace kx::tests
#endif

class ZPlugin
{
public:
    explicit ZPlugin(const char* pszFile) : m_pModule(kx::tests::OpenModule(pszFile))
    {
        EXPECT_NE(nullptr, m_pModule) << pszFile;
    }
    ~ZPlugin() { EXPECT_TRUE(kx::tests::CloseModule(m_pModule)); }
    ZPlugin(const ZPlugin&) = delete;
    ZPlugin& operator=(const ZPlugin&) = delete;

    STypeIDData* RecordOfVertex() const { return Call<STypeIDData*()>("PluginRecordOfVertex")(); }
    void Fill(ZDynamicObject& object) const { Call<void(ZDynamicObject*)>("PluginFill")(&object); }
    bool Reads(const ZDynamicObject& object) const { return Call<bool(const ZDynamicObject*)>("PluginReads")(&object); }

private:
    template <class TFunction>
    TFunction* Call(const char* pszName) const
    {
        return reinterpret_cast<TFunction*>(kx::tests::FindInModule(m_pModule, pszName));
    }

    void* m_pModule;
};
