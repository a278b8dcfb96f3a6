// rondel encode: what other decoders read of the files that it makes, and what is left when it does not make one.

#include "HostProcess.h"
#include "Media/WavBytes.h"
#include <algorithm>
#include <sys/stat.h>
#include <tpropertymap.h>
#include <wavfile.h>

namespace
{
class RondelEncode : public ::testing::Test
{
protected:
    void SetUp() override { setenv("XDG_CONFIG_HOME", m_Folder.Get("config").c_str(), 1); }

    std::string Get(const std::string& strName) const { return m_Folder.Get(strName).string(); }
    // Runs a line of the shell in the test's folder.
    HOST_RESULT Here(const std::string& strLine) const
    {
        return HostProcess::RunShell("cd '" + Get("") + "' || exit 9; " + strLine);
    }
    // The samples of what was made, by a decoder of others, in the form of a raw format of ffmpeg.
    std::string Decode(const std::string& strName, const std::string& strFormat) const
    {
        const HOST_RESULT result = Here("ffmpeg -v error -nostdin -y -i " + strName + " -f " + strFormat + " decoded");
        EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
        EXPECT_EQ("", result.m_strErrors);
        return ReadWholeFile(Get("decoded"));
    }
    // All names in the folder, hidden ones too, without those that the test has put there.
    std::string ListNew() const
    {
        std::vector<std::string> aryNames;
        for (const auto& entry : std::filesystem::directory_iterator(Get("")))
            if (entry.path().extension() != ".wav" && entry.path().filename() != "config")
                aryNames.push_back(entry.path().filename().string());
        std::sort(aryNames.begin(), aryNames.end());
        std::string strAll;
        for (const std::string& strName : aryNames)
            strAll += strName + " ";
        return strAll;
    }

    DiscFolder m_Folder;
};

struct FORMAT_CASE
{
    const char* pName;
    WAV_FIELDS fields;
    const char* pRawFormat;
};
const FORMAT_CASE s_aryFormats[] = {
    {"cd", {1, 2, 44100, 16}, "s16le"},      {"mono", {1, 1, 8000, 16}, "s16le"},  {"fine", {1, 2, 96000, 24}, "s24le"},
    {"odd_rate", {1, 1, 4095, 16}, "s16le"}, {"five", {1, 5, 48000, 16}, "s16le"},
};
} // namespace

TEST_F(RondelEncode, FlacIsDecodedByOthersToTheSameSamples)
{
    for (const FORMAT_CASE& row : s_aryFormats)
    {
        const std::string strName = row.pName;
        const std::string strAudio = MakeAudio(row.fields.nChannels * row.fields.nBits / 8 * size_t{30001});
        (void)m_Folder.Write(strName + ".wav", MakeWav(strAudio, row.fields));
        const HOST_RESULT result = HostProcess::Run({"encode", Get(strName + ".wav"), "--encoder", "flac:level=2"});
        EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
        EXPECT_EQ("", result.m_strOutput + result.m_strErrors) << strName;
        EXPECT_EQ(0, Here("flac -s -t " + strName + ".flac").m_nExit) << strName;
        EXPECT_TRUE(SameBytes(strAudio, Decode(strName + ".flac", row.pRawFormat))) << strName;
    }
}

TEST_F(RondelEncode, FilesOfOtherProgramsAreEncoded)
{
    ASSERT_EQ(0, Here("sox -n -r 44100 -b 16 -c 2 sox.wav synth 2 pluck A3; "
                      "ffmpeg -v error -nostdin -i sox.wav -c:a pcm_s24le extensible.wav; "
                      "flac -s sox.wav -o decoded.flac && flac -s -d decoded.flac -o flac.wav && rm decoded.flac")
                     .m_nExit);
    for (const char* pName : {"sox", "extensible", "flac"})
    {
        const std::string strName = pName;
        EXPECT_EQ("", Here("\"$RONDEL\" encode --encoder flac " + strName + ".wav").m_strErrors) << strName;
        const std::string strFormat = strName == "extensible" ? "s24le" : "s16le";
        EXPECT_TRUE(SameBytes(Decode(strName + ".wav", strFormat), Decode(strName + ".flac", strFormat))) << strName;
    }
}

