// CFileLoader: reads a local file or a URL into a buffer, or on to a second reader, with progress, a limit on the
// length, a conditional download by date, and the unpacking of gzip.
//
// URLs and files go the same way, through a reader of the reader library, which hides the transport; only a local load
// with readers switched off does without the library. Unpacking needs the tools library.
//
// Units:    bytes. Local sources are read in chunks of 1 MiB, URLs in chunks of 64 KiB, so that a network read returns
//           often enough to show progress and to notice a cancel.
// Errors:   false, and an empty buffer; a cancelled load is a failed one. What a server answered stays in
//           m_strStatusCode and m_strLocation, and what the reader says of it in m_strError.
//           Packed data that are damaged are loaded up to the damage, with true, and m_strError tells of it.
// Lifetime: an outside cancel record, listeners and borrowed request data live as long as a load that uses them. An
//           outside record goes on pointing at the loader: whoever keeps it longer clears its callback.
// Threads:  one load at a time, on one thread; a second call is false at once. Cancel comes from any thread, and breaks
//           a read that blocks. Set-up belongs to the thread that loads.

#pragma once

#include "ILyMessageBox.h"
#include "ILyReader.h"
#include "LyBuffer.h"
#include "LyDateTime.h"
#include "LyFilename.h"
#include "LyLock.h"
#include "LyPtr.h"
#include "LyString.h"
#include "LyStringArray.h"
#include <atomic>

// Told of a change of a cancel record.
class ICancelHelperCallback
{
public:
    virtual bool CancelHelper_Cancel(bool bCancel) = 0;

protected:
    ~ICancelHelperCallback() = default;
};

// Whether something is to stop, and who is told of it.
struct FILE_LOADER_CANCEL
{
    std::atomic<bool> m_bCancelled{false};
    ICancelHelperCallback* m_pCallback = nullptr; // not owned; may be null
};

// Listens to the progress of a load. The order of the operations is their order in the virtual table.
class IFileLoaderProgress
{
public:
    virtual bool GetCancelled() = 0;               // asked after each chunk; true cancels the load
    virtual void SetProgress(float fProgress) = 0; // 0 to 1; 0 while the length is not known

protected:
    ~IFileLoaderProgress() = default;
};

// Judges the first bytes of a source: false ends the load.
class IFileLoaderChecker
{
public:
    virtual bool Check(const LyBuffer& buffer, int nParam) = 0;

protected:
    ~IFileLoaderChecker() = default;
};

class CZLibHelper;

class CFileLoader : public ILyWaitMessageCallback, public ICancelHelperCallback
{
public:
    CFileLoader() = default;
    CFileLoader(const CFileLoader&) = delete;
    CFileLoader& operator=(const CFileLoader&) = delete;

    // ---- Set-up (FileLoaderSetup.cpp): always true. It lasts from load to load, but for the download parameters and
    // the request data, which are good for one.
    bool SetMaximumLength(long long nBytes, bool bFail = false);
    bool SetProgressUI(bool bShow, int nDelayMS, bool bCancelButton, const LyString& strTitle, bool bShortText,
                       const LyString& strText);
    bool SetAllowReader(bool bAllowReader);
    // The parameters are pairs of name and value; null means none. To data belong "HTTPREQUEST_TYPE" "POST" and a
    // content type, where the list does not say otherwise.
    bool SetDownloadParameters(LyStringArray* pList, void* pData, int nBytes, bool bCopy);
    bool AddDownloadParametersRequestHeaders(const LyStringArray& aryHeaders, bool bGzip);
    bool SetDownloadParametersData(void* pData, int nBytes, bool bCopy); // without bCopy the data stays the caller's
    bool AddDownloadParameter(const LyString& strName, const LyString& strValue); // replaces the value of that name

    // ---- Loading (FileLoader.cpp, FileLoaderRead.cpp)
    bool LoadBuffer(const LyFilename& source, LyBuffer& buffer);

