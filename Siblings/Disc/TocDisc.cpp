#include "TocDisc.h"

#include "DiscBuilder.h"
#include "PathResolve.h"
#include "SectorFrame.h"
#include "TextDecode.h"

namespace
{
// Names by which a file is known to be an audio file, so that a broken one is refused and not played as noise.
constexpr std::string_view s_aryAudioExtensions[] = {".wav", ".flac", ".aiff", ".aif", ".ogg", ".mp3"};

SECTOR_SOURCE_KIND GetKind(const TOC_PIECE& piece)
{
    if (piece.m_nType == TOC_PIECE_DATA)
        return SECTOR_SOURCE_DATA;
    for (std::string_view strExtension : s_aryAudioExtensions)
        if (EqualNoCase(GetNameExtension(piece.m_strName), strExtension))
            return piece.m_bSwap ? SECTOR_SOURCE_AUDIO_SWAPPED : SECTOR_SOURCE_AUDIO;
    // Raw samples are big-endian in these files unless the statement says otherwise.
    return piece.m_bSwap ? SECTOR_SOURCE_RAW : SECTOR_SOURCE_RAW_SWAPPED;
}

class TocLayout
{
public:
    TocLayout(const TOC_SHEET& sheet, ISectorSourceOpener& opener, SHEET_ERROR& error)
        : m_Sheet(sheet), m_Error(error), m_Builder(opener)
    {
    }

    std::unique_ptr<DiscImage> Build(const std::string& strSheetPath)
    {
        for (const SHEET_ERROR& warning : m_Sheet.m_aryWarnings)
            m_Builder.Warn(warning.m_nLine, warning.m_strText);
        int nNumber = m_Sheet.m_nFirstTrack;
        for (const TOC_TRACK& track : m_Sheet.m_aryTracks)
            if (!AddTrack(track, nNumber++))
                return nullptr;
        m_Builder.GetContent().m_strMCN = m_Sheet.m_strMCN;
        m_Builder.GetContent().m_Text = m_Sheet.m_Text;
        return m_Builder.Finish(strSheetPath, m_Error);
    }

private:
    const TOC_SHEET& m_Sheet;
    SHEET_ERROR& m_Error;
    DiscBuilder m_Builder;

    // In bytes of the source.
    static long long ToStored(const TOC_AMOUNT& amount, DISC_TRACK_MODE mode)
    {
        if (amount.m_bSectors)
            return amount.m_nValue * GetStoredBytes(mode);
        return mode == DISC_AUDIO ? amount.m_nValue * LY_CD_FRAME_BYTES : amount.m_nValue;
    }

    bool AddTrack(const TOC_TRACK& track, int nNumber);
    bool AddPiece(const TOC_PIECE& piece);
    void AddSilence(const TOC_PIECE& piece);
};

bool TocLayout::AddTrack(const TOC_TRACK& track, int nNumber)
{
    DISC_TRACK disc;
    disc.m_nNumber = nNumber;
    disc.m_nControl = track.m_nControl;
    disc.m_nMode = track.m_nMode;
    disc.m_strISRC = track.m_strISRC;
    disc.m_Text = track.m_Text;
    bool bMode2 = track.m_nMode != DISC_AUDIO && track.m_nMode != DISC_MODE1_2048 && track.m_nMode != DISC_MODE1_2352;
    DISC_SESSION_TYPE type = bMode2 ? DISC_SESSION_CDROM_XA : DISC_SESSION_CDDA_OR_CDROM;
    m_Builder.BeginTrack(std::move(disc), m_Sheet.m_nType > type ? m_Sheet.m_nType : type, track.m_nLine);

    int nFirst = m_Builder.GetLBA();
    int nStart = nFirst;
    for (size_t n = 0; n < track.m_aryPieces.size(); n++)
    {
        if (!AddPiece(track.m_aryPieces[n]))
            return false;
        if (n + 1 == static_cast<size_t>(track.m_nStartPiece))
            nStart = m_Builder.GetLBA();
    }
    if (track.m_nStartSector >= 0)
        nStart = nFirst + track.m_nStartSector;
    m_Builder.MarkStart(nStart);
    for (int nIndex : track.m_aryIndexes)
        m_Builder.MarkIndex(nStart + nIndex);
    return true;
}

void TocLayout::AddSilence(const TOC_PIECE& piece)
{
    DISC_TRACK_MODE mode = m_Builder.GetTrack().m_nMode;
    long long nStored = ToStored(piece.m_Length, mode);
    int nSectorBytes = GetStoredBytes(mode);
    if (mode == DISC_AUDIO)
        m_Builder.AddSilence(nStored);
    else
        m_Builder.AddSilence((nStored + nSectorBytes - 1) / nSectorBytes * LY_CD_SECTOR_BYTES);
}

bool TocLayout::AddPiece(const TOC_PIECE& piece)
{
    if (piece.m_nType == TOC_PIECE_SILENCE)
    {
        AddSilence(piece);
        return true;
    }
    SectorSource* pSource = m_Builder.OpenSource(piece.m_strName, GetKind(piece), piece.m_nLine, m_Error);
    if (pSource == nullptr)
        return false;
    DISC_TRACK_MODE mode = m_Builder.GetTrack().m_nMode;
    long long nOffset = piece.m_nByteOffset + ToStored(piece.m_Start, mode);
    long long nStored = ToStored(piece.m_Length, mode);
    long long nThere = pSource->GetBytes() - nOffset;
    if (nStored == 0 && nThere <= 0)
    {
        m_Error = {piece.m_nLine, "the piece starts behind the end of " + QuoteWord(piece.m_strName) +
                                      "; correct its start, or copy the file again from where it came from"};
        return false;
    }
    if (nStored > nThere)
        m_Builder.Warn(piece.m_nLine, "the file " + QuoteWord(piece.m_strName) +
                                          " ends before this piece does; what is missing cannot be read, so copy the "
                                          "file again from where it came from");
    m_Builder.AddSource(pSource, nOffset, nStored > 0 ? nStored : nThere);
    return true;
}
} // namespace

std::unique_ptr<DiscImage> BuildTocDisc(const TOC_SHEET& sheet, const std::string& strSheetPath,
                                        ISectorSourceOpener& opener, SHEET_ERROR& error)
{
    return TocLayout(sheet, opener, error).Build(strSheetPath);
}
