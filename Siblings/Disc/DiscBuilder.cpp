#include "DiscBuilder.h"

#include "SectorFrame.h"

namespace
{
constexpr long long MAX_POSITION = static_cast<long long>(DISC_MAX_LBA) * LY_CD_SECTOR_BYTES; // of a lead-out
constexpr size_t CD_TEXT_HEADER_BYTES = 4;

long long CeilSectors(long long nBytes, int nSectorBytes) { return (nBytes + nSectorBytes - 1) / nSectorBytes; }

// True if the second goes on exactly where the first ends, on the disc (which it does) and in its source.
bool Continues(const DISC_EXTENT& first, const DISC_EXTENT& second)
{
    if (first.m_pSource != second.m_pSource || first.m_nMode != second.m_nMode || first.GetEnd() != second.m_nPosition)
        return false;
    if (first.m_pSource == nullptr)
        return true;
    bool bFull = first.m_nMode == DISC_AUDIO
                     ? first.m_nSourceBytes == first.m_nBytes
                     : first.m_nSourceBytes == first.m_nBytes / LY_CD_SECTOR_BYTES * GetStoredBytes(first.m_nMode);
    return bFull && first.m_nSourceOffset + first.m_nSourceBytes == second.m_nSourceOffset;
}

bool IsPackType(unsigned char nType) { return nType >= 0x80 && nType <= 0x8F; }
} // namespace

SectorSource* DiscBuilder::OpenSource(const std::string& strName, SECTOR_SOURCE_KIND kind, int nLine,
                                      SHEET_ERROR& error)
{
    for (const OPEN_SOURCE& open : m_aryOpen)
        if (open.m_nKind == kind && open.m_strName == strName)
            return open.m_pSource;
    std::string strWarning;
    std::unique_ptr<SectorSource> pSource = m_Opener.OpenSource(strName, kind, error.m_strText, strWarning);
    if (!strWarning.empty())
        Warn(nLine, strWarning);
    if (!pSource)
    {
        error.m_nLine = nLine;
        return nullptr;
    }
    m_aryOpen.push_back({strName, kind, pSource.get()});
    m_Content.m_arySources.push_back(std::move(pSource));
    return m_aryOpen.back().m_pSource;
}

void DiscBuilder::Warn(int nLine, std::string strText)
{
    if (m_aryWarnings.size() < SHEET_MAX_WARNINGS)
        m_aryWarnings.push_back({nLine, std::move(strText)});
}

void DiscBuilder::AddExtent(DISC_EXTENT extent)
{
    if (extent.m_nBytes <= 0)
        return;
    if (extent.m_nBytes > MAX_POSITION - m_nPosition)
    {
        SetTooLong();
        return;
    }
    extent.m_nPosition = m_nPosition;
    m_nPosition += extent.m_nBytes;
    std::vector<DISC_EXTENT>& aryExtents = m_Content.m_aryExtents;
    if (aryExtents.empty() || !Continues(aryExtents.back(), extent))
    {
        aryExtents.push_back(extent);
        return;
    }
    aryExtents.back().m_nBytes += extent.m_nBytes;
    aryExtents.back().m_nSourceBytes += extent.m_nSourceBytes;
}

void DiscBuilder::SetTooLong()
{
    if (m_nTooLongLine == 0)
        m_nTooLongLine = m_aryLines.back();
}

void DiscBuilder::AddSilence(long long nBytes)
{
    DISC_EXTENT extent;
    extent.m_nMode = GetTrack().m_nMode;
    extent.m_nBytes = nBytes;
    AddExtent(extent);
}

void DiscBuilder::AddSource(SectorSource* pSource, long long nOffset, long long nStored)
{
    if (nStored <= 0)
        return;
    DISC_EXTENT extent;
    extent.m_pSource = pSource;
    extent.m_nSourceOffset = nOffset;
    extent.m_nSourceBytes = nStored;
    extent.m_nMode = GetTrack().m_nMode;
    if (nStored > MAX_POSITION) // before it is multiplied
        extent.m_nBytes = nStored;
    else if (extent.m_nMode == DISC_AUDIO)
        extent.m_nBytes = CeilSectors(nStored, LY_CD_FRAME_BYTES) * LY_CD_FRAME_BYTES;
    else
        extent.m_nBytes = CeilSectors(nStored, GetStoredBytes(extent.m_nMode)) * LY_CD_SECTOR_BYTES;
    AddExtent(extent);
}

void DiscBuilder::PadToSector()
{
    if (long long nBeyond = m_nPosition % LY_CD_SECTOR_BYTES; nBeyond != 0)
        AddSilence(LY_CD_SECTOR_BYTES - nBeyond);
}

