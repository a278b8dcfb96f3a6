// A tag as bytes again: its length, its version, the order of its frames, and what is refreshed on the way.

#include "ID3v2Bytes.h"
#include "IStringHelper.h"
#include "LyCoreLib/StandInTools.h"
#include <gtest/gtest.h>

using namespace ID3v2Bytes;

namespace
{
std::string Padded(const std::string& strFrames, size_t nTotal)
{
    return strFrames + std::string(nTotal - 10 - strFrames.size(), '\0');
}

CID3v2Frame* MakeFrame(const std::string& strID, const std::string& strBody, int nVersion = 3)
{
    auto* pFrame = new CID3v2Frame;
    memcpy(pFrame->m_Header.m_ID, strID.data(), 4);
    pFrame->m_Data = Buffer(strBody);
    pFrame->SetHeaderFrameBytesFromBuffer(nVersion);
    (void)pFrame->Decode(0);
    return pFrame;
}

int Sign(int n) { return n < 0 ? -1 : n > 0; }

int Order(CID3v2Tag& tag, const std::string& strFirst, const std::string& strFirstBody, const std::string& strSecond,
          const std::string& strSecondBody)
{
    const std::unique_ptr<CID3v2Frame> first(MakeFrame(strFirst, strFirstBody));
    const std::unique_ptr<CID3v2Frame> second(MakeFrame(strSecond, strSecondBody));
    CID3v2Frame* aryFrames[] = {first.get(), second.get()};
    return tag.LyQSort_Compare(&aryFrames[0], &aryFrames[1]);
}

std::string Comment(const std::string& strDescription) { return Bytes("\0eng") + strDescription + Bytes("\0text"); }
std::string UserText(const std::string& strDescription) { return Bytes("\0") + strDescription + Bytes("\0text"); }
} // namespace

// ---- Length

TEST(ID3v2SaveLength, ATagThatShrinksKeepsItsOldLength)
{
    CID3v2Tag tag;
    const std::string strFrame = Text23("TIT2", std::string(299, 's'));
    ASSERT_TRUE(Load(tag, Tag(3, Padded(strFrame, 1000))));
    EXPECT_EQ(Save(tag), Tag(3, Padded(strFrame, 1000))) << "untouched, byte for byte";
    tag.m_aryFrames[0]->m_Data.RemoveRight(100);
    tag.m_aryFrames[0]->SetHeaderFrameBytesFromBuffer(3);
    EXPECT_EQ(Save(tag), Tag(3, Padded(Text23("TIT2", std::string(199, 's')), 1000)));
}

TEST(ID3v2SaveLength, ATagThatFitsExactlyHasNoPadding)
{
    CID3v2Tag tag;
    const std::string strTag = Tag(3, Text23("TIT2", "Song"));
    ASSERT_TRUE(Load(tag, strTag));
    EXPECT_EQ(Save(tag), strTag);
}

TEST(ID3v2SaveLength, ATagThatGrowsGoesToTheNextBlock)
{
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(3, Padded(Text23("TIT2", "Song"), 40))));
    tag.m_aryFrames.Add(MakeFrame("TALB", '\0' + std::string(100, 'a')));
    const std::string strSaved = Save(tag);
    EXPECT_EQ(strSaved.size(), 4096U);
    EXPECT_EQ(strSaved.substr(0, 10), Bytes("ID3\3\0\0") + SyncSafe(4086));
}

TEST(ID3v2SaveLength, IsCountedInBlocksOf4096)
{
    struct ROW
    {
        size_t nFrameBytes;
        size_t nSaved;
    } const aryRows[] = {{11, 4096},   {4085, 4096}, {4086, 8192}, // 4096 with the header goes one further
                         {5000, 8192}, {8181, 8192}, {8182, 12288}};
    for (const ROW& row : aryRows)
    {
        CID3v2Tag tag;
        tag.m_aryFrames.Add(MakeFrame("PRIV", std::string(row.nFrameBytes - 10, 'p')));
        const std::string strSaved = Save(tag);
        EXPECT_EQ(strSaved.size(), row.nSaved) << row.nFrameBytes;
        EXPECT_EQ(strSaved.substr(10 + row.nFrameBytes), std::string(row.nSaved - 10 - row.nFrameBytes, '\0'));
    }
}

