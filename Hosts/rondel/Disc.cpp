#include "Disc.h"
#include "HostError.h"
#include "Text.h"
#include <algorithm>
#include <filesystem>

namespace
{
constexpr int DRIVE_OPEN_MODE = 2;

std::string GetTrackRange(const std::vector<TTrackList>& aryTracks)
{
    if (aryTracks.empty())
        return "the disc has no tracks";
    return "the disc has tracks " + std::to_string(aryTracks.front().nTrackNumber) + " to " +
           std::to_string(aryTracks.back().nTrackNumber);
}
} // namespace

Drive::Drive(const std::string& strPath)
{
    RequireDiscService();
    if (m_Drive.Open(Widen(strPath), DRIVE_OPEN_MODE))
        return;
    const std::string strReason = GetDiscErrorText(strPath);
    throw HostError(strReason.empty()
                        ? strPath + " is neither a drive nor a disc image that can be opened; name a "
                                    "drive that 'rondel drives' lists, or a .cue, .toc, .ccd or .nrg file."
                        : strReason);
}

Disc::Disc(const std::string& strPath) : m_strPath(strPath), m_Drive(strPath)
{
    DRIVE_INFO info;
    (void)GetDrive().GetDriveInfo(info);
    TDriveInfo drive(info, 0);
    m_pCD.reset(new CSCSICD(&GetDrive(), drive, Widen(strPath)));
    ReadTracks();
}

void Disc::ReadTracks()
{
    m_aryPlayed = GetTrackList(*m_pCD);
    CorrectTrackList(*m_pCD);
    m_aryTracks = GetTrackList(*m_pCD);
    if (!m_aryTracks.empty())
        return;
    const std::string strReason = GetDiscErrorText(m_strPath);
    if (!strReason.empty())
        throw HostError(strReason);
    throw HostError(m_strPath + " has no table of contents that can be read; put an audio disc in the drive, or look "
                                "at it with 'rondel drives'.");
}

bool Disc::GetIsPlayable(const TTrackList& track) const
{
    const auto isSame = [&](const TTrackList& played)
    {
        return played.nTrackNumber == track.nTrackNumber && played.nStartSector == track.nStartSector &&
               played.nSectors == track.nSectors;
    };
    return track.bDataTrack == 0 && std::any_of(m_aryPlayed.begin(), m_aryPlayed.end(), isSame);
}

const TTrackList& Disc::GetAudioTrack(int nTrack) const
{
    for (const TTrackList& track : m_aryTracks)
    {
        if (track.nTrackNumber != nTrack)
            continue;
        if (track.bDataTrack != 0)
            throw HostError("track " + std::to_string(nTrack) +
                            " is a data track and has no audio; choose another one.");
        if (!GetIsPlayable(track))
            throw HostError("track " + std::to_string(nTrack) +
                            " cannot be played, since the disc does not begin with track 1; 'rondel rip' reads it.");
        return track;
    }
    throw HostError("there is no track " + std::to_string(nTrack) + ": " + GetTrackRange(m_aryTracks) +
                    "; choose one of them.");
}

std::string GetFullName(const std::string& strDisc)
{
    std::error_code error;
    return std::filesystem::exists(strDisc, error) ? std::filesystem::absolute(strDisc, error).string() : strDisc;
}

std::string GetDrivePath(const std::string& strDisc)
{
    std::error_code error;
    std::string strPath = GetFullName(strDisc);
    if (strPath.find(',') == std::string::npos || !std::filesystem::exists(strDisc, error))
        return strPath;
    static constexpr char HEX_DIGITS[] = "0123456789ABCDEF";
    std::string strURL = "file://";
    for (const char c : strPath)
    {
        const unsigned char nByte = static_cast<unsigned char>(c);
        if (c != ',' && c != '%')
            strURL += c;
        else
            (strURL += '%').append({HEX_DIGITS[nByte >> 4], HEX_DIGITS[nByte & 15]});
    }
    return strURL;
}
