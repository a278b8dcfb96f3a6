// What there is to rip on a disc, as sections of a RipSectorList: tracks, the hidden audio ahead of track 1, ranges.
//
// Units:   sectors of LY_CD_SECTOR_BYTES at logical block addresses. The hidden audio has the track number 0.
// Errors:  false, and the list stays as it is, if there is nothing of the kind on the disc.
// Threads: as CSCSICD: each question moves its cursor, so that no rip may run.

#pragma once

#include "CDUnits.h"
#include "RipSectorList.h"

class CSCSICD;

constexpr int RIP_HIDDEN_TRACK = 0;
constexpr int RIP_MAX_SECTORS = 100 * 60 * LY_CD_SECTORS_PER_SECOND; // MSF addresses end at 99:59.74

// One audio track, whole.
bool AddTrackSection(RipSectorList& list, CSCSICD& cd, int nTrack);
// From sector 0 to the start of track 1, if that is an audio track which starts later.
bool AddHiddenSection(RipSectorList& list, CSCSICD& cd);
// All audio tracks in their order, each a section. The hidden audio is another thing to ask for.
bool AddDiscSections(RipSectorList& list, CSCSICD& cd);
// A range of sectors, cut where tracks begin. Every sector must lie in an audio track or in the hidden audio.
bool AddRangeSections(RipSectorList& list, CSCSICD& cd, int nFirst, int nSectors);

// Whether all sections have a start on a disc, a length of 0 or more, and an end on a disc.
bool IsRipSectorListValid(const RipSectorList& list);
