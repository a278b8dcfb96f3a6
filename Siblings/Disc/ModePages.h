// The mode pages of a drive in software (MMC-3, SPC-3), as MODE SENSE(10) sends them and as the packed text of a drive
// object carries them.

#pragma once

#include <string>
#include <vector>

struct MODE_STATE
{
    bool m_bLocked = false;        // the door, by PREVENT ALLOW MEDIUM REMOVAL
    unsigned int m_nReadSpeed = 0; // KB/s, as SET CD SPEED left it
};

constexpr unsigned int IMAGE_DRIVE_MAX_SPEED =
    48 * 176; // KB/s; an image has no speed, and 48 times is what people know

// The pages asked for, from their page code byte on, in ascending order. An unknown page gives nothing.
// nPage: a page code, or MODE_PAGE_ALL. bChangeable: the mask of what can be changed (nothing) in place of the values.
constexpr int MODE_PAGE_ALL = 0x3F;
std::vector<unsigned char> GetModePages(int nPage, bool bChangeable, const MODE_STATE& state);

// The 280 hexadecimal digits of the pages 01h, 0Dh, 2Ah and 0Eh in records of 12, 8, 100 and 16 bytes, and four flags.
std::string GetPackedModePages(const MODE_STATE& state);
