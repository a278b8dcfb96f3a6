// A file in memory as a reader: read, written, cut, with faults on demand and a record of the calls.
//
//   MemoryReader reader(strFile);
//   ASSERT_EQ(0, info.Open(&reader, true, true));

#pragma once

#include "ILyReader.h"
#include <algorithm>
#include <climits>
#include <cstring>
#include <string>
#include <vector>

class MemoryReader final : public ILyReader
{
public:
    explicit MemoryReader(std::string strContent = "") : m_strContent(std::move(strContent)) {}
    ~MemoryReader() override
    {
        if (m_pnDestroyed != nullptr)
            ++*m_pnDestroyed;
    }
    bool Create() override { return m_bOpen = true; }
    bool Open() override { return m_bOpen = true; }
    void Close() override { m_bOpen = false; }
    int Read(void* p, int nBytes) override
    {
        Note("Read ", nBytes);
        m_aryReads.push_back(nBytes);
        const long long nThere = std::min(GetEnd(), m_nReadableEnd) - m_nPosition;
        const int nRead = static_cast<int>(std::clamp<long long>(nThere, 0, std::clamp(nBytes, 0, m_nMostPerRead)));
        if (nRead > 0)
            std::memcpy(p, m_strContent.data() + m_nPosition, static_cast<size_t>(nRead));
        m_nPosition += nRead;
        return nRead;
    }
    int Write(const void* p, int nBytes) override
    {
        Note("Write ", nBytes);
        const int nTaken =
            static_cast<int>(std::clamp<long long>(m_nWritableEnd - m_nPosition, 0, std::max(nBytes, 0)));
        if (nTaken > 0)
        {
            const size_t nPosition = static_cast<size_t>(m_nPosition);
            m_strContent.resize(std::max(m_strContent.size(), nPosition + static_cast<size_t>(nTaken)));
            std::memcpy(m_strContent.data() + nPosition, p, static_cast<size_t>(nTaken));
        }
        m_nPosition += nTaken;
        return nTaken;
    }
    long long GetLength() override { return m_bStream ? -1 : GetEnd(); }
    long long GetPosition() override { return m_nPosition; }
    long long Seek(long long nOffset, int nOrigin) override
    {
        Note("Seek ", nOffset);
        const long long nTarget = nOrigin == 1 ? m_nPosition + nOffset : nOffset;
        if (nTarget < 0 || nTarget == m_nRefusedPosition)
            return -1;
        return m_nPosition = nTarget;
    }
    bool GetIsStream() override { return m_bStream; }
    bool GetCanClose() override { return true; }
    bool GetIsOpen() override { return m_bOpen; }
    wchar_t* GetInfo(const wchar_t*) override { return nullptr; }
    void SetTimeout(int) override {}
    void SetPostData(void*, int) override {}
    void SetDownloadParameters(LyString) override {}
    void SetProperty(const wchar_t*, const wchar_t*) override {}
    bool GetCanCancel() override { return true; }
    void SetEndOfFile() override
    {
        Note("SetEndOfFile ", m_nPosition);
        m_strContent.resize(static_cast<size_t>(m_nPosition));
    }

    int CountCalls(const std::string& strBeginning) const
    {
        return static_cast<int>(std::count_if(m_aryCalls.begin(), m_aryCalls.end(),
                                              [&](const std::string& strCall)
                                              { return strCall.compare(0, strBeginning.size(), strBeginning) == 0; }));
    }

    std::string m_strContent;
    long long m_nPosition = 0;
    bool m_bOpen = true;
    bool m_bStream = false;
    long long m_nReadableEnd = LLONG_MAX; // what is behind is not read
    int m_nMostPerRead = INT_MAX;
    long long m_nWritableEnd = LLONG_MAX; // what is behind is not written
    long long m_nRefusedPosition = -1;    // to which no Seek goes
    int* m_pnDestroyed = nullptr;         // counts the ends of readers
    std::vector<int> m_aryReads;          // bytes asked for
    bool m_bRecords = false;
    std::vector<std::string> m_aryCalls;

private:
    long long GetEnd() const { return static_cast<long long>(m_strContent.size()); }
    void Note(const char* pName, long long n)
    {
        if (m_bRecords)
            m_aryCalls.push_back(pName + std::to_string(n));
    }
};
