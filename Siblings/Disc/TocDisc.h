// From a TOC file to a disc: opens the files that it names and lays the pieces out one behind the other.

#pragma once

#include "DiscImage.h"
#include "TocFile.h"
#include <memory>
#include <string>

// strSheetPath stands in the sentences only; the files come from the opener. Null on failure, with the fault.
std::unique_ptr<DiscImage> BuildTocDisc(const TOC_SHEET& sheet, const std::string& strSheetPath,
                                        ISectorSourceOpener& opener, SHEET_ERROR& error);
