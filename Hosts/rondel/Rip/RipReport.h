// RipReport: all that is known of a rip when it ends: what was read, how it went, what came out. The text log, the JSON
// log, the HTML report and the state of a rip that was broken off are made of it, so that they say the same.
//
// Shape:   plain records. Texts are UTF-8. File names are relative to the folder of the report.
// Units:   sectors at logical block addresses; dB, LU, LUFS, dBFS and dBTP as named; seconds.
// Unknown: an empty optional, an empty text. A sum of 0 is one that is not known, and never matches.
// Threads: one at a time.

#pragma once

#include "AccurateRipVerify.h"
#include "CTDBVerify.h"
#include "DiscChecksums.h"
#include "SecureRipLog.h"
#include <optional>
#include <string>
#include <utility>
#include <vector>

// Where the audio of a rip came from.
struct RIP_DRIVE
{
    std::string strPath;
    std::string strVendor;
    std::string strModel;
    std::string strRevision;
    bool bImage = false;
    std::string strProfile;      // of a drive that is played by a profile; empty for others
    int nCacheSectors = 0;       // that the rip reckoned with
    bool bCacheMeasured = false; // else it was told, or is the buffer that the drive declares
    bool bAccurateStream = false;
    int nReadOffset = 0; // sample frames by which the service corrects it
    int nMaxSpeed = 0;   // as the drive declares it, times; 0: it does not
};

struct RIP_DISC
{
    std::string strTitle;
    std::string strPerformer;
    std::string strUPC;
    CD_LAYOUT layout;
    std::string strAccurateRipID; // "id1-id2-cddb"
    std::string strCDDBID;
    std::string strMusicBrainzID;
    std::string strCTDBID;
};

// A file that came out, of a piece or of the whole rip.
struct RIP_FILE
{
    std::string strName;     // relative, with /
    std::string strEncoder;  // "wav", "flac", ...
    std::string strLibrary;  // and its version, or empty
    std::string strSettings; //
    long long nBytes = 0;
    std::string strSHA256; // of all bytes, lower-case hexadecimal digits; a WAV file has the other one
    std::string strCRC32;  // of a WAV file: of all bytes, eight upper-case digits; others have none
    std::string strError;  // why there is no such file; then there are no bytes and no sum
};

struct RIP_LOUDNESS
{
    double fIntegrated = 0;            // LUFS; minus infinity for silence, as the next two
    double fMomentaryMax = 0;          // LUFS
    double fShortTermMax = 0;          // LUFS
    double fRange = 0;                 // LU
    double fSamplePeak = 0;            // dBFS; minus infinity for silence
    double fTruePeak = 0;              // dBTP
    std::optional<double> fReplayGain; // dB
};

struct RIP_ANALYSIS
{
    RIP_LOUDNESS loudness;
    std::optional<int> nDR;
    std::vector<double> aryChannelDR; // dB, one for each channel that has one
    std::optional<double> fBPM;
    std::optional<double> fOctaveBPM; // twice or half of it, as which it may be tapped as well
    double fBPMConfidence = 0;        // 0 to 1
};

// For pictures only: the state and the HTML report have them, the logs have not.
struct RIP_WAVE_POINT // of a stretch of the piece; all stretches are equally long but for the last
{
    short nLow = 0; // of both channels
    short nHigh = 0;
};
struct RIP_SPEED_POINT
{
    int nSector = 0;   // behind the block
    float fSpeed = 0;  // times; of the block, all its reads together
    float fSecond = 0; // since the rip began
};
struct RIP_SERIES
{
    int nWaveSectors = 1; // length of a stretch
    std::vector<RIP_WAVE_POINT> aryWave;
    std::vector<float> aryMomentary; // LUFS every 100 ms; minus infinity for silence
    std::vector<float> aryShortTerm; // LUFS every 100 ms
    std::vector<RIP_SPEED_POINT> arySpeed;
};

