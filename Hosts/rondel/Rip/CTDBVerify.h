// Compares the sums of a rip with an answer of the CTDB database, at all offsets.
//
// Rule:    0 is never a match. Entries of another disc (other lengths of tracks, by their table of contents or by the
//          number of their tracks) are not looked at, whatever they say; where the disc lies on the medium does not
//          matter, since the sums do not tell.
// Threads: any, while nobody changes the sums.

#pragma once

#include "CTDBAnswer.h"
#include "DiscChecksums.h"
#include <string>
#include <vector>

// One thing that has a sum: the disc, or a track.
struct CTDB_PART_VERDICT
{
    int m_nTrack = 0;           // its number on the disc; 0: the disc
    bool m_bKnown = false;      // the rip has its sum
    int m_nConfidence = 0;      // submissions that agree at offset 0
    int m_nOtherOffset = 0;     // the offset other than 0 at which most submissions agree, the nearest of several; 0 if
    int m_nOtherConfidence = 0; // there is none. See DiscChecksums for what an offset is
    int m_nSubmissions = 0;     // that have a sum for it at all

    bool IsAccurate() const { return m_nConfidence > 0; }
};

struct CTDB_VERDICT
{
    int m_nEntries = 0;        // of this disc
    int m_nForeignEntries = 0; // of another one
    int m_nParity = 0;         // the most parity that an entry of this disc has; 0: none
    CTDB_PART_VERDICT m_Disc;
    std::vector<CTDB_PART_VERDICT> m_aryTracks; // all audio tracks
};

// Sums at offset 0 that are known though the audio did not pass by this time: of tracks taken from an earlier rip.
struct CTDB_KNOWN_SUM
{
    int m_nTrack = 0;
    uint32_t m_nSum = 0;
};

CTDB_VERDICT VerifyCTDB(const DiscChecksums& sums, const std::vector<CTDB_ENTRY>& aryEntries,
                        const std::vector<CTDB_KNOWN_SUM>& aryKnown = {});
// Whether a table of contents, as an entry tells it, has the tracks of the layout. An empty one has.
bool IsSameCTDBTOC(const std::string& strTOC, const CD_LAYOUT& layout);
