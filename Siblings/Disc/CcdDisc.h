// From a CCD file to a disc: the IMG file beside it, whole sectors of 2352 bytes, laid out by its table of contents.

#pragma once

#include "CcdFile.h"
#include <memory>
#include <string>

// strSheetPath stands in the sentences, and the names of the IMG and SUB files follow from it; the files come from the
// opener. Null on failure, with the fault.
std::unique_ptr<DiscImage> BuildCcdDisc(const CCD_SHEET& sheet, const std::string& strSheetPath,
                                        ISectorSourceOpener& opener, SHEET_ERROR& error);
