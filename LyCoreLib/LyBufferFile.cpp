// A buffer written as a file, and loaded from one.

#include "FileLoader.h"
#include "LyBuffer.h"
#include "LyFile.h"
#include "LyFileSystem.h"
#include "OptionsHelper.h"

bool LyBuffer::ToFile(const LyFilename& filename, int nBytes) const
{
    // What the buffer does not hold is not written.
    if (nBytes < 0 || nBytes > m_nSize)
        nBytes = m_nSize;
    return s_ToFile(filename, m_pData, nBytes);
}

bool LyBuffer::s_ToFile(const LyFilename& filename, unsigned char* pData, int nBytes)
{
    if (!LyFileSystem::MakeDirectoryTree(filename.GetPath(), false))
        return false;
    LyFile file(filename, LY_FILE_WRITE, LY_FILE_SHARE_READ_WRITE, LY_FILE_CREATE_ALWAYS);
    return file.Open() && pData != nullptr && nBytes >= 1 && file.Write(pData, static_cast<unsigned int>(nBytes));
}

bool LyBuffer::FromFile(const LyFilename& filename, int nMaxBytes, bool bAllowReader)
{
    constexpr int PROGRESS_DELAY_MS = 4000;
    const LyString strTitle = TranslateString(L"Working...");
    CFileLoader loader;
    loader.SetAllowReader(bAllowReader);
    loader.SetMaximumLength(nMaxBytes, false);
    loader.SetProgressUI(true, PROGRESS_DELAY_MS, true, strTitle, true, strTitle);
    return loader.LoadBuffer(filename, *this);
}
