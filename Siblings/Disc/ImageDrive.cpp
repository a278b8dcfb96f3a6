#include "ImageDrive.h"
#include "DiscTOC.h"
#include "MMC.h"
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

namespace
{
constexpr DRIVE_SENSE GOOD = {};
constexpr DRIVE_SENSE INVALID_OPCODE = {SENSE_ILLEGAL_REQUEST, ASC_INVALID_OPCODE, 0};
constexpr DRIVE_SENSE INVALID_FIELD = {SENSE_ILLEGAL_REQUEST, ASC_INVALID_FIELD_IN_CDB, 0};
constexpr DRIVE_SENSE SAVING_NOT_SUPPORTED = {SENSE_ILLEGAL_REQUEST, 0x39, 0};
constexpr DRIVE_SENSE REMOVAL_PREVENTED = {SENSE_ILLEGAL_REQUEST, ASC_LOAD_OR_EJECT_FAILED, 2};
constexpr DRIVE_SENSE MEDIUM_CHANGED = {SENSE_UNIT_ATTENTION, ASC_MEDIUM_MAY_HAVE_CHANGED, 0};
constexpr DRIVE_SENSE TRAY_OPEN = {SENSE_NOT_READY, ASC_MEDIUM_NOT_PRESENT, ASCQ_TRAY_OPEN};
constexpr DRIVE_SENSE NO_DISC = {SENSE_NOT_READY, ASC_MEDIUM_NOT_PRESENT, ASCQ_TRAY_CLOSED};

constexpr unsigned char CDB_1_MSF = 0x02;
constexpr unsigned char CDB_1_EVPD = 0x01;
constexpr unsigned char DEVICE_TYPE_CD = 5;
constexpr unsigned char INQUIRY_REMOVABLE = 0x80;
constexpr unsigned char INQUIRY_VERSION_SPC3 = 5;
constexpr unsigned char INQUIRY_RESPONSE_FORMAT = 2;
constexpr size_t INQUIRY_BYTES = 36;
constexpr size_t FIXED_SENSE_BYTES = 18;
constexpr int PAGE_CONTROL_CHANGEABLE = 1;
constexpr int PAGE_CONTROL_SAVED = 3;

// How long a command of this opcode is (SPC-3, 4.2.5.1). 0 for groups that have no fixed length.
int GetCDBBytes(unsigned char nOpcode)
{
    static constexpr int BYTES_BY_GROUP[] = {6, 10, 10, 0, 16, 12, 0, 0};
    return BYTES_BY_GROUP[nOpcode >> 5];
}

// Hands an answer over, cut to the allocation length and to the buffer.
DRIVE_SENSE Answer(const DRIVE_COMMAND& command, const std::vector<unsigned char>& answer, size_t nAllocated)
{
    size_t nBytes = std::min(answer.size(), nAllocated);
    nBytes = std::min(nBytes, static_cast<size_t>(std::max(0, command.m_nDataBytes)));
    if (command.m_pData == nullptr || command.m_eType != DRIVE_TRANSFER_IN)
        nBytes = 0;
    if (nBytes > 0)
        std::memcpy(command.m_pData, answer.data(), nBytes);
    command.m_nDataBytes = static_cast<int>(nBytes);
    return GOOD;
}

void PutPadded(std::vector<unsigned char>& answer, size_t nOffset, size_t nBytes, const char* pText)
{
    std::fill_n(answer.begin() + static_cast<std::ptrdiff_t>(nOffset), nBytes, static_cast<unsigned char>(' '));
    std::copy_n(pText, std::min(nBytes, std::strlen(pText)), answer.begin() + static_cast<std::ptrdiff_t>(nOffset));
}

wchar_t* MakeSystemString(const std::string& strASCII)
{
    return LyCom::SysAllocString(std::wstring(strASCII.begin(), strASCII.end()).c_str());
}
} // namespace

