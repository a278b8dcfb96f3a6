#include "ILyMessageBox.h"
#include "OptionsHelper.h"
#include "Tools/FakeTools.h"
#include <gtest/gtest.h>
#include <vector>

namespace
{
// The descriptor as a service of another build sees it.
template <class T>
T& At(LyMessageBoxDescriptor& descriptor, size_t nOffset)
{
    return *reinterpret_cast<T*>(reinterpret_cast<char*>(&descriptor) + nOffset);
}
} // namespace

// ---- The descriptor

TEST(MessageBoxDescriptor, TextsAreEmptyAndEachIsItsOwn)
{
    LyMessageBoxDescriptor descriptor;
    std::vector<size_t> aryOffsets{0, 8, 24, 32, 40, 2104, 2120, 2136, 2152, 2168};
    for (size_t nIndex = 0; nIndex < 256; nIndex++)
        aryOffsets.push_back(56 + 8 * nIndex);
    for (size_t nOffset : aryOffsets)
    {
        ASSERT_NE(nullptr, At<wchar_t*>(descriptor, nOffset)) << nOffset;
        EXPECT_STREQ(L"", At<wchar_t*>(descriptor, nOffset)) << nOffset;
        At<LyXString>(descriptor, nOffset).Set(L"other"); // and the destructor frees every one of them
    }
}

TEST(MessageBoxDescriptor, FieldsBeginWithTheirValues)
{
    LyMessageBoxDescriptor descriptor;
    EXPECT_FALSE(At<bool>(descriptor, 16)) << "modal";
    EXPECT_FALSE(At<bool>(descriptor, 48)) << "remember";
    EXPECT_FALSE(At<bool>(descriptor, 49));
    EXPECT_EQ(0, At<int>(descriptor, 52));
    EXPECT_FALSE(At<bool>(descriptor, 2112));
    EXPECT_EQ(0, At<int>(descriptor, 2128));
    EXPECT_TRUE(At<bool>(descriptor, 2144));
    EXPECT_FALSE(At<bool>(descriptor, 2160));
    EXPECT_EQ(-1, At<int>(descriptor, 2176));
    EXPECT_EQ(2184u, sizeof descriptor);
}

// ---- IMB

TEST(IMB, WithoutToolsAnswersZero) { EXPECT_EQ(0, IMB(L"text", L"caption", L"key", true, true)); }

TEST(IMB, WithoutServiceAnswersZero)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetServiceThere(FAKE_MESSAGE_BOX, false);
    EXPECT_EQ(0, IMB(L"text", L"caption", L"", false, false));
}

TEST(IMB, ShowsTextCaptionAndDefaultButtons)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetServiceOnDemand(FAKE_MESSAGE_BOX);
    tools->SetBoxAnswer(6);
    EXPECT_EQ(6, IMB(L"The text", L"Information", L"", true, false));
    FAKE_BOX box = tools->GetLastBox();
    EXPECT_STREQ(L"The text", box.pText);
    EXPECT_STREQ(L"Information", box.pCaption);
    EXPECT_STREQ(L"OK", box.pFirstButton);
    EXPECT_FALSE(box.bModal);
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_FILL_BUTTONS));
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_FILL_BUTTON_TEXTS));
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_BOX_SHOWN));
}

TEST(IMB, FifthArgumentIsTheModalFlag)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    (void)IMB(L"text", L"caption", L"", false, true);
    EXPECT_TRUE(tools->GetLastBox().bModal);
}

TEST(IMB, WithoutKeyTheKeysAndTheRememberFlagAreLeftAlone)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    (void)IMB(L"text", L"caption", L"", true, false);
    FAKE_BOX box = tools->GetLastBox();
    EXPECT_STREQ(L"", box.pShowOnceKey);
    EXPECT_STREQ(L"second", box.pSecondKey) << "as the service filled it in";
    EXPECT_STREQ(L"third", box.pThirdKey);
    EXPECT_FALSE(box.bRemember);
}

