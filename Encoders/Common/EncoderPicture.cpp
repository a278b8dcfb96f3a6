#include "EncoderPicture.h"
#include "EncoderError.h"
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
// PNG (ISO/IEC 15948): a signature, then chunks of length, type, data and check sum. IHDR comes first:
//   0  width, 4    4  height, 4    8  bits of a sample    9  kind of colour
constexpr std::string_view PNG_SIGNATURE("\x89PNG\r\n\x1a\n", 8);
constexpr size_t PNG_CHUNK_OVERHEAD = 12;
constexpr size_t PNG_HEADER_BYTES = 13;
constexpr unsigned PNG_PALETTE = 3;
constexpr unsigned s_aryPNGSamples[] = {1, 0, 3, 1, 2, 0, 4}; // of a pixel, by kind of colour; 0: no such kind

// JPEG (ITU-T T.81, B.1): segments of FFh, marker and length. A start of frame, C0h to CFh but for C4h, C8h and CCh:
//   0  bits of a sample    1  height, 2    3  width, 2    5  components
constexpr unsigned char JPEG_START = 0xD8;
constexpr unsigned char JPEG_END = 0xD9;
constexpr unsigned char JPEG_SCAN = 0xDA;
constexpr size_t JPEG_FRAME_BYTES = 6;

unsigned GetNumber(std::string_view str, size_t nOffset, size_t nBytes)
{
    unsigned nNumber = 0;
    for (size_t i = 0; i < nBytes; ++i)
        nNumber = (nNumber << 8) | static_cast<unsigned char>(str[nOffset + i]);
    return nNumber;
}

bool IsStartOfFrame(unsigned char nMarker)
{
    return nMarker >= 0xC0 && nMarker <= 0xCF && nMarker != 0xC4 && nMarker != 0xC8 && nMarker != 0xCC;
}

// All of a file that is no longer than a picture may be.
bool ReadFile(const std::string& strPath, std::string& strData)
{
    const int nFile = open(strPath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (nFile < 0)
        return false;
    struct stat status;
    bool bRead = fstat(nFile, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0 &&
                 static_cast<uint64_t>(status.st_size) <= ENCODER_PICTURE::MAX_BYTES;
    if (bRead)
    {
        strData.resize(static_cast<size_t>(status.st_size));
        bRead = read(nFile, strData.data(), strData.size()) == status.st_size;
    }
    (void)close(nFile);
    return bRead;
}
} // namespace

int ENCODER_PICTURE::Load(const std::string& strPath, std::string& strError)
{
    if (!ReadFile(strPath, strData))
    {
        strError = "The picture '" + strPath + "' cannot be read, or has more than 15 MiB.";
        return ENCODER_MISSING_FILE;
    }
    if (Identify())
        return ENCODER_OK;
    strError = "The picture '" + strPath + "' is neither a PNG nor a JPEG file.";
    return ENCODER_INPUT_READ;
}

bool ENCODER_PICTURE::Identify()
{
    pMime = nullptr;
    nWidth = nHeight = nDepth = nColours = 0;
    return IdentifyPNG() || IdentifyJPEG();
}

bool ENCODER_PICTURE::IdentifyPNG()
{
    std::string_view str(strData);
    const size_t nHeader = PNG_SIGNATURE.size() + 8;
    if (!str.starts_with(PNG_SIGNATURE) || str.size() < nHeader + PNG_HEADER_BYTES || str.substr(12, 4) != "IHDR")
        return false;
    const unsigned nBits = GetNumber(str, nHeader + 8, 1);
    const unsigned nKind = GetNumber(str, nHeader + 9, 1);
    if (nKind >= std::size(s_aryPNGSamples) || s_aryPNGSamples[nKind] == 0)
        return false;
    pMime = "image/png";
    nWidth = GetNumber(str, nHeader, 4);
    nHeight = GetNumber(str, nHeader + 4, 4);
    nDepth = nKind == PNG_PALETTE ? 24 : nBits * s_aryPNGSamples[nKind];
    str.remove_prefix(PNG_SIGNATURE.size());
    while (nKind == PNG_PALETTE && str.size() >= PNG_CHUNK_OVERHEAD)
    {
        const size_t nBytes = GetNumber(str, 0, 4);
        if (nBytes > str.size() - PNG_CHUNK_OVERHEAD)
            break;
        if (str.substr(4, 4) == "PLTE")
        {
            nColours = static_cast<unsigned>(nBytes / 3);
            break;
        }
        str.remove_prefix(PNG_CHUNK_OVERHEAD + nBytes);
    }
    return true;
}

bool ENCODER_PICTURE::IdentifyJPEG()
{
    const std::string_view str(strData);
    if (str.size() < 2 || GetNumber(str, 0, 2) != (0xFF00u | JPEG_START))
        return false;
    size_t n = 2;
    while (n + 4 <= str.size() && GetNumber(str, n, 1) == 0xFF)
    {
        const unsigned char nMarker = static_cast<unsigned char>(str[n + 1]);
        if (nMarker == 0xFF) // a fill byte
        {
            ++n;
            continue;
        }
        if (nMarker == JPEG_SCAN || nMarker == JPEG_END)
            break;
        const size_t nBytes = GetNumber(str, n + 2, 2); // with the two bytes of the length
        if (nBytes < 2 || nBytes > str.size() - n - 2)
            break;
        if (IsStartOfFrame(nMarker) && nBytes >= 2 + JPEG_FRAME_BYTES)
        {
            pMime = "image/jpeg";
            nDepth = GetNumber(str, n + 4, 1) * GetNumber(str, n + 9, 1);
            nHeight = GetNumber(str, n + 5, 2);
            nWidth = GetNumber(str, n + 7, 2);
            return true;
        }
        n += 2 + nBytes;
    }
    return false;
}
