// Every container.
#pragma once

#include "core/containers/array.h"
#include "core/containers/blockarray.h"
#include "core/containers/hashmap.h"
#include "core/containers/hashset.h"
#include "core/containers/list.h"
#include "core/containers/map.h"
#include "core/containers/maxarray.h"
#include "core/containers/multihashmap.h"
#include "core/containers/set.h"
#include "core/containers/slist.h"
