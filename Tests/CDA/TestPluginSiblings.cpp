// The plug-in where the libraries beside it are missing or broken: nothing opens, and nothing else happens. Each case
// is a process of its own, since a process settles once where its libraries lie.

#include "PlayerDisc.h"
#include "PluginAsPlayer.h"
#include "ProcessInfo.h"
#include <climits>

namespace
{
enum RESULT : int
{
    RESULT_OPENED = 0,
    RESULT_REFUSED = 1,
    RESULT_NOT_ATTACHED = 50,
    RESULT_NO_NAME = 51,
    RESULT_NO_END = 52,
    RESULT_WRONG_BYTES = 53
};

class PluginSiblings : public ::testing::Test
{
protected:
    void SetUp() override
    {
        (void)m_Folder.Write("a.bin", MakePatternSectors(0, 300));
        m_Disc = m_Folder.Write("a.cue", "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    }
    // A folder that holds the named libraries under the names of real ones.
    std::filesystem::path MakeFolder(const std::vector<std::filesystem::path>& aryLibraries)
    {
        const auto folder = m_Folder.Get("libraries");
        std::filesystem::create_directories(folder);
        for (const auto& library : aryLibraries)
            std::filesystem::create_symlink(library, folder / library.filename());
        return folder;
    }
    // What a player sees whose libraries lie in this folder.
    int Play(const std::filesystem::path& siblings) const
    {
        CProcessInfo info;
        info.SetSharedLibraryPath(WidenUTF8(siblings.string() + "/").c_str());
        return PlayHere();
    }
    int PlayHere() const
    {
        PlayerPlugin plugin;
        if (!plugin.Attach())
            return RESULT_NOT_ATTACHED;
        const int nResult = PlayTrack(plugin.GetSource());
        plugin.Detach();
        return nResult;
    }

private:
    int PlayTrack(PlayerSource source) const
    {
        if (source.Get(PlayerSource::FIELD_NAME) != L"CD audio input plug-in")
            return RESULT_NO_NAME;
        const int nOpened = source.Open(m_Disc, 1);
        const std::string strPlayed = source.Pull(LLONG_MAX);
        if (nOpened != 0)
            return strPlayed.empty() ? nOpened : RESULT_NO_END;
        return strPlayed == MakePattern(0, GetPlayedBytes(300)) ? RESULT_OPENED : RESULT_WRONG_BYTES;
    }

protected:
    DiscFolder m_Folder;
    std::filesystem::path m_Disc;
};

using PluginSiblingsDeathTest = PluginSiblings;
} // namespace

TEST_F(PluginSiblingsDeathTest, WithNoLibraryBesideThePlayerNothingOpens)
{
    EXPECT_EXIT(_exit(PlayHere()), testing::ExitedWithCode(RESULT_REFUSED), "");
    EXPECT_EXIT(_exit(Play(MakeFolder({}))), testing::ExitedWithCode(RESULT_REFUSED), "");
    EXPECT_EXIT(_exit(Play("/nowhere/at/all")), testing::ExitedWithCode(RESULT_REFUSED), "");
}

TEST_F(PluginSiblingsDeathTest, TheDiscServiceIsFoundWhereThePlayerSays)
{
    EXPECT_EXIT(_exit(Play(RONDEL_BIN_DIR)), testing::ExitedWithCode(RESULT_OPENED), "");
}

TEST_F(PluginSiblingsDeathTest, ADiscServiceWithoutItsEntryIsNone)
{
    EXPECT_EXIT(_exit(Play(RONDEL_FAKES_DIR "/disc_no_entry")), testing::ExitedWithCode(RESULT_REFUSED), "");
}

TEST_F(PluginSiblingsDeathTest, ADiscServiceThatThrowsIsNone)
{
    for (const char* pFolder : {"/disc_attach_throws", "/disc_initialize_throws", "/disc_entry_throws"})
        EXPECT_EXIT(_exit(Play(std::string(RONDEL_FAKES_DIR) + pFolder)), testing::ExitedWithCode(RESULT_REFUSED), "")
            << pFolder;
}

TEST_F(PluginSiblingsDeathTest, AFileThatIsNoLibraryIsNone)
{
    (void)m_Folder.Write("text/libLyDisc.dylib", "This is not a library.\n");
    EXPECT_EXIT(_exit(Play(m_Folder.Get("text"))), testing::ExitedWithCode(RESULT_REFUSED), "");
}

TEST_F(PluginSiblingsDeathTest, ABrokenToolsLibraryDoesNotStopTheMusic)
{
    for (const char* pTools :
         {"tools_no_entry", "tools_attach_throws", "tools_detach_throws", "tools_entry_throws", "tools_entry_is_null"})
    {
        const auto folder = MakeFolder(
            {RONDEL_BIN_DIR "/libLyDisc.dylib", std::string(RONDEL_FAKES_DIR "/") + pTools + "/libLyTools.dylib"});
        EXPECT_EXIT(_exit(Play(folder)), testing::ExitedWithCode(RESULT_OPENED), "") << pTools;
        std::filesystem::remove_all(folder);
    }
}
