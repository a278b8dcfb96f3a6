// What a CurlSession tells libcurl before a request, and how it lets go of it.

#include "CurlSession.h"
#include "SigPipeBlock.h"

namespace
{
constexpr char USER_AGENT[] = "Rondel/" RONDEL_VERSION;
constexpr char PROTOCOLS[] = "http,https";
constexpr long RECEIVE_BYTES = 64 * 1024;

std::mutex s_LibraryLock;
bool s_bLibraryInUse = false; // under s_LibraryLock
} // namespace

bool CurlLibrary::Use()
{
    const std::lock_guard lock(s_LibraryLock);
    if (!s_bLibraryInUse)
        s_bLibraryInUse = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return s_bLibraryInUse;
}

void CurlLibrary::Release()
{
    const std::lock_guard lock(s_LibraryLock);
    if (s_bLibraryInUse)
        curl_global_cleanup();
    s_bLibraryInUse = false;
}

bool CurlSession::MakeHandles()
{
    if (m_pMulti == nullptr)
    {
        const std::lock_guard lock(m_WakeLock);
        m_pMulti = CurlLibrary::Use() ? curl_multi_init() : nullptr;
    }
    if (m_pEasy == nullptr)
        m_pEasy = curl_easy_init();
    else
        curl_easy_reset(m_pEasy);
    // A chunk of the transport fits behind a full load: what is refused when there is room comes in any case.
    m_aryAhead.reserve(AHEAD_BYTES + CURL_MAX_WRITE_SIZE);
    return m_pMulti != nullptr && m_pEasy != nullptr;
}

bool CurlSession::BuildHeaderLines(const CURL_TARGET& target, const UrlRequest& request)
{
    std::vector<std::string> aryLines = request.GetHeaderLines();
    // Without this a larger body waits a second for a word that many servers never say.
    if (!request.GetData().empty() && !request.HasHeader("Expect"))
        aryLines.push_back("Expect:");
    if (!target.m_strRangeValidator.empty())
        aryLines.push_back("If-Range: " + target.m_strRangeValidator);
    m_pHeaderLines.reset();
    for (const std::string& strLine : aryLines)
    {
        curl_slist* pGrown = curl_slist_append(m_pHeaderLines.get(), strLine.c_str());
        if (pGrown == nullptr)
            return false;
        (void)m_pHeaderLines.release();
        m_pHeaderLines.reset(pGrown);
    }
    if (m_pStatusAliases == nullptr)
        m_pStatusAliases.reset(curl_slist_append(nullptr, "ICY 200 OK"));
    return m_pStatusAliases != nullptr;
}