ImageDrive::ImageDrive(const std::string& strImagePath)
    : ImageDrive(strImagePath,
                 [strImagePath](std::string& strError) { return DiscImage::Open(strImagePath, strError); })
{
}

ImageDrive::ImageDrive(std::string strName, OPENER open) : m_strImagePath(std::move(strName)), m_Open(std::move(open))
{
    m_Mode.m_nReadSpeed = IMAGE_DRIVE_MAX_SPEED;
}

bool ImageDrive::Load(std::string& strError)
{
    const std::lock_guard lock(m_Mutex);
    if (m_pImage == nullptr)
    {
        m_pImage = m_Open(strError);
        m_bOpenedAhead = m_pImage != nullptr && m_nHolders == 0;
    }
    return m_pImage != nullptr;
}

bool ImageDrive::Acquire(std::string& strError)
{
    const std::lock_guard lock(m_Mutex);
    if (m_nHolders == 0)
    {
        // What Load has just opened is the disc. Later it is opened anew: the file may be another one than last time.
        if (!std::exchange(m_bOpenedAhead, false) || m_pImage == nullptr)
            m_pImage = m_Open(strError);
        m_nUnreadable = 0;
        m_nHeadLBA = 0;
        m_bTrayOpen = false;
        m_bUnitAttention = false;
    }
    if (m_pImage == nullptr && !m_bTrayOpen)
        return false;
    ++m_nHolders;
    return true;
}

void ImageDrive::Release()
{
    const std::lock_guard lock(m_Mutex);
    if (m_nHolders == 0 || --m_nHolders > 0)
        return;
    m_pImage.reset();
    m_Mode.m_bLocked = false;
}

std::string ImageDrive::GetReadErrorText()
{
    const std::lock_guard lock(m_Mutex);
    if (m_nUnreadable == 0)
        return {};
    const int nSector = std::max(0, m_nFirstUnreadable + LY_CD_MSF_OFFSET);
    const int nSeconds = nSector / LY_CD_SECTORS_PER_SECOND;
    char szPlace[40];
    std::snprintf(szPlace, sizeof szPlace, "%02d:%02d.%02d", nSeconds / 60, nSeconds % 60,
                  nSector % LY_CD_SECTORS_PER_SECOND);
    return m_strImagePath + ": " + std::to_string(m_nUnreadable) + " sectors from " + szPlace +
           " on could not be read and are silence; the image's file ends early or is damaged, get a complete copy.";
}

std::string ImageDrive::GetWarnings()
{
    const std::lock_guard lock(m_Mutex);
    std::string strLines;
    if (m_pImage == nullptr)
        return strLines;
    for (const std::string& strWarning : m_pImage->GetWarnings())
        strLines += (strLines.empty() ? "" : "\n") + strWarning;
    return strLines;
}

bool ImageDrive::Execute(const DRIVE_COMMAND& command, DRIVE_SENSE& sense)
{
    const std::lock_guard lock(m_Mutex);
    const int nRoom = command.m_nDataBytes;
    sense = Dispatch(command);
    if (sense.IsGood())
        return true;
    if (command.m_pData != nullptr && nRoom > 0)
        std::memset(command.m_pData, 0, static_cast<size_t>(nRoom));
    command.m_nDataBytes = 0;
    return false;
}

bool ImageDrive::Send(const DRIVE_COMMAND& command, SENSE_DATA& sense)
{
    DRIVE_SENSE codes;
    if (Execute(command, codes))
        return true;
    sense.Set(codes);
    return false;
}

DRIVE_DESCRIPTION ImageDrive::GetDescription() { return {VENDOR, MODEL, REVISION, true}; }

