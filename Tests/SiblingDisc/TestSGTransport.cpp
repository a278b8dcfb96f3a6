#include "CDUnits.h"
#include "ScriptedKernel.h"
#include "SGTransport.h"
#include <climits>
#include <filesystem>
#include <gtest/gtest.h>

namespace
{
constexpr int NO_DESCRIPTOR = -1; // the scripted kernel does not look at it

Bytes MakeReadCD(int nCount, unsigned char nType = READ_CD_TYPE_CDDA, unsigned char nSelection = 0x10,
                 unsigned char nSubChannel = 0)
{
    return {CDB_READ_CD, nType, 0, 0, 1, 0, 0, 0, static_cast<unsigned char>(nCount), nSelection, nSubChannel, 0};
}

class SGTransportTest : public ::testing::Test
{
protected:
    // Sends a command with a buffer of nRoom bytes full of AAh.
    bool Send(const Bytes& cdb, int nRoom = 0, DRIVE_TRANSFERTYPE eType = DRIVE_TRANSFER_IN, int nTimeoutMs = 1234)
    {
        m_Buffer.assign(static_cast<size_t>(nRoom), 0xAA);
        m_nBytes = nRoom;
        return SendBySG(m_Kernel.GetCalls(), NO_DESCRIPTOR,
                        {cdb.data(), static_cast<int>(cdb.size()), m_Buffer.data(), m_nBytes, eType, nTimeoutMs},
                        m_Sense, m_nErrno);
    }
    void ExpectFailure(int nKey, int nASC, int nASCQ)
    {
        const DRIVE_SENSE codes = m_Sense.GetCodes();
        EXPECT_EQ(nKey, codes.m_nKey);
        EXPECT_EQ(nASC, codes.m_nASC);
        EXPECT_EQ(nASCQ, codes.m_nASCQ);
        // Old bytes must never pass for new ones.
        EXPECT_EQ(Bytes(m_Buffer.size()), m_Buffer);
        EXPECT_EQ(0, m_nBytes);
    }

