#include "CurlSession.h"
#include "SigPipeBlock.h"
#include "UrlErrors.h"
#include <algorithm>
#include <cstring>
#include <utility>

CurlSession::~CurlSession() { Stop(); }

bool CurlSession::Start(const CURL_TARGET& target, const UrlRequest& request)
{
    EndTransfer();
    m_Headers.Clear();
    m_strError.clear();
    m_strHost = target.m_strHost;
    m_nTimeoutMS = target.m_nTimeoutMS;
    m_bHeaderComplete = m_bMoved = m_bPaused = false;
    m_nSent = 0;
    m_szDetail[0] = 0;
    if (!MakeHandles() || !BuildHeaderLines(target, request))
    {
        Fail("There is no memory left for a transfer. Close other programs and try again.");
        return false;
    }
    SetTarget(target);
    SetCallbacks();
    SetMethod(request);
    m_bFinished = curl_multi_add_handle(m_pMulti, m_pEasy) != CURLM_OK;
    m_bActive = !m_bFinished;
    if (m_bActive)
        Drive([this] { return m_bHeaderComplete; });
    else
        Fail(m_strHost + ": the transfer did not begin. Try again.");
    // A body that broke off at once is told of by Fetch.
    return !m_bCancelled && (m_bHeaderComplete || (m_strError.empty() && m_Headers.GetIsComplete()));
}

long long CurlSession::Fetch(unsigned char* p, long long nBytes)
{
    const long long nAhead = TakeAhead(p, nBytes);
    m_pTarget = p != nullptr ? p + nAhead : nullptr;
    m_nWanted = nBytes - nAhead;
    if (m_nWanted > 0 && !m_bFinished)
        Drive([this] { return m_nWanted == 0; });
    const long long nMissing = std::exchange(m_nWanted, 0);
    m_pTarget = nullptr;
    return nBytes - nMissing;
}

long long CurlSession::TakeAhead(unsigned char* p, long long nBytes)
{
    const size_t nTaken = std::min(static_cast<size_t>(nBytes), m_aryAhead.size() - m_nAheadTaken);
    if (p != nullptr && nTaken > 0)
        std::memcpy(p, m_aryAhead.data() + m_nAheadTaken, nTaken);
    m_nAheadTaken += nTaken;
    if (m_nAheadTaken == m_aryAhead.size())
    {
        m_aryAhead.clear(); // keeps its memory
        m_nAheadTaken = 0;
    }
    return static_cast<long long>(nTaken);
}

// Lets the transfer go on until done() holds or it has ended, for whatever reason.
template <class DONE>
void CurlSession::Drive(DONE done)
{
    const SigPipeBlock block;
    const auto timeout = std::chrono::milliseconds(m_nTimeoutMS);
    Clock::time_point tDeadline = Clock::now() + timeout;
    while (!done() && !m_bFinished)
    {
        if (m_bCancelled)
            return Fail("The reader was closed.");
        if (std::exchange(m_bPaused, false))
            curl_easy_pause(m_pEasy, CURLPAUSE_CONT);
        int nRunning;
        curl_multi_perform(m_pMulti, &nRunning);
        NoteResult();
        if (done() || m_bFinished)
            return;
        if (std::exchange(m_bMoved, false))
            tDeadline = Clock::now() + timeout;
        if (!m_bPaused && !WaitUntil(tDeadline))
            return Fail(GetTimeoutErrorText(m_strHost, m_nTimeoutMS));
    }
}

// Until something can be done, or Cancel comes. False if the time is over already.
bool CurlSession::WaitUntil(Clock::time_point tDeadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(tDeadline - Clock::now());
    if (left.count() <= 0)
        return false;
    curl_multi_poll(m_pMulti, nullptr, 0, static_cast<int>(left.count()), nullptr);
    return true;
}

// There is but one transfer, so a message is about it.
void CurlSession::NoteResult()
{
    int nLeft;
    const CURLMsg* pMessage = curl_multi_info_read(m_pMulti, &nLeft);
    if (pMessage == nullptr || pMessage->msg != CURLMSG_DONE)
        return;
    m_bFinished = true;
    const CURLcode eResult = pMessage->data.result;
    if (eResult == CURLE_OK || !m_strError.empty())
        return;
    m_strError =
        m_bCancelled ? "The reader was closed." : GetTransferErrorText(eResult, m_szDetail, m_strHost, m_nTimeoutMS);
}

void CurlSession::Fail(std::string strError)
{
    m_strError = std::move(strError);
    m_bFinished = true;
}

void CurlSession::Cancel()
{
    m_bCancelled = true;
    const std::lock_guard lock(m_WakeLock);
    if (m_pMulti != nullptr)
        curl_multi_wakeup(m_pMulti);
}

size_t CurlSession::OnHeader(char* p, size_t nSize, size_t nItems, void* pSession) noexcept
{
    auto& session = *static_cast<CurlSession*>(pSession);
    constexpr size_t STOP = 0; // a count that is not the line's
    try
    {
        const int nStatusBefore = session.m_Headers.GetStatus();
        const bool bWasComplete = session.m_Headers.GetIsComplete();
        const std::string_view strLine(p, nSize * nItems);
        if (!session.m_Headers.AddLine(strLine))
        {
            session.m_strError = session.m_strHost + ": the header of the answer is longer than " +
                                 std::to_string(HttpHeaders::MAX_BYTES) + " bytes. Try another address.";
            return STOP;
        }
        if (bWasComplete != session.m_Headers.GetIsComplete() || nStatusBefore != session.m_Headers.GetStatus())
            session.m_bMoved = true;
        session.m_bHeaderComplete = session.m_bHeaderComplete || session.m_Headers.GetIsFinal();
        return strLine.size();
    }
    catch (...)
    {
        return STOP;
    }
}

size_t CurlSession::OnBody(char* p, size_t nSize, size_t nItems, void* pSession) noexcept
{
    // Nothing throws: the buffer has its full size from the start.
    return static_cast<CurlSession*>(pSession)->TakeBody(reinterpret_cast<unsigned char*>(p), nSize * nItems);
}

size_t CurlSession::TakeBody(const unsigned char* p, size_t nBytes)
{
    const size_t nDirect = std::min(static_cast<size_t>(m_nWanted), nBytes);
    if (nBytes - nDirect > m_aryAhead.capacity() - m_aryAhead.size())
    {
        m_bPaused = true;
        return CURL_WRITEFUNC_PAUSE; // the same bytes come again
    }
    m_bMoved = true;
    if (m_pTarget != nullptr && nDirect > 0)
    {
        std::memcpy(m_pTarget, p, nDirect);
        m_pTarget += nDirect;
    }
    m_nWanted -= static_cast<long long>(nDirect);
    m_aryAhead.insert(m_aryAhead.end(), p + nDirect, p + nBytes);
    return nBytes;
}

// Deliberate: a cancelled transfer goes on here; Drive ends it behind the step, which is short. Libcurl would end it by
// waiting for the look-up of the name.
int CurlSession::OnProgress(void* pSession, curl_off_t, curl_off_t, curl_off_t, curl_off_t nSent) noexcept
{
    auto& session = *static_cast<CurlSession*>(pSession);
    if (std::exchange(session.m_nSent, nSent) != nSent)
        session.m_bMoved = true;
    return 0;
}
