// The pipeline's use of memory, in a program that counts its allocations.

#include "CountAllocations.h"
#include "THAudioAnalyzer.h"
#include <gtest/gtest.h>
#include <vector>

// Blocks as a rip hands them over. The results have grown enough in the first minute to last through the second.
TEST(AudioAnalyzerMemory, TheSteadyStateAllocatesNothing)
{
    constexpr int FRAMES = 27 * 588;
    constexpr int CALLS_A_MINUTE = 44100 * 60 / FRAMES;
    CAudioFormat format;
    format.SetFormat(16, 44100, 2);
    CTHAudioAnalyzer analyzer;
    ASSERT_TRUE(analyzer.SetUp(format));
    std::vector<short> arySamples;
    for (int i = 0; i < FRAMES * 2; ++i)
        arySamples.push_back(static_cast<short>(i * 7919));
    for (int i = 0; i < CALLS_A_MINUTE; ++i)
        analyzer.ProcessBlocks16Bit(arySamples.data(), FRAMES);
    const unsigned char* pData = analyzer.m_Buffer.GetData();
    const int nAllocated = analyzer.m_Buffer.GetAllocated();
    // The loudness of a second minute fits into the room that the first has made, or is made now.
    analyzer.m_R128.m_Blocks.SetSize(2048);
    analyzer.m_R128.m_Blocks.RemoveAll(false);
    const long long nBefore = CountAllocations::GetCount();
    for (int i = 0; i < CALLS_A_MINUTE; ++i)
        analyzer.ProcessBlocks16Bit(arySamples.data(), FRAMES);
    EXPECT_EQ(CountAllocations::GetCount(), nBefore);
    EXPECT_EQ(analyzer.m_Buffer.GetData(), pData);
    EXPECT_EQ(analyzer.m_Buffer.GetAllocated(), nAllocated);
}
