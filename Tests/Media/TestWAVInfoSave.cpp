// How metadata goes back into a file, case by case.

#include "MemoryReader.h"
#include "WaveFiles.h"
#include "WAVInfo.h"
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>

using namespace WaveFiles;

namespace
{
constexpr size_t HEAD = 12 + 24 + 8 + 40; // root, format, and 40 bytes of audio

class SaveTest : public ::testing::Test
{
protected:
    // A file of format and audio with more behind it, or with something ahead of it.
    void Open(const std::string& strMore, const std::string& strAhead = "")
    {
        m_strFile = Riff(strAhead + Format() + Chunk("data", Audio(40)) + strMore);
        m_Reader.m_strContent = m_strFile;
        m_Reader.m_nPosition = 0;
        m_pInfo.reset(new CWAVInfo);
        m_pInfo->m_nTagWritingEnabled = 1;
        ASSERT_EQ(0, m_pInfo->Open(&m_Reader, true, true));
    }
    ~SaveTest() override { Forget(); }
    void Forget() // without a further save
    {
        if (m_pInfo)
            m_pInfo->m_pReader.Release();
        m_pInfo.reset();
    }
    bool Save(bool bRemoveTag = false) { return m_pInfo->SaveMetadataChanges(bRemoveTag); }
    const std::string& GetFile() const { return m_Reader.m_strContent; }
    unsigned int GetRoot() const { return GetNumber(GetFile(), 4); }
    unsigned int GetRightRoot() const { return static_cast<unsigned int>(GetFile().size() - 8); }
    // What the file says when it is opened anew.
    LyString GetSaved(const wchar_t* pField)
    {
        MemoryReader reader(GetFile());
        CWAVInfo info;
        info.m_nTagWritingEnabled = 1;
        LyString strValue;
        if (info.Open(&reader, true, true) == 0)
            (void)info.Get(pField, strValue);
        return strValue;
    }
    MemoryReader m_Reader;
    std::unique_ptr<CWAVInfo> m_pInfo;
    std::string m_strFile;
};

std::string TagChunk(const std::string& strFrames, size_t nPadding = 0, const char* pID = "id3 ")
{
    return Chunk(pID, Tag(strFrames, nPadding));
}
} // namespace

// ---- Nothing to do

TEST_F(SaveTest, WithoutAChangeNothingIsWritten)
{
    Open(TagChunk(TextFrame("TIT2", "Title")) + Chunk("UITS", "ab"));
    m_Reader.m_strContent.replace(4, 4, Number(1)); // not even the root length
    m_Reader.m_bRecords = true;
    EXPECT_TRUE(Save());
    EXPECT_EQ(0, m_Reader.CountCalls("Write"));
    EXPECT_EQ(1u, GetRoot());
}

TEST_F(SaveTest, WithoutAReaderThatIsOpenNothingCanBeSaved)
{
    CWAVInfo info;
    info.m_nTagWritingEnabled = 1;
    EXPECT_FALSE(info.SaveMetadataChanges(false));
    Open("");
    m_Reader.m_bOpen = false;
    EXPECT_FALSE(Save());
    m_pInfo->m_nTagWritingEnabled = 0;
    EXPECT_TRUE(Save()) << "the option is asked first";
}

TEST_F(SaveTest, RemovalFromAFileWithoutATagDoesNothing)
{
    Open(Chunk("junk", "ab"));
    EXPECT_TRUE(Save(true));
    EXPECT_EQ(m_strFile, GetFile());
}

TEST_F(SaveTest, RemovalFromAFileWithoutATagSavesAChangedUITSChunkAllTheSame)
{
    Open(Chunk("junk", "ab"));
    m_pInfo->Set(L"UITS Payload", L"text");
    EXPECT_TRUE(Save(true));
    EXPECT_EQ("fmt datajunkUITS", Names(GetFile()));
    EXPECT_EQ(GetRightRoot(), GetRoot());
}

TEST_F(SaveTest, ABadRootLengthIsMendedBeforeAnyMetadataIsWritten)
{
    Open(TagChunk(TextFrame("TIT2", "Title"), 50));
    m_Reader.m_strContent.replace(4, 4, Number(12345));
    m_pInfo->Set(L"Name", L"Other");
    EXPECT_TRUE(Save());
    EXPECT_EQ(GetRightRoot(), GetRoot());
    EXPECT_EQ(m_strFile.size(), GetFile().size());
}

// ---- In place

