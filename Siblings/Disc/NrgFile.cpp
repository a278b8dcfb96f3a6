#include "NrgFile.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <string_view>

namespace
{
constexpr int CHUNK_HEADER_BYTES = 8;
constexpr int CUE_ENTRY_BYTES = 8;
constexpr int DAO_HEADER_BYTES = 22;
constexpr int MAX_TRACKS = 99;
constexpr unsigned char TRACK_LEAD_OUT = 0xAA;
constexpr int SECTOR_WITH_SUB_BYTES = 2448;

// The form of a track's sectors, as DAO and ETN chunks number it.
struct TRACK_FORM
{
    int m_nForm;
    DISC_TRACK_MODE m_nMode;
    int m_nSectorBytes;
};
constexpr TRACK_FORM FORMS[] = {
    {0x00, DISC_MODE1_2048, 2048},
    {0x02, DISC_MODE2_2048, 2048},
    {0x03, DISC_MODE2_2336, 2336},
    {0x05, DISC_MODE1_2352, 2352},
    {0x06, DISC_MODE2_2352, 2352},
    {0x07, DISC_AUDIO, 2352},
    {0x0F, DISC_MODE1_2352, SECTOR_WITH_SUB_BYTES},
    {0x10, DISC_AUDIO, SECTOR_WITH_SUB_BYTES},
    {0x11, DISC_MODE2_2352, SECTOR_WITH_SUB_BYTES},
};

int FromBCD(unsigned char c) { return (c >> 4) <= 9 && (c & 15) <= 9 ? (c >> 4) * 10 + (c & 15) : -1; }

long long GetNumber(const unsigned char* p, int nBytes)
{
    unsigned long long nValue = 0;
    for (int i = 0; i < nBytes; ++i)
        nValue = nValue << 8 | p[i];
    // What does not fit is no offset of any file.
    return nValue > 0x7FFFFFFFFFFFFFFFULL ? -1 : static_cast<long long>(nValue);
}

class NrgReader
{
public:
    NrgReader(long long nFileBytes, NRG_SHEET& sheet, SHEET_ERROR& error)
        : m_nFileBytes(nFileBytes), m_Sheet(sheet), m_Error(error)
    {
    }
    bool Read(const std::vector<unsigned char>& chunks);

private:
    struct CUE_POINTS
    {
        unsigned char m_nControl = 0;
        int m_nStartLBA = -1;
        std::vector<int> m_aryIndexLBAs;
    };

    const long long m_nFileBytes;
    NRG_SHEET& m_Sheet;
    SHEET_ERROR& m_Error;
    std::map<int, CUE_POINTS> m_mapPoints;
    int m_nSession = 1;
    size_t m_nFirstOfSession = 0;

