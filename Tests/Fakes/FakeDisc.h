// A scripted disc service: libLyDisc.dylib in RONDEL_FAKES_DIR "/disc", which the code under test loads like the real
// one.
//
// It plays one or more drives with one disc in each, answers commands from a small simulated disc or from a script,
// records every command, and can be made to fail, to stall, or to be slow where a real drive's cache would miss.
//
//     IFakeDisc* pFake = FakeDisc::Load();                       // sets the shared library path, loads, resets
//     pFake->FailNext(CDB_READ_CD, 2, SENSE_UNIT_ATTENTION, 0x28, 0);
//     ...
//     EXPECT_EQ(3, pFake->CountCommands(CDB_READ_CD));
//
// Order for each command: recorded; held at the gate; failed if a failure is due; answered by the script if there is an
// answer; otherwise done on the simulated disc.
// Threads: any; one lock inside, which is not held while a command waits or sleeps.

#pragma once

#include "CDUnits.h"
#include "LySharedToolsHelper.h"
#include "MMC.h"
#include "ProcessInfo.h"
#include "THDriveInterface.h"
#include <pthread.h>

// One command as it reached the service.
struct FAKE_COMMAND
{
    unsigned char cdb[CDB_MAX_BYTES];
    int nCDBBytes;
    DRIVE_TRANSFERTYPE eType;
    int nDataBytes; // as given
    bool bHasData;  // the data pointer was not null
    int nTimeoutMs;
    int nSenseBytes;
    unsigned char senseOnEntry[SENSE_BYTES]; // what the caller's sense buffer held
    wchar_t path[64];
    pthread_t thread;
    unsigned int nTick; // milliseconds of a steady clock
    bool bResult;       // false while the command is under way, too
    bool bDone;
};

// One track of the simulated disc.
struct FAKE_TRACK
{
    int nNumber;
    int nStartSector;       // may be negative, as drives report it for hidden tracks
    unsigned char nControl; // TRACK_CONTROL bits
};

// The control of the fake, fetched by FakeDisc::Load.
class IFakeDisc
{
public:
    // Back to the beginning: one drive "E:" of FakeDisc::VENDOR and FakeDisc::MODEL with valid capabilities, twelve
    // audio tracks and a data track in it, nothing scripted, nothing recorded, gate open, no latency.
    virtual void Reset() = 0;

    // ---- Drives
    // pPacked: the packed DSENSEMASK; null stands for FakeDisc::DefaultMask.
    virtual void AddDrive(const wchar_t* pPath, const wchar_t* pVendor, const wchar_t* pModel,
                          const wchar_t* pPacked) = 0; // replaces a drive of the same path
    virtual void RemoveDrives() = 0;
    virtual void SetStates(unsigned char bStateA, unsigned char bStateB) = 0;
    virtual void SetAcquireResult(bool bResult) = 0;
    virtual void SetNullTexts(bool bNull) = 0; // drives answer null for every text
    virtual int GetUsers(const wchar_t* pPath) = 0;
    virtual bool GetAcquired(const wchar_t* pPath) = 0;

    // The calls other than SendCommand, in order, such as "GetDrive E:", "AddUser 2", "AcquireDrive E: 1", "GetModel".
    virtual int GetCallCount() = 0;
    virtual const char* GetCall(int nIndex) = 0; // empty beyond the end; valid until the next call or ForgetCalls
    virtual void ForgetCalls() = 0;

    // ---- What was sent
    virtual int GetCommandCount() = 0;
    virtual bool GetCommand(int nIndex, FAKE_COMMAND& command) = 0;
    virtual int CountCommands(int nOpcode) = 0;
    virtual bool GetCommandOf(int nOpcode, int nIndex, FAKE_COMMAND& command) = 0; // the nIndex-th of this opcode
    virtual void ForgetCommands() = 0;

    // ---- The script
    // The next nTimes commands of this opcode fail with this sense data; -1 stands for all of them. Several calls
    // queue.
    virtual void FailNext(int nOpcode, int nTimes, int nSenseKey, int nASC = 0, int nASCQ = 0,
                          int nResponseCode = SENSE_RESPONSE_CURRENT) = 0;
    // Commands of this opcode succeed with these bytes instead of the disc's; what they do not fill is left alone.
    virtual void Answer(int nOpcode, const void* pData, int nBytes) = 0;
    virtual void AnswerNext(int nOpcode, const void* pData,
                            int nBytes) = 0; // once; several calls queue, ahead of Answer
    virtual void ClearScript() = 0;          // failures and answers

