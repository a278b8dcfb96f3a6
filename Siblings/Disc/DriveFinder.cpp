#include "DriveFinder.h"
#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <libudev.h>
#include <memory>
#include <string_view>

namespace
{
namespace fs = std::filesystem;

constexpr std::string_view DRIVE_NAME = "sr";
constexpr std::string_view DIGITS = "0123456789";
constexpr const char* TYPE_CD_DRIVE = "5"; // SPC-3, 6.4.2: peripheral device type
constexpr size_t MAX_ATTRIBUTE_BYTES = 256;

struct UdevRelease
{
    void operator()(udev_enumerate* p) const { (void)udev_enumerate_unref(p); }
    void operator()(udev_device* p) const { (void)udev_device_unref(p); }
};

bool IsDriveName(std::string_view strName)
{
    return strName.size() > DRIVE_NAME.size() && strName.starts_with(DRIVE_NAME) &&
           strName.find_first_not_of(DIGITS, DRIVE_NAME.size()) == std::string_view::npos;
}

std::string Trim(std::string_view str)
{
    constexpr std::string_view SPACES = " \t\r\n";
    const size_t nFirst = str.find_first_not_of(SPACES);
    if (nFirst == std::string_view::npos)
        return {};
    return std::string(str.substr(nFirst, str.find_last_not_of(SPACES) - nFirst + 1));
}

// One line of the tree, without the padding that SCSI texts have. Empty if it cannot be read.
std::string ReadAttribute(const fs::path& path)
{
    char aryText[MAX_ATTRIBUTE_BYTES];
    std::ifstream file(path, std::ios::binary);
    file.read(aryText, sizeof aryText);
    return Trim({aryText, static_cast<size_t>(file.gcount())});
}

// The texts stand with the SCSI device that the block device belongs to.
FOUND_DRIVE Describe(const fs::path& block, const std::string& strNode)
{
    const fs::path device = block / "device";
    return {strNode, ReadAttribute(device / "vendor"), ReadAttribute(device / "model"), ReadAttribute(device / "rev")};
}

// The tree writes a slash of the node's name as an exclamation mark.
std::string GetNode(const std::string& strDev, std::string strName)
{
    std::replace(strName.begin(), strName.end(), '!', '/');
    return strDev + "/" + strName;
}

void Sort(std::vector<FOUND_DRIVE>& aryDrives)
{
    std::sort(aryDrives.begin(), aryDrives.end(),
              [](const FOUND_DRIVE& drive, const FOUND_DRIVE& other)
              { return IsNodeAhead(drive.m_strNode, other.m_strNode); });
    const auto isSame = [](const FOUND_DRIVE& drive, const FOUND_DRIVE& other)
    { return drive.m_strNode == other.m_strNode; };
    aryDrives.erase(std::unique(aryDrives.begin(), aryDrives.end(), isSame), aryDrives.end());
}

long long GetNodeNumber(const std::string& strNode)
{
    const size_t nLast = strNode.find_last_not_of(DIGITS);
    const size_t nFirst = nLast == std::string::npos ? 0 : nLast + 1;
    long long nNumber = -1; // nodes without a number come first
    (void)std::from_chars(strNode.data() + nFirst, strNode.data() + strNode.size(), nNumber);
    return nNumber;
}

std::string GetText(const char* pText) { return pText != nullptr ? Trim(pText) : std::string(); }

void AddUdevDrive(std::vector<FOUND_DRIVE>& aryDrives, udev_device* pDevice)
{
    const char* pNode = udev_device_get_devnode(pDevice);
    const bool bDrive = GetText(udev_device_get_property_value(pDevice, "ID_CDROM")) == "1" ||
                        IsDriveName(GetText(udev_device_get_sysname(pDevice)));
    const char* pPath = udev_device_get_syspath(pDevice);
    if (bDrive && pNode != nullptr && pPath != nullptr && GetText(udev_device_get_devtype(pDevice)) != "partition")
        aryDrives.push_back(Describe(pPath, pNode));
}
} // namespace

bool IsNodeAhead(const std::string& strNode, const std::string& strOther)
{
    const long long nNumber = GetNodeNumber(strNode);
    const long long nOther = GetNodeNumber(strOther);
    return nNumber != nOther ? nNumber < nOther : strNode < strOther;
}

std::vector<FOUND_DRIVE> FindDrivesInSysfs(const std::string& strSys, const std::string& strDev)
{
    std::vector<FOUND_DRIVE> aryDrives;
    // Older kernels have no /sys/class/block, newer ones may lose /sys/block. What stands in both counts once.
    for (const char* pFolder : {"/class/block", "/block"})
    {
        std::error_code error;
        for (fs::directory_iterator it(strSys + pFolder, error), end; !error && it != end; it.increment(error))
        {
            const std::string strName = it->path().filename().string();
            std::error_code ignored;
            const bool bPartition = fs::exists(it->path() / "partition", ignored);
            if (IsDriveName(strName) || (!bPartition && ReadAttribute(it->path() / "device/type") == TYPE_CD_DRIVE))
                aryDrives.push_back(Describe(it->path(), GetNode(strDev, strName)));
        }
    }
    Sort(aryDrives);
    return aryDrives;
}

std::vector<FOUND_DRIVE> FindDrivesByUdev(udev* pUdev)
{
    std::vector<FOUND_DRIVE> aryDrives;
    const std::unique_ptr<udev_enumerate, UdevRelease> pList(pUdev != nullptr ? udev_enumerate_new(pUdev) : nullptr);
    if (pList == nullptr || udev_enumerate_add_match_subsystem(pList.get(), "block") < 0 ||
        udev_enumerate_scan_devices(pList.get()) < 0)
        return aryDrives;
    for (udev_list_entry* pEntry = udev_enumerate_get_list_entry(pList.get()); pEntry != nullptr;
         pEntry = udev_list_entry_get_next(pEntry))
    {
        const std::unique_ptr<udev_device, UdevRelease> pDevice(
            udev_device_new_from_syspath(pUdev, udev_list_entry_get_name(pEntry)));
        if (pDevice != nullptr)
            AddUdevDrive(aryDrives, pDevice.get());
    }
    Sort(aryDrives);
    return aryDrives;
}
