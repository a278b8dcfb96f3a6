#include "Dac32.h"
#include "FakeDisc.h"
#include "RecordingTools.h"
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

// A table of contents under construction, as READ TOC answers it: header, then descriptors by track number.
class TOC
{
public:
    TOC(int nFirst, int nLast) : m_Bytes(CSCSICD::TOC_BYTES)
    {
        m_Bytes[2] = static_cast<unsigned char>(nFirst);
        m_Bytes[3] = static_cast<unsigned char>(nLast);
    }

    // nPlace: 1 for the first descriptor of the list.
    TOC& Put(int nPlace, unsigned int nAddress, int nControl = 0)
    {
        return PutNumber(nPlace, nPlace, nAddress, nControl);
    }
    TOC& PutNumber(int nPlace, int nTrack, unsigned int nAddress, int nControl = 0)
    {
        unsigned char* p = m_Bytes.data() + 4 + (nPlace - 1) * 8;
        p[0] = 0xEE; // reserved bytes are not looked at
        p[1] = static_cast<unsigned char>(0x10 | nControl);
        p[2] = static_cast<unsigned char>(nTrack);
        p[3] = 0xEE;
        MMCPut32(p + 4, nAddress);
        return *this;
    }

    std::vector<unsigned char> m_Bytes;
};

class TrackList : public testing::Test
{
protected:
    TrackList()
    {
        m_pFake = FakeDisc::Load();
        (void)m_Drive.Open(FakeDisc::DRIVE, 2);
    }

    void ReRead(const TOC& toc)
    {
        m_pFake->AnswerNext(CDB_READ_TOC, toc.m_Bytes.data(), static_cast<int>(toc.m_Bytes.size()));
        m_CD.ReRead();
    }

    TTrackList Track(int nTrack)
    {
        TTrackList track = {};
        track.nTrackNumber = static_cast<unsigned char>(nTrack);
        EXPECT_EQ(1, m_CD.ReadTrackInfo(track)) << nTrack;
        return track;
    }

    int Count()
    {
        int nTracks = 0;
        for (TTrackListNode* p = m_CD.m_FirstTrack; p; p = p->pNext)
            nTracks++;
        return nTracks;
    }

    IFakeDisc* m_pFake;
    CTHDriveInterface m_Drive;
    TDriveInfo m_Info;
    CSCSICD m_CD{&m_Drive, m_Info, FakeDisc::DRIVE};
};

TEST_F(TrackList, IsReadWithFormat0AndRoomFor100Descriptors)
{
    m_pFake->ForgetCommands();
    m_CD.ReRead();
    FAKE_COMMAND command;
    ASSERT_EQ(1, m_pFake->GetCommandCount());
    ASSERT_TRUE(m_pFake->GetCommand(0, command));
    const unsigned char expected[10] = {0x43, 0, 0, 0, 0, 0, 0, 0x03, 0x24, 0};
    EXPECT_EQ(10, command.nCDBBytes);
    EXPECT_EQ(0, memcmp(expected, command.cdb, sizeof expected));
    EXPECT_EQ(804, command.nDataBytes);
    EXPECT_EQ(DRIVE_TRANSFER_IN, command.eType);
    EXPECT_EQ(10000, command.nTimeoutMs);
}

TEST_F(TrackList, DiscOfTwelveTracksAndADataSession)
{
    EXPECT_EQ(13, Count());
    EXPECT_EQ(13, m_CD.GetLastTrackNumber());
    for (int nTrack = 1; nTrack <= 12; nTrack++)
    {
        TTrackList track = Track(nTrack);
        EXPECT_EQ(nTrack, track.nTrackNumber);
        EXPECT_EQ((nTrack - 1) * 1000, track.nStartSector);
        EXPECT_EQ(1000, track.nSectors); // track 12 too: the addresses lie 12,400 apart
        EXPECT_EQ(0, track.bDataTrack);
    }
    EXPECT_EQ(23400, Track(13).nStartSector);
    EXPECT_EQ(1000, Track(13).nSectors);
    EXPECT_EQ(1, Track(13).bDataTrack);
}