TEST(ID3v2SaveLength, TooMuchPaddingIsCutDown)
{
    struct ROW
    {
        size_t nOldBytes;
        int nMaxPadding;
        size_t nSaved;
    };
    const std::string strFrame = Text23("TIT2", "Song"); // 15 bytes, 25 with the tag's header
    const ROW aryRows[] = {
        {0x40000 + 25, 0x40000, 0x40000 + 25}, // not more than was granted
        {0x40000 + 26, 0x40000, 4096},         // one too many
        {0x50000, 0x40000, 4096},
        {0x50000, 0, 0x50000}, // no limit
        {0x50000, -1, 0x50000},
        {200, 174, 4096},
        {200, 175, 200},
    };
    for (const ROW& row : aryRows)
    {
        CID3v2Tag tag;
        ASSERT_TRUE(Load(tag, Tag(3, Padded(strFrame, row.nOldBytes))));
        EXPECT_EQ(Save(tag, row.nMaxPadding).size(), row.nSaved) << row.nOldBytes << " " << row.nMaxPadding;
    }
}

TEST(ID3v2SaveLength, IsThatOfTheBufferNotOfTheHeader)
{
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Bytes("ID3\3\0\0") + SyncSafe(15) + Text23("TIT2", "Song") + std::string(75, '\0')));
    const std::string strSaved = Save(tag);
    EXPECT_EQ(strSaved.size(), 100U);
    EXPECT_EQ(strSaved.substr(6, 4), SyncSafe(90));
}

TEST(ID3v2SaveLength, WhatWasNoTagLeavesNoLength)
{
    CID3v2Tag tag;
    ASSERT_FALSE(Load(tag, std::string(5000, 'x')));
    EXPECT_EQ(Save(tag).size(), 4096U);
}

TEST(ID3v2SaveLength, ReplacesWhatTheBufferHeld)
{
    CID3v2Tag tag;
    LyBuffer buffer = Buffer(std::string(9000, 'x'));
    EXPECT_TRUE(tag.SaveToBuffer(buffer, 0));
    EXPECT_EQ(Content(buffer), Tag(3, std::string(4086, '\0')));
}

// ---- Header and frames

TEST(ID3v2SaveVersion, IsThreeOrFour)
{
    struct ROW
    {
        std::string strTag;
        char cVersion;
    } const aryRows[] = {
        {Tag(2, Frame22("TT2", Bytes("\0Song"))), 3},
        {Tag(3, Text23("TIT2", "Song")), 3},
        {Tag(4, Frame24("TIT2", Bytes("\0Song"))), 4},
        {Tag(5, Text23("TIT2", "Song")), 3},       // not loaded
        {Tag(4, Text23("TIT2", "Song"), 0x20), 3}, // not loaded, either
        {"", 3},
    };
    for (const ROW& row : aryRows)
    {
        CID3v2Tag tag;
        (void)Load(tag, row.strTag);
        EXPECT_EQ(Save(tag)[3], row.cVersion);
    }
}

TEST(ID3v2SaveVersion, RevisionAndFlagsBecomeZero)
{
    const std::string strFrame = Frame24("TIT2", Bytes("\0Song"));
    const std::string strTag = Bytes("ID3\4\x05\xD0") + SyncSafe(6 + strFrame.size()) + Bytes("\0\0\0\6\1\0") +
                               strFrame + std::string(10, 'F');
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, strTag));
    ASSERT_EQ(IDs(tag), "TIT2");
    const std::string strSaved = Save(tag);
    EXPECT_EQ(strSaved, Tag(4, Padded(strFrame, strTag.size())));
    EXPECT_EQ(tag.m_Header.m_nFlags, 0xD0) << "in memory the header stays as it was read";
}

TEST(ID3v2SaveFrames, Version22BecomesVersion23)
{
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(2, Frame22("ABC", "raw") + Frame22("TT2", Bytes("\0Song")))));
    const std::string strFrames = Text23("TIT2", "Song") + Frame23("ABC?", "raw");
    EXPECT_EQ(Save(tag), Tag(3, Padded(strFrames, 4096)));
}

