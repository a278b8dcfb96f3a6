// Where an encoder's settings come from.

#include "Encoder/FakeEncoder.h"
#include "EncoderHelper.h"
#include "Tools/FakeTools.h"
#include <gtest/gtest.h>

namespace
{
class EncoderSettingsTest : public ::testing::Test
{
protected:
    EncoderSettingsTest()
    {
        m_Plugin.m_strLibrary = FakeEncoder::GetLibrary();
        m_Plugin.m_strName = L"Scripted";
    }
    std::wstring GetHandedSettings()
    {
        m_Fake.m_arySettings.clear();
        EXPECT_TRUE(m_Plugin.Open(nullptr, true));
        EXPECT_EQ(1u, m_Fake.m_arySettings.size());
        return m_Fake.m_arySettings.empty() ? std::wstring() : m_Fake.m_arySettings[0];
    }
    FakeEncoder m_Fake;
    CEncoderPlugin m_Plugin;
};
constexpr const wchar_t* STORE = L"Plugins\\Encoders\\Scripted";
} // namespace

TEST_F(EncoderSettingsTest, ComeFromTheStoreOfTheEncoder)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetOption(STORE, L"Settings", L"-5 stored");
    EXPECT_EQ(L"Settings=-5 stored", GetHandedSettings());
    const FAKE_OPTIONS_CALL call = tools->GetLastOptionsCall();
    EXPECT_STREQ(STORE, call.pStore);
    EXPECT_FALSE(call.bCreate);
    EXPECT_STREQ(L"Settings", call.pKey);
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_OPTIONS_CREATED));
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_OPTIONS_DESTROYED));
    EXPECT_TRUE(m_Plugin.m_strSettings.IsEmpty()) << "read anew each time";
}

TEST_F(EncoderSettingsTest, OfAProfileHaveItsNameInBrackets)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetOption(STORE, L"Settings", L"plain");
    tools->SetOption(STORE, L"Settings (Archive)", L"profile");
    m_Plugin.m_strProfile = L"Archive";
    EXPECT_EQ(L"Settings=profile", GetHandedSettings());
    m_Plugin.m_strProfile = L"Other";
    EXPECT_EQ(L"Settings=", GetHandedSettings()) << "no way back to the plain ones";
}

TEST_F(EncoderSettingsTest, OfTheHostGoAheadAndTheStoreIsNotAsked)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetOption(STORE, L"Settings", L"stored");
    m_Plugin.m_strSettings = L"own";
    m_Plugin.m_strProfile = L"Archive";
    EXPECT_EQ(L"Settings=own", GetHandedSettings());
    EXPECT_EQ(0, tools->GetCount(FAKE_COUNT_OPTIONS_CREATED));
}

TEST_F(EncoderSettingsTest, AreEmptyByDefault)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    EXPECT_EQ(L"Settings=", GetHandedSettings());
}

TEST_F(EncoderSettingsTest, AreEmptyWithoutToolsLibrary)
{
    GetProcessInfo(true)->SetSharedLibraryPath(L"/nowhere/");
    EXPECT_EQ(L"Settings=", GetHandedSettings());
}
