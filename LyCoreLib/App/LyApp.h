// LyApp: the one object that stands for an application, or for a library inside its host's process.
//
// Exactly one is made per library or program, as a global object. Every constructor stores its own address in s_pApp
// and nobody clears it. Threads: the attach count may be raised and lowered from several threads at once; everything
// else belongs to one.

#pragma once

#include "GlobalMacros.h"
#include "LyArray.h"
#include "LyMap.h"
#include "LyString.h"

// A place on the screen, in pixels.
struct LyPoint
{
    int m_nX = 0;
    int m_nY = 0;
};

class LyApp
{
public:
    // The reasons that DllMain is called for. All others are ignored.
    enum REASON : unsigned int
    {
        REASON_DETACH = 0,
        REASON_ATTACH = 1
    };

    LyApp();
    LyApp(const LyApp&) = delete;
    LyApp& operator=(const LyApp&) = delete;

    // The order of the operations is their order in the virtual table.
    virtual ~LyApp();
    // Counts attaches. The first runs InitInstance, the detach that brings the count to zero runs ExitInstance.
    virtual bool DllMain(HINSTANCE__* hInstance, unsigned int nReason, void* pReserved);
    virtual int WinMain(HINSTANCE__* hInstance, HINSTANCE__* hPrevious, int nCmdShow);
    virtual int CommandLineMain();
    virtual bool InitInstance();
    virtual bool ExitInstance();
    // The rest serves full applications; a library's object answers as if nothing were there.
    virtual void Run();
    virtual bool StopRun();
    virtual bool OnURLProtocol(const LyString& strURL);
    virtual bool GetHandleMediaKeys();
    virtual bool GetHandleAppleRemote();
    virtual bool OnMediaKey(int nKey, int nState);
    virtual bool OnOpenFiles();
    virtual void CreateMacMenu();
    virtual void MacMenuClick(int nItem, LyPoint& point);
    virtual void OnMediaServerClose();
    virtual void OnMediaServerShow();
    virtual void OnUSBDeviceChange();
    virtual bool GetShowPlatformCrashDialog();

    static LyApp* s_pApp;

    HINSTANCE__* m_hInstance = nullptr; // module handle of the first attach
    int m_nCmdShow = 0;
    LyCommandLine m_CommandLine;
    int m_nExitCode = 0;
    LyStringUniqueList<LyString, false> m_UniqueList;
    int m_nAttachCount = 0; // changed only by LyInterlocked; may go below zero, and then nothing follows
    LyStringArray m_Strings;
};
