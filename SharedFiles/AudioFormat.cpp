#include "AudioFormat.h"

#include <cstring>

namespace
{
constexpr int BITS_OF_BYTE = 8;
constexpr float LOW_FREQUENCY_LEVEL = 10;
constexpr int TABLE_CHANNELS = 8;         // up to here the speakers stand in a table
constexpr unsigned int EXTRA_SPEAKER = 5; // what is added to the index of an entry behind the table

constexpr _GUID MakeSubFormat(WAVE_FORMAT_TAG nTag, unsigned char nLastByte = 0x71)
{
    return {nTag, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, nLastByte}};
}

// The speakers of one to eight channels, in the order of the channels.
constexpr unsigned char s_arySpeakers[TABLE_CHANNELS][TABLE_CHANNELS] = {
    {1},                      // mono
    {2, 3},                   //
    {2, 3, 5},                // with a low-frequency channel
    {2, 3, 6, 7},             //
    {2, 3, 4, 6, 7},          //
    {2, 3, 4, 5, 6, 7},       //
    {2, 3, 4, 5, 6, 7, 10},   //
    {2, 3, 4, 5, 8, 9, 6, 7}, //
};
constexpr unsigned char s_arySevenBackCenterFirst[TABLE_CHANNELS] = {2, 3, 4, 5, 10, 6, 7};

// A flag of the packed bit depth, the padding that it stands for, and the depth that it needs.
struct PADDING_ROW
{
    int nFlag;
    int nPaddingBits;
    int nDepthMask;
    int nDepthAbove;
};

constexpr PADDING_ROW s_aryPadding[] = {
    {AUDIO_DEPTH_PADDING_4, 4, 0xFFF8, 7},             //
    {AUDIO_DEPTH_PADDING_8, 8, AUDIO_DEPTH_MASK, 8},   //
    {AUDIO_DEPTH_PADDING_12, 12, 0xFFF0, 15},          //
    {AUDIO_DEPTH_PADDING_14, 14, 0xFFF0, 15},          //
    {AUDIO_DEPTH_PADDING_16, 16, AUDIO_DEPTH_MASK, 16} //
};

unsigned short GetTagOfSubFormat(const _GUID& subFormat)
{
    if (subFormat == LY_GUID_IEEE_FLOAT)
        return WAVE_TAG_IEEE_FLOAT;
    if (subFormat == LY_GUID_DOLBY_SPDIF)
        return WAVE_TAG_DOLBY_SPDIF;
    if (subFormat == LY_GUID_MULAW)
        return WAVE_TAG_MULAW;
    if (subFormat == LY_GUID_MPEG)
        return WAVE_TAG_MPEG;
    return WAVE_TAG_PCM;
}

unsigned int WithFlag(unsigned int nFlags, unsigned int nFlag, bool bSet)
{
    return bSet ? nFlags | nFlag : nFlags & ~nFlag;
}
} // namespace

constinit const _GUID LY_GUID_NULL = {};
constinit const _GUID LY_GUID_PCM = MakeSubFormat(WAVE_TAG_PCM);
constinit const _GUID LY_GUID_IEEE_FLOAT = MakeSubFormat(WAVE_TAG_IEEE_FLOAT, 0x47);
constinit const _GUID LY_GUID_MULAW = MakeSubFormat(WAVE_TAG_MULAW);
constinit const _GUID LY_GUID_MPEG = MakeSubFormat(WAVE_TAG_MPEG);
constinit const _GUID LY_GUID_DOLBY_SPDIF = MakeSubFormat(WAVE_TAG_DOLBY_SPDIF);

bool operator==(const _GUID& a, const _GUID& b) { return std::memcmp(&a, &b, sizeof(_GUID)) == 0; }

