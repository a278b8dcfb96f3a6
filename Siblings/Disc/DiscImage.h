// A disc read from an image: one model of tracks, sessions and texts, and its sectors.
//
// Shape:   tracks in ascending order, their numbers rising by one from a first number of 1 to 99; sessions in ascending
//          order, each with one track at least. Extents cover the program area without overlap; between the lead-out
//          of one session and the pregap of the next there is a hole, where no sector can be read.
// Units:   addresses are logical block addresses (LBA): 0 is MSF 00:02:00. Sectors are LY_CD_SECTOR_BYTES (2352).
//          Audio is little-endian, 16-bit, stereo, interleaved. Texts are UTF-8.
// Errors:  a null pointer and one English sentence from Open; a status and a count from ReadSectors.
// Memory:  ReadSectors allocates nothing: sectors go from the file straight into the caller's buffer.
// Threads: one at a time. Different images have nothing in common.
// Sources: IEC 60908 (tracks, Q sub-channel), ECMA-130 (data sectors), MMC-3 (disc type, CD-Text packs).

#pragma once

#include "CDUnits.h"
#include "MMC.h"
#include "SectorSource.h"
#include <memory>
#include <string>
#include <vector>

// What a track's sectors are, and in which form the image stores them. The number is the bytes of one stored sector.
enum DISC_TRACK_MODE : unsigned char
{
    DISC_AUDIO,      // 2352: samples
    DISC_MODE1_2048, // user data only
    DISC_MODE1_2352, // the whole sector: sync, header, user data, EDC, ECC
    DISC_MODE2_2048, // XA form 1, user data only
    DISC_MODE2_2324, // XA form 2, user data only
    DISC_MODE2_2336, // all behind the header: formless data, or XA subheader and data of either form
    DISC_MODE2_2352  // the whole sector
};

// Kinds of session, as the A0 point of the raw table of contents carries them (MMC-3, "disc type").
enum DISC_SESSION_TYPE : unsigned char
{
    DISC_SESSION_CDDA_OR_CDROM = 0x00,
    DISC_SESSION_CDI = 0x10,
    DISC_SESSION_CDROM_XA = 0x20
};

constexpr int DISC_SUBHEADER_SECTOR_OFFSET = 16;              // where a data sector goes on behind sync and header
constexpr int DISC_FIRST_PREGAP_SECTORS = LY_CD_MSF_OFFSET;   // every disc starts with these; no image holds them
constexpr int DISC_FIRST_LEAD_OUT_SECTORS = 6750;             // 90 s, behind the first session
constexpr int DISC_LATER_LEAD_OUT_SECTORS = 2250;             // 30 s, behind each session after that
constexpr int DISC_LEAD_IN_SECTORS = 4500;                    // 60 s, ahead of each session after the first
constexpr int DISC_SESSION_PREGAP_SECTORS = LY_CD_MSF_OFFSET; // 2 s, ahead of the first track of such a session
constexpr int DISC_MAX_LBA = (99 * 60 + 59) * LY_CD_SECTORS_PER_SECOND + 74 - LY_CD_MSF_OFFSET; // MSF 99:59:74
static_assert(DISC_FIRST_LEAD_OUT_SECTORS + DISC_LEAD_IN_SECTORS + DISC_SESSION_PREGAP_SECTORS == 11400);

constexpr int DISC_CD_TEXT_PACK_BYTES = 18; // MMC-3, annex J: type, track, sequence, block, 12 of text, CRC

// CD-Text of the disc or of one track, first language. Empty where nothing is known.
struct DISC_TEXT
{
    std::string m_strTitle;      // pack type 80h
    std::string m_strPerformer;  // 81h
    std::string m_strSongwriter; // 82h
    std::string m_strComposer;   // 83h
    std::string m_strArranger;   // 84h
    std::string m_strMessage;    // 85h
    std::string m_strDiscId;     // 86h, disc only
};

struct DISC_TRACK
{
    int m_nNumber = 0;               // 1 to 99
    int m_nSession = 1;              // number of the session that it belongs to
    int m_nPregapLBA = 0;            // INDEX 00; equals m_nStartLBA without a pregap. -150 for a disc's first track
    int m_nStartLBA = 0;             // INDEX 01: the address in the table of contents
    int m_nSectors = 0;              // from INDEX 01 to the next track's INDEX 00 or the session's lead-out
    std::vector<int> m_aryIndexLBAs; // INDEX 02 and higher, ascending
    unsigned char m_nControl = 0;    // bits of TRACK_CONTROL
    DISC_TRACK_MODE m_nMode = DISC_AUDIO; // of every sector of the track
    std::string m_strISRC;                // 12 characters, or empty
    DISC_TEXT m_Text;

    bool IsData() const { return (m_nControl & TRACK_CONTROL_DATA) != 0; }
    int GetEndLBA() const { return m_nStartLBA + m_nSectors; } // one past the last sector
};

