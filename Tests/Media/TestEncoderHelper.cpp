#include "Encoder/FakeEncoder.h"
#include "EncoderError.h"
#include "EncoderHelper.h"
#include "LyCoreLib/RawTable.h"
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <type_traits>

namespace
{
class Callback : public ILyEncoderCallback
{
public:
    void OnFinished(ILyEncoder* pEncoder) override { Note("finished", pEncoder); }
    void OnError(ILyEncoder* pEncoder, int nCode, const wchar_t* pText) override
    {
        Note("error", pEncoder);
        m_nNumber = nCode;
        m_strText = pText;
    }
    void OnProgress(ILyEncoder* pEncoder, int nPercent) override
    {
        Note("progress", pEncoder);
        m_nNumber = nPercent;
    }
    void Note(const char* pEvent, ILyEncoder* pEncoder)
    {
        m_strEvent = pEvent;
        m_pEncoder = pEncoder;
    }
    std::string m_strEvent;
    std::wstring m_strText;
    int m_nNumber = 0;
    ILyEncoder* m_pEncoder = nullptr;
};

// A file feed as the host sees it: an object that is destroyed.
class Feed final : public CEncoderPluginFileBasedEncodingEmulator
{
public:
    explicit Feed(FakeEncoder& fake) : m_Fake(fake) {}
    ~Feed() override { m_Fake.OnEvent("Destroy feed"); }

private:
    FakeEncoder& m_Fake;
};

class EncoderPluginTest : public ::testing::Test
{
protected:
    EncoderPluginTest()
    {
        m_Plugin.m_strLibrary = FakeEncoder::GetLibrary();
        m_Plugin.m_strSettings = L"-8";
    }
    FakeEncoder m_Fake; // outlives the plug-in
    Callback m_Callback;
    CEncoderPlugin m_Plugin;
    unsigned char m_aryData[4] = {'a', 'b', 'c', 'd'};
};
} // namespace

// ---- Layout

TEST(EncoderPlugin, MembersLieInTheirOrder)
{
    CEncoderPlugin plugin;
    const void* const aryMembers[] = {&plugin,
                                      &plugin.m_strName,
                                      &plugin.m_strDescription,
                                      &plugin.m_strLibrary,
                                      &plugin.m_nParameter,
                                      &plugin.m_strProfile,
                                      &plugin.m_strSettings,
                                      &plugin.m_Library,
                                      &plugin.m_pEncoder,
                                      &plugin.m_pEmulator,
                                      &plugin.m_pCallback};
    for (size_t i = 1; i < std::size(aryMembers); ++i)
        EXPECT_LT(aryMembers[i - 1], aryMembers[i]) << i;
}

TEST(EncoderPlugin, StartsWithoutAnything)
{
    CEncoderPlugin plugin;
    EXPECT_TRUE(plugin.m_strName.IsEmpty() && plugin.m_strLibrary.IsEmpty() && plugin.m_strSettings.IsEmpty());
    EXPECT_EQ(0, plugin.m_nParameter);
    EXPECT_EQ(nullptr, plugin.m_Library.m_hLibrary);
    EXPECT_EQ(nullptr, plugin.m_pEncoder.Get());
    EXPECT_EQ(nullptr, plugin.m_pEmulator.Get());
    EXPECT_EQ(nullptr, plugin.m_pCallback);
    EXPECT_TRUE(std::has_virtual_destructor_v<CEncoderPlugin>);
}

