#include "FakeDisc.h"
#include "RecordingTools.h"
#include "RetryPolicy.h"
#include "THDriveInterface.h"
#include <gtest/gtest.h>

struct SENSE
{
    unsigned char nKey;
    unsigned char nASC = 0;
    unsigned char nASCQ = 0;
};

static RetryPolicy::VERDICT Fail(RetryPolicy& policy, const SENSE& sense, unsigned int nNow)
{
    unsigned char bytes[SENSE_BYTES] = {};
    bytes[2] = sense.nKey;
    bytes[12] = sense.nASC;
    bytes[13] = sense.nASCQ;
    return policy.OnFailure(bytes, nNow);
}

// ---- The decision alone

struct SENDS_CASE
{
    const char* pName;
    unsigned char nOpcode;
    SENSE sense; // of every failure
    int nSends;
};

static const SENDS_CASE s_arySendsCases[] = {
    {"PlainFailureIsSentTwice", CDB_READ_CD, {0}, 2},
    {"MediumErrorIsSentTwice", CDB_READ_CD, {3, 0x11, 5}, 2},
    {"UnitAttentionEarnsFiveSends", CDB_READ_CD, {6, 0x28, 0}, 5},
    {"FlaggedUnitAttentionIsNone", CDB_READ_CD, {0x86, 0x28, 0}, 2},
    {"NotReadyOfAReadIsSentTwice", CDB_READ_CD, {2, 4, 8}, 2},
    {"TestUnitReadyIsAnAnswer", CDB_TEST_UNIT_READY, {2, 0x3A, 0}, 1},
    {"TestUnitReadyIsAnAnswerInUnitAttention", CDB_TEST_UNIT_READY, {6, 0x28, 0}, 1},
    {"ModeSenseIsAnAnswer", CDB_MODE_SENSE_10, {5, 0x24, 0}, 1},
    {"ModeSenseIsAnAnswerInUnitAttention", CDB_MODE_SENSE_10, {6, 0x29, 0}, 1},
    {"WriteIsSentTenTimes", CDB_WRITE_10, {3, 0x0C, 0}, 10},
    {"WriteThatIsBecomingReadyIsSentTenTimes", CDB_WRITE_10, {2, 4, 1}, 10},
    {"WriteWithFlaggedKeyIsSentTenTimes", CDB_WRITE_10, {0x82, 4, 8}, 10},
    {"WriteInUnitAttentionIsSentFiveTimes", CDB_WRITE_10, {6, 0x28, 0}, 5},
};

class RetrySends : public testing::TestWithParam<SENDS_CASE>
{
};

TEST_P(RetrySends, AreLimited)
{
    const SENDS_CASE& sends = GetParam();
    RetryPolicy policy(sends.nOpcode, 10000);
    int nSends = 1;
    while (nSends < 50 && Fail(policy, sends.sense, 5000) == RetryPolicy::SEND_AGAIN)
        nSends++;
    EXPECT_EQ(sends.nSends, nSends);
    EXPECT_EQ(sends.nSends, policy.GetTries());
    EXPECT_FALSE(policy.GetBufferFull());
    EXPECT_EQ(10000, policy.GetTimeoutMs());
}

INSTANTIATE_TEST_SUITE_P(Cases, RetrySends, testing::ValuesIn(s_arySendsCases),
                         [](const auto& row) { return row.param.pName; });

TEST(RetryPolicy, UnitAttentionRaisesTheLimitForTheRestOfTheCommand)
{
    RetryPolicy policy(CDB_READ_CD, 10000);
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {6}, 100));
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {3}, 120));
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {3}, 140));
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {3}, 160));
    EXPECT_EQ(RetryPolicy::GIVE_UP, Fail(policy, {3}, 180));
    EXPECT_EQ(5, policy.GetTries());
}

TEST(RetryPolicy, UnitAttentionOnTheLastAllowedSendComesTooSoonToBeGivenUp)
{
    RetryPolicy policy(CDB_READ_CD, 10000);
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {3}, 100));
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {6}, 120)); // the second failure, but now five are allowed
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {3}, 140));
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {3}, 160));
    EXPECT_EQ(RetryPolicy::GIVE_UP, Fail(policy, {3}, 180));
}

TEST(RetryPolicy, UnitAttentionDoesNotLowerTheLimitOfAWriteForLong)
{
    RetryPolicy policy(CDB_WRITE_10, 10000);
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {6}, 100));
    for (int i = 2; i < 10; i++)
        EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {3}, 100)) << i;
    EXPECT_EQ(RetryPolicy::GIVE_UP, Fail(policy, {3}, 100));
    EXPECT_EQ(10, policy.GetTries());
}