struct DISC_SESSION
{
    int m_nNumber = 1;
    int m_nFirstTrack = 0; // track numbers
    int m_nLastTrack = 0;
    int m_nLeadOutLBA = 0; // one past the session's last sector
    DISC_SESSION_TYPE m_nType = DISC_SESSION_CDDA_OR_CDROM;
};

// A stretch of the disc that one source holds, or nobody: without a source it is silence, or empty data sectors.
struct DISC_EXTENT
{
    long long m_nPosition = 0;            // on the disc, LBA times 2352; a data extent starts on a sector
    long long m_nBytes = 0;               // on the disc, 2352 for each sector; of audio, a multiple of 4
    SectorSource* m_pSource = nullptr;    // owned by the content
    long long m_nSourceOffset = 0;        // first byte in the source
    long long m_nSourceBytes = 0;         // what is taken from the source; the rest of the extent is zero
    DISC_TRACK_MODE m_nMode = DISC_AUDIO; // how the source stores a sector

    long long GetEnd() const { return m_nPosition + m_nBytes; }
};

// Everything that a DiscImage is made of. The readers of CUE sheets and TOC files fill it; so may a test.
struct DISC_CONTENT
{
    std::vector<DISC_TRACK> m_aryTracks;
    std::vector<DISC_SESSION> m_arySessions;
    std::vector<DISC_EXTENT> m_aryExtents; // ascending, from position -150 * 2352 on
    std::vector<std::unique_ptr<SectorSource>> m_arySources;
    std::string m_strMCN; // 13 digits, or empty
    DISC_TEXT m_Text;
    std::vector<unsigned char> m_aryCDTextPacks; // whole packs of 18 bytes as a file gave them, no header; or empty
    std::vector<std::string> m_aryWarnings;      // sentences on what was tolerated or left out
};

// How a read ended.
enum READ_STATUS : unsigned char
{
    READ_GOOD,        // all sectors are there
    READ_OUTSIDE,     // the next sector lies before the disc's first pregap or behind its last lead-out
    READ_BETWEEN,     // the next sector lies in a lead-out or lead-in between two sessions
    READ_UNREADABLE,  // the image does not hold the next sector, or its file is damaged there
    READ_BAD_ARGUMENT // a negative count, or no buffer
};

struct READ_RESULT
{
    READ_STATUS m_nStatus = READ_GOOD;
    int m_nSectors = 0; // good sectors at the start of the buffer; what lies behind them is undefined

    bool IsGood() const { return m_nStatus == READ_GOOD; }
};

// Where a sector lies, as the Q sub-channel tells it.
struct DISC_PLACE
{
    const DISC_TRACK* m_pTrack = nullptr; // null outside the program areas
    int m_nIndex = 0;                     // 0 in a pregap, else 1 to 99
};

class DiscImage
{
public:
    // Takes the content as it is; it must keep the shape told above.
    explicit DiscImage(DISC_CONTENT content);
    ~DiscImage() = default;
    DiscImage(const DiscImage&) = delete;
    DiscImage& operator=(const DiscImage&) = delete;

    // Opens a CUE sheet, a TOC file, a CCD file or an NRG file, known by its content, and all that it names. On failure
    // null, and in strError one sentence that names the file, the line where there is one, and a way out.
    static std::unique_ptr<DiscImage> Open(const std::string& strPath, std::string& strError);

    const std::vector<DISC_TRACK>& GetTracks() const { return m_Content.m_aryTracks; }
    const std::vector<DISC_SESSION>& GetSessions() const { return m_Content.m_arySessions; }
    int GetFirstTrackNumber() const; // 0 on a disc without tracks, which Open never gives
    int GetLastTrackNumber() const;
    int GetLeadOutLBA() const; // of the last session
    const DISC_TRACK* FindTrack(int nNumber) const;
    DISC_PLACE Locate(int nLBA) const;

    const std::string& GetMCN() const { return m_Content.m_strMCN; }
    const DISC_TEXT& GetText() const { return m_Content.m_Text; }
    const std::vector<unsigned char>& GetCDTextPacks() const { return m_Content.m_aryCDTextPacks; }
    const std::vector<std::string>& GetWarnings() const { return m_Content.m_aryWarnings; }

    // Reads nCount sectors of 2352 bytes from nLBA (-150 and up) into pBuffer. A data sector comes whole: where the
    // image stores only a part of it, sync, header and subheader are made up, and EDC and ECC stay zero. pForms, if
    // given, takes nCount entries: the form in which the image stores each sector, that is, which bytes are its own.
    READ_RESULT ReadSectors(int nLBA, int nCount, unsigned char* pBuffer, DISC_TRACK_MODE* pForms = nullptr);

private:
    DISC_CONTENT m_Content;
    size_t m_nExtent = 0; // where the last read ended: the next one mostly starts there

    bool FindExtent(long long nPosition);
    READ_STATUS GetHoleStatus(long long nPosition) const;
};
