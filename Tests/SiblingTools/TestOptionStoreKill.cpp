// A process that is killed at any of its system calls leaves its options whole.

#include "KillAtEachCall.h"
#include "OptionStore.h"
#include "UserFolders.h"
#include <gtest/gtest.h>

namespace
{
const std::wstring s_strOld(3000, L'o'); // more than a page holds beside the others
const std::wstring s_strNew(9000, L'n');

bool Prepare()
{
    OptionStore store;
    return store.Set(L"S", L"K", s_strOld.c_str()) && store.Set(L"S", L"Other", L"stays");
}

// The value that is there is one that was set, what is beside it is untouched, and the store goes on.
void ExpectWholeAndUsable(const UserFolders& user, int nCall, bool bOldMayBeAbsent)
{
    OptionStore store;
    const auto value = store.Get(L"S", L"K");
    EXPECT_TRUE(value == s_strOld || value == s_strNew || (!value && bOldMayBeAbsent)) << "killed at call " << nCall;
    EXPECT_TRUE(store.Get(L"S", L"Other") == L"stays" || bOldMayBeAbsent) << "killed at call " << nCall;
    EXPECT_TRUE(store.Set(L"S", L"After", L"1")) << "killed at call " << nCall;
    EXPECT_EQ(L"1", store.Get(L"S", L"After")) << "killed at call " << nCall;
    EXPECT_FALSE(std::filesystem::exists(user.GetOptionsFile() + ".damaged-1")) << "killed at call " << nCall;
}

void ExpectRounds(int nCalls)
{
    if (nCalls == KILL_NOT_ALLOWED)
        GTEST_SKIP() << "nobody may trace a child here";
    EXPECT_GT(nCalls, 10) << "a change takes more calls than that";
}
} // namespace

TEST(OptionStoreKill, AChangeIsThereOrNotThere)
{
    const UserFolders user(TEMP_IN_MEMORY);
    bool bOldSeen = false;
    bool bNewSeen = false;
    ExpectRounds(KillAtEachCall(
        []
        {
            OptionStore store;
            if (!store.Set(L"S", L"K", s_strNew.c_str()))
                _exit(1);
        },
        [&](int nCall)
        {
            ExpectWholeAndUsable(user, nCall, false);
            OptionStore store;
            (store.Get(L"S", L"K") == s_strOld ? bOldSeen : bNewSeen) = true;
        },
        [&] { ASSERT_TRUE(Prepare()); }));
    EXPECT_EQ(bOldSeen, bNewSeen) << "some calls come before the change, and some after it";
}

TEST(OptionStoreKill, SeveralChangesInARowEndWithOneOfThem)
{
    const UserFolders user(TEMP_IN_MEMORY);
    ExpectRounds(KillAtEachCall(
        []
        {
            OptionStore store;
            for (const std::wstring* pValue : {&s_strNew, &s_strOld, &s_strNew})
                if (!store.Set(L"S", L"K", pValue->c_str()))
                    _exit(1);
        },
        [&](int nCall) { ExpectWholeAndUsable(user, nCall, false); }, [&] { ASSERT_TRUE(Prepare()); }));
}

TEST(OptionStoreKill, TheFirstSetOfAllLeavesAFileThatCanBeUsed)
{
    const UserFolders user(TEMP_IN_MEMORY);
    ExpectRounds(KillAtEachCall(
        []
        {
            OptionStore store;
            if (!store.Set(L"S", L"K", s_strNew.c_str()))
                _exit(1);
        },
        [&](int nCall) { ExpectWholeAndUsable(user, nCall, true); },
        [&] { std::filesystem::remove_all(user.GetConfig()); }));
}

TEST(OptionStoreKill, ABrokenFileIsThereOrKeptAside)
{
    const UserFolders user(TEMP_IN_MEMORY);
    ExpectRounds(KillAtEachCall(
        []
        {
            (void)!freopen("/dev/null", "w", stderr);
            OptionStore store;
            if (!store.Set(L"S", L"K", s_strNew.c_str()))
                _exit(1);
        },
        [&](int nCall)
        {
            testing::internal::CaptureStderr();
            OptionStore store;
            EXPECT_TRUE(store.Set(L"S", L"After", L"1")) << "killed at call " << nCall;
            (void)testing::internal::GetCapturedStderr();
            EXPECT_TRUE(std::filesystem::exists(user.GetOptionsFile() + ".damaged-1")) << "killed at call " << nCall;
            EXPECT_FALSE(std::filesystem::exists(user.GetOptionsFile() + ".damaged-2")) << "killed at call " << nCall;
        },
        [&]
        {
            std::filesystem::remove_all(user.GetConfig());
            std::filesystem::create_directories(user.GetConfig() + "/rondel");
            std::ofstream(user.GetOptionsFile()) << std::string(5000, 'x');
        }));
}
