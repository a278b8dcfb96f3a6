#include "Dac32.h"
#include "FakeDisc.h"
#include "SCSICDTextDetails.h"
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

typedef std::vector<unsigned char> BYTES;

// Packs under construction. A text is given with its zeros; what is missing from twelve bytes is filled with zeros.
class Packs
{
public:
    Packs& Add(int nType, int nTrack, const std::string& strText, int nBlock = 0)
    {
        unsigned char pack[18] = {};
        pack[0] = static_cast<unsigned char>(nType);
        pack[1] = static_cast<unsigned char>(nTrack);
        pack[2] = 0xEE; // sequence number and CRC are not looked at
        pack[3] = static_cast<unsigned char>(nBlock << 4 | 0x05);
        EXPECT_LE(strText.size(), 12U);
        memcpy(pack + 4, strText.data(), std::min<size_t>(strText.size(), 12));
        pack[16] = pack[17] = 0xEE;
        m_Bytes.insert(m_Bytes.end(), pack, pack + sizeof pack);
        return *this;
    }

    BYTES Answer() const
    {
        BYTES answer(4);
        MMCPut16(answer.data(), static_cast<unsigned int>(m_Bytes.size()) + 2);
        answer.insert(answer.end(), m_Bytes.begin(), m_Bytes.end());
        return answer;
    }

    BYTES m_Bytes;
};

// What the decoder finds in some packs.
class Decoded
{
public:
    explicit Decoded(const Packs& packs)
    {
        CDTextDecoder decoder({m_strTitle, m_strPerformer, m_Titles, m_Performers});
        decoder.Decode(packs.m_Bytes.data(), static_cast<int>(packs.m_Bytes.size() / 18));
    }

    std::vector<std::wstring> Titles() const { return List(m_Titles); }
    std::vector<std::wstring> Performers() const { return List(m_Performers); }

    LyString m_strTitle = L"(none)";
    LyString m_strPerformer = L"(none)";
    LyStringArray m_Titles;
    LyStringArray m_Performers;

private:
    static std::vector<std::wstring> List(const LyStringArray& strings)
    {
        std::vector<std::wstring> list;
        for (int i = 0; i < strings.GetSize(); i++)
            list.push_back(static_cast<const wchar_t*>(strings[i]));
        return list;
    }
};

typedef std::vector<std::wstring> LIST;

static std::string Text(const char* pText, size_t nBytes) { return std::string(pText, nBytes); }

TEST(CDTextDecoder, TwoWordsInAPackBelongToTwoTracks)
{
    Decoded text(Packs().Add(0x80, 3, Text("One\0Two", 7)));
    EXPECT_EQ((LIST{L"", L"", L"One", L"Two"}), text.Titles());
    EXPECT_EQ(LIST(), text.Performers());
    EXPECT_STREQ(L"(none)", text.m_strTitle);
}

TEST(CDTextDecoder, TitleOf30CharactersRunsOverThreePacks)
{
    Packs packs;
    packs.Add(0x80, 1, "abcdefghijkl").Add(0x80, 1, "mnopqrstuvwx").Add(0x80, 1, "yz0123");
    EXPECT_EQ(LIST{L"abcdefghijklmnopqrstuvwxyz0123"}, Decoded(packs).Titles());
    Packs unfinished;
    unfinished.Add(0x80, 1, "abcdefghijkl").Add(0x80, 1, "mnopqrstuvwx");
    EXPECT_EQ(LIST(), Decoded(unfinished).Titles()); // stored only when its zero comes
}

TEST(CDTextDecoder, TrackZeroIsTheDisc)
{
    Decoded text(Packs().Add(0x80, 0, "Title").Add(0x81, 0, "Performer"));
    EXPECT_STREQ(L"Title", text.m_strTitle);
    EXPECT_STREQ(L"Performer", text.m_strPerformer);
    EXPECT_EQ(LIST(), text.Titles());
}

