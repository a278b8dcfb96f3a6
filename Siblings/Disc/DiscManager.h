// DiscManager: the disc service of this library. A path to a disc image is a drive; a file URL is the path that it
// names.
//
// Owner:   drives live as long as the service. The image's files are open only while somebody holds the drive.
// Threads: any.

#pragma once

#include "ServiceDrive.h"
#include <map>
#include <memory>
#include <mutex>

class DiscManager final : public IDiscManager
{
public:
    IDiscDrive* GetDrive(const wchar_t* pPath) override;
    bool AcquireDrive(LyString strPath, bool bAlwaysTrue) override;
    void ReleaseDrive(LyString strPath, bool bAlwaysFalse) override;
    bool SendCommand(const wchar_t* pPath, unsigned char* pCDB, int nCDBBytes, unsigned char* pData, int& nDataBytes,
                     DRIVE_TRANSFERTYPE eType, int nTimeoutMs, unsigned char* pSense, int nSenseBytes) override;

    // Why the path could not be opened the last time, or what could not be read from it; empty if all went well.
    std::string GetErrorText(const wchar_t* pPath);
    // What was tolerated when the path was opened, a sentence to a line; only while somebody holds the drive.
    std::string GetWarnings(const wchar_t* pPath);

    void Reserved0() override {}
    void Reserved1() override {}
    void Reserved3() override {}
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}

private:
    ServiceDrive* FindDrive(const std::string& strKey);
    void SetError(const std::string& strKey, const std::string& strError);

    std::mutex m_Mutex;
    std::map<std::wstring, std::string, std::less<>> m_mapKeys; // paths as given, and the files that they name
    std::map<std::string, std::unique_ptr<ServiceDrive>> m_mapDrives;
    std::string m_strErrorKey; // the last path that could not be opened, and why
    std::string m_strError;
};

// The file that a drive path names: absolute, UTF-8; "file://" is taken off and its escapes are read.
std::string GetImagePath(const wchar_t* pPath);
