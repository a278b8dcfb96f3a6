// Digital audio copy: the engine of a rip. The command layer that it reads through comes with it.

#pragma once

#include "CDAC.h"
#include "SCSICD.h"
