// The sink of a rip, into an encoder plug-in.

#include "CDUnits.h"
#include "Encoder/FakeEncoder.h"
#include "THAudioAnalyzer.h"
#include "Tools/FakeTools.h"
#include "wavesave.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <numeric>
#include <vector>

namespace
{
class WaveSaveEncoderTest : public ::testing::Test
{
protected:
    WaveSaveEncoderTest() : m_aryFrames(54 * LY_CD_SECTOR_FRAMES)
    {
        std::iota(m_aryFrames.begin(), m_aryFrames.end(), 1u);
        m_Encoder.m_strName = L"Scripted";
        m_Encoder.m_strLibrary = FakeEncoder::GetLibrary();
        m_Encoder.m_nParameter = 3;
        m_Encoder.m_strSettings = L"-8";
        m_pSave.reset(new CWaveSave(m_Encoder, nullptr));
        EXPECT_TRUE(m_pSave->GetIsReady());
        m_Fake.m_aryEvents.clear();
    }
    FakeEncoder m_Fake; // outlives the sink
    CEncoderPlugin m_Encoder;
    std::unique_ptr<CWaveSave> m_pSave;
    std::vector<unsigned int> m_aryFrames;
};

// Bytes that are no whole frames.
class ByteSave final : public CWaveSave
{
public:
    using CWaveSave::CWaveSave;
    using CWaveSave::SendToEncoder;
};

struct PIECES_CASE
{
    long nFrames;
    std::vector<int> aryPieces;
};
} // namespace

// ---- Pieces

TEST_F(WaveSaveEncoderTest, DataGoesInPiecesOfOneBlockAtMost)
{
    const PIECES_CASE aryCases[] = {
        {0, {}},
        {1, {4}},
        {588, {2352}},
        {27 * 588, {63504}},
        {27 * 588 + 1, {63504, 4}},
        {54 * 588, {63504, 63504}}, // 127,008 bytes
        {-588, {}},
    };
    for (const PIECES_CASE& row : aryCases)
    {
        m_Fake.m_aryPieces.clear();
        m_Fake.m_strData.clear();
        m_pSave->WriteBuffer(row.nFrames, m_aryFrames.data());
        EXPECT_EQ(row.aryPieces, m_Fake.m_aryPieces) << row.nFrames;
        EXPECT_EQ(0, m_pSave->m_nError);
        const size_t nBytes = static_cast<size_t>(std::max(row.nFrames, 0L)) * 4;
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(m_aryFrames.data()), nBytes), m_Fake.m_strData);
    }
}

TEST(WaveSaveEncoder, APieceMayBeOneByte)
{
    FakeEncoder fake;
    CEncoderPlugin encoder;
    encoder.m_strLibrary = FakeEncoder::GetLibrary();
    encoder.m_strSettings = L"-8";
    ByteSave save(encoder, nullptr);
    std::vector<unsigned char> aryBytes(63505, 7);
    save.SendToEncoder(aryBytes.data(), 63505);
    EXPECT_EQ((std::vector<int>{63504, 1}), fake.m_aryPieces);
    EXPECT_EQ(63505u, fake.m_strData.size());
}

TEST_F(WaveSaveEncoderTest, NoFramesSendNothingAndTheAnalyserIsStillCalled)
{
    CTHAudioAnalyzer analyzer;
    m_pSave->m_pAnalyzer = &analyzer;
    m_pSave->WriteBuffer(0, m_aryFrames.data());
    EXPECT_TRUE(m_Fake.m_aryPieces.empty());
    EXPECT_EQ(0, m_pSave->m_nError);
    m_pSave->WriteBuffer(588, m_aryFrames.data());
    EXPECT_EQ(588, analyzer.m_nFramesProcessed);
    m_pSave.reset(); // before the analyser goes
}

// ---- Errors

TEST_F(WaveSaveEncoderTest, ARefusedPieceShowsItsTextAndEndsTheCall)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetTranslation(L"Information", L"Hinweis");
    tools->SetTranslation(L"Unknown error from the encoder.", L"translated");
    m_Fake.m_nPiecesTaken = 0;
    m_pSave->WriteBuffer(54 * 588, m_aryFrames.data());
    EXPECT_EQ(24, m_pSave->m_nError);
    EXPECT_EQ(std::vector<int>{63504}, m_Fake.m_aryPieces) << "the second piece is given up";
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_BOX_SHOWN));
    const FAKE_BOX box = tools->GetLastBox();
    EXPECT_STREQ(L"Unknown error from the encoder.", box.pText) << "the text is not translated";
    EXPECT_STREQ(L"Hinweis", box.pCaption);
    EXPECT_STREQ(L"", box.pShowOnceKey);
    EXPECT_FALSE(box.bRemember);
    EXPECT_FALSE(box.bModal);
}

