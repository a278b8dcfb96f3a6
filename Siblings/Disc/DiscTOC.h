// The answers of READ TOC/PMA/ATIP and READ SUB-CHANNEL (MMC-3) for a disc image. Each is whole; the drive cuts it to
// the allocation length.

#pragma once

#include "DiscImage.h"
#include <vector>

// Format 0: tracks from nStartTrack (0 and 1: all; AAh: the lead-out alone) and the lead-out. Empty if there is no such
// track. bMSF: addresses as minute, second, frame.
std::vector<unsigned char> MakeTOC(const DiscImage& image, int nStartTrack, bool bMSF);

// Format 1: the number of sessions and where the last one begins.
std::vector<unsigned char> MakeSessionInfo(const DiscImage& image, bool bMSF);

// Format 5: the CD-Text. Empty if the disc has none.
std::vector<unsigned char> MakeCDText(const DiscImage& image);

// READ SUB-CHANNEL, format 1: where the head stands (the last sector read).
std::vector<unsigned char> MakeCurrentPosition(const DiscImage& image, int nLBA, bool bMSF);
// Format 2: the media catalogue number. Format 3: the ISRC of a track; empty if there is no such track.
std::vector<unsigned char> MakeMediaCatalogue(const DiscImage& image);
std::vector<unsigned char> MakeTrackISRC(const DiscImage& image, int nTrack);
