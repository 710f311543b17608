#include "runtime/resource/resourceid.h"

ZRuntimeResourceID ZRuntimeResourceID::Create(uint64 nNumber)
{
    ZRuntimeResourceID id;
    id.m_nHigh = static_cast<uint32>(nNumber >> 32);
    id.m_nLow = static_cast<uint32>(nNumber);
    return id;
}

bool ZRuntimeResourceID::operator==(const ZRuntimeResourceID& other) const
{
    return GetNumber() == other.GetNumber();
}
