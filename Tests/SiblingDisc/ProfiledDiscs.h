// A drive with a profile over a disc of one audio track, every byte of which is known, for tests of its behaviour.

#pragma once

#include "ImageFiles.h"
#include "MMC.h"
#include "ProfiledDrive.h"
#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

class ProfiledDiscTest : public ::testing::Test
{
protected:
    using Bytes = std::vector<unsigned char>;

    static constexpr int SECTORS = 400;
    static constexpr unsigned char OLD_BYTE = 0xAA;

    void SetUp() override { WriteDisc("disc", 1); }

    // name.cue and name.bin: counted frames from nFirst on.
    void WriteDisc(const std::string& strName, int nFirst)
    {
        (void)m_Folder.Write(strName + ".bin", GetContent(nFirst));
        (void)m_Folder.Write(strName + ".cue",
                             "FILE \"" + strName + ".bin\" BINARY\nTRACK 01 AUDIO\n INDEX 01 00:00:00\n");
    }
    static std::string GetContent(int nFirst) { return ToBytes(MakeFrames(SECTORS * LY_CD_SECTOR_FRAMES, nFirst)); }

    // Writes the profile beside the disc, and acquires the drive that comes of it.
    void Open(const std::string& strProfile)
    {
        (void)m_Folder.Write("disc.cue.drive", strProfile);
        m_pDrive = std::make_unique<ProfiledDrive>(m_Folder.GetPath("disc.cue.drive"), m_Folder.GetPath("disc.cue"));
        std::string strError;
        ASSERT_TRUE(m_pDrive->Load(strError)) << strError;
        ASSERT_TRUE(m_pDrive->Acquire(strError)) << strError;
    }
    bool Send(Bytes cdb, int nRoom = 0, int nTimeoutMs = CTHDriveInterface::CD_TIMEOUT_MS)
    {
        m_Data.assign(static_cast<size_t>(nRoom), OLD_BYTE);
        int nBytes = nRoom;
        SENSE_DATA sense;
        const auto eType = nRoom > 0 ? DRIVE_TRANSFER_IN : DRIVE_TRANSFER_NONE;
        const auto start = std::chrono::steady_clock::now();
        const bool bGood =
            m_pDrive->Send({cdb.data(), static_cast<int>(cdb.size()), m_Data.data(), nBytes, eType, nTimeoutMs}, sense);
        m_Took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
        m_Sense = sense.GetCodes();
        if (bGood)
            m_Data.resize(static_cast<size_t>(nBytes));
        else
            EXPECT_EQ(Bytes(static_cast<size_t>(nRoom)), m_Data); // old bytes must never pass for new ones
        return bGood;
    }
    bool Read(int nLBA, int nCount = 1, int nTimeoutMs = CTHDriveInterface::CD_TIMEOUT_MS)
    {
        Bytes cdb = {CDB_READ_CD, READ_CD_TYPE_CDDA, 0, 0, 0, 0, 0, 0, 0, READ_CD_USER_DATA, 0, 0};
        MMCPut32(&cdb[2], static_cast<unsigned int>(nLBA));
        MMCPut24(&cdb[6], static_cast<unsigned int>(nCount));
        return Send(cdb, nCount * LY_CD_SECTOR_BYTES, nTimeoutMs);
    }
    bool TestUnitReady() { return Send({CDB_TEST_UNIT_READY, 0, 0, 0, 0, 0}); }
    // What the image has there.
    Bytes GetTruth(int nLBA, int nCount = 1, int nFirst = 1)
    {
        const std::string strAll = GetContent(nFirst);
        const auto pStart = strAll.begin() + static_cast<std::ptrdiff_t>(nLBA) * LY_CD_SECTOR_BYTES;
        return {pStart, pStart + static_cast<std::ptrdiff_t>(nCount) * LY_CD_SECTOR_BYTES};
    }
    void ExpectSense(int nKey, int nASC, int nASCQ)
    {
        EXPECT_EQ(nKey, m_Sense.m_nKey);
        EXPECT_EQ(nASC, m_Sense.m_nASC);
        EXPECT_EQ(nASCQ, m_Sense.m_nASCQ);
    }
    PROFILED_COMMAND GetLast() { return m_pDrive->GetHistory().back(); }
    // By the drive's own clock, which does not depend on how busy the machine is.
    long long GetLastMs()
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(GetLast().m_Duration).count();
    }

    TempFolder m_Folder;
    std::unique_ptr<ProfiledDrive> m_pDrive;
    Bytes m_Data;
    DRIVE_SENSE m_Sense;
    std::chrono::milliseconds m_Took{};
};
