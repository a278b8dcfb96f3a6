// What a test tells the fake tools library, and asks of it. A test finds this interface behind the library's export
// "GetFakeToolsControl"; FakeTools.h does that, and loads and unloads the library too.
//
// The fake serves every service of the tools library. All of them exist from the start, log and options are empty,
// no text has a translation, files are looked up on the disk, and message boxes are answered with 0.
// Ownership: texts that an operation gives belong to the fake and live until Reset or the library's end.
// Threads:   any.

#pragma once

enum FAKE_TOOLS_SERVICE : int
{
    FAKE_STRING_HELPER,
    FAKE_TRANSLATOR,
    FAKE_PRODUCT_INFO,
    FAKE_LOG_MANAGER,
    FAKE_MESSAGE_BOX,
    FAKE_MESSAGE_MANAGER,
    FAKE_DATE_TIME_HELPER,
    FAKE_FILE_SYSTEM_MANAGER,
    FAKE_POWER_MANAGER,
    FAKE_SERVICE_COUNT
};

enum FAKE_TOOLS_COUNTER : int
{
    FAKE_COUNT_LIBRARY_ATTACH, // the export
    FAKE_COUNT_LIBRARY_DETACH,
    FAKE_COUNT_ROOT_ATTACH, // the root object's operation
    FAKE_COUNT_NOTIFY_UNLOAD,
    FAKE_COUNT_TOKEN_REPLACER,
    FAKE_COUNT_OPTIONS_CREATED,
    FAKE_COUNT_OPTIONS_DESTROYED,
    FAKE_COUNT_OPTIONS_GET,
    FAKE_COUNT_OPTIONS_SET,
    FAKE_COUNT_OPTIONS_DELETE,
    FAKE_COUNT_ZLIB_CREATED,
    FAKE_COUNT_FIND_NO_CASE,
    FAKE_COUNT_COMPARE,
    FAKE_COUNT_TRANSLATE,
    FAKE_COUNT_PRODUCT_LOAD,
    FAKE_COUNT_FILE_EXISTS,
    FAKE_COUNT_DATE_PARSE,
    FAKE_COUNT_FILL_BUTTONS,
    FAKE_COUNT_FILL_BUTTON_TEXTS,
    FAKE_COUNT_BOX_SHOWN,
    FAKE_COUNT_WAIT_CREATED,
    FAKE_COUNT_WAIT_PROGRESS,
    FAKE_COUNT_WAIT_CLOSED,
    FAKE_COUNT_POWER_ACQUIRE,
    FAKE_COUNT_POWER_RELEASE,
    FAKE_COUNT_MESSAGE_REGISTER,
    FAKE_COUNT_MESSAGE_UNREGISTER,
    FAKE_COUNT_MESSAGE_POST,
    FAKE_COUNT_MESSAGE_PUMP,
    FAKE_COUNTER_COUNT
};

struct FAKE_LOG_LINE
{
    int nArea;
    const wchar_t* pName;
    const wchar_t* pText; // with its arguments put in
    bool bNarrow;         // it came as char*
};

// The arguments of the last call of an options object.
struct FAKE_OPTIONS_CALL
{
    const wchar_t* pStore;
    bool bCreate; // the store's
    const wchar_t* pKey;
    int nA;
    const wchar_t* pB; // null stays null
    int nC;
};

struct FAKE_BOX
{
    const wchar_t* pText;
    const wchar_t* pCaption;
    bool bModal;
    const wchar_t* pShowOnceKey;
    const wchar_t* pSecondKey;
    const wchar_t* pThirdKey;
    bool bRemember;
    const wchar_t* pFirstButton;
};

struct FAKE_WAIT_MESSAGE
{
    const wchar_t* pText; // of the last progress, or of the creation
    int nDelayMS;
    bool bCancelButton;
    int nPercent;
};

struct FAKE_PRODUCT_CALL
{
    const wchar_t* pName;
    bool bFirst;
    bool bSecond;
    const wchar_t* pText; // null stays null
    int nNumber;
};

class IFakeToolsControl
{
public:
    virtual void Reset() = 0; // as just loaded, counters included

    virtual int GetCount(FAKE_TOOLS_COUNTER eCounter) = 0;
    virtual void SetServiceThere(FAKE_TOOLS_SERVICE eService, bool bThere) = 0;
    virtual void SetServiceOnDemand(FAKE_TOOLS_SERVICE eService) = 0; // null until it is asked for with true

    // What the root object was given.
    virtual long long GetContext() = 0;
    virtual const void* GetApplicationHandle() = 0;
    virtual const void* GetNotifiedApplication() = 0;

    virtual int GetLogLineCount() = 0;
    virtual FAKE_LOG_LINE GetLogLine(int nIndex) = 0;

    virtual void SetOption(const wchar_t* pStore, const wchar_t* pKey, const wchar_t* pValue) = 0;
    virtual const wchar_t* GetOption(const wchar_t* pStore, const wchar_t* pKey) = 0; // null if there is none
    virtual FAKE_OPTIONS_CALL GetLastOptionsCall() = 0;

    virtual void SetTranslation(const wchar_t* pText, const wchar_t* pTranslation) = 0;

    virtual void SetBoxAnswer(int nAnswer) = 0;
    virtual FAKE_BOX GetLastBox() = 0;
    virtual void SetWaitCancelled(bool bCancelled) = 0; // what every wait message answers; true also calls back
    virtual FAKE_WAIT_MESSAGE GetLastWaitMessage() = 0;

    virtual void SetHasProduct(bool bHasProduct) = 0;
    virtual void SetAppdataDirectory(const wchar_t* pPath) = 0; // null: the service gives no text at all
    virtual FAKE_PRODUCT_CALL GetLastProductLoad() = 0;

    virtual int GetLastFileExistsFlags() = 0;
    virtual void SetFileExistsAlways(bool bExists) = 0; // instead of looking on the disk

    virtual void SetPowerEntry(long long nEntry) = 0; // what Acquire answers
    virtual const wchar_t* GetLastPowerName() = 0;
    virtual long long GetLastReleasedEntry() = 0; // both halves together

    virtual void SetDate(double fDate) = 0; // what every text parses to

protected:
    ~IFakeToolsControl() = default;
};
