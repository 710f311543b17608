#include "runtime/resource/resourceid.h"

#include <cstring>
#include <gtest/gtest.h>

TEST(ResourceID, HoldsAndComparesBothHalves)
{
    const ZRuntimeResourceID id = ZRuntimeResourceID::Create(0x0123456789ABCDEF);
    uint32 words[2];
    std::memcpy(words, &id, sizeof(id));
    EXPECT_EQ(0x01234567u, words[0]);
    EXPECT_EQ(0x89ABCDEFu, words[1]);
    for (const uint64 nOther : {0x0023456789ABCDEFu, 0x0123456789ABCDEEu})
        EXPECT_FALSE(id == ZRuntimeResourceID::Create(nOther));
    EXPECT_TRUE(ZRuntimeResourceID() == ZRuntimeResourceID::Create(UINT64_MAX));
}
