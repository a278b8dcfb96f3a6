// Tags in a WAV file that a rip has just made.

#include "HostError.h"
#include "KillAtEachCall.h"
#include "LySharedToolsHelper.h"
#include "Media/WavBytes.h"
#include "ProcessInfo.h"
#include "TagFields.h"
#include "TagFile.h"
#include "TempFolder.h"
#include "WaveTags.h"
#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace
{
std::string Read(const std::string& strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class WaveTags : public ::testing::Test
{
protected:
    WaveTags()
    {
        setenv("XDG_CONFIG_HOME", m_Folder.GetPath("config").c_str(), 1);
        GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/"));
    }
    ~WaveTags() override { g_LySharedToolsHelper.UnloadLySharedLibs(false); }

    TempFolder m_Folder;
    std::string m_strWav = MakeWav(MakeAudio(2352));
};
} // namespace

TEST_F(WaveTags, AllThatARipKnowsIsInTheFileBehindTheAudio)
{
    const std::string strPath = m_Folder.Write("1.wav.part", m_strWav);
    const std::string strImage = "\xFF\xD8\xFF\xE0" + std::string(100, 'j');
    TagWaveFile(strPath,
                {{"Title", "Größe"},
                 {"Artist", "A"},
                 {"Album", "B"},
                 {"Album Artist", "C"},
                 {"Track", "3/12"},
                 {"ISRC", ""},
                 {"REPLAYGAIN_TRACK_GAIN", "-6.48 dB"},
                 {"REPLAYGAIN_TRACK_PEAK", "0.988553"}},
                m_Folder.Write("cover", strImage));
    const std::string strNew = Read(strPath);
    EXPECT_EQ(m_strWav.substr(8), strNew.substr(8, m_strWav.size() - 8)) << "only the root length is another";
    EXPECT_NE(std::string::npos, strNew.find(strImage));
    TagFile file(strPath);
    const TAG_FIELDS expected = {{"Name", "Größe"},
                                 {"Artist", "A"},
                                 {"Album", "B"},
                                 {"Album Artist", "C"},
                                 {"Track #", "3/12"},
                                 {"Replay Gain Track", "-6.48 dB"},
                                 {"Replay Gain Track Peak", "0.988553"},
                                 {"Image File", "image/jpeg, 104 bytes"}};
    EXPECT_EQ(expected, CollectTagFields(file.GetTag()));
}

TEST_F(WaveTags, NothingGivenLeavesTheFile)
{
    const std::string strPath = m_Folder.Write("1.wav", m_strWav);
    TagWaveFile(strPath, {}, "");
    TagWaveFile(strPath, {{"Title", ""}}, "");
    EXPECT_EQ(m_strWav, Read(strPath));
}

TEST_F(WaveTags, WhatGoesWrongIsASentence)
{
    EXPECT_THROW(TagWaveFile(m_Folder.GetPath("none.wav"), {{"Title", "X"}}, ""), HostError);
    EXPECT_THROW(TagWaveFile(m_Folder.Write("text.wav", "text"), {{"Title", "X"}}, ""), HostError);
    const std::string strPath = m_Folder.Write("1.wav", m_strWav);
    EXPECT_THROW(TagWaveFile(strPath, {{"Title", "X"}}, m_Folder.GetPath("none.jpg")), HostError);
    EXPECT_THROW(TagWaveFile(strPath, {{"Track", "x"}}, ""), HostError);
    EXPECT_EQ(m_strWav, Read(strPath));
}

// As a disk that is full: the tag does not fit, and nothing of it stays.
TEST_F(WaveTags, APlaceThatTakesNoMoreLeavesTheFileAsItWas)
{
    const std::string strPath = m_Folder.Write("1.wav", m_strWav);
    rlimit old{};
    ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &old));
    (void)std::signal(SIGXFSZ, SIG_IGN);
    for (const size_t nMore : {0U, 1U, 8U, 20U, 200U})
    {
        const rlimit less{m_strWav.size() + nMore, old.rlim_max};
        ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &less));
        EXPECT_THROW(TagWaveFile(strPath, {{"Title", std::string(1000, 't')}}, ""), HostError) << nMore;
        (void)setrlimit(RLIMIT_FSIZE, &old);
        EXPECT_EQ(m_strWav, Read(strPath)) << nMore;
    }
}

// Killed at any call: all the audio is there, and the root holds whole chunks only.
TEST_F(WaveTags, AKillLeavesAWholeWavFile)
{
    const std::string strPath = m_Folder.GetPath("1.wav");
    const std::string strImage = m_Folder.Write("cover", "\xFF\xD8\xFF\xE0" + std::string(100000, 'j'));
    const std::string strTagged = m_Folder.Write("2.wav", m_strWav);
    TagWaveFile(strTagged, {{"Title", "X"}}, strImage);
    const std::string strNew = Read(strTagged);
    const auto Check = [&](int nCall)
    {
        const std::string strNow = Read(strPath);
        ASSERT_LE(m_strWav.size(), strNow.size()) << nCall;
        EXPECT_EQ(m_strWav.substr(8), strNow.substr(8, m_strWav.size() - 8)) << nCall;
        const bool bRootChanged = strNow.substr(0, 8) != m_strWav.substr(0, 8);
        EXPECT_TRUE(!bRootChanged || strNow == strNew) << nCall;
    };
    const auto Prepare = [&] { (void)m_Folder.Write("1.wav", m_strWav); };
    const int nCalls = KillAtEachCall([&] { TagWaveFile(strPath, {{"Title", "X"}}, strImage); }, Check, Prepare);
    if (nCalls == KILL_NOT_ALLOWED)
        GTEST_SKIP() << "nobody may trace a process here";
    EXPECT_GT(nCalls, 10);
    EXPECT_EQ(strNew, Read(strPath));
}
