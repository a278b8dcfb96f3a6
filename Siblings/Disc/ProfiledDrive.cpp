// ProfiledDrive: its life, its answers about itself, and how a command goes through it. The sectors are read in
// ProfiledDriveRead.cpp.

#include "ProfiledDrive.h"
#include "MMC.h"
#include "SGOutcome.h"
#include "TextDecode.h"
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <thread>
#include <utility>

namespace
{
constexpr DRIVE_SENSE GOOD = {};
constexpr DRIVE_SENSE TIMED_OUT = {SENSE_HARDWARE_ERROR, ASC_COMMUNICATION_FAILURE, 1};
constexpr DRIVE_SENSE INVALID_FIELD = {SENSE_ILLEGAL_REQUEST, ASC_INVALID_FIELD_IN_CDB, 0};
constexpr DRIVE_SENSE SAVING_NOT_SUPPORTED = {SENSE_ILLEGAL_REQUEST, 0x39, 0};
constexpr int PAGE_CONTROL_CHANGEABLE = 1;
constexpr int PAGE_CONTROL_SAVED = 3;
constexpr int MODE_SENSE_CDB_BYTES = 10;
constexpr const char* PROFILE_EXTENSION = ".drive";

bool IsPlainFile(const std::string& strPath)
{
    std::error_code error;
    return std::filesystem::is_regular_file(strPath, error);
}

bool IsProfilePath(const std::string& strPath)
{
    const size_t nBytes = std::strlen(PROFILE_EXTENSION);
    return strPath.size() > nBytes &&
           EqualNoCase(std::string_view(strPath).substr(strPath.size() - nBytes), PROFILE_EXTENSION);
}

// The names are ASCII.
wchar_t* MakeSystemString(const std::string& strASCII)
{
    return LyCom::SysAllocString(std::wstring(strASCII.begin(), strASCII.end()).c_str());
}
} // namespace

ProfiledDrive::ProfiledDrive(std::string strProfilePath, std::string strImagePath)
    : m_strProfilePath(std::move(strProfilePath)), m_strImagePath(std::move(strImagePath)), m_strDisc(m_strImagePath)
{
    StartAnew();
}

// The profile as it is now. One beside an image may have been taken away, and the drive is an ordinary one again.
bool ProfiledDrive::LoadProfile(std::string& strError)
{
    DRIVE_PROFILE profile;
    const bool bPlain = !m_strImagePath.empty() && !IsPlainFile(m_strProfilePath);
    if (!bPlain && !LoadDriveProfile(m_strProfilePath, profile, strError))
        return false;
    std::string strDisc = m_strImagePath.empty() ? profile.m_strImage : m_strImagePath;
    const std::string strBeside = m_strProfilePath.substr(0, m_strProfilePath.size() - std::strlen(PROFILE_EXTENSION));
    if (strDisc.empty() && IsPlainFile(strBeside))
        strDisc = strBeside;
    if (strDisc.empty())
    {
        strError = m_strProfilePath + ": the drive profile names no image; add a line such as \"Image = disc.cue\".";
        return false;
    }
    m_Profile = std::move(profile);
    m_strDisc = strDisc;
    return true;
}

// A drive as the profile describes it, that has done nothing yet.
void ProfiledDrive::StartAnew()
{
    m_pImage = std::make_unique<ImageDrive>(m_strDisc,
                                            [this](std::string& strError)
                                            {
                                                std::unique_ptr<DiscImage> pImage =
                                                    DiscImage::Open(m_strDisc, strError);
                                                m_nLeadOutLBA = pImage != nullptr ? pImage->GetLeadOutLBA() : 0;
                                                m_strDiscError = pImage != nullptr ? std::string() : strError;
                                                return pImage;
                                            });
    const auto toSectors = [](int nKiB) { return std::max(0, nKiB) * 1024 / LY_CD_SECTOR_BYTES; };
    m_Cache.Reset(toSectors(m_Profile.m_nCacheKiB), toSectors(m_Profile.m_nSegmentKiB));
    m_Timing.Reset(m_Profile);
    m_Faults.Reset(m_Profile);
    m_Mode = {};
    m_Mode.m_nMaxSpeed = m_Timing.GetSpeed();
    m_Mode.m_nReadSpeed = m_Timing.GetSpeed();
    m_Mode.m_nBufferKiB = static_cast<unsigned int>(std::max(0, m_Profile.m_nBufferKiB));
    m_Mode.m_bAccurateStream = m_Profile.m_aryJitter.empty();
    m_Mode.m_pPages = &m_Profile.m_mapModePages;
    m_bRemoved = false;
    m_BusyUntil = {};
    m_nAheadLeft = 0;
    m_nLastRead = 0;
    m_Unread.Clear();
    m_Statistics = {};
    m_History.clear();
}

