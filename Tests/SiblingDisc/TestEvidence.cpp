#include "CountAllocations.h"
#include "Evidence.h"
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace
{
using Bytes = std::vector<unsigned char>;

void Record(Evidence& evidence, int nDrive, const Bytes& cdb, int nDataBytes, bool bGood = true,
            const DRIVE_SENSE& codes = {})
{
    SENSE_DATA sense;
    sense.Set(codes);
    const DRIVE_COMMAND command = {cdb.data(), static_cast<int>(cdb.size()), nullptr, nDataBytes, DRIVE_TRANSFER_IN};
    evidence.Record(nDrive, EVIDENCE_START::Now(), command, bGood, sense);
}

std::vector<DISC_EVIDENCE> ReadAll(const Evidence& evidence, int nDrive = Evidence::EVERY_DRIVE,
                                   unsigned long long nAfter = 0, int nRoom = 2 * Evidence::RECORDS)
{
    std::vector<DISC_EVIDENCE> aryRecords(static_cast<size_t>(nRoom));
    const int nCount = evidence.Read(nDrive, nAfter, aryRecords.data(), nRoom);
    aryRecords.resize(static_cast<size_t>(nCount));
    return aryRecords;
}
} // namespace

TEST(Evidence, ARecordTellsAllOfACommand)
{
    Evidence evidence;
    const EVIDENCE_START start = EVIDENCE_START::Now();
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const Bytes cdb = {0xBE, 4, 0, 0, 0x12, 0x34, 0, 0, 27, 0x10, 0, 0};
    int nDataBytes = 63504;
    evidence.Record(1, start, {cdb.data(), 12, nullptr, nDataBytes, DRIVE_TRANSFER_IN}, true, {});
    Record(evidence, 1, {0x28, 0, 0, 0, 0, 16, 0, 0, 2, 0}, 0, false, {3, 0x11, 5});

    const std::vector<DISC_EVIDENCE> aryRecords = ReadAll(evidence);
    ASSERT_EQ(2u, aryRecords.size());
    const DISC_EVIDENCE& good = aryRecords[0];
    EXPECT_EQ(1u, good.m_nNumber);
    EXPECT_EQ(start.m_nWallUS, good.m_nStartUS);
    EXPECT_GT(good.m_nStartUS, 1600000000000000LL); // September 2020
    EXPECT_GE(good.m_nDurationUS, 5000);
    EXPECT_LT(good.m_nDurationUS, 60000000);
    EXPECT_EQ(0x1234, good.m_nLBA);
    EXPECT_EQ(27, good.m_nSectors);
    EXPECT_EQ(63504, good.m_nDataBytes);
    EXPECT_EQ(0xBE, good.m_nOpcode);
    EXPECT_TRUE(good.m_bGood);
    EXPECT_EQ(0, good.m_nSenseKey | good.m_nASC | good.m_nASCQ);
    EXPECT_EQ(0, good.m_aryReserved[0] | good.m_aryReserved[1] | good.m_aryReserved[2]);
    const DISC_EVIDENCE& bad = aryRecords[1];
    EXPECT_EQ(2u, bad.m_nNumber);
    EXPECT_FALSE(bad.m_bGood);
    EXPECT_EQ(3, bad.m_nSenseKey);
    EXPECT_EQ(0x11, bad.m_nASC);
    EXPECT_EQ(5, bad.m_nASCQ);
    EXPECT_EQ(16, bad.m_nLBA);
    EXPECT_EQ(2, bad.m_nSectors);
}

TEST(Evidence, OfAGoodCommandOldSenseDataIsNotKept)
{
    Evidence evidence;
    Record(evidence, 1, {0, 0, 0, 0, 0, 0}, 0, true, {6, 0x28, 0});
    EXPECT_EQ(0, ReadAll(evidence)[0].m_nSenseKey);
}

