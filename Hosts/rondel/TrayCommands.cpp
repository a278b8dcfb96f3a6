// rondel eject, close, lock and unlock: the door of a drive.

#include "Commands.h"
#include "Disc.h"
#include "HostError.h"
#include "Keys.h"
#include "MMC.h"
#include "OptionsHelper.h"
#include "Text.h"
#include <cstdio>

namespace
{
constexpr int MAX_UNIT_ATTENTIONS = 3; // a drive may have several to tell, one at a time

// Throws if the last command failed. The command layer itself reports no failure of these.
void Check(CTHDriveInterface& drive, const std::string& strDrive, const char* pWhat)
{
    int nResponse = 0;
    int nKey = 0;
    int nASC = 0;
    int nASCQ = 0;
    if (!drive.GetLastErrorCodes(nResponse, nKey, nASC, nASCQ))
        return;
    if (nASC == ASC_LOAD_OR_EJECT_FAILED)
        throw HostError(strDrive + " could not be " + pWhat + ": its door is locked; use 'rondel unlock'.");
    std::string strReason = Narrow(TranslateString(drive.GetLastErrorMsg()));
    if (strReason.ends_with('.'))
        strReason.pop_back();
    throw HostError(strDrive + " could not be " + pWhat + " (" + strReason + "); look at it with 'rondel drives'.");
}

void Send(CTHDriveInterface& drive, unsigned char nOpcode, unsigned char nAction)
{
    const unsigned char aryCDB[6] = {nOpcode, 0, 0, 0, nAction, 0};
    for (int nTry = 0; nTry <= MAX_UNIT_ATTENTIONS; ++nTry)
    {
        (void)drive.SendCmd(DRIVE_TRANSFER_NONE, aryCDB, sizeof aryCDB, nullptr, 0, CTHDriveInterface::CD_TIMEOUT_MS,
                            false); // what went wrong is in the sense data
        int nResponse = 0;
        int nKey = 0;
        int nASC = 0;
        int nASCQ = 0;
        // After a change of disc the drive first tells of that, and does nothing.
        if (!drive.GetLastErrorCodes(nResponse, nKey, nASC, nASCQ) || nKey != SENSE_UNIT_ATTENTION)
            return;
    }
}

// The service unlocks the door when its last holder goes, and so does the system when a program dies: a lock lasts as
// long as the program that holds it.
void HoldLocked(const std::string& strDisc)
{
    std::printf("The door of %s is locked until this program ends: press q or Ctrl-C.\n", strDisc.c_str());
    (void)std::fflush(stdout);
    Keys keys;
    while (keys.Read(1000) != KEY_QUIT)
    {
    }
}

void Add(CLI::App& app, int& nExitCode, const char* pName, const char* pHelp,
         void (*pRun)(CTHDriveInterface&, const std::string&))
{
    auto pDisc = std::make_shared<std::string>();
    CLI::App* pCommand = app.add_subcommand(pName, pHelp);
    pCommand->add_option("DRIVE", *pDisc, "a drive, by its letter or path")->required();
    pCommand->callback(
        [pDisc, pRun, &nExitCode]
        {
            Drive drive(GetDrivePath(*pDisc));
            pRun(drive.GetInterface(), *pDisc);
            nExitCode = EXIT_DONE;
        });
}
} // namespace

void AddTrayCommands(CLI::App& app, int& nExitCode)
{
    Add(app, nExitCode, "eject", "Opens the tray of a drive.",
        [](CTHDriveInterface& drive, const std::string& strDisc)
        {
            Send(drive, CDB_START_STOP_UNIT, START_STOP_LOAD_EJECT);
            Check(drive, strDisc, "opened");
        });
    Add(app, nExitCode, "close", "Closes the tray of a drive.",
        [](CTHDriveInterface& drive, const std::string& strDisc)
        {
            Send(drive, CDB_START_STOP_UNIT, START_STOP_LOAD_EJECT | START_STOP_START);
            Check(drive, strDisc, "closed");
        });
    Add(app, nExitCode, "lock", "Keeps the door of a drive locked until the program is ended.",
        [](CTHDriveInterface& drive, const std::string& strDisc)
        {
            Send(drive, CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, 1);
            Check(drive, strDisc, "locked");
            HoldLocked(strDisc);
        });
    Add(app, nExitCode, "unlock", "Unlocks the door of a drive.",
        [](CTHDriveInterface& drive, const std::string& strDisc)
        {
            Send(drive, CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, 0);
            Check(drive, strDisc, "unlocked");
        });
}
