// The walk over the frames: where it ends, what each version's headers mean, and what is undone on the way.

#include "ID3v2Bytes.h"
#include <climits>
#include <gtest/gtest.h>

using namespace ID3v2Bytes;

namespace
{
const std::string s_strTitle = Text23("TIT2", "Song");
const std::string s_strAlbum = Text23("TALB", "Album");

std::string LoadedIDs(const std::string& strTag)
{
    CID3v2Tag tag;
    EXPECT_TRUE(Load(tag, strTag));
    return IDs(tag);
}

std::string SizeField(const CID3v2Frame& frame)
{
    return std::string(reinterpret_cast<const char*>(frame.m_Header.m_Size), 4);
}
} // namespace

// ---- Where the walk ends

TEST(ID3v2LoadFrames, KeepsTheOrderOfTheFile)
{
    EXPECT_EQ(LoadedIDs(Tag(3, s_strTitle + s_strAlbum + s_strTitle)), "TIT2 TALB TIT2");
}

TEST(ID3v2LoadFrames, EndsAtPadding)
{
    EXPECT_EQ(LoadedIDs(Tag(3, s_strTitle + std::string(100, '\0'))), "TIT2");
    EXPECT_EQ(LoadedIDs(Tag(3, s_strTitle + std::string(50, '\0') + "x" + std::string(50, '\0'))), "TIT2");
    EXPECT_EQ(LoadedIDs(Tag(3, std::string(100, '\0'))), "");
    EXPECT_EQ(LoadedIDs(Tag(3, s_strTitle + std::string(10, '\0') + s_strAlbum)), "TIT2")
        << "what stands behind padding is not looked for";
}

TEST(ID3v2LoadFrames, EndsAtADamagedFrameAndKeepsWhatCameBefore)
{
    struct ROW
    {
        const char* pName;
        std::string strBad;
    } const aryRows[] = {
        {"lower case id", Text23("talb", "Album")},
        {"size beyond the end", "TALB" + Plain(1000) + Bytes("\0\0\0Album")},
        {"size one too large", "TALB" + Plain(7) + Bytes("\0\0\0Album")},
        {"largest size", "TALB\x7F\xFF\xFF\xFF" + Bytes("\0\0\0Album")},
        {"size with the top bit", "TALB" + Bytes("\x80\0\0\0\0\0\0Album")},
        {"all bits", "TALB\xFF\xFF\xFF\xFF" + Bytes("\0\0\0Album")},
        {"header cut short", Bytes("TALB\0\0\0\0\0")},
    };
    for (const ROW& row : aryRows)
    {
        EXPECT_EQ(LoadedIDs(Tag(3, s_strTitle + row.strBad)), "TIT2") << row.pName;
        EXPECT_EQ(LoadedIDs(Tag(4, s_strTitle + row.strBad)), "TIT2") << row.pName;
    }
}

TEST(ID3v2LoadFrames, ABodyMayEndWithTheBuffer)
{
    EXPECT_EQ(LoadedIDs(Tag(3, s_strTitle + Frame23("TALB", ""))), "TIT2 TALB") << "and may be empty";
}

TEST(ID3v2LoadFrames, WalksToTheBuffersEndWhateverTheHeaderSays)
{
    const std::string strTag = Bytes("ID3\3\0\0") + SyncSafe(3) + s_strTitle + s_strAlbum;
    EXPECT_EQ(LoadedIDs(strTag), "TIT2 TALB");
}

TEST(ID3v2LoadFrames, AreAlwaysLoadedFromAPositionToTheEnd)
{
    CID3v2Tag tag;
    tag.m_Header.m_nMajorVersion = 3;
    const LyBuffer buffer = Buffer("xyz" + s_strTitle + s_strAlbum + "padd");
    int nPos = 3;
    EXPECT_TRUE(tag.LoadFrames(buffer, nPos));
    EXPECT_EQ(IDs(tag), "TIT2 TALB");
    EXPECT_EQ(nPos, buffer.GetSize() - 4);
    for (const int nStart : {-1, INT_MIN, INT_MAX, buffer.GetSize()})
    {
        nPos = nStart;
        EXPECT_TRUE(tag.LoadFrames(buffer, nPos));
        EXPECT_EQ(nPos, nStart);
    }
    EXPECT_EQ(tag.m_aryFrames.GetSize(), 2);
}

TEST(ID3v2LoadFrames, AnOpaqueFrameIsKept)
{
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(3, Frame23("UFID", std::string("owner\0id", 8)) + Frame23("X?9Z", "what") + s_strTitle)));
    ASSERT_EQ(IDs(tag), "UFID X?9Z TIT2");
    EXPECT_EQ(Content(tag.m_aryFrames[1]->m_Data), "what");
    EXPECT_EQ(tag.m_aryFrames[1]->m_Properties.m_pProperties, nullptr);
}

