// Loudness and beats: CR128Analyzer and its results against libebur128 doing integrated loudness and range, and against
// its own filter one channel at a time; CBeatsPerMinuteAnalyzerV1 by many frames and by single ones. 16-bit stereo at
// 44.1 kHz, as doubles, in calls of 4096 frames.

#include "BeatsPerMinuteAnalyzer.h"
#include "LoudnessResults.h"
#include "R128Analyzer.h"
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <ebur128.h>
#include <random>
#include <vector>

namespace
{
constexpr int RATE = 44100;
constexpr int CHANNELS = 2;
constexpr int SECONDS = 30;
constexpr int FRAMES = RATE * SECONDS;
constexpr int CALL_FRAMES = 4096;

CAudioFormat GetFormat()
{
    CAudioFormat format;
    format.SetFormat(64, RATE, CHANNELS, false, LY_GUID_NULL, true);
    return format;
}

// Noise with beats in it and, in the end, as after a track, two seconds of silence.
const std::vector<double>& GetAudio()
{
    static const std::vector<double> s_aryAudio = []
    {
        std::minstd_rand random(1);
        std::vector<double> arySamples(static_cast<size_t>(FRAMES) * CHANNELS);
        for (size_t i = 0; i < arySamples.size() - 2 * RATE * CHANNELS; ++i)
        {
            const double fBeat = std::exp(-8.0 * static_cast<double>(i % 44100) / RATE);
            arySamples[i] = std::floor((static_cast<double>(random() % 65536) - 32768) * fBeat) / 32768;
        }
        return arySamples;
    }();
    return s_aryAudio;
}

template <class PROCESS>
void ForEachCall(PROCESS Process)
{
    const double* pSamples = GetAudio().data();
    for (int i = 0; i < FRAMES; i += CALL_FRAMES)
        Process(pSamples + static_cast<ptrdiff_t>(i) * CHANNELS, std::min(CALL_FRAMES, FRAMES - i));
}

void CountFrames(benchmark::State& state)
{
    state.counters["frames"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * FRAMES, benchmark::Counter::kIsRate);
}

void Loudness(benchmark::State& state)
{
    for (auto _ : state)
    {
        CR128Analyzer analyzer;
        (void)analyzer.SetUp(GetFormat());
        ForEachCall([&](const double* p, int nFrames) { (void)analyzer.Process(p, nFrames); });
        const CLoudnessResults results(analyzer);
        benchmark::DoNotOptimize(results.GetIntegrated() + results.GetRange());
    }
    CountFrames(state);
}

void LoudnessOfSingleChannels(benchmark::State& state)
{
    CR128Analyzer analyzer;
    (void)analyzer.SetUp(GetFormat());
    for (auto _ : state)
    {
        for (int c = 0; c < CHANNELS; ++c)
        {
            CR128Analyzer::CChannel channel = *analyzer.m_Channels[c];
            for (size_t i = static_cast<size_t>(c); i < GetAudio().size(); i += CHANNELS)
            {
                const double fOutput = channel.Filter(GetAudio()[i]);
                channel.m_fSum += fOutput * fOutput;
            }
            benchmark::DoNotOptimize(channel.m_fSum);
        }
    }
    CountFrames(state);
}

void Library(benchmark::State& state)
{
    for (auto _ : state)
    {
        ebur128_state* pState = ebur128_init(CHANNELS, RATE, EBUR128_MODE_I | EBUR128_MODE_LRA);
        ForEachCall([&](const double* p, int nFrames)
                    { (void)ebur128_add_frames_double(pState, p, static_cast<size_t>(nFrames)); });
        double fIntegrated = 0;
        double fRange = 0;
        (void)ebur128_loudness_global(pState, &fIntegrated);
        (void)ebur128_loudness_range(pState, &fRange);
        benchmark::DoNotOptimize(fIntegrated + fRange);
        ebur128_destroy(&pState);
    }
    CountFrames(state);
}

void BeatsByManyFrames(benchmark::State& state)
{
    for (auto _ : state)
    {
        CBeatsPerMinuteAnalyzerV1 analyzer;
        (void)analyzer.SetUp(RATE);
        ForEachCall([&](const double* p, int nFrames) { analyzer.ProcessFrames(p, nFrames, CHANNELS); });
        benchmark::DoNotOptimize(analyzer.m_nTotal);
    }
    CountFrames(state);
}

void BeatsBySingleFrames(benchmark::State& state)
{
    for (auto _ : state)
    {
        CBeatsPerMinuteAnalyzerV1 analyzer;
        (void)analyzer.SetUp(RATE);
        for (size_t i = 0; i < GetAudio().size(); i += CHANNELS)
            analyzer.ProcessBlock(CBeatsPerMinuteAnalyzerV1::RoundSample(GetAudio()[i]),
                                  CBeatsPerMinuteAnalyzerV1::RoundSample(GetAudio()[i + 1]));
        benchmark::DoNotOptimize(analyzer.m_nTotal);
    }
    CountFrames(state);
}
} // namespace

BENCHMARK(Loudness)->Name("loudness/twoChannelsAtOnce")->Unit(benchmark::kMillisecond);
BENCHMARK(LoudnessOfSingleChannels)->Name("loudness/oneByOne")->Unit(benchmark::kMillisecond);
BENCHMARK(Library)->Name("loudness/libebur128")->Unit(benchmark::kMillisecond);
BENCHMARK(BeatsByManyFrames)->Name("beats/manyFrames")->Unit(benchmark::kMillisecond);
BENCHMARK(BeatsBySingleFrames)->Name("beats/singleFrames")->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