enum RIP_PIECE_STATE : int
{
    RIP_PIECE_OPEN = 0,  // not read, or not to its end
    RIP_PIECE_READ = 1,  // whole; its entries say what of it is to be doubted
    RIP_PIECE_TAKEN = 2, // from an earlier rip that was broken off: read then, its files checked now
};

// One stretch of the disc that was asked for: a track, the audio hidden ahead of track 1, or a range of sectors.
struct RIP_PIECE
{
    int nTrack = 0; // 0: ahead of track 1, or a range
    std::string strTitle;
    std::string strPerformer;
    std::string strISRC;
    int nStart = 0;
    int nSectors = 0;
    bool bPreEmphasis = false;
    RIP_PIECE_STATE eState = RIP_PIECE_OPEN;
    double fSeconds = 0;                      // that reading took
    std::vector<SECURE_RIP_ENTRY> aryEntries; // that lie in it
    TRACK_CHECKSUMS sums;                     // of a whole track; of another piece only the CRC-32
    std::optional<RIP_ANALYSIS> analysis;
    RIP_SERIES series;
    std::vector<RIP_FILE> aryFiles;

    bool IsWhole() const { return eState != RIP_PIECE_OPEN; }
    // The bad sectors as stretches, first and end, that ascend and do not touch; nothing outside the piece.
    std::vector<std::pair<int, int>> GetBadStretches() const;
    int CountBadSectors() const; // each once
};

// What a database's saved answer says of the rip.
struct RIP_VERIFICATION
{
    std::string strFile; // the answer, as the user named it
    std::string strKind; // "AccurateRip" or "CTDB"
    std::optional<ACCURATERIP_VERDICT> accurateRip;
    std::optional<CTDB_VERDICT> ctdb;
    std::vector<std::string> aryNotes; // sentences beyond the table
};

enum RIP_OUTCOME : int
{
    RIP_OUTCOME_WHOLE = 0,    // all that was asked for was read, and every file is there
    RIP_OUTCOME_DOUBTFUL = 1, // the same, but sectors are bad
    RIP_OUTCOME_STOPPED = 2,  // by the user
    RIP_OUTCOME_FAILED = 3    // strError tells
};

struct RIP_REPORT
{
    std::string strProgram; // "rondel 1.2.3"
    std::string strStarted; // ISO 8601 with the offset of the local time
    std::string strEnded;
    std::string strCommand; // as it could be typed
    bool bSecure = true;
    RIP_OUTCOME eOutcome = RIP_OUTCOME_FAILED;
    std::string strError;
    RIP_DRIVE drive;
    RIP_DISC disc;
    std::vector<RIP_PIECE> aryPieces;  // in the order of reading
    int nReReads = 0;                  // of the whole rip
    double fSeconds = 0;               //
    std::optional<RIP_LOUDNESS> album; // only if HasAllAudio: a gain for an album is that of all its tracks
    std::optional<int> nAlbumDR;
    std::optional<RIP_LOUDNESS> selection; // of all pieces together where they are not the album; it has no gain
    std::optional<int> nSelectionDR;
    uint32_t nDiscCTDB = 0;
    std::vector<RIP_FILE> aryFiles; // of the whole rip: an image and its cue sheet
    std::vector<RIP_VERIFICATION> aryVerifications;
    std::vector<std::string> aryNotes; // sentences: what the drive tolerated, what was left out
    // For the state only: files in the making that stood beside the rip's before it began, and are not its own.
    std::vector<std::string> aryPartsBefore;

    int CountBadSectors() const;
    // Whether each track with audio is among the pieces, or within one.
    bool HasAllAudio() const;
    // Of all that was ripped, be it the album or not.
    const std::optional<RIP_LOUDNESS>& GetLoudness() const { return album ? album : selection; }
    const std::optional<int>& GetDR() const { return album ? nAlbumDR : nSelectionDR; }
};