TEST_F(WaveSaveEncoderTest, ASecondFailureShowsASecondBoxAndASuccessClearsTheError)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    m_Fake.m_nPiecesTaken = 1;
    m_pSave->WriteBuffer(54 * 588, m_aryFrames.data()); // the second piece fails
    m_pSave->WriteBuffer(588, m_aryFrames.data());
    EXPECT_EQ(24, m_pSave->m_nError);
    EXPECT_EQ(2, tools->GetCount(FAKE_COUNT_BOX_SHOWN));
    m_Fake.m_nPiecesTaken = INT_MAX;
    m_pSave->WriteBuffer(588, m_aryFrames.data());
    EXPECT_EQ(0, m_pSave->m_nError);
    EXPECT_EQ(2, tools->GetCount(FAKE_COUNT_BOX_SHOWN));
}

TEST_F(WaveSaveEncoderTest, WithoutAnEncoderDataCannotBeTaken)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    m_pSave->Close();
    EXPECT_FALSE(m_pSave->GetIsReady());
    m_pSave->WriteBuffer(1, m_aryFrames.data());
    EXPECT_EQ(24, m_pSave->m_nError);
    EXPECT_STREQ(L"Encoder doesn't support buffer input.", tools->GetLastBox().pText);
}

TEST_F(WaveSaveEncoderTest, AMissingBufferIsNoBufferInput)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    CTHAudioAnalyzer analyzer;
    m_pSave->m_pAnalyzer = &analyzer;
    m_pSave->WriteBuffer(588, nullptr);
    EXPECT_EQ(24, m_pSave->m_nError);
    EXPECT_STREQ(L"Encoder doesn't support buffer input.", tools->GetLastBox().pText);
    EXPECT_EQ(0, analyzer.m_nFramesProcessed);
    m_pSave.reset(); // before the analyser goes
}

TEST_F(WaveSaveEncoderTest, WithoutToolsLibraryAnErrorIsStillAnError)
{
    m_Fake.m_nPiecesTaken = 0;
    m_pSave->WriteBuffer(1, m_aryFrames.data());
    EXPECT_EQ(24, m_pSave->m_nError);
}

// ---- The end

TEST_F(WaveSaveEncoderTest, StopFinishesStopsAndCloses)
{
    m_pSave->m_nError = 24;
    m_pSave->Stop();
    EXPECT_EQ("Finish, Stop, Destroy, Detach", m_Fake.GetEvents());
    EXPECT_EQ(0, m_pSave->m_nError);
    EXPECT_FALSE(m_pSave->GetIsReady());
    m_pSave->Stop(); // as the destructor does after the copy engine did
    m_pSave.reset();
    EXPECT_EQ("Finish, Stop, Destroy, Detach", m_Fake.GetEvents());
}

TEST_F(WaveSaveEncoderTest, StopGoesOnWhenTheEncoderDoesNotFinish)
{
    m_Fake.m_bFinishes = false;
    m_pSave->Stop();
    EXPECT_EQ("Finish, Stop, Destroy, Detach", m_Fake.GetEvents());
    EXPECT_EQ(0, m_pSave->m_nError);
}

TEST_F(WaveSaveEncoderTest, TheDestructorStops)
{
    CEncoderPlugin* pBase = m_pSave.release(); // whose own Stop is another
    delete pBase;
    EXPECT_EQ("Finish, Stop, Destroy, Detach", m_Fake.GetEvents());
}

TEST_F(WaveSaveEncoderTest, StopOfAFileLeavesTheEncoderAlone)
{
    m_pSave->m_bUseEncoder = false;
    m_pSave->Stop();
    EXPECT_EQ("", m_Fake.GetEvents());
}

// ---- Making one

TEST(WaveSaveEncoder, HasAnEncoderOfItsOwnLikeTheOneDescribed)
{
    FakeEncoder fake;
    CTHAudioAnalyzer analyzer;
    CEncoderPlugin encoder;
    encoder.m_strName = L"Scripted";
    encoder.m_strDescription = L"does what it is told";
    encoder.m_strLibrary = FakeEncoder::GetLibrary();
    encoder.m_nParameter = 3;
    encoder.m_strProfile = L"Archive";
    encoder.m_strSettings = L"-8";
    CWaveSave save(encoder, nullptr, &analyzer);
    EXPECT_TRUE(save.GetIsReady());
    EXPECT_TRUE(save.m_bUseEncoder);
    EXPECT_EQ(&analyzer, save.m_pAnalyzer);
    EXPECT_EQ("Attach, Create, SetInfo", fake.GetEvents());
    EXPECT_EQ(3, fake.m_nParameter);
    EXPECT_EQ(std::vector<std::wstring>{L"Settings=-8"}, fake.m_arySettings);
    EXPECT_EQ(LyString(L"Scripted"), save.CEncoderPlugin::m_strName);
    EXPECT_EQ(LyString(L"does what it is told"), save.m_strDescription);
    EXPECT_EQ(LyString(L"Archive"), save.m_strProfile);
    EXPECT_EQ(nullptr, encoder.m_pEncoder.Get()) << "the one described is only a description";
}

TEST(WaveSaveEncoder, WithoutItsLibraryIsNotReady)
{
    CEncoderPlugin encoder;
    encoder.m_strLibrary = L"/nowhere/enc_none.so";
    CWaveSave save(encoder, nullptr);
    EXPECT_FALSE(save.GetIsReady());
    EXPECT_TRUE(save.m_bUseEncoder);
}
