#include "ReaderTesting.h"
#include "TempFolder.h"
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
std::string GetContent(const std::string& strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// The superuser may read and write everything; for a while this is somebody else.
class NoSuperuser
{
public:
    NoSuperuser() : m_nUser(geteuid())
    {
        constexpr uid_t NOBODY = 65534;
        if (m_nUser == 0)
            (void)!seteuid(NOBODY);
    }
    ~NoSuperuser() { (void)!seteuid(m_nUser); }
    NoSuperuser(const NoSuperuser&) = delete;
    NoSuperuser& operator=(const NoSuperuser&) = delete;

private:
    uid_t m_nUser;
};

class FileReaderTest : public testing::Test
{
protected:
    std::string Write(const std::string& strContent) const { return m_Folder.Write("a.bin", strContent); }
    TempFolder m_Folder;
};
} // namespace

TEST_F(FileReaderTest, ReadsFromStartToEnd)
{
    const ReaderPtr pReader = MakeReader(Write("hello"));
    ASSERT_NE(pReader, nullptr);
    EXPECT_FALSE(pReader->GetIsOpen());
    EXPECT_EQ(pReader->GetLength(), -1);
    ASSERT_TRUE(pReader->Open());
    EXPECT_TRUE(pReader->GetIsOpen());
    EXPECT_EQ(pReader->GetLength(), 5);
    EXPECT_EQ(pReader->GetPosition(), 0);
    EXPECT_FALSE(pReader->GetIsStream());
    EXPECT_TRUE(pReader->GetCanClose());
    EXPECT_FALSE(pReader->GetCanCancel()) << "a cancel closes";
    EXPECT_EQ(ReadText(*pReader, 3), "hel");
    EXPECT_EQ(pReader->GetPosition(), 3);
    EXPECT_EQ(ReadText(*pReader, 100), "lo");
    EXPECT_EQ(ReadText(*pReader, 100), "");
    pReader->Close();
    EXPECT_FALSE(pReader->GetIsOpen());
    EXPECT_EQ(ReadText(*pReader, 1), "");
    EXPECT_EQ(pReader->Seek(0, 0), -1);
    EXPECT_EQ(pReader->Write("x", 1), 0);
    EXPECT_TRUE(pReader->Open()) << "a closed reader opens again";
    EXPECT_EQ(ReadText(*pReader, 1), "h");
}

TEST_F(FileReaderTest, NonsenseIsReadAndWrittenAsNothing)
{
    const ReaderPtr pReader = MakeReader(Write("hello"));
    ASSERT_TRUE(pReader->Open());
    char c = 0;
    EXPECT_EQ(pReader->Read(nullptr, 5), 0);
    EXPECT_EQ(pReader->Read(&c, 0), 0);
    EXPECT_EQ(pReader->Read(&c, -1), 0);
    EXPECT_EQ(pReader->Write(nullptr, 5), 0);
    EXPECT_EQ(pReader->Write(&c, 0), 0);
    EXPECT_EQ(pReader->Write(&c, INT_MIN), 0);
    EXPECT_EQ(pReader->GetPosition(), 0);
}

TEST_F(FileReaderTest, SeeksFromStartPositionAndEnd)
{
    const struct
    {
        long long nOffset;
        int nOrigin;
        long long nResult;
        long long nPosition; // afterwards; it was 4
    } aryCases[] = {
        {2, 0, 2, 2},   {2, 1, 6, 6},       {-2, 1, 2, 2},         {-1, 2, 9, 9},         {0, 2, 10, 10},
        {5, 2, 15, 15}, {100, 0, 100, 100}, {-1, 0, -1, 4},        {-5, 1, -1, 4},        {-11, 2, -1, 4},
        {0, 3, -1, 4},  {0, -1, -1, 4},     {LLONG_MAX, 1, -1, 4}, {LLONG_MIN, 1, -1, 4}, {LLONG_MAX, 2, -1, 4},
    };
    const ReaderPtr pReader = MakeReader(Write("0123456789"));
    for (const auto& row : aryCases)
    {
        ASSERT_TRUE(pReader->Open());
        ASSERT_EQ(pReader->Seek(4, 0), 4);
        EXPECT_EQ(pReader->Seek(row.nOffset, row.nOrigin), row.nResult) << row.nOffset << " from " << row.nOrigin;
        EXPECT_EQ(pReader->GetPosition(), row.nPosition) << row.nOffset << " from " << row.nOrigin;
    }
    ASSERT_EQ(pReader->Seek(100, 0), 100);
    EXPECT_EQ(ReadText(*pReader, 1), "") << "behind the end there is nothing";
}

