// Recordings as people have them: never taken for a DTS stream, and measured as outside judges measure them.
//
// RONDEL_RECORDINGS names a folder with files that ffmpeg reads; without it the music of the example disc is heard.
// What the judge of tempo says is counted and not required, since it often hears two thirds of a tempo, or none in an
// orchestra. Without ffmpeg nothing is judged.

#include "BeatsPerMinuteAnalyzer.h"
#include "DTSHelper.h"
#include "LoudnessSignals.h"
#include "PeakLevelAnalyzer.h"
#include "TempFolder.h"
#include "TempoJudge.h"
#include "TempoResults.h"
#include "Thinning.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ebur128.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

namespace
{
constexpr int RATE = 44100;
constexpr int CHANNELS = 2;
constexpr double LEVEL_TOLERANCE_LU = 0.05;
constexpr double RANGE_TOLERANCE_LU = 0.2;
constexpr double SHORT_SECONDS = 30;
constexpr double PEAK_TOLERANCE_DB = 0.1; // outside the range in which the judges see it: each has a filter of its own
// The published filter is not flat: where a wave was cut far above full scale it may read so much less or more.
constexpr double RIPPLE_DB = 0.25;
constexpr double TEMPO_TOLERANCE = 0.02;

struct FIGURES
{
    double fIntegrated = 0;
    double fRange = 0;
    double fRangeOfSeconds = 0; // of one short-term value a second, which is what the library takes
    double fTruePeak = 0;       // dBTP, of the louder channel
};

// A recording as raw 16-bit stereo in a file, and its samples.
struct RECORDING
{
    std::string strRaw;
    std::vector<short> arySamples;
    std::vector<double> aryDoubles;

