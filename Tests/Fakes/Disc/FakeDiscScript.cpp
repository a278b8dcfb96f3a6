// The control of the scripted disc service. Every operation takes the lock for its own length.

#include "FakeDiscService.h"

#include <algorithm>
#include <chrono>

typedef std::lock_guard<std::mutex> GUARD;

void FakeDiscService::Reset()
{
    OpenGate();
    {
        GUARD lock(m_Lock);
        m_Drives.clear();
        m_bStateA = 0;
        m_bStateB = 0;
        m_bAcquireResult = true;
        m_bNullTexts = false;
        m_Medium.Reset();
    }
    AddDrive(FakeDisc::DRIVE, FakeDisc::VENDOR, FakeDisc::MODEL, nullptr);
    ClearScript();
    ForgetCalls();
    ForgetCommands();
}

void FakeDiscService::AddDrive(const wchar_t* pPath, const wchar_t* pVendor, const wchar_t* pModel,
                               const wchar_t* pPacked)
{
    GUARD lock(m_Lock);
    FakeDiscDrive* pDrive = FindDrive(pPath);
    if (!pDrive)
        pDrive = &m_Drives.emplace_back(*this, pPath);
    pDrive->m_strVendor = pVendor;
    pDrive->m_strModel = pModel;
    LyString strDefault = FakeDisc::Pack(FakeDisc::DefaultMask());
    pDrive->m_strPacked = pPacked ? pPacked : static_cast<const wchar_t*>(strDefault);
}

void FakeDiscService::RemoveDrives()
{
    GUARD lock(m_Lock);
    m_Drives.clear();
}

void FakeDiscService::SetStates(unsigned char bStateA, unsigned char bStateB)
{
    GUARD lock(m_Lock);
    m_bStateA = bStateA;
    m_bStateB = bStateB;
}

unsigned char FakeDiscService::GetState(bool bA)
{
    GUARD lock(m_Lock);
    return bA ? m_bStateA : m_bStateB;
}

void FakeDiscService::SetAcquireResult(bool bResult)
{
    GUARD lock(m_Lock);
    m_bAcquireResult = bResult;
}

void FakeDiscService::SetNullTexts(bool bNull)
{
    GUARD lock(m_Lock);
    m_bNullTexts = bNull;
}

bool FakeDiscService::GetNullTexts()
{
    GUARD lock(m_Lock);
    return m_bNullTexts;
}

void FakeDiscService::CountUser(FakeDiscDrive& drive, int nChange)
{
    GUARD lock(m_Lock);
    drive.m_nUsers += nChange;
}

int FakeDiscService::GetUsers(const wchar_t* pPath)
{
    GUARD lock(m_Lock);
    FakeDiscDrive* pDrive = FindDrive(pPath);
    return pDrive ? pDrive->m_nUsers : 0;
}

bool FakeDiscService::GetAcquired(const wchar_t* pPath)
{
    GUARD lock(m_Lock);
    FakeDiscDrive* pDrive = FindDrive(pPath);
    return pDrive && pDrive->m_bAcquired;
}

void FakeDiscService::NoteCall(const std::string& strCall)
{
    GUARD lock(m_Lock);
    m_Calls.push_back(strCall);
}

int FakeDiscService::GetCallCount()
{
    GUARD lock(m_Lock);
    return static_cast<int>(m_Calls.size());
}

const char* FakeDiscService::GetCall(int nIndex)
{
    GUARD lock(m_Lock);
    bool bThere = nIndex >= 0 && nIndex < static_cast<int>(m_Calls.size());
    return bThere ? m_Calls[static_cast<size_t>(nIndex)].c_str() : "";
}

void FakeDiscService::ForgetCalls()
{
    GUARD lock(m_Lock);
    m_Calls.clear();
}

int FakeDiscService::GetCommandCount()
{
    GUARD lock(m_Lock);
    return static_cast<int>(m_Commands.size());
}

bool FakeDiscService::GetCommand(int nIndex, FAKE_COMMAND& command)
{
    GUARD lock(m_Lock);
    if (nIndex < 0 || nIndex >= static_cast<int>(m_Commands.size()))
        return false;
    command = m_Commands[static_cast<size_t>(nIndex)];
    return true;
}

