// DiscChecksums: all sums of a rip, from the audio as it passes by: per track CRC-32 with and without null samples,
// AccurateRip v1 and v2, the sum of sector 450 and the sum of the CTDB; for the disc the sum of the CTDB; and
// afterwards all of them but CRC-32 without null samples and AccurateRip v2 at every offset.
//
// Shape:   16-bit little-endian PCM, stereo, in pieces of any number of bytes, from any sector on. A track has sums
//          once its sectors came from first to last without a break. Audio ahead of track 1 may come too, and helps at
//          negative offsets. Whoever reads sectors twice hands over the good ones only.
// Offset:  at offset d a sum takes the frame d frames later on for each frame of the disc: a rip whose audio comes d
//          frames too late has at offset d the sums of the true disc.
// Zero:    a sum that is not known, because audio is missing or a track is too short, is 0; and 0 is never a match.
// Errors:  without a valid layout nothing has sums, and audio is ignored.
// Threads: an object belongs to one thread.
// Speed:   one pass over each sector for all sums; no memory is taken but around the edges of tracks.

#pragma once

#include "AudioSums.h"
#include "CDLayout.h"
#include "CRC32.h"
#include "OffsetWindows.h"
#include <cstddef>
#include <cstdint>
#include <vector>

// The sector of a track over which a sum of its own is made, as AccurateRip v1 over these frames alone. It finds the
// offset of a pressing.
constexpr int FRAME450_SECTOR = 450;

// What CTDB leaves out at the beginning of the disc's audio, and at the end at least: ten sectors.
constexpr int CTDB_PREFIX_FRAMES = 10 * LY_CD_SECTOR_FRAMES;
// The words of 16 bits by which CTDB's parity strides; what it covers is a multiple of them.
constexpr int CTDB_STRIDE_WORDS = 2 * CTDB_PREFIX_FRAMES;
static_assert(CTDB_PREFIX_FRAMES == 5880 && CTDB_STRIDE_WORDS == 11760);

// What CTDB leaves out at the end of audio of nTotalFrames: half of (a stride, and what a stride doesn't divide).
constexpr int GetCTDBSuffixFrames(int64_t nTotalFrames)
{
    return static_cast<int>((CTDB_STRIDE_WORDS + 2 * nTotalFrames % CTDB_STRIDE_WORDS) / 2);
}

// Offsets reach as far as the sums of the CTDB leave out audio at both ends of the disc.
constexpr int CHECKSUM_MAX_OFFSET = CTDB_PREFIX_FRAMES - 1;

struct TRACK_CHECKSUMS
{
    bool m_bComplete = false; // else nothing below is set
    uint32_t m_nCRC32 = 0;
    uint32_t m_nCRC32WithoutNull = 0;
    uint32_t m_nAccurateRip1 = 0;
    uint32_t m_nAccurateRip2 = 0;
    uint32_t m_nFrame450 = 0;
    uint32_t m_nCTDB = 0;
};

class DiscChecksums
{
public:
    DiscChecksums();

    // Forgets everything. Offsets from -nMaxOffset to nMaxOffset frames are prepared for, 0 to CHECKSUM_MAX_OFFSET.
    bool SetLayout(const CD_LAYOUT& layout, int nMaxOffset = CHECKSUM_MAX_OFFSET);
    // After SetLayout and ahead of audio: other margins than those of the CTDB, both from 0 to CTDB_STRIDE_WORDS.
    bool SetCTDBMargins(int nPrefixFrames, int nSuffixFrames);

    // The next audio comes from this sector. Where it would have come from there anyway, nothing is interrupted.
    void StartAt(int nSector);
    void Add(const void* pData, size_t nBytes);
    void AddSamples(const short* pSamples, size_t nSamples) { Add(pSamples, nSamples * sizeof(short)); }

    const CD_LAYOUT& GetLayout() const { return m_Layout; }
    int GetMaxOffset() const { return m_nMaxOffset; }

