// A CUE sheet as it is written: files, tracks, times within files. What it means for a disc is CueDisc's matter.
//
// Shape:   lines of a command word and its arguments, commands in any case. Positions "mm:ss:ff" count sectors from the
//          start of the file last named. Comments are REM lines, some of which carry sessions (see CUE_SESSION).
// Errors:  what makes the disc's structure doubtful (files, tracks, indexes, times) is an error with its line. What
//          merely decorates it (codes, texts, unknown commands) is a warning, and is left out.
// Threads: a plain record and a function without state.

#pragma once

#include "DiscImage.h"
#include "SheetText.h"
#include <string>
#include <vector>

struct CUE_FILE
{
    std::string m_strName;
    SECTOR_SOURCE_KIND m_nKind = SECTOR_SOURCE_RAW;
    int m_nLine = 0;
};

struct CUE_INDEX
{
    int m_nNumber = 0; // 0 to 99
    int m_nFile = 0;   // in m_aryFiles
    int m_nSector = 0; // within the file
    int m_nLine = 0;
};

struct CUE_TRACK
{
    int m_nNumber = 0;
    int m_nSession = 0; // in m_arySessions
    DISC_TRACK_MODE m_nMode = DISC_AUDIO;
    DISC_SESSION_TYPE m_nSessionType = DISC_SESSION_CDDA_OR_CDROM; // what this track makes of its session
    unsigned char m_nControl = 0;                                  // bits of TRACK_CONTROL
    int m_nPregap = 0;                                             // PREGAP: sectors of silence that no file holds
    int m_nPostgap = 0;                                            // POSTGAP: likewise, at the end
    std::vector<CUE_INDEX> m_aryIndexes;                           // numbers rise by one; INDEX 01 is among them
    std::string m_strISRC;
    DISC_TEXT m_Text;
    int m_nLine = 0;
};

// "REM SESSION 02" opens a session. "REM LEAD-OUT", ahead of it, and "REM LEAD-IN" and "REM PREGAP", behind it, give
// the lengths of what lies between the sessions where they are not the usual ones; -1 stands for usual.
struct CUE_SESSION
{
    int m_nLeadOut = -1; // of this session
    int m_nLeadIn = -1;  // ahead of this session
    int m_nPregap = -1;  // of this session's first track
};

struct CUE_SHEET
{
    std::vector<CUE_FILE> m_aryFiles;
    std::vector<CUE_TRACK> m_aryTracks; // numbers rise by one; one at least
    std::vector<CUE_SESSION> m_arySessions;
    std::string m_strMCN;
    std::string m_strCDTextFile;
    int m_nCDTextFileLine = 0;
    DISC_TEXT m_Text;
    std::vector<SHEET_ERROR> m_aryWarnings;
};

// Reads a sheet from UTF-8. False, with the first fault, when it is none or describes no disc.
bool ParseCueSheet(const std::string& strText, CUE_SHEET& sheet, SHEET_ERROR& error);
