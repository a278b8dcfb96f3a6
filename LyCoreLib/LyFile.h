// Files: LyFile, an open file with the access and share flags of a sharing file system; LyFileInfo, a snapshot of a
// file's status; LySharedMemory, a named block of memory that several libraries or processes see.
//
// Names:   LyFilename, also URLs of the file scheme; they reach the system as UTF-8.
// Errors:  false or -1. Nothing is reported in words.
// Threads: an object belongs to one thread at a time. Who shares memory guards its content.

#pragma once

#include "LyFilename.h"
#include "LyString.h"
#include <sys/stat.h>

enum CreationModes : int
{
    LY_FILE_CREATE_ALWAYS = 0,     // create, truncate
    LY_FILE_CREATE_NEW = 1,        // fails if it exists
    LY_FILE_OPEN_OR_CREATE = 2,    // keeps what is there
    LY_FILE_OPEN_EXISTING = 3,     // fails if it does not exist
    LY_FILE_TRUNCATE_EXISTING = 4, // fails if it does not exist
};

enum LY_FILE_ACCESS : unsigned int
{
    LY_FILE_READ = 1,
    LY_FILE_WRITE = 2,
    LY_FILE_READ_WRITE = 3
};

// What others may do with the file meanwhile. Without LY_FILE_SHARE_WRITE a writer locks the whole file.
enum LY_FILE_SHARE : unsigned int
{
    LY_FILE_SHARE_READ = 1,
    LY_FILE_SHARE_WRITE = 2,
    LY_FILE_SHARE_READ_WRITE = 3
};

class LyFile
{
public:
    LyFile() = default;
    // Keeps the arguments for Open().
    LyFile(const LyFilename& filename, unsigned int nAccess, unsigned int nShare, CreationModes eMode);
    ~LyFile();
    LyFile(const LyFile&) = delete;
    LyFile& operator=(const LyFile&) = delete;

    bool Open(); // closes first
    bool Open(const LyFilename& filename, unsigned int nAccess, unsigned int nShare, CreationModes eMode);
    void Close();
    bool GetIsOpen() const { return m_bOpen; }
    void SetSequentialScan(bool bSequentialScan) { m_bSequentialScan = bSequentialScan; }

    // nOrigin: 0 begin, 1 current, 2 end. The new position, or -1.
    long long SetPosition(long long nOffset, unsigned int nOrigin);
    long long GetLength() const; // bytes; the file need not be open

    bool Write(const void* pData, unsigned int nBytes); // true only if all bytes went
    bool Write(const void* pData, unsigned int nBytes, unsigned int& nWritten);
    bool Read(void* pData, unsigned int nBytes, unsigned int& nRead); // fewer bytes at the end of the file are no error

private:
    bool LockForWriting();

    LyFilename m_Filename;
    unsigned int m_nAccess = 0; // LY_FILE_ACCESS
    unsigned int m_nShare = 0;  // LY_FILE_SHARE
    CreationModes m_eCreationMode = LY_FILE_CREATE_ALWAYS;
    bool m_bSequentialScan = false; // stored for callers; nothing here reads it
    bool m_bOpen = false;
    int m_nDescriptor = -1;
};

class LyFileInfo
{
public:
    LyFileInfo() = default;
    explicit LyFileInfo(const LyFilename& filename) { Set(filename, nullptr); }

    // Takes a status that the caller has, or asks the system for it. True if it is valid now.
    bool Set(const LyFilename& filename, const struct stat* pStatus);

    bool GetValid() const { return m_bValid; }
    const LyFilename& GetFilename() const { return m_Filename; } // of a folder: with a trailing "/"
    const struct stat& GetStatus() const { return m_Status; }
    bool GetIsDirectory() const { return m_bValid && S_ISDIR(m_Status.st_mode); }
    long long GetFileSize() const; // bytes; -1 if not valid

private:
    bool m_bValid = false;
    LyFilename m_Filename;
    struct stat m_Status = {};
};

// A named block of memory. Who allocates a name that exists sees the same bytes; a new block is zero.
// Whoever frees first removes the name: those who hold the block keep it, a later Allocate makes a new one.
class LySharedMemory
{
public:
    LySharedMemory() = default;
    virtual ~LySharedMemory();
    LySharedMemory(const LySharedMemory&) = delete;
    LySharedMemory& operator=(const LySharedMemory&) = delete;

    // False, and no block, if the name is null or empty, nBytes below 1, or an existing block too small.
    bool Allocate(const wchar_t* pName, int nBytes);
    void Free();

    void* GetAddress() const { return m_pAddress; } // null if there is none
    int GetSize() const { return m_nMappedBytes; }  // bytes, whole pages
    bool GetIsOlderThanProcess() const;             // it was there before this process began, or is another user's

private:
    void Map(int nBytes, bool bNew);

    LyString m_strName;
    int m_nDescriptor = -1;
    int m_nMappedBytes = 0;
    void* m_pAddress = nullptr;
};
