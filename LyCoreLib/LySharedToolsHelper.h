// The sibling libraries of this one: finding, loading and unloading them, and the functions through which all other
// code reaches their services.
//
// Errors:    no path, no library, no entry and no service all look the same: null or false. Every caller copes, for
//            the system runs without any sibling. What a sibling throws while it is loaded or unloaded is swallowed,
//            and a sibling that throws while it is loaded counts as missing.
// Ownership: services belong to their library and go with it. What CreateOptionsHelperName, CreateZLib and
//            CreateGenericReader make belongs to the caller, who deletes it.
// Threads:   any. Loading and unloading run under one recursive lock, LySharedLibLock. Nobody may be inside a sibling
//            while another thread unloads it.
// Static construction: everything here works before and after the static objects of the library live.

#pragma once

#include "GlobalMacros.h"
#include "ILyTools.h"
#include "LyLock.h"
#include "LyString.h"
#include <atomic>

class IDiscManager; // THDriveInterface.h
class ILyReader;    // LyAudioInputBase.h

// One loaded library.
class LyLoadLibrary
{
public:
    constexpr LyLoadLibrary() = default;
    explicit LyLoadLibrary(const wchar_t* pPath); // loads and attaches; with null it loads later
    ~LyLoadLibrary() { Unload(); }
    LyLoadLibrary(const LyLoadLibrary&) = delete;
    LyLoadLibrary& operator=(const LyLoadLibrary&) = delete;

    // Lets go of what it held and loads the library of that path. With bCallAttach the library's "Attach" is called,
    // if it exports one, with the handle of this module. The flags are for other platforms and unused here.
    bool Load(const wchar_t* pPath, bool bCallAttach = true, unsigned int nFlags = 0);
    // Calls the library's "Detach", if it exports one, and lets go. Not loaded: nothing.
    void Unload();
    bool GetIsLoaded() const { return m_hLibrary != nullptr; }
    void* GetProcAddress(const wchar_t* pName) const; // null if not loaded, or if there is no such export
    void* GetProcAddress(const char* pName) const;

    void* m_hLibrary = nullptr; // of dlopen

private:
    bool CallAttach();
    void Close();
};

enum ELibraries : int
{
    LIBRARY_TOOLS = 0,
    LIBRARY_IMAGE = 1,
    LIBRARY_READER = 2,
    LIBRARY_DISC = 3,
    LIBRARY_PLAYER = 4,
    LIBRARY_WM_FACTORY = 5
};

// The root object of the image, player and television libraries, as far as it is used: told of the library's context
// value once it is loaded.
class ILySiblingRoot
{
public:
    virtual void Attach(long long nContext) = 0;

protected:
    ~ILySiblingRoot() = default;
};

// The handles of all siblings. A library has one such object, g_LySharedToolsHelper; the handles are its own, so that
// a plug-in that unloads its siblings leaves those of the host program alone.
//
// A context value, set before the library is loaded, is handed to the library when it comes and when it goes.
class CLySharedToolsHelper
{
public:
    constexpr CLySharedToolsHelper() = default;
    ~CLySharedToolsHelper() { UnloadLySharedLibs(false); }
    CLySharedToolsHelper(const CLySharedToolsHelper&) = delete;
    CLySharedToolsHelper& operator=(const CLySharedToolsHelper&) = delete;

    // Loads one of the members below and runs its entry. A path "X:\..." or "\\..." is a full one; any other, forward
    // slashes included, has the shared library path of the process in front. True if the library is there afterwards.
    // *pbNew, which may be null, becomes true if the library was there before, and false otherwise.
    bool LoadLySharedLib(LyString strPath, LyLoadLibrary* pLibrary, bool* pbNew);
    bool LoadLyToolsLib(LyString strDirectory); // an empty directory: the shared library path
    bool LoadLyReaderLib(LyString strDirectory);
    bool LoadLyDiscLib(LyString strDirectory);

    void UnloadLyReaderLib();
    void UnloadLyImageLib();
    void UnloadLyToolsLib();
    void UnloadLyPlayerLib();
    void UnloadLyDiscLib();
    void UnloadLyWMFactoryLib();
    void UnloadLyTelevisionLib();
    // All of them, the tools library last, since the others use it while they go. With bNotify it is told beforehand.
    void UnloadLySharedLibs(bool bNotify);

    static LyString GetLibraryFileName(ELibraries eLibrary); // empty for a value that is none

    LyLoadLibrary m_ReaderLibrary;
    long long m_nReaderContext = 0;
    LyLoadLibrary m_ImageLibrary;
    long long m_nImageContext = 0;
    ILySiblingRoot* m_pImage = nullptr;
    LyLoadLibrary m_ToolsLibrary;
    long long m_nToolsContext = 0;
    std::atomic<ILyTools*> m_pTools{nullptr}; // read without the lock by every accessor
    LyLoadLibrary m_PlayerLibrary;
    long long m_nPlayerContext = 0;
    ILySiblingRoot* m_pPlayer = nullptr;
    LyLoadLibrary m_DiscLibrary;
    long long m_nDiscContext = 0;
    LyLoadLibrary m_WMFactoryLibrary;
    LyLoadLibrary m_TelevisionLibrary;
    long long m_nTelevisionContext = 0;
    ILySiblingRoot* m_pTelevision = nullptr;

    static std::atomic<void*> s_pApplication; // the application object, told by its constructor; handed on, never used

private:
    bool LoadFromDirectory(LyString& strDirectory, ELibraries eLibrary, LyLoadLibrary* pLibrary);
    bool RunEntry(LyLoadLibrary* pLibrary);
    bool RunToolsEntry();
    static bool RunRootEntry(const LyLoadLibrary& library, const char* pEntry, long long nContext,
                             ILySiblingRoot*& pRoot);
    static bool CallWithContext(const LyLoadLibrary& library, const char* pEntry, long long nContext);
};

extern CLySharedToolsHelper& g_LySharedToolsHelper;

// Takes the lock around loading and unloading; whoever calls this unlocks it by hand. It is recursive.
LyLock* LySharedLibLock();

// The root object of the tools library; null if it is not loaded, and with bLoad could not be loaded either.
ILyTools* GetLyTools(bool bLoad);

// The services of the tools library. They never load it: without it they are null. With bCreate the service is asked
// to come up, if it has not done so yet.
IProductInfo* GetProductInfo(bool bCreate);
IStringHelper* GetStringHelper(bool bCreate);
ILogManager* GetLogManager(bool bCreate);
ILyMessageBox* GetLyMessageBoxHelper(bool bCreate);
IMainThreadMessageManager* GetMainThreadMessageManager(bool bCreate);
IDateTimeHelper* GetDateTimeHelper(bool bCreate);
IFileSystemManager* GetFileSystemManager(bool bCreate);
ISystemPowerManager* GetSystemPowerManager(bool bCreate);
void UpdateOptionsHelperTokenReplacer();

// These four load their library first.
IOptionsHelper* CreateOptionsHelperName(const wchar_t* pName, bool bCreate); // the caller's
IZLib* CreateZLib();                                                         // the caller's
ILyReader* CreateGenericReader(const wchar_t* pPath);                        // the caller's
IDiscManager* GetDiscManager(bool bCreate);

// Has the tools library load the description of the product of that name, the empty name being this product; not if
// there is one already, unless bAlways is set. The other arguments go to the service as they are. Always true.
bool LoadProductInfo(const LyString& strName, bool bFirst, bool bSecond, bool bAlways, const wchar_t* pText,
                     int nNumber);

// Runs a command line in the system's shell and waits for it. True for exit status 0.
bool SystemCommand(const LyString& strCommand);
