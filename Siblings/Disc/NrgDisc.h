// From the chunks of an NRG file to a disc: its own sectors, laid out one track behind the other.

#pragma once

#include "NrgFile.h"
#include "SectorSource.h"
#include <memory>
#include <string>

// strPath stands in the sentences only; the file is the one that the chunks come from. Null on failure, with the fault.
std::unique_ptr<DiscImage> BuildNrgDisc(const NRG_SHEET& sheet, const std::string& strPath,
                                        std::unique_ptr<SectorSource> pFile, SHEET_ERROR& error);
