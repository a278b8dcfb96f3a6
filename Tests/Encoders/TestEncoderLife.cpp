// What holds for every encoder: its infos, its life, and that nothing incomplete ever bears the name of the file.

#include "EncoderTestSupport.h"
#include <dirent.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace
{
struct ENCODER_CASE
{
    const char* pName;
    const char* pSettings;
};
const ENCODER_CASE s_aryEncoders[] = {
    {"flac", "level=0"},
    {"mp3", "cbr=128; effort=9"},
    {"opus", "complexity=0"},
    {"pipe", "command=cat"},
};

class EveryEncoder : public EncoderTest, public ::testing::WithParamInterface<ENCODER_CASE>
{
protected:
    void OpenIt() { Open(GetParam().pName, GetParam().pSettings); }
    bool IsPipe() const { return std::string(GetParam().pName) == "pipe"; }
    static size_t CountHandles()
    {
        return static_cast<size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
    }
    void ExpectNothing(int nError)
    {
        EXPECT_EQ(nError, GetError()) << Get("Last Error");
        EXPECT_EQ("", ListFolder());
        EXPECT_EQ("error-1 finished ", m_Events.m_strEvents);
        EXPECT_EQ(Get("Last Error"), m_Events.m_strText);
        EXPECT_FALSE(m_Plugin.FinishBufferInput()) << "it stays failed";
        EXPECT_FALSE(Feed("abcd"));
        EXPECT_EQ("error-1 finished ", m_Events.m_strEvents) << "and is told once";
    }
};
INSTANTIATE_TEST_SUITE_P(Encoders, EveryEncoder, ::testing::ValuesIn(s_aryEncoders),
                         [](const auto& encoder) { return std::string(encoder.param.pName); });
} // namespace

TEST_P(EveryEncoder, IsListedUnderItsName)
{
    LyOwnedPtrArray<CEncoderPlugin> aryEncoders;
    CEncoderPlugin::ListEncoders(Wide(RONDEL_BIN_DIR), aryEncoders);
    int nFound = 0;
    for (int i = 0; i < aryEncoders.GetSize(); ++i)
        nFound += aryEncoders[i]->m_strName == Wide(GetParam().pName) ? 1 : 0;
    EXPECT_EQ(1, nFound);
}

TEST_P(EveryEncoder, StartsWithTheFormatOfACDAndAnswersWhatWasSet)
{
    OpenIt();
    EXPECT_EQ("44100", Get("Sample Rate"));
    EXPECT_EQ("2", Get("channels"));
    EXPECT_EQ("16", Get("BITS"));
    EXPECT_EQ("0", Get("Expected Frames"));
    EXPECT_EQ(GetParam().pSettings, Get("Settings"));
    EXPECT_EQ(m_strPath, Get("Output File"));
    EXPECT_EQ("", Get("Last Error"));
    EXPECT_EQ("0", Get("Last Error Code"));
    EXPECT_EQ("", Get("Tag Title"));
    EXPECT_NE("", Get("Name"));
    EXPECT_NE("", Get("Library"));
    EXPECT_EQ(nullptr, m_Plugin.m_pEncoder->GetInfo(L"no such info"));
    EXPECT_EQ(nullptr, m_Plugin.m_pEncoder->GetInfo(nullptr));
    m_Plugin.m_pEncoder->SetInfo(nullptr, nullptr);
    m_Plugin.m_pEncoder->SetInfo(L"no such info", nullptr);
}

TEST_P(EveryEncoder, TheNameStandsOnlyWhenAllIsThere)
{
    OpenIt();
    const std::string strMusic = MakeMusic(40000);
    ASSERT_TRUE(Feed(strMusic));
    EXPECT_FALSE(std::filesystem::exists(m_strPath));
    EXPECT_EQ(".rondel-", ListFolder().substr(0, 8));
    ASSERT_TRUE(m_Plugin.FinishBufferInput()) << Get("Last Error");
    EXPECT_EQ("out.bin", ListFolder());
    EXPECT_EQ("finished ", m_Events.m_strEvents);
    EXPECT_EQ("40000", Get("Frames"));
    EXPECT_TRUE(m_Plugin.FinishBufferInput()) << "it stays done";
    m_Plugin.Stop();
    EXPECT_EQ("out.bin", ListFolder()) << "a finished file stays";
    EXPECT_EQ("finished ", m_Events.m_strEvents);
    EXPECT_FALSE(Feed("abcd")) << "and takes no more";
}