TEST(CDTextDecoder, StringBehindTheDiscIsThatOfTrackOne)
{
    Decoded text(Packs().Add(0x81, 0, Text("Disc\0One\0Two", 12)).Add(0x81, 2, Text("\0Three", 6)));
    EXPECT_STREQ(L"Disc", text.m_strPerformer);
    EXPECT_EQ((LIST{L"One", L"Two", L"Three"}), text.Performers());
}

TEST(CDTextDecoder, EmptyFirstStringIsStored)
{
    EXPECT_STREQ(L"", Decoded(Packs().Add(0x80, 0, "")).m_strTitle);
    EXPECT_STREQ(L"", Decoded(Packs().Add(0x81, 0, "")).m_strPerformer);
    EXPECT_EQ((LIST{L"", L""}), Decoded(Packs().Add(0x80, 2, "")).Titles());
}

TEST(CDTextDecoder, EmptyFirstStringReplacesAnOlderOne)
{
    Decoded text(Packs().Add(0x80, 1, "Old").Add(0x80, 1, ""));
    EXPECT_EQ(LIST{L""}, text.Titles());
}

TEST(CDTextDecoder, EmptyLaterStringsCountForNoTrack)
{
    Decoded text(Packs().Add(0x80, 1, Text("A\0\0\0B\0\0C", 8)));
    EXPECT_EQ((LIST{L"A", L"B", L"C"}), text.Titles());
}

TEST(CDTextDecoder, LaterStringThatIsUnfinishedGoesOnInTheNextPack)
{
    // The second pack says that its text starts within track 2.
    Decoded text(Packs().Add(0x80, 1, Text("First\0Second", 12)).Add(0x80, 2, Text(" half\0Third", 11)));
    EXPECT_EQ((LIST{L"First", L"Second half", L"Third"}), text.Titles());
}

TEST(CDTextDecoder, OtherBlocksDoNotDisturbAString)
{
    Packs packs;
    packs.Add(0x80, 1, "abcdefghijkl").Add(0x80, 1, "other", 1).Add(0x80, 0, "other", 7).Add(0x80, 1, "m");
    Decoded text(packs);
    EXPECT_EQ(LIST{L"abcdefghijklm"}, text.Titles());
    EXPECT_STREQ(L"(none)", text.m_strTitle);
}

TEST(CDTextDecoder, CharacterPositionAndHighBitAreNoBlockNumber)
{
    Packs packs;
    packs.Add(0x80, 1, "A");
    packs.m_Bytes[3] = 0x8F;
    EXPECT_EQ(LIST{L"A"}, Decoded(packs).Titles());
    packs.m_Bytes[3] = 0x10;
    EXPECT_EQ(LIST(), Decoded(packs).Titles());
}

TEST(CDTextDecoder, OtherTypesLeaveNoOutput)
{
    Packs packs;
    for (int nType : {0x82, 0x83, 0x86, 0x8E, 0x8F, 0x00, 0xFF})
        packs.Add(nType, 0, Text("x\0y\0z", 5)).Add(nType, 4, "w");
    Decoded text(packs);
    EXPECT_EQ(LIST(), text.Titles());
    EXPECT_EQ(LIST(), text.Performers());
    EXPECT_STREQ(L"(none)", text.m_strTitle);
    EXPECT_STREQ(L"(none)", text.m_strPerformer);
}

TEST(CDTextDecoder, BrokenOffStringRunsOnIntoAnotherType)
{
    // A songwriter without an end, and then a title.
    Decoded text(Packs().Add(0x82, 1, "abcdefghijkl").Add(0x80, 1, Text("T\0U", 3)));
    EXPECT_EQ((LIST{L"abcdefghijklT", L"U"}), text.Titles());
}

TEST(CDTextDecoder, BytesAreLatin1)
{
    Decoded text(Packs().Add(0x80, 1, "\xC4\xE9\xFF"));
    EXPECT_EQ(LIST{L"\xC4\xE9\xFF"}, text.Titles());
}

