// WAV files of a rip: what the listener hears is what stands on the disk, and what is not whole is not there.

#include "CDUnits.h"
#include "CRC32.h"
#include "RipFiles.h"
#include "RipOutput.h"
#include "TempFolder.h"
#include "WAVCreator.h"
#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <mutex>
#include <sys/resource.h>
#include <vector>

namespace
{
class Listener final : public IRipFileListener
{
public:
    void OnRipFile(size_t, const RIP_FILE& file, bool bDiskFull) override
    {
        const std::lock_guard lock(m_Mutex);
        m_aryFiles.push_back(file);
        m_bDiskFull |= bDiskFull;
    }

    std::mutex m_Mutex;
    std::vector<RIP_FILE> m_aryFiles;
    bool m_bDiskFull = false;
};

std::vector<unsigned char> MakeAudio(long long nFrames, unsigned int nSeed)
{
    std::vector<unsigned char> aryBytes(static_cast<size_t>(nFrames) * LY_CD_FRAME_BYTES);
    for (unsigned char& nByte : aryBytes)
        nByte = static_cast<unsigned char>((nSeed = nSeed * 1664525U + 1013904223U) >> 24);
    return aryBytes;
}

class RipWAVOutputTest : public ::testing::Test
{
protected:
    RIP_ORDER MakeOrder(const std::string& strName, long long nFrames) const
    {
        RIP_ORDER order;
        order.strPath = m_Folder.GetPath(strName);
        order.file.strName = strName;
        order.file.strEncoder = "wav";
        order.nFrames = nFrames;
        return order;
    }
    void Write(const std::vector<unsigned char>& aryAudio, size_t nBlock)
    {
        m_nCRC32 = GetCRC32(aryAudio.data(), aryAudio.size());
        for (size_t n = 0; n < aryAudio.size(); n += nBlock)
            m_pOutput->Write(aryAudio.data() + n, std::min(nBlock, aryAudio.size() - n));
    }
    size_t CountFiles() const
    {
        const std::filesystem::directory_iterator files(m_Folder.GetPath());
        return static_cast<size_t>(std::distance(begin(files), end(files)));
    }

    TempFolder m_Folder;
    Listener m_Listener;
    uint32_t m_nCRC32 = 0; // of what was written last
    std::unique_ptr<RipOutput> m_pOutput = MakeWAVOutput(m_Listener);
};
} // namespace

TEST_F(RipWAVOutputTest, TheSumIsThatOfTheFile)
{
    const long long aryFrames[] = {0, 1, 588, 262133, 262144, 300000, 1000003};
    for (const long long nFrames : aryFrames)
    {
        const std::string strName = std::to_string(nFrames) + ".wav";
        const std::vector<unsigned char> aryAudio = MakeAudio(nFrames, 7);
        m_pOutput->Begin(MakeOrder(strName, nFrames));
        Write(aryAudio, 27 * LY_CD_SECTOR_BYTES);
        m_pOutput->End(m_nCRC32);
        ASSERT_TRUE(m_pOutput->Wait(60000));
        ASSERT_FALSE(m_Listener.m_aryFiles.empty());
        const RIP_FILE heard = m_Listener.m_aryFiles.back();
        RIP_FILE found;
        found.strEncoder = "wav";
        ASSERT_TRUE(FillInFile(m_Folder.GetPath(strName), found));
        EXPECT_EQ("", heard.strError);
        EXPECT_EQ(strName, heard.strName);
        EXPECT_EQ(8U, heard.strCRC32.size());
        EXPECT_EQ(found.strCRC32, heard.strCRC32);
        EXPECT_EQ("", heard.strSHA256);
        EXPECT_EQ(found.nBytes, heard.nBytes);
        EXPECT_EQ(CWAVCreator::HEADER_BYTES + nFrames * LY_CD_FRAME_BYTES, heard.nBytes);
    }
    EXPECT_EQ(std::size(aryFrames), CountFiles());
}

TEST_F(RipWAVOutputTest, TheHeaderIsRightFromTheStart)
{
    m_pOutput->Begin(MakeOrder("a.wav", 0x10203));
    Write(MakeAudio(588, 1), 100);
    std::string strText;
    ASSERT_TRUE(ReadTextFile(m_Folder.GetPath("a.wav.part"), strText));
    const std::string strWanted("RIFF"
                                "\x30\x08\x04\x00" // 4 * 10203h + 36
                                "WAVEfmt "
                                "\x10\0\0\0\x01\0\x02\0\x44\xAC\0\0\x10\xB1\x02\0\x04\0\x10\0"
                                "data"
                                "\x0C\x08\x04\x00", // 4 * 10203h
                                44);
    EXPECT_EQ(strWanted, strText.substr(0, 44));
}