TEST(RetryPolicy, FullBufferOfAWriteGoesOnWithoutCounting)
{
    for (unsigned char nASCQ : {ASCQ_FORMAT_IN_PROGRESS, ASCQ_OPERATION_IN_PROGRESS, ASCQ_LONG_WRITE_IN_PROGRESS})
    {
        RetryPolicy policy(CDB_WRITE_10, 10000);
        for (unsigned int n = 0; n < 40; n++)
        {
            EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {2, 4, nASCQ}, 1000 + n));
            EXPECT_EQ(0, policy.GetTries());
            EXPECT_TRUE(policy.GetBufferFull());
            EXPECT_EQ(300000, policy.GetTimeoutMs());
        }
    }
}

TEST(RetryPolicy, FullBufferEndsFiveMinutesAfterTheFirstFailure)
{
    RetryPolicy policy(CDB_WRITE_10, 10000);
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {2, 4, 8}, 1000));
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {2, 4, 8}, 301000));
    EXPECT_EQ(RetryPolicy::TIMED_OUT, Fail(policy, {2, 4, 8}, 301001));
    EXPECT_EQ(0, policy.GetTries());
    EXPECT_TRUE(policy.GetBufferFull());
}

TEST(RetryPolicy, LongTimeOutOfAFullBufferStays)
{
    RetryPolicy policy(CDB_WRITE_10, 10000);
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {2, 4, 8}, 1000));
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {3, 0x0C, 0}, 200000));
    EXPECT_FALSE(policy.GetBufferFull());
    EXPECT_EQ(300000, policy.GetTimeoutMs());
    EXPECT_EQ(1, policy.GetTries());
}

TEST(RetryPolicy, OnlyTheSecondAndLaterFailuresTimeOut)
{
    RetryPolicy policy(CDB_READ_CD, 1000);
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {6}, 50000)); // however late
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {6}, 51000)); // exactly the time-out
    EXPECT_EQ(RetryPolicy::TIMED_OUT, Fail(policy, {6}, 51001));
    EXPECT_EQ(2, policy.GetTries()); // the last failure is not counted
}

TEST(RetryPolicy, TimeIsMeasuredAcrossTheWrapOfTheTickCount)
{
    RetryPolicy policy(CDB_READ_CD, 1000);
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {6}, 0xFFFFFF00));
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {6}, 0x00000010)); // 272 ms later
    EXPECT_EQ(RetryPolicy::TIMED_OUT, Fail(policy, {6}, 0x00000400));
}

TEST(RetryPolicy, FirstFailureAtTickZeroIsNotRemembered)
{
    RetryPolicy policy(CDB_READ_CD, 1000);
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {6}, 0));
    EXPECT_EQ(RetryPolicy::SEND_AGAIN, Fail(policy, {6}, 5000)); // counts as the first
    EXPECT_EQ(RetryPolicy::TIMED_OUT, Fail(policy, {6}, 6001));
}

// ---- The same on a drive

class DriveRetry : public testing::Test
{
protected:
    void SetUp() override
    {
        m_pFake = FakeDisc::Load();
        ASSERT_NE(nullptr, m_pFake);
        ASSERT_TRUE(m_Drive.Open(FakeDisc::DRIVE, 2));
    }

    bool Send(unsigned char nOpcode, int nTimeoutMs = 10000)
    {
        unsigned char cdb[10] = {nOpcode};
        return m_Drive.SendCmd(DRIVE_TRANSFER_NONE, cdb, sizeof cdb, nullptr, 0, nTimeoutMs, false);
    }

    IFakeDisc* m_pFake = nullptr;
    RecordingTools m_Tools;
    CTHDriveInterface m_Drive;
};

TEST_F(DriveRetry, FailedTestUnitReadyIsSentOnce)
{
    m_pFake->FailNext(CDB_TEST_UNIT_READY, -1, SENSE_UNIT_ATTENTION, 0x28, 0);
    EXPECT_FALSE(Send(CDB_TEST_UNIT_READY));
    EXPECT_EQ(1, m_pFake->CountCommands(CDB_TEST_UNIT_READY));
    EXPECT_TRUE(m_Tools.HasLog(L"SendCmd failed: numTries=1, cmd=0h, internal buffer full=No\n"));
}

TEST_F(DriveRetry, FailedModeSenseIsSentOnce)
{
    m_pFake->FailNext(CDB_MODE_SENSE_10, -1, SENSE_ILLEGAL_REQUEST, 0x24, 0);
    EXPECT_FALSE(Send(CDB_MODE_SENSE_10));
    EXPECT_EQ(1, m_pFake->CountCommands(CDB_MODE_SENSE_10));
    EXPECT_TRUE(m_Tools.HasLog(L"SendCmd failed: numTries=1, cmd=5ah, internal buffer full=No\n"));
}