TEST(CDTextDecoder, TextLongerThanTheBufferIsCut)
{
    Packs packs;
    for (int i = 0; i < 200; i++)
        packs.Add(0x80, 1, "abcdefghijkl");
    packs.Add(0x80, 1, "m");
    Decoded text(packs);
    ASSERT_EQ(1, text.m_Titles.GetSize());
    EXPECT_EQ(1023, text.m_Titles[0].GetLength()); // one byte is the zero
    EXPECT_EQ(L'c', text.m_Titles[0][1022]);       // 85 packs make 1020 characters
}

TEST(CDTextDecoder, TrackNumbersBeyondTheDiscStayInBounds)
{
    Decoded text(Packs().Add(0x80, 255, Text("a\0b\0c\0d\0e\0f", 11)).Add(0x80, 255, ""));
    ASSERT_EQ(260, text.m_Titles.GetSize()); // five more than the last number
    EXPECT_STREQ(L"f", text.m_Titles[259]);
    EXPECT_STREQ(L"", text.m_Titles[254]); // the second pack put its empty string over "a"
}

struct LENGTH_CASE
{
    unsigned int nLength;
    int nPacks; // -1: refused
};

TEST(CDTextLength, IsAcceptedInItsLimits)
{
    const LENGTH_CASE aryCases[] = {
        {0, -1}, {1, -1},        {2, 0},        {19, 0},       {20, 1},     {37, 1},
        {38, 2}, {0x7FFF, 1820}, {36865, 2047}, {36866, 2048}, {36867, -1}, {65535, -1},
    };
    for (const LENGTH_CASE& length : aryCases)
    {
        unsigned char header[4] = {};
        MMCPut16(header, length.nLength);
        EXPECT_EQ(length.nPacks, CDTextDecoder::GetPackCount(header)) << length.nLength;
    }
}

// ---- From a drive

class CDText : public testing::Test
{
protected:
    CDText()
    {
        m_pFake = FakeDisc::Load();
        (void)m_Drive.Open(FakeDisc::DRIVE, 2);
    }

    bool Read(const BYTES& answer)
    {
        m_pFake->SetCDText(answer.data(), static_cast<int>(answer.size()));
        m_pFake->ForgetCommands();
        return m_CD.ReadCDText();
    }

    IFakeDisc* m_pFake;
    CTHDriveInterface m_Drive;
    TDriveInfo m_Info;
    CSCSICD m_CD{&m_Drive, m_Info, FakeDisc::DRIVE};
};

TEST_F(CDText, IsReadInTwoCommands)
{
    EXPECT_TRUE(Read(Packs().Add(0x80, 0, "Disc").Add(0x80, 1, "One").Answer()));
    EXPECT_TRUE(m_CD.m_bCDTextRead);
    EXPECT_STREQ(L"Disc", m_CD.m_strDiscTitle);
    ASSERT_EQ(1, m_CD.m_TrackTitles.GetSize());
    EXPECT_STREQ(L"One", m_CD.m_TrackTitles[0]);

    const unsigned char expected[2][10] = {
        {0x43, 0, 5, 0, 0, 0, 1, 0, 4, 0}, {0x43, 0, 5, 0, 0, 0, 1, 0, 40, 0}, // two packs and the header
    };
    const int aryDataBytes[] = {4, 36868};
    ASSERT_EQ(2, m_pFake->GetCommandCount());
    for (int i = 0; i < 2; i++)
    {
        FAKE_COMMAND command;
        ASSERT_TRUE(m_pFake->GetCommand(i, command));
        EXPECT_EQ(10, command.nCDBBytes);
        EXPECT_EQ(0, memcmp(expected[i], command.cdb, 10)) << i;
        EXPECT_EQ(aryDataBytes[i], command.nDataBytes);
        EXPECT_EQ(DRIVE_TRANSFER_IN, command.eType);
        EXPECT_EQ(10000, command.nTimeoutMs);
    }
}