TEST_F(TrackList, CursorStandsAtTheLastTrackAndTheListIsLinkedBothWays)
{
    EXPECT_EQ(13, m_CD.m_AktTrack->Info.nTrackNumber);
    EXPECT_EQ(nullptr, m_CD.m_FirstTrack->pPrevious);
    EXPECT_EQ(nullptr, m_CD.m_AktTrack->pNext);
    int nTrack = 1;
    for (TTrackListNode* p = m_CD.m_FirstTrack; p->pNext; p = p->pNext)
    {
        EXPECT_EQ(nTrack++, p->Info.nTrackNumber);
        EXPECT_EQ(p, p->pNext->pPrevious);
    }
}

struct CONTROL_CASE
{
    int nControl;
    int nChannels;
    int bPreEmphasis;
    int bDataTrack;
    int bCopyProhibited;
};

TEST_F(TrackList, ControlBitsAreTakenApart)
{
    const CONTROL_CASE aryCases[] = {
        {0x0, 2, 0, 0, 1}, {0x1, 2, 1, 0, 1}, {0x2, 2, 0, 0, 0},
        {0x4, 2, 0, 1, 1}, {0x8, 4, 0, 0, 1}, {0xF, 4, 1, 1, 0},
    };
    for (const CONTROL_CASE& control : aryCases)
    {
        ReRead(TOC(1, 1).Put(1, 0, control.nControl).Put(2, 100));
        TTrackList track = Track(1);
        EXPECT_EQ(control.nChannels, track.nChannels) << control.nControl;
        EXPECT_EQ(control.bPreEmphasis, track.bPreEmphasis) << control.nControl;
        EXPECT_EQ(control.bDataTrack, track.bDataTrack) << control.nControl;
        EXPECT_EQ(control.bCopyProhibited, track.bCopyProhibited) << control.nControl;
    }
}

TEST_F(TrackList, GapIsTakenOffInFrontOfADataTrackOnly)
{
    // Audio, data, audio, data; the lead-out descriptor carries the data bit as well.
    ReRead(TOC(1, 4).Put(1, 0).Put(2, 20000, 4).Put(3, 40000).Put(4, 60000, 4).PutNumber(5, 0xAA, 80000, 4));
    EXPECT_EQ(20000 - 11400, Track(1).nSectors);
    EXPECT_EQ(20000, Track(2).nSectors);
    EXPECT_EQ(20000 - 11400, Track(3).nSectors);
    EXPECT_EQ(20000, Track(4).nSectors); // the last track never loses anything
}

TEST_F(TrackList, NegativeStartIsClampedButCountsForTheLength)
{
    ReRead(TOC(1, 1).Put(1, static_cast<unsigned int>(-150)).Put(2, 1000));
    EXPECT_EQ(0, Track(1).nStartSector);
    EXPECT_EQ(1150, Track(1).nSectors);
}

TEST_F(TrackList, LengthOfHostileAddressesWraps)
{
    ReRead(TOC(1, 2).Put(1, 0x7FFFFFFF).Put(2, 0x80000000, 4).Put(3, 0x7FFFFFFF));
    EXPECT_EQ(INT_MAX, Track(1).nStartSector);
    EXPECT_EQ(1 - 11400, Track(1).nSectors);
    EXPECT_EQ(0, Track(2).nStartSector);
    EXPECT_EQ(-1, Track(2).nSectors);
}

TEST_F(TrackList, IsIndexedByTheTrackNumberItself)
{
    // A disc that starts at track 3: the descriptors of its tracks are looked for at the third place.
    ReRead(TOC(3, 4).PutNumber(1, 3, 11).PutNumber(2, 4, 22).PutNumber(3, 103, 300).PutNumber(4, 104, 400).Put(5, 600));
    EXPECT_EQ(2, Count());
    EXPECT_EQ(300, Track(103).nStartSector);
    EXPECT_EQ(100, Track(103).nSectors);
    EXPECT_EQ(200, Track(104).nSectors);
}

