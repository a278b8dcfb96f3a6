// Drives with random faults, for campaigns: a seed makes a profile (Docs/DRIVES.md), the same one each time.
//
// RONDEL_CAMPAIGN_SEEDS sets how many drives a campaign has, and RONDEL_CAMPAIGN_FIRST the first seed, to repeat one.

#pragma once

#include "CDUnits.h"
#include "Thinning.h"
#include <atomic>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>
#include <vector>

constexpr int CAMPAIGN_SEEDS = Thinning::Some(50, 16); // in a test; the long form takes 2000

inline int GetCampaignNumber(const char* pVariable, int nDefault)
{
    const char* pValue = std::getenv(pVariable);
    return pValue != nullptr && std::atoi(pValue) > 0 ? std::atoi(pValue) : nDefault;
}
inline int GetCampaignFirst() { return GetCampaignNumber("RONDEL_CAMPAIGN_FIRST", 1); }
inline int GetCampaignSeeds() { return GetCampaignNumber("RONDEL_CAMPAIGN_SEEDS", CAMPAIGN_SEEDS); }

// Runs all seeds, many at a time: a drive that fails mostly sleeps. Each thread makes a run of its own, and calls it
// with one seed after the other.
template <class MAKE_RUN>
void RunCampaign(int nThreads, MAKE_RUN makeRun)
{
    const int nEnd = GetCampaignFirst() + GetCampaignSeeds();
    std::atomic<int> nNext{GetCampaignFirst()};
    std::vector<std::thread> aryThreads;
    for (int i = 0; i < nThreads; ++i)
        aryThreads.emplace_back(
            [&]
            {
                auto run = makeRun();
                for (int nSeed = nNext++; nSeed < nEnd; nSeed = nNext++)
                    run(nSeed);
            });
    for (std::thread& thread : aryThreads)
        thread.join();
}

struct FAULTY_DRIVE
{
    std::string m_strProfile;
    int m_nCacheSectors = 0;
    bool m_bCalm = true; // nothing is wrong with it
};

class FaultyDriveMaker
{
public:
    FaultyDriveMaker(unsigned int nSeed, int nDiscSectors) : m_nSeed(nSeed), m_nSectors(nDiscSectors), m_Engine(nSeed)
    {
    }

    FAULTY_DRIVE Make()
    {
        FAULTY_DRIVE drive;
        const int nKiB = OneIn(4) ? 0 : 8 + Below(700);
        drive.m_nCacheSectors = nKiB * 1024 / LY_CD_SECTOR_BYTES;
        drive.m_strProfile = "Seed = " + std::to_string(m_nSeed) + "\nBuffer = " + std::to_string(nKiB) + "\n";
        if (OneIn(3))
            drive.m_strProfile += "ReadAhead = " + std::to_string(1 + Below(60)) + "\n";
        const std::string strCalm = drive.m_strProfile;
        if (!OneIn(6))
            AddFaults(drive.m_strProfile);
        drive.m_bCalm = drive.m_strProfile == strCalm;
        return drive;
    }
    int Below(int nLimit) { return static_cast<int>(m_Engine() % static_cast<unsigned int>(nLimit)); }
    bool OneIn(int n) { return Below(n) == 0; }

private:
    std::string GetRange(int nMost)
    {
        const int nFirst = Below(m_nSectors - nMost);
        return std::to_string(nFirst) + "-" + std::to_string(nFirst + Below(nMost));
    }

    void AddFaults(std::string& strProfile)
    {
        for (int n = Below(3); n > 0; --n)
        {
            strProfile += "Unreadable = " + GetRange(4);
            if (!OneIn(3))
                strProfile += OneIn(2) ? ", every " + std::to_string(2 + Below(3)) : ", 50%";
            strProfile += "\n";
        }
        for (int n = Below(2); n > 0; --n)
            strProfile += "Differs = " + GetRange(10) + "\n";
        // Four wrong bytes at least: two reads with the same single wrong byte are alike, and nobody can tell.
        for (int n = Below(4); n > 0; --n)
        {
            strProfile += "SilentErrors = " + GetRange(60);
            strProfile += ", " + std::to_string(4 + Below(50));
            strProfile += ", " + std::to_string(1 + Below(60)) + "%\n";
        }
        if (OneIn(4))
            strProfile += "FailRate = read 1%, 4/44/00\n";
        if (OneIn(4))
        {
            strProfile += "UnitAttention = read " + std::to_string(1 + Below(80));
            strProfile += OneIn(2) ? ", 6/29/00\n" : ", 6/28/00, 3\n";
        }
        if (OneIn(8))
            strProfile += "Remove = read " + std::to_string(1 + Below(80)) + "\n";
    }

    unsigned int m_nSeed;
    int m_nSectors;
    std::mt19937 m_Engine;
};
