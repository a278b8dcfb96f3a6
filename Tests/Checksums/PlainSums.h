// A second, slow reading of what the sums are, frame by frame from the definitions, for the tests to compare with; and
// audio for them.

#pragma once

#include "CDLayout.h"
#include "Thinning.h"
#include <cstddef>
#include <cstdint>
#include <vector>

// The seeded subtractive generator (Knuth, The Art of Computer Programming 2, 3.2.2, with 161803398 as constant), of
// whose numbers the low bytes are taken.
class SubtractiveBytes
{
public:
    explicit SubtractiveBytes(int nSeed)
    {
        int64_t nLast = 161803398 - nSeed;
        int64_t nNext = 1;
        m_aryState[55] = nLast;
        for (int i = 1; i < 55; ++i)
        {
            const int nPlace = 21 * i % 55;
            m_aryState[nPlace] = nNext;
            nNext = Wrap(nLast - nNext);
            nLast = m_aryState[nPlace];
        }
        for (int nRound = 0; nRound < 4; ++nRound)
        {
            for (int i = 1; i < 56; ++i)
                m_aryState[i] = Wrap(m_aryState[i] - m_aryState[1 + (i + 30) % 55]);
        }
    }

    uint8_t Next()
    {
        m_nA = m_nA == 55 ? 1 : m_nA + 1;
        m_nB = m_nB == 55 ? 1 : m_nB + 1;
        m_aryState[m_nA] = Wrap(m_aryState[m_nA] - m_aryState[m_nB]);
        return static_cast<uint8_t>(m_aryState[m_nA]);
    }

    std::vector<uint8_t> Make(size_t nBytes)
    {
        std::vector<uint8_t> ary(nBytes);
        for (uint8_t& n : ary)
            n = Next();
        return ary;
    }

private:
    static int64_t Wrap(int64_t n) { return n < 0 ? n + 2147483647 : n; }

    int64_t m_aryState[56] = {};
    int m_nA = 0;
    int m_nB = 21;
};

inline CD_LAYOUT MakeLayout(const std::vector<int>& aryStarts, int nLeadOut)
{
    CD_LAYOUT layout;
    for (int nStart : aryStarts)
        layout.Add(nStart);
    layout.Finish(nLeadOut);
    return layout;
}

// The audio of a whole disc from sector 0 on, and sums over it at an offset. Frames outside of it make a sum unknown.
struct PlainDisc
{
    CD_LAYOUT m_Layout;
    std::vector<uint32_t> m_aryFrames;

    static constexpr int64_t SECTOR = 588;

    int64_t First(int nTrack) const { return Track(nTrack).m_nStart * SECTOR; }
    int64_t End(int nTrack) const { return Track(nTrack).m_nEnd * SECTOR; }
    const CD_LAYOUT_TRACK& Track(int nTrack) const { return m_Layout.m_aryTracks[static_cast<size_t>(nTrack)]; }
    bool Has(int64_t nFirst, int64_t nEnd) const
    {
        return nFirst < nEnd && nFirst >= 0 && nEnd <= static_cast<int64_t>(m_aryFrames.size());
    }

    uint32_t AccurateRip(int nTrack, int nOffset, bool bVersion2) const
    {
        const int64_t nFrames = End(nTrack) - First(nTrack);
        const int64_t nFrom = nTrack == m_Layout.GetFirstAudio() ? 2940 : 1;
        const int64_t nTo = nTrack == m_Layout.GetLastAudio() ? nFrames - 2940 : nFrames;
        if (nFrom > nTo || !Has(First(nTrack) + nOffset + nFrom - 1, First(nTrack) + nOffset + nTo))
            return 0;
        return SumUp(m_aryFrames.data() + First(nTrack) + nOffset, nFrom, nTo, bVersion2);
    }
    TEST_RECKONING static uint32_t SumUp(const uint32_t* pTrack, int64_t nFrom, int64_t nTo, bool bVersion2)
    {
        uint32_t nSum = 0;
        for (int64_t i = nFrom; i <= nTo; ++i)
        {
            const uint64_t nProduct = uint64_t{pTrack[i - 1]} * static_cast<uint64_t>(i);
            nSum += static_cast<uint32_t>(nProduct);
            if (bVersion2)
                nSum += static_cast<uint32_t>(nProduct >> 32);
        }
        return nSum;
    }

    uint32_t Frame450(int nTrack, int nOffset) const
    {
        const int64_t nFirst = First(nTrack) + 450 * SECTOR + nOffset;
        if (Track(nTrack).m_nEnd - Track(nTrack).m_nStart < 451 || !Has(nFirst, nFirst + SECTOR))
            return 0;
        uint32_t nSum = 0;
        for (int i = 1; i <= SECTOR; ++i)
            nSum += m_aryFrames[static_cast<size_t>(nFirst + i - 1)] * static_cast<uint32_t>(i);
        return nSum;
    }

    // The eight steps of the register for a byte in its low bits.
    static std::vector<uint32_t> MakeByteSteps()
    {
        std::vector<uint32_t> arySteps(256);
        for (uint32_t n = 0; n < 256; ++n)
        {
            arySteps[n] = n;
            for (int nBit = 0; nBit < 8; ++nBit)
                arySteps[n] = arySteps[n] >> 1 ^ ((arySteps[n] & 1) != 0 ? 0xEDB88320U : 0);
        }
        return arySteps;
    }

    uint32_t CRC32(int64_t nFirst, int64_t nEnd, bool bWithoutNull = false) const
    {
        if (!Has(nFirst, nEnd))
            return 0;
        static const std::vector<uint32_t> s_arySteps = MakeByteSteps();
        return RunRegister(s_arySteps.data(), m_aryFrames.data() + nFirst, nEnd - nFirst, bWithoutNull);
    }
    TEST_RECKONING static uint32_t RunRegister(const uint32_t* pSteps, const uint32_t* pFrames, int64_t nFrames,
                                               bool bWithoutNull)
    {
        uint32_t nRegister = 0xFFFFFFFF;
        for (int64_t i = 0; i < nFrames; ++i)
        {
            const uint32_t nFrame = pFrames[i];
            for (int nShift = 0; nShift < 32; nShift += 8)
            {
                if (!bWithoutNull || (nFrame >> (nShift & 16) & 0xFFFF) != 0)
                    nRegister = nRegister >> 8 ^ pSteps[(nRegister ^ nFrame >> nShift) & 0xFF];
            }
        }
        return ~nRegister;
    }

    int64_t CTDBSuffix() const
    {
        const int64_t nTotal = End(m_Layout.GetLastAudio()) - First(m_Layout.GetFirstAudio());
        return (11760 + 2 * nTotal % 11760) / 2;
    }

    uint32_t TrackCTDB(int nTrack, int nOffset) const
    {
        const int64_t nPrefix = nTrack == m_Layout.GetFirstAudio() ? 5880 : 0;
        const int64_t nSuffix = nTrack == m_Layout.GetLastAudio() ? CTDBSuffix() : 0;
        return CRC32(First(nTrack) + nPrefix + nOffset, End(nTrack) - nSuffix + nOffset);
    }

    uint32_t DiscCTDB(int nOffset) const
    {
        return CRC32(First(m_Layout.GetFirstAudio()) + 5880 + nOffset,
                     End(m_Layout.GetLastAudio()) - CTDBSuffix() + nOffset);
    }
};
