// The built disc service, alone in a folder where its users look for it, with discs and drive profiles beside it, and
// the evidence that it collects.

#pragma once

#include "LyDisc.h"
#include "PlayerDisc.h"
#include "ProcessInfo.h"
#include "UTF8.h"
#include <dlfcn.h>
#include <string>
#include <vector>

class ServiceFolder : public DiscFolder
{
public:
    static constexpr const char* SERVICE = RONDEL_BIN_DIR "/libLyDisc.dylib";

    ServiceFolder() { GetProcessInfo(true)->SetSharedLibraryPath(WidenUTF8(GetLibraryFolder()).c_str()); }

    // name.cue and name.bin, one track of this content.
    std::filesystem::path WriteDisc(const std::string& strName, const std::string& strContent) const
    {
        (void)Write(strName + ".bin", strContent);
        return Write(strName + ".cue", "FILE \"" + strName + ".bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    }
    // The same, of nSectors that take no room.
    std::filesystem::path WriteEmptyDisc(const std::string& strName, int nSectors) const
    {
        const auto disc = WriteDisc(strName, "");
        std::filesystem::resize_file(Get(strName + ".bin"), static_cast<uintmax_t>(nSectors) * LY_CD_SECTOR_BYTES);
        return disc;
    }
    static void WriteProfile(const std::filesystem::path& disc, const std::string& strProfile)
    {
        std::ofstream(disc.string() + ".drive") << strProfile;
    }

private:
    // One for the process, which settles once where its libraries lie.
    static std::string GetLibraryFolder()
    {
        static const TempFolder s_Folder;
        if (!std::filesystem::exists(s_Folder.GetPath("libLyDisc.dylib")))
            std::filesystem::create_symlink(SERVICE, s_Folder.GetPath("libLyDisc.dylib"));
        return s_Folder.GetPath("");
    }
};

// What the service, which somebody has loaded, holds of the drive's commands behind that number; all there is.
inline std::vector<DISC_EVIDENCE> ReadEvidence(const std::filesystem::path& drive, unsigned long long nAfter = 0)
{
    constexpr size_t PART = 1000;
    std::vector<DISC_EVIDENCE> aryAll;
    void* pLibrary = dlopen(ServiceFolder::SERVICE, RTLD_NOW | RTLD_NOLOAD);
    if (pLibrary == nullptr)
    {
        ADD_FAILURE() << "the disc service is not loaded";
        return aryAll;
    }
    const auto pGet = reinterpret_cast<decltype(&GetDiscEvidence)>(dlsym(pLibrary, "GetDiscEvidence"));
    for (int nGot = 1; nGot > 0;)
    {
        aryAll.resize(aryAll.size() + PART);
        DISC_EVIDENCE* pPart = aryAll.data() + (aryAll.size() - PART);
        nGot = pGet(WidenUTF8(drive.string()).c_str(), nAfter, pPart, PART);
        aryAll.resize(aryAll.size() - PART + static_cast<size_t>(nGot));
        nAfter = aryAll.empty() ? nAfter : aryAll.back().m_nNumber;
    }
    dlclose(pLibrary);
    return aryAll;
}

inline std::vector<DISC_EVIDENCE> SelectOpcode(const std::vector<DISC_EVIDENCE>& aryAll, unsigned char nOpcode)
{
    std::vector<DISC_EVIDENCE> arySelected;
    for (const DISC_EVIDENCE& record : aryAll)
        if (record.m_nOpcode == nOpcode)
            arySelected.push_back(record);
    return arySelected;
}
