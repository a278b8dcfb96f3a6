// SenseData: whatever form of sense data a drive answers with, turned into the fixed form that the layers above read.
//
//   fixed (70h current, 71h deferred)       descriptor (72h current, 73h deferred)
//     0     response code, bit 7 VALID        0     response code
//     2     FILEMARK, EOM, ILI, sense key     1     sense key
//     3-6   information                       2     ASC
//     7     additional length                 3     ASCQ
//     8-11  command-specific information      7     additional length
//     12    ASC                               8-    descriptors: type, additional length, content
//     13    ASCQ
//     14    field replaceable unit
//     15-17 sense key specific, bit 7 SKSV
//
// Source:  SPC-3, 4.5.2 and 4.5.3.
// Errors:  false for bytes that are no sense data. Lengths inside are checked against what came.
// Threads: any; functions without state.

#pragma once

#include "ServiceDrive.h"
#include <string>

constexpr unsigned char SENSE_RESPONSE_DEFERRED = 0x71;            // deferred error, fixed format
constexpr unsigned char SENSE_RESPONSE_DESCRIPTOR_CURRENT = 0x72;  // current error, descriptor format
constexpr unsigned char SENSE_RESPONSE_DESCRIPTOR_DEFERRED = 0x73; // deferred error, descriptor format

// Reads the nBytes that came. Fixed sense data is passed through byte for byte, flag bits and all; descriptors go to
// the places that the fixed form has for them, and where it has none, they are left out.
bool ReadSenseData(const unsigned char* pSense, int nBytes, SENSE_DATA& fixed);

// Whether fixed sense data tells of an earlier command, so that the one that brought it was not carried out.
bool IsDeferred(const SENSE_DATA& fixed);

std::string GetCodesText(const DRIVE_SENSE& sense); // as "3/11/05"
