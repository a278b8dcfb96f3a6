// A folder with tagged files, the host that changes them, and the judges: ffprobe, ffmpeg and TagLib.

#pragma once

#include "HostProcess.h"
#include "Media/WavBytes.h"
#include <algorithm>
#include <id3v2tag.h>
#include <mpegfile.h>
#include <tpropertymap.h>
#include <wavfile.h>

class RondelTagsTest : public ::testing::Test
{
protected:
    using json = nlohmann::ordered_json;

    void SetUp() override { setenv("XDG_CONFIG_HOME", m_Folder.Get("config").c_str(), 1); }

    std::string Get(const std::string& strName) const { return m_Folder.Get(strName).string(); }
    std::string Read(const std::string& strName) const { return ReadWholeFile(Get(strName)); }
    // Runs a line of the shell in the test's folder.
    HOST_RESULT Here(const std::string& strLine) const
    {
        return HostProcess::RunShell("cd '" + Get("") + "' || exit 9; " + strLine);
    }
    // 'rondel tags' with these words behind it; all goes well, and nothing is said.
    std::string Tags(const std::string& strWords) const
    {
        const HOST_RESULT result = Here("\"$RONDEL\" tags " + strWords);
        EXPECT_EQ(0, result.m_nExit) << strWords;
        EXPECT_EQ("", result.m_strErrors) << strWords;
        return result.m_strOutput;
    }
    json Describe(const std::string& strName) const { return json::parse(Tags("--json '" + strName + "'"))[0]; }
    std::string Field(const std::string& strName, const std::string& strField) const
    {
        return Describe(strName)["fields"].value(strField, "(none)");
    }
    void MakeMp3(const std::string& strName, int nVersion) const
    {
        const HOST_RESULT result = Here("ffmpeg -v error -nostdin -f lavfi -i sine=d=1 -metadata title=Old "
                                        "-metadata artist=Somebody -metadata track=3/12 -metadata date=1999 "
                                        "-metadata comment=Said -id3v2_version " +
                                        std::to_string(nVersion) + " " + strName);
        ASSERT_EQ(0, result.m_nExit) << result.m_strErrors;
    }
    void MakePicture(const std::string& strName) const
    {
        ASSERT_EQ(
            0, Here("ffmpeg -v error -nostdin -f lavfi -i color=red:s=64x64 -frames:v 1 -f image2 " + strName).m_nExit);
    }
    // The audio's packets as another program reads them.
    std::string GetAudio(const std::string& strName) const
    {
        const HOST_RESULT result = Here("ffmpeg -v error -nostdin -i '" + strName + "' -map 0:a -c copy -f md5 -");
        EXPECT_EQ("", result.m_strErrors) << strName;
        return result.m_strOutput;
    }
    // What ffprobe says of a tag; empty if there is none.
    std::string Probe(const std::string& strName, const std::string& strTag) const
    {
        const HOST_RESULT result =
            Here("ffprobe -v error -show_entries format_tags=" + strTag + " -of default=nw=1:nk=1 '" + strName + "'");
        return result.m_strOutput.substr(0, result.m_strOutput.find_last_not_of('\n') + 1);
    }
    // What TagLib says of the tag: "TITLE=...\n" and so on, in the order of the names.
    std::string Judge(const std::string& strName) const
    {
        if (!strName.ends_with(".wav"))
            return Join(TagLib::MPEG::File(Get(strName).c_str()).ID3v2Tag());
        TagLib::RIFF::WAV::File file(Get(strName).c_str());
        return file.isValid() && file.hasID3v2Tag() ? Join(file.ID3v2Tag()) : "(none)";
    }
    // All names in the folder, hidden ones too.
    std::string List() const
    {
        std::vector<std::string> aryNames;
        for (const auto& entry : std::filesystem::directory_iterator(Get("")))
            if (entry.path().filename() != "config")
                aryNames.push_back(entry.path().filename().string());
        std::sort(aryNames.begin(), aryNames.end());
        std::string strAll;
        for (const std::string& strName : aryNames)
            strAll += strName + " ";
        return strAll;
    }

    DiscFolder m_Folder;

private:
    static std::string Join(const TagLib::ID3v2::Tag* pTag)
    {
        std::string strAll;
        if (pTag != nullptr)
            for (const auto& [strName, list] : pTag->properties())
                strAll += strName.to8Bit(true) + "=" + list.toString("|").to8Bit(true) + "\n";
        return strAll;
    }
};
