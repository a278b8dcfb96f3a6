#include "RipJobTest.h"
#include "RipSections.h"
#include "TempFolder.h"

TEST_F(RipJobTest, ACleanRipDeliversTheListAndDoubtsNothing)
{
    Open();
    Add(2, 1000, 100);
    Add(4, 3005, 30);
    for (const bool bSecure : {true, false})
    {
        RipJob job(m_Ripper);
        EXPECT_EQ(FINISHED, Run(job, WithoutCache(bSecure)));
        EXPECT_EQ(RIP_END_WHOLE, job.GetEnd());
        ASSERT_EQ(130, GetDelivered());
        for (int i = 0; i < 130; ++i)
            ASSERT_TRUE(IsRight(i)) << i;
        EXPECT_EQ(0, job.GetLog().GetSize());
        EXPECT_EQ(0, m_Output.m_nOpen);
        EXPECT_EQ(nullptr, m_Ripper.m_pReader->m_pDAC);
        EXPECT_EQ(nullptr, m_Ripper.m_pReader->m_pWaveSave);
        const RIP_PROGRESS progress = job.GetProgress();
        EXPECT_EQ(100, progress.nPercent);
        EXPECT_EQ(4, progress.nTrack);
        EXPECT_EQ(3035, progress.nSector);
        EXPECT_EQ(130, progress.nDone);
        EXPECT_EQ(130, progress.nTotal);
        EXPECT_EQ(0, progress.nReReads);
        EXPECT_EQ(27, progress.nBlockSectors);
    }
}

TEST_F(RipJobTest, SecureModeReadsTwiceAndBurstModeOnce)
{
    Open();
    Add(1, 0, 54);
    for (const bool bSecure : {true, false})
    {
        m_pFake->ForgetCommands();
        RipJob job(m_Ripper);
        EXPECT_EQ(FINISHED, Run(job, WithoutCache(bSecure)));
        EXPECT_EQ(bSecure ? 4 : 2, m_pFake->CountCommands(CDB_READ_CD));
    }
}

TEST_F(RipJobTest, RefusalsComeInTheirOrderAndTakeNothing)
{
    RipJob job(m_Ripper);
    EXPECT_EQ(13, Start(job));
    (void)m_Ripper.Init();
    EXPECT_EQ(14, Start(job));
    m_Ripper.m_pReader->m_bRipping = true;
    EXPECT_EQ(15, Start(job));
    m_Ripper.m_pReader->m_bRipping = false;
    Open();
    std::unique_ptr<CWaveSave> pNone;
    EXPECT_EQ(17, job.Start(m_List, pNone, &m_Owner, WithoutCache()));
    const RIP_SECTION aryBad[] = {
        {1, -1, 5}, {1, 0, -1}, {1, RIP_MAX_SECTORS, 1}, {1, 5, 0x7FFFFFFF}, {1, 0x7FFFFFFF, 0}};
    for (const RIP_SECTION& section : aryBad)
    {
        m_List.RemoveAll(true);
        (void)m_List.Add(section);
        EXPECT_EQ(16, Start(job));
    }
    EXPECT_EQ(0, m_Output.m_nOpen);
    EXPECT_FALSE(m_Ripper.m_pReader->m_bRipping);
    EXPECT_EQ(nullptr, m_Ripper.m_pReader->m_pDAC);
}

TEST_F(RipJobTest, ASecondStartIsRefusedWhileOneRunsAndSoIsOpenDrive)
{
    Open();
    Add(1, 0, 300);
    m_pFake->CloseGate();
    RipJob job(m_Ripper);
    ASSERT_EQ(RIP_STARTED, Start(job));
    EXPECT_EQ(15, m_Ripper.OpenDrive(FakeDisc::DRIVE, true));
    {
        RipJob other(m_Ripper);
        std::unique_ptr<CWaveSave> pOutput = std::make_unique<CWaveSave>();
        EXPECT_EQ(15, other.Start(m_List, pOutput, nullptr, WithoutCache()));
        EXPECT_EQ(15, job.StartWAV(m_List, L"/nonexistent/a.wav", nullptr, WithoutCache()));
    } // a job that never ran does not stop another's rip
    char aryBuffer[LY_CD_SECTOR_BYTES];
    EXPECT_EQ(15, m_Ripper.ReadSectors(1, 0, 1, aryBuffer));
    EXPECT_EQ(15, m_Ripper.GetTrackLength(1));
    m_pFake->OpenGate();
    EXPECT_EQ(FINISHED, m_Owner.Wait());
    (void)job.Stop();
    EXPECT_EQ(FINISHED, Run(job)); // and a job may start again
    EXPECT_EQ(300, GetDelivered());
}