TEST_F(RondelEncode, EveryEncoderMakesAFileThatOthersDecode)
{
    ASSERT_EQ(0, Here("sox -n -r 44100 -b 16 -c 2 in.wav synth 2 pluck A3").m_nExit);
    const size_t nBytes = 2 * 44100 * 4;
    for (const char* pEncoder : {"mp3:cbr=128", "opus:bitrate=96", "cmd.au=sox - %o"})
        EXPECT_EQ("", HostProcess::Run({"encode", Get("in.wav"), "--encoder", pEncoder}).m_strErrors) << pEncoder;
    EXPECT_EQ(nBytes, Decode("in.mp3", "s16le").size());
    EXPECT_EQ(nBytes, Decode("in.opus", "s16le -ar 44100").size());
    EXPECT_TRUE(SameBytes(Decode("in.wav", "s16le"), Decode("in.au", "s16le")));
}

// ---- Names

TEST_F(RondelEncode, AllTagsGoAlong)
{
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(40000)));
    ASSERT_EQ(0, Here("\"$RONDEL\" tags set a.wav Title=T Track=3/12 Date=1999-05-30 BPM=120 Lyrics=la Compilation=1 "
                      "'Album Artist Sort=S' 'MusicBrainz Album Id=1-2-3' 'Catalog Number=C 1' 'Own Name=own' "
                      "iTunSMPB=0 'Replay Gain Track=-6.48 dB' 'Replay Gain Track Peak=0.5'")
                     .m_nExit);
    const auto probe = [&](const std::string& strEncoder)
    {
        EXPECT_EQ(0, Here("\"$RONDEL\" encode a.wav --encoder " + strEncoder).m_nExit);
        return Here("ffprobe -v error -show_entries format_tags:stream_tags -of default=nw=1 a." + strEncoder)
            .m_strOutput;
    };
    const std::string strFlac = probe("flac");
    for (const char* pLine : {"TITLE=T", "track=3/12", "DATE=1999-05-30", "BPM=120", "LYRICS=la", "COMPILATION=1",
                              "ALBUMARTISTSORT=S", "MUSICBRAINZ_ALBUMID=1-2-3", "CATALOGNUMBER=C 1", "OWN NAME=own",
                              "REPLAYGAIN_TRACK_GAIN=-6.48 dB", "REPLAYGAIN_TRACK_PEAK=0.500000"})
        EXPECT_NE(std::string::npos, strFlac.find("TAG:" + std::string(pLine) + "\n")) << pLine << " in\n" << strFlac;
    const std::string strMp3 = probe("mp3");
    for (const char* pLine : {"title=T", "TBPM=120", "TSO2=S", "MusicBrainz Album Id=1-2-3", "OWN NAME=own",
                              "REPLAYGAIN_TRACK_GAIN=-6.48 dB"})
        EXPECT_NE(std::string::npos, strMp3.find("TAG:" + std::string(pLine) + "\n")) << pLine << " in\n" << strMp3;
    // RFC 7845, 5.2.1: no gain of this kind in Opus. And what tells of other samples is true of them only.
    const std::string strOpus = probe("opus");
    EXPECT_NE(std::string::npos, strOpus.find("TAG:BPM=120\n"));
    EXPECT_EQ(std::string::npos, strOpus.find("REPLAYGAIN")) << strOpus;
    for (const std::string& str : {strFlac, strMp3, strOpus})
        EXPECT_EQ(std::string::npos, str.find("SMPB")) << str;
}

TEST_F(RondelEncode, ATagOfMoreTextsThanThereIsRoomForIsCutNotRefused)
{
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(4000)));
    TagLib::PropertyMap fields;
    std::string strLyrics;
    strLyrics.resize(17'000'000, 'y'); // more than a block of a FLAC file holds
    fields["LYRICS"] = TagLib::String(strLyrics);
    for (int n = 0; n < 1200; ++n)
        fields["OWN " + std::to_string(n)] = TagLib::String(std::string(n == 0 ? 5'000'000 : 10, 'x'));
    {
        TagLib::RIFF::WAV::File file(Get("a.wav").c_str());
        (void)file.setProperties(fields);
        ASSERT_TRUE(file.save());
    }
    ASSERT_EQ(0, Here("\"$RONDEL\" encode a.wav --encoder flac").m_nExit);
    const std::string strTags = Here("metaflac --list --block-type=VORBIS_COMMENT a.flac").m_strOutput;
    EXPECT_NE(std::string::npos, strTags.find("comments: 1000\n")) << strTags.substr(0, 300);
    EXPECT_NE(std::string::npos, strTags.find("OWN 1=x"));
    EXPECT_EQ(std::string::npos, strTags.find("OWN 0=x"));
    EXPECT_EQ(std::string::npos, strTags.find("LYRICS=y"));
}

