// The root object of the tools library: makes the services as they are asked for, and ends them.
//
// Lifetime: a service comes at the first Get with true, the log manager already at Attach if the user wants a log. All
//           live until the last Detach, which waits for whatever they have running; attaches are counted. The root can
//           be attached again after that, and then begins anew.
// Errors:   a service that could not be made is null, as is the log manager while no area of the log is on, so that
//           whoever logs has nothing to do. Nothing is thrown.
// Threads:  any, between Attach and Detach. A service that is there costs one load of its pointer.

#pragma once

#include "DateTimeHelper.h"
#include "FileSystemManager.h"
#include "ILyTools.h"
#include "LogManager.h"
#include "MainThreadMessages.h"
#include "MessageBoxService.h"
#include "OptionStore.h"
#include "PowerManager.h"
#include "ProductInfo.h"
#include "StringHelper.h"
#include "Translator.h"
#include <atomic>
#include <memory>
#include <mutex>

class LyToolsRoot final : public ILyTools
{
public:
    LyToolsRoot() = default;
    ~LyToolsRoot() { ReleaseServices(); }
    LyToolsRoot(const LyToolsRoot&) = delete;
    LyToolsRoot& operator=(const LyToolsRoot&) = delete;

    void Attach(long long nContext, HINSTANCE__* hApplication) override;
    void Detach(long long nContext, HINSTANCE__* hApplication) override; // one too many does nothing
    void Reserved3() override {}
    // Lets go of the options file, so that nothing is held by a process that ends without a Detach. The services stay:
    // a plug-in that goes does not take them from the others.
    void NotifyUnload(void* pApplication) override;
    void Reserved5() override {}
    IStringHelper* GetStringHelper(bool bCreate) override;
    void Reserved7() override {}
    ITranslator* GetTranslator(bool bCreate) override;
    void Reserved9() override {}
    IProductInfo* GetProductInfo(bool bCreate) override;
    ILogManager* GetLogManager(bool bCreate) override;
    ILyMessageBox* GetLyMessageBoxHelper(bool bCreate) override;
    void Reserved13() override {}
    void Reserved14() override {}
    void Reserved15() override {}
    IMainThreadMessageManager* GetMainThreadMessageManager(bool bCreate) override;
    IDateTimeHelper* GetDateTimeHelper(bool bCreate) override;
    void Reserved18() override {}
    IFileSystemManager* GetFileSystemManager(bool bCreate) override;
    void Reserved20() override {}
    ISystemPowerManager* GetSystemPowerManager(bool bCreate) override;
    void Reserved22() override {}
    // Both answers of bCreate give a store, since one without options has nothing that could be made: it reads defaults
    // until something is set, and nothing is written before that.
    IOptionsHelper* CreateOptionsHelper(const wchar_t* pName, bool bCreate) override;
    void Reserved24() override {}
    void Reserved25() override {}
    void Reserved26() override {}
    IZLib* CreateZLib() override;
    void Reserved28() override {}
    void Reserved29() override {}
    void Reserved30() override {}
    // Deliberate: nothing. Values of options are given back as they were set; a value that happens to look like a token
    // for a path (a file name may hold any character) must not change on its way.
    void UpdateOptionsHelperTokenReplacer() override {}

    std::shared_ptr<OptionStore> GetOptionStore(); // the one that all stores of this library share

    // Ends all services, whatever the count of attaches says: the library goes.
    void ReleaseServices();

private:
    template <class SERVICE>
    struct SLOT
    {
        std::atomic<SERVICE*> m_pReady{nullptr}; // for readers without the lock
        std::unique_ptr<SERVICE> m_pOwned;       // under m_Mutex
    };

    template <class SERVICE>
    SERVICE* Get(SLOT<SERVICE>& slot, bool bCreate, void (LyToolsRoot::*pPrepare)(SERVICE&) = nullptr);
    template <class SERVICE>
    void Release(SLOT<SERVICE>& slot);
    void PrepareMessageBox(MessageBoxService& service);

    std::recursive_mutex m_Mutex; // guards what follows; a service that is being made may ask for another
    int m_nAttachCount = 0;
    std::shared_ptr<OptionStore> m_pOptionStore;
    SLOT<StringHelper> m_StringHelper;
    SLOT<Translator> m_Translator;
    SLOT<ProductInfo> m_ProductInfo;
    SLOT<LogManager> m_LogManager;
    SLOT<MessageBoxService> m_MessageBox;
    SLOT<MainThreadMessages> m_MainThreadMessages;
    SLOT<DateTimeHelper> m_DateTimeHelper;
    SLOT<FileSystemManager> m_FileSystemManager;
    SLOT<PowerManager> m_PowerManager;
};
