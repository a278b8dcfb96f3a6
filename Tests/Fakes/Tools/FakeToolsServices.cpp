#include "FakeToolsServices.h"
#include "FakeToolsState.h"
#include "IDateTimeHelper.h"
#include "IFileSystemManager.h"
#include "IProductInfo.h"
#include "IStringHelper.h"
#include "ISystemPowerManager.h"
#include "ITranslator.h"
#include "LogHelper.h"
#include "LyString.h"
#include "OptionsHelper.h"
#include "ZLibHelper.h"
#include <cwchar>
#include <cwctype>
#include <sys/stat.h>

namespace
{
std::wstring Fold(const wchar_t* pText)
{
    std::wstring str(pText);
    for (wchar_t& c : str)
        c = static_cast<wchar_t>(towlower(static_cast<wint_t>(c)));
    return str;
}

class FakeStringHelper final : public IStringHelper
{
public:
    int FindNoCase(const wchar_t* pText, const wchar_t* pPattern, int nStart) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_FIND_NO_CASE);
        size_t nPosition = Fold(pText).find(Fold(pPattern), nStart > 0 ? static_cast<size_t>(nStart) : 0);
        return nPosition == std::wstring::npos ? -1 : static_cast<int>(nPosition);
    }
    int Compare(const wchar_t* pFirst, const wchar_t* pSecond, int nFlags) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_COMPARE);
        bool bFold = (nFlags & LY_STRING_COMPARE_IGNORE_CASE) != 0;
        return bFold ? Fold(pFirst).compare(Fold(pSecond)) : wcscmp(pFirst, pSecond);
    }
};

class FakeTranslator final : public ITranslator
{
public:
    void Reserved1() override {}
    void Reserved2() override {}
    void Translate(const ILyDllString& strText) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_TRANSLATE);
        auto it = s_FakeState.translations.find(strText.Get());
        if (it != s_FakeState.translations.end())
            strText.Set(it->second.c_str(), -1);
    }
};

class FakeProductInfo final : public IProductInfo
{
public:
    bool GetHasProduct() override { return s_FakeState.bHasProduct; }
    bool Load(const wchar_t* pName, bool bFirst, bool bSecond, const wchar_t* pText, int nNumber) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_PRODUCT_LOAD);
        s_FakeState.productName.Set(pName);
        s_FakeState.bProductFirst = bFirst;
        s_FakeState.bProductSecond = bSecond;
        s_FakeState.productText.Set(pText);
        s_FakeState.nProductNumber = nNumber;
        s_FakeState.bHasProduct = true;
        return true;
    }
    LyXString GetAppdataDirectory() override
    {
        const wchar_t* pPath = s_FakeState.appdataDirectory.Get();
        return {pPath != nullptr ? LyCom::SysAllocString(pPath) : nullptr};
    }
};

class FakeLogManager final : public ILogManager
{
public:
    void Reserved1() override {}
    void Reserved2() override {}
    void Log(int nArea, const LyString& strName, const wchar_t* pFormat, LyString::CFormatArgument** ppArgs,
             int nArgs) override
    {
        Write(nArea, strName, pFormat, ppArgs, nArgs, false);
    }
    void Log(int nArea, const LyString& strName, const char* pText, LyString::CFormatArgument** ppArgs,
             int nArgs) override
    {
        Write(nArea, strName, LyString().FromANSI(pText), ppArgs, nArgs, true);
    }

private:
    static void Write(int nArea, const wchar_t* pName, const wchar_t* pFormat, LyString::CFormatArgument** ppArgs,
                      int nArgs, bool bNarrow)
    {
        LyString strText(pFormat);
        if (nArgs > 0)
            strText.FormatV(pFormat, ppArgs, nArgs);
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.aryLog.push_back({nArea, pName, static_cast<const wchar_t*>(strText), bNarrow});
    }
};

class FakeDateTimeHelper final : public IDateTimeHelper
{
public:
    double Parse(const wchar_t*, bool) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_DATE_PARSE);
        return s_FakeState.fDate;
    }
};

class FakeFileSystemManager final : public IFileSystemManager
{
public:
    bool GetFileExists(const wchar_t* pName, int nFlags) override
    {
        LyStringUTF8 name{LyString(pName)};
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_FILE_EXISTS);
        s_FakeState.nFileExistsFlags = nFlags;
        struct stat status;
        return s_FakeState.bFileExistsAlways || (stat(name, &status) == 0 && !S_ISDIR(status.st_mode));
    }
};

