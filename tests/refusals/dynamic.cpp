// Compiles as it stands. With one of the names defined it must not.
#include "core/dynamic/dynamicobject.h"

struct SPlain
{
    int m_n;
};

struct SDeclared
{
    int m_n;
};
KX_DECLARE_TYPE(SDeclared);

struct SMoveOnly
{
    SMoveOnly() = default;
    SMoveOnly(SMoveOnly&&) = default;
};

struct SLarge
{
    char m_acData[65536];
};

#if defined(DECLARED_MOVE_ONLY)
KX_DECLARE_TYPE(SMoveOnly);
#elif defined(DECLARED_LARGE)
KX_DECLARE_TYPE(SLarge);
#endif

void Use(const char* pszText, char c, long long nLong, int* pNumber)
{
    ZVariant variant(SDeclared{1});
    ZDynamicObject object(pszText);
    object.Set("variant", variant).Set("number", static_cast<int64>(nLong)).Set("char", static_cast<int8>(c));
    static_cast<void>(pNumber);
#if defined(IDENTITY_OF_UNDECLARED)
    GetTypeID<SPlain>();
#elif defined(IDENTITY_OF_CONST)
    GetTypeID<const SDeclared>();
#elif defined(DESCRIPTION_OF_UNDECLARED)
    GetType<SPlain>();
#elif defined(VARIANT_OF_UNDECLARED)
    variant = SPlain{1};
#elif defined(VARIANT_OF_LITERAL)
    variant = ZVariant("text");
#elif defined(VARIANT_OF_POINTER)
    variant = ZVariant(pszText);
#elif defined(OBJECT_OF_UNDECLARED)
    object.Set("plain", SPlain{1});
#elif defined(OBJECT_OF_POINTER)
    object = ZDynamicObject(pNumber);
#elif defined(OBJECT_OF_LONG_LONG)
    object.PushBack(nLong);
#elif defined(OBJECT_OF_CHAR)
    object.Set("char", c);
#elif defined(READ_AS_LONG_LONG)
    nLong = object.GetValue<long long>();
#elif defined(ASKED_FOR_CHAR)
    object.IsValue<char>();
#endif
}