TEST_F(CDText, DiscWithoutItIsFalseWithoutAnError)
{
    m_CD.m_bCDTextRead = true;
    m_pFake->ForgetCommands();
    EXPECT_FALSE(m_CD.ReadCDText());
    EXPECT_FALSE(m_CD.m_bCDTextRead);
    EXPECT_EQ(0, m_CD.Lasterror());
    EXPECT_EQ(2, m_pFake->CountCommands(CDB_READ_TOC)); // one command, sent twice
}

TEST_F(CDText, ResultOfTheCommandDoesNotDecide)
{
    // The first command brings a length, the second fails: it is the length alone that decides.
    BYTES answer = Packs().Add(0x80, 0, "Disc").Answer();
    m_pFake->AnswerNext(CDB_READ_TOC, answer.data(), 4);
    EXPECT_TRUE(m_CD.ReadCDText()); // the packs never come: zeros of type 0
    EXPECT_TRUE(m_CD.m_bCDTextRead);
    EXPECT_TRUE(m_CD.m_strDiscTitle.IsEmpty());
    EXPECT_EQ(0, m_CD.Lasterror());
}

TEST_F(CDText, LengthOf36866IsAccepted)
{
    Packs packs;
    packs.Add(0x80, 1, "First");
    for (int i = 1; i < 2047; i++)
        packs.Add(0x8F, 0, "x");
    packs.Add(0x80, 2, "Last");
    BYTES answer = packs.Answer();
    ASSERT_EQ(36868U, answer.size());
    EXPECT_EQ(36866U, MMCGet16(answer.data()));
    EXPECT_TRUE(Read(answer));
    FAKE_COMMAND command;
    ASSERT_TRUE(m_pFake->GetCommand(1, command));
    EXPECT_EQ(36868U, MMCGet16(command.cdb + 7));
    ASSERT_EQ(2, m_CD.m_TrackTitles.GetSize());
    EXPECT_STREQ(L"Last", m_CD.m_TrackTitles[1]);
}

TEST_F(CDText, LengthOf36867IsRefusedBeforeTheSecondCommand)
{
    EXPECT_FALSE(Read({0x90, 0x03, 0, 0}));
    EXPECT_EQ(1, m_pFake->GetCommandCount());
}

TEST_F(CDText, LengthWithoutAWholePackIsFalseAfterBothCommands)
{
    EXPECT_FALSE(Read({0, 2, 0, 0}));
    EXPECT_EQ(2, m_pFake->GetCommandCount());
    EXPECT_FALSE(Read({0, 19, 0, 0}));
    EXPECT_FALSE(m_CD.m_bCDTextRead);
}

TEST_F(CDText, CountOfPacksIsThatOfTheFirstAnswer)
{
    BYTES first = Packs().Add(0x80, 1, "One").Answer();
    BYTES second = Packs().Add(0x80, 1, "One").Add(0x80, 2, "Two").Answer();
    m_pFake->AnswerNext(CDB_READ_TOC, first.data(), 4);
    m_pFake->AnswerNext(CDB_READ_TOC, second.data(), static_cast<int>(second.size()));
    EXPECT_TRUE(m_CD.ReadCDText());
    EXPECT_EQ(1, m_CD.m_TrackTitles.GetSize());
}

TEST_F(CDText, EarlierStringsStayWhereNothingReplacesThem)
{
    EXPECT_TRUE(Read(Packs().Add(0x80, 1, Text("A\0B", 3)).Add(0x81, 0, "Band").Answer()));
    EXPECT_TRUE(Read(Packs().Add(0x80, 2, "C").Answer()));
    EXPECT_STREQ(L"A", m_CD.m_TrackTitles[0]);
    EXPECT_STREQ(L"C", m_CD.m_TrackTitles[1]);
    EXPECT_STREQ(L"Band", m_CD.m_strDiscPerformer);
    m_pFake->SetCDText("", 0);
    EXPECT_FALSE(m_CD.ReadCDText());
    EXPECT_STREQ(L"A", m_CD.m_TrackTitles[0]);
    EXPECT_STREQ(L"Band", m_CD.m_strDiscPerformer);
}
