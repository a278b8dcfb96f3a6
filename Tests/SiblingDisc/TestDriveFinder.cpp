#include "DriveFinder.h"
#include "DriveWatch.h"
#include "TempFolder.h"
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <libudev.h>

namespace
{
namespace fs = std::filesystem;

// A tree as the kernel shows it: the block device below its SCSI device, and links to it.
class TreeTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        fs::create_directories(m_Folder.GetPath("class/block"));
        fs::create_directories(m_Folder.GetPath("block"));
    }
    void AddBlock(const std::string& strName, const std::string& strType)
    {
        const std::string strDevice = "devices/" + strName + "_scsi";
        (void)m_Folder.Write(strDevice + "/type", strType + "\n");
        (void)m_Folder.Write(strDevice + "/vendor", "ACME    \n");
        (void)m_Folder.Write(strDevice + "/model", "DVD " + strName + "     \n");
        (void)m_Folder.Write(strDevice + "/rev", "1.23\n");
        const std::string strBlock = m_Folder.GetPath(strDevice + "/block/" + strName);
        fs::create_directories(strBlock);
        fs::create_symlink(m_Folder.GetPath(strDevice), strBlock + "/device");
        fs::create_symlink(strBlock, m_Folder.GetPath("block/" + strName));
        fs::create_symlink(strBlock, m_Folder.GetPath("class/block/" + strName));
    }
    void Remove(const std::string& strName)
    {
        fs::remove(m_Folder.GetPath("block/" + strName));
        fs::remove(m_Folder.GetPath("class/block/" + strName));
    }
    std::string Find() const { return Show(FindDrivesInSysfs(m_Folder.GetPath(), "/dev")); }
    static std::string Show(const std::vector<FOUND_DRIVE>& aryDrives)
    {
        std::string str;
        for (const FOUND_DRIVE& drive : aryDrives)
            str += (str.empty() ? "" : " ") + drive.m_strNode;
        return str;
    }
    TempFolder m_Folder;
};
} // namespace

TEST_F(TreeTest, DrivesAreFoundByNameOrByTypeAndEachOnce)
{
    AddBlock("sr0", "5");
    AddBlock("sda", "0");
    AddBlock("scd7", "5"); // another driver's name
    AddBlock("srx", "0");  // only looks like one
    AddBlock("sr", "0");
    EXPECT_EQ("/dev/sr0 /dev/scd7", Find());
}

TEST_F(TreeTest, TheOrderIsThatOfTheNumbers)
{
    for (const char* pName : {"sr10", "sr2", "sr0", "sr9"})
        AddBlock(pName, "5");
    EXPECT_EQ("/dev/sr0 /dev/sr2 /dev/sr9 /dev/sr10", Find());
}

TEST(NodeOrder, NumbersThenNames)
{
    EXPECT_TRUE(IsNodeAhead("/dev/sr2", "/dev/sr10"));
    EXPECT_FALSE(IsNodeAhead("/dev/sr10", "/dev/sr2"));
    EXPECT_TRUE(IsNodeAhead("/dev/cd1", "/dev/sr1"));
    EXPECT_TRUE(IsNodeAhead("/dev/cd", "/dev/sr0")); // without a number
    EXPECT_FALSE(IsNodeAhead("/dev/sr1", "/dev/sr1"));
    EXPECT_TRUE(IsNodeAhead("", "7"));
    (void)IsNodeAhead("/dev/sr99999999999999999999", "/dev/sr1");
}

TEST_F(TreeTest, NamesComeWithoutTheirPadding)
{
    AddBlock("sr3", "5");
    const std::vector<FOUND_DRIVE> aryDrives = FindDrivesInSysfs(m_Folder.GetPath(), "/dev");
    ASSERT_EQ(1u, aryDrives.size());
    EXPECT_EQ((FOUND_DRIVE{"/dev/sr3", "ACME", "DVD sr3", "1.23"}), aryDrives[0]);
}

TEST_F(TreeTest, ADriveThatTellsNothingIsStillThere)
{
    fs::create_directories(m_Folder.GetPath("class/block/sr0"));
    EXPECT_EQ("/dev/sr0", Find());
    fs::create_directories(m_Folder.GetPath("block/a!b5/device"));
    (void)m_Folder.Write("block/a!b5/device/type", "5");
    EXPECT_EQ("/dev/sr0 /dev/a/b5", Find()); // the tree's way to write a slash
}

TEST_F(TreeTest, PartitionsAreNoDrives)
{
    (void)m_Folder.Write("class/block/xd1/partition", "1");
    (void)m_Folder.Write("class/block/xd1/device/type", "5");
    EXPECT_EQ("", Find());
}

TEST_F(TreeTest, EitherOfTheTwoFoldersWillDo)
{
    AddBlock("sr0", "5");
    fs::remove_all(m_Folder.GetPath("block"));
    EXPECT_EQ("/dev/sr0", Find());
    fs::remove_all(m_Folder.GetPath("class"));
    EXPECT_EQ("", Find());
    EXPECT_TRUE(FindDrivesInSysfs("/no/such/tree", "/dev").empty());
}

TEST_F(TreeTest, WithoutUdevEveryQuestionLooksAnew)
{
    DriveWatch watch(m_Folder.GetPath("run"), m_Folder.GetPath(), "/dev");
    EXPECT_FALSE(watch.IsWatching());
    EXPECT_TRUE(watch.HasChanged());
    EXPECT_EQ("", Show(watch.Find()));
    AddBlock("sr0", "5");
    AddBlock("sr1", "5");
    EXPECT_TRUE(watch.HasChanged());
    EXPECT_EQ("/dev/sr0 /dev/sr1", Show(watch.Find()));
    Remove("sr0");
    EXPECT_TRUE(watch.HasChanged());
    EXPECT_EQ("/dev/sr1", Show(watch.Find()));
}

// The service's socket is there, but nothing of the kind is plugged in: the tree has the last word.
TEST_F(TreeTest, WhereUdevKnowsNoDriveTheTreeIsAsked)
{
    (void)m_Folder.Write("run/udev/control", "");
    udev* pUdev = udev_new();
    ASSERT_NE(nullptr, pUdev);
    const bool bHasDrive = !FindDrivesByUdev(pUdev).empty();
    (void)udev_unref(pUdev);
    if (bHasDrive)
        GTEST_SKIP() << "this machine has a drive";
    AddBlock("sr0", "5");
    DriveWatch watch(m_Folder.GetPath("run"), m_Folder.GetPath(), "/dev");
    EXPECT_EQ("/dev/sr0", Show(watch.Find()));
    if (watch.IsWatching())
        (void)watch.HasChanged(); // does not wait for messages
}

TEST(UdevList, WithoutUdevItIsEmpty) { EXPECT_TRUE(FindDrivesByUdev(nullptr).empty()); }

// Both ways agree on this machine, whatever it has.
TEST(UdevList, NodesAreInTheDeviceFolderAndInOrder)
{
    udev* pUdev = udev_new();
    const std::vector<FOUND_DRIVE> aryDrives = FindDrivesByUdev(pUdev);
    (void)udev_unref(pUdev);
    for (const FOUND_DRIVE& drive : aryDrives)
        EXPECT_TRUE(drive.m_strNode.starts_with("/dev/"));
    EXPECT_TRUE(std::is_sorted(aryDrives.begin(), aryDrives.end(),
                               [](const FOUND_DRIVE& a, const FOUND_DRIVE& b)
                               { return IsNodeAhead(a.m_strNode, b.m_strNode); }));
}
