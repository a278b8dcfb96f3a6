// What a disc service offers, and the exports of the library.

#include "FakeDiscService.h"

#include "GlobalMacros.h"
#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

FakeDiscService& FakeDiscService::Get()
{
    static FakeDiscService s_Service;
    return s_Service;
}

LY_EXPORT IDiscManager* GetDiscManagerDLL(bool) { return &FakeDiscService::Get(); }

LY_EXPORT IFakeDisc* GetFakeDisc() { return &FakeDiscService::Get(); }

LY_EXPORT void LyDiscInitialize(long long) {}

LY_EXPORT void LyDiscUninitialize(long long) {}

static std::string Narrow(const wchar_t* pText)
{
    std::string strText;
    for (; *pText != 0; pText++)
        strText += static_cast<char>(*pText);
    return strText;
}

void FakeDiscDrive::AddUser(int nMode)
{
    m_Service.NoteCall("AddUser " + std::to_string(nMode));
    m_Service.CountUser(*this, 1);
}

void FakeDiscDrive::RemoveUser(int nMode)
{
    m_Service.NoteCall("RemoveUser " + std::to_string(nMode));
    m_Service.CountUser(*this, -1);
}

unsigned char FakeDiscDrive::GetStateA()
{
    m_Service.NoteCall("GetStateA");
    return m_Service.GetState(true);
}

unsigned char FakeDiscDrive::GetStateB()
{
    m_Service.NoteCall("GetStateB");
    return m_Service.GetState(false);
}

wchar_t* FakeDiscDrive::GetText(const char* pCall, const std::wstring& strText)
{
    m_Service.NoteCall(pCall);
    return m_Service.GetNullTexts() ? nullptr : LyCom::SysAllocString(strText.c_str());
}

wchar_t* FakeDiscDrive::GetVendor() { return GetText("GetVendor", m_strVendor); }

wchar_t* FakeDiscDrive::GetModel() { return GetText("GetModel", m_strModel); }

wchar_t* FakeDiscDrive::GetPackedCapabilities() { return GetText("GetPackedCapabilities", m_strPacked); }

FakeDiscDrive* FakeDiscService::FindDrive(const wchar_t* pPath)
{
    auto found = std::find_if(m_Drives.begin(), m_Drives.end(),
                              [pPath](const FakeDiscDrive& drive) { return drive.m_strPath == pPath; });
    return found != m_Drives.end() ? &*found : nullptr;
}

IDiscDrive* FakeDiscService::GetDrive(const wchar_t* pPath)
{
    NoteCall("GetDrive " + Narrow(pPath));
    std::lock_guard<std::mutex> lock(m_Lock);
    return FindDrive(pPath);
}

bool FakeDiscService::AcquireDrive(LyString strPath, bool bAlwaysTrue)
{
    NoteCall("AcquireDrive " + Narrow(strPath) + (bAlwaysTrue ? " 1" : " 0"));
    std::lock_guard<std::mutex> lock(m_Lock);
    FakeDiscDrive* pDrive = FindDrive(strPath);
    if (!pDrive || !m_bAcquireResult)
        return false;
    pDrive->m_bAcquired = true;
    return true;
}

void FakeDiscService::ReleaseDrive(LyString strPath, bool bAlwaysFalse)
{
    NoteCall("ReleaseDrive " + Narrow(strPath) + (bAlwaysFalse ? " 1" : " 0"));
    std::lock_guard<std::mutex> lock(m_Lock);
    if (FakeDiscDrive* pDrive = FindDrive(strPath))
        pDrive->m_bAcquired = false;
}

