// The map family: the chained table, its forms with text for a key, the hashes under them, and the allocator that can
// hold their buckets.

#pragma once

#include "CBlockDataContainer.h"
#include "LyCoreMap.h"
#include "LyHash.h"
#include "LyMapBase.h"
#include "LyStringMap.h"
