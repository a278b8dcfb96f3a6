#include "LogSetting.h"
#include <filesystem>
#include <gtest/gtest.h>

namespace
{
struct SETTING_CASE
{
    const char* pName;
    const char* pText;
    bool bGood;
    bool bAll;
    std::vector<int> aryAreas;
    const char* pFile;
};

const SETTING_CASE s_arySettingCases[] = {
    {"NotSet", nullptr, true, false, {}, ""},
    {"Empty", "", true, false, {}, ""},
    {"OneAreaToStderr", "4096:stderr", true, false, {4096}, ""},
    {"OneAreaToAFile", "4096:/var/tmp/a.log", true, false, {4096}, "/var/tmp/a.log"},
    {"SeveralAreas", "4096,1:/a", true, false, {4096, 1}, "/a"},
    {"AnAreaTwice", "1,1:/a", true, false, {1}, "/a"},
    {"AllAreas", "all:/a", true, true, {}, "/a"},
    {"AllToStderr", "all:stderr", true, true, {}, ""},
    {"AreaZero", "0:/a", true, false, {0}, "/a"},
    {"LargestArea", "2147483647:/a", true, false, {2147483647}, "/a"},
    {"FileWithColons", "1:/a:b:stderr", true, false, {1}, "/a:b:stderr"},
    {"NoColon", "4096", false, false, {}, ""},
    {"NoTarget", "4096:", false, false, {}, ""},
    {"NoArea", ":stderr", false, false, {}, ""},
    {"EmptyArea", "1,,2:stderr", false, false, {}, ""},
    {"CommaAtTheEnd", "1,:stderr", false, false, {}, ""},
    {"NoNumber", "drive:stderr", false, false, {}, ""},
    {"NumberWithARest", "1x:stderr", false, false, {}, ""},
    {"Blank", "1, 2:stderr", false, false, {}, ""},
    {"Negative", "-1:stderr", false, false, {}, ""},
    {"TooLarge", "2147483648:stderr", false, false, {}, ""},
    {"AllAmongOthers", "all,1:stderr", false, false, {}, ""},
};
} // namespace

TEST(LogSetting, ReadsItsForm)
{
    for (const SETTING_CASE& each : s_arySettingCases)
    {
        SCOPED_TRACE(each.pName);
        LogSetting setting;
        setting.m_bAll = true; // from before
        EXPECT_EQ(setting.Parse(each.pText), each.bGood);
        EXPECT_EQ(setting.m_bAll, each.bAll);
        EXPECT_EQ(setting.m_aryAreas, each.aryAreas);
        EXPECT_EQ(setting.m_strFile, each.pFile);
        EXPECT_EQ(setting.IsAnyOn(), each.bAll || !each.aryAreas.empty());
    }
}

TEST(LogSetting, ARelativeFileStaysWhereItIs)
{
    LogSetting setting;
    ASSERT_TRUE(setting.Parse("1:a.log"));
    EXPECT_EQ(setting.m_strFile, (std::filesystem::current_path() / "a.log").string());
}

TEST(LogSetting, AnAreaIsSelectedByItsNumberAndNotByItsBits)
{
    LogSetting setting;
    ASSERT_TRUE(setting.Parse("4096,3:stderr"));
    EXPECT_TRUE(setting.IsOn(4096));
    EXPECT_TRUE(setting.IsOn(3));
    for (int nArea : {0, 1, 2, 4097, 4099, -1})
        EXPECT_FALSE(setting.IsOn(nArea)) << nArea;
    ASSERT_TRUE(setting.Parse("all:stderr"));
    for (int nArea : {0, 1, 4096, -1})
        EXPECT_TRUE(setting.IsOn(nArea)) << nArea;
}
