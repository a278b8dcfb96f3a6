#include "DriveFactory.h"
#include "DeviceDrive.h"
#include "ImageDrive.h"
#include "OffsetDrive.h"
#include "ProfiledDrive.h"
#include "ReadOffsetLookup.h"
#include <filesystem>

namespace
{
// A drive that is not plugged in is looked for by the name of its node, and told of as a drive.
bool IsMissingNode(const std::string& strPath)
{
    const std::filesystem::path path(strPath);
    std::error_code error;
    return path.parent_path() == "/dev" && !std::filesystem::exists(path, error);
}

std::unique_ptr<ServiceDrive> CreateUncorrected(const std::string& strPath, std::string& strError)
{
    if (IsDevicePath(strPath) || IsMissingNode(strPath))
        return std::make_unique<DeviceDrive>(strPath);
    if (HasDriveProfile(strPath))
        return CreateProfiledDrive(strPath, strError);
    return std::make_unique<ImageDrive>(strPath);
}
} // namespace

std::unique_ptr<ServiceDrive> CreateServiceDrive(const std::string& strPath, std::string& strError)
{
    std::unique_ptr<ServiceDrive> pDrive = CreateUncorrected(strPath, strError);
    if (pDrive == nullptr)
        return nullptr;
    return std::make_unique<OffsetDrive>(std::move(pDrive), LookUpReadOffset);
}
