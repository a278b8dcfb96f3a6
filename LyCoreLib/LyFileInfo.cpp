#include "LyFile.h"

bool LyFileInfo::Set(const LyFilename& filename, const struct stat* pStatus)
{
    m_bValid = false;
    m_Filename.Empty();
    m_Status = {};
    if (pStatus != nullptr)
        m_Status = *pStatus;
    else if (stat(LyStringUTF8(filename.GetFilenameForUseWithOperatingSystem()), &m_Status) != 0)
    {
        m_Status = {};
        return false;
    }
    m_bValid = true;
    m_Filename = filename;
    if (S_ISDIR(m_Status.st_mode))
        LyFilename::FixDirectoryPath(m_Filename.m_strName, L'/');
    return true;
}

long long LyFileInfo::GetFileSize() const { return m_bValid ? m_Status.st_size : -1; }