bool ProfiledDrive::Load(std::string& strError)
{
    const std::lock_guard lock(m_Mutex);
    if (m_nHolders == 0)
    {
        if (!LoadProfile(strError))
            return false;
        StartAnew();
        m_bFresh = true;
    }
    return m_pImage->Load(strError);
}

bool ProfiledDrive::Acquire(std::string& strError)
{
    const std::lock_guard lock(m_Mutex);
    if (m_nHolders == 0 && !std::exchange(m_bFresh, false))
    {
        if (!LoadProfile(strError))
            return false;
        StartAnew();
    }
    else if (m_bRemoved)
    {
        strError = m_strProfilePath + ": the drive was removed while it was in use; close what uses it and try again.";
        return false;
    }
    if (!m_pImage->Acquire(strError))
        return false;
    ++m_nHolders;
    return true;
}

void ProfiledDrive::Release()
{
    const std::lock_guard lock(m_Mutex);
    m_pImage->Release();
    m_nHolders = std::max(0, m_nHolders - 1);
    if (m_nHolders == 0)
        m_Mode.m_bLocked = false;
}

bool ProfiledDrive::Send(const DRIVE_COMMAND& command, SENSE_DATA& sense)
{
    const int nRoom = command.m_nDataBytes;
    DRIVE_SENSE codes;
    CLOCK::time_point end;
    {
        const std::lock_guard lock(m_Mutex);
        PROFILED_COMMAND record;
        const CLOCK::time_point now = CLOCK::now();
        end = now;
        codes = Serve(command, record, end);
        record.m_Sense = codes;
        record.m_Duration = std::chrono::duration_cast<std::chrono::microseconds>(end - now);
        Note(record);
        m_Unread.Note(command, codes.IsGood(), codes);
    }
    if (end > CLOCK::now())
        std::this_thread::sleep_until(end);
    if (codes.IsGood())
        return true;
    if (command.m_pData != nullptr && nRoom > 0)
        std::memset(command.m_pData, 0, static_cast<size_t>(nRoom));
    command.m_nDataBytes = 0;
    sense.Set(codes);
    return false;
}

// One command. end comes as the time at which it arrived, and becomes the time at which it has ended.
DRIVE_SENSE ProfiledDrive::Serve(const DRIVE_COMMAND& command, PROFILED_COMMAND& record, CLOCK::time_point& end)
{
    if (command.m_pCDB == nullptr || command.m_nCDBBytes < 1)
        return RunOnImage(command); // which refuses it
    const READ_REQUEST request = GetReadRequest(command);
    const FAULT_DECISION decision = m_Faults.OnCommand(command.m_pCDB[0]);
    record.m_nNumber = m_Faults.GetCommands();
    record.m_nOpcode = command.m_pCDB[0];
    record.m_nLBA = request.m_nLBA;
    record.m_nSectors = request.m_nSectors;
    m_bRemoved |= decision.m_bRemoved;
    if (m_bRemoved)
        return SENSE_DRIVE_GONE;
    const CLOCK::time_point arrival = end;
    const CLOCK::time_point start = std::max(arrival, m_BusyUntil);
    ReadAhead(start);
    if (decision.m_pNewDisc != nullptr)
        ChangeDisc(*decision.m_pNewDisc);

    const int nFirstMissing = FindOrigins(request);
    record.m_bCached = request.m_nSectors > 0 && nFirstMissing == request.m_nSectors;
    end = start + decision.m_Hang + GetDuration(command, request, nFirstMissing, start);
    const CLOCK::time_point limit = arrival + std::chrono::milliseconds(command.m_nTimeoutMs);
    const bool bTimedOut = command.m_nTimeoutMs > 0 && end > limit;
    m_BusyUntil = end = bTimedOut ? limit : end; // a host that waits no longer resets the drive
    m_Timing.SetLastUse(end);
    m_AheadSince = end;
    if (bTimedOut)
        return TIMED_OUT;
    return decision.m_Sense.IsGood() ? Dispatch(command, request, record) : decision.m_Sense;
}