class FakePowerManager final : public ISystemPowerManager
{
public:
    long long Acquire(const wchar_t* pName, int, int) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_POWER_ACQUIRE);
        s_FakeState.powerName.Set(pName);
        return s_FakeState.nPowerEntry;
    }
    void Release(int nFirstHalf, int nSecondHalf) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_POWER_RELEASE);
        s_FakeState.nReleasedEntry =
            (static_cast<long long>(nSecondHalf) << 32) | static_cast<unsigned int>(nFirstHalf);
    }
};

class FakeOptions final : public IOptionsHelper
{
public:
    FakeOptions(const wchar_t* pName, bool bCreate) : m_strStore(pName), m_bCreate(bCreate) {}
    ~FakeOptions() override
    {
        FakeStateGuard guard(s_FakeStateLock);
        s_FakeState.Count(FAKE_COUNT_OPTIONS_DESTROYED);
    }
    LyXString Get(const wchar_t* pKey, const wchar_t* pDefault, int nA, const wchar_t* pB, int nC) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        Note(FAKE_COUNT_OPTIONS_GET, pKey, nA, pB, nC);
        auto it = s_FakeState.options.find({m_strStore, pKey});
        return {LyCom::SysAllocString(it != s_FakeState.options.end() ? it->second.c_str() : pDefault)};
    }
    int Get(const wchar_t* pKey, int nDefault, int nA, int nB) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        Note(FAKE_COUNT_OPTIONS_GET, pKey, nA, nullptr, nB);
        auto it = s_FakeState.options.find({m_strStore, pKey});
        return it != s_FakeState.options.end() ? static_cast<int>(wcstol(it->second.c_str(), nullptr, 10)) : nDefault;
    }
    void Reserved5() override {}
    bool Set(const wchar_t* pKey, const wchar_t* pValue, int nA, const wchar_t* pB, int nC) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        Note(FAKE_COUNT_OPTIONS_SET, pKey, nA, pB, nC);
        s_FakeState.options[{m_strStore, pKey}] = pValue;
        return true;
    }
    void Reserved7() override {}
    void Reserved8() override {}
    void Reserved9() override {}
    void Reserved10() override {}
    bool Delete(const wchar_t* pKey) override
    {
        FakeStateGuard guard(s_FakeStateLock);
        Note(FAKE_COUNT_OPTIONS_DELETE, pKey, 0, nullptr, 0);
        return s_FakeState.options.erase({m_strStore, pKey}) != 0;
    }

private:
    void Note(FAKE_TOOLS_COUNTER eCounter, const wchar_t* pKey, int nA, const wchar_t* pB, int nC)
    {
        s_FakeState.Count(eCounter);
        s_FakeState.strLastStore = m_strStore;
        s_FakeState.bLastCreate = m_bCreate;
        s_FakeState.lastKey.Set(pKey);
        s_FakeState.lastB.Set(pB);
        s_FakeState.nLastA = nA;
        s_FakeState.nLastC = nC;
    }

    std::wstring m_strStore;
    bool m_bCreate;
};

class FakeZLib final : public IZLib
{
public:
    IZLibBufferCompressor* CreateBufferCompressor(int, int) override { return nullptr; }
    IZLibBufferDecompressor* CreateBufferDecompressor() override { return nullptr; }
    IZLibFile* OpenFile(const wchar_t*) override { return nullptr; }
};

FakeStringHelper s_StringHelper;
FakeTranslator s_Translator;
FakeProductInfo s_ProductInfo;
FakeLogManager s_LogManager;
FakeDateTimeHelper s_DateTimeHelper;
FakeFileSystemManager s_FileSystemManager;
FakePowerManager s_PowerManager;
} // namespace

IStringHelper* GetFakeStringHelper() { return &s_StringHelper; }
ITranslator* GetFakeTranslator() { return &s_Translator; }
IProductInfo* GetFakeProductInfo() { return &s_ProductInfo; }
ILogManager* GetFakeLogManager() { return &s_LogManager; }
IDateTimeHelper* GetFakeDateTimeHelper() { return &s_DateTimeHelper; }
IFileSystemManager* GetFakeFileSystemManager() { return &s_FileSystemManager; }
ISystemPowerManager* GetFakePowerManager() { return &s_PowerManager; }

IOptionsHelper* CreateFakeOptions(const wchar_t* pName, bool bCreate)
{
    FakeStateGuard guard(s_FakeStateLock);
    s_FakeState.Count(FAKE_COUNT_OPTIONS_CREATED);
    return new FakeOptions(pName, bCreate);
}

IZLib* CreateFakeZLib()
{
    FakeStateGuard guard(s_FakeStateLock);
    s_FakeState.Count(FAKE_COUNT_ZLIB_CREATED);
    return new FakeZLib;
}
