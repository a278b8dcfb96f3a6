#include "LyToolsRoot.h"
#include "LyDllString.h"
#include "LyString.h"
#include "OptionsService.h"
#include "ZLibService.h"
#include <new>

template <class SERVICE>
SERVICE* LyToolsRoot::Get(SLOT<SERVICE>& slot, bool bCreate, void (LyToolsRoot::*pPrepare)(SERVICE&))
{
    SERVICE* pService = slot.m_pReady.load(std::memory_order_acquire);
    if (pService != nullptr || !bCreate)
        return pService;
    try
    {
        const std::lock_guard lock(m_Mutex);
        if (slot.m_pOwned == nullptr)
        {
            auto pNew = std::make_unique<SERVICE>();
            if (pPrepare != nullptr)
                (this->*pPrepare)(*pNew);
            slot.m_pOwned = std::move(pNew);
            slot.m_pReady.store(slot.m_pOwned.get(), std::memory_order_release);
        }
        return slot.m_pOwned.get();
    }
    catch (...)
    {
        return nullptr; // the system runs without any of them
    }
}

template <class SERVICE>
void LyToolsRoot::Release(SLOT<SERVICE>& slot)
{
    std::unique_ptr<SERVICE> pOld; // ends without the lock, since its threads may still ask for another service
    const std::lock_guard lock(m_Mutex);
    slot.m_pReady.store(nullptr, std::memory_order_release);
    pOld = std::move(slot.m_pOwned);
}

void LyToolsRoot::Attach(long long, HINSTANCE__*)
{
    const std::lock_guard lock(m_Mutex);
    m_nAttachCount++;
    if (LogManager::IsWanted())
        (void)GetLogManager(true); // those who log ask only for one that is there
}

void LyToolsRoot::Detach(long long, HINSTANCE__*)
{
    {
        const std::lock_guard lock(m_Mutex);
        if (m_nAttachCount == 0 || --m_nAttachCount != 0)
            return;
    }
    ReleaseServices();
}

void LyToolsRoot::ReleaseServices()
{
    // Those that use others go before them, and the log last of the services, since all may write to it.
    Release(m_MessageBox);
    Release(m_PowerManager);
    Release(m_MainThreadMessages);
    Release(m_FileSystemManager);
    Release(m_DateTimeHelper);
    Release(m_ProductInfo);
    Release(m_Translator);
    Release(m_StringHelper);
    Release(m_LogManager);
    // An options object that somebody still holds keeps the store, but not the file.
    const std::lock_guard lock(m_Mutex);
    if (m_pOptionStore != nullptr)
        m_pOptionStore->Close();
    m_pOptionStore.reset();
}

void LyToolsRoot::NotifyUnload(void*)
{
    const std::lock_guard lock(m_Mutex);
    if (m_pOptionStore != nullptr)
        m_pOptionStore->Close();
}

IStringHelper* LyToolsRoot::GetStringHelper(bool bCreate) { return Get(m_StringHelper, bCreate); }

ITranslator* LyToolsRoot::GetTranslator(bool bCreate) { return Get(m_Translator, bCreate); }

IProductInfo* LyToolsRoot::GetProductInfo(bool bCreate) { return Get(m_ProductInfo, bCreate); }

ILogManager* LyToolsRoot::GetLogManager(bool bCreate) { return Get(m_LogManager, bCreate); }

ILyMessageBox* LyToolsRoot::GetLyMessageBoxHelper(bool bCreate)
{
    return Get(m_MessageBox, bCreate, &LyToolsRoot::PrepareMessageBox);
}

IMainThreadMessageManager* LyToolsRoot::GetMainThreadMessageManager(bool bCreate)
{
    return Get(m_MainThreadMessages, bCreate);
}

IDateTimeHelper* LyToolsRoot::GetDateTimeHelper(bool bCreate) { return Get(m_DateTimeHelper, bCreate); }

IFileSystemManager* LyToolsRoot::GetFileSystemManager(bool bCreate) { return Get(m_FileSystemManager, bCreate); }

ISystemPowerManager* LyToolsRoot::GetSystemPowerManager(bool bCreate) { return Get(m_PowerManager, bCreate); }

IOptionsHelper* LyToolsRoot::CreateOptionsHelper(const wchar_t* pName, bool)
{
    try
    {
        return new OptionsService(GetOptionStore(), pName);
    }
    catch (...)
    {
        return nullptr;
    }
}

IZLib* LyToolsRoot::CreateZLib() { return new (std::nothrow) ZLibService; }

std::shared_ptr<OptionStore> LyToolsRoot::GetOptionStore()
{
    const std::lock_guard lock(m_Mutex);
    if (m_pOptionStore == nullptr)
        m_pOptionStore = std::make_shared<OptionStore>();
    return m_pOptionStore;
}

// What a message box remembers stands among the options, and its words come from the translator.
void LyToolsRoot::PrepareMessageBox(MessageBoxService& service)
{
    const std::shared_ptr<OptionStore> pStore = GetOptionStore();
    service.SetMemory([pStore](const wchar_t* pKey)
                      { return pStore->Get(MessageBoxService::MEMORY_STORE, pKey).value_or(std::wstring()); },
                      [pStore](const wchar_t* pKey, const wchar_t* pValue)
                      { (void)pStore->Set(MessageBoxService::MEMORY_STORE, pKey, pValue); });
    service.SetTranslation(
        [this](const wchar_t* pText)
        {
            LyString strText(pText);
            if (ITranslator* pTranslator = GetTranslator(true))
                pTranslator->Translate(LyDllString(strText));
            return std::wstring(strText);
        });
}
