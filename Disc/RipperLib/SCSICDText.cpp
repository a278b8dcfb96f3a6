// CD-Text: what the lead-in says of the disc and its tracks.

#include "MMC.h"
#include "SCSICD.h"
#include "SCSICDTextDetails.h"
#include <memory>

static constexpr int PACK_TITLE = 0x80;
static constexpr int PACK_PERFORMER = 0x81;
static constexpr int PACK_OFFSET_TYPE = 0;
static constexpr int PACK_OFFSET_TRACK = 1;
static constexpr int PACK_OFFSET_BLOCK = 3;
static constexpr int PACK_OFFSET_TEXT = 4;
static constexpr int PACK_TEXT_BYTES = 12;
static constexpr int BLOCK_NUMBER_BITS = 0x70;

int CDTextDecoder::GetPackCount(const unsigned char* pAnswer)
{
    // The length counts two bytes of the header and then the packs. Lengths of 0 and 1 wrap, and so are too large.
    unsigned int nPacksBytes = MMCGet16(pAnswer) - LENGTH_BYTES;
    if (nPacksBytes > MAX_PACKS_BYTES)
        return -1;
    return static_cast<int>(nPacksBytes) / PACK_BYTES;
}

void CDTextDecoder::Decode(const unsigned char* pPacks, int nPacks)
{
    for (int nPack = 0; nPack < nPacks; nPack++)
        DecodePack(pPacks + nPack * PACK_BYTES);
}

void CDTextDecoder::Append(unsigned char c)
{
    if (m_nFill < MAX_STRING_BYTES)
        m_szString[m_nFill++] = static_cast<char>(c);
}

// Ends the string that was gathered, and keeps it if the pack is of a kind that is kept.
void CDTextDecoder::Store(int nType, int nTrack)
{
    m_szString[m_nFill] = 0;
    m_nFill = 0;
    if (nType != PACK_TITLE && nType != PACK_PERFORMER)
        return;
    LyString strText;
    strText.FromANSI(m_szString);
    bool bTitle = nType == PACK_TITLE;
    if (nTrack == 0)
        (bTitle ? m_Text.strDiscTitle : m_Text.strDiscPerformer) = strText;
    else
        (bTitle ? m_Text.aryTitles : m_Text.aryPerformers).SetAtGrow(nTrack - 1, strText);
}

// Takes the string that the pack starts with. Returns the offset behind it and behind the zeros that follow it, or the
// size of the text if the string goes on in the next pack.
int CDTextDecoder::DecodeFirstString(const unsigned char* pText, int nType, int nTrack)
{
    int nAt = 0;
    while (nAt < PACK_TEXT_BYTES && pText[nAt] != 0)
        Append(pText[nAt++]);
    if (nAt == PACK_TEXT_BYTES)
        return nAt;
    // Deliberate: an empty string is stored here, and only here: a disc may say that it has no title.
    Store(nType, nTrack);
    while (nAt < PACK_TEXT_BYTES && pText[nAt] == 0)
        nAt++;
    return nAt;
}

void CDTextDecoder::DecodePack(const unsigned char* pPack)
{
    if ((pPack[PACK_OFFSET_BLOCK] & BLOCK_NUMBER_BITS) != 0)
        return;
    int nType = pPack[PACK_OFFSET_TYPE];
    int nTrack = pPack[PACK_OFFSET_TRACK];
    const unsigned char* pText = pPack + PACK_OFFSET_TEXT;
    for (int nAt = DecodeFirstString(pText, nType, nTrack); nAt < PACK_TEXT_BYTES; nAt++)
    {
        if (pText[nAt] != 0)
        {
            Append(pText[nAt]);
            continue;
        }
        // Each later string of a pack belongs to the track after the one before. Deliberate: an empty one, which is
        // only a filler here, counts for no track.
        if (m_nFill == 0)
            continue;
        bool bKept = nType == PACK_TITLE || nType == PACK_PERFORMER;
        Store(nType, nTrack + 1);
        if (bKept)
            nTrack++;
    }
}

bool CSCSICD::ReadCDText()
{
    unsigned char cdb[10] = {CDB_READ_TOC, 0, TOC_FORMAT_CD_TEXT, 0, 0, 0, 1, 0, CDTextDecoder::HEADER_BYTES, 0};
    m_bCDTextRead = false;
    auto pAnswer = std::make_unique<unsigned char[]>(CDTextDecoder::MAX_ANSWER_BYTES);

    // Deliberate: neither result is looked at. A drive or a disc without CD-Text leaves the zeros of the buffer, and
    // the test of the length decides.
    (void)Send(DRIVE_TRANSFER_IN, cdb, sizeof cdb, pAnswer.get(), CDTextDecoder::HEADER_BYTES);
    int nPacks = CDTextDecoder::GetPackCount(pAnswer.get());
    if (nPacks < 0)
        return false;
    MMCPut16(cdb + 7, MMCGet16(pAnswer.get()) + CDTextDecoder::LENGTH_BYTES);
    (void)Send(DRIVE_TRANSFER_IN, cdb, sizeof cdb, pAnswer.get(), CDTextDecoder::MAX_ANSWER_BYTES);
    if (nPacks == 0)
        return false;

    CDTextDecoder decoder({m_strDiscTitle, m_strDiscPerformer, m_TrackTitles, m_TrackPerformers});
    decoder.Decode(pAnswer.get() + CDTextDecoder::HEADER_BYTES, nPacks);
    m_bCDTextRead = true;
    return true;
}
