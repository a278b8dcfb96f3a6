#include "RipFacts.h"
#include "Disc.h"
#include "DiscIdentifiers.h"
#include "DiscTracks.h"
#include "ReadOffset.h"
#include "Services.h"
#include "Text.h"
#include <algorithm>
#include <filesystem>

namespace
{
constexpr int QUERY_ISRC = 18;
constexpr int QUERY_UPC = 19;
constexpr int QUERY_MAX_SPEED = 29;

// READ SUB-CHANNEL, MMC-3, 6.30: the two formats that tell a code, and the answer.
//
//   0-3 header   4 format   5 ADR, CONTROL   6 track   8 bit 7: the code is there   9- its characters
constexpr unsigned char FORMAT_UPC = 2;
constexpr unsigned char FORMAT_ISRC = 3;
constexpr int CODE_ANSWER_BYTES = 24;
constexpr int CODE_VALID_OFFSET = 8;
constexpr int CODE_OFFSET = 9;
constexpr unsigned char CODE_VALID = 0x80;
constexpr size_t UPC_CHARACTERS = 13;
constexpr size_t ISRC_CHARACTERS = 12;

constexpr int INQUIRY_ANSWER_BYTES = 36;

std::string ReadCode(CTHDriveInterface& drive, unsigned char nFormat, int nTrack, size_t nCharacters)
{
    unsigned char cdb[10] = {CDB_READ_SUB_CHANNEL, 0, SUB_CHANNEL_SUBQ, nFormat};
    cdb[6] = static_cast<unsigned char>(nTrack);
    MMCPut16(cdb + 7, CODE_ANSWER_BYTES);
    unsigned char aryAnswer[CODE_ANSWER_BYTES] = {};
    if (!drive.SendCmd(DRIVE_TRANSFER_IN, cdb, sizeof cdb, aryAnswer, CODE_ANSWER_BYTES,
                       CTHDriveInterface::CD_TIMEOUT_MS, false) ||
        (aryAnswer[CODE_VALID_OFFSET] & CODE_VALID) == 0)
        return {};
    const std::string strCode(reinterpret_cast<const char*>(aryAnswer + CODE_OFFSET), nCharacters);
    const bool bCode = std::all_of(strCode.begin(), strCode.end(),
                                   [](char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z'); });
    const bool bZeros = strCode.find_first_not_of('0') == std::string::npos; // drives say so for none
    return bCode && !bZeros ? strCode : std::string();
}

bool HasCapability(CTHDriveInterface& drive, int nCode)
{
    unsigned int nValue = 0;
    return drive.QueryCDParms(nCode, nValue) && nValue != 0;
}

std::string ReadRevision(CTHDriveInterface& drive)
{
    const unsigned char cdb[6] = {CDB_INQUIRY, 0, 0, 0, INQUIRY_ANSWER_BYTES, 0};
    unsigned char aryAnswer[INQUIRY_ANSWER_BYTES] = {};
    if (!drive.SendCmd(DRIVE_TRANSFER_IN, cdb, sizeof cdb, aryAnswer, INQUIRY_ANSWER_BYTES,
                       CTHDriveInterface::CD_TIMEOUT_MS, false))
        return {};
    std::string strRevision(reinterpret_cast<const char*>(aryAnswer + INQUIRY_OFFSET_REVISION), INQUIRY_REVISION_BYTES);
    while (!strRevision.empty() && (strRevision.back() == ' ' || strRevision.back() == '\0'))
        strRevision.pop_back();
    return strRevision;
}

// A letter as the path that it stands for.
std::string ResolveLetter(const std::string& strPath)
{
    if (strPath.size() != 2 || strPath[1] != ':')
        return strPath;
    for (const LISTED_DRIVE& drive : ListDrives())
        if (drive.strLetter == strPath)
            return drive.strPath;
    return strPath;
}

std::string TrimmedText(const LyString& str)
{
    std::string strText = Narrow(str);
    while (strText.ends_with(' '))
        strText.pop_back();
    return strText;
}

CD_LAYOUT MakeLayout(const std::vector<TTrackList>& aryTracks)
{
    CD_LAYOUT layout;
    for (const TTrackList& track : aryTracks)
        layout.Add(track.nStartSector, track.bDataTrack != 0);
    if (!aryTracks.empty())
        layout.Finish(aryTracks.back().nStartSector + aryTracks.back().nSectors);
    for (size_t i = 0; i < layout.m_aryTracks.size() && i < aryTracks.size(); ++i)
        layout.m_aryTracks[i].m_nNumber = aryTracks[i].nTrackNumber;
    return layout;
}
} // namespace

RIP_DRIVE FindDriveFacts(CCDRipper& ripper, const std::string& strDisc)
{
    RIP_DRIVE facts;
    facts.strPath = ResolveLetter(GetFullName(strDisc));
    DRIVE_INFO info;
    (void)ripper.m_pDrive->GetDriveInfo(info);
    facts.strVendor = TrimmedText(info.m_strVendor);
    facts.strModel = TrimmedText(info.m_strModel);
    facts.strRevision = ReadRevision(*ripper.m_pDrive);
    std::error_code error;
    facts.bImage = std::filesystem::is_regular_file(facts.strPath, error) || facts.strPath.starts_with("file:");
    const std::filesystem::path profile = facts.strPath + ".drive";
    if (facts.strPath.ends_with(".drive"))
        facts.strProfile = std::filesystem::path(facts.strPath).filename().string();
    else if (std::filesystem::is_regular_file(profile, error))
        facts.strProfile = profile.filename().string();
    facts.nReadOffset = FindReadOffset(Narrow(info.m_strVendor), Narrow(info.m_strModel));
    unsigned int nSpeed = 0;
    if (ripper.m_pDrive->QueryCDParms(QUERY_MAX_SPEED, nSpeed))
        facts.nMaxSpeed = static_cast<int>(nSpeed);
    return facts;
}

RIP_DISC FindDiscFacts(CCDRipper& ripper)
{
    CSCSICD& cd = *ripper.m_pReader->m_pCD;
    (void)cd.ReadCDText();
    RIP_DISC facts;
    facts.strTitle = Narrow(cd.m_strDiscTitle);
    facts.strPerformer = Narrow(cd.m_strDiscPerformer);
    if (HasCapability(*ripper.m_pDrive, QUERY_UPC))
        facts.strUPC = ReadCode(*ripper.m_pDrive, FORMAT_UPC, 0, UPC_CHARACTERS);
    facts.layout = MakeLayout(GetTrackList(cd));
    facts.strAccurateRipID = GetAccurateRipText(facts.layout);
    facts.strCDDBID = GetCDDBText(facts.layout);
    facts.strMusicBrainzID = GetMusicBrainzID(facts.layout);
    facts.strCTDBID = GetCTDBText(facts.layout);
    return facts;
}

void FindPieceFacts(CCDRipper& ripper, std::vector<RIP_PIECE>& aryPieces)
{
    const CSCSICD& cd = *ripper.m_pReader->m_pCD;
    const bool bISRC = HasCapability(*ripper.m_pDrive, QUERY_ISRC);
    for (RIP_PIECE& piece : aryPieces)
    {
        if (piece.nTrack == 0)
            continue;
        piece.strTitle = GetTrackText(cd.m_TrackTitles, piece.nTrack);
        piece.strPerformer = GetTrackText(cd.m_TrackPerformers, piece.nTrack);
        if (bISRC)
            piece.strISRC = ReadCode(*ripper.m_pDrive, FORMAT_ISRC, piece.nTrack, ISRC_CHARACTERS);
    }
}
