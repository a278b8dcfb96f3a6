// rondel info: what is on the disc and what the drive can do.

#include "CDRipper.h"
#include "Commands.h"
#include "Disc.h"
#include "HostError.h"
#include "LogEscapes.h"
#include "Output.h"
#include "ReadOffset.h"
#include "Text.h"
#include <cstdio>
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
            {"title", GetTrackText(cd.m_TrackTitles, track.nTrackNumber)},
            {"performer", GetTrackText(cd.m_TrackPerformers, track.nTrackNumber)}};
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
    const std::string strVendor = Narrow(info.m_strVendor);
    const std::string strModel = Narrow(info.m_strModel);
    return {{"vendor", strVendor},
            {"model", strModel},
            {"capabilities", capabilities},
            {"read_offset", FindReadOffset(strVendor, strModel)}};
}

// What is remembered of the drive: its list in the option store (DriveMemory.cpp has the meaning of each place).
json DescribeMemory(const std::string& strDrive)
{
    CCDRipper ripper;
    (void)ripper.Init();
    ripper.GetCDParams(Widen(strDrive));
    json list = json::array();
    for (int n = 0; n < ripper.m_CDParams.GetSize(); ++n)
        list.push_back(Narrow(ripper.m_CDParams[n]));
    return list;
}

// Forgets the remembered size of the drive's read cache, if there is one, and has it measured and remembered anew.
void MeasureCache(const std::string& strDrive)
{
    CCDRipper ripper;
    (void)ripper.Init();
    const LyString strPath = Widen(strDrive);
    ripper.GetCDParams(strPath);
    if (ripper.m_CDParams.GetSize() > CD_PARAM_CACHE_BYTES)
    {
        (void)ripper.m_CDParams.SetAt(CD_PARAM_CACHE_BYTES, LyString(L"-1"), true);
        ripper.PutCDParams(strPath);
    }
    (void)ripper.SetCopyMode(COPY_MODE_RIP);
    if (ripper.OpenDrive(strPath, false) != CDRIPPER_DONE)
        throw HostError(strDrive + " could not be opened for measuring; look at it with 'rondel drives'.");
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
            {"drive", DescribeDrive(disc.GetDrive())},
            {"remembered", DescribeMemory(disc.GetPath())}};
}

// Texts of discs and drives are anybody's: none of them moves the cursor.
std::string ForLine(const json& text) { return EscapeForLine(text.get_ref<const std::string&>()); }

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
                    Join(ForLine(track["title"]), ForLine(track["performer"])).c_str());
    }
}

void PrintDrive(const json& drive)
{
    std::printf("\nDrive: %s %s\n", ForLine(drive["vendor"]).c_str(), ForLine(drive["model"]).c_str());
    const json& values = drive["capabilities"];
    for (const CAPABILITY& capability : s_aryCapabilities)
    {
        if (!values.contains(capability.pName))
            continue;
        const json& value = values[capability.pName];
        std::printf("  %-28s %s\n", capability.pText,
                    value.is_boolean() ? (value.get<bool>() ? "yes" : "no") : value.dump().c_str());
    }
    std::printf("  %-28s %+d\n", "read offset (frames)", drive["read_offset"].get<int>());
}

void PrintMemory(const json& list)
{
    if (list.size() <= CD_PARAM_CACHE_BYTES)
    {
        std::puts("\nNothing is remembered of this drive; --measure-cache measures its read cache.");
        return;
    }
    const std::string strModel = ForLine(list[CD_PARAM_MODEL]);
    std::printf("\nRemembered: %s, read cache of %s bytes\n",
                strModel.empty() ? "a drive without a name" : strModel.c_str(),
                ForLine(list[CD_PARAM_CACHE_BYTES]).c_str());
}

void Print(const json& disc)
{
    const std::string strName = Join(ForLine(disc["title"]), ForLine(disc["performer"]));
    std::printf("Disc: %s\n", ForLine(disc["disc"]).c_str());
    std::printf("%s\n\n", strName.empty() ? "No CD-Text for the disc" : strName.c_str());
    PrintTracks(disc);
    PrintDrive(disc["drive"]);
    PrintMemory(disc["remembered"]);
}

struct INFO_OPTIONS
{
    std::string strDisc;
    bool bJson = false;
    bool bMeasureCache = false;
};
} // namespace

void AddInfoCommand(CLI::App& app, int& nExitCode)
{
    auto pOptions = std::make_shared<INFO_OPTIONS>();
    CLI::App* pCommand = app.add_subcommand("info", "Shows the table of contents, the CD-Text and the drive.");
    pCommand->add_option("DISC", pOptions->strDisc, "a drive or a disc image")->required();
    pCommand->add_flag("--json", pOptions->bJson, "print JSON for programs");
    pCommand->add_flag("--measure-cache", pOptions->bMeasureCache, "measure the drive's read cache and remember it");
    pCommand->callback(
        [pOptions, &nExitCode]
        {
            if (pOptions->bMeasureCache)
                MeasureCache(GetDrivePath(pOptions->strDisc)); // it is shown with what is remembered
            Disc disc(GetDrivePath(pOptions->strDisc));
            const json description = Describe(disc, pOptions->strDisc);
            ShowWarnings(disc.GetPath());
            if (pOptions->bJson)
                PrintJson(description);
            else
                Print(description);
            CheckOutput();
            nExitCode = EXIT_DONE;
        });
}