TEST_F(SaveTest, ATagOfTheSameLengthTouchesNoChunkButItsOwn)
{
    Open(TagChunk(TextFrame("TIT2", "Title"), 51) + Chunk("junk", "xyz") + Chunk("UITS", "abc"));
    m_pInfo->Set(L"Name", L"Another title");
    m_Reader.m_bRecords = true;
    EXPECT_TRUE(Save());
    EXPECT_EQ(m_strFile.size(), GetFile().size());
    const CHUNK tag = List(m_strFile)[2];
    EXPECT_EQ(m_strFile.substr(0, tag.nOffset + 8), GetFile().substr(0, tag.nOffset + 8));
    EXPECT_EQ(m_strFile.substr(tag.nOffset + 8 + tag.nSize), GetFile().substr(tag.nOffset + 8 + tag.nSize));
    EXPECT_EQ(1, m_Reader.CountCalls("Write")) << "the tag alone";
    EXPECT_EQ(0, m_Reader.CountCalls("SetEndOfFile"));
    EXPECT_STREQ(L"Another title", GetSaved(L"Name"));
}

TEST_F(SaveTest, TheSpellingOfTheChunkStaysInPlaceAndIsTheUsualOneWhenItIsWrittenAnew)
{
    for (const char* pID : {"ID3 ", "tag ", "id3 "})
    {
        Open(TagChunk(TextFrame("TIT2", "Title"), 50, pID));
        m_pInfo->Set(L"Name", L"Other");
        EXPECT_TRUE(Save());
        EXPECT_EQ(std::string("fmt data") + pID, Names(GetFile()));
        Forget();
        Open(TagChunk(TextFrame("TIT2", "Title"), 50, pID));
        m_pInfo->Set(L"Name", std::wstring(200, L'x').c_str());
        EXPECT_TRUE(Save());
        EXPECT_EQ("fmt dataid3 ", Names(GetFile()));
        Forget();
    }
}

TEST_F(SaveTest, AnOddTagOverAnOddChunkIsPaddedAndTheHeaderStays)
{
    const std::string strTag = Tag(TextFrame("TIT2", "Titles"), 3);
    ASSERT_EQ(31u, strTag.size());
    Open(Chunk("id3 ", strTag, false)); // at the end, without its pad byte
    m_pInfo->Set(L"Name", L"Others");
    m_Reader.m_bRecords = true;
    EXPECT_TRUE(Save());
    EXPECT_EQ(HEAD + 8 + 32, GetFile().size());
    EXPECT_EQ('\0', GetFile().back());
    EXPECT_EQ(m_strFile.substr(HEAD, 8), GetFile().substr(HEAD, 8));
    EXPECT_EQ(2, m_Reader.CountCalls("Write")) << "the tag and the pad byte";
}

TEST_F(SaveTest, AnEvenTagOverAChunkThatIsAByteShorterRewritesTheHeader)
{
    Open(Chunk("ID3 ", Audio(4095)) + Chunk("junk", "xyz")); // no tag can be read from it; a new one has 4096 bytes
    m_pInfo->Set(L"Name", L"Title");
    EXPECT_TRUE(Save());
    EXPECT_EQ(m_strFile.size(), GetFile().size());
    EXPECT_EQ("fmt dataID3 junk", Names(GetFile()));
    EXPECT_EQ(4096u, GetNumber(GetFile(), HEAD + 4));
    EXPECT_STREQ(L"Title", GetSaved(L"Name"));
}

TEST_F(SaveTest, AChangedUITSChunkBehindTheTagIsWrittenAfterIt)
{
    Open(TagChunk(TextFrame("TIT2", "Title"), 50) + Chunk("UITS", "abcd") + Chunk("junk", "xy"));
    m_pInfo->Set(L"Name", L"Other");
    m_pInfo->Set(L"UITS Payload", L"longer text");
    EXPECT_TRUE(Save());
    EXPECT_EQ("fmt dataid3 junkUITS", Names(GetFile()));
    EXPECT_EQ(GetRightRoot(), GetRoot());
    EXPECT_STREQ(L"Other", GetSaved(L"Name"));
    EXPECT_STREQ(L"longer text", GetSaved(L"UITS Payload"));
}

TEST_F(SaveTest, AChangedUITSChunkAheadOfTheTagMovesBoth)
{
    Open(Chunk("UITS", "abcd") + TagChunk(TextFrame("TIT2", "Title"), 50) + Chunk("junk", "xy"));
    m_pInfo->Set(L"Name", L"Other");
    m_pInfo->Set(L"UITS Payload", L"text");
    EXPECT_TRUE(Save());
    EXPECT_EQ("fmt datajunkid3 UITS", Names(GetFile()));
    EXPECT_EQ(GetRightRoot(), GetRoot());
    EXPECT_STREQ(L"Other", GetSaved(L"Name"));
    EXPECT_STREQ(L"text", GetSaved(L"UITS Payload"));
}

