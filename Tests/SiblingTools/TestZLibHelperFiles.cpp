// Files of the programs that people pack with, unpacked by the helper through the built tools library: whole ones,
// several in one, and damaged ones.

#include "LyBuffer.h"
#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include "TempFolder.h"
#include "ZLibHelper.h"
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <string>

namespace
{
// Each reads a file named first and writes to standard output.
const char* const s_aryPackers[] = {
    "gzip -c -1",
    "gzip -c -9",
    "gzip -c -n",             // without the name in the header
    "gzip -c --rsyncable",    // with points at which the packing begins anew
    "pigz -c -p 4 -b 128",    // blocks packed side by side
    "pigz -c -p 4 -b 128 -i", // and each for itself
    "pigz -c -0",
    "pigz -c -9 -m",
    "zopfli -c --i1",
};

std::string MakeNoise(size_t nBytes)
{
    std::string str(nBytes, 0);
    unsigned int nState = 7;
    for (char& c : str)
    {
        nState = nState * 1664525 + 1013904223;
        c = static_cast<char>(nState >> 24);
    }
    return str;
}

std::string MakeText(size_t nBytes)
{
    std::string str;
    for (int nLine = 0; str.size() < nBytes; ++nLine)
        str += std::to_string(nLine * 7919 % 10007) + " bottles of beer on the wall\n";
    str.resize(nBytes);
    return str;
}

std::string Read(const std::string& strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class ZLibHelperFiles : public testing::Test
{
protected:
    ZLibHelperFiles()
    {
        setenv("XDG_CONFIG_HOME", m_Folder.GetPath().c_str(), 1);
        g_LySharedToolsHelper.UnloadLyToolsLib();
        GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/"));
        m_pHelper = std::make_unique<CZLibHelper>(); // loads the library where the process looks for it
    }
    ~ZLibHelperFiles() override
    {
        m_pHelper.reset(); // what it holds is the library's
        g_LySharedToolsHelper.UnloadLySharedLibs(false);
    }

    LyString Name(const char* pName) const { return LyString().FromANSI(m_Folder.GetPath(pName).c_str()); }

    std::string Pack(const std::string& strPacker, const std::string& strContent) const
    {
        const std::string strInput = m_Folder.Write("content.bin", strContent);
        const std::string strCommand = strPacker + " '" + strInput + "' >'" + m_Folder.GetPath("packed") + "'";
        EXPECT_EQ(0, std::system(strCommand.c_str())) << strCommand;
        return Read(m_Folder.GetPath("packed"));
    }
    // What comes of a packed file. The helper says bExpected; of damage it tells by its member.
    std::string Unpack(const std::string& strPacked, bool bExpected = true)
    {
        (void)m_Folder.Write("a.gz", strPacked);
        LyBuffer buffer(10);
        EXPECT_EQ(bExpected, m_pHelper->DecompressFileToBuffer(Name("a.gz"), buffer, nullptr));
        return {reinterpret_cast<const char*>(buffer.GetData()), static_cast<size_t>(buffer.GetSize())};
    }

    TempFolder m_Folder;
    std::unique_ptr<CZLibHelper> m_pHelper;
};

constexpr size_t TRAILER_BYTES = 8; // RFC 1952, 2.2: the check sum and the length
} // namespace

TEST_F(ZLibHelperFiles, EveryPackersFilesAreUnpacked)
{
    const std::string aryContents[] = {"", "x", MakeText(100'000), MakeNoise(60'000), std::string(1'000'000, 'z')};
    for (const char* pPacker : s_aryPackers)
        for (const std::string& strContent : aryContents)
        {
            const std::string strPacked = Pack(pPacker, strContent);
            ASSERT_GT(strPacked.size(), TRAILER_BYTES) << pPacker;
            EXPECT_TRUE(Unpack(strPacked) == strContent) << pPacker << ", " << strContent.size() << " bytes";
            EXPECT_FALSE(m_pHelper->m_bDamaged) << pPacker;
        }
}

TEST_F(ZLibHelperFiles, EveryPackersFilesAreUnpackedInPlace)
{
    const std::string strText = MakeText(50'000);
    for (const char* pPacker : s_aryPackers)
    {
        (void)m_Folder.Write("a.gz", Pack(pPacker, strText));
        EXPECT_TRUE(m_pHelper->DecompressFile(Name("a.gz"), LyString(), nullptr)) << pPacker;
        EXPECT_TRUE(Read(m_Folder.GetPath("a.gz")) == strText) << pPacker;
        EXPECT_FALSE(std::filesystem::exists(m_Folder.GetPath("a.gz.tmp")));
    }
}

TEST_F(ZLibHelperFiles, MembersOfDifferentPackersFollowEachOther)
{
    std::string strPacked;
    std::string strContent;
    for (const char* pPacker : s_aryPackers)
        for (const std::string& strMember : {MakeText(20'000), std::string(), MakeNoise(5'000), std::string("x")})
        {
            strPacked += Pack(pPacker, strMember);
            strContent += strMember;
        }
    EXPECT_TRUE(Unpack(strPacked) == strContent);
}

TEST_F(ZLibHelperFiles, AFileCutShortGivesWhatCame)
{
    const std::string strText = MakeText(20'000);
    for (const char* pPacker : s_aryPackers)
    {
        const std::string strPacked = Pack(pPacker, strText);
        size_t nLast = 0;
        for (size_t nKept = 3; nKept < strPacked.size(); nKept += 1 + strPacked.size() / 97)
        {
            const std::string strGot = Unpack(strPacked.substr(0, nKept));
            EXPECT_TRUE(strText.starts_with(strGot)) << pPacker << " cut to " << nKept;
            EXPECT_TRUE(m_pHelper->m_bDamaged) << pPacker << " cut to " << nKept;
            EXPECT_GE(strGot.size(), nLast) << "more of the file is not less of the content";
            nLast = strGot.size();
        }
        EXPECT_GT(nLast, strText.size() / 2) << pPacker;
        EXPECT_TRUE(Unpack(strPacked.substr(0, strPacked.size() - TRAILER_BYTES)) == strText) << pPacker;
    }
}

TEST_F(ZLibHelperFiles, AFileCutInItsFirstBytesIsNone)
{
    const std::string strPacked = Pack("gzip -c", "content");
    for (size_t nKept = 0; nKept < 3; ++nKept)
        EXPECT_EQ("", Unpack(strPacked.substr(0, nKept), false)) << nKept;
    EXPECT_EQ("", Unpack(strPacked.substr(0, 3)));
}

// Deliberate: a wrong check sum is a fault behind the content, and ends it as the end of the file would.
TEST_F(ZLibHelperFiles, AWrongCheckSumOrLengthKeepsTheContent)
{
    const std::string strText = MakeText(20'000);
    for (const char* pPacker : s_aryPackers)
    {
        const std::string strPacked = Pack(pPacker, strText);
        for (size_t nByte = 1; nByte <= TRAILER_BYTES; ++nByte)
        {
            std::string strWrong = strPacked;
            char& c = strWrong[strWrong.size() - nByte];
            c = static_cast<char>(c ^ 0x40);
            EXPECT_TRUE(Unpack(strWrong) == strText) << pPacker << ", byte " << nByte << " from the end";
            EXPECT_TRUE(m_pHelper->m_bDamaged) << pPacker << ", byte " << nByte << " from the end";
        }
    }
}

TEST_F(ZLibHelperFiles, BehindAMemberWithAWrongCheckSumNothingMoreComes)
{
    const std::string strText = MakeText(100'000);
    std::string strFirst = Pack("pigz -c", strText);
    const std::string strSecond = Pack("zopfli -c --i1", "second");
    EXPECT_TRUE(Unpack(strFirst + strSecond) == strText + "second");
    char& c = strFirst[strFirst.size() - TRAILER_BYTES];
    c = static_cast<char>(c ^ 1);
    EXPECT_TRUE(Unpack(strFirst + strSecond) == strText);
}

TEST_F(ZLibHelperFiles, DamageAnywhereNeverGivesMoreThanItCould)
{
    const std::string strText = MakeText(60'000);
    const std::string strPacked = Pack("gzip -c -9", strText);
    constexpr size_t MOST_PER_BYTE = 1032; // of deflate
    for (size_t nByte = 3; nByte < strPacked.size(); nByte += 1 + strPacked.size() / 211)
    {
        std::string strDamaged = strPacked;
        strDamaged[nByte] = static_cast<char>(strDamaged[nByte] ^ 0x10);
        EXPECT_LE(Unpack(strDamaged).size(), strPacked.size() * MOST_PER_BYTE) << nByte;
    }
}

TEST_F(ZLibHelperFiles, WhatIsNotPackedByGzipStaysAsItIs)
{
    const std::string strZlib("\x78\x9C\x4B\x04\x00\x00\x62\x00\x62", 9); // RFC 1950, of "a"
    const std::string strLzma("\x5D\x00\x00\x80\x00", 5);
    for (const std::string& strOther : {std::string("plain text"), strZlib, strLzma, std::string("BZh91AY&SY")})
    {
        EXPECT_EQ("", Unpack(strOther, false));
        EXPECT_FALSE(m_pHelper->DecompressFile(Name("a.gz"), LyString(), nullptr));
        EXPECT_EQ(strOther, Read(m_Folder.GetPath("a.gz")));
        EXPECT_FALSE(std::filesystem::exists(m_Folder.GetPath("a.gz.tmp")));
    }
}