    bool ReadChunk(std::string_view strName, const unsigned char* p, int nBytes);
    void ReadCue(const unsigned char* p, int nBytes, bool bMSF);
    bool ReadDAO(const unsigned char* p, int nBytes, int nOffsetBytes);
    bool ReadTAO(const unsigned char* p, int nBytes, int nOffsetBytes);
    bool AddTrack(NRG_TRACK track, int nForm, int nSectorBytes);
    void ReadText(const unsigned char* p, int nBytes);
    void EndSession();
    void TakePoints();
    bool Fail(std::string strText);
};

bool NrgReader::Fail(std::string strText)
{
    m_Error = {0, std::move(strText)};
    return false;
}

bool NrgReader::Read(const std::vector<unsigned char>& chunks)
{
    size_t nAt = 0;
    while (chunks.size() - nAt >= CHUNK_HEADER_BYTES)
    {
        const unsigned char* p = chunks.data() + nAt;
        const std::string_view strName(reinterpret_cast<const char*>(p), 4);
        const long long nBytes = GetNumber(p + 4, 4);
        nAt += CHUNK_HEADER_BYTES;
        if (strName == "END!")
            break;
        if (nBytes > static_cast<long long>(chunks.size() - nAt))
            return Fail("a chunk at the end of the file goes beyond it; copy the file again from where it came from");
        if (!ReadChunk(strName, p + CHUNK_HEADER_BYTES, static_cast<int>(nBytes)))
            return false;
        nAt += static_cast<size_t>(nBytes);
    }
    TakePoints();
    return !m_Sheet.m_aryTracks.empty() || Fail("the file describes no track; copy it again from where it came from");
}

bool NrgReader::ReadChunk(std::string_view strName, const unsigned char* p, int nBytes)
{
    if (strName == "CUEX" || strName == "CUES")
        ReadCue(p, nBytes, strName == "CUES");
    else if (strName == "DAOX")
        return ReadDAO(p, nBytes, 8);
    else if (strName == "DAOI")
        return ReadDAO(p, nBytes, 4);
    else if (strName == "ETN2")
        return ReadTAO(p, nBytes, 8);
    else if (strName == "ETNF")
        return ReadTAO(p, nBytes, 4);
    else if (strName == "SINF")
        EndSession();
    else if (strName == "CDTX")
        ReadText(p, nBytes);
    return true;
}

void NrgReader::ReadCue(const unsigned char* p, int nBytes, bool bMSF)
{
    for (int nAt = 0; nAt + CUE_ENTRY_BYTES <= nBytes; nAt += CUE_ENTRY_BYTES)
    {
        const unsigned char* pEntry = p + nAt;
        const int nTrack = FromBCD(pEntry[1]);
        const int nIndex = FromBCD(pEntry[2]);
        if (pEntry[1] == TRACK_LEAD_OUT || nTrack < 1 || nIndex < 1)
            continue;
        long long nLBA = static_cast<int>(static_cast<unsigned int>(GetNumber(pEntry + 4, 4)));
        if (bMSF)
            nLBA = (FromBCD(pEntry[5]) * 60 + FromBCD(pEntry[6])) * LY_CD_SECTORS_PER_SECOND + FromBCD(pEntry[7]) -
                   LY_CD_MSF_OFFSET;
        CUE_POINTS& points = m_mapPoints[nTrack];
        if (nIndex == 1)
        {
            points.m_nControl = pEntry[0] >> 4;
            points.m_nStartLBA = nLBA >= 0 && nLBA <= DISC_MAX_LBA ? static_cast<int>(nLBA) : -1;
        }
        else if (nLBA >= 0 && nLBA <= DISC_MAX_LBA && points.m_aryIndexLBAs.size() < MAX_TRACKS)
            points.m_aryIndexLBAs.push_back(static_cast<int>(nLBA));
    }
}

bool NrgReader::ReadDAO(const unsigned char* p, int nBytes, int nOffsetBytes)
{
    const int nTrackBytes = 18 + 3 * nOffsetBytes;
    if (nBytes < DAO_HEADER_BYTES)
        return Fail("the description of the tracks is cut short; copy the file again from where it came from");
    bool bValid = false;
    const std::string strMCN(reinterpret_cast<const char*>(p) + 4, 13);
    if (m_Sheet.m_strMCN.empty())
        m_Sheet.m_strMCN = NormaliseMCN(strMCN, bValid);
    int nNumber = p[20];
    for (int nAt = DAO_HEADER_BYTES; nAt + nTrackBytes <= nBytes; nAt += nTrackBytes)
    {
        const unsigned char* pTrack = p + nAt;
        NRG_TRACK track;
        track.m_nNumber = nNumber++;
        track.m_strISRC = NormaliseISRC(std::string(reinterpret_cast<const char*>(pTrack), 12), bValid);
        track.m_nPregapOffset = GetNumber(pTrack + 18, nOffsetBytes);
        track.m_nStartOffset = GetNumber(pTrack + 18 + nOffsetBytes, nOffsetBytes);
        track.m_nEndOffset = GetNumber(pTrack + 18 + 2 * nOffsetBytes, nOffsetBytes);
        if (!AddTrack(std::move(track), pTrack[14], static_cast<int>(GetNumber(pTrack + 12, 2))))
            return false;
    }
    return true;
}

bool NrgReader::ReadTAO(const unsigned char* p, int nBytes, int nOffsetBytes)
{
    const int nTrackBytes = nOffsetBytes == 8 ? 32 : 20;
    for (int nAt = 0; nAt + nTrackBytes <= nBytes; nAt += nTrackBytes)
    {
        const unsigned char* pTrack = p + nAt;
        NRG_TRACK track;
        track.m_nNumber = static_cast<int>(m_Sheet.m_aryTracks.size()) + 1;
        track.m_nPregapOffset = track.m_nStartOffset = GetNumber(pTrack, nOffsetBytes);
        const long long nLength = GetNumber(pTrack + nOffsetBytes, nOffsetBytes);
        // Taken as a difference: the sum of two numbers that each fit the file may still be too large for any.
        const bool bInside =
            nLength >= 0 && track.m_nStartOffset >= 0 && nLength <= m_nFileBytes - track.m_nStartOffset;
        track.m_nEndOffset = bInside ? track.m_nStartOffset + nLength : -1;
        const long long nLBA = GetNumber(pTrack + 2 * nOffsetBytes + 4, 4);
        track.m_nStartLBA = nLBA <= DISC_MAX_LBA ? static_cast<int>(nLBA) : -1;
        if (!AddTrack(std::move(track), static_cast<int>(GetNumber(pTrack + 2 * nOffsetBytes, 4) & 0xFF), 0))
            return false;
    }
    return true;
}

bool NrgReader::AddTrack(NRG_TRACK track, int nForm, int nSectorBytes)
{
    const std::string strTrack = "track " + std::to_string(track.m_nNumber);
    const TRACK_FORM* pForm =
        std::find_if(std::begin(FORMS), std::end(FORMS), [&](const TRACK_FORM& form) { return form.m_nForm == nForm; });
    if (pForm == std::end(FORMS) || (nSectorBytes != 0 && nSectorBytes != pForm->m_nSectorBytes))
        return Fail(strTrack + " has sectors of an unknown form (" + std::to_string(nForm) + ", " +
                    std::to_string(nSectorBytes) + " bytes); convert the image to CUE/BIN with another program");
    const bool bOrdered = track.m_nPregapOffset >= 0 && track.m_nPregapOffset <= track.m_nStartOffset &&
                          track.m_nStartOffset < track.m_nEndOffset && track.m_nEndOffset <= m_nFileBytes;
    if (!bOrdered)
        return Fail(strTrack + " lies beyond the file; copy the file again from where it came from");
    const bool bFollows = m_Sheet.m_aryTracks.empty() || track.m_nNumber == m_Sheet.m_aryTracks.back().m_nNumber + 1;
    if (!bFollows || track.m_nNumber < 1 || track.m_nNumber > MAX_TRACKS)
        return Fail(strTrack + " does not follow the track ahead of it; copy the file again from where it came from");
    track.m_nMode = pForm->m_nMode;
    track.m_nSectorBytes = pForm->m_nSectorBytes;
    track.m_nControl = track.m_nMode == DISC_AUDIO ? 0 : TRACK_CONTROL_DATA;
    track.m_nSession = m_nSession;
    m_Sheet.m_aryTracks.push_back(std::move(track));
    return true;
}

// A session's chunks stand between the one that ends the session before and the one that ends it.
void NrgReader::EndSession()
{
    if (m_Sheet.m_aryTracks.size() > m_nFirstOfSession)
        ++m_nSession;
    m_nFirstOfSession = m_Sheet.m_aryTracks.size();
}

void NrgReader::TakePoints()
{
    for (NRG_TRACK& track : m_Sheet.m_aryTracks)
    {
        const auto pPoints = m_mapPoints.find(track.m_nNumber);
        if (pPoints == m_mapPoints.end())
            continue;
        const unsigned char nData = track.m_nControl & TRACK_CONTROL_DATA;
        track.m_nControl = static_cast<unsigned char>((pPoints->second.m_nControl & ~TRACK_CONTROL_DATA) | nData);
        track.m_nStartLBA = pPoints->second.m_nStartLBA;
        track.m_aryIndexLBAs = pPoints->second.m_aryIndexLBAs;
    }
}

void NrgReader::ReadText(const unsigned char* p, int nBytes)
{
    m_Sheet.m_aryCDTextPacks.clear();
    for (int nAt = 0; nAt + DISC_CD_TEXT_PACK_BYTES <= nBytes; nAt += DISC_CD_TEXT_PACK_BYTES)
        if (p[nAt] >= 0x80 && p[nAt] <= 0x8F)
            m_Sheet.m_aryCDTextPacks.insert(m_Sheet.m_aryCDTextPacks.end(), p + nAt, p + nAt + DISC_CD_TEXT_PACK_BYTES);
}
} // namespace

bool FindNrgChunks(SectorSource& source, long long& nChunks)
{
    unsigned char aryFooter[12] = {};
    const long long nBytes = source.GetBytes();
    if (nBytes < static_cast<long long>(sizeof aryFooter) ||
        source.Read(nBytes - static_cast<long long>(sizeof aryFooter), aryFooter, sizeof aryFooter) != sizeof aryFooter)
        return false;
    if (std::memcmp(aryFooter, "NER5", 4) == 0)
        nChunks = GetNumber(aryFooter + 4, 8);
    else if (std::memcmp(aryFooter + 4, "NERO", 4) == 0)
        nChunks = GetNumber(aryFooter + 8, 4);
    else
        return false;
    return nChunks > 0 && nChunks < nBytes;
}

bool ParseNrgChunks(const std::vector<unsigned char>& chunks, long long nFileBytes, NRG_SHEET& sheet,
                    SHEET_ERROR& error)
{
    return NrgReader(nFileBytes, sheet, error).Read(chunks);
}
