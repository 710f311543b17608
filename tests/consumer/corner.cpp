// The consumer's other module.
#include "vertex.h"

// Made before the program has started, so by the slot of this module.
static const ZVariant s_corner = SVertex{1, 2};

ZVariant MakeCorner()
{
    return s_corner;
}
