// The names of what goes over the wire to an optical drive: operation codes, sense data, formats and small byte
// helpers. Used by the drive layer and by the disc service, so that both speak of the same bytes.
//
// Sources: MMC-3 (commands of a CD drive, READ CD, READ TOC/PMA/ATIP, capabilities page 2Ah), SPC-3 (INQUIRY, MODE
// SENSE, sense data in fixed format). Multi-byte fields are big-endian.

#pragma once

// The first byte of a command descriptor block. Six bytes long below 20h, ten from 20h to 5Fh, twelve from A0h to BFh.
enum CDB_OPCODE : unsigned char
{
    CDB_TEST_UNIT_READY = 0x00,
    CDB_REQUEST_SENSE = 0x03,
    CDB_INQUIRY = 0x12,
    CDB_START_STOP_UNIT = 0x1B,
    CDB_PREVENT_ALLOW_MEDIUM_REMOVAL = 0x1E,
    CDB_READ_CAPACITY = 0x25,
    CDB_READ_10 = 0x28,
    CDB_WRITE_10 = 0x2A,
    CDB_READ_SUB_CHANNEL = 0x42,
    CDB_READ_TOC = 0x43, // READ TOC/PMA/ATIP
    CDB_GET_CONFIGURATION = 0x46,
    CDB_GET_EVENT_STATUS = 0x4A,
    CDB_READ_DISC_INFORMATION = 0x51,
    CDB_MODE_SENSE_10 = 0x5A,
    CDB_READ_12 = 0xA8,
    CDB_SET_CD_SPEED = 0xBB,
    CDB_READ_CD = 0xBE
};

constexpr int CDB_MAX_BYTES = 16;

// SPC-3, 4.5.6. The drive layer compares byte 2 of the sense data unmasked with these.
enum SENSE_KEY : unsigned char
{
    SENSE_NONE = 0x0,
    SENSE_RECOVERED_ERROR = 0x1,
    SENSE_NOT_READY = 0x2,
    SENSE_MEDIUM_ERROR = 0x3,
    SENSE_HARDWARE_ERROR = 0x4,
    SENSE_ILLEGAL_REQUEST = 0x5,
    SENSE_UNIT_ATTENTION = 0x6,
    SENSE_DATA_PROTECT = 0x7,
    SENSE_BLANK_CHECK = 0x8,
    SENSE_ABORTED_COMMAND = 0xB,
    SENSE_MISCOMPARE = 0xE
};

// SPC-3, annex D: additional sense codes.
enum SENSE_ASC : unsigned char
{
    ASC_NONE = 0x00,
    ASC_NOT_READY = 0x04,
    ASC_COMMUNICATION_FAILURE = 0x08,
    ASC_READ_ERROR = 0x11,
    ASC_INVALID_OPCODE = 0x20,
    ASC_ADDRESS_OUT_OF_RANGE = 0x21,
    ASC_INVALID_FIELD_IN_CDB = 0x24,
    ASC_MEDIUM_MAY_HAVE_CHANGED = 0x28,
    ASC_RESET_OCCURRED = 0x29,
    ASC_UNSUPPORTED_ENCLOSURE = 0x34, // the two codes of enclosure services
    ASC_ENCLOSURE_FAILURE = 0x35,
    ASC_MEDIUM_NOT_PRESENT = 0x3A,
    ASC_DIAGNOSTIC_FAILURE = 0x40, // its qualifier is the component
    ASC_INTERNAL_FAILURE = 0x44,
    ASC_TAGGED_OVERLAP = 0x4D, // its qualifier is the queue tag
    ASC_LOAD_OR_EJECT_FAILED = 0x53,
    ASC_ILLEGAL_MODE_FOR_TRACK = 0x64
};

// Qualifiers of ASC_NOT_READY: still at work on what the drive has in its buffer.
enum SENSE_ASCQ_NOT_READY : unsigned char
{
    ASCQ_BECOMING_READY = 0x01,
    ASCQ_FORMAT_IN_PROGRESS = 0x04,
    ASCQ_OPERATION_IN_PROGRESS = 0x07,
    ASCQ_LONG_WRITE_IN_PROGRESS = 0x08
};

// Qualifiers of ASC_MEDIUM_NOT_PRESENT.
enum SENSE_ASCQ_NO_MEDIUM : unsigned char
{
    ASCQ_TRAY_CLOSED = 0x01,
    ASCQ_TRAY_OPEN = 0x02
};

// Sense data in fixed format, SPC-3, 4.5.3: the bytes that are read or written here.
constexpr int SENSE_BYTES = 32; // size of every sense buffer in this system
constexpr int SENSE_OFFSET_RESPONSE_CODE = 0;
constexpr int SENSE_OFFSET_KEY = 2;
constexpr int SENSE_OFFSET_ADDITIONAL_LENGTH = 7;
constexpr int SENSE_OFFSET_ASC = 12;
constexpr int SENSE_OFFSET_ASCQ = 13;
constexpr unsigned char SENSE_RESPONSE_CURRENT = 0x70; // response code: current error, fixed format

