// Who writes a service of the tools library names the operations that the system calls, and those alone; the slots
// between them are filled.

#include "ILyMessageBox.h"
#include "ITranslator.h"
#include "LogHelper.h"
#include "OptionsHelper.h"
#include "RawTable.h"
#include <gtest/gtest.h>
#include <string>

namespace
{
class NamedLog final : public ILogManager
{
public:
    void Log(int, const LyString&, const wchar_t*, LyString::CFormatArgument**, int) override { m_strCalls += 'w'; }
    void Log(int, const LyString&, const char*, LyString::CFormatArgument**, int) override { m_strCalls += 'n'; }

    std::string m_strCalls;
};

class NamedOptions final : public IOptionsHelper
{
public:
    explicit NamedOptions(std::string& strCalls) : m_strCalls(strCalls) {}
    ~NamedOptions() override { m_strCalls += '~'; }
    LyXString Get(const wchar_t*, const wchar_t* pDefault, int, const wchar_t*, int) override
    {
        LyXString result;
        result.Set(pDefault);
        return result;
    }
    int Get(const wchar_t*, int nDefault, int, int) override { return nDefault; }
    bool Set(const wchar_t*, const wchar_t*, int, const wchar_t*, int) override
    {
        m_strCalls += 's';
        return true;
    }
    bool Delete(const wchar_t*) override
    {
        m_strCalls += 'd';
        return true;
    }

    std::string& m_strCalls;
};

class NamedTranslator final : public ITranslator
{
public:
    void Translate(const ILyDllString& strText) override { strText.Set(L"translated", -1); }
};

class NamedMessageBox final : public ILyMessageBox
{
public:
    int Show(LyMessageBoxDescriptor*) override { return 1; }
    ILyWaitMessage* CreateWaitMessage(const wchar_t*, int, bool, ILyWaitMessageCallback*) override { return nullptr; }
    void FillDefaultButtons(LyMessageBoxDescriptor*) override { m_strCalls += 'b'; }
    void FillDefaultButtonTexts(LyMessageBoxDescriptor*) override { m_strCalls += 't'; }

    std::string m_strCalls;
};
} // namespace

TEST(ServiceInterfaces, ALogOfTheNamedOperationsHasWideTextThirdAndNarrowFourth)
{
    NamedLog log;
    const LyString strName = L"name";
    CallSlot<void>(&log, 2, 1, &strName, L"text", nullptr, 0);
    CallSlot<void>(&log, 3, 1, &strName, "text", nullptr, 0);
    EXPECT_EQ("wn", log.m_strCalls);
}

TEST(ServiceInterfaces, AStoreOfTheNamedOperationsAnswersBehindTheDestructors)
{
    std::string strCalls;
    auto* pOptions = new NamedOptions(strCalls);
    auto* pText = CallSlot<wchar_t*>(pOptions, 2, L"key", L"default", 0, L"", 0);
    EXPECT_STREQ(L"default", pText);
    LyCom::SysFreeString(pText);
    EXPECT_EQ(7, CallSlot<int>(pOptions, 3, L"key", 7, 0, 0));
    EXPECT_TRUE(CallSlot<bool>(pOptions, 5, L"key", L"value", 0, L"", 0));
    EXPECT_TRUE(CallSlot<bool>(pOptions, 10, L"key"));
    CallSlot<void>(pOptions, 1);
    EXPECT_EQ("sd~", strCalls);
}

TEST(ServiceInterfaces, ATranslatorsOperationIsTheThird)
{
    NamedTranslator translator;
    LyString strText = L"text";
    const LyDllString text(strText);
    CallSlot<void>(&translator, 2, static_cast<const ILyDllString*>(&text));
    EXPECT_STREQ(L"translated", strText);
}

TEST(ServiceInterfaces, AMessageBoxIsShownByTheThirdAndFilledByTheFourteenthAndFifteenth)
{
    NamedMessageBox box;
    LyMessageBoxDescriptor descriptor;
    EXPECT_EQ(1, CallSlot<int>(&box, 2, &descriptor));
    CallSlot<void>(&box, 13, &descriptor);
    CallSlot<void>(&box, 14, &descriptor);
    EXPECT_EQ("bt", box.m_strCalls);
}
