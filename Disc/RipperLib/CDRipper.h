// CCDRipper: owns one open drive and all that hangs on it. It answers sector reads for playback and, as a worker
// thread, runs one rip to its end and tells its owner how it went.
//
// Units:   sectors of LY_CD_SECTOR_BYTES, tracks from 1.
// Errors:  CDRIPPER_ codes. GetTrackLength answers them in place of a length, which a caller cannot tell apart.
// Threads: no lock. One thread opens, another may read, but not at once; m_bRipping keeps playback reads out of a rip.
//          Stop may come from any thread and waits for the worker's end.

#pragma once

#include "LyArray.h"
#include "LyThread.h"
#include "MyReader.h"
#include "OptionsHelper.h"
#include "THAudioAnalyzer.h"
#include "THDriveInterface.h"

enum CDRIPPER_RESULT : int
{
    CDRIPPER_DONE = 0,
    CDRIPPER_NOT_INITIALIZED = 13,
    CDRIPPER_NO_DRIVE = 14, // none is open, or it could not be opened
    CDRIPPER_RIP_RUNNING = 15,
    CDRIPPER_BAD_TRACK = 16
};

// Messages to the owner of a rip; the first parameter is the value of CDAC::Lasterror().
enum CDRIPPER_MESSAGE : int
{
    CDRIPPER_RIP_FINISHED = 1151,
    CDRIPPER_RIP_FAILED = 1152
};

enum COPY_MODE : short
{
    COPY_MODE_PLAYBACK = 0,
    COPY_MODE_RIP = 1 // with cache measuring and secure reads
};

// Elements of m_CDParams, what is remembered of a drive. The others have no writer here and are carried unchanged.
enum CD_PARAM : int
{
    CD_PARAM_MODEL = 2,
    CD_PARAM_CACHE_BYTES = 4 // negative: not known
};

class CCDRipper : public LyThread
{
public:
    CCDRipper();
    ~CCDRipper() override;

    int Init();
    // Opens a drive and reads its table of contents. bNoSave: no parameter list is written back. 0, 14 or 15.
    int OpenDrive(const wchar_t* pDrive, bool bNoSave);
    int GetTrackLength(short nTrack); // sectors, or one of the codes 13 to 16
    // nSector counts from the start of the track. 0, a CDRIPPER_ code, or the command layer's last error.
    short ReadSectors(int nTrack, int nSector, int nCount, char* pBuffer);
    int ReadSectors_Aspi(short nTrack, long nSector, long nCount, char* pBuffer);
    int SetCopyMode(short nMode);
    int SetReadSpeed(int nSpeed); // multiples of 1x, 0 the maximum; takes effect at the next OpenDrive
    int SectorReadInit();         // these two bracket a run of reads and do nothing
    int SectorReadTerm();

    // The memory of drive models (DriveMemory.cpp): a comma-separated list in the options store, one for each drive.
    LyString LoadLastValue(LyString strKey);
    void GetCDParams(LyString strDrive);
    void PutCDParams(LyString strDrive);
    bool GetCDDriveModelName(LyString& strName);
    void SaveCDModelName(LyString strDrive);
    int GetReadCacheSize(LyString strDrive); // bytes; 0 if it is not known

    bool Thread() override;
    bool ProcessMainThreadMessage(int nMessage, long long nData) override;
    bool Stop(int nTimeoutMS) override { return LyThread::Stop(nTimeoutMS); }
    virtual bool Stop(); // stops a copy that runs and waits for the worker without limit

    long long m_nReserved1 = 0;
    long long m_nReserved2 = 0;
    long long m_nReserved3 = 0;
    LyPtr<MyReader, MyReader> m_pReader;
    int m_nReadSpeed = 0;
    short m_nCopyMode = COPY_MODE_RIP;
    short m_nReserved4 = 0;
    LyString m_strReserved1;
    int m_nReserved5 = 0;
    LyString m_strReserved2;
    LyStringArray m_CDParams;
    int m_nReserved6 = 0;
    CTHAudioAnalyzer m_Analyzer;
    LyPtr<char, char> m_pReserved;
    LyPtr<CTHDriveInterface, CTHDriveInterface> m_pDrive;
    LyPtr<COptionsHelper, COptionsHelper> m_pOptions;
    bool m_bNoSave = false;

private:
    int RunCopy();
    void MarkRipEnded();

    LyLock m_CopyLock; // over the end of m_pDAC, which Stop of another thread may be looking at
};
