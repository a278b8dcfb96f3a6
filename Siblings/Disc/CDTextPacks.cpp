#include "CDTextPacks.h"
#include "CRC16.h"
#include "MMC.h"
#include <algorithm>
#include <array>

namespace
{
constexpr int PACK_TEXT_OFFSET = 4;
constexpr int PACK_TEXT_BYTES = 12;
constexpr int PACK_CRC_OFFSET = 16;
constexpr int MAX_CHARACTER_POSITION = 15;
constexpr int SIZE_PACKS = 3;
constexpr int MAX_TEXT_PACKS = 255 - SIZE_PACKS; // a block numbers its packs in one byte
constexpr unsigned char PACK_SIZE_INFORMATION = 0x8F;
constexpr unsigned char FIRST_PACK_TYPE = 0x80;
constexpr unsigned char LANGUAGE_ENGLISH = 9;
constexpr int PACK_TYPES = 16;

struct TEXT_KIND
{
    unsigned char nPackType;
    std::string DISC_TEXT::*pText;
};

// In the order of their pack types; where the room runs out, the last go first.
const TEXT_KIND s_aryKinds[] = {
    {0x80, &DISC_TEXT::m_strTitle},    {0x81, &DISC_TEXT::m_strPerformer}, {0x82, &DISC_TEXT::m_strSongwriter},
    {0x83, &DISC_TEXT::m_strComposer}, {0x84, &DISC_TEXT::m_strArranger},  {0x85, &DISC_TEXT::m_strMessage},
};

std::string ToLatin1(const std::string& strUTF8)
{
    std::string str;
    for (size_t i = 0; i < strUTF8.size();)
    {
        const unsigned char c = static_cast<unsigned char>(strUTF8[i]);
        size_t nBytes = c < 0x80 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
        nBytes = std::min(nBytes, strUTF8.size() - i);
        if (c < 0x80)
            str += static_cast<char>(c);
        else if (nBytes == 2 && (c == 0xC2 || c == 0xC3))
            str += static_cast<char>((c & 3) << 6 | (static_cast<unsigned char>(strUTF8[i + 1]) & 0x3F));
        else
            str += '?';
        i += nBytes;
    }
    return str;
}

// The strings of one kind, for the disc and then for each track number from 1 up.
// A missing text between others is filled (a performer with the disc's, anything else with a blank), since readers in
// the field do not count empty strings.
std::vector<std::string> GetStrings(const DiscImage& image, const TEXT_KIND& kind)
{
    std::vector<std::string> aryTexts(static_cast<size_t>(image.GetLastTrackNumber()) + 1);
    aryTexts[0] = ToLatin1(image.GetText().*kind.pText);
    for (const DISC_TRACK& track : image.GetTracks())
        aryTexts[static_cast<size_t>(track.m_nNumber)] = ToLatin1(track.m_Text.*kind.pText);
    size_t nUsed = aryTexts.size();
    while (nUsed > 0 && aryTexts[nUsed - 1].empty())
        --nUsed;
    const bool bPerformer = kind.pText == &DISC_TEXT::m_strPerformer && !aryTexts[0].empty();
    for (size_t i = 1; i < nUsed; ++i)
    {
        if (aryTexts[i].empty())
            aryTexts[i] = bPerformer ? aryTexts[0] : " ";
    }
    if (nUsed == 0)
        aryTexts.clear();
    return aryTexts;
}

class PackWriter
{
public:
    void AddStrings(unsigned char nPackType, const std::vector<std::string>& aryTexts)
    {
        std::array<unsigned char, CD_TEXT_PACK_ROOM> aryPack{};
        int nFill = 0;
        for (size_t nTrack = 0; nTrack < aryTexts.size(); ++nTrack)
        {
            // The NUL that ends a string belongs to it.
            for (size_t i = 0; i <= aryTexts[nTrack].size(); ++i)
            {
                if (nFill == 0)
                    Begin(aryPack.data(), nPackType, nTrack, i);
                aryPack[static_cast<size_t>(PACK_TEXT_OFFSET + nFill)] =
                    i < aryTexts[nTrack].size() ? static_cast<unsigned char>(aryTexts[nTrack][i]) : 0;
                if (++nFill == PACK_TEXT_BYTES)
                {
                    Add(aryPack.data());
                    nFill = 0;
                }
            }
        }
        if (nFill > 0)
            Add(aryPack.data());
    }