TEST(Evidence, TheSectorRangeOfEveryReadCommandIsRead)
{
    struct CASE
    {
        const char* pName;
        Bytes cdb;
        int nLBA;
        int nSectors;
    };
    const CASE aryCases[] = {
        {"READ(10)", {0x28, 0, 0, 1, 0, 2, 0, 0x01, 0x02, 0}, 65538, 258},
        {"READ(12)", {0xA8, 0, 0, 0, 0, 7, 0, 1, 0, 0, 0, 0}, 7, 65536},
        {"READ(12) of more than can be", {0xA8, 0, 0, 0, 0, 7, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0}, 7, 2147483647},
        {"READ CD", {0xBE, 0, 0, 0, 0, 100, 1, 0, 0, 0x10, 0, 0}, 100, 65536},
        {"READ CD in the first pregap", {0xBE, 0, 0xFF, 0xFF, 0xFF, 0x6A, 0, 0, 1, 0x10, 0, 0}, -150, 1},
        {"READ CD MSF", {0xB9, 0, 0, 0, 2, 0, 0, 3, 10, 0x10, 0, 0}, 0, 85},
        {"READ CD MSF backwards", {0xB9, 0, 0, 1, 0, 0, 0, 2, 0, 0x10, 0, 0}, 4350, 0},
        {"READ CD cut short", {0xBE, 0, 0, 0, 0, 100, 1, 0, 0, 0x10, 0}, 0, 0},
        {"READ(10) cut short", {0x28, 0, 0, 1, 0, 2, 0, 1, 1}, 0, 0},
        {"READ TOC", {0x43, 2, 0, 0, 0, 0, 1, 0, 12, 0}, 0, 0},
        {"nothing", {}, 0, 0},
    };
    for (const CASE& row : aryCases)
    {
        const SECTOR_RANGE range = GetSectorRange(row.cdb.data(), static_cast<int>(row.cdb.size()));
        EXPECT_EQ(row.nLBA, range.m_nLBA) << row.pName;
        EXPECT_EQ(row.nSectors, range.m_nSectors) << row.pName;
    }
    EXPECT_EQ(0, GetSectorRange(nullptr, 12).m_nSectors);
}

TEST(Evidence, ACommandThatIsNoneIsRecordedToo)
{
    Evidence evidence;
    Record(evidence, 1, {}, -5, false);
    const std::vector<DISC_EVIDENCE> aryRecords = ReadAll(evidence);
    ASSERT_EQ(1u, aryRecords.size());
    EXPECT_EQ(0, aryRecords[0].m_nOpcode);
    EXPECT_EQ(0, aryRecords[0].m_nDataBytes);
}

TEST(Evidence, EveryDriveHasItsOwnAndTheNumbersRunOverAll)
{
    Evidence evidence;
    for (int i = 0; i < 6; ++i)
        Record(evidence, i % 2 == 0 ? 1 : Evidence::MAX_DRIVES, {static_cast<unsigned char>(i)}, 0);
    const std::vector<DISC_EVIDENCE> aryOther = ReadAll(evidence, Evidence::MAX_DRIVES);
    ASSERT_EQ(3u, aryOther.size());
    EXPECT_EQ(2u, aryOther[0].m_nNumber);
    EXPECT_EQ(6u, aryOther[2].m_nNumber);
    EXPECT_EQ(5, aryOther[2].m_nOpcode);
    EXPECT_EQ(6u, ReadAll(evidence).size());
    EXPECT_EQ(0u, ReadAll(evidence, 2).size());
}

TEST(Evidence, AReadingGoesOnBehindANumber)
{
    Evidence evidence;
    for (int i = 0; i < 10; ++i)
        Record(evidence, 1, {0}, 0);
    EXPECT_EQ(3u, ReadAll(evidence, 1, 7).size());
    EXPECT_EQ(8u, ReadAll(evidence, 1, 7)[0].m_nNumber);
    EXPECT_EQ(2u, ReadAll(evidence, 1, 0, 2).size()); // the oldest first
    EXPECT_EQ(1u, ReadAll(evidence, 1, 0, 2)[0].m_nNumber);
    EXPECT_EQ(0u, ReadAll(evidence, 1, 10).size());
    EXPECT_EQ(0u, ReadAll(evidence, 1, ~0ULL).size());
    EXPECT_EQ(0, evidence.Read(1, 0, nullptr, 5));
    DISC_EVIDENCE record;
    EXPECT_EQ(0, evidence.Read(1, 0, &record, 0));
    EXPECT_EQ(0, evidence.Read(1, 0, &record, -1));
}

