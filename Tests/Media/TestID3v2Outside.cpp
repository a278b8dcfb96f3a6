// Tags of other programs are read, and what is saved here is read by others: TagLib in this process, and the tools that
// people have, as processes.

#include "ID3v2Corpus.h"
#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include "TempFolder.h"
#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>

using namespace ID3v2Judge;

namespace
{
LyString Wide(const std::string& str)
{
    LyString strWide;
    strWide.FromUTF8(reinterpret_cast<const unsigned char*>(str.c_str()));
    return strWide;
}

// Runs a line of the shell, and gives what it prints.
std::string Shell(const std::string& strCommand)
{
    std::string strAnswer;
    FILE* pAnswer = popen(strCommand.c_str(), "r");
    if (pAnswer == nullptr)
        return strAnswer;
    char aryLine[4096];
    while (fgets(aryLine, sizeof aryLine, pAnswer) != nullptr)
        strAnswer += aryLine;
    EXPECT_EQ(pclose(pAnswer), 0) << strCommand;
    return strAnswer;
}

LINES Sorted(LINES lines)
{
    std::sort(lines.begin(), lines.end());
    return lines;
}

// The corpus has no feed, so that saving takes the podcast flag away.
LINES SortedWithoutPodcast(LINES lines)
{
    std::erase_if(lines, [](const std::string& str) { return str.starts_with("PCST"); });
    return Sorted(lines);
}

class ID3v2Outside : public testing::Test
{
protected:
    ID3v2Outside() { GetProcessInfo(true)->SetSharedLibraryPath(Wide(RONDEL_BIN_DIR "/")); }
    ~ID3v2Outside() override { g_LySharedToolsHelper.UnloadLySharedLibs(false); }

    // Half a second of a tone as an MPEG file without a tag.
    std::string MakeTone(const std::string& strName)
    {
        const std::string strFile = m_Folder.GetPath(strName);
        (void)Shell("sox -n -r 44100 -c 2 -b 16 '" + strFile +
                    ".wav' synth 0.5 sine 440 2>/dev/null && lame --quiet -t '" + strFile + ".wav' '" + strFile + "'");
        return strFile;
    }
    // The tag that a file begins with.
    static std::string ReadTag(const std::string& strFile)
    {
        std::ifstream stream(strFile, std::ios::binary);
        const std::string strBytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        const size_t nBody = strBytes.size() < 10
                                 ? 0
                                 : static_cast<size_t>(CID3v2Tag::ReadSyncSafeInt(Buffer(strBytes.substr(0, 10)), 6));
        return strBytes.substr(0, 10 + nBody);
    }
    // The tag in front of half a second of sound.
    std::string WriteTagged(const std::string& strName, const std::string& strTag)
    {
        std::ifstream stream(MakeTone("tone.mp3"), std::ios::binary);
        const std::string strSound{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        return m_Folder.Write(strName, strTag + strSound);
    }

    TempFolder m_Folder;
};
} // namespace

// ---- TagLib reads what is saved

TEST_F(ID3v2Outside, TagLibReadsWhatWasLoadedAndSaved)
{
    for (const std::string& strTag : ID3v2Corpus::Get())
    {
        CID3v2Tag tag;
        ASSERT_TRUE(Load(tag, strTag));
        const std::string strSaved = Save(tag);
        EXPECT_EQ(strSaved.size(), strTag.size()) << "in place";
        EXPECT_EQ(Sorted(TagLibLines(strSaved)), SortedWithoutPodcast(TagLibLines(strTag)));
        EXPECT_EQ(TagLibLines(strSaved), OwnLines(tag)) << "in the order of saving";
    }
}

TEST_F(ID3v2Outside, TagLibReadsWhatWasUnsynchronizedAndSaved)
{
    for (const std::string& strTag : ID3v2Corpus::Get())
    {
        if (strTag[3] != 3 || strTag.find("\xFF\xFE") != std::string::npos)
            continue;
        CID3v2Tag tag;
        ASSERT_TRUE(Load(tag, Tag(3, Unsynchronized(strTag.substr(10)), 0x80)));
        EXPECT_EQ(Sorted(TagLibLines(Save(tag))), SortedWithoutPodcast(TagLibLines(strTag)));
    }
}

TEST_F(ID3v2Outside, TagLibReadsAVersion22TagAsVersion23)
{
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(2, Frame22("TT2", Bytes("\0Song")) + Frame22("TP1", Bytes("\1\xFF\xFE\xAC\x20")) +
                                     Frame22("COM", Bytes("\0engShort\0Long")))));
    EXPECT_EQ(Sorted(TagLibLines(Save(tag))),
              (LINES{"COMM | 6647399 | Short | Long", "TIT2 | Song", "TPE1 | \xE2\x82\xAC"}));
}

