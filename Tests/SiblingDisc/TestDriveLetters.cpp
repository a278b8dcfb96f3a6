#include "DriveLetters.h"
#include <gtest/gtest.h>

namespace
{
class LettersTest : public ::testing::Test
{
protected:
    bool Update(const std::vector<std::string>& aryNodes)
    {
        return m_Letters.Update(aryNodes, m_Images, [this](const std::string& str) { return str == m_strHeld; });
    }
    // "D=/dev/sr0 E=/dev/sr1"
    std::string Show() const
    {
        std::string str;
        for (int nLetter = 0; nLetter < DRIVE_LETTERS; ++nLetter)
            if (!m_Letters.GetPath(nLetter).empty())
                str += (str.empty() ? "" : " ") + std::string(1, static_cast<char>('A' + nLetter)) + "=" +
                       m_Letters.GetPath(nLetter);
        return str;
    }
    std::string& Image(char cLetter) { return m_Images[static_cast<size_t>(cLetter - 'A')]; }

    DriveLetters m_Letters;
    LETTER_IMAGES m_Images;
    std::string m_strHeld;
};
} // namespace

TEST_F(LettersTest, DrivesGetLettersFromDOnInTheirOrder)
{
    EXPECT_TRUE(Update({"sr0", "sr1", "sr2"}));
    EXPECT_EQ("D=sr0 E=sr1 F=sr2", Show());
    EXPECT_FALSE(Update({"sr0", "sr1", "sr2"}));
    EXPECT_EQ(4, m_Letters.Find("sr1"));
    EXPECT_EQ(NO_DRIVE_LETTER, m_Letters.Find("sr9"));
    EXPECT_EQ(NO_DRIVE_LETTER, m_Letters.Find(""));
}

TEST_F(LettersTest, ADriveThatGoesLosesItsLetterAndTheOthersKeepTheirs)
{
    (void)Update({"sr0", "sr1", "sr2"});
    EXPECT_TRUE(Update({"sr0", "sr2"}));
    EXPECT_EQ("D=sr0 F=sr2", Show());
    EXPECT_TRUE(Update({"sr0", "sr2", "sr3"}));
    EXPECT_EQ("D=sr0 E=sr3 F=sr2", Show());
    EXPECT_TRUE(Update({"sr0", "sr1", "sr2", "sr3"}));
    EXPECT_EQ("D=sr0 E=sr3 F=sr2 G=sr1", Show());
}

TEST_F(LettersTest, ADriveThatComesBackFindsItsLetterIfNobodyTookIt)
{
    (void)Update({"sr0", "sr1"});
    (void)Update({"sr1"});
    EXPECT_EQ("E=sr1", Show());
    (void)Update({"sr0", "sr1"});
    EXPECT_EQ("D=sr0 E=sr1", Show());
}

TEST_F(LettersTest, ALetterOfAnImageIsNotGivenToADrive)
{
    Image('D') = "/a.cue";
    (void)Update({"sr0", "sr1"});
    EXPECT_EQ("D=/a.cue E=sr0 F=sr1", Show());
    EXPECT_TRUE(m_Letters.IsByOption(3));
    EXPECT_FALSE(m_Letters.IsByOption(4));
    // The option comes while a drive has the letter: the drive moves.
    Image('E') = "/b.cue";
    EXPECT_TRUE(Update({"sr0", "sr1"}));
    EXPECT_EQ("D=/a.cue E=/b.cue F=sr1 G=sr0", Show());
    // The option goes: the letter is free, and nobody moves back.
    Image('D').clear();
    EXPECT_TRUE(Update({"sr0", "sr1"}));
    EXPECT_EQ("E=/b.cue F=sr1 G=sr0", Show());
    EXPECT_FALSE(m_Letters.IsByOption(3));
}

TEST_F(LettersTest, TheFirstLettersAreGivenByOptionOnly)
{
    Image('A') = "/floppy.cue";
    Image('C') = "/c.cue";
    (void)Update({"sr0"});
    EXPECT_EQ("A=/floppy.cue C=/c.cue D=sr0", Show());
}

TEST_F(LettersTest, AnOptionMayNameADriveWhichThenHasThatLetterAlone)
{
    (void)Update({"sr0", "sr1"});
    Image('R') = "sr1";
    (void)Update({"sr0", "sr1"});
    EXPECT_EQ("D=sr0 R=sr1", Show());
}

TEST_F(LettersTest, AHeldDriveKeepsItsLetterWhileItIsGone)
{
    (void)Update({"sr0", "sr1"});
    m_strHeld = "sr0";
    EXPECT_FALSE(Update({"sr1"}));
    Image('D') = "/a.cue";
    (void)Update({"sr1", "sr2"});
    EXPECT_EQ("D=sr0 E=sr1 F=sr2", Show());
    m_strHeld.clear();
    (void)Update({"sr1", "sr2"});
    EXPECT_EQ("D=/a.cue E=sr1 F=sr2", Show());
}

TEST_F(LettersTest, BehindZThereIsNoLetter)
{
    std::vector<std::string> aryNodes;
    for (int i = 0; i < 25; ++i)
        aryNodes.push_back("sr" + std::to_string(i));
    (void)Update(aryNodes);
    EXPECT_EQ(25, m_Letters.Find("sr22"));
    EXPECT_EQ(NO_DRIVE_LETTER, m_Letters.Find("sr23"));
}

TEST(LetterImages, WithoutAToolsLibraryThereAreNone)
{
    for (const std::string& strImage : ReadLetterImages())
        EXPECT_EQ("", strImage);
}