TEST(ID3v2SaveFrames, GoBackByteForByte)
{
    // Flags, a size in plain form, a body that is packed, an unknown frame.
    const std::string strFrames =
        "TIT2" + Plain(200) + Bytes("\x40\x0B") + std::string(200, 'x') + Frame24("GEOB", "what", 0x4F);
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(4, strFrames)));
    EXPECT_EQ(Save(tag), Tag(4, strFrames));
}

TEST(ID3v2SaveFrames, AStaleSizeIsWrittenAsItIs)
{
    CID3v2Tag tag;
    tag.m_aryFrames.Add(MakeFrame("PRIV", "owner"));
    tag.m_aryFrames[0]->m_Header.SetPlainSize(0x01020304);
    EXPECT_EQ(Save(tag).substr(10, 10), Bytes("PRIV\1\2\3\4\0\0"));
}

TEST(ID3v2SaveFrames, UnsynchronisationOfTheTagIsGone)
{
    const std::string strBody = Bytes("o\0\xFF\0\xFF\xFBx");
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(3, Unsynchronized(Frame23("PRIV", strBody) + Text23("TIT2", "Song")), 0x80)));
    const std::string strSaved = Save(tag);
    CID3v2Tag again;
    ASSERT_TRUE(Load(again, strSaved));
    EXPECT_EQ(strSaved[5], 0);
    ASSERT_NE(Find(again, "PRIV"), nullptr);
    EXPECT_EQ(Content(Find(again, "PRIV")->m_Data), strBody);
}

// ---- Order

TEST(ID3v2SaveOrder, IsKnownFramesThenCommentsThenUserTextThenOpaqueFrames)
{
    CID3v2Tag tag;
    const std::string aryIDs[] = {"TIT2", "COMM", "TXXX", "GEOB"};
    for (int i = 0; i < 4; ++i)
    {
        for (int j = 0; j < 4; ++j)
        {
            const int nOrder = Order(tag, aryIDs[i], "", aryIDs[j], "");
            EXPECT_TRUE(i == j || nOrder == (i - j) * 10000) << aryIDs[i] << aryIDs[j] << nOrder;
        }
    }
    for (const char* pKnown : {"APIC", "POPM", "PCST", "WOAR", "USLT", "PRIV", "THGN"})
        EXPECT_EQ(Order(tag, pKnown, "", "COMM", ""), -10000) << pKnown;
    EXPECT_EQ(Order(tag, "WXXX", "", "COMM", ""), 20000);
}

TEST(ID3v2SaveOrder, CommentsAndUserTextGoByTheirDescriptions)
{
    CID3v2Tag tag;
    struct ROW
    {
        const char *pFirst, *pSecond;
        int nSign;
    } const aryRows[] = {{"alpha", "beta", -1}, {"beta", "alpha", 1}, {"", "alpha", -1}, {"Alpha", "beta", -1},
                         {"alpha", "Beta", -1}, {"a", "ab", -1},      {"B", "a", 1}};
    for (const ROW& row : aryRows)
    {
        EXPECT_EQ(Sign(Order(tag, "COMM", Comment(row.pFirst), "COMM", Comment(row.pSecond))), row.nSign);
        EXPECT_EQ(Sign(Order(tag, "TXXX", UserText(row.pFirst), "TXXX", UserText(row.pSecond))), row.nSign);
    }
    EXPECT_EQ(Order(tag, "TXXX", UserText("Alpha"), "TXXX", UserText("alpha")),
              -Order(tag, "TXXX", UserText("alpha"), "TXXX", UserText("Alpha")))
        << "a tie but for the case has an order, too";
}

TEST(ID3v2SaveOrder, TheStringHelperIsAsked)
{
    class Helper final : public IStringHelper
    {
    public:
        int FindNoCase(const wchar_t*, const wchar_t*, int) override { return -1; }
        int Compare(const wchar_t* pFirst, const wchar_t* pSecond, int nFlags) override
        {
            m_strAsked += Narrow(pFirst) + "<>" + Narrow(pSecond) + " " + std::to_string(nFlags);
            return 77;
        }
        std::string m_strAsked;
    };
    class Tools final : public StandInTools
    {
    public:
        IStringHelper* GetStringHelper(bool) override { return &m_Helper; }
        Helper m_Helper;
    };
    Tools tools;
    CID3v2Tag tag;
    EXPECT_EQ(Order(tag, "COMM", Comment("one"), "COMM", Comment("two")), 77);
    EXPECT_EQ(tools.m_Helper.m_strAsked, "one<>two 513"); // 201h
    tools.m_Helper.m_strAsked.clear();
    (void)Order(tag, "TIT2", "", "TALB", "");
    (void)Order(tag, "GEOB", "", "WXXX", "");
    EXPECT_EQ(tools.m_Helper.m_strAsked, "") << "for others it is not";
}

