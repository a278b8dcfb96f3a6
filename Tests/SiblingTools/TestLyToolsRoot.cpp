#include "LyToolsRoot.h"
#include "OptionsHelper.h"
#include "UserFolders.h"
#include "ZLibHelper.h"
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace
{
// Calls an operation by its place in the virtual table, counted from 1.
template <class RESULT, class... ARGUMENTS>
RESULT CallSlot(void* pObject, int nSlot, ARGUMENTS... arguments)
{
    void** pTable = *static_cast<void***>(pObject);
    return reinterpret_cast<RESULT (*)(void*, ARGUMENTS...)>(pTable[nSlot - 1])(pObject, arguments...);
}

const struct
{
    const char* pName;
    int nSlot;
} s_aryServices[] = {
    {"StringHelper", 6},        {"Translator", 8},      {"ProductInfo", 10},       {"LyMessageBoxHelper", 12},
    {"MainThreadMessages", 16}, {"DateTimeHelper", 17}, {"FileSystemManager", 19}, {"SystemPowerManager", 21},
};

void* Get(LyToolsRoot& root, int nSlot, bool bCreate) { return CallSlot<void*>(&root, nSlot, bCreate); }

bool SetOption(LyToolsRoot& root, const wchar_t* pStore, const wchar_t* pKey, const wchar_t* pValue)
{
    const LyPtr<IOptionsHelper, IOptionsHelper> pOptions(root.CreateOptionsHelper(pStore, true), true, false);
    return pOptions->Set(pKey, pValue, 0, nullptr, 0);
}

int GetOption(LyToolsRoot& root, const wchar_t* pStore, const wchar_t* pKey)
{
    const LyPtr<IOptionsHelper, IOptionsHelper> pOptions(root.CreateOptionsHelper(pStore, false), true, false);
    return pOptions->Get(pKey, -1, 0, 0);
}
} // namespace

TEST(LyToolsRoot, AServiceComesWhenItIsAskedFor)
{
    LyToolsRoot root;
    root.Attach(0, nullptr);
    for (const auto& row : s_aryServices)
    {
        EXPECT_EQ(nullptr, Get(root, row.nSlot, false)) << row.pName;
        void* pService = Get(root, row.nSlot, true);
        EXPECT_NE(nullptr, pService) << row.pName;
        EXPECT_EQ(pService, Get(root, row.nSlot, true)) << row.pName;
        EXPECT_EQ(pService, Get(root, row.nSlot, false)) << row.pName;
    }
    root.Detach(0, nullptr);
}

TEST(LyToolsRoot, EachSlotHoldsItsOwnService)
{
    LyToolsRoot root;
    EXPECT_EQ(Get(root, 6, true), root.GetStringHelper(true));
    EXPECT_EQ(Get(root, 8, true), root.GetTranslator(true));
    EXPECT_EQ(Get(root, 10, true), root.GetProductInfo(true));
    EXPECT_EQ(Get(root, 12, true), root.GetLyMessageBoxHelper(true));
    EXPECT_EQ(Get(root, 16, true), root.GetMainThreadMessageManager(true));
    EXPECT_EQ(Get(root, 17, true), root.GetDateTimeHelper(true));
    EXPECT_EQ(Get(root, 19, true), root.GetFileSystemManager(true));
    EXPECT_EQ(Get(root, 21, true), root.GetSystemPowerManager(true));
}

TEST(LyToolsRoot, ServicesLiveUntilTheLastDetach)
{
    LyToolsRoot root;
    for (int nRound = 0; nRound < 3; nRound++)
    {
        root.Attach(0, nullptr);
        root.Attach(0, nullptr);
        for (const auto& row : s_aryServices)
            EXPECT_NE(nullptr, Get(root, row.nSlot, true)) << row.pName;
        root.Detach(0, nullptr);
        for (const auto& row : s_aryServices)
            EXPECT_NE(nullptr, Get(root, row.nSlot, false)) << row.pName;
        root.Detach(0, nullptr);
        for (const auto& row : s_aryServices)
            EXPECT_EQ(nullptr, Get(root, row.nSlot, false)) << row.pName;
        root.Detach(0, nullptr); // one too many
    }
}

TEST(LyToolsRoot, AttachAndDetachAreTheFirstTwoSlots)
{
    LyToolsRoot root;
    CallSlot<void>(&root, 1, 5LL, static_cast<void*>(nullptr));
    EXPECT_NE(nullptr, root.GetTranslator(true));
    CallSlot<void>(&root, 2, 5LL, static_cast<void*>(nullptr));
    EXPECT_EQ(nullptr, root.GetTranslator(false));
}

TEST(LyToolsRoot, TheLogManagerIsThereFromAttachIfALogIsWanted)
{
    const UserFolders user;
    const Environment log("RONDEL_LOG", ("4096:" + user.GetFolder().GetPath("log")).c_str());
    LyToolsRoot root;
    root.Attach(0, nullptr);
    void* pLog = Get(root, 11, false);
    EXPECT_NE(nullptr, pLog);
    EXPECT_EQ(pLog, root.GetLogManager(true));
    root.Detach(0, nullptr);
    EXPECT_EQ(nullptr, root.GetLogManager(false));
}