// The options are all of this libcurl's own time; none of the calls below can fail but for want of memory, and then the
// transfer itself does.
void CurlSession::SetTarget(const CURL_TARGET& target)
{
    curl_easy_setopt(m_pEasy, CURLOPT_URL, target.m_strURL.c_str());
    curl_easy_setopt(m_pEasy, CURLOPT_PROTOCOLS_STR, PROTOCOLS);
    curl_easy_setopt(m_pEasy, CURLOPT_REDIR_PROTOCOLS_STR, PROTOCOLS);
    curl_easy_setopt(m_pEasy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(m_pEasy, CURLOPT_MAXREDIRS, MAX_REDIRECTS);
    curl_easy_setopt(m_pEasy, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(m_pEasy, CURLOPT_SSL_VERIFYHOST, 2L); // the name, too
    if (!target.m_strCAFile.empty())
        curl_easy_setopt(m_pEasy, CURLOPT_CAINFO, target.m_strCAFile.c_str());
    curl_easy_setopt(m_pEasy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(target.m_nTimeoutMS));
    // A stream of its own connection: what is not fetched stays in the server, not in memory here.
    curl_easy_setopt(m_pEasy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(m_pEasy, CURLOPT_HTTP_CONTENT_DECODING, 0L); // who asked for an encoding undoes it
    curl_easy_setopt(m_pEasy, CURLOPT_BUFFERSIZE, RECEIVE_BYTES);
    curl_easy_setopt(m_pEasy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(m_pEasy, CURLOPT_USERAGENT, USER_AGENT);
    curl_easy_setopt(m_pEasy, CURLOPT_HTTPHEADER, m_pHeaderLines.get());
    curl_easy_setopt(m_pEasy, CURLOPT_HTTP200ALIASES, m_pStatusAliases.get());
    if (target.m_nFirstByte > 0)
        curl_easy_setopt(m_pEasy, CURLOPT_RANGE, (std::to_string(target.m_nFirstByte) + "-").c_str());
}

void CurlSession::SetCallbacks()
{
    curl_easy_setopt(m_pEasy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L); // a proxy's words are not the server's
    curl_easy_setopt(m_pEasy, CURLOPT_HEADERFUNCTION, &OnHeader);
    curl_easy_setopt(m_pEasy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(m_pEasy, CURLOPT_WRITEFUNCTION, &OnBody);
    curl_easy_setopt(m_pEasy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(m_pEasy, CURLOPT_XFERINFOFUNCTION, &OnProgress);
    curl_easy_setopt(m_pEasy, CURLOPT_XFERINFODATA, this);
    curl_easy_setopt(m_pEasy, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(m_pEasy, CURLOPT_ERRORBUFFER, m_szDetail);
}

void CurlSession::SetMethod(const UrlRequest& request)
{
    m_strData = request.GetData();
    const std::string& strMethod = request.GetMethod();
    if (request.GetIsHead())
    {
        curl_easy_setopt(m_pEasy, CURLOPT_NOBODY, 1L);
        return;
    }
    if (!m_strData.empty() || strMethod == "POST" || strMethod == "PUT")
    {
        curl_easy_setopt(m_pEasy, CURLOPT_POST, 1L);
        curl_easy_setopt(m_pEasy, CURLOPT_POSTFIELDS, m_strData.c_str());
        curl_easy_setopt(m_pEasy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(m_strData.size()));
        if (strMethod != "POST")
            curl_easy_setopt(m_pEasy, CURLOPT_CUSTOMREQUEST, strMethod.c_str());
        return;
    }
    curl_easy_setopt(m_pEasy, CURLOPT_HTTPGET, 1L);
    if (strMethod != "GET")
        curl_easy_setopt(m_pEasy, CURLOPT_CUSTOMREQUEST, strMethod.c_str());
}

void CurlSession::EndTransfer()
{
    if (m_bActive)
    {
        const SigPipeBlock block; // a secure connection says good-bye
        curl_multi_remove_handle(m_pMulti, m_pEasy);
    }
    m_bActive = false;
    m_bFinished = true;
    m_aryAhead.clear();
    m_nAheadTaken = 0;
}

void CurlSession::Stop()
{
    EndTransfer();
    const SigPipeBlock block;
    if (m_pEasy != nullptr)
        curl_easy_cleanup(m_pEasy);
    m_pEasy = nullptr;
    const std::lock_guard lock(m_WakeLock);
    if (m_pMulti != nullptr)
        curl_multi_cleanup(m_pMulti);
    m_pMulti = nullptr;
}

bool CurlSession::GetIsResolving() const
{
    curl_off_t nLookupMicroseconds = 0;
    return m_bActive && m_Headers.GetStatus() == 0 &&
           curl_easy_getinfo(m_pEasy, CURLINFO_NAMELOOKUP_TIME_T, &nLookupMicroseconds) == CURLE_OK &&
           nLookupMicroseconds == 0;
}

long long CurlSession::GetContentLength() const
{
    curl_off_t nBytes = -1;
    if (!m_bActive || curl_easy_getinfo(m_pEasy, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &nBytes) != CURLE_OK)
        return -1;
    return nBytes < 0 ? -1 : nBytes;
}

std::string CurlSession::GetURLAfterRedirects() const
{
    long nRedirects = 0;
    const char* pURL = nullptr;
    if (!m_bActive || curl_easy_getinfo(m_pEasy, CURLINFO_REDIRECT_COUNT, &nRedirects) != CURLE_OK || nRedirects < 1 ||
        curl_easy_getinfo(m_pEasy, CURLINFO_EFFECTIVE_URL, &pURL) != CURLE_OK || pURL == nullptr)
        return {};
    return pURL;
}
