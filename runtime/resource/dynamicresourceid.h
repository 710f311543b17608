// ZRuntimeResourceID in a dynamic object: stored as a string, the decimal form of its number.
#pragma once

#include "core/dynamic/dynamicobject.h"
#include "core/strings/stringfunc.h"
#include "runtime/resource/resourceid.h"

/// Makes a ZRuntimeResourceID a value of dynamic objects.
template <>
struct TDynamicValue<ZRuntimeResourceID>
{
    static ZVariant Store(const ZRuntimeResourceID& id)
    {
        return ZVariant(ZString::Format("{0}", ZVariantRef(id.GetNumber()), ZVariantRef(), ZVariantRef(), ZVariantRef(),
                                        ZVariantRef(), ZVariantRef(), ZVariantRef(), ZVariantRef()));
    }
    static bool Is(const ZDynamicObject& object)
    {
        uint64 nNumber = 0;
        return object.IsValue<ZString>()
               && IntFromString(static_cast<const ZString*>(object.Data())->ToCString(), &nNumber);
    }

    /// Returns the identity of no resource if the string is not a number.
    static ZRuntimeResourceID Get(const ZDynamicObject& object)
    {
        uint64 nNumber = 0;
        const bool bRead = IntFromString(object.GetValue<ZString>().ToCString(), &nNumber);
        return bRead ? ZRuntimeResourceID::Create(nNumber) : ZRuntimeResourceID();
    }
};
