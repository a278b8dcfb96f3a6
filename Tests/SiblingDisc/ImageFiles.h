// Disc images for tests: files in a folder that goes with the test, and sources that live in memory.

#pragma once

#include "CDUnits.h"
#include "SectorSource.h"
#include "TempFolder.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sndfile.h>
#include <string>
#include <utility>
#include <vector>

// Samples by which every frame of a track is known: left counts up from nFirst, right counts down from -1.
inline std::vector<short> MakeFrames(int nFrames, int nFirst = 1)
{
    std::vector<short> aryFrames;
    for (int n = 0; n < nFrames; n++)
    {
        aryFrames.push_back(static_cast<short>((nFirst + n) % 30000));
        aryFrames.push_back(static_cast<short>(-1 - (nFirst + n) % 30000));
    }
    return aryFrames;
}

// The same as a CD has them; the tests run on little-endian machines only, as the project does.
inline std::string ToBytes(const std::vector<short>& arySamples)
{
    return {reinterpret_cast<const char*>(arySamples.data()), arySamples.size() * sizeof(short)};
}

inline std::string SwapPairs(std::string strBytes)
{
    for (size_t n = 0; n + 1 < strBytes.size(); n += 2)
        std::swap(strBytes[n], strBytes[n + 1]);
    return strBytes;
}

// For EXPECT_TRUE, which does not print kilobytes of samples: where the two first differ, or that they do not.
inline testing::AssertionResult Same(const std::string& strWanted, const std::string& strGot)
{
    if (strWanted == strGot)
        return testing::AssertionSuccess();
    size_t nAt = 0;
    while (nAt < strWanted.size() && nAt < strGot.size() && strWanted[nAt] == strGot[nAt])
        nAt++;
    return testing::AssertionFailure() << "differ at byte " << nAt << "; wanted " << strWanted.size() << " bytes, got "
                                       << strGot.size();
}

// Sectors whose every byte tells the sector: nValue, nValue + 1 ...
inline std::string MakeSectors(int nSectors, int nValue, int nSectorBytes = LY_CD_SECTOR_BYTES)
{
    std::string strBytes;
    for (int n = 0; n < nSectors; n++)
        strBytes.append(static_cast<size_t>(nSectorBytes), static_cast<char>(nValue + n));
    return strBytes;
}

// Writes an audio file in any format that libsndfile knows.
inline void WriteAudioFile(const std::string& strPath, int nFormat, const std::vector<short>& arySamples,
                           int nChannels = 2, int nSampleRate = LY_CD_SAMPLE_RATE)
{
    SF_INFO info = {};
    info.format = nFormat;
    info.channels = nChannels;
    info.samplerate = nSampleRate;
    SNDFILE* pFile = sf_open(strPath.c_str(), SFM_WRITE, &info);
    if (pFile == nullptr)
        abort();
    (void)sf_write_short(pFile, arySamples.data(), static_cast<sf_count_t>(arySamples.size()));
    (void)sf_close(pFile);
}

// A source in memory, which remembers what it was asked for.
class MemorySource : public SectorSource
{
public:
    struct READ
    {
        long long m_nOffset;
        int m_nBytes;
        unsigned char* m_pBuffer;
    };

    explicit MemorySource(std::string strBytes, std::vector<READ>* pReads = nullptr)
        : m_strBytes(std::move(strBytes)), m_pReads(pReads)
    {
    }
    long long GetBytes() const override { return static_cast<long long>(m_strBytes.size()); }
    int Read(long long nOffset, unsigned char* pBuffer, int nBytes) override
    {
        if (m_pReads != nullptr)
            m_pReads->push_back({nOffset, nBytes, pBuffer});
        int nThere = static_cast<int>(std::clamp<long long>(GetBytes() - nOffset, 0, nBytes));
        if (nThere > 0)
            memcpy(pBuffer, m_strBytes.data() + nOffset, static_cast<size_t>(nThere));
        return nThere;
    }

private:
    std::string m_strBytes;
    std::vector<READ>* m_pReads;
};

// A source of any size: each byte tells its sector, as MakeSectors(..., 0) would have it.
class EndlessSource : public SectorSource
{
public:
    explicit EndlessSource(long long nBytes) : m_nBytes(nBytes) {}
    long long GetBytes() const override { return m_nBytes; }
    int Read(long long nOffset, unsigned char* pBuffer, int nBytes) override
    {
        int nThere = static_cast<int>(std::clamp<long long>(m_nBytes - nOffset, 0, nBytes));
        for (int n = 0; n < nThere; n++)
            pBuffer[n] = static_cast<unsigned char>((nOffset + n) / LY_CD_SECTOR_BYTES);
        return nThere;
    }

private:
    long long m_nBytes;
};

// Opens sources by name out of a map, and remembers kinds and reads.
class MemoryOpener : public ISectorSourceOpener
{
public:
    std::map<std::string, std::string> m_Files;
    std::map<std::string, long long> m_Sizes; // of files that need no content
    std::vector<std::pair<std::string, SECTOR_SOURCE_KIND>> m_aryOpened;
    std::vector<MemorySource::READ> m_aryReads;

    std::unique_ptr<SectorSource> OpenSource(const std::string& strName, SECTOR_SOURCE_KIND kind, std::string& strError,
                                             std::string&) override
    {
        m_aryOpened.emplace_back(strName, kind);
        auto found = m_Files.find(strName);
        if (found != m_Files.end())
            return std::make_unique<MemorySource>(found->second, &m_aryReads);
        if (m_Sizes.count(strName) != 0)
            return std::make_unique<EndlessSource>(m_Sizes[strName]);
        strError = "the file \"" + strName + "\" was not found; put it there";
        return nullptr;
    }

    bool LoadCompanion(const std::string& strName, std::string& strContent) override
    {
        auto found = m_Files.find(strName);
        if (found == m_Files.end())
            return false;
        strContent = found->second;
        return true;
    }
};