TEST_F(FileReaderTest, OpenReadsAndWritesTheSameFile)
{
    const std::string strPath = Write("0123456789");
    const ReaderPtr pReader = MakeReader(strPath);
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(pReader->Seek(3, 0), 3);
    EXPECT_EQ(pReader->Write("xyz", 3), 3);
    EXPECT_EQ(pReader->GetPosition(), 6);
    EXPECT_EQ(ReadText(*pReader, 1), "6");
    EXPECT_EQ(pReader->Seek(12, 0), 12);
    EXPECT_EQ(pReader->Write("!", 1), 1);
    EXPECT_EQ(pReader->GetLength(), 13);
    pReader->Close();
    EXPECT_EQ(GetContent(strPath), std::string("012xyz6789\0\0!", 13));
}

TEST_F(FileReaderTest, SetEndOfFileCutsAndGrowsAtThePosition)
{
    const std::string strPath = Write("0123456789");
    const ReaderPtr pReader = MakeReader(strPath);
    ASSERT_TRUE(pReader->Open());
    (void)pReader->Seek(4, 0);
    pReader->SetEndOfFile();
    EXPECT_EQ(pReader->GetLength(), 4);
    (void)pReader->Seek(6, 0);
    pReader->SetEndOfFile();
    EXPECT_EQ(GetContent(strPath), std::string("0123\0\0", 6));
}

TEST_F(FileReaderTest, ReadOnlyDoesNotWrite)
{
    const std::string strPath = Write("0123");
    const ReaderPtr pReader = MakeReader(strPath);
    pReader->SetProperty(L"READ_ONLY", L"1");
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(pReader->Write("x", 1), 0);
    EXPECT_NE(GetInfo(*pReader, L"Error").find("READ_ONLY"), std::string::npos);
    pReader->SetEndOfFile();
    EXPECT_FALSE(pReader->Create());
    EXPECT_EQ(GetContent(strPath), "0123");
    pReader->SetProperty(L"READ_ONLY", L"");
    pReader->SetProperty(L"Unknown", L"1");
    pReader->SetProperty(nullptr, nullptr);
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(pReader->Write("x", 1), 1);
}

TEST_F(FileReaderTest, FileWithoutWritePermissionIsReadAlone)
{
    const std::string strPath = Write("0123");
    const std::string strSecretPath = m_Folder.Write("secret", "x");
    chmod(strPath.c_str(), 0444);
    chmod(strSecretPath.c_str(), 0);
    const NoSuperuser nobody;
    const ReaderPtr pReader = MakeReader(strPath);
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(ReadText(*pReader, 4), "0123");
    EXPECT_EQ(pReader->Write("x", 1), 0);
    EXPECT_FALSE(pReader->Create());
    const ReaderPtr pSecret = MakeReader(strSecretPath);
    EXPECT_FALSE(pSecret->Open());
    EXPECT_NE(GetInfo(*pSecret, L"Error").find("permissions"), std::string::npos);
}

TEST_F(FileReaderTest, RunningProgramIsReadAlone)
{
    const ReaderPtr pReader = MakeReader("/proc/self/exe");
    ASSERT_TRUE(pReader->Open());
    EXPECT_EQ(ReadText(*pReader, 4), "\x7f"
                                     "ELF");
}

TEST_F(FileReaderTest, CreateMakesAndEmptiesFiles)
{
    const std::string strPath = m_Folder.GetPath("new.bin");
    const ReaderPtr pReader = MakeReader(strPath);
    EXPECT_FALSE(pReader->Open()) << "there is none yet";
    ASSERT_TRUE(pReader->Create());
    EXPECT_TRUE(pReader->GetIsOpen());
    EXPECT_EQ(pReader->Write("hello", 5), 5);
    EXPECT_EQ(pReader->Seek(1, 0), 1);
    EXPECT_EQ(ReadText(*pReader, 3), "ell") << "what was written can be read";
    ASSERT_TRUE(pReader->Create());
    EXPECT_EQ(pReader->GetLength(), 0);
    pReader->Close();
    EXPECT_EQ(GetContent(strPath), "");
}

TEST_F(FileReaderTest, WhatCannotBeOpenedSaysWhy)
{
    const struct
    {
        std::string strName;
        const char* pText;
    } aryCases[] = {
        {m_Folder.GetPath("missing"), "No such file or directory. Check the name"},
        {m_Folder.GetPath(), "Is a directory. Name a file in it."},
        {m_Folder.GetPath("no/such/folder"), "Check the name and that its folder exists."},
        {"file:///tmp/a%00b", "No such file or directory"},
        {"file://", "No such file or directory"},
    };
    for (const auto& row : aryCases)
    {
        const ReaderPtr pReader = MakeReader(row.strName);
        ASSERT_NE(pReader, nullptr);
        for (const bool bCreate : {false, true})
        {
            if (bCreate && row.strName == aryCases[0].strName)
                continue;
            EXPECT_FALSE(bCreate ? pReader->Create() : pReader->Open()) << row.strName;
            EXPECT_NE(GetInfo(*pReader, L"Error").find(row.pText), std::string::npos) << GetInfo(*pReader, L"Error");
            EXPECT_FALSE(pReader->GetIsOpen());
        }
    }
}

