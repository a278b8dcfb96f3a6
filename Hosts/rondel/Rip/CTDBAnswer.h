// CTDBAnswer: what the CTDB database said about a disc, as a saved file has it.
//
// Shape:   XML. Beneath the root stand elements "entry", one for each submission of the disc, with the attributes
//
//            crc32        sum of the disc, hexadecimal
//            confidence   how many sent it in
//            trackcrcs    sums of the audio tracks, hexadecimal, with blanks between
//            toc          starts and lead-out with colons between, data tracks with a leading minus
//            npar, stride of the parity data, with which damage could be repaired
//
//          Only the first one is always there. Names may have a prefix of a namespace; other attributes and elements
//          do not matter.
// Errors:  a text that is no such document, or has a value that is none, is refused as a whole with the reason: what is
//          damaged in one place is no witness in another. An answer without entries is one: the disc is not known.
// Threads: any.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

constexpr size_t CTDB_MAX_ENTRIES = 1000; // far more pressings than a disc has
constexpr size_t CTDB_MAX_TRACKS = 99;

struct CTDB_ENTRY
{
    uint32_t m_nSum = 0;               // 0 if there is none
    int m_nConfidence = 0;             //
    int m_nParity = 0;                 // npar: words of parity for each column; 0: not told
    int m_nStride = 0;                 // 0: not told
    std::vector<uint32_t> m_aryTracks; // sums of the audio tracks, or empty
    std::string m_strTOC;              // as it was told, or empty
};

// UTF-8, with or without a byte order mark. False, with the reason as a part of a sentence.
bool ParseCTDBAnswer(const std::string& strText, std::vector<CTDB_ENTRY>& aryEntries, std::string& strReason);
// Whether the bytes look like XML at all: the first of them that is no blank opens a tag.
bool LooksLikeXML(const std::string& strText);
