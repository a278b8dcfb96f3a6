// The tools library's root object, from which every service is reached.
//
// The library exports "GetLyToolsDLL", which takes LY_TOOLS_INTERFACE_VERSION and answers the root object.
// Ownership: the root and the services belong to the tools library. What the two factories make, CreateOptionsHelper
//            and CreateZLib, belongs to the caller.
// Errors:    a service that does not exist is null. The bool of a Get operation asks the service to create itself.
// Threads:   any, between Attach and Detach.

#pragma once

#include "GlobalMacros.h"

class IDateTimeHelper;
class IFileSystemManager;
class ILogManager;
class ILyMessageBox;
class IMainThreadMessageManager;
class IOptionsHelper;
class IProductInfo;
class IStringHelper;
class ISystemPowerManager;
class ITranslator;
class IZLib;

constexpr int LY_TOOLS_INTERFACE_VERSION = 200048;

// The order of the operations is their order in the virtual table: other libraries call them there. The numbers count
// from 1.
class ILyTools
{
public:
    virtual void Attach(long long nContext, HINSTANCE__* hApplication) = 0; // 1
    virtual void Detach(long long nContext, HINSTANCE__* hApplication) = 0; // 2
    virtual void Reserved3() {}
    virtual void NotifyUnload(void* pApplication) = 0; // 4: the application is about to let go of its libraries
    virtual void Reserved5() {}
    virtual IStringHelper* GetStringHelper(bool bCreate) = 0; // 6
    virtual void Reserved7() {}
    virtual ITranslator* GetTranslator(bool bCreate) = 0; // 8
    virtual void Reserved9() {}
    virtual IProductInfo* GetProductInfo(bool bCreate) = 0;         // 10
    virtual ILogManager* GetLogManager(bool bCreate) = 0;           // 11
    virtual ILyMessageBox* GetLyMessageBoxHelper(bool bCreate) = 0; // 12
    virtual void Reserved13() {}
    virtual void Reserved14() {}
    virtual void Reserved15() {}
    virtual IMainThreadMessageManager* GetMainThreadMessageManager(bool bCreate) = 0; // 16
    virtual IDateTimeHelper* GetDateTimeHelper(bool bCreate) = 0;                     // 17
    virtual void Reserved18() {}
    virtual IFileSystemManager* GetFileSystemManager(bool bCreate) = 0; // 19
    virtual void Reserved20() {}
    virtual ISystemPowerManager* GetSystemPowerManager(bool bCreate) = 0; // 21
    virtual void Reserved22() {}
    virtual IOptionsHelper* CreateOptionsHelper(const wchar_t* pName, bool bCreate) = 0; // 23
    virtual void Reserved24() {}
    virtual void Reserved25() {}
    virtual void Reserved26() {}
    virtual IZLib* CreateZLib() = 0; // 27
    virtual void Reserved28() {}
    virtual void Reserved29() {}
    virtual void Reserved30() {}
    virtual void UpdateOptionsHelperTokenReplacer() = 0; // 31

protected:
    ~ILyTools() = default;
};
