// What a load tells of its progress, and the test of the content.

#include "FileLoader.h"
#include "ILyMessageBox.h"
#include "ITranslator.h"
#include "LyTimer.h"
#include "StandInTools.h"
#include "TestReader/TestReader.h"
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{
constexpr wchar_t FILE_NAME[] = L"/music/a.bin";
constexpr wchar_t URL[] = L"http://host/a.bin";

struct WAIT_STEP
{
    std::wstring strText;
    std::wstring strSecondText;
    int nPercent;
};

// A tools library that shows wait messages, and translates by putting "*" in front.
class WaitTools final : public StandInTools, public ILyMessageBox, public ILyWaitMessage, public ITranslator
{
public:
    ILyMessageBox* GetLyMessageBoxHelper(bool) override { return m_bThere ? this : nullptr; }
    ITranslator* GetTranslator(bool) override { return this; }

    int Show(LyMessageBoxDescriptor*) override { return 0; }
    ILyWaitMessage* CreateWaitMessage(const wchar_t* pText, int nDelayMS, bool bCancelButton,
                                      ILyWaitMessageCallback* pCallback) override
    {
        ++m_nCreated;
        m_strText = pText;
        m_nDelayMS = nDelayMS;
        m_bCancelButton = bCancelButton;
        m_pCallback = pCallback;
        return this;
    }
    void FillDefaultButtons(LyMessageBoxDescriptor*) override {}
    void FillDefaultButtonTexts(LyMessageBoxDescriptor*) override {}

    bool GetCancelled() override { return false; }
    void SetProgress(const wchar_t* pText, const wchar_t* pSecondText, int nPercent) override
    {
        m_arySteps.push_back({pText, pSecondText, nPercent});
        if (m_bCancelAtOnce)
            (void)m_pCallback->LyWaitMessage_Cancel();
    }
    void Close() override { ++m_nClosed; }

    void Reserved1() override {}
    void Reserved2() override {}
    void Translate(const ILyDllString& strText) override { strText.Set(L"*" + LyString(strText.Get()), -1); }

    bool m_bThere = true;
    bool m_bCancelAtOnce = false;
    int m_nCreated = 0;
    int m_nClosed = 0;
    std::wstring m_strText;
    int m_nDelayMS = 0;
    bool m_bCancelButton = false;
    ILyWaitMessageCallback* m_pCallback = nullptr;
    std::vector<WAIT_STEP> m_arySteps;
};

class FileLoaderWait : public testing::Test
{
protected:
    bool Load(const wchar_t* pName, int nBytes)
    {
        m_Script.strContent.assign(static_cast<size_t>(nBytes), 'x');
        return m_Loader.LoadBuffer(LyFilename(pName), m_Buffer);
    }

    TestReaderLibrary m_Library;
    READER_SCRIPT& m_Script = m_Library.m_Script;
    WaitTools m_Tools;
    CFileLoader m_Loader;
    LyBuffer m_Buffer;
};

struct WAIT_CASE
{
    const char* pTest;
    const wchar_t* pName;
    int nBytes;
    long long nLength; // as the reader says
    const wchar_t* pTitle;
    bool bShort;
    std::vector<WAIT_STEP> arySteps;
};

const WAIT_CASE s_aryWaitCases[] = {
    {"Url",
     URL,
     102400,
     102400,
     L"Title",
     false,
     {{L"*Downloading 'Title'  (64.0 KB *of 100 KB)", L"", 64},
      {L"*Downloading 'Title'  (100 KB *of 100 KB)", L"", 100}}},
    {"File", FILE_NAME, 1536, 1536, L"Title", false, {{L"*Reading 'Title'  (1.5 KB *of 1.5 KB)", L"", 100}}},
    {"Short", FILE_NAME, 100, 100, L"Title", true, {{L"Title  (100 bytes *of 100 bytes)", L"", 100}}},
    {"ShortOfAnUnnamedFile", FILE_NAME, 1, 1, L"", true, {{L"*Local resource  (1 bytes *of 1 bytes)", L"", 100}}},
    {"UnnamedUrl", URL, 1, 1, L"", false, {{L"*Downloading '*Internet resource'  (1 bytes *of 1 bytes)", L"", 100}}},
    {"LengthNotKnown", URL, 100, -1, L"Title", true, {{L"Title  (100 bytes)", L"", -1}}},
    {"LengthThatMeansNotKnown", URL, 100, 0x7fffffff, L"Title", true, {{L"Title  (100 bytes)", L"", -1}}},
    {"EmptyFile", FILE_NAME, 0, 0, L"Title", true, {{L"Title  (0 bytes)", L"", -1}}},
};
} // namespace

