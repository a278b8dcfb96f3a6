#include "DiscImage.h"
#include "ImageFiles.h"
#include <gtest/gtest.h>

namespace
{
constexpr int WAV = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
constexpr int FLAC = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
constexpr int SECTOR_FRAMES = LY_CD_SECTOR_FRAMES;

const std::string TWO_TRACKS = "TRACK 01 AUDIO\nINDEX 01 00:00:00\nTRACK 02 AUDIO\nINDEX 01 00:00:20\n";
const std::string ONE_TRACK = "TRACK 01 AUDIO\nINDEX 01 00:00:00\n";

class DiscOpen : public testing::Test
{
protected:
    TempFolder m_Folder;
    std::string m_strError;

    std::unique_ptr<DiscImage> Open(const std::string& strName)
    {
        return DiscImage::Open(m_Folder.GetPath(strName), m_strError);
    }
    std::unique_ptr<DiscImage> OpenSheet(const std::string& strName, const std::string& strText)
    {
        m_Folder.Write(strName, strText);
        return Open(strName);
    }

    static std::string Read(DiscImage& image, int nLBA, int nCount)
    {
        std::string strBuffer(static_cast<size_t>(nCount) * LY_CD_SECTOR_BYTES, '?');
        READ_RESULT result = image.ReadSectors(nLBA, nCount, reinterpret_cast<unsigned char*>(strBuffer.data()));
        return strBuffer.substr(0, static_cast<size_t>(result.m_nSectors) * LY_CD_SECTOR_BYTES);
    }
    static std::string Sectors(const std::vector<short>& aryFrames, int nFirst, int nCount)
    {
        return ToBytes(aryFrames).substr(static_cast<size_t>(nFirst) * LY_CD_SECTOR_BYTES,
                                         static_cast<size_t>(nCount) * LY_CD_SECTOR_BYTES);
    }
};

TEST_F(DiscOpen, ByteOrdersGiveTheSameSamples)
{
    std::vector<short> aryFrames = MakeFrames(50 * SECTOR_FRAMES);
    m_Folder.Write("little.bin", ToBytes(aryFrames));
    m_Folder.Write("big.bin", SwapPairs(ToBytes(aryFrames)));
    WriteAudioFile(m_Folder.GetPath("a.wav"), WAV, aryFrames);
    const std::pair<const char*, std::string> arySheets[] = {
        {"1.cue", "FILE \"little.bin\" BINARY\n" + TWO_TRACKS},
        {"2.cue", "FILE \"big.bin\" MOTOROLA\n" + TWO_TRACKS},
        {"3.cue", "FILE \"a.wav\" WAVE\n" + TWO_TRACKS},
        {"4.cue", "FILE \"a.wav\" BINARY\n" + TWO_TRACKS}, // declared wrongly: it is known by its first bytes
        {"5.toc", "CD_DA\nTRACK AUDIO\nFILE \"big.bin\" 0 0:0:20\nTRACK AUDIO\nFILE \"big.bin\" 0:0:20\n"},
        {"6.toc", "CD_DA\nTRACK AUDIO\nFILE \"little.bin\" SWAP 0 0:0:20\nTRACK AUDIO\nFILE \"a.wav\" 0:0:20\n"}};
    for (const auto& [pName, strText] : arySheets)
    {
        auto pImage = OpenSheet(pName, strText);
        ASSERT_TRUE(pImage) << m_strError;
        EXPECT_EQ("", m_strError);
        EXPECT_EQ(20, pImage->FindTrack(2)->m_nStartLBA) << pName;
        EXPECT_EQ(50, pImage->GetLeadOutLBA()) << pName;
        EXPECT_TRUE(Same(Sectors(aryFrames, 10, 27), Read(*pImage, 10, 27))) << pName;
        EXPECT_TRUE(Same(Sectors(aryFrames, 0, 50), Read(*pImage, 0, 50))) << pName;
    }
}

TEST_F(DiscOpen, OneAudioFileForEachTrack)
{
    std::vector<short> aryOne = MakeFrames(10 * SECTOR_FRAMES + 7);
    std::vector<short> aryTwo = MakeFrames(20 * SECTOR_FRAMES, 5000);
    WriteAudioFile(m_Folder.GetPath("01 - One.flac"), FLAC, aryOne);
    WriteAudioFile(m_Folder.GetPath("02 - Two.aiff"), SF_FORMAT_AIFF | SF_FORMAT_PCM_16, aryTwo);
    auto pImage =
        OpenSheet("a.cue", "FILE \"01 - One.wav\" WAVE\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n" // converted since
                           "FILE \"02 - Two.aiff\" AIFF\nTRACK 02 AUDIO\nINDEX 01 00:00:00\n");
    ASSERT_TRUE(pImage) << m_strError;
    EXPECT_EQ(11, pImage->FindTrack(2)->m_nStartLBA);
    std::string strWanted = ToBytes(aryOne);
    strWanted.resize(11 * LY_CD_SECTOR_BYTES, '\0');
    EXPECT_TRUE(Same(strWanted + ToBytes(aryTwo), Read(*pImage, 0, 31)));
}

TEST_F(DiscOpen, LossyFileIsADiscOfItsLength)
{
    WriteAudioFile(m_Folder.GetPath("a.ogg"), SF_FORMAT_OGG | SF_FORMAT_VORBIS, MakeFrames(100 * SECTOR_FRAMES));
    auto pImage = OpenSheet("a.cue", "FILE \"a.ogg\" WAVE\n" + TWO_TRACKS);
    ASSERT_TRUE(pImage) << m_strError;
    EXPECT_EQ(100, pImage->GetLeadOutLBA());
    EXPECT_EQ(100u * LY_CD_SECTOR_BYTES, Read(*pImage, 0, 100).size());
}

TEST_F(DiscOpen, SheetsAsTheyTravel)
{
    m_Folder.Write("Musik/F\xC3\xBCr Elise.bin", std::string(30 * LY_CD_SECTOR_BYTES, 'x'));
    const std::pair<const char*, std::string> arySheets[] = {
        {"utf8.cue", "FILE \"Musik/F\xC3\xBCr Elise.bin\" BINARY\n"},
        {"bom.cue", "\xEF\xBB\xBF"
                    "FILE \"Musik\\F\xC3\xBCr Elise.bin\" BINARY\r\n"},
        {"latin1.cue", "FILE \"D:\\Musik\\F\xFCr Elise.bin\" BINARY\n"},
        {"case.cue", "FILE \"MUSIK\\F\xC3\x9CR ELISE.BIN\" BINARY\n"},
        {"quote.cue", "FILE \"Musik/F\xC3\xBCr Elise.bin BINARY\n"}};
    for (const auto& [pName, strLine] : arySheets)
    {
        auto pImage = OpenSheet(pName, strLine + "TITLE \"\xC3\xBC\"\n" + TWO_TRACKS);
        ASSERT_TRUE(pImage) << m_strError;
        EXPECT_EQ(30, pImage->GetLeadOutLBA()) << pName;
    }
}

TEST_F(DiscOpen, SingleFileMayHaveBeenRenamedWithTheSheet)
{
    WriteAudioFile(m_Folder.GetPath("Album.flac"), FLAC, MakeFrames(30 * SECTOR_FRAMES));
    auto pImage = OpenSheet("Album.cue", "FILE \"CDImage.wav\" WAVE\n" + TWO_TRACKS);
    EXPECT_TRUE(pImage) << m_strError;
}

TEST_F(DiscOpen, EnhancedCDFromFiles)
{
    WriteAudioFile(m_Folder.GetPath("a.wav"), WAV, MakeFrames(400 * SECTOR_FRAMES));
    m_Folder.Write("d.bin", MakeSectors(20, 1));
    auto pImage =
        OpenSheet("a.cue", "REM SESSION 01\nFILE \"a.wav\" WAVE\n" + TWO_TRACKS +
                               "REM SESSION 02\nFILE \"d.bin\" BINARY\nTRACK 03 MODE2/2352\nINDEX 01 0:0:0\n");
    ASSERT_TRUE(pImage) << m_strError;
    EXPECT_EQ(400 + 11400, pImage->FindTrack(3)->m_nStartLBA);
    EXPECT_TRUE(Same(MakeSectors(20, 1), Read(*pImage, 11800, 20)));
}

TEST_F(DiscOpen, WarningsNameTheSheetAndTheLine)
{
    WriteAudioFile(m_Folder.GetPath("a.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_24, MakeFrames(30 * SECTOR_FRAMES));
    auto pImage = OpenSheet("a.cue", "NONSENSE\nFILE \"a.wav\" WAVE\n" + TWO_TRACKS);
    ASSERT_TRUE(pImage) << m_strError;
    ASSERT_EQ(2u, pImage->GetWarnings().size());
    EXPECT_EQ(m_Folder.GetPath("a.cue") + ", line 1: the command \"NONSENSE\" is unknown and was left out.",
              pImage->GetWarnings()[0]);
    EXPECT_EQ(m_Folder.GetPath("a.cue") + ", line 2: the file \"" + m_Folder.GetPath("a.wav") +
                  "\" has samples of more than 16 bits; the lower bits are cut off.",
              pImage->GetWarnings()[1]);
}

TEST_F(DiscOpen, CutFilesKeepTheirReadablePart)
{
    std::vector<short> aryFrames = MakeFrames(50 * SECTOR_FRAMES);
    m_Folder.Write("a.bin", ToBytes(aryFrames).substr(0, 30 * LY_CD_SECTOR_BYTES + 17));
    auto pImage = OpenSheet("a.cue", "FILE \"a.bin\" BINARY\n" + TWO_TRACKS + "TRACK 03 AUDIO\nINDEX 01 00:00:40\n");
    ASSERT_TRUE(pImage) << m_strError;
    EXPECT_TRUE(Same(Sectors(aryFrames, 0, 30), Read(*pImage, 0, 50)));
    unsigned char aryBuffer[LY_CD_SECTOR_BYTES];
    EXPECT_EQ(READ_UNREADABLE, pImage->ReadSectors(30, 1, aryBuffer).m_nStatus);
    EXPECT_EQ(READ_UNREADABLE, pImage->ReadSectors(45, 1, aryBuffer).m_nStatus);
}

struct FAULT_CASE
{
    const char* m_pName;
    std::string m_strSheet;
    const char* m_pText; // behind the folder, up to the way out
};

TEST_F(DiscOpen, BadInputIsOneSentence)
{
    using namespace std::string_literals;
    std::string strNoise;
    for (unsigned n = 1; strNoise.size() < 3000; n = n * 1664525u + 1013904223u)
        strNoise += static_cast<char>(n >> 24);
    m_Folder.Write("empty.bin", "");
    m_Folder.Write("a.bin", MakeSectors(5, 1));
    WriteAudioFile(m_Folder.GetPath("48.wav"), WAV, MakeFrames(100), 2, 48000);
    m_Folder.Write("noise.wav", strNoise);
    const FAULT_CASE aryCases[] = {
        {"missing.cue", "FILE \"no.bin\" BINARY\n" + ONE_TRACK, ", line 1: the file \"no.bin\" was not found in \""},
        {"second.cue", "FILE a.bin BINARY\n" + ONE_TRACK + "FILE no.bin BINARY\nTRACK 02 AUDIO\nINDEX 01 0:0:0\n",
         ", line 4: the file \"no.bin\" was not found in \""},
        {"empty.cue", "", ": the file is empty; "},
        {"emptybin.cue", "FILE empty.bin BINARY\n" + ONE_TRACK, ", line 1: the file \""},
        {"noise.cue", strNoise, ": this is not the sheet of a disc image"},
        {"noise.toc", "\x01" + strNoise, ": this is not the sheet of a disc image; "},
        {"text.toc", "Hello world\n", ", line 1: the statement \"Hello\" is unknown"},
        {"graphics.cue", "FILE a.bin BINARY\nTRACK 01 CDG\nINDEX 01 00:00:00\n", ", line 2: tracks of type \"CDG\""},
        {"rate.cue", "FILE 48.wav WAVE\n" + ONE_TRACK, ", line 1: the file \""},
        {"noisewav.cue", "\nFILE noise.wav WAVE\n" + ONE_TRACK, ", line 2: the file \""},
        {"missing.toc", "CD_DA\nTRACK AUDIO\nFILE \"no.bin\" 0\n", ", line 3: the file \"no.bin\" was not found in \""},
        {"beyond.toc", "TRACK AUDIO\nFILE \"a.bin\" 1:0:0\n",
         ", line 2: the piece starts behind the end of \"a.bin\"; "},
    };
    for (const FAULT_CASE& row : aryCases)
    {
        m_strError.clear();
        EXPECT_FALSE(OpenSheet(row.m_pName, row.m_strSheet)) << row.m_pName;
        EXPECT_EQ(0u, m_strError.find(m_Folder.GetPath(row.m_pName) + row.m_pText)) << m_strError;
        EXPECT_NE(std::string::npos, m_strError.find("; ")) << m_strError; // the way out
        EXPECT_EQ('.', m_strError.back()) << m_strError;
        EXPECT_EQ(std::string::npos, m_strError.find('\n')) << m_strError;
    }
    EXPECT_FALSE(Open("nowhere.cue"));
    EXPECT_EQ(m_Folder.GetPath("nowhere.cue") + ": the file does not exist; check its path.", m_strError);
    EXPECT_FALSE(DiscImage::Open("", m_strError));
    EXPECT_FALSE(DiscImage::Open(m_Folder.GetPath(), m_strError));
}

TEST_F(DiscOpen, ImageInsteadOfItsSheetIsRefusedWithTheWayOut)
{
    m_Folder.Write("large.bin", MakeSectors(600, 1));
    m_Folder.Write("small.bin", MakeSectors(5, 0));
    EXPECT_FALSE(Open("large.bin"));
    EXPECT_NE(std::string::npos, m_strError.find("open the sheet that belongs to the image")) << m_strError;
    EXPECT_FALSE(Open("small.bin"));
    EXPECT_NE(std::string::npos, m_strError.find("open the .cue, .toc, .ccd or .nrg file")) << m_strError;
}

TEST_F(DiscOpen, SheetCutAtEveryByteNeverCrashes)
{
    m_Folder.Write("a.bin", MakeSectors(50, 1));
    const std::string arySheets[] = {
        "CATALOG 1234567890123\nFILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nFLAGS DCP\nPREGAP 00:00:10\nINDEX 01 00:00:00\n"
        "REM SESSION 02\nTRACK 02 MODE2/2352\nINDEX 00 00:00:10\nINDEX 01 00:00:20\n",
        "CD_DA\nCD_TEXT { LANGUAGE 0 { TITLE \"x\" } }\nTRACK AUDIO\nNO COPY\nFILE \"a.bin\" SWAP #4 12 0:0:4\nSTART\n"
        "SILENCE 0:0:4\nINDEX 0:0:1\n"};
    unsigned char aryBuffer[LY_CD_SECTOR_BYTES];
    for (const std::string& strSheet : arySheets)
        for (size_t nBytes = 0; nBytes <= strSheet.size(); nBytes++)
        {
            m_strError.clear();
            auto pImage = OpenSheet("cut.cue", strSheet.substr(0, nBytes));
            EXPECT_EQ(!pImage, !m_strError.empty()) << nBytes;
            for (int nLBA = -151; pImage && nLBA < 100; nLBA++)
                (void)pImage->ReadSectors(nLBA, 1, aryBuffer);
        }
}
TEST_F(DiscOpen, AnNrgImageThatIsCutIsToldAsSuch)
{
    for (const size_t nBytes : {size_t{60}, size_t{3} << 20})
    {
        EXPECT_EQ(nullptr, OpenSheet("cut.NRG", std::string(nBytes, 'x')));
        EXPECT_NE(std::string::npos, m_strError.find("end of the NRG image is missing")) << m_strError;
    }
    m_Folder.Write("a.bin", std::string(LY_CD_SECTOR_BYTES, 'x'));
    EXPECT_NE(nullptr, OpenSheet("sheet.nrg", "FILE \"a.bin\" BINARY\n" + ONE_TRACK)); // the content counts
}
} // namespace
