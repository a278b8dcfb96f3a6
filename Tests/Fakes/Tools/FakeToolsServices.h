// The services of the fake tools library, one object each. Null services are the root object's business.

#pragma once

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

IStringHelper* GetFakeStringHelper();
ITranslator* GetFakeTranslator();
IProductInfo* GetFakeProductInfo();
ILogManager* GetFakeLogManager();
ILyMessageBox* GetFakeMessageBox();
IMainThreadMessageManager* GetFakeMessageManager();
IDateTimeHelper* GetFakeDateTimeHelper();
IFileSystemManager* GetFakeFileSystemManager();
ISystemPowerManager* GetFakePowerManager();
IOptionsHelper* CreateFakeOptions(const wchar_t* pName, bool bCreate);
IZLib* CreateFakeZLib();
