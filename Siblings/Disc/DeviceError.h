// DeviceError: why a device node cannot be used, as one English sentence with a way out. This is the Linux side.
// Threads: any; functions without state.

#pragma once

#include <string>

// Who may use a node.
struct DEVICE_RIGHTS
{
    std::string m_strGroup;     // of the node; empty if it is root's or cannot be told
    bool m_bGroupMayUse = true; // by the node's mode
    bool m_bMember = false;     // this process is in the group, or is root
};
DEVICE_RIGHTS GetDeviceRights(const std::string& strNode);

// The sentence of an errno from opening the node or from a command. For EACCES and EPERM it names the group to join.
std::string GetDeviceErrorText(const std::string& strNode, int nErrno);
std::string GetDeviceAccessText(const std::string& strNode, const DEVICE_RIGHTS& rights);

// What is lost with a node that can only be opened for reading.
std::string GetReadOnlyText(const std::string& strNode, const DEVICE_RIGHTS& rights);
