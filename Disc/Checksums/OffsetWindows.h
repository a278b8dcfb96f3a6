// OffsetWindows: the audio around the places of a disc at which sums begin or end, kept so that the sums can be had for
// every offset afterwards. A sum over a stretch is the difference of two prefixes, and a prefix within a window follows
// from the one ahead of the window and the frames between.
//
// Units:   frames and sectors of the disc, from logical block address 0.
// Passes:  audio that was added without a break is one pass with a number of its own; prefixes of different passes have
//          nothing to do with each other. A window remembers its latest passes.
// Errors:  a place that the pass did not cover, or for which there was no memory, is not known.
// Threads: an object belongs to one thread.

#pragma once

#include "CDUnits.h"
#include <cstddef>
#include <cstdint>
#include <vector>

// Sums over a pass up to a frame, without it.
struct AUDIO_PREFIX
{
    uint32_t m_nWords = 0;  // of the frames as words
    uint32_t m_nPlaces = 0; // of each frame times its place on the disc
    uint32_t m_nCRC = 0;    // CRC-32 register, begun with 0
    bool m_bKnown = false;

    void AddFrame(uint32_t nWord, int64_t nFrame);
};

class OffsetWindows
{
public:
    void Clear();
    // What is to be kept: prefixes from nFirst to nLast, both included. All wishes come ahead of Prepare. Places below
    // 0 are on no disc, and stay unknown.
    void Want(int64_t nFirst, int64_t nLast);
    void Prepare();

    // A sector of a pass. The prefix is the one ahead of it. Sectors of a pass come in their order.
    void Add(int nPass, int nSector, const AUDIO_PREFIX& prefix, const uint8_t* pSector);

    // The prefixes from nFirst to nLast, both included, in one wish or a part of one.
    std::vector<AUDIO_PREFIX> GetPrefixes(int nPass, int64_t nFirst, int64_t nLast) const;
    AUDIO_PREFIX GetPrefix(int nPass, int64_t nFrame) const { return GetPrefixes(nPass, nFrame, nFrame).front(); }

private:
    struct STRETCH // what one pass brought into a window
    {
        int m_nPass = 0;
        int m_nFirstSector = 0;
        int m_nSectors = 0;
        bool m_bBroken = false; // no memory
        AUDIO_PREFIX m_Prefix;
        std::vector<uint8_t> m_aryAudio;
    };
    struct WINDOW
    {
        int m_nFirstSector = 0;
        int m_nEndSector = 0;
        std::vector<STRETCH> m_aryStretches; // the latest last
    };

    STRETCH* FindStretch(WINDOW& window, int nPass, int nSector, const AUDIO_PREFIX& prefix);
    const WINDOW* FindWindow(int64_t nFirst, int64_t nLast) const;

    std::vector<WINDOW> m_aryWindows; // after Prepare ascending and apart from each other
    size_t m_nNext = 0;               // the window at which the pass is, or the one that it comes to
    int m_nPass = -1;
};
