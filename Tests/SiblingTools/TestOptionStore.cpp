#include "OptionStore.h"
#include "UserFolders.h"
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{
const wchar_t* const STORE = L"Software\\Lyndle\\Tune Hearth\\Plugins\\Input\\CDA";

std::wstring Read(OptionStore& store, const wchar_t* pStore, const wchar_t* pKey)
{
    return store.Get(pStore, pKey).value_or(L"(absent)");
}
} // namespace

TEST(OptionStore, KeepsWhatWasSet)
{
    const UserFolders user;
    {
        OptionStore store;
        EXPECT_TRUE(store.Set(STORE, L"ReadSpeed", L"8"));
        EXPECT_TRUE(store.Set(STORE, L"ReadSpeed", L"4"));
        EXPECT_TRUE(store.Set(L"CD Reader", L"ReadSpeed", L"other store"));
        EXPECT_EQ(L"4", Read(store, STORE, L"ReadSpeed"));
    }
    OptionStore store;
    EXPECT_EQ(L"4", Read(store, STORE, L"ReadSpeed"));
    EXPECT_EQ(L"other store", Read(store, L"CD Reader", L"ReadSpeed"));
    EXPECT_EQ(L"(absent)", Read(store, STORE, L"Other"));
    EXPECT_EQ(L"(absent)", Read(store, L"Other", L"ReadSpeed"));
}

TEST(OptionStore, TheCaseOfLettersMakesNoOtherStoreOrKey)
{
    const UserFolders user;
    OptionStore store;
    EXPECT_TRUE(store.Set(L"CD Reader", L"Key", L"1"));
    EXPECT_TRUE(store.Set(L"cd reader", L"KEY", L"2"));
    EXPECT_EQ(L"2", Read(store, L"CD READER", L"key"));
    const auto options = store.List(nullptr);
    ASSERT_TRUE(options);
    ASSERT_EQ(1U, options->size());
    EXPECT_EQ(L"CD Reader", options->front().m_strStore) << "as it was written first";
    EXPECT_EQ(L"Key", options->front().m_strKey);
    EXPECT_TRUE(store.Set(L"CD Reader", L"\u00e4", L"small"));
    EXPECT_EQ(L"(absent)", Read(store, L"CD Reader", L"\u00c4")) << "only A to Z";
}

TEST(OptionStore, NamesAreOtherwiseTakenAsTheyAre)
{
    const UserFolders user;
    OptionStore store;
    EXPECT_TRUE(store.Set(L"A\\B", L"Key", L"1"));
    for (const wchar_t* pOther : {L"A\\B\\", L"A/B", L"A", L"A\\B ", L"%", L"A_B", L"A\\B' OR '1'='1"})
        EXPECT_EQ(L"(absent)", Read(store, pOther, L"Key"));
    EXPECT_TRUE(store.Set(L"", L"", L"both empty"));
    EXPECT_EQ(L"both empty", Read(store, L"", L""));
}

TEST(OptionStore, ValuesAreAnyText)
{
    const UserFolders user;
    OptionStore store;
    const std::wstring aryValues[] = {
        L"",
        L" ",
        L"%InstallPath%/x",
        L"'); DROP TABLE options; --",
        L"line\nline\r\n\ttab",
        L"\u00e4\u20ac\U0001F3B5",
        {L'\xD800', L'x', L'\xDCFF'},
        std::wstring(100000, L'x'),
    };
    for (const std::wstring& strValue : aryValues)
    {
        EXPECT_TRUE(store.Set(L"S", L"K", strValue.c_str()));
        EXPECT_TRUE(Read(store, L"S", L"K") == strValue);
    }
    EXPECT_TRUE(store.Set(L"S", L"K", nullptr));
    EXPECT_EQ(L"", Read(store, L"S", L"K")) << "an empty value is there";
}

TEST(OptionStore, NullNamesNoOption)
{
    const UserFolders user;
    OptionStore store;
    EXPECT_FALSE(store.Set(nullptr, L"K", L"1"));
    EXPECT_FALSE(store.Set(L"S", nullptr, L"1"));
    EXPECT_FALSE(store.Get(nullptr, L"K"));
    EXPECT_FALSE(store.Get(L"S", nullptr));
    EXPECT_FALSE(store.Delete(nullptr, L"K"));
    EXPECT_FALSE(store.Delete(L"S", nullptr));
}

TEST(OptionStore, DeleteSaysWhetherThereWasOne)
{
    const UserFolders user;
    OptionStore store;
    EXPECT_FALSE(store.Delete(L"S", L"K"));
    EXPECT_TRUE(store.Set(L"S", L"K", L"1"));
    EXPECT_TRUE(store.Set(L"S", L"L", L"2"));
    EXPECT_TRUE(store.Delete(L"s", L"k"));
    EXPECT_FALSE(store.Delete(L"S", L"K"));
    EXPECT_EQ(L"(absent)", Read(store, L"S", L"K"));
    EXPECT_EQ(L"2", Read(store, L"S", L"L"));
}

