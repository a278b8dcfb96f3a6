#include "DriveWatch.h"
#include <filesystem>
#include <libudev.h>
#include <poll.h>

namespace
{
constexpr int MAX_MESSAGES = 1000; // at one question
}

DriveWatch::DriveWatch(const std::string& strRun, std::string strSys, std::string strDev)
    : m_strSys(std::move(strSys)), m_strDev(std::move(strDev))
{
    std::error_code error;
    if (!std::filesystem::exists(strRun + "/udev/control", error))
        return;
    m_pUdev.reset(udev_new());
    if (m_pUdev == nullptr)
        return;
    // The watch begins ahead of the first look, so that nothing comes between the two.
    m_pMonitor.reset(udev_monitor_new_from_netlink(m_pUdev.get(), "udev"));
    if (m_pMonitor != nullptr &&
        (udev_monitor_filter_add_match_subsystem_devtype(m_pMonitor.get(), "block", "disk") < 0 ||
         udev_monitor_enable_receiving(m_pMonitor.get()) < 0))
        m_pMonitor.reset();
}

void DriveWatch::Release::operator()(udev* p) const { (void)udev_unref(p); }

void DriveWatch::Release::operator()(udev_monitor* p) const { (void)udev_monitor_unref(p); }

bool DriveWatch::HasChanged()
{
    if (m_pMonitor == nullptr)
        return true;
    bool bChanged = false;
    pollfd ready = {udev_monitor_get_fd(m_pMonitor.get()), POLLIN, 0};
    // A flood of messages, as of a disk that is being partitioned, is not awaited.
    for (int i = 0; i < MAX_MESSAGES && poll(&ready, 1, 0) > 0; ++i)
    {
        // Any message will do, also that some were lost: the drives are looked up anew.
        bChanged = true;
        udev_device* pDevice = udev_monitor_receive_device(m_pMonitor.get());
        if (pDevice == nullptr && (ready.revents & POLLIN) == 0)
        {
            m_pMonitor.reset(); // the socket is broken; from now on every question looks anew
            break;
        }
        (void)udev_device_unref(pDevice);
    }
    return bChanged;
}

std::vector<FOUND_DRIVE> DriveWatch::Find()
{
    std::vector<FOUND_DRIVE> aryDrives = FindDrivesByUdev(m_pUdev.get());
    return aryDrives.empty() ? FindDrivesInSysfs(m_strSys, m_strDev) : aryDrives;
}
