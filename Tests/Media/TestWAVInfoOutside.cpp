// Wave files that other programs write, and what other programs say of those that are written back.

#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include "TempFolder.h"
#include "WaveFiles.h"
#include "WAVInfo.h"
#include <cstdio>
#include <gtest/gtest.h>
#include <iterator>

using namespace WaveFiles;

namespace
{
class OutsideTest : public ::testing::Test
{
protected:
    OutsideTest() { GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/")); }
    ~OutsideTest() override { g_LySharedToolsHelper.UnloadLySharedLibs(false); }

    // What a command says; it runs in the folder of the test.
    std::string Run(const std::string& strCommand)
    {
        std::string strOutput;
        FILE* pPipe = popen(("cd " + m_Folder.GetPath() + " && " + strCommand).c_str(), "r");
        char aryText[4096];
        for (size_t n = 0; (n = fread(aryText, 1, sizeof aryText, pPipe)) > 0;)
            strOutput.append(aryText, n);
        EXPECT_EQ(0, pclose(pPipe)) << strCommand;
        return strOutput;
    }
    std::string ReadFile(const std::string& strName) const
    {
        std::ifstream file(m_Folder.GetPath(strName), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    int Open(CWAVInfo& info, const std::string& strName, bool bStrict = true) const
    {
        info.m_nTagWritingEnabled = 1;
        return info.Open(LyString().FromANSI(m_Folder.GetPath(strName).c_str()), bStrict, true);
    }
    static std::string ReadAudio(CWAVInfo& info)
    {
        std::string strAudio(static_cast<size_t>(info.GetDataBytes()), 'x');
        long long nRead = 0;
        EXPECT_EQ(0, info.ReadBlocks(strAudio.data(), 0, info.GetTotalBlocks(), &nRead, false));
        EXPECT_EQ(info.GetDataBytes(), nRead);
        return strAudio;
    }
    std::string GetAudioDigest(const std::string& strName)
    {
        return Run("ffmpeg -nostdin -v error -i " + strName + " -map 0:a -f md5 -");
    }
    std::string GetTitle(const std::string& strName)
    {
        return Run("ffprobe -v error -show_entries format_tags=title -of default=nw=1:nk=1 " + strName);
    }
    // The same by the reader under test: the others look at a tag only if there is no INFO list and no bext chunk.
    int GetTitleLength(const std::string& strName) const
    {
        CWAVInfo info;
        LyString strValue;
        return Open(info, strName, false) == 0 && info.Get(L"Name", strValue) ? strValue.GetLength() : -1;
    }
    // Sets a title, long or short, and saves.
    void SetTitle(const std::string& strName, const std::wstring& strTitle) const
    {
        CWAVInfo info;
        ASSERT_EQ(0, Open(info, strName, false));
        ASSERT_TRUE(info.Set(L"Name", strTitle.c_str()));
    }
    TempFolder m_Folder;
};

std::string Sine(const std::string& strFormat, const std::string& strName)
{
    return "sox -D -n " + strFormat + " " + strName + " synth 0.25 sine 440 vol 0.5";
}
} // namespace

struct SOX_CASE
{
    const char* pFormat;
    int nRate, nChannels, nBits, nFormatID;
    bool bStrict;
};

TEST_F(OutsideTest, SoxWritesEveryPlainFormat)
{
    const SOX_CASE aryCases[] = {
        {"-r 44100 -c 2 -b 16", 44100, 2, 16, 1, true},
        {"-r 8000 -c 1 -b 8 -e unsigned-integer", 8000, 1, 8, 1, true},
        {"-r 96000 -c 2 -b 24", 96000, 2, 24, 1, true},
        {"-r 48000 -c 6 -b 24", 48000, 6, 24, 1, true},
        {"-r 48000 -c 2 -b 32 -e floating-point", 48000, 2, 32, 3, true},
        {"-r 192000 -c 2 -b 64 -e floating-point", 192000, 2, 64, 3, true},
        {"-r 8000 -c 1 -e mu-law", 8000, 1, 8, 7, false},
    };
    for (const SOX_CASE& row : aryCases)
    {
        (void)Run(Sine(row.pFormat, "a.wav"));
        CWAVInfo info;
        EXPECT_EQ(row.bStrict ? 0 : -1, Open(info, "a.wav", true)) << row.pFormat;
        ASSERT_EQ(0, Open(info, "a.wav", false)) << row.pFormat;
        EXPECT_EQ(row.nRate, info.GetSampleRate());
        EXPECT_EQ(row.nChannels, info.GetChannels());
        EXPECT_EQ(row.nBits, info.GetBitsPerSample());
        EXPECT_EQ(row.nFormatID, info.GetFormatID()) << row.pFormat;
        EXPECT_EQ(row.nRate / 4, info.GetTotalBlocks());
        EXPECT_EQ(250, info.GetLengthMS());
        EXPECT_TRUE(Run("sox -D a.wav -t raw -") == ReadAudio(info)) << row.pFormat;
    }
}

// Thirty-two bits of integers in the extensible form: the extension that says so is not read.
TEST_F(OutsideTest, IntegersOf32BitsInTheExtensibleFormAreTakenForFloat)
{
    (void)Run(Sine("-r 48000 -c 2 -b 32 -e signed-integer", "a.wav"));
    CWAVInfo info;
    ASSERT_EQ(0, Open(info, "a.wav"));
    EXPECT_EQ(0xFFFEu, GetNumber(ReadFile("a.wav"), 20) & 0xFFFF);
    EXPECT_EQ(3, info.GetFormatID());
    EXPECT_EQ(32, info.GetBitsPerSample());
}

TEST_F(OutsideTest, FlacDecodesToFilesThatOpen)
{
    for (const char* pFormat : {"-r 44100 -c 2 -b 16", "-r 96000 -c 6 -b 24", "-r 22050 -c 1 -b 8"})
    {
        (void)Run(Sine(pFormat, "a.wav"));
        (void)Run("flac --totally-silent -f -o a.flac a.wav && flac --totally-silent -d -f -o b.wav a.flac");
        CWAVInfo first;
        CWAVInfo second;
        ASSERT_EQ(0, Open(first, "a.wav"));
        ASSERT_EQ(0, Open(second, "b.wav"));
        EXPECT_TRUE(ReadAudio(first) == ReadAudio(second)) << pFormat;
        EXPECT_EQ(first.GetSampleRate(), second.GetSampleRate());
        EXPECT_EQ(first.GetChannels(), second.GetChannels());
    }
}

TEST_F(OutsideTest, FfmpegsInfoListIsRead)
{
    (void)Run(Sine("-r 44100 -c 2 -b 16", "a.wav"));
    (void)Run(
        "ffmpeg -nostdin -v error -i a.wav -c copy -metadata title='T\xC3\xAFtle \xE2\x82\xAC' -metadata artist=Me "
        "-metadata album=Record -metadata comment=Words -metadata genre=Noise -metadata copyright=None b.wav");
    CWAVInfo info;
    ASSERT_EQ(0, Open(info, "b.wav"));
    const std::pair<const wchar_t*, const wchar_t*> aryExpected[] = {
        {L"Name", L"T\u00EFtle \u20AC"}, {L"Artist", L"Me"},   {L"Album", L"Record"},
        {L"Comment", L"Words"},          {L"Genre", L"Noise"}, {L"Copyright", L"None"}};
    for (const auto& [pField, pText] : aryExpected)
    {
        LyString strValue;
        EXPECT_TRUE(info.Get(pField, strValue)) << pField;
        EXPECT_STREQ(pText, strValue);
    }
    EXPECT_EQ(info.GetTotalBlocks(), 11025);
}

TEST_F(OutsideTest, BroadcastFilesOpenAndRF64IsRefused)
{
    (void)Run(Sine("-r 48000 -c 2 -b 24", "a.wav"));
    (void)Run("ffmpeg -nostdin -v error -i a.wav -c:a pcm_s24le -write_bext 1 -metadata description=Words b.wav");
    (void)Run("ffmpeg -nostdin -v error -i a.wav -c:a pcm_s24le -rf64 always c.wav");
    (void)Run("ffmpeg -nostdin -v error -i a.wav -c:a pcm_s24le -f wav - > d.wav");
    CWAVInfo info;
    ASSERT_EQ(0, Open(info, "b.wav"));
    EXPECT_NE(std::string::npos, Names(ReadFile("b.wav")).find("bext"));
    EXPECT_EQ(12000, info.GetTotalBlocks());
    EXPECT_EQ("RF64", ReadFile("c.wav").substr(0, 4));
    EXPECT_EQ(-1, Open(info, "c.wav", false));
    EXPECT_EQ(-1, Open(info, "d.wav", false)) << "written to a pipe: its sizes are not known";
}

TEST_F(OutsideTest, WhatIsSavedIsReadByOthers)
{
    const char* const aryFormats[] = {"-r 44100 -c 2 -b 16", "-r 48000 -c 6 -b 24",
                                      "-r 48000 -c 2 -b 32 -e floating-point", "-r 8000 -c 1 -e mu-law"};
    for (const char* pFormat : aryFormats)
    {
        (void)Run(Sine(pFormat, "a.wav"));
        const std::string strAudio = GetAudioDigest("a.wav");
        const std::string strSamples = Run("sox -D a.wav -t raw -");
        for (const size_t nLength : {5u, 50u, 9000u, 3u}) // a new tag, in place, written anew, in place
        {
            SetTitle("a.wav", std::wstring(nLength, L't'));
            EXPECT_EQ(std::string(nLength, 't') + "\n", GetTitle("a.wav")) << pFormat;
            EXPECT_EQ(strAudio, GetAudioDigest("a.wav")) << pFormat << " " << nLength;
            const std::string strFile = ReadFile("a.wav");
            EXPECT_EQ(strFile.size() - 8, GetNumber(strFile, 4));
        }
        EXPECT_TRUE(strSamples == Run("sox -D a.wav -t raw -")) << pFormat;
    }
}

TEST_F(OutsideTest, CharactersBeyondLatin1AreReadByOthers)
{
    (void)Run(Sine("-r 44100 -c 2 -b 16", "a.wav"));
    SetTitle("a.wav", L"\u20AC \u00E4 \u4E2D");
    EXPECT_EQ("\xE2\x82\xAC \xC3\xA4 \xE4\xB8\xAD\n", GetTitle("a.wav"));
}

// ---- Layouts as recorders and editors write them

struct LAYOUT_CASE
{
    const char* pName;
    std::string strAhead, strBetween, strBehind;
};

TEST_F(OutsideTest, AudioSurvivesInEveryLayout)
{
    const std::string strCue = Chunk("cue ", Number(1) + Number(1) + Number(100) + "data" + std::string(12, 0));
    const std::string strInfo = InfoList(InfoItem("IART", std::string("Me\0\0", 4)) + InfoItem("ISFT", "Editor"));
    const std::string strTag = Chunk("id3 ", Tag(TextFrame("TIT2", "Title"), 1));
    const LAYOUT_CASE aryCases[] = {
        {"fact", "", Chunk("fact", Number(11025)), ""},
        {"a recorder's", Chunk("bext", std::string(602, 0)) + Chunk("JUNK", std::string(28, 0)), "",
         Chunk("iXML", "<a/> ")},
        {"an editor's", "", "", strCue + Chunk("LIST", "adtl" + Chunk("labl", Number(1) + "ab")) + strInfo},
        {"the list ahead", "", strInfo, ""},
        {"aligned audio", "", Chunk("FLLR", std::string(4044, 0)), ""},
        {"the tag ahead of all", strTag, "", ""},
        {"the tag ahead of the audio", "", strTag, strCue},
        {"the tag between", "", "", strCue + strTag + strInfo},
        {"the UITS chunk ahead", "", Chunk("UITS", "text"), strTag},
    };
    (void)Run(Sine("-r 44100 -c 2 -b 16", "s.wav"));
    const std::string strSource = ReadFile("s.wav");
    const std::string strData = strSource.substr(36);
    for (const LAYOUT_CASE& row : aryCases)
    {
        const std::string strFile = Riff(row.strAhead + Format() + row.strBetween + strData + row.strBehind);
        (void)m_Folder.Write("a.wav", strFile);
        const std::string strAudio = GetAudioDigest("a.wav");
        ASSERT_EQ(GetAudioDigest("s.wav"), strAudio) << row.pName;
        for (const size_t nLength : {300u, 30u, 6000u})
        {
            SetTitle("a.wav", std::wstring(nLength, L't'));
            EXPECT_NE(std::string::npos, ReadFile("a.wav").find(strData)) << row.pName << " " << nLength;
            EXPECT_EQ(static_cast<int>(nLength), GetTitleLength("a.wav")) << row.pName << " " << nLength;
        }
        EXPECT_EQ(strAudio, GetAudioDigest("a.wav")) << row.pName;
        CWAVInfo info;
        ASSERT_EQ(0, Open(info, "a.wav")) << row.pName;
        EXPECT_TRUE(info.SaveMetadataChanges(true));
        info.m_ID3v2Tag.m_bDirty = false;
        info.Close();
        EXPECT_EQ(strAudio, GetAudioDigest("a.wav")) << row.pName;
    }
}

TEST_F(OutsideTest, TheInfoListOfEachEncodingIsRead)
{
    const std::string strList = InfoList(InfoItem("IART", std::string("M\xFCller\0\0", 8)) +
                                         InfoItem("INAM", std::string("M\xC3\xBCller\0", 8)) +
                                         InfoItem("IPRD", std::string("\xFF\xFEM\0\xFC\0l\0\0\0", 10)));
    (void)m_Folder.Write("a.wav", Riff(Format() + Chunk("data", Audio(400)) + strList));
    CWAVInfo info;
    ASSERT_EQ(0, Open(info, "a.wav"));
    LyString strValue;
    EXPECT_TRUE(info.Get(L"Artist", strValue));
    EXPECT_STREQ(L"M\u00FCller", strValue);
    EXPECT_TRUE(info.Get(L"Name", strValue));
    EXPECT_STREQ(L"M\u00FCller", strValue);
    EXPECT_TRUE(info.Get(L"Album", strValue));
    EXPECT_STREQ(L"M\u00FCl", strValue);
}
