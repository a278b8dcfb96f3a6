// The text of a drive's sense data, for the user and the log.

#pragma once

#include "LyString.h"

// One row of the table of standard sense codes (SPC-3, annex D).
struct SCSI_ERROR_ROW
{
    int nSenseKey;
    int nASC;
    int nASCQ;
    const char* pText; // plain ASCII, never translated
};

constexpr int SCSI_ERROR_ROWS = 197;
extern const SCSI_ERROR_ROW g_SCSIErrorList[SCSI_ERROR_ROWS];

class CSCSIError
{
public:
    // A line for these three values, always. The first row of the table in which all of them are equal wins; codes that
    // carry a value in them, and codes that no row holds, get a translated sentence with the numbers in decimal.
    // The key is compared as it arrives: a sense byte with flag bits set finds no row.
    static LyString GetErrorString(int nSenseKey, int nASC, int nASCQ);
};