TEST_F(SaveTest, WhatCannotBeReachedInPlaceIsWrittenAnew)
{
    Open(TagChunk(TextFrame("TIT2", "Title"), 50) + Chunk("junk", "xy"));
    m_pInfo->Set(L"Name", L"Other");
    m_Reader.m_nRefusedPosition = static_cast<long long>(HEAD);
    m_Reader.m_bRecords = true;
    (void)Save();
    EXPECT_EQ(1, m_Reader.CountCalls("SetEndOfFile"));
}

// ---- Written anew

TEST_F(SaveTest, ANewTagGoesBehindAllChunks)
{
    Open(Chunk("junk", "xy"));
    m_pInfo->Set(L"Name", L"Title");
    EXPECT_TRUE(Save());
    EXPECT_EQ(m_strFile.substr(8), GetFile().substr(8, m_strFile.size() - 8));
    EXPECT_EQ("fmt datajunkid3 ", Names(GetFile()));
    EXPECT_EQ(4096u, List(GetFile())[3].nSize);
    EXPECT_EQ(GetRightRoot(), GetRoot());
    EXPECT_STREQ(L"Title", GetSaved(L"Name"));
}

TEST_F(SaveTest, BehindANewTagTheUITSChunkIsWrittenAgain)
{
    Open(Chunk("UITS", "abcd") + Chunk("junk", "xy"));
    m_pInfo->Set(L"Name", L"Title");
    EXPECT_TRUE(Save());
    EXPECT_EQ("fmt datajunkid3 UITS", Names(GetFile()));
    EXPECT_EQ(GetRightRoot(), GetRoot());
    EXPECT_STREQ(L"abcd", GetSaved(L"UITS Payload"));
}

TEST_F(SaveTest, ATagThatSaysItComesFromNoPlaceAtAllIsANewOne)
{
    for (const long long nPosition : {-1LL, LLONG_MIN + 7, LLONG_MIN})
    {
        Open(Chunk("UITS", "abcd") + Chunk("tail", "ef"));
        ASSERT_TRUE(m_pInfo->Set(L"Name", L"Title"));
        m_pInfo->m_ID3v2Tag.m_nFilePosition = nPosition;
        EXPECT_TRUE(Save());
        EXPECT_EQ("fmt datatailid3 UITS", Names(GetFile())) << nPosition;
        EXPECT_EQ(GetRightRoot(), GetRoot());
        Forget();
    }
}

TEST_F(SaveTest, ATagThatGrowsMovesToTheEnd)
{
    Open(TagChunk(TextFrame("TIT2", "Title")) + Chunk("junk", "xy") + Chunk("UITS", "abcd"));
    m_pInfo->Set(L"Name", std::wstring(100, L'x').c_str());
    EXPECT_TRUE(Save());
    EXPECT_EQ("fmt datajunkUITSid3 ", Names(GetFile()));
    EXPECT_EQ(GetRightRoot(), GetRoot());
    EXPECT_STREQ(L"abcd", GetSaved(L"UITS Payload"));
}

TEST_F(SaveTest, AudioBehindTheTagMovesWhole)
{
    Open("", TagChunk(TextFrame("TIT2", "Title")));
    m_pInfo->Set(L"Name", std::wstring(100, L'x').c_str());
    EXPECT_TRUE(Save());
    EXPECT_EQ("fmt dataid3 ", Names(GetFile()));
    EXPECT_EQ(Audio(40), GetFile().substr(44, 40));
    EXPECT_EQ(GetRightRoot(), GetRoot());
}

TEST_F(SaveTest, ACleanUITSChunkAheadOfTheTagLeavesTheFile)
{
    Open(Chunk("UITS", "abcd") + TagChunk(TextFrame("TIT2", "Title")) + Chunk("junk", "xy"));
    m_pInfo->Set(L"Name", std::wstring(100, L'x').c_str());
    EXPECT_TRUE(Save());
    EXPECT_EQ("fmt datajunkid3 ", Names(GetFile()));
    EXPECT_EQ(GetRightRoot() + 12, GetRoot()) << "which the root length does not learn";
}

TEST_F(SaveTest, ThePadByteOfAMovedChunkStaysBehind)
{
    Open(TagChunk(TextFrame("TIT2", "Title")) + Chunk("junk", "xyz"));
    m_pInfo->Set(L"Name", std::wstring(100, L'x').c_str());
    EXPECT_TRUE(Save());
    EXPECT_EQ("junk" + Number(3) + "xyzid3 ", GetFile().substr(HEAD, 15));
    EXPECT_EQ(GetRightRoot() + 1, GetRoot()) << "until the next save mends it";
}

