// Conditional loads, and content that comes packed. The zlib service is a fake: its files hold "gz:" and the content,
// or "gx:" and the content up to damage.

#include "FileLoader.h"
#include "IDateTimeHelper.h"
#include "IFileSystemManager.h"
#include "IProductInfo.h"
#include "LyTempFolder.h"
#include "StandInTools.h"
#include "TestReader/TestReader.h"
#include "ZLibHelper.h"
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>

namespace
{
constexpr wchar_t URL[] = L"http://host/a.bin";

std::string Read(const std::string& strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string Text(const LyBuffer& buffer)
{
    return {reinterpret_cast<const char*>(buffer.GetData()), static_cast<size_t>(buffer.GetSize())};
}

class FakeFile final : public IZLibFile
{
public:
    FakeFile(std::string strContent, int nEnd, std::function<void()> onRead)
        : m_strContent(std::move(strContent)), m_nEnd(nEnd), m_OnRead(std::move(onRead))
    {
    }
    int Read(void* pBuffer, int nBytes) override
    {
        if (m_OnRead)
            m_OnRead();
        const size_t nGot = std::min(static_cast<size_t>(nBytes), m_strContent.size() - m_nPosition);
        std::memcpy(pBuffer, m_strContent.data() + m_nPosition, nGot);
        m_nPosition += nGot;
        return nGot > 0 ? static_cast<int>(nGot) : m_nEnd;
    }

private:
    std::string m_strContent;
    int m_nEnd;
    std::function<void()> m_OnRead;
    size_t m_nPosition = 0;
};

class FakeZLib final : public IZLib
{
public:
    explicit FakeZLib(std::function<void()> onRead) : m_OnRead(std::move(onRead)) {}
    IZLibBufferCompressor* CreateBufferCompressor(int, int) override { return nullptr; }
    IZLibBufferDecompressor* CreateBufferDecompressor() override { return nullptr; }
    IZLibFile* OpenFile(const wchar_t* pPath) override
    {
        const std::string strContent = Read(LyStringUTF8(LyString(pPath)).Get());
        const bool bDamaged = strContent.starts_with("gx:");
        if (!bDamaged && !strContent.starts_with("gz:"))
            return nullptr;
        return new FakeFile(strContent.substr(3), bDamaged ? -1 : 0, m_OnRead);
    }

private:
    std::function<void()> m_OnRead;
};

// Temporary files lie in a folder of the test; dates are numbers.
class UnpackTools final : public StandInTools, public IFileSystemManager, public IProductInfo, public IDateTimeHelper
{
public:
    explicit UnpackTools(const LyTempFolder& folder) : m_strFolder(folder.GetName(L"data/")) {}

    IFileSystemManager* GetFileSystemManager(bool) override { return m_bManager ? this : nullptr; }
    IProductInfo* GetProductInfo(bool) override { return this; }
    IDateTimeHelper* GetDateTimeHelper(bool) override { return this; }
    IZLib* CreateZLib() override { return m_bZLib ? new FakeZLib(m_OnRead) : nullptr; }

    bool GetFileExists(const wchar_t* pName, int) override
    {
        return std::filesystem::is_regular_file(LyStringUTF8(LyString(pName)).Get());
    }
    bool GetHasProduct() override { return true; }
    bool Load(const wchar_t*, bool, bool, const wchar_t*, int) override { return true; }
    LyXString GetAppdataDirectory() override { return {LyCom::SysAllocString(m_strFolder)}; }
    double Parse(const wchar_t* pText, bool) override { return LyString::GetDouble(pText, nullptr, true, 100, false); }

    LyString m_strFolder;
    bool m_bManager = true;
    bool m_bZLib = true;
    std::function<void()> m_OnRead;
};

class FileLoaderUnpack : public testing::Test
{
protected:
    bool Load() { return m_Loader.LoadBuffer(LyFilename(URL), m_Buffer); }
    bool GetTempIsEmpty() const
    {
        const std::string strTemp = m_Folder.GetPath("data/Temp");
        return !std::filesystem::exists(strTemp) || std::filesystem::is_empty(strTemp);
    }

    TestReaderLibrary m_Library;
    READER_SCRIPT& m_Script = m_Library.m_Script;
    LyTempFolder m_Folder;
    UnpackTools m_Tools{m_Folder};
    CFileLoader m_Loader;
    LyBuffer m_Buffer;
    OutputReader m_Output;
};
} // namespace

// ---- Packed content

TEST_F(FileLoaderUnpack, EncodedContentIsUnpackedInTheBuffer)
{
    m_Script.strContent = "gz:" + std::string(300'000, 'u');
    for (const wchar_t* pEncoding : {L"gzip", L"x-gzip", L"deflate", L"anything"})
    {
        m_Script.info[L"ContentEncoding"] = pEncoding;
        EXPECT_TRUE(Load());
        EXPECT_EQ(Text(m_Buffer), std::string(300'000, 'u'));
        EXPECT_TRUE(GetTempIsEmpty());
    }
    EXPECT_TRUE(std::filesystem::exists(m_Folder.GetPath("data/Temp"))) << "there was a temporary file";
}

TEST_F(FileLoaderUnpack, NoEncodingIsLeftAlone)
{
    m_Script.strContent = "gz:abc";
    for (const wchar_t* pEncoding : {L"", L"\u0001", L"\u0001gzip"})
    {
        m_Script.info[L"ContentEncoding"] = pEncoding;
        EXPECT_TRUE(Load());
        EXPECT_EQ(Text(m_Buffer), "gz:abc");
    }
}

TEST_F(FileLoaderUnpack, ContentThatIsNotPackedFails)
{
    m_Script.info[L"ContentEncoding"] = L"gzip";
    m_Script.strContent = "plain";
    EXPECT_FALSE(Load());
    EXPECT_EQ(m_Buffer.GetSize(), 0);
    m_Script.strContent = "";
    EXPECT_FALSE(Load()) << "nothing is no gzip file";
    EXPECT_TRUE(GetTempIsEmpty());
}

// Deliberate: what came ahead of the damage counts, as the helper has it. The loader says so beside it.
TEST_F(FileLoaderUnpack, DamageIsTold)
{
    m_Script.info[L"ContentEncoding"] = L"gzip";
    m_Script.strContent = "gx:what came so far";
    EXPECT_TRUE(Load());
    EXPECT_EQ(Text(m_Buffer), "what came so far");
    EXPECT_GE(m_Loader.m_strError.Find(URL), 0);
    EXPECT_GE(m_Loader.m_strError.Find(L"damaged"), 0);
    m_Script.strContent = "gz:whole";
    EXPECT_TRUE(Load());
    EXPECT_STREQ(m_Loader.m_strError, L"") << "that was another load";

    const std::string strTarget = m_Folder.Write("target.bin", "gx:in the file"); // as the output reader wrote it
    bool bOpened = true;
    EXPECT_TRUE(m_Loader.LoadInternal(LyFilename(URL), nullptr, &m_Output, LyFilename(m_Folder.GetName(L"target.bin")),
                                      bOpened, LyDateTime()));
    EXPECT_EQ(Read(strTarget), "in the file");
    EXPECT_GE(m_Loader.m_strError.Find(L"damaged"), 0);
}

TEST_F(FileLoaderUnpack, MissingServicesFail)
{
    m_Script.info[L"ContentEncoding"] = L"gzip";
    m_Script.strContent = "gz:abc";
    m_Tools.m_bZLib = false;
    EXPECT_FALSE(Load());
    EXPECT_EQ(m_Buffer.GetSize(), 0);
    EXPECT_TRUE(GetTempIsEmpty());
    m_Tools.m_bZLib = true;
    m_Tools.m_bManager = false; // no folder for the temporary file
    EXPECT_FALSE(Load());
    EXPECT_EQ(m_Buffer.GetSize(), 0);
}

TEST_F(FileLoaderUnpack, CancelWhileUnpackingFails)
{
    m_Script.info[L"ContentEncoding"] = L"gzip";
    m_Script.strContent = "gz:" + std::string(300'000, 'u');
    m_Tools.m_OnRead = [this] { m_Loader.Cancel(true); };
    EXPECT_FALSE(Load());
    EXPECT_EQ(m_Buffer.GetSize(), 0);
    EXPECT_TRUE(GetTempIsEmpty());
}

TEST_F(FileLoaderUnpack, TargetFileIsUnpackedInPlace)
{
    m_Script.info[L"ContentEncoding"] = L"gzip";
    m_Script.strContent = "gz:abc";
    const std::string strTarget = m_Folder.Write("target.bin", "gz:unpacked"); // as the output reader wrote it
    bool bOpened = true;
    EXPECT_TRUE(m_Loader.LoadInternal(LyFilename(URL), nullptr, &m_Output, LyFilename(m_Folder.GetName(L"target.bin")),
                                      bOpened, LyDateTime()));
    EXPECT_EQ(m_Output.m_strWritten, "gz:abc");
    EXPECT_EQ(Read(strTarget), "unpacked");
    EXPECT_FALSE(std::filesystem::exists(strTarget + ".tmp"));
    EXPECT_FALSE(m_Loader.LoadInternal(LyFilename(URL), nullptr, &m_Output, LyFilename(), bOpened, LyDateTime()))
        << "nothing to unpack";
}

// ---- Conditional loads

struct DATE_CASE
{
    const char* pTest;
    double fDate;
    const wchar_t* pHeaders;
    long long nTargetBytes; // -1: there is no file
    bool bCurrent;
};

const DATE_CASE s_aryDateCases[] = {
    // The server has 10 bytes.
    {"SameDate", 40000.5, L"Last-Modified: 40000.5\r\n", 10, true},
    {"NewerCopy", 40001.0, L"Last-Modified: 40000.5\r\n", 10, true},
    {"OlderCopy", 40000.4, L"Last-Modified: 40000.5\r\n", 10, false},
    {"SameSecondWithinRounding", 40000.5 - 1e-11, L"Last-Modified: 40000.5\r\n", 10, true},
    {"MidnightAgainstItsMark", 40000.0, L"Last-Modified: 40000.0000023148148\r\n", 10, true},
    {"OlderByASecond", 40000.5 - 1 / 86400.0, L"Last-Modified: 40000.5\r\n", 10, false},
    {"OtherLength", 40001.0, L"Last-Modified: 40000.5\r\n", 9, false},
    {"NoCopy", 40001.0, L"Last-Modified: 40000.5\r\n", -1, false},
    {"NoDateOfTheCopy", 0.0, L"Last-Modified: 40000.5\r\n", 10, false},
    {"NoHeader", 40001.0, L"Server: x\r\n", 10, false},
    {"HeaderIsNoDate", 40001.0, L"Last-Modified: yesterday\r\n", 10, false},
};

TEST_F(FileLoaderUnpack, CurrentCopyIsNotLoadedAgain)
{
    m_Script.strContent = "0123456789";
    for (const DATE_CASE& row : s_aryDateCases)
    {
        const std::string strTarget = m_Folder.Write("target.bin", "copy of ten bytes");
        if (row.nTargetBytes >= 0)
            std::filesystem::resize_file(strTarget, static_cast<size_t>(row.nTargetBytes));
        else
            std::filesystem::remove(strTarget);
        m_Script.info = {{L"AllHeaders", row.pHeaders}, {L"StatusCode", L"200"}};
        m_Library.m_Record.aryReads.clear();
        bool bOpened = true;
        EXPECT_EQ(m_Loader.LoadInternal(LyFilename(URL), &m_Buffer, &m_Output,
                                        LyFilename(m_Folder.GetName(L"target.bin")), bOpened, row.fDate),
                  !row.bCurrent)
            << row.pTest;
        EXPECT_STREQ(m_Loader.m_strStatusCode, row.bCurrent ? L"304" : L"200") << row.pTest;
        EXPECT_EQ(bOpened, !row.bCurrent) << row.pTest;
        EXPECT_EQ(m_Library.m_Record.aryReads.empty(), row.bCurrent) << row.pTest;
        EXPECT_EQ(m_Buffer.GetSize(), row.bCurrent ? 0 : 10) << row.pTest;
    }
}

TEST_F(FileLoaderUnpack, CopyOfASourceOfUnknownLengthIsNeverCurrent)
{
    m_Script.strContent = "0123456789";
    m_Script.nLength = -1;
    m_Script.info[L"AllHeaders"] = L"Last-Modified: 40000.5\r\n";
    bool bOpened = false;
    EXPECT_TRUE(m_Loader.LoadInternal(LyFilename(URL), &m_Buffer, nullptr, LyFilename(m_Folder.GetName(L"missing")),
                                      bOpened, 40001.0));
}
