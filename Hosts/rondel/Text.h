// Text of the host: UTF-8 outside, wide inside the system, and times as people write them on discs.

#pragma once

#include "LyString.h"
#include <optional>
#include <string>

LyString Widen(const std::string& str);                   // UTF-8 to the system's text
std::string Narrow(const wchar_t* p);                     // the system's text to UTF-8
std::string CountOf(long long nCount, const char* pWhat); // "1 track", "12 tracks"
std::string FormatMSF(int nSectors);                      // "mm:ss.ff", 75 frames a second
std::string FormatSeconds(double fSeconds);               // "m:ss"
std::optional<double> ParseTime(const std::string& str);  // "mm:ss", "mm:ss.fff", "h:mm:ss" or seconds; in seconds
