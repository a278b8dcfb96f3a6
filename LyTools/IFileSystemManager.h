// The tools library's view of the file system, which may know more than the disk does (archives, remote folders).
//
// Ownership: the service belongs to the tools library; nobody destroys it through this interface.
// Threads:   any. The service does its own locking.

#pragma once

// The order of the operations is their order in the virtual table: other libraries call them there.
class IFileSystemManager
{
public:
    // Whether the file is there. nFlags is 0, or 2 if the caller of LyFilename::GetFileExists set its second flag.
    virtual bool GetFileExists(const wchar_t* pName, int nFlags) = 0;

protected:
    ~IFileSystemManager() = default;
};
