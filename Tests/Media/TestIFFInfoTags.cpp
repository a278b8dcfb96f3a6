// Metadata by field names: the tag, the UITS chunk, pictures, the user's option.

#include "MemoryReader.h"
#include "RecordingTools.h"
#include "TempFolder.h"
#include "Tools/FakeTools.h"
#include "WaveFiles.h"
#include "WAVInfo.h"
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

using namespace WaveFiles;

namespace
{
class TagsTest : public ::testing::Test
{
protected:
    TagsTest() { m_Info.m_nTagWritingEnabled = 1; }
    void Open(const std::string& strMore)
    {
        m_Reader.m_strContent = Riff(Format() + Chunk("data", Audio(40)) + strMore);
        ASSERT_EQ(0, m_Info.Open(&m_Reader, true, true));
    }
    LyString Get(const wchar_t* pField)
    {
        LyString strValue = L"(as before)";
        m_bGot = m_Info.Get(pField, strValue);
        return strValue;
    }
    MemoryReader m_Reader;
    CWAVInfo m_Info;
    bool m_bGot = false;
};

std::string Picture(const std::string& strMime, const std::string& strImage)
{
    return Frame("APIC", std::string(1, 0) + strMime + std::string("\0\3\0", 3) + strImage);
}

std::string ReadFile(const wchar_t* pName)
{
    std::ifstream file(std::filesystem::path(pName), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}
} // namespace

TEST_F(TagsTest, AFieldComesFromTheTag)
{
    Open(Chunk("id3 ", Tag(TextFrame("TIT2", "Title") + TextFrame("TALB", "Album"))));
    EXPECT_STREQ(L"Title", Get(L"Name"));
    EXPECT_STREQ(L"Album", Get(L"Album"));
    EXPECT_TRUE(m_bGot);
    (void)Get(L"Artist");
    EXPECT_FALSE(m_bGot);
}

TEST_F(TagsTest, AFieldThatTheTagDoesNotHaveComesFromTheList)
{
    Open(Chunk("id3 ", Tag(TextFrame("TIT2", "Of the tag"))) +
         InfoList(InfoItem("INAM", std::string("Of the list\0", 12)) + InfoItem("IART", std::string("Artist\0\0", 8))));
    EXPECT_STREQ(L"Of the tag", Get(L"Name"));
    EXPECT_STREQ(L"Artist", Get(L"Artist"));
    EXPECT_TRUE(m_bGot);
    EXPECT_TRUE(Get(L"Engineer").IsEmpty());
    EXPECT_FALSE(m_bGot);
}

TEST_F(TagsTest, WhatIsSetIsThereAtOnceAndTheListStaysAsItIs)
{
    Open(InfoList(InfoItem("INAM", std::string("Listed\0\0", 8))));
    EXPECT_STREQ(L"Listed", Get(L"Name"));
    EXPECT_TRUE(m_Info.Set(L"Name", L"New"));
    EXPECT_STREQ(L"New", Get(L"Name"));
    EXPECT_TRUE(m_Info.m_ID3v2Tag.m_bDirty);
    EXPECT_FALSE(m_Info.Set(L"Name", L"")) << "a deletion";
    EXPECT_STREQ(L"Listed", Get(L"Name"));
}

// ---- The UITS chunk

TEST_F(TagsTest, ThePayloadIsFoundInAnyCase)
{
    Open(Chunk("UITS", "<payload>"));
    for (const wchar_t* pField : {L"UITS Payload", L"uits payload", L"UITS PAYLOAD"})
    {
        EXPECT_STREQ(L"<payload>", Get(pField));
        EXPECT_TRUE(m_bGot);
    }
    EXPECT_STREQ(L"<payload>", Get(L"UITS Payload")) << "asking changes nothing";
    EXPECT_EQ(10, m_Info.m_pUITSChunk->m_Data.GetSize());
}

TEST_F(TagsTest, WithoutAChunkThereIsNoPayload)
{
    Open("");
    EXPECT_TRUE(Get(L"UITS Payload").IsEmpty()) << "as of the list, which does not have it";
    EXPECT_FALSE(m_bGot);
}

TEST_F(TagsTest, ThePayloadsEncodingIsFoundOut)
{
    Open(Chunk("UITS", "\xC3\xA4\xE2\x82\xAC"));
    EXPECT_STREQ(L"\u00E4\u20AC", Get(L"UITS Payload"));
}

TEST_F(TagsTest, SettingThePayloadMakesTheChunk)
{
    Open("");
    EXPECT_TRUE(m_Info.Set(L"uits PAYLOAD", L"a\u00E4"));
    const CUITSChunk* pUITS = m_Info.m_pUITSChunk;
    ASSERT_NE(nullptr, pUITS);
    EXPECT_EQ("UITS", std::string(pUITS->id, 4));
    EXPECT_EQ(4u, pUITS->size) << "three bytes of UTF-8, and a zero";
    EXPECT_EQ(-1, pUITS->offset);
    EXPECT_EQ(0x7FFFFFFF, pUITS->m_nChunkIndex);
    EXPECT_EQ(0u, pUITS->m_nBytesOnReading);
    EXPECT_TRUE(pUITS->m_bDirty);
    EXPECT_EQ(std::string("a\xC3\xA4\0", 4), std::string(reinterpret_cast<const char*>(pUITS->m_Data.GetData()), 4));
    EXPECT_FALSE(m_Info.m_ID3v2Tag.m_bDirty);
    EXPECT_STREQ(L"a\u00E4", Get(L"UITS Payload"));
}

TEST_F(TagsTest, SettingThePayloadKeepsTheChunk)
{
    Open(Chunk("UITS", "longer than before"));
    EXPECT_TRUE(m_Info.Set(L"UITS Payload", L"ab"));
    EXPECT_EQ(2u, m_Info.m_pUITSChunk->size);
    EXPECT_EQ(2, m_Info.m_pUITSChunk->m_nChunkIndex);
    EXPECT_EQ(18u, m_Info.m_pUITSChunk->m_nBytesOnReading);
    EXPECT_TRUE(m_Info.Set(L"UITS Payload", L""));
    EXPECT_EQ(0u, m_Info.m_pUITSChunk->size) << "an empty one is a chunk as well";
    EXPECT_TRUE(m_Info.m_pUITSChunk->m_bDirty);
}

TEST(WAVUITSChunk, WritesHeaderAndPayloadWithoutAPadByte)
{
    CWAVUITSChunk chunk;
    chunk.id[0] = 'U';
    chunk.id[1] = 'I';
    chunk.id[2] = 'T';
    chunk.id[3] = 'S';
    chunk.m_Data.FromBuffer("abcd", 4);
    chunk.size = 3;
    MemoryReader reader;
    EXPECT_FALSE(chunk.Write(nullptr));
    EXPECT_TRUE(chunk.Write(&reader));
    EXPECT_EQ("UITS" + Number(3) + "abc", reader.m_strContent);
    for (long long nEnd : {7, 10})
    {
        MemoryReader full;
        full.m_nWritableEnd = nEnd;
        EXPECT_FALSE(chunk.Write(&full)) << nEnd;
    }
    chunk.size = 5; // more than it holds
    MemoryReader other;
    EXPECT_FALSE(chunk.Write(&other));
    EXPECT_EQ("", other.m_strContent);
}

// ---- Pictures

struct IMAGE_CASE
{
    const char* pMime;
    const wchar_t* pExtension;
};

TEST_F(TagsTest, APictureBecomesAFile)
{
    TempFolder folder;
    FakeTools tools; // who makes folders
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetAppdataDirectory(LyString().FromANSI(folder.GetPath("").c_str()));
    const IMAGE_CASE aryCases[] = {
        {"image/bmp", L".bmp"}, {"image/jpeg", L".jpg"},  {"image/jpg", L".jpg"},   {"IMAGE/GIF", L".gif"},
        {"image/png", L".png"}, {"image/tiff", L".tif"},  {"image/x-tif", L".tif"}, {"application/other", L".jpg"},
        {"", L".jpg"},          {"bmp in jpeg", L".bmp"}, {"png in gif", L".gif"},
    };
    for (const IMAGE_CASE& row : aryCases)
    {
        const std::string strImage = std::string("\xFF\xD8", 2) + Audio(100);
        MemoryReader reader(Riff(Format() + Chunk("data", "") + Chunk("id3 ", Tag(Picture(row.pMime, strImage)))));
        CWAVInfo info;
        info.m_nTagWritingEnabled = 1;
        ASSERT_EQ(0, info.Open(&reader, true, true));
        LyString strName;
        EXPECT_TRUE(info.Get(L"Image File", strName));
        EXPECT_GE(strName.Find(L"/WAV Image"), 0) << row.pMime;
        EXPECT_TRUE(strName.ReverseFind(row.pExtension) == strName.GetLength() - 4) << row.pMime;
        EXPECT_EQ(strImage, ReadFile(strName)) << row.pMime;
        LyString strOther;
        EXPECT_TRUE(info.Get(L"Image File", strOther));
        EXPECT_STRNE(strName, strOther) << "which does not replace the first";
    }
}

TEST_F(TagsTest, OnlyTheExactFieldMakesAFile)
{
    Open(Chunk("id3 ", Tag(Picture("image/png", "\xFF\xD8 bytes"))));
    const LyString strValue = Get(L"image file");
    EXPECT_LT(strValue.Find(L"/WAV Image"), 0);
}

TEST_F(TagsTest, APictureWithoutBytesStaysAText)
{
    Open(Chunk("id3 ", Tag(Picture("image/png", ""))));
    EXPECT_TRUE(Get(L"Image File").IsEmpty());
    EXPECT_TRUE(m_bGot);
}

// ---- The text for display

TEST_F(TagsTest, TheTagIsShownWithItsFrames)
{
    const std::string strTag = Tag(TextFrame("TIT2", "Title") + TextFrame("TALB", "Album"), 10);
    Open(Chunk("id3 ", strTag));
    const LyString strExpected = LyString(L"ID3v2.3 Tag: (") + LyString().FromInt(static_cast<int>(strTag.size())) +
                                 L" bytes)\r\n  " + m_Info.m_ID3v2Tag.GetFrameSummary(0) + L"\r\n  " +
                                 m_Info.m_ID3v2Tag.GetFrameSummary(1) + L"\r\n";
    EXPECT_STREQ(strExpected, m_Info.GetTagFormatString());
}

TEST_F(TagsTest, TheTagsVersionIsNamed)
{
    const wchar_t* const aryNames[] = {L"ID3v2 Tag: (10 bytes)\r\n", L"ID3v2.3 Tag: (10 bytes)\r\n",
                                       L"ID3v2.4 Tag: (10 bytes)\r\n"};
    for (int nVersion = 2; nVersion <= 4; ++nVersion)
    {
        Open(Chunk("id3 ", Tag("", 0, nVersion)));
        EXPECT_STREQ(aryNames[nVersion - 2], m_Info.GetTagFormatString());
    }
}

TEST_F(TagsTest, WithoutATagTheListIsShown)
{
    Open("");
    EXPECT_TRUE(m_Info.GetTagFormatString().IsEmpty());
    Open(InfoList(InfoItem("IART", std::string("Me\0\0", 4))));
    EXPECT_STREQ(L"WAVE INFO LIST:\r\n\r\n  Artist: Me", m_Info.GetTagFormatString());
    RecordingTools tools;
    tools.m_strTranslationMark = L"> ";
    EXPECT_STREQ(L"> WAVE INFO LIST:\r\n\r\n  Artist: Me", m_Info.GetTagFormatString());
}

TEST_F(TagsTest, WithATagTheListIsNotShown)
{
    Open(Chunk("id3 ", Tag("", 0, 4)) + InfoList(InfoItem("IART", std::string("Me\0\0", 4))));
    EXPECT_STREQ(L"ID3v2.4 Tag: (10 bytes)\r\n", m_Info.GetTagFormatString());
}

// ---- The tag of a chunk

TEST_F(TagsTest, ATagChunkThatCountsAByteTooManyIsReadAllTheSame)
{
    // The footer flag asks for ten bytes more than the tag has; one byte less is still accepted by the tag.
    const std::string strTag = Tag(TextFrame("TIT2", "Title"));
    m_Reader.m_strContent = strTag;
    m_Info.m_pReader.Set(&m_Reader, false, false);
    EXPECT_EQ(1, m_Info.ReadID3Tags(static_cast<unsigned int>(strTag.size())));
    EXPECT_EQ(0, m_Info.m_ID3v2Tag.m_nFilePosition);
    m_Reader.m_nPosition = 0;
    EXPECT_EQ(-1, m_Info.ReadID3Tags(static_cast<unsigned int>(strTag.size() + 1))) << "not all there";
    m_Reader.m_nPosition = 3;
    EXPECT_EQ(0, m_Info.ReadID3Tags(10)) << "no tag";
    EXPECT_EQ(3, m_Info.m_ID3v2Tag.m_nFilePosition);
    EXPECT_EQ(9, m_Info.m_ID3v2Tag.m_RawTag.GetSize()) << "loaded once more with a byte less";
    m_Reader.m_nPosition = 0;
    EXPECT_EQ(-1, m_Info.ReadID3Tags(0xFFFFFFFF));
}

// ---- The option

TEST(IFFInfoOption, IsReadOnceAndNegated)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    CWAVInfo info;
    EXPECT_TRUE(info.GetTagWritingEnabled()) << "the default";
    EXPECT_EQ(1, info.m_nTagWritingEnabled);
    EXPECT_STREQ(L"Plugins\\Input\\WAV", tools->GetLastOptionsCall().pStore);
    EXPECT_STREQ(L"DoNotWriteTagsToFiles", tools->GetLastOptionsCall().pKey);
    tools->SetOption(L"Plugins\\Input\\WAV", L"DoNotWriteTagsToFiles", L"1");
    EXPECT_TRUE(info.GetTagWritingEnabled()) << "for the life of the object";
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_OPTIONS_GET));
    CWAVInfo other;
    EXPECT_FALSE(other.GetTagWritingEnabled());
    EXPECT_EQ(0, other.m_nTagWritingEnabled);
}

TEST(IFFInfoOption, ForbidsSettingAndSavingOfTags)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetOption(L"Plugins\\Input\\WAV", L"DoNotWriteTagsToFiles", L"1");
    const std::string strFile = Riff(Format() + Chunk("data", Audio(40)));
    MemoryReader reader(strFile);
    CWAVInfo info;
    ASSERT_EQ(0, info.Open(&reader, true, true));
    EXPECT_FALSE(info.Set(L"Name", L"Title"));
    EXPECT_TRUE(info.Set(L"UITS Payload", L"text")) << "which is no tag";
    EXPECT_TRUE(info.SaveMetadataChanges(false)) << "doing nothing";
    EXPECT_EQ(strFile, reader.m_strContent);
    reader.m_bOpen = false;
    EXPECT_TRUE(info.SaveMetadataChanges(false)) << "without a look at the reader";
}