TEST_F(TrackList, NinetyNineTracksAreRead)
{
    TOC toc(1, 99);
    for (int nTrack = 1; nTrack <= 100; nTrack++)
        toc.Put(nTrack, static_cast<unsigned int>(nTrack) * 10);
    ReRead(toc);
    EXPECT_EQ(99, Count());
    EXPECT_EQ(990, Track(99).nStartSector);
    EXPECT_EQ(10, Track(99).nSectors);
}

TEST_F(TrackList, TracksBeyondTheAnswerDoNotExist)
{
    TOC toc(1, 255);
    for (int nTrack = 1; nTrack <= 100; nTrack++)
        toc.Put(nTrack, static_cast<unsigned int>(nTrack) * 10);
    ReRead(toc);
    EXPECT_EQ(99, Count());
    ReRead(TOC(100, 255));
    EXPECT_EQ(0, Count());
    EXPECT_EQ(nullptr, m_CD.m_AktTrack);
    EXPECT_EQ(0, m_CD.Lasterror());
}

TEST_F(TrackList, WithoutFirstOrLastTrackIsAnError)
{
    for (const TOC& toc : {TOC(0, 5), TOC(1, 0), TOC(0, 0)})
    {
        ReRead(toc);
        EXPECT_EQ(nullptr, m_CD.m_FirstTrack);
        EXPECT_EQ(nullptr, m_CD.m_AktTrack);
        EXPECT_EQ(1, m_CD.Lasterror());
    }
}

TEST_F(TrackList, FirstBehindLastIsEmptyWithoutAnError)
{
    ReRead(TOC(5, 4));
    EXPECT_EQ(nullptr, m_CD.m_FirstTrack);
    EXPECT_EQ(0, m_CD.Lasterror());
}

TEST_F(TrackList, FailedCommandIsAnErrorAndEmptiesTheList)
{
    m_pFake->FailNext(CDB_READ_TOC, -1, SENSE_NOT_READY, 0x3A, 0);
    m_CD.ReRead();
    EXPECT_EQ(nullptr, m_CD.m_FirstTrack);
    EXPECT_EQ(1, m_CD.Lasterror());
}

TEST_F(TrackList, ReReadLeavesTheCDTextAlone)
{
    m_CD.m_bCDTextRead = true;
    m_CD.m_strDiscTitle = L"title";
    m_CD.m_TrackTitles.Add(L"one");
    m_CD.ReRead();
    EXPECT_TRUE(m_CD.m_bCDTextRead);
    EXPECT_STREQ(L"title", m_CD.m_strDiscTitle);
    EXPECT_EQ(1, m_CD.m_TrackTitles.GetSize());
}

TEST_F(TrackList, DeleteEmptiesIt)
{
    RecordingTools tools;
    m_CD.DeleteTrackList();
    EXPECT_EQ(nullptr, m_CD.m_FirstTrack);
    EXPECT_EQ(nullptr, m_CD.m_AktTrack);
    EXPECT_EQ(0, m_CD.GetLastTrackNumber());
    EXPECT_TRUE(tools.HasLogFrom(L"CBaseCD::DeleteTrackList, setting m_FirstTrack to 0", L"Start"));
    m_CD.DeleteTrackList();
}

TEST_F(TrackList, FirstTrackIsLogged)
{
    RecordingTools tools;
    m_CD.ReRead();
    LyString strLine;
    strLine.Format(L"setting m_FirstTrack to %x", m_CD.m_FirstTrack);
    EXPECT_TRUE(tools.HasLogFrom(L"CSCSICD::ReRead", static_cast<const wchar_t*>(strLine)));
}

// ---- Queries

TEST_F(TrackList, QueriesInTrackOrderMoveTheCursorOneStepEach)
{
    (void)Track(3);
    TTrackListNode* pThird = m_CD.m_AktTrack;
    EXPECT_EQ(3, pThird->Info.nTrackNumber);
    (void)Track(4);
    EXPECT_EQ(pThird->pNext, m_CD.m_AktTrack);
    (void)Track(5);
    EXPECT_EQ(pThird->pNext->pNext, m_CD.m_AktTrack);
    (void)Track(5);
    EXPECT_EQ(pThird->pNext->pNext, m_CD.m_AktTrack);
    (void)Track(1);
    EXPECT_EQ(m_CD.m_FirstTrack, m_CD.m_AktTrack);
}

