// What the sibling libraries tell this host beyond the interfaces that a player calls.

#pragma once

#include <string>
#include <vector>

// One drive of the machine, or one image that has a letter. Texts are UTF-8.
struct LISTED_DRIVE
{
    std::string strPath;
    std::string strLetter; // "E:", or empty
    std::string strVendor;
    std::string strModel;
    std::string strRevision;
    std::string strReason; // why it cannot be used, or empty
    int nState = 0;        // DISC_DRIVE_STATE
    bool bImage = false;
};
std::vector<LISTED_DRIVE> ListDrives(); // throws HostError

struct LISTED_OPTION
{
    std::string strStore;
    std::string strKey;
    std::string strValue;
};
// Of one store, or of all for the empty name. Throws HostError.
std::vector<LISTED_OPTION> ListOptions(const std::string& strStore);

// Throws HostError where the library is missing.
void RequireTools();
void RequireDiscService();
void RequireReader();

// Why the disc service could not open a drive, or what it could not read from it since it was opened; empty if nothing.
std::string GetDiscErrorText(const std::string& strPath);

// What was tolerated or left out when the disc was opened, a sentence to a line; empty if nothing.
std::string GetDiscWarnings(const std::string& strPath);
void ShowWarnings(const std::string& strPath); // on stderr

// How playing from a drive has gone: throws HostError if sectors could not be read, or if the track ended so many
// seconds early; otherwise shows the warnings.
void ReportPlaying(const std::string& strPath, double fMissingSeconds);