TEST_F(EncoderPluginTest, EncodersAreCalledInTheirSlots)
{
    ASSERT_TRUE(m_Plugin.Open(nullptr, false));
    m_Fake.m_aryEvents.clear();
    m_Fake.m_Infos[L"Last Error"] = L"none";
    ILyEncoder* pEncoder = m_Plugin.m_pEncoder.Detach();
    CallSlot<void>(pEncoder, 2);
    EXPECT_TRUE(CallSlot<bool>(pEncoder, 3, static_cast<unsigned char*>(m_aryData), 4));
    EXPECT_TRUE(CallSlot<bool>(pEncoder, 4));
    wchar_t* pText = CallSlot<wchar_t*>(pEncoder, 5, L"Last Error");
    EXPECT_STREQ(L"none", pText);
    LyCom::SysFreeString(pText);
    CallSlot<void>(pEncoder, 6, L"Settings", L"-5");
    CallSlot<void>(pEncoder, 1); // the destructor that also frees
    EXPECT_EQ("Stop, Finish, SetInfo, Destroy", m_Fake.GetEvents());
    EXPECT_EQ("abcd", m_Fake.m_strData);
    EXPECT_EQ(L"Settings=-5", m_Fake.m_arySettings.back());
}

TEST_F(EncoderPluginTest, CallbacksAreCalledInTheirSlots)
{
    ILyEncoder* const pEncoder = reinterpret_cast<ILyEncoder*>(m_aryData);
    CallSlot<void>(&m_Callback, 0, pEncoder);
    EXPECT_EQ("finished", m_Callback.m_strEvent);
    EXPECT_EQ(pEncoder, m_Callback.m_pEncoder);
    CallSlot<void>(&m_Callback, 1, pEncoder, -1, L"full");
    EXPECT_EQ("error", m_Callback.m_strEvent);
    EXPECT_EQ(-1, m_Callback.m_nNumber);
    EXPECT_EQ(L"full", m_Callback.m_strText);
    CallSlot<void>(&m_Callback, 2, pEncoder, 42);
    EXPECT_EQ("progress", m_Callback.m_strEvent);
    EXPECT_EQ(42, m_Callback.m_nNumber);
}

// ---- Open

TEST_F(EncoderPluginTest, OpenAttachesTheLibraryMakesTheEncoderAndHandsItItsSettings)
{
    m_Plugin.m_nParameter = -7;
    EXPECT_TRUE(m_Plugin.Open(&m_Callback, false));
    EXPECT_EQ("Attach, Create, SetInfo", m_Fake.GetEvents());
    EXPECT_EQ(-7, m_Fake.m_nParameter);
    EXPECT_EQ(&m_Callback, m_Fake.m_pCallback);
    EXPECT_EQ(&m_Callback, m_Plugin.m_pCallback);
    EXPECT_EQ(std::vector<std::wstring>{L"Settings=-8"}, m_Fake.m_arySettings);
    EXPECT_NE(nullptr, m_Plugin.m_pEncoder.Get());
    EXPECT_EQ((LyPtr<ILyEncoder, ILyEncoder>::OWNED), m_Plugin.m_pEncoder.GetFlags());
}

TEST_F(EncoderPluginTest, OpenWithoutForceLeavesAnEncoderAlone)
{
    ASSERT_TRUE(m_Plugin.Open(&m_Callback, false));
    ILyEncoder* pEncoder = m_Plugin.m_pEncoder;
    m_Fake.m_aryEvents.clear();
    EXPECT_FALSE(m_Plugin.Open(nullptr, false));
    EXPECT_EQ("", m_Fake.GetEvents());
    EXPECT_EQ(pEncoder, m_Plugin.m_pEncoder.Get());
    EXPECT_EQ(&m_Callback, m_Plugin.m_pCallback);
}

TEST_F(EncoderPluginTest, OpenWithForceClosesFirst)
{
    ASSERT_TRUE(m_Plugin.Open(&m_Callback, false));
    EXPECT_TRUE(m_Plugin.Open(nullptr, true));
    EXPECT_EQ("Attach, Create, SetInfo, Destroy, Detach, Attach, Create, SetInfo", m_Fake.GetEvents());
    EXPECT_EQ(nullptr, m_Plugin.m_pCallback);
}