    // ---- The simulated disc
    virtual void LoadDisc(const FAKE_TRACK* pTracks, int nTracks, int nLeadOutSector) = 0;
    virtual void LoadTwelveTracksAndData() = 0;                  // FakeDisc::TRACK_SECTORS each; see FakeDisc
    virtual void EjectDisc() = 0;                                // everything that needs a disc fails with 2/3A/00
    virtual void SetCDText(const void* pAnswer, int nBytes) = 0; // header and packs; without it there is none
    // The next nTimes reads that touch this sector deliver it changed, and differently each time.
    virtual void DisturbSector(int nSector, int nTimes) = 0;
    virtual void FailSector(int nSector, int nTimes) = 0; // reads that touch it fail with 3/11/05; -1: always

    // ---- Time
    // A read that the simulated cache of nCacheSectors holds takes nHitMs, another one nMissMs. 0, 0, 0 switches it
    // off.
    virtual void SimulateCache(int nCacheSectors, int nMissMs, int nHitMs) = 0;
    // While the gate is closed, READ CD commands wait at it, before they do anything.
    virtual void CloseGate() = 0;
    virtual void OpenGate() = 0;
    virtual bool WaitForHeldReads(int nReads, int nTimeoutMs) = 0; // until so many wait; false if the time is over

protected:
    ~IFakeDisc() = default;
};

// How a test gets at the fake, and what its disc holds.
class FakeDisc
{
public:
    static constexpr const wchar_t* DRIVE = L"E:";
    static constexpr const wchar_t* VENDOR = L"ACME";
    static constexpr const wchar_t* MODEL = L"CD-ROM X1";

    // The disc of Reset: tracks 1 to 12 of audio, TRACK_SECTORS each and one behind the other from sector 0, the
    // session gap, and data track 13 of TRACK_SECTORS.
    static constexpr int TRACKS = 12;
    static constexpr int TRACK_SECTORS = 1000;
    static constexpr int DATA_START = TRACKS * TRACK_SECTORS + 11400;
    static constexpr int LEAD_OUT = DATA_START + TRACK_SECTORS;

    // The byte of the audio pattern at this place: different in neighbouring sectors, and never a period of a sector.
    static unsigned char AudioByte(int nSector, int nOffset)
    {
        unsigned int n = static_cast<unsigned int>(nSector) * 2654435761U + static_cast<unsigned int>(nOffset) * 40503U;
        return static_cast<unsigned char>((n >> 11) ^ (n >> 23));
    }

    // The capabilities of the drive of Reset: reads and writes CD-R and CD-RW, plays audio, buffer of BUFFER_KIB,
    // 40x reading and 16x writing, and nothing else.
    static constexpr int BUFFER_KIB = 512;
    static DSENSEMASK DefaultMask()
    {
        DSENSEMASK mask = DSENSEMASK();
        unsigned char* pPage = mask.m_CapabilitiesPage;
        pPage[0] = MODE_PAGE_CAPABILITIES;
        pPage[1] = 34; // with one write speed descriptor
        pPage[2] = 0x03;
        pPage[3] = 0x03;
        pPage[4] = 0x81;
        pPage[5] = 0x03;
        MMCPut16(pPage + 8, 7056);
        MMCPut16(pPage + 12, BUFFER_KIB);
        MMCPut16(pPage + 14, 7056);
        MMCPut16(pPage + 30, 1);
        MMCPut16(pPage + 34, 2822);
        mask.m_bCapabilitiesValid = true;
        return mask;
    }

    // The packed form: two hexadecimal digits for each byte of the record.
    static LyString Pack(const DSENSEMASK& mask)
    {
        LyString strPacked;
        const unsigned char* pBytes = reinterpret_cast<const unsigned char*>(&mask);
        for (unsigned int i = 0; i < sizeof mask; i++)
        {
            strPacked += L"0123456789ABCDEF"[pBytes[i] >> 4];
            strPacked += L"0123456789ABCDEF"[pBytes[i] & 15];
        }
        return strPacked;
    }

    // Loads the fake through the sibling loader, resets it, and returns its control; null if it cannot be loaded. The
    // shared library path of the process is the same afterwards, so that other fakes can come from other folders.
    static IFakeDisc* Load();
};

// The fake's own export, beside those of a disc service.
typedef IFakeDisc* (*GetFakeDiscFunction)();
constexpr const char* GET_FAKE_DISC = "GetFakeDisc";

inline IFakeDisc* FakeDisc::Load()
{
    CProcessInfo* pProcess = GetProcessInfo(true);
    LyString strPath = pProcess->GetSharedLibraryPath();
    pProcess->SetSharedLibraryPath(L"" RONDEL_FAKES_DIR "/disc/");
    (void)GetDiscManager(true); // what counts is that the library is there
    pProcess->SetSharedLibraryPath(strPath);
    void* pEntry = g_LySharedToolsHelper.m_DiscLibrary.GetProcAddress(GET_FAKE_DISC);
    if (pEntry == nullptr)
        return nullptr;
    IFakeDisc* pFake = reinterpret_cast<GetFakeDiscFunction>(pEntry)();
    pFake->Reset();
    return pFake;
}
