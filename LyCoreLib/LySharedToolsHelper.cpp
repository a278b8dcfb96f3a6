#include "LySharedToolsHelper.h"
#include "LyFilename.h"
#include "LyForeignCall.h"
#include "ProcessInfo.h"
#include <new>

namespace
{
// Holds the lock around loading and unloading for the length of a scope.
class SharedLibScope
{
public:
    SharedLibScope() LY_NO_THREAD_SAFETY_ANALYSIS : m_pLock(LySharedLibLock()) {}
    ~SharedLibScope() LY_NO_THREAD_SAFETY_ANALYSIS { m_pLock->Unlock(); }
    SharedLibScope(const SharedLibScope&) = delete;
    SharedLibScope& operator=(const SharedLibScope&) = delete;

private:
    LyLock* m_pLock;
};

// The global helper is there before the first static constructor and after the last static destructor, since any of
// them may ask for a service. So nothing constructs or destroys it: only its libraries are unloaded, in its place.
union HELPER_STORAGE
{
    constexpr HELPER_STORAGE() : m_Helper() {}
    ~HELPER_STORAGE() {}

    CLySharedToolsHelper m_Helper;
};
constinit HELPER_STORAGE s_Storage;

struct UNLOAD_AT_LIBRARY_END
{
    ~UNLOAD_AT_LIBRARY_END() { s_Storage.m_Helper.UnloadLySharedLibs(false); }
} s_UnloadAtLibraryEnd;

// A full path of the backslash form: "X:\..." or "\\...".
bool GetIsFullPath(const LyString& strPath)
{
    if (strPath.GetLength() < 2)
        return false;
    return (strPath[1] == L':' && strPath[2] == L'\\') || (strPath[0] == L'\\' && strPath[1] == L'\\');
}

const wchar_t* const s_aryLibraryFileNames[] = {
    L"libLyTools.dylib", // in the order of ELibraries
    L"libLyImage.dylib", L"libLyReader.dylib", L"libLyDisc.dylib", L"libLyPlayer.dylib", L"libLyWMFactory.dylib",
};
constexpr int LIBRARY_COUNT = static_cast<int>(sizeof s_aryLibraryFileNames / sizeof s_aryLibraryFileNames[0]);
} // namespace

constinit CLySharedToolsHelper& g_LySharedToolsHelper = s_Storage.m_Helper;
constinit std::atomic<void*> CLySharedToolsHelper::s_pApplication{nullptr};

LyLock* LySharedLibLock() LY_NO_THREAD_SAFETY_ANALYSIS
{
    // Never destroyed: static destructors still unload under it.
    alignas(LyLock) static unsigned char s_aryStorage[sizeof(LyLock)];
    static LyLock* const s_pLock = new (s_aryStorage) LyLock;
    s_pLock->Lock();
    return s_pLock;
}

LyString CLySharedToolsHelper::GetLibraryFileName(ELibraries eLibrary)
{
    return eLibrary >= 0 && eLibrary < LIBRARY_COUNT ? s_aryLibraryFileNames[eLibrary] : L"";
}

bool CLySharedToolsHelper::LoadLySharedLib(LyString strPath, LyLoadLibrary* pLibrary, bool* pbNew)
{
    SharedLibScope lock;
    bool bWasLoaded = pLibrary != nullptr && pLibrary->GetIsLoaded();
    // Deliberate: the flag is true for a library that was there before; its name stays as its callers know it.
    if (pbNew != nullptr)
        *pbNew = bWasLoaded;
    if (pLibrary == nullptr || bWasLoaded)
        return bWasLoaded;

    // Deliberate: only the backslash forms count as full paths, so the prefix also goes before "/...".
    const CProcessInfo* pProcess = GetIsFullPath(strPath) ? nullptr : GetProcessInfo(true);
    if (pProcess != nullptr)
        strPath = pProcess->GetSharedLibraryPath() + strPath;
    if (pLibrary->Load(strPath, true, 0) && !RunEntry(pLibrary))
        pLibrary->Unload();
    return pLibrary->GetIsLoaded();
}

bool CLySharedToolsHelper::LoadFromDirectory(LyString& strDirectory, ELibraries eLibrary, LyLoadLibrary* pLibrary)
{
    SharedLibScope lock;
    if (pLibrary->GetIsLoaded())
        return true;
    LyFilename::FixDirectoryPath(strDirectory, L'/');
    return LoadLySharedLib(strDirectory + GetLibraryFileName(eLibrary), pLibrary, nullptr);
}

bool CLySharedToolsHelper::LoadLyToolsLib(LyString strDirectory)
{
    return LoadFromDirectory(strDirectory, LIBRARY_TOOLS, &m_ToolsLibrary);
}

bool CLySharedToolsHelper::LoadLyReaderLib(LyString strDirectory)
{
    return LoadFromDirectory(strDirectory, LIBRARY_READER, &m_ReaderLibrary);
}

bool CLySharedToolsHelper::LoadLyDiscLib(LyString strDirectory)
{
    return LoadFromDirectory(strDirectory, LIBRARY_DISC, &m_DiscLibrary);
}

