#include "DeviceError.h"
#include <algorithm>
#include <cerrno>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace
{
constexpr const char* USUAL_GROUP = "cdrom"; // of optical drives
constexpr size_t NAME_BUFFER_BYTES = 16384;  // for one entry of the group or user database, members included

std::string GetGroupName(gid_t nGroup)
{
    std::vector<char> buffer(NAME_BUFFER_BYTES);
    group entry = {};
    group* pFound = nullptr;
    if (getgrgid_r(nGroup, &entry, buffer.data(), buffer.size(), &pFound) == 0 && pFound != nullptr)
        return pFound->gr_name;
    return std::to_string(nGroup);
}

std::string GetUserName()
{
    std::vector<char> buffer(NAME_BUFFER_BYTES);
    passwd entry = {};
    passwd* pFound = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &pFound) == 0 && pFound != nullptr)
        return pFound->pw_name;
    return "$USER";
}

bool IsInGroup(gid_t nGroup)
{
    if (geteuid() == 0 || getegid() == nGroup)
        return true;
    const int nGroups = getgroups(0, nullptr);
    std::vector<gid_t> aryGroups(static_cast<size_t>(std::max(0, nGroups)));
    const int nRead = getgroups(static_cast<int>(aryGroups.size()), aryGroups.data());
    aryGroups.resize(static_cast<size_t>(std::max(0, nRead)));
    return std::find(aryGroups.begin(), aryGroups.end(), nGroup) != aryGroups.end();
}

std::string GetJoinCommand(const std::string& strGroup)
{
    return "'sudo usermod -aG " + strGroup + " " + GetUserName() + "'";
}
} // namespace

DEVICE_RIGHTS GetDeviceRights(const std::string& strNode)
{
    DEVICE_RIGHTS rights;
    struct stat status;
    if (stat(strNode.c_str(), &status) != 0)
        return rights;
    rights.m_bGroupMayUse = (status.st_mode & S_IRGRP) != 0;
    rights.m_bMember = IsInGroup(status.st_gid);
    if (status.st_gid != 0)
        rights.m_strGroup = GetGroupName(status.st_gid);
    return rights;
}

std::string GetDeviceAccessText(const std::string& strNode, const DEVICE_RIGHTS& rights)
{
    if (rights.m_strGroup.empty() || !rights.m_bGroupMayUse)
    {
        const std::string strGroup = rights.m_strGroup.empty() ? USUAL_GROUP : rights.m_strGroup;
        return strNode + " may not be used by you or your groups; give it to the group " + strGroup +
               " with 'sudo chgrp " + strGroup + " " + strNode + "' and 'sudo chmod g+rw " + strNode +
               "', join that group with " + GetJoinCommand(strGroup) + " and log in again.";
    }
    return strNode + " may be used by the group " + rights.m_strGroup + " only; join it with " +
           GetJoinCommand(rights.m_strGroup) + " and log in again" +
           (rights.m_bMember ? ", or hand the drive to the container that this program runs in." : ".");
}

std::string GetReadOnlyText(const std::string& strNode, const DEVICE_RIGHTS& rights)
{
    const std::string strGroup = rights.m_strGroup.empty() ? USUAL_GROUP : rights.m_strGroup;
    return strNode +
           " could be opened for reading only, so its speed cannot be set and its door cannot be locked; to have both, "
           "join the group " +
           strGroup + " with " + GetJoinCommand(strGroup) + " and log in again, or get the right to write to it.";
}

std::string GetDeviceErrorText(const std::string& strNode, int nErrno)
{
    switch (nErrno)
    {
    case EACCES:
    case EPERM:
        return GetDeviceAccessText(strNode, GetDeviceRights(strNode));
    case EBUSY:
    case EAGAIN:
        return strNode + " is in use by another program; close that program, or choose another drive.";
    case ENOMEDIUM:
        return "There is no disc in " + strNode + "; put one in.";
    case ENOENT:
    case ENOTDIR:
    case ELOOP:
    case ENAMETOOLONG:
        return strNode + " is not there; connect the drive, or choose one of those that 'rondel drives' lists.";
    case ENODEV:
    case ENXIO:
    case ESHUTDOWN:
        return "No drive answers behind " + strNode + "; check its cable and its power, then try again.";
    case EROFS:
        return strNode + " is in a file system that can only be read; use the drive's node in /dev.";
    case ENOTTY:
    case ENOSYS:
    case EOPNOTSUPP:
    case ENOTBLK:
        return strNode + " takes no drive commands; choose one of the drives that 'rondel drives' lists.";
    case EMFILE:
    case ENFILE:
        return strNode + " cannot be opened since too many files are open; close some programs and try again.";
    case ENOMEM:
    case ENOBUFS:
        return "There is not enough memory to use " + strNode + "; close some programs and try again.";
    case EIO:
    case ETIMEDOUT:
        return "The drive " + strNode + " does not answer; check its cable, or switch it off and on.";
    default:
        return strNode + " cannot be used (" + std::generic_category().message(nErrno) +
               "); check its cable, or choose another drive.";
    }
}