TEST_F(RipJobTest, AnEmptyListEndsAtOnce)
{
    Open();
    RipJob job(m_Ripper);
    EXPECT_EQ(FINISHED, Run(job));
    EXPECT_EQ(0, GetDelivered());
    EXPECT_EQ(1U, m_Progress.m_aryProgress.size());
}

TEST_F(RipJobTest, TheEngineIsSetUpForTheCache)
{
    Open();
    Add(1, 0, 700);
    RipJob job(m_Ripper);
    EXPECT_EQ(FINISHED, Run(job, WithCache(250)));
    EXPECT_EQ(250, job.GetCacheSectors());
    EXPECT_EQ(277, job.GetProgress().nBlockSectors); // a block pushes its own start out
    // Blocks of 277, 277 and 146; the last one in a piece of 131 more.
    const int nReads = 2 * 11 + 2 * 11 + 6 + 5 + 6;
    EXPECT_EQ(nReads, m_pFake->CountCommands(CDB_READ_CD));
    EXPECT_EQ(0, job.GetLog().GetSize());
}

TEST_F(RipJobTest, ACacheThatWasNotFoundMayBeAsLargeAsTheBuffer)
{
    Open();
    Add(1, 0, 27);
    RipJob job(m_Ripper);
    RIP_OPTIONS options;
    EXPECT_EQ(FINISHED, Run(job, options));
    EXPECT_EQ(FAKE_BUFFER_SECTORS, job.GetCacheSectors());
    m_Ripper.m_pReader->m_pCD->m_DriveInfo.m_nCacheSize = 10 * LY_CD_SECTOR_BYTES;
    EXPECT_EQ(FINISHED, Run(job, options));
    EXPECT_EQ(10, job.GetCacheSectors()); // measured, and so exact
    options.m_bSecure = false;
    EXPECT_EQ(FINISHED, Run(job, options));
    EXPECT_EQ(0, job.GetCacheSectors());
    EXPECT_EQ(FINISHED, Run(job, WithCache(0x7FFFFFFF)));
    EXPECT_EQ(RIP_OPTIONS::MAX_CACHE_SECTORS, job.GetCacheSectors());
    EXPECT_TRUE(job.GetAccurateStream()); // as the simulated drive says
}

TEST_F(RipJobTest, ASectionSmallerThanTheCacheIsReadAfterOthersAreAtTheOtherEnd)
{
    Open();
    Add(1, 10, 20);
    RipJob job(m_Ripper);
    EXPECT_EQ(FINISHED, Run(job, WithCache(100)));
    EXPECT_EQ(0, job.GetLog().GetSize());
    FAKE_COMMAND command;
    ASSERT_TRUE(m_pFake->GetCommandOf(CDB_READ_CD, 0, command));
    EXPECT_EQ(10U, MMCGet32(command.cdb + 2));
    ASSERT_TRUE(m_pFake->GetCommandOf(CDB_READ_CD, 1, command)); // audio ends at sector 12,000
    EXPECT_EQ(12000U - 127, MMCGet32(command.cdb + 2));
    EXPECT_EQ(27, command.cdb[8]);
    ASSERT_TRUE(m_pFake->GetCommandOf(CDB_READ_CD, m_pFake->CountCommands(CDB_READ_CD) - 1, command));
    EXPECT_EQ(10U, MMCGet32(command.cdb + 2));
    // The engine's own way around the cache reads the section, too, and is as useless as the block itself.
    EXPECT_EQ(1 + 5 + 1 + 5 + 1, m_pFake->CountCommands(CDB_READ_CD));
}

