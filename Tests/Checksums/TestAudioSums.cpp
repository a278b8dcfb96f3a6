#include "AudioSums.h"
#include "PlainSums.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <initializer_list>
#include <random>

namespace
{
template <class SUM>
void AddPieces(SUM& sum, const std::vector<uint8_t>& ary, size_t nPiece)
{
    for (size_t i = 0; i < ary.size(); i += nPiece)
        sum.Add(ary.data() + i, std::min(nPiece, ary.size() - i));
}
} // namespace

TEST(AudioCRC32, LeavesOutEverySampleOfZeroWhateverThePieces)
{
    const std::vector<uint8_t> ary = {0, 0, 1, 0, 0, 2, 0, 0, 0, 0, 3, 4};
    const uint8_t aryKept[] = {1, 0, 0, 2, 3, 4}; // 0001h, 0200h, 0403h: a zero byte alone is no null sample
    for (size_t nPiece = 1; nPiece <= ary.size(); ++nPiece)
    {
        AudioCRC32 crc;
        AddPieces(crc, ary, nPiece);
        EXPECT_EQ(GetCRC32(ary.data(), ary.size()), crc.Get()) << nPiece;
        EXPECT_EQ(GetCRC32(aryKept, sizeof aryKept), crc.GetWithoutNull()) << nPiece;
    }
}

TEST(AudioCRC32, OfNothingIsZero)
{
    AudioCRC32 crc;
    EXPECT_EQ(0U, crc.Get());
    EXPECT_EQ(0U, crc.GetWithoutNull());
    const short arySilence[10] = {};
    crc.AddSamples(arySilence, 10);
    EXPECT_NE(0U, crc.Get());
    EXPECT_EQ(0U, crc.GetWithoutNull());
}

TEST(HasNullSample, FindsItAtEveryPlaceAndNothingElse)
{
    for (size_t nSamples = 0; nSamples < 70; ++nSamples)
    {
        std::vector<uint8_t> ary(2 * nSamples);
        for (size_t i = 0; i < nSamples; ++i)
            ary[2 * i + i % 2] = i % 3 == 0 ? 1 : 0x80; // one byte of each sample is zero
        EXPECT_FALSE(HasNullSample(ary.data(), nSamples)) << nSamples;
        for (size_t i = 0; i < nSamples; ++i)
        {
            std::vector<uint8_t> aryOne = ary;
            aryOne[2 * i] = aryOne[2 * i + 1] = 0;
            EXPECT_TRUE(HasNullSample(aryOne.data(), nSamples)) << nSamples << " " << i;
        }
    }
}

TEST(FrameSums, ManyAtATimeAreTheSameAsOneByOne)
{
    std::mt19937 random(450);
    std::vector<uint8_t> ary(40 * LY_CD_FRAME_BYTES + 1);
    for (uint8_t& n : ary)
        n = random() % 4 == 0 ? 0xFF : static_cast<uint8_t>(random());
    for (size_t nFrames = 0; nFrames <= 40; ++nFrames)
    {
        for (const uint32_t nIndex : {0U, 1U, 5U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFF0U, 0xFFFFFFFFU})
        {
            FRAME_SUMS fast{7, 8, 9};
            FRAME_SUMS other = fast;
            FRAME_SUMS plain = fast;
            fast.Add(ary.data() + 1, nFrames, nIndex); // at an odd address
            other.AddWithSSE2(ary.data() + 1, nFrames, nIndex);
            plain.AddPlain(ary.data() + 1, nFrames, nIndex);
            for (const FRAME_SUMS& sums : {fast, other})
            {
                EXPECT_EQ(plain.m_nWords, sums.m_nWords) << nFrames << " " << nIndex;
                EXPECT_EQ(plain.m_nLow, sums.m_nLow) << nFrames << " " << nIndex;
                EXPECT_EQ(plain.m_nHigh, sums.m_nHigh) << nFrames << " " << nIndex;
            }
        }
    }
}

TEST(AccurateRipSum, OfThreeFramesIsThatWorkedOutByHand)
{
    const uint32_t aryFrames[] = {1, 0x80000000, 0xFFFFFFFF};
    AccurateRipSum sum(3, false, false);
    sum.Add(aryFrames, sizeof aryFrames);
    // 1, 1_00000000h and 2_FFFFFFFDh: low halves 1 + 0 + FFFFFFFDh, high halves 0 + 1 + 2.
    EXPECT_EQ(0xFFFFFFFEU, sum.GetVersion1());
    EXPECT_EQ(1U, sum.GetVersion2());
}

TEST(AccurateRipSum, EqualsThePlainSumForEveryPlaceOfTheTrackAndEveryPiece)
{
    std::mt19937 random(3);
    std::vector<uint8_t> ary(20 * LY_CD_SECTOR_BYTES);
    for (uint8_t& n : ary)
        n = static_cast<uint8_t>(random());
    const uint32_t nFrames = 20 * LY_CD_SECTOR_FRAMES;
    for (int nPlace = 0; nPlace < 4; ++nPlace)
    {
        const bool bFirst = (nPlace & 1) != 0;
        const bool bLast = (nPlace & 2) != 0;
        uint32_t nVersion1 = 0;
        uint32_t nVersion2 = 0;
        for (uint64_t i = bFirst ? 2940 : 1; i <= (bLast ? nFrames - 2940 : nFrames); ++i)
        {
            uint64_t nWord = 0;
            for (size_t k = 4; k-- > 0;)
                nWord = nWord << 8 | ary[(i - 1) * 4 + k];
            nVersion1 += static_cast<uint32_t>(nWord * i);
            nVersion2 += static_cast<uint32_t>(nWord * i) + static_cast<uint32_t>(nWord * i >> 32);
        }
        for (size_t nPiece : std::initializer_list<size_t>{1, 3, 4, 7, 2352, 2354, 1 << 20})
        {
            AccurateRipSum sum(nFrames, bFirst, bLast);
            AddPieces(sum, ary, nPiece);
            sum.Add(ary.data(), 1000); // beyond the track
            EXPECT_EQ(nVersion1, sum.GetVersion1()) << nPlace << " " << nPiece;
            EXPECT_EQ(nVersion2, sum.GetVersion2()) << nPlace << " " << nPiece;
        }
    }
}

TEST(AccurateRipSum, ShorterThanItsMarginsIsZero)
{
    const std::vector<uint8_t> ary(5 * LY_CD_SECTOR_BYTES, 0xFF);
    for (uint32_t nFrames : {0U, 1U, 588U, 2939U, 2940U})
    {
        AccurateRipSum last(nFrames, false, true);
        last.Add(ary.data(), ary.size());
        EXPECT_EQ(0U, last.GetVersion2()) << nFrames;
        AccurateRipSum first(nFrames, true, false);
        first.Add(ary.data(), ary.size());
        EXPECT_EQ(nFrames == 2940, first.GetVersion2() != 0) << nFrames;
    }
}
