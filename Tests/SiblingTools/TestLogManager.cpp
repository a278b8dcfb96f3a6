#include "LogManager.h"
#include "LyCoreLib/RawTable.h"
#include "LyCoreLib/StandInTools.h"
#include "TempFolder.h"
#include <cstdlib>
#include <gmock/gmock.h>
#include <iterator>
#include <sstream>
#include <thread>
#include <vector>

using testing::HasSubstr;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace
{
using ARGUMENT = LyString::CFormatArgument;

std::string ReadAll(const std::string& strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::vector<std::string> ReadLines(const std::string& strPath)
{
    std::vector<std::string> aryLines;
    std::istringstream stream(ReadAll(strPath));
    for (std::string strLine; std::getline(stream, strLine);)
        aryLines.push_back(strLine);
    return aryLines;
}

// The line without its time and thread.
std::string GetBody(const std::string& strLine)
{
    const size_t nTimeEnd = strLine.find(' ');
    return strLine.substr(std::min(strLine.find(' ', nTimeEnd + 1) + 1, strLine.size()));
}

LogSetting MakeSetting(const std::string& strText)
{
    LogSetting setting;
    EXPECT_TRUE(setting.Parse(strText.c_str()));
    return setting;
}

class LogManagerTest : public testing::Test
{
protected:
    void SetUp() override { unsetenv("RONDEL_LOG"); }
    void TearDown() override { unsetenv("RONDEL_LOG"); }

    // What a manager of this setting wrote to its file.
    template <class USE>
    std::vector<std::string> Write(const std::string& strAreas, USE use)
    {
        {
            LogManager manager(MakeSetting(strAreas + ":" + GetPath()));
            use(manager);
        }
        return ReadLines(GetPath());
    }
    std::string GetPath() const { return m_Folder.GetPath("a.log"); }

    TempFolder m_Folder;
};
} // namespace

TEST_F(LogManagerTest, IsOffByDefault)
{
    EXPECT_FALSE(LogManager::IsWanted());
    CaptureStderr();
    LogManager manager;
    EXPECT_FALSE(manager.IsOn(1));
    manager.Log(1, L"Name", L"text", nullptr, 0);
    manager.Log(4096, L"Name", "text", nullptr, 0);
    EXPECT_EQ(GetCapturedStderr(), "");
}

TEST_F(LogManagerTest, TheEnvironmentSwitchesAnAreaOn)
{
    setenv("RONDEL_LOG", ("4096:" + GetPath()).c_str(), 1);
    EXPECT_TRUE(LogManager::IsWanted());
    LogManager manager;
    EXPECT_TRUE(manager.IsOn(4096));
    EXPECT_FALSE(manager.IsOn(1));
    manager.Log(1, L"Name", L"not this", nullptr, 0);
    EXPECT_FALSE(std::filesystem::exists(GetPath())); // an area that is off opens nothing
    manager.Log(4096, L"Name", L"but this", nullptr, 0);
    EXPECT_THAT(ReadAll(GetPath()), HasSubstr(" 4096 Name: but this\n"));
}

TEST_F(LogManagerTest, TheStandardErrorStreamIsATarget)
{
    setenv("RONDEL_LOG", "4096:stderr", 1);
    CaptureStderr();
    LogManager manager;
    manager.Log(4096, L"Name", L"text", nullptr, 0);
    EXPECT_THAT(GetCapturedStderr(), testing::EndsWith(" 4096 Name: text\n"));
}

TEST_F(LogManagerTest, AWrongFormIsToldOnceAndLogsNothing)
{
    for (const char* pValue : {"4096", "drive:stderr", "4096:", ":stderr"})
    {
        SCOPED_TRACE(pValue);
        setenv("RONDEL_LOG", pValue, 1);
        CaptureStderr();
        EXPECT_FALSE(LogManager::IsWanted());
        EXPECT_FALSE(LogManager::IsWanted());
        LogManager manager;
        EXPECT_FALSE(manager.IsOn(4096));
        manager.Log(4096, L"Name", L"text", nullptr, 0);
        const std::string strTold = GetCapturedStderr();
        EXPECT_THAT(strTold, HasSubstr("RONDEL_LOG"));
        EXPECT_THAT(strTold, HasSubstr("AREAS:TARGET"));
        EXPECT_THAT(strTold, HasSubstr("4096:stderr"));
        EXPECT_EQ(std::count(strTold.begin(), strTold.end(), '\n'), 1);
    }
}

TEST_F(LogManagerTest, ALineHoldsTimeThreadAreaNameAndText)
{
    const auto aryLines =
        Write("all", [](LogManager& manager) { manager.Log(17, L"CDRipper", L"open it", nullptr, 0); });
    ASSERT_EQ(aryLines.size(), 1u);
    char szThread[32];
    std::snprintf(szThread, sizeof szThread, "%llx", static_cast<unsigned long long>(pthread_self()));
    EXPECT_THAT(aryLines[0],
                testing::MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}[.][0-9]{3}Z [0-9a-f]+ "
                                      "17 CDRipper: open it"));
    EXPECT_THAT(aryLines[0], HasSubstr(std::string("Z ") + szThread + " 17 "));
    const std::time_t nNow = std::time(nullptr);
    char szDate[16];
    (void)std::strftime(szDate, sizeof szDate, "%Y-%m-%dT", std::gmtime(&nNow));
    EXPECT_EQ(aryLines[0].substr(0, 8), std::string(szDate).substr(0, 8)); // this month, in UTC
}