TEST(LyToolsRoot, WithoutAWantedLogThereIsALogManagerOnlyForThoseWhoAskForOne)
{
    const Environment log("RONDEL_LOG", nullptr);
    LyToolsRoot root;
    root.Attach(0, nullptr);
    EXPECT_EQ(nullptr, root.GetLogManager(false));
    void* pLog = Get(root, 11, true);
    ASSERT_NE(nullptr, pLog);
    EXPECT_FALSE(static_cast<LogManager*>(root.GetLogManager(false))->IsOn(4096));
    root.Detach(0, nullptr);
    EXPECT_EQ(nullptr, root.GetLogManager(false));
}

TEST(LyToolsRoot, TheUnloadNoticeTakesNothingFromTheOthers)
{
    const UserFolders user;
    LyToolsRoot root;
    root.Attach(0, nullptr);
    ASSERT_TRUE(SetOption(root, L"S", L"K", L"1"));
    void* pHelper = Get(root, 6, true);
    CallSlot<void>(&root, 4, static_cast<void*>(nullptr));
    EXPECT_EQ(pHelper, Get(root, 6, false));
    EXPECT_EQ(1, GetOption(root, L"S", L"K"));
    root.Detach(0, nullptr);
    root.NotifyUnload(nullptr); // when nothing is there
}

TEST(LyToolsRoot, BothAnswersOfCreateGiveAStore)
{
    const UserFolders user;
    LyToolsRoot root;
    for (const bool bCreate : {false, true})
    {
        IOptionsHelper* pOptions = CallSlot<IOptionsHelper*>(&root, 23, L"S", bCreate);
        ASSERT_NE(nullptr, pOptions);
        EXPECT_EQ(77, pOptions->Get(L"K", 77, 0, 0));
        delete pOptions;
    }
    EXPECT_FALSE(std::filesystem::exists(user.GetConfig())) << "nothing was set";
}

TEST(LyToolsRoot, AnOptionsObjectOutlivesTheServices)
{
    const UserFolders user;
    LyToolsRoot root;
    root.Attach(0, nullptr);
    const LyPtr<IOptionsHelper, IOptionsHelper> pOptions(root.CreateOptionsHelper(L"S", true), true, false);
    root.Detach(0, nullptr);
    EXPECT_TRUE(pOptions->Set(L"K", L"5", 0, nullptr, 0));
    EXPECT_EQ(5, GetOption(root, L"S", L"K"));
}

TEST(LyToolsRoot, TokensInValuesStayAsTheyAre)
{
    const UserFolders user;
    LyToolsRoot root;
    const LyPtr<IOptionsHelper, IOptionsHelper> pOptions(root.CreateOptionsHelper(L"S", true), true, false);
    ASSERT_TRUE(pOptions->Set(L"K", L"%InstallPath%/[Install]", 0, nullptr, 0));
    CallSlot<void>(&root, 31);
    LyXString text = pOptions->Get(L"K", L"", 0, nullptr, 0);
    EXPECT_STREQ(L"%InstallPath%/[Install]", text.Get());
    LyCom::SysFreeString(text.m_pText);
}

TEST(LyToolsRoot, EveryZLibIsTheCallersOwn)
{
    LyToolsRoot root;
    IZLib* pFirst = CallSlot<IZLib*>(&root, 27);
    IZLib* pSecond = CallSlot<IZLib*>(&root, 27);
    EXPECT_NE(nullptr, pFirst);
    EXPECT_NE(nullptr, pSecond);
    EXPECT_NE(pFirst, pSecond);
    delete pFirst;
    delete pSecond;
}

TEST(LyToolsRoot, AMessageBoxRemembersAmongTheOptions)
{
    const UserFolders user;
    LyToolsRoot root;
    ASSERT_TRUE(SetOption(root, MessageBoxService::MEMORY_STORE, L"Once", L"2"));
    LyMessageBoxDescriptor descriptor;
    descriptor.m_strText.Set(L"Again?");
    descriptor.m_strShowOnceKey.Set(L"Once");
    descriptor.m_bRemember = true;
    descriptor.m_aryTexts[0].Set(L"Yes");
    descriptor.m_aryTexts[1].Set(L"No");
    EXPECT_EQ(2, root.GetLyMessageBoxHelper(true)->Show(&descriptor));
}

TEST(LyToolsRoot, ThreadsGetTheSameServices)
{
    LyToolsRoot root;
    root.Attach(0, nullptr);
    std::vector<std::vector<void*>> aryFound(4);
    std::vector<std::thread> aryThreads;
    for (auto& found : aryFound)
        aryThreads.emplace_back(
            [&]
            {
                for (const auto& row : s_aryServices)
                    found.push_back(Get(root, row.nSlot, true));
            });
    for (std::thread& each : aryThreads)
        each.join();
    for (const auto& found : aryFound)
        EXPECT_EQ(aryFound[0], found);
    root.Detach(0, nullptr);
}
