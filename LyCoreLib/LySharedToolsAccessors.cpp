#include "IProductInfo.h"
#include "LyForeignCall.h"
#include "LyPtr.h"
#include "LySharedToolsHelper.h"
#include "ZLibHelper.h"
#include <cstdlib>

namespace
{
// A service by its slot, null without the tools library. This is on the path of every log line: one load, one test.
template <class SERVICE>
SERVICE* GetService(SERVICE* (ILyTools::*pSlot)(bool), bool bCreate)
{
    ILyTools* pTools = GetLyTools(false);
    return pTools != nullptr ? (pTools->*pSlot)(bCreate) : nullptr;
}

// Loads a library and calls one of its entries, under the lock, so that nobody unloads it meanwhile. Null if there is
// no library or no entry, or if the entry throws.
template <class RESULT, class ARGUMENT>
RESULT* CallEntry(bool (CLySharedToolsHelper::*pLoad)(LyString), const LyLoadLibrary& library, const char* pEntryName,
                  ARGUMENT argument) LY_NO_THREAD_SAFETY_ANALYSIS
{
    LyLock* pLock = LySharedLibLock();
    RESULT* pResult = nullptr;
    if ((g_LySharedToolsHelper.*pLoad)(LyString()))
    {
        auto pEntry = reinterpret_cast<RESULT* (*)(ARGUMENT)>(library.GetProcAddress(pEntryName));
        if (pEntry != nullptr)
            (void)LyForeignCall([&] { pResult = pEntry(argument); });
    }
    pLock->Unlock();
    return pResult;
}
} // namespace

ILyTools* GetLyTools(bool bLoad)
{
    ILyTools* pTools = g_LySharedToolsHelper.m_pTools.load(std::memory_order_acquire);
    if (pTools != nullptr || !bLoad)
        return pTools;
    (void)g_LySharedToolsHelper.LoadLyToolsLib(LyString()); // the pointer says how it went
    return g_LySharedToolsHelper.m_pTools.load(std::memory_order_acquire);
}

IProductInfo* GetProductInfo(bool bCreate) { return GetService(&ILyTools::GetProductInfo, bCreate); }

IStringHelper* GetStringHelper(bool bCreate) { return GetService(&ILyTools::GetStringHelper, bCreate); }

ILogManager* GetLogManager(bool bCreate) { return GetService(&ILyTools::GetLogManager, bCreate); }

ILyMessageBox* GetLyMessageBoxHelper(bool bCreate) { return GetService(&ILyTools::GetLyMessageBoxHelper, bCreate); }

IMainThreadMessageManager* GetMainThreadMessageManager(bool bCreate)
{
    return GetService(&ILyTools::GetMainThreadMessageManager, bCreate);
}

IDateTimeHelper* GetDateTimeHelper(bool bCreate) { return GetService(&ILyTools::GetDateTimeHelper, bCreate); }

IFileSystemManager* GetFileSystemManager(bool bCreate) { return GetService(&ILyTools::GetFileSystemManager, bCreate); }

ISystemPowerManager* GetSystemPowerManager(bool bCreate)
{
    return GetService(&ILyTools::GetSystemPowerManager, bCreate);
}

void UpdateOptionsHelperTokenReplacer()
{
    if (ILyTools* pTools = GetLyTools(false))
        pTools->UpdateOptionsHelperTokenReplacer();
}

IOptionsHelper* CreateOptionsHelperName(const wchar_t* pName, bool bCreate)
{
    ILyTools* pTools = GetLyTools(true);
    IOptionsHelper* pOptions = nullptr;
    if (pTools != nullptr)
        (void)LyForeignCall([&] { pOptions = pTools->CreateOptionsHelper(pName, bCreate); });
    return pOptions;
}

IZLib* CreateZLib()
{
    ILyTools* pTools = GetLyTools(true);
    IZLib* pZLib = nullptr;
    if (pTools != nullptr)
        (void)LyForeignCall([&] { pZLib = pTools->CreateZLib(); });
    return pZLib;
}

ILyReader* CreateGenericReader(const wchar_t* pPath)
{
    return CallEntry<ILyReader>(&CLySharedToolsHelper::LoadLyReaderLib, g_LySharedToolsHelper.m_ReaderLibrary,
                                "CreateGenericReaderDLL", pPath);
}

IDiscManager* GetDiscManager(bool bCreate)
{
    return CallEntry<IDiscManager>(&CLySharedToolsHelper::LoadLyDiscLib, g_LySharedToolsHelper.m_DiscLibrary,
                                   "GetDiscManagerDLL", bCreate);
}

bool LoadProductInfo(const LyString& strName, bool bFirst, bool bSecond, bool bAlways, const wchar_t* pText,
                     int nNumber)
{
    IProductInfo* pProduct = GetProductInfo(false);
    if (pProduct != nullptr && !bAlways && pProduct->GetHasProduct())
        return true;
    (void)GetLyTools(true); // without it there is no service either
    pProduct = GetProductInfo(true);
    if (pProduct != nullptr)
        (void)pProduct->Load(strName, bFirst, bSecond, pText, nNumber);
    // Deliberate: true even if nothing was loaded. The system runs without a product's description.
    return true;
}

bool SystemCommand(const LyString& strCommand) { return std::system(LyStringUTF8(strCommand)) == 0; }