    // By the number of a track. False, and zeros, for a track without sums.
    bool GetTrack(int nNumber, TRACK_CHECKSUMS& sums) const;
    // Once all audio tracks have sums, in whatever order they came. False if there is data between audio.
    bool GetDiscCTDB(uint32_t& nCTDB) const;

    // The sums at all offsets: element i is that of offset i - GetMaxOffset(). Empty for a track without sums.
    std::vector<uint32_t> GetAccurateRip1AtOffsets(int nNumber) const;
    std::vector<uint32_t> GetFrame450AtOffsets(int nNumber) const;
    std::vector<uint32_t> GetTrackCTDBAtOffsets(int nNumber) const;
    // For this the audio tracks must have come in one pass.
    std::vector<uint32_t> GetDiscCTDBAtOffsets() const;

private:
    struct STRETCH_OF_FRAMES // from the first to the last, without that one; empty if the last is not behind the first
    {
        int64_t m_nFirst = 0;
        int64_t m_nEnd = 0;
        bool IsEmpty() const { return m_nEnd <= m_nFirst; }
    };
    struct TRACK
    {
        TRACK_CHECKSUMS m_Sums;
        int m_nPass = -1;         // that brought it
        uint32_t m_nDiscPart = 0; // CRC-32 of what the disc's CTDB sum takes of it
    };
    struct CURRENT // the track that is coming in
    {
        bool m_bFromStart = false;
        AUDIO_PREFIX m_Start;
        FRAME_SUMS m_Sums;
        uint32_t m_nWithoutNull = CRC32_START;
    };

    void WantWindows();
    void WantEdges(const STRETCH_OF_FRAMES& stretch);
    STRETCH_OF_FRAMES GetAudioStretch() const;
    STRETCH_OF_FRAMES GetDiscCTDBStretch() const;
    STRETCH_OF_FRAMES GetTrackStretch(size_t nTrack) const;
    STRETCH_OF_FRAMES GetAccurateRipStretch(size_t nTrack) const;
    STRETCH_OF_FRAMES GetFrame450Stretch(size_t nTrack) const;
    STRETCH_OF_FRAMES GetTrackCTDBStretch(size_t nTrack) const;
    STRETCH_OF_FRAMES GetDiscPartStretch(size_t nTrack) const;

    void AddSector(const uint8_t* pSector);
    FRAME_SUMS CountSector(const uint8_t* pSector, uint32_t nIndex);
    void FinishTrack();
    int FindCompleteTrack(int nNumber) const;
    uint32_t GetSumOf(int nPass, const STRETCH_OF_FRAMES& stretch, int64_t nIndexZero) const;
    uint32_t GetCRC32Of(int nPass, const STRETCH_OF_FRAMES& stretch) const;
    std::vector<uint32_t> GetSumsAtOffsets(int nPass, const STRETCH_OF_FRAMES& stretch, int64_t nIndexZero) const;
    std::vector<uint32_t> GetCRC32AtOffsets(int nPass, const STRETCH_OF_FRAMES& stretch) const;

    CD_LAYOUT m_Layout;
    int m_nMaxOffset = 0;
    int m_nCTDBPrefix = 0;
    int m_nCTDBSuffix = 0;
    size_t m_nFirstAudio = 0; // indices of tracks
    size_t m_nLastAudio = 0;
    bool m_bValid = false;

    std::vector<TRACK> m_aryTracks;
    OffsetWindows m_Windows;
    CRC32Shift m_SectorShift;

    int m_nPass = 0;
    int m_nPassStart = 0;  // its first sector
    int m_nSector = 0;     // the next one
    size_t m_nTrack = 0;   // the track in which it is, or the one ahead of which it is
    AUDIO_PREFIX m_Prefix; // of the pass, up to it
    CURRENT m_Current;
    uint8_t m_aryPending[LY_CD_SECTOR_BYTES];
    size_t m_nPending = 0;
};
