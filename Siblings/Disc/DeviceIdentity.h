// DeviceIdentity: what a drive says about itself when it is opened: its kind and names by INQUIRY, its mode pages by
// MODE SENSE(10).
//
// Pages:   01h, 0Dh, 2Ah and 0Eh, each from its page code byte on, in records of 12, 8, 100 and 16 bytes, and a flag
// for
//          each. A page that the drive lacks is zero with its flag 0. A longer page is cut to its record, a shorter one
//          followed by zeros.
// Sources: SPC-3, 6.4 (INQUIRY), 6.10 and 7.4.3 (MODE SENSE(10), its header); MMC-3, 5.5.10 (page 2Ah).
// Errors:  every length in an answer is checked against what came.
// Threads: any; functions without state.

#pragma once

#include "ServiceDrive.h"
#include <functional>
#include <string>

constexpr unsigned char DEVICE_TYPE_OPTICAL = 5; // peripheral device type of CD and DVD drives

struct DEVICE_IDENTITY
{
    static constexpr int PAGES = 4;
    static constexpr int PACKED_BYTES = 12 + 8 + 100 + 16 + PAGES;

    unsigned char m_nQualifier = 0; // 0: the drive is there
    unsigned char m_nDeviceType = 0;
    DRIVE_DESCRIPTION m_Description;
    unsigned char m_aryPacked[PACKED_BYTES] = {};
};

// Sends one command of ours with data to come; nBytes is the room and becomes what came.
using ASK_DRIVE = std::function<bool(const unsigned char* pCDB, int nCDBBytes, unsigned char* pData, int& nBytes)>;

// False if INQUIRY fails or brings nothing. A page that cannot be had is no failure.
bool ReadIdentity(const ASK_DRIVE& ask, DEVICE_IDENTITY& identity);

// Finds a page behind the header and the block descriptors of an answer to MODE SENSE(10) of nBytes. What is there of
// the page goes to the record of nRecordBytes; false if it is not there.
bool TakeModePage(const unsigned char* pAnswer, int nBytes, int nPage, unsigned char* pRecord, int nRecordBytes);

// The 280 hexadecimal digits.
std::string GetPackedText(const DEVICE_IDENTITY& identity);
