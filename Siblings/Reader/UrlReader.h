// An http or https URL as a reader.
//
// Open:      sends the request and waits for the header of the answer. False if there is no answer, or one with a
//            status of 400 or above; the infos tell of it all the same. Redirects are followed.
// Position:  a Seek only notes where the next Read begins; the Read makes the way there: a little forward by reading,
//            otherwise by a range request, if the server offered ranges with the first answer. A server that offers
//            none goes forward alone, and a Seek back is refused with -1. What has changed on the server meanwhile is
//            never mixed: such a Read brings nothing.
// Read:      fewer bytes than asked for mean the end, an error, the time-out or a Close.
// Length:    -1 if the server does not tell, and while nothing is open.
// Encodings: the bytes come as they were sent; info "ContentEncoding" tells how they are packed.
// Infos:     Location, AllHeaders, StatusCode, ContentEncoding: of the last answer to Open. Error: of the last failure,
//            a sentence. Others are empty.
// Properties: CA_FILE, and the names of UrlRequest.h. Others mean nothing; there is none that turns verifying off.
// Threads:   one at a time, but for Close: another thread may call it at any time, and an Open or Read that waits ends.

#pragma once

#include "CurlSession.h"
#include "ILyReader.h"
#include "UrlRequest.h"
#include <atomic>
#include <mutex>
#include <string>

class UrlReader final : public ILyReader
{
public:
    static constexpr int DEFAULT_TIMEOUT_MS = 20000;
    static constexpr long long READ_THROUGH_BYTES = 256 * 1024; // a way forward shorter than this is read

    explicit UrlReader(std::string strURL); // as it goes to the server
    UrlReader(const UrlReader&) = delete;
    UrlReader& operator=(const UrlReader&) = delete;

    bool Create() override { return false; }
    bool Open() override; // closes first
    void Close() override;
    int Read(void* p, int nBytes) override;
    int Write(const void*, int) override { return 0; }
    long long GetLength() override { return m_bOpen ? m_nLength : -1; }
    long long GetPosition() override { return m_bOpen ? m_nPosition : 0; }
    long long Seek(long long nOffset, int nOrigin) override;
    bool GetIsStream() override { return m_bOpen && !m_bRanges; }
    bool GetCanClose() override { return true; }
    bool GetIsOpen() override { return m_bOpen && !m_Session.GetIsCancelled(); }
    wchar_t* GetInfo(const wchar_t* pName) override;
    void SetTimeout(int nMS) override; // below 1: the default
    void SetPostData(void* p, int nBytes) override;
    void SetDownloadParameters(LyString strParameters) override;
    void SetProperty(const wchar_t* pName, const wchar_t* pValue) override;
    bool GetCanCancel() override { return false; } // a cancel closes
    void SetEndOfFile() override {}

private:
    bool OpenSession();
    void NoteAnswer();
    bool StartFrom(long long nFirstByte);
    bool JudgeRange(long long nFirstByte);
    bool GoToPosition();
    int ReadBytes(unsigned char* p, int nBytes);
    bool Refuse(std::string strError);
    std::wstring GetInfoText(std::wstring_view strName) const;

    CURL_TARGET m_Target;
    UrlRequest m_Request;
    std::mutex m_Operation; // held by Open and Read, and by Close when it puts the session away
    CurlSession m_Session;
    std::atomic<bool> m_bOpen{false};
    bool m_bRanges = false; // the server serves parts
    long long m_nLength = -1;
    long long m_nPosition = 0;        // of the next Read
    long long m_nSessionPosition = 0; // of the next byte that the session brings
    HttpHeaders m_Headers;            // of the answer to Open
    std::string m_strLocation;
    std::string m_strError;
};
