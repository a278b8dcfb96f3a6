// The mode pages of a drive in software (MMC-3, SPC-3), as MODE SENSE(10) sends them and as the packed text of a drive
// object carries them.

#pragma once

#include <map>
#include <string>
#include <vector>

constexpr unsigned int IMAGE_DRIVE_MAX_SPEED =
    48 * 176; // KB/s; an image has no speed, and 48 times is what people know

using MODE_PAGES = std::map<int, std::vector<unsigned char>>; // by page code, each from its page code byte on

struct MODE_STATE
{
    bool m_bLocked = false;        // the door, by PREVENT ALLOW MEDIUM REMOVAL
    unsigned int m_nReadSpeed = 0; // KB/s, as SET CD SPEED left it
    unsigned int m_nMaxSpeed = IMAGE_DRIVE_MAX_SPEED;
    unsigned int m_nBufferKiB = 0;
    bool m_bAccurateStream = true;        // audio reads start where they should
    const MODE_PAGES* m_pPages = nullptr; // not owned: pages that stand, as they are, in place of the built-in ones
};

// The pages asked for, from their page code byte on, in ascending order. An unknown page gives nothing.
// nPage: a page code, or MODE_PAGE_ALL. bChangeable: the mask of what can be changed (nothing) in place of the values.
constexpr int MODE_PAGE_ALL = 0x3F;
std::vector<unsigned char> GetModePages(int nPage, bool bChangeable, const MODE_STATE& state);

// The 280 hexadecimal digits of the pages 01h, 0Dh, 2Ah and 0Eh in records of 12, 8, 100 and 16 bytes, and four flags.
std::string GetPackedModePages(const MODE_STATE& state);