TEST_F(SaveTest, ALongChunkIsMovedByMegabytes)
{
    const std::string strAudio = Audio(0x100000 * 2 + 100);
    m_strFile = Riff(TagChunk(TextFrame("TIT2", "Title")) + Format() + Chunk("data", strAudio));
    m_Reader.m_strContent = m_strFile;
    m_pInfo.reset(new CWAVInfo);
    m_pInfo->m_nTagWritingEnabled = 1;
    ASSERT_EQ(0, m_pInfo->Open(&m_Reader, true, true));
    m_pInfo->Set(L"Name", std::wstring(100, L'x').c_str());
    m_Reader.m_bRecords = true;
    EXPECT_TRUE(Save());
    EXPECT_EQ(2, m_Reader.CountCalls("Write 1048576"));
    EXPECT_EQ(1, m_Reader.CountCalls("Write 108"));
    EXPECT_EQ(strAudio, GetFile().substr(44, strAudio.size()));
}

TEST_F(SaveTest, OfTwoTagChunksTheFirstStays)
{
    Open(TagChunk(TextFrame("TIT2", "First")) + TagChunk(TextFrame("TIT2", "Second")) + Chunk("junk", "xy"));
    m_pInfo->Set(L"Name", std::wstring(100, L'x').c_str());
    EXPECT_TRUE(Save());
    EXPECT_EQ("fmt dataid3 junkid3 ", Names(GetFile()));
    EXPECT_EQ(GetRightRoot(), GetRoot());
}

// ---- Removal

TEST_F(SaveTest, RemovalTakesTheChunkOut)
{
    Open(TagChunk(TextFrame("TIT2", "Title")) + Chunk("junk", "xy"));
    EXPECT_TRUE(Save(true));
    EXPECT_EQ("fmt datajunk", Names(GetFile()));
    EXPECT_EQ(Riff(Format() + Chunk("data", Audio(40)) + Chunk("junk", "xy")), GetFile());
}

TEST_F(SaveTest, RemovalWritesAChangedUITSChunkBehindTheOthers)
{
    Open(Chunk("UITS", "abcd") + TagChunk(TextFrame("TIT2", "Title")) + Chunk("junk", "xy"));
    m_pInfo->Set(L"UITS Payload", L"text");
    EXPECT_TRUE(Save(true));
    EXPECT_EQ("fmt datajunkUITS", Names(GetFile()));
    EXPECT_EQ(GetRightRoot(), GetRoot());
}

// ---- The UITS chunk alone

TEST_F(SaveTest, ANewUITSChunkGoesToTheEnd)
{
    Open(TagChunk(TextFrame("TIT2", "Title")) + Chunk("junk", "xy"));
    m_pInfo->Set(L"UITS Payload", L"text");
    EXPECT_TRUE(Save());
    EXPECT_EQ(Riff(m_strFile.substr(12) + Chunk("UITS", "text")), GetFile());
}

TEST_F(SaveTest, AChangedUITSChunkMovesToTheEnd)
{
    Open(Chunk("UITS", "abcd") + TagChunk(TextFrame("TIT2", "Title"), 1) + Chunk("junk", "xy"));
    m_pInfo->Set(L"UITS Payload", L"much longer text");
    EXPECT_TRUE(Save());
    EXPECT_EQ("fmt dataid3 junkUITS", Names(GetFile()));
    EXPECT_EQ(GetRightRoot(), GetRoot());
    EXPECT_STREQ(L"much longer text", GetSaved(L"UITS Payload"));
    EXPECT_STREQ(L"Title", GetSaved(L"Name"));
}

TEST_F(SaveTest, SavingTheUITSChunkRefreshesThePodcastFieldsOfTheTag)
{
    Open(TagChunk(TextFrame("TIT2", "Title")));
    m_pInfo->Set(L"UITS Payload", L"text");
    m_pInfo->m_ID3v2Tag.Set(L"Feed URL", L"http://host/feed");
    m_pInfo->m_ID3v2Tag.m_bDirty = false; // as if it had been read so
    EXPECT_TRUE(Save());
    EXPECT_TRUE(m_pInfo->m_ID3v2Tag.m_bDirty);
    EXPECT_STREQ(L"", GetSaved(L"Feed URL")) << "the tag itself was not written";
}

