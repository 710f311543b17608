// Types that a user of the library might declare, seen by the tests and by the module that they load.
#pragma once

#include "core/dynamic/dynamicobject.h"

struct SVertex
{
    float32 m_fX = 0;
    float32 m_fY = 0;
    float32 m_fZ = 0;
    bool operator==(const SVertex&) const = default;
};
KX_DECLARE_TYPE(SVertex);
KX_DECLARE_TYPE(TArray<SVertex>);

// Two types that sources declare under one name, and one that they declare under two names.
namespace first
{
struct STwin
{
};
} // namespace first
namespace second
{
struct STwin
{
};
} // namespace second

// Aligned more than any cell, without default value and without ==.
struct alignas(32) SMatrix
{
    explicit SMatrix(float32 fValue) : m_afValues{fValue} {}
    float32 m_afValues[8];
};
KX_DECLARE_TYPE(SMatrix);
