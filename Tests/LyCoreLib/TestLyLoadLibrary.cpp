#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include "Tools/FakeEvents.h"
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{
const char* const SIBLINGS = RONDEL_FAKES_DIR "/siblings/";
const char* const FACTORY = RONDEL_FAKES_DIR "/siblings/libLyWMFactory.dylib"; // has "Attach" and "Detach", no more

LyString Wide(const std::string& str)
{
    return LyString().FromUTF8(reinterpret_cast<const unsigned char*>(str.c_str()));
}

bool GetIsMapped(const std::string& strPath)
{
    void* hLibrary = dlopen(strPath.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (hLibrary != nullptr)
        dlclose(hLibrary);
    return hLibrary != nullptr;
}

// Gives itself to the libraries as the handle of this module, and collects what they write down.
class LyLoadLibraryTest : public testing::Test, public IFakeEvents
{
protected:
    LyLoadLibraryTest() { CProcessInfo::s_hInstance = reinterpret_cast<HINSTANCE__*>(static_cast<IFakeEvents*>(this)); }
    ~LyLoadLibraryTest() override { CProcessInfo::s_hInstance = nullptr; }

    void Record(const char* pEvent) override { m_aryEvents.push_back(pEvent); }

    using EVENTS = std::vector<std::string>;
    EVENTS m_aryEvents;
};

TEST_F(LyLoadLibraryTest, DefaultIsNotLoaded)
{
    LyLoadLibrary library;
    EXPECT_FALSE(library.GetIsLoaded());
    EXPECT_EQ(nullptr, library.m_hLibrary);
    EXPECT_EQ(sizeof(void*), sizeof library);
}

TEST_F(LyLoadLibraryTest, NullPathInConstructorMeansLater)
{
    LyLoadLibrary library(nullptr);
    EXPECT_FALSE(library.GetIsLoaded());
    EXPECT_TRUE(library.Load(Wide(FACTORY), true, 0));
}

TEST_F(LyLoadLibraryTest, PathInConstructorLoadsAndDestructorDetaches)
{
    {
        LyLoadLibrary library(Wide(FACTORY));
        EXPECT_TRUE(library.GetIsLoaded());
        EXPECT_EQ(EVENTS{"factory Attach"}, m_aryEvents);
        EXPECT_TRUE(GetIsMapped(FACTORY));
    }
    EXPECT_EQ((EVENTS{"factory Attach", "factory Detach"}), m_aryEvents);
    EXPECT_FALSE(GetIsMapped(FACTORY));
}

TEST_F(LyLoadLibraryTest, BadPathsAreRefused)
{
    LyLoadLibrary library;
    EXPECT_FALSE(library.Load(nullptr, true, 0));
    EXPECT_FALSE(library.Load(L"", true, 0));
    EXPECT_FALSE(library.Load(L"/nowhere/libNothing.dylib", true, 0));
    EXPECT_FALSE(library.Load(Wide(__FILE__), true, 0)) << "a file that is no library";
    EXPECT_FALSE(library.GetIsLoaded());
}

TEST_F(LyLoadLibraryTest, AttachIsOnlyCalledOnRequestDetachAlways)
{
    LyLoadLibrary library;
    EXPECT_TRUE(library.Load(Wide(FACTORY), false, 0));
    EXPECT_EQ(EVENTS{}, m_aryEvents);
    // The fake learns of its recorder by "Attach", so a second user of the same library tells it.
    LyLoadLibrary second(Wide(FACTORY));
    m_aryEvents.clear();
    library.Unload();
    EXPECT_EQ(EVENTS{"factory Detach"}, m_aryEvents);
}

TEST_F(LyLoadLibraryTest, LoadLetsGoOfTheFormerLibrary)
{
    LyLoadLibrary library(Wide(FACTORY));
    EXPECT_TRUE(library.Load(Wide(std::string(SIBLINGS) + "libLyDisc.dylib"), true, 0));
    EXPECT_EQ((EVENTS{"factory Attach", "factory Detach", "disc Attach"}), m_aryEvents);
    EXPECT_FALSE(GetIsMapped(FACTORY));
}

TEST_F(LyLoadLibraryTest, FailedLoadLeavesTheFormerLibraryUnloaded)
{
    LyLoadLibrary library(Wide(FACTORY));
    EXPECT_FALSE(library.Load(L"", true, 0));
    EXPECT_EQ((EVENTS{"factory Attach", "factory Detach"}), m_aryEvents);
}

TEST_F(LyLoadLibraryTest, UnloadTwiceDetachesOnce)
{
    LyLoadLibrary library(Wide(FACTORY));
    library.Unload();
    library.Unload();
    EXPECT_EQ((EVENTS{"factory Attach", "factory Detach"}), m_aryEvents);
}

TEST_F(LyLoadLibraryTest, ExportsAreFoundByNarrowAndWideName)
{
    LyLoadLibrary library;
    EXPECT_EQ(nullptr, library.GetProcAddress("Attach")) << "not loaded";
    EXPECT_EQ(nullptr, library.GetProcAddress(L"Attach"));
    ASSERT_TRUE(library.Load(Wide(FACTORY), true, 0));
    EXPECT_NE(nullptr, library.GetProcAddress("Attach"));
    EXPECT_EQ(library.GetProcAddress("Attach"), library.GetProcAddress(L"Attach"));
    EXPECT_EQ(nullptr, library.GetProcAddress("NoSuchExport"));
    EXPECT_EQ(nullptr, library.GetProcAddress(L"NoSuchExport"));
    EXPECT_EQ(nullptr, library.GetProcAddress(static_cast<const char*>(nullptr)));
    EXPECT_EQ(nullptr, library.GetProcAddress(static_cast<const wchar_t*>(nullptr)));
}

TEST_F(LyLoadLibraryTest, PathGoesToTheSystemAsUTF8)
{
    std::filesystem::path directory =
        std::filesystem::path(testing::TempDir()) / ("load \xc3\xa4\xe2\x82\xac " + std::to_string(getpid()));
    std::filesystem::create_directory(directory);
    std::filesystem::path file = directory / "libLyWMFactory.dylib";
    std::filesystem::copy_file(FACTORY, file, std::filesystem::copy_options::overwrite_existing);
    LyLoadLibrary library;
    EXPECT_TRUE(library.Load(Wide(file.string()), true, 0));
    EXPECT_EQ(EVENTS{"factory Attach"}, m_aryEvents);
    library.Unload();
    std::filesystem::remove_all(directory);
}

TEST_F(LyLoadLibraryTest, LibraryThatThrowsInAttachIsNotLoaded)
{
    const char* pPath = RONDEL_FAKES_DIR "/tools_attach_throws/libLyTools.dylib";
    LyLoadLibrary library;
    EXPECT_FALSE(library.Load(Wide(pPath), true, 0));
    EXPECT_EQ(nullptr, library.m_hLibrary);
    EXPECT_FALSE(GetIsMapped(pPath));
    EXPECT_TRUE(library.Load(Wide(pPath), false, 0)) << "without attach there is nothing to throw";
}

TEST_F(LyLoadLibraryTest, LibraryThatThrowsInDetachIsUnloadedAllTheSame)
{
    const char* pPath = RONDEL_FAKES_DIR "/tools_detach_throws/libLyTools.dylib";
    LyLoadLibrary library;
    ASSERT_TRUE(library.Load(Wide(pPath), true, 0));
    library.Unload();
    EXPECT_EQ(nullptr, library.m_hLibrary);
    EXPECT_FALSE(GetIsMapped(pPath));
}

TEST_F(LyLoadLibraryTest, TwoUsersOfOneLibraryDoNotDisturbEachOther)
{
    LyLoadLibrary first(Wide(FACTORY));
    LyLoadLibrary second(Wide(FACTORY));
    EXPECT_EQ(first.m_hLibrary, second.m_hLibrary);
    second.Unload();
    EXPECT_TRUE(GetIsMapped(FACTORY));
    EXPECT_NE(nullptr, first.GetProcAddress("Attach"));
}
} // namespace
