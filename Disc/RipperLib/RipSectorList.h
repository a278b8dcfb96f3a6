// What a rip will read: sections of the disc in reading order. They need not touch or ascend.
//
// Units:   sectors of LY_CD_SECTOR_BYTES. Start sectors are logical block addresses, 0 being MSF 00:02:00.
// Errors:  an index outside the list is an answer, not a fault: -1 for a field, 0 for a sum.
// Threads: filled before the rip starts; after that only read.

#pragma once

#include "LyArray.h"

struct RIP_SECTION
{
    int nTrack;
    int nStartSector;
    int nSectors;
};
static_assert(sizeof(RIP_SECTION) == 12);

class RipSectorList : public LyCoreArray<RIP_SECTION, RIP_SECTION, false>
{
public:
    int GetStartSector(int nIndex) const;
    int GetNumSectors(int nIndex) const;
    int GetTrackNum(int nIndex) const;
    int GetTotalSectors(int nIndex) const;     // sum of the lengths from nIndex, which is 0 or more, to the end
    int GetRemainingSectors(int nIndex) const; // the same under its second name
};
