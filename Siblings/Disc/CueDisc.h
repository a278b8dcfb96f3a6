// From a CUE sheet to a disc: opens the files that the sheet names and lays the tracks out one behind the other.

#pragma once

#include "CueSheet.h"
#include "DiscImage.h"
#include <memory>
#include <string>

// strSheetPath stands in the sentences only; the files come from the opener. Null on failure, with the fault.
std::unique_ptr<DiscImage> BuildCueDisc(const CUE_SHEET& sheet, const std::string& strSheetPath,
                                        ISectorSourceOpener& opener, SHEET_ERROR& error);
