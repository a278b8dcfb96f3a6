// Where the host program lies, for every library in its process alike: the paths stand in a block of named shared
// memory that each library of the process maps.
//
// Paths:   folders, with a "/" at the end. A path beyond 255 characters is cut there.
// Errors:  without the block every path is empty, and setting one does nothing.
// Threads: GetProcessInfo may be called from any thread, also from static constructors and destructors. The block is
//          written when the process starts and read afterwards, with no lock.

#pragma once

#include "GlobalMacros.h"
#include "LyFile.h"
#include "LyLock.h"
#include "LyPtr.h"
#include "LyString.h"
#include <atomic>
#include <cstddef>

// The shared block. Libraries of different builds map it, so its layout never changes.
struct CProcessInfoData
{
    static constexpr int PATH_CHARS = 256; // of a path, with its terminator

    int m_nFilled; // 0: just created; 1: filled
    unsigned char m_aryReserved1[1028];
    wchar_t m_aryInstallPath[PATH_CHARS + 1]; // one character of each field is spare
    wchar_t m_aryCustomizationFilesPath[PATH_CHARS + 1];
    wchar_t m_arySharedLibraryPath[PATH_CHARS + 1];
    wchar_t m_aryApplicationDataPath[PATH_CHARS + 1];
    unsigned char m_aryReserved2[8];
    unsigned long long m_nThreadId; // of the thread that filled the block
    unsigned char m_aryReserved3[8];
    // A bool. It may come from another process's memory, where any byte can stand, and is therefore not typed as one.
    unsigned char m_bApplicationDataUnderInstallPath;
    unsigned char m_aryReserved4[1047];
    int m_nMinusOne; // -1
    unsigned char m_aryReserved5[4];
    int m_nNinetyNine; // 99
    unsigned char m_aryReserved6[4];
};
static_assert(offsetof(CProcessInfoData, m_aryReserved1) == 4);
static_assert(offsetof(CProcessInfoData, m_aryInstallPath) == 1032);
static_assert(offsetof(CProcessInfoData, m_aryCustomizationFilesPath) == 2060);
static_assert(offsetof(CProcessInfoData, m_arySharedLibraryPath) == 3088);
static_assert(offsetof(CProcessInfoData, m_aryApplicationDataPath) == 4116);
static_assert(offsetof(CProcessInfoData, m_aryReserved2) == 5144);
static_assert(offsetof(CProcessInfoData, m_nThreadId) == 5152);
static_assert(offsetof(CProcessInfoData, m_aryReserved3) == 5160);
static_assert(offsetof(CProcessInfoData, m_bApplicationDataUnderInstallPath) == 5168);
static_assert(offsetof(CProcessInfoData, m_aryReserved4) == 5169);
static_assert(offsetof(CProcessInfoData, m_nMinusOne) == 6216);
static_assert(offsetof(CProcessInfoData, m_nNinetyNine) == 6224);
static_assert(sizeof(CProcessInfoData) == 6232);

// Copies a text into a field of nChars characters, cut to fit, with a terminator; what is left of the field is zeroed.
void CopyStringToFixedBuffer(wchar_t* pBuffer, const wchar_t* pText, int nChars = CProcessInfoData::PATH_CHARS);

// A structure in shared memory of its size. T has no constructor and no pointers; a new block is zero.
template <class T>
class LySharedStructure : public LySharedMemory
{
public:
    LySharedStructure() = default; // no block until Allocate
    explicit LySharedStructure(const wchar_t* pName) { Allocate(pName, static_cast<int>(sizeof(T))); }
    T* Get() const { return static_cast<T*>(GetAddress()); } // null if there is no memory
};

class CProcessInfo
{
public:
    CProcessInfo();
    CProcessInfo(const CProcessInfo&) = delete;
    CProcessInfo& operator=(const CProcessInfo&) = delete;

    LyString GetInstallPath() const;
    LyString GetCustomizationFilesPath() const;
    LyString GetSharedLibraryPath() const;
    LyString GetApplicationDataPath() const;
    static HINSTANCE__* GetDynamicLibraryInstanceHandle(); // null until the first attach

    // With bSetDerivedPaths the paths of the customization files and of the shared libraries follow. With
    // bOnlyWhenReady nothing happens while the object is still being made.
    void SetInstallPath(LyString strPath, bool bSetDerivedPaths = true, bool bOnlyWhenReady = false);
    void SetCustomizationFilesPath(LyString strPath);
    void SetSharedLibraryPath(LyString strPath);
    void SetApplicationDataPath(LyString strPath);
    void SetApplicationDataPathToDefault();
    void GetDefaultProcessInformation(); // fills the block afresh, from where the host program's file lies

    // The folder of the outermost application, if the given one belongs to an application inside another's bundle.
    static LyString GetOutermostBundlePath(LyString strPath);

    LyPtr<LySharedStructure<CProcessInfoData>, LySharedStructure<CProcessInfoData>> m_pData;
    bool m_bReady = false; // the construction has ended

    static std::atomic<HINSTANCE__*> s_hInstance; // of this module, set by the first attach

private:
    void SetDerivedPaths(const LyString& strInstallPath);
    CProcessInfoData* GetData() const { return m_pData ? m_pData->Get() : nullptr; }
};

// Holds the one T of a library: a lock, and a pointer that is filled on first demand. N tells apart several of one T.
template <class T, int N>
class LyGlobalWrapper
{
public:
    LyGlobalWrapper() = default;
    ~LyGlobalWrapper() { Close(); }
    LyGlobalWrapper(const LyGlobalWrapper&) = delete;
    LyGlobalWrapper& operator=(const LyGlobalWrapper&) = delete;

    T* Get(bool bCreate)
    {
        T* pObject = m_pObject.load(std::memory_order_acquire);
        if (pObject != nullptr || !bCreate)
            return pObject;
        LySingleLock lock(&m_Lock);
        pObject = m_pObject.load(std::memory_order_relaxed);
        if (pObject == nullptr && !m_bClosed)
        {
            pObject = new T;
            m_pObject.store(pObject, std::memory_order_release);
        }
        return pObject;
    }

    // Destroys the object for good: from now on there is none.
    void Close()
    {
        LySingleLock lock(&m_Lock);
        m_bClosed = true;
        delete m_pObject.exchange(nullptr, std::memory_order_acq_rel);
    }

    LyLock m_Lock;
    std::atomic<T*> m_pObject{nullptr};

private:
    bool m_bClosed = false;
};

// The process information of this library; null if there is none yet and it is not to be created, and after the
// library's static objects are gone.
CProcessInfo* GetProcessInfo(bool bCreate);
