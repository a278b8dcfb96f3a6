// What the fuzz targets of the two sheet formats share: files that need no file system, and the promises of a disc.

#pragma once

#include "DiscImage.h"
#include "FuzzCheck.h"
#include <algorithm>
#include <vector>

// Bytes that are nowhere; the length is all that a layout looks at.
class FuzzSource : public SectorSource
{
public:
    explicit FuzzSource(long long nBytes) : m_nBytes(nBytes) {}
    long long GetBytes() const override { return m_nBytes; }
    int Read(long long nOffset, unsigned char* pBuffer, int nBytes) override
    {
        int nThere = static_cast<int>(std::clamp<long long>(m_nBytes - nOffset, 0, nBytes));
        std::fill_n(pBuffer, nThere, static_cast<unsigned char>(0x5A));
        return nThere;
    }

private:
    long long m_nBytes;
};

// The first letter of a name chooses the length of the file: none, odd, short, or long.
class FuzzOpener : public ISectorSourceOpener
{
public:
    std::unique_ptr<SectorSource> OpenSource(const std::string& strName, SECTOR_SOURCE_KIND, std::string& strError,
                                             std::string&) override
    {
        static constexpr long long s_aryBytes[] = {0, 1, 100001, 2352LL * 75 * 60, 2352LL * 75 * 60 * 79, 1LL << 62};
        long long nBytes = s_aryBytes[static_cast<unsigned char>(strName[0]) % std::size(s_aryBytes)];
        if (nBytes != 0)
            return std::make_unique<FuzzSource>(nBytes);
        strError = "the file was not found; put it there";
        return nullptr;
    }
    bool LoadCompanion(const std::string& strName, std::string& strContent) override
    {
        strContent = strName;
        return true;
    }
};

// Everything that DiscImage.h says of the shape of a disc, and reads at every border.
inline void CheckDisc(DiscImage& image)
{
    const std::vector<DISC_TRACK>& aryTracks = image.GetTracks();
    const std::vector<DISC_SESSION>& arySessions = image.GetSessions();
    Check(!aryTracks.empty() && aryTracks.size() <= LY_CD_MAX_TRACKS && !arySessions.empty());
    Check(aryTracks.front().m_nNumber >= 1 && aryTracks.back().m_nNumber <= LY_CD_MAX_TRACKS);
    Check(aryTracks.front().m_nPregapLBA == -DISC_FIRST_PREGAP_SECTORS && image.GetLeadOutLBA() <= DISC_MAX_LBA);
    std::vector<unsigned char> aryBuffer(3 * LY_CD_SECTOR_BYTES);
    DISC_TRACK_MODE aryForms[3] = {};
    for (size_t n = 0; n < aryTracks.size(); n++)
    {
        const DISC_TRACK& track = aryTracks[n];
        Check(track.m_nNumber == aryTracks.front().m_nNumber + static_cast<int>(n) && track.m_nSectors > 0);
        Check(track.m_nPregapLBA <= track.m_nStartLBA && image.FindTrack(track.m_nNumber) == &track);
        Check(n == 0 || track.m_nPregapLBA >= aryTracks[n - 1].GetEndLBA());
        Check(track.IsData() == (track.m_nMode != DISC_AUDIO) && track.m_nControl < 16);
        Check(std::is_sorted(track.m_aryIndexLBAs.begin(), track.m_aryIndexLBAs.end()));
        for (int nIndexLBA : track.m_aryIndexLBAs)
            Check(nIndexLBA >= track.m_nStartLBA && nIndexLBA < track.GetEndLBA());
        Check(image.Locate(track.m_nStartLBA).m_pTrack == &track && image.Locate(track.m_nStartLBA).m_nIndex >= 1);
        for (int nLBA : {track.m_nPregapLBA - 1, track.m_nStartLBA - 1, track.GetEndLBA() - 1})
        {
            READ_RESULT result = image.ReadSectors(nLBA, 3, aryBuffer.data(), aryForms);
            Check(result.m_nSectors >= 0 && result.m_nSectors <= 3 && result.IsGood() == (result.m_nSectors == 3));
        }
        READ_STATUS inside = image.ReadSectors(track.m_nStartLBA, 1, aryBuffer.data()).m_nStatus;
        Check(inside == READ_GOOD || inside == READ_UNREADABLE);
    }
    for (const DISC_SESSION& session : arySessions)
        Check(session.m_nFirstTrack <= session.m_nLastTrack && image.FindTrack(session.m_nFirstTrack) != nullptr &&
              image.FindTrack(session.m_nLastTrack)->GetEndLBA() == session.m_nLeadOutLBA);
    Check(image.GetCDTextPacks().size() % DISC_CD_TEXT_PACK_BYTES == 0);
}