TEST_P(EveryEncoder, TheFileHasTheRightsThatFilesHave)
{
    const mode_t nBefore = umask(027);
    OpenIt();
    ASSERT_TRUE(Encode(MakeMusic(2000)));
    umask(nBefore);
    struct stat status;
    ASSERT_EQ(0, stat(m_strPath.c_str(), &status));
    EXPECT_EQ(0640u, status.st_mode & 0777);
}

TEST_P(EveryEncoder, AnEarlierFileStaysUntilTheNewOneIsThere)
{
    OpenIt();
    (void)m_Folder.Write("out.bin", "old");
    ASSERT_TRUE(Feed(MakeMusic(20000)));
    m_Plugin.Stop();
    EXPECT_EQ("out.bin", ListFolder());
    EXPECT_EQ("old", ReadOutput());
    SetOutput(m_strPath);
    ASSERT_TRUE(Encode(MakeMusic(20000)));
    EXPECT_NE("old", ReadOutput());
    EXPECT_EQ("out.bin", ListFolder());
}

TEST_P(EveryEncoder, AStopAtEachPieceLeavesNothing)
{
    const std::string strMusic = MakeMusic(588 * 27 * 4);
    const size_t nHandles = [&]
    {
        OpenIt();
        return CountHandles();
    }();
    for (size_t nPieces = 0; nPieces <= 4; ++nPieces)
    {
        m_Events.m_strEvents.clear();
        SetOutput(m_strPath);
        ASSERT_TRUE(Feed(strMusic.substr(0, nPieces * PIECE_BYTES)));
        m_Plugin.Stop();
        EXPECT_EQ("", ListFolder()) << nPieces;
        EXPECT_EQ(nPieces == 0 ? "" : "finished ", m_Events.m_strEvents);
        EXPECT_EQ(nPieces == 0, Feed("abcd")) << "a stopped encoding takes no more";
        m_Plugin.Stop();
        EXPECT_FALSE(m_Plugin.FinishBufferInput());
        EXPECT_EQ("", ListFolder());
        EXPECT_EQ(nHandles, CountHandles());
    }
}

TEST_P(EveryEncoder, ClosingInTheMiddleLeavesNothing)
{
    for (int i = 0; i < 5; ++i)
    {
        OpenIt();
        ASSERT_TRUE(Feed(MakeMusic(20000)));
        m_Plugin.Close();
        EXPECT_EQ("", ListFolder());
    }
}

TEST_P(EveryEncoder, AStopOutOfTheProgressIsHeard)
{
    OpenIt();
    Set("Expected Frames", std::to_string(588 * 27 * 4));
    m_Events.m_nStopAt = 50;
    EXPECT_FALSE(Encode(MakeMusic(588 * 27 * 4)));
    EXPECT_EQ((std::vector<int>{25, 50}), m_Events.m_aryPercents);
    EXPECT_EQ("finished ", m_Events.m_strEvents);
    EXPECT_EQ("", ListFolder());
}

TEST_P(EveryEncoder, ProgressNeedsTheExpectedLength)
{
    OpenIt();
    Set("Expected Frames", "40000");
    ASSERT_TRUE(Encode(MakeMusic(40000), 40000));
    EXPECT_EQ((std::vector<int>{25, 50, 75, 100}), m_Events.m_aryPercents);
    m_Events.m_aryPercents.clear();
    OpenIt();
    ASSERT_TRUE(Encode(MakeMusic(40000)));
    EXPECT_TRUE(m_Events.m_aryPercents.empty());
}

TEST_P(EveryEncoder, AnotherLengthThanExpectedIsNoFile)
{
    for (const char* pExpected : {"20001", "19999"})
    {
        m_Events.m_strEvents.clear();
        OpenIt();
        Set("Expected Frames", pExpected);
        EXPECT_FALSE(Encode(MakeMusic(20000)));
        ExpectNothing(ENCODER_INPUT_READ);
    }
}

TEST_P(EveryEncoder, NoAudioIsNoFile)
{
    OpenIt();
    EXPECT_FALSE(m_Plugin.FinishBufferInput());
    ExpectNothing(ENCODER_INPUT_READ);
}

