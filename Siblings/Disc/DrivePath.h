// What a drive path names. A path is a letter with a colon, a device node, the path of an image or of a profile, or a
// file URL of one of these.
//
// Text:    paths inside the service are UTF-8, absolute and without "." and ".." steps.
// Threads: any; functions without state.

#pragma once

#include <string>
#include <string_view>

constexpr int DRIVE_LETTERS = 26; // a letter is 0 for A to 25 for Z
constexpr int NO_DRIVE_LETTER = -1;

// The letter of "E:", "e:", "E:\" or "E:/", also in a file URL; NO_DRIVE_LETTER for any other path. The plain "E" is
// none: it is the name of a file.
int GetDriveLetter(const wchar_t* pPath);
int GetDriveLetter(std::wstring_view strPath);
std::string GetLetterText(int nLetter); // "E:"; empty for NO_DRIVE_LETTER

// The file that a path names: "file://" is taken off and its escapes are read. Empty for an empty path.
std::string GetImagePath(const wchar_t* pPath);

// The device node behind a link in the device folder ("/dev/cdrom"); any other path as it is.
std::string GetDeviceNode(const std::string& strPath);
