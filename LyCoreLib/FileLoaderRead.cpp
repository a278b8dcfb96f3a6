// CFileLoader's load through a reader: opening it, the question whether the caller's copy is current, and the unpacking
// of what came packed. FileLoaderTransfer.cpp moves the bytes in between.

#include "FileLoaderDetails.h"
#include "LyFileSystem.h"
#include "LySharedToolsHelper.h"
#include "ZLibHelper.h"

namespace
{
constexpr wchar_t PARAMETER_DELIMITER[] = L"|";
constexpr wchar_t STATUS_NOT_MODIFIED[] = L"304";
constexpr wchar_t NO_ENCODING_MARK = 1; // an encoding that begins with it is none

// HTTP tells times in whole seconds (RFC 9110, 5.6.7). Two ways to the same second differ in the last bits of a number
// of days, and a midnight has its mark 0.2 seconds behind it (LyDateTime.h).
constexpr double HALF_A_SECOND = 0.5 / 86400;
} // namespace

bool CFileLoader::LoadInternalReader(const LyFilename& source, LyBuffer* pBuffer, ILyReader* pOutput,
                                     const LyFilename& target, bool& bOutputOpened, ILyWaitMessage* pWait,
                                     const LyDateTime& date)
{
    const bool bWantOutput = bOutputOpened;
    bOutputOpened = false;
    const bool bIsURL = GetIsInternet(source);
    if ((bIsURL && !m_bAllowInternet) || !CreateReader(source, bIsURL))
        return false;
    const bool bOpened = OpenReader();
    if (bOpened && date.GetValue() != 0.0 && GetIsCurrent(target, date))
    {
        m_strStatusCode = STATUS_NOT_MODIFIED;
        return false;
    }
    if (bWantOutput)
    {
        bOutputOpened = pOutput != nullptr && bOpened && pOutput->Create();
        if (!bOutputOpened)
            return false;
    }
    if (!bOpened)
        return false;

    TRANSFER transfer = {pBuffer, pOutput, pWait, bIsURL};
    const bool bTransferred = PrepareTransfer(transfer) && RunTransfer(transfer);
    if (pOutput != nullptr)
        pOutput->Close();
    if (!bTransferred || GetIsCancelled())
        return bTransferred;
    return Unpack(source, pBuffer, pOutput, target);
}

bool CFileLoader::GetIsInternet(const LyFilename& filename)
{
    bool bIsURL = false;
    filename.AnalyzeFilename(nullptr, nullptr, nullptr, nullptr, nullptr, &bIsURL);
    return bIsURL;
}

bool CFileLoader::CreateReader(const LyFilename& source, bool bIsURL)
{
    const LyString strName = bIsURL ? source.GetFilename() : source.GetFilenameForUseWithOperatingSystem();
    LySingleLock lock(&m_Lock);
    m_pReader.Set(CreateGenericReader(strName), true, false);
    if (m_pReader == nullptr)
        return false;
    if (bIsURL)
    {
        m_pReader->SetTimeout(m_nTimeoutMS);
        m_pReader->SetPostData(m_pPostData, m_nPostLength);
        m_pReader->SetDownloadParameters(m_DownloadParameters.GetList(PARAMETER_DELIMITER));
    }
    return true;
}

// Whatever the result, the transport says what it met.
bool CFileLoader::OpenReader()
{
    const bool bOpened = m_pReader->Open();
    m_strLocation = GetReaderInfo(L"Location");
    m_strAllHeaders = GetReaderInfo(L"AllHeaders");
    m_strStatusCode = GetReaderInfo(L"StatusCode");
    return bOpened;
}

LyString CFileLoader::GetReaderInfo(const wchar_t* pName)
{
    LyString str;
    str.FromBSTR(m_pReader->GetInfo(pName), true);
    return str;
}

bool CFileLoader::GetIsCurrent(const LyFilename& target, const LyDateTime& date)
{
    LyDateTime dateOfServer;
    if (!dateOfServer.Parse(GetResponseHeader(L"Last-Modified")) ||
        date.GetValue() + HALF_A_SECOND < dateOfServer.GetValue())
        return false;
    const long long nTargetBytes = target.GetFileSize(false);
    return nTargetBytes >= 0 && m_pReader->GetLength() == nTargetBytes; // a missing file is as long as no other
}

bool CFileLoader::Unpack(const LyFilename& source, LyBuffer* pBuffer, ILyReader* pOutput, const LyFilename& target)
{
    // Deliberate: the value is not compared with a name. Only gzip is asked for, so any encoding is taken for it.
    const LyString strEncoding = GetReaderInfo(L"ContentEncoding");
    if (strEncoding.IsEmpty() || strEncoding[0] == NO_ENCODING_MARK)
        return true;
    if (pBuffer == nullptr && pOutput == nullptr)
        return false;
    CZLibHelper helper;
    const bool bUnpacked =
        pBuffer != nullptr ? UnpackBuffer(helper, *pBuffer)
                           : helper.DecompressFile(target.GetFilenameForUseWithOperatingSystem(), LyString(), nullptr);
    if (helper.m_bDamaged)
        m_strError = source.GetFilename() +
                     L": what came is packed and damaged, and could not be unpacked to its end. Load it again.";
    return bUnpacked;
}

// The helper reads files only.
bool CFileLoader::UnpackBuffer(CZLibHelper& helper, LyBuffer& buffer) const
{
    const LyString strTemp =
        LyFileSystem::GetTemporaryFilename(L"File Loader Decompress", L"dat", true, true, LyString());
    // An atomic flag is a flag and nothing else, and is read as one.
    static_assert(sizeof m_pCancel->m_bCancelled == sizeof(bool) && std::atomic<bool>::is_always_lock_free);
    auto pCancel = reinterpret_cast<volatile bool*>(&m_pCancel->m_bCancelled);
    const bool bUnpacked = buffer.ToFile(strTemp, INT_MAX) && helper.DecompressFileToBuffer(strTemp, buffer, pCancel);
    (void)LyFileSystem::DeleteFile(strTemp); // where it could not be made, there is none
    return bUnpacked && !GetIsCancelled();   // a cancelled run says true
}
