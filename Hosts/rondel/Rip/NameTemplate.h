// NameTemplate: the names of ripped files, made of the disc's texts by a template that the user writes.
//
//   %{albumartist}/%{album}/%{track} %{title}
//
// Syntax:  "/" stands between folders, "%{field}" for a text, "%%" for a per cent sign; all else stands for itself.
//          Fields, in any case:
//
//            album         "Unknown Album" where the disc does not tell it
//            albumartist   of the whole disc; else the piece's artist; else "Unknown Artist"
//            title         else "Track" and the number
//            artist        of the piece; else that of the disc; else "Unknown Artist"
//            isrc          else nothing
//            track         its number, of two digits at least
//            tracks        how many there are
//
// Names:   relative, without a suffix, and good on FAT, exFAT, NTFS, HFS+, APFS and whatever Linux has: valid UTF-8
//          without < > : " \ | ? * and control characters, no names that devices have there, no component that begins
//          or ends with a dot or a blank, is empty or is longer than 255 bytes. What a text of the disc holds never
//          makes a folder. The last component leaves room for a suffix.
// Errors:  HostError for a template that is none.
// Threads: any; functions without state.

#pragma once

#include <string>
#include <vector>

// What a template may put into a name. Texts are UTF-8 from anywhere, and empty if they are not known.
struct NAME_FIELDS
{
    std::string strAlbum;
    std::string strAlbumArtist;
    std::string strTitle;
    std::string strArtist;
    std::string strISRC;
    int nTrack = 0; // 0: no track
    int nTracks = 0;
};

extern const char* const DEFAULT_NAME_TEMPLATE;

constexpr size_t NAME_MAX_BYTES = 255;     // of a component; what all those file systems have
constexpr size_t NAME_SUFFIX_BYTES = 32;   // that the last component leaves for suffixes, ".flac" or ".wav.part"
constexpr size_t NAME_MAX_TEMPLATE = 1000; // bytes
constexpr size_t NAME_MAX_COMPONENTS = 9;  // folders and the file; no system's longest path is reached

// The name of a piece. Throws HostError.
std::string ExpandNameTemplate(const std::string& strTemplate, const NAME_FIELDS& fields);

// For the command line: what is wrong with the template, as a sentence, or nothing.
std::string CheckNameTemplate(const std::string& strTemplate);

// One text as one component of a name, made safe as above; "_" if nothing remains of it. nMaxBytes from 4 on.
std::string MakeSafeName(const std::string& strText, size_t nMaxBytes = NAME_MAX_BYTES);

// Makes the names of several pieces different from each other, also where case does not count or accents are stored in
// another form: " (2)", " (3)" ... behind the later ones. What ExpandNameTemplate made stays as safe as it was.
void MakeNamesDistinct(std::vector<std::string>& aryNames);
// Whether a file system could take the two for one.
bool IsSameName(const std::string& strFirst, const std::string& strSecond);
