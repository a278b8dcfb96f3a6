// From the name in a sheet to the file that is meant. A sheet travels between systems, and its files get renamed and
// converted; the name in it is a hint more often than a path.

#pragma once

#include <string>
#include <string_view>

// What a sheet's file is, and so what may stand in for it.
enum SHEET_FILE_KIND : unsigned char
{
    SHEET_FILE_RAW,
    SHEET_FILE_AUDIO,
    SHEET_FILE_COMPANION // CD-Text and the like
};

// The sheet's folder, "." for a sheet without one.
std::string GetSheetFolder(const std::string& strSheetPath);

// Finds the plain file meant by strName in the sheet at strSheetPath. In this order, the first that exists:
//  1. the name as it stands: absolute, or from the sheet's folder on;
//  2. with backslashes as separators, without drive or share; of an absolute path the longest tail that exists in the
//     sheet's folder ("C:\Music\Album\1.wav": "Music/Album/1.wav", "Album/1.wav", "1.wav");
//  3. the same in another case, or in the other of UTF-8 and Latin-1;
//  4. the same with another extension, as files have after converting; raw images and audio files stand in for a raw
//     image, only audio files for an audio file, nothing for a companion;
//  5. if bOnlyFile, a file named as the sheet itself, with the extension of the name or of 4.
// Empty when there is none.
std::string ResolveSheetPath(const std::string& strSheetPath, const std::string& strName, SHEET_FILE_KIND kind,
                             bool bOnlyFile = false);

// The name without its extension, the extension with its dot. A dot at the start belongs to the name.
std::string_view GetNameStem(std::string_view strName);
std::string_view GetNameExtension(std::string_view strName);
