// Splitting a file name into its parts.

#include "LyArray.h"
#include "LyFilename.h"
#include "LyStringFormat.h"

namespace
{
constexpr wchar_t URL_MARK[] = L"://";
constexpr int URL_MARK_CHARS = 3;
constexpr wchar_t DEVICES[] = L"/dev";
constexpr int DEVICE_NAME = 5;  // where the name of a device begins, behind "/dev/"
constexpr int NETWORK_HOST = 2; // where the name of a host begins, behind two backslashes

bool IsSeparator(wchar_t c) { return c == L'/' || c == L'\\'; }

bool IsDriveLetter(wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }

int FindSeparator(const LyString& str, int nFrom)
{
    while (nFrom < str.GetLength() && !IsSeparator(str[nFrom]))
        ++nFrom;
    return nFrom;
}

int GetLocalDriveLength(const LyString& str)
{
    const int nLength = str.GetLength();
    if (str.CompareLeft(DEVICES, false, -1) == 0)
    {
        int nSlash = str.Find(L'/', DEVICE_NAME + 1);
        if (nSlash < 0 && nLength > DEVICE_NAME && str[DEVICE_NAME - 1] == L'/' && str.Find(L'/', DEVICE_NAME) < 0)
            nSlash = nLength; // the device alone
        if (nSlash >= 0)
            return nSlash;
    }
    if (str[0] == L'/')
        return 1;
    if (nLength > NETWORK_HOST && str[0] == L'\\' && str[1] == L'\\')
    {
        const int nShare = str.Find(L'\\', NETWORK_HOST);
        const int nEnd = nShare >= 0 ? str.Find(L'\\', nShare + 1) : -1;
        return nEnd >= 0 ? nEnd : nLength;
    }
    return nLength > 1 && str[1] == L':' && IsDriveLetter(str[0]) ? 2 : 0;
}

// How many characters of a name are its drive. nMark is where the mark of a URL stands; -1 in a local name.
int GetDriveLength(const LyString& str, int nMark)
{
    return nMark >= 0 ? nMark + URL_MARK_CHARS : GetLocalDriveLength(str);
}

// Where the parts of a name lie in it. All offsets ascend in this order.
struct FILENAME_PARTS
{
    int nPath = 0;      // behind the drive
    int nName = 0;      // behind the last separator
    int nExtension = 0; // its point; the end if there is none
};

// A "." or ".." is the name of a folder, not a name with an extension.
int FindExtension(const LyString& str, int nName)
{
    const int nLength = str.GetLength();
    const bool bFolder =
        nLength - nName <= 2 && str[nLength - 1] == L'.' && (nLength - nName < 2 || str[nName] == L'.');
    for (int nAt = nLength - 1; nAt >= nName && !bFolder; --nAt)
    {
        if (str[nAt] == L'.')
            return nAt;
    }
    return nLength;
}

FILENAME_PARTS Split(const LyString& str, int nDrive)
{
    FILENAME_PARTS parts;
    parts.nPath = nDrive;
    parts.nName = str.GetLength();
    while (parts.nName > nDrive && !IsSeparator(str[parts.nName - 1]))
        --parts.nName;
    parts.nExtension = str.GetLength() > parts.nName ? FindExtension(str, parts.nName) : parts.nName;
    return parts;
}

// What stands between "://" and the path of a URL: user:password@server:port.
struct AUTHORITY
{
    explicit AUTHORITY(LyString str)
    {
        const int nAt = str.ReverseFind(L'@');
        if (nAt >= 0)
        {
            LyStringArray aryUser;
            aryUser.InitFromList(str.Left(nAt), L":", false, false);
            if (aryUser.GetSize() > 0)
                strUser = aryUser[0];
            if (aryUser.GetSize() > 1)
                strPassword = aryUser[1];
            str.RemoveLeft(nAt + 1);
        }
        const int nColon = str.ReverseFind(L':');
        nPort = nColon >= 0 ? str.Mid(nColon + 1).GetInt() : 0;
        strServer = nColon >= 0 ? str.Left(nColon) : str;
    }