TEST_F(EncoderPluginTest, WithoutLibraryThereIsNoEncoder)
{
    for (const wchar_t* pLibrary : {L"", L"/nowhere/enc_none.so"})
    {
        m_Plugin.m_strLibrary = pLibrary;
        EXPECT_FALSE(m_Plugin.Open(&m_Callback, false));
        EXPECT_EQ(&m_Callback, m_Plugin.m_pCallback) << "taken even so";
        EXPECT_EQ(nullptr, m_Plugin.m_pEncoder.Get());
    }
}

TEST_F(EncoderPluginTest, ALibraryWithoutTheEntryGivesNoEncoderAndGoesWithClose)
{
    m_Plugin.m_strLibrary = FakeEncoder::GetLibraryWithoutEntry();
    EXPECT_FALSE(m_Plugin.Open(nullptr, false));
    EXPECT_EQ("Attach", m_Fake.GetEvents());
    m_Plugin.Close();
    EXPECT_EQ("Attach, Detach", m_Fake.GetEvents());
}

TEST_F(EncoderPluginTest, AnEntryThatMakesNoEncoderGivesNone)
{
    m_Fake.m_bMakesEncoder = false;
    EXPECT_FALSE(m_Plugin.Open(nullptr, false));
    EXPECT_EQ("Attach, Create", m_Fake.GetEvents());
    EXPECT_EQ(nullptr, m_Plugin.m_pEncoder.Get());
}

TEST_F(EncoderPluginTest, AnEntryThatThrowsGivesNone)
{
    m_Fake.m_bThrowsAtCreation = true;
    EXPECT_FALSE(m_Plugin.Open(nullptr, false));
    EXPECT_EQ(nullptr, m_Plugin.m_pEncoder.Get());
}

// ---- Feeding

TEST_F(EncoderPluginTest, DataIsAcceptedRefusedOrHasNowhereToGo)
{
    EXPECT_EQ(8, m_Plugin.EncodeBuffer(m_aryData, 4)) << "no encoder";
    ASSERT_TRUE(m_Plugin.Open(nullptr, false));
    m_Fake.m_nPiecesTaken = 2;
    EXPECT_EQ(8, m_Plugin.EncodeBuffer(nullptr, 4)) << "no data";
    EXPECT_EQ(0, m_Plugin.EncodeBuffer(m_aryData, 4));
    EXPECT_EQ(0, m_Plugin.EncodeBuffer(m_aryData, 0));
    EXPECT_EQ(-1, m_Plugin.EncodeBuffer(m_aryData, 3));
    EXPECT_EQ((std::vector<int>{4, 0, 3}), m_Fake.m_aryPieces);
}

TEST_F(EncoderPluginTest, TheEndOfInputIsAnsweredByTheEncoder)
{
    EXPECT_FALSE(m_Plugin.FinishBufferInput());
    ASSERT_TRUE(m_Plugin.Open(nullptr, false));
    EXPECT_TRUE(m_Plugin.FinishBufferInput());
    m_Fake.m_bFinishes = false;
    EXPECT_FALSE(m_Plugin.FinishBufferInput());
}

// ---- Infos

TEST_F(EncoderPluginTest, AnInfoOpensTheEncoderWithoutCallback)
{
    m_Fake.m_Infos[L"Last Error"] = L"The disk is full.";
    EXPECT_EQ(LyString(L"The disk is full."), m_Plugin.GetInfo(L"Last Error"));
    EXPECT_EQ("Attach, Create, SetInfo", m_Fake.GetEvents());
    EXPECT_EQ(nullptr, m_Fake.m_pCallback);
}

TEST_F(EncoderPluginTest, AnInfoAsksTheEncoderThatIsThere)
{
    ASSERT_TRUE(m_Plugin.Open(&m_Callback, false));
    m_Fake.m_Infos[L"Name"] = L"Scripted";
    EXPECT_EQ(LyString(L"Scripted"), m_Plugin.GetInfo(L"Name"));
    EXPECT_TRUE(m_Plugin.GetInfo(L"Unknown").IsEmpty()) << "null is the empty answer";
    EXPECT_EQ("Attach, Create, SetInfo", m_Fake.GetEvents());
    EXPECT_EQ(&m_Callback, m_Plugin.m_pCallback);
}

