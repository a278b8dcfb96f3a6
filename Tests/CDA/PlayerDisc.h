// Disc images whose every byte is known by its place, for tests that play them from outside.

#pragma once

#include "CDUnits.h"
#include "TempFolder.h"
#include "Thinning.h"
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

// What a source hands out of this many sectors: whole requests; the last incomplete one of a track is not played.
constexpr int REQUEST_BYTES = 2304;
inline long long GetPlayedBytes(long long nSectors)
{
    return nSectors * LY_CD_SECTOR_BYTES / REQUEST_BYTES * REQUEST_BYTES;
}

// A stretch of the pattern: every four bytes, a frame, are a hash of their place, the low byte first.
TEST_RECKONING inline void FillWithPattern(long long nPosition, char* pBytes, long long nBytes)
{
    uint64_t nHash = 0;
    for (long long i = 0; i < nBytes; ++i)
    {
        if (i % LY_CD_FRAME_BYTES == 0)
        {
            nHash = static_cast<uint64_t>(nPosition + i) * 0x9E3779B97F4A7C15U;
            nHash ^= nHash >> 29;
        }
        pBytes[i] = static_cast<char>(nHash >> i % LY_CD_FRAME_BYTES * 8);
    }
}

inline std::string MakePattern(long long nPosition, long long nBytes)
{
    std::string strBytes(static_cast<size_t>(nBytes), '\0');
    FillWithPattern(nPosition, strBytes.data(), nBytes);
    return strBytes;
}

inline std::string MakePatternSectors(long long nSector, long long nSectors)
{
    return MakePattern(nSector * LY_CD_SECTOR_BYTES, nSectors * LY_CD_SECTOR_BYTES);
}

// Where two texts of bytes first differ; for EXPECT_TRUE, which does not print megabytes.
inline testing::AssertionResult SameBytes(const std::string& strWanted, const std::string& strGot)
{
    if (strWanted == strGot)
        return testing::AssertionSuccess();
    size_t nAt = 0;
    while (nAt < strWanted.size() && nAt < strGot.size() && strWanted[nAt] == strGot[nAt])
        nAt++;
    return testing::AssertionFailure() << "differ at byte " << nAt << " (sector " << nAt / LY_CD_SECTOR_BYTES
                                       << "); wanted " << strWanted.size() << " bytes, got " << strGot.size();
}

// A folder for one test that speaks of paths.
class DiscFolder : public TempFolder
{
public:
    using TempFolder::TempFolder;
    std::filesystem::path Get(const std::filesystem::path& name) const { return GetPath(name.string()); }
    std::filesystem::path Write(const std::filesystem::path& name, const std::string& strContent) const
    {
        return TempFolder::Write(name.string(), strContent);
    }
};

// "mm:ss:ff" as sheets have it.
inline std::string FormatSheetTime(int nSectors)
{
    char szTime[32];
    snprintf(szTime, sizeof szTime, "%02d:%02d:%02d", nSectors / 75 / 60, nSectors / 75 % 60, nSectors % 75);
    return szTime;
}
