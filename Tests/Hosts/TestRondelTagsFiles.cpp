// rondel tags: files of every kind, hostile ones among them, and what is left of them.

#include "TagsTest.h"
#include <sys/stat.h>

class RondelTagsFiles : public RondelTagsTest
{
protected:
    // A tag of version 2.3 around frames.
    static std::string MakeTag(const std::string& strFrames, int nVersion = 3)
    {
        std::string strSize;
        for (int i = 3; i >= 0; --i)
            strSize += static_cast<char>(strFrames.size() >> (7 * i) & 0x7F);
        return std::string("ID3") + static_cast<char>(nVersion) + std::string(2, '\0') + strSize + strFrames;
    }
    static std::string MakeFrame(const std::string& strID, const std::string& strBody)
    {
        std::string strSize;
        for (int i = 3; i >= 0; --i)
            strSize += static_cast<char>(strBody.size() >> (8 * i));
        return strID + strSize + std::string(2, '\0') + strBody;
    }
    static std::string MakeTitle(const std::string& strText) { return MakeFrame("TIT2", '\0' + strText); }
    // What stands in a chunk; the last one of that name.
    static std::string GetChunk(const std::string& strWav, const std::string& strID)
    {
        std::string strFound = "(none)";
        for (size_t n = 12; n + 8 <= strWav.size();)
        {
            size_t nBytes = 0;
            for (size_t i = 4; i-- > 0;)
                nBytes = nBytes << 8 | static_cast<unsigned char>(strWav[n + 4 + i]);
            if (n + 8 + nBytes > strWav.size())
                break;
            if (strWav.compare(n, 4, strID) == 0)
                strFound = strWav.substr(n + 8, nBytes);
            n += 8 + nBytes + nBytes % 2;
        }
        return strFound;
    }
};

// ---- WAV files of every layout

TEST_F(RondelTagsFiles, EveryOtherChunkOfAWavStaysWhereverTheTagStood)
{
    const std::string strFormat = MakeFormatChunk({1, 1, 44100, 8});
    const std::string strTag = MakeChunk("id3 ", MakeTag(MakeTitle("Old")));
    const std::string strOddTag = MakeChunk("ID3 ", MakeTag(MakeTitle("Older!") + std::string(3, '\0')));
    const std::string strOdd = MakeChunk("odd ", "12345");
    const std::string strUITS = MakeChunk("UITS", "abc");
    const std::string strData = MakeChunk("data", MakeAudio(401));
    const std::string aryLayouts[] = {
        strFormat + strData,
        strFormat + strData + strTag,
        strTag + strFormat + strOdd + strData + strOdd,
        strFormat + strOddTag + strOdd + strData,
        strFormat + strUITS + strTag + strOdd + strData,
        strUITS + strOdd + strFormat + strData + strTag,
        strFormat + strData + strUITS,
        strFormat + strData.substr(0, strData.size() - 1), // no pad byte at the end
        strFormat + strData + strTag + "junk!",            // which is no chunk
        strFormat + strData + strOdd + "TAGjunk",
        strOdd + strFormat + strTag + strOdd + strTag + strData,
    };
    int nCase = 0;
    for (const std::string& strLayout : aryLayouts)
    {
        for (const std::string& strTitle : {std::string("New"), std::string(9001, 'x')})
        {
            SCOPED_TRACE(std::to_string(nCase) + " " + std::to_string(strTitle.size()));
            const std::string strOld = MakeRiff(strLayout);
            (void)m_Folder.Write("a.wav", strOld);
            (void)Tags("set a.wav Title=" + strTitle);
            const std::string strNew = Read("a.wav");
            EXPECT_EQ(strTitle, Field("a.wav", "Name"));
            for (const char* pID : {"fmt ", "data", "odd "})
                EXPECT_EQ(GetChunk(strOld, pID), GetChunk(strNew, pID)) << pID;
            EXPECT_EQ(GetChunk(strOld, "UITS").substr(0, 3), GetChunk(strNew, "UITS").substr(0, 3));
            EXPECT_EQ(strNew.size() - 8, static_cast<unsigned char>(strNew[4]) +
                                             256U * static_cast<unsigned char>(strNew[5]) +
                                             65536U * static_cast<unsigned char>(strNew[6]));
            const size_t nJunk = strOld.find("junk");
            EXPECT_TRUE(nJunk == std::string::npos || strNew.ends_with(strOld.substr(nJunk)));
        }
        ++nCase;
    }
}

