// CAudioFormat: what a stream of PCM or coded audio is like. The wave format record with its extensible part, as it
// lies in a wave file, and behind it what each channel is.
//
// Shape:   plain records, copied bytewise; the first 40 bytes are the "fmt " chunk of a wave file (little-endian).
// Units:   samples per second, bits of a sample, bytes of a frame.
// Source:  Multimedia Programming Interface and Data Specifications 1.0 (RIFF WAVE), and its extensible form.
// Threads: a record like any other; nothing here locks.

#pragma once

#include <cstddef>
#include <type_traits>

// The identifier of a sub-format. The first number of ours is the format tag.
struct _GUID
{
    unsigned int Data1 = 0;
    unsigned short Data2 = 0;
    unsigned short Data3 = 0;
    unsigned char Data4[8] = {};
};
static_assert(sizeof(_GUID) == 16 && std::is_trivially_copyable_v<_GUID>);

bool operator==(const _GUID& a, const _GUID& b);

enum WAVE_FORMAT_TAG : unsigned short
{
    WAVE_TAG_PCM = 1,
    WAVE_TAG_IEEE_FLOAT = 3,
    WAVE_TAG_MULAW = 7,
    WAVE_TAG_MPEG = 80,
    WAVE_TAG_DOLBY_SPDIF = 146,
    WAVE_TAG_EXTENSIBLE = 0xFFFE
};

extern const _GUID LY_GUID_NULL;
extern const _GUID LY_GUID_PCM;
// Deliberate: the last byte is 47h, not 71h as in the other identifiers. Files that carry it are read back by
// comparing with this very value.
extern const _GUID LY_GUID_IEEE_FLOAT;
extern const _GUID LY_GUID_MULAW;
extern const _GUID LY_GUID_MPEG;
extern const _GUID LY_GUID_DOLBY_SPDIF;

// What the first argument of SetFormat carries beside the bit depth in its low 16 bits.
enum AUDIO_DEPTH_FLAG : int
{
    AUDIO_DEPTH_MASK = 0xFFFF,
    AUDIO_DEPTH_INTEGER = 0x10000,   // integer samples even at a depth of 32 or 64
    AUDIO_DEPTH_SETS_8 = 0x20000,    // sets AUDIO_FORMAT_FLAG_8
    AUDIO_DEPTH_PADDING_4 = 0x40000, // padding bits below the valid ones; each needs a depth to take them from
    AUDIO_DEPTH_PADDING_8 = 0x80000,
    AUDIO_DEPTH_PADDING_12 = 0x100000,
    AUDIO_DEPTH_PADDING_14 = 0x200000,
    AUDIO_DEPTH_PADDING_16 = 0x400000,
    AUDIO_DEPTH_SETS_16 = 0x800000 // sets AUDIO_FORMAT_FLAG_16
};

enum AUDIO_FORMAT_FLAG : unsigned int
{
    AUDIO_FORMAT_INTEGER = 4, // integer samples
    AUDIO_FORMAT_FLAG_8 = 8,
    AUDIO_FORMAT_FLAG_16 = 16
};

enum AUDIO_SPEAKER : unsigned int
{
    SPEAKER_ID_NONE = 0,
    SPEAKER_ID_MONO = 1,
    SPEAKER_ID_FRONT_LEFT = 2,
    SPEAKER_ID_FRONT_RIGHT = 3,
    SPEAKER_ID_CENTER = 4,
    SPEAKER_ID_LOW_FREQUENCY = 5,
    SPEAKER_ID_BACK_LEFT = 6,
    SPEAKER_ID_BACK_RIGHT = 7,
    SPEAKER_ID_SIDE_LEFT = 8,
    SPEAKER_ID_SIDE_RIGHT = 9,
    SPEAKER_ID_BACK_CENTER = 10
};

// One entry of the channel table.
struct AUDIO_CHANNEL
{
    unsigned int nSpeaker = SPEAKER_ID_NONE;
    bool bUsed = false;
    float fLevel = 0; // 10.0 for the low-frequency channel, 0 otherwise
    unsigned char aryReserved[32] = {};
};
static_assert(sizeof(AUDIO_CHANNEL) == 44);
static_assert(offsetof(AUDIO_CHANNEL, bUsed) == 4 && offsetof(AUDIO_CHANNEL, fLevel) == 8);

class CAudioFormat
{
public:
    static constexpr int MAX_CHANNELS = 32;               // entries of the channel table
    static constexpr unsigned short EXTENSION_BYTES = 22; // cbSize of the extensible form
    static constexpr unsigned int LAYOUT_BACK_CENTER_FIRST = 0x700;

    // Describes a stream anew. nBits is the bit depth with flags of AUDIO_DEPTH_FLAG. A depth of 32 or 64 is float,
    // unless the flag or the PCM sub-format says integer; a null sub-format leaves the choice to the depth. Without
    // bRebuildChannels the channel table and the speaker mask stay.
    void SetFormat(int nBits, int nSampleRate, int nChannelCount, bool bExtensible = false, _GUID subFormat = _GUID(),
                   bool bRebuildChannels = true);

    // Fills the channel table by nChannels. nLayout: all bits of LAYOUT_BACK_CENTER_FIRST put the back centre of seven
    // channels before the back pair. Deliberate: the first argument is not looked at; the record's own count decides.
    void SetChannelsInfo(int nChannelCount, unsigned int nLayout);

    // Block align and bytes per second, from bits, channels and rate.
    void UpdateSizesFromFormat();

    // How many padding bits a packed bit depth asks for: the first flag, from 4 bits up, whose depth allows it. 0:
    // none.
    static int GetPaddingBitsFromBitDepth(int nBits);

    unsigned short wFormatTag = 0; // WAVE_FORMAT_TAG
    unsigned short nChannels = 0;
    unsigned int nSamplesPerSec = 0;
    unsigned int nAvgBytesPerSec = 0;
    unsigned short nBlockAlign = 0;         // bytes of a frame; 0 for 1-bit audio of fewer than 8 bits a frame
    unsigned short wBitsPerSample = 0;      // container bits
    unsigned short cbSize = 0;              // EXTENSION_BYTES in the extensible form, otherwise 0
    unsigned short wValidBitsPerSample = 0; // container bits less padding
    unsigned int dwChannelMask = 0;         // speaker mask; 0 when the channel table is rebuilt
    _GUID SubFormat;
    AUDIO_CHANNEL m_Channels[MAX_CHANNELS];
    unsigned int m_nFlags = 0; // AUDIO_FORMAT_FLAG
};
static_assert(std::is_trivially_copyable_v<CAudioFormat> && std::is_standard_layout_v<CAudioFormat>);
static_assert(offsetof(CAudioFormat, nSamplesPerSec) == 4 && offsetof(CAudioFormat, nBlockAlign) == 12);
static_assert(offsetof(CAudioFormat, cbSize) == 16 && offsetof(CAudioFormat, dwChannelMask) == 20);
static_assert(offsetof(CAudioFormat, SubFormat) == 24 && offsetof(CAudioFormat, m_Channels) == 40);
static_assert(offsetof(CAudioFormat, m_nFlags) == 40 + 32 * 44 && sizeof(CAudioFormat) == 1452);
