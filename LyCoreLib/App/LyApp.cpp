#include "LyApp.h"
#include "LyPlatform.h"
#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"

LyApp* LyApp::s_pApp = nullptr;

LyApp::LyApp()
{
    s_pApp = this;
    CLySharedToolsHelper::s_pApplication = this;
}

LyApp::~LyApp() = default;

bool LyApp::DllMain(HINSTANCE__* hInstance, unsigned int nReason, void*)
{
    if (nReason == REASON_DETACH)
    {
        // Deliberate: one detach too many only makes the count negative. Clamping it would let a later attach
        // initialise twice for a host that pairs its calls wrongly.
        if (LyInterlocked::Decrement(&m_nAttachCount) == 0)
            (void)ExitInstance();
        return true;
    }
    if (nReason != REASON_ATTACH || LyInterlocked::Increment(&m_nAttachCount) != 1)
        return true;
    m_hInstance = hInstance;
    CProcessInfo::s_hInstance = hInstance;
    if (InitInstance())
        return true;
    // Deliberate: the count stays at 1, so that the next attach does not try again.
    (void)ExitInstance();
    return false;
}

int LyApp::WinMain(HINSTANCE__* hInstance, HINSTANCE__*, int nCmdShow)
{
    m_hInstance = hInstance;
    m_nCmdShow = nCmdShow;
    if (InitInstance())
        LyPlatform::RunApplicationLoop();
    (void)ExitInstance();
    return m_nExitCode;
}

int LyApp::CommandLineMain()
{
    if (InitInstance())
        Run();
    (void)ExitInstance();
    return m_nExitCode;
}

bool LyApp::InitInstance() { return true; }

bool LyApp::ExitInstance() { return true; }

void LyApp::Run() {}

bool LyApp::StopRun() { return true; }

bool LyApp::OnURLProtocol(const LyString&) { return false; }

bool LyApp::GetHandleMediaKeys() { return false; }

bool LyApp::GetHandleAppleRemote() { return false; }

bool LyApp::OnMediaKey(int, int) { return false; }

bool LyApp::OnOpenFiles() { return false; }

void LyApp::CreateMacMenu() {}

void LyApp::MacMenuClick(int, LyPoint&) {}

void LyApp::OnMediaServerClose() {}

void LyApp::OnMediaServerShow() {}

void LyApp::OnUSBDeviceChange() {}

bool LyApp::GetShowPlatformCrashDialog() { return true; }