TEST_F(FileLoaderWait, TextsAndPercents)
{
    for (const WAIT_CASE& row : s_aryWaitCases)
    {
        m_Tools.m_arySteps.clear();
        m_Loader.SetProgressUI(true, 4000, true, row.pTitle, row.bShort, L"");
        m_Script.nLength = row.nLength;
        (void)Load(row.pName, row.nBytes);
        ASSERT_EQ(m_Tools.m_arySteps.size(), row.arySteps.size()) << row.pTest;
        for (size_t n = 0; n < row.arySteps.size(); ++n)
        {
            EXPECT_EQ(m_Tools.m_arySteps[n].strText, row.arySteps[n].strText) << row.pTest;
            EXPECT_EQ(m_Tools.m_arySteps[n].strSecondText, row.arySteps[n].strSecondText) << row.pTest;
            EXPECT_EQ(m_Tools.m_arySteps[n].nPercent, row.arySteps[n].nPercent) << row.pTest;
        }
    }
    EXPECT_EQ(m_Tools.m_nClosed, m_Tools.m_nCreated);
}

TEST_F(FileLoaderWait, MessageIsMadeAsToldAndClosed)
{
    m_Loader.SetProgressUI(true, 123, false, L"title", false, L"text");
    EXPECT_TRUE(Load(FILE_NAME, 10));
    EXPECT_EQ(m_Tools.m_nCreated, 1);
    EXPECT_EQ(m_Tools.m_strText, L"text");
    EXPECT_EQ(m_Tools.m_nDelayMS, 123);
    EXPECT_FALSE(m_Tools.m_bCancelButton);
    EXPECT_EQ(m_Tools.m_pCallback, static_cast<ILyWaitMessageCallback*>(&m_Loader));
    EXPECT_EQ(m_Tools.m_nClosed, 1);
    m_Script.bOpens = false;
    EXPECT_FALSE(Load(FILE_NAME, 10));
    EXPECT_EQ(m_Tools.m_nClosed, 2) << "after a failure, too";
}

TEST_F(FileLoaderWait, NoMessageUnlessAskedForAndThere)
{
    EXPECT_TRUE(Load(FILE_NAME, 10));
    EXPECT_EQ(m_Tools.m_nCreated, 0);
    EXPECT_TRUE(m_Loader.m_strProgressTitle.IsEmpty());
    m_Tools.m_bThere = false;
    m_Loader.SetProgressUI(true, 0, true, L"", false, L"");
    EXPECT_TRUE(Load(FILE_NAME, 10));
    EXPECT_EQ(m_Loader.m_strProgressTitle, L"*Local resource");
}

TEST_F(FileLoaderWait, ItsCancelButtonEndsTheLoad)
{
    m_Tools.m_bCancelAtOnce = true;
    m_Loader.SetProgressUI(true, 0, true, L"", false, L"");
    EXPECT_FALSE(Load(URL, 1'000'000));
    EXPECT_EQ(m_Library.m_Record.aryReads.size(), 1u);
    EXPECT_EQ(m_Buffer.GetSize(), 0);
}

TEST_F(FileLoaderWait, BufferFromFileShowsItAfterFourSeconds)
{
    m_Script.strContent = "abc";
    EXPECT_TRUE(m_Buffer.FromFile(LyFilename(FILE_NAME), -1, true));
    EXPECT_EQ(m_Tools.m_nDelayMS, 4000);
    ASSERT_EQ(m_Tools.m_arySteps.size(), 1u);
    EXPECT_EQ(m_Tools.m_arySteps[0].strText, L"*Working...  (3 bytes *of 3 bytes)");
}

// ---- The listener

namespace
{
class Listener final : public IFileLoaderProgress
{
public:
    bool GetCancelled() override { return ++m_nAsked == m_nCancelAt; }
    void SetProgress(float fProgress) override { m_aryReports.push_back(fProgress); }

    int m_nAsked = 0;
    int m_nCancelAt = -1;
    std::vector<float> m_aryReports;
};

class FileLoaderListener : public FileLoaderWait
{
protected:
    FileLoaderListener() { m_Loader.m_pProgress = &m_Listener; }

    Listener m_Listener;
};
} // namespace

TEST_F(FileLoaderListener, HearsOfTheFirstAndTheLastRound)
{
    EXPECT_TRUE(Load(URL, 10 * 65536));
    EXPECT_EQ(m_Listener.m_nAsked, 10);
    EXPECT_EQ(m_Listener.m_aryReports, (std::vector<float>{0.1F, 1.0F})) << "the rounds between came too fast";
}

TEST_F(FileLoaderListener, HearsAgainAfterHalfASecondAndAStep)
{
    int nReads = 0;
    m_Script.onRead = [&]
    {
        if (++nReads == 5)
            Sleep(600);
    };
    EXPECT_TRUE(Load(URL, 10 * 65536));
    EXPECT_EQ(m_Listener.m_aryReports, (std::vector<float>{0.1F, 0.5F, 1.0F}));
}

TEST_F(FileLoaderListener, HearsOfNoSmallStep)
{
    int nReads = 0;
    m_Script.onRead = [&]
    {
        if (++nReads == 2)
            Sleep(600);
    };
    // 300 rounds: the second one is a step of 0.0033.
    EXPECT_TRUE(Load(URL, 300 * 65536));
    ASSERT_GE(m_Listener.m_aryReports.size(), 3u);
    EXPECT_FLOAT_EQ(m_Listener.m_aryReports[0], 1 / 300.0F);
    EXPECT_FLOAT_EQ(m_Listener.m_aryReports[1], 3 / 300.0F);
    EXPECT_EQ(m_Listener.m_aryReports.back(), 1.0F);
}

