// The PCM that comes to an encoder: interleaved, signed, little-endian, without padding between samples.

#pragma once

#include <cstddef>

struct ENCODER_FORMAT
{
    static constexpr int MAX_CHANNELS = 8;
    static constexpr int MAX_SAMPLE_RATE = 768000;

    int nSampleRate = 44100; // Hz
    int nChannels = 2;
    int nBits = 16; // 16, 24 or 32, of a sample

    size_t GetSampleBytes() const { return static_cast<size_t>(nBits) / 8; }
    size_t GetFrameBytes() const { return GetSampleBytes() * static_cast<size_t>(nChannels); }
    bool GetIsValid() const
    {
        return nSampleRate > 0 && nSampleRate <= MAX_SAMPLE_RATE && nChannels > 0 && nChannels <= MAX_CHANNELS &&
               (nBits == 16 || nBits == 24 || nBits == 32);
    }
};

// As numbers of nBits bits.
void EncoderUnpack(const unsigned char* pData, size_t nSamples, int nBits, int* pSamples);
// As numbers from -1 up to 1.
void EncoderUnpack(const unsigned char* pData, size_t nSamples, int nBits, float* pSamples);
