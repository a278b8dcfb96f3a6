// File names from hostile text: taking apart what they carry, splitting them, and their written forms.
//
// Input: a byte for the forms, then one byte for each character.

#include "FuzzCheck.h"
#include "LyFilename.h"
#include <cstddef>
#include <cstdint>

namespace
{
// The parts make up the whole again.
void CheckParts(const LyFilename& filename)
{
    LyString strDrive, strPath, strName, strExtension, strQuery, strUser, strPassword, strServer, strServerPath;
    bool bIsURL = false;
    int nPort = 0;
    filename.AnalyzeFilename(&strDrive, &strPath, &strName, &strExtension, &strQuery, &bIsURL, &strUser, &strPassword,
                             &strServer, &nPort, &strServerPath);
    LyString strJoined = strDrive + strPath + strName;
    const LyString strWhole = filename.GetFilenameForUseWithOperatingSystem();
    Check(strWhole.Left(strJoined.GetLength()) == strJoined);
    if (!strExtension.IsEmpty())
        strJoined += L"." + strExtension;
    Check(strWhole.Left(strJoined.GetLength()) == strJoined);
    Check(bIsURL || strWhole.GetLength() - strJoined.GetLength() <= 1); // a point without an extension
    Check(filename.GetPath() == strDrive + strPath && filename.GetName() == strName);
    Check(strExtension.Find(L'/') < 0 && strName.Find(L'/') < 0);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    if (nBytes < 1)
        return 0;
    LyString strText;
    for (size_t i = 1; i < nBytes && pData[i] != 0; ++i)
        strText += static_cast<wchar_t>(pData[i]);
    LyFilename filename(strText);
    CheckParts(filename);
    CheckParts(LyFilename(filename));
    filename.m_strName = strText;
    filename.UpdateAfterModifyInternalFilename(true);
    CheckParts(filename);
    Check(filename.GetFileSize(false) >= -1);

    LyString strConverted(strText);
    LyFilename::ConvertFilenameSyntax(strConverted, static_cast<EFilenameSyntax>(pData[0] & 7),
                                      static_cast<EFilenameSyntax>(pData[0] >> 3 & 7));
    LyFilename::IncrementFilename(strConverted, (pData[0] & 0x40) != 0);
    LyFilename::FixDirectoryPath(strText, L'/');
    const LyString strFixed(strText);
    LyFilename::FixDirectoryPath(strText, L'/');
    Check(strText == strFixed);
    LyFilename::AddDirectory(strText, strConverted);
    return 0;
}
