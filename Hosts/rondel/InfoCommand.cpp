// rondel info: what is on the disc and what the drive can do.

#include "Commands.h"
#include "Disc.h"
#include "HostError.h"
#include "Text.h"
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>

namespace
{
using json = nlohmann::ordered_json;

struct CAPABILITY
{
    int nCode; // of CTHDriveInterface::QueryCDParms
    const char* pName;
    const char* pText;
    bool bFlag;
};

const CAPABILITY s_aryCapabilities[] = {
    {29, "max_read_speed", "fastest read speed (times)", false},
    {31, "buffer_kib", "buffer (KiB)", false},
    {13, "cd_da", "reads CD-DA", true},
    {14, "accurate_stream", "accurate stream", true},
    {17, "c2_pointers", "C2 pointers", true},
    {15, "rw_subchannel", "R-W sub-channel", true},
    {18, "isrc", "ISRC", true},
    {19, "upc", "UPC", true},
    {12, "multi_session", "multi-session", true},
    {20, "lock", "door lock", true},
    {23, "eject", "eject", true},
};

std::string GetText(const LyStringArray& aryTexts, int nTrack)
{
    return nTrack >= 1 && nTrack <= aryTexts.GetSize() ? Narrow(aryTexts[nTrack - 1]) : std::string();
}

json DescribeTrack(const TTrackList& track, const CSCSICD& cd)
{
    return {{"number", track.nTrackNumber},
            {"start_sector", track.nStartSector},
            {"sectors", track.nSectors},
            {"start", FormatMSF(track.nStartSector + LY_CD_MSF_OFFSET)},
            {"length", FormatMSF(track.nSectors)},
            {"type", track.bDataTrack ? "data" : "audio"},
            {"channels", track.nChannels},
            {"pre_emphasis", track.bPreEmphasis != 0},
            {"copy_prohibited", track.bCopyProhibited != 0},
            {"title", GetText(cd.m_TrackTitles, track.nTrackNumber)},
            {"performer", GetText(cd.m_TrackPerformers, track.nTrackNumber)}};
}

json DescribeDrive(CTHDriveInterface& drive)
{
    DRIVE_INFO info;
    (void)drive.GetDriveInfo(info);
    json capabilities = json::object();
    for (const CAPABILITY& capability : s_aryCapabilities)
    {
        unsigned int nValue = 0;
        if (!drive.QueryCDParms(capability.nCode, nValue))
            continue;
        if (capability.bFlag)
            capabilities[capability.pName] = nValue != 0;
        else
            capabilities[capability.pName] = nValue;
    }
    return {{"vendor", Narrow(info.m_strVendor)}, {"model", Narrow(info.m_strModel)}, {"capabilities", capabilities}};
}

// The disc as the user named it, where it is a file in full.
std::string GetFullName(const std::string& strDisc)
{
    std::error_code error;
    return std::filesystem::exists(strDisc, error) ? std::filesystem::absolute(strDisc, error).string() : strDisc;
}

json Describe(Disc& disc, const std::string& strDisc)
{
    CSCSICD& cd = disc.GetCD();
    const bool bText = cd.ReadCDText();
    json tracks = json::array();
    for (const TTrackList& track : disc.GetTracks())
        tracks.push_back(DescribeTrack(track, cd));
    return {{"disc", GetFullName(strDisc)},
            {"title", Narrow(cd.m_strDiscTitle)},
            {"performer", Narrow(cd.m_strDiscPerformer)},
            {"cd_text", bText},
            {"tracks", tracks},
            {"drive", DescribeDrive(disc.GetDrive())}};
}

std::string Join(const std::string& strTitle, const std::string& strPerformer)
{
    if (strTitle.empty() || strPerformer.empty())
        return strTitle + strPerformer;
    return strTitle + " - " + strPerformer;
}

void PrintTracks(const json& disc)
{
    std::puts("Track  Start     Length    Type   Ch  Pre-emph.  Copy       Title");
    for (const json& track : disc["tracks"])
    {
        std::printf("%5d  %-8s  %-8s  %-5s  %2d  %-9s  %-9s  %s\n", track["number"].get<int>(),
                    track["start"].get<std::string>().c_str(), track["length"].get<std::string>().c_str(),
                    track["type"].get<std::string>().c_str(), track["channels"].get<int>(),
                    track["pre_emphasis"].get<bool>() ? "yes" : "no",
                    track["copy_prohibited"].get<bool>() ? "no" : "permitted",
                    Join(track["title"], track["performer"]).c_str());
    }
}

void PrintDrive(const json& drive)
{
    std::printf("\nDrive: %s %s\n", drive["vendor"].get<std::string>().c_str(),
                drive["model"].get<std::string>().c_str());
    const json& values = drive["capabilities"];
    for (const CAPABILITY& capability : s_aryCapabilities)
    {
        if (!values.contains(capability.pName))
            continue;
        const json& value = values[capability.pName];
        std::printf("  %-28s %s\n", capability.pText,
                    value.is_boolean() ? (value.get<bool>() ? "yes" : "no") : value.dump().c_str());
    }
}

void Print(const json& disc)
{
    const std::string strName = Join(disc["title"], disc["performer"]);
    std::printf("Disc: %s\n", disc["disc"].get<std::string>().c_str());
    std::printf("%s\n\n", strName.empty() ? "No CD-Text for the disc" : strName.c_str());
    PrintTracks(disc);
    PrintDrive(disc["drive"]);
}

struct INFO_OPTIONS
{
    std::string strDisc;
    bool bJson = false;
};
} // namespace

void AddInfoCommand(CLI::App& app, int& nExitCode)
{
    auto pOptions = std::make_shared<INFO_OPTIONS>();
    CLI::App* pCommand = app.add_subcommand("info", "Shows the table of contents, the CD-Text and the drive.");
    pCommand->add_option("DISC", pOptions->strDisc, "a disc image (.cue, .toc) or a drive")->required();
    pCommand->add_flag("--json", pOptions->bJson, "print JSON for programs");
    pCommand->callback(
        [pOptions, &nExitCode]
        {
            Disc disc(GetDrivePath(pOptions->strDisc));
            const json description = Describe(disc, pOptions->strDisc);
            ShowWarnings(disc.GetPath());
            if (pOptions->bJson)
                // A text that is no UTF-8 must not stop the listing.
                std::puts(description.dump(2, ' ', false, json::error_handler_t::replace).c_str());
            else
                Print(description);
            if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
                throw HostError(std::string("the listing could not be written (") + std::strerror(errno) +
                                "); choose another place for it.");
            nExitCode = EXIT_DONE;
        });
}