TEST_F(LogManagerTest, FormatsByTheSystemsOwnDirectives)
{
    const auto aryLines = Write("1",
                                [](LogManager& manager)
                                {
                                    ARGUMENT number(42);
                                    ARGUMENT text(L"disc");
                                    ARGUMENT decimal(2.5);
                                    ARGUMENT nothing;
                                    ARGUMENT* aryArguments[] = {&number, &text, &decimal, &nothing};
                                    manager.Log(1, L"N", L"%d %s %.2f %d %%", aryArguments, 4);
                                    manager.Log(1, L"N", "%d %3s", aryArguments, 2);
                                    manager.Log(1, L"N", L"%s|%d", aryArguments, 0);
                                    manager.Log(1, L"N", L"%d", nullptr, 3);
                                });
    ASSERT_EQ(aryLines.size(), 4u);
    EXPECT_EQ(GetBody(aryLines[0]), "1 N: 42 disc 2.50 0 %");
    EXPECT_EQ(GetBody(aryLines[1]), "1 N: 42 dis");
    EXPECT_EQ(GetBody(aryLines[2]), "1 N: %s|%d"); // without arguments nothing is read as a directive
    EXPECT_EQ(GetBody(aryLines[3]), "1 N: %d");
}

TEST_F(LogManagerTest, NarrowTextIsWidenedByteByByte)
{
    const auto aryLines = Write("1", [](LogManager& manager) { manager.Log(1, L"N", "caf\xe9", nullptr, 0); });
    ASSERT_EQ(aryLines.size(), 1u);
    EXPECT_EQ(GetBody(aryLines[0]), "1 N: caf\xc3\xa9");
}

TEST_F(LogManagerTest, ARecordIsOneLine)
{
    const auto aryLines = Write("1",
                                [](LogManager& manager)
                                {
                                    manager.Log(1, L"N", L"ends\r\n", nullptr, 0);
                                    manager.Log(1, L"N", L"ends twice\n\n", nullptr, 0);
                                    manager.Log(1, L"N", "a\nb\tc\x1b[2J", nullptr, 0);
                                    manager.Log(1, L"two\nlines", L"x", nullptr, 0);
                                    manager.Log(1, L"", L"", nullptr, 0);
                                    manager.Log(1, L"N", static_cast<const wchar_t*>(nullptr), nullptr, 0);
                                    manager.Log(1, L"N", static_cast<const char*>(nullptr), nullptr, 0);
                                });
    const char* const aryExpected[] = {
        "1 N: ends", "1 N: ends twice", "1 N: a\\nb\\tc\\x1b[2J", "1 two\\nlines: x", "1 -: ", "1 N: ", "1 N: "};
    ASSERT_EQ(aryLines.size(), std::size(aryExpected));
    for (size_t n = 0; n < aryLines.size(); ++n)
        EXPECT_EQ(GetBody(aryLines[n]), aryExpected[n]);
}

// The arguments are no more looked at than the text is: these would not survive a look.
TEST_F(LogManagerTest, AnAreaThatIsOffIsNotFormatted)
{
    auto** ppBad = reinterpret_cast<ARGUMENT**>(8);
    auto* pBadText = reinterpret_cast<const wchar_t*>(8);
    LogManager manager(MakeSetting("1:" + GetPath()));
    manager.Log(2, L"N", pBadText, ppBad, 5);
    manager.Log(2, L"N", reinterpret_cast<const char*>(pBadText), ppBad, 5);
    EXPECT_FALSE(std::filesystem::exists(GetPath()));
}

TEST_F(LogManagerTest, ALogThatCantBeWrittenIsToldOnceAndGivenUp)
{
    for (const std::string& strTarget : {m_Folder.GetPath("none/a.log"), m_Folder.GetPath(), std::string("/dev/full")})
    {
        SCOPED_TRACE(strTarget);
        CaptureStderr();
        LogManager manager(MakeSetting("all:" + strTarget));
        for (int n = 0; n < 3; ++n)
            manager.Log(1, L"N", L"text", nullptr, 0);
        EXPECT_FALSE(manager.IsOn(1)); // nothing is formatted any more
        const std::string strTold = GetCapturedStderr();
        EXPECT_THAT(strTold, HasSubstr(strTarget));
        EXPECT_THAT(strTold, HasSubstr("can't be written"));
        EXPECT_EQ(std::count(strTold.begin(), strTold.end(), '\n'), 1);
    }
}

