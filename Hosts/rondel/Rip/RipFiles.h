// RipFiles: how files of a rip come to be, and what is known of them afterwards.
//
// Errors:  as each function says.
// Threads: any, several at once.

#pragma once

#include "PartialFile.h"
#include "RipReport.h"
#include <cstdint>
#include <memory>
#include <string>

// A file in the making, made by one thread at a time: their table is not for two. As PartialFile is.
std::unique_ptr<PartialFile> CreatePartialFile(const std::string& strPath);

// The whole text under the name, in place of what may have it; never a part of it. False, with errno.
bool WriteTextFile(const std::string& strPath, const std::string& strText);
// False, with errno.
bool ReadTextFile(const std::string& strPath, std::string& strText);

// Length and sum of a file go into the record: the CRC-32 if its encoder is "wav", the SHA-256 of any other. False,
// with errno, if it cannot be read.
bool FillInFile(const std::string& strPath, RIP_FILE& file);
// The same for a WAV file from the sum of its audio, of which nothing is read: nFrames of it stand behind the canonical
// header, and a tag may follow.
bool SumUpWaveFile(const std::string& strPath, uint32_t nAudioCRC32, long long nFrames, RIP_FILE& file);
