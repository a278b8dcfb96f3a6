// A SUB file: the sub-channels of every sector of an image, 96 bytes each, the channels P to W one behind the other.
// Its Q channel tells what a table of contents does not: pregaps, the catalogue number and ISRCs.
//
// Q, 12 bytes (IEC 60908, 17.5):  0 control and ADR  1-9 by ADR  10-11 CRC
//   ADR 1  1 track (BCD)  2 index (BCD)  3-5 time in the track  7-9 time on the disc (BCD)
//   ADR 2  1-7 catalogue number, 13 digits of 4 bits
//   ADR 3  1-4 ISRC: five characters of 6 bits  4-8 seven digits of 4 bits from bit 32 on

#pragma once

#include "SectorSource.h"
#include <map>
#include <string>

struct SUB_CONTENT
{
    std::map<int, int> m_mapPregaps; // by track: the sector of the file where its index 0 begins
    std::map<int, std::string> m_mapISRCs;
    std::string m_strMCN;
};

// Reads the file from its start to its end. Sectors whose check sum is wrong are passed over.
SUB_CONTENT ReadSubFile(SectorSource& source);
