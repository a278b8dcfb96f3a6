// Reading, frame by frame as TagLib reads the same bytes. Where the two are meant to differ, a test says how.

#include "ID3v2Corpus.h"
#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include <gtest/gtest.h>
#include <zlib.h>

using namespace ID3v2Judge;

namespace
{
std::string Frames(const std::string& strTag) { return strTag.substr(10); }

void ExpectSame(const std::string& strTag, size_t nMinFrames = 1)
{
    const LINES lines = TagLibLines(strTag);
    EXPECT_GE(lines.size(), nMinFrames);
    EXPECT_EQ(OwnLines(strTag), lines);
}

class ID3v2TagLib : public testing::Test
{
protected:
    ID3v2TagLib()
    {
        LyString strFolder;
        strFolder.FromUTF8(reinterpret_cast<const unsigned char*>(RONDEL_BIN_DIR "/"));
        GetProcessInfo(true)->SetSharedLibraryPath(strFolder);
    }
    ~ID3v2TagLib() override { g_LySharedToolsHelper.UnloadLySharedLibs(false); }
};
} // namespace

// ---- The same

TEST_F(ID3v2TagLib, ReadsTheSameFrames)
{
    EXPECT_EQ(ID3v2Corpus::Get().size(), 58U);
    for (const std::string& strTag : ID3v2Corpus::Get())
        ExpectSame(strTag, 18);
}

TEST_F(ID3v2TagLib, ReadsTheSameUnderUnsynchronisationOfTheWholeTag)
{
    int nTags = 0;
    for (const std::string& strTag : ID3v2Corpus::Get())
    {
        // Sizes of version 2.3 are those from before. In UTF-16 that cannot be told: see below.
        if (strTag[3] != 3 || strTag.find("\xFF\xFE") != std::string::npos)
            continue;
        ExpectSame(Tag(3, Unsynchronized(Frames(strTag)), 0x80), 18);
        ++nTags;
    }
    EXPECT_EQ(nTags, 5);
}

namespace
{
// The frames of a tag of version 2.4, each changed by change(id, flags, body).
template <class CHANGE>
std::string ChangeFrames(const std::string& strTag, CHANGE change)
{
    CID3v2Tag tag;
    EXPECT_TRUE(Load(tag, strTag));
    std::string strFrames;
    for (const CID3v2Frame* pFrame : tag.m_aryFrames)
        strFrames += change(ID(*pFrame), Content(pFrame->m_Data));
    return strFrames + std::string(20, '\0');
}
} // namespace

TEST_F(ID3v2TagLib, ReadsTheSameUnderUnsynchronisationOfEachFrame)
{
    auto Change = [](const std::string& strID, const std::string& strBody)
    { return Frame24(strID, Unsynchronized(strBody), 0x02); };
    auto ChangeWithLength = [](const std::string& strID, const std::string& strBody)
    { return Frame24(strID, SyncSafe(strBody.size()) + Unsynchronized(strBody), 0x03); };
    for (const std::string& strTag : ID3v2Corpus::Get())
    {
        if (strTag[3] != 4)
            continue;
        ExpectSame(Tag(4, ChangeFrames(strTag, Change)), 18);
        ExpectSame(Tag(4, ChangeFrames(strTag, Change), 0x80), 18); // the tag says that all its frames are
        const std::string strLength = ChangeFrames(strTag, ChangeWithLength);
        LINES lines = TagLibLines(Tag(4, strLength));
        LINES own = OwnLines(Tag(4, strLength));
        // Of a private frame with a length in front the value is counted from the length: see TestID3v2Frame.
        std::erase_if(lines, [](const std::string& str) { return str.starts_with("PRIV"); });
        std::erase_if(own, [](const std::string& str) { return str.starts_with("PRIV"); });
        EXPECT_EQ(own, lines);
    }
}

TEST_F(ID3v2TagLib, ReadsTheSameBehindAnExtendedHeaderOfVersion24)
{
    for (const std::string& strTag : ID3v2Corpus::Get())
    {
        if (strTag[3] == 4)
            ExpectSame(Tag(4, Bytes("\0\0\0\x06\x01\x00") + Frames(strTag), 0x40), 18);
    }
}

