// Where the bytes of a load go: a file, which has its name only when it is whole, a device, a pipe or standard output.
// To the file loader it is a reader that only takes.
//
// Errors:   HostError from the constructor and Finish. What goes wrong during the load ends it, and is thrown by
//           ThrowError behind it: no exception goes through the loader.
// Threads:  one.

#pragma once

#include "ILyReader.h"
#include "PartialFile.h"
#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <string>

class FetchOutput final : public ILyReader
{
public:
    explicit FetchOutput(const std::string& strPath); // "-": standard output
    ~FetchOutput() override;
    FetchOutput(const FetchOutput&) = delete;
    FetchOutput& operator=(const FetchOutput&) = delete;

    // Called when the source is open and nothing is written yet, and when the last byte is. Both may throw.
    std::function<void()> m_OnBegin;
    std::function<void()> m_OnEnd;

    std::string GetWorkingPath() const; // of the file in the making; empty: no file
    bool GetHasBegun() const { return m_bBegun; }
    long long GetWritten() const { return m_nWritten; }
    void ThrowError() const; // what went wrong during the load, if anything did
    void Finish();           // gives the file its name

    bool Create() override;
    void Close() override;
    int Write(const void* p, int nBytes) override;
    bool Open() override { return false; }
    int Read(void*, int) override { return 0; }
    long long GetLength() override { return -1; }
    long long GetPosition() override { return m_nWritten; }
    long long Seek(long long, int) override { return -1; }
    bool GetIsStream() override { return true; }
    bool GetCanClose() override { return true; }
    bool GetIsOpen() override { return m_pFile != nullptr; }
    wchar_t* GetInfo(const wchar_t*) override { return nullptr; }
    void SetTimeout(int) override {}
    void SetPostData(void*, int) override {}
    void SetDownloadParameters(LyString) override {}
    void SetProperty(const wchar_t*, const wchar_t*) override {}
    bool GetCanCancel() override { return true; }
    void SetEndOfFile() override {}

private:
    template <class WORK>
    bool Try(WORK work); // keeps what the work throws; false if it did
    void OpenPlace();
    void CloseFile();
    [[noreturn]] void FailToOpen() const;
    [[noreturn]] void FailToWrite() const;

    std::string m_strPath;
    OUTPUT_PLACE m_Place;
    std::unique_ptr<PartialFile> m_pPartial; // null: no file
    FILE* m_pFile = nullptr;
    bool m_bBegun = false;
    long long m_nWritten = 0;
    std::exception_ptr m_pError;
};
