// The reading of a table of contents, apart from the drive that it comes from.

#pragma once

#include "SCSICD.h"

// Makes the list from CSCSICD::TOC_BYTES of an answer to READ TOC, format 0. The nodes are the caller's; both pointers
// are null if there are no tracks. False: the answer names no first or no last track.
bool ReadTrackList(const unsigned char* pTOC, TTrackListNode*& pFirst, TTrackListNode*& pLast);