TEST_F(RondelTagsFiles, AWrongRootLengthIsMendedOnTheWay)
{
    std::string strWav = MakeWav(MakeAudio(400));
    strWav[4] = 99;
    (void)m_Folder.Write("a.wav", strWav);
    (void)Tags("set a.wav Title=X");
    EXPECT_EQ(0, Here("\"$RONDEL\" inspect a.wav").m_nExit);
    EXPECT_EQ("TITLE=X\n", Judge("a.wav"));
}

// ---- Damaged tags

TEST_F(RondelTagsFiles, WhatCannotBeReadOfATagIsNotLostByAccident)
{
    const std::string strAudio(2000, '\xFF');
    const std::string strDamaged = MakeTag(MakeTitle("Old") + "!!!!" + MakeTitle("More")) + strAudio;
    const std::string strExtended = [&]
    {
        std::string str = MakeTag(std::string("\0\0\0\6\0\0\0\0\0\0", 10) + MakeTitle("Old")) + strAudio;
        str[5] = 0x40; // an extended header as version 2.3 has it
        return str;
    }();
    const std::string strPicture22 =
        MakeTag(std::string("PIC\0\0\x0C\0JPG\3\0\xFF\xD8\xFF\xE0\0\0", 18) + std::string(20, '\0'), 2) + strAudio;
    for (const std::string& strFile : {strDamaged, strExtended, strPicture22})
    {
        (void)m_Folder.Write("a.mp3", strFile);
        ExpectSentence(Here("\"$RONDEL\" tags set a.mp3 Title=New"), 1, {"a.mp3", "--drop-damaged"});
        EXPECT_TRUE(SameBytes(strFile, Read("a.mp3")));
        (void)Tags("set a.mp3 Title=New --drop-damaged");
        EXPECT_EQ("TITLE=New\n", Judge("a.mp3"));
        EXPECT_TRUE(Read("a.mp3").ends_with(strAudio));
    }
    MakePicture("c.jpg");
    (void)m_Folder.Write("a.mp3", strPicture22);
    (void)Tags("set a.mp3 Title=New --picture c.jpg");
    EXPECT_NE(std::string::npos, Read("a.mp3").find(Read("c.jpg")));
}

TEST_F(RondelTagsFiles, SizesThatLieAreSentences)
{
    const std::string strHuge = std::string("ID3\3\0\0\x7F\x7F\x7F\x7F", 10) + MakeTitle("X");
    (void)m_Folder.Write("a.mp3", strHuge);
    (void)m_Folder.Write("b.mp3", std::string("ID3\3"));
    (void)m_Folder.Write("c.mp3", std::string("ID3\x09\0\0\0\0\0\0", 10));
    for (const char* pName : {"a.mp3", "b.mp3", "c.mp3"})
    {
        ExpectSentence(Here(std::string("\"$RONDEL\" tags ") + pName), 1, {pName, "cannot be read"});
        ExpectSentence(Here(std::string("\"$RONDEL\" tags set Title=X ") + pName), 1, {pName, "cannot be read"});
    }
    EXPECT_TRUE(SameBytes(strHuge, Read("a.mp3")));
}

// ---- What is refused

struct REFUSED_FILE
{
    const char* pName;
    std::string strContent;
    std::initializer_list<const char*> aryWords;
};

