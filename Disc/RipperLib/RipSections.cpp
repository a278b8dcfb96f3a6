#include "RipSections.h"
#include "SCSICD.h"
#include <algorithm>

namespace
{
// The audio track of that number, with the hidden audio as track 0. False if there is none.
bool GetAudioSection(CSCSICD& cd, int nTrack, RIP_SECTION& section)
{
    TTrackList infos{};
    infos.nTrackNumber = static_cast<unsigned char>(std::max(nTrack, 1));
    if (nTrack < RIP_HIDDEN_TRACK || nTrack > LY_CD_MAX_TRACKS || cd.ReadTrackInfo(infos) == 0 || infos.bDataTrack != 0)
        return false;
    if (nTrack == RIP_HIDDEN_TRACK)
        section = {RIP_HIDDEN_TRACK, 0, infos.nStartSector};
    else
        section = {nTrack, infos.nStartSector, infos.nSectors};
    return section.nSectors > 0 && section.nStartSector >= 0 && section.nSectors <= RIP_MAX_SECTORS &&
           section.nStartSector <= RIP_MAX_SECTORS - section.nSectors;
}
} // namespace

bool AddTrackSection(RipSectorList& list, CSCSICD& cd, int nTrack)
{
    RIP_SECTION section;
    if (nTrack == RIP_HIDDEN_TRACK || !GetAudioSection(cd, nTrack, section))
        return false;
    return list.Add(section) >= 0;
}

bool AddHiddenSection(RipSectorList& list, CSCSICD& cd)
{
    RIP_SECTION section;
    return GetAudioSection(cd, RIP_HIDDEN_TRACK, section) && list.Add(section) >= 0;
}

bool AddDiscSections(RipSectorList& list, CSCSICD& cd)
{
    bool bAny = false;
    const int nLast = cd.GetLastTrackNumber();
    for (int nTrack = 1; nTrack <= nLast; ++nTrack)
        bAny |= AddTrackSection(list, cd, nTrack);
    return bAny;
}

bool AddRangeSections(RipSectorList& list, CSCSICD& cd, int nFirst, int nSectors)
{
    if (nFirst < 0 || nSectors < 1 || nSectors > RIP_MAX_SECTORS || nFirst > RIP_MAX_SECTORS - nSectors)
        return false;
    RipSectorList pieces;
    const int nEnd = nFirst + nSectors;
    const int nLast = cd.GetLastTrackNumber();
    for (int nTrack = RIP_HIDDEN_TRACK; nTrack <= nLast && nFirst < nEnd; ++nTrack)
    {
        RIP_SECTION section;
        if (!GetAudioSection(cd, nTrack, section) || nFirst < section.nStartSector)
            continue;
        const int nPieceEnd = std::min(nEnd, section.nStartSector + section.nSectors);
        if (nFirst >= nPieceEnd)
            continue;
        (void)pieces.Add({nTrack, nFirst, nPieceEnd - nFirst});
        nFirst = nPieceEnd;
    }
    if (nFirst < nEnd)
        return false;
    for (int i = 0; i < pieces.GetSize(); ++i)
        (void)list.Add(pieces[i]);
    return true;
}

bool IsRipSectorListValid(const RipSectorList& list)
{
    long long nTotal = 0;
    for (int i = 0; i < list.GetSize(); ++i)
    {
        const RIP_SECTION& section = list[i];
        if (section.nStartSector < 0 || section.nSectors < 0 || section.nSectors > RIP_MAX_SECTORS ||
            section.nStartSector > RIP_MAX_SECTORS - section.nSectors)
            return false;
        nTotal += section.nSectors;
    }
    return nTotal <= 0x7FFFFFFF;
}