    // The one worker. Loads into the buffer, or, without one, into the output reader.
    //   bOutputOpened: in: the output is to be created; out: it was.
    //   date:          of the copy that the caller has in the file target, which is current if the server's is no
    //                  newer and as long: then the status code is "304", and the result false. 0.0: load anyway.
    bool LoadInternal(const LyFilename& source, LyBuffer* pBuffer, ILyReader* pOutput, LyFilename target,
                      bool& bOutputOpened, LyDateTime date);

    LyString GetResponseHeader(const LyString& strName) const; // of the last load; empty if there is none

    bool Cancel(bool bCancel); // always true
    bool LyWaitMessage_Cancel() override;
    bool CancelHelper_Cancel(bool bCancel) override;

    FILE_LOADER_CANCEL m_Cancel;               // cleared when a load begins
    FILE_LOADER_CANCEL* m_pCancel = &m_Cancel; // the one in force; an outside one that is set prevents a load
    IFileLoaderProgress* m_pProgress = nullptr;
    long long m_nMaximumLength = -1; // below 1: no limit
    bool m_bFailIfTooLong = false;   // instead of being cut
    long long m_nStartOffset = 0;    // first byte to load
    IFileLoaderChecker* m_pChecker = nullptr;
    int m_nCheckerParam = 0;
    int m_nCheckBytes = 0;        // the bytes after which the content is tested
    bool m_bCheckAtEnd = true;    // also test a source that is shorter
    LyString m_strRequiredText;   // must stand in the content, as 8 or 32 bit characters
    bool m_bShowProgress = false; // the six arguments of SetProgressUI
    int m_nProgressDelay = 4000;  // milliseconds until a window shows
    bool m_bProgressCancel = true;
    bool m_bShortProgressText = false;
    LyString m_strProgressTitle;
    LyString m_strProgressText;
    bool m_bAllowInternet = true; // without it a URL fails
    bool m_bAllowReader = true;   // without it a local load uses LyFile
    LyStringArray m_DownloadParameters;
    int m_nPostLength = 0;                // bytes of request data
    unsigned char* m_pPostData = nullptr; // in m_PostBuffer, or borrowed
    int m_nTimeoutMS = 20000;
    LyBuffer m_PostBuffer;
    LyString m_strLocation; // what the transport answered to the last load
    LyString m_strAllHeaders;
    LyString m_strStatusCode;
    LyLock m_Lock; // guards m_pReader, and changes of the cancel state; never held during a read
    LyPtr<ILyReader, ILyReader> m_pReader; // of the load that is running
    std::atomic<bool> m_bBusy{false};      // a load is running
    LyString m_strError;                   // what the last load met, in sentences for the user; empty if all went well

private:
    struct TRANSFER; // FileLoaderDetails.h

    void BeginLoad();
    ILyWaitMessage* ShowWaitMessage(bool bIsURL);
    void EndLoad(ILyWaitMessage* pWait);
    bool LoadInternalNoReader(const LyFilename& source, LyBuffer* pBuffer) const;
    bool LoadInternalReader(const LyFilename& source, LyBuffer* pBuffer, ILyReader* pOutput, const LyFilename& target,
                            bool& bOutputOpened, ILyWaitMessage* pWait, const LyDateTime& date);

    bool CreateReader(const LyFilename& source, bool bIsURL);
    bool OpenReader();
    bool GetIsCurrent(const LyFilename& target, const LyDateTime& date);
    bool PrepareTransfer(TRANSFER& transfer);
    bool RunTransfer(TRANSFER& transfer);
    int ReadChunk(TRANSFER& transfer, int nBytes);
    void ShowProgress(TRANSFER& transfer);
    void ReportProgress(TRANSFER& transfer);
    bool GetIsContentTestDue(const TRANSFER& transfer, bool bEnded) const;
    bool TestContent(const LyBuffer& buffer) const;
    bool Unpack(const LyFilename& source, LyBuffer* pBuffer, ILyReader* pOutput, const LyFilename& target);
    bool UnpackBuffer(CZLibHelper& helper, LyBuffer& buffer) const;

    bool GetIsCancelled() const { return m_pCancel->m_bCancelled.load(std::memory_order_relaxed); }
    LyString GetReaderInfo(const wchar_t* pName);
    static bool GetIsInternet(const LyFilename& filename); // a URL, and not of the file scheme
};
