// ReadOffsetLookup: which correction the user has set for a drive model (ReadOffsetOption.h).
//
// Errors:  a value that is none counts as 0, and the correction carries a sentence on it. Without the tools library
//          nothing is corrected.
// Threads: any.

#pragma once

#include "OffsetDrive.h"

READ_OFFSET LookUpReadOffset(const DRIVE_DESCRIPTION& description);
