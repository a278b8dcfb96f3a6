// CZLibHelper over a service that the test scripts.

#include "LyBuffer.h"
#include "LyTempFolder.h"
#include "StandInTools.h"
#include "ZLibHelper.h"
#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

namespace
{
struct ZLIB_SCRIPT
{
    bool bOpens = true;
    std::string strContent;
    int nEnd = 0;       // what Read says at the end
    int nClaimMore = 0; // bytes that Read claims beyond the room there is
    std::function<void()> onRead;

    std::vector<int> aryReads; // what was asked for
    LyString strPath;
    std::string strEvents;
};

class ScriptedFile final : public IZLibFile
{
public:
    explicit ScriptedFile(ZLIB_SCRIPT& script) : m_Script(script) {}
    ~ScriptedFile() override { m_Script.strEvents += "~file "; }
    int Read(void* pBuffer, int nBytes) override
    {
        m_Script.aryReads.push_back(nBytes);
        if (m_Script.onRead)
            m_Script.onRead();
        const size_t nGot = std::min(static_cast<size_t>(nBytes), m_Script.strContent.size() - m_nPosition);
        std::memcpy(pBuffer, m_Script.strContent.data() + m_nPosition, nGot);
        m_nPosition += nGot;
        return nGot > 0 ? static_cast<int>(nGot) + m_Script.nClaimMore : m_Script.nEnd;
    }

private:
    ZLIB_SCRIPT& m_Script;
    size_t m_nPosition = 0;
};

class ScriptedCompressor final : public IZLibBufferCompressor
{
public:
    explicit ScriptedCompressor(ZLIB_SCRIPT& script) : m_Script(script) {}
    ~ScriptedCompressor() override { m_Script.strEvents += "~compressor "; }
    int Compress(const void*, int, void*, int) override { return -1; }

private:
    ZLIB_SCRIPT& m_Script;
};

class ScriptedDecompressor final : public IZLibBufferDecompressor
{
public:
    explicit ScriptedDecompressor(ZLIB_SCRIPT& script) : m_Script(script) {}
    ~ScriptedDecompressor() override { m_Script.strEvents += "~decompressor "; }
    int Decompress(const void*, int, void*, int) override { return -1; }

private:
    ZLIB_SCRIPT& m_Script;
};

class ScriptedZLib final : public IZLib
{
public:
    explicit ScriptedZLib(ZLIB_SCRIPT& script) : m_Script(script) {}
    ~ScriptedZLib() override { m_Script.strEvents += "~zlib "; }
    IZLibBufferCompressor* CreateBufferCompressor(int nLevel, int nFormat) override
    {
        m_Script.strEvents += "compressor " + std::to_string(nLevel) + " " + std::to_string(nFormat) + " ";
        return new ScriptedCompressor(m_Script);
    }
    IZLibBufferDecompressor* CreateBufferDecompressor() override
    {
        m_Script.strEvents += "decompressor ";
        return new ScriptedDecompressor(m_Script);
    }
    IZLibFile* OpenFile(const wchar_t* pPath) override
    {
        m_Script.strPath = pPath;
        return m_Script.bOpens ? new ScriptedFile(m_Script) : nullptr;
    }

private:
    ZLIB_SCRIPT& m_Script;
};

class ZLibTools final : public StandInTools
{
public:
    IZLib* CreateZLib() override { return m_bThere ? new ScriptedZLib(m_Script) : nullptr; }