TEST_P(EveryEncoder, ManyFilesOneAfterTheOther)
{
    OpenIt();
    std::string strFirst;
    for (int i = 0; i < 3; ++i)
    {
        SetOutput(m_Folder.GetPath(std::to_string(i)));
        ASSERT_TRUE(Encode(MakeMusic(3000)));
        EXPECT_FALSE(ReadOutput().empty());
    }
    EXPECT_EQ("0 1 2", ListFolder());
}

TEST_P(EveryEncoder, SettingsThatAreNoneAreToldAtOnceAndWithTheAudio)
{
    for (const char* pSettings : {"nonsense", "level=;=", "unknown=1", "a=\"b", "level=9;cbr=7;bitrate=5;timeout=-1"})
    {
        SCOPED_TRACE(pSettings);
        m_Events.m_strEvents.clear();
        Open(GetParam().pName, pSettings);
        EXPECT_EQ(ENCODER_REFUSED, GetError());
        EXPECT_NE("", Get("Last Error"));
        EXPECT_FALSE(Encode(MakeMusic(2000)));
        ExpectNothing(ENCODER_REFUSED);
    }
    m_Events.m_strEvents.clear();
    Set("Settings", GetParam().pSettings);
    SetOutput(m_strPath);
    EXPECT_TRUE(Encode(MakeMusic(2000))) << "good ones mend it";
}

TEST_P(EveryEncoder, FormatsThatAreNoneAreRefused)
{
    const std::pair<const char*, const char*> s_aryBad[] = {
        {"Sample Rate", "0"},
        {"Sample Rate", "-44100"},
        {"Sample Rate", "44100Hz"},
        {"Channels", "9"},
        {"Channels", "99999999999999999999"},
        {"Bits", "17"},
        {"Bits", ""},
        {"Expected Frames", "many"},
    };
    for (const auto& [pKey, pValue] : s_aryBad)
    {
        SCOPED_TRACE(std::string(pKey) + "=" + pValue);
        m_Events.m_strEvents.clear();
        OpenIt();
        Set(pKey, pValue);
        EXPECT_FALSE(Encode(MakeMusic(2000)));
        ExpectNothing(ENCODER_REFUSED);
    }
}

TEST_P(EveryEncoder, NamesThatCannotBeWrittenAreRefused)
{
    for (const std::string& strPath : {std::string(), m_Folder.GetPath(), m_Folder.GetPath("no/such/folder"),
                                       m_Folder.GetPath("slash/"), std::string("/dev/full"), std::string("/proc/x")})
    {
        SCOPED_TRACE(strPath);
        m_Events.m_strEvents.clear();
        OpenIt();
        SetOutput(strPath);
        EXPECT_FALSE(Encode(MakeMusic(2000)));
        ExpectNothing(ENCODER_OUTPUT_OPEN);
    }
}

TEST_P(EveryEncoder, NamesMayBeLongAndHoldAnyBytes)
{
    for (const std::string& strName :
         {std::string(250, 'n') + ".bin", std::string("音🎵\xFF %o 'x'"), std::string("-o"), std::string(".hidden")})
    {
        OpenIt();
        SetOutput(m_Folder.GetPath(strName));
        EXPECT_TRUE(Encode(MakeMusic(2000))) << Get("Last Error");
        EXPECT_EQ(strName, ListFolder());
        (void)unlink(m_strPath.c_str());
    }
}

TEST_P(EveryEncoder, APictureThatIsNotThereOrNoneIsTold)
{
    OpenIt();
    Set("Picture", m_Folder.GetPath("none.png"));
    EXPECT_FALSE(Encode(MakeMusic(2000)));
    ExpectNothing(ENCODER_MISSING_FILE);
    m_Events.m_strEvents.clear();
    OpenIt();
    Set("Picture", m_Pictures.Write("text.png", "no picture"));
    EXPECT_FALSE(Encode(MakeMusic(2000)));
    ExpectNothing(ENCODER_INPUT_READ);
}