DRIVE_SENSE ProfiledDrive::Dispatch(const DRIVE_COMMAND& command, const READ_REQUEST& request, PROFILED_COMMAND& record)
{
    if (request.m_nSectors > 0)
        return ServeRead(command, request, record);
    const unsigned char nOpcode = command.m_pCDB[0];
    if (nOpcode == CDB_MODE_SENSE_10)
        return ModeSense(command);
    const DRIVE_SENSE sense = RunOnImage(command);
    if (!sense.IsGood())
        return sense;
    if (nOpcode == CDB_INQUIRY)
        PutNames(command);
    else if (nOpcode == CDB_PREVENT_ALLOW_MEDIUM_REMOVAL)
        m_Mode.m_bLocked = (command.m_pCDB[4] & 1) != 0;
    else if (nOpcode == CDB_START_STOP_UNIT)
        OnStartStop(command.m_pCDB[4]);
    else if (nOpcode == CDB_SET_CD_SPEED)
    {
        m_Timing.SetSpeed(MMCGet16(command.m_pCDB + 2));
        m_Mode.m_nReadSpeed = m_Timing.GetSpeed();
    }
    return GOOD;
}

DRIVE_SENSE ProfiledDrive::RunOnImage(const DRIVE_COMMAND& command)
{
    DRIVE_SENSE sense;
    (void)m_pImage->Execute(command, sense);
    return sense;
}

DRIVE_SENSE ProfiledDrive::ModeSense(const DRIVE_COMMAND& command) const
{
    if (command.m_nCDBBytes < MODE_SENSE_CDB_BYTES)
        return INVALID_FIELD;
    const int nPageControl = command.m_pCDB[2] >> 6;
    if (nPageControl == PAGE_CONTROL_SAVED)
        return SAVING_NOT_SUPPORTED;
    const std::vector<unsigned char> pages =
        GetModePages(command.m_pCDB[2] & MODE_PAGE_ALL, nPageControl == PAGE_CONTROL_CHANGEABLE, m_Mode);
    if (pages.empty())
        return INVALID_FIELD;
    std::vector<unsigned char> answer(MODE_HEADER_BYTES);
    answer.insert(answer.end(), pages.begin(), pages.end());
    MMCPut16(answer.data(), static_cast<unsigned int>(answer.size() - 2));
    const int nAllocated = static_cast<int>(MMCGet16(command.m_pCDB + 7));
    int nBytes = std::min({static_cast<int>(answer.size()), nAllocated, std::max(0, command.m_nDataBytes)});
    if (command.m_pData == nullptr || command.m_eType != DRIVE_TRANSFER_IN)
        nBytes = 0;
    if (nBytes > 0)
        std::memcpy(command.m_pData, answer.data(), static_cast<size_t>(nBytes));
    command.m_nDataBytes = nBytes;
    return GOOD;
}

// The profile's names over those in the answer to INQUIRY, as far as the answer goes.
void ProfiledDrive::PutNames(const DRIVE_COMMAND& command) const
{
    const auto put = [&command](int nOffset, int nFieldBytes, const std::string& strName)
    {
        for (int n = 0; n < nFieldBytes && nOffset + n < command.m_nDataBytes; ++n)
            command.m_pData[nOffset + n] = static_cast<unsigned char>(
                static_cast<size_t>(n) < strName.size() ? strName[static_cast<size_t>(n)] : ' ');
    };
    put(INQUIRY_OFFSET_VENDOR, INQUIRY_VENDOR_BYTES, m_Profile.m_strVendor);
    put(INQUIRY_OFFSET_PRODUCT, INQUIRY_PRODUCT_BYTES, m_Profile.m_strModel);
    put(INQUIRY_OFFSET_REVISION, INQUIRY_REVISION_BYTES, m_Profile.m_strRevision);
}

void ProfiledDrive::OnStartStop(unsigned char nAction)
{
    if ((nAction & START_STOP_LOAD_EJECT) != 0)
        ForgetDisc();
    else if ((nAction & START_STOP_START) == 0)
        m_Timing.StandStill();
}

void ProfiledDrive::ForgetDisc()
{
    m_Cache.Clear();
    m_nAheadLeft = 0;
    m_Timing.StandStill();
    m_Timing.MoveHead(0);
}

// Somebody takes the disc out and puts another one in. The image drive itself tells of it, by a unit attention.
void ProfiledDrive::ChangeDisc(const std::string& strImage)
{
    m_strDisc = strImage;
    (void)TellImage(CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, 0);
    (void)TellImage(CDB_START_STOP_UNIT, START_STOP_LOAD_EJECT);
    (void)TellImage(CDB_START_STOP_UNIT, START_STOP_LOAD_EJECT | START_STOP_START);
    (void)TellImage(CDB_PREVENT_ALLOW_MEDIUM_REMOVAL, m_Mode.m_bLocked ? 1 : 0);
    ForgetDisc();
}

