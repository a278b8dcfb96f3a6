// CD-Text as a drive delivers it: packs of 18 bytes made from a disc's texts (MMC-3, annex J).
//
//   0  pack type (80h title ... 8Fh size information)
//   1  track of the string that the pack begins with, 0 the disc
//   2  sequence number
//   3  block number and character position of that beginning
//   4  12 bytes of text: ISO 8859-1 strings, each with its NUL, running on across packs
//  16  CRC-16 of bytes 0 to 15, inverted
//
// One block (English) is made. Characters outside ISO 8859-1 become question marks.

#pragma once

#include "DiscImage.h"
#include <vector>

// The packs of the disc, whole; the image's own, if it brought some. Empty if there is no text at all.
std::vector<unsigned char> MakeCDTextPacks(const DiscImage& image);

// The check sum of a pack's first 16 bytes.
unsigned short GetCDTextCRC(const unsigned char* pPack);