TEST(ID3v2LoadFrames, AHeaderIsKeptAsItIs)
{
    const std::string strFrame = "PRIV" + Plain(3) + "\xE0\xC1" + "abc";
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(3, strFrame)));
    ASSERT_EQ(IDs(tag), "PRIV");
    EXPECT_EQ(memcmp(&tag.m_aryFrames[0]->m_Header, strFrame.data(), 10), 0);
}

TEST(ID3v2LoadFrames, NoBufferIsLargerThanTheTag)
{
    // A thousand frames that each claim as much as there could be.
    std::string strFrames;
    for (int i = 0; i < 1000; ++i)
        strFrames += Frame23("TIT2", Bytes("\0x"), 0x0B);
    const std::string strTag = Tag(3, strFrames + "TIT2\x7F\xFF\xFF\xFF" + Bytes("\0\0x"), 0x80);
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, strTag));
    long long nAllocated = 0;
    for (const CID3v2Frame* pFrame : tag.m_aryFrames)
        nAllocated += pFrame->m_Data.GetAllocated();
    EXPECT_LE(nAllocated, static_cast<long long>(strTag.size()));
}

// ---- Version 2.2

TEST(ID3v2Load22, NamesAreMapped)
{
    const std::pair<const char*, const char*> aryRows[] = {
        {"TAL", "TALB"},
        {"TP1", "TPE1"},
        {"TP2", "TPE2"},
        {"TRK", "TRCK"},
        {"TYE", "TYER"},
        {"TT1", "TIT1"},
        {"TT2", "TIT2"},
        {"COM", "COMM"},
        {"TCM", "TCOM"},
        {"TEN", "TENC"},
        {"TXX", "TXXX"},
        {"PIC", "APIC"},
        {"TCO", "TCON"},
        {"TPA", "TPOS"},
        {"TSA", "TSOA"},
        {"TSP", "TSOP"},
        {"TCP", "TCMP"},
        {"UFI", "UFID"},
        // The rest keep their letters.
        {"TP3", "TP3?"},
        {"TBP", "TBP?"},
        {"ULT", "ULT?"},
        {"WAR", "WAR?"},
        {"POP", "POP?"},
        {"ZZZ", "ZZZ?"},
        {"A9?", "A9??"},
    };
    for (const auto& [pOld, pNew] : aryRows)
        EXPECT_EQ(LoadedIDs(Tag(2, Frame22(pOld, Bytes("\0abc")))), pNew);
}

TEST(ID3v2Load22, HeadersHaveSixBytesAndGetTen)
{
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(2, Frame22("TT2", '\0' + std::string(300, 's')) + Frame22("ABC", "raw"))));
    ASSERT_EQ(IDs(tag), "TIT2 ABC?");
    const CID3v2Frame& frame = *tag.m_aryFrames[0];
    EXPECT_EQ(SizeField(frame), Bytes("\0\0\x01\x2D"));
    EXPECT_EQ(frame.m_Header.m_Flags[0], 0);
    EXPECT_EQ(frame.m_Header.m_Flags[1], 0);
    EXPECT_EQ(Value(frame), std::string(300, 's'));
    EXPECT_EQ(Content(tag.m_aryFrames[1]->m_Data), "raw");
}

TEST(ID3v2Load22, AnUnknownTextFrameIsStillText)
{
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(2, Frame22("TP3", Bytes("\0Baton")))));
    EXPECT_EQ(Value(*tag.m_aryFrames[0]), "Baton");
}

TEST(ID3v2Load22, EndsAtAnInvalidID)
{
    EXPECT_EQ(LoadedIDs(Tag(2, Frame22("TT2", Bytes("\0a")) + Frame22("tal", Bytes("\0a")))), "TIT2");
    EXPECT_EQ(LoadedIDs(Tag(2, Frame22("TT2", Bytes("\0a")) + std::string(20, '\0'))), "TIT2");
    EXPECT_EQ(LoadedIDs(Tag(2, Frame22("TT2", Bytes("\0a")) + "TAL\xFF\xFF\xFF")), "TIT2");
}

TEST(ID3v2Load22, APictureLosesWhatItsOtherLayoutHides)
{
    const std::string strImage = Bytes("\xFF\xD8\xFF\xE0\0\x10JFIF");
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(2, Frame22("PIC", Bytes("\0JPG\3Cover\0") + strImage))));
    ASSERT_EQ(IDs(tag), "APIC");
    const CID3v2Frame& frame = *tag.m_aryFrames[0];
    // Format, type and description have become the mime type, and the image's first byte the picture type.
    EXPECT_EQ(Property(frame, L"Mime Type"), "JPG\3Cover");
    EXPECT_EQ(Property(frame, L"Picture Type"), "255");
    EXPECT_EQ(Property(frame, L"Description"), "Picture");
    EXPECT_EQ(Value(frame), "EEpGSUY="); // 10h "JFIF": behind the first zero byte of the image
    EXPECT_EQ(Content(frame.m_Data), Bytes("\0JPG\3Cover\0\xFFPicture\0\x10JFIF"));
    EXPECT_EQ(SizeField(frame), Plain(Content(frame.m_Data).size()));
}