// What a library has to answer once it is loaded. False: it is none of ours and must go again.
bool CLySharedToolsHelper::RunEntry(LyLoadLibrary* pLibrary)
{
    if (pLibrary == &m_ToolsLibrary)
        return RunToolsEntry();
    if (pLibrary == &m_ImageLibrary)
        return RunRootEntry(m_ImageLibrary, "GetLyImageAppDLL", m_nImageContext, m_pImage);
    if (pLibrary == &m_PlayerLibrary)
        return RunRootEntry(m_PlayerLibrary, "GetLyPlayerDLL", m_nPlayerContext, m_pPlayer);
    if (pLibrary == &m_TelevisionLibrary)
        return RunRootEntry(m_TelevisionLibrary, "GetLyTelevisionDLL", m_nTelevisionContext, m_pTelevision);
    if (pLibrary == &m_ReaderLibrary)
        return CallWithContext(m_ReaderLibrary, "LyReaderInitialize", m_nReaderContext);
    if (pLibrary == &m_DiscLibrary)
        return CallWithContext(m_DiscLibrary, "LyDiscInitialize", m_nDiscContext);
    return true;
}

bool CLySharedToolsHelper::RunToolsEntry()
{
    auto pEntry = reinterpret_cast<ILyTools* (*)(int)>(m_ToolsLibrary.GetProcAddress("GetLyToolsDLL"));
    ILyTools* pTools = nullptr;
    bool bAttached = pEntry != nullptr &&
                     LyForeignCall(
                         [&]
                         {
                             pTools = pEntry(LY_TOOLS_INTERFACE_VERSION);
                             if (pTools != nullptr)
                                 pTools->Attach(m_nToolsContext, CProcessInfo::GetDynamicLibraryInstanceHandle());
                         });
    if (!bAttached || pTools == nullptr)
        return false;
    m_pTools.store(pTools, std::memory_order_release);
    return true;
}

bool CLySharedToolsHelper::RunRootEntry(const LyLoadLibrary& library, const char* pEntryName, long long nContext,
                                        ILySiblingRoot*& pRoot)
{
    auto pEntry = reinterpret_cast<ILySiblingRoot* (*)()>(library.GetProcAddress(pEntryName));
    ILySiblingRoot* pNewRoot = nullptr;
    bool bAttached = pEntry != nullptr && LyForeignCall(
                                              [&]
                                              {
                                                  pNewRoot = pEntry();
                                                  if (pNewRoot != nullptr)
                                                      pNewRoot->Attach(nContext);
                                              });
    pRoot = bAttached ? pNewRoot : nullptr;
    return pRoot != nullptr;
}

// Calls an entry that a library need not have. False only if it threw.
bool CLySharedToolsHelper::CallWithContext(const LyLoadLibrary& library, const char* pEntryName, long long nContext)
{
    auto pEntry = reinterpret_cast<void (*)(long long)>(library.GetProcAddress(pEntryName));
    return pEntry == nullptr || LyForeignCall([&] { pEntry(nContext); });
}

void CLySharedToolsHelper::UnloadLyReaderLib()
{
    SharedLibScope lock;
    m_ReaderLibrary.Unload();
}

void CLySharedToolsHelper::UnloadLyImageLib()
{
    SharedLibScope lock;
    m_pImage = nullptr;
    m_ImageLibrary.Unload();
}

void CLySharedToolsHelper::UnloadLyToolsLib()
{
    SharedLibScope lock;
    if (ILyTools* pTools = m_pTools.load(std::memory_order_relaxed))
    {
        (void)LyForeignCall([&] { pTools->Detach(m_nToolsContext, CProcessInfo::GetDynamicLibraryInstanceHandle()); });
        m_pTools.store(nullptr, std::memory_order_release);
    }
    m_ToolsLibrary.Unload();
}

void CLySharedToolsHelper::UnloadLyPlayerLib()
{
    SharedLibScope lock;
    m_pPlayer = nullptr;
    m_PlayerLibrary.Unload();
}

void CLySharedToolsHelper::UnloadLyDiscLib()
{
    SharedLibScope lock;
    (void)CallWithContext(m_DiscLibrary, "LyDiscUninitialize", m_nDiscContext);
    m_DiscLibrary.Unload();
}

void CLySharedToolsHelper::UnloadLyWMFactoryLib()
{
    SharedLibScope lock;
    m_WMFactoryLibrary.Unload();
}

void CLySharedToolsHelper::UnloadLyTelevisionLib()
{
    SharedLibScope lock;
    m_pTelevision = nullptr;
    m_TelevisionLibrary.Unload();
}

void CLySharedToolsHelper::UnloadLySharedLibs(bool bNotify)
{
    ILyTools* pTools = m_pTools.load(std::memory_order_acquire);
    if (bNotify && pTools != nullptr)
        (void)LyForeignCall([&] { pTools->NotifyUnload(s_pApplication); });
    UnloadLyDiscLib();
    UnloadLyPlayerLib();
    UnloadLyTelevisionLib();
    UnloadLyWMFactoryLib();
    UnloadLyImageLib();
    UnloadLyReaderLib();
    UnloadLyToolsLib();
}
