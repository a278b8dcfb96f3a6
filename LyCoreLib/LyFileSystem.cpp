#include "LyFileSystem.h"
#include "IProductInfo.h"
#include "LyArray.h"
#include "LyFile.h"
#include "LyFilename.h"
#include "LyPlatform.h"
#include "LySharedToolsHelper.h"
#include "LyStringFormat.h"
#include "LyThread.h"
#include "OptionsHelper.h"
#include "ProcessInfo.h"
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr wchar_t SLASH = L'/';
constexpr int MAX_EXECUTABLE_PATH_BYTES = 1024;
constexpr mode_t EVERYBODY_MAY_DO_ALL = 0777; // less what the process's umask takes away
constexpr wchar_t TEMP_LOCATION_OPTION[] = L"File Location - Temp Location";

int GetThreadNumber() { return static_cast<int>(LyProcess::GetCurrentThreadId()); }

// The level above, with its "/"; empty above the last one.
void RemoveLastComponent(LyString& strPath)
{
    strPath.RemoveRight(1);
    if (!strPath.RemoveAfterReverse(SLASH, false))
        strPath.Empty();
}

// The folder that the player's user chose for temporary files, made if need be; empty if there is none. A choice that
// cannot be made is forgotten.
LyString GetTempDirectoryFromOptions(bool bAddFolder)
{
    COptionsHelper options(L"Properties", true);
    LyString strPath = options.Get(TEMP_LOCATION_OPTION, LyString(), 0, LyString(), 0);
    if (strPath.IsEmpty())
        return strPath;
    if (bAddFolder)
        LyFilename::AddDirectory(strPath, L"Lyndle");
    if (LyFileSystem::MakeDirectoryTree(strPath, false))
        return strPath;
    (void)options.Delete(TEMP_LOCATION_OPTION);
    return LyString();
}
} // namespace

LyString LyFileSystem::GetDirectoryInstance()
{
    char szPath[MAX_EXECUTABLE_PATH_BYTES];
    if (!LyPlatform::GetExecutablePath(szPath, MAX_EXECUTABLE_PATH_BYTES))
        return LyString();
    LyString strPath;
    strPath.FromUTF8(reinterpret_cast<const unsigned char*>(szPath));
    (void)strPath.RemoveAfterReverse(SLASH, false);
    CleanDirectory(strPath);
    return strPath;
}

LyString LyFileSystem::GetDirectoryInstall()
{
    const CProcessInfo* pProcess = GetProcessInfo(true);
    LyString strPath = pProcess != nullptr ? pProcess->GetInstallPath() : LyString();
    CleanDirectory(strPath);
    return strPath;
}

LyString LyFileSystem::GetDirectoryAppdataLocal()
{
    const CProcessInfo* pProcess = GetProcessInfo(true);
    LyString strPath = pProcess != nullptr ? pProcess->GetApplicationDataPath() : LyString();
    CleanDirectory(strPath);
    return strPath;
}

LyString LyFileSystem::GetDirectoryAppdataLocalRawOSCall()
{
    LyString strPath;
    strPath.FromANSI(LyPlatform::GetHomeDirectory());
    LyFilename::FixDirectoryPath(strPath, SLASH);
    strPath += L"Library/Application Support/";
    CleanDirectory(strPath);
    return strPath;
}

LyString LyFileSystem::GetDirectoryAppdataLy()
{
    LyString strPath;
    if (IProductInfo* pProduct = GetProductInfo(true))
    {
        LyXString directory = pProduct->GetAppdataDirectory();
        strPath = LyString(directory);
        LyCom::SysFreeString(directory.m_pText);
    }
    if (strPath.IsEmpty())
        strPath = GetDirectoryAppdataLocal() + L"Lyndle/" + L"Generic/";
    CleanDirectory(strPath);
    return strPath;
}