TEST(ID3v2Load22, APictureOfNothingGetsABody)
{
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(2, Frame22("PIC", ""))));
    EXPECT_EQ(Content(tag.m_aryFrames[0]->m_Data), Bytes("\0\0\3Picture\0"));
    EXPECT_EQ(SizeField(*tag.m_aryFrames[0]), Plain(11));
}

// ---- Sizes of version 2.4

namespace
{
std::string Frame24Plain(const std::string& strID, size_t nBytes)
{
    return strID + Plain(nBytes) + Bytes("\0\0") + '\0' + std::string(nBytes - 1, 's');
}
} // namespace

TEST(ID3v2Load24, SizesAreSyncSafe)
{
    const std::string strLong(20'000, 'l');
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(4, Frame24("TIT2", '\0' + strLong) + Frame24("TALB", Bytes("\0Album")))));
    ASSERT_EQ(IDs(tag), "TIT2 TALB");
    EXPECT_EQ(Value(*tag.m_aryFrames[0]), strLong);
}

TEST(ID3v2Load24, PlainSizesAreTakenIfAByteTellsThem)
{
    for (const size_t nBytes : {128U, 200U, 255U, 384U, 33'000U})
    {
        CID3v2Tag tag;
        ASSERT_TRUE(Load(tag, Tag(4, Frame24Plain("TIT2", nBytes) + Frame24("TALB", Bytes("\0Album")))));
        ASSERT_EQ(IDs(tag), "TIT2 TALB") << nBytes;
        EXPECT_EQ(Value(*tag.m_aryFrames[0]), std::string(nBytes - 1, 's'));
        EXPECT_EQ(SizeField(*tag.m_aryFrames[0]), Plain(nBytes)) << "and stay as they came";
    }
}

TEST(ID3v2Load24, SizesBelow128AreTheSameEitherWay)
{
    EXPECT_EQ(LoadedIDs(Tag(4, Frame24Plain("TIT2", 127) + Frame24("TALB", Bytes("\0Album")))), "TIT2 TALB");
}

TEST(ID3v2Load24, APlainSizeThatLooksSyncSafeEndsTheWalk)
{
    // 256 reads as 128, behind which there is only text.
    EXPECT_EQ(LoadedIDs(Tag(4, Frame24Plain("TIT2", 256) + Frame24("TALB", Bytes("\0Album")))), "TIT2");
}

TEST(ID3v2Load23, SizesArePlainWhateverTheirBits)
{
    EXPECT_EQ(LoadedIDs(Tag(3, Frame23("TIT2", '\0' + std::string(255, 's')) + s_strAlbum)), "TIT2 TALB");
}

// ---- Unsynchronisation of the whole tag

namespace
{
const std::string s_strHardBody = Bytes("o\0\xFF\0\xFF\xFB\0\xFF\xE0");

// In the tag, and as it was before.
void ExpectPrivate(const std::string& strTag, const std::string& strSize, const char* pIDs = "PRIV TIT2")
{
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, strTag));
    ASSERT_EQ(IDs(tag), pIDs);
    EXPECT_EQ(Content(tag.m_aryFrames[0]->m_Data), s_strHardBody);
    EXPECT_EQ(SizeField(*tag.m_aryFrames[0]), strSize);
    EXPECT_EQ(tag.m_aryFrames[0]->m_Header.m_Flags[1], 0) << "it is in plain form now";
}
} // namespace

TEST(ID3v2LoadUnsynchronized, SizesFromBeforeAreTold)
{
    for (const int nVersion : {3, 4})
    {
        const std::string strFrames = Frame23("PRIV", s_strHardBody) + s_strTitle;
        ExpectPrivate(Tag(nVersion, Unsynchronized(strFrames), 0x80), Plain(s_strHardBody.size()));
        ExpectPrivate(Tag(nVersion, Unsynchronized(strFrames) + std::string(30, '\0'), 0x80),
                      Plain(s_strHardBody.size()));
    }
}

TEST(ID3v2LoadUnsynchronized, SizesFromAfterwardsAreTold)
{
    const std::string strBody = Unsynchronized(s_strHardBody);
    ASSERT_EQ(strBody.size(), s_strHardBody.size() + 3);
    ExpectPrivate(Tag(3, Frame23("PRIV", strBody) + s_strTitle, 0x80), Plain(s_strHardBody.size()));
    ExpectPrivate(Tag(4, Frame24("PRIV", strBody, 0x02) + s_strTitle, 0x80), SyncSafe(s_strHardBody.size()));
    ExpectPrivate(Tag(4, Frame24("PRIV", strBody, 0x02) + std::string(10, '\0'), 0x80), SyncSafe(s_strHardBody.size()),
                  "PRIV");
    ExpectPrivate(Tag(4, Frame24("PRIV", strBody, 0x02), 0x80), SyncSafe(s_strHardBody.size()), "PRIV");
}

