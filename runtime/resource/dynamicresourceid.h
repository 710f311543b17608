// ZRuntimeResourceID in a dynamic object: stored as the decimal text of its number.
#pragma once

#include "core/dynamic/dynamicobject.h"
#include "core/strings/stringfunc.h"
#include "runtime/resource/resourceid.h"

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

    // The identity of no resource where the text is no number.
    static ZRuntimeResourceID Get(const ZDynamicObject& object)
    {
        uint64 nNumber = 0;
        const bool bRead = IntFromString(object.GetValue<ZString>().ToCString(), &nNumber);
        return bRead ? ZRuntimeResourceID::Create(nNumber) : ZRuntimeResourceID();
    }
};
