// A reader library for URLs that say themselves how it goes: "http://fake/1234" has a length of 1234 bytes,
// "http://fake/" cannot be opened, and there is no reader for an empty name. The length is known only to an open reader
// that was asked for the head alone.

#include "GlobalMacros.h"
#include "ILyReader.h"
#include "LyStringFormat.h"

namespace
{
constexpr long long NOT_ASKED_PROPERLY = -2;
int s_nReaders = 0;

class FakeUrlReader final : public ILyReader
{
public:
    explicit FakeUrlReader(const LyString& strURL) : m_strLength(strURL)
    {
        (void)m_strLength.RemoveLeft(L"http://fake/", true);
        ++s_nReaders;
    }
    ~FakeUrlReader() override { --s_nReaders; }
    FakeUrlReader(const FakeUrlReader&) = delete;
    FakeUrlReader& operator=(const FakeUrlReader&) = delete;

    bool Create() override { return false; }
    bool Open() override { return m_bOpen = !m_strLength.IsEmpty(); }
    void Close() override { m_bOpen = false; }
    int Read(void*, int) override { return 0; }
    int Write(const void*, int) override { return 0; }
    long long GetLength() override { return m_bOpen && m_bHeadOnly ? m_strLength.GetInt() : NOT_ASKED_PROPERLY; }
    long long GetPosition() override { return 0; }
    long long Seek(long long, int) override { return 0; }
    bool GetIsStream() override { return false; }
    bool GetCanClose() override { return true; }
    bool GetIsOpen() override { return m_bOpen; }
    wchar_t* GetInfo(const wchar_t*) override { return LyCom::SysAllocString(nullptr); }
    void SetTimeout(int) override {}
    void SetPostData(void*, int) override {}
    void SetDownloadParameters(LyString) override {}
    void SetProperty(const wchar_t* pName, const wchar_t* pValue) override
    {
        m_bHeadOnly = LyString(pName) == L"HTTPREQUEST_TYPE" && LyString(pValue) == L"HEAD" && !m_bOpen;
    }
    bool GetCanCancel() override { return true; }
    void SetEndOfFile() override {}

private:
    LyString m_strLength;
    bool m_bOpen = false;
    bool m_bHeadOnly = false;
};
} // namespace

LY_EXPORT ILyReader* CreateGenericReaderDLL(const wchar_t* pPath)
{
    return pPath != nullptr && *pPath != 0 ? new FakeUrlReader(pPath) : nullptr;
}

LY_EXPORT int GetLiveReaders() { return s_nReaders; }
