#include "RipJob.h"
#include "RipSections.h"
#include <algorithm>
#include <new>

namespace
{
constexpr int QUERY_ACCURATE_STREAM = 14;
constexpr int QUERY_BUFFER_KIB = 31;

// The three arrays of an engine, each for the largest block. False, with none of them, if there is no memory.
bool AllocateBuffers(CDAC& dac, int nSectors)
{
    for (unsigned char*& pBuffer : dac.m_pBuffers)
    {
        pBuffer = new (std::nothrow) unsigned char[static_cast<size_t>(nSectors) * LY_CD_SECTOR_BYTES]();
        if (pBuffer == nullptr)
            return false;
    }
    return true;
}
} // namespace

RipJob::~RipJob()
{
    if (m_bStarted)
        (void)m_Ripper.Stop();
}

void RipJob::RequestStop()
{
    if (m_pCD != nullptr)
        m_pCD->RequestStop();
}

int RipJob::CheckStart(const RipSectorList& list, const CWaveSave* pOutput) const
{
    const MyReader* pReader = m_Ripper.m_pReader;
    if (pReader == nullptr || !pReader->m_bInitialized)
        return RIP_NOT_INITIALIZED;
    if (pReader->m_bRipping || pReader->m_bThreadActive || m_Ripper.GetRunning())
        return RIP_RUNNING;
    if (!pReader->m_bDriveOpen || pReader->m_pCD == nullptr)
        return RIP_NO_DRIVE;
    if (!IsRipSectorListValid(list))
        return RIP_BAD_LIST;
    return pOutput != nullptr ? RIP_STARTED : RIP_NO_OUTPUT;
}

int RipJob::FindCacheSectors(const RIP_OPTIONS& options)
{
    if (!options.m_bSecure)
        return 0;
    long long nBytes = static_cast<long long>(options.m_nCacheSectors) * LY_CD_SECTOR_BYTES;
    if (options.m_nCacheSectors < 0)
    {
        nBytes = m_Ripper.m_pReader->m_pCD->GetCacheSize();
        unsigned int nBufferKiB = 0;
        // What was measured is exact. But 0 also stands for what was not found: less than an eighth of the buffer, or
        // a measurement that the user did not wait for.
        if (nBytes < 1 && m_Ripper.m_pDrive->QueryCDParms(QUERY_BUFFER_KIB, nBufferKiB))
            nBytes = static_cast<long long>(nBufferKiB) * 1024;
    }
    const long long nSectors = (nBytes + LY_CD_SECTOR_BYTES - 1) / LY_CD_SECTOR_BYTES;
    return static_cast<int>(std::clamp<long long>(nSectors, 0, RIP_OPTIONS::MAX_CACHE_SECTORS));
}

// Builds all that the rip needs. The engine is the caller's, also where it is not complete.
int RipJob::Prepare(const RipSectorList& list, CWaveSave& output, const RIP_OPTIONS& options, CDAC*& pDAC)
{
    CSCSICD& cd = *m_Ripper.m_pReader->m_pCD;
    m_nCacheSectors = FindCacheSectors(options);
    unsigned int nAccurate = 0;
    m_bAccurateStream = m_Ripper.m_pDrive->QueryCDParms(QUERY_ACCURATE_STREAM, nAccurate) && nAccurate != 0;
    m_pCD.reset(new (std::nothrow) RipSCSICD(m_Ripper.m_pDrive, cd.m_DriveInfo, cd.m_strDrive));
    if (m_pCD == nullptr)
        return RIP_NO_MEMORY;
    m_pCD->m_DriveInfo.m_nMode = options.m_bSecure ? COPY_MODE_SECURE : COPY_MODE_BURST;
    m_pCD->SetMaxSektors(LY_CD_MAX_READ_SECTORS + m_nCacheSectors);

    m_State.m_Sections.RemoveAll(true);
    for (int i = 0; i < list.GetSize(); ++i)
        (void)m_State.m_Sections.Add(list[i]);
    pDAC = new (std::nothrow) RipCopy(m_State, *m_pCD, output);
    const int nBlockSectors = m_pCD->GetMaxSektors();
    if (pDAC == nullptr || m_State.m_Sections.GetSize() != list.GetSize() || !AllocateBuffers(*pDAC, nBlockSectors) ||
        !m_pCD->Prepare(m_nCacheSectors, pDAC->m_pBuffers, nBlockSectors, pDAC->m_bRunning))
        return RIP_NO_MEMORY;

    m_State.m_Log.Clear();
    m_State.m_pProgress = options.m_pProgress;
    m_State.m_nStartTick = GetTickCount();
    for (std::atomic<int>* pField : {&m_State.m_nPercent, &m_State.m_nTrack, &m_State.m_nSector, &m_State.m_nDone,
                                     &m_State.m_nReReads, &m_State.m_nElapsedMs, &m_State.m_nWriteError})
        *pField = 0;
    m_State.m_nEnd = RIP_END_WHOLE;
    m_State.m_nTotal = m_State.m_Sections.GetTotalSectors(0);
    m_State.m_nBlockSectors = nBlockSectors;
    return RIP_STARTED;
}

int RipJob::Start(const RipSectorList& list, std::unique_ptr<CWaveSave>& pOutput, IRipOwner* pOwner,
                  const RIP_OPTIONS& options)
{
    int nResult = CheckStart(list, pOutput.get());
    if (nResult != RIP_STARTED)
        return nResult;
    CDAC* pDAC = nullptr;
    nResult = Prepare(list, *pOutput, options, pDAC);
    if (nResult != RIP_STARTED)
    {
        CDAC::Delete(pDAC);
        return nResult;
    }
    MyReader& reader = *m_Ripper.m_pReader;
    reader.m_pOwner = pOwner;
    reader.m_pWaveSave = pOutput.get();
    reader.m_pDAC = pDAC;
    reader.m_bThreadActive = true;
    reader.m_bRipping = true; // from now on, and not only from when the thread gets its turn
    m_bStarted = m_Ripper.LyThread::Start();
    if (m_bStarted)
    {
        (void)pOutput.release();
        return RIP_STARTED;
    }
    reader.m_pDAC = nullptr;
    reader.m_pWaveSave = nullptr;
    reader.m_bThreadActive = false;
    reader.m_bRipping = false;
    CDAC::Delete(pDAC);
    return RIP_NO_THREAD;
}

int RipJob::StartWAV(const RipSectorList& list, const wchar_t* pPath, IRipOwner* pOwner, const RIP_OPTIONS& options)
{
    std::unique_ptr<CWaveSave> pOutput(new (std::nothrow) CWaveSave);
    if (pOutput == nullptr)
        return RIP_NO_MEMORY;
    // Nothing is created for a rip that cannot start.
    const int nResult = CheckStart(list, pOutput.get());
    if (nResult != RIP_STARTED)
        return nResult;
    CAudioFormat format;
    format.SetFormat(16, LY_CD_SAMPLE_RATE, 2, false, _GUID(), true);
    pOutput.reset(new (std::nothrow) CWaveSave(pPath, format, &m_Ripper.m_Analyzer,
                                               static_cast<long long>(list.GetTotalSectors(0)) * LY_CD_SECTOR_BYTES));
    if (pOutput == nullptr)
        return RIP_NO_MEMORY;
    return pOutput->GetIsReady() ? Start(list, pOutput, pOwner, options) : RIP_NO_OUTPUT;
}