DRIVE_SENSE ImageDrive::Dispatch(const DRIVE_COMMAND& command)
{
    if (command.m_pCDB == nullptr || command.m_nCDBBytes < 1)
        return INVALID_OPCODE;
    const unsigned char nOpcode = command.m_pCDB[0];
    if (command.m_nCDBBytes < GetCDBBytes(nOpcode))
        return INVALID_FIELD;
    switch (nOpcode)
    {
    case CDB_INQUIRY:
        return Inquiry(command);
    case CDB_REQUEST_SENSE:
        return RequestSense(command);
    case CDB_MODE_SENSE_10:
        return ModeSense(command);
    case CDB_START_STOP_UNIT:
        return StartStop(command);
    case CDB_PREVENT_ALLOW_MEDIUM_REMOVAL:
        m_Mode.m_bLocked = (command.m_pCDB[4] & 1) != 0;
        return Answer(command, {}, 0);
    default:
        break;
    }
    const bool bKnown = nOpcode == CDB_TEST_UNIT_READY || nOpcode == CDB_READ_TOC || nOpcode == CDB_READ_SUB_CHANNEL ||
                        nOpcode == CDB_READ_CD || nOpcode == CDB_SET_CD_SPEED;
    if (!bKnown)
        return INVALID_OPCODE;
    const DRIVE_SENSE medium = CheckMedium();
    if (!medium.IsGood())
        return medium;
    switch (nOpcode)
    {
    case CDB_READ_TOC:
        return ReadTOC(command);
    case CDB_READ_SUB_CHANNEL:
        return ReadSubChannel(command);
    case CDB_READ_CD:
        return ReadCD(command);
    case CDB_SET_CD_SPEED:
        return SetSpeed(command);
    default:
        return Answer(command, {}, 0);
    }
}

// Whether there is a disc to work on. A changed disc is reported once.
DRIVE_SENSE ImageDrive::CheckMedium()
{
    if (m_bTrayOpen)
        return TRAY_OPEN;
    if (m_pImage == nullptr)
        return NO_DISC;
    if (!m_bUnitAttention)
        return GOOD;
    m_bUnitAttention = false;
    return MEDIUM_CHANGED;
}

DRIVE_SENSE ImageDrive::Inquiry(const DRIVE_COMMAND& command)
{
    if ((command.m_pCDB[1] & CDB_1_EVPD) != 0 || command.m_pCDB[2] != 0)
        return INVALID_FIELD;
    std::vector<unsigned char> answer(INQUIRY_BYTES);
    answer[0] = DEVICE_TYPE_CD;
    answer[1] = INQUIRY_REMOVABLE;
    answer[2] = INQUIRY_VERSION_SPC3;
    answer[3] = INQUIRY_RESPONSE_FORMAT;
    answer[4] = INQUIRY_BYTES - 5;
    PutPadded(answer, INQUIRY_OFFSET_VENDOR, INQUIRY_VENDOR_BYTES, VENDOR);
    PutPadded(answer, INQUIRY_OFFSET_PRODUCT, INQUIRY_PRODUCT_BYTES, MODEL);
    PutPadded(answer, INQUIRY_OFFSET_REVISION, INQUIRY_REVISION_BYTES, REVISION);
    return Answer(command, answer, MMCGet16(command.m_pCDB + 3));
}

// Every failed command brings its sense along, so that nothing is left to ask for.
DRIVE_SENSE ImageDrive::RequestSense(const DRIVE_COMMAND& command)
{
    std::vector<unsigned char> answer(FIXED_SENSE_BYTES);
    answer[SENSE_OFFSET_RESPONSE_CODE] = SENSE_RESPONSE_CURRENT;
    answer[SENSE_OFFSET_ADDITIONAL_LENGTH] = FIXED_SENSE_BYTES - SENSE_OFFSET_ADDITIONAL_LENGTH - 1;
    return Answer(command, answer, command.m_pCDB[4]);
}

DRIVE_SENSE ImageDrive::ModeSense(const DRIVE_COMMAND& command)
{
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
    return Answer(command, answer, MMCGet16(command.m_pCDB + 7));
}