// READ CD, MMC-3, 6.15.
constexpr unsigned char READ_CD_TYPE_CDDA = 0x04;       // byte 1: expected sector type, audio only
constexpr unsigned char READ_CD_USER_DATA = 0x10;       // byte 9: user data
constexpr unsigned char READ_CD_WHOLE_SECTOR = 0xF0;    // byte 9: sync, all headers and user data; the same for audio
constexpr unsigned char START_STOP_START = 0x01;        // START STOP UNIT, byte 4
constexpr unsigned char START_STOP_LOAD_EJECT = 0x02;   // START STOP UNIT, byte 4
constexpr unsigned char SUB_CHANNEL_MSF = 0x02;         // READ SUB-CHANNEL, byte 1
constexpr unsigned char SUB_CHANNEL_SUBQ = 0x40;        // READ SUB-CHANNEL, byte 2
constexpr unsigned char SUB_CHANNEL_CURRENT_POS = 0x01; // READ SUB-CHANNEL, byte 3
constexpr unsigned int SET_CD_SPEED_MAXIMUM = 0xFFFF;   // SET CD SPEED: as fast as the drive can
constexpr unsigned char MODE_PAGE_CD_PARAMETERS = 0x0D; // MODE SENSE, byte 2
constexpr unsigned char MODE_PAGE_CAPABILITIES = 0x2A;  // MODE SENSE, byte 2
constexpr int MODE_HEADER_BYTES = 8;                    // in front of the block descriptors of MODE SENSE(10)
constexpr int MODE_HEADER_DESCRIPTOR_LENGTH_OFFSET = 7; // low byte of the block descriptor length
constexpr int INQUIRY_OFFSET_VENDOR = 8;
constexpr int INQUIRY_VENDOR_BYTES = 8;
constexpr int INQUIRY_OFFSET_PRODUCT = 16;
constexpr int INQUIRY_PRODUCT_BYTES = 16;
constexpr int INQUIRY_OFFSET_REVISION = 32;
constexpr int INQUIRY_REVISION_BYTES = 4;

// READ TOC/PMA/ATIP, MMC-3, 6.26: the formats in byte 2, and the answer of format 0.
//
//   header      0-1 length of what follows, 2 first track, 3 last track
//   descriptor  0 reserved, 1 ADR (high four bits) and CONTROL (low four), 2 track, 3 reserved, 4-7 address
enum TOC_FORMAT : unsigned char
{
    TOC_FORMAT_TOC = 0,
    TOC_FORMAT_SESSIONS = 1,
    TOC_FORMAT_FULL = 2,
    TOC_FORMAT_CD_TEXT = 5
};
constexpr int TOC_HEADER_BYTES = 4;
constexpr int TOC_DESCRIPTOR_BYTES = 8;
constexpr int TOC_OFFSET_FIRST_TRACK = 2;
constexpr int TOC_OFFSET_LAST_TRACK = 3;
constexpr int TOC_DESCRIPTOR_OFFSET_CONTROL = 1;
constexpr int TOC_DESCRIPTOR_OFFSET_TRACK = 2;
constexpr int TOC_DESCRIPTOR_OFFSET_ADDRESS = 4;
constexpr int TOC_LEAD_OUT_TRACK = 0xAA;

// The CONTROL bits of a track, as the Q sub-channel and the table of contents carry them (IEC 60908, 17.5; MMC-3).
enum TRACK_CONTROL : unsigned char
{
    TRACK_CONTROL_PRE_EMPHASIS = 0x01,
    TRACK_CONTROL_COPY_PERMITTED = 0x02,
    TRACK_CONTROL_DATA = 0x04,
    TRACK_CONTROL_FOUR_CHANNELS = 0x08
};

constexpr unsigned int MMCGet16(const unsigned char* p) { return static_cast<unsigned int>(p[0] << 8 | p[1]); }

constexpr unsigned int MMCGet32(const unsigned char* p) { return MMCGet16(p) << 16 | MMCGet16(p + 2); }

constexpr void MMCPut16(unsigned char* p, unsigned int n)
{
    p[0] = static_cast<unsigned char>(n >> 8);
    p[1] = static_cast<unsigned char>(n);
}

constexpr void MMCPut24(unsigned char* p, unsigned int n)
{
    p[0] = static_cast<unsigned char>(n >> 16);
    MMCPut16(p + 1, n);
}

constexpr void MMCPut32(unsigned char* p, unsigned int n)
{
    MMCPut16(p, n >> 16);
    MMCPut16(p + 2, n);
}
