#include "UrlReader.h"
#include "ReaderGuard.h"
#include "ReaderNames.h"
#include "UrlErrors.h"
#include "UTF8.h"
#include <algorithm>

namespace
{
enum HTTP_STATUS : int
{
    STATUS_OK = 200,
    STATUS_PARTIAL_CONTENT = 206,
    STATUS_FIRST_ERROR = 400
};

constexpr char CHANGED_TEXT[] = ": the file was changed on the server while it was read. Open it again.";

std::wstring_view View(const wchar_t* p) { return p != nullptr ? std::wstring_view(p) : std::wstring_view(); }
} // namespace

UrlReader::UrlReader(std::string strURL)
{
    m_Target.m_strHost = GetHostOfURL(strURL);
    m_Target.m_strURL = std::move(strURL);
    m_Target.m_nTimeoutMS = DEFAULT_TIMEOUT_MS;
}

bool UrlReader::Refuse(std::string strError)
{
    m_strError = std::move(strError);
    return false;
}

bool UrlReader::Open()
{
    const std::lock_guard lock(m_Operation);
    m_bOpen = false;
    m_Session.Reset();
    return m_bOpen = Guarded(false, [this] { return OpenSession(); });
}

bool UrlReader::OpenSession()
{
    m_strError.clear();
    m_strLocation.clear();
    m_Headers.Clear();
    m_nLength = -1;
    m_nPosition = m_nSessionPosition = 0;
    m_bRanges = false;
    if (const std::string strRefusal = m_Request.GetRefusal(); !strRefusal.empty())
        return Refuse(strRefusal);
    const bool bAnswered = StartFrom(0);
    NoteAnswer();
    if (!bAnswered)
        return Refuse(m_Session.GetError());
    if (m_Headers.GetStatus() < STATUS_FIRST_ERROR)
        return true;
    m_Session.Stop();
    return Refuse(GetStatusErrorText(m_Headers.GetStatus(), m_Target.m_strHost));
}

void UrlReader::NoteAnswer()
{
    m_Headers = m_Session.GetHeaders();
    m_strLocation = m_Headers.GetValue("Location");
    if (const std::string strURL = m_Session.GetURLAfterRedirects(); m_strLocation.empty() && !strURL.empty())
        m_strLocation = strURL;
    m_nLength = m_Session.GetContentLength();
    m_bRanges = m_Request.GetIsPlainGet() && m_Headers.GetStatus() == STATUS_OK && m_nLength >= 0 &&
                m_Headers.GetAcceptsRanges() && !m_Request.HasHeader("Range");
}

bool UrlReader::StartFrom(long long nFirstByte)
{
    m_Target.m_nFirstByte = nFirstByte;
    m_Target.m_strRangeValidator = nFirstByte > 0 ? m_Headers.GetValidator() : std::string();
    m_nSessionPosition = nFirstByte;
    return m_Session.Start(m_Target, m_Request);
}

void UrlReader::Close()
{
    m_Session.Cancel();
    const std::lock_guard lock(m_Operation); // what waited ends now
    m_bOpen = false;
    // Whoever closes is not to wait for a name server; the session goes with the reader then.
    if (!m_Session.GetIsResolving())
        m_Session.Stop();
}

// Whether the answer brings the bytes from nFirstByte on, of the same file.
bool UrlReader::JudgeRange(long long nFirstByte)
{
    const HttpHeaders& headers = m_Session.GetHeaders();
    const int nStatus = headers.GetStatus();
    if (nStatus == STATUS_PARTIAL_CONTENT)
    {
        CONTENT_RANGE range;
        if (!headers.GetContentRange(range) || range.nFirst != nFirstByte)
            return Refuse(m_Target.m_strHost + ": the server sent another part than it was asked for. Load the whole.");
        if ((range.nTotal >= 0 && range.nTotal != m_nLength) || !headers.GetIsSameEntity(m_Headers))
            return Refuse(m_Target.m_strHost + CHANGED_TEXT);
        return true;
    }
    if (nStatus != STATUS_OK)
        return Refuse(GetStatusErrorText(nStatus, m_Target.m_strHost));
    if (m_Session.GetContentLength() != m_nLength || !headers.GetIsSameEntity(m_Headers))
        return Refuse(m_Target.m_strHost + CHANGED_TEXT);
    // The whole was asked for if it is all the bytes from the first one on. A server that promised parts and sends the
    // whole after all goes forward alone from here on.
    m_bRanges = nFirstByte == 0;
    m_nSessionPosition = 0;
    return true;
}