bool ProfiledDrive::TellImage(unsigned char nOpcode, unsigned char nAction)
{
    const unsigned char aryCDB[6] = {nOpcode, 0, 0, 0, nAction, 0};
    int nBytes = 0;
    return RunOnImage({aryCDB, sizeof aryCDB, nullptr, nBytes, DRIVE_TRANSFER_NONE}).IsGood();
}

void ProfiledDrive::Note(const PROFILED_COMMAND& record)
{
    m_Statistics.m_nCommands = m_Faults.GetCommands();
    m_Statistics.m_nReads = m_Faults.GetReads();
    m_Statistics.m_nCachedReads += record.m_bCached && record.m_Sense.IsGood() ? 1 : 0;
    m_Statistics.m_nFailed += record.m_Sense.IsGood() ? 0 : 1;
    m_Statistics.m_nTimeouts += record.m_Sense.m_nKey == TIMED_OUT.m_nKey && record.m_Sense.m_nASC == TIMED_OUT.m_nASC;
    m_Statistics.m_nWrongSectors += record.m_nWrongSectors;
    m_Statistics.m_bRemoved = m_bRemoved;
    if (m_History.size() == HISTORY_COMMANDS)
        m_History.pop_front();
    m_History.push_back(record);
}

std::string ProfiledDrive::GetReadErrorText()
{
    const std::lock_guard lock(m_Mutex);
    if (m_bRemoved)
        return m_strProfilePath + " went away while it was in use; check its cable and its power, then open it again.";
    if (!m_strDiscError.empty())
        return m_strDiscError;
    // Where the image itself is damaged, cleaning does not help.
    const std::string strImage = m_pImage->GetReadErrorText();
    return strImage.empty() ? m_Unread.GetText(m_strProfilePath) : strImage;
}

std::string ProfiledDrive::GetWarnings()
{
    const std::lock_guard lock(m_Mutex);
    return m_pImage->GetWarnings();
}

DRIVE_DESCRIPTION ProfiledDrive::GetDescription()
{
    const std::lock_guard lock(m_Mutex);
    return {m_Profile.m_strVendor, m_Profile.m_strModel, m_Profile.m_strRevision, true};
}

PROFILED_STATISTICS ProfiledDrive::GetStatistics()
{
    const std::lock_guard lock(m_Mutex);
    return m_Statistics;
}

std::vector<PROFILED_COMMAND> ProfiledDrive::GetHistory()
{
    const std::lock_guard lock(m_Mutex);
    return {m_History.begin(), m_History.end()};
}

void ProfiledDrive::AddUser(int)
{
    const std::lock_guard lock(m_Mutex);
    ++m_nUsers;
}

void ProfiledDrive::RemoveUser(int)
{
    const std::lock_guard lock(m_Mutex);
    m_nUsers = std::max(0, m_nUsers - 1);
}

unsigned char ProfiledDrive::GetStateA()
{
    const std::lock_guard lock(m_Mutex);
    return m_bRemoved ? 0 : m_pImage->GetStateA();
}

unsigned char ProfiledDrive::GetStateB()
{
    const std::lock_guard lock(m_Mutex);
    return m_bRemoved ? 0 : 1;
}

wchar_t* ProfiledDrive::GetVendor() { return MakeSystemString(GetDescription().m_strVendor); }

wchar_t* ProfiledDrive::GetModel() { return MakeSystemString(GetDescription().m_strModel); }

wchar_t* ProfiledDrive::GetPackedCapabilities()
{
    const std::lock_guard lock(m_Mutex);
    return MakeSystemString(GetPackedModePages(m_Mode));
}

bool HasDriveProfile(const std::string& strPath)
{
    return IsProfilePath(strPath) || IsPlainFile(strPath + PROFILE_EXTENSION);
}

std::unique_ptr<ServiceDrive> CreateProfiledDrive(const std::string& strPath, std::string& strError)
{
    const bool bProfile = IsProfilePath(strPath);
    const std::string strProfile = bProfile ? strPath : strPath + PROFILE_EXTENSION;
    DRIVE_PROFILE profile;
    if (!LoadDriveProfile(strProfile, profile, strError))
        return nullptr;
    return std::make_unique<ProfiledDrive>(strProfile, bProfile ? std::string() : strPath);
}