    LyString strUser;
    LyString strPassword;
    LyString strServer;
    int nPort;
};

// Takes the query off the end of a URL.
LyString CutQuery(LyString& strName, int nMark)
{
    const int nQuery = strName.ReverseFind(L'?');
    if (nQuery < nMark)
        return LyString();
    LyString strQuery = strName.Mid(nQuery + 1);
    strName.RemoveRight(strName.GetLength() - nQuery);
    return strQuery;
}

void Put(LyString* pTarget, const LyString& str)
{
    if (pTarget != nullptr)
        *pTarget = str;
}
} // namespace

void LyFilename::AnalyzeFilename(LyString* pDrive, LyString* pPath, LyString* pName, LyString* pExtension,
                                 LyString* pQuery, bool* pbIsURL, LyString* pUser, LyString* pPassword,
                                 LyString* pServer, int* pnPort, LyString* pServerPath) const
{
    LyString strName = GetFilenameForUseWithOperatingSystem();
    const int nMark = strName.Find(URL_MARK);
    const bool bIsURL = nMark >= 0;
    const LyString strQuery = bIsURL ? CutQuery(strName, nMark) : LyString();
    const FILENAME_PARTS parts = Split(strName, GetDriveLength(strName, nMark));
    const int nAuthorityEnd = bIsURL ? FindSeparator(strName, parts.nPath) : parts.nPath;
    if (pUser != nullptr || pPassword != nullptr || pServer != nullptr || pnPort != nullptr)
    {
        const AUTHORITY authority(strName.Mid(parts.nPath, nAuthorityEnd - parts.nPath));
        Put(pUser, authority.strUser);
        Put(pPassword, authority.strPassword);
        Put(pServer, authority.strServer);
        if (pnPort != nullptr)
            *pnPort = authority.nPort;
    }
    if (pbIsURL != nullptr)
        *pbIsURL = bIsURL;
    Put(pServerPath, bIsURL ? strName.Mid(nAuthorityEnd, parts.nName - nAuthorityEnd) : LyString());
    Put(pQuery, strQuery);
    Put(pDrive, strName.Left(parts.nPath));
    Put(pPath, strName.Mid(parts.nPath, parts.nName - parts.nPath));
    Put(pName, strName.Mid(parts.nName, parts.nExtension - parts.nName));
    Put(pExtension, strName.Mid(parts.nExtension + 1));
}

LyString LyFilename::GetDriveOfPlainName(const LyString& strName)
{
    return strName.Left(GetDriveLength(strName, strName.Find(URL_MARK)));
}

bool LyFilename::GetIsURL() const { return m_strName.Find(URL_MARK) >= 0; }

LyString LyFilename::GetDrive() const
{
    LyString strDrive;
    AnalyzeFilename(&strDrive);
    return strDrive;
}

LyString LyFilename::GetPath() const
{
    LyString strPath;
    GetPath(strPath);
    return strPath;
}

void LyFilename::GetPath(LyString& strPath) const
{
    LyString strDrive;
    LyString strFolders;
    AnalyzeFilename(&strDrive, &strFolders);
    strPath = strDrive + strFolders;
}

LyString LyFilename::GetName() const
{
    LyString strName;
    AnalyzeFilename(nullptr, nullptr, &strName);
    return strName;
}

LyString LyFilename::GetExtension(bool bAllowOverride) const
{
    LyString strExtension;
    if (bAllowOverride)
        strExtension = m_Properties.GetProperty(L"FileType", nullptr);
    if (strExtension.IsEmpty())
        AnalyzeFilename(nullptr, nullptr, nullptr, &strExtension);
    return strExtension;
}

LyString LyFilename::GetFileType() const { return GetExtension(true); }