LyString LyFileSystem::GetDirectoryTempLy(bool bUseOption, bool bAddFolder)
{
    LyString strPath = bUseOption ? GetTempDirectoryFromOptions(bAddFolder) : LyString();
    if (strPath.IsEmpty())
    {
        strPath = GetDirectoryAppdataLy() + L"Temp/";
        (void)MakeDirectoryTree(strPath, false); // whoever writes there finds out
    }
    CleanDirectory(strPath);
    return strPath;
}

void LyFileSystem::CleanDirectory(LyString& strPath)
{
    if (strPath.IsEmpty())
        return;
    LyString strLong = LyFilename::GetLongName(strPath);
    if (!strLong.IsEmpty() && strLong != strPath)
        strPath = strLong;
    LyFilename::FixDirectoryPath(strPath, SLASH);
}

bool LyFileSystem::MakeDirectoryTree(LyString strPath, bool bCheckWritable)
{
    if (strPath.IsEmpty() || GetFileSystemManager(true) == nullptr)
        return false;
    LyFilename::FixDirectoryPath(strPath, SLASH);
    // Deliberate: nothing is made for a path that does not begin at a root, and that is no failure. "~" counts as a
    // root by its form only: it is a folder name like any other, since only a shell knows whose home it means.
    if (!strPath.BeginsWith(L"/", false) && !strPath.BeginsWith(L"~/", false))
        return !bCheckWritable;

    LyStringArray aryMissing; // from the deepest up
    for (LyString str = strPath; !str.IsEmpty() && str != L"/" && !GetIsDirectory(str); RemoveLastComponent(str))
        aryMissing.Add(str);
    for (int nIndex = aryMissing.GetSize() - 1; nIndex >= 0; nIndex--)
    {
        // Another thread or process may have made it meanwhile.
        if (!CreateDirectory(aryMissing[nIndex]) && !GetIsDirectory(aryMissing[nIndex]))
            break;
    }
    return GetIsDirectory(strPath) && (!bCheckWritable || IsWritableDirectory(strPath));
}

bool LyFileSystem::CreateDirectory(const wchar_t* pPath)
{
    return mkdir(LyStringUTF8(LyString(pPath)), EVERYBODY_MAY_DO_ALL) == 0;
}

bool LyFileSystem::GetIsDirectory(const LyString& strPath)
{
    struct stat status;
    return stat(LyStringUTF8(strPath), &status) == 0 && S_ISDIR(status.st_mode);
}

bool LyFileSystem::IsWritableDirectory(const LyString& strPath)
{
    if (strPath.IsEmpty())
        return false;
    // The thread is in the name so that two threads can test one folder.
    LyFormatString strName(L"%sDirectory Write Test (%d).tmp", strPath, GetThreadNumber());
    LyFile file(LyFilename(strName), LY_FILE_READ_WRITE, LY_FILE_SHARE_READ_WRITE, LY_FILE_OPEN_OR_CREATE);
    if (!file.Open())
        return false;
    file.Close();
    (void)DeleteFile(strName); // the folder is writable, even if the file will not go
    return true;
}

bool LyFileSystem::DeleteFile(const LyString& strPath)
{
    return !strPath.IsEmpty() && unlink(LyStringUTF8(strPath)) == 0;
}

bool LyFileSystem::FileExistsLowLevel(const wchar_t* pPath)
{
    struct stat status;
    return stat(LyStringUTF8(LyString(pPath)), &status) == 0 && !S_ISDIR(status.st_mode);
}

LyString LyFileSystem::GetTemporaryFilename(const LyString& strName, const LyString& strExtension, bool bAddThreadId,
                                            bool bMakeUnique, LyString strDirectory)
{
    LyString strPath = strDirectory.IsEmpty() ? GetDirectoryTempLy(true, true) : strDirectory;
    LyFilename::FixDirectoryPath(strPath, SLASH);
    strPath += strName;
    if (bAddThreadId)
        strPath += LyFormatString(L" - %d", GetThreadNumber());
    if (!strExtension.IsEmpty())
        strPath += L"." + strExtension;
    if (bMakeUnique)
        MakeUniqueFilename(strPath);
    return strPath;
}