TEST(Evidence, TheOldestGiveWay)
{
    Evidence evidence;
    constexpr int MORE = 100;
    for (unsigned int i = 0; i < Evidence::RECORDS + MORE; ++i)
        Record(evidence, 1,
               {0x28, 0, 0, 0, static_cast<unsigned char>(i >> 8), static_cast<unsigned char>(i), 0, 0, 1, 0}, 0);
    const std::vector<DISC_EVIDENCE> aryRecords = ReadAll(evidence);
    ASSERT_EQ(Evidence::RECORDS, aryRecords.size());
    for (size_t i = 0; i < aryRecords.size(); ++i)
    {
        ASSERT_EQ(MORE + 1 + i, aryRecords[i].m_nNumber);
        ASSERT_EQ(MORE + static_cast<int>(i), aryRecords[i].m_nLBA);
    }
}

TEST(Evidence, RecordingAndReadingAllocateNothing)
{
    Evidence evidence;
    const unsigned char aryCDB[6] = {};
    int nDataBytes = 0;
    DISC_EVIDENCE record;
    const long long nBefore = CountAllocations::GetCount();
    evidence.Record(1, EVIDENCE_START::Now(), {aryCDB, 6, nullptr, nDataBytes, DRIVE_TRANSFER_NONE}, true, {});
    EXPECT_EQ(1, evidence.Read(1, 0, &record, 1));
    EXPECT_EQ(CountAllocations::GetCount(), nBefore);
}

// Writers on several threads, more than the ring holds, and readers beside them: every record that is read is whole,
// and a reader that keeps up misses none.
TEST(Evidence, ThreadsRecordAndReadAtOnce)
{
    Evidence evidence;
    constexpr int WRITERS = 3;
    constexpr unsigned int EACH = Evidence::RECORDS;
    std::atomic<int> nWriting{WRITERS};
    std::vector<std::thread> aryThreads;
    for (int nWriter = 1; nWriter <= WRITERS; ++nWriter)
        aryThreads.emplace_back(
            [&, nWriter]
            {
                for (unsigned int i = 0; i < EACH; ++i)
                {
                    const unsigned char cLow = static_cast<unsigned char>(i);
                    const unsigned char cHigh = static_cast<unsigned char>(i >> 8);
                    int nDataBytes = static_cast<int>(i);
                    const unsigned char aryCDB[10] = {
                        0x28, 0, 0, static_cast<unsigned char>(nWriter), cHigh, cLow, 0, cHigh, cLow, 0};
                    evidence.Record(nWriter, EVIDENCE_START::Now(),
                                    {aryCDB, 10, nullptr, nDataBytes, DRIVE_TRANSFER_IN}, true, {});
                }
                --nWriting;
            });
    std::vector<DISC_EVIDENCE> aryRecords(1000);
    unsigned long long nAfter = 0;
    unsigned long long nLost = 0;
    for (bool bMore = true; bMore;)
    {
        const bool bLast = nWriting == 0;
        const int nCount = evidence.Read(Evidence::EVERY_DRIVE, nAfter, aryRecords.data(), 1000);
        for (int i = 0; i < nCount; ++i)
        {
            const DISC_EVIDENCE& record = aryRecords[static_cast<size_t>(i)];
            ASSERT_GT(record.m_nNumber, nAfter);
            nLost += record.m_nNumber - nAfter - 1;
            nAfter = record.m_nNumber;
            ASSERT_EQ(record.m_nSectors, record.m_nLBA & 0xFFFF);
            ASSERT_EQ(record.m_nDataBytes, record.m_nSectors);
        }
        bMore = nCount > 0 || !bLast;
    }
    for (std::thread& thread : aryThreads)
        thread.join();
    EXPECT_EQ(WRITERS * EACH, nAfter);
    EXPECT_LE(nLost, (WRITERS - 1) * EACH); // the last round of the ring was there in any case
    size_t nHeld = 0;
    for (int nWriter = 1; nWriter <= WRITERS; ++nWriter)
        nHeld += ReadAll(evidence, nWriter).size();
    EXPECT_EQ(Evidence::RECORDS, nHeld);
}