TEST_F(RipWAVOutputTest, FilesFollowEachOtherWithoutWaiting)
{
    constexpr int FILES = 12; // more than can be in the making at a time
    for (int n = 0; n < FILES; ++n)
    {
        m_pOutput->Begin(MakeOrder(std::to_string(n), 400000));
        Write(MakeAudio(400000, static_cast<unsigned>(n)), 1000000);
        m_pOutput->End(m_nCRC32);
    }
    ASSERT_TRUE(m_pOutput->Wait(60000));
    ASSERT_EQ(static_cast<size_t>(FILES), m_Listener.m_aryFiles.size());
    for (int n = 0; n < FILES; ++n)
    {
        RIP_FILE found;
        found.strEncoder = "wav";
        ASSERT_TRUE(FillInFile(m_Folder.GetPath(std::to_string(n)), found));
        EXPECT_EQ(found.strCRC32, m_Listener.m_aryFiles[static_cast<size_t>(n)].strCRC32);
    }
}

TEST_F(RipWAVOutputTest, AnAbandonedFileIsGoneAndNotToldOf)
{
    m_pOutput->Begin(MakeOrder("a.wav", 3000000));
    Write(MakeAudio(2000000, 1), 1000000);
    EXPECT_EQ(1U, CountFiles());
    m_pOutput->Abandon();
    m_pOutput->Abandon();
    ASSERT_TRUE(m_pOutput->Wait(60000));
    EXPECT_EQ(0U, CountFiles());
    EXPECT_TRUE(m_Listener.m_aryFiles.empty());
    m_pOutput->Begin(MakeOrder("b.wav", 3000000));
    Write(MakeAudio(2000000, 1), 1000000);
    m_pOutput.reset();
    EXPECT_EQ(0U, CountFiles());
    EXPECT_TRUE(m_Listener.m_aryFiles.empty());
}

TEST_F(RipWAVOutputTest, AFileThatIsEndedAheadOfItsEndIsNoFile)
{
    m_pOutput->Begin(MakeOrder("a.wav", 1000));
    Write(MakeAudio(999, 1), 4000);
    m_pOutput->End(m_nCRC32);
    ASSERT_TRUE(m_pOutput->Wait(60000));
    ASSERT_EQ(1U, m_Listener.m_aryFiles.size());
    EXPECT_NE("", m_Listener.m_aryFiles[0].strError);
    EXPECT_EQ(0U, CountFiles());
}

TEST_F(RipWAVOutputTest, APlaceThatTakesNoMoreIsTold)
{
    rlimit old{};
    ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &old));
    (void)std::signal(SIGXFSZ, SIG_IGN);
    const rlimit less{1000000, old.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &less));
    m_pOutput->Begin(MakeOrder("a.wav", 1000000));
    Write(MakeAudio(1000000, 1), 60000);
    m_pOutput->End(m_nCRC32);
    const bool bWaited = m_pOutput->Wait(60000);
    (void)setrlimit(RLIMIT_FSIZE, &old);
    ASSERT_TRUE(bWaited);
    ASSERT_EQ(1U, m_Listener.m_aryFiles.size());
    EXPECT_EQ("a.wav cannot be written (File too large)", m_Listener.m_aryFiles[0].strError);
    EXPECT_EQ("", m_Listener.m_aryFiles[0].strCRC32);
    EXPECT_TRUE(m_Listener.m_bDiskFull);
    EXPECT_EQ(0U, CountFiles());
}

TEST_F(RipWAVOutputTest, AFolderThatIsGoneIsTold)
{
    m_pOutput->Begin(MakeOrder("none/a.wav", 1000));
    Write(MakeAudio(1000, 1), 1000);
    m_pOutput->End(m_nCRC32);
    ASSERT_TRUE(m_pOutput->Wait(60000));
    ASSERT_EQ(1U, m_Listener.m_aryFiles.size());
    EXPECT_EQ("none/a.wav cannot be written (No such file or directory)", m_Listener.m_aryFiles[0].strError);
}
