#include "ConfigFolder.h"
#include "UserFolders.h"
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace
{
struct FOLDER_CASE
{
    const char* pName;
    const char* pVariable; // of the folder; null: not set
    const char* pHome;
    const char* pConfig; // the folders below home are those of the standard
    const char* pData;
    const char* pState;
};
const FOLDER_CASE s_aryFolderCases[] = {
    {"TheVariableDecides", "/v", "/h", "/v/rondel/", "/v/rondel/", "/v/rondel/"},
    {"OneSlashAtItsEndIsEnough", "/v/", "/h", "/v/rondel/", "/v/rondel/", "/v/rondel/"},
    {"HomeWithoutIt", nullptr, "/h", "/h/.config/rondel/", "/h/.local/share/rondel/", "/h/.local/state/rondel/"},
    {"AnEmptyOneIsNotSet", "", "/h/", "/h/.config/rondel/", "/h/.local/share/rondel/", "/h/.local/state/rondel/"},
    {"ARelativeOneIsNotSet", "v", "/h", "/h/.config/rondel/", "/h/.local/share/rondel/", "/h/.local/state/rondel/"},
    {"NoHome", nullptr, nullptr, "", "", ""},
    {"RelativeHome", nullptr, "h", "", "", ""},
};
class ConfigFolder : public testing::TestWithParam<FOLDER_CASE>
{
};
} // namespace

TEST_P(ConfigFolder, FollowsTheEnvironment)
{
    const FOLDER_CASE& row = GetParam();
    const Environment home("HOME", row.pHome);
    const Environment config("XDG_CONFIG_HOME", row.pVariable);
    const Environment data("XDG_DATA_HOME", row.pVariable);
    const Environment state("XDG_STATE_HOME", row.pVariable);
    EXPECT_EQ(row.pConfig, GetConfigFolder());
    EXPECT_EQ(row.pData, GetDataFolder());
    EXPECT_EQ(row.pState, GetStateFolder());
}
INSTANTIATE_TEST_SUITE_P(Table, ConfigFolder, testing::ValuesIn(s_aryFolderCases),
                         [](const auto& each) { return std::string(each.param.pName); });

TEST(MakeFolder, MakesAllThatIsMissingForTheUserAlone)
{
    const TempFolder folder;
    ASSERT_TRUE(MakeFolder(folder.GetPath("a/b/c/")));
    struct stat status;
    for (const char* pName : {"a", "a/b", "a/b/c"})
    {
        ASSERT_EQ(0, stat(folder.GetPath(pName).c_str(), &status)) << pName;
        EXPECT_EQ(S_IFDIR | 0700U, status.st_mode) << pName;
    }
    EXPECT_TRUE(MakeFolder(folder.GetPath("a/b/c/"))) << "there already";
    EXPECT_TRUE(MakeFolder(folder.GetPath("d"))) << "no slash at the end";
}

TEST(MakeFolder, CannotMakeOneBelowAFile)
{
    const TempFolder folder;
    (void)folder.Write("file", "content");
    EXPECT_FALSE(MakeFolder(folder.GetPath("file/b/")));
    EXPECT_FALSE(MakeFolder(folder.GetPath("file")));
    EXPECT_FALSE(MakeFolder(""));
}