TEST_F(RipJobTest, WhereTheDiscIsTooSmallForItsCacheNothingIsCalledGood)
{
    const FAKE_TRACK track = {1, 0, 0};
    m_pFake->LoadDisc(&track, 1, 90);
    Open();
    Add(1, 10, 20);
    RipJob job(m_Ripper);
    EXPECT_EQ(FINISHED, Run(job, WithCache(100)));
    EXPECT_EQ(20, job.GetLog().CountBadSectors());
    EXPECT_EQ(1, job.GetLog().CountEntries(SECURE_RIP_CACHED));
    EXPECT_EQ(FINISHED, Run(job, WithCache(50)));
    EXPECT_EQ(0, job.GetLog().CountBadSectors());
}

TEST_F(RipJobTest, AnUnsteadySectorIsReadUntilItIsTheSameTwice)
{
    struct CASE
    {
        int nTimes; // that the sector is disturbed
        int nStatus;
        int nRetries;
        bool bBad;
    };
    Open();
    Add(3, 2000, 81);
    for (const CASE& row : {CASE{1, SECURE_RIP_REREAD, 1, false}, CASE{2, SECURE_RIP_MATCHED, 2, false},
                            CASE{15, SECURE_RIP_MATCHED, 15, false}, CASE{1000, SECURE_RIP_LIMIT, 16, true}})
    {
        m_pFake->DisturbSector(2030, row.nTimes);
        RipJob job(m_Ripper);
        EXPECT_EQ(FINISHED, Run(job));
        m_pFake->DisturbSector(2030, 0);
        const std::vector<SECURE_RIP_ENTRY> ary = job.GetLog().GetEntriesOfTrack(3);
        ASSERT_EQ(row.bBad ? 2U : 1U, ary.size()) << row.nTimes;
        EXPECT_EQ(row.nStatus, ary[0].nStatus);
        EXPECT_EQ(row.nRetries, ary[0].nRetries);
        EXPECT_EQ(2027, ary[0].nSector);
        EXPECT_EQ(27, ary[0].nSectors);
        EXPECT_EQ(row.nRetries, job.GetLog().GetReReads());
        EXPECT_EQ(row.nRetries, job.GetProgress().nReReads);
        EXPECT_EQ(row.bBad ? 27 : 0, job.GetLog().CountBadSectors());
        if (row.bBad)
        {
            EXPECT_EQ(SECURE_RIP_DIFFERS, ary[1].nStatus);
            EXPECT_EQ(2030, ary[1].nSector);
            EXPECT_EQ(1, ary[1].nSectors);
        }
        ExpectRightOrNamed(job);
    }
}

TEST_F(RipJobTest, ASectorThatCannotBeReadIsSilenceAndNamedAndItsNeighboursAreRight)
{
    Open();
    Add(3, 2000, 81);
    m_pFake->FailSector(2030, -1);
    m_pFake->FailSector(2031, -1);
    for (const bool bSecure : {true, false})
    {
        RipJob job(m_Ripper);
        EXPECT_EQ(FINISHED, Run(job, WithoutCache(bSecure)));
        const std::vector<SECURE_RIP_ENTRY> ary = job.GetLog().GetEntries();
        ASSERT_EQ(1U, ary.size());
        EXPECT_EQ(SECURE_RIP_UNREAD, ary[0].nStatus);
        EXPECT_EQ(2030, ary[0].nSector);
        EXPECT_EQ(2, ary[0].nSectors);
        ASSERT_EQ(81, GetDelivered());
        for (int i = 0; i < 81; ++i)
            EXPECT_EQ(i != 30 && i != 31, IsRight(i)) << i;
        for (size_t i = 30 * LY_CD_SECTOR_BYTES; i < 32 * LY_CD_SECTOR_BYTES; ++i)
            ASSERT_EQ(0, m_Output.m_Bytes[i]);
    }
}

