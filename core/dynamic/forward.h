// The names of core/dynamic, for headers that only refer to them.
#pragma once

struct IType;
struct SDynamicObjectKeyValuePair;
struct STypeID;
class ZDynamicObject;
class ZObjectRef;
class ZTypeRegistry;
class ZVariant;
class ZVariantRef;
