#include "ZLibService.h"

#include "TempFolder.h"
#include "UTF8.h"
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <sys/stat.h>
#include <zlib.h>

namespace
{
// A member as gzip writes it; level 0 stores the bytes as they are.
std::string Gzip(const std::string& strContent, int nLevel = Z_DEFAULT_COMPRESSION)
{
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, nLevel, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string strFile(deflateBound(&stream, strContent.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(strContent.data()));
    stream.avail_in = static_cast<uInt>(strContent.size());
    stream.next_out = reinterpret_cast<Bytef*>(strFile.data());
    stream.avail_out = static_cast<uInt>(strFile.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    strFile.resize(stream.total_out);
    EXPECT_EQ(deflateEnd(&stream), Z_OK);
    return strFile;
}

std::string GetNoise(size_t nBytes)
{
    std::mt19937 random(42);
    std::string str(nBytes, '\0');
    for (char& c : str)
        c = static_cast<char>(random());
    return str;
}

std::unique_ptr<IZLibFile> Open(const std::string& strPath)
{
    ZLibService service;
    return std::unique_ptr<IZLibFile>(service.OpenFile(WidenUTF8(strPath).c_str()));
}

struct CONTENT
{
    std::string strBytes;
    int nEnd = 1; // what the last Read said
};

CONTENT ReadAll(const std::string& strPath, int nChunk = 8192)
{
    CONTENT content;
    const std::unique_ptr<IZLibFile> file = Open(strPath);
    if (file == nullptr)
        return {"not open", 1};
    std::string strChunk(static_cast<size_t>(nChunk), '\0');
    while ((content.nEnd = file->Read(strChunk.data(), nChunk)) > 0)
        content.strBytes.append(strChunk, 0, static_cast<size_t>(content.nEnd));
    EXPECT_EQ(file->Read(strChunk.data(), nChunk), content.nEnd); // the end stays the end
    return content;
}
} // namespace

TEST(ZLibFile, GivesTheContentWhateverTheChunks)
{
    const TempFolder folder;
    const std::string strNoise = GetNoise(100'000);
    const std::string strFile = folder.Write("a.gz", Gzip(strNoise));
    for (const int nChunk : {1, 7, 8192, 16384, 1'000'000})
    {
        const CONTENT content = ReadAll(strFile, nChunk);
        EXPECT_TRUE(content.strBytes == strNoise) << nChunk;
        EXPECT_EQ(content.nEnd, 0);
    }
}

TEST(ZLibFile, LongRunsOfTheSameByteGrow)
{
    const TempFolder folder;
    const std::string strContent(5'000'000, 'x');
    EXPECT_TRUE(ReadAll(folder.Write("a.gz", Gzip(strContent, 9))).strBytes == strContent);
}

TEST(ZLibFile, EmptyStreamIsAtItsEndAtOnce)
{
    const TempFolder folder;
    const CONTENT content = ReadAll(folder.Write("a.gz", Gzip("")));
    EXPECT_EQ(content.strBytes, "");
    EXPECT_EQ(content.nEnd, 0);
}

TEST(ZLibFile, MembersFollowEachOther)
{
    const TempFolder folder;
    const std::string strNoise = GetNoise(40'000);
    const CONTENT content = ReadAll(folder.Write("a.gz", Gzip("one") + Gzip("") + Gzip(strNoise) + Gzip("four")), 1000);
    EXPECT_TRUE(content.strBytes == "one" + strNoise + "four");
    EXPECT_EQ(content.nEnd, 0);
}

// The border between two members lies at each place of the input buffer once.
TEST(ZLibFile, MembersMeetAtAnyPlaceOfTheInputBuffer)
{
    const TempFolder folder;
    for (size_t nBytes = 16384 - 24; nBytes < 16384 + 4; ++nBytes)
    {
        const std::string strNoise = GetNoise(nBytes - 23);
        const CONTENT content = ReadAll(folder.Write("a.gz", Gzip(strNoise, 0) + Gzip("end")));
        EXPECT_TRUE(content.strBytes == strNoise + "end") << nBytes;
        EXPECT_EQ(content.nEnd, 0);
    }
}

TEST(ZLibFile, WhatIsNoMemberIsPassedOver)
{
    const TempFolder folder;
    for (const std::string& strTail :
         {std::string(512, '\0'), std::string("x"), std::string("\x1F\x8B"), std::string("tail")})
    {
        const CONTENT content = ReadAll(folder.Write("a.gz", Gzip("content") + strTail));
        EXPECT_EQ(content.strBytes, "content");
        EXPECT_EQ(content.nEnd, 0);
    }
}

TEST(ZLibFile, TruncatedFileGivesWhatCame)
{
    const TempFolder folder;
    const std::string strNoise = GetNoise(50'000);
    const std::string strWhole = Gzip(strNoise, 0);
    const CONTENT content = ReadAll(folder.Write("a.gz", strWhole.substr(0, 30'000)));
    EXPECT_GT(content.strBytes.size(), 29'000U);
    EXPECT_TRUE(content.strBytes == strNoise.substr(0, content.strBytes.size()));
    EXPECT_EQ(content.nEnd, -1);
}

TEST(ZLibFile, CutAtEachByteGivesAPrefixAndAnError)
{
    const TempFolder folder;
    const std::string strWhole = Gzip("The quick brown fox jumps over the lazy dog.");
    for (size_t nBytes = 3; nBytes < strWhole.size(); ++nBytes)
    {
        const CONTENT content = ReadAll(folder.Write("a.gz", strWhole.substr(0, nBytes)));
        EXPECT_EQ(std::string("The quick brown fox jumps over the lazy dog.").find(content.strBytes), 0U) << nBytes;
        EXPECT_EQ(content.nEnd, -1) << nBytes;
    }
}

TEST(ZLibFile, DamageInTheMiddleEndsTheContent)
{
    const TempFolder folder;
    const std::string strNoise = GetNoise(200'000);
    std::string strFile = Gzip(strNoise, 0);
    // The second stored block says that its length and the complement of it do not agree.
    size_t nBlock = 10;
    const size_t nLength =
        static_cast<unsigned char>(strFile[nBlock + 1]) + size_t{256} * static_cast<unsigned char>(strFile[nBlock + 2]);
    nBlock += 5 + nLength;
    strFile[nBlock + 1] = static_cast<char>(~strFile[nBlock + 1]);
    const CONTENT content = ReadAll(folder.Write("a.gz", strFile), 16384);
    EXPECT_TRUE(content.strBytes == strNoise.substr(0, nLength));
    EXPECT_EQ(content.nEnd, -1);
}

TEST(ZLibFile, WrongCheckSumShowsAtTheEnd)
{
    const TempFolder folder;
    std::string strFile = Gzip("content");
    strFile[strFile.size() - 8] = static_cast<char>(strFile[strFile.size() - 8] ^ 1);
    const CONTENT content = ReadAll(folder.Write("a.gz", strFile));
    EXPECT_EQ(content.strBytes, "content");
    EXPECT_EQ(content.nEnd, -1);
}

TEST(ZLibFile, BadArgumentsReadNothing)
{
    const TempFolder folder;
    const std::unique_ptr<IZLibFile> file = Open(folder.Write("a.gz", Gzip("content")));
    ASSERT_NE(file, nullptr);
    char szBuffer[16] = {};
    EXPECT_EQ(file->Read(nullptr, 16), -1);
    EXPECT_EQ(file->Read(szBuffer, -1), -1);
    EXPECT_EQ(file->Read(szBuffer, INT_MIN), -1);
    EXPECT_EQ(file->Read(szBuffer, 0), 0);
    EXPECT_EQ(file->Read(szBuffer, 16), 7); // and nothing was lost
    EXPECT_STREQ(szBuffer, "content");
}

TEST(ZLibOpenFile, RefusesWhatIsNoGzipFile)
{
    const TempFolder folder;
    EXPECT_EQ(Open(folder.Write("text", "plain text")), nullptr);
    EXPECT_EQ(Open(folder.Write("empty", "")), nullptr);
    EXPECT_EQ(Open(folder.Write("two", "\x1F\x8B")), nullptr);
    EXPECT_EQ(Open(folder.Write("method", std::string("\x1F\x8B\x07", 3) + std::string(20, '\0'))), nullptr);
    EXPECT_EQ(Open(folder.GetPath("none")), nullptr);
    EXPECT_EQ(Open(folder.GetPath()), nullptr);
    ASSERT_EQ(mkfifo(folder.GetPath("pipe").c_str(), 0600), 0);
    EXPECT_EQ(Open(folder.GetPath("pipe")), nullptr); // and does not wait for a writer
    ZLibService service;
    EXPECT_EQ(service.OpenFile(nullptr), nullptr);
    EXPECT_EQ(service.OpenFile(L""), nullptr);
}

TEST(ZLibOpenFile, NamesMayHoldAnyCharactersAndBeFileURLs)
{
    const TempFolder folder;
    for (const char* pName : {"Gr\xC3\xB6\xC3\x9F"
                              "e.gz",
                              "\xF0\x9F\x8E\xB5.gz", "a\nb"})
        EXPECT_EQ(ReadAll(folder.Write(pName, Gzip("content"))).strBytes, "content") << pName;
    EXPECT_EQ(ReadAll("file://" + folder.Write("a.gz", Gzip("content"))).strBytes, "content");
}

TEST(ZLibBuffers, WhatIsCompressedComesBack)
{
    ZLibService service;
    const std::string strContent(1000, 'a');
    for (const int nLevel : {-1, 0, 1, 9})
    {
        const std::unique_ptr<IZLibBufferCompressor> compressor(service.CreateBufferCompressor(nLevel, 1));
        const std::unique_ptr<IZLibBufferDecompressor> decompressor(service.CreateBufferDecompressor());
        ASSERT_TRUE(compressor != nullptr && decompressor != nullptr);
        unsigned char aryPacked[2000];
        char aryPlain[1000] = {};
        const int nPacked = compressor->Compress(strContent.data(), 1000, aryPacked, sizeof aryPacked);
        ASSERT_GT(nPacked, 0);
        EXPECT_EQ(nPacked < 100, nLevel != 0);
        EXPECT_EQ(aryPacked[0], 0x78); // RFC 1950: deflate with a window of 32 KiB
        EXPECT_EQ(decompressor->Decompress(aryPacked, nPacked, aryPlain, 1000), 1000);
        EXPECT_EQ(strContent.compare(0, 1000, aryPlain, 1000), 0);
        EXPECT_EQ(decompressor->Decompress(aryPacked, nPacked, aryPlain, 999), -1); // does not fit
        EXPECT_EQ(decompressor->Decompress(aryPacked, nPacked - 1, aryPlain, 1000), -1);
        EXPECT_EQ(compressor->Compress(strContent.data(), 1000, aryPacked, 4), -1);
    }
}

TEST(ZLibBuffers, EmptyInputIsAStreamOfItsOwn)
{
    ZLibService service;
    const std::unique_ptr<IZLibBufferCompressor> compressor(service.CreateBufferCompressor(-1, 1));
    const std::unique_ptr<IZLibBufferDecompressor> decompressor(service.CreateBufferDecompressor());
    char aryPacked[16];
    const int nPacked = compressor->Compress(nullptr, 0, aryPacked, sizeof aryPacked);
    EXPECT_EQ(nPacked, 8);
    EXPECT_EQ(decompressor->Decompress(aryPacked, nPacked, nullptr, 0), 0);
}

TEST(ZLibBuffers, BadInputAndBadArgumentsFail)
{
    ZLibService service;
    const std::unique_ptr<IZLibBufferCompressor> compressor(service.CreateBufferCompressor(-1, 1));
    const std::unique_ptr<IZLibBufferDecompressor> decompressor(service.CreateBufferDecompressor());
    char aryOut[64];
    EXPECT_EQ(decompressor->Decompress("not packed", 10, aryOut, 64), -1);
    EXPECT_EQ(decompressor->Decompress(nullptr, 10, aryOut, 64), -1);
    EXPECT_EQ(decompressor->Decompress("x", -1, aryOut, 64), -1);
    EXPECT_EQ(decompressor->Decompress("x", 1, nullptr, 64), -1);
    EXPECT_EQ(decompressor->Decompress("", 0, aryOut, 64), -1);
    EXPECT_EQ(compressor->Compress(nullptr, 1, aryOut, 64), -1);
    EXPECT_EQ(compressor->Compress("x", -1, aryOut, 64), -1);
    EXPECT_EQ(compressor->Compress("x", 1, aryOut, -1), -1);
    EXPECT_EQ(compressor->Compress("x", 1, nullptr, 64), -1);
}

TEST(ZLibBuffers, UnknownLevelsAndFormatsGiveNoObject)
{
    ZLibService service;
    EXPECT_EQ(service.CreateBufferCompressor(-2, 1), nullptr);
    EXPECT_EQ(service.CreateBufferCompressor(10, 1), nullptr);
    EXPECT_EQ(service.CreateBufferCompressor(-1, 0), nullptr);
    EXPECT_EQ(service.CreateBufferCompressor(-1, 2), nullptr);
}