TEST(OptionStore, NothingIsMadeBeforeTheFirstSet)
{
    const UserFolders user;
    OptionStore store;
    EXPECT_EQ(L"(absent)", Read(store, L"S", L"K"));
    EXPECT_FALSE(store.Delete(L"S", L"K"));
    EXPECT_TRUE(store.List(nullptr)->empty());
    EXPECT_FALSE(std::filesystem::exists(user.GetConfig()));
    EXPECT_TRUE(store.Set(L"S", L"K", L"1"));
    EXPECT_TRUE(std::filesystem::exists(user.GetOptionsFile()));
}

TEST(OptionStore, ListIsOrderedByStoreAndKey)
{
    const UserFolders user;
    OptionStore store;
    for (const wchar_t* pStore : {L"b", L"A", L"c"})
        for (const wchar_t* pKey : {L"2", L"z", L"10", L"Y"})
            ASSERT_TRUE(store.Set(pStore, pKey, pKey));
    const auto options = store.List(nullptr);
    ASSERT_TRUE(options);
    std::wstring strAll;
    for (const OptionStore::OPTION& each : *options)
        strAll += each.m_strStore + each.m_strKey + L"=" + each.m_strValue + L" ";
    EXPECT_EQ(L"A10=10 A2=2 AY=Y Az=z b10=10 b2=2 bY=Y bz=z c10=10 c2=2 cY=Y cz=z ", strAll);
    EXPECT_EQ(4U, store.List(L"B")->size());
    EXPECT_EQ(0U, store.List(L"d")->size());
}

TEST(OptionStore, CloseIsFollowedByAnotherOpen)
{
    const UserFolders user;
    OptionStore store;
    EXPECT_TRUE(store.Set(L"S", L"K", L"1"));
    store.Close();
    store.Close();
    EXPECT_EQ(L"1", Read(store, L"S", L"K"));
}

TEST(OptionStore, AFileThatIsTakenAwayOrReplacedIsNoticed)
{
    const UserFolders user;
    OptionStore store;
    EXPECT_TRUE(store.Set(L"S", L"K", L"1"));
    std::filesystem::rename(user.GetOptionsFile(), user.GetOptionsFile() + ".old");
    EXPECT_EQ(L"(absent)", Read(store, L"S", L"K"));
    EXPECT_TRUE(store.Set(L"S", L"K", L"2"));
    std::filesystem::rename(user.GetOptionsFile() + ".old", user.GetOptionsFile());
    EXPECT_EQ(L"1", Read(store, L"S", L"K"));
}

TEST(OptionStore, TwoProcessesSeeEachOthersValues)
{
    const UserFolders user;
    OptionStore store;
    ASSERT_TRUE(store.Set(L"S", L"K", L"first"));
    ASSERT_EQ(L"first", Read(store, L"S", L"K"));
    for (const wchar_t* pValue : {L"second", L"third"})
    {
        const pid_t nProcess = fork();
        if (nProcess == 0)
        {
            OptionStore other;
            _exit(other.Get(L"S", L"K") && other.Set(L"S", L"K", pValue) ? 0 : 1);
        }
        int nStatus = -1;
        ASSERT_EQ(nProcess, waitpid(nProcess, &nStatus, 0));
        ASSERT_EQ(0, nStatus);
        EXPECT_EQ(pValue, Read(store, L"S", L"K"));
    }
}

TEST(OptionStore, TwoProcessesWriteAtOnceAndNothingIsLost)
{
    constexpr int EACH = 25;
    const UserFolders user;
    pid_t aryProcesses[2];
    for (int nProcess = 0; nProcess < 2; nProcess++)
    {
        aryProcesses[nProcess] = fork();
        if (aryProcesses[nProcess] != 0)
            continue;
        OptionStore store;
        bool bGood = true;
        for (int nKey = 0; nKey < EACH; nKey++)
            bGood = store.Set(std::to_wstring(nProcess).c_str(), std::to_wstring(nKey).c_str(), L"x") && bGood;
        _exit(bGood ? 0 : 1);
    }
    for (const pid_t nProcess : aryProcesses)
    {
        int nStatus = -1;
        ASSERT_EQ(nProcess, waitpid(nProcess, &nStatus, 0));
        EXPECT_EQ(0, nStatus);
    }
    OptionStore store;
    EXPECT_EQ(2U * EACH, store.List(nullptr)->size());
}

TEST(OptionStore, ThreadsShareIt)
{
    constexpr int EACH = 20;
    const UserFolders user;
    OptionStore store;
    OptionStore second; // as of another library in the process
    std::vector<std::thread> aryThreads;
    for (int nThread = 0; nThread < 4; nThread++)
        aryThreads.emplace_back(
            [&, nThread]
            {
                OptionStore& own = nThread % 2 == 0 ? store : second;
                for (int nKey = 0; nKey < EACH; nKey++)
                {
                    EXPECT_TRUE(own.Set(std::to_wstring(nThread).c_str(), std::to_wstring(nKey).c_str(), L"x"));
                    EXPECT_EQ(L"x", Read(own, std::to_wstring(nThread).c_str(), std::to_wstring(nKey).c_str()));
                }
            });
    for (std::thread& each : aryThreads)
        each.join();
    EXPECT_EQ(4U * EACH, store.List(nullptr)->size());
}