TEST(ID3v2LoadUnsynchronized, ALongFrameGetsTheSizeOfItsVersion)
{
    std::string strBody = Bytes("o\0");
    for (int i = 0; i < 200; ++i)
        strBody += Bytes("\xFF\0");
    for (const int nVersion : {3, 4})
    {
        const std::string strStuffed = Unsynchronized(strBody);
        const std::string strFrame = nVersion == 3 ? Frame23("PRIV", strStuffed) : Frame24("PRIV", strStuffed, 0x02);
        CID3v2Tag tag;
        ASSERT_TRUE(Load(tag, Tag(nVersion, strFrame + s_strTitle, 0x80)));
        ASSERT_EQ(IDs(tag), "PRIV TIT2");
        EXPECT_EQ(Content(tag.m_aryFrames[0]->m_Data), strBody);
        EXPECT_EQ(SizeField(*tag.m_aryFrames[0]), nVersion == 3 ? Plain(402) : SyncSafe(402));
    }
}

TEST(ID3v2LoadUnsynchronized, ALastFrameWithLittleBehindItIsTakenAsItsSizeSays)
{
    // Nothing tells that the size is from before, so the last byte is cut off and is no frame.
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(3, Unsynchronized(Frame23("PRIV", Bytes("o\0\xFF\0ab"))), 0x80)));
    ASSERT_EQ(IDs(tag), "PRIV");
    EXPECT_EQ(Content(tag.m_aryFrames[0]->m_Data), Bytes("o\0\xFF\0a"));
    EXPECT_EQ(SizeField(*tag.m_aryFrames[0]), Plain(5));
}

TEST(ID3v2LoadUnsynchronized, ABodyThatRunsIntoTheEndIsWhatThereIs)
{
    // Thirty bytes are there, of which fifteen go. What follows the first twenty is no frame.
    std::string strRest;
    for (int i = 0; i < 15; ++i)
        strRest += Bytes("\xFF\0");
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(3, "PRIV" + Plain(20) + Bytes("\0\0") + strRest, 0x80)));
    ASSERT_EQ(IDs(tag), "PRIV");
    EXPECT_EQ(Content(tag.m_aryFrames[0]->m_Data), std::string(15, '\xFF'));
    EXPECT_EQ(SizeField(*tag.m_aryFrames[0]), Plain(15));
}

TEST(ID3v2LoadUnsynchronized, AZeroByteBehindTheSizeLooksLikePadding)
{
    // With the size from before, the tenth byte of the next header would be needed to tell. The body is cut.
    const std::string strFrames = Frame23("PRIV", Bytes("o\0\xFF\0\xFF\xFB")) + s_strTitle;
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(3, Unsynchronized(strFrames), 0x80)));
    EXPECT_EQ(Content(tag.m_aryFrames[0]->m_Data), Bytes("o\0\xFF\0\xFF"));
    EXPECT_EQ(IDs(tag), "PRIV") << "and what follows is not found";
}

TEST(ID3v2LoadUnsynchronized, WithoutTheFlagNothingIsRemoved)
{
    CID3v2Tag tag;
    const std::string strBody = Unsynchronized(s_strHardBody);
    ASSERT_TRUE(Load(tag, Tag(4, Frame24("PRIV", strBody, 0x02) + s_strTitle)));
    EXPECT_EQ(Content(tag.m_aryFrames[0]->m_Data), strBody);
    EXPECT_EQ(tag.m_aryFrames[0]->m_Header.m_Flags[1], 0x02) << "the frame's own is undone for decoding only";
    EXPECT_EQ(Value(*tag.m_aryFrames[0]), "/wD/+wD/4A==");
}

TEST(ID3v2LoadUnsynchronized, Version22LooksTenBytesAhead)
{
    // Six bytes of header are no four letters: the size counts as that from before, and that is right here.
    const std::string strFrames =
        Frame22("TT2", Bytes("\0a\xFF\0b")) + Frame22("TAL", Bytes("\0Album")) + std::string(20, '\0');
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(2, Unsynchronized(strFrames), 0x80)));
    ASSERT_EQ(IDs(tag), "TIT2 TALB");
    EXPECT_EQ(Content(tag.m_aryFrames[0]->m_Data), Bytes("\0a\xFF\0b"));
    EXPECT_EQ(Value(*tag.m_aryFrames[1]), "Album");
}
