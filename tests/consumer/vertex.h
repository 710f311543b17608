// A type of the user's own, named by both modules of the consumer.
#pragma once

#include "core/dynamic/variant.h"

struct SVertex
{
    float32 m_x, m_y;
    bool operator==(const SVertex&) const = default;
};
KX_DECLARE_TYPE(SVertex);

// From the other module.
KX_EXPORT ZVariant MakeCorner();
