// A program of a user of the library. Ends with 0 if what it links works.
#include "core/containers/array.h"
#include "runtime/resource/resourceid.h"

int main()
{
    ZMemAllocatorScope scope;
    TArray<ZRuntimeResourceID> identities;
    identities.Add(ZRuntimeResourceID::Create(42));
    return identities[0] == ZRuntimeResourceID::Create(42) ? 0 : 1;
}
