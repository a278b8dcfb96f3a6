// A CCD file as it is written: the raw table of contents of a disc whose sectors stand in an IMG file beside it, and
// whose sub-channels may stand in a SUB file. What it means for a disc is CcdDisc's matter.
//
// Shape:   sections in brackets, lines "key=value" in them; numbers in decimal or with 0x in front. [Entry n] is one
//          entry of the full table of contents (MMC-3, READ TOC format 2), [TRACK n] has what only the sub-channels
//          tell, [CDText] has packs without their check sum.
// Errors:  a table of contents that describes no disc is an error with its line. What merely decorates it is a warning,
//          and is left out.
// Threads: plain records and a function without state.

#pragma once

#include "DiscImage.h"
#include "SheetText.h"
#include <map>
#include <string>
#include <vector>

struct CCD_TRACK
{
    int m_nNumber = 0;
    int m_nSession = 1;
    int m_nStartLBA = 0;
    unsigned char m_nControl = 0; // bits of TRACK_CONTROL
    int m_nLine = 0;
};

struct CCD_SESSION
{
    int m_nLeadOutLBA = -1;
    DISC_SESSION_TYPE m_nType = DISC_SESSION_CDDA_OR_CDROM;
    int m_nLine = 0;
};

// What [TRACK n] says.
struct CCD_TRACK_DETAILS
{
    int m_nMode = -1;                  // 0 audio, 1 and 2 data; -1: not told
    std::map<int, int> m_mapIndexLBAs; // by number
    std::string m_strISRC;
};

struct CCD_SHEET
{
    std::vector<CCD_TRACK> m_aryTracks;       // numbers rise by one, addresses and sessions do not fall; one at least
    std::map<int, CCD_SESSION> m_mapSessions; // by number; each track's is there, with its lead-out
    std::map<int, CCD_TRACK_DETAILS> m_mapDetails;
    bool m_bScrambled = false; // data sectors stand as they are on the disc
    std::string m_strMCN;
    std::vector<unsigned char> m_aryCDTextPacks; // whole packs
    std::vector<SHEET_ERROR> m_aryWarnings;
};

// Whether a text is meant as a CCD file.
bool LooksLikeCcdFile(const std::string& strText);

// Reads a file from UTF-8. False, with the first fault, when it is none or describes no disc.
bool ParseCcdFile(const std::string& strText, CCD_SHEET& sheet, SHEET_ERROR& error);