TEST_F(DriveRetry, FailedReadIsSentTwiceWithAPause)
{
    m_pFake->FailNext(CDB_READ_CD, -1, SENSE_MEDIUM_ERROR, 0x11, 5);
    EXPECT_FALSE(Send(CDB_READ_CD));
    ASSERT_EQ(2, m_pFake->CountCommands(CDB_READ_CD));
    FAKE_COMMAND first;
    FAKE_COMMAND second;
    ASSERT_TRUE(m_pFake->GetCommand(0, first) && m_pFake->GetCommand(1, second));
    EXPECT_GE(second.nTick - first.nTick, 19U); // 20 ms, less the rounding of the tick
    ASSERT_EQ(1U, m_Tools.GetLogLines().size());
    EXPECT_EQ(4096, m_Tools.GetLogLines()[0].nArea);
}

TEST_F(DriveRetry, UnitAttentionIsSentFiveTimes)
{
    m_pFake->FailNext(CDB_READ_CD, 1, SENSE_UNIT_ATTENTION, 0x28, 0);
    m_pFake->FailNext(CDB_READ_CD, -1, SENSE_MEDIUM_ERROR, 0x11, 5);
    EXPECT_FALSE(Send(CDB_READ_CD));
    EXPECT_EQ(5, m_pFake->CountCommands(CDB_READ_CD));
}

TEST_F(DriveRetry, SuccessEndsTheTriesWithoutALine)
{
    m_pFake->FailNext(CDB_READ_CD, 3, SENSE_UNIT_ATTENTION, 0x28, 0);
    EXPECT_TRUE(Send(CDB_READ_CD));
    EXPECT_EQ(4, m_pFake->CountCommands(CDB_READ_CD));
    EXPECT_TRUE(m_Tools.GetLogLines().empty());
}

TEST_F(DriveRetry, SenseOfTheFirstFailureStaysAfterTheSuccessOfTheSecondSend)
{
    m_pFake->FailNext(CDB_READ_CD, 1, SENSE_MEDIUM_ERROR, 0x11, 5);
    EXPECT_TRUE(Send(CDB_READ_CD));
    EXPECT_EQ(3, m_Drive.m_Sense[2]);
    EXPECT_EQ(0x11, m_Drive.m_Sense[12]);
    FAKE_COMMAND command;
    ASSERT_TRUE(m_pFake->GetCommand(0, command));
    EXPECT_EQ(0, command.senseOnEntry[2]);
    ASSERT_TRUE(m_pFake->GetCommand(1, command));
    EXPECT_EQ(3, command.senseOnEntry[2]); // not cleared between the tries
    EXPECT_TRUE(Send(CDB_TEST_UNIT_READY));
    EXPECT_EQ(0, m_Drive.m_Sense[2]);
}

TEST_F(DriveRetry, WriteWithAFullBufferGoesOnPastTenSends)
{
    m_pFake->FailNext(CDB_WRITE_10, 12, SENSE_NOT_READY, 4, 8);
    m_pFake->FailNext(CDB_WRITE_10, -1, SENSE_MEDIUM_ERROR, 0x0C, 0);
    EXPECT_FALSE(Send(CDB_WRITE_10));
    EXPECT_EQ(12 + 10, m_pFake->CountCommands(CDB_WRITE_10));
    FAKE_COMMAND command;
    ASSERT_TRUE(m_pFake->GetCommand(0, command));
    EXPECT_EQ(10000, command.nTimeoutMs);
    ASSERT_TRUE(m_pFake->GetCommand(1, command));
    EXPECT_EQ(300000, command.nTimeoutMs);
    ASSERT_TRUE(m_pFake->GetCommand(21, command));
    EXPECT_EQ(300000, command.nTimeoutMs);
    EXPECT_TRUE(m_Tools.HasLog(L"SendCmd failed: numTries=10, cmd=2ah, internal buffer full=No\n"));
}

TEST_F(DriveRetry, FailuresBeyondTheTimeOutEndTheCommand)
{
    m_pFake->FailNext(CDB_READ_CD, -1, SENSE_UNIT_ATTENTION, 0x28, 0);
    EXPECT_FALSE(Send(CDB_READ_CD, 1)); // the pause alone is longer
    EXPECT_EQ(2, m_pFake->CountCommands(CDB_READ_CD));
    std::vector<std::wstring> log = m_Tools.GetLog();
    ASSERT_EQ(2U, log.size());
    EXPECT_EQ(L"SendCmd: timed out on errors", log[0]);
    EXPECT_EQ(L"SendCmd failed: numTries=1, cmd=beh, internal buffer full=No\n", log[1]);
}
