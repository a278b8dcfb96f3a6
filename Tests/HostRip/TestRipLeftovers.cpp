// What a killed rip leaves behind goes with the next one; what anybody else keeps under such names stays.

#include "ReportJson.h"
#include "RipLeftovers.h"
#include "TempFolder.h"
#include <fcntl.h>
#include <gtest/gtest.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr const char* OF_ENCODER = ".rondel-00112233445566ff.part";

class RipLeftoversTest : public ::testing::Test
{
protected:
    // Two files of one track each, in folders of their own.
    RipLeftoversTest()
    {
        m_Names.strFolder = m_Folder.GetPath("out");
        m_Names.strBase = "Album";
        for (const char* pName : {"A/01.wav", "B/02.wav"})
        {
            RIP_ORDER order;
            order.file.strName = pName;
            order.strPath = m_Names.GetPath(pName);
            m_Names.aryGroups.push_back({{m_Names.aryGroups.size()}, {order}});
        }
    }
    void Put(const std::string& strName, const std::string& strContent = "x") const
    {
        (void)m_Folder.Write("out/" + strName, strContent);
    }
    std::set<std::string> GetFiles() const
    {
        std::set<std::string> setNames;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_Names.strFolder))
            if (!entry.is_directory())
                setNames.insert(entry.path().lexically_relative(m_Names.strFolder).string());
        return setNames;
    }

    TempFolder m_Folder;
    RIP_NAMES m_Names;
    RIP_REPORT m_State;
};
} // namespace

TEST_F(RipLeftoversTest, WithTheStateFilesInTheMakingGo)
{
    for (const char* pName : {"A/01.wav.part", "A/01.wav.part1", "B/02.wav.part99", "Album.log.part",
                              "Album.json.part3", "Album.html.part"})
        Put(pName);
    RemoveLeftovers(m_Names, &m_State);
    EXPECT_EQ(std::set<std::string>(), GetFiles());
}

TEST_F(RipLeftoversTest, WhatIsNotOfTheRipStays)
{
    const std::set<std::string> setOthers = {
        "A/01.wav", "A/01.wav.part100", "A/01.wav.partial", "A/01.wav.part.1", "A/02.wav.part",   "B/01.wav.part",
        "A/x.part", "A/.part",          "Album.part",       "Other.log.part",  "A/01.wav.part-1", "A/deep/01.wav.part"};
    for (const std::string& strName : setOthers)
        Put(strName);
    RemoveLeftovers(m_Names, &m_State);
    EXPECT_EQ(setOthers, GetFiles());
}

TEST_F(RipLeftoversTest, WithoutTheStateOnlyNamesThatAreTheProgramsOwnGo)
{
    for (const char* pName : {"A/01.wav.part", "Album.log.part"})
        Put(pName);
    Put(std::string("A/") + OF_ENCODER + ".flac");
    Put(std::string("B/") + OF_ENCODER);
    Put(".rondel.part", "");
    Put("A/.rondel.part2", "");
    RemoveLeftovers(m_Names, nullptr);
    EXPECT_EQ((std::set<std::string>{"A/01.wav.part", "Album.log.part"}), GetFiles());
}

TEST_F(RipLeftoversTest, NamesThatAreOnlyNearlyTheProgramsOwnStay)
{
    const std::set<std::string> setOthers = {".rondel-mine.part",
                                             ".rondel-00112233445566f.part",
                                             ".rondel-00112233445566ff0.part",
                                             ".rondel-00112233445566FF.part",
                                             ".rondel-00112233445566ff.partial",
                                             ".rondel-00112233445566ff.flac",
                                             "rondel-00112233445566ff.part",
                                             ".rondel.part" /* with something in it */,
                                             "C/.rondel-00112233445566ff.part"};
    for (const std::string& strName : setOthers)
        Put(strName);
    RemoveLeftovers(m_Names, &m_State);
    EXPECT_EQ(setOthers, GetFiles());
}

TEST_F(RipLeftoversTest, AHalfWrittenStateGoes)
{
    const std::string strState = MakeStateText(RIP_REPORT());
    const auto goes = [&](const std::string& strContent)
    {
        Put("Album.unfinished.part", strContent);
        RemoveLeftovers(m_Names, nullptr);
        return GetFiles().empty();
    };
    EXPECT_TRUE(goes(""));
    EXPECT_TRUE(goes(strState.substr(0, 5)));
    EXPECT_TRUE(goes(strState.substr(0, strState.size() / 2)));
    EXPECT_TRUE(goes(strState));
    EXPECT_FALSE(goes("mine"));
    EXPECT_FALSE(goes("{\"format\":\"another\"}"));
}

TEST_F(RipLeftoversTest, WhatTheStateNamesAsForeignStays)
{
    Put("A/01.wav.part");
    Put("B/02.wav.part");
    m_State.aryPartsBefore = {"A/01.wav.part"};
    RemoveLeftovers(m_Names, &m_State);
    EXPECT_EQ(std::set<std::string>{"A/01.wav.part"}, GetFiles());
}

TEST_F(RipLeftoversTest, TheListNamesWhatTheRipsOwnCouldBeTakenFor)
{
    for (const char* pName : {"B/02.wav.part7", "A/01.wav.part", "A/02.wav.part", "Album.log.part", "A/01.wav"})
        Put(pName);
    EXPECT_EQ((std::vector<std::string>{"A/01.wav.part", "Album.log.part", "B/02.wav.part7"}),
              ListPartialFiles(m_Names));
    // It goes through the state.
    m_State.aryPartsBefore = ListPartialFiles(m_Names);
    EXPECT_EQ(m_State.aryPartsBefore, ReadReport(MakeStateText(m_State)).aryPartsBefore);
    EXPECT_EQ(std::string::npos, MakeJsonLog(m_State).find("parts_before"));
}

TEST_F(RipLeftoversTest, WhatIsInUseStays)
{
    Put("A/01.wav.part");
    Put(std::string("A/") + OF_ENCODER);
    for (const int nMode : {O_WRONLY, O_RDONLY})
    {
        const int nFirst = open(m_Names.GetPath("A/01.wav.part").c_str(), nMode);
        const int nSecond = open(m_Names.GetPath(std::string("A/") + OF_ENCODER).c_str(), nMode);
        RemoveLeftovers(m_Names, &m_State);
        EXPECT_EQ(2U, GetFiles().size());
        close(nFirst);
        close(nSecond);
    }
    RemoveLeftovers(m_Names, &m_State);
    EXPECT_EQ(0U, GetFiles().size());
}

TEST_F(RipLeftoversTest, WhatIsNoPlainFileStays)
{
    std::filesystem::create_directories(m_Names.GetPath("A/01.wav.part"));
    std::filesystem::create_directories(m_Names.GetPath("B"));
    Put("kept");
    ASSERT_EQ(0, symlink("../kept", m_Names.GetPath("B/02.wav.part").c_str()));
    ASSERT_EQ(0, mkfifo(m_Names.GetPath("B/02.wav.part1").c_str(), 0644));
    RemoveLeftovers(m_Names, &m_State);
    EXPECT_EQ((std::set<std::string>{"kept", "B/02.wav.part", "B/02.wav.part1"}), GetFiles());
    EXPECT_TRUE(std::filesystem::is_directory(m_Names.GetPath("A/01.wav.part")));
}

TEST_F(RipLeftoversTest, FoldersThatAreNotThereDoNoHarm)
{
    RemoveLeftovers(m_Names, &m_State);
    EXPECT_TRUE(ListPartialFiles(m_Names).empty());
}
