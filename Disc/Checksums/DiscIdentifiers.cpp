#include "DiscIdentifiers.h"
#include "SecureHash.h"
#include <algorithm>
#include <array>
#include <cstdio>

namespace
{
constexpr int MUSICBRAINZ_OFFSETS = 100; // the lead-out, and every track that a disc may have
constexpr char BASE64_DIGITS[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._";
constexpr char BASE64_PADDING = '-';

int GetSeconds(int nSector) { return (nSector + LY_CD_MSF_OFFSET) / LY_CD_SECTORS_PER_SECOND; }

uint32_t GetDigitSum(int n)
{
    uint32_t nSum = 0;
    for (; n > 0; n /= 10)
        nSum += static_cast<uint32_t>(n % 10);
    return nSum;
}

std::string Hex(uint32_t n, const char* pFormat = "%08x")
{
    char aryText[16];
    (void)std::snprintf(aryText, sizeof aryText, pFormat, n); // eight digits at most
    return aryText;
}

template <size_t COUNT>
std::string MakeBase64(const std::array<uint8_t, COUNT>& ary)
{
    std::string strText;
    for (size_t i = 0; i < COUNT; i += 3)
    {
        const auto Byte = [&](size_t k) { return k < COUNT ? static_cast<uint32_t>(ary[k]) : 0; };
        const uint32_t nGroup = Byte(i) << 16 | Byte(i + 1) << 8 | Byte(i + 2);
        for (size_t nDigit = 0; nDigit < 4; ++nDigit)
            strText += i + nDigit > COUNT ? BASE64_PADDING : BASE64_DIGITS[nGroup >> (18 - 6 * nDigit) & 63];
    }
    return strText;
}
} // namespace

uint32_t GetCDDBID(const CD_LAYOUT& layout)
{
    if (!layout.IsValid())
        return 0;
    constexpr uint32_t MODULUS = 255;
    uint32_t nSum = 0;
    for (const CD_LAYOUT_TRACK& track : layout.m_aryTracks)
        nSum += GetDigitSum(GetSeconds(track.m_nStart));
    const int nSeconds = GetSeconds(layout.m_nLeadOut) - GetSeconds(layout.m_aryTracks.front().m_nStart);
    return nSum % MODULUS << 24 | static_cast<uint32_t>(nSeconds) << 8 |
           static_cast<uint32_t>(layout.m_aryTracks.size());
}

std::string GetCDDBText(const CD_LAYOUT& layout) { return layout.IsValid() ? Hex(GetCDDBID(layout)) : std::string(); }

ACCURATERIP_ID GetAccurateRipID(const CD_LAYOUT& layout)
{
    ACCURATERIP_ID id;
    if (!layout.IsValid())
        return id;
    for (const CD_LAYOUT_TRACK& track : layout.m_aryTracks)
    {
        if (track.m_bData)
            continue;
        ++id.m_nTracks;
        id.m_nID1 += static_cast<uint32_t>(track.m_nStart);
        id.m_nID2 += static_cast<uint32_t>(std::max(track.m_nStart, 1)) * static_cast<uint32_t>(id.m_nTracks);
    }
    id.m_nID1 += static_cast<uint32_t>(layout.m_nLeadOut);
    id.m_nID2 += static_cast<uint32_t>(layout.m_nLeadOut) * static_cast<uint32_t>(id.m_nTracks + 1);
    id.m_nCDDB = GetCDDBID(layout);
    return id;
}

std::string GetAccurateRipText(const CD_LAYOUT& layout)
{
    if (!layout.IsValid())
        return {};
    const ACCURATERIP_ID id = GetAccurateRipID(layout);
    return Hex(id.m_nID1) + '-' + Hex(id.m_nID2) + '-' + Hex(id.m_nCDDB);
}

std::string GetAccurateRipPath(const CD_LAYOUT& layout)
{
    if (!layout.IsValid())
        return {};
    const ACCURATERIP_ID id = GetAccurateRipID(layout);
    std::string strPath = "/accuraterip/";
    for (int nDigit = 0; nDigit < 3; ++nDigit)
        strPath += Hex(id.m_nID1 >> (4 * nDigit) & 15, "%x") + '/';
    return strPath + "dBAR-" + Hex(static_cast<uint32_t>(id.m_nTracks), "%03u") + '-' + GetAccurateRipText(layout) +
           ".bin";
}

std::string GetMusicBrainzID(const CD_LAYOUT& layout)
{
    if (!layout.IsValid())
        return {};
    size_t nTracks = layout.m_aryTracks.size();
    int nLeadOut = layout.m_nLeadOut;
    while (nTracks > 1 && layout.m_aryTracks[nTracks - 1].m_bData)
        nLeadOut = layout.m_aryTracks[--nTracks].m_nStart - CD_SESSION_GAP_SECTORS;
    // Data that follows without a gap is of the same session: the audio ends where it says.
    nLeadOut = std::max(nLeadOut, layout.m_aryTracks[nTracks - 1].m_nEnd);
    const uint32_t nFirst = static_cast<uint32_t>(layout.m_aryTracks.front().m_nNumber);
    const uint32_t nLast = static_cast<uint32_t>(layout.m_aryTracks[nTracks - 1].m_nNumber);
    std::array<uint32_t, MUSICBRAINZ_OFFSETS> aryOffsets{};
    aryOffsets[0] = static_cast<uint32_t>(nLeadOut + LY_CD_MSF_OFFSET);
    for (size_t i = 0; i < nTracks; ++i)
        aryOffsets[nFirst + i] = static_cast<uint32_t>(layout.m_aryTracks[i].m_nStart + LY_CD_MSF_OFFSET);
    std::string strText = Hex(nFirst, "%02X") + Hex(nLast, "%02X");
    for (uint32_t nOffset : aryOffsets)
        strText += Hex(nOffset, "%08X");
    return MakeBase64(SHA1Hash::Make(strText.data(), strText.size()));
}

std::string GetCTDBText(const CD_LAYOUT& layout)
{
    if (!layout.IsValid())
        return {};
    std::string strText;
    for (const CD_LAYOUT_TRACK& track : layout.m_aryTracks)
    {
        if (track.m_bData)
            strText += '-';
        strText += std::to_string(track.m_nStart);
        strText += ':';
    }
    return strText + std::to_string(layout.m_nLeadOut);
}

std::string GetCTDBQuery(const CD_LAYOUT& layout)
{
    if (!layout.IsValid())
        return {};
    return "lookup2.php?version=3&ctdb=1&fuzzy=1&metadata=none&toc=" + GetCTDBText(layout);
}