TEST(ID3v2SaveOrder, OpaqueFramesGoByTheirIDs)
{
    CID3v2Tag tag;
    EXPECT_EQ(Order(tag, "GEOB", "", "UFID", ""), 'G' - 'U');
    EXPECT_EQ(Order(tag, "UFID", "", "GEOB", ""), 'U' - 'G');
    EXPECT_EQ(Order(tag, "GEOB", "", "GEOX", ""), 'B' - 'X');
    EXPECT_EQ(Order(tag, "AB1?", "", "AB?1", ""), '1' - '?');
}

TEST(ID3v2SaveOrder, OthersGoByTheirRows)
{
    CID3v2Tag tag;
    tag.AddField(new CID3v2Field("TZZ2", L"Second", L"", 0x10000, -1));
    tag.AddField(new CID3v2Field("TZZ1", L"First", L"", 0x10000, -1));
    tag.AddField(new CID3v2Field("TZZ3", L"Unordered", L"", 0xC0000, -1));
    EXPECT_EQ(Order(tag, "TZZ2", "", "TZZ1", ""), -1);
    EXPECT_EQ(Order(tag, "TZZ1", "", "TZZ2", ""), 1);
    EXPECT_EQ(Order(tag, "TZZ1", "", "TZZ1", ""), 0);
    // A row without the flag is none.
    EXPECT_EQ(Order(tag, "TZZ1", "", "TZZ3", ""), -1);
    EXPECT_EQ(Order(tag, "TZZ3", "", "TZZ1", ""), 1);
    // Two without a row stand behind each other.
    EXPECT_EQ(Order(tag, "TZZ3", "", "TZZ4", ""), 1);
    EXPECT_EQ(Order(tag, "TZZ4", "", "TZZ3", ""), 1);
    EXPECT_EQ(Order(tag, "GEOB", "1", "GEOB", "2"), 1);
}

TEST(ID3v2SaveOrder, ADescriptionChoosesTheRowOfEqualComments)
{
    CID3v2Tag tag;
    tag.AddField(new CID3v2Field("TXXX", L"Own field", L"Own Field", 0x10000, -1));
    EXPECT_EQ(Order(tag, "TXXX", UserText("own field"), "TXXX", UserText("own field")), 0);
    EXPECT_EQ(Order(tag, "TXXX", UserText("no such row"), "TXXX", UserText("no such row")), 1);
}

TEST(ID3v2SaveOrder, StaysInTheTag)
{
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(3, Frame23("UFID", "u") + Frame23("TXXX", UserText("t")) + Frame23("COMM", Comment("c")) +
                                     Text23("TIT2", "Song"))));
    (void)Save(tag);
    EXPECT_EQ(IDs(tag), "TIT2 COMM TXXX UFID");
}

TEST(ID3v2SaveOrder, ManyFramesWithoutARowAllStay)
{
    CID3v2Tag tag;
    for (int i = 0; i < 500; ++i)
        tag.m_aryFrames.Add(MakeFrame(i % 2 ? "GEOB" : "TZZ9", Bytes("\0") + std::to_string(i)));
    CID3v2Tag again;
    ASSERT_TRUE(Load(again, Save(tag)));
    std::vector<bool> arySeen(500);
    for (const CID3v2Frame* pFrame : again.m_aryFrames)
        arySeen[static_cast<size_t>(std::stoi(Content(pFrame->m_Data).substr(1)))] = true;
    EXPECT_EQ(std::count(arySeen.begin(), arySeen.end(), true), 500);
}