static unsigned int GetSteadyMs()
{
    auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<unsigned int>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

size_t FakeDiscService::Record(const FAKE_COMMAND& command)
{
    m_Commands.push_back(command);
    return m_nForgotten + m_Commands.size() - 1;
}

bool FakeDiscService::TakeFailure(int nOpcode, FAKE_SENSE& sense)
{
    std::deque<FAILURE>& failures = m_Failures[nOpcode];
    if (failures.empty())
        return false;
    sense = failures.front().sense;
    if (failures.front().nTimes > 0 && --failures.front().nTimes == 0)
        failures.pop_front();
    return true;
}

bool FakeDiscService::TakeAnswer(int nOpcode, BYTES& answer)
{
    std::deque<BYTES>& next = m_NextAnswers[nOpcode];
    if (!next.empty())
    {
        answer = next.front();
        next.pop_front();
        return true;
    }
    auto found = m_Answers.find(nOpcode);
    if (found == m_Answers.end())
        return false;
    answer = found->second;
    return true;
}

bool FakeDiscService::Perform(const unsigned char* pCDB, int nCDBBytes, unsigned char* pData, int& nDataBytes,
                              FAKE_SENSE& sense, int& nSleepMs)
{
    BYTES answer;
    if (TakeFailure(pCDB[0], sense))
        return false;
    if (!TakeAnswer(pCDB[0], answer))
        return m_Medium.Execute(pCDB, nCDBBytes, pData, nDataBytes, sense, nSleepMs);
    nDataBytes = std::min(nDataBytes, static_cast<int>(answer.size()));
    if (nDataBytes > 0 && pData)
        memcpy(pData, answer.data(), static_cast<size_t>(nDataBytes));
    return true;
}

static void PutSense(const FAKE_SENSE& sense, unsigned char* pSense, int nSenseBytes)
{
    if (sense.nSenseKey < 0 || !pSense || nSenseBytes <= SENSE_OFFSET_ASCQ)
        return;
    memset(pSense, 0, static_cast<size_t>(nSenseBytes));
    pSense[SENSE_OFFSET_RESPONSE_CODE] = static_cast<unsigned char>(sense.nResponseCode);
    pSense[SENSE_OFFSET_KEY] = static_cast<unsigned char>(sense.nSenseKey);
    pSense[SENSE_OFFSET_ASC] = static_cast<unsigned char>(sense.nASC);
    pSense[SENSE_OFFSET_ASCQ] = static_cast<unsigned char>(sense.nASCQ);
}

bool FakeDiscService::SendCommand(const wchar_t* pPath, unsigned char* pCDB, int nCDBBytes, unsigned char* pData,
                                  int& nDataBytes, DRIVE_TRANSFERTYPE eType, int nTimeoutMs, unsigned char* pSense,
                                  int nSenseBytes)
{
    FAKE_COMMAND command = {};
    memcpy(command.cdb, pCDB, static_cast<size_t>(std::clamp(nCDBBytes, 0, CDB_MAX_BYTES)));
    command.nCDBBytes = nCDBBytes;
    command.eType = eType;
    command.nDataBytes = nDataBytes;
    command.bHasData = pData != nullptr;
    command.nTimeoutMs = nTimeoutMs;
    command.nSenseBytes = nSenseBytes;
    if (pSense)
        memcpy(command.senseOnEntry, pSense, static_cast<size_t>(std::clamp(nSenseBytes, 0, SENSE_BYTES)));
    wcsncpy(command.path, pPath, std::size(command.path) - 1);
    command.thread = pthread_self();
    command.nTick = GetSteadyMs();

    std::unique_lock<std::mutex> lock(m_Lock);
    size_t nRecord = Record(command);
    if (pCDB[0] == CDB_READ_CD && m_bGateClosed)
    {
        m_nHeldReads++;
        m_Changed.notify_all();
        m_Changed.wait(lock, [this] { return !m_bGateClosed; });
        m_nHeldReads--;
    }
    FAKE_SENSE sense = {};
    int nSleepMs = 0;
    bool bResult = Perform(pCDB, nCDBBytes, pData, nDataBytes, sense, nSleepMs);
    if (!bResult)
        PutSense(sense, pSense, nSenseBytes);
    if (nSleepMs > 0)
    {
        lock.unlock();
        std::this_thread::sleep_for(std::chrono::milliseconds(nSleepMs));
        lock.lock();
    }
    if (nRecord >= m_nForgotten)
    {
        m_Commands[nRecord - m_nForgotten].bResult = bResult;
        m_Commands[nRecord - m_nForgotten].bDone = true;
    }
    return bResult;
}
