// An open file as the system's readers and writers see it.
//
// Errors:  the first failure stays known, which those who read and write do not always tell.
// Owner:   closes the descriptor at its end.
// Threads: one at a time.

#pragma once

#include "ILyReader.h"

class DescriptorReader : public ILyReader
{
public:
    explicit DescriptorReader(int nDescriptor) : m_nDescriptor(nDescriptor) {}
    ~DescriptorReader() override;
    DescriptorReader(const DescriptorReader&) = delete;
    DescriptorReader& operator=(const DescriptorReader&) = delete;

    int GetError() const { return m_nError; } // errno, or 0
    int GetDescriptor() const { return m_nDescriptor; }
    bool Synchronise(); // to the disk

    bool Create() override { return false; }
    bool Open() override { return false; }
    void Close() override {} // with the object
    int Read(void* p, int nBytes) override;
    int Write(const void* p, int nBytes) override;
    long long GetLength() override;
    long long GetPosition() override;
    long long Seek(long long nOffset, int nOrigin) override;
    bool GetIsStream() override { return false; }
    bool GetCanClose() override { return false; }
    bool GetIsOpen() override { return m_nDescriptor >= 0; }
    wchar_t* GetInfo(const wchar_t*) override { return nullptr; }
    void SetTimeout(int) override {}
    void SetPostData(void*, int) override {}
    void SetDownloadParameters(LyString) override {}
    void SetProperty(const wchar_t*, const wchar_t*) override {}
    bool GetCanCancel() override { return false; }
    void SetEndOfFile() override;

private:
    bool Check(bool bGood);

    int m_nDescriptor;
    int m_nError = 0;
};
