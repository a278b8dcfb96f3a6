// A table of contents from a drive: the list that is made of it, and every query on that list.

#include "FuzzCheck.h"
#include "SCSICDTrackListDetails.h"
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

static int CheckList(const CSCSICD& cd)
{
    int nTracks = 0;
    const TTrackListNode* pPrevious = nullptr;
    for (const TTrackListNode* p = cd.m_FirstTrack; p; p = p->pNext)
    {
        Check(p->pPrevious == pPrevious);
        Check(p->Info.nStartSector >= 0);
        Check(p->Info.nChannels == 2 || p->Info.nChannels == 4);
        pPrevious = p;
        nTracks++;
    }
    Check(cd.m_AktTrack == pPrevious);
    Check(nTracks <= LY_CD_MAX_TRACKS);
    return nTracks;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    std::vector<unsigned char> toc(CSCSICD::TOC_BYTES);
    std::copy_n(pData, std::min(nBytes, toc.size()), toc.begin());
    TDriveInfo info;
    CSCSICD cd(nullptr, info, L"E:");
    bool bTracks = ReadTrackList(toc.data(), cd.m_FirstTrack, cd.m_AktTrack);
    Check(bTracks == (toc[2] != 0 && toc[3] != 0));
    int nTracks = CheckList(cd);
    int nLast = cd.GetLastTrackNumber();
    for (int nTrack = 0; nTrack < 256; nTrack++)
    {
        TTrackList track = {};
        track.nTrackNumber = static_cast<unsigned char>(nTrack);
        if (cd.ReadTrackInfo(track) == 1)
            Check(nTracks > 0 && track.nTrackNumber == nTrack);
        Check(cd.GetLastTrackNumber() == nLast);
    }
    return 0;
}