TEST_F(LogManagerTest, TurnsItsFileOver)
{
    LogManager manager(MakeSetting("1:" + GetPath()), 400);
    for (int n = 0; n < 20; ++n)
        manager.Log(1, L"N", L"0123456789012345678901234567890123456789", nullptr, 0);
    EXPECT_LE(std::filesystem::file_size(GetPath()), 400u);
    EXPECT_TRUE(std::filesystem::exists(GetPath() + ".1"));
    EXPECT_TRUE(std::filesystem::exists(GetPath() + ".2"));
    EXPECT_FALSE(std::filesystem::exists(GetPath() + ".3"));
}

TEST_F(LogManagerTest, ThreadsWriteWholeLines)
{
    constexpr int THREADS = 4;
    constexpr int LINES = 200;
    const auto aryLines = Write("1",
                                [](LogManager& manager)
                                {
                                    std::vector<std::thread> aryThreads;
                                    for (int nThread = 0; nThread < THREADS; ++nThread)
                                        aryThreads.emplace_back(
                                            [&manager, nThread]
                                            {
                                                for (int n = 0; n < LINES; ++n)
                                                {
                                                    ARGUMENT thread(nThread);
                                                    ARGUMENT line(n);
                                                    ARGUMENT* aryArguments[] = {&thread, &line};
                                                    manager.Log(1, L"N", L"thread %d line %d", aryArguments, 2);
                                                }
                                            });
                                    for (std::thread& thread : aryThreads)
                                        thread.join();
                                });
    ASSERT_EQ(aryLines.size(), static_cast<size_t>(THREADS * LINES));
    int aryNext[THREADS] = {};
    for (const std::string& strLine : aryLines)
    {
        int nThread = -1;
        int nLine = -1;
        ASSERT_EQ(std::sscanf(GetBody(strLine).c_str(), "1 N: thread %d line %d", &nThread, &nLine), 2) << strLine;
        ASSERT_LT(nThread, THREADS);
        EXPECT_EQ(nLine, aryNext[nThread]++);
    }
}

TEST_F(LogManagerTest, OperationsStandInTheirSlots)
{
    const auto aryLines = Write("5",
                                [](LogManager& manager)
                                {
                                    ILogManager* pManager = &manager;
                                    const LyString strName(L"Slots");
                                    ARGUMENT number(3);
                                    ARGUMENT* aryArguments[] = {&number};
                                    CallSlot<void, int, const LyString&, const wchar_t*, ARGUMENT**, int>(
                                        pManager, 2, 5, strName, L"wide %d", aryArguments, 1);
                                    CallSlot<void, int, const LyString&, const char*, ARGUMENT**, int>(
                                        pManager, 3, 5, strName, "narrow %d", aryArguments, 1);
                                });
    ASSERT_EQ(aryLines.size(), 2u);
    EXPECT_EQ(GetBody(aryLines[0]), "5 Slots: wide 3");
    EXPECT_EQ(GetBody(aryLines[1]), "5 Slots: narrow 3");
}

namespace
{
class LogTools : public StandInTools
{
public:
    explicit LogTools(LogManager& manager) : m_Manager(manager) {}
    ILogManager* GetLogManager(bool) override { return &m_Manager; }

    LogManager& m_Manager;
};
} // namespace

TEST_F(LogManagerTest, WritesWhatTheFrontEndHandsIn)
{
    const auto aryLines = Write("4096",
                                [](LogManager& manager)
                                {
                                    LogTools tools(manager);
                                    CLogHelper log(4096, "OpenDrive", true);
                                    log.Log("100%");
                                    log.Log("drive %s at %d%%", L"D:", 50);
                                    log.SetResult(16);
                                    CLogHelper other(1, "Unseen", true);
                                    CLogHelper::Log(4096, L"Free", L"%d and %d", 1, 2);
                                });
    ASSERT_EQ(aryLines.size(), 5u);
    EXPECT_EQ(GetBody(aryLines[0]), "4096 OpenDrive: Start");
    EXPECT_EQ(GetBody(aryLines[1]), "4096 OpenDrive: 100%");
    EXPECT_EQ(GetBody(aryLines[2]), "4096 OpenDrive: drive D: at 50%");
    EXPECT_EQ(GetBody(aryLines[3]), "4096 Free: 1 and 2");
    EXPECT_THAT(GetBody(aryLines[4]), testing::MatchesRegex("4096 OpenDrive: Finish [(]result: 16[)] [(][0-9]+ ms[)]"));
}