int FakeDiscService::CountCommands(int nOpcode)
{
    GUARD lock(m_Lock);
    return static_cast<int>(std::count_if(m_Commands.begin(), m_Commands.end(),
                                          [nOpcode](const FAKE_COMMAND& command)
                                          { return command.cdb[0] == nOpcode; }));
}

bool FakeDiscService::GetCommandOf(int nOpcode, int nIndex, FAKE_COMMAND& command)
{
    GUARD lock(m_Lock);
    for (const FAKE_COMMAND& recorded : m_Commands)
    {
        if (recorded.cdb[0] != nOpcode || nIndex-- != 0)
            continue;
        command = recorded;
        return true;
    }
    return false;
}

void FakeDiscService::ForgetCommands()
{
    GUARD lock(m_Lock);
    m_nForgotten += m_Commands.size();
    m_Commands.clear();
}

void FakeDiscService::FailNext(int nOpcode, int nTimes, int nSenseKey, int nASC, int nASCQ, int nResponseCode)
{
    GUARD lock(m_Lock);
    if (nTimes != 0)
        m_Failures[nOpcode].push_back({nTimes, {nResponseCode, nSenseKey, nASC, nASCQ}});
}

static std::vector<unsigned char> MakeBytes(const void* pData, int nBytes)
{
    const unsigned char* pBytes = static_cast<const unsigned char*>(pData);
    return std::vector<unsigned char>(pBytes, pBytes + nBytes);
}

void FakeDiscService::Answer(int nOpcode, const void* pData, int nBytes)
{
    GUARD lock(m_Lock);
    m_Answers[nOpcode] = MakeBytes(pData, nBytes);
}

void FakeDiscService::AnswerNext(int nOpcode, const void* pData, int nBytes)
{
    GUARD lock(m_Lock);
    m_NextAnswers[nOpcode].push_back(MakeBytes(pData, nBytes));
}

void FakeDiscService::ClearScript()
{
    GUARD lock(m_Lock);
    m_Failures.clear();
    m_Answers.clear();
    m_NextAnswers.clear();
}

void FakeDiscService::LoadDisc(const FAKE_TRACK* pTracks, int nTracks, int nLeadOutSector)
{
    GUARD lock(m_Lock);
    m_Medium.Load(pTracks, nTracks, nLeadOutSector);
}

void FakeDiscService::LoadTwelveTracksAndData()
{
    GUARD lock(m_Lock);
    m_Medium.LoadTwelveTracksAndData();
}

void FakeDiscService::EjectDisc()
{
    GUARD lock(m_Lock);
    m_Medium.Eject();
}

void FakeDiscService::SetCDText(const void* pAnswer, int nBytes)
{
    GUARD lock(m_Lock);
    m_Medium.SetCDText(pAnswer, nBytes);
}

void FakeDiscService::DisturbSector(int nSector, int nTimes)
{
    GUARD lock(m_Lock);
    m_Medium.DisturbSector(nSector, nTimes);
}

void FakeDiscService::FailSector(int nSector, int nTimes)
{
    GUARD lock(m_Lock);
    m_Medium.FailSector(nSector, nTimes);
}

void FakeDiscService::SimulateCache(int nCacheSectors, int nMissMs, int nHitMs)
{
    GUARD lock(m_Lock);
    m_Medium.SimulateCache(nCacheSectors, nMissMs, nHitMs);
}

void FakeDiscService::CloseGate()
{
    GUARD lock(m_Lock);
    m_bGateClosed = true;
}

void FakeDiscService::OpenGate()
{
    GUARD lock(m_Lock);
    m_bGateClosed = false;
    m_Changed.notify_all();
}

bool FakeDiscService::WaitForHeldReads(int nReads, int nTimeoutMs)
{
    std::unique_lock<std::mutex> lock(m_Lock);
    return m_Changed.wait_for(lock, std::chrono::milliseconds(nTimeoutMs),
                              [this, nReads] { return m_nHeldReads >= nReads; });
}
