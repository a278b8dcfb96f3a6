// rondel drives: which drives there are, and what state they are in.

#include "Commands.h"
#include "LyDisc.h"
#include "Output.h"
#include "Services.h"
#include <cstdio>
#include <nlohmann/json.hpp>

namespace
{
using json = nlohmann::ordered_json;

const char* GetStateName(int nState)
{
    switch (nState)
    {
    case DISC_DRIVE_READY:
        return "ready";
    case DISC_DRIVE_NO_DISC:
        return "no disc";
    case DISC_DRIVE_TRAY_OPEN:
        return "tray open";
    case DISC_DRIVE_HELD:
        return "in use";
    case DISC_DRIVE_BECOMING:
        return "getting ready";
    default:
        return "unusable";
    }
}

json Describe(const LISTED_DRIVE& drive)
{
    return {{"path", drive.strPath},
            {"letter", drive.strLetter},
            {"vendor", drive.strVendor},
            {"model", drive.strModel},
            {"revision", drive.strRevision},
            {"kind", drive.bImage ? "image" : "device"},
            {"state", GetStateName(drive.nState)},
            {"reason", drive.strReason}};
}

void Print(const std::vector<LISTED_DRIVE>& aryDrives)
{
    if (aryDrives.empty())
    {
        std::puts("No drive was found. A disc image is a drive, too: name its file, or give it a letter with\n"
                  "rondel options set \"Disc Service\" \"Letter D\" IMAGE");
        return;
    }
    std::puts("Letter  Kind    State          Drive");
    for (const LISTED_DRIVE& drive : aryDrives)
    {
        std::printf("%-6s  %-6s  %-13s  %s  %s %s %s\n", drive.strLetter.empty() ? "-" : drive.strLetter.c_str(),
                    drive.bImage ? "image" : "device", GetStateName(drive.nState), drive.strPath.c_str(),
                    drive.strVendor.c_str(), drive.strModel.c_str(), drive.strRevision.c_str());
        if (!drive.strReason.empty())
            std::printf("        %s\n", drive.strReason.c_str());
    }
}
} // namespace

void AddDrivesCommand(CLI::App& app, int& nExitCode)
{
    auto pJson = std::make_shared<bool>(false);
    CLI::App* pCommand = app.add_subcommand("drives", "Lists the drives of this machine and the images with a letter.");
    pCommand->add_flag("--json", *pJson, "print JSON for programs");
    pCommand->callback(
        [pJson, &nExitCode]
        {
            const std::vector<LISTED_DRIVE> aryDrives = ListDrives();
            json list = json::array();
            for (const LISTED_DRIVE& drive : aryDrives)
                list.push_back(Describe(drive));
            if (*pJson)
                PrintJson(list);
            else
                Print(aryDrives);
            CheckOutput();
            nExitCode = EXIT_DONE;
        });
}
