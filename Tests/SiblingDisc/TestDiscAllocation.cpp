#include "CountAllocations.h"
#include "DiscImage.h"
#include "ImageFiles.h"
#include <gtest/gtest.h>

namespace
{
TEST(DiscAllocation, ReadingAllocatesNothing)
{
    TempFolder folder;
    folder.Write("a.bin", MakeSectors(40, 1));
    folder.Write("d.iso", MakeSectors(40, 1, 2048));
    WriteAudioFile(folder.GetPath("a.flac"), SF_FORMAT_FLAC | SF_FORMAT_PCM_16, MakeFrames(40 * LY_CD_SECTOR_FRAMES));
    WriteAudioFile(folder.GetPath("m.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, MakeFrames(20 * LY_CD_SECTOR_FRAMES), 1);
    std::string strError;
    auto pImage = DiscImage::Open(
        folder.Write("a.cue",
                     "FILE a.bin MOTOROLA\nTRACK 01 AUDIO\nINDEX 01 00:00:00\nFILE a.flac WAVE\nTRACK 02 AUDIO\n"
                     "INDEX 01 00:00:00\nFILE m.wav WAVE\nTRACK 03 AUDIO\nINDEX 01 00:00:00\n"
                     "FILE d.iso BINARY\nTRACK 04 MODE1/2048\nPREGAP 00:00:10\nINDEX 01 00:00:00\n"),
        strError);
    ASSERT_TRUE(pImage) << strError;
    std::vector<unsigned char> aryBuffer(27 * LY_CD_SECTOR_BYTES);
    DISC_TRACK_MODE aryForms[27];
    const long long nBefore = CountAllocations::GetCount();
    int nSectors = 0;
    for (int nLBA = -150; nLBA < pImage->GetLeadOutLBA(); nLBA += 27)
        nSectors += pImage->ReadSectors(nLBA, 27, aryBuffer.data(), aryForms).m_nSectors;
    (void)pImage->Locate(77);
    EXPECT_EQ(CountAllocations::GetCount(), nBefore);
    EXPECT_EQ(150 + pImage->GetLeadOutLBA(), nSectors);
}
} // namespace
