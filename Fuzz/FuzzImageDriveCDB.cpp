// Any command blocks, one behind the other, to the drive in software. Each command of the input:
//
//   0  length of the command block, 0 to 15
//   1  direction (bit 0), no buffer (bit 1)
//   2  size of the buffer, 16 bits, big-endian
//   4  the command block

#include "FuzzCheck.h"
#include "ImageDrive.h"
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

static constexpr int HEADER_BYTES = 4;
static constexpr int MAX_COMMANDS = 64;
static constexpr unsigned char OLD_BYTE = 0xA5;

// Sectors of counted bytes; the last few are missing, as in a file that was cut.
class CountedSource : public SectorSource
{
public:
    explicit CountedSource(long long nBytes) : m_nBytes(nBytes) {}
    long long GetBytes() const override { return m_nBytes; }
    int Read(long long nOffset, unsigned char* pBuffer, int nBytes) override
    {
        const int nThere = static_cast<int>(std::clamp<long long>(m_nBytes - nOffset, 0, nBytes));
        for (int i = 0; i < nThere; i++)
            pBuffer[i] = static_cast<unsigned char>(nOffset + i);
        return nThere;
    }

private:
    long long m_nBytes;
};

static DISC_TRACK MakeTrack(int nNumber, int nSession, int nPregapLBA, int nStartLBA, int nSectors)
{
    DISC_TRACK track;
    track.m_nNumber = nNumber;
    track.m_nSession = nSession;
    track.m_nPregapLBA = nPregapLBA;
    track.m_nStartLBA = nStartLBA;
    track.m_nSectors = nSectors;
    return track;
}

// Two audio tracks, and a data track in a second session: 1 from 0, 2 from 40 with a pregap of 10, 3 from 11500.
static std::unique_ptr<DiscImage> MakeDisc(std::string&)
{
    DISC_CONTENT content;
    content.m_aryTracks = {MakeTrack(1, 1, -150, 0, 30), MakeTrack(2, 1, 30, 40, 60),
                           MakeTrack(3, 2, 11350, 11500, 20)};
    content.m_aryTracks[0].m_Text.m_strTitle = "One";
    content.m_aryTracks[1].m_nControl = TRACK_CONTROL_PRE_EMPHASIS | TRACK_CONTROL_FOUR_CHANNELS;
    content.m_aryTracks[1].m_strISRC = "ABCDE1234567";
    content.m_aryTracks[2].m_nControl = TRACK_CONTROL_DATA;
    content.m_aryTracks[2].m_nMode = DISC_MODE1_2048;
    content.m_arySessions = {{1, 1, 2, 100, DISC_SESSION_CDDA_OR_CDROM}, {2, 3, 3, 11520, DISC_SESSION_CDROM_XA}};
    content.m_strMCN = "1234567890123";
    content.m_Text.m_strTitle = "Disc";
    content.m_arySources.push_back(std::make_unique<CountedSource>(95 * LY_CD_SECTOR_BYTES));
    content.m_arySources.push_back(std::make_unique<CountedSource>(20 * 2048));
    const long long nSector = LY_CD_SECTOR_BYTES;
    content.m_aryExtents = {
        {-150 * nSector, 150 * nSector, nullptr, 0, 0, DISC_AUDIO},
        {0, 100 * nSector, content.m_arySources[0].get(), 0, 100 * nSector, DISC_AUDIO},
        {11350 * nSector, 150 * nSector, nullptr, 0, 0, DISC_MODE1_2048},
        {11500 * nSector, 20 * nSector, content.m_arySources[1].get(), 0, 20 * 2048, DISC_MODE1_2048}};
    return std::make_unique<DiscImage>(std::move(content));
}

static void SendOne(ImageDrive& drive, const uint8_t* pCDB, int nCDBBytes, int nRoom, int nFlags)
{
    // Blocks of their exact sizes: one byte more would be seen.
    const std::vector<unsigned char> cdb(pCDB, pCDB + nCDBBytes);
    std::vector<unsigned char> buffer(static_cast<size_t>(nRoom), OLD_BYTE);
    buffer.shrink_to_fit();
    unsigned char* pData = (nFlags & 2) != 0 ? nullptr : buffer.data();
    int nBytes = nRoom;
    DRIVE_SENSE sense{0xEE, 0xEE, 0xEE};
    const DRIVE_TRANSFERTYPE eType = (nFlags & 1) != 0 ? DRIVE_TRANSFER_NONE : DRIVE_TRANSFER_IN;
    const bool bGood = drive.Execute({cdb.data(), nCDBBytes, pData, nBytes, eType}, sense);
    Check(bGood == sense.IsGood() && sense.m_nKey < 16);
    Check(nBytes >= 0 && nBytes <= nRoom);
    if (!bGood)
        Check(nBytes == 0 && (pData == nullptr || std::count(buffer.begin(), buffer.end(), 0) == nRoom));
    else if (pData == nullptr || eType == DRIVE_TRANSFER_NONE)
        Check(nBytes == 0 && std::count(buffer.begin(), buffer.end(), OLD_BYTE) == nRoom);
    else
        Check(std::count(buffer.begin() + nBytes, buffer.end(), OLD_BYTE) == nRoom - nBytes);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    ImageDrive drive("fuzz", MakeDisc);
    std::string strError;
    Check(drive.Acquire(strError));
    for (int n = 0; n < MAX_COMMANDS && nBytes >= HEADER_BYTES; n++)
    {
        const int nCDBBytes = static_cast<int>(std::min<size_t>(pData[0] & 15, nBytes - HEADER_BYTES));
        SendOne(drive, pData + HEADER_BYTES, nCDBBytes, pData[2] << 8 | pData[3], pData[1]);
        pData += HEADER_BYTES + nCDBBytes;
        nBytes -= HEADER_BYTES + static_cast<size_t>(nCDBBytes);
    }
    LyCom::SysFreeString(drive.GetPackedCapabilities());
    (void)drive.GetReadErrorText();
    drive.Release();
    return 0;
}
