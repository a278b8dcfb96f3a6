// Tags in a WAV file that a rip has just made.

#include "HostError.h"
#include "LySharedToolsHelper.h"
#include "Media/WavBytes.h"
#include "ProcessInfo.h"
#include "TagFields.h"
#include "TagFile.h"
#include "TempFolder.h"
#include "WaveTags.h"
#include <gtest/gtest.h>

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
