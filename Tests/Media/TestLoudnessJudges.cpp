// Loudness against outside judges: libebur128, and ffmpeg's ebur128 filter. Without ffmpeg that one does not judge.

#include "LoudnessSignals.h"
#include "Synth.h"
#include "TempFolder.h"
#include "Thinning.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ebur128.h>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{
constexpr double LEVEL_TOLERANCE_LU = 0.05;
constexpr double RANGE_TOLERANCE_LU = 0.2;
constexpr double SAME_VALUES_LU = 0.05; // a tenth of a second is rounded differently at 11,025 Hz

struct LEVELS
{
    double fIntegrated = 0;
    double fRange = 0;
};

struct EndState
{
    void operator()(ebur128_state* p) const { ebur128_destroy(&p); }
};
using STATE = std::unique_ptr<ebur128_state, EndState>;

STATE Hear(const std::vector<double>& arySamples, int nRate, int nChannels)
{
    STATE state(ebur128_init(static_cast<unsigned int>(nChannels), static_cast<unsigned long>(nRate),
                             EBUR128_MODE_I | EBUR128_MODE_LRA));
    if (nChannels == 5) // its own table has the low-frequency channel of six channels in it
    {
        ebur128_set_channel(state.get(), 3, EBUR128_LEFT_SURROUND);
        ebur128_set_channel(state.get(), 4, EBUR128_RIGHT_SURROUND);
    }
    ebur128_add_frames_double(state.get(), arySamples.data(), arySamples.size() / static_cast<size_t>(nChannels));
    return state;
}

LEVELS AskLibrary(const std::vector<double>& arySamples, int nRate, int nChannels)
{
    const STATE state = Hear(arySamples, nRate, nChannels);
    LEVELS levels;
    ebur128_loudness_global(state.get(), &levels.fIntegrated);
    ebur128_loudness_range(state.get(), &levels.fRange);
    return levels;
}

void ExpectLibraryAgrees(const std::vector<double>& arySamples, int nRate, int nChannels, const std::string& strName)
{
    const CLoudnessResults results = Measure(arySamples, MakeFormat(nRate, nChannels));
    const LEVELS judged = AskLibrary(arySamples, nRate, nChannels);
    EXPECT_NEAR(results.GetIntegrated(), judged.fIntegrated, LEVEL_TOLERANCE_LU) << strName;
    EXPECT_NEAR(GetRangeOfEachSecond(results), judged.fRange, SAME_VALUES_LU) << strName;
}

// Noise whose level wanders between -30 and -14 dBFS, another way in each channel.
std::vector<double> MakeNoise(int nSeconds, int nRate, int nChannels)
{
    std::minstd_rand random(17);
    std::vector<double> aryGains(static_cast<size_t>(nChannels));
    std::vector<double> arySamples;
    for (int i = 0; i < nSeconds * nRate; ++i)
    {
        for (size_t c = 0; c < aryGains.size(); ++c)
        {
            if (i % 64 == 0)
            {
                const double fAngle = static_cast<double>(i) / nRate / (1.1 + 0.1 * static_cast<double>(c));
                aryGains[c] = std::pow(10, (-22 + 8 * std::sin(fAngle)) / 20);
            }
            const double fNoise = static_cast<double>(random()) / (std::minstd_rand::max() / 2.0) - 1;
            arySamples.push_back(fNoise * aryGains[c]);
        }
    }
    return arySamples;
}

constexpr int MUSIC_SECONDS = Thinning::Some(90, 30);
constexpr int MUSIC_NOTES = MUSIC_SECONDS * 290 / 90;

// Music that begins softly and ends loudly, in 16 bits.
const std::vector<double>& GetMusic()
{
    static const std::vector<double> s_aryMusic = []
    {
        std::vector<NOTE> aryNotes;
        static constexpr int SCALE[] = {0, 2, 4, 7, 9, 12, 16, 14};
        for (int i = 0; i < MUSIC_NOTES; ++i)
        {
            const double fLevel = 0.03 + 0.4 * i / MUSIC_NOTES;
            const int nPitch = 60 + SCALE[i * 5 % 8];
            aryNotes.push_back({i * 0.3, 0.3, nPitch, fLevel, i % 2 == 0 ? -0.5 : 0.5, i % 3 == 0 ? BELL : PLUCK});
            if (i % 4 == 0)
                aryNotes.push_back({i * 0.3, 1.2, nPitch - 24, fLevel, 0, BASS});
            if (i % 8 == 0)
                aryNotes.push_back({i * 0.3, 2.4, nPitch - 12, fLevel / 2, 0, PAD});
        }
        std::vector<double> arySamples;
        for (float f : Render(aryNotes, MUSIC_SECONDS, true, true))
            arySamples.push_back(std::round(std::clamp(static_cast<double>(f), -1.0, 1.0) * 32767) / 32768);
        return arySamples;
    }();
    return s_aryMusic;
}

constexpr int MUSIC_RATE = 44100;

bool HaveFFmpeg() { return std::system("ffmpeg -version > /dev/null 2>&1") == 0; }

