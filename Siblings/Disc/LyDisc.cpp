#include "LyDisc.h"
#include "DiscManager.h"
#include "LyDllApp.h"
#include "UTF8.h"
#include <exception>

namespace
{
// The service needs no product to start, and leaves the locale of the process to its host.
class CLyDiscApp : public LyDllApp
{
public:
    bool InitInstance() override { return InitService(); }
};

CLyDiscApp theApp;
std::mutex s_Mutex;
std::unique_ptr<DiscManager> s_pManager; // made under s_Mutex, and then there as long as the library

DiscManager* GetManager(bool bCreate)
{
    const std::lock_guard lock(s_Mutex);
    if (s_pManager == nullptr && bCreate)
        s_pManager = std::make_unique<DiscManager>();
    return s_pManager.get();
}

wchar_t* Ask(std::string (DiscManager::*pQuestion)(const wchar_t*), const wchar_t* pPath)
{
    std::wstring strText;
    try
    {
        if (DiscManager* pManager = GetManager(false))
            strText = WidenUTF8((pManager->*pQuestion)(pPath));
    }
    catch (const std::exception&)
    {
        strText.clear();
    }
    return LyCom::SysAllocString(strText.c_str());
}

bool Tell(DISC_DRIVE_CALLBACK pCallback, void* pContext, const DRIVE_LISTING& listing)
{
    const std::wstring strPath = WidenUTF8(listing.m_strPath);
    const std::wstring strLetter = WidenUTF8(listing.m_strLetter);
    const std::wstring strVendor = WidenUTF8(listing.m_Description.m_strVendor);
    const std::wstring strModel = WidenUTF8(listing.m_Description.m_strModel);
    const std::wstring strRevision = WidenUTF8(listing.m_Description.m_strRevision);
    const std::wstring strReason = WidenUTF8(listing.m_strReason);
    const DISC_DRIVE_ENTRY entry = {
        strPath.c_str(),     strLetter.c_str(), strVendor.c_str(), strModel.c_str(),
        strRevision.c_str(), strReason.c_str(), listing.m_eState,  listing.m_Description.m_bImage};
    return pCallback(pContext, &entry);
}
} // namespace

LY_EXPORT void LyDiscInitialize(long long) {}

LY_EXPORT void LyDiscUninitialize(long long) {}

LY_EXPORT IDiscManager* GetDiscManagerDLL(bool bCreate)
{
    try
    {
        return GetManager(bCreate);
    }
    catch (const std::exception&)
    {
        return nullptr;
    }
}

LY_EXPORT wchar_t* GetDiscErrorText(const wchar_t* pPath) { return Ask(&DiscManager::GetErrorText, pPath); }

LY_EXPORT wchar_t* GetDiscWarnings(const wchar_t* pPath) { return Ask(&DiscManager::GetWarnings, pPath); }

LY_EXPORT int EnumerateDiscDrives(DISC_DRIVE_CALLBACK pCallback, void* pContext)
{
    int nTold = 0;
    if (pCallback == nullptr)
        return nTold;
    try
    {
        // No lock is held during the calls: the callback may use the service.
        for (const DRIVE_LISTING& listing : GetManager(true)->ListDrives())
        {
            ++nTold;
            if (!Tell(pCallback, pContext, listing))
                break;
        }
    }
    catch (const std::exception&)
    {
        return nTold;
    }
    return nTold;
}

LY_EXPORT int GetDiscEvidence(const wchar_t* pPath, unsigned long long nAfter, DISC_EVIDENCE* pRecords, int nRecords)
{
    try
    {
        DiscManager* pManager = GetManager(false);
        return pManager != nullptr ? pManager->ReadEvidence(pPath, nAfter, pRecords, nRecords) : 0;
    }
    catch (const std::exception&)
    {
        return 0;
    }
}
