#include "DeviceError.h"
#include "TempFolder.h"
#include <cerrno>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
bool Holds(const std::string& strText, const std::string& strPart)
{
    return strText.find(strPart) != std::string::npos;
}

TEST(DeviceError, EverySentenceNamesTheNodeAndAWayOut)
{
    struct ERROR_CASE
    {
        int m_nErrno;
        const char* m_pSays;
        const char* m_pWayOut;
    };
    const ERROR_CASE aryCases[] = {
        {EBUSY, "in use by another program", "close that program"},
        {ENOMEDIUM, "no disc in /dev/sr9", "put one in"},
        {ENOENT, "is not there", "connect the drive"},
        {ENODEV, "No drive answers", "check its cable"},
        {ENXIO, "No drive answers", "check its cable"},
        {EROFS, "can only be read", "use the drive's node in /dev"},
        {ENOTTY, "takes no drive commands", "choose one of the drives"},
        {EMFILE, "too many files are open", "close some programs"},
        {ENOMEM, "not enough memory", "close some programs"},
        {EIO, "does not answer", "switch it off and on"},
        {EXDEV, "Invalid cross-device link", "choose another drive"},
    };
    for (const ERROR_CASE& row : aryCases)
    {
        const std::string strText = GetDeviceErrorText("/dev/sr9", row.m_nErrno);
        EXPECT_TRUE(Holds(strText, "/dev/sr9")) << strText;
        EXPECT_TRUE(Holds(strText, row.m_pSays)) << strText;
        EXPECT_TRUE(Holds(strText, row.m_pWayOut)) << strText;
        EXPECT_EQ('.', strText.back()) << strText;
        EXPECT_FALSE(Holds(strText, "\n")) << strText;
    }
}

TEST(DeviceError, AccessNamesTheGroupToJoin)
{
    const std::string strText = GetDeviceAccessText("/dev/sr0", {"optical", true, false});
    EXPECT_EQ(0u,
              strText.find("/dev/sr0 may be used by the group optical only; join it with 'sudo usermod -aG optical "))
        << strText;
    EXPECT_TRUE(Holds(strText, "log in again.")) << strText;
}

TEST(DeviceError, MemberIsToldOfContainers)
{
    const std::string strText = GetDeviceAccessText("/dev/sr0", {"cdrom", true, true});
    EXPECT_TRUE(Holds(strText, "the group cdrom")) << strText;
    EXPECT_TRUE(Holds(strText, "container")) << strText;
}

TEST(DeviceError, NobodyIsToldToJoinRoot)
{
    const std::string strText = GetDeviceAccessText("/dev/sr0", {"", true, false});
    EXPECT_TRUE(Holds(strText, "sudo chgrp cdrom /dev/sr0")) << strText;
    EXPECT_TRUE(Holds(strText, "usermod -aG cdrom ")) << strText;
    EXPECT_FALSE(Holds(strText, "usermod -aG root ")) << strText;
}

TEST(DeviceError, GroupWithoutRightsHasToGetThem)
{
    const std::string strText = GetDeviceAccessText("/dev/sr0", {"disk", false, false});
    EXPECT_TRUE(Holds(strText, "sudo chmod g+rw /dev/sr0")) << strText;
    EXPECT_TRUE(Holds(strText, "usermod -aG disk ")) << strText;
}

TEST(DeviceError, GroupIsThatOfTheNode)
{
    const group* pGroup = getgrnam("cdrom");
    if (geteuid() != 0 || pGroup == nullptr)
        GTEST_SKIP() << "a file can be given to another group by root only";
    TempFolder folder;
    const std::string strNode = folder.Write("sr0", "");
    ASSERT_EQ(0, chown(strNode.c_str(), 0, pGroup->gr_gid));
    ASSERT_EQ(0, chmod(strNode.c_str(), 0660));
    for (const int nErrno : {EACCES, EPERM})
        EXPECT_TRUE(Holds(GetDeviceErrorText(strNode, nErrno), "join it with 'sudo usermod -aG cdrom ")) << nErrno;
    ASSERT_EQ(0, chown(strNode.c_str(), 0, 54321));
    EXPECT_TRUE(Holds(GetDeviceErrorText(strNode, EACCES), "the group 54321")); // nobody has named it
    ASSERT_EQ(0, chown(strNode.c_str(), 0, pGroup->gr_gid));
    ASSERT_EQ(0, chmod(strNode.c_str(), 0600));
    EXPECT_TRUE(Holds(GetDeviceErrorText(strNode, EACCES), "chmod g+rw"));
}

TEST(DeviceError, RightsOfAMissingNodeAreUnknown)
{
    const DEVICE_RIGHTS rights = GetDeviceRights("/dev/no such drive");
    EXPECT_TRUE(rights.m_strGroup.empty());
    EXPECT_FALSE(rights.m_bMember);
}

TEST(DeviceError, ReadOnlyTellsWhatIsLost)
{
    const std::string strText = GetReadOnlyText("/dev/sr0", {"cdrom", true, false});
    EXPECT_TRUE(Holds(strText, "speed cannot be set")) << strText;
    EXPECT_TRUE(Holds(strText, "door cannot be locked")) << strText;
    EXPECT_TRUE(Holds(strText, "join the group cdrom")) << strText;
}
} // namespace
