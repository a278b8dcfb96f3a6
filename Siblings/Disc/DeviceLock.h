// DeviceLock: an advisory lock on a drive's device node, so that two programs do not fight over the drive, and a note
// beside it that tells who has it. This is the Linux side.
//
// Lock:    flock(2), exclusive, on the open node. The kernel takes it back when the process dies, however it dies. A
//          shared lock of somebody else, as udev's service has for a moment when a disc comes in, is waited for.
// Note:    one line, process id and program name, in the folder "rondel" of $XDG_RUNTIME_DIR or in /tmp/rondel-<uid>.
// It is
//          taken away with the lock; one that is found by whoever gets the lock is of a process that died with it. The
//          lock works without the note.
// Holder:  found in /proc/locks by the node's device and inode, named by the note or by /proc.
// Safety:  the folder must be the user's own and writable for nobody else, no link is followed, and what another
// program
//          has written is only shown, cut to printable characters.
// Threads: one at a time.

#pragma once

#include <string>

class DeviceLock
{
public:
    DeviceLock() = default;
    DeviceLock(const DeviceLock&) = delete;
    DeviceLock& operator=(const DeviceLock&) = delete;

    // Takes the lock. False, with a sentence that names the holder, if another has it. The descriptor stays the
    // caller's and must outlive the lock.
    bool Take(int nDescriptor, const std::string& strNode, std::string& strError);
    // Gives it back, ahead of the descriptor's end. Nothing to do without the lock.
    void Give();

    bool IsTaken() const { return m_nDescriptor >= 0; }
    // Whether the one who had the lock before died with it.
    bool WasLeft() const { return m_bLeft; }
    // Whether the file system knows no locks. The drive is then taken without one.
    bool IsUnsupported() const { return m_bUnsupported; }

private:
    int m_nDescriptor = -1;
    std::string m_strNote; // its file's name
    bool m_bLeft = false;
    bool m_bUnsupported = false;
};

// The same refusal as Take gives, without taking: empty while nobody has the lock.
std::string FindDeviceHolder(int nDescriptor, const std::string& strNode);
// The same for a node that is not open here. Empty, too, for a node that cannot be opened.
std::string FindDeviceHolder(const std::string& strNode);
