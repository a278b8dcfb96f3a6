#include "CcdFile.h"

#include "CRC16.h"
#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace
{
constexpr std::string_view SIGNATURE = "[clonecd]";
constexpr size_t PACK_TEXT_BYTES = 16; // a pack without its check sum
constexpr size_t MAX_PACKS = 8 * 256;  // blocks, and packs of each

// Points of the lead-in beside the track numbers (MMC-3, READ TOC format 2).
constexpr long long POINT_FIRST_TRACK = 0xA0; // its PSEC is the type of the session
constexpr long long POINT_LEAD_OUT = 0xA2;
constexpr int MAX_TRACKS = 99;

std::string_view Trim(std::string_view str)
{
    const size_t nFirst = str.find_first_not_of(" \t\r");
    if (nFirst == std::string_view::npos)
        return {};
    return str.substr(nFirst, str.find_last_not_of(" \t\r") - nFirst + 1);
}

std::string ToLower(std::string_view str)
{
    std::string strLower(str);
    for (char& c : strLower)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c + 0x20);
    return strLower;
}

// A number in decimal or, with 0x, in hexadecimal notation; with a sign. False for anything else.
bool ParseNumber(std::string_view str, long long& nValue)
{
    const std::string strNumber(str);
    char* pEnd = nullptr;
    const bool bHex = strNumber.size() > 2 && strNumber[0] == '0' && (strNumber[1] | 0x20) == 'x';
    nValue = std::strtoll(strNumber.c_str(), &pEnd, bHex ? 16 : 10);
    return !strNumber.empty() && *pEnd == '\0' && nValue >= -DISC_MAX_LBA && nValue <= DISC_MAX_LBA;
}

// One entry of the full table of contents as it comes together from its lines.
struct ENTRY
{
    long long m_nSession = 1;
    long long m_nPoint = -1;
    long long m_nControl = 0;
    long long m_nPSec = 0;
    long long m_nPLBA = 0;
    int m_nLine = 0;
};

class CcdReader
{
public:
    CcdReader(CCD_SHEET& sheet, SHEET_ERROR& error) : m_Sheet(sheet), m_Error(error) {}

    bool Read(const std::string& strText);

private:
    CCD_SHEET& m_Sheet;
    SHEET_ERROR& m_Error;
    std::vector<ENTRY> m_aryEntries;
    std::string m_strSection; // lower case, without its number
    long long m_nSection = 0; // its number
    int m_nLine = 0;

    void BeginSection(std::string_view strName);
    void ReadLine(std::string_view strKey, std::string_view strValue);
    void ReadDiscLine(const std::string& strKey, std::string_view strValue);
    void ReadEntryLine(const std::string& strKey, std::string_view strValue);
    void ReadTrackLine(const std::string& strKey, std::string_view strValue);
    void ReadPack(std::string_view strValue);
    bool TakeEntries();
    bool TakeTrack(const ENTRY& entry);
    bool CheckTracks();
    bool Fail(int nLine, std::string strText);
    void Warn(std::string strText);
};

bool CcdReader::Fail(int nLine, std::string strText)
{
    m_Error = {nLine, std::move(strText)};
    return false;
}

void CcdReader::Warn(std::string strText)
{
    if (m_Sheet.m_aryWarnings.size() < SHEET_MAX_WARNINGS)
        m_Sheet.m_aryWarnings.push_back({m_nLine, std::move(strText)});
}

bool CcdReader::Read(const std::string& strText)
{
    std::string_view strRest = strText;
    while (!strRest.empty())
    {
        ++m_nLine;
        const size_t nEnd = std::min(strRest.find('\n'), strRest.size());
        const std::string_view strLine = Trim(strRest.substr(0, nEnd));
        strRest.remove_prefix(std::min(nEnd + 1, strRest.size()));
        const size_t nEquals = strLine.find('=');
        if (strLine.starts_with('[') && strLine.ends_with(']'))
            BeginSection(strLine.substr(1, strLine.size() - 2));
        else if (nEquals != std::string_view::npos)
            ReadLine(Trim(strLine.substr(0, nEquals)), Trim(strLine.substr(nEquals + 1)));
    }
    return TakeEntries() && CheckTracks();
}