DRIVE_SENSE ImageDrive::ReadTOC(const DRIVE_COMMAND& command)
{
    const unsigned char* pCDB = command.m_pCDB;
    const bool bMSF = (pCDB[1] & CDB_1_MSF) != 0;
    // Older hosts put the format into the two high bits of the last byte.
    const int nFormat = (pCDB[2] & 15) != 0 ? pCDB[2] & 15 : pCDB[9] >> 6;
    std::vector<unsigned char> answer;
    if (nFormat == TOC_FORMAT_TOC)
        answer = MakeTOC(*m_pImage, pCDB[6], bMSF);
    else if (nFormat == TOC_FORMAT_SESSIONS)
        answer = MakeSessionInfo(*m_pImage, bMSF);
    else if (nFormat == TOC_FORMAT_CD_TEXT)
        answer = MakeCDText(*m_pImage);
    return answer.empty() ? INVALID_FIELD : Answer(command, answer, MMCGet16(pCDB + 7));
}

DRIVE_SENSE ImageDrive::ReadSubChannel(const DRIVE_COMMAND& command)
{
    const unsigned char* pCDB = command.m_pCDB;
    std::vector<unsigned char> answer;
    if (pCDB[3] == 1)
        answer = MakeCurrentPosition(*m_pImage, m_nHeadLBA, (pCDB[1] & CDB_1_MSF) != 0);
    else if (pCDB[3] == 2)
        answer = MakeMediaCatalogue(*m_pImage);
    else if (pCDB[3] == 3)
        answer = MakeTrackISRC(*m_pImage, pCDB[6]);
    if (answer.empty())
        return INVALID_FIELD;
    if ((pCDB[2] & SUB_CHANNEL_SUBQ) == 0)
    {
        // Without the Q data only the header comes, with nothing behind it.
        answer.resize(4);
        MMCPut16(&answer[2], 0);
    }
    return Answer(command, answer, MMCGet16(pCDB + 7));
}

DRIVE_SENSE ImageDrive::StartStop(const DRIVE_COMMAND& command)
{
    const unsigned char nAction = command.m_pCDB[4] & (START_STOP_START | START_STOP_LOAD_EJECT);
    if (nAction == START_STOP_LOAD_EJECT)
    {
        if (m_Mode.m_bLocked)
            return REMOVAL_PREVENTED;
        m_bTrayOpen = true;
        m_bUnitAttention = false;
        m_pImage.reset();
    }
    else if (nAction == (START_STOP_LOAD_EJECT | START_STOP_START) && m_bTrayOpen)
    {
        std::string strError;
        m_bTrayOpen = false;
        m_pImage = m_Open(strError);
        m_bUnitAttention = m_pImage != nullptr;
        if (m_pImage == nullptr)
            return NO_DISC;
    }
    else if (nAction == START_STOP_START)
    {
        const DRIVE_SENSE medium = CheckMedium();
        if (!medium.IsGood())
            return medium;
    }
    return Answer(command, {}, 0);
}

DRIVE_SENSE ImageDrive::SetSpeed(const DRIVE_COMMAND& command)
{
    m_Mode.m_nReadSpeed = std::min(MMCGet16(command.m_pCDB + 2), IMAGE_DRIVE_MAX_SPEED);
    return Answer(command, {}, 0);
}

void ImageDrive::AddUser(int)
{
    const std::lock_guard lock(m_Mutex);
    ++m_nUsers;
}

void ImageDrive::RemoveUser(int)
{
    const std::lock_guard lock(m_Mutex);
    m_nUsers = std::max(0, m_nUsers - 1);
}

unsigned char ImageDrive::GetStateA()
{
    const std::lock_guard lock(m_Mutex);
    return m_pImage != nullptr ? 1 : 0;
}

unsigned char ImageDrive::GetStateB() { return 1; }

wchar_t* ImageDrive::GetVendor() { return MakeSystemString(VENDOR); }

wchar_t* ImageDrive::GetModel() { return MakeSystemString(MODEL); }

wchar_t* ImageDrive::GetPackedCapabilities()
{
    const std::lock_guard lock(m_Mutex);
    return MakeSystemString(GetPackedModePages(m_Mode));
}
