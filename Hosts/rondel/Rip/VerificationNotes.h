// VerificationNotes: what a comparison with a database means, in sentences for the user.
//
// Threads: any; functions without state.

#pragma once

#include "CTDBVerify.h"
#include "RipReport.h"
#include <string>
#include <vector>

// One audio track after the comparison, whatever the database.
struct COMPARED_TRACK
{
    int nTrack = 0;
    bool bKnown = false;      // the rip has its sums
    bool bZero = false;       // its sum is 0
    bool bClaimed = false;    // the answer has a sum for it
    bool bTaken = false;      // of an earlier rip: known at offset 0 only
    bool bDoubtful = false;   // sectors of it are bad
    int nConfidence = 0;      // submissions that agree at offset 0
    int nOtherOffset = 0;     // another offset at which some agree, and how many
    int nOtherConfidence = 0; //
    int nFrame450Offset = 0;  // where only sector 450 agrees; 0: nowhere
};

// "track 3", "tracks 1 to 3, 5 and 7"
std::string ListTracks(const std::vector<int>& aryTracks);
// "+6 frames", "-1 frame"
std::string FormatOffset(int nOffset);

// From the answer as a whole to single tracks.
std::vector<std::string> MakeTrackNotes(const std::vector<COMPARED_TRACK>& aryTracks);
std::vector<std::string> MakeDiscNotes(const CTDB_VERDICT& verdict);
