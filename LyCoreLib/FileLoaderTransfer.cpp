// How CFileLoader moves the bytes: chunks, progress, and the test of the content on the way.

#include "FileLoaderDetails.h"
#include "LyFileSystem.h"
#include "LyStringFormat.h"
#include "LyTimer.h"
#include "OptionsHelper.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace
{
constexpr int SMALL_CHUNK_BYTES = 65536;
constexpr int LARGE_CHUNK_BYTES = 1048576;
constexpr int FROM_THE_START = 0; // origin of a seek

// Progress that a listener need not hear of: less than both since the last report.
constexpr float REPORT_STEP = 0.005F;
constexpr unsigned int REPORT_INTERVAL_MS = 500;

constexpr long long LENGTH_NOT_KNOWN = 0x7fffffff; // as some transports have it
constexpr int PERCENT_NOT_KNOWN = -1;

bool GetIsKnown(long long nTotal) { return nTotal > 0 && nTotal != LENGTH_NOT_KNOWN && nTotal != LLONG_MAX; }

int GetPercent(long long nDone, long long nTotal)
{
    return static_cast<int>(nDone <= LLONG_MAX / 100 ? nDone * 100 / nTotal : nDone / (nTotal / 100));
}

bool Find(const LyBuffer& buffer, const void* pText, size_t nBytes)
{
    return buffer.Search(static_cast<const unsigned char*>(pText), static_cast<int>(nBytes), 0, 1) >= 0;
}
} // namespace

// False if the source is too long.
bool CFileLoader::PrepareTransfer(TRANSFER& transfer)
{
    transfer.nSize = m_pReader->GetLength();
    bool bKnown = transfer.nSize >= 0;
    if (m_nStartOffset > 0)
    {
        const long long nOffset = bKnown ? std::min(m_nStartOffset, transfer.nSize) : m_nStartOffset;
        if (bKnown)
            transfer.nSize -= nOffset;
        if (m_pReader->Seek(nOffset, FROM_THE_START) < 0)
            return false; // what came would be other bytes
    }
    transfer.nChunkBytes = transfer.bIsURL || !bKnown ? SMALL_CHUNK_BYTES : LARGE_CHUNK_BYTES;
    if (bKnown)
        transfer.nTotal = transfer.nSize;
    if (m_nMaximumLength < 1 || transfer.nTotal <= m_nMaximumLength)
        return true;
    transfer.nTotal = m_nMaximumLength;
    return !bKnown || !m_bFailIfTooLong;
}

bool CFileLoader::RunTransfer(TRANSFER& transfer)
{
    for (;;)
    {
        long long nWant = std::min<long long>(transfer.nTotal - transfer.nDone, transfer.nChunkBytes);
        // The test comes as early as promised. Without a buffer there is nothing to test, ever.
        if (!transfer.bTested && transfer.pBuffer != nullptr && m_nCheckBytes > 0)
            nWant = std::min(nWant, m_nCheckBytes - transfer.nDone);
        const int nGot = ReadChunk(transfer, static_cast<int>(nWant));
        transfer.nDone += nGot;
        ShowProgress(transfer);
        ReportProgress(transfer);

        const bool bComplete = transfer.nDone == transfer.nTotal;
        const bool bEnded = nGot < nWant;
        const bool bEndIsExpected = bEnded && transfer.nSize < 0 && transfer.nDone > 0;
        if (GetIsContentTestDue(transfer, bComplete || bEndIsExpected))
        {
            transfer.bTested = true;
            transfer.bFailed = transfer.bFailed || !TestContent(*transfer.pBuffer);
        }
        if (GetIsCancelled() || transfer.bFailed)
            return false;
        if (bComplete)
            return true;
        if (bEnded)
            return bEndIsExpected;
    }
}

