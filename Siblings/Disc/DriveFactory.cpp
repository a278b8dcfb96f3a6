#include "DriveFactory.h"
#include "ImageDrive.h"

std::unique_ptr<ServiceDrive> CreateServiceDrive(const std::string& strPath, std::string&)
{
    return std::make_unique<ImageDrive>(strPath);
}
