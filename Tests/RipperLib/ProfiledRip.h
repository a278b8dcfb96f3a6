// Rips of a disc image with a drive profile, through the disc service as it is built: every byte of the disc is known,
// and so is every fault.

#pragma once

#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include "RipSections.h"
#include "RipWatch.h"
#include "TempFolder.h"
#include "Thinning.h"
#include <gtest/gtest.h>
#include <string>

class ProfiledRip
{
public:
    static constexpr int SECTORS = 1000;
    static constexpr int HIDDEN_SECTORS = 40;
    static constexpr int SECOND_TRACK = 400;
    static constexpr int THIRD_TRACK = 415; // the second one is smaller than most caches

    // Ahead of all that is opened, on one thread.
    static void UseBuiltService()
    {
        GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/"));
        (void)GetDiscManager(true);
    }

    ProfiledRip()
    {
        m_strDisc.resize(static_cast<size_t>(SECTORS) * LY_CD_SECTOR_BYTES);
        for (int i = 0; i < SECTORS; ++i)
            FillSector(i, m_strDisc.data() + static_cast<size_t>(i) * LY_CD_SECTOR_BYTES);
        (void)m_Folder.Write("disc.bin", m_strDisc);
        (void)m_Folder.Write("disc.cue", "FILE \"disc.bin\" BINARY\n"
                                         "TRACK 01 AUDIO\nINDEX 00 00:00:00\nINDEX 01 00:00:40\n"
                                         "TRACK 02 AUDIO\nINDEX 01 00:05:25\nTRACK 03 AUDIO\nINDEX 01 00:05:40\n");
    }

    // Never silence, different in all sectors.
    TEST_RECKONING static unsigned char GetByte(int nSector, int nOffset)
    {
        const unsigned int n =
            static_cast<unsigned int>(nSector) * 2654435761U + static_cast<unsigned int>(nOffset) * 40503U;
        return static_cast<unsigned char>((n >> 11 ^ n >> 23) | 1U);
    }

    TEST_RECKONING static void FillSector(int nSector, char* pBytes)
    {
        for (int n = 0; n < LY_CD_SECTOR_BYTES; ++n)
            pBytes[n] = static_cast<char>(GetByte(nSector, n));
    }

    // Opens the drive of this profile. With bMeasure its cache is measured.
    int Open(CCDRipper& ripper, const std::string& strProfile, bool bMeasure = false)
    {
        (void)m_Folder.Write("disc.cue.drive", strProfile);
        (void)ripper.SetCopyMode(bMeasure ? COPY_MODE_RIP : COPY_MODE_PLAYBACK);
        return ripper.OpenDrive(LyString().FromANSI(m_Folder.GetPath("disc.cue").c_str()), true);
    }

    // The whole disc, hidden audio and all.
    std::vector<int> Run(RipJob& job, CCDRipper& ripper, const RIP_OPTIONS& options)
    {
        m_List.RemoveAll(true);
        (void)m_List.Add({RIP_HIDDEN_TRACK, 0, HIDDEN_SECTORS});
        (void)m_List.Add({1, HIDDEN_SECTORS, SECOND_TRACK - HIDDEN_SECTORS});
        (void)m_List.Add({2, SECOND_TRACK, THIRD_TRACK - SECOND_TRACK});
        (void)m_List.Add({3, THIRD_TRACK, SECTORS - THIRD_TRACK});
        m_Output = {};
        std::unique_ptr<CWaveSave> pOutput = std::make_unique<MemoryOutput>(m_Output);
        WaitingOwner owner;
        if (job.Start(m_List, pOutput, &owner, options) != RIP_STARTED)
            return {};
        const std::vector<int> aryPost = owner.Wait();
        (void)ripper.Stop();
        return aryPost;
    }

    int GetDelivered() const { return static_cast<int>(m_Output.m_Bytes.size()) / LY_CD_SECTOR_BYTES; }
    // The list covers the disc from 0 on without a gap: places are addresses.
    bool IsRight(int nSector) const
    {
        const size_t nOffset = static_cast<size_t>(nSector) * LY_CD_SECTOR_BYTES;
        return std::memcmp(m_Output.m_Bytes.data() + nOffset, m_strDisc.data() + nOffset, LY_CD_SECTOR_BYTES) == 0;
    }
    int CountWrong() const
    {
        int nWrong = 0;
        for (int i = 0; i < GetDelivered(); ++i)
            nWrong += IsRight(i) ? 0 : 1;
        return nWrong;
    }
    // Sectors that are wrong and that nobody doubts.
    int CountBelievedWrong(const SecureRipLog& log) const
    {
        int nWrong = 0;
        for (int i = 0; i < GetDelivered(); ++i)
            nWrong += IsRight(i) || log.IsBad(i) ? 0 : 1;
        return nWrong;
    }

    TempFolder m_Folder;
    std::string m_strDisc;
    RipSectorList m_List;
    RIP_OUTPUT m_Output;
};
