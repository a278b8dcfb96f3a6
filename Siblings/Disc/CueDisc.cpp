#include "CueDisc.h"

#include "DiscBuilder.h"
#include "SectorFrame.h"

namespace
{
// The length given to a track that lies wholly behind the end of a file that was cut off: the least that a track may
// have (IEC 60908: 4 seconds). It is there to be named, not to be read.
constexpr int LOST_TRACK_SECTORS = 4 * LY_CD_SECTORS_PER_SECOND;

// What a file has from one index to the next, or to its end.
struct CUE_SEGMENT
{
    int m_nLead = 0; // sectors ahead of a file's first index; they are laid out with it
    long long m_nOffset = 0;
    long long m_nStored = 0; // bytes from the index on
    SectorSource* m_pSource = nullptr;
};

class CueLayout
{
public:
    CueLayout(const CUE_SHEET& sheet, ISectorSourceOpener& opener, SHEET_ERROR& error)
        : m_Sheet(sheet), m_Error(error), m_Builder(opener), m_Opener(opener)
    {
    }

    std::unique_ptr<DiscImage> Build(const std::string& strSheetPath)
    {
        for (const SHEET_ERROR& warning : m_Sheet.m_aryWarnings)
            m_Builder.Warn(warning.m_nLine, warning.m_strText);
        MeasureFiles();
        for (const CUE_TRACK& track : m_Sheet.m_aryTracks)
            if (!AddTrack(track))
                return nullptr;
        LoadCDText();
        m_Builder.GetContent().m_strMCN = m_Sheet.m_strMCN;
        m_Builder.GetContent().m_Text = m_Sheet.m_Text;
        return m_Builder.Finish(strSheetPath, m_Error);
    }

private:
    const CUE_SHEET& m_Sheet;
    SHEET_ERROR& m_Error;
    DiscBuilder m_Builder;
    ISectorSourceOpener& m_Opener;
    std::vector<bool> m_aryHasData; // of each file: it holds a data track
    int m_nFile = -1;               // the file being walked through
    long long m_nOffset = 0;        // of the next index in it, in bytes
    int m_nSession = 0;