TEST_F(RondelEncode, SeveralFilesGoToAFolder)
{
    std::filesystem::create_directory(m_Folder.Get("out"));
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(4000)));
    (void)m_Folder.Write("b.c.wav", MakeWav(MakeAudio(8000)));
    EXPECT_EQ("", Here("\"$RONDEL\" encode a.wav b.c.wav --encoder flac --to out").m_strErrors);
    EXPECT_TRUE(SameBytes(MakeAudio(4000), Decode("out/a.flac", "s16le")));
    EXPECT_TRUE(SameBytes(MakeAudio(8000), Decode("out/b.c.flac", "s16le")));
}

TEST_F(RondelEncode, OneThatFailsIsALineAndTheOthersAreMade)
{
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(4000)));
    (void)m_Folder.Write("b.wav", "no WAV file");
    (void)m_Folder.Write("c.wav", MakeWav(MakeAudio(8000)));
    ExpectSentence(Here("\"$RONDEL\" encode a.wav b.wav c.wav --encoder flac"), 1, {"b.wav", "no WAV file"});
    EXPECT_EQ("a.flac c.flac ", ListNew());
}

TEST_F(RondelEncode, AFileThatIsThereStaysUnlessItIsNamedOrGivenUp)
{
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(4000)));
    (void)m_Folder.Write("a.flac", "mine");
    ExpectSentence(Here("\"$RONDEL\" encode a.wav --encoder flac"), 1, {"a.flac", "already there", "--overwrite"});
    EXPECT_EQ("mine", ReadWholeFile(Get("a.flac")));
    EXPECT_EQ("", Here("\"$RONDEL\" encode a.wav --encoder flac --overwrite").m_strErrors);
    EXPECT_TRUE(SameBytes(MakeAudio(4000), Decode("a.flac", "s16le")));
    (void)m_Folder.Write("a.flac", "mine");
    EXPECT_EQ("", Here("\"$RONDEL\" encode a.wav --encoder flac -o a.flac").m_strErrors);
    EXPECT_TRUE(SameBytes(MakeAudio(4000), Decode("a.flac", "s16le")));
}

TEST_F(RondelEncode, WhatIsNoTargetIsLeftAlone)
{
    const std::string strWav = MakeWav(MakeAudio(4000));
    (void)m_Folder.Write("a.wav", strWav);
    std::filesystem::create_directory(m_Folder.Get("dir"));
    ExpectSentence(Here("\"$RONDEL\" encode a.wav --encoder flac -o a.wav"), 1, {"a.wav", "itself"});
    EXPECT_EQ(strWav, ReadWholeFile(Get("a.wav")));
    ExpectSentence(Here("\"$RONDEL\" encode a.wav --encoder flac -o dir"), 1, {"dir", "folder"});
    ExpectSentence(Here("\"$RONDEL\" encode a.wav --encoder flac -o /dev/null"), 1, {"/dev/null", "no file"});
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    ExpectSentence(Here("\"$RONDEL\" encode a.wav --encoder flac -o -"), 1, {"- is no file", "-o"});
    ExpectSentence(Here("\"$RONDEL\" encode a.wav --encoder flac --to nowhere"), 1, {"nowhere", "no folder"});
    ExpectSentence(Here("\"$RONDEL\" encode a.wav --encoder flac -o nowhere/a.flac"), 1, {"nowhere/a.flac"});
    EXPECT_EQ("dir ", ListNew());
}

// ---- Files that are not encoded

namespace
{
struct REFUSED_CASE
{
    const char* pName;
    std::string strFile;
    std::initializer_list<const char*> aryWords;
};
} // namespace

