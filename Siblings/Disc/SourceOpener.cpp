#include "SourceOpener.h"

#include "CDUnits.h"
#include "PathResolve.h"
#include "SheetText.h"
#include <cstdio>
#include <string_view>

namespace
{
constexpr size_t MAX_COMPANION_BYTES = 64 * 1024; // CD-Text has at most 8 blocks of 256 packs of 18 bytes

// True for the first bytes of an audio file. Sheets of converted images go on calling the file BINARY, and raw samples
// that start with one of these do not happen: their first bytes are silence.
bool IsAudioFile(const std::string& strPath)
{
    char aryBytes[12] = {};
    std::unique_ptr<FILE, int (*)(FILE*)> pFile(fopen(strPath.c_str(), "rbe"), fclose);
    if (!pFile || fread(aryBytes, 1, sizeof aryBytes, pFile.get()) != sizeof aryBytes)
        return false;
    std::string_view strBytes(aryBytes, sizeof aryBytes);
    std::string_view strForm = strBytes.substr(8);
    if (strBytes.starts_with("RIFF") || strBytes.starts_with("RF64"))
        return strForm == "WAVE";
    if (strBytes.starts_with("FORM"))
        return strForm == "AIFF" || strForm == "AIFC";
    return strBytes.starts_with("fLaC") || strBytes.starts_with("OggS") || strBytes.starts_with("caff") ||
           strBytes.starts_with("riff\x2E\x91\xCF\x11"); // W64
}

// Whether a file can be what it was made as. Data comes in several forms of sector.
bool IsWholeSectors(long long nBytes, bool bData)
{
    if (!bData || nBytes % LY_CD_SECTOR_BYTES == 0)
        return nBytes % LY_CD_SECTOR_BYTES == 0;
    return nBytes % 2048 == 0 || nBytes % 2324 == 0 || nBytes % 2336 == 0;
}
} // namespace

FileSourceOpener::FileSourceOpener(std::string strSheetPath, bool bOnlyFile)
    : m_strSheetPath(std::move(strSheetPath)), m_bOnlyFile(bOnlyFile)
{
}

std::unique_ptr<SectorSource> FileSourceOpener::OpenSource(const std::string& strName, SECTOR_SOURCE_KIND kind,
                                                           std::string& strError, std::string& strWarning)
{
    bool bAudio = kind == SECTOR_SOURCE_AUDIO || kind == SECTOR_SOURCE_AUDIO_SWAPPED;
    std::string strPath =
        ResolveSheetPath(m_strSheetPath, strName, bAudio ? SHEET_FILE_AUDIO : SHEET_FILE_RAW, m_bOnlyFile);
    if (strPath.empty())
    {
        strError = "the file " + QuoteWord(strName) + " was not found in \"" + GetSheetFolder(m_strSheetPath) +
                   "\"; put it beside the sheet or correct its name";
        return nullptr;
    }
    bool bSwap = kind == SECTOR_SOURCE_RAW_SWAPPED || kind == SECTOR_SOURCE_AUDIO_SWAPPED;
    if (!bAudio && (kind == SECTOR_SOURCE_DATA || !IsAudioFile(strPath)))
    {
        std::unique_ptr<SectorSource> pSource = OpenRawSectorSource(strPath, bSwap, strError);
        if (pSource && !IsWholeSectors(pSource->GetBytes(), kind == SECTOR_SOURCE_DATA))
            strWarning = "the file " + QuoteWord(strName) +
                         " ends within a sector; it may have been cut off, so compare it with where it came from";
        return pSource;
    }
    // An audio file knows its own byte order: only what was swapped before it was written is to be swapped.
    return OpenAudioFileSource(strPath, kind == SECTOR_SOURCE_AUDIO_SWAPPED, strError, strWarning);
}

bool FileSourceOpener::LoadCompanion(const std::string& strName, std::string& strContent)
{
    std::string strReason;
    std::string strPath = ResolveSheetPath(m_strSheetPath, strName, SHEET_FILE_COMPANION);
    return !strPath.empty() && LoadSmallFile(strPath, MAX_COMPANION_BYTES, strContent, strReason);
}
