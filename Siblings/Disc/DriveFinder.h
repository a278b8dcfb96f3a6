// DriveFinder: the optical drives of the machine, as the kernel's tree of devices lists them, with or without udev.
//
// Order:   by the number at the end of the node's name, so that /dev/sr10 comes behind /dev/sr9.
// Errors:  what cannot be read is not there.
// Threads: any; functions without state.

#pragma once

#include <string>
#include <vector>

struct udev;

struct FOUND_DRIVE
{
    std::string m_strNode; // "/dev/sr0"
    std::string m_strVendor;
    std::string m_strModel;
    std::string m_strRevision;

    bool operator==(const FOUND_DRIVE&) const = default;
};

// Block devices that are called sr and a number, or whose SCSI type is 5 (CD/DVD). strSys is the root of the tree,
// strDev the folder of the nodes.
std::vector<FOUND_DRIVE> FindDrivesInSysfs(const std::string& strSys = "/sys", const std::string& strDev = "/dev");

// What udev knows as a block device with ID_CDROM=1, or that is called sr and a number.
std::vector<FOUND_DRIVE> FindDrivesByUdev(udev* pUdev);

// Whether a list of drives has the one ahead of the other.
bool IsNodeAhead(const std::string& strNode, const std::string& strOther);

// What looks for drives. The service asks it ahead of every answer that depends on which drives there are.
class DriveFinder
{
public:
    virtual ~DriveFinder() = default;
    virtual bool HasChanged() = 0; // whether Find may answer something else than the last time
    virtual std::vector<FOUND_DRIVE> Find() = 0;
};