TEST_F(RondelEncode, WhatCannotBeEncodedIsASentence)
{
    const std::string strAudio = MakeAudio(4000);
    const std::string strGood = MakeWav(strAudio);
    const REFUSED_CASE aryCases[] = {
        {"Float", MakeWav(strAudio, {3, 2, 44100, 32}), {"float", "convert"}},
        {"EightBits", MakeWav(strAudio, {1, 2, 44100, 8}), {"8 bits", "convert"}},
        {"MuLaw", MakeWav(strAudio, {7, 1, 8000, 8}), {"mu-law", "convert"}},
        {"ManyChannels", MakeWav(strAudio, {1, 10, 44100, 16}), {"1 to 8 channels"}},
        {"Rate", MakeWav(strAudio, {1, 2, 0, 16}), {"sample rate"}},
        {"Blocks", MakeWav(strAudio, {1, 2, 44100, 16, 5}), {"block", "5 bytes"}},
        {"NoAudio", MakeWav(""), {"no audio"}},
        {"Cut", strGood.substr(0, 3000), {"'data'", "rondel inspect"}},
        {"NoFormat", MakeRiff(MakeChunk("data", strAudio)), {"'fmt '", "rondel inspect"}},
        {"RF64", "RF64" + strGood.substr(4), {"RF64", "4 GiB"}},
        {"Text", "This is text.", {"no WAV file"}},
        {"Empty", "", {"no WAV file"}},
    };
    for (const REFUSED_CASE& row : aryCases)
    {
        SCOPED_TRACE(row.pName);
        const std::string strPath = m_Folder.Write(std::string(row.pName) + ".wav", row.strFile).string();
        ExpectSentence(HostProcess::Run({"encode", strPath, "--encoder", "flac"}), 1, row.aryWords);
    }
    ExpectSentence(HostProcess::Run({"encode", Get("none.wav"), "--encoder", "flac"}), 1, {"none.wav"});
    ExpectSentence(HostProcess::Run({"encode", Get(""), "--encoder", "flac"}), 1, {"is a folder"});
    ASSERT_EQ(0, mkfifo(Get("pipe.wav").c_str(), 0600));
    ExpectSentence(Here("timeout -k 1 60 \"$RONDEL\" encode pipe.wav --encoder flac"), 1, {"pipe.wav", "is no file"});
    std::filesystem::remove(Get("pipe.wav"));
    ExpectSentence(Here("timeout -k 1 60 \"$RONDEL\" encode /dev/zero --encoder flac -o x.flac"), 1, {"is no file"});
    EXPECT_EQ("", ListNew());
}

TEST_F(RondelEncode, APartOfABlockAtTheEndIsLeftOutWithANote)
{
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(4003)));
    const HOST_RESULT result = Here("\"$RONDEL\" encode a.wav --encoder flac");
    EXPECT_EQ(0, result.m_nExit);
    EXPECT_EQ("rondel: note: a.wav ends within a block; its last 3 bytes are left out.\n", result.m_strErrors);
    EXPECT_TRUE(SameBytes(MakeAudio(4000), Decode("a.flac", "s16le")));
}

TEST_F(RondelEncode, AnEncoderThatFailsLeavesNothingAndTheOldFileStays)
{
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(400000)));
    (void)m_Folder.Write("a.out", "mine");
    ExpectSentence(HostProcess::Run({"encode", Get("a.wav"), "--encoder", "cmd=sh -c 'echo no luck >&2; exit 3'", "-o",
                                     Get("a.out")}),
                   1, {"a.wav", "no luck", "nothing was left"});
    EXPECT_EQ("mine", ReadWholeFile(Get("a.out")));
    EXPECT_EQ("a.out ", ListNew());
}

// ---- The command line

TEST_F(RondelEncode, TheListNamesEveryEncoder)
{
    const HOST_RESULT result = HostProcess::Run({"encode", "--list"});
    EXPECT_EQ(0, result.m_nExit);
    EXPECT_EQ("", result.m_strErrors);
    for (const char* pText : {"flac", ".flac", "mp3", ".mp3", "opus", ".opus", "pipe"})
        EXPECT_NE(std::string::npos, result.m_strOutput.find(pText)) << pText;
}

TEST_F(RondelEncode, AWrongCommandLineIsCodeTwo)
{
    (void)m_Folder.Write("a.wav", MakeWav(MakeAudio(4000)));
    ExpectSentence(Here("\"$RONDEL\" encode"), 2, {"FILES", "'rondel encode --help'"});
    ExpectSentence(Here("\"$RONDEL\" encode a.wav"), 2, {"--encoder", "--list"});
    ExpectSentence(Here("\"$RONDEL\" encode a.wav --encoder wav"), 2, {"already"});
    ExpectSentence(Here("\"$RONDEL\" encode a.wav a.wav --encoder flac -o x"), 2, {"-o", "--to"});
    ExpectSentence(Here("\"$RONDEL\" encode a.wav --encoder flac -o x --to y"), 2, {"--to"});
    ExpectSentence(Here("\"$RONDEL\" encode a.wav --encoder vorbis"), 1, {"vorbis", "flac"});
    ExpectSentence(Here("\"$RONDEL\" encode a.wav a.wav --encoder flac:level=77"), 1, {"level", "77"});
    EXPECT_EQ("", ListNew());
}
