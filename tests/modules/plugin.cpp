// A module that is loaded at run time. It names types that the program that loads it and kxbase name too, and one that
// they do not. It is built twice, with one type that has the same name and another size.
static bool Started();

// In front of all that the headers bring: even this finds the types merged.
static const bool s_bStarted = Started();

#include "tests/support/usertypes.h"

static bool Started()
{
    return GetTypeID<SVertex>() != reinterpret_cast<STypeID*>(&TTypeSlot<SVertex>::ms_data);
}

struct SOnlyHere
{
    int m_nValue;
    bool operator==(const SOnlyHere&) const = default;
};
KX_DECLARE_TYPE(SOnlyHere);

struct SDiffers
{
    char m_acBytes[KX_PLUGIN_SIZE];
};
KX_DECLARE_TYPE(SDiffers);

static const char* const aKeys[] = {"vertex", "here", "number"};

extern "C"
{
    KX_EXPORT STypeIDData* PluginRecordOfVertex()
    {
        return &TTypeSlot<SVertex>::ms_data;
    }

    // Stores values of three types into the object. The keys are copies: a string of a literal would refer to this
    // module.
    KX_EXPORT void PluginFill(ZDynamicObject* pObject)
    {
        pObject->Set(ZString(aKeys[0]), ZVariant(SVertex{1, 2, 3}));
        pObject->Set(ZString(aKeys[1]), ZVariant(SOnlyHere{42}));
        pObject->Set(ZString(aKeys[2]), 42);
    }

    // Whether it reads the same from the object.
    KX_EXPORT bool PluginReads(const ZDynamicObject* pObject)
    {
        return s_bStarted && pObject->Get("vertex").As<SVertex>() == SVertex{1, 2, 3}
               && pObject->Get("here").As<SOnlyHere>().m_nValue == 42 && pObject->Get("number") == 42;
    }
}
