// ZLineReader beside a plain model. The first byte says how large the buffer is, the second how the data is portioned,
// and the rest is the data.
#include "tests/support/valuemodel.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    if (nSize < 2)
        return 0;
    const auto below = [nState = uint64{pData[1]}](uint64 n) mutable
    {
        nState = nState * 6364136223846793005 + 1442695040888963407;
        return (nState >> 33) % n;
    };
    if (!AgreesOnLines({reinterpret_cast<const char*>(pData + 2), nSize - 2}, 3 + uint32{pData[0]}, below))
        std::abort();
    return 0;
}