TEST_F(RondelTagsFiles, OtherFormsNameWhatToUse)
{
    const std::string strWav = MakeWav(MakeAudio(400));
    const REFUSED_FILE aryCases[] = {
        {"a.flac", "fLaC" + std::string(50, '\0'), {"FLAC", "metaflac"}},
        {"b.flac", MakeTag(MakeTitle("X")) + "fLaC" + std::string(50, '\0'), {"FLAC", "metaflac"}},
        {"a.opus", "OggS" + std::string(50, '\0'), {"Ogg", "opustags"}},
        {"a.m4a", std::string("\0\0\0\x20", 4) + "ftypM4A " + std::string(50, '\0'), {"MP4"}},
        {"rf64.wav", "RF64" + strWav.substr(4), {"RF64"}},
        {"a.txt", "Title=X\n", {"no WAV file"}},
        {"empty.wav", "", {"no WAV file"}},
        {"cut.wav", strWav.substr(0, 60), {"rondel inspect"}},
        {"a.mp3", "This is no MP3 file.", {"no WAV file"}},
    };
    for (const REFUSED_FILE& row : aryCases)
    {
        SCOPED_TRACE(row.pName);
        (void)m_Folder.Write(row.pName, row.strContent);
        ExpectSentence(HostProcess::Run({"tags", Get(row.pName)}), 1, row.aryWords);
        ExpectSentence(HostProcess::Run({"tags", "set", Get(row.pName), "Title=X"}), 1, row.aryWords);
        EXPECT_TRUE(SameBytes(row.strContent, Read(row.pName)));
    }
}

TEST_F(RondelTagsFiles, OneThatFailsIsALineAndTheOthersAreDone)
{
    MakeMp3("a.mp3", 3);
    MakeMp3("z.mp3", 4);
    (void)m_Folder.Write("b.txt", "text");
    std::filesystem::create_directory(m_Folder.Get("dir"));
    const HOST_RESULT result = Here("\"$RONDEL\" tags set a.mp3 b.txt dir none.mp3 /dev/null z.mp3 Title=New");
    EXPECT_EQ(1, result.m_nExit);
    EXPECT_EQ(4, std::count(result.m_strErrors.begin(), result.m_strErrors.end(), '\n')) << result.m_strErrors;
    for (const char* pText : {"rondel: b.txt ", "rondel: dir is a folder", "rondel: none.mp3 ", "rondel: /dev/null "})
        EXPECT_NE(std::string::npos, result.m_strErrors.find(pText)) << pText << result.m_strErrors;
    EXPECT_EQ("New", Probe("a.mp3", "title"));
    EXPECT_EQ("New", Probe("z.mp3", "title"));
    EXPECT_EQ(1, Here("\"$RONDEL\" tags a.mp3 b.txt").m_nExit);
}

TEST_F(RondelTagsFiles, HostileValuesAreSentencesAndNothingChanges)
{
    MakeMp3("a.mp3", 3);
    const std::string strOld = Read("a.mp3");
    const std::string aryValues[] = {
        "Track=x",
        "Track=3/",
        "Track=-1",
        "Track=12345678901",
        "Date=yesterday",
        "Date=1999-13-40",
        "Rating=6",
        "Rating=x",
        "'Artist URL=ä'",
        "REPLAYGAIN_TRACK_GAIN=loud",
        "REPLAYGAIN_TRACK_GAIN=nan",
        "'Play Count='$(printf '\\377')",
        "Title=$(printf 'a\\377b')",
        "Ünknown=x",
        "'!@#$% x=y'",
        "Picture=c.jpg",
        "--picture a.mp3",
        "--picture none.jpg",
        "--from-json a.mp3",
        "--from-json none.json",
    };
    for (const std::string& strValue : aryValues)
    {
        SCOPED_TRACE(strValue);
        ExpectSentence(Here("\"$RONDEL\" tags set a.mp3 Album=New " + strValue), 1, {});
        EXPECT_TRUE(SameBytes(strOld, Read("a.mp3")));
    }
    EXPECT_EQ("a.mp3 ", List());
}

TEST_F(RondelTagsFiles, LongTextsAndLineFeedsAreKept)
{
    MakeMp3("a.mp3", 3);
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(400)));
    const std::string strLong = "ä\n\r\n\t" + std::string(1 << 20, 'x') + "\n";
    (void)m_Folder.Write("t.json", json{{"Comment", strLong}, {"Title", "one\ntwo"}}.dump());
    const std::string strAudio = GetAudio("a.mp3");
    (void)Tags("set a.mp3 a.wav --from-json t.json");
    for (const char* pName : {"a.mp3", "a.wav"})
    {
        EXPECT_EQ(strLong, Field(pName, "Comment"));
        EXPECT_NE(std::string::npos, Tags(pName).find("one\\ntwo")) << "a line stays a line";
        EXPECT_NE(std::string::npos, Judge(pName).find(strLong));
    }
    EXPECT_EQ(strAudio, GetAudio("a.mp3"));
}

