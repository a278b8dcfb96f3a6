#include "Disc.h"
#include "HostError.h"
#include "LySharedToolsHelper.h"
#include "Text.h"
#include <cstdio>
#include <filesystem>
#include <sstream>

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
// What an export of the disc service says of a path; empty where there is no such export.
std::string AskService(const char* pExport, const std::string& strPath)
{
    using GET_TEXT = wchar_t* (*)(const wchar_t*);
    if (GetDiscManager(true) == nullptr)
        return {};
    const GET_TEXT pGetText = reinterpret_cast<GET_TEXT>(g_LySharedToolsHelper.m_DiscLibrary.GetProcAddress(pExport));
    if (pGetText == nullptr)
        return {};
    wchar_t* pText = pGetText(Widen(strPath));
    std::string strText = Narrow(pText);
    LyCom::SysFreeString(pText);
    return strText;
}
} // namespace

Disc::Disc(const std::string& strPath) : m_strPath(strPath)
{
    if (GetDiscManager(true) == nullptr)
        throw HostError("the disc service libLyDisc.dylib does not load; it belongs beside the program.");
    if (!m_Drive.Open(Widen(strPath), DRIVE_OPEN_MODE))
    {
        const std::string strReason = GetDiscErrorText(strPath);
        throw HostError(strReason.empty() ? strPath + " is neither a drive nor a disc image that can be opened; name a "
                                                      ".cue or .toc file."
                                          : strReason);
    }
    DRIVE_INFO info;
    (void)m_Drive.GetDriveInfo(info);
    TDriveInfo drive(info, 0);
    m_pCD.reset(new CSCSICD(&m_Drive, drive, Widen(strPath)));
    ReadTracks();
}

Disc::~Disc()
{
    m_pCD.reset(); // it borrows the drive
    m_Drive.Close();
}

void Disc::ReadTracks()
{
    for (const TTrackListNode* pNode = m_pCD->m_FirstTrack; pNode != nullptr; pNode = pNode->pNext)
        m_aryTracks.push_back(pNode->Info);
    if (m_aryTracks.empty())
        throw HostError(m_strPath + " has no table of contents: is there an audio disc in the drive?");
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
        return track;
    }
    throw HostError("there is no track " + std::to_string(nTrack) + ": " + GetTrackRange(m_aryTracks) +
                    "; choose one of them.");
}

std::string GetDrivePath(const std::string& strDisc)
{
    std::error_code error;
    if (!std::filesystem::exists(strDisc, error))
        return strDisc;
    std::string strPath = std::filesystem::absolute(strDisc, error).string();
    if (strPath.find(',') == std::string::npos)
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

std::string GetDiscErrorText(const std::string& strPath) { return AskService("GetDiscErrorText", strPath); }

std::string GetDiscWarnings(const std::string& strPath) { return AskService("GetDiscWarnings", strPath); }

void ShowWarnings(const std::string& strPath)
{
    std::istringstream stream(GetDiscWarnings(strPath));
    for (std::string strLine; std::getline(stream, strLine);)
        std::fprintf(stderr, "rondel: note: %s\n", strLine.c_str());
}
