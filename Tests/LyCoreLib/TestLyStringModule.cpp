// Strings in a library of its own: what is made while it loads, what is left when it has gone, and what crosses over.

#include "StringTestSupport.h"
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>

namespace
{
std::wstring s_strReported;

std::wstring s_strReportedLast;

void Report(const wchar_t* p) { s_strReported = p; }
void ReportLast(const wchar_t* p) { s_strReportedLast = p; }
using SET_REPORTS = void(void (*)(const wchar_t*), void (*)(const wchar_t*));

const char* const MODULE_PATH = RONDEL_FAKES_DIR "/StringModule.so";

class StringModule : public testing::Test
{
protected:
    void SetUp() override
    {
        m_hModule = dlopen(MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(m_hModule, nullptr) << dlerror();
    }
    void TearDown() override { Unload(); }
    void Unload()
    {
        if (m_hModule)
            dlclose(m_hModule);
        m_hModule = nullptr;
    }
    template <class FUNCTION>
    FUNCTION* Function(const char* pName)
    {
        return reinterpret_cast<FUNCTION*>(dlsym(m_hModule, pName));
    }
    void* m_hModule = nullptr;
};
} // namespace

TEST_F(StringModule, HasAManagerOfItsOwn)
{
    ILyStringManager* pManager = Function<ILyStringManager*()>("GetModuleManager")();
    EXPECT_NE(pManager, nullptr);
    EXPECT_NE(pManager, LyStringGlobals::GetManager());
}

TEST_F(StringModule, CopyOfItsStringIsNotShared)
{
    LyString& strTheirs = *Function<LyString*()>("GetModuleString")();
    LyString strOurs(strTheirs);
    EXPECT_STREQ(strOurs, L"text of the module");
    EXPECT_NE(TextOf(strOurs), TextOf(strTheirs));
    EXPECT_EQ(BlockOf(strOurs)->manager, LyStringGlobals::GetManager());
    Unload();
    EXPECT_STREQ(strOurs, L"text of the module");
}

TEST_F(StringModule, FillsAStringThroughTheInterface)
{
    LyString str;
    LyDllString target(str);
    Function<void(const ILyDllString*)>("FillString")(&target);
    EXPECT_STREQ(str, L"filled by the module");
    EXPECT_EQ(BlockOf(str)->manager, LyStringGlobals::GetManager());
}

TEST_F(StringModule, StringsStillWorkInStaticDestructors)
{
    s_strReported.clear();
    Function<SET_REPORTS>("SetReports")(Report, ReportLast);
    Unload();
    EXPECT_EQ(dlopen(MODULE_PATH, RTLD_NOW | RTLD_NOLOAD), nullptr) << "it has not really gone";
    EXPECT_EQ(s_strReported, L"used in a static destructor");
    EXPECT_EQ(s_strReportedLast, L"the last string of the library") << "after the manager's own end";
}

TEST_F(StringModule, LoadingAThousandTimesLeavesNothingBehind)
{
    const int nLoads = 1000;
    size_t nBefore = 0;
    for (int i = 0; i < nLoads; ++i)
    {
        Unload();
        if (i == 1)
            nBefore = mallinfo2().uordblks;
        SetUp();
        Function<SET_REPORTS>("SetReports")(nullptr, nullptr);
    }
    Unload();
    // A block that stayed behind at each unloading would be 24 bytes at least.
    EXPECT_LT(mallinfo2().uordblks, nBefore + nLoads * 8);
}
