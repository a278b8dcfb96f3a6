// The sink of a rip, into a WAV file.

#include "CDUnits.h"
#include "LySharedToolsHelper.h"
#include "MemoryFile.h"
#include "ProcessInfo.h"
#include "TempFolder.h"
#include "THAudioAnalyzer.h"
#include "wavesave.h"
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <vector>

namespace
{
CAudioFormat MakeCDFormat()
{
    CAudioFormat format;
    format.SetFormat(16, LY_CD_SAMPLE_RATE, 2);
    return format;
}

class WaveSaveTest : public ::testing::Test
{
protected:
    WaveSaveTest() : m_pSave(new CWaveSave), m_aryFrames(LY_CD_SECTOR_FRAMES)
    {
        for (size_t i = 0; i < m_aryFrames.size(); ++i)
            m_aryFrames[i] = static_cast<unsigned int>(i) * 0x01020304;
    }
    void OpenFile(bool bSwapBytes = false)
    {
        ASSERT_TRUE(m_pSave->m_WAVCreator.Open(new MemoryWriter(m_File), true, MakeCDFormat(), bSwapBytes));
        m_File.aryCalls.clear();
    }
    std::string GetBytes() const
    {
        return std::string(reinterpret_cast<const char*>(m_aryFrames.data()), m_aryFrames.size() * sizeof(int));
    }
    MEMORY_FILE m_File;          // outlives the writer
    CTHAudioAnalyzer m_Analyzer; // outlives the sink
    std::unique_ptr<CWaveSave> m_pSave;
    std::vector<unsigned int> m_aryFrames;
};
} // namespace

TEST(WaveSave, IsAnEncoderPluginWithItsMembersBehind)
{
    CWaveSave save;
    const CEncoderPlugin& base = save;
    const void* const aryMembers[] = {&base,          &base.m_pCallback,   &save.m_WAVCreator, &save.m_pAnalyzer,
                                      &save.m_nError, &save.m_bUseEncoder, &save.m_strName};
    EXPECT_EQ(static_cast<const void*>(&save), aryMembers[0]);
    for (size_t i = 1; i < std::size(aryMembers); ++i)
        EXPECT_LT(aryMembers[i - 1], aryMembers[i]) << i;
    EXPECT_NE(&base.m_strName, &save.m_strName);
    EXPECT_EQ(nullptr, save.m_pAnalyzer);
    EXPECT_EQ(0, save.m_nError);
    EXPECT_FALSE(save.m_bUseEncoder);
    EXPECT_FALSE(save.GetIsReady());
}

TEST_F(WaveSaveTest, FramesGoIntoTheFile)
{
    OpenFile();
    EXPECT_TRUE(m_pSave->GetIsReady());
    m_pSave->WriteBuffer(LY_CD_SECTOR_FRAMES, m_aryFrames.data());
    EXPECT_EQ(0, m_pSave->m_nError);
    EXPECT_EQ("Write 2352", m_File.GetCalls());
    EXPECT_EQ(GetBytes(), m_File.strContent.substr(44));
}

TEST_F(WaveSaveTest, AFileTakesABlockInOnePiece)
{
    OpenFile();
    m_aryFrames.resize(54 * LY_CD_SECTOR_FRAMES);
    m_pSave->WriteBuffer(54 * LY_CD_SECTOR_FRAMES, m_aryFrames.data());
    EXPECT_EQ("Write 127008", m_File.GetCalls());
}

TEST_F(WaveSaveTest, ARefusalIsElevenUntilTheNextWrite)
{
    OpenFile();
    m_File.nRoom = 44 + 2352 + 100;
    m_pSave->WriteBuffer(LY_CD_SECTOR_FRAMES, m_aryFrames.data());
    EXPECT_EQ(0, m_pSave->m_nError);
    m_pSave->WriteBuffer(LY_CD_SECTOR_FRAMES, m_aryFrames.data());
    EXPECT_EQ(11, m_pSave->m_nError);
    m_File.nRoom = LLONG_MAX; // somebody made room
    m_pSave->WriteBuffer(1, m_aryFrames.data());
    EXPECT_EQ(0, m_pSave->m_nError);
}

TEST_F(WaveSaveTest, WithoutAFileEverythingIsRefused)
{
    m_pSave->WriteBuffer(LY_CD_SECTOR_FRAMES, m_aryFrames.data());
    EXPECT_EQ(11, m_pSave->m_nError);
    m_pSave->Stop();
    EXPECT_EQ(0, m_pSave->m_nError);
}

TEST_F(WaveSaveTest, ImpossibleBuffersAreNoData)
{
    OpenFile();
    m_pSave->m_pAnalyzer = &m_Analyzer;
    m_pSave->WriteBuffer(-588, m_aryFrames.data());
    EXPECT_EQ(0, m_pSave->m_nError);
    m_pSave->WriteBuffer(588, nullptr);
    EXPECT_EQ(11, m_pSave->m_nError);
    EXPECT_EQ(44u, m_File.strContent.size());
    EXPECT_EQ(0, m_Analyzer.m_nFramesProcessed);
}

