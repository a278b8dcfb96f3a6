// RipPlan: which pieces of a disc a rip is to read, from what the user asked for.
//
// Shape:   pieces in the order of the disc, none of them overlapping. A track is all from its index 1 to the next
//          track's index 1. The audio hidden ahead of track 1 is a piece of its own, and so is a range of sectors.
// Units:   sectors at logical block addresses. The last one of a range belongs to it.
// Errors:  HostError; the parsers answer an empty text, or what is wrong with theirs, as command lines want it.
// Threads: one at a time.

#pragma once

#include "RipReport.h"
#include "SCSICD.h"
#include <string>
#include <vector>

// What of the disc. A range goes without tracks and without the hidden audio.
struct RIP_CHOICE
{
    std::string strTracks; // "1-3,7"; empty: all audio tracks
    std::string strRange;  // "0-749"; empty: tracks
    bool bHidden = false;
};

struct RIP_PLAN
{
    std::vector<RIP_PIECE> aryPieces;
    std::vector<std::string> aryNotes; // sentences: what was left out
};

// "1-3,7": numbers from 1 to 99, ascending and each once, however they were written.
std::string ParseTrackList(const std::string& strList, std::vector<int>& aryTracks);
std::string ParseSectorRange(const std::string& strRange, int& nFirst, int& nLast);

RIP_PLAN MakeRipPlan(const std::vector<TTrackList>& aryTracks, const RIP_CHOICE& choice);
