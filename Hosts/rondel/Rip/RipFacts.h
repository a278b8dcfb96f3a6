// RipFacts: what an open drive says of itself and of its disc, for the report of a rip and for the tags of its files.
//
// Errors:  what cannot be found out stays empty: nothing of it is needed to read audio.
// Threads: as CSCSICD: each question moves its cursor, so that no rip may run.

#pragma once

#include "CDRipper.h"
#include "RipReport.h"
#include <string>
#include <vector>

// strDisc is the disc as the user named it.
RIP_DRIVE FindDriveFacts(CCDRipper& ripper, const std::string& strDisc);
RIP_DISC FindDiscFacts(CCDRipper& ripper);                                 // reads the CD-Text, too
void FindPieceFacts(CCDRipper& ripper, std::vector<RIP_PIECE>& aryPieces); // behind FindDiscFacts: texts and ISRCs
