// DriveWatch: the drives of this machine, kept up to date by udev's messages. There is no thread: whoever asks for the
// drives sees whether messages came. Without udev every question looks into the kernel's tree anew.
//
// Owner:   one socket while the object lives, none without udev.
// Threads: one at a time.

#pragma once

#include "DriveFinder.h"
#include <memory>

struct udev_monitor;

class DriveWatch final : public DriveFinder
{
public:
    // strRun: the folder in which udev's service shows that it runs; strSys and strDev as in FindDrivesInSysfs.
    explicit DriveWatch(const std::string& strRun = "/run", std::string strSys = "/sys", std::string strDev = "/dev");

    bool HasChanged() override; // always true without udev
    std::vector<FOUND_DRIVE> Find() override;

    bool IsWatching() const { return m_pMonitor != nullptr; }

private:
    struct Release
    {
        void operator()(udev* p) const;
        void operator()(udev_monitor* p) const;
    };

    const std::string m_strSys;
    const std::string m_strDev;
    std::unique_ptr<udev, Release> m_pUdev;
    std::unique_ptr<udev_monitor, Release> m_pMonitor;
};