// ---- The analyser

TEST_F(WaveSaveTest, TheAnalyserSeesEverySampleEvenIfTheFileTakesNone)
{
    m_pSave->m_pAnalyzer = &m_Analyzer;
    m_pSave->WriteBuffer(LY_CD_SECTOR_FRAMES, m_aryFrames.data());
    EXPECT_EQ(11, m_pSave->m_nError);
    OpenFile();
    m_pSave->WriteBuffer(100, m_aryFrames.data());
    m_pSave->WriteBuffer(0, m_aryFrames.data());
    EXPECT_EQ(688, m_Analyzer.m_nFramesProcessed);
}

TEST_F(WaveSaveTest, TheAnalyserComesBeforeTheFileSwapsTheBytes)
{
    ASSERT_TRUE(m_Analyzer.SetUp(MakeCDFormat()));
    OpenFile(true);
    m_pSave->m_pAnalyzer = &m_Analyzer;
    m_aryFrames[0] = 0x4000C000; // left -0.5, right 0.5
    m_pSave->WriteBuffer(1, m_aryFrames.data());
    EXPECT_EQ(0x004000C0u, m_aryFrames[0]) << "the caller's buffer is swapped";
    EXPECT_EQ(std::string("\xC0\x00\x40\x00", 4), m_File.strContent.substr(44));
    const double* pSeen = reinterpret_cast<const double*>(m_Analyzer.m_Buffer.GetData());
    ASSERT_NE(nullptr, pSeen);
    EXPECT_EQ(-0.5, pSeen[0]);
    EXPECT_EQ(0.5, pSeen[1]);
}

TEST_F(WaveSaveTest, StopFinishesTheAnalyser)
{
    CAudioFormat format = MakeCDFormat();
    ASSERT_TRUE(m_Analyzer.SetUp(format));
    m_pSave->m_pAnalyzer = &m_Analyzer;
    m_pSave->WriteBuffer(LY_CD_SECTOR_FRAMES, m_aryFrames.data());
    m_pSave->Stop();
    EXPECT_EQ(0, m_Analyzer.Finish()) << "there was something to finish";
}

// ---- The end

TEST_F(WaveSaveTest, StopFinalizesTheFileOnce)
{
    OpenFile();
    m_pSave->WriteBuffer(LY_CD_SECTOR_FRAMES, m_aryFrames.data());
    m_pSave->m_nError = 11;
    m_pSave->Stop();
    EXPECT_EQ(0, m_pSave->m_nError);
    EXPECT_EQ(2352u, m_File.GetNumber(40));
    EXPECT_EQ(2388u, m_File.GetNumber(4));
    EXPECT_FALSE(m_pSave->GetIsReady());
    const std::string strCalls = m_File.GetCalls();
    m_pSave->Stop(); // as the destructor does after the copy engine did
    m_pSave.reset();
    EXPECT_EQ(strCalls, m_File.GetCalls());
}

TEST_F(WaveSaveTest, TheDestructorStops)
{
    OpenFile();
    m_pSave->WriteBuffer(LY_CD_SECTOR_FRAMES, m_aryFrames.data());
    m_pSave.reset();
    EXPECT_EQ(2352u, m_File.GetNumber(40));
    EXPECT_EQ(1, m_File.nDestroyed);
}

TEST(WaveSave, MakesItsFileByItsName)
{
    GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/"));
    TempFolder folder;
    const LyString strPath = LyString().FromANSI(folder.GetPath("a.wav").c_str());
    CTHAudioAnalyzer analyzer;
    unsigned int aryFrames[] = {0x61616161, 0x62626262};
    {
        CWaveSave save(strPath, MakeCDFormat(), &analyzer, 8);
        EXPECT_TRUE(save.GetIsReady());
        save.WriteBuffer(2, aryFrames);
        EXPECT_EQ(0, save.m_nError);
    }
    std::ifstream file(folder.GetPath("a.wav"), std::ios::binary);
    const std::string strFile((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    ASSERT_EQ(52u, strFile.size());
    EXPECT_EQ(std::string("\x08\0\0\0aaaabbbb", 12), strFile.substr(40));
    EXPECT_EQ(2, analyzer.m_nFramesProcessed);
    EXPECT_FALSE(CWaveSave(strPath, MakeCDFormat(), nullptr, CWAVCreator::MAX_DATA_BYTES + 1).GetIsReady());
    EXPECT_FALSE(CWaveSave(L"/nowhere/a.wav", MakeCDFormat()).GetIsReady());
    g_LySharedToolsHelper.UnloadLySharedLibs(false);
}
