// What a log says of the files of its rip, and whether they are so.
//
// Errors:  a log that cannot be read as one has a fault, a sentence; a file that is not right has a state. Only
//          LoadLog throws.
// Hostile: a name is taken only if it leads to a plain file in the folder of the log, or below it. Nothing else is
//          opened: not a device, not a pipe, not what a link has outside.
// Threads: any.

#pragma once

#include "LogSeal.h"
#include <cstddef>
#include <string>
#include <vector>

// A file as the log has it.
struct LOG_FILE
{
    std::string strName; // relative, with /
    long long nBytes = 0;
    std::string strSHA256; // one of the two, or both
    std::string strCRC32;  //
    std::string strError;  // why the rip could not make it; then there is nothing to check
};

struct LOG_CONTENT
{
    LOG_KIND eKind = LOG_TEXT;
    LOG_SEAL_STATE eSeal = LOG_SEAL_MISSING;
    std::vector<LOG_FILE> aryFiles; // in the order of the log
    std::string strFault;           // why the files could not all be learned; empty if they could
};

LOG_CONTENT ReadLog(const std::string& strLog);

constexpr size_t LOG_MAX_BYTES = 64 << 20; // a disc of nothing but scratches has less

// The bytes of a log. Throws HostError if it is no plain file, too large, or the system does not give it.
std::string LoadLog(const std::string& strPath);

enum LOG_FILE_STATE : int
{
    LOG_FILE_RIGHT = 0,
    LOG_FILE_NOT_MADE = 1,  // as the log says itself; no fault
    LOG_FILE_CHANGED = 2,   // other bytes, or another number of them
    LOG_FILE_MISSING = 3,   //
    LOG_FILE_OUTSIDE = 4,   // its name, or a link, leads out of the folder of the log
    LOG_FILE_UNREADABLE = 5 // no plain file, or the system does not give its bytes
};

struct LOG_FILE_VERDICT
{
    LOG_FILE_STATE eState = LOG_FILE_UNREADABLE;
    std::string strDetail; // words for people

    bool IsFault() const { return eState > LOG_FILE_NOT_MADE; }
};

// strFolder is the folder of the log, as the system knows it.
LOG_FILE_VERDICT CheckLogFile(const std::string& strFolder, const LOG_FILE& file);