void CcdReader::BeginSection(std::string_view strName)
{
    const std::string strLower = ToLower(Trim(strName));
    const size_t nBlank = strLower.find(' ');
    m_strSection = strLower.substr(0, nBlank);
    m_nSection = 0;
    if (nBlank != std::string::npos && !ParseNumber(Trim(std::string_view(strLower).substr(nBlank)), m_nSection))
        m_nSection = -1;
    if (m_strSection == "entry")
    {
        m_aryEntries.emplace_back();
        m_aryEntries.back().m_nLine = m_nLine;
    }
}

void CcdReader::ReadLine(std::string_view strKey, std::string_view strValue)
{
    const std::string strLower = ToLower(strKey);
    if (m_strSection == "disc")
        ReadDiscLine(strLower, strValue);
    else if (m_strSection == "entry")
        ReadEntryLine(strLower, strValue);
    else if (m_strSection == "track")
        ReadTrackLine(strLower, strValue);
    else if (m_strSection == "cdtext" && strLower.starts_with("entry "))
        ReadPack(strValue);
}

void CcdReader::ReadDiscLine(const std::string& strKey, std::string_view strValue)
{
    long long nValue = 0;
    if (strKey == "datatracksscrambled")
        m_Sheet.m_bScrambled = ParseNumber(strValue, nValue) && nValue != 0;
    if (strKey != "catalog")
        return;
    bool bValid = false;
    m_Sheet.m_strMCN = NormaliseMCN(strValue, bValid);
    if (!bValid)
        Warn("the catalogue number " + QuoteWord(strValue) + " is none, and was left out");
}

void CcdReader::ReadEntryLine(const std::string& strKey, std::string_view strValue)
{
    ENTRY& entry = m_aryEntries.back();
    const std::pair<const char*, long long*> FIELDS[] = {{"session", &entry.m_nSession},
                                                         {"point", &entry.m_nPoint},
                                                         {"control", &entry.m_nControl},
                                                         {"psec", &entry.m_nPSec},
                                                         {"plba", &entry.m_nPLBA}};
    for (const auto& [pName, pValue] : FIELDS)
        if (strKey == pName && !ParseNumber(strValue, *pValue))
        {
            Warn(QuoteWord(strValue) + " is no number; the whole entry was left out");
            entry.m_nPoint = -1;
            entry.m_nSession = -1;
        }
}

void CcdReader::ReadTrackLine(const std::string& strKey, std::string_view strValue)
{
    if (m_nSection < 1 || m_nSection > MAX_TRACKS)
        return;
    CCD_TRACK_DETAILS& details = m_Sheet.m_mapDetails[static_cast<int>(m_nSection)];
    long long nValue = 0;
    long long nIndex = 0;
    if (strKey == "mode" && ParseNumber(strValue, nValue) && nValue >= 0 && nValue <= 2)
        details.m_nMode = static_cast<int>(nValue);
    else if (strKey.starts_with("index ") && ParseNumber(Trim(std::string_view(strKey).substr(6)), nIndex) &&
             nIndex >= 0 && nIndex <= MAX_TRACKS && ParseNumber(strValue, nValue))
        details.m_mapIndexLBAs[static_cast<int>(nIndex)] = static_cast<int>(nValue);
    else if (strKey == "isrc")
    {
        bool bValid = false;
        details.m_strISRC = NormaliseISRC(strValue, bValid);
        if (!bValid)
            Warn("the ISRC " + QuoteWord(strValue) + " is none, and was left out");
    }
}

void CcdReader::ReadPack(std::string_view strValue)
{
    std::vector<unsigned char> pack;
    while (!strValue.empty() && pack.size() <= DISC_CD_TEXT_PACK_BYTES)
    {
        const size_t nEnd = std::min(strValue.find(' '), strValue.size());
        long long nByte = -1;
        if (nEnd > 0 && (!ParseNumber("0x" + std::string(strValue.substr(0, nEnd)), nByte) || nByte < 0 || nByte > 255))
            break;
        if (nEnd > 0)
            pack.push_back(static_cast<unsigned char>(nByte));
        strValue.remove_prefix(std::min(nEnd + 1, strValue.size()));
    }
    const bool bWhole = pack.size() == PACK_TEXT_BYTES || pack.size() == DISC_CD_TEXT_PACK_BYTES;
    if (!strValue.empty() || !bWhole || pack[0] < 0x80 || pack[0] > 0x8F ||
        m_Sheet.m_aryCDTextPacks.size() >= MAX_PACKS * DISC_CD_TEXT_PACK_BYTES)
    {
        Warn("this is no pack of CD-Text, and was left out");
        return;
    }
    pack.resize(PACK_TEXT_BYTES);
    const unsigned short nCRC = GetCRC16(pack.data(), pack.size());
    pack.push_back(static_cast<unsigned char>(nCRC >> 8));
    pack.push_back(static_cast<unsigned char>(nCRC & 0xFF));
    m_Sheet.m_aryCDTextPacks.insert(m_Sheet.m_aryCDTextPacks.end(), pack.begin(), pack.end());
}