TEST_F(SaveTest, AUITSChunkOfOddSizeIsWrittenWithoutItsPadByte)
{
    Open(Chunk("UITS", "abc"));
    m_pInfo->m_pUITSChunk->m_bDirty = true;
    EXPECT_TRUE(Save());
    EXPECT_EQ(m_strFile.size() - 1, GetFile().size());
    EXPECT_EQ("UITS" + Number(3) + "abc", GetFile().substr(HEAD));
}

// ---- Failures

TEST_F(SaveTest, ATagThatCannotBeWrittenIsTold)
{
    for (long long nRoom : {0, 7, 8, 4000})
    {
        Open("");
        m_pInfo->Set(L"Name", L"Title");
        m_Reader.m_nWritableEnd = static_cast<long long>(m_strFile.size()) + nRoom;
        EXPECT_FALSE(Save()) << nRoom;
        EXPECT_EQ(Audio(40), GetFile().substr(44, 40));
        m_Reader.m_nWritableEnd = LLONG_MAX;
        Forget();
    }
}

// ---- Saving twice

// Four bodies of which no byte is ever touched, and which together are longer than a buffer can be.
TEST_F(SaveTest, ATagForWhichThereIsNoMemoryLeavesTheFileAsItIs)
{
    Open(TagChunk(TextFrame("TIT2", "Title")) + Chunk("UITS", "ab"));
    for (int i = 0; i < 4; ++i)
    {
        auto pFrame = std::make_unique<CID3v2Frame>();
        std::memcpy(pFrame->m_Header.m_ID, "GEOB", 4);
        ASSERT_NE(nullptr, pFrame->m_Data.GetAppendBlock(0x28000000));
        (void)m_pInfo->m_ID3v2Tag.m_aryFrames.Add(pFrame.release());
    }
    m_pInfo->m_ID3v2Tag.m_bDirty = true;
    EXPECT_FALSE(Save());
    EXPECT_EQ(m_strFile, GetFile());
    EXPECT_TRUE(Save(true)) << "a removal makes no tag";
    EXPECT_EQ("fmt dataUITS", Names(GetFile()));
}

TEST_F(SaveTest, WhatMadeASaveNecessaryIsNotClearedByIt)
{
    Open(TagChunk(TextFrame("TIT2", "Title"), 50) + Chunk("UITS", "abcd"));
    m_pInfo->Set(L"Name", L"Other");
    m_pInfo->Set(L"UITS Payload", L"text");
    EXPECT_TRUE(Save());
    EXPECT_TRUE(m_pInfo->m_ID3v2Tag.m_bDirty);
    EXPECT_TRUE(m_pInfo->m_pUITSChunk->m_bDirty);
    EXPECT_EQ(4, m_pInfo->m_aryChunks.GetSize());
    EXPECT_EQ(static_cast<long long>(HEAD + 8), m_pInfo->m_ID3v2Tag.m_nFilePosition);
}

TEST_F(SaveTest, AFurtherSaveGoesByTheOldRecords)
{
    Open("");
    m_pInfo->Set(L"Name", L"Title");
    EXPECT_TRUE(Save());
    EXPECT_TRUE(Save());
    EXPECT_EQ("fmt dataid3 id3 ", Names(GetFile())) << "as it was opened, the file had no tag";
    EXPECT_EQ(GetRightRoot(), GetRoot());
}

TEST_F(SaveTest, InPlaceAFurtherSaveIsTheSameOnceMore)
{
    Open(TagChunk(TextFrame("TIT2", "Title"), 50) + Chunk("junk", "xy"));
    m_pInfo->Set(L"Name", L"Other");
    EXPECT_TRUE(Save());
    const std::string strOnce = GetFile();
    EXPECT_TRUE(Save());
    EXPECT_EQ(strOnce, GetFile());
}

TEST_F(SaveTest, OpenedAnewTheRecordsAreRightAgain)
{
    Open("", TagChunk(TextFrame("TIT2", "Title")));
    for (int nLength = 100; nLength <= 10000; nLength *= 10)
    {
        m_pInfo->Set(L"Name", std::wstring(static_cast<size_t>(nLength), L'x').c_str());
        EXPECT_TRUE(Save());
        m_pInfo->m_ID3v2Tag.m_bDirty = false;
        ASSERT_EQ(0, m_pInfo->Open(nullptr, true, true));
        EXPECT_EQ("fmt dataid3 ", Names(GetFile()));
        EXPECT_EQ(GetRightRoot(), GetRoot());
        EXPECT_EQ(Audio(40), GetFile().substr(44, 40));
        LyString strValue;
        EXPECT_TRUE(m_pInfo->Get(L"Name", strValue));
        EXPECT_EQ(nLength, strValue.GetLength());
    }
}