TEST_F(RipJobTest, ASectorThatFailsAgainAndAgainIsGivenUp)
{
    Open();
    Add(3, 2000, 27);
    m_pFake->FailSector(2010, -1);
    m_pFake->DisturbSector(2020, 1000); // so that the block is read 18 times
    RipJob job(m_Ripper);
    EXPECT_EQ(FINISHED, Run(job));
    EXPECT_EQ(27, job.GetLog().CountBadSectors());
    EXPECT_EQ(1, job.GetLog().CountEntries(SECURE_RIP_UNREAD));
    int nAsked = 0;
    FAKE_COMMAND command;
    for (int i = 0; m_pFake->GetCommandOf(CDB_READ_CD, i, command); ++i)
        nAsked += MMCGet32(command.cdb + 2) <= 2010 && MMCGet32(command.cdb + 2) + command.cdb[8] > 2010 ? 1 : 0;
    EXPECT_EQ(2 * 2 * RipSCSICD::MAX_FAILURES, nAsked); // with the block and alone, each sent twice
    for (int i = 0; i < 27; ++i)
        EXPECT_EQ(i != 10 && i != 20, IsRight(i)) << i;
}

TEST_F(RipJobTest, ASectorThatCanBeReadTheSecondTimeIsComparedAllTheSame)
{
    Open();
    Add(3, 2000, 27);
    m_pFake->FailSector(2010, 4); // two sends of the block and two of the sector alone
    RipJob job(m_Ripper);
    EXPECT_EQ(FINISHED, Run(job));
    const std::vector<SECURE_RIP_ENTRY> ary = job.GetLog().GetEntries();
    ASSERT_EQ(1U, ary.size());
    EXPECT_EQ(SECURE_RIP_REREAD, ary[0].nStatus); // silence, then twice the sector
    EXPECT_EQ(0, job.GetLog().CountBadSectors());
    EXPECT_TRUE(IsRight(10));
}

TEST_F(RipJobTest, AWAVFileHoldsHeaderAndAudio)
{
    Open();
    Add(1, 100, 50);
    // Files are written through the reader library.
    GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/"));
    const TempFolder folder;
    const std::string strPath = folder.GetPath("track.wav");
    RipJob job(m_Ripper);
    EXPECT_EQ(RIP_NO_OUTPUT, job.StartWAV(m_List, L"/nonexistent/folder/a.wav", &m_Owner, WithoutCache()));
    ASSERT_EQ(RIP_STARTED,
              job.StartWAV(m_List, std::wstring(strPath.begin(), strPath.end()).c_str(), &m_Owner, WithoutCache()));
    EXPECT_EQ(FINISHED, m_Owner.Wait());
    (void)job.Stop();
    std::ifstream file(strPath, std::ios::binary);
    const std::string strBytes{std::istreambuf_iterator<char>(file), {}};
    ASSERT_EQ(44U + 50 * LY_CD_SECTOR_BYTES, strBytes.size());
    EXPECT_EQ("RIFF", strBytes.substr(0, 4));
    EXPECT_EQ(std::string("\x60\xCB\x01\x00", 4), strBytes.substr(40, 4)); // 117,600
    for (size_t i = 0; i < 50 * LY_CD_SECTOR_BYTES; ++i)
        ASSERT_EQ(FakeDisc::AudioByte(100 + static_cast<int>(i) / LY_CD_SECTOR_BYTES,
                                      static_cast<int>(i) % LY_CD_SECTOR_BYTES),
                  static_cast<unsigned char>(strBytes[44 + i]));
    EXPECT_EQ(50LL * LY_CD_SECTOR_FRAMES, m_Ripper.m_Analyzer.m_nFramesProcessed);
}

TEST_F(RipJobTest, ARipWithoutAnOwnerRuns)
{
    Open();
    Add(1, 0, 30);
    RipJob job(m_Ripper);
    std::unique_ptr<CWaveSave> pOutput = std::make_unique<MemoryOutput>(m_Output);
    ASSERT_EQ(RIP_STARTED, job.Start(m_List, pOutput, nullptr, WithoutCache()));
    m_Ripper.WaitUntilFinished();
    EXPECT_EQ(30, GetDelivered());
}
