// The memory of the fake tools library: what its services were told and asked.

#pragma once

#include "FakeToolsControl.h"
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <utility>

struct FakeLogLine
{
    int nArea;
    std::wstring strName;
    std::wstring strText;
    bool bNarrow;
};

// A text that may be null.
struct FakeText
{
    void Set(const wchar_t* p)
    {
        bThere = p != nullptr;
        str = bThere ? p : L"";
    }
    const wchar_t* Get() const { return bThere ? str.c_str() : nullptr; }

    bool bThere = false;
    std::wstring str;
};

struct FakeService
{
    bool bThere = true;
    bool bOnDemand = false;
};

struct FakeToolsState
{
    using OptionKey = std::pair<std::wstring, std::wstring>; // store, key

    void Count(FAKE_TOOLS_COUNTER eCounter) { aryCounts[eCounter]++; }

    int aryCounts[FAKE_COUNTER_COUNT] = {};
    FakeService aryServices[FAKE_SERVICE_COUNT];

    long long nContext = 0;
    const void* pApplicationHandle = nullptr;
    const void* pNotifiedApplication = nullptr;

    std::deque<FakeLogLine> aryLog; // texts stay where they are while lines are added

    std::map<OptionKey, std::wstring> options;
    std::wstring strLastStore;
    bool bLastCreate = false;
    FakeText lastKey;
    FakeText lastB;
    int nLastA = 0;
    int nLastC = 0;

    std::map<std::wstring, std::wstring> translations;

    int nBoxAnswer = 0;
    FakeText aryBoxTexts[6]; // text, caption, the three keys, the first button
    bool bBoxModal = false;
    bool bBoxRemember = false;
    bool bWaitCancelled = false;
    FakeText waitText;
    int nWaitDelayMS = 0;
    bool bWaitCancelButton = false;
    int nWaitPercent = -1;

    bool bHasProduct = false;
    FakeText appdataDirectory;
    FakeText productName;
    FakeText productText;
    bool bProductFirst = false;
    bool bProductSecond = false;
    int nProductNumber = 0;

    int nFileExistsFlags = -1;
    bool bFileExistsAlways = false;

    long long nPowerEntry = 1;
    FakeText powerName;
    long long nReleasedEntry = 0;

    double fDate = 0.0;
};

// The one state, and its lock. A service locks it for the length of an operation, but not while it calls back.
extern FakeToolsState s_FakeState;
extern std::recursive_mutex s_FakeStateLock;

using FakeStateGuard = std::lock_guard<std::recursive_mutex>;

class ILyTools;
ILyTools* GetFakeToolsRoot();
IFakeToolsControl* GetFakeToolsControlObject();