// Brings the session to where the next Read begins.
bool UrlReader::GoToPosition()
{
    const long long nAhead = m_nPosition - m_nSessionPosition;
    if (m_bRanges && (nAhead < 0 || nAhead > READ_THROUGH_BYTES))
    {
        const long long nFirstByte = m_nPosition;
        if (!StartFrom(nFirstByte))
            return Refuse(m_Session.GetError());
        if (!JudgeRange(nFirstByte))
        {
            m_Session.Stop();
            return false;
        }
    }
    const long long nDropped = m_nPosition - m_nSessionPosition;
    if (nDropped < 0)
        return false;
    const long long nGone = m_Session.Fetch(nullptr, nDropped);
    m_nSessionPosition += nGone;
    return nGone == nDropped;
}

int UrlReader::Read(void* p, int nBytes)
{
    const std::lock_guard lock(m_Operation);
    if (p == nullptr || nBytes < 1 || !GetIsOpen())
        return 0;
    return Guarded(0, [&] { return ReadBytes(static_cast<unsigned char*>(p), nBytes); });
}

int UrlReader::ReadBytes(unsigned char* p, int nBytes)
{
    if (m_nLength >= 0)
        nBytes = static_cast<int>(std::clamp<long long>(m_nLength - m_nPosition, 0, nBytes));
    if (nBytes == 0)
        return 0;
    int nRead = 0;
    if (m_nPosition == m_nSessionPosition || GoToPosition())
    {
        nRead = static_cast<int>(m_Session.Fetch(p, nBytes));
        m_nPosition += nRead;
        m_nSessionPosition += nRead;
    }
    if (nRead < nBytes && !m_Session.GetError().empty())
        m_strError = m_Session.GetError();
    return nRead;
}

long long UrlReader::Seek(long long nOffset, int nOrigin)
{
    if (!GetIsOpen() || nOrigin < 0 || nOrigin > 2)
        return -1;
    const long long nFrom = nOrigin == 0 ? 0 : nOrigin == 1 ? m_nPosition : m_nLength;
    long long nTarget;
    if (nFrom < 0 || __builtin_add_overflow(nFrom, nOffset, &nTarget) || nTarget < 0)
        return -1;
    if (!m_bRanges && nTarget < m_nSessionPosition)
        return -1;
    return m_nPosition = nTarget;
}

std::wstring UrlReader::GetInfoText(std::wstring_view strName) const
{
    if (strName == L"Location")
        return WidenUTF8(m_strLocation);
    if (strName == L"AllHeaders")
        return HttpHeaders::Widen(m_Headers.GetText());
    if (strName == L"StatusCode")
        return m_Headers.GetStatus() > 0 ? std::to_wstring(m_Headers.GetStatus()) : std::wstring();
    if (strName == L"ContentEncoding")
        return HttpHeaders::Widen(m_Headers.GetContentEncoding());
    return strName == L"Error" ? WidenUTF8(m_strError) : std::wstring();
}

wchar_t* UrlReader::GetInfo(const wchar_t* pName)
{
    return Guarded(static_cast<wchar_t*>(nullptr), [&] { return MakeSystemString(GetInfoText(View(pName))); });
}

void UrlReader::SetTimeout(int nMS) { m_Target.m_nTimeoutMS = nMS > 0 ? nMS : DEFAULT_TIMEOUT_MS; }

void UrlReader::SetPostData(void* p, int nBytes)
{
    Guarded([&] { m_Request.SetData(p, nBytes); });
}

void UrlReader::SetDownloadParameters(LyString strParameters)
{
    Guarded([&] { m_Request.SetParameters(View(strParameters)); });
}

void UrlReader::SetProperty(const wchar_t* pName, const wchar_t* pValue)
{
    Guarded(
        [&]
        {
            if (View(pName) == L"CA_FILE")
                m_Target.m_strCAFile = NarrowUTF8(View(pValue));
            else
                (void)m_Request.SetParameter(View(pName), View(pValue));
        });
}
