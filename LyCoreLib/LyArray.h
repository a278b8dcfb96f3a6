// The array family: LyArrayBase, LyCoreArray and what derives from it, the list of strings, and the sort.

#pragma once

#include "LyArrayBase.h"
#include "LyCoreArray.h"
#include "LyStringArray.h"

// The sort stands on the threads, and comes last so that the arrays do not.
#include "LyQSort.h"
