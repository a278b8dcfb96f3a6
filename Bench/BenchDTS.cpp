// The test for a DTS stream over what a reader of WAV files hands to it: 256 KiB of music, of noise, and of a stream in
// the packing that takes the most work. The counterpart for each is one copy of the same bytes.

#include "DTSHelper.h"
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstring>
#include <random>
#include <string>

namespace
{
constexpr int BYTES = DTSHelper::MAX_TEST_BYTES;

LyBuffer ToBuffer(const std::string& strBytes)
{
    LyBuffer buffer;
    (void)buffer.FromBuffer(strBytes.data(), BYTES);
    return buffer;
}

// Two tones with noise below them, 16-bit stereo.
LyBuffer MakeMusic()
{
    std::minstd_rand random(1);
    std::string strBytes;
    for (int n = 0; n < BYTES / 2; ++n)
    {
        const double fSample =
            12000 * std::sin(n * 0.031) + 8000 * std::sin(n * 0.0047) + static_cast<double>(random() % 600);
        const int nSample = static_cast<int>(fSample);
        strBytes += static_cast<char>(nSample & 255);
        strBytes += static_cast<char>(nSample >> 8 & 255);
    }
    return ToBuffer(strBytes);
}

LyBuffer MakeNoise()
{
    std::minstd_rand random(1);
    std::string strBytes;
    for (int n = 0; n < BYTES; ++n)
        strBytes += static_cast<char>(random() >> 8);
    return ToBuffer(strBytes);
}

// 14-bit little-endian frames of 1792 bytes, which take 2048 bytes in the file.
LyBuffer MakeStream()
{
    std::string strBytes;
    while (strBytes.size() < BYTES)
    {
        strBytes += std::string("\xFF\x1F\x00\xE8\xF1\x07\xFF\xC1\x6F\x00", 10);
        strBytes.resize((strBytes.size() + 2047) / 2048 * 2048, '\0');
    }
    return ToBuffer(strBytes);
}

void Analyze(benchmark::State& state, LyBuffer (*pMake)())
{
    const LyBuffer buffer = pMake();
    DTSHelper helper;
    bool bStream = false;
    for (auto _ : state)
        benchmark::DoNotOptimize(bStream = helper.Analyze(buffer));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * BYTES);
    state.SetLabel(bStream ? "stream" : "none");
}

void Copy(benchmark::State& state)
{
    const LyBuffer buffer = MakeMusic();
    std::string strTarget(BYTES, '\0');
    for (auto _ : state)
    {
        std::memcpy(strTarget.data(), buffer.GetData(), BYTES);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * BYTES);
}
} // namespace

BENCHMARK_CAPTURE(Analyze, Music, MakeMusic);
BENCHMARK_CAPTURE(Analyze, Noise, MakeNoise);
BENCHMARK_CAPTURE(Analyze, Stream14Bit, MakeStream);
BENCHMARK(Copy);
