// Any header of the library must name what does not fit before anything else fails: here the one with the most
// includes.
#include "core/dynamic/dynamicobject.h"
