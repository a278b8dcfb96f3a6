// The names under which databases know a disc, made from its layout.
//
// Errors:  a layout that is not valid has empty texts, and identifiers of 0.
// Threads: any.

#pragma once

#include "CDLayout.h"
#include <cstdint>
#include <string>

// AccurateRip: two sums over the audio tracks, which it counts from 1 whatever their numbers on the disc are, and over
// the lead-out; the third is the CDDB identifier. A start at sector 0 counts as 1 in the second sum.
struct ACCURATERIP_ID
{
    int m_nTracks = 0; // audio tracks
    uint32_t m_nID1 = 0;
    uint32_t m_nID2 = 0;
    uint32_t m_nCDDB = 0;

    bool operator==(const ACCURATERIP_ID&) const = default;
};

ACCURATERIP_ID GetAccurateRipID(const CD_LAYOUT& layout);
// "id1-id2-cddb", eight lower-case hexadecimal digits each.
std::string GetAccurateRipText(const CD_LAYOUT& layout);
// Where the database answers: "/accuraterip/a/b/c/dBAR-NNN-id1-id2-cddb.bin". NNN are the audio tracks; a, b and c are
// the lowest three digits of id1, the lowest first.
std::string GetAccurateRipPath(const CD_LAYOUT& layout);

// The CDDB (freedb) identifier, of all tracks: the digit sums of their starts in seconds modulo 255, the playing time
// in seconds, and the number of tracks.
uint32_t GetCDDBID(const CD_LAYOUT& layout);
std::string GetCDDBText(const CD_LAYOUT& layout); // eight lower-case hexadecimal digits

// MusicBrainz: SHA-1 over the first and the last track and a hundred offsets, in a Base64 with . _ - for + / =. Data
// tracks at the end are left out, and the lead-out is that of the session ahead of them.
std::string GetMusicBrainzID(const CD_LAYOUT& layout);

// CTDB: the starts and the lead-out, with colons between, data tracks with a leading minus; and the whole query.
std::string GetCTDBText(const CD_LAYOUT& layout);
std::string GetCTDBQuery(const CD_LAYOUT& layout);
