#include "CueWriter.h"
#include "CDUnits.h"
#include "HostError.h"
#include "PartialFile.h"
#include <cstdio>

namespace
{
// A sheet has no way to write a double quote or a line end inside a text.
std::string Quote(std::string str)
{
    for (char& c : str)
    {
        if (c == '"')
            c = '\'';
        else if (static_cast<unsigned char>(c) < ' ')
            c = ' ';
    }
    return '"' + str + '"';
}

std::string FormatIndex(int nIndex, int nSector)
{
    char szLine[64];
    const int nSeconds = nSector / LY_CD_SECTORS_PER_SECOND;
    std::snprintf(szLine, sizeof szLine, "    INDEX %02d %02d:%02d:%02d\n", nIndex, nSeconds / 60, nSeconds % 60,
                  nSector % LY_CD_SECTORS_PER_SECOND);
    return szLine;
}

std::string FormatTrack(int nNumber, const CUE_TRACK& track)
{
    char szLine[32];
    std::snprintf(szLine, sizeof szLine, "  TRACK %02d AUDIO\n", nNumber);
    std::string strText = szLine;
    if (!track.strTitle.empty())
        strText += "    TITLE " + Quote(track.strTitle) + "\n";
    if (!track.strPerformer.empty())
        strText += "    PERFORMER " + Quote(track.strPerformer) + "\n";
    if (!track.strISRC.empty())
        strText += "    ISRC " + track.strISRC + "\n";
    if (track.nGapSector != track.nStartSector)
        strText += FormatIndex(0, track.nGapSector);
    return strText + FormatIndex(1, track.nStartSector);
}
} // namespace

void WriteCue(const std::string& strPath, const CUE_DISC& disc)
{
    std::string strText;
    if (!disc.strTitle.empty())
        strText += "TITLE " + Quote(disc.strTitle) + "\n";
    if (!disc.strPerformer.empty())
        strText += "PERFORMER " + Quote(disc.strPerformer) + "\n";
    strText += "FILE " + Quote(disc.strBinName) + " " + disc.strFileType + "\n";
    int nNumber = 0;
    for (const CUE_TRACK& track : disc.aryTracks)
        strText += FormatTrack(++nNumber, track);

    PartialFile partial(strPath);
    FILE* pFile = partial.GetIsOpen() ? fdopen(partial.TakeDescriptor(), "wb") : nullptr;
    bool bGood = pFile != nullptr && std::fwrite(strText.data(), 1, strText.size(), pFile) == strText.size();
    bGood = (pFile == nullptr || std::fclose(pFile) == 0) && bGood;
    if (!bGood || !partial.Finish())
        throw HostError(strPath + " cannot be written; is the disk full, or the folder closed to you?");
}
