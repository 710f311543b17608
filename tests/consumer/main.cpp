// A program of a user of the library. Ends with 0 if what it links works, else with the number of what does not.
#include "runtime/resource/dynamicresourceid.h"
#include "vertex.h"
#if defined(CONSUMER_READS_JSON)
#include "runtime/json/json.h"
#endif

// The build says which standard the compiler has to go beyond.
#if defined(CONSUMER_STANDARD)
static_assert(__cplusplus > CONSUMER_STANDARD);
#endif

int main()
{
    ZMemAllocatorScope scope;
    TArray<ZRuntimeResourceID> identities;
    identities.Add(ZRuntimeResourceID::Create(42));
    if (!(identities[0] == ZRuntimeResourceID::Create(42)))
        return 1;

    // The identities of the library's types are the same here as inside it.
    if (ZDynamicObject::Array().Type() != GetTypeID<TArray<ZDynamicObject>>())
        return 2;
    if (ZDynamicObject(identities[0]).Type() != GetTypeID<ZString>())
        return 3;

    // Those of the user's types are the same in all modules of the program.
    const ZVariant corner = MakeCorner();
    if (corner.Type() != GetTypeID<SVertex>() || corner.As<SVertex>() != SVertex{1, 2})
        return 4;
    const ZDynamicObject shape = ZDynamicObject::Object().Set("corner", corner);
    if (!(shape["corner"] == ZVariant(SVertex{1, 2})))
        return 5;

#if defined(CONSUMER_READS_JSON)
    ZDynamicObject ship;
    ZString text;
    const bool bBack = json::Read("{\"crew\": 12}", ship) && json::Write(ship, text);
    if (!bBack || text != "{\"crew\":12}")
        return 6;
#endif
    return 0;
}
