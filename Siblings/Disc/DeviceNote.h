// DeviceNote: which program has taken a drive, as the programs of one user tell each other. This is the Linux side.
//
// Place:   a file for each device node in the folder "rondel" of $XDG_RUNTIME_DIR, or in /tmp/rondel-<uid> where that
// is not
//          this user's own.
// Format:  process id, a space, program name, a newline.
// Errors:  without the folder nothing is written and nothing is found. A damaged note is as good as none.
// Threads: any; an object is used by one.

#pragma once

#include <string>

struct stat;

struct DEVICE_NOTE
{
    int m_nPid = 0; // 0: there is no note
    std::string m_strProgram;
};

class DeviceNotes
{
public:
    DeviceNotes(); // opens the folder, which is made if need be
    ~DeviceNotes();
    DeviceNotes(const DeviceNotes&) = delete;
    DeviceNotes& operator=(const DeviceNotes&) = delete;

    DEVICE_NOTE Read(const std::string& strName) const;
    void Write(const std::string& strName) const; // of this process; the file is there whole or not at all
    void Remove(const std::string& strName) const;

private:
    int m_nFolder = -1;
};

std::string GetNoteName(const struct stat& node);          // the same for every path that leads to the node
std::string GetPrintable(const std::string& strText);      // without control characters, and not too long
DEVICE_NOTE ReadDeviceNote(const std::string& strContent); // the content of a note's file