TEST_F(RondelTagsFiles, WhatWouldSteerATerminalDoesNotReachIt)
{
    (void)m_Folder.Write("a.mp3", MakeTag(MakeTitle("\x1B[31mred\x07")) + std::string(100, '\xFF'));
    EXPECT_EQ(std::string::npos, Tags("a.mp3").find('\x1B'));
    EXPECT_EQ("\x1B[31mred\x07", Field("a.mp3", "Name")) << "programs get it as it is";
}

// ---- What a file is beside its bytes

TEST_F(RondelTagsFiles, ALinkStaysOneAndPermissionsStay)
{
    MakeMp3("a.mp3", 3);
    std::filesystem::create_directory(m_Folder.Get("dir"));
    std::filesystem::create_symlink("../a.mp3", m_Folder.Get("dir/link.mp3"));
    ASSERT_EQ(0, chmod(Get("a.mp3").c_str(), 0640));
    (void)Tags("set dir/link.mp3 Title=New");
    EXPECT_TRUE(std::filesystem::is_symlink(m_Folder.Get("dir/link.mp3")));
    EXPECT_EQ("New", Probe("a.mp3", "title"));
    struct stat status = {};
    ASSERT_EQ(0, stat(Get("a.mp3").c_str(), &status));
    EXPECT_EQ(0640U, status.st_mode & 07777);
    EXPECT_EQ("a.mp3 dir ", List());
}

TEST_F(RondelTagsFiles, AReadOnlyFileStays)
{
    MakeMp3("a.mp3", 3);
    const std::string strOld = Read("a.mp3");
    ASSERT_EQ(0, chmod(Get("a.mp3").c_str(), 0444));
    ExpectSentence(Here("\"$RONDEL\" tags set a.mp3 Title=New"), 1, {"a.mp3", "read-only", "chmod"});
    EXPECT_TRUE(SameBytes(strOld, Read("a.mp3")));
    EXPECT_EQ("a.mp3 ", List());
}

TEST_F(RondelTagsFiles, AnyNameOfAFileWillDo)
{
    MakeMp3("a.mp3", 3);
    for (const char* pName : {"it's $HOME \"%s\" (1).mp3", "Größe.mp3", "music 🎵.mp3", "old\xE9.mp3", "-x.mp3"})
    {
        std::filesystem::copy_file(m_Folder.Get("a.mp3"), m_Folder.Get(pName));
        const HOST_RESULT result = HostProcess::Run({"tags", "set", Get(pName), "Title=New"});
        EXPECT_EQ("", result.m_strErrors) << pName;
        EXPECT_NE(std::string::npos, Judge(pName).find("TITLE=New\n")) << pName;
    }
    int nFiles = 0;
    for (const auto& entry : std::filesystem::directory_iterator(m_Folder.Get("")))
        nFiles += entry.path().extension() == ".mp3" ? 1 : 100; // a copy or a backup that was left
    EXPECT_EQ(6, nFiles);
}

TEST_F(RondelTagsFiles, WithTheOptionAgainstTagsAWavStays)
{
    const std::string strWav = MakeWav(MakeAudio(400));
    (void)m_Folder.Write("a.wav", strWav);
    ASSERT_EQ(0, Here("\"$RONDEL\" options set 'Plugins\\Input\\WAV' DoNotWriteTagsToFiles 1").m_nExit);
    ExpectSentence(Here("\"$RONDEL\" tags set a.wav Title=X"), 1, {"a.wav", "DoNotWriteTagsToFiles"});
    EXPECT_TRUE(SameBytes(strWav, Read("a.wav")));
}

TEST_F(RondelTagsFiles, AFullDiskLeavesTheFile)
{
    MakeMp3("a.mp3", 3);
    const std::string strOld = Read("a.mp3");
    ExpectSentence(Here("trap '' XFSZ; ulimit -f 1; \"$RONDEL\" tags set a.mp3 Title=New"), 1, {"a.mp3", "as it was"});
    EXPECT_TRUE(SameBytes(strOld, Read("a.mp3")));
    EXPECT_EQ("a.mp3 ", List());
}
