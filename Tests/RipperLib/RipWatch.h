// What tests of whole rips need: an owner that can be waited for, an output in memory, and progress that is listened
// to.

#pragma once

#include "CDUnits.h"
#include "RipJob.h"
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <vector>

class WaitingOwner : public IRipOwner
{
public:
    void Post(int nMessage, int nFirst, int nSecond, int nThird) override
    {
        const std::lock_guard lock(m_Mutex);
        m_aryPost = {nMessage, nFirst, nSecond, nThird};
        m_Changed.notify_all();
    }
    // The one message of a rip.
    std::vector<int> Wait()
    {
        std::unique_lock lock(m_Mutex);
        m_Changed.wait(lock, [this] { return !m_aryPost.empty(); });
        return std::move(m_aryPost);
    }

private:
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::vector<int> m_aryPost;
};

// What came out, which outlives the output.
struct RIP_OUTPUT
{
    std::vector<unsigned char> m_Bytes;
    int m_nStops = 0;
    int m_nFailFromWrite = 0; // this write and all behind it fail, from 1; 0: none
    int m_nWrites = 0;
    int m_nOpen = 0; // outputs that are not deleted yet
};

class MemoryOutput : public CWaveSave
{
public:
    explicit MemoryOutput(RIP_OUTPUT& output) : m_Output(output) { ++m_Output.m_nOpen; }
    ~MemoryOutput() override { --m_Output.m_nOpen; }
    void WriteBuffer(long nFrames, unsigned int* pData) override
    {
        ++m_Output.m_nWrites;
        const bool bFails = m_Output.m_nFailFromWrite > 0 && m_Output.m_nWrites >= m_Output.m_nFailFromWrite;
        m_nError = bFails ? WAVESAVE_FILE_REFUSED : WAVESAVE_WRITTEN;
        const unsigned char* pBytes = reinterpret_cast<unsigned char*>(pData);
        if (!bFails)
            m_Output.m_Bytes.insert(m_Output.m_Bytes.end(), pBytes, pBytes + nFrames * LY_CD_FRAME_BYTES);
    }
    void Stop() override { ++m_Output.m_nStops; }

private:
    RIP_OUTPUT& m_Output;
};

class ListeningProgress : public IRipProgress
{
public:
    void OnRipProgress(const RIP_PROGRESS& progress) override
    {
        m_aryProgress.push_back(progress);
        if (m_Listener)
            m_Listener(static_cast<int>(m_aryProgress.size()));
    }
    std::function<void(int nTimes)> m_Listener; // from 1; the first is ahead of all blocks
    std::vector<RIP_PROGRESS> m_aryProgress;
};

// The address of the sector that stands at that place of the output.
inline int GetListedSector(const RipSectorList& list, int nPlace)
{
    for (int i = 0; i < list.GetSize(); ++i)
    {
        if (nPlace < list.GetNumSectors(i))
            return list.GetStartSector(i) + nPlace;
        nPlace -= list.GetNumSectors(i);
    }
    return -1;
}
