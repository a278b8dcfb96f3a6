// What a load of CFileLoader is told beforehand, and the parameters of a request.

#include "FileLoader.h"

namespace
{
constexpr wchar_t REQUEST_TYPE[] = L"HTTPREQUEST_TYPE";
constexpr wchar_t REQUEST_TYPE_POST[] = L"POST";
constexpr wchar_t REQUEST_HEADERS[] = L"INFO_HEADERS";
constexpr wchar_t HEADER_DELIMITER[] = L"\n";
} // namespace

bool CFileLoader::SetMaximumLength(long long nBytes, bool bFail)
{
    m_nMaximumLength = nBytes;
    m_bFailIfTooLong = bFail;
    return true;
}

bool CFileLoader::SetProgressUI(bool bShow, int nDelayMS, bool bCancelButton, const LyString& strTitle, bool bShortText,
                                const LyString& strText)
{
    m_bShowProgress = bShow;
    m_nProgressDelay = nDelayMS;
    m_bProgressCancel = bCancelButton;
    m_strProgressTitle = strTitle;
    m_bShortProgressText = bShortText;
    m_strProgressText = strText;
    return true;
}

bool CFileLoader::SetAllowReader(bool bAllowReader)
{
    m_bAllowReader = bAllowReader;
    return true;
}

bool CFileLoader::SetDownloadParameters(LyStringArray* pList, void* pData, int nBytes, bool bCopy)
{
    if (pList == nullptr)
        m_DownloadParameters = LyStringArray();
    else if (pList != &m_DownloadParameters)
        m_DownloadParameters = *pList;
    const bool bHasData = pData != nullptr && nBytes > 0;
    if (bHasData && !m_DownloadParameters.ContainsString(REQUEST_TYPE, true))
    {
        m_DownloadParameters.Add(REQUEST_TYPE);
        m_DownloadParameters.Add(REQUEST_TYPE_POST);
    }
    if (!m_DownloadParameters.ContainsString(REQUEST_HEADERS, true))
    {
        LyStringArray aryHeaders;
        if (bHasData)
            aryHeaders.Add(L"Content-Type: text/xml");
        AddDownloadParametersRequestHeaders(aryHeaders, true);
    }
    return SetDownloadParametersData(pData, nBytes, bCopy);
}

bool CFileLoader::AddDownloadParametersRequestHeaders(const LyStringArray& aryHeaders, bool bGzip)
{
    LyStringArray aryAll(aryHeaders);
    if (bGzip)
        aryAll.Add(L"Accept-Encoding: gzip");
    aryAll.RemoveString(L"", true);
    aryAll.RemoveDuplicates();
    return AddDownloadParameter(REQUEST_HEADERS, aryAll.GetList(HEADER_DELIMITER));
}

bool CFileLoader::SetDownloadParametersData(void* pData, int nBytes, bool bCopy)
{
    if (pData == nullptr || nBytes < 1)
    {
        pData = nullptr;
        nBytes = 0;
    }
    if (bCopy)
    {
        m_PostBuffer.FromBuffer(pData, nBytes); // without data, or memory for it, it is empty
        m_pPostData = m_PostBuffer.GetData();
        m_nPostLength = m_PostBuffer.GetSize();
        return true;
    }
    m_PostBuffer.Empty(true);
    m_pPostData = static_cast<unsigned char*>(pData);
    m_nPostLength = nBytes;
    return true;
}

bool CFileLoader::AddDownloadParameter(const LyString& strName, const LyString& strValue)
{
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): strValue may be one of the list, which may move
    const LyString strCopy(strValue);
    // Deliberate: names are looked for among the values, too. Names are words of their own that no value uses.
    const int nName = m_DownloadParameters.FindString(strName, true, true);
    if (nName >= 0 && nName + 1 < m_DownloadParameters.GetSize())
    {
        m_DownloadParameters[nName + 1] = strCopy;
        return true;
    }
    if (nName < 0) // a name at the very end lacks only its value
        m_DownloadParameters.Add(strName);
    m_DownloadParameters.Add(strCopy);
    return true;
}
