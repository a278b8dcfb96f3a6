// A buffer written as a file.

#include "LyBuffer.h"
#include "LyFile.h"
#include "LyFileSystem.h"

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
