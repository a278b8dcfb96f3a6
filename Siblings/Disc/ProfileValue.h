// The values of a drive profile: numbers, ranges of sectors, commands, probabilities, sense codes.
//
// Errors:  false for anything that is not wholly such a value, or is beyond its limits.
// Threads: functions without state.

#pragma once

#include "DriveProfile.h"
#include <string_view>
#include <vector>

// The values of a list: what stands between its commas, without blanks around. nMax: the last one keeps its commas.
std::vector<std::string_view> SplitProfileList(std::string_view strValue, size_t nMax);

bool ParseProfileNumber(std::string_view strValue, long long nMin, long long nMax, long long& nNumber);
// The same as an int.
bool ParseProfileInt(std::string_view strValue, int nMin, int nMax, int& nNumber);
// A number with at most six decimals, times nScale: "0.5" at 1000 is 500. nMax counts what comes out.
bool ParseProfileDecimal(std::string_view strValue, long long nScale, long long nMax, long long& nNumber);
// "5%" or "0.05".
bool ParseProfileProbability(std::string_view strValue, unsigned int& nPPM);
// "100", "100-110", "-150--1"; the last not below the first, both on a disc.
bool ParseProfileRange(std::string_view strValue, LBA_RANGE& range);
// "12" or "read 12".
bool ParseProfileTrigger(std::string_view strValue, COMMAND_TRIGGER& when);
// "3/11/05": key, code and qualifier in hexadecimal, the key not 0.
bool ParseProfileSense(std::string_view strValue, DRIVE_SENSE& sense);
// "2A 12 07 ...": pairs of hexadecimal digits, with blanks between them or not.
bool ParseProfileBytes(std::string_view strValue, size_t nMaxBytes, std::vector<unsigned char>& aryBytes);
