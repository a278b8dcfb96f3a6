// The picture of the wave: vectors find what the plain twin finds, wherever it lies.

#include "RipMeter.h"
#include "WaveExtremes.h"
#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace
{
void ExpectTwins(const short* pSamples, size_t nSamples, RIP_WAVE_POINT start)
{
    RIP_WAVE_POINT point = start;
    RIP_WAVE_POINT plain = start;
    AddExtremes(point, pSamples, nSamples);
    AddExtremesPlain(plain, pSamples, nSamples);
    EXPECT_EQ(plain.nLow, point.nLow) << nSamples;
    EXPECT_EQ(plain.nHigh, point.nHigh) << nSamples;
}
} // namespace

TEST(WaveExtremes, VectorsFindWhatThePlainTwinFinds)
{
    std::mt19937 random(1);
    std::vector<short> arySamples(400);
    for (int nRound = 0; nRound < 50; ++nRound)
    {
        const int nLoudness = nRound % 2 == 0 ? 65536 : 20;
        for (short& nSample : arySamples)
            nSample = static_cast<short>(static_cast<int>(random() % static_cast<unsigned>(nLoudness)) - nLoudness / 2);
        for (size_t nSamples = 0; nSamples < 100; ++nSamples)
            ExpectTwins(arySamples.data() + nRound, nSamples, {SHRT_MAX, SHRT_MIN});
        ExpectTwins(arySamples.data(), arySamples.size(), {-5, 5});
    }
}

TEST(WaveExtremes, EverySampleCounts)
{
    for (size_t nSamples = 1; nSamples < 70; ++nSamples)
    {
        for (size_t n = 0; n < nSamples; ++n)
        {
            std::vector<short> arySamples(nSamples, 3);
            arySamples[n] = SHRT_MIN;
            RIP_WAVE_POINT point = {SHRT_MAX, SHRT_MIN};
            AddExtremes(point, arySamples.data(), nSamples);
            EXPECT_EQ(SHRT_MIN, point.nLow);
            EXPECT_EQ(nSamples == 1 ? SHRT_MIN : 3, point.nHigh);
            arySamples[n] = SHRT_MAX;
            point = {SHRT_MAX, SHRT_MIN};
            AddExtremes(point, arySamples.data(), nSamples);
            EXPECT_EQ(nSamples == 1 ? SHRT_MAX : 3, point.nLow);
            EXPECT_EQ(SHRT_MAX, point.nHigh);
        }
    }
}

TEST(WaveExtremes, NoSamplesChangeNothing)
{
    RIP_WAVE_POINT point = {SHRT_MAX, SHRT_MIN};
    AddExtremes(point, nullptr, 0);
    EXPECT_EQ(SHRT_MAX, point.nLow);
    EXPECT_EQ(SHRT_MIN, point.nHigh);
}

// Stretches of two sectors, the last one of a single one.
TEST(WaveExtremes, TheMetersPictureIsThatOfItsStretchesAtAnyBlockSize)
{
    constexpr int SECTORS = RipMeter::WAVE_POINTS + 1; // so that a stretch is two sectors
    constexpr size_t SAMPLES = 1176;                   // of a sector
    std::vector<short> arySamples(SECTORS * SAMPLES);
    std::mt19937 random(2);
    for (short& nSample : arySamples)
        nSample = static_cast<short>(random());
    for (const size_t nBlock : {size_t{2}, size_t{998}, 27 * SAMPLES, arySamples.size()})
    {
        RipMeter meter(false);
        meter.Begin(SECTORS);
        for (size_t n = 0; n < arySamples.size(); n += nBlock)
            meter.Add(&arySamples[n], static_cast<long long>(std::min(nBlock, arySamples.size() - n) / 2));
        RIP_PIECE piece;
        meter.Finish(piece);
        ASSERT_EQ(2, piece.series.nWaveSectors);
        ASSERT_EQ(801U, piece.series.aryWave.size());
        for (size_t n = 0; n < piece.series.aryWave.size(); ++n)
        {
            const auto first = arySamples.begin() + static_cast<ptrdiff_t>(n * 2 * SAMPLES);
            const auto end = n == 800 ? arySamples.end() : first + 2 * SAMPLES;
            EXPECT_EQ(*std::min_element(first, end), piece.series.aryWave[n].nLow);
            EXPECT_EQ(*std::max_element(first, end), piece.series.aryWave[n].nHigh);
        }
    }
}
