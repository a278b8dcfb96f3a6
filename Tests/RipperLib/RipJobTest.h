// Rips from the scripted disc service into memory: the fixture of the tests of a rip job.

#pragma once

#include "FakeDisc.h"
#include "RipWatch.h"
#include <gtest/gtest.h>

constexpr int FAKE_BUFFER_SECTORS = (FakeDisc::BUFFER_KIB * 1024 + LY_CD_SECTOR_BYTES - 1) / LY_CD_SECTOR_BYTES;

inline RIP_OPTIONS WithoutCache(bool bSecure = true)
{
    RIP_OPTIONS options;
    options.m_nCacheSectors = 0;
    options.m_bSecure = bSecure;
    return options;
}
inline RIP_OPTIONS WithCache(int nSectors)
{
    RIP_OPTIONS options;
    options.m_nCacheSectors = nSectors;
    return options;
}

class RipJobTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_pFake = FakeDisc::Load();
        ASSERT_NE(nullptr, m_pFake);
        (void)m_Ripper.SetCopyMode(COPY_MODE_PLAYBACK); // without measuring
    }
    void Open() { ASSERT_EQ(0, m_Ripper.OpenDrive(FakeDisc::DRIVE, true)); }
    int Start(RipJob& job, RIP_OPTIONS options = WithoutCache())
    {
        m_Output = {};
        m_Progress.m_aryProgress.clear();
        options.m_pProgress = &m_Progress;
        std::unique_ptr<CWaveSave> pOutput = std::make_unique<MemoryOutput>(m_Output);
        m_Output.m_nFailFromWrite = m_nFailFromWrite;
        const int nResult = job.Start(m_List, pOutput, &m_Owner, options);
        EXPECT_EQ(nResult == RIP_STARTED, pOutput == nullptr);
        return nResult;
    }
    void Add(int nTrack, int nStart, int nSectors) { (void)m_List.Add({nTrack, nStart, nSectors}); }
    std::vector<int> Run(RipJob& job, const RIP_OPTIONS& options = WithoutCache())
    {
        EXPECT_EQ(RIP_STARTED, Start(job, options));
        const std::vector<int> aryPost = m_Owner.Wait();
        (void)job.Stop();
        return aryPost;
    }
    int GetDelivered() const { return static_cast<int>(m_Output.m_Bytes.size()) / LY_CD_SECTOR_BYTES; }
    bool IsRight(int nPlace) const
    {
        const int nSector = GetListedSector(m_List, nPlace);
        for (int i = 0; i < LY_CD_SECTOR_BYTES; ++i)
            if (m_Output.m_Bytes[static_cast<size_t>(nPlace * LY_CD_SECTOR_BYTES + i)] !=
                FakeDisc::AudioByte(nSector, i))
                return false;
        return true;
    }
    // Every sector that was delivered is right, or named in the log.
    void ExpectRightOrNamed(RipJob& job) const
    {
        for (int i = 0; i < GetDelivered(); ++i)
            EXPECT_TRUE(IsRight(i) || job.GetLog().IsBad(GetListedSector(m_List, i))) << i;
    }

    IFakeDisc* m_pFake = nullptr;
    CCDRipper m_Ripper;
    RipSectorList m_List;
    WaitingOwner m_Owner;
    ListeningProgress m_Progress;
    RIP_OUTPUT m_Output;
    int m_nFailFromWrite = 0;
};

inline const std::vector<int> FINISHED = {1151, 0, 0, 0};
inline const std::vector<int> STOPPED = {1152, 7, 0, 0};