// A hostile tag must not take for ever to save.
TEST(ID3v2SaveOrder, VeryManyFramesWithoutARowAreNotComparedEachWithEachOther)
{
    class CountingTag : public CID3v2Tag
    {
    public:
        int LyQSort_Compare(CID3v2Frame** ppFirst, CID3v2Frame** ppSecond) override
        {
            ++m_nCompared;
            return CID3v2Tag::LyQSort_Compare(ppFirst, ppSecond);
        }
        long long m_nCompared = 0;
    };
    constexpr int FRAMES = 5000;
    for (const char* pID : {"GEOB", "TZZ9", "TXXX", "TIT2"})
    {
        CountingTag tag;
        for (int i = 0; i < FRAMES; ++i)
            tag.m_aryFrames.Add(MakeFrame(pID, Bytes("\0d\0") + std::to_string(i)));
        (void)Save(tag);
        EXPECT_LT(tag.m_nCompared, 40 * FRAMES) << pID;
        EXPECT_EQ(tag.m_aryFrames.GetSize(), FRAMES);
        for (int i = 0; i < FRAMES && pID[1] != 'I'; ++i)
            ASSERT_EQ(Content(tag.m_aryFrames[i]->m_Data), Bytes("\0d\0") + std::to_string(i)) << "in their order";
    }
}

// ---- Podcast fields

namespace
{
const wchar_t* const s_aryPodcast[] = {
    L"!@#$% iTunes Podcast Description !@#$%", L"!@#$% iTunes Podcast Feed URL !@#$%",
    L"!@#$% iTunes Podcast Episode URL !@#$%", L"!@#$% iTunes Podcast Flag !@#$%", L"!@#$% iTunes Podcast Date !@#$%"};
} // namespace

TEST(ID3v2SavePodcast, AFeedURLBringsTheFiveFields)
{
    for (const int nVersion : {3, 4})
    {
        CID3v2Tag tag;
        ASSERT_TRUE(Load(tag, Tag(nVersion, std::string(2000, '\0'))));
        ASSERT_TRUE(tag.Set(L"Feed URL", L"http://feed/"));
        ASSERT_TRUE(tag.Set(L"Comment", L"About it"));
        ASSERT_TRUE(tag.Set(L"Episode URL", L"http://episode/"));
        const std::string strSaved = Save(tag);
        CID3v2Tag again;
        ASSERT_TRUE(Load(again, strSaved));
        EXPECT_EQ(again.GetSimple(s_aryPodcast[0], 0), L"About it");
        EXPECT_EQ(again.GetSimple(s_aryPodcast[1], 0), L"http://feed/");
        EXPECT_EQ(again.GetSimple(s_aryPodcast[2], 0), L"http://episode/");
        EXPECT_EQ(again.GetSimple(s_aryPodcast[3], 0), L"0");
        EXPECT_TRUE(again.GetSimple(s_aryPodcast[4], 0).IsEmpty()) << "no date, no date";
        const int nFrames = again.m_aryFrames.GetSize();
        EXPECT_EQ(Save(again), strSaved) << "the second save changes nothing";
        EXPECT_EQ(again.m_aryFrames.GetSize(), nFrames);
        EXPECT_TRUE(again.m_bDirty) << "but has set the fields";
    }
}

TEST(ID3v2SavePodcast, WithoutOneTheFiveFieldsGo)
{
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(4, std::string(2000, '\0'))));
    ASSERT_TRUE(tag.Set(L"Feed URL", L"http://feed/"));
    ASSERT_TRUE(tag.Set(L"Comment", L"About it"));
    (void)Save(tag);
    ASSERT_FALSE(tag.GetSimple(s_aryPodcast[0], 0).IsEmpty());
    (void)tag.Set(L"Feed URL", L""); // false: nothing was written
    tag.m_bDirty = false;
    (void)Save(tag);
    for (const wchar_t* pName : s_aryPodcast)
        EXPECT_TRUE(tag.GetSimple(pName, 0).IsEmpty()) << Narrow(pName);
    EXPECT_TRUE(tag.m_bDirty);
    EXPECT_EQ(tag.GetSimple(L"Comment", 0), L"About it");
}

TEST(ID3v2SavePodcast, ATagWithoutAnyStaysClean)
{
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(3, Text23("TIT2", "Song"))));
    (void)Save(tag);
    EXPECT_FALSE(tag.m_bDirty);
}