TEST_P(EveryEncoder, DataThatIsNoneIsRefused)
{
    OpenIt();
    EXPECT_FALSE(m_Plugin.m_pEncoder->EncodeBuffer(nullptr, 4));
    ExpectNothing(ENCODER_INPUT_READ);
    m_Events.m_strEvents.clear();
    OpenIt();
    unsigned char aryData[4] = {};
    EXPECT_TRUE(m_Plugin.m_pEncoder->EncodeBuffer(aryData, 0));
    EXPECT_FALSE(m_Plugin.m_pEncoder->EncodeBuffer(aryData, -4));
    ExpectNothing(ENCODER_INPUT_READ);
}

TEST_P(EveryEncoder, AFullDiskIsToldByItsCode)
{
    if (IsPipe())
        GTEST_SKIP() << "its program writes the file";
    const std::string strMusic = MakeMusic(200000);
    for (size_t nBytes : {size_t(0), size_t(4), size_t(400000), size_t(800000)})
    {
        SCOPED_TRACE(nBytes);
        m_Events.m_strEvents.clear();
        OpenIt();
        ASSERT_TRUE(Feed(MakeMusic(1) + strMusic.substr(0, nBytes)));
        FillDisk();
        EXPECT_FALSE(Encode(strMusic.substr(nBytes)));
        ExpectNothing(ENCODER_DISK_FULL);
        EXPECT_EQ(0u, Get("Last Error").find("Out of disk space."));
    }
}

// A real one. What a process mounts in a name space of its own nobody else sees.
TEST_P(EveryEncoder, ASmallFileSystemLeavesNothing)
{
    OpenIt();
    const pid_t nChild = fork();
    ASSERT_GE(nChild, 0);
    if (nChild == 0)
    {
        const bool bSpace = unshare(geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) == 0;
        if (!bSpace || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("none", m_Folder.GetPath().c_str(), "tmpfs", 0, "size=64k") != 0)
            _exit(77);
        const bool bEncoded = Encode(MakeMusic(44100 * 20));
        const int nError = GetError();
        const bool bRight = IsPipe() ? nError == ENCODER_PIPE : nError == ENCODER_DISK_FULL;
        _exit(bEncoded ? 1 : !bRight ? 2 : !ListFolder().empty() ? 3 : 0);
    }
    int nStatus = 0;
    waitpid(nChild, &nStatus, 0);
    ASSERT_TRUE(WIFEXITED(nStatus));
    if (WEXITSTATUS(nStatus) == 77)
        GTEST_SKIP() << "nothing can be mounted here";
    EXPECT_EQ(0, WEXITSTATUS(nStatus));
}

TEST_P(EveryEncoder, ALimitOfTheFilesSizeIsAnErrorOfWriting)
{
    if (IsPipe())
        GTEST_SKIP() << "its program has the limit, too, and is ended by a signal";
    OpenIt();
    rlimit before;
    ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &before));
    const rlimit small = {20000, before.rlim_max};
    auto pBefore = signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &small));
    const bool bEncoded = Encode(MakeMusic(200000));
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &before));
    signal(SIGXFSZ, pBefore);
    EXPECT_FALSE(bEncoded);
    ExpectNothing(ENCODER_OUTPUT_WRITE);
}

TEST_P(EveryEncoder, SetUpIsFixedWhileItRuns)
{
    OpenIt();
    ASSERT_TRUE(Feed(MakeMusic(1000)));
    Set("Bits", "24");
    Set("Channels", "1");
    Set("Settings", "nonsense");
    Set("Output File", m_Folder.GetPath("other"));
    EXPECT_EQ("16", Get("Bits"));
    EXPECT_TRUE(Encode(MakeMusic(1000))) << Get("Last Error");
    EXPECT_EQ("out.bin", ListFolder());
}

TEST_P(EveryEncoder, NeedsNoCallback)
{
    Open(GetParam().pName, GetParam().pSettings);
    ASSERT_TRUE(m_Plugin.Open(nullptr, true));
    SetOutput(m_strPath);
    Set("Expected Frames", "2000");
    EXPECT_TRUE(Encode(MakeMusic(2000)));
    SetOutput(m_strPath);
    EXPECT_FALSE(Encode(MakeMusic(2001)));
    SetOutput(m_strPath);
    EXPECT_TRUE(Feed(MakeMusic(1000)));
    m_Plugin.Stop();
    EXPECT_EQ("out.bin", ListFolder());
}
