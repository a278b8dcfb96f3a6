// CDLayout: which sectors of a disc are which track, as far as identifiers and sums need to know.
//
// Shape:   tracks in the order of the disc. A track begins at its index 1: the pause ahead of a track, and the audio
//          hidden ahead of track 1, do not belong to it.
// Units:   sectors at logical block addresses, 0 being MSF 00:02:00. An end is the sector after the last one.
// Errors:  a layout that IsValid refuses has no identifiers (empty texts, zeros) and no sums.
// Threads: a plain record.

#pragma once

#include "CDUnits.h"
#include <vector>

// From the end of the first session's audio to the first track of the next session on an enhanced disc: lead-out of
// 6750 sectors, lead-in of 4500 and a pause of 150 (multisession disc specification; Blue Book).
constexpr int CD_SESSION_GAP_SECTORS = 6750 + 4500 + LY_CD_MSF_OFFSET;
static_assert(CD_SESSION_GAP_SECTORS == 11400);

// The first sector that MSF addresses can't name (99:59:74 is the last).
constexpr int CD_ADDRESS_END = 100 * 60 * LY_CD_SECTORS_PER_SECOND - LY_CD_MSF_OFFSET;

struct CD_LAYOUT_TRACK
{
    int m_nNumber = 0; // 1 to 99
    int m_nStart = 0;  // its index 1
    int m_nEnd = 0;    // the sector after its last one; ahead of another session, the gap is already left out
    bool m_bData = false;

    int GetSectors() const { return m_nEnd - m_nStart; }
};

struct CD_LAYOUT
{
    std::vector<CD_LAYOUT_TRACK> m_aryTracks;
    int m_nLeadOut = 0; // of the last session

    // Appends the next track. The ends are set by Finish.
    void Add(int nStart, bool bData = false);
    // Sets the lead-out and the ends: a track ends where the next one begins, the last one at the lead-out, and an
    // audio track ahead of a data track CD_SESSION_GAP_SECTORS earlier, as on an enhanced disc, if it is that long.
    void Finish(int nLeadOut);

    // 1 to 99 tracks, numbered upwards without a gap, each of one sector at least, ascending and apart from each other,
    // from sector 0 on, the lead-out not ahead of the last end nor outside of the addresses.
    bool IsValid() const;

    int CountAudioTracks() const;
    int FindTrack(int nNumber) const; // its index, or -1
    int GetFirstAudio() const;        // indices; -1 if there is no audio
    int GetLastAudio() const;         //
    bool IsAudioContiguous() const;   // there is audio, and from its first to its last sector nothing else
    bool HasTrailingData() const;     // as an enhanced disc has
};
