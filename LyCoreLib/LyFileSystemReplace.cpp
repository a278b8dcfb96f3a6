// The part of LyFileSystem that works on single files: names, moves, the safe replacement, readable sizes.

#include "LogHelper.h"
#include "LyFile.h"
#include "LyFilename.h"
#include "LyFileSystem.h"
#include "LySharedToolsHelper.h"
#include "LyStringFormat.h"

namespace
{
constexpr wchar_t REPLACE_LOG_NAME[] = L"LyFileSystem::SafeReplaceFile";

struct SIZE_UNIT
{
    unsigned long long nLimit; // the unit is for sizes below this one
    unsigned long long nBytes; // of one unit
    const wchar_t* pName;
};
const SIZE_UNIT s_arySizeUnits[] = {
    {1ULL << 20, 1ULL << 10, L"KB"}, {1ULL << 30, 1ULL << 20, L"MB"}, {1ULL << 40, 1ULL << 30, L"GB"},
    {1ULL << 50, 1ULL << 40, L"TB"}, {~0ULL, 1ULL << 50, L"PB"},
};
constexpr unsigned long long BYTES_IN_WORDS_LIMIT = 1ULL << 10;
constexpr double WHOLE_NUMBERS_FROM = 100.0;

// For single quotes, which the shell reads as they are; a quote itself is put between two such texts. A name that
// begins like an option is made a path, which mv takes for what it is.
LyString EscapeForShell(const wchar_t* pPath)
{
    LyString strPath(pPath);
    if (strPath[0] == L'-')
        strPath = L"./" + strPath;
    strPath.Replace(L"'", L"'\\''");
    return strPath;
}
} // namespace

bool MoveFile(const wchar_t* pFrom, const wchar_t* pTo)
{
    return SystemCommand(LyFormatString(L"mv '%s' '%s'", EscapeForShell(pFrom), EscapeForShell(pTo)));
}

bool LyFileSystem::FileExists(const wchar_t* pPath, bool bUseFileSystemManager)
{
    return LyFilename(pPath).GetFileExists(bUseFileSystemManager, false);
}

long long LyFileSystem::FileSize(const wchar_t* pPath, bool bAllowNetwork)
{
    return LyFilename(pPath).GetFileSize(bAllowNetwork);
}

void LyFileSystem::MakeUniqueFilename(LyString& strPath)
{
    while (FileExists(strPath, true))
        LyFilename::IncrementFilename(strPath, false);
}

bool LyFileSystem::SafeReplaceFile(const wchar_t* pOriginal, const wchar_t* pNew, int nMinimumSize,
                                   bool bDeleteNewOnFailure, bool bKeepFileTime)
{
    LyString strOriginal(pOriginal);
    LyString strNew(pNew);
    bool bReplaced = false;
    if (FileSize(strNew, true) >= nMinimumSize)
    {
        bool bHasOriginal = FileExists(strOriginal, true);
        if (bHasOriginal && bKeepFileTime)
            (void)SetNewFileTimeInfo(strOriginal, strNew, true, true, true); // best effort
        bReplaced = bHasOriginal ? ReplaceThroughBackup(strOriginal, strNew) : MoveFile(strNew, strOriginal);
    }
    if (!bReplaced && bDeleteNewOnFailure)
        (void)DeleteFile(strNew);
    return bReplaced;
}

// There is a complete copy under one of the names at each moment.
bool LyFileSystem::ReplaceThroughBackup(const LyString& strOriginal, const LyString& strNew)
{
    LyString strBackup = strOriginal;
    MakeUniqueFilename(strBackup);
    if (!MoveFile(strOriginal, strBackup))
    {
        CLogHelper::Log(LY_LOG_AREA_GENERAL, REPLACE_LOG_NAME, L"Error renaming original file");
        return false;
    }
    if (MoveFile(strNew, strOriginal))
    {
        (void)DeleteFile(strBackup); // the replacement is done; a backup that will not go harms nobody
        return true;
    }
    (void)MoveFile(strBackup, strOriginal); // if it fails, the copy is still there under the backup's name
    CLogHelper::Log(LY_LOG_AREA_GENERAL, REPLACE_LOG_NAME, L"Error moving new file into place of original name");
    return false;
}

bool LyFileSystem::SetNewFileTimeInfo(const LyString& strFrom, const LyString& strTo, bool, bool, bool)
{
    LyFile fileTo(LyFilename(strTo), LY_FILE_WRITE, 0, LY_FILE_OPEN_EXISTING);
    LyFile fileFrom(LyFilename(strFrom), LY_FILE_READ, 0, LY_FILE_OPEN_EXISTING);
    (void)(fileTo.Open() && fileFrom.Open());
    // Deliberate: both files are opened, but this platform's times are left as they are, and the answer says so.
    return false;
}

LyString LyFileSystem::FileSizeToReadableFileSize(long long nBytes)
{
    // Without sign, also for the lowest number, which has no positive counterpart.
    auto nSize = static_cast<unsigned long long>(nBytes);
    if (nBytes < 0)
        nSize = 0 - nSize;
    LyString strSize;
    if (nSize < BYTES_IN_WORDS_LIMIT)
    {
        strSize.Format(L"%d bytes", nSize);
    }
    else
    {
        const SIZE_UNIT* pUnit = s_arySizeUnits;
        while (nSize >= pUnit->nLimit)
            pUnit++;
        FormatStringForFileSize(strSize, static_cast<double>(nSize) / static_cast<double>(pUnit->nBytes), pUnit->pName);
    }
    return nBytes < 0 ? L"-" + strSize : strSize;
}

void LyFileSystem::FormatStringForFileSize(LyString& strOut, double fValue, const wchar_t* pUnit)
{
    strOut.Format(fValue >= WHOLE_NUMBERS_FROM ? L"%.0f %s" : L"%.1f %s", fValue, pUnit);
}
