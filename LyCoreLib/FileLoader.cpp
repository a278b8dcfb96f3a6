// A load of CFileLoader from its beginning to its end, cancelling it, and what the server answered.

#include "FileLoader.h"
#include "LyFile.h"
#include "LySharedToolsHelper.h"
#include "OptionsHelper.h"

#include <climits>

bool CFileLoader::LoadBuffer(const LyFilename& source, LyBuffer& buffer)
{
    bool bOutputOpened = false;
    return LoadInternal(source, &buffer, nullptr, LyFilename(), bOutputOpened, LyDateTime());
}

bool CFileLoader::LoadInternal(const LyFilename& source, LyBuffer* pBuffer, ILyReader* pOutput, LyFilename target,
                               bool& bOutputOpened, LyDateTime date)
{
    if (m_bBusy.exchange(true))
        return false; // the buffer may be the one that is being filled
    bool bLoaded = false;
    if (pBuffer != nullptr)
        pBuffer->Empty(false);
    if (m_pCancel == &m_Cancel || !GetIsCancelled())
    {
        BeginLoad();
        ILyWaitMessage* pWait = ShowWaitMessage(GetIsInternet(source));
        bLoaded = !m_bAllowReader && pOutput == nullptr
                      ? LoadInternalNoReader(source, pBuffer)
                      : LoadInternalReader(source, pBuffer, pOutput, target, bOutputOpened, pWait, date);
        if (!bLoaded && pBuffer != nullptr)
            pBuffer->Empty(true);
        EndLoad(pWait);
    }
    m_bBusy = false;
    return bLoaded;
}

void CFileLoader::BeginLoad()
{
    m_strError.Empty();
    LySingleLock lock(&m_Lock);
    m_pReader.Release();
    m_pCancel->m_pCallback = this;
    m_Cancel.m_bCancelled = false;
    if (m_Cancel.m_pCallback != nullptr && m_Cancel.m_pCallback != this) // this loader knows
        m_Cancel.m_pCallback->CancelHelper_Cancel(false);
}

ILyWaitMessage* CFileLoader::ShowWaitMessage(bool bIsURL)
{
    if (!m_bShowProgress)
        return nullptr;
    if (m_strProgressTitle.IsEmpty())
        m_strProgressTitle = TranslateString(bIsURL ? L"Internet resource" : L"Local resource");
    ILyMessageBox* pService = GetLyMessageBoxHelper(true);
    if (pService == nullptr)
        return nullptr;
    return pService->CreateWaitMessage(m_strProgressText, m_nProgressDelay, m_bProgressCancel, this);
}

void CFileLoader::EndLoad(ILyWaitMessage* pWait)
{
    if (pWait != nullptr)
        pWait->Close(); // from here on nobody calls back
    SetDownloadParameters(nullptr, nullptr, 0, false);
    const LyString strReaderError = m_pReader != nullptr ? GetReaderInfo(L"Error") : LyString();
    if (!strReaderError.IsEmpty())
        m_strError = strReaderError; // it came first
    LySingleLock lock(&m_Lock);
    m_pReader.Release();
}

bool CFileLoader::LoadInternalNoReader(const LyFilename& source, LyBuffer* pBuffer) const
{
    LyFile file(source, LY_FILE_READ, LY_FILE_SHARE_READ_WRITE, LY_FILE_OPEN_EXISTING);
    file.SetSequentialScan(true);
    if (pBuffer == nullptr || !file.Open())
        return false;
    long long nLength = file.GetLength();
    if (m_nStartOffset > 0)
    {
        const long long nOffset = m_nStartOffset < nLength ? m_nStartOffset : nLength;
        if (file.SetPosition(nOffset, 0) != nOffset)
            return false;
        nLength -= nOffset;
    }
    if (m_nMaximumLength >= 1 && nLength > m_nMaximumLength)
    {
        if (m_bFailIfTooLong)
            return false;
        nLength = m_nMaximumLength;
    }
    if (nLength == 0)
        return true;
    if (nLength < 0 || nLength > INT_MAX)
        return false;
    unsigned char* p = pBuffer->GetAppendBlock(static_cast<int>(nLength));
    unsigned int nRead = 0;
    return p != nullptr && file.Read(p, static_cast<unsigned int>(nLength), nRead) && nRead == nLength;
}

LyString CFileLoader::GetResponseHeader(const LyString& strName) const
{
    // The names of headers know no case (RFC 9110, 5.1), and each stands at the beginning of its line.
    const LyString strLines = L"\n" + m_strAllHeaders;
    LyString strValue = strLines.GetSpan(L"\n" + strName + L":", L"\n", false, 0, false, RECURSIVE_SPAN_NONE, true);
    return strValue.Trim();
}

bool CFileLoader::Cancel(bool bCancel)
{
    LySingleLock lock(&m_Lock);
    if (m_pCancel->m_bCancelled.exchange(bCancel) != bCancel)
    {
        // The loader is its own record's callback while it loads, and knows already.
        ICancelHelperCallback* pCallback = m_pCancel->m_pCallback;
        if (pCallback != nullptr && pCallback != this)
            pCallback->CancelHelper_Cancel(bCancel);
    }
    if (bCancel && m_pReader != nullptr && !m_pReader->GetCanCancel())
        m_pReader->Close(); // which ends a read that blocks
    return true;
}

bool CFileLoader::LyWaitMessage_Cancel() { return Cancel(true); }

bool CFileLoader::CancelHelper_Cancel(bool bCancel) { return Cancel(bCancel); }
