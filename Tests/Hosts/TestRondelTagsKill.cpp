// A change of tags that is killed at any system call, its own and those of the programs that swap the files, leaves a
// whole file.

#include "HostError.h"
#include "KillProcessTree.h"
#include "LySharedToolsHelper.h"
#include "Media/WavBytes.h"
#include "ProcessInfo.h"
#include "TagEdit.h"
#include "TagFile.h"
#include "TempFolder.h"
#include <gtest/gtest.h>

namespace
{
const std::string s_strOldWav = MakeWav(MakeAudio(3000));
const std::string s_strMp3 =
    std::string("ID3\3\0\0\0\0\0\x0F", 10) + std::string("TIT2\0\0\0\5\0\0\0Old!", 15) + std::string(2000, '\xFF');

std::string Read(const std::string& strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class RondelTagsKill : public ::testing::Test
{
protected:
    RondelTagsKill()
    {
        setenv("XDG_CONFIG_HOME", m_Folder.GetPath("config").c_str(), 1);
        GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/"));
        (void)GetLyTools(true);
    }
    ~RondelTagsKill() override { g_LySharedToolsHelper.UnloadLySharedLibs(false); }

    static void Change(const std::string& strPath)
    {
        const TAG_EDIT edit{{{"Title", "New"}, {"Comment", std::string(5000, 'c')}}, nullptr};
        TagFile(strPath).Save([&](CID3v2Tag& tag) { ApplyTagEdit(tag, edit); });
    }

    void Run(const std::string& strName, const std::string& strOld, int nEvery = 1)
    {
        const std::string strPath = m_Folder.GetPath("files/" + strName);
        const std::string strBackup = m_Folder.GetPath("files/a (1)" + strName.substr(1));
        const std::string strNewPath = m_Folder.Write("new/" + strName, strOld);
        Change(strNewPath);
        const std::string strNew = Read(strNewPath);
        ASSERT_NE(strOld, strNew);
        bool bOld = false;
        bool bNew = false;
        const auto Check = [&](int nCall)
        {
            const std::string strNow = Read(strPath);
            bOld = bOld || strNow == strOld;
            bNew = bNew || strNow == strNew;
            const bool bSwapping = !std::filesystem::exists(strPath) && Read(strBackup) == strOld;
            EXPECT_TRUE(strNow == strOld || strNow == strNew || bSwapping) << nCall;
        };
        const auto Prepare = [&]
        {
            std::filesystem::remove_all(m_Folder.GetPath("files"));
            (void)m_Folder.Write("files/" + strName, strOld);
        };
        const int nCalls = KillTreeAtEachCall([&] { Change(strPath); }, Check, Prepare, nEvery);
        if (nCalls == KILL_NOT_ALLOWED)
            GTEST_SKIP() << "nobody may trace a process here";
        EXPECT_GT(nCalls, 50);
        EXPECT_TRUE(bOld);
        EXPECT_TRUE(bNew);
        EXPECT_EQ(strNew, Read(strPath));
        EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(m_Folder.GetPath("files")),
                                   std::filesystem::directory_iterator()))
            << "the complete run leaves nothing else";
    }

    TempFolder m_Folder{TEMP_IN_MEMORY};
};
} // namespace

TEST_F(RondelTagsKill, AWavIsWholeAtEachMoment) { Run("a.wav", s_strOldWav); }

// The swap is the same one, so that some of the calls are enough.
TEST_F(RondelTagsKill, AnMp3IsWholeAtEachMoment) { Run("a.mp3", s_strMp3, 5); }
