#include "CcdDisc.h"

#include "DiscBuilder.h"
#include "PathResolve.h"
#include "SubFile.h"
#include <algorithm>

namespace
{
constexpr int HEADER_MODE_OFFSET = 15; // of a whole data sector (ECMA-130, 14.2)

class CcdLayout
{
public:
    CcdLayout(const CCD_SHEET& sheet, const std::string& strSheetPath, ISectorSourceOpener& opener, SHEET_ERROR& error)
        : m_Sheet(sheet), m_strPath(strSheetPath), m_Opener(opener), m_Error(error), m_Builder(opener)
    {
    }
    std::unique_ptr<DiscImage> Build();

private:
    const CCD_SHEET& m_Sheet;
    const std::string& m_strPath;
    ISectorSourceOpener& m_Opener;
    SHEET_ERROR& m_Error;
    DiscBuilder m_Builder;
    SectorSource* m_pImage = nullptr;
    SUB_CONTENT m_Sub;
    bool m_bGapsStored = false;    // the image goes on by address through the gaps between sessions
    bool m_bPregapsStored = false; // the image holds the pregap ahead of each later session
    int m_nLeftOut = 0;            // sectors between sessions that the image does not hold, so far

    bool OpenImage();
    void LoadSub();
    void MeasureGaps();
    int GetSessionGap(size_t nTrack) const;
    void AddTrack(size_t nTrack);
    int BeginSession(size_t nTrack);
    int GetPregapLBA(size_t nTrack) const;
    int GetEndLBA(size_t nTrack) const;
    DISC_TRACK_MODE GetMode(const CCD_TRACK& track) const;
    const CCD_TRACK_DETAILS* GetDetails(int nTrack) const;
    bool BeginsLaterSession(size_t nTrack) const;
    void AddSectors(int nFirstLBA, int nEndLBA);
    std::string GetCompanionName(const char* pExtension) const;
};

std::string CcdLayout::GetCompanionName(const char* pExtension) const
{
    const std::string strName = m_strPath.substr(m_strPath.rfind('/') + 1);
    return std::string(GetNameStem(strName)) + pExtension;
}

bool CcdLayout::OpenImage()
{
    const bool bData = std::any_of(m_Sheet.m_aryTracks.begin(), m_Sheet.m_aryTracks.end(),
                                   [](const CCD_TRACK& track) { return (track.m_nControl & TRACK_CONTROL_DATA) != 0; });
    m_pImage =
        m_Builder.OpenSource(GetCompanionName(".img"), bData ? SECTOR_SOURCE_DATA : SECTOR_SOURCE_RAW, 0, m_Error);
    return m_pImage != nullptr;
}

// The sub-channels are asked only for what the sheet itself does not say: reading them all takes a moment.
void CcdLayout::LoadSub()
{
    if (!m_Sheet.m_mapDetails.empty())
        return;
    std::string strError;
    std::string strWarning;
    const std::unique_ptr<SectorSource> pSub =
        m_Opener.OpenSource(GetCompanionName(".sub"), SECTOR_SOURCE_DATA, strError, strWarning);
    if (pSub != nullptr)
        m_Sub = ReadSubFile(*pSub);
}

bool CcdLayout::BeginsLaterSession(size_t nTrack) const
{
    return nTrack > 0 && m_Sheet.m_aryTracks[nTrack].m_nSession != m_Sheet.m_aryTracks[nTrack - 1].m_nSession;
}

// From the lead-out of the session ahead to the first track of this one.
int CcdLayout::GetSessionGap(size_t nTrack) const
{
    const CCD_SESSION& before = m_Sheet.m_mapSessions.at(m_Sheet.m_aryTracks[nTrack - 1].m_nSession);
    return m_Sheet.m_aryTracks[nTrack].m_nStartLBA - before.m_nLeadOutLBA;
}

// Programs that write images differ in what they store between two sessions: everything, the pregap, or nothing. The
// length of the file tells.
void CcdLayout::MeasureGaps()
{
    long long nGaps = 0;
    long long nPregaps = 0;
    for (size_t n = 0; n < m_Sheet.m_aryTracks.size(); ++n)
        if (BeginsLaterSession(n))
        {
            nGaps += GetSessionGap(n);
            nPregaps += std::min(GetSessionGap(n), DISC_SESSION_PREGAP_SECTORS);
        }
    const long long nSectors = m_pImage->GetBytes() / LY_CD_SECTOR_BYTES;
    const long long nEnd = GetEndLBA(m_Sheet.m_aryTracks.size() - 1);
    m_bGapsStored = nSectors >= nEnd;
    m_bPregapsStored = m_bGapsStored || nSectors >= nEnd - nGaps + nPregaps;
    if (nSectors < nEnd - nGaps)
        m_Builder.Warn(0,
                       "the IMG file ends before the disc does; what is missing cannot be read, so copy the file again "
                       "from where it came from");
}

std::unique_ptr<DiscImage> CcdLayout::Build()
{
    if (!OpenImage())
        return nullptr;
    for (const SHEET_ERROR& warning : m_Sheet.m_aryWarnings)
        m_Builder.Warn(warning.m_nLine, warning.m_strText);
    LoadSub();
    MeasureGaps();
    for (size_t n = 0; n < m_Sheet.m_aryTracks.size(); ++n)
        AddTrack(n);
    m_Builder.GetContent().m_strMCN = m_Sheet.m_strMCN.empty() ? m_Sub.m_strMCN : m_Sheet.m_strMCN;
    m_Builder.GetContent().m_aryCDTextPacks = m_Sheet.m_aryCDTextPacks;
    return m_Builder.Finish(m_strPath, m_Error);
}

const CCD_TRACK_DETAILS* CcdLayout::GetDetails(int nTrack) const
{
    const auto pFound = m_Sheet.m_mapDetails.find(nTrack);
    return pFound != m_Sheet.m_mapDetails.end() ? &pFound->second : nullptr;
}

DISC_TRACK_MODE CcdLayout::GetMode(const CCD_TRACK& track) const
{
    if ((track.m_nControl & TRACK_CONTROL_DATA) == 0)
        return DISC_AUDIO;
    const CCD_TRACK_DETAILS* pDetails = GetDetails(track.m_nNumber);
    unsigned char nMode =
        pDetails != nullptr && pDetails->m_nMode > 0 ? static_cast<unsigned char>(pDetails->m_nMode) : 0;
    const long long nOffset = static_cast<long long>(track.m_nStartLBA - m_nLeftOut) * LY_CD_SECTOR_BYTES;
    if (nMode == 0)
        (void)m_pImage->Read(nOffset + HEADER_MODE_OFFSET, &nMode, 1); // a file that ends before it leaves mode 1
    return nMode == 2 ? DISC_MODE2_2352 : DISC_MODE1_2352;
}

// Where the track's index 0 begins; its start, if it has none.
int CcdLayout::GetPregapLBA(size_t nTrack) const
{
    const CCD_TRACK& track = m_Sheet.m_aryTracks[nTrack];
    if (nTrack == 0)
        return 0;
    if (BeginsLaterSession(nTrack))
        return track.m_nStartLBA - std::min(GetSessionGap(nTrack), DISC_SESSION_PREGAP_SECTORS);
    int nPregap = track.m_nStartLBA;
    const CCD_TRACK_DETAILS* pDetails = GetDetails(track.m_nNumber);
    if (pDetails != nullptr && pDetails->m_mapIndexLBAs.count(0) != 0)
        nPregap = pDetails->m_mapIndexLBAs.at(0);
    else if (m_Sub.m_mapPregaps.count(track.m_nNumber) != 0)
        nPregap = m_Sub.m_mapPregaps.at(track.m_nNumber) + m_nLeftOut;
    const bool bPlausible = nPregap > m_Sheet.m_aryTracks[nTrack - 1].m_nStartLBA && nPregap < track.m_nStartLBA;
    return bPlausible ? nPregap : track.m_nStartLBA;
}

int CcdLayout::GetEndLBA(size_t nTrack) const
{
    const bool bLast = nTrack + 1 == m_Sheet.m_aryTracks.size() || BeginsLaterSession(nTrack + 1);
    if (bLast)
        return m_Sheet.m_mapSessions.at(m_Sheet.m_aryTracks[nTrack].m_nSession).m_nLeadOutLBA;
    return GetPregapLBA(nTrack + 1);
}

// Opens the session that the track begins. Answers the first address that the image holds of it.
int CcdLayout::BeginSession(size_t nTrack)
{
    const int nGap = GetSessionGap(nTrack);
    const int nPregap = std::min(nGap, DISC_SESSION_PREGAP_SECTORS);
    const int nUsual =
        m_Sheet.m_aryTracks[nTrack].m_nSession == 2 ? DISC_FIRST_LEAD_OUT_SECTORS : DISC_LATER_LEAD_OUT_SECTORS;
    const int nLeadOut = std::min(nGap - nPregap, nUsual);
    m_Builder.BeginSession(nLeadOut, nGap - nPregap - nLeadOut);
    if (!m_bGapsStored)
        m_nLeftOut += m_bPregapsStored ? nGap - nPregap : nGap;
    const int nStart = m_Sheet.m_aryTracks[nTrack].m_nStartLBA;
    return m_bPregapsStored ? nStart - nPregap : nStart;
}

void CcdLayout::AddSectors(int nFirstLBA, int nEndLBA)
{
    m_Builder.AddSource(m_pImage, static_cast<long long>(nFirstLBA - m_nLeftOut) * LY_CD_SECTOR_BYTES,
                        static_cast<long long>(nEndLBA - nFirstLBA) * LY_CD_SECTOR_BYTES);
}

void CcdLayout::AddTrack(size_t nTrack)
{
    const CCD_TRACK& track = m_Sheet.m_aryTracks[nTrack];
    int nFirst = GetPregapLBA(nTrack);
    if (BeginsLaterSession(nTrack))
        nFirst = BeginSession(nTrack);
    DISC_TRACK disc;
    disc.m_nNumber = track.m_nNumber;
    disc.m_nControl = track.m_nControl;
    disc.m_nMode = GetMode(track);
    const CCD_TRACK_DETAILS* pDetails = GetDetails(track.m_nNumber);
    if (pDetails != nullptr)
        disc.m_strISRC = pDetails->m_strISRC;
    else if (m_Sub.m_mapISRCs.count(track.m_nNumber) != 0)
        disc.m_strISRC = m_Sub.m_mapISRCs.at(track.m_nNumber);
    if (disc.m_nMode != DISC_AUDIO && m_Sheet.m_bScrambled)
        m_Builder.Warn(track.m_nLine, "the data of track " + std::to_string(track.m_nNumber) +
                                          " is scrambled and comes as it is; audio tracks are not touched by that");
    m_Builder.BeginTrack(disc, m_Sheet.m_mapSessions.at(track.m_nSession).m_nType, track.m_nLine);
    if (BeginsLaterSession(nTrack) && nFirst == track.m_nStartLBA)
        m_Builder.AddSilentSectors(std::min(GetSessionGap(nTrack), DISC_SESSION_PREGAP_SECTORS));
    AddSectors(nFirst, GetEndLBA(nTrack));
    m_Builder.MarkStart(track.m_nStartLBA);
    if (pDetails == nullptr)
        return;
    int nBefore = track.m_nStartLBA;
    for (const auto& [nNumber, nLBA] : pDetails->m_mapIndexLBAs)
    {
        if (nNumber < 2 || nLBA <= nBefore || nLBA >= GetEndLBA(nTrack))
            continue;
        m_Builder.MarkIndex(nLBA);
        nBefore = nLBA;
    }
}
} // namespace

std::unique_ptr<DiscImage> BuildCcdDisc(const CCD_SHEET& sheet, const std::string& strSheetPath,
                                        ISectorSourceOpener& opener, SHEET_ERROR& error)
{
    return CcdLayout(sheet, strSheetPath, opener, error).Build();
}