    // The three packs that close a block: characters, tracks, how many packs of each type, the last sequence number.
    void AddSizeInformation(int nFirstTrack, int nLastTrack)
    {
        std::array<unsigned char, SIZE_PACKS * PACK_TEXT_BYTES> aryInfo{};
        aryInfo[1] = static_cast<unsigned char>(nFirstTrack);
        aryInfo[2] = static_cast<unsigned char>(nLastTrack);
        m_aryCounts[PACK_SIZE_INFORMATION - FIRST_PACK_TYPE] = SIZE_PACKS;
        std::copy(m_aryCounts.begin(), m_aryCounts.end(), aryInfo.begin() + 4);
        aryInfo[20] = static_cast<unsigned char>(GetCount() + SIZE_PACKS - 1);
        aryInfo[28] = LANGUAGE_ENGLISH;
        for (size_t i = 0; i < SIZE_PACKS; ++i)
        {
            std::array<unsigned char, CD_TEXT_PACK_ROOM> aryPack{};
            Begin(aryPack.data(), PACK_SIZE_INFORMATION, i, 0);
            std::copy_n(aryInfo.begin() + static_cast<ptrdiff_t>(i * PACK_TEXT_BYTES), PACK_TEXT_BYTES,
                        aryPack.begin() + PACK_TEXT_OFFSET);
            Add(aryPack.data());
        }
    }

    int GetCount() const { return static_cast<int>(m_aryPacks.size()) / DISC_CD_TEXT_PACK_BYTES; }
    std::vector<unsigned char> Take() { return std::move(m_aryPacks); }

private:
    static constexpr size_t CD_TEXT_PACK_ROOM = DISC_CD_TEXT_PACK_BYTES;

    void Begin(unsigned char* pPack, unsigned char nPackType, size_t nTrack, size_t nPosition) const
    {
        std::fill_n(pPack, CD_TEXT_PACK_ROOM, static_cast<unsigned char>(0));
        pPack[0] = nPackType;
        pPack[1] = static_cast<unsigned char>(nTrack);
        pPack[2] = static_cast<unsigned char>(GetCount());
        pPack[3] = static_cast<unsigned char>(std::min<size_t>(nPosition, MAX_CHARACTER_POSITION));
    }

    void Add(unsigned char* pPack)
    {
        MMCPut16(pPack + PACK_CRC_OFFSET, GetCDTextCRC(pPack));
        m_aryPacks.insert(m_aryPacks.end(), pPack, pPack + CD_TEXT_PACK_ROOM);
        if (pPack[0] != PACK_SIZE_INFORMATION)
            ++m_aryCounts[static_cast<size_t>(pPack[0] - FIRST_PACK_TYPE)];
    }

    std::vector<unsigned char> m_aryPacks;
    std::array<unsigned char, PACK_TYPES> m_aryCounts{};
};

int GetPackCount(const std::vector<std::string>& aryTexts)
{
    size_t nBytes = 0;
    for (const std::string& str : aryTexts)
        nBytes += str.size() + 1;
    return static_cast<int>((nBytes + PACK_TEXT_BYTES - 1) / PACK_TEXT_BYTES);
}

// Cuts the longest texts until all fit into the given number of packs, or none is longer than one character: an empty
// text between others would give the later ones to the wrong tracks.
void CutToFit(std::vector<std::string>& aryTexts, int nPacks)
{
    while (GetPackCount(aryTexts) > nPacks)
    {
        auto pLongest =
            std::max_element(aryTexts.begin(), aryTexts.end(),
                             [](const std::string& a, const std::string& b) { return a.size() < b.size(); });
        if (pLongest->size() <= 1)
            return;
        pLongest->resize(pLongest->size() - std::max<size_t>(1, pLongest->size() / PACK_TEXT_BYTES));
    }
}
} // namespace

unsigned short GetCDTextCRC(const unsigned char* pPack) { return GetCRC16(pPack, PACK_CRC_OFFSET); }

std::vector<unsigned char> MakeCDTextPacks(const DiscImage& image)
{
    if (!image.GetCDTextPacks().empty())
        return image.GetCDTextPacks();
    PackWriter writer;
    for (const TEXT_KIND& kind : s_aryKinds)
    {
        std::vector<std::string> aryTexts = GetStrings(image, kind);
        const int nRoom = MAX_TEXT_PACKS - writer.GetCount();
        if (aryTexts.empty() || nRoom <= 0)
            continue;
        CutToFit(aryTexts, nRoom);
        if (GetPackCount(aryTexts) <= nRoom)
            writer.AddStrings(kind.nPackType, aryTexts);
    }
    if (writer.GetCount() > 0)
        writer.AddSizeInformation(image.GetFirstTrackNumber(), image.GetLastTrackNumber());
    return writer.Take();
}
