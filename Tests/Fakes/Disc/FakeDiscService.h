// The scripted disc service itself: the two interfaces of a disc service, the script, and the record of what was sent.

#pragma once

#include "FakeDiscMedium.h"
#include <condition_variable>
#include <deque>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <vector>

class FakeDiscService;

class FakeDiscDrive final : public IDiscDrive
{
public:
    FakeDiscDrive(FakeDiscService& service, const wchar_t* pPath) : m_Service(service), m_strPath(pPath) {}

    void Reserved0() override {}
    void Reserved1() override {}
    void Reserved2() override {}
    void Reserved3() override {}
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved11() override {}
    void AddUser(int nMode) override;
    void RemoveUser(int nMode) override;
    unsigned char GetStateA() override;
    wchar_t* GetVendor() override;
    wchar_t* GetModel() override;
    unsigned char GetStateB() override;
    wchar_t* GetPackedCapabilities() override;

    FakeDiscService& m_Service;
    std::wstring m_strPath;
    std::wstring m_strVendor;
    std::wstring m_strModel;
    std::wstring m_strPacked;
    int m_nUsers = 0;
    bool m_bAcquired = false;

private:
    wchar_t* GetText(const char* pCall, const std::wstring& strText);
};

class FakeDiscService final : public IDiscManager, public IFakeDisc
{
public:
    FakeDiscService() { Reset(); }
    static FakeDiscService& Get();

    // IDiscManager
    void Reserved0() override {}
    void Reserved1() override {}
    void Reserved3() override {}
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}
    IDiscDrive* GetDrive(const wchar_t* pPath) override;
    bool AcquireDrive(LyString strPath, bool bAlwaysTrue) override;
    void ReleaseDrive(LyString strPath, bool bAlwaysFalse) override;
    bool SendCommand(const wchar_t* pPath, unsigned char* pCDB, int nCDBBytes, unsigned char* pData, int& nDataBytes,
                     DRIVE_TRANSFERTYPE eType, int nTimeoutMs, unsigned char* pSense, int nSenseBytes) override;

    // IFakeDisc
    void Reset() override;
    void AddDrive(const wchar_t* pPath, const wchar_t* pVendor, const wchar_t* pModel, const wchar_t* pPacked) override;
    void RemoveDrives() override;
    void SetStates(unsigned char bStateA, unsigned char bStateB) override;
    void SetAcquireResult(bool bResult) override;
    void SetNullTexts(bool bNull) override;
    int GetUsers(const wchar_t* pPath) override;
    bool GetAcquired(const wchar_t* pPath) override;
    int GetCallCount() override;
    const char* GetCall(int nIndex) override;
    void ForgetCalls() override;
    int GetCommandCount() override;
    bool GetCommand(int nIndex, FAKE_COMMAND& command) override;
    int CountCommands(int nOpcode) override;
    bool GetCommandOf(int nOpcode, int nIndex, FAKE_COMMAND& command) override;
    void ForgetCommands() override;
    void FailNext(int nOpcode, int nTimes, int nSenseKey, int nASC, int nASCQ, int nResponseCode) override;
    void Answer(int nOpcode, const void* pData, int nBytes) override;
    void AnswerNext(int nOpcode, const void* pData, int nBytes) override;
    void ClearScript() override;
    void LoadDisc(const FAKE_TRACK* pTracks, int nTracks, int nLeadOutSector) override;
    void LoadTwelveTracksAndData() override;
    void EjectDisc() override;
    void SetCDText(const void* pAnswer, int nBytes) override;
    void DisturbSector(int nSector, int nTimes) override;
    void FailSector(int nSector, int nTimes) override;
    void SimulateCache(int nCacheSectors, int nMissMs, int nHitMs) override;
    void CloseGate() override;
    void OpenGate() override;
    bool WaitForHeldReads(int nReads, int nTimeoutMs) override;

    // For the drives; they take the lock.
    void NoteCall(const std::string& strCall);
    void CountUser(FakeDiscDrive& drive, int nChange);
    unsigned char GetState(bool bA);
    bool GetNullTexts();

private:
    typedef std::vector<unsigned char> BYTES;
    struct FAILURE
    {
        int nTimes; // -1: all
        FAKE_SENSE sense;
    };

    FakeDiscDrive* FindDrive(const wchar_t* pPath);
    size_t Record(const FAKE_COMMAND& command);
    bool TakeFailure(int nOpcode, FAKE_SENSE& sense);
    bool TakeAnswer(int nOpcode, BYTES& answer);
    bool Perform(const unsigned char* pCDB, int nCDBBytes, unsigned char* pData, int& nDataBytes, FAKE_SENSE& sense,
                 int& nSleepMs);

    std::mutex m_Lock;
    std::condition_variable m_Changed;
    std::list<FakeDiscDrive> m_Drives;
    unsigned char m_bStateA = 0;
    unsigned char m_bStateB = 0;
    bool m_bAcquireResult = true;
    bool m_bNullTexts = false;
    std::deque<std::string> m_Calls;
    std::deque<FAKE_COMMAND> m_Commands;
    size_t m_nForgotten = 0; // commands that were recorded before the first of m_Commands
    std::map<int, std::deque<FAILURE>> m_Failures;
    std::map<int, BYTES> m_Answers;
    std::map<int, std::deque<BYTES>> m_NextAnswers;
    FakeDiscMedium m_Medium;
    bool m_bGateClosed = false;
    int m_nHeldReads = 0;
};