TEST(EncoderPlugin, AnInfoWithoutEncoderIsEmpty) { EXPECT_TRUE(CEncoderPlugin().GetInfo(L"Last Error").IsEmpty()); }

// ---- Stop and Close

TEST_F(EncoderPluginTest, StopStopsTheEncoder)
{
    m_Plugin.Stop(); // without one, nothing
    EXPECT_EQ("", m_Fake.GetEvents());
    ASSERT_TRUE(m_Plugin.Open(nullptr, false));
    m_Plugin.Stop();
    EXPECT_EQ("Attach, Create, SetInfo, Stop", m_Fake.GetEvents());
}

TEST_F(EncoderPluginTest, StopWithAFeedDestroysItAndDoesNotStopTheEncoder)
{
    ASSERT_TRUE(m_Plugin.Open(nullptr, false));
    m_Fake.m_aryEvents.clear();
    m_Plugin.m_pEmulator.Set(new Feed(m_Fake), true, false);
    m_Plugin.Stop();
    EXPECT_EQ("Destroy feed", m_Fake.GetEvents());
    EXPECT_EQ(nullptr, m_Plugin.m_pEmulator.Get());
    m_Plugin.Stop();
    EXPECT_EQ("Destroy feed, Stop", m_Fake.GetEvents());
}

TEST_F(EncoderPluginTest, AFeedThatIsNotOwnedIsLeftToItsOwner)
{
    Feed feed(m_Fake);
    m_Plugin.m_pEmulator.Set(&feed, false, false);
    m_Plugin.Stop();
    EXPECT_EQ("", m_Fake.GetEvents());
    EXPECT_EQ(nullptr, m_Plugin.m_pEmulator.Get());
}

TEST_F(EncoderPluginTest, CloseDeletesTheEncoderBeforeItsLibraryGoes)
{
    ASSERT_TRUE(m_Plugin.Open(nullptr, false));
    m_Plugin.Close();
    EXPECT_EQ("Attach, Create, SetInfo, Destroy, Detach", m_Fake.GetEvents());
    EXPECT_EQ(nullptr, m_Plugin.m_pEncoder.Get());
    EXPECT_FALSE(m_Plugin.m_Library.GetIsLoaded());
    m_Plugin.Close();
    EXPECT_EQ("Attach, Create, SetInfo, Destroy, Detach", m_Fake.GetEvents());
}

TEST(EncoderPlugin, TheLibraryIsGoneBeforeAFeedIsDestroyed)
{
    FakeEncoder fake;
    {
        CEncoderPlugin plugin;
        plugin.m_strLibrary = FakeEncoder::GetLibrary();
        plugin.m_strSettings = L"-8";
        ASSERT_TRUE(plugin.Open(nullptr, false));
        plugin.m_pEmulator.Set(new Feed(fake), true, false);
        fake.m_aryEvents.clear();
    }
    EXPECT_EQ("Destroy, Detach, Destroy feed", fake.GetEvents());
}

TEST(EncoderPlugin, TheLibraryIsReallyUnloaded)
{
    const LyStringUTF8 library(FakeEncoder::GetLibrary());
    {
        FakeEncoder fake;
        CEncoderPlugin plugin;
        plugin.m_strLibrary = FakeEncoder::GetLibrary();
        plugin.m_strSettings = L"-8";
        ASSERT_TRUE(plugin.Open(nullptr, false));
        void* hLibrary = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
        ASSERT_NE(nullptr, hLibrary);
        dlclose(hLibrary);
    }
    EXPECT_EQ(nullptr, dlopen(library, RTLD_LAZY | RTLD_NOLOAD));
}