    ScriptedKernel m_Kernel;
    Bytes m_Buffer;
    int m_nBytes = 0;
    int m_nErrno = -1;
    SENSE_DATA m_Sense;
};

TEST_F(SGTransportTest, HeaderOfAReadIsFilled)
{
    const Bytes cdb = MakeReadCD(2);
    ASSERT_TRUE(Send(cdb, 2 * LY_CD_SECTOR_BYTES));
    ASSERT_EQ(1u, m_Kernel.m_aryCalls.size());
    const sg_io_hdr& header = m_Kernel.m_aryCalls[0].m_Header;
    EXPECT_EQ('S', header.interface_id);
    EXPECT_EQ(SG_DXFER_FROM_DEV, header.dxfer_direction);
    EXPECT_EQ(12, header.cmd_len);
    EXPECT_EQ(32, header.mx_sb_len);
    EXPECT_EQ(0, header.iovec_count);
    EXPECT_EQ(4704u, header.dxfer_len);
    EXPECT_EQ(m_Buffer.data(), header.dxferp);
    EXPECT_NE(nullptr, header.sbp);
    EXPECT_EQ(1234u, header.timeout);
    EXPECT_EQ(0u, header.flags);
    EXPECT_EQ(cdb, m_Kernel.m_aryCalls[0].m_CDB);
    EXPECT_EQ(Bytes(4704, 0x11), m_Buffer);
    EXPECT_EQ(4704, m_nBytes);
    EXPECT_EQ(0, m_nErrno);
}

TEST_F(SGTransportTest, HeaderWithoutDataPhase)
{
    const Bytes cdb = {CDB_START_STOP_UNIT, 0, 0, 0, 2, 0};
    ASSERT_TRUE(Send(cdb, 16, DRIVE_TRANSFER_NONE));
    const sg_io_hdr& header = m_Kernel.m_aryCalls.at(0).m_Header;
    EXPECT_EQ(SG_DXFER_NONE, header.dxfer_direction);
    EXPECT_EQ(6, header.cmd_len);
    EXPECT_EQ(0u, header.dxfer_len);
    EXPECT_EQ(nullptr, header.dxferp);
    EXPECT_EQ(0, m_nBytes);
    EXPECT_EQ(Bytes(16, 0xAA), m_Buffer); // not the command's
}

TEST_F(SGTransportTest, DirectionWithoutBufferGoesAsGiven)
{
    int nBytes = 0;
    const Bytes cdb = {CDB_START_STOP_UNIT, 0, 0, 0, 3, 0};
    ASSERT_TRUE(SendBySG(m_Kernel.GetCalls(), NO_DESCRIPTOR, {cdb.data(), 6, nullptr, nBytes, DRIVE_TRANSFER_IN},
                         m_Sense, m_nErrno));
    EXPECT_EQ(SG_DXFER_FROM_DEV, m_Kernel.m_aryCalls.at(0).m_Header.dxfer_direction);
    EXPECT_EQ(0u, m_Kernel.m_aryCalls[0].m_Header.dxfer_len);
    EXPECT_EQ(10000u, m_Kernel.m_aryCalls[0].m_Header.timeout);
}

TEST_F(SGTransportTest, BufferIsZeroAheadOfTheCall)
{
    ASSERT_TRUE(Send(MakeReadCD(1), LY_CD_SECTOR_BYTES));
    EXPECT_EQ(Bytes(LY_CD_SECTOR_BYTES), m_Kernel.m_aryCalls.at(0).m_Data);
}

TEST_F(SGTransportTest, SilentlyMissingBytesAreZeroAndNotOld)
{
    m_Kernel.Next({0, 0, 0, 0, {}, Bytes(100, 0x22), 0}); // the host adapter counts nothing
    ASSERT_TRUE(Send(MakeReadCD(1), LY_CD_SECTOR_BYTES));
    EXPECT_EQ(0x22, m_Buffer[99]);
    EXPECT_EQ(Bytes(2252), Bytes(m_Buffer.begin() + 100, m_Buffer.end()));
}

TEST_F(SGTransportTest, TimeOutThatIsNoneIsTheUsualOne)
{
    for (const int nTimeoutMs : {0, -1, INT_MIN})
        ASSERT_TRUE(Send({0, 0, 0, 0, 0, 0}, 0, DRIVE_TRANSFER_NONE, nTimeoutMs));
    for (const SG_CALL& call : m_Kernel.m_aryCalls)
        EXPECT_EQ(10000u, call.m_Header.timeout);
}

TEST_F(SGTransportTest, WhatIsNoCommandIsNotSent)
{
    EXPECT_FALSE(Send({}, 4));
    ExpectFailure(5, 0x20, 0);
    EXPECT_FALSE(Send(Bytes(17, 0xC0), 4)); // longer than any
    ExpectFailure(5, 0x24, 0);
    for (const auto& [nOpcode, nBytes] : {std::pair{0x12, 5}, {0x43, 9}, {0x5A, 9}, {0xBE, 11}, {0x88, 15}})
    {
        Bytes cdb(static_cast<size_t>(nBytes));
        cdb[0] = static_cast<unsigned char>(nOpcode);
        EXPECT_FALSE(Send(cdb, 4)) << nOpcode;
        ExpectFailure(5, 0x24, 0);
    }
    int nBytes = 0;
    EXPECT_FALSE(SendBySG(m_Kernel.GetCalls(), NO_DESCRIPTOR, {nullptr, 6, nullptr, nBytes, DRIVE_TRANSFER_NONE},
                          m_Sense, m_nErrno));
    ExpectFailure(5, 0x20, 0);
    EXPECT_TRUE(m_Kernel.m_aryCalls.empty());
}

TEST_F(SGTransportTest, VendorCommandsOfAnyLengthAreSent)
{
    EXPECT_TRUE(Send({0xD8, 0}, 0, DRIVE_TRANSFER_NONE));
    EXPECT_TRUE(Send(Bytes(16, 0xE0), 0, DRIVE_TRANSFER_NONE));
}

TEST_F(SGTransportTest, OtherDirectionsAreRefused)
{
    for (const int nType : {1, 4, 7, 9, 16, -1})
    {
        EXPECT_FALSE(Send({CDB_WRITE_10, 0, 0, 0, 0, 0, 0, 0, 1, 0}, 8, static_cast<DRIVE_TRANSFERTYPE>(nType)))
            << nType;
        ExpectFailure(5, 0x24, 0);
    }
    EXPECT_TRUE(m_Kernel.m_aryCalls.empty());
}

TEST_F(SGTransportTest, NegativeLengthIsNoRoom)
{
    int nBytes = -5;
    unsigned char nByte = 0xAA;
    const Bytes cdb = {0, 0, 0, 0, 0, 0};
    EXPECT_TRUE(SendBySG(m_Kernel.GetCalls(), NO_DESCRIPTOR, {cdb.data(), 6, &nByte, nBytes, DRIVE_TRANSFER_IN},
                         m_Sense, m_nErrno));
    EXPECT_EQ(0, nBytes);
    m_Kernel.Next(SG_ANSWER::Errno(EIO));
    nBytes = -5;
    EXPECT_FALSE(SendBySG(m_Kernel.GetCalls(), NO_DESCRIPTOR, {cdb.data(), 6, &nByte, nBytes, DRIVE_TRANSFER_IN},
                          m_Sense, m_nErrno));
    EXPECT_EQ(0xAA, nByte);
}

TEST_F(SGTransportTest, ShortAnswerIsGoodAndTheRestZero)
{
    m_Kernel.Next({0, 0, 0, 0, {}, Bytes(24, 0x22), 12});
    ASSERT_TRUE(Send({CDB_READ_SUB_CHANNEL, 2, 0x40, 1, 0, 0, 0, 0, 24, 0}, 24));
    EXPECT_EQ(12, m_nBytes);
    EXPECT_EQ(Bytes(12, 0x22), Bytes(m_Buffer.begin(), m_Buffer.begin() + 12));
    EXPECT_EQ(Bytes(12), Bytes(m_Buffer.begin() + 12, m_Buffer.end())); // also where bytes came that do not count
}

TEST_F(SGTransportTest, ImpossibleRestIsCut)
{
    const Bytes cdb = {CDB_INQUIRY, 0, 0, 0, 36, 0};
    for (const auto& [nResid, nExpected] : {std::pair{-1, 36}, {INT_MIN, 36}, {36, 0}, {37, 0}, {INT_MAX, 0}})
    {
        m_Kernel.Next({0, 0, 0, 0, {}, Bytes(36, 0x22), nResid});
        ASSERT_TRUE(Send(cdb, 36));
        EXPECT_EQ(nExpected, m_nBytes) << nResid;
    }
}

TEST_F(SGTransportTest, ShortReadIsAFailure)
{
    struct READ_CASE
    {
        const char* m_pName;
        Bytes m_CDB;
        int m_nRoom;
        int m_nResid;
        bool m_bGood;
    };
    const int nSector = LY_CD_SECTOR_BYTES;
    const READ_CASE aryCases[] = {
        {"Whole", MakeReadCD(3), 3 * nSector, 0, true},
        {"OneByteShort", MakeReadCD(3), 3 * nSector, 1, false},
        {"OneSectorShort", MakeReadCD(3), 3 * nSector, nSector, false},
        {"Nothing", MakeReadCD(3), 3 * nSector, 3 * nSector, false},
        {"MoreRoomThanSectors", MakeReadCD(3), 5 * nSector, 2 * nSector, true},
        {"MoreRoomAndShort", MakeReadCD(3), 5 * nSector, 2 * nSector + 1, false},
        {"LessRoomThanSectors", MakeReadCD(3), 2 * nSector, 0, true},
        {"NoSectors", MakeReadCD(0), nSector, nSector, true},
        {"AudioWithC2", MakeReadCD(1, READ_CD_TYPE_CDDA, 0x12), 3000, 3000 - 2646, true},
        {"AudioWithC2Short", MakeReadCD(1, READ_CD_TYPE_CDDA, 0x12), 3000, 3000 - 2645, false},
        {"AudioWithC2Block", MakeReadCD(1, READ_CD_TYPE_CDDA, 0x14), 3000, 3000 - 2647, false},
        {"AudioWithRawSubChannel", MakeReadCD(1, READ_CD_TYPE_CDDA, 0x10, 1), 3000, 3000 - 2447, false},
        {"AudioWithQ", MakeReadCD(1, READ_CD_TYPE_CDDA, 0x10, 2), 3000, 3000 - 2368, true},
        {"AudioWithQShort", MakeReadCD(1, READ_CD_TYPE_CDDA, 0x10, 2), 3000, 3000 - 2367, false},
        {"SubChannelOnly", MakeReadCD(1, READ_CD_TYPE_CDDA, 0, 2), 16, 1, false},
        {"AnyTypeShort", MakeReadCD(1, 0), nSector, 304, false},
        {"AnyTypeWhole", MakeReadCD(1, 0), 2048, 0, true},
        {"ReadMSFShort", {0xB9, 4, 0, 0, 2, 0, 0, 2, 1, 0x10, 0, 0}, nSector, 1, false},
        {"Read10Short", {CDB_READ_10, 0, 0, 0, 0, 16, 0, 0, 1, 0}, 2048, 1, false},
        {"Read10MoreRoom", {CDB_READ_10, 0, 0, 0, 0, 16, 0, 0, 1, 0}, 4096, 2048, true},
        {"Read12Short", {CDB_READ_12, 0, 0, 0, 0, 16, 0, 0, 0, 1, 0, 0}, 2048, 2048, false},
        {"TOCShort", {CDB_READ_TOC, 0, 0, 0, 0, 0, 0, 3, 36, 0}, 804, 784, true},
    };
    for (const READ_CASE& row : aryCases)
    {
        m_Kernel.Next({0, 0, 0, 0, {}, Bytes(static_cast<size_t>(row.m_nRoom), 0x22), row.m_nResid});
        EXPECT_EQ(row.m_bGood, Send(row.m_CDB, row.m_nRoom)) << row.m_pName;
        if (row.m_bGood)
            EXPECT_EQ(row.m_nRoom - row.m_nResid, m_nBytes) << row.m_pName;
        else
            ExpectFailure(4, 0x4B, 0);
    }
}

TEST_F(SGTransportTest, RecoveredReadThatCameShortIsAFailure)
{
    SG_ANSWER answer = SG_ANSWER::Check(SENSE_RECOVERED_ERROR, 0x17, 1);
    answer.m_Data.assign(LY_CD_SECTOR_BYTES, 0x22);
    m_Kernel.Next(answer);
    EXPECT_TRUE(Send(MakeReadCD(1), LY_CD_SECTOR_BYTES));
    EXPECT_EQ(Bytes(LY_CD_SECTOR_BYTES, 0x22), m_Buffer);
    EXPECT_EQ(SENSE_RECOVERED_ERROR, m_Sense.GetCodes().m_nKey);
    answer.m_nResid = 1;
    m_Kernel.Next(answer);
    EXPECT_FALSE(Send(MakeReadCD(1), LY_CD_SECTOR_BYTES));
    ExpectFailure(4, 0x4B, 0);
}

TEST_F(SGTransportTest, EveryFailureZeroesTheBuffer)
{
    SG_ANSWER check = SG_ANSWER::Check(SENSE_MEDIUM_ERROR, ASC_READ_ERROR, 5);
    check.m_Data.assign(LY_CD_SECTOR_BYTES, 0x22); // what the drive had before it met the fault
    SG_ANSWER host = SG_ANSWER::Host(7);
    host.m_Data = check.m_Data;
    m_Kernel.Next(check);
    EXPECT_FALSE(Send(MakeReadCD(1), LY_CD_SECTOR_BYTES));
    ExpectFailure(3, 0x11, 5);
    m_Kernel.Next(host);
    EXPECT_FALSE(Send(MakeReadCD(1), LY_CD_SECTOR_BYTES));
    ExpectFailure(4, 0x08, 0);
    m_Kernel.Next(SG_ANSWER::Errno(ENODEV));
    EXPECT_FALSE(Send(MakeReadCD(1), LY_CD_SECTOR_BYTES));
    ExpectFailure(4, 0x05, 0);
    EXPECT_EQ(ENODEV, m_nErrno);
    m_Kernel.Next(SG_ANSWER::Errno(EPERM));
    EXPECT_FALSE(Send({CDB_SET_CD_SPEED, 0, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0}, 8, DRIVE_TRANSFER_NONE));
    ExpectFailure(5, 0x20, 0);
    EXPECT_EQ(EPERM, m_nErrno);
}

TEST_F(SGTransportTest, TransferTooLargeForTheKernelIsAnAnswer)
{
    m_Kernel.Next(SG_ANSWER::Errno(ENOMEM));
    EXPECT_FALSE(Send(MakeReadCD(255), 255 * LY_CD_SECTOR_BYTES));
    ExpectFailure(5, 0x55, 0);
    m_Kernel.Next(SG_ANSWER::Errno(EINVAL));
    EXPECT_FALSE(Send(MakeReadCD(255), 255 * LY_CD_SECTOR_BYTES));
    ExpectFailure(5, 0x24, 0);
    EXPECT_EQ(2u, m_Kernel.m_aryCalls.size());
}

TEST_F(SGTransportTest, InterruptedCallIsMadeAgain)
{
    for (int i = 0; i < 3; ++i)
        m_Kernel.Next(SG_ANSWER::Errno(EINTR));
    EXPECT_TRUE(Send(MakeReadCD(1), LY_CD_SECTOR_BYTES, DRIVE_TRANSFER_IN, 60000));
    EXPECT_EQ(4u, m_Kernel.m_aryCalls.size());
    EXPECT_EQ(Bytes(LY_CD_SECTOR_BYTES, 0x11), m_Buffer);
}

TEST_F(SGTransportTest, SignalsWithoutEndAreATimeOut)
{
    DEVICE_CALLS calls;
    int nCalls = 0;
    calls.m_SendSG = [&](int, sg_io_hdr&)
    {
        ++nCalls;
        return EINTR;
    };
    int nBytes = 0;
    const Bytes cdb(6);
    EXPECT_FALSE(
        SendBySG(calls, NO_DESCRIPTOR, {cdb.data(), 6, nullptr, nBytes, DRIVE_TRANSFER_NONE, 20}, m_Sense, m_nErrno));
    ExpectFailure(4, 0x08, 1);
    EXPECT_GT(nCalls, 1);
}

TEST_F(SGTransportTest, NothingElseIsSentTwice)
{
    for (const int nErrno : {EAGAIN, EBUSY, EIO, ETIMEDOUT, ENOMEM})
    {
        m_Kernel.m_aryCalls.clear();
        m_Kernel.Next(SG_ANSWER::Errno(nErrno));
        EXPECT_FALSE(Send(MakeReadCD(1), LY_CD_SECTOR_BYTES));
        EXPECT_EQ(1u, m_Kernel.m_aryCalls.size()) << nErrno;
    }
    m_Kernel.m_aryCalls.clear();
    m_Kernel.Next(SG_ANSWER::Check(SENSE_UNIT_ATTENTION, ASC_MEDIUM_MAY_HAVE_CHANGED, 0));
    EXPECT_FALSE(Send(MakeReadCD(1), LY_CD_SECTOR_BYTES));
    ExpectFailure(6, 0x28, 0);
    EXPECT_EQ(1u, m_Kernel.m_aryCalls.size());
}

TEST(DevicePath, OnlyDevicesAndLinksToThem)
{
    TempFolder folder;
    const std::string strFile = folder.Write("disc.cue", "");
    const std::string strLink = folder.GetPath("cdrom");
    std::filesystem::create_symlink("/dev/null", strLink);
    std::filesystem::create_symlink(strFile, folder.GetPath("image"));
    EXPECT_TRUE(IsDevicePath("/dev/null"));
    EXPECT_TRUE(IsDevicePath(strLink));
    EXPECT_FALSE(IsDevicePath(strFile));
    EXPECT_FALSE(IsDevicePath(folder.GetPath("image")));
    EXPECT_FALSE(IsDevicePath(folder.GetPath()));
    EXPECT_FALSE(IsDevicePath(folder.GetPath("not there")));
    EXPECT_FALSE(IsDevicePath(""));
}

TEST(DeviceCalls, SystemsOwnCallsAnswerWithErrno)
{
    const DEVICE_CALLS calls;
    EXPECT_EQ(-ENOENT, calls.m_Open("/dev/no such drive", O_RDONLY));
    const int nDescriptor = calls.m_Open("/dev/null", O_RDWR | O_CLOEXEC);
    ASSERT_GE(nDescriptor, 0);
    EXPECT_TRUE(calls.m_IsDevice(nDescriptor));
    sg_io_hdr header = {};
    header.interface_id = 'S';
    EXPECT_EQ(ENOTTY, calls.m_SendSG(nDescriptor, header));
    close(nDescriptor);
    EXPECT_EQ(EBADF, calls.m_SendSG(-1, header));
    EXPECT_FALSE(calls.m_IsDevice(-1));
}
} // namespace