void DiscBuilder::BeginSession(int nLeadOutSectors, int nLeadInSectors)
{
    PadToSector();
    m_Content.m_arySessions.back().m_nLeadOutLBA = GetLBA();
    m_nPosition += static_cast<long long>(nLeadOutSectors + nLeadInSectors) * LY_CD_SECTOR_BYTES;
    if (m_nPosition > MAX_POSITION)
    {
        SetTooLong();
        m_nPosition = MAX_POSITION;
    }
    DISC_SESSION session;
    session.m_nNumber = m_Content.m_arySessions.back().m_nNumber + 1;
    m_Content.m_arySessions.push_back(session);
}

void DiscBuilder::BeginTrack(DISC_TRACK track, DISC_SESSION_TYPE type, int nLine)
{
    const bool bFirst = m_Content.m_aryTracks.empty();
    if (bFirst)
        m_Content.m_arySessions.emplace_back();
    else
        PadToSector();
    DISC_SESSION& session = m_Content.m_arySessions.back();
    if (session.m_nFirstTrack == 0)
        session.m_nFirstTrack = track.m_nNumber;
    session.m_nLastTrack = track.m_nNumber;
    if (type > session.m_nType)
        session.m_nType = type;
    track.m_nSession = session.m_nNumber;
    track.m_nPregapLBA = track.m_nStartLBA = GetLBA();
    m_Content.m_aryTracks.push_back(std::move(track));
    m_aryLines.push_back(nLine);
    if (!bFirst)
        return;
    m_nPosition = -static_cast<long long>(DISC_FIRST_PREGAP_SECTORS) * LY_CD_SECTOR_BYTES;
    m_Content.m_aryTracks.back().m_nPregapLBA = -DISC_FIRST_PREGAP_SECTORS;
    AddSilentSectors(DISC_FIRST_PREGAP_SECTORS);
}

std::unique_ptr<DiscImage> DiscBuilder::Finish(const std::string& strSheetPath, SHEET_ERROR& error)
{
    PadToSector();
    if (m_nTooLongLine > 0)
    {
        error = {m_nTooLongLine, "the disc would be longer than " + FormatSheetTime(DISC_MAX_LBA + LY_CD_MSF_OFFSET) +
                                     ", which no disc can be; split the sheet into several discs"};
        return nullptr;
    }
    m_Content.m_arySessions.back().m_nLeadOutLBA = GetLBA();
    std::vector<DISC_TRACK>& aryTracks = m_Content.m_aryTracks;
    for (size_t n = 0; n < aryTracks.size(); n++)
    {
        DISC_TRACK& track = aryTracks[n];
        bool bLast = n + 1 == aryTracks.size() || aryTracks[n + 1].m_nSession != track.m_nSession;
        int nEnd = bLast ? m_Content.m_arySessions[static_cast<size_t>(track.m_nSession) - 1].m_nLeadOutLBA
                         : aryTracks[n + 1].m_nPregapLBA;
        track.m_nSectors = nEnd - track.m_nStartLBA;
        if (track.m_nSectors > 0 && (track.m_aryIndexLBAs.empty() || track.m_aryIndexLBAs.back() < nEnd))
            continue;
        error = {m_aryLines[n], "track " + std::to_string(track.m_nNumber) +
                                    " has no sectors, or an index behind its end; correct its times"};
        return nullptr;
    }
    for (const SHEET_ERROR& warning : m_aryWarnings)
        m_Content.m_aryWarnings.push_back(FormatSheetError(strSheetPath, warning));
    return std::make_unique<DiscImage>(std::move(m_Content));
}

std::vector<unsigned char> ParseCDTextFile(const std::string& strContent)
{
    auto byte = [&](size_t n) { return static_cast<unsigned char>(strContent[n]); };
    size_t nFirst = 0;
    size_t nBytes = strContent.size();
    if (nBytes % DISC_CD_TEXT_PACK_BYTES == 1 && strContent.back() == '\0')
        nBytes--;
    if (nBytes % DISC_CD_TEXT_PACK_BYTES == CD_TEXT_HEADER_BYTES &&
        static_cast<size_t>(byte(0) << 8 | byte(1)) + 2 == nBytes)
        nFirst = CD_TEXT_HEADER_BYTES;
    if (nBytes <= nFirst || (nBytes - nFirst) % DISC_CD_TEXT_PACK_BYTES != 0)
        return {};
    for (size_t n = nFirst; n < nBytes; n += DISC_CD_TEXT_PACK_BYTES)
        if (!IsPackType(byte(n)))
            return {};
    return {strContent.begin() + static_cast<ptrdiff_t>(nFirst), strContent.begin() + static_cast<ptrdiff_t>(nBytes)};
}
