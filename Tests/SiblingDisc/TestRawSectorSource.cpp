#include "ImageFiles.h"
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace
{
std::string ReadAll(SectorSource& source, long long nOffset, int nBytes)
{
    std::string strBytes(static_cast<size_t>(nBytes), '?');
    int nRead = source.Read(nOffset, reinterpret_cast<unsigned char*>(strBytes.data()), nBytes);
    return strBytes.substr(0, static_cast<size_t>(nRead));
}

TEST(RawSectorSource, GivesTheBytesOfTheFile)
{
    TempFolder folder;
    std::string strError;
    auto pSource = OpenRawSectorSource(folder.Write("a.bin", "0123456789"), false, strError);
    ASSERT_TRUE(pSource) << strError;
    EXPECT_EQ(10, pSource->GetBytes());
    EXPECT_EQ("3456", ReadAll(*pSource, 3, 4));
    EXPECT_EQ("01", ReadAll(*pSource, 0, 2));
}

TEST(RawSectorSource, GivesWhatIsThereAtTheEnd)
{
    TempFolder folder;
    std::string strError;
    auto pSource = OpenRawSectorSource(folder.Write("a.bin", "0123456789"), false, strError);
    ASSERT_TRUE(pSource);
    EXPECT_EQ("89", ReadAll(*pSource, 8, 4));
    EXPECT_EQ("", ReadAll(*pSource, 10, 4));
    EXPECT_EQ("", ReadAll(*pSource, 1000, 4));
    EXPECT_EQ("", ReadAll(*pSource, -1, 4));
}

TEST(RawSectorSource, SwapsTheBytesOfWords)
{
    TempFolder folder;
    std::string strError;
    auto pSource = OpenRawSectorSource(folder.Write("a.bin", "0123456789abcdefgh"), true, strError);
    ASSERT_TRUE(pSource);
    EXPECT_EQ("1032547698badcfehg", ReadAll(*pSource, 0, 18));
    EXPECT_EQ("3254", ReadAll(*pSource, 2, 4));
}

TEST(RawSectorSource, FileCutLaterIsAShortRead)
{
    TempFolder folder;
    std::string strError;
    auto pSource = OpenRawSectorSource(folder.Write("a.bin", "0123456789"), false, strError);
    ASSERT_TRUE(pSource);
    folder.Write("a.bin", "0123");
    EXPECT_EQ("23", ReadAll(*pSource, 2, 8));
}

TEST(RawSectorSource, RefusesWhatIsNoFile)
{
    TempFolder folder;
    std::string strError;
    EXPECT_FALSE(OpenRawSectorSource(folder.GetPath("missing.bin"), false, strError));
    EXPECT_NE(std::string::npos, strError.find("missing.bin")) << strError;
    strError.clear();
    EXPECT_FALSE(OpenRawSectorSource(folder.GetPath(), false, strError));
    EXPECT_NE(std::string::npos, strError.find("is not a plain file")) << strError;
    strError.clear();
    EXPECT_FALSE(OpenRawSectorSource(folder.Write("empty.bin", ""), false, strError));
    EXPECT_NE(std::string::npos, strError.find("empty.bin\" is empty; ")) << strError;
}

TEST(RawSectorSource, PipeIsRefusedAndNotWaitedFor)
{
    TempFolder folder;
    std::string strError;
    ASSERT_EQ(0, mkfifo(folder.GetPath("pipe").c_str(), 0600));
    EXPECT_FALSE(OpenRawSectorSource(folder.GetPath("pipe"), false, strError));
    EXPECT_NE(std::string::npos, strError.find("is not a plain file")) << strError;
}

TEST(SwapBytePairs, SwapsEveryLengthAtEveryAddress)
{
    for (int nStart = 0; nStart < 8; nStart++)
        for (int nBytes = 0; nBytes <= 40; nBytes++)
        {
            std::string strBytes(50, '\0');
            for (size_t n = 0; n < strBytes.size(); n++)
                strBytes[n] = static_cast<char>(n);
            size_t nFirst = static_cast<size_t>(nStart);
            size_t nEven = static_cast<size_t>(nBytes) / 2 * 2; // an odd last byte stays
            std::string strWanted = strBytes;
            strWanted.replace(nFirst, nEven, SwapPairs(strBytes.substr(nFirst, nEven)));
            SwapBytePairs(reinterpret_cast<unsigned char*>(strBytes.data()) + nStart, nBytes);
            EXPECT_EQ(strWanted, strBytes) << nStart << ", " << nBytes;
        }
}
} // namespace
