// ILyReader: the one way in which this system reads and writes files and URLs. The reader library makes readers, and a
// caller may hand in one of its own.
//
// Units: bytes. Positions and lengths are 64 bits.
// Threads: one at a time, but for Close, which another thread calls to break a blocking Read.

#pragma once

#include "LyString.h"

// The order of the operations is their order in the virtual table. The user destroys the reader, so the destructor
// stands first.
class ILyReader
{
public:
    virtual ~ILyReader() = default; // closes and frees the reader
    virtual bool Create() = 0;      // opens the target for writing
    virtual bool Open() = 0;
    virtual void Close() = 0;
    virtual int Read(void* p, int nBytes) = 0;        // returns the bytes read
    virtual int Write(const void* p, int nBytes) = 0; // returns the bytes written
    virtual long long GetLength() = 0;
    virtual long long GetPosition() = 0;
    virtual long long Seek(long long nOffset, int nOrigin) = 0; // origin 0 the start, 1 here; the new position
    virtual bool GetIsStream() = 0;
    virtual bool GetCanClose() = 0;
    virtual bool GetIsOpen() = 0;
    // A named fact of the transport ("Location", "AllHeaders", "StatusCode", "ContentEncoding"). A system string that
    // the caller releases.
    virtual wchar_t* GetInfo(const wchar_t* pName) = 0;
    virtual void SetTimeout(int nMS) = 0;
    virtual void SetPostData(void* p, int nBytes) = 0;
    virtual void SetDownloadParameters(LyString strParameters) = 0; // joined with "|"
    virtual void SetProperty(const wchar_t* pName, const wchar_t* pValue) = 0;
    virtual bool GetCanCancel() = 0; // false: a cancel must Close the reader
    virtual void SetEndOfFile() = 0; // cuts the file at the current position
};