TEST_F(FileReaderTest, InfosOfTheTransportAreEmpty)
{
    const ReaderPtr pReader = MakeReader(Write("x"));
    ASSERT_TRUE(pReader->Open());
    for (const wchar_t* pName : {L"Location", L"AllHeaders", L"StatusCode", L"ContentEncoding", L"Error", L""})
        EXPECT_EQ(GetInfo(*pReader, pName), "");
    EXPECT_EQ(GetInfo(*pReader, nullptr), "");
    pReader->SetTimeout(1);
    pReader->SetPostData(nullptr, 0);
    pReader->SetDownloadParameters(L"a|b");
    EXPECT_EQ(ReadText(*pReader, 1), "x");
}

TEST_F(FileReaderTest, FullDiskWritesWhatItCan)
{
    const ReaderPtr pReader = MakeReader("/dev/full");
    ASSERT_TRUE(pReader->Open());
    EXPECT_TRUE(pReader->GetIsStream());
    EXPECT_EQ(pReader->Write("x", 1), 0);
    EXPECT_NE(GetInfo(*pReader, L"Error").find("Make room"), std::string::npos);
}

TEST_F(FileReaderTest, PositionsBeyondFourGibibytes)
{
    constexpr long long FAR = 5LL * 1024 * 1024 * 1024;
    const ReaderPtr pReader = MakeReader(m_Folder.GetPath("sparse"));
    ASSERT_TRUE(pReader->Create());
    ASSERT_EQ(pReader->Seek(FAR, 0), FAR);
    ASSERT_EQ(pReader->Write("far", 3), 3);
    EXPECT_EQ(pReader->GetLength(), FAR + 3);
    ASSERT_EQ(pReader->Seek(-3, 2), FAR);
    EXPECT_EQ(ReadText(*pReader, 10), "far");
    ASSERT_EQ(pReader->Seek(-1, 1), FAR + 2);
    EXPECT_EQ(ReadText(*pReader, 10), "r");
}

TEST_F(FileReaderTest, LargeReadsComeWhole)
{
    const std::string strBytes = MakeBytes(9 * 1024 * 1024 + 7);
    const ReaderPtr pReader = MakeReader(Write(strBytes));
    ASSERT_TRUE(pReader->Open());
    EXPECT_TRUE(ReadText(*pReader, 20 * 1024 * 1024) == strBytes);
}

TEST_F(FileReaderTest, NamesOfAllKindsReachTheSystem)
{
    const std::string aryNames[] = {"ä ö.txt",         "a'b\"c",   "new\nline", "-dash",   "\xF0\x9F\x8E\xB5.wav",
                                    "bad\xFF\xFEname", "100%.txt", "%41.txt",   "a;b.c;3", "q?x#y"};
    for (const std::string& strName : aryNames)
    {
        const std::string strPath = m_Folder.GetPath(strName);
        const ReaderPtr pReader = MakeReader(strPath);
        ASSERT_TRUE(pReader->Create()) << strName;
        pReader->Close();
        EXPECT_EQ(access(strPath.c_str(), F_OK), 0) << strName;
    }
}

TEST_F(FileReaderTest, FileUrlsAreLocalNames)
{
    (void)m_Folder.Write("a b%.txt", "text");
    for (const char* pPrefix : {"file://", "FILE://", "file://localhost", "file://LOCALHOST"})
        for (const char* pName : {"/a%20b%25.txt", "/a b%.txt", "/%61 b%25%2Etxt"})
        {
            const ReaderPtr pReader = MakeReader(pPrefix + m_Folder.GetPath() + pName);
            ASSERT_NE(pReader, nullptr);
            EXPECT_TRUE(pReader->Open()) << pPrefix << pName;
            EXPECT_EQ(ReadText(*pReader, 10), "text");
        }
}

