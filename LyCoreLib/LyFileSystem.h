// Well-known folders, directory making, safe replacement of a file, temporary names and readable sizes.
//
// Paths:   every folder handed out ends in "/".
// Errors:  false or an empty string. Only SafeReplaceFile logs.
// Threads: any; no locks. MakeDirectoryTree puts up with another maker of the same folders.

#pragma once

#include "LyString.h"

class LyFileSystem
{
public:
    // ---- Folders
    static LyString GetDirectoryInstance();              // of the host program's file
    static LyString GetDirectoryInstall();               // of CProcessInfo
    static LyString GetDirectoryAppdataLocal();          // of CProcessInfo
    static LyString GetDirectoryAppdataLocalRawOSCall(); // from the environment, for CProcessInfo
    static LyString GetDirectoryAppdataLy();             // the product's folder
    // The folder for temporary files, made if need be. bUseOption asks the player's option store first; to a folder
    // from there bAddFolder adds "Lyndle".
    static LyString GetDirectoryTempLy(bool bUseOption, bool bAddFolder);
    static void CleanDirectory(LyString& strPath); // the long form, with one "/" at its end; empty stays empty

    // ---- Directories
    // Makes the folder and those above it. Nothing can be made without the tools library's file system manager. With
    // bCheckWritable the answer is whether a file can be made in the folder, otherwise whether it is there.
    static bool MakeDirectoryTree(LyString strPath, bool bCheckWritable = false);
    static bool CreateDirectory(const wchar_t* pPath); // one level
    static bool IsWritableDirectory(const LyString& strPath);

    // ---- Files
    static bool DeleteFile(const LyString& strPath);
    static bool FileExists(const wchar_t* pPath, bool bUseFileSystemManager = false);
    static bool FileExistsLowLevel(const wchar_t* pPath);                        // on the disk, and no folder
    static long long FileSize(const wchar_t* pPath, bool bAllowNetwork = false); // bytes; -1 if unknown
    static void MakeUniqueFilename(LyString& strPath); // "a.txt", "a (1).txt", "a (2).txt": the first that is free

    // Puts the file pNew in the place of pOriginal, with one complete copy on the disk at each moment. The new file
    // must have nMinimumSize bytes.
    static bool SafeReplaceFile(const wchar_t* pOriginal, const wchar_t* pNew, int nMinimumSize = 0,
                                bool bDeleteNewOnFailure = false, bool bKeepFileTime = false);
    // Gives a file the times of another. Not on this platform, where the answer is always false.
    static bool SetNewFileTimeInfo(const LyString& strFrom, const LyString& strTo, bool bCreated, bool bAccessed,
                                   bool bModified);
    // A name, not a file, in strDirectory, or in the folder for temporary files if that is empty.
    static LyString GetTemporaryFilename(const LyString& strName, const LyString& strExtension,
                                         bool bAddThreadId = false, bool bMakeUnique = false,
                                         LyString strDirectory = LyString());

    // ---- Sizes
    static LyString FileSizeToReadableFileSize(long long nBytes); // "1023 bytes", "1.5 MB", "512 MB"
    static void FormatStringForFileSize(LyString& strOut, double fValue, const wchar_t* pUnit);

private:
    static bool GetIsDirectory(const LyString& strPath);
    static bool ReplaceThroughBackup(const LyString& strOriginal, const LyString& strNew);
};

// Moves as the system's "mv" does, across volumes too, and into a folder if there is one of that name. True if it
// answered exit status 0.
// Names: any that the disk can have and a string can say. A string says a byte of 0x80 and above only as part of a
//        sequence of the UTF-8 of this system (LyCharacterHelper): of two or of three bytes. What is no such sequence,
//        a single byte of an old encoding or the fourth byte of a code point from 0x10000 up, cannot be named.
bool MoveFile(const wchar_t* pFrom, const wchar_t* pTo);
