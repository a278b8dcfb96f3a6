// A TOC file as it is written: tracks made of pieces of files and of silence. What it means for a disc is TocDisc's
// matter. The format is that of cdrdao, as its manual page tells it.
//
// Shape:   a stream of statements; lines matter only to comments and to sentences about faults.
// Errors:  the first fault ends the reading: false, with its line. Malformed codes are warnings.
// Threads: a plain record and a function without state.

#pragma once

#include "DiscImage.h"
#include "SheetText.h"
#include <string>
#include <vector>

// A length or a position: in sectors if written as a time, else in samples of audio or bytes of data.
struct TOC_AMOUNT
{
    long long m_nValue = 0;
    bool m_bSectors = false;
};

enum TOC_PIECE_TYPE : unsigned char
{
    TOC_PIECE_SILENCE, // SILENCE or ZERO
    TOC_PIECE_AUDIO,   // FILE or AUDIOFILE
    TOC_PIECE_DATA     // DATAFILE
};

struct TOC_PIECE
{
    TOC_PIECE_TYPE m_nType = TOC_PIECE_SILENCE;
    std::string m_strName;
    bool m_bSwap = false;        // SWAP: the other byte order than the file's usual one, big-endian for raw samples
    long long m_nByteOffset = 0; // #n: where the file's content starts for this piece
    TOC_AMOUNT m_Start;          // behind the offset
    TOC_AMOUNT m_Length;         // 0: all that the file has from there on
    int m_nLine = 0;
};

struct TOC_TRACK
{
    DISC_TRACK_MODE m_nMode = DISC_AUDIO;
    unsigned char m_nControl = 0; // bits of TRACK_CONTROL
    std::string m_strISRC;
    DISC_TEXT m_Text;
    std::vector<TOC_PIECE> m_aryPieces; // one at least
    int m_nStartPiece = 0;              // INDEX 01 lies ahead of this piece (at most the number of pieces) ...
    int m_nStartSector = -1;            // ... or, if START gave a time, so far behind the track's first sector
    std::vector<int> m_aryIndexes;      // INDEX 02 and higher, in sectors from INDEX 01 on, ascending
    int m_nLine = 0;
};

struct TOC_SHEET
{
    DISC_SESSION_TYPE m_nType = DISC_SESSION_CDDA_OR_CDROM;
    int m_nFirstTrack = 1;
    std::string m_strMCN;
    DISC_TEXT m_Text;
    std::vector<TOC_TRACK> m_aryTracks; // 1 to 99
    std::vector<SHEET_ERROR> m_aryWarnings;
};

// Reads a TOC file from UTF-8. False, with the first fault, when it is none or describes no disc.
bool ParseTocFile(const std::string& strText, TOC_SHEET& sheet, SHEET_ERROR& error);
