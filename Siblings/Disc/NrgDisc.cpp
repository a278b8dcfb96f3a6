#include "NrgDisc.h"

#include "DiscBuilder.h"
#include "SectorFrame.h"
#include "StrideSource.h"
#include <algorithm>

namespace
{
// The image is its own only file.
class NoFileOpener : public ISectorSourceOpener
{
public:
    std::unique_ptr<SectorSource> OpenSource(const std::string&, SECTOR_SOURCE_KIND, std::string&,
                                             std::string&) override
    {
        return nullptr;
    }
    bool LoadCompanion(const std::string&, std::string&) override { return false; }
};

class NrgLayout
{
public:
    NrgLayout(const NRG_SHEET& sheet, std::unique_ptr<SectorSource> pFile, SHEET_ERROR& error)
        : m_Sheet(sheet), m_Error(error), m_Builder(m_NoFiles), m_pFile(pFile.get())
    {
        m_Builder.GetContent().m_arySources.push_back(std::move(pFile));
    }
    std::unique_ptr<DiscImage> Build(const std::string& strPath);

private:
    const NRG_SHEET& m_Sheet;
    SHEET_ERROR& m_Error;
    NoFileOpener m_NoFiles;
    DiscBuilder m_Builder;
    SectorSource* const m_pFile;
    int m_nSession = 1;

    void AddTrack(const NRG_TRACK& track);
    void BeginSession(const NRG_TRACK& track, int nPregap);
    void AddStretch(const NRG_TRACK& track, long long nFrom, long long nTo);
    static long long CountSectors(const NRG_TRACK& track, long long nFrom, long long nTo)
    {
        return (nTo - nFrom) / track.m_nSectorBytes;
    }
};

std::unique_ptr<DiscImage> NrgLayout::Build(const std::string& strPath)
{
    for (const NRG_TRACK& track : m_Sheet.m_aryTracks)
        AddTrack(track);
    m_Builder.GetContent().m_strMCN = m_Sheet.m_strMCN;
    m_Builder.GetContent().m_aryCDTextPacks = m_Sheet.m_aryCDTextPacks;
    return m_Builder.Finish(strPath, m_Error);
}

// The place of the session is that of its first track, where the file tells it, and otherwise the usual one.
void NrgLayout::BeginSession(const NRG_TRACK& track, int nPregap)
{
    const int nLeadOut = m_nSession == 1 ? DISC_FIRST_LEAD_OUT_SECTORS : DISC_LATER_LEAD_OUT_SECTORS;
    const int nTold = track.m_nStartLBA - nPregap - m_Builder.GetLBA() - nLeadOut;
    m_Builder.BeginSession(nLeadOut, track.m_nStartLBA >= 0 && nTold >= 0 ? nTold : DISC_LEAD_IN_SECTORS);
    m_nSession = track.m_nSession;
}

void NrgLayout::AddTrack(const NRG_TRACK& track)
{
    const bool bFirst = track.m_nNumber == m_Sheet.m_aryTracks.front().m_nNumber;
    const bool bSession = track.m_nSession != m_nSession;
    const long long nStored = CountSectors(track, track.m_nPregapOffset, track.m_nStartOffset);
    const int nPregap = static_cast<int>(std::min<long long>(nStored, DISC_MAX_LBA));
    const int nNeeded = bSession ? std::max(0, DISC_SESSION_PREGAP_SECTORS - nPregap) : 0;
    if (bSession)
        BeginSession(track, nPregap + nNeeded);
    DISC_TRACK disc;
    disc.m_nNumber = track.m_nNumber;
    disc.m_nMode = track.m_nMode;
    disc.m_nControl = track.m_nControl;
    disc.m_strISRC = track.m_strISRC;
    const bool bMode2 =
        track.m_nMode == DISC_MODE2_2048 || track.m_nMode == DISC_MODE2_2336 || track.m_nMode == DISC_MODE2_2352;
    m_Builder.BeginTrack(disc, bMode2 ? DISC_SESSION_CDROM_XA : DISC_SESSION_CDDA_OR_CDROM, 0);
    m_Builder.AddSilentSectors(nNeeded);
    // The two seconds ahead of the first track stand in the file, and every disc has them anyway.
    const long long nSkipped = bFirst ? std::min<long long>(nStored, DISC_FIRST_PREGAP_SECTORS) : 0;
    AddStretch(track, track.m_nPregapOffset + nSkipped * track.m_nSectorBytes, track.m_nStartOffset);
    const int nStart = m_Builder.GetLBA();
    m_Builder.MarkStart(nStart);
    AddStretch(track, track.m_nStartOffset, track.m_nEndOffset);
    if (track.m_nStartLBA != nStart && track.m_nStartLBA >= 0)
        m_Builder.Warn(0, "track " + std::to_string(track.m_nNumber) +
                              " is said to start elsewhere than its sectors do; it was placed by its sectors");
    int nBefore = nStart;
    for (const int nIndex : track.m_aryIndexLBAs)
    {
        if (nIndex <= nBefore || nIndex >= m_Builder.GetLBA())
            continue;
        m_Builder.MarkIndex(nIndex);
        nBefore = nIndex;
    }
}

// Whole sectors of the file. Where sub-channels stand behind each sector they are passed over.
void NrgLayout::AddStretch(const NRG_TRACK& track, long long nFrom, long long nTo)
{
    const long long nBytes = CountSectors(track, nFrom, nTo) * GetStoredBytes(track.m_nMode);
    if (track.m_nSectorBytes == GetStoredBytes(track.m_nMode))
    {
        m_Builder.AddSource(m_pFile, nFrom, nBytes);
        return;
    }
    auto& arySources = m_Builder.GetContent().m_arySources;
    arySources.push_back(MakeStrideSource(*m_pFile, nFrom, track.m_nSectorBytes, GetStoredBytes(track.m_nMode)));
    m_Builder.AddSource(arySources.back().get(), 0, nBytes);
}
} // namespace

std::unique_ptr<DiscImage> BuildNrgDisc(const NRG_SHEET& sheet, const std::string& strPath,
                                        std::unique_ptr<SectorSource> pFile, SHEET_ERROR& error)
{
    return NrgLayout(sheet, std::move(pFile), error).Build(strPath);
}
