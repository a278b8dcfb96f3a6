// The host's own look at a disc: its table of contents, its texts and what the drive can do, asked of the disc service
// through the same command layer as the plug-in uses.

#pragma once

#include "Dac32.h"
#include "DiscTracks.h"
#include "Services.h"
#include <memory>
#include <string>
#include <vector>

class Drive
{
public:
    // Opens the drive or disc image. Throws HostError with the reason.
    explicit Drive(const std::string& strPath);
    ~Drive() { m_Drive.Close(); }
    Drive(const Drive&) = delete;
    Drive& operator=(const Drive&) = delete;

    CTHDriveInterface& GetInterface() { return m_Drive; }

private:
    CTHDriveInterface m_Drive;
};

class Disc
{
public:
    // Opens the drive or disc image and reads its table of contents. Throws HostError with the reason.
    explicit Disc(const std::string& strPath);
    Disc(const Disc&) = delete;
    Disc& operator=(const Disc&) = delete;

    const std::vector<TTrackList>& GetTracks() const { return m_aryTracks; }
    // Whether a player can play it: it is audio, and the plug-in's list has it (DiscTracks.h).
    bool GetIsPlayable(const TTrackList& track) const;
    // The track, checked for being there and for being one that can be played. Throws HostError.
    const TTrackList& GetAudioTrack(int nTrack) const;
    CSCSICD& GetCD() { return *m_pCD; }
    CTHDriveInterface& GetDrive() { return m_Drive.GetInterface(); }
    const std::string& GetPath() const { return m_strPath; }

private:
    void ReadTracks();

    std::string m_strPath;
    Drive m_Drive;
    std::unique_ptr<CSCSICD, void (*)(CSCSICD*)> m_pCD{nullptr, CSCSICD::Delete}; // borrows the drive above
    std::vector<TTrackList> m_aryTracks;
    std::vector<TTrackList> m_aryPlayed; // as the plug-in lists them
};

// The disc as the user named it, where it is a file in full.
std::string GetFullName(const std::string& strDisc);
// How the disc service knows a disc that the user names: a file becomes an absolute path, and what cda:// paths cannot
// carry (a comma) becomes a file URL.
std::string GetDrivePath(const std::string& strDisc);
