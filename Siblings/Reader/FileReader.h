// A local file as a reader: a file, a block device, or a stream (a pipe, a terminal, another character device).
//
// Open:      for reading and, where permitted, writing; with the property "READ_ONLY" at "1" for reading alone. A
//            folder does not open. Create empties an existing file, or makes a new one in a folder that exists.
// Position:  kept here, so a Seek is no system call. It may lie behind the end, as with lseek: reading there brings
//            nothing, writing there leaves zeroes in between. A negative position or another origin than 0, 1 and 2
//            (the end) is refused with -1, and nothing moves. A stream goes forward alone: what is passed over is read.
// Read:      fewer bytes than asked for mean the end, an error or a Close. A stream is waited for.
// Length:    of the file at this moment; -1 for a stream, and while nothing is open.
// Errors:    false, 0, -1; GetInfo("Error") tells the last one in a sentence. All other infos are empty.
// Threads:   one at a time, but for Close: another thread may call it at any time, and a Read that waits ends.

#pragma once

#include "ILyReader.h"
#include "WakePipe.h"
#include <atomic>
#include <mutex>
#include <string>
#include <sys/types.h>

class FileReader final : public ILyReader
{
public:
    explicit FileReader(std::string strPath) : m_strPath(std::move(strPath)) {} // bytes for the system
    ~FileReader() override;
    FileReader(const FileReader&) = delete;
    FileReader& operator=(const FileReader&) = delete;

    bool Create() override; // closes first, as Open does
    bool Open() override;
    void Close() override;
    int Read(void* p, int nBytes) override;
    int Write(const void* p, int nBytes) override;
    long long GetLength() override;
    long long GetPosition() override;
    long long Seek(long long nOffset, int nOrigin) override;
    bool GetIsStream() override { return m_bStream; }
    bool GetCanClose() override { return true; }
    bool GetIsOpen() override { return m_bOpen && !m_bClosing; }
    wchar_t* GetInfo(const wchar_t* pName) override;
    void SetTimeout(int) override {}
    void SetPostData(void*, int) override {}
    void SetDownloadParameters(LyString) override {}
    void SetProperty(const wchar_t* pName, const wchar_t* pValue) override;
    bool GetCanCancel() override { return false; } // a cancel closes
    void SetEndOfFile() override;

private:
    bool OpenAs(bool bCreate);
    int OpenDescriptor(bool bCreate);
    int OpenPipeForWriting();
    bool Adopt(int nDescriptor);
    void CloseDescriptor();
    bool Refuse(const char* pWhat, int nError);
    ssize_t ReadPiece(unsigned char* p, size_t nBytes);
    ssize_t WritePiece(const unsigned char* p, size_t nBytes);
    int ReadBytes(unsigned char* p, int nBytes);
    long long PassOver(long long nTarget);
    long long GetLengthOfOpenFile() const;

    std::string m_strPath;
    bool m_bReadOnly = false;
    std::mutex m_Operation; // held while the descriptor is in use; guards what follows but the atomics
    int m_nDescriptor = -1;
    long long m_nPosition = 0;
    std::string m_strError;
    WakePipe m_Wake; // made for streams alone
    std::atomic<bool> m_bStream{false};
    std::atomic<bool> m_bOpen{false};
    std::atomic<bool> m_bClosing{false}; // set by Close until the next Open
};
