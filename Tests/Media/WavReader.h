// A reader that holds a WAV file in memory and keeps a record of what is read.

#pragma once

#include "ILyReader.h"
#include "Media/WavBytes.h"
#include <algorithm>
#include <climits>
#include <string>
#include <vector>

struct WAV_IN_MEMORY
{
    std::string strContent;
    long long nFailFrom = LLONG_MAX; // what lies there cannot be read
    int nMostPerRead = INT_MAX;
    std::vector<int> aryReads; // bytes asked for
    int nDestroyed = 0;
};

class WavReader final : public ILyReader
{
public:
    explicit WavReader(WAV_IN_MEMORY& wav) : m_Wav(wav) {}
    ~WavReader() override { ++m_Wav.nDestroyed; }
    bool Create() override { return false; }
    bool Open() override { return true; }
    void Close() override {}
    int Read(void* p, int nBytes) override;
    int Write(const void*, int) override { return 0; }
    long long GetLength() override { return static_cast<long long>(m_Wav.strContent.size()); }
    long long GetPosition() override { return m_nPosition; }
    long long Seek(long long nOffset, int nOrigin) override
    {
        return m_nPosition = nOrigin == 1 ? m_nPosition + nOffset : nOffset;
    }
    bool GetIsStream() override { return false; }
    bool GetCanClose() override { return true; }
    bool GetIsOpen() override { return true; }
    wchar_t* GetInfo(const wchar_t*) override { return nullptr; }
    void SetTimeout(int) override {}
    void SetPostData(void*, int) override {}
    void SetDownloadParameters(LyString) override {}
    void SetProperty(const wchar_t*, const wchar_t*) override {}
    bool GetCanCancel() override { return true; }
    void SetEndOfFile() override {}

private:
    WAV_IN_MEMORY& m_Wav;
    long long m_nPosition = 0;
};

inline int WavReader::Read(void* p, int nBytes)
{
    m_Wav.aryReads.push_back(nBytes);
    const long long nEnd = std::min(GetLength(), m_Wav.nFailFrom);
    const long long nGot = std::clamp<long long>(nEnd - m_nPosition, 0, std::min(nBytes, m_Wav.nMostPerRead));
    std::copy_n(m_Wav.strContent.data() + m_nPosition, nGot, static_cast<char*>(p));
    m_nPosition += nGot;
    return static_cast<int>(nGot);
}
