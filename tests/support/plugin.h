// The module that tests load, while it is loaded.
#pragma once

#include "tests/support/usertypes.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

class ZPlugin
{
public:
    explicit ZPlugin(const char* pszFile) : m_pModule(dlopen(pszFile, RTLD_NOW | RTLD_LOCAL))
    {
        EXPECT_NE(nullptr, m_pModule) << dlerror();
    }
    ~ZPlugin() { EXPECT_EQ(0, dlclose(m_pModule)); }
    ZPlugin(const ZPlugin&) = delete;
    ZPlugin& operator=(const ZPlugin&) = delete;

    STypeIDData* RecordOfVertex() const { return Call<STypeIDData*()>("PluginRecordOfVertex")(); }
    void Fill(ZDynamicObject& object) const { Call<void(ZDynamicObject*)>("PluginFill")(&object); }
    bool Reads(const ZDynamicObject& object) const { return Call<bool(const ZDynamicObject*)>("PluginReads")(&object); }

private:
    template <class TFunction>
    TFunction* Call(const char* pszName) const
    {
        return reinterpret_cast<TFunction*>(dlsym(m_pModule, pszName));
    }

    void* m_pModule;
};
