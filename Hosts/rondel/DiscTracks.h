// DiscTracks: the tracks of a disc as its table of contents has them, whatever number the first one has.
//
// The command layer looks for a track's entry in the table of contents at the place that its number stands for. On a
// disc that begins with track 2 that is the entry behind the right one: track 2 is missing from the command layer's
// list, and the lead-out stands in it as the last track. Players depend on that list as it is. The host knows better:
// it asks the drive once more and moves the entries to where the command layer looks for them.
//
// Errors:  a drive that does not answer, or not as a table of contents is made, leaves the list as it is.
// Threads: as CSCSICD.

#pragma once

#include "SCSICD.h"
#include <string>
#include <vector>

// Makes the command layer's own list right; where the disc begins with track 1 it is, and nothing is done.
void CorrectTrackList(CSCSICD& cd);

std::vector<TTrackList> GetTrackList(const CSCSICD& cd);

// The CD-Text of a track, from a list of CSCSICD; empty if there is none.
std::string GetTrackText(const LyStringArray& aryTexts, int nTrack);