TEST_F(FileLoaderListener, HearsOfAnUnknownLengthOnce)
{
    m_Script.nLength = -1;
    EXPECT_TRUE(Load(URL, 3 * 65536 + 1));
    ASSERT_EQ(m_Listener.m_aryReports.size(), 1u);
    EXPECT_LT(m_Listener.m_aryReports[0], 1e-6F);
}

TEST_F(FileLoaderListener, HearsZeroOfAnEmptySource)
{
    EXPECT_TRUE(Load(FILE_NAME, 0));
    EXPECT_EQ(m_Listener.m_aryReports, std::vector<float>{0.0F});
}

TEST_F(FileLoaderListener, CancelsTheLoad)
{
    m_Listener.m_nCancelAt = 2;
    EXPECT_FALSE(Load(URL, 10 * 65536));
    EXPECT_EQ(m_Library.m_Record.aryReads.size(), 2u);
    EXPECT_TRUE(m_Loader.m_Cancel.m_bCancelled);
    EXPECT_TRUE(Load(URL, 10 * 65536)) << "the next load begins afresh";
}

// ---- The content

namespace
{
class Checker final : public IFileLoaderChecker
{
public:
    bool Check(const LyBuffer& buffer, int nParam) override
    {
        m_arySizes.push_back(buffer.GetSize());
        m_nParam = nParam;
        return m_bAnswer;
    }

    bool m_bAnswer = true;
    int m_nParam = 0;
    std::vector<int> m_arySizes;
};

struct CHECK_CASE
{
    const char* pTest;
    int nBytes;
    long long nLength;
    int nCheckBytes;
    bool bAtEnd;
    std::vector<int> arySizes; // that the checker sees
};

const CHECK_CASE s_aryCheckCases[] = {
    {"BehindTheFirstChunk", 100'000, 100'000, 0, true, {65536}},
    {"NegativeIsNone", 100'000, 100'000, -1, true, {65536}},
    {"AsEarlyAsPromised", 100'000, 100'000, 10, true, {10}},
    {"BehindSeveralChunks", 200'000, 200'000, 100'000, true, {100'000}},
    {"ExactlyTheLength", 100, 100, 100, false, {100}},
    {"ShorterSource", 100, 100, 1000, true, {100}},
    {"ShorterSourceUntested", 100, 100, 1000, false, {}},
    {"ShorterSourceOfUnknownLength", 100, -1, 1000, true, {100}},
    {"ShorterSourceOfUnknownLengthUntested", 100, -1, 1000, false, {}},
    {"SourceThatBreaksOff", 100, 200, 1000, true, {}},
};
} // namespace

class FileLoaderContent : public FileLoaderWait
{
protected:
    FileLoaderContent()
    {
        m_Loader.m_pChecker = &m_Checker;
        m_Loader.m_nCheckerParam = 77;
    }

    bool LoadText(const std::string& str, const wchar_t* pRequired)
    {
        m_Script.strContent = str;
        m_Loader.m_strRequiredText = pRequired;
        return m_Loader.LoadBuffer(LyFilename(FILE_NAME), m_Buffer);
    }

    Checker m_Checker;
};

TEST_F(FileLoaderContent, IsTestedOnceAndInTime)
{
    for (const CHECK_CASE& row : s_aryCheckCases)
    {
        m_Checker.m_arySizes.clear();
        m_Script.nLength = row.nLength;
        m_Loader.m_nCheckBytes = row.nCheckBytes;
        m_Loader.m_bCheckAtEnd = row.bAtEnd;
        EXPECT_EQ(Load(URL, row.nBytes), row.nLength <= row.nBytes) << row.pTest;
        EXPECT_EQ(m_Checker.m_arySizes, row.arySizes) << row.pTest;
    }
    EXPECT_EQ(m_Checker.m_nParam, 77);
}

TEST_F(FileLoaderContent, FailedTestEndsTheLoad)
{
    m_Checker.m_bAnswer = false;
    m_Loader.m_nCheckBytes = 10;
    EXPECT_FALSE(Load(URL, 100'000));
    EXPECT_EQ(m_Library.m_Record.aryReads, std::vector<int>{10});
    EXPECT_EQ(m_Buffer.GetSize(), 0);
}

TEST_F(FileLoaderContent, RequiredTextIsNarrowOrWide)
{
    EXPECT_TRUE(LoadText("some <rss> text", L"<rss"));
    EXPECT_FALSE(LoadText("some <RSS> text", L"<rss"));
    EXPECT_FALSE(LoadText("", L"<rss"));
    EXPECT_TRUE(LoadText("", L""));
    EXPECT_TRUE(LoadText("gr\xC3\xBC\xC3\x9F", L"gr\u00FC\u00DF"));
    const std::wstring strWide = L"<rss";
    EXPECT_TRUE(LoadText("odd" + std::string(reinterpret_cast<const char*>(strWide.data()), 16) + "end", L"<rss"));
    EXPECT_FALSE(LoadText("odd" + std::string(reinterpret_cast<const char*>(strWide.data()), 12) + "end", L"<rss"));
}
