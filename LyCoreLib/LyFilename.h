// LyFilename: a file name as the whole system sees it: a plain path, a URL, or a name that carries data beyond its
// path.
//
// Two written forms carry data; both are taken apart when the name is set, and what they carry becomes properties:
//   wrapper  <XMLFN version="1.0"><Item Name="Filename">/a/b.flac</Item><Item Name="Key">value</Item></XMLFN>
//   suffix   "/a/b.flac;3": behind an extension of 1 to 5 characters, the property "PostExtensionData" is "3"
//
// Parts:   drive + path + name + "." + extension is the text again. A path ends in a separator.
//            /a/b.txt          drive "/", path "a/", name "b", extension "txt"
//            /dev/sr0/x.cda    drive "/dev/sr0", path "/", name "x", extension "cda"
//            C:\a\b.txt        drive "C:", path "\a\"
//            \\host\share\a    drive "\\host\share", path "\", name "a"
//            http://host/a/b   drive "http://", path "host/a/", name "b"
// Errors:  any text is a name; what a name does not have is empty, 0, -1 or false.
// Threads: a name belongs to one thread at a time.

#pragma once

#include "LyString.h"
#include "PropertyMap.h"

enum EFilenameSyntax : int
{
    FILENAME_SYNTAX_UNKNOWN = 0,   // without "/" the backslash form, otherwise the forward slash form
    FILENAME_SYNTAX_MIXED = 1,     // both kinds of separators
    FILENAME_SYNTAX_NATIVE = 2,    // of this operating system: the forward slash form
    FILENAME_SYNTAX_BACKSLASH = 3, //
    FILENAME_SYNTAX_SLASH = 4,     //
    FILENAME_SYNTAX_FILE_URL = 5   // a URL of the file scheme
};

inline constexpr wchar_t FILENAME_SLASH[] = L"/"; // the separator of this operating system

class LyFilename
{
public:
    // Stands in front of names on the drive of the install path, so that stored names survive a move of that drive.
    static constexpr const wchar_t* INSTALL_DRIVE_PREFIX = L"(Install Drive):";

    LyFilename() = default;
    LyFilename(const wchar_t* pName); // null is empty
    LyFilename(const LyString& strName);
    LyFilename(const LyFilename& other) = default;
    LyFilename& operator=(const LyFilename& other);
    LyFilename& operator=(const wchar_t* pName);
    LyFilename& operator=(const LyString& strName);

    void CopyFilename(const LyFilename& other); // name, properties and syntax, as they are
    void Empty();                               // neither name nor properties
    // Takes a written form apart. Runs after each change of the name; whoever changes m_strName calls it.
    void UpdateAfterModifyInternalFilename(bool bClearProperties = true);

    const LyString& GetFilename() const { return m_strName; }
    // The name for system calls: a path, without file scheme and install drive prefix.
    LyString GetFilenameForUseWithOperatingSystem() const;

    // ---- Parts (LyFilenameAnalyze.cpp), of the name for system calls. Every output may be null.
    // *pnPort is 0 without a port. The server path runs from behind the authority up to the name.
    void AnalyzeFilename(LyString* pDrive, LyString* pPath = nullptr, LyString* pName = nullptr,
                         LyString* pExtension = nullptr, LyString* pQuery = nullptr, bool* pbIsURL = nullptr,
                         LyString* pUser = nullptr, LyString* pPassword = nullptr, LyString* pServer = nullptr,
                         int* pnPort = nullptr, LyString* pServerPath = nullptr) const;
    bool GetIsURL() const; // holds "://"
    LyString GetDrive() const;
    LyString GetPath() const; // drive and path
    void GetPath(LyString& strPath) const;
    LyString GetName() const;                                 // without the extension
    LyString GetExtension(bool bAllowOverride = false) const; // with the bool the property "FileType" comes first
    LyString GetFileType() const;                             // the extension, or what overrides it

    // ---- On the disk or behind the URL
    // With bUseFileSystemManager the service of the tools library decides, if there is one; bFlag goes to it.
    bool GetFileExists(bool bUseFileSystemManager = false, bool bFlag = false) const;
    long long GetFileSize(bool bAllowNetwork = false) const; // bytes; -1 if unknown, as of a URL without the bool

    // ---- Working on plain text (LyFilenameSyntax.cpp)
    static void ConvertFilenameSyntax(LyString& strName, EFilenameSyntax eFrom, EFilenameSyntax eTo);
    static bool ConvertFilenameFromInstallPathRelative(LyString& strName); // whether the prefix was there and replaced
    static bool RemoveLocalURLPrefix(LyString& strName);                   // whether "file://" was there
    static void FixDirectoryPath(LyString& strPath, wchar_t cSlash = FILENAME_SLASH[0]); // one separator at the end
    static void AddDirectory(LyString& strPath, const LyString& strDirectory);
    static void IncrementFilename(LyString& strName, bool bRestartAboveOne); // "a.txt", "a (1).txt", "a (2).txt"
    static LyString GetLongName(const LyString& strName); // the name: there are no short forms on this platform
    static LyString GetFilenameDrive(const wchar_t* pName);
    static LyString GetFilenameExtension(const wchar_t* pName);

    LyString m_strName;
    LyPropertyMap m_Properties;
    int m_nSyntax = FILENAME_SYNTAX_MIXED; // EFilenameSyntax: copied with the name, otherwise the caller's

private:
    void UnwrapXML();
    void SplitPostExtensionData();
    static LyString GetDriveOfPlainName(const LyString& strName); // of a name as system calls take it
    long long GetURLSize() const;
};
