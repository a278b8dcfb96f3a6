#include "SecureRipLog.h"
#include <gtest/gtest.h>
#include <thread>

namespace
{
SECURE_RIP_ENTRY Entry(int nTrack, int nSector, int nSectors, int nStatus)
{
    return {nTrack, nSector, nSectors, nStatus, 0, 0, 0};
}

std::vector<std::vector<int>> Ranges(const SecureRipLog& log)
{
    std::vector<std::vector<int>> ary;
    for (const RIP_SECTION& range : log.GetBadRanges())
        ary.push_back({range.nTrack, range.nStartSector, range.nSectors});
    return ary;
}
} // namespace

TEST(SecureRipLogTest, ANewLogIsEmptyAndDoubtsNothing)
{
    const SecureRipLog log;
    EXPECT_EQ(0, log.GetSize());
    EXPECT_EQ(0, log.GetReReads());
    EXPECT_EQ(0, log.CountBadSectors());
    EXPECT_FALSE(log.IsBad(0));
    EXPECT_TRUE(log.GetComplete());
    EXPECT_TRUE(log.GetBadRanges().empty());
}

TEST(SecureRipLogTest, StatusesFromTwoOnAreBadWhateverTheBytesLookLike)
{
    for (int nStatus = 0; nStatus < SECURE_RIP_STATUSES; ++nStatus)
    {
        SecureRipLog log;
        log.Add(Entry(1, 100, 27, nStatus));
        EXPECT_EQ(1, log.CountEntries(nStatus));
        EXPECT_EQ(0, log.CountEntries(nStatus + 1));
        const bool bBad = nStatus >= 2;
        EXPECT_EQ(bBad ? 27 : 0, log.CountBadSectors()) << nStatus;
        EXPECT_EQ(bBad, log.IsBad(100)) << nStatus;
        EXPECT_EQ(bBad, log.IsBad(126)) << nStatus;
        EXPECT_FALSE(log.IsBad(99) || log.IsBad(127)) << nStatus;
    }
}

TEST(SecureRipLogTest, TheEnginesReportIsOnTheWholeBlock)
{
    SecureRipLog log;
    // Of 300 sectors one is missing: that is all the record tells, and which one is not known.
    log.AddResult({SECURE_READ_SHORT, 0, 1, 40, 0}, 3, 1040, 300, 5000);
    log.AddResult({SECURE_READ_LIMIT, 16, 27, 340, 4}, 3, 1340, 27, 9000);
    const std::vector<SECURE_RIP_ENTRY> ary = log.GetEntries();
    ASSERT_EQ(2U, ary.size());
    EXPECT_EQ(300, ary[0].nSectors);
    EXPECT_EQ(3, ary[1].nTrack);
    EXPECT_EQ(1340, ary[1].nSector);
    EXPECT_EQ(16, ary[1].nRetries);
    EXPECT_EQ(4, ary[1].nMismatchedSectors);
    EXPECT_EQ(9000, ary[1].nElapsedMs);
    EXPECT_EQ(327, log.CountBadSectors());
}

TEST(SecureRipLogTest, StretchesJoinAndBlocksDoNot)
{
    SecureRipLog log;
    log.Add(Entry(1, 10, 1, SECURE_RIP_UNREAD));
    log.Add(Entry(1, 11, 1, SECURE_RIP_UNREAD));
    log.Add(Entry(1, 13, 1, SECURE_RIP_UNREAD));
    log.Add(Entry(2, 14, 1, SECURE_RIP_UNREAD));
    log.Add(Entry(2, 15, 1, SECURE_RIP_CACHED));
    log.Add(Entry(2, 16, 27, SECURE_RIP_LIMIT));
    log.Add(Entry(2, 43, 27, SECURE_RIP_LIMIT));
    log.Add(Entry(2, 80, 0, SECURE_RIP_LIMIT));
    log.Add(Entry(2, 80, -4, SECURE_RIP_LIMIT));
    EXPECT_EQ(6, log.GetSize());
    EXPECT_EQ(2, log.GetEntries()[0].nSectors);
    EXPECT_EQ(2U, log.GetEntriesOfTrack(1).size());
    EXPECT_EQ(4U, log.GetEntriesOfTrack(2).size());
    EXPECT_TRUE(log.GetEntriesOfTrack(3).empty());
}

