// The contract between the player and an input plug-in (ILyAudioInput), and the frame that plug-ins derive from
// (LyAudioInputBase). The frame owns a byte buffer between the plug-in's source of data and the player's pull.
//
// Data:    interleaved PCM bytes, in the format that GetInformation tells (for a CD: 16 bits, little-endian, stereo).
// Errors:  0 is done and -1 is refused. After a failed Open the object is only good for being destroyed.
// Owner:   the player owns the object and ends it by destroying it; there is no close operation.
// Threads: all calls come on one thread, the player's. The frame takes no lock.

#pragma once

#include "ILyReader.h"

enum LY_AUDIO_INPUT_INFO_FIELDS : int
{
    LY_AUDIO_INPUT_INFO_BITRATE = 0,  // kilobits per second
    LY_AUDIO_INPUT_INFO_DURATION = 1, // milliseconds
    LY_AUDIO_INPUT_INFO_NAME = 2,
    LY_AUDIO_INPUT_INFO_POSITION = 3,   // write-only: seeks, in milliseconds
    LY_AUDIO_INPUT_INFO_FILE_TYPES = 4, // "type; Name (*.TYPE)"
    LY_AUDIO_INPUT_INFO_SAMPLE_RATE = 8,
    LY_AUDIO_INPUT_INFO_CHANNELS = 9,
    LY_AUDIO_INPUT_INFO_BITS_PER_SAMPLE = 10,
    LY_AUDIO_INPUT_INFO_TOTAL_SAMPLES = 12, // sample frames in the whole stream
    LY_AUDIO_INPUT_INFO_FIELD_24 = 24,
    LY_AUDIO_INPUT_INFO_FIELD_28 = 28
};

enum LY_AUDIO_INPUT_COMMANDS : int
{
    LY_AUDIO_INPUT_COMMAND_CLOSE_READER = 2
};

// The player's object that makes readers. The frame uses no other operation of it.
class ILyAudioInputOwner
{
public:
    virtual ILyReader* CreateReader(const wchar_t* pPath) = 0; // the caller owns it; null on failure

protected:
    ~ILyAudioInputOwner() = default;
};

// The order of the operations is their order in the virtual table: the player calls them there.
class ILyAudioInput
{
public:
    virtual ~ILyAudioInput() = default;
    virtual int Open(const wchar_t* pPath) = 0;
    virtual int GetInformation(LY_AUDIO_INPUT_INFO_FIELDS eField, const ILyDllString& result) = 0; // decimal text
    virtual int SetInformation(LY_AUDIO_INPUT_INFO_FIELDS eField, const wchar_t* pValue) = 0;
    virtual int DoCommand(LY_AUDIO_INPUT_COMMANDS eCommand, long long nFirst, long long nSecond) = 0;
    virtual int GetSamples(unsigned char* pBuffer, int nBytes) = 0; // bytes; 0 at the end; -1 nothing delivered
    virtual int AddDataToBuffer() = 0;                              // hook of the frame: more data behind m_nBufferFill
    virtual int ResetInternalBuffer() = 0; // hook of the frame: drops all bytes and the end of data, after a seek
};

class LyAudioInputBase : public ILyAudioInput
{
public:
    static constexpr int SAMPLE_BUFFER_BYTES = 65536;

    explicit LyAudioInputBase(ILyAudioInputOwner* pOwner);
    ~LyAudioInputBase() override;
    LyAudioInputBase(const LyAudioInputBase&) = delete;
    LyAudioInputBase& operator=(const LyAudioInputBase&) = delete;

    int Open(const wchar_t* pPath) override;
    int GetInformation(LY_AUDIO_INPUT_INFO_FIELDS eField, const ILyDllString& result) override;
    int SetInformation(LY_AUDIO_INPUT_INFO_FIELDS eField, const wchar_t* pValue) override;
    int DoCommand(LY_AUDIO_INPUT_COMMANDS eCommand, long long nFirst, long long nSecond) override;
    int GetSamples(unsigned char* pBuffer, int nBytes) override;
    int AddDataToBuffer() override;
    int ResetInternalBuffer() override;

    ILyAudioInputOwner* m_pOwner;       // not owned
    ILyReader* m_pReader = nullptr;     // owned; made by the generic Open
    unsigned char* m_pBuffer = nullptr; // owned, array
    int m_nBufferFill = -1;             // bytes in the buffer, those already read included; Open sets 0
    int m_nBufferSize = SAMPLE_BUFFER_BYTES;
    int m_nHoldBack = 0;       // bytes at the tail of the buffer that are never handed out
    int m_nBitrate = -1;       // kilobits per second
    int m_nSampleRate = -1;    // Hz
    int m_nBitsPerSample = -1; // of one sample of one channel
    int m_nChannels = -1;
    int m_nField28 = 0;             // answer to field 28
    bool m_bSupportICY = false;     // passed to the reader in the generic Open
    long long m_nTotalSamples = -1; // sample frames in the whole stream
    long long m_nDurationMS = -1;
    bool m_bEndOfData = false;      // the source has no more data
    bool m_bRetryWhenEmpty = false; // GetSamples goes on after a refill that added nothing
    int m_nReadPosition = 0;        // 0 <= m_nReadPosition <= m_nBufferFill <= m_nBufferSize

private:
    int CopyOut(unsigned char* pBuffer, int nBytes);
    void Compact();
    bool Refill();
};