TEST_F(ID3v2TagLib, ReadsTheSamePlainSizesInVersion24)
{
    auto Change = [](const std::string& strID, const std::string& strBody) { return Frame23(strID, strBody); };
    TagLib::ID3v2::Tag tag;
    ID3v2Corpus::AddTexts(tag, std::string(200, 'x'), TagLib::String::Latin1); // sizes of 201, whose top bit tells
    ExpectSame(Tag(4, ChangeFrames(Rendered(tag, 4), Change)), 11);
}

TEST_F(ID3v2TagLib, ReadsTheSameOfVersion22)
{
    const std::string strFrames = Frame22("TT2", Bytes("\0Song")) + Frame22("TP1", Bytes("\1\xFF\xFE\xAC\x20")) +
                                  Frame22("TAL", Bytes("\0A\0B")) + Frame22("TRK", Bytes("\0003/12")) +
                                  Frame22("TT1", Bytes("\0Group")) + Frame22("TCM", Bytes("\0Composer")) +
                                  Frame22("TEN", Bytes("\0Encoder")) + Frame22("TXX", Bytes("\0Mood\0Calm")) +
                                  Frame22("COM", Bytes("\0engShort\0Long")) + Frame22("TPA", Bytes("\0001/2")) +
                                  Frame22("TSA", Bytes("\0Sort")) + Frame22("TSP", Bytes("\0Sort")) +
                                  Frame22("TCP", Bytes("\0001")) + Frame22("UFI", Bytes("http://a\0id"));
    ExpectSame(Tag(2, strFrames + std::string(30, '\0')), 14);
}

TEST_F(ID3v2TagLib, ReadsTheSameImageWithoutADescription)
{
    // TagLib takes what follows for a description, up to the first zero byte.
    const std::string strTag = Tag(3, Frame23("APIC", Bytes("\0image/jpeg\0\3\xFF\xD8\xFF\xE0\0\x10JFIF")));
    EXPECT_EQ(OwnLines(strTag), LINES{"APIC | image/jpeg | 3 |  | /9j/4AAQSkZJRg=="});
    EXPECT_NE(TagLibLines(strTag), OwnLines(strTag));
}

// ---- Meant to differ

TEST_F(ID3v2TagLib, DiffersInDatesWhichAreNotTranslated)
{
    const std::string strTag = Tag(3, Text23("TYER", "2001") + Text23("TORY", "1999") + std::string(20, '\0'));
    EXPECT_EQ(OwnLines(strTag), (LINES{"TYER | 2001", "TORY | 1999"}));
    EXPECT_EQ(TagLibLines(strTag), (LINES{"TDRC | 2001", "TDOR | 1999"}));
}

TEST_F(ID3v2TagLib, DiffersInGenresWhichStayAsTheyAre)
{
    const std::string strTag = Tag(3, Text23("TCON", "(17)") + std::string(20, '\0'));
    EXPECT_EQ(OwnLines(strTag), LINES{"TCON | (17)"});
    EXPECT_EQ(TagLibLines(strTag), LINES{"TCON | 17"});
}

TEST_F(ID3v2TagLib, DiffersInFramesOfVersion22WithoutAName)
{
    const std::string strTag = Tag(2, Frame22("TP3", Bytes("\0Baton")) + std::string(20, '\0'));
    EXPECT_EQ(OwnLines(strTag), LINES{"TP3? | Baton"});
    EXPECT_EQ(TagLibLines(strTag), LINES{"TPE3 | Baton"});
}

TEST_F(ID3v2TagLib, DiffersInPicturesOfVersion22)
{
    const std::string strTag =
        Tag(2, Frame22("PIC", Bytes("\0JPG\3\0\xFF\xD8\xFF\xE0\0\x10JFIF")) + std::string(20, '\0'));
    EXPECT_EQ(OwnLines(strTag), LINES{"APIC | JPG\3 | 255 | Picture | EEpGSUY="});
    EXPECT_EQ(TagLibLines(strTag), LINES{"APIC | image/jpeg | 3 |  | /9j/4AAQSkZJRg=="});
}

