#include "core/dynamic/dynamicobject.h"
#include "tests/refusals/refuse.h"

#include <array>

struct SPlain
{
};

struct SMoveOnly
{
    SMoveOnly(SMoveOnly&&) = default;
};

namespace
{
struct SUnnamed
{
};
} // namespace

KX_REFUSE(DECLARED_IN_UNNAMED_NAMESPACE, "Put it into a named namespace", KX_DECLARE_TYPE(SUnnamed));
KX_REFUSE(DECLARED_MOVE_ONLY, "must be copyable", KX_DECLARE_TYPE(SMoveOnly));
KX_REFUSE(DECLARED_LARGE, "declare one that holds the large part by pointer", KX_DECLARE_TYPE(std::array<char, 65536>));

void Use()
{
    KX_REFUSE(IDENTITY_OF_UNDECLARED, "write KX_DECLARE_TYPE", GetTypeID<SPlain>());
    KX_REFUSE(IDENTITY_OF_CONST, "identity is that of the type without const", GetTypeID<const ZString>());
    KX_REFUSE(DESCRIPTION_OF_UNDECLARED, "write KX_DECLARE_TYPE", GetType<SPlain>());
    KX_REFUSE(VARIANT_OF_UNDECLARED, "write KX_DECLARE_TYPE", ZVariant() = SPlain());
    KX_REFUSE(VARIANT_OF_LITERAL, "or a ZString of a text", ZVariant refused("text"));
    KX_REFUSE(VARIANT_OF_POINTER, "or a ZString of a text", ZVariant refused(static_cast<const char*>("text")));
    KX_REFUSE(OBJECT_OF_UNDECLARED, "write KX_DECLARE_TYPE", ZDynamicObject().Set("plain", SPlain()));
    KX_REFUSE(OBJECT_OF_POINTER, "pass what it points at", ZDynamicObject refused(static_cast<int*>(nullptr)));
    KX_REFUSE(OBJECT_OF_CHAR, "cast it to one of int8 to int64", ZDynamicObject().Set("char", 'c'));
    KX_REFUSE(ASKED_FOR_CHAR, "specialise TDynamicValue for this type, or ask for one of the types it has",
              ZDynamicObject().IsValue<char>());
}
