// The parts of the text log, each a section of its own. Made for ReportText.cpp.

#pragma once

#include "RipReport.h"
#include "TextLines.h"

// The labels of a file's lines. Whoever checks a log finds its files by them.
constexpr const char* TEXT_LABEL_FILE = "File";
constexpr const char* TEXT_LABEL_SIZE = "Size";
constexpr const char* TEXT_LABEL_SHA256 = "SHA-256";
constexpr const char* TEXT_LABEL_CRC32 = "CRC-32";
constexpr const char* TEXT_LABEL_NOT_MADE = "Not made";
constexpr const char* TEXT_UNIT_SIZE = " bytes";

void AddPiece(TextLines& lines, const RIP_REPORT& report, const RIP_PIECE& piece);
void AddLoudness(TextLines& lines, const RIP_LOUDNESS& loudness);
void AddFile(TextLines& lines, const RIP_FILE& file);
void AddVerification(TextLines& lines, const RIP_VERIFICATION& verification);
void AddConclusion(TextLines& lines, const RIP_REPORT& report);

// "Track 3", or what else a piece is.
std::string NamePiece(const RIP_REPORT& report, const RIP_PIECE& piece);
std::string FormatSectors(int nFirst, int nSectors); // "100-126", or "100"
std::string FormatAddress(int nSector);              // MSF as on the disc: sector 0 is 00:02.00
std::string FormatAddresses(int nFirst, int nSectors);
