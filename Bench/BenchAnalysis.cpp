// What the measuring of a rip costs: all four analysers over 16-bit stereo, and libebur128 doing integrated loudness,
// loudness range and true peak alone, over the same samples in the same run. Frames a second stand in items_per_second.

#include "StereoPass.h"
#include "THAudioAnalyzer.h"
#include <benchmark/benchmark.h>
#include <cmath>
#include <ebur128.h>
#include <memory>
#include <random>
#include <vector>

namespace
{
constexpr int RATE = 44100;
constexpr int CHANNELS = 2;
constexpr int BLOCK_FRAMES = 27 * 588; // what a rip hands over at a time
constexpr int BLOCKS = 56;             // some twenty seconds

// A beat, a tone and noise, so that no analyser has an easy way.
std::vector<short> MakeMusic()
{
    std::mt19937 random(1);
    std::uniform_real_distribution<double> noise(-0.1, 0.1);
    std::vector<short> arySamples;
    for (int i = 0; i < BLOCKS * BLOCK_FRAMES; ++i)
    {
        const double fSeconds = static_cast<double>(i) / RATE;
        const double fBeat = std::exp(-12 * std::fmod(fSeconds, 0.5)) * std::sin(2 * 3.14159265 * 60 * fSeconds);
        const double fTone = 0.2 * std::sin(2 * 3.14159265 * 440 * fSeconds);
        for (int nChannel = 0; nChannel < CHANNELS; ++nChannel)
            arySamples.push_back(static_cast<short>((0.6 * fBeat + fTone + noise(random)) * 32767));
    }
    return arySamples;
}

const std::vector<short>& Music()
{
    static const std::vector<short> s_arySamples = MakeMusic();
    return s_arySamples;
}

const short* Block(int nBlock) { return Music().data() + static_cast<ptrdiff_t>(nBlock) * BLOCK_FRAMES * CHANNELS; }

CAudioFormat Format()
{
    CAudioFormat format;
    format.SetFormat(16, RATE, CHANNELS);
    return format;
}

void CountFrames(benchmark::State& state)
{
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * BLOCKS * BLOCK_FRAMES);
}

void AllFour(benchmark::State& state)
{
    (void)Music();
    for (auto _ : state)
    {
        CTHAudioAnalyzer analyzer;
        (void)analyzer.SetUp(Format());
        for (int i = 0; i < BLOCKS; ++i)
            benchmark::DoNotOptimize(analyzer.ProcessBlocks16Bit(Block(i), BLOCK_FRAMES));
        benchmark::DoNotOptimize(analyzer.Finish());
    }
    CountFrames(state);
}
BENCHMARK(AllFour)->Unit(benchmark::kMillisecond);

void Libebur128(benchmark::State& state)
{
    (void)Music();
    for (auto _ : state)
    {
        ebur128_state* pState =
            ebur128_init(CHANNELS, RATE, EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK);
        for (int i = 0; i < BLOCKS; ++i)
            benchmark::DoNotOptimize(ebur128_add_frames_short(pState, Block(i), BLOCK_FRAMES));
        double fLoudness = 0;
        double fRange = 0;
        benchmark::DoNotOptimize(ebur128_loudness_global(pState, &fLoudness));
        benchmark::DoNotOptimize(ebur128_loudness_range(pState, &fRange));
        ebur128_destroy(&pState);
    }
    CountFrames(state);
}
BENCHMARK(Libebur128)->Unit(benchmark::kMillisecond);

// What each part has of the whole.
template <class PART>
void RunPart(benchmark::State& state, const PART& part)
{
    CTHAudioAnalyzer analyzer;
    (void)analyzer.SetUp(Format());
    std::vector<double> aryDoubles(Music().size());
    (void)analyzer.m_Convert(Music().data(), aryDoubles.data(), static_cast<int>(aryDoubles.size()));
    for (auto _ : state)
    {
        for (int i = 0; i < BLOCKS; ++i)
            part(analyzer, aryDoubles.data() + static_cast<ptrdiff_t>(i) * BLOCK_FRAMES * CHANNELS);
        benchmark::ClobberMemory();
    }
    CountFrames(state);
}

void Beats(benchmark::State& state)
{
    RunPart(state, [](CTHAudioAnalyzer& analyzer, const double* pSamples)
            { analyzer.m_BPM.ProcessFrames(pSamples, BLOCK_FRAMES, CHANNELS); });
}
BENCHMARK(Beats)->Unit(benchmark::kMillisecond);

void Loudness(benchmark::State& state)
{
    RunPart(state, [](CTHAudioAnalyzer& analyzer, const double* pSamples)
            { benchmark::DoNotOptimize(analyzer.m_R128.Process(pSamples, BLOCK_FRAMES)); });
}
BENCHMARK(Loudness)->Unit(benchmark::kMillisecond);

void TruePeak(benchmark::State& state)
{
    RunPart(state, [](CTHAudioAnalyzer& analyzer, const double* pSamples)
            { analyzer.m_Peak.Process(pSamples, BLOCK_FRAMES); });
}
BENCHMARK(TruePeak)->Unit(benchmark::kMillisecond);

void DynamicRange(benchmark::State& state)
{
    RunPart(state,
            [](CTHAudioAnalyzer& analyzer, const double* pSamples) { analyzer.m_DR.Process(pSamples, BLOCK_FRAMES); });
}
BENCHMARK(DynamicRange)->Unit(benchmark::kMillisecond);

// The first two and the last of them in one loop, as a stereo stream takes them.
void AllButTruePeak(benchmark::State& state)
{
    RunPart(state, [](CTHAudioAnalyzer& analyzer, const double* pSamples)
            { CStereoPass::Process(analyzer.m_BPM, analyzer.m_R128, analyzer.m_DR, pSamples, BLOCK_FRAMES); });
}
BENCHMARK(AllButTruePeak)->Unit(benchmark::kMillisecond);

void Convert(benchmark::State& state)
{
    CConvertToFloatFilter convert;
    convert.BindTo16Bit();
    std::vector<double> aryDoubles(static_cast<size_t>(BLOCK_FRAMES) * CHANNELS);
    for (auto _ : state)
    {
        for (int i = 0; i < BLOCKS; ++i)
            benchmark::DoNotOptimize(convert(Block(i), aryDoubles.data(), BLOCK_FRAMES * CHANNELS));
        benchmark::ClobberMemory();
    }
    CountFrames(state);
}
BENCHMARK(Convert)->Unit(benchmark::kMillisecond);
} // namespace