void CAudioFormat::SetFormat(int nBits, int nSampleRate, int nChannelCount, bool bExtensible, _GUID subFormat,
                             bool bRebuildChannels)
{
    const int nDepth = nBits & AUDIO_DEPTH_MASK;
    // Deliberate: without a sub-format, 32 and 64 bits are float; who means integers says so by the flag.
    const bool bFloat =
        (nBits & AUDIO_DEPTH_INTEGER) == 0 && !(subFormat == LY_GUID_PCM) && (nDepth == 32 || nDepth == 64);
    m_nFlags = WithFlag(m_nFlags, AUDIO_FORMAT_INTEGER, !bFloat);
    m_nFlags = WithFlag(m_nFlags, AUDIO_FORMAT_FLAG_8, (nBits & AUDIO_DEPTH_SETS_8) != 0);
    m_nFlags = WithFlag(m_nFlags, AUDIO_FORMAT_FLAG_16, (nBits & AUDIO_DEPTH_SETS_16) != 0);

    cbSize = bExtensible ? EXTENSION_BYTES : static_cast<unsigned short>(0);
    const int nContainerBits = nDepth == 1 ? 1 : (nDepth + BITS_OF_BYTE - 1) / BITS_OF_BYTE * BITS_OF_BYTE;
    wBitsPerSample = static_cast<unsigned short>(nContainerBits);
    nSamplesPerSec = static_cast<unsigned int>(nSampleRate);
    nChannels = static_cast<unsigned short>(nChannelCount);
    UpdateSizesFromFormat();
    wValidBitsPerSample = static_cast<unsigned short>(nDepth - GetPaddingBitsFromBitDepth(nBits));

    if (bRebuildChannels)
    {
        dwChannelMask = 0;
        SetChannelsInfo(nChannelCount, 0);
    }
    if (subFormat == LY_GUID_NULL || subFormat == LY_GUID_IEEE_FLOAT || subFormat == LY_GUID_PCM)
        SubFormat = bFloat ? LY_GUID_IEEE_FLOAT : LY_GUID_PCM;
    else
        SubFormat = subFormat;
    wFormatTag = bExtensible ? static_cast<unsigned short>(WAVE_TAG_EXTENSIBLE) : GetTagOfSubFormat(SubFormat);
}

void CAudioFormat::SetChannelsInfo(int, unsigned int nLayout)
{
    std::memset(static_cast<void*>(m_Channels), 0, sizeof m_Channels);
    if (nChannels == 0)
        return;
    const int nUsed = nChannels < MAX_CHANNELS ? nChannels : MAX_CHANNELS;
    const int nRow = (nUsed < TABLE_CHANNELS ? nUsed : TABLE_CHANNELS) - 1;
    const bool bBackCenterFirst = nUsed == 7 && (nLayout & LAYOUT_BACK_CENTER_FIRST) == LAYOUT_BACK_CENTER_FIRST;
    const unsigned char* pSpeakers = bBackCenterFirst ? s_arySevenBackCenterFirst : s_arySpeakers[nRow];
    for (int i = 0; i < nUsed; ++i)
    {
        AUDIO_CHANNEL& channel = m_Channels[i];
        channel.nSpeaker = i < TABLE_CHANNELS ? pSpeakers[i] : static_cast<unsigned int>(i) + EXTRA_SPEAKER;
        channel.bUsed = true;
        // Deliberate: the low-frequency channel of three keeps the level 0; only fuller layouts raise it.
        if (channel.nSpeaker == SPEAKER_ID_LOW_FREQUENCY && nUsed != 3)
            channel.fLevel = LOW_FREQUENCY_LEVEL;
    }
}

void CAudioFormat::UpdateSizesFromFormat()
{
    nBlockAlign = static_cast<unsigned short>(wBitsPerSample / BITS_OF_BYTE * nChannels);
    // A frame of 1-bit audio may be shorter than a byte, and still there is a byte rate.
    const unsigned long long nFrameBits =
        nBlockAlign != 0 ? nBlockAlign * 8ULL : static_cast<unsigned long long>(nChannels) * wBitsPerSample;
    nAvgBytesPerSec = static_cast<unsigned int>(nFrameBits * nSamplesPerSec / BITS_OF_BYTE);
}

int CAudioFormat::GetPaddingBitsFromBitDepth(int nBits)
{
    for (const PADDING_ROW& row : s_aryPadding)
    {
        if ((nBits & row.nFlag) != 0 && (nBits & row.nDepthMask) > row.nDepthAbove)
            return row.nPaddingBits;
    }
    return 0;
}