    double GetSeconds() const { return static_cast<double>(arySamples.size()) / CHANNELS / RATE; }
};

bool Decode(const std::filesystem::path& path, const std::string& strRaw, RECORDING& recording)
{
    const std::string strCommand = "ffmpeg -v error -nostdin -y -i '" + path.string() + "' -map 0:a:0 -ac 2 -ar " +
                                   std::to_string(RATE) + " -f s16le '" + strRaw + "'";
    if (std::system(strCommand.c_str()) != 0)
        return false;
    const std::string strBytes = ReadBlocks(strRaw);
    recording.strRaw = strRaw;
    recording.arySamples.resize(strBytes.size() / sizeof(short));
    std::memcpy(recording.arySamples.data(), strBytes.data(), recording.arySamples.size() * sizeof(short));
    recording.aryDoubles.resize(recording.arySamples.size());
    std::transform(recording.arySamples.begin(), recording.arySamples.end(), recording.aryDoubles.begin(),
                   [](short n) { return n / 32768.0; });
    return !recording.arySamples.empty();
}

FIGURES MeasureOurs(const RECORDING& recording)
{
    const CAudioFormat format = MakeFormat(RATE, CHANNELS);
    const CLoudnessResults results = Measure(recording.aryDoubles, format);
    CPeakLevelAnalyzer peak;
    EXPECT_TRUE(peak.SetUp(format));
    peak.Process(recording.aryDoubles.data(), static_cast<int>(recording.aryDoubles.size()) / CHANNELS);
    return {results.GetIntegrated(), results.GetRange(), GetRangeOfEachSecond(results), peak.GetTruePeakDBTP()};
}

FIGURES AskLibrary(const RECORDING& recording)
{
    ebur128_state* pState = ebur128_init(CHANNELS, RATE, EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK);
    FIGURES figures;
    double aryPeaks[CHANNELS] = {};
    (void)ebur128_add_frames_short(pState, recording.arySamples.data(), recording.arySamples.size() / CHANNELS);
    (void)ebur128_loudness_global(pState, &figures.fIntegrated);
    (void)ebur128_loudness_range(pState, &figures.fRangeOfSeconds);
    for (unsigned int n = 0; n < CHANNELS; ++n)
        (void)ebur128_true_peak(pState, n, &aryPeaks[n]);
    ebur128_destroy(&pState);
    figures.fTruePeak = 20 * std::log10(std::max(aryPeaks[0], aryPeaks[1]));
    return figures;
}

// What its filter says last, and its largest peak.
FIGURES AskFFmpeg(const RECORDING& recording)
{
    const std::string strCommand = "ffmpeg -hide_banner -nostats -loglevel error -f s16le -ac 2 -ar " +
                                   std::to_string(RATE) + " -i '" + recording.strRaw +
                                   "' -af ebur128=peak=true:metadata=1,ametadata=mode=print:file=- -f null -";
    FIGURES figures;
    FILE* pAnswer = popen(strCommand.c_str(), "r");
    if (pAnswer == nullptr)
        return figures;
    double fPeak = 0;
    char szLine[256];
    const auto read = [&szLine](const char* pKey, double& f)
    {
        const size_t nKey = std::strlen(pKey);
        const bool bFound = std::strncmp(szLine, pKey, nKey) == 0;
        f = bFound ? std::strtod(szLine + nKey, nullptr) : f;
        return bFound;
    };
    while (std::fgets(szLine, sizeof szLine, pAnswer) != nullptr)
    {
        double f = 0;
        (void)read("lavfi.r128.I=", figures.fIntegrated);
        (void)read("lavfi.r128.LRA=", figures.fRange);
        if (read("lavfi.r128.true_peaks_ch0=", f) || read("lavfi.r128.true_peaks_ch1=", f))
            fPeak = std::max(fPeak, f);
    }
    pclose(pAnswer);
    figures.fTruePeak = 20 * std::log10(fPeak);
    return figures;
}

// How far our true peak lies outside the range in which the judges see it.
double JudgeFigures(const RECORDING& recording)
{
    const FIGURES ours = MeasureOurs(recording);
    const FIGURES library = AskLibrary(recording);
    if (std::isinf(library.fIntegrated)) // silence, for which each has a figure of its own
        return 0;
    const FIGURES ffmpeg = AskFFmpeg(recording);
    EXPECT_NEAR(ours.fIntegrated, library.fIntegrated, LEVEL_TOLERANCE_LU);
    EXPECT_NEAR(ours.fIntegrated, ffmpeg.fIntegrated, LEVEL_TOLERANCE_LU);
    EXPECT_NEAR(ours.fRangeOfSeconds, library.fRangeOfSeconds, LEVEL_TOLERANCE_LU);
    // ffmpeg takes the first windows of 3 s before they are full, which counts in what is short.
    if (recording.GetSeconds() > SHORT_SECONDS)
    {
        EXPECT_NEAR(ours.fRange, ffmpeg.fRange, RANGE_TOLERANCE_LU);
    }
    const auto [fLow, fHigh] = std::minmax(library.fTruePeak, ffmpeg.fTruePeak);
    const double fFar = std::fabs(ours.fTruePeak - std::clamp(ours.fTruePeak, fLow, fHigh));
    EXPECT_LT(fFar, RIPPLE_DB) << ours.fTruePeak << ", judged from " << fLow << " to " << fHigh;
    return fFar;
}

// In windows as a reader of WAV files looks at them.
int CountDTS(const RECORDING& recording)
{
    constexpr size_t STEP_BYTES = 0x10000;
    const size_t nBytes = recording.arySamples.size() * sizeof(short);
    const auto* pBytes = reinterpret_cast<const char*>(recording.arySamples.data());
    int nFinds = 0;
    DTSHelper helper;
    LyBuffer window;
    for (size_t n = 0; n < nBytes; n += STEP_BYTES)
    {
        (void)window.FromBuffer(pBytes + n, static_cast<int>(std::min<size_t>(DTSHelper::MAX_TEST_BYTES, nBytes - n)));
        nFinds += helper.Analyze(window) ? 1 : 0;
    }
    return nFinds;
}

// As the judge hears it, up to an octave.
bool IsTempo(const RECORDING& recording, double fJudged)
{
    CBeatsPerMinuteAnalyzerV1 analyzer;
    EXPECT_TRUE(analyzer.SetUp(RATE));
    analyzer.ProcessFrames(recording.aryDoubles.data(), static_cast<int>(recording.aryDoubles.size()) / CHANNELS,
                           CHANNELS);
    const double fOurs = CTempoResults(analyzer).m_fBPM;
    constexpr double OCTAVES[] = {0.5, 1, 2};
    return std::any_of(std::begin(OCTAVES), std::end(OCTAVES),
                       [&](double f) { return std::fabs(fOurs * f / fJudged - 1) < TEMPO_TOLERANCE; });
}
} // namespace

TEST(Recordings, AreNoStreamAndReadAsOutsideJudgesReadThem)
{
    if (std::system("ffmpeg -version > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "ffmpeg is not installed";
    const TempFolder folder;
    const char* pRecordings = std::getenv("RONDEL_RECORDINGS");
    const std::string strFrom = pRecordings != nullptr ? pRecordings : RONDEL_EXAMPLE_MUSIC;
    double fSeconds = 0;
    int nRecordings = 0;
    int nPeaksFar = 0;
    int nTempos = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(strFrom))
    {
        RECORDING recording;
        if (Thinning::SANITIZED && pRecordings == nullptr && nRecordings > 0)
            break;
        if (!entry.is_regular_file() || !Decode(entry.path(), folder.GetPath("audio.raw"), recording))
            continue;
        SCOPED_TRACE(entry.path().filename().string());
        EXPECT_EQ(0, CountDTS(recording));
        nPeaksFar += JudgeFigures(recording) > PEAK_TOLERANCE_DB ? 1 : 0;
        ++nRecordings;
        fSeconds += recording.GetSeconds();
        const double fJudged = AskTempoJudge(recording.arySamples, CHANNELS);
        nTempos += fJudged > 0 && IsTempo(recording, fJudged) ? 1 : 0;
    }
    EXPECT_GT(nRecordings, 0) << "nothing in " << strFrom << " is audio";
    EXPECT_LE(nPeaksFar, nRecordings / 20);
    std::printf(
        "%d recordings of %.0f minutes; %d with a true peak more than 0.1 dB off; the judge of tempo agrees on %d\n",
        nRecordings, fSeconds / 60, nPeaksFar, nTempos);
}
