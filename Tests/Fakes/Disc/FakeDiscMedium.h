// The simulated drive mechanics of the scripted disc service: one disc, and what each command does with it.
// The caller holds the service's lock.

#pragma once

#include "FakeDisc.h"
#include <map>
#include <string>
#include <vector>

struct FAKE_SENSE
{
    int nResponseCode;
    int nSenseKey;
    int nASC;
    int nASCQ;
};

class FakeDiscMedium
{
public:
    void Load(const FAKE_TRACK* pTracks, int nTracks, int nLeadOutSector);
    void LoadTwelveTracksAndData();
    void Eject() { m_bLoaded = false; }
    void SetCDText(const void* pAnswer, int nBytes);
    void DisturbSector(int nSector, int nTimes) { m_Disturbed[nSector] = nTimes; }
    void FailSector(int nSector, int nTimes) { m_Failing[nSector] = nTimes; }
    void SimulateCache(int nCacheSectors, int nMissMs, int nHitMs);
    void Reset();

    // Does one command. nDataBytes becomes what came. nSleepMs is how long the drive takes for it.
    bool Execute(const unsigned char* pCDB, int nCDBBytes, unsigned char* pData, int& nDataBytes, FAKE_SENSE& sense,
                 int& nSleepMs);

private:
    bool Deliver(const std::vector<unsigned char>& answer, int nAllocated, unsigned char* pData, int& nDataBytes);
    bool ReadTOC(const unsigned char* pCDB, unsigned char* pData, int& nDataBytes, FAKE_SENSE& sense);
    bool ReadSubChannel(const unsigned char* pCDB, unsigned char* pData, int& nDataBytes);
    bool ReadCD(const unsigned char* pCDB, unsigned char* pData, int& nDataBytes, FAKE_SENSE& sense, int& nSleepMs);
    bool StartStop(const unsigned char* pCDB);
    bool CheckSectors(int nSector, int nCount, FAKE_SENSE& sense);
    bool IsDataSector(int nSector) const;
    int GetLatency(int nSector, int nCount);

    std::vector<FAKE_TRACK> m_Tracks;
    int m_nLeadOut = 0;
    bool m_bLoaded = false;
    bool m_bTrayOpen = false;
    std::vector<unsigned char> m_CDText;
    std::map<int, int> m_Disturbed; // sector, times left
    std::map<int, int> m_Failing;   // sector, times left or -1
    int m_nDisturbances = 0;
    int m_nCacheSectors = 0;
    int m_nMissMs = 0;
    int m_nHitMs = 0;
    int m_nCacheStart = 0; // the sectors in the cache: a run that grows while reads follow each other
    int m_nCacheEnd = 0;
};