    ZLIB_SCRIPT m_Script;
    bool m_bThere = true;
};

std::string Pattern(int nBytes)
{
    std::string str(static_cast<size_t>(nBytes), 0);
    for (size_t n = 0; n < str.size(); ++n)
        str[n] = static_cast<char>(n * 13 + n / 255);
    return str;
}

class ZLibHelper : public testing::Test
{
protected:
    std::string Read(const char* pName) const
    {
        std::ifstream file(m_Folder.GetPath(pName), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    bool Exists(const char* pName) const { return std::filesystem::exists(m_Folder.GetPath(pName)); }

    LyTempFolder m_Folder;
    ZLibTools m_Tools;
    ZLIB_SCRIPT& m_Script = m_Tools.m_Script;
};
} // namespace

TEST_F(ZLibHelper, HoldsTheThreeObjectsOfTheService)
{
    {
        CZLibHelper helper;
        EXPECT_EQ(m_Script.strEvents, "compressor -1 1 decompressor ");
        EXPECT_NE(helper.m_pZLib, nullptr);
        EXPECT_NE(helper.m_pCompressor, nullptr);
        EXPECT_NE(helper.m_pDecompressor, nullptr);
        EXPECT_EQ(static_cast<void*>(&helper.m_pZLib), static_cast<void*>(&helper));
        EXPECT_LT(static_cast<void*>(&helper.m_pZLib), static_cast<void*>(&helper.m_pCompressor));
        EXPECT_LT(static_cast<void*>(&helper.m_pCompressor), static_cast<void*>(&helper.m_pDecompressor));
        m_Script.strEvents.clear();
    }
    EXPECT_EQ(m_Script.strEvents, "~decompressor ~compressor ~zlib ");
}

TEST_F(ZLibHelper, WithoutTheServiceEverythingIsFalse)
{
    m_Tools.m_bThere = false;
    (void)m_Folder.Write("a", "packed");
    CZLibHelper helper;
    EXPECT_EQ(helper.m_pZLib, nullptr);
    EXPECT_EQ(helper.m_pCompressor, nullptr);
    EXPECT_EQ(helper.m_pDecompressor, nullptr);
    LyBuffer buffer(10);
    EXPECT_FALSE(helper.DecompressFile(m_Folder.GetName(L"a"), LyString(), nullptr));
    EXPECT_FALSE(helper.DecompressFileToBuffer(m_Folder.GetName(L"a"), buffer, nullptr));
    EXPECT_EQ(buffer.GetAllocated(), 0);
    EXPECT_EQ(Read("a"), "packed");
}

// ---- To a file

TEST_F(ZLibHelper, UnpacksIntoADestination)
{
    m_Script.strContent = Pattern(40'000);
    (void)m_Folder.Write("a.gz", "packed");
    EXPECT_TRUE(CZLibHelper().DecompressFile(m_Folder.GetName(L"a.gz"), m_Folder.GetName(L"a"), nullptr));
    EXPECT_EQ(m_Script.strPath, m_Folder.GetName(L"a.gz"));
    EXPECT_EQ(Read("a"), m_Script.strContent);
    EXPECT_EQ(Read("a.gz"), "packed");
    EXPECT_FALSE(Exists("a.tmp"));
    EXPECT_EQ(m_Script.aryReads, (std::vector<int>{16384, 16384, 16384, 16384}));
}

TEST_F(ZLibHelper, EmptyDestinationIsTheSource)
{
    m_Script.strContent = "unpacked";
    (void)m_Folder.Write("a.gz", "packed");
    bool bCancel = false;
    EXPECT_TRUE(CZLibHelper().DecompressFile(m_Folder.GetName(L"a.gz"), LyString(), &bCancel));
    EXPECT_EQ(Read("a.gz"), "unpacked");
    EXPECT_FALSE(Exists("a.gz.tmp"));
    EXPECT_FALSE(Exists("a (1).gz")) << "no backup either";
}

TEST_F(ZLibHelper, EmptyContentMakesAnEmptyFile)
{
    EXPECT_TRUE(CZLibHelper().DecompressFile(m_Folder.GetName(L"a.gz"), m_Folder.GetName(L"a"), nullptr));
    EXPECT_TRUE(Exists("a"));
    EXPECT_EQ(Read("a"), "");
}

TEST_F(ZLibHelper, SourceThatDoesNotOpenLeavesEverything)
{
    m_Script.bOpens = false;
    (void)m_Folder.Write("a", "old");
    EXPECT_FALSE(CZLibHelper().DecompressFile(m_Folder.GetName(L"a.gz"), m_Folder.GetName(L"a"), nullptr));
    EXPECT_EQ(Read("a"), "old");
    EXPECT_FALSE(Exists("a.tmp"));
}

TEST_F(ZLibHelper, DestinationThatCannotBeMadeIsFalse)
{
    m_Script.strContent = "unpacked";
    EXPECT_FALSE(CZLibHelper().DecompressFile(m_Folder.GetName(L"a.gz"), m_Folder.GetName(L"no/such/a"), nullptr));
    EXPECT_TRUE(m_Script.aryReads.empty());
}

TEST_F(ZLibHelper, CancelLeavesTheDestination)
{
    m_Script.strContent = Pattern(100'000);
    (void)m_Folder.Write("a", "old");
    volatile bool bCancel = false;
    m_Script.onRead = [&] { bCancel = m_Script.aryReads.size() == 2; };
    EXPECT_FALSE(CZLibHelper().DecompressFile(m_Folder.GetName(L"a.gz"), m_Folder.GetName(L"a"), &bCancel));
    EXPECT_EQ(m_Script.aryReads.size(), 2u) << "it stops behind the chunk";
    EXPECT_EQ(Read("a"), "old");
    EXPECT_FALSE(Exists("a.tmp"));
}

TEST_F(ZLibHelper, FaultInTheDataEndsItAsTheEndDoesAndIsRemembered)
{
    CZLibHelper helper;
    EXPECT_FALSE(helper.m_bDamaged);
    m_Script.strContent = "what came so far";
    m_Script.nEnd = -1;
    EXPECT_TRUE(helper.DecompressFile(m_Folder.GetName(L"a.gz"), m_Folder.GetName(L"a"), nullptr));
    EXPECT_EQ(Read("a"), "what came so far");
    EXPECT_TRUE(helper.m_bDamaged);
    LyBuffer buffer;
    EXPECT_TRUE(helper.DecompressFileToBuffer(m_Folder.GetName(L"a.gz"), buffer, nullptr));
    EXPECT_EQ(buffer.GetSize(), 16);
    EXPECT_TRUE(helper.m_bDamaged);
    m_Script.nEnd = 0;
    EXPECT_TRUE(helper.DecompressFileToBuffer(m_Folder.GetName(L"a.gz"), buffer, nullptr));
    EXPECT_FALSE(helper.m_bDamaged) << "each operation tells of itself";
    m_Script.nEnd = -1;
    EXPECT_TRUE(helper.DecompressFileToBuffer(m_Folder.GetName(L"a.gz"), buffer, nullptr));
    m_Script.bOpens = false;
    EXPECT_FALSE(helper.DecompressFile(m_Folder.GetName(L"a.gz"), m_Folder.GetName(L"a"), nullptr));
    EXPECT_FALSE(helper.m_bDamaged) << "nothing was unpacked";
}

TEST_F(ZLibHelper, ReplacementThatFailsLeavesNoTemporaryFile)
{
    m_Script.strContent = "unpacked";
    std::filesystem::create_directories(m_Folder.GetPath("a"));
    std::filesystem::create_directories(m_Folder.GetPath("a/a.tmp")); // in the way of a move into the folder
    EXPECT_FALSE(CZLibHelper().DecompressFile(m_Folder.GetName(L"a.gz"), m_Folder.GetName(L"a"), nullptr));
    EXPECT_FALSE(Exists("a.tmp"));
}

// ---- To a buffer

TEST_F(ZLibHelper, UnpacksIntoABufferInLargeSteps)
{
    m_Script.strContent = Pattern(20'000);
    LyBuffer buffer(10);
    EXPECT_TRUE(CZLibHelper().DecompressFileToBuffer(m_Folder.GetName(L"a.gz"), buffer, nullptr));
    ASSERT_EQ(buffer.GetSize(), 20'000);
    EXPECT_EQ(std::memcmp(buffer.GetData(), m_Script.strContent.data(), 20'000), 0);
    EXPECT_EQ(buffer.GetAllocated(), 262144);
    EXPECT_EQ(m_Script.aryReads, (std::vector<int>{8192, 8192, 8192, 8192}));
    EXPECT_TRUE(m_Script.strEvents.find("~file") != std::string::npos);
}

TEST_F(ZLibHelper, EmptyContentIsAnEmptyBufferAndTrue)
{
    LyBuffer buffer(10);
    EXPECT_TRUE(CZLibHelper().DecompressFileToBuffer(m_Folder.GetName(L"a.gz"), buffer, nullptr));
    EXPECT_EQ(buffer.GetAllocated(), 0);
}

TEST_F(ZLibHelper, CancelledRunIsAnEmptyBufferAndTrue)
{
    m_Script.strContent = Pattern(100'000);
    volatile bool bCancel = true;
    LyBuffer buffer;
    EXPECT_TRUE(CZLibHelper().DecompressFileToBuffer(m_Folder.GetName(L"a.gz"), buffer, &bCancel));
    EXPECT_EQ(m_Script.aryReads.size(), 1u);
    EXPECT_EQ(buffer.GetAllocated(), 0);
}

TEST_F(ZLibHelper, SourceThatDoesNotOpenFreesTheBuffer)
{
    m_Script.bOpens = false;
    LyBuffer buffer(10);
    EXPECT_FALSE(CZLibHelper().DecompressFileToBuffer(m_Folder.GetName(L"a.gz"), buffer, nullptr));
    EXPECT_EQ(buffer.GetAllocated(), 0);
}

TEST_F(ZLibHelper, ClaimsBeyondTheRoomAreNotBelieved)
{
    m_Script.strContent = Pattern(8192);
    m_Script.nClaimMore = INT_MAX - 8192;
    LyBuffer buffer;
    EXPECT_TRUE(CZLibHelper().DecompressFileToBuffer(m_Folder.GetName(L"a.gz"), buffer, nullptr));
    EXPECT_EQ(buffer.GetSize(), 8192);
}
