#include "DiscTOC.h"
#include "CDTextPacks.h"
#include "MMC.h"
#include <algorithm>

namespace
{
using Bytes = std::vector<unsigned char>;

constexpr unsigned char ADR_POSITION = 0x10;    // the Q sub-channel of the entry holds positions
constexpr unsigned char NO_AUDIO_STATUS = 0x15; // nothing is being played
constexpr unsigned char SUB_CHANNEL_POSITION = 1;
constexpr unsigned char SUB_CHANNEL_MCN = 2;
constexpr unsigned char SUB_CHANNEL_ISRC = 3;
constexpr size_t SUB_CHANNEL_HEADER_BYTES = 4;
constexpr size_t POSITION_BYTES = 12;
constexpr size_t NUMBER_BYTES = 20; // of formats 2 and 3
constexpr unsigned char NUMBER_VALID = 0x80;

unsigned char GetControl(const DISC_TRACK& track)
{
    return static_cast<unsigned char>(ADR_POSITION | track.m_nControl);
}

// Four bytes: the LBA, or a zero and minute, second, frame of the absolute time.
void PutAddress(unsigned char* p, int nLBA, bool bMSF, int nMSFOffset = LY_CD_MSF_OFFSET)
{
    if (!bMSF)
    {
        MMCPut32(p, static_cast<unsigned int>(nLBA));
        return;
    }
    const int nSector = std::max(0, nLBA + nMSFOffset);
    p[0] = 0;
    p[1] = static_cast<unsigned char>(nSector / LY_CD_SECTORS_PER_SECOND / 60);
    p[2] = static_cast<unsigned char>(nSector / LY_CD_SECTORS_PER_SECOND % 60);
    p[3] = static_cast<unsigned char>(nSector % LY_CD_SECTORS_PER_SECOND);
}

void AddDescriptor(Bytes& answer, unsigned char nControl, int nTrack, int nLBA, bool bMSF)
{
    const size_t nStart = answer.size();
    answer.resize(nStart + TOC_DESCRIPTOR_BYTES);
    answer[nStart + TOC_DESCRIPTOR_OFFSET_CONTROL] = nControl;
    answer[nStart + TOC_DESCRIPTOR_OFFSET_TRACK] = static_cast<unsigned char>(nTrack);
    PutAddress(&answer[nStart + TOC_DESCRIPTOR_OFFSET_ADDRESS], nLBA, bMSF);
}

// The first two bytes of a TOC answer count all that follows them.
void PutLength(Bytes& answer) { MMCPut16(answer.data(), static_cast<unsigned int>(answer.size() - 2)); }

Bytes MakeSubChannel(unsigned char nFormat, size_t nBytes)
{
    Bytes answer(SUB_CHANNEL_HEADER_BYTES + nBytes);
    answer[1] = NO_AUDIO_STATUS;
    MMCPut16(&answer[2], static_cast<unsigned int>(nBytes));
    answer[4] = nFormat;
    return answer;
}

void PutNumber(Bytes& answer, const std::string& strNumber, size_t nDigits)
{
    if (strNumber.size() != nDigits)
        return;
    answer[8] = NUMBER_VALID;
    std::copy(strNumber.begin(), strNumber.end(), answer.begin() + 9);
}
} // namespace

std::vector<unsigned char> MakeTOC(const DiscImage& image, int nStartTrack, bool bMSF)
{
    if (nStartTrack > image.GetLastTrackNumber() && nStartTrack != TOC_LEAD_OUT_TRACK)
        return {};
    Bytes answer = {0, 0, static_cast<unsigned char>(image.GetFirstTrackNumber()),
                    static_cast<unsigned char>(image.GetLastTrackNumber())};
    for (const DISC_TRACK& track : image.GetTracks())
    {
        if (track.m_nNumber >= nStartTrack)
            AddDescriptor(answer, GetControl(track), track.m_nNumber, track.m_nStartLBA, bMSF);
    }
    const unsigned char nControl = image.GetTracks().empty() ? ADR_POSITION : GetControl(image.GetTracks().back());
    AddDescriptor(answer, nControl, TOC_LEAD_OUT_TRACK, image.GetLeadOutLBA(), bMSF);
    PutLength(answer);
    return answer;
}

std::vector<unsigned char> MakeSessionInfo(const DiscImage& image, bool bMSF)
{
    if (image.GetSessions().empty())
        return {};
    const DISC_SESSION& last = image.GetSessions().back();
    const DISC_TRACK* pTrack = image.FindTrack(last.m_nFirstTrack);
    Bytes answer = {0, 0, static_cast<unsigned char>(image.GetSessions().front().m_nNumber),
                    static_cast<unsigned char>(last.m_nNumber)};
    if (pTrack != nullptr)
        AddDescriptor(answer, GetControl(*pTrack), pTrack->m_nNumber, pTrack->m_nStartLBA, bMSF);
    PutLength(answer);
    return answer;
}

std::vector<unsigned char> MakeCDText(const DiscImage& image)
{
    const Bytes packs = MakeCDTextPacks(image);
    if (packs.empty())
        return {};
    Bytes answer(TOC_HEADER_BYTES);
    answer.insert(answer.end(), packs.begin(), packs.end());
    PutLength(answer);
    return answer;
}

std::vector<unsigned char> MakeCurrentPosition(const DiscImage& image, int nLBA, bool bMSF)
{
    Bytes answer = MakeSubChannel(SUB_CHANNEL_POSITION, POSITION_BYTES);
    const DISC_PLACE place = image.Locate(nLBA);
    if (place.m_pTrack == nullptr)
        return answer;
    answer[5] = GetControl(*place.m_pTrack);
    answer[6] = static_cast<unsigned char>(place.m_pTrack->m_nNumber);
    answer[7] = static_cast<unsigned char>(place.m_nIndex);
    PutAddress(&answer[8], nLBA, bMSF);
    PutAddress(&answer[12], nLBA - place.m_pTrack->m_nStartLBA, bMSF, 0);
    return answer;
}

std::vector<unsigned char> MakeMediaCatalogue(const DiscImage& image)
{
    constexpr size_t MCN_DIGITS = 13;
    Bytes answer = MakeSubChannel(SUB_CHANNEL_MCN, NUMBER_BYTES);
    PutNumber(answer, image.GetMCN(), MCN_DIGITS);
    return answer;
}

std::vector<unsigned char> MakeTrackISRC(const DiscImage& image, int nTrack)
{
    constexpr size_t ISRC_CHARACTERS = 12;
    const DISC_TRACK* pTrack = image.FindTrack(nTrack);
    if (pTrack == nullptr)
        return {};
    Bytes answer = MakeSubChannel(SUB_CHANNEL_ISRC, NUMBER_BYTES);
    answer[5] = GetControl(*pTrack);
    answer[6] = static_cast<unsigned char>(nTrack);
    PutNumber(answer, pTrack->m_strISRC, ISRC_CHARACTERS);
    return answer;
}