bool CcdReader::TakeEntries()
{
    for (const ENTRY& entry : m_aryEntries)
    {
        if (entry.m_nSession < 1 || entry.m_nSession > MAX_TRACKS)
            continue;
        CCD_SESSION& session = m_Sheet.m_mapSessions[static_cast<int>(entry.m_nSession)];
        if (session.m_nLine == 0)
            session.m_nLine = entry.m_nLine;
        if (entry.m_nPoint == POINT_FIRST_TRACK && (entry.m_nPSec == 0x10 || entry.m_nPSec == 0x20))
            session.m_nType = static_cast<DISC_SESSION_TYPE>(entry.m_nPSec);
        else if (entry.m_nPoint == POINT_LEAD_OUT)
            session.m_nLeadOutLBA = static_cast<int>(entry.m_nPLBA);
        else if (entry.m_nPoint >= 1 && entry.m_nPoint <= MAX_TRACKS && !TakeTrack(entry))
            return false;
    }
    return true;
}

bool CcdReader::TakeTrack(const ENTRY& entry)
{
    CCD_TRACK track;
    track.m_nNumber = static_cast<int>(entry.m_nPoint);
    track.m_nSession = static_cast<int>(entry.m_nSession);
    track.m_nStartLBA = static_cast<int>(entry.m_nPLBA);
    track.m_nControl = static_cast<unsigned char>(entry.m_nControl & 0x0F);
    track.m_nLine = entry.m_nLine;
    const std::string strTrack = "track " + std::to_string(track.m_nNumber);
    if (track.m_nStartLBA < 0)
        return Fail(entry.m_nLine, strTrack + " starts ahead of the disc; correct its PLBA");
    if (!m_Sheet.m_aryTracks.empty())
    {
        const CCD_TRACK& before = m_Sheet.m_aryTracks.back();
        if (track.m_nNumber != before.m_nNumber + 1 || track.m_nSession < before.m_nSession ||
            track.m_nStartLBA <= before.m_nStartLBA)
            return Fail(entry.m_nLine, strTrack + " does not follow the track ahead of it; get the file anew, or " +
                                           "correct the entries so that numbers, sessions and addresses rise");
    }
    m_Sheet.m_aryTracks.push_back(track);
    return true;
}

// Every track ends, at the latest, where its session does, and the next session lies behind that.
bool CcdReader::CheckTracks()
{
    if (m_Sheet.m_aryTracks.empty())
        return Fail(0, "the file has no entry for a track; get it anew from where it came from");
    for (size_t n = 0; n < m_Sheet.m_aryTracks.size(); ++n)
    {
        const CCD_TRACK& track = m_Sheet.m_aryTracks[n];
        const int nLeadOut = m_Sheet.m_mapSessions[track.m_nSession].m_nLeadOutLBA;
        if (nLeadOut <= track.m_nStartLBA)
            return Fail(track.m_nLine, "session " + std::to_string(track.m_nSession) +
                                           " has no lead-out (point 0xa2) behind its last track; correct its PLBA");
        if (n + 1 < m_Sheet.m_aryTracks.size())
        {
            const CCD_TRACK& next = m_Sheet.m_aryTracks[n + 1];
            if (next.m_nSession != track.m_nSession && next.m_nStartLBA < nLeadOut)
                return Fail(next.m_nLine, "the track starts within the session ahead of it; correct its PLBA");
        }
    }
    return true;
}
} // namespace

bool LooksLikeCcdFile(const std::string& strText)
{
    const size_t nFirst = strText.find_first_not_of(" \t\r\n");
    return nFirst != std::string::npos && ToLower(strText.substr(nFirst, SIGNATURE.size())) == SIGNATURE;
}

bool ParseCcdFile(const std::string& strText, CCD_SHEET& sheet, SHEET_ERROR& error)
{
    return CcdReader(sheet, error).Read(strText);
}
