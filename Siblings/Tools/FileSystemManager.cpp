#include "FileSystemManager.h"

#include "LyFilename.h"
#include "UTF8.h"
#include <exception>
#include <sys/stat.h>

bool FileSystemManager::GetFileExists(const wchar_t* pName, int)
{
    if (pName == nullptr || *pName == 0)
        return false;
    try
    {
        // This turns a URL of the file scheme into a path. Of other URLs no name is
        // left that a disk has.
        const LyFilename filename(pName);
        const LyString strPath = filename.GetFilenameForUseWithOperatingSystem();
        struct stat status;
        return stat(NarrowUTF8(static_cast<const wchar_t*>(strPath)).c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
    }
    catch (const std::exception&)
    {
        return false; // no memory
    }
}
