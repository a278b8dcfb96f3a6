// Compares the sums of a rip with an answer of the AccurateRip database, at all offsets.
//
// Version 1 and the sum of sector 450 are known at every offset, version 2 at offset 0 only. Where the sum of sector
// 450 agrees at another offset, the track may be of a pressing that was submitted with version 2: to know, feed an
// AccurateRipSum from that offset on.
//
// Rule:    0 is never a match: silence has that sum, and so has what isn't known. Blocks of another disc aren't looked
//          at, whatever they say.
// Threads: any, while nobody changes the sums.

#pragma once

#include "AccurateRipAnswer.h"
#include "DiscChecksums.h"
#include <vector>

// Audio that repeats itself agrees at very many offsets. Beyond so many for a track, matches at offsets other than 0
// are counted in the verdict, but not listed.
constexpr int ACCURATERIP_MAX_OTHER_MATCHES = 1000;

enum ACCURATERIP_MATCH_KIND : int
{
    ACCURATERIP_MATCH_VERSION_1 = 1,
    ACCURATERIP_MATCH_VERSION_2 = 2,
    ACCURATERIP_MATCH_FRAME_450 = 450 // that sector alone: a hint, not a proof
};

struct ACCURATERIP_MATCH
{
    int m_nTrack = 0;      // its number on the disc
    int m_nBlock = 0;      // index in the answer
    int m_nConfidence = 0; // of the entry
    int m_nKind = 0;       // ACCURATERIP_MATCH_KIND
    int m_nOffset = 0;     // frames; see DiscChecksums
};

struct ACCURATERIP_TRACK_VERDICT
{
    int m_nTrack = 0;
    bool m_bKnown = false;      // the rip has its sums
    int m_nConfidence1 = 0;     // submissions that agree at offset 0, by version
    int m_nConfidence2 = 0;     //
    int m_nOtherOffset = 0;     // the offset other than 0 at which most submissions agree in version 1, the nearest of
    int m_nOtherConfidence = 0; // several; 0 if there is none
    int m_nSubmissions = 0;     // that have a sum for this track at all

    bool IsAccurate() const { return m_nConfidence1 > 0 || m_nConfidence2 > 0; }
};

struct ACCURATERIP_VERDICT
{
    int m_nBlocks = 0;                                  // of this disc
    int m_nForeignBlocks = 0;                           // of another one
    std::vector<ACCURATERIP_TRACK_VERDICT> m_aryTracks; // all audio tracks
    std::vector<ACCURATERIP_MATCH> m_aryMatches;        // by track; offset 0 first, then from low to high
};

ACCURATERIP_VERDICT VerifyAccurateRip(const DiscChecksums& checksums, const std::vector<ACCURATERIP_BLOCK>& aryBlocks);
