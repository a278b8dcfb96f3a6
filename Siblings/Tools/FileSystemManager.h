// The file-system manager: the disk, and nothing but the disk.
//
// Threads: any.

#pragma once

#include "IFileSystemManager.h"

class FileSystemManager final : public IFileSystemManager
{
public:
    // Whether the name is that of a file on the disk, as a path or as a URL of
    // the file scheme. A folder is no file, as it is none without this service;
    // neither are other URLs, for which nobody is asked. The flags change
    // nothing.
    bool GetFileExists(const wchar_t* pName, int nFlags) override;
};