TEST_F(ID3v2Outside, TagLibReadsWhatIsSet)
{
    for (const int nVersion : {3, 4})
    {
        CID3v2Tag tag;
        ASSERT_TRUE(Load(tag, Tag(nVersion, std::string(100, '\0'))));
        ASSERT_TRUE(tag.Set(L"Comment", L"About \x20AC"));
        ASSERT_TRUE(tag.Set(L"Own field", L"Plain"));
        ASSERT_TRUE(tag.Set(L"Another \x03B1", L"\x03B2\x03B3"));
        const LINES lines = TagLibLines(Save(tag));
        EXPECT_NE(std::find(lines.begin(), lines.end(), "COMM | 0 |  | About \xE2\x82\xAC"), lines.end());
        EXPECT_NE(std::find(lines.begin(), lines.end(), "TXXX | Own field | Plain"), lines.end());
        EXPECT_NE(std::find(lines.begin(), lines.end(), "TXXX | Another \xCE\xB1 | \xCE\xB2\xCE\xB3"), lines.end());
        EXPECT_EQ(lines.size(), 3U);
    }
}

TEST_F(ID3v2Outside, TagLibReadsAPictureThatIsSet)
{
    const std::string strImage = Bytes("\xFF\xD8\xFF\xE0\0\x10JFIF\0") + std::string(5000, '\xFF');
    const std::string strFile = m_Folder.Write("cover.jpg", strImage);
    CID3v2Tag tag;
    ASSERT_TRUE(tag.Set(L"Image File", Wide(strFile)));
    EXPECT_EQ(TagLibLines(Save(tag)),
              LINES{"APIC | image/jpeg | 3 | Picture | " +
                    Base64(TagLib::ByteVector(strImage.data(), static_cast<unsigned int>(strImage.size())))});
}

// ---- Tags of other programs

namespace
{
struct WRITER_ROW
{
    const char* pName;
    const char* pCommand; // makes $OUT from $IN, or changes $IN
    bool bInPlace;
    int nVersion;
    const char *pTitle, *pArtist, *pAlbum;
};

const WRITER_ROW s_aryWriters[] = {
    {"FFmpeg23",
     "ffmpeg -v error -y -i $IN -c copy -id3v2_version 3 -metadata title=Song -metadata artist=\xC3\x9C"
     "ber"
     " -metadata album=\xE6\x97\xA5 $OUT",
     false, 3, "Song",
     "\xC3\x9C"
     "ber",
     "\xE6\x97\xA5"},
    {"FFmpeg24",
     "ffmpeg -v error -y -i $IN -c copy -id3v2_version 4 -metadata title=Song -metadata artist=\xC3\x9C"
     "ber"
     " -metadata album=\xE6\x97\xA5 $OUT",
     false, 4, "Song",
     "\xC3\x9C"
     "ber",
     "\xE6\x97\xA5"},
    {"Lame",
     "lame --quiet --id3v2-only --tt Song --ta \xC3\x9C"
     "ber --tl Album --ty 2001 --tn 3/12 $IN.wav $OUT",
     false, 3, "Song", nullptr, "Album"},
    {"LameWide",
     "LC_ALL=C.UTF-8 lame --quiet --id3v2-only --id3v2-utf16 --tt Song --ta \xC3\x9C"
     "ber --tl \xE6\x97\xA5 $IN.wav $OUT",
     false, 3, "Song",
     "\xC3\x9C"
     "ber",
     "\xE6\x97\xA5"},
    {"Id3v2", "id3v2 -2 -t Song -a Artist -A Album -T 3/12 -y 2001 -c Short:Long:eng $IN", true, 3, "Song", "Artist",
     "Album"},
    {"Mid3v2",
     "mid3v2 -t Song -a \xC3\x9C"
     "ber -A \xE6\x97\xA5 --TXXX Mood:Calm -c Short:Long:eng $IN",
     true, 4, "Song",
     "\xC3\x9C"
     "ber",
     "\xE6\x97\xA5"},
};

std::string Replaced(std::string str, const std::string& strFrom, const std::string& strTo)
{
    for (size_t n = str.find(strFrom); n != std::string::npos; n = str.find(strFrom, n + strTo.size()))
        str.replace(n, strFrom.size(), strTo);
    return str;
}

std::string ValueOf(const CID3v2Tag& tag, const std::string& strID)
{
    const CID3v2Frame* pFrame = Find(tag, strID);
    return pFrame != nullptr ? Value(*pFrame) : "(none)";
}

// TagLib translates dates and genres, so these are left out.
LINES WithoutTranslated(const LINES& lines)
{
    LINES left;
    for (const std::string& str : lines)
    {
        if (!str.starts_with("TYER") && !str.starts_with("TDRC") && !str.starts_with("TCON"))
            left.push_back(str);
    }
    return left;
}
} // namespace

