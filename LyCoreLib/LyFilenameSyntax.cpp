// File names as plain text: their written forms, the install drive, and small changes.

#include "LyFilename.h"
#include "LyFileSystem.h"
#include "LyStringFormat.h"

namespace
{
constexpr wchar_t FILE_SCHEME[] = L"file://";
constexpr wchar_t LOCAL_HOST[] = L"localhost/";
constexpr int LOCAL_HOST_CHARS = 9; // without its slash, the path's root

bool HasInstallDrivePrefix(const LyString& strName)
{
    return strName.CompareLeft(LyFilename::INSTALL_DRIVE_PREFIX, false, -1) == 0;
}

EFilenameSyntax ResolveSyntax(EFilenameSyntax eSyntax, const LyString& strName)
{
    if (eSyntax == FILENAME_SYNTAX_UNKNOWN)
        return strName.Find(L'/') < 0 ? FILENAME_SYNTAX_BACKSLASH : FILENAME_SYNTAX_SLASH;
    return eSyntax == FILENAME_SYNTAX_NATIVE ? FILENAME_SYNTAX_SLASH : eSyntax;
}

void ConvertFromFileURL(LyString& strName, bool bToBackslash)
{
    if (!LyFilename::RemoveLocalURLPrefix(strName))
        return;
    if (bToBackslash)
    {
        strName.TrimLeft(L'/');
        strName.Replace(L'/', L'\\');
    }
    strName.Dehexify(L'%', false, false);
}
} // namespace

void LyFilename::ConvertFilenameSyntax(LyString& strName, EFilenameSyntax eFrom, EFilenameSyntax eTo)
{
    eFrom = ResolveSyntax(eFrom, strName);
    if (eTo == FILENAME_SYNTAX_NATIVE)
        eTo = FILENAME_SYNTAX_SLASH;
    const bool bToBackslash = eTo == FILENAME_SYNTAX_BACKSLASH;
    if (eFrom == eTo || (!bToBackslash && eTo != FILENAME_SYNTAX_SLASH))
        return;
    switch (eFrom)
    {
    case FILENAME_SYNTAX_MIXED:
    case FILENAME_SYNTAX_BACKSLASH:
    case FILENAME_SYNTAX_SLASH:
        strName.Replace(bToBackslash ? L'/' : L'\\', bToBackslash ? L'\\' : L'/');
        break;
    case FILENAME_SYNTAX_FILE_URL:
        ConvertFromFileURL(strName, bToBackslash);
        break;
    default: // no form of this table
        break;
    }
}

bool LyFilename::RemoveLocalURLPrefix(LyString& strName)
{
    if (!strName.RemoveLeft(FILE_SCHEME, false))
        return false;
    if (strName.CompareLeft(LOCAL_HOST, false, -1) == 0)
        strName.RemoveLeft(LOCAL_HOST_CHARS);
    return true;
}

bool LyFilename::ConvertFilenameFromInstallPathRelative(LyString& strName)
{
    if (!HasInstallDrivePrefix(strName))
        return false;
    // An install path relative to itself, in whatever form it is written, says nothing.
    LyString strInstall = LyFilename(LyFileSystem::GetDirectoryInstall()).m_strName;
    ConvertFilenameSyntax(strInstall, FILENAME_SYNTAX_FILE_URL, FILENAME_SYNTAX_NATIVE);
    if (HasInstallDrivePrefix(strInstall))
        return false;
    const LyString strDrive = GetDriveOfPlainName(strInstall);
    const int nPrefix = LyString(INSTALL_DRIVE_PREFIX).GetLength();
    // Not ReplaceNoCase, which minds the case when the tools library is not there.
    LyString strResult;
    int nFrom = 0;
    for (int nFound = 0; nFound >= 0; nFound = strName.FindNoCase(INSTALL_DRIVE_PREFIX, nFrom))
    {
        strResult += strName.Mid(nFrom, nFound - nFrom) + strDrive;
        nFrom = nFound + nPrefix;
    }
    strName = strResult + strName.Mid(nFrom);
    return true;
}

void LyFilename::FixDirectoryPath(LyString& strPath, wchar_t cSlash)
{
    int nSlashes = 0;
    const int nLength = strPath.GetLength();
    while (nSlashes < nLength && strPath[nLength - 1 - nSlashes] == cSlash)
        ++nSlashes;
    if (nLength == 0 || (nSlashes == 2 && nLength == 2)) // two of them alone are the root of a network
        return;
    if (nSlashes == 0)
        strPath += cSlash;
    else
        strPath.RemoveRight(nSlashes - 1);
}

void LyFilename::AddDirectory(LyString& strPath, const LyString& strDirectory)
{
    const LyString strAdded = strDirectory + FILENAME_SLASH; // which may be made of strPath itself
    FixDirectoryPath(strPath, FILENAME_SLASH[0]);
    strPath += strAdded;
}

void LyFilename::IncrementFilename(LyString& strName, bool bRestartAboveOne)
{
    const LyFilename filename(strName);
    LyString strDrive;
    LyString strPath;
    LyString strBase;
    LyString strExtension;
    filename.AnalyzeFilename(&strDrive, &strPath, &strBase, &strExtension);
    strBase.IncrementString(bRestartAboveOne);
    strName = strDrive + strPath + strBase;
    if (!strExtension.IsEmpty())
        strName += L"." + strExtension;
}

LyString LyFilename::GetLongName(const LyString& strName) { return strName; }

LyString LyFilename::GetFilenameDrive(const wchar_t* pName) { return LyFilename(pName).GetDrive(); }

LyString LyFilename::GetFilenameExtension(const wchar_t* pName) { return LyFilename(pName).GetExtension(false); }
