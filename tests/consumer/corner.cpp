// The consumer's other module.
#include "vertex.h"

ZVariant MakeCorner()
{
    return SVertex{1, 2};
}
