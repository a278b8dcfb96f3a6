// The CD-Text decoder, apart from the drive that the packs come from.

#pragma once

#include "LyArray.h"
#include "LyString.h"

// Where the decoder puts what it finds. What it does not find keeps its value.
struct CD_TEXT
{
    LyString& strDiscTitle;
    LyString& strDiscPerformer;
    LyStringArray& aryTitles; // index = track number - 1; gaps are empty
    LyStringArray& aryPerformers;
};

// Packs as READ TOC/PMA/ATIP, format 5, delivers them (MMC-3, annex J):
//
//   0      pack type       80h title, 81h performer
//   1      track           of the text that the pack starts with; 0 is the disc
//   2      sequence number
//   3      block number (bits 6 to 4) and character position
//   4-15   text            strings that end with a zero and run on across packs
//   16-17  CRC             not checked
//
// Only block 0, which is the first language, and only titles and performers are kept. Bytes are ISO 8859-1 characters.
class CDTextDecoder
{
public:
    static constexpr int HEADER_BYTES = 4;
    static constexpr int LENGTH_BYTES = 2; // of the header, not counted by the length that stands in them
    static constexpr int PACK_BYTES = 18;
    static constexpr int MAX_PACKS = 2048;
    static constexpr int MAX_PACKS_BYTES = MAX_PACKS * PACK_BYTES;          // 36,864
    static constexpr int MAX_ANSWER_BYTES = HEADER_BYTES + MAX_PACKS_BYTES; // 36,868
    static constexpr int MAX_STRING_BYTES = 1023;                           // what is longer is cut off

    explicit CDTextDecoder(const CD_TEXT& text) : m_Text(text) {}

    // The number of whole packs that an answer announces by the two length bytes at its start; -1 if that is
    // impossible.
    static int GetPackCount(const unsigned char* pAnswer);

    // pPacks: nPacks * PACK_BYTES bytes. May be called again with more packs: a string may run on.
    void Decode(const unsigned char* pPacks, int nPacks);

private:
    void DecodePack(const unsigned char* pPack);
    int DecodeFirstString(const unsigned char* pText, int nType, int nTrack);
    void Append(unsigned char c);
    void Store(int nType, int nTrack);

    CD_TEXT m_Text;
    // Gathered so far. Not kept apart by pack type: a string that breaks off runs on into whatever pack comes next.
    char m_szString[MAX_STRING_BYTES + 1] = {};
    int m_nFill = 0;
};