TEST_F(TrackList, QueryCopiesAllFields)
{
    TTrackList track;
    memset(&track, 0xEE, sizeof track);
    track.nTrackNumber = 2;
    EXPECT_EQ(1, m_CD.ReadTrackInfo(track));
    EXPECT_EQ(2, track.nTrackNumber);
    EXPECT_EQ(1000, track.nStartSector);
    EXPECT_EQ(1000, track.nSectors);
    EXPECT_EQ(2, track.nChannels);
    EXPECT_EQ(0, track.bPreEmphasis);
    EXPECT_EQ(0, track.bDataTrack);
    EXPECT_EQ(1, track.bCopyProhibited);
}

TEST_F(TrackList, QueryOfAMissingTrackLeavesTheArgument)
{
    for (int nTrack : {0, 14, 99, 255})
    {
        TTrackList track;
        memset(&track, 0x55, sizeof track);
        track.nTrackNumber = static_cast<unsigned char>(nTrack);
        TTrackList before = track;
        EXPECT_EQ(0, m_CD.ReadTrackInfo(track)) << nTrack;
        EXPECT_EQ(0, memcmp(&before, &track, sizeof track)) << nTrack;
    }
    EXPECT_EQ(13, m_CD.m_AktTrack->Info.nTrackNumber); // where the walk ended
    (void)Track(7);
}

TEST_F(TrackList, QueryBelowTheFirstTrackStopsAtTheHead)
{
    ReRead(TOC(3, 4).PutNumber(3, 3, 300).PutNumber(4, 4, 400).Put(5, 600));
    TTrackList track = {};
    track.nTrackNumber = 2;
    EXPECT_EQ(0, m_CD.ReadTrackInfo(track));
    EXPECT_EQ(m_CD.m_FirstTrack, m_CD.m_AktTrack);
    (void)Track(4);
}

TEST_F(TrackList, QueriesThatFailAreLogged)
{
    RecordingTools tools;
    TTrackList track = {};
    EXPECT_EQ(0, m_CD.ReadTrackInfo(track));
    LyString strLine;
    strLine.Format(L"return 0 because either m_FirstTrack(%x) or Infos.nTrackNumber(%d) is zero", m_CD.m_FirstTrack, 0);
    EXPECT_TRUE(tools.HasLogFrom(L"CBaseCD::ReadTrackInfo", static_cast<const wchar_t*>(strLine)));
    track.nTrackNumber = 77;
    EXPECT_EQ(0, m_CD.ReadTrackInfo(track));
    EXPECT_TRUE(tools.HasLogFrom(L"CBaseCD::ReadTrackInfo",
                                 L"return 0 because m_AktTrack->Info.nTrackNumber != Infos.nTrackNumber, (13 != 77)"));
    m_CD.DeleteTrackList();
    track.nTrackNumber = 1;
    EXPECT_EQ(0, m_CD.ReadTrackInfo(track));
    EXPECT_TRUE(tools.HasLog(L"return 0 because either m_FirstTrack(0) or Infos.nTrackNumber(1) is zero"));
}

TEST_F(TrackList, DisorderedNumbersEndTheWalkAllTheSame)
{
    ReRead(TOC(1, 4).PutNumber(1, 9, 0).PutNumber(2, 2, 100).PutNumber(3, 200, 200).PutNumber(4, 2, 300).Put(5, 400));
    for (int nTrack = 1; nTrack <= 255; nTrack++)
    {
        TTrackList track = {};
        track.nTrackNumber = static_cast<unsigned char>(nTrack);
        int nFound = m_CD.ReadTrackInfo(track);
        EXPECT_EQ(nFound == 1, m_CD.m_AktTrack->Info.nTrackNumber == nTrack);
    }
}

TEST_F(TrackList, LastTrackNumberIsFoundFromAnyCursorAndLeavesIt)
{
    (void)Track(2);
    TTrackListNode* pCursor = m_CD.m_AktTrack;
    EXPECT_EQ(13, m_CD.GetLastTrackNumber());
    EXPECT_EQ(pCursor, m_CD.m_AktTrack);
}