TEST_F(FileReaderTest, PipeIsAStreamThatIsWaitedFor)
{
    const std::string strPath = m_Folder.GetPath("pipe");
    ASSERT_EQ(mkfifo(strPath.c_str(), 0600), 0);
    const ReaderPtr pReader = MakeReader(strPath);
    ASSERT_TRUE(pReader->Open()) << "nobody writes yet";
    EXPECT_TRUE(pReader->GetIsStream());
    EXPECT_EQ(pReader->GetLength(), -1);
    std::thread writer(
        [&]
        {
            const ReaderPtr pWriter = MakeReader(strPath);
            ASSERT_TRUE(pWriter->Create());
            EXPECT_TRUE(pWriter->GetIsStream());
            for (const char* pText : {"01", "23", "4567", "89"})
            {
                EXPECT_EQ(pWriter->Write(pText, static_cast<int>(strlen(pText))), static_cast<int>(strlen(pText)));
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            }
        });
    EXPECT_EQ(ReadText(*pReader, 3), "012") << "a read is filled";
    EXPECT_EQ(pReader->Seek(5, 0), 5) << "forward by reading";
    EXPECT_EQ(pReader->Seek(0, 0), -1);
    EXPECT_EQ(pReader->Seek(0, 2), -1);
    EXPECT_EQ(pReader->GetPosition(), 5);
    EXPECT_EQ(ReadText(*pReader, 100), "56789") << "the end is when the writer goes";
    EXPECT_EQ(pReader->Seek(1, 1), -1);
    writer.join();
}

TEST_F(FileReaderTest, WriterOutlivesItsReader)
{
    const std::string strPath = m_Folder.GetPath("pipe");
    ASSERT_EQ(mkfifo(strPath.c_str(), 0600), 0);
    const ReaderPtr pReader = MakeReader(strPath);
    ASSERT_TRUE(pReader->Open());
    const ReaderPtr pWriter = MakeReader(strPath);
    ASSERT_TRUE(pWriter->Create());
    pReader->Close();
    EXPECT_EQ(pWriter->Write("x", 1), 0) << "no signal ends the program";
    EXPECT_NE(GetInfo(*pWriter, L"Error"), "");
}

TEST_F(FileReaderTest, CloseEndsAReadThatWaits)
{
    const std::string strPath = m_Folder.GetPath("pipe");
    ASSERT_EQ(mkfifo(strPath.c_str(), 0600), 0);
    const ReaderPtr pReader = MakeReader(strPath);
    for (int i = 0; i < 3; ++i)
    {
        ASSERT_TRUE(pReader->Open());
        CloseSoon closer(*pReader);
        char c;
        EXPECT_EQ(pReader->Read(&c, 1), 0);
        EXPECT_ENDED_BY_CLOSE(closer);
        EXPECT_FALSE(pReader->GetIsOpen());
    }
}

TEST_F(FileReaderTest, CloseEndsAWriteThatWaits)
{
    const std::string strPath = m_Folder.GetPath("pipe");
    ASSERT_EQ(mkfifo(strPath.c_str(), 0600), 0);
    const ReaderPtr pReader = MakeReader(strPath);
    ASSERT_TRUE(pReader->Open());
    const ReaderPtr pWriter = MakeReader(strPath);
    ASSERT_TRUE(pWriter->Create());
    const std::string strMuch(4 * 1024 * 1024, 'x');
    CloseSoon closer(*pWriter);
    EXPECT_LT(pWriter->Write(strMuch.data(), static_cast<int>(strMuch.size())), static_cast<int>(strMuch.size()));
    EXPECT_ENDED_BY_CLOSE(closer);
}

TEST_F(FileReaderTest, CloseEndsACreateThatWaitsForAReader)
{
    const std::string strPath = m_Folder.GetPath("pipe");
    ASSERT_EQ(mkfifo(strPath.c_str(), 0600), 0);
    const ReaderPtr pWriter = MakeReader(strPath);
    CloseSoon closer(*pWriter);
    EXPECT_FALSE(pWriter->Create());
    EXPECT_ENDED_BY_CLOSE(closer);
}

TEST_F(FileReaderTest, ClosesOfManyMomentsAreSafe)
{
    const ReaderPtr pReader = MakeReader(Write(std::string(100000, 'x')));
    for (int i = 0; i < 200; ++i)
    {
        ASSERT_TRUE(pReader->Open());
        std::thread closer([&] { pReader->Close(); });
        std::string str;
        while (pReader->GetIsOpen() && !(str = ReadText(*pReader, 100)).empty())
            EXPECT_EQ(str.find_first_not_of('x'), std::string::npos);
        (void)pReader->GetLength();
        (void)pReader->Seek(0, 0);
        closer.join();
        EXPECT_FALSE(pReader->GetIsOpen());
    }
}

TEST_F(FileReaderTest, DescriptorsAreGivenBack)
{
    const std::string strPath = Write("x");
    const int nBefore = dup(0);
    close(nBefore);
    for (int i = 0; i < 50; ++i)
    {
        const ReaderPtr pReader = MakeReader(strPath);
        (void)pReader->Open();
        (void)pReader->Open();
        (void)pReader->Create();
    }
    const int nAfter = dup(0);
    close(nAfter);
    EXPECT_EQ(nAfter, nBefore);
}
