#include "DeviceIdentity.h"
#include <algorithm>
#include <cstring>

namespace
{
constexpr int INQUIRY_BYTES = 36; // what every drive has to say; some adapters stumble over more
constexpr int MODE_ANSWER_BYTES = 256;
constexpr unsigned char DEVICE_TYPE_MASK = 0x1F;
constexpr unsigned char PAGE_CODE_MASK = 0x7F; // with the bit of sub-pages, whose header is another
constexpr int PAGE_HEADER_BYTES = 2;

struct PAGE_PLACE
{
    unsigned char m_nPage;
    int m_nOffset;
    int m_nBytes;
};
const PAGE_PLACE PAGE_PLACES[DEVICE_IDENTITY::PAGES] = {
    {0x01, 0, 12},                     // read error recovery
    {MODE_PAGE_CD_PARAMETERS, 12, 8},  //
    {MODE_PAGE_CAPABILITIES, 20, 100}, //
    {0x0E, 120, 16},                   // audio control
};
constexpr int FLAGS_OFFSET = 136;
static_assert(FLAGS_OFFSET + DEVICE_IDENTITY::PAGES == DEVICE_IDENTITY::PACKED_BYTES);

// A field of an INQUIRY answer: ASCII, padded with spaces. Whatever else is in it becomes a space.
std::string GetField(const unsigned char* pAnswer, int nOffset, int nBytes)
{
    std::string strField(reinterpret_cast<const char*>(pAnswer) + nOffset, static_cast<size_t>(nBytes));
    for (char& c : strField)
        c = c > ' ' && c <= '~' ? c : ' ';
    const size_t nStart = strField.find_first_not_of(' ');
    return nStart == std::string::npos ? std::string()
                                       : strField.substr(nStart, strField.find_last_not_of(' ') + 1 - nStart);
}

bool Inquire(const ASK_DRIVE& ask, DEVICE_IDENTITY& identity)
{
    const unsigned char aryCDB[6] = {CDB_INQUIRY, 0, 0, 0, INQUIRY_BYTES, 0};
    unsigned char aryAnswer[INQUIRY_BYTES] = {};
    int nBytes = INQUIRY_BYTES;
    if (!ask(aryCDB, sizeof aryCDB, aryAnswer, nBytes) || nBytes < 1)
        return false;
    identity.m_nDeviceType = aryAnswer[0] & DEVICE_TYPE_MASK;
    identity.m_nQualifier = static_cast<unsigned char>(aryAnswer[0] >> 5);
    identity.m_Description = {GetField(aryAnswer, INQUIRY_OFFSET_VENDOR, INQUIRY_VENDOR_BYTES),
                              GetField(aryAnswer, INQUIRY_OFFSET_PRODUCT, INQUIRY_PRODUCT_BYTES),
                              GetField(aryAnswer, INQUIRY_OFFSET_REVISION, INQUIRY_REVISION_BYTES), false};
    return true;
}
} // namespace

bool ReadIdentity(const ASK_DRIVE& ask, DEVICE_IDENTITY& identity)
{
    identity = {};
    if (!Inquire(ask, identity))
        return false;
    if (identity.m_nDeviceType != DEVICE_TYPE_OPTICAL)
        return true; // its pages would mean something else
    for (int i = 0; i < DEVICE_IDENTITY::PAGES; ++i)
    {
        const PAGE_PLACE& place = PAGE_PLACES[i];
        unsigned char aryCDB[10] = {CDB_MODE_SENSE_10, 0, place.m_nPage};
        MMCPut16(aryCDB + 7, MODE_ANSWER_BYTES);
        unsigned char aryAnswer[MODE_ANSWER_BYTES] = {};
        int nBytes = MODE_ANSWER_BYTES;
        if (ask(aryCDB, sizeof aryCDB, aryAnswer, nBytes) &&
            TakeModePage(aryAnswer, nBytes, place.m_nPage, identity.m_aryPacked + place.m_nOffset, place.m_nBytes))
            identity.m_aryPacked[FLAGS_OFFSET + i] = 1;
    }
    return true;
}

// The header: 0-1 length of what follows, 6-7 length of the block descriptors, which the pages stand behind. A page: 0
// its code (bit 7: can be saved, bit 6: a sub-page), 1 the length of what follows.
bool TakeModePage(const unsigned char* pAnswer, int nBytes, int nPage, unsigned char* pRecord, int nRecordBytes)
{
    if (nBytes < MODE_HEADER_BYTES)
        return false;
    const int nEnd = std::min(nBytes, static_cast<int>(MMCGet16(pAnswer)) + 2);
    int nPos = MODE_HEADER_BYTES + static_cast<int>(MMCGet16(pAnswer + MODE_HEADER_DESCRIPTOR_LENGTH_OFFSET - 1));
    // Some drives answer with more pages than were asked for.
    while (nPos + PAGE_HEADER_BYTES <= nEnd)
    {
        const int nPageBytes = PAGE_HEADER_BYTES + pAnswer[nPos + 1];
        if ((pAnswer[nPos] & PAGE_CODE_MASK) == nPage)
        {
            const int nTaken = std::min({nPageBytes, nRecordBytes, nEnd - nPos});
            std::memcpy(pRecord, pAnswer + nPos, static_cast<size_t>(nTaken));
            return true;
        }
        nPos += nPageBytes;
    }
    return false;
}

std::string GetPackedText(const DEVICE_IDENTITY& identity)
{
    static constexpr char HEX_DIGITS[] = "0123456789ABCDEF";
    std::string strDigits;
    strDigits.reserve(2 * DEVICE_IDENTITY::PACKED_BYTES);
    for (const unsigned char c : identity.m_aryPacked)
        (strDigits += HEX_DIGITS[c >> 4]) += HEX_DIGITS[c & 15];
    return strDigits;
}
