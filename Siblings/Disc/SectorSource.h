// A source of sectors: the file, or any other store, from which an image's sectors are cut.
//
// Shape:   a run of bytes addressed from 0. A raw file (BIN, IMG, ISO, raw audio) gives its own bytes; an audio file
//          gives its decoded samples as a CD has them: 16-bit, stereo, interleaved, little-endian, 4 bytes a frame.
// Errors:  a short count says that the bytes behind it cannot be had: the end of the file, or damage.
// Memory:  Read neither allocates nor copies twice; the bytes land where the caller wants them.
// Threads: one at a time.

#pragma once

#include <memory>
#include <string>

class SectorSource
{
public:
    SectorSource() = default;
    virtual ~SectorSource() = default;
    SectorSource(const SectorSource&) = delete;
    SectorSource& operator=(const SectorSource&) = delete;

    // The bytes that this source holds.
    virtual long long GetBytes() const = 0;

    // Reads from nOffset on; returns how many bytes arrived, 0 to nBytes. An audio file takes multiples of
    // LY_CD_FRAME_BYTES for both. Reads that follow one another cost no seek.
    virtual int Read(long long nOffset, unsigned char* pBuffer, int nBytes) = 0;
};

// How the bytes of a file are to be taken.
enum SECTOR_SOURCE_KIND : unsigned char
{
    SECTOR_SOURCE_DATA,         // as they stand
    SECTOR_SOURCE_RAW,          // samples as they stand; if it turns out to be an audio file, decoded
    SECTOR_SOURCE_RAW_SWAPPED,  // likewise, with 16-bit words in the other byte order (MOTOROLA)
    SECTOR_SOURCE_AUDIO,        // an audio file: to be decoded
    SECTOR_SOURCE_AUDIO_SWAPPED // an audio file whose content was written the wrong way round
};

// Finds and opens what a sheet names. The reader of a sheet needs no file system beyond this.
class ISectorSourceOpener
{
public:
    virtual ~ISectorSourceOpener() = default;

    // Null on failure, with strError in the form "the file ... was not found; put it ..." without a final stop.
    // A remark for the user (say, on 24-bit samples) is left in strWarning.
    virtual std::unique_ptr<SectorSource> OpenSource(const std::string& strName, SECTOR_SOURCE_KIND kind,
                                                     std::string& strError, std::string& strWarning) = 0;

    // The whole content of a small companion file (CD-Text). False when it cannot be had.
    virtual bool LoadCompanion(const std::string& strName, std::string& strContent) = 0;
};

// Opens the file strPath, which exists, as it stands. Null, with the reason, when that fails or the file is empty.
std::unique_ptr<SectorSource> OpenRawSectorSource(const std::string& strPath, bool bSwapBytes, std::string& strError);

// Opens the audio file strPath through libsndfile: 44,100 Hz, one channel (doubled) or two. 16-bit samples come through
// bit for bit; 24 and 32 bits lose their low bits and floating point is scaled and clipped, both with a warning.
// bSwapBytes turns the samples' byte order round, for files whose content was written the wrong way.
std::unique_ptr<SectorSource> OpenAudioFileSource(const std::string& strPath, bool bSwapBytes, std::string& strError,
                                                  std::string& strWarning);

// Exchanges the bytes of each 16-bit word in place. An odd last byte stays.
void SwapBytePairs(unsigned char* pBytes, int nBytes);
