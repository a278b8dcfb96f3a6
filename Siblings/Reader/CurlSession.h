// One request at a time to a web server through libcurl, and its answer as a stream that is pulled. There is no thread:
// the transfer goes on while the caller is inside Start or Fetch, and between them the server waits. What came beyond
// the wish is held, AHEAD_BYTES at most.
//
// Time-out: Start and Fetch give up when nothing moves for that long: no bytes of the body, no data sent, no further
//           answer. A header must come whole in that time, so that a trickle of lines cannot hold a caller for ever.
// TLS:      verified, certificate and host name; there is no switch against it.
// Redirects: 10 at most, to http and https alone.
// Errors:   false or a short count; GetError tells why in a sentence.
// Threads:  one at a time, but for Cancel, from any thread: it ends a Start or Fetch that waits.

#pragma once

#include "HttpHeaders.h"
#include "UrlRequest.h"
#include <atomic>
#include <chrono>
#include <curl/curl.h>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

// libcurl is set up at the first request and put away when the library's last user goes.
class CurlLibrary
{
public:
    static bool Use();
    static void Release(); // no session is alive
};

// Where to, and how.
struct CURL_TARGET
{
    std::string m_strURL;
    std::string m_strHost;   // for messages
    std::string m_strCAFile; // empty: the authorities that the system trusts
    int m_nTimeoutMS = 0;
    long long m_nFirstByte = 0;      // above 0: the rest from there on is asked for
    std::string m_strRangeValidator; // with m_nFirstByte: of the answer that this one must fit; may be empty
};

class CurlSession
{
public:
    static constexpr size_t AHEAD_BYTES = 64 * 1024;
    static constexpr long MAX_REDIRECTS = 10;

    CurlSession() = default;
    ~CurlSession();
    CurlSession(const CurlSession&) = delete;
    CurlSession& operator=(const CurlSession&) = delete;

    // Sends the request and waits for the header of the answer, whatever its status. Ends what went on before.
    bool Start(const CURL_TARGET& target, const UrlRequest& request);
    // The next bytes of the body; with p null they are dropped. Fewer than asked for: the end, or an error.
    long long Fetch(unsigned char* p, long long nBytes);
    // Ends the transfer and closes the connection.
    void Stop();

    void Cancel(); // any thread; holds until Reset
    void Reset() { m_bCancelled = false; }
    bool GetIsCancelled() const { return m_bCancelled; }
    // The system is still looking up the host's name, in a thread of libcurl that nobody can hurry. Stop waits for it.
    bool GetIsResolving() const;

    const HttpHeaders& GetHeaders() const { return m_Headers; } // of the last answer
    long long GetContentLength() const;                         // of this answer's body; -1 if unknown
    std::string GetURLAfterRedirects() const;                   // empty if there was none
    const std::string& GetError() const { return m_strError; }  // empty while all is well

private:
    using Clock = std::chrono::steady_clock;
    struct SlistFree
    {
        void operator()(curl_slist* p) const { curl_slist_free_all(p); }
    };
    using Slist = std::unique_ptr<curl_slist, SlistFree>;

    bool MakeHandles();
    bool BuildHeaderLines(const CURL_TARGET& target, const UrlRequest& request);
    void SetTarget(const CURL_TARGET& target);
    void SetCallbacks();
    void SetMethod(const UrlRequest& request);
    template <class DONE>
    void Drive(DONE done);
    bool WaitUntil(Clock::time_point tDeadline);
    void NoteResult();
    void Fail(std::string strError);
    long long TakeAhead(unsigned char* p, long long nBytes);
    void EndTransfer();

    static size_t OnHeader(char* p, size_t nSize, size_t nItems, void* pSession) noexcept;
    static size_t OnBody(char* p, size_t nSize, size_t nItems, void* pSession) noexcept;
    static int OnProgress(void* pSession, curl_off_t, curl_off_t, curl_off_t, curl_off_t nSent) noexcept;
    size_t TakeBody(const unsigned char* p, size_t nBytes);

    std::atomic<bool> m_bCancelled{false};
    std::mutex m_WakeLock; // Cancel may come while the handle is made or goes
    CURLM* m_pMulti = nullptr;
    CURL* m_pEasy = nullptr;
    Slist m_pHeaderLines;
    Slist m_pStatusAliases;
    std::string m_strData; // of the request: it outlives the caller's
    char m_szDetail[CURL_ERROR_SIZE] = {};

    HttpHeaders m_Headers;
    std::string m_strError;
    std::string m_strHost;
    int m_nTimeoutMS = 0;
    bool m_bActive = false;  // the handle is in the multi handle
    bool m_bFinished = true; // no more bytes come
    bool m_bHeaderComplete = false;
    bool m_bMoved = false; // something came or went since this was looked at
    bool m_bPaused = false;
    curl_off_t m_nSent = 0; // bytes of the request's data

    // Where the body goes: into the caller's buffer first (m_pTarget may be null: dropped), then ahead.
    unsigned char* m_pTarget = nullptr;
    long long m_nWanted = 0;
    std::vector<unsigned char> m_aryAhead;
    size_t m_nAheadTaken = 0;
};
