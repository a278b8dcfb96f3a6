// Any texts made into CD-Text packs: the packs are well formed, and the decoder of the command layer gives the titles
// back. The input: the number of tracks, then texts that end at a zero byte: title and performer of the disc and of
// each track.

#include "CDTextPacks.h"
#include "FuzzCheck.h"
#include "SCSICDTextDetails.h"
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

static constexpr int MAX_BLOCK_PACKS = 255;
static constexpr unsigned char PACK_SIZES = 0x8F;

static std::string TakeText(const uint8_t*& pData, size_t& nBytes)
{
    const void* pEnd = nBytes > 0 ? memchr(pData, 0, nBytes) : nullptr;
    const size_t nText = pEnd != nullptr ? static_cast<size_t>(static_cast<const uint8_t*>(pEnd) - pData) : nBytes;
    std::string strText(reinterpret_cast<const char*>(pData), nText);
    const size_t nTaken = nText + (pEnd != nullptr);
    pData += nTaken;
    nBytes -= nTaken;
    return strText;
}

static DISC_CONTENT MakeContent(const uint8_t* pData, size_t nBytes)
{
    DISC_CONTENT content;
    const int nTracks = nBytes > 0 ? 1 + *pData % LY_CD_MAX_TRACKS : 1;
    pData += nBytes > 0;
    nBytes -= nBytes > 0;
    content.m_Text.m_strTitle = TakeText(pData, nBytes);
    content.m_Text.m_strPerformer = TakeText(pData, nBytes);
    for (int n = 1; n <= nTracks; n++)
    {
        DISC_TRACK track;
        track.m_nNumber = n;
        track.m_nStartLBA = track.m_nPregapLBA = n * 300;
        track.m_nSectors = 300;
        track.m_Text.m_strTitle = TakeText(pData, nBytes);
        track.m_Text.m_strPerformer = TakeText(pData, nBytes);
        content.m_aryTracks.push_back(track);
    }
    content.m_arySessions.push_back({1, 1, nTracks, (nTracks + 1) * 300, DISC_SESSION_CDDA_OR_CDROM});
    return content;
}

static void CheckPacks(const std::vector<unsigned char>& packs)
{
    Check(packs.size() % DISC_CD_TEXT_PACK_BYTES == 0 && packs.size() / DISC_CD_TEXT_PACK_BYTES <= MAX_BLOCK_PACKS);
    for (size_t i = 0; i < packs.size(); i += DISC_CD_TEXT_PACK_BYTES)
    {
        const unsigned char* pPack = &packs[i];
        Check(pPack[0] >= 0x80 && pPack[0] <= PACK_SIZES && pPack[1] <= LY_CD_MAX_TRACKS);
        Check(pPack[2] == i / DISC_CD_TEXT_PACK_BYTES && pPack[3] <= 15);
        Check((pPack[16] << 8 | pPack[17]) == GetCDTextCRC(pPack));
    }
    if (!packs.empty())
        Check(packs[packs.size() - DISC_CD_TEXT_PACK_BYTES] == PACK_SIZES);
}

static bool IsASCII(const std::string& str)
{
    for (const char c : str)
        if (c < ' ')
            return false;
    return true;
}

// What is decoded is the text, or its start where a block is too small for all; a missing one was filled.
static void CheckText(const std::string& strText, const LyString& strDecoded, bool bWhole)
{
    if (strText.empty() || !IsASCII(strText) || strText.size() > CDTextDecoder::MAX_STRING_BYTES)
        return;
    Check(strDecoded.GetLength() <= static_cast<int>(strText.size()));
    Check(!bWhole || strDecoded.GetLength() == static_cast<int>(strText.size()));
    for (int i = 0; i < strDecoded.GetLength(); i++)
        Check(strDecoded[i] == static_cast<wchar_t>(static_cast<unsigned char>(strText[static_cast<size_t>(i)])));
}

// Whether all texts fit into one block, those that are filled in included, with room to spare.
static bool GetAllFit(const DiscImage& image)
{
    const size_t nDiscPerformer = image.GetText().m_strPerformer.size();
    size_t nBytes = image.GetText().m_strTitle.size() + nDiscPerformer + 2;
    for (const DISC_TRACK& track : image.GetTracks())
    {
        nBytes += track.m_Text.m_strTitle.size() + 2;
        nBytes += track.m_Text.m_strPerformer.empty() ? nDiscPerformer + 2 : track.m_Text.m_strPerformer.size() + 1;
    }
    return nBytes <= 12 * 240;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    const DiscImage image(MakeContent(pData, nBytes));
    const std::vector<unsigned char> packs = MakeCDTextPacks(image);
    CheckPacks(packs);
    LyString strTitle;
    LyString strPerformer;
    LyStringArray titles;
    LyStringArray performers;
    CDTextDecoder decoder({strTitle, strPerformer, titles, performers});
    decoder.Decode(packs.data(), static_cast<int>(packs.size()) / DISC_CD_TEXT_PACK_BYTES);
    const bool bWhole = GetAllFit(image);
    CheckText(image.GetText().m_strTitle, strTitle, bWhole);
    CheckText(image.GetText().m_strPerformer, strPerformer, bWhole);
    for (const DISC_TRACK& track : image.GetTracks())
    {
        const int nIndex = track.m_nNumber - 1;
        CheckText(track.m_Text.m_strTitle, nIndex < titles.GetSize() ? titles[nIndex] : LyString(), bWhole);
        CheckText(track.m_Text.m_strPerformer, nIndex < performers.GetSize() ? performers[nIndex] : LyString(), bWhole);
    }
    return 0;
}