    void MeasureFiles();
    bool AddTrack(const CUE_TRACK& track);
    void AddSessionGap(const CUE_TRACK& track);
    bool AddIndex(const CUE_TRACK& track, const CUE_INDEX& index, const CUE_INDEX* pNext);
    bool GetSegment(const CUE_TRACK& track, const CUE_INDEX& index, const CUE_INDEX* pNext, CUE_SEGMENT& segment);
    bool MeasureSegment(const CUE_TRACK& track, const CUE_INDEX& index, const CUE_INDEX* pNext, CUE_SEGMENT& segment);
    SectorSource* OpenFile(const CUE_TRACK& track, const CUE_INDEX& index);
    const CUE_INDEX* GetIndexBehind(size_t nTrack, size_t nIndex) const;
    void LoadCDText();
};

void CueLayout::MeasureFiles()
{
    std::vector<bool> aryUsed(m_Sheet.m_aryFiles.size());
    m_aryHasData.resize(m_Sheet.m_aryFiles.size());
    for (const CUE_TRACK& track : m_Sheet.m_aryTracks)
        for (const CUE_INDEX& index : track.m_aryIndexes)
        {
            aryUsed[static_cast<size_t>(index.m_nFile)] = true;
            if (track.m_nMode != DISC_AUDIO)
                m_aryHasData[static_cast<size_t>(index.m_nFile)] = true;
        }
    for (size_t n = 0; n < aryUsed.size(); n++)
        if (!aryUsed[n])
            m_Builder.Warn(m_Sheet.m_aryFiles[n].m_nLine, "no INDEX lies in this file; it was left out");
}

// The index written behind this one, or null behind the last.
const CUE_INDEX* CueLayout::GetIndexBehind(size_t nTrack, size_t nIndex) const
{
    if (nIndex + 1 < m_Sheet.m_aryTracks[nTrack].m_aryIndexes.size())
        return &m_Sheet.m_aryTracks[nTrack].m_aryIndexes[nIndex + 1];
    return nTrack + 1 < m_Sheet.m_aryTracks.size() ? &m_Sheet.m_aryTracks[nTrack + 1].m_aryIndexes.front() : nullptr;
}

bool CueLayout::AddTrack(const CUE_TRACK& track)
{
    if (track.m_nSession != m_nSession)
    {
        const CUE_SESSION& before = m_Sheet.m_arySessions[static_cast<size_t>(m_nSession)];
        const CUE_SESSION& session = m_Sheet.m_arySessions[static_cast<size_t>(track.m_nSession)];
        int nUsual = m_nSession == 0 ? DISC_FIRST_LEAD_OUT_SECTORS : DISC_LATER_LEAD_OUT_SECTORS;
        m_Builder.BeginSession(before.m_nLeadOut >= 0 ? before.m_nLeadOut : nUsual,
                               session.m_nLeadIn >= 0 ? session.m_nLeadIn : DISC_LEAD_IN_SECTORS);
    }
    DISC_TRACK disc;
    disc.m_nNumber = track.m_nNumber;
    disc.m_nControl = track.m_nControl;
    disc.m_nMode = track.m_nMode;
    disc.m_strISRC = track.m_strISRC;
    disc.m_Text = track.m_Text;
    m_Builder.BeginTrack(std::move(disc), track.m_nSessionType, track.m_nLine);
    if (track.m_nSession != m_nSession)
        AddSessionGap(track);
    m_nSession = track.m_nSession;

    m_Builder.AddSilentSectors(track.m_nPregap);
    size_t nTrack = static_cast<size_t>(&track - m_Sheet.m_aryTracks.data());
    for (size_t n = 0; n < track.m_aryIndexes.size(); n++)
        if (!AddIndex(track, track.m_aryIndexes[n], GetIndexBehind(nTrack, n)))
            return false;
    m_Builder.PadToSector();
    m_Builder.AddSilentSectors(track.m_nPostgap);
    return true;
}

// The first track of a later session has a pregap of two seconds. What of it is neither in a file nor told by PREGAP is
// made up here.
void CueLayout::AddSessionGap(const CUE_TRACK& track)
{
    int nPregap = m_Sheet.m_arySessions[static_cast<size_t>(track.m_nSession)].m_nPregap;
    int nMissing = (nPregap >= 0 ? nPregap : DISC_SESSION_PREGAP_SECTORS) - track.m_nPregap;
    const std::vector<CUE_INDEX>& aryIndexes = track.m_aryIndexes;
    bool bNewFile = aryIndexes[0].m_nFile != m_nFile;
    if (aryIndexes[0].m_nNumber == 0 && aryIndexes[0].m_nFile == aryIndexes[1].m_nFile)
        nMissing -= aryIndexes[1].m_nSector - (bNewFile ? 0 : aryIndexes[0].m_nSector);
    else if (aryIndexes[0].m_nNumber == 1 && bNewFile)
        nMissing -= aryIndexes[0].m_nSector;
    m_Builder.AddSilentSectors(nMissing);
}

bool CueLayout::AddIndex(const CUE_TRACK& track, const CUE_INDEX& index, const CUE_INDEX* pNext)
{
    CUE_SEGMENT segment;
    if (!GetSegment(track, index, pNext, segment))
        return false;
    const int nSectorBytes = GetStoredBytes(track.m_nMode);
    m_Builder.PadToSector(); // the file before may have ended within a sector
    long long nLead = static_cast<long long>(segment.m_nLead) * nSectorBytes;
    m_Builder.AddSource(segment.m_pSource, segment.m_nOffset - nLead, nLead);
    if (index.m_nNumber == 1)
        m_Builder.MarkStart(m_Builder.GetLBA());
    else if (index.m_nNumber > 1)
        m_Builder.MarkIndex(m_Builder.GetLBA());
    m_Builder.AddSource(segment.m_pSource, segment.m_nOffset, segment.m_nStored);
    return true;
}

SectorSource* CueLayout::OpenFile(const CUE_TRACK& track, const CUE_INDEX& index)
{
    const CUE_FILE& file = m_Sheet.m_aryFiles[static_cast<size_t>(index.m_nFile)];
    SECTOR_SOURCE_KIND kind = file.m_nKind;
    if (track.m_nMode != DISC_AUDIO && kind == SECTOR_SOURCE_AUDIO)
    {
        m_Error = {track.m_nLine, "track " + std::to_string(track.m_nNumber) +
                                      " is a data track, but its file is an audio file; declare the file as BINARY"};
        return nullptr;
    }
    // Data knows no byte order, and a file that holds data is no audio file whatever its samples look like.
    bool bMixed = m_aryHasData[static_cast<size_t>(index.m_nFile)] && kind == SECTOR_SOURCE_RAW;
    if (track.m_nMode != DISC_AUDIO || bMixed)
        kind = SECTOR_SOURCE_DATA;
    return m_Builder.OpenSource(file.m_strName, kind, file.m_nLine, m_Error);
}

bool CueLayout::GetSegment(const CUE_TRACK& track, const CUE_INDEX& index, const CUE_INDEX* pNext, CUE_SEGMENT& segment)
{
    segment.m_pSource = OpenFile(track, index);
    if (segment.m_pSource == nullptr)
        return false;
    if (index.m_nFile != m_nFile)
    {
        m_nFile = index.m_nFile;
        segment.m_nLead = index.m_nSector;
        m_nOffset = static_cast<long long>(index.m_nSector) * GetStoredBytes(track.m_nMode);
    }
    segment.m_nOffset = m_nOffset;
    return MeasureSegment(track, index, pNext, segment);
}

bool CueLayout::MeasureSegment(const CUE_TRACK& track, const CUE_INDEX& index, const CUE_INDEX* pNext,
                               CUE_SEGMENT& segment)
{
    const int nSectorBytes = GetStoredBytes(track.m_nMode);
    if (pNext != nullptr && pNext->m_nFile == index.m_nFile)
    {
        if (pNext->m_nSector < index.m_nSector)
        {
            m_Error = {pNext->m_nLine, "the time " + FormatSheetTime(pNext->m_nSector) + " lies before " +
                                           FormatSheetTime(index.m_nSector) +
                                           ", where the index ahead of it is; correct the INDEX line"};
            return false;
        }
        segment.m_nStored = static_cast<long long>(pNext->m_nSector - index.m_nSector) * nSectorBytes;
        m_nOffset += segment.m_nStored;
        return true;
    }
    segment.m_nStored = segment.m_pSource->GetBytes() - m_nOffset;
    if (segment.m_nStored > 0 || (segment.m_nStored == 0 && index.m_nNumber == 0))
        return true;
    segment.m_nStored = static_cast<long long>(LOST_TRACK_SECTORS) * nSectorBytes;
    m_Builder.Warn(index.m_nLine, "the file ends before this index; what is missing cannot be read, so copy the file "
                                  "again from where it came from");
    return true;
}

void CueLayout::LoadCDText()
{
    if (m_Sheet.m_strCDTextFile.empty())
        return;
    std::string strContent;
    if (m_Opener.LoadCompanion(m_Sheet.m_strCDTextFile, strContent))
        m_Builder.GetContent().m_aryCDTextPacks = ParseCDTextFile(strContent);
    if (m_Builder.GetContent().m_aryCDTextPacks.empty())
        m_Builder.Warn(m_Sheet.m_nCDTextFileLine, "the CD-Text file " + QuoteWord(m_Sheet.m_strCDTextFile) +
                                                      " was not found or holds no CD-Text, and was left out");
}
} // namespace

std::unique_ptr<DiscImage> BuildCueDisc(const CUE_SHEET& sheet, const std::string& strSheetPath,
                                        ISectorSourceOpener& opener, SHEET_ERROR& error)
{
    return CueLayout(sheet, opener, error).Build(strSheetPath);
}