// What stands last in the measurements that the filter writes every 100 ms, with three decimals.
LEVELS AskFFmpeg(const std::vector<double>& arySamples, int nRate, int nChannels)
{
    const TempFolder folder;
    const std::string strBytes(reinterpret_cast<const char*>(arySamples.data()), arySamples.size() * sizeof(double));
    const std::string strCommand = "ffmpeg -hide_banner -nostats -loglevel error -f f64le -ac " +
                                   std::to_string(nChannels) + " -ar " + std::to_string(nRate) + " -i " +
                                   folder.Write("audio.raw", strBytes) +
                                   " -af ebur128=metadata=1,ametadata=mode=print:file=- -f null -";
    LEVELS levels;
    FILE* pAnswer = popen(strCommand.c_str(), "r");
    if (pAnswer == nullptr)
        return levels;
    char szLine[256];
    while (std::fgets(szLine, sizeof szLine, pAnswer) != nullptr)
    {
        if (std::strncmp(szLine, "lavfi.r128.I=", 13) == 0)
            levels.fIntegrated = std::strtod(szLine + 13, nullptr);
        if (std::strncmp(szLine, "lavfi.r128.LRA=", 15) == 0)
            levels.fRange = std::strtod(szLine + 15, nullptr);
    }
    pclose(pAnswer);
    return levels;
}

void ExpectFFmpegAgrees(const std::vector<double>& arySamples, int nRate, int nChannels)
{
    const CLoudnessResults results = Measure(arySamples, MakeFormat(nRate, nChannels));
    const LEVELS judged = AskFFmpeg(arySamples, nRate, nChannels);
    EXPECT_NEAR(results.GetIntegrated(), judged.fIntegrated, LEVEL_TOLERANCE_LU);
    EXPECT_NEAR(results.GetRange(), judged.fRange, RANGE_TOLERANCE_LU);
}
} // namespace

TEST(LoudnessJudges, LibraryAgreesOnNoiseAtEveryRate)
{
    const std::vector<int> aryAll = {8000, 11025, 16000, 22050, 32000, 44100, 48000, 88200, 96000, 176400, 192000};
    for (int nRate : Thinning::Some<std::vector<int>>(aryAll, {8000, 48000}))
        ExpectLibraryAgrees(MakeNoise(30, nRate, 1), nRate, 1, std::to_string(nRate));
}

TEST(LoudnessJudges, LibraryAgreesOnEveryLayoutThatBothKnow)
{
    for (int nChannels : {1, 2, 5, 6})
        ExpectLibraryAgrees(MakeNoise(Thinning::Some(60, 20), 16000, nChannels), 16000, nChannels,
                            std::to_string(nChannels));
}

TEST(LoudnessJudges, LibraryAgreesOnTones)
{
    const std::vector<STRETCH> aryStretches = {{10, {-72}}, {10, {-36}}, {30, {-23}}, {20, {-12}}, {10, {-50}}};
    for (double fHz : Thinning::Some<std::vector<double>>({40, 100, 1000, 5000, 15000}, {1000}))
        ExpectLibraryAgrees(MakeTones(aryStretches, MUSIC_RATE, 2, fHz), MUSIC_RATE, 2, std::to_string(fHz));
}

TEST(LoudnessJudges, LibraryAgreesOnMusic)
{
    ExpectLibraryAgrees(GetMusic(), MUSIC_RATE, 2, "music");
    const double fRange = Measure(GetMusic(), MakeFormat(MUSIC_RATE, 2)).GetRange();
    EXPECT_NEAR(fRange, AskLibrary(GetMusic(), MUSIC_RATE, 2).fRange, RANGE_TOLERANCE_LU);
}

TEST(LoudnessJudges, LibraryAgreesOnAnAlbum)
{
    const std::vector<std::vector<double>> aryTracks = {
        GetMusic(), MakeTones({{20, {-15}}, {10, {-30}}}, MUSIC_RATE, 2), MakeNoise(30, MUSIC_RATE, 2)};
    CLoudnessResults album;
    CLoudnessResults thinned;
    std::vector<STATE> aryHeard;
    std::vector<ebur128_state*> aryStates;
    for (const std::vector<double>& aryTrack : aryTracks)
    {
        CR128Analyzer analyzer;
        ASSERT_TRUE(analyzer.SetUp(MakeFormat(MUSIC_RATE, 2)));
        ASSERT_TRUE(analyzer.Process(aryTrack.data(), static_cast<int>(aryTrack.size() / 2)));
        ASSERT_TRUE(album.Add(analyzer));
        AddEachSecond(thinned, CLoudnessResults(analyzer));
        aryHeard.push_back(Hear(aryTrack, MUSIC_RATE, 2));
        aryStates.push_back(aryHeard.back().get());
    }
    LEVELS judged;
    ebur128_loudness_global_multiple(aryStates.data(), aryStates.size(), &judged.fIntegrated);
    ebur128_loudness_range_multiple(aryStates.data(), aryStates.size(), &judged.fRange);
    EXPECT_NEAR(album.GetIntegrated(), judged.fIntegrated, LEVEL_TOLERANCE_LU);
    EXPECT_NEAR(thinned.GetRange(), judged.fRange, SAME_VALUES_LU);
}

TEST(LoudnessJudges, FFmpegAgrees)
{
    if (!HaveFFmpeg())
        GTEST_SKIP() << "ffmpeg is not installed";
    ExpectFFmpegAgrees(GetMusic(), MUSIC_RATE, 2);
    if (Thinning::SANITIZED)
        return;
    ExpectFFmpegAgrees(MakeNoise(90, 48000, 2), 48000, 2);
    ExpectFFmpegAgrees(MakeTones({{20, {-40}}, {20, {-20}}}, 48000, 2), 48000, 2);
    ExpectFFmpegAgrees(MakeNoise(60, 48000, 6), 48000, 6);
}
