#include "ProcessInfo.h"
#include "LyFilename.h"
#include "LyFileSystem.h"
#include "LySharedToolsHelper.h"
#include "LyStringFormat.h"
#include "LyThread.h"
#include <cstring>
#include <cwchar>
#include <new>
#include <unistd.h>

namespace
{
constexpr int PROCESS_INFO_VERSION = 20; // part of the block's name: builds with another layout have another block
constexpr wchar_t BUNDLE_FOLDER[] = L"/Contents/MacOS/"; // where an application bundle keeps its program

using PROCESS_INFO_HOLDER = LyGlobalWrapper<CProcessInfo, 0>;

// Never destroyed, only closed: static constructors and destructors in any order may ask for the process information.
PROCESS_INFO_HOLDER& GetHolder()
{
    alignas(PROCESS_INFO_HOLDER) static unsigned char s_aryStorage[sizeof(PROCESS_INFO_HOLDER)];
    static PROCESS_INFO_HOLDER* const s_pHolder = new (s_aryStorage) PROCESS_INFO_HOLDER;
    return *s_pHolder;
}

struct CLOSE_AT_LIBRARY_END
{
    CLOSE_AT_LIBRARY_END() { (void)GetHolder(); }
    ~CLOSE_AT_LIBRARY_END() { GetHolder().Close(); }
} s_CloseAtLibraryEnd;

// A field of the block may come from another process: nothing says that it has a terminator.
LyString ReadPath(const wchar_t* pField)
{
    LyString strPath;
    strPath.FromStringInMemoryFast(pField, static_cast<int>(wcsnlen(pField, CProcessInfoData::PATH_CHARS - 1)));
    return strPath;
}

// False if the block is still that of a process that is gone. A process that was killed leaves its block behind, and
// one that died while it made the block leaves one without size. The paths of either are not those of a later process
// of its number, which would load its libraries from there.
bool AllocateOwnBlock(LySharedStructure<CProcessInfoData>& block, const LyString& strName)
{
    // The first attempt at such a block removes its name.
    for (int nAttempt = 0; nAttempt < 2; ++nAttempt)
    {
        if (block.Allocate(strName, static_cast<int>(sizeof(CProcessInfoData))) && !block.GetIsOlderThanProcess())
            return true;
    }
    block.Free();
    return false;
}
} // namespace

constinit std::atomic<HINSTANCE__*> CProcessInfo::s_hInstance{nullptr};

CProcessInfo* GetProcessInfo(bool bCreate) { return GetHolder().Get(bCreate); }

void CopyStringToFixedBuffer(wchar_t* pBuffer, const wchar_t* pText, int nChars)
{
    wcsncpy(pBuffer, pText, static_cast<size_t>(nChars));
    pBuffer[nChars - 1] = 0;
}

CProcessInfo::CProcessInfo()
{
    m_pData.Set(new LySharedStructure<CProcessInfoData>, true, false);
    const LyFormatString strName(L"Lyndle Process v%d (%d)", PROCESS_INFO_VERSION, LyProcess::GetCurrentProcessId());
    // Where another user's killed process has left a block under this name, nobody else can remove it. The libraries of
    // this process then meet under a name with the user in it.
    if (!AllocateOwnBlock(*m_pData, strName))
        (void)AllocateOwnBlock(*m_pData, LyFormatString(L"%s of user %d", strName, static_cast<int>(geteuid())));
    if (GetData() != nullptr && GetData()->m_nFilled == 0)
        GetDefaultProcessInformation();
    m_bReady = true;
}

LyString CProcessInfo::GetInstallPath() const
{
    return GetData() != nullptr ? ReadPath(GetData()->m_aryInstallPath) : LyString();
}

LyString CProcessInfo::GetCustomizationFilesPath() const
{
    return GetData() != nullptr ? ReadPath(GetData()->m_aryCustomizationFilesPath) : LyString();
}

