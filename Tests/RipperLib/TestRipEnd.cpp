// How a rip ends before its list does: stopped, with a full disk, without its disc.

#include "RipJobTest.h"
#include <algorithm>

using RipEndTest = RipJobTest;

TEST_F(RipEndTest, AStopAtEveryBlockLeavesARightOrNamedBeginning)
{
    Open();
    Add(1, 10, 100);  // four blocks
    Add(2, 1500, 60); // three
    for (const bool bSecure : {true, false})
        for (int nStop = 1; nStop <= 8; ++nStop)
        {
            RipJob job(m_Ripper);
            m_Progress.m_Listener = [&job, nStop](int nTimes)
            {
                if (nTimes == nStop)
                    job.RequestStop();
            };
            const std::vector<int> aryPost = Run(job, WithoutCache(bSecure));
            m_Progress.m_Listener = nullptr;
            const bool bLast = nStop == 8; // nothing is left to be stopped
            EXPECT_EQ(bLast ? FINISHED : STOPPED, aryPost) << nStop;
            EXPECT_EQ(bLast ? RIP_END_WHOLE : RIP_END_STOPPED, job.GetEnd());
            // The block that the stop falls into is written too, but it is named.
            const int aryBlocks[] = {0, 27, 54, 81, 100, 127, 154, 160};
            EXPECT_EQ(aryBlocks[std::min(nStop, 7)], GetDelivered()) << nStop;
            ExpectRightOrNamed(job);
            for (int i = 0; !bLast && i < GetDelivered(); ++i)
                EXPECT_EQ(i >= aryBlocks[nStop - 1], job.GetLog().IsBad(GetListedSector(m_List, i))) << nStop;
            EXPECT_EQ(bLast ? 0 : 1, m_Output.m_nStops); // by the engine; a real output's destructor is another
            EXPECT_EQ(0, m_Output.m_nOpen);
        }
}

TEST_F(RipEndTest, StopWaitsAndTheJobGoesWithItsRip)
{
    Open();
    Add(1, 0, 1000);
    {
        RipJob job(m_Ripper);
        m_Progress.m_Listener = [](int) { Sleep(5); };
        ASSERT_EQ(RIP_STARTED, Start(job));
        EXPECT_TRUE(job.Stop());
        EXPECT_EQ(STOPPED, m_Owner.Wait());
        EXPECT_EQ(RIP_END_STOPPED, job.GetEnd());
        EXPECT_LT(GetDelivered(), 1000);
        ASSERT_EQ(RIP_STARTED, Start(job));
    }
    m_Progress.m_Listener = nullptr;
    EXPECT_EQ(STOPPED, m_Owner.Wait());
    EXPECT_EQ(0, m_Output.m_nOpen);
    EXPECT_FALSE(m_Ripper.m_pReader->m_bRipping);
}

TEST_F(RipEndTest, AFailedWriteEndsTheRip)
{
    Open();
    Add(1, 10, 100);
    Add(2, 1500, 60);
    for (m_nFailFromWrite = 1; m_nFailFromWrite <= 7; ++m_nFailFromWrite)
    {
        RipJob job(m_Ripper);
        EXPECT_EQ(STOPPED, Run(job)) << m_nFailFromWrite;
        EXPECT_EQ(RIP_END_WRITE_FAILED, job.GetEnd());
        EXPECT_EQ(WAVESAVE_FILE_REFUSED, job.GetWriteError());
    }
    m_nFailFromWrite = 0;
}

TEST_F(RipEndTest, ADiscThatIsTakenOutEndsTheRip)
{
    Open();
    Add(1, 0, 500);
    RipJob job(m_Ripper);
    m_Progress.m_Listener = [this](int nTimes)
    {
        if (nTimes == 4)
            m_pFake->EjectDisc();
    };
    EXPECT_EQ(STOPPED, Run(job));
    EXPECT_EQ(RIP_END_DISC_GONE, job.GetEnd());
    ASSERT_EQ(4 * 27, GetDelivered());
    ExpectRightOrNamed(job);
    EXPECT_EQ(27, job.GetLog().CountBadSectors());
}

TEST_F(RipEndTest, ADriveThatIsUnpluggedEndsTheRip)
{
    Open();
    Add(1, 0, 500);
    RipJob job(m_Ripper);
    m_Progress.m_Listener = [this](int nTimes)
    {
        if (nTimes == 2)
            m_pFake->FailNext(CDB_READ_CD, -1, SENSE_HARDWARE_ERROR, 0x05);
    };
    EXPECT_EQ(STOPPED, Run(job));
    EXPECT_EQ(RIP_END_DISC_GONE, job.GetEnd());
    EXPECT_EQ(2 * 27, GetDelivered());
    EXPECT_EQ(27, job.GetLog().CountBadSectors());
}

TEST_F(RipEndTest, AnotherDiscEndsTheRipAndAFalseAlarmDoesNot)
{
    Open();
    Add(1, 0, 200);
    const FAKE_TRACK aryOther[] = {{1, 0, 0}, {2, 300, 0}};
    for (const bool bOther : {false, true})
    {
        RipJob job(m_Ripper);
        m_Progress.m_Listener = [&](int nTimes)
        {
            if (nTimes != 4)
                return;
            if (bOther)
                m_pFake->LoadDisc(aryOther, 2, 600);
            m_pFake->FailNext(CDB_READ_CD, 1, SENSE_UNIT_ATTENTION, ASC_MEDIUM_MAY_HAVE_CHANGED);
        };
        EXPECT_EQ(bOther ? STOPPED : FINISHED, Run(job));
        EXPECT_EQ(bOther ? RIP_END_DISC_GONE : RIP_END_WHOLE, job.GetEnd());
        EXPECT_EQ(bOther ? 4 * 27 : 200, GetDelivered());
        EXPECT_EQ(bOther ? 27 : 0, job.GetLog().CountBadSectors());
    }
}
