// CPU time per second of audio: a track of a disc image pulled through the built plug-in, as a player does, against a
// program that reads the same bytes from the file.

#include "CDUnits.h"
#include "in_Rondel.h"
#include "LyAudioInputBase.h"
#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include <benchmark/benchmark.h>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace
{
constexpr int SECONDS = 60;
constexpr const char* CUE_PATH = "/tmp/rondel-bench.cue";
constexpr const char* BIN_PATH = "/tmp/rondel-bench.bin";

void MakeImage()
{
    std::ofstream bin(BIN_PATH, std::ios::binary);
    std::vector<char> arySecond(LY_CD_SECOND_BYTES);
    for (int i = 0; i < SECONDS; ++i)
    {
        for (size_t n = 0; n < arySecond.size(); ++n)
            arySecond[n] = static_cast<char>(n * 31 + static_cast<size_t>(i));
        bin.write(arySecond.data(), static_cast<std::streamsize>(arySecond.size()));
    }
    std::ofstream(CUE_PATH) << "FILE \"rondel-bench.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n";
}

double GetProcessSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// All threads count: the ring's worker does most of the work.
template <class WORK>
void Measure(benchmark::State& state, WORK work)
{
    MakeImage();
    double fSeconds = 0;
    for (auto _ : state)
    {
        const double fStart = GetProcessSeconds();
        work();
        fSeconds += GetProcessSeconds() - fStart;
    }
    state.counters["core_percent"] = 100 * fSeconds / (static_cast<double>(state.iterations()) * SECONDS);
    std::remove(CUE_PATH);
    std::remove(BIN_PATH);
}

void PlayThroughTheSource(benchmark::State& state)
{
    GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/"));
    Measure(state,
            [&state]
            {
                const std::unique_ptr<ILyAudioInput> pSource(GetInputSource(nullptr));
                if (pSource->Open((L"cda://" + LyString().FromANSI(CUE_PATH) + L",1")) != 0)
                {
                    state.SkipWithError("the source does not open");
                    return;
                }
                std::vector<unsigned char> aryBuffer(16384);
                while (pSource->GetSamples(aryBuffer.data(), static_cast<int>(aryBuffer.size())) > 0)
                    benchmark::ClobberMemory();
            });
}
BENCHMARK(PlayThroughTheSource)->Unit(benchmark::kMillisecond)->Iterations(3);

void ReadTheFile(benchmark::State& state)
{
    Measure(state,
            []
            {
                FILE* pFile = std::fopen(BIN_PATH, "rb");
                std::vector<unsigned char> aryBuffer(16384);
                while (std::fread(aryBuffer.data(), 1, aryBuffer.size(), pFile) > 0)
                    benchmark::ClobberMemory();
                std::fclose(pFile);
            });
}
BENCHMARK(ReadTheFile)->Unit(benchmark::kMillisecond)->Iterations(3);
} // namespace
