// A file in the making. It is written beside its name, under one that nobody else has, and gets its own when it is
// whole. What is not finished goes: with the object, and when a signal (Ctrl-C, SIGTERM, SIGHUP) ends the program.
//
// Threads: one at a time for each object.

#pragma once

#include <string>

class PartialFile
{
public:
    // Creates the file. Where that cannot be, GetIsOpen() is false and errno says why.
    explicit PartialFile(const std::string& strPath);
    ~PartialFile();
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;

    bool GetIsOpen() const { return m_nSlot >= 0; }
    std::string GetPartialPath() const; // under which it grows; empty once it has its own name
    std::string GetWorkingPath() const; // where the file is until then; empty where it is not
    int TakeDescriptor();               // to read and write; the caller closes it. Once only.
    // Gives the file its own name, in place of what may have it. False with errno. The descriptor is closed before.
    bool Finish();

private:
    bool Create();

    std::string m_strPath;
    int m_nDescriptor = -1;
    int m_nSlot = -1; // where the name in use stands; -1: there is no file
};

// A name under which somebody is about to write a file that is not to stay: it goes as a file in the making does,
// should there be one.
class PassingName
{
public:
    explicit PassingName(const std::string& strPath);
    ~PassingName();
    PassingName(const PassingName&) = delete;
    PassingName& operator=(const PassingName&) = delete;

private:
    int m_nSlot = -1; // -1: there was none left, or the name is too long
};

// What a user named to be written to.
struct OUTPUT_PLACE
{
    std::string strPath; // behind all links
    bool bFile = true;   // false: a device or a named pipe. It stays what it is, and is written to as it stands.
};
OUTPUT_PLACE FindOutputPlace(const std::string& strPath); // throws HostError for a folder

// Throws HostError for a file that is read-only, as strName, also where the user might change it nevertheless: the
// owner of a file may swap it, and the super user may do all.
void RequireWritable(const std::string& strPath, const std::string& strName);
