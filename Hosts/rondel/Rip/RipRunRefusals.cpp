// What can be refused before the disc is read: encoders, drive, wishes, names and places, and a state to go on behind.

#include "Disc.h"
#include "HostError.h"
#include "RipFacts.h"
#include "RipFiles.h"
#include "RipLeftovers.h"
#include "RipResume.h"
#include "RipRunDetails.h"
#include "RipSections.h"
#include "TagEdit.h"
#include "Text.h"
#include "Verification.h"
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <sstream>

void RipRun::MakeEncoders()
{
    for (const std::string& strText : m_Wishes.aryEncoders)
    {
        ENCODER_CHOICE choice;
        const std::string strFault = ParseEncoderChoice(strText, choice);
        if (!strFault.empty())
            throw HostError(strFault + ".");
        RIP_ENCODER_FACTS facts{choice.strName, choice.strSuffix, {}, {}};
        std::unique_ptr<RipEncoder> pEncoder;
        if (!choice.bWAV)
        {
            pEncoder = std::make_unique<RipEncoder>(choice);
            if (facts.strSuffix.empty())
                facts.strSuffix = pEncoder->GetText("Extension");
            facts.strLibrary = pEncoder->GetText("Library");
            facts.strSettings = pEncoder->GetText("Settings");
        }
        m_aryFacts.push_back(facts);
        m_aryEncoders.push_back(std::move(pEncoder));
    }
}

void RipRun::OpenDrive()
{
    RequireDiscService();
    m_strPath = GetDrivePath(m_Wishes.strDisc);
    (void)m_Ripper.SetCopyMode(COPY_MODE_PLAYBACK); // the cache is measured once it is certain that there is a rip
    (void)m_Ripper.SetReadSpeed(m_Wishes.nSpeed);
    const bool bOpen = m_Ripper.OpenDrive(Widen(m_strPath), false) == CDRIPPER_DONE;
    if (bOpen && GetCD().m_FirstTrack != nullptr)
        return CorrectTrackList(GetCD());
    const std::string strReason = GetDiscErrorText(m_strPath);
    if (!strReason.empty())
        throw HostError(strReason);
    throw HostError(m_strPath + (bOpen ? " has no table of contents that can be read; put an audio disc in the drive."
                                       : " is neither a drive nor a disc image that can be opened; name a drive that "
                                         "'rondel drives' lists, or a .cue, .toc, .ccd or .nrg file."));
}

void RipRun::Plan()
{
    RIP_PLAN plan = MakeRipPlan(GetTrackList(GetCD()), m_Wishes.choice);
    m_Report.strProgram = std::string("rondel ") + RONDEL_VERSION;
    m_Report.strStarted = MakeLocalTime();
    m_Report.strCommand = MakeRipCommandLine(m_Wishes);
    m_Report.bSecure = m_Wishes.bSecure;
    m_Report.drive = FindDriveFacts(m_Ripper, m_Wishes.strDisc);
    m_Report.disc = FindDiscFacts(m_Ripper);
    m_Report.aryPieces = std::move(plan.aryPieces);
    m_Report.aryNotes = std::move(plan.aryNotes);
    FindPieceFacts(m_Ripper, m_Report.aryPieces);
    std::istringstream warnings(GetDiscWarnings(m_strPath));
    for (std::string strLine; std::getline(warnings, strLine);)
        m_Report.aryNotes.push_back(strLine);
    RipSectorList list;
    for (const RIP_PIECE& piece : m_Report.aryPieces)
        if (!AddRangeSections(list, GetCD(), piece.nStart, piece.nSectors))
            throw HostError("sectors " + std::to_string(piece.nStart) + " to " +
                            std::to_string(piece.nStart + piece.nSectors - 1) +
                            " are not all audio of this disc; 'rondel info' shows where its tracks lie.");
    m_Names = MakeRipNames(m_Report, m_aryFacts, m_Wishes.names);
    (void)m_Sums.SetLayout(m_Report.disc.layout); // without one there are no sums, and the report has none
}

void RipRun::CheckNames()
{
    std::set<std::string> setNames = {m_Names.GetState()};
    std::error_code error;
    const bool bState = std::filesystem::exists(m_Names.GetState(), error);
    for (const std::string& strName : m_Names.GetAll())
    {
        if (!setNames.insert(strName).second)
            throw HostError("two files of this rip would both be " + strName +
                            "; give a command another suffix, or the files other names with --name.");
        if (std::filesystem::is_directory(strName, error))
            throw HostError(strName + " is a folder; choose another folder with --to, or other names with --name.");
        // A link that leads nowhere is there, too: the file would take its place.
        const bool bThere = std::filesystem::exists(std::filesystem::symlink_status(strName, error));
        if (m_Wishes.bOverwrite || (bState && m_Wishes.bResume) || !bThere)
            continue;
        if (bState)
            throw HostError("a rip was broken off in " + m_Names.strFolder +
                            "; go on with --resume, or begin anew with --overwrite.");
        throw HostError(strName +
                        " exists already; choose another folder with --to, or replace what is there with --overwrite.");
    }
}

void RipRun::CheckPlaces()
{
    if (!m_Wishes.names.strPicture.empty())
        (void)LoadTagPicture(m_Wishes.names.strPicture); // refused now, not when the last file is ended
    for (const std::string& strAnswer : m_Wishes.aryAnswers)
        CheckAnswerFile(strAnswer);
    std::set<std::filesystem::path> setFolders = {m_Names.strFolder};
    for (const RIP_GROUP& group : m_Names.aryGroups)
        for (const RIP_ORDER& order : group.aryOrders)
            setFolders.insert(std::filesystem::path(order.strPath).parent_path());
    for (const std::filesystem::path& folder : setFolders)
    {
        if (const std::error_code error = m_Folders.Make(folder); error)
            throw HostError(folder.string() + " cannot be made (" + error.message() +
                            "); choose another folder with --to.");
        // The proof of the folder also readies what removes files in the making when a second signal comes.
        const int nError = CreatePartialFile((folder / RIP_PROOF_NAME).string())->GetIsOpen() ? 0 : errno;
        if (nError != 0)
            throw HostError(folder.string() + " cannot be written to (" + std::strerror(nError) +
                            "); choose another folder with --to.");
    }
}

// A state that is not to be gone on with still tells which files in the making were not its own.
void RipRun::Resume()
{
    std::error_code error;
    const std::string strState = m_Names.GetState();
    const bool bState = std::filesystem::exists(strState, error);
    std::optional<RIP_REPORT> state;
    try
    {
        if (bState)
            state = ReadRipState(strState, m_Report, m_Names);
    }
    catch (const HostError&)
    {
        if (m_Wishes.bResume)
            throw;
    }
    RemoveLeftovers(m_Names, state && state->strCommand == m_Report.strCommand ? &*state : nullptr);
    m_Report.aryPartsBefore = ListPartialFiles(m_Names);
    if (m_Wishes.bResume && !bState)
        m_Report.aryNotes.push_back("There was nothing to resume; the rip began at its beginning.");
    else if (m_Wishes.bResume)
        TakeWholePieces(*state, m_Report, m_Names, m_Sums);
}