LyString CProcessInfo::GetSharedLibraryPath() const
{
    return GetData() != nullptr ? ReadPath(GetData()->m_arySharedLibraryPath) : LyString();
}

LyString CProcessInfo::GetApplicationDataPath() const
{
    return GetData() != nullptr ? ReadPath(GetData()->m_aryApplicationDataPath) : LyString();
}

HINSTANCE__* CProcessInfo::GetDynamicLibraryInstanceHandle() { return s_hInstance; }

void CProcessInfo::SetInstallPath(LyString strPath, bool bSetDerivedPaths, bool bOnlyWhenReady)
{
    if ((bOnlyWhenReady && !m_bReady) || GetData() == nullptr)
        return;
    LyFilename::FixDirectoryPath(strPath, L'/');
    CopyStringToFixedBuffer(GetData()->m_aryInstallPath, strPath);
    if (bSetDerivedPaths)
        SetDerivedPaths(strPath);
    UpdateOptionsHelperTokenReplacer();
    OutputDebugString(
        LyFormatString(L"Lyndle install path (process: %d): %s\r\n", LyProcess::GetCurrentProcessId(), strPath));
}

// What follows from the install path: beside a program in a bundle's "MacOS" stand its files in "Resources".
void CProcessInfo::SetDerivedPaths(const LyString& strInstallPath)
{
    SetSharedLibraryPath(strInstallPath);
    LyString strCustomizationFiles = strInstallPath;
    strCustomizationFiles.Replace(L"MacOS", L"Resources");
    LyFilename::FixDirectoryPath(strCustomizationFiles, L'/');
    SetCustomizationFilesPath(strCustomizationFiles);
}

void CProcessInfo::SetCustomizationFilesPath(LyString strPath)
{
    if (GetData() != nullptr)
        CopyStringToFixedBuffer(GetData()->m_aryCustomizationFilesPath, strPath);
}

void CProcessInfo::SetSharedLibraryPath(LyString strPath)
{
    if (GetData() != nullptr)
        CopyStringToFixedBuffer(GetData()->m_arySharedLibraryPath, strPath);
}

void CProcessInfo::SetApplicationDataPath(LyString strPath)
{
    if (GetData() != nullptr)
        CopyStringToFixedBuffer(GetData()->m_aryApplicationDataPath, strPath);
}

void CProcessInfo::SetApplicationDataPathToDefault()
{
    if (GetData() == nullptr)
        return;
    // Deliberate: this one name ends in a backslash, as it does on every platform.
    if (GetData()->m_bApplicationDataUnderInstallPath != 0)
        SetApplicationDataPath(GetInstallPath() + L"Application Data\\");
    else
        SetApplicationDataPath(LyFileSystem::GetDirectoryAppdataLocalRawOSCall());
}

LyString CProcessInfo::GetOutermostBundlePath(LyString strPath)
{
    while (strPath.GetSubAppearanceCount(BUNDLE_FOLDER, true) >= 2)
    {
        // "/A.app/Contents/MacOS/B.app/Contents/MacOS/" becomes "/A.app/Contents/MacOS/".
        strPath.RemoveRight(1);
        strPath.RemoveAfterReverse(L'/', true);
        strPath.RemoveAfterReverse(L'/', true);
        strPath.RemoveAfterReverse(L'/', false);
    }
    return strPath;
}

void CProcessInfo::GetDefaultProcessInformation()
{
    CProcessInfoData* pData = GetData();
    if (pData == nullptr)
        return;
    memset(pData, 0, sizeof *pData);
    pData->m_nFilled = 1;
    LyString strPath = GetOutermostBundlePath(LyFileSystem::GetDirectoryInstance());
    SetInstallPath(strPath, false, false);
    SetDerivedPaths(strPath);
    pData->m_nThreadId = static_cast<unsigned long long>(LyProcess::GetCurrentThreadId());
    SetApplicationDataPathToDefault();
    pData->m_nMinusOne = -1;
    pData->m_nNinetyNine = 99;
}
