#include "Mp3Check.h"
#include <array>
#include <string_view>

namespace
{
constexpr size_t HEADER_BYTES = 4;
constexpr size_t XING_FRAMES = 8;
constexpr size_t XING_DELAY = 141;
constexpr size_t XING_BYTES = XING_DELAY + 3;
constexpr size_t MAX_SIDE_INFO = 32;

// ISO/IEC 11172-3, 2.4.2.3 and 13818-3, 2.4.2.3: layer III. Index 0 is a free rate, 15 is none.
constexpr int s_aryBitrates[2][16] = {{0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0},
                                      {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0}};
constexpr int s_arySampleRates[3] = {44100, 48000, 32000}; // of MPEG-1; half of it and a quarter for the others

struct MPEG_FRAME
{
    bool bMPEG1 = false;
    bool bMono = false;
    uint64_t nBytes = 0;
    int nSamples = 0; // of a channel
};

uint64_t GetNumber(const unsigned char* p, size_t nBytes)
{
    uint64_t n = 0;
    for (size_t i = 0; i < nBytes; ++i)
        n = (n << 8) | p[i];
    return n;
}

// Header: 11 bits of ones, version 2, layer 2, no check sum 1; rate 4, sample rate 2, padding 1, private 1; mode 2 ...
bool ParseFrame(const unsigned char* p, MPEG_FRAME& frame)
{
    const unsigned nVersion = (p[1] >> 3) & 3; // 3: MPEG-1, 2: MPEG-2, 0: MPEG-2.5
    const unsigned nRate = (p[2] >> 2) & 3;
    if (p[0] != 0xFF || (p[1] & 0xE0) != 0xE0 || nVersion == 1 || ((p[1] >> 1) & 3) != 1 || nRate == 3)
        return false;
    frame.bMPEG1 = nVersion == 3;
    frame.bMono = (p[3] >> 6) == 3;
    frame.nSamples = frame.bMPEG1 ? 1152 : 576;
    const int nSampleRate = s_arySampleRates[nRate] >> (frame.bMPEG1 ? 0 : nVersion == 2 ? 1 : 2);
    const int nKilobits = s_aryBitrates[frame.bMPEG1 ? 0 : 1][p[2] >> 4];
    if (nKilobits == 0)
        return false;
    frame.nBytes = static_cast<uint64_t>(frame.nSamples / 8 * nKilobits * 1000 / nSampleRate + ((p[2] >> 1) & 1));
    return true;
}
} // namespace

std::string CheckMp3(EncoderBytes& file, uint64_t nOffset, long long nFrames)
{
    std::array<unsigned char, HEADER_BYTES + MAX_SIDE_INFO + XING_BYTES> aryFirst{};
    MPEG_FRAME frame;
    if (file.ReadAt(nOffset, aryFirst.data(), aryFirst.size()) != aryFirst.size() ||
        !ParseFrame(aryFirst.data(), frame))
        return "The file has no gapless header.";
    const size_t nSideInfo = frame.bMPEG1 ? (frame.bMono ? 17u : 32u) : (frame.bMono ? 9u : 17u);
    const unsigned char* pXing = aryFirst.data() + HEADER_BYTES + nSideInfo;
    const std::string_view strName(reinterpret_cast<const char*>(pXing), 4);
    if (strName != "Xing" && strName != "Info")
        return "The file has no gapless header.";
    const uint64_t nAnnounced = GetNumber(pXing + XING_FRAMES, 4);
    const uint64_t nDelays = GetNumber(pXing + XING_DELAY, 3);
    const uint64_t nSilence = (nDelays >> 12) + (nDelays & 0xFFF);
    const uint64_t nSamples = nAnnounced * static_cast<uint64_t>(frame.nSamples);
    if (nSamples != nSilence + static_cast<uint64_t>(nFrames))
        return "The gapless header announces another length.";
    const uint64_t nLength = file.GetLength();
    uint64_t nCounted = 0;
    for (nOffset += frame.nBytes; nOffset < nLength; nOffset += frame.nBytes, ++nCounted)
    {
        std::array<unsigned char, HEADER_BYTES> aryHeader{};
        if (file.ReadAt(nOffset, aryHeader.data(), HEADER_BYTES) != HEADER_BYTES ||
            !ParseFrame(aryHeader.data(), frame))
            return "The file has a broken frame.";
    }
    return nOffset == nLength && nCounted == nAnnounced ? "" : "The file has not all of its frames.";
}