TEST(SecureRipLogTest, BadRangesAscendAndNameEachSectorOnce)
{
    SecureRipLog log;
    log.Add(Entry(2, 200, 20, SECURE_RIP_LIMIT));
    log.Add(Entry(2, 205, 1, SECURE_RIP_DIFFERS));
    log.Add(Entry(1, 100, 27, SECURE_RIP_LIMIT));
    log.Add(Entry(1, 120, 27, SECURE_RIP_UNREAD)); // overlaps
    log.Add(Entry(1, 50, 5, SECURE_RIP_MATCHED));  // good
    log.Add(Entry(1, 147, 53, SECURE_RIP_SHORT));  // touches both of its neighbours, one of which is another track's
    EXPECT_EQ((std::vector<std::vector<int>>{{1, 100, 100}, {2, 200, 20}}), Ranges(log));
    EXPECT_EQ(120, log.CountBadSectors());
    EXPECT_TRUE(log.IsBad(205));
    EXPECT_FALSE(log.IsBad(220));
    log.Clear();
    EXPECT_EQ(0, log.GetSize());
}

TEST(SecureRipLogTest, TheTextComesBackAsItWent)
{
    SecureRipLog log;
    log.Add({1, 12345, 27, SECURE_RIP_LIMIT, 16, 3, 81230});
    log.Add({99, 0, 1, SECURE_RIP_REREAD, 1, 0, 0});
    log.SetReReads(17);
    const std::string strText = log.GetText();
    EXPECT_EQ("secure-rip-log 1\nre-reads\t17\ncomplete\t1\n"
              "track\tsector\tsectors\tstatus\tretries\tmismatched\telapsed-ms\n"
              "1\t12345\t27\t2\t16\t3\t81230\n99\t0\t1\t0\t1\t0\t0\n",
              strText);
    SecureRipLog other;
    other.Add(Entry(5, 5, 5, 5));
    ASSERT_TRUE(other.SetText(strText));
    EXPECT_EQ(strText, other.GetText());
    EXPECT_EQ(17, other.GetReReads());
    EXPECT_EQ(2, other.GetSize());
    EXPECT_TRUE(other.IsBad(12345));
    EXPECT_TRUE(SecureRipLog().SetText(SecureRipLog().GetText()));
}

TEST(SecureRipLogTest, AnIncompleteLogDoubtsEverything)
{
    SecureRipLog log;
    std::string strText = log.GetText();
    strText.replace(strText.find("complete\t1"), 10, "complete\t0");
    ASSERT_TRUE(log.SetText(strText));
    EXPECT_FALSE(log.GetComplete());
    EXPECT_TRUE(log.IsBad(7));
}

TEST(SecureRipLogTest, WhatIsNoLogIsRefusedAndTheLogStays)
{
    SecureRipLog log;
    log.Add(Entry(5, 5, 5, 5));
    const std::string strHead = SecureRipLog().GetText();
    const std::string aryBad[] = {"",
                                  "\n",
                                  "secure-rip-log 2" + strHead.substr(16),
                                  strHead.substr(0, 30),
                                  strHead + "\n",
                                  strHead + "1\t2\t3\t4\t5\t6\n",
                                  strHead + "1\t2\t3\t4\t5\t6\t7\t8\n",
                                  strHead + "1\t-2\t3\t4\t5\t6\t7\n",
                                  strHead + "1\t2\t0\t4\t5\t6\t7\n",
                                  strHead + "1\t2\t3\t9\t5\t6\t7\n",
                                  strHead + "1\t2\t3\t4\t17\t6\t7\n",
                                  strHead + "100\t2\t3\t4\t5\t6\t7\n",
                                  strHead + "1\t2\t3\t4\t5\t6\t99999999999\n",
                                  strHead + "1\t450000\t1\t4\t5\t6\t7\n",
                                  strHead + "1\t2147483647\t2147483647\t4\t5\t6\t7\n",
                                  strHead + "1 2 3 4 5 6 7\n",
                                  strHead + "1\t2\t3\t4\t5\t6\t7 \n"};
    for (const std::string& strBad : aryBad)
        EXPECT_FALSE(log.SetText(strBad)) << strBad;
    EXPECT_EQ(1, log.GetSize());
}

TEST(SecureRipLogTest, OneThreadAddsWhileAnotherLooks)
{
    SecureRipLog log;
    std::thread adds(
        [&log]
        {
            for (int i = 0; i < 2000; ++i)
                log.Add(Entry(1, i * 3, 2, SECURE_RIP_UNREAD));
        });
    while (log.GetSize() < 2000)
        (void)log.CountBadSectors();
    adds.join();
    EXPECT_EQ(4000, log.CountBadSectors());
}