TEST_F(ID3v2TagLib, DiffersInTheExtendedHeaderOfVersion23)
{
    const std::string strTag =
        Tag(3, Bytes("\0\0\0\6\0\0\0\0\0\0") + Text23("TIT2", "Song") + std::string(20, '\0'), 0x40);
    EXPECT_EQ(OwnLines(strTag), LINES{});
}

TEST_F(ID3v2TagLib, DiffersInEmptyFramesWhichAreKept)
{
    const std::string strTag = Tag(4, Frame24("TIT2", "") + Frame24("TALB", Bytes("\0Album")) + std::string(20, '\0'));
    EXPECT_EQ(OwnLines(strTag), (LINES{"TIT2 | ", "TALB | Album"}));
    EXPECT_NE(TagLibLines(strTag), OwnLines(strTag));
}

TEST_F(ID3v2TagLib, DiffersInUnsynchronizedWideTextOfVersion23)
{
    // The zero byte in which the text ends is pushed behind the frame's size, and looks like padding there.
    const std::string strFrames =
        Frame23("TIT2", Bytes("\1\xFF\xFES\0o\0")) + Text23("TALB", "Album") + std::string(20, '\0');
    const std::string strTag = Tag(3, Unsynchronized(strFrames), 0x80);
    EXPECT_EQ(OwnLines(strTag), LINES{"TIT2 | S"});
    EXPECT_EQ(TagLibLines(strTag), (LINES{"TIT2 | So", "TALB | Album"}));
}

TEST_F(ID3v2TagLib, DiffersInCompression)
{
    const std::string strBody = Bytes("\0A song of five words");
    uLongf nBytes = 200;
    std::string strPacked(nBytes, 0);
    ASSERT_EQ(compress(reinterpret_cast<Bytef*>(strPacked.data()), &nBytes,
                       reinterpret_cast<const Bytef*>(strBody.data()), strBody.size()),
              Z_OK);
    strPacked.resize(nBytes);
    const LINES song = {"TIT2 | A song of five words"};
    // The flag alone: a frame is inflated as it lies there.
    const std::string strAlone = Tag(4, Frame24("TIT2", strPacked, 0x08) + std::string(20, '\0'));
    EXPECT_EQ(OwnLines(strAlone), song);
    EXPECT_NE(TagLibLines(strAlone), song);
    // With the length that version 2.4 wants in front, it stays packed.
    const std::string strLength =
        Tag(4, Frame24("TIT2", SyncSafe(strBody.size()) + strPacked, 0x09) + std::string(20, '\0'));
    EXPECT_NE(OwnLines(strLength), song);
    EXPECT_EQ(TagLibLines(strLength), song);
    // And so it does in version 2.3, whose flag is another one.
    const std::string strOld =
        Tag(3, Frame23("TIT2", Plain(strBody.size()) + strPacked, '\x80') + std::string(20, '\0'));
    EXPECT_NE(OwnLines(strOld), song);
    EXPECT_EQ(TagLibLines(strOld), song);
}

TEST_F(ID3v2TagLib, DiffersInTextBeyondTheFirstPlane)
{
    // U+1F60A: three bytes are the most that UTF-8 has here, and a pair of UTF-16 stays two characters.
    const std::string strUTF8 = Tag(4, Frame24("TIT2", "\3\xF0\x9F\x98\x8A") + std::string(20, '\0'));
    EXPECT_NE(OwnLines(strUTF8), LINES{"TIT2 | \xF0\x9F\x98\x8A"});
    EXPECT_EQ(TagLibLines(strUTF8), LINES{"TIT2 | \xF0\x9F\x98\x8A"});
    const std::string strUTF16 = Tag(4, Frame24("TIT2", "\1\xFF\xFE\x3D\xD8\x0A\xDE") + std::string(20, '\0'));
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, strUTF16));
    EXPECT_EQ(tag.m_aryFrames[0]->m_Properties.GetProperty(L"Value").GetLength(), 2);
}
