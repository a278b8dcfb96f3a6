// A file in memory as a writer: keeps what it is given, and a record of the calls. The record outlives the writer.
//
//   MEMORY_FILE file;
//   creator.Open(new MemoryWriter(file), true, format);
//   EXPECT_EQ(44u, file.strContent.size());

#pragma once

#include "ILyReader.h"
#include <algorithm>
#include <climits>
#include <string>
#include <vector>

struct MEMORY_FILE
{
    static constexpr long long OF_THE_CONTENT = -1;

    // The script.
    bool bOpen = true;
    bool bCreates = true;
    bool bStream = false;
    long long nRoom = LLONG_MAX;        // bytes of the file; what is behind is not written
    long long nLength = OF_THE_CONTENT; // what GetLength says
    bool bKeepsContent = true;          // false: writes are counted only

    // The record.
    std::string strContent;
    std::vector<std::string> aryCalls; // "Seek 4 0", "Write 44", "Close" ...
    long long nWritten = 0;
    int nDestroyed = 0;

    std::string GetCalls() const
    {
        std::string strAll;
        for (const std::string& strCall : aryCalls)
            strAll += (strAll.empty() ? "" : ", ") + strCall;
        return strAll;
    }
    unsigned int GetNumber(size_t nOffset, size_t nBytes = 4) const // little-endian
    {
        unsigned int n = 0;
        for (size_t i = nBytes; i-- > 0;)
            n = n << 8 | static_cast<unsigned char>(strContent.at(nOffset + i));
        return n;
    }
};

class MemoryWriter final : public ILyReader
{
public:
    explicit MemoryWriter(MEMORY_FILE& file) : m_File(file) {}
    ~MemoryWriter() override
    {
        ++m_File.nDestroyed;
        m_File.aryCalls.push_back("Destroy");
    }
    bool Create() override
    {
        m_File.aryCalls.push_back("Create");
        return m_File.bOpen = m_File.bCreates;
    }
    bool Open() override { return false; }
    void Close() override
    {
        m_File.aryCalls.push_back("Close");
        m_File.bOpen = false;
    }
    int Read(void*, int) override { return 0; }
    int Write(const void* p, int nBytes) override
    {
        m_File.aryCalls.push_back("Write " + std::to_string(nBytes));
        const int nTaken = static_cast<int>(std::clamp<long long>(m_File.nRoom - m_nPosition, 0, std::max(nBytes, 0)));
        m_File.nWritten += nTaken;
        if (m_File.bKeepsContent && nTaken > 0)
        {
            const size_t nPosition = static_cast<size_t>(m_nPosition);
            m_File.strContent.resize(std::max(m_File.strContent.size(), nPosition + static_cast<size_t>(nTaken)));
            m_File.strContent.replace(nPosition, static_cast<size_t>(nTaken), static_cast<const char*>(p),
                                      static_cast<size_t>(nTaken));
        }
        m_nPosition += nTaken;
        return nTaken;
    }
    long long GetLength() override
    {
        m_File.aryCalls.push_back("GetLength");
        return m_File.nLength != MEMORY_FILE::OF_THE_CONTENT ? m_File.nLength
                                                             : static_cast<long long>(m_File.strContent.size());
    }
    long long GetPosition() override { return m_nPosition; }
    long long Seek(long long nOffset, int nOrigin) override
    {
        m_File.aryCalls.push_back("Seek " + std::to_string(nOffset) + " " + std::to_string(nOrigin));
        return m_nPosition = nOffset;
    }
    bool GetIsStream() override { return m_File.bStream; }
    bool GetCanClose() override { return true; }
    bool GetIsOpen() override { return m_File.bOpen; }
    wchar_t* GetInfo(const wchar_t*) override { return nullptr; }
    void SetTimeout(int) override {}
    void SetPostData(void*, int) override {}
    void SetDownloadParameters(LyString) override {}
    void SetProperty(const wchar_t*, const wchar_t*) override {}
    bool GetCanCancel() override { return true; }
    void SetEndOfFile() override {}

private:
    MEMORY_FILE& m_File;
    long long m_nPosition = 0;
};