TEST_F(ID3v2Outside, TagsOfOtherProgramsAreRead)
{
    for (const WRITER_ROW& row : s_aryWriters)
    {
        const std::string strIn = MakeTone(std::string(row.pName) + ".mp3");
        const std::string strOut = row.bInPlace ? strIn : m_Folder.GetPath(std::string(row.pName) + ".out.mp3");
        (void)Shell(Replaced(Replaced(row.pCommand, "$IN", strIn), "$OUT", strOut));
        const std::string strTag = ReadTag(strOut);
        CID3v2Tag tag;
        ASSERT_TRUE(Load(tag, strTag)) << row.pName;
        EXPECT_EQ(tag.GetMajorVersion(), row.nVersion) << row.pName;
        EXPECT_EQ(ValueOf(tag, "TIT2"), row.pTitle) << row.pName;
        EXPECT_TRUE(row.pArtist == nullptr || ValueOf(tag, "TPE1") == row.pArtist) << row.pName << IDs(tag);
        EXPECT_EQ(ValueOf(tag, "TALB"), row.pAlbum) << row.pName;
        EXPECT_EQ(WithoutTranslated(OwnLines(tag)), WithoutTranslated(TagLibLines(strTag))) << row.pName;
        EXPECT_EQ(Save(tag).size(), strTag.size()) << row.pName;
    }
}

// ---- Other programs read what is saved

TEST_F(ID3v2Outside, FFprobeReadsWhatIsSaved)
{
    for (const int nVersion : {3, 4})
    {
        CID3v2Tag tag;
        ASSERT_TRUE(Load(tag, Tag(nVersion, Frame23("TIT2", Bytes("\0Song")) + Frame23("TRCK", Bytes("\0003/12")))));
        ASSERT_TRUE(tag.Set(L"Own field", L"\x03B1 and \x20AC"));
        ASSERT_TRUE(tag.Set(L"Comment", L"About it"));
        const std::string strFile = WriteTagged("saved.mp3", Save(tag));
        const std::string strAnswer =
            Shell("ffprobe -v error -show_entries format_tags -show_entries stream=codec_name '" + strFile + "'");
        for (const char* pLine : {"codec_name=mp3", "TAG:title=Song", "TAG:track=3/12",
                                  "TAG:Own field=\xCE\xB1 and \xE2\x82\xAC", "TAG:comment=About it"})
            EXPECT_NE(strAnswer.find(pLine), std::string::npos) << pLine << " in " << strAnswer;
    }
}

TEST_F(ID3v2Outside, FFprobeFindsThePicture)
{
    const std::string strPicture = m_Folder.GetPath("cover.png");
    (void)Shell("ffmpeg -v error -y -f lavfi -i color=red:size=32x16 -frames:v 1 '" + strPicture + "'");
    CID3v2Tag tag;
    ASSERT_TRUE(tag.Set(L"Image File", Wide(strPicture)));
    const std::string strFile = WriteTagged("picture.mp3", Save(tag));
    const std::string strAnswer =
        Shell("ffprobe -v error -select_streams v -show_entries stream=codec_name,width,height:stream_tags '" +
              strFile + "'");
    for (const char* pLine : {"codec_name=png", "width=32", "height=16", "TAG:title=Picture", "Cover (front)"})
        EXPECT_NE(strAnswer.find(pLine), std::string::npos) << pLine << " in " << strAnswer;
}

TEST_F(ID3v2Outside, SavedTagsOfOtherProgramsAreStillTheirs)
{
    for (const WRITER_ROW& row : s_aryWriters)
    {
        const std::string strIn = MakeTone(std::string(row.pName) + ".mp3");
        const std::string strOut = row.bInPlace ? strIn : m_Folder.GetPath(std::string(row.pName) + ".out.mp3");
        (void)Shell(Replaced(Replaced(row.pCommand, "$IN", strIn), "$OUT", strOut));
        const std::string strShow = "ffprobe -v error -of flat -show_entries format_tags ";
        const std::string strBefore = Shell(strShow + "'" + strOut + "' | sort");
        CID3v2Tag tag;
        ASSERT_TRUE(Load(tag, ReadTag(strOut)));
        const std::string strSaved = Save(tag);
        std::fstream file(strOut, std::ios::binary | std::ios::in | std::ios::out);
        file.write(strSaved.data(), static_cast<std::streamsize>(strSaved.size()));
        file.close();
        EXPECT_EQ(Shell(strShow + "'" + strOut + "' | sort"), strBefore) << row.pName;
    }
}
