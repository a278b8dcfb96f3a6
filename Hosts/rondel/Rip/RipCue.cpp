#include "RipCue.h"
#include "CueWriter.h"

// Audio hidden ahead of track 1 is that track's index 0. The sheet's tracks count from 1, whatever was left out.
void WriteImageCue(const std::string& strPath, const RIP_REPORT& report, const std::string& strAudio)
{
    CUE_DISC disc;
    disc.strTitle = report.disc.strTitle;
    disc.strPerformer = report.disc.strPerformer;
    disc.strBinName = strAudio;
    disc.strFileType = "WAVE";
    int nSector = 0;
    int nGap = 0;
    for (size_t n = 0; n < report.aryPieces.size(); ++n)
    {
        const RIP_PIECE& piece = report.aryPieces[n];
        const bool bHidden = piece.nTrack == 0 && n + 1 < report.aryPieces.size();
        if (!bHidden)
            disc.aryTracks.push_back({piece.strTitle, piece.strPerformer, nGap, nSector, piece.strISRC});
        nSector += piece.nSectors;
        nGap = bHidden ? nGap : nSector;
    }
    WriteCue(strPath, disc);
}
