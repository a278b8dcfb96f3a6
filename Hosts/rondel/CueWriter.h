// Writes CUE sheets (CDRWIN's text format, UTF-8) for one BIN of 2352-byte audio sectors, or one audio file.

#pragma once

#include <string>
#include <vector>

struct CUE_TRACK
{
    std::string strTitle;
    std::string strPerformer;
    int nGapSector = 0;   // where the gap ahead of the track begins in the BIN; nStartSector without one
    int nStartSector = 0; // in the BIN
    std::string strISRC;
};

struct CUE_DISC
{
    std::string strTitle;
    std::string strPerformer;
    std::string strBinName;
    std::string strFileType = "BINARY"; // "WAVE" for whatever is decoded
    std::vector<CUE_TRACK> aryTracks;
};

void WriteCue(const std::string& strPath, const CUE_DISC& disc); // throws HostError; replaces the file whole