// The bytes that came, and were kept.
int CFileLoader::ReadChunk(TRANSFER& transfer, int nBytes)
{
    if (nBytes < 1)
        return 0;
    LyBuffer bufferForOutput;
    LyBuffer* pBuffer = transfer.pBuffer;
    if (pBuffer == nullptr)
    {
        if (transfer.pOutput == nullptr)
            return 0;
        pBuffer = &bufferForOutput;
    }
    unsigned char* p = pBuffer->GetAppendBlock(nBytes);
    if (p == nullptr)
    {
        transfer.bFailed = true;
        return 0;
    }
    // What a reader claims to have read beyond the block is not believed.
    const int nGot = std::clamp(m_pReader->Read(p, nBytes), 0, nBytes);
    if (nGot < nBytes)
        pBuffer->RemoveRight(nBytes - nGot);
    if (transfer.pBuffer == nullptr && nGot > 0 && transfer.pOutput->Write(p, nGot) != nGot)
        transfer.bFailed = true;
    return nGot;
}

void CFileLoader::ShowProgress(TRANSFER& transfer)
{
    if (transfer.pWait == nullptr)
        return;
    const LyString strDone = LyFileSystem::FileSizeToReadableFileSize(transfer.nDone);
    LyString strText;
    if (m_bShortProgressText && !m_strProgressTitle.IsEmpty())
        strText.Format(L"%s  (%s", m_strProgressTitle, strDone);
    else
        strText.Format(L"%s '%s'  (%s", TranslateString(transfer.bIsURL ? L"Downloading" : L"Reading"),
                       m_strProgressTitle, strDone);
    int nPercent = PERCENT_NOT_KNOWN;
    if (GetIsKnown(transfer.nTotal))
    {
        strText += L" " + TranslateString(L"of") + L" " + LyFileSystem::FileSizeToReadableFileSize(transfer.nTotal);
        nPercent = GetPercent(transfer.nDone, transfer.nTotal);
    }
    strText += L")";
    transfer.pWait->SetProgress(strText, L"", nPercent);
}

// Deliberate: the two ends of the range are reported at once, what lies between seldom. A listener may draw.
void CFileLoader::ReportProgress(TRANSFER& transfer)
{
    if (m_pProgress == nullptr)
        return;
    float fFraction = 0.0F;
    if (transfer.nTotal > 0)
        fFraction = static_cast<float>(static_cast<double>(transfer.nDone) / static_cast<double>(transfer.nTotal));
    bool bReport = true;
    if (transfer.bReported)
    {
        if (fFraction == 0.0F || fFraction == 1.0F)
            bReport = fFraction != transfer.fReported;
        else
            bReport = std::fabs(fFraction - transfer.fReported) >= REPORT_STEP &&
                      GetTickCount() - transfer.nReportTick >= REPORT_INTERVAL_MS;
    }
    if (bReport)
    {
        m_pProgress->SetProgress(fFraction);
        transfer.bReported = true;
        transfer.fReported = fFraction;
        transfer.nReportTick = GetTickCount();
    }
    if (m_pProgress->GetCancelled())
        m_pCancel->m_bCancelled = true;
}

bool CFileLoader::GetIsContentTestDue(const TRANSFER& transfer, bool bEnded) const
{
    if (transfer.bTested || transfer.pBuffer == nullptr)
        return false;
    return transfer.nDone >= m_nCheckBytes || (bEnded && m_bCheckAtEnd);
}

bool CFileLoader::TestContent(const LyBuffer& buffer) const
{
    if (m_pChecker != nullptr && !m_pChecker->Check(buffer, m_nCheckerParam))
        return false;
    if (m_strRequiredText.IsEmpty())
        return true;
    const LyStringUTF8 narrow(m_strRequiredText);
    const wchar_t* pWide = m_strRequiredText;
    return Find(buffer, narrow.Get(), std::strlen(narrow)) ||
           Find(buffer, pWide, static_cast<size_t>(m_strRequiredText.GetLength()) * sizeof(wchar_t));
}