TEST(IMB, KeyIsStoredAndTheOthersAreCleared)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    for (bool bRemember : {false, true})
    {
        (void)IMB(L"text", L"caption", L"Show once", bRemember, false);
        FAKE_BOX box = tools->GetLastBox();
        EXPECT_STREQ(L"Show once", box.pShowOnceKey);
        EXPECT_STREQ(L"", box.pSecondKey);
        EXPECT_STREQ(L"", box.pThirdKey);
        EXPECT_EQ(bRemember, box.bRemember);
    }
}

TEST(IMB, NullTextsAreEmpty)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    (void)IMB(nullptr, nullptr, L"", false, false);
    EXPECT_STREQ(L"", tools->GetLastBox().pText);
    EXPECT_STREQ(L"", tools->GetLastBox().pCaption);
}

TEST(IMB, ServiceOperationsStandAtTheirPlaces)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    void* pService = GetLyMessageBoxHelper(true);
    void** pTable = *static_cast<void***>(pService);
    LyMessageBoxDescriptor descriptor;
    using FILL = void (*)(void*, LyMessageBoxDescriptor*);
    using SHOW = int (*)(void*, LyMessageBoxDescriptor*);
    reinterpret_cast<FILL>(pTable[14 - 1])(pService, &descriptor);
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_FILL_BUTTONS));
    reinterpret_cast<FILL>(pTable[15 - 1])(pService, &descriptor);
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_FILL_BUTTON_TEXTS));
    (void)reinterpret_cast<SHOW>(pTable[3 - 1])(pService, &descriptor);
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_BOX_SHOWN));
}

// ---- TranslateString

TEST(TranslateString, WithoutToolsTheTextStays)
{
    LyString strText(L"Information");
    LyString strShared(strText);
    TranslateString(strText);
    EXPECT_EQ(static_cast<const wchar_t*>(strShared), static_cast<const wchar_t*>(strText)) << "not even detached";
    EXPECT_TRUE(TranslateString(L"Information") == L"Information");
}

TEST(TranslateString, RewritesInPlace)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetTranslation(L"Information", L"Ausk\u00fcnfte");
    LyString strText(L"Information");
    TranslateString(strText);
    EXPECT_TRUE(strText == L"Ausk\u00fcnfte");
}

TEST(TranslateString, ConstantTextGivesATranslatedCopy)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetTranslation(L"Reading", L"Lesen");
    EXPECT_TRUE(TranslateString(L"Reading") == L"Lesen");
    EXPECT_TRUE(TranslateString(L"Unknown") == L"Unknown");
}

TEST(TranslateString, EmptyTextDoesNotReachTheService)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    LyString strText;
    TranslateString(strText);
    EXPECT_TRUE(TranslateString(static_cast<const wchar_t*>(nullptr)).IsEmpty());
    EXPECT_EQ(0, tools->GetCount(FAKE_COUNT_TRANSLATE));
    TranslateString(strText = L"text");
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_TRANSLATE));
}

TEST(TranslateString, AsksTheTranslatorToComeUp)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetServiceOnDemand(FAKE_TRANSLATOR);
    tools->SetTranslation(L"a", L"b");
    EXPECT_TRUE(TranslateString(L"a") == L"b");
    tools->SetServiceThere(FAKE_TRANSLATOR, false);
    EXPECT_TRUE(TranslateString(L"a") == L"a");
}

TEST(TranslateString, ServiceOperationStandsInTheThirdPlace)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetTranslation(L"a", L"b");
    void* pTranslator = GetLyTools(false)->GetTranslator(true);
    void** pTable = *static_cast<void***>(pTranslator);
    LyString strText(L"a");
    LyDllString dllString(strText);
    using TRANSLATE = void (*)(void*, const ILyDllString&);
    reinterpret_cast<TRANSLATE>(pTable[2])(pTranslator, dllString);
    EXPECT_TRUE(strText == L"b");
}
