// An NRG file as it is written: sectors from its start on, and behind them chunks that tell what they are. What it
// means for a disc is NrgDisc's matter.
//
//   footer   the last 12 bytes "NER5" and the 64-bit offset of the first chunk, or the last 8 bytes "NERO" and 32 bits
//   chunk    0-3 name  4-7 length of what follows (all numbers big-endian, unless told otherwise)
//   CUEX     entries of 8 bytes: 0 CONTROL and ADR  1 track (BCD, AAh the lead-out)  2 index (BCD)  4-7 LBA
//   CUES     the same, with 5-7 as MSF
//   DAOX     0-3 length again  4-16 catalogue number  20 first track  21 last track, then 42 bytes for each track:
//            0-11 ISRC  12-13 bytes of a stored sector  14 form  18-25, 26-33, 34-41 offsets of index 0, index 1, end
//   DAOI     the same with offsets of 32 bits, 30 bytes for each track
//   ETN2     entries of 32 bytes: 0-7 offset  8-15 length  16-19 form  20-23 start LBA
//   ETNF     entries of 20 bytes: 0-3 offset  4-7 length  8-11 form  12-15 start LBA
//   SINF     ends a session: the number of its tracks
//   CDTX     packs of CD-Text
//   END!     the last one
//
// Source:  the layout as the readers of libcdio and other independent programs describe it.
// Errors:  a file whose structure describes no disc is an error; everything is checked against the file's length.
// Threads: plain records and functions without state.

#pragma once

#include "DiscImage.h"
#include "SheetText.h"
#include <string>
#include <vector>

struct NRG_TRACK
{
    int m_nNumber = 0;
    int m_nSession = 1;
    DISC_TRACK_MODE m_nMode = DISC_AUDIO;
    int m_nSectorBytes = 0; // as stored; 2448 with sub-channels, which stand behind the sector
    unsigned char m_nControl = 0;
    long long m_nPregapOffset = 0; // in the file
    long long m_nStartOffset = 0;
    long long m_nEndOffset = 0;
    int m_nStartLBA = -1;            // -1: not told
    std::vector<int> m_aryIndexLBAs; // 02 and higher, as told
    std::string m_strISRC;
};

struct NRG_SHEET
{
    std::vector<NRG_TRACK> m_aryTracks; // numbers rise by one; one at least
    std::string m_strMCN;
    std::vector<unsigned char> m_aryCDTextPacks;
    std::vector<SHEET_ERROR> m_aryWarnings;
};

// Whether the source ends as an NRG file does. nChunks becomes the offset of its first chunk.
bool FindNrgChunks(SectorSource& source, long long& nChunks);

// Reads the chunks, which are the bytes from nChunks to the end of a file of nFileBytes. False, with the fault, when
// they describe no disc.
bool ParseNrgChunks(const std::vector<unsigned char>& chunks, long long nFileBytes, NRG_SHEET& sheet,
                    SHEET_ERROR& error);
