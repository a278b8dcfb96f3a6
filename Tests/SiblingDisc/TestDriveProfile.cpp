#include "DriveProfile.h"
#include "ImageFiles.h"
#include "ProfileValue.h"
#include <gtest/gtest.h>

namespace
{
DRIVE_PROFILE Parse(const std::string& strText)
{
    DRIVE_PROFILE profile;
    SHEET_ERROR error;
    EXPECT_TRUE(ParseDriveProfile(strText, profile, error)) << error.m_nLine << ": " << error.m_strText;
    return profile;
}

struct BAD_PROFILE
{
    const char* m_pText;
    int m_nLine;
    const char* m_pSays; // a part of the sentence
};

void PrintTo(const BAD_PROFILE& bad, std::ostream* pStream) { *pStream << bad.m_pText; }

const BAD_PROFILE s_aryBad[] = {
    {"Vendor", 1, "is no setting; write \"Key = Value\""},
    {"\n\nWendor = X\n", 3, "the key \"Wendor\" is unknown; correct its spelling"},
    {"Seed = 1\nseed = 2\n", 2, "\"Seed\" stands twice; keep one"},
    {"Image =\n", 1, "does not do for \"Image\"; write the name of an image"},
    {"Vendor = 123456789\n", 1, "at most 8 characters"},
    {"Model = 12345678901234567\n", 1, "at most 16 characters"},
    {"Revision = 12345\n", 1, "at most 4 characters"},
    {"Vendor = M\xC3\xBCller\n", 1, "of ASCII"},
    {"Buffer = 65536\n", 1, "up to 65535"},
    {"Buffer = -1\n", 1, "up to 65535"},
    {"Buffer = 99999999999999999999999999\n", 1, "up to 65535"},
    {"Buffer = 1 KiB\n", 1, "up to 65535"},
    {"Buffer = 64\nCache = maybe\n", 2, "\"yes\", \"no\" or a number"},
    {"Cache = 64\n", 0, "\"Cache\" is larger than \"Buffer\""},
    {"Buffer = 64\nCacheSegment = 128\n", 0, "\"CacheSegment\" is larger than the cache"},
    {"Buffer = 64\nCacheSegment = 2\n", 2, "from 3 to 65535"},
    {"ReadAhead = 10001\n", 1, "up to 10000"},
    {"Latency = 60001\n", 1, "milliseconds"},
    {"SpinUp = 1.5\n", 1, "milliseconds"},
    {"SpinDownAfter = 3600001\n", 1, "milliseconds"},
    {"Seek = fast\n", 1, "milliseconds"},
    {"Speed = 0\n", 1, "from 1 to 372"},
    {"Speed = 373\n", 1, "from 1 to 372"},
    {"Seed = 1234567890123456789\n", 1, "18 digits"},
    {"ReadOffset = 44101\n", 1, "from -44100 to 44100"},
    {"ReadOffset = 6.5\n", 1, "from -44100 to 44100"},
    {"ModePage = 2A 12\n", 1, "one page in hexadecimal"},
    {"ModePage = 00 00\n", 1, "one page in hexadecimal"},
    {"ModePage = 3F 00\n", 1, "one page in hexadecimal"},
    {"ModePage = 0D 01 0\n", 1, "one page in hexadecimal"},
    {"ModePage = 0D 01 0G\n", 1, "one page in hexadecimal"},
    {"ModePage = 0D 01 00\nModePage = 0D 01 01\n", 2, "each page once"},
    {"Unreadable = \n", 1, "sectors, as in"},
    {"Unreadable = 10-5\n", 1, "sectors, as in"},
    {"Unreadable = -151\n", 1, "sectors, as in"},
    {"Unreadable = 0-449850\n", 1, "sectors, as in"},
    {"Unreadable = 1-2, every 0\n", 1, "sectors, as in"},
    {"Unreadable = 1-2, every\n", 1, "sectors, as in"},
    {"Unreadable = 1-2, 101%\n", 1, "sectors, as in"},
    {"Unreadable = 1-2, 50%, 3\n", 1, "sectors, as in"},
    {"Differs = 1,2\n", 1, "sectors, as in"},
    {"Jitter = 1-2\n", 1, "588 samples"},
    {"Jitter = 1-2, 589\n", 1, "588 samples"},
    {"Jitter = 1-2, 0\n", 1, "588 samples"},
    {"SilentErrors = 1-2\n", 1, "sectors, bytes"},
    {"SilentErrors = 1-2, 2353\n", 1, "sectors, bytes"},
    {"SilentErrors = 1-2, 4, 1.5\n", 1, "sectors, bytes"},
    {"Hang = 3\n", 1, "at most 600 seconds"},
    {"Hang = 3, 600.001\n", 1, "at most 600 seconds"},
    {"Hang = 0, 1\n", 1, "at most 600 seconds"},
    {"Hang = write 3, 1\n", 1, "at most 600 seconds"},
    {"Hang = 3, 1e3\n", 1, "at most 600 seconds"},
    {"UnitAttention = 3, 2/28/00\n", 1, "key 6"},
    {"UnitAttention = 3, 6/28\n", 1, "key 6"},
    {"UnitAttention = 3, 6/29/00, 101\n", 1, "key 6"},
    {"Remove = \n", 1, "a command"},
    {"Remove = 1000000001\n", 1, "a command"},
    {"ChangeDisc = 5\n", 1, "a command and an image"},
    {"ChangeDisc = 5,\n", 1, "a command and an image"},
    {"FailRate = 5%\n", 1, "a probability and a sense"},
    {"FailRate = 5%, 0/00/00\n", 1, "a probability and a sense"},
    {"FailRate = 5%, 10/00/00\n", 1, "a probability and a sense"},
    {"FailRate = 5%, 3/11/123\n", 1, "a probability and a sense"},
    {"FailRate = 0.1234567, 3/11/05\n", 1, "a probability and a sense"},
};
} // namespace

TEST(DriveProfile, AnEmptyProfileIsAnImageDriveWithoutBufferCacheOrTime)
{
    const DRIVE_PROFILE profile = Parse("");
    EXPECT_EQ("RONDEL", profile.m_strVendor);
    EXPECT_EQ("DISC IMAGE", profile.m_strModel);
    EXPECT_EQ("1.0", profile.m_strRevision);
    EXPECT_EQ(0, profile.m_nCacheKiB);
    EXPECT_EQ(0, profile.m_nLatencyMs + profile.m_nSeekMs + profile.m_nSpeed + profile.m_nSpinUpMs);
    EXPECT_TRUE(profile.m_aryUnreadable.empty());
}

TEST(DriveProfile, KeysStandInAnyCaseWithBlanksAndComments)
{
    const DRIVE_PROFILE profile = Parse("# a drive\r\n\r\n  VENDOR=ACME  \r\nmodel =  CD #7 R  # the old one\n"
                                        "revision = 2.b\nImage = a, b.cue\nSEED=12\n# end");
    EXPECT_EQ("ACME", profile.m_strVendor);
    EXPECT_EQ("CD #7 R", profile.m_strModel); // a mark alone begins a comment
    EXPECT_EQ("2.b", profile.m_strRevision);
    EXPECT_EQ("a, b.cue", profile.m_strImage);
    EXPECT_EQ(12U, profile.m_nSeed);
    EXPECT_EQ("C#7", Parse("  #x\nModel = C#7 #").m_strModel);
}

TEST(DriveProfile, AReadOffsetHasASignOrNone)
{
    EXPECT_EQ(0, Parse("").m_nReadOffset);
    EXPECT_EQ(667, Parse("ReadOffset = 667").m_nReadOffset);
    EXPECT_EQ(6, Parse("ReadOffset = +6").m_nReadOffset);
    EXPECT_EQ(-44100, Parse("readoffset = -44100").m_nReadOffset);
}

TEST(DriveProfile, TheCacheIsTheBufferUnlessItIsToldOtherwise)
{
    EXPECT_EQ(128, Parse("Buffer = 128").m_nCacheKiB);
    EXPECT_EQ(128, Parse("Buffer = 128\nCache = yes").m_nCacheKiB);
    EXPECT_EQ(128, Parse("Cache = yes\nBuffer = 128").m_nCacheKiB);
    EXPECT_EQ(0, Parse("Buffer = 128\nCache = no").m_nCacheKiB);
    EXPECT_EQ(16, Parse("Buffer = 128\nCache = 16").m_nCacheKiB);
    EXPECT_EQ(0, Parse("Cache = yes").m_nCacheKiB);
}

TEST(DriveProfile, NumbersOfTheDriveAreTakenAsTheyStand)
{
    const DRIVE_PROFILE profile =
        Parse("Buffer = 65535\nCacheSegment = 64\nReadAhead = 100\nLatency = 1\nSpinUp = 2\n"
              "SpinDownAfter = 3\nSeek = 4\nSpeed = 372\nModePage = 0D06 00 0d 00 3C 00 4B\n");
    EXPECT_EQ(65535, profile.m_nBufferKiB);
    EXPECT_EQ(64, profile.m_nSegmentKiB);
    EXPECT_EQ(100, profile.m_nReadAhead);
    EXPECT_EQ(1, profile.m_nLatencyMs);
    EXPECT_EQ(2, profile.m_nSpinUpMs);
    EXPECT_EQ(3, profile.m_nSpinDownAfterMs);
    EXPECT_EQ(4, profile.m_nSeekMs);
    EXPECT_EQ(372, profile.m_nSpeed);
    EXPECT_EQ((std::vector<unsigned char>{0x0D, 6, 0, 13, 0, 60, 0, 75}), profile.m_mapModePages.at(0x0D));
}

TEST(DriveProfile, BufferAndPageOfCapabilitiesSayTheSame)
{
    const std::string strPage = "ModePage = 2A 0C 00 00 00 00 00 00 00 00 00 00 00 40\n"; // 64 KiB
    const DRIVE_PROFILE page = Parse(strPage);
    EXPECT_EQ(64, page.m_nBufferKiB);
    EXPECT_EQ(64, page.m_nCacheKiB);
    const DRIVE_PROFILE both = Parse("Buffer = 258\n" + strPage);
    EXPECT_EQ(258, both.m_nBufferKiB);
    EXPECT_EQ(1, both.m_mapModePages.at(0x2A)[12]);
    EXPECT_EQ(2, both.m_mapModePages.at(0x2A)[13]);
    EXPECT_EQ(0, Parse("ModePage = 2A 0B 00 00 00 00 00 00 00 00 00 00 00\n").m_nBufferKiB); // a byte too short
}

TEST(DriveProfile, FaultsMayStandAsOftenAsNeeded)
{
    const DRIVE_PROFILE profile = Parse("Unreadable = 7\nUnreadable = 100-110, every 3\nUnreadable = -150--1, 2.5%\n"
                                        "Differs = 1-2\nJitter = 3 - 4, 588\nSilentErrors = 5-6, 4\n"
                                        "SilentErrors = 5-6, 2352, 0.25\n");
    ASSERT_EQ(3U, profile.m_aryUnreadable.size());
    EXPECT_EQ(7, profile.m_aryUnreadable[0].m_Range.m_nFirst);
    EXPECT_EQ(7, profile.m_aryUnreadable[0].m_Range.m_nLast);
    EXPECT_EQ(CERTAIN_PPM, profile.m_aryUnreadable[0].m_nPPM);
    EXPECT_EQ(3, profile.m_aryUnreadable[1].m_nEvery);
    EXPECT_EQ(-150, profile.m_aryUnreadable[2].m_Range.m_nFirst);
    EXPECT_EQ(-1, profile.m_aryUnreadable[2].m_Range.m_nLast);
    EXPECT_EQ(25000U, profile.m_aryUnreadable[2].m_nPPM);
    EXPECT_EQ(2, profile.m_aryDiffers.at(0).m_nLast);
    EXPECT_EQ(588, profile.m_aryJitter.at(0).m_nMaxFrames);
    EXPECT_EQ(4, profile.m_arySilent.at(0).m_nBytes);
    EXPECT_EQ(CERTAIN_PPM, profile.m_arySilent[0].m_nPPM);
    EXPECT_EQ(250000U, profile.m_arySilent.at(1).m_nPPM);
}

TEST(DriveProfile, EventsHappenAtACommandOrAtARead)
{
    const DRIVE_PROFILE profile =
        Parse("Hang = 12, 2.5\nHang = READ 3, 600\nUnitAttention = 4\nUnitAttention = read 5, 6/29/00, 4\n"
              "Remove = read 7\nChangeDisc = 9, other, disc.cue\nFailRate = 1%, 4/44/0\nFailRate = read 1, b/8/3\n");
    EXPECT_EQ(12, profile.m_aryHangs.at(0).m_When.m_nCommand);
    EXPECT_FALSE(profile.m_aryHangs[0].m_When.m_bReads);
    EXPECT_EQ(2500, profile.m_aryHangs[0].m_nMs);
    EXPECT_TRUE(profile.m_aryHangs.at(1).m_When.m_bReads);
    EXPECT_EQ(600000, profile.m_aryHangs[1].m_nMs);
    EXPECT_EQ(0x28, profile.m_aryAttentions.at(0).m_Sense.m_nASC);
    EXPECT_EQ(1, profile.m_aryAttentions[0].m_nTimes);
    EXPECT_EQ(0x29, profile.m_aryAttentions.at(1).m_Sense.m_nASC);
    EXPECT_EQ(4, profile.m_aryAttentions[1].m_nTimes);
    EXPECT_EQ(7, profile.m_aryRemovals.at(0).m_nCommand);
    EXPECT_EQ("other, disc.cue", profile.m_aryChanges.at(0).m_strImage);
    EXPECT_EQ(10000U, profile.m_aryFails.at(0).m_nPPM);
    EXPECT_EQ(0x44, profile.m_aryFails[0].m_Sense.m_nASC);
    EXPECT_TRUE(profile.m_aryFails.at(1).m_bReads);
    EXPECT_EQ(SENSE_ABORTED_COMMAND, profile.m_aryFails[1].m_Sense.m_nKey);
    EXPECT_EQ(3, profile.m_aryFails[1].m_Sense.m_nASCQ);
}

class BadDriveProfile : public ::testing::TestWithParam<BAD_PROFILE>
{
};

TEST_P(BadDriveProfile, IsRefusedWithItsLineAndAWayOut)
{
    DRIVE_PROFILE profile;
    SHEET_ERROR error;
    ASSERT_FALSE(ParseDriveProfile(GetParam().m_pText, profile, error));
    EXPECT_EQ(GetParam().m_nLine, error.m_nLine);
    EXPECT_NE(std::string::npos, error.m_strText.find(GetParam().m_pSays)) << error.m_strText;
    EXPECT_NE(std::string::npos, error.m_strText.find("; ")) << error.m_strText;
}

INSTANTIATE_TEST_SUITE_P(Table, BadDriveProfile, ::testing::ValuesIn(s_aryBad));

TEST(DriveProfile, AThousandSettingsAreTheMost)
{
    std::string strText;
    for (int n = 0; n < PROFILE_MAX_FAULTS; ++n)
        strText += "Unreadable = " + std::to_string(n) + "\n";
    EXPECT_EQ(1000U, Parse(strText).m_aryUnreadable.size());
    DRIVE_PROFILE profile;
    SHEET_ERROR error;
    EXPECT_FALSE(ParseDriveProfile(strText + "Differs = 1\n", profile, error));
    EXPECT_EQ(1001, error.m_nLine);
}

TEST(DriveProfileFile, NamesOfImagesAreToldFromTheFolderOfTheProfile)
{
    const TempFolder folder;
    (void)folder.Write("b/other.cue", "x");
    const std::string strPath = folder.Write("a/my.drive", "Image = ../b/disc.cue\nChangeDisc = 2, ../b/other.cue\n");
    DRIVE_PROFILE profile;
    std::string strError;
    ASSERT_TRUE(LoadDriveProfile(strPath, profile, strError)) << strError;
    EXPECT_EQ(folder.GetPath("b/disc.cue"), profile.m_strImage);
    EXPECT_EQ(folder.GetPath("b/other.cue"), profile.m_aryChanges.at(0).m_strImage);
}

TEST(DriveProfileFile, WhatCannotBeUsedIsNamedInOneSentence)
{
    const TempFolder folder;
    DRIVE_PROFILE profile;
    std::string strError;
    EXPECT_FALSE(LoadDriveProfile(folder.GetPath("none.drive"), profile, strError));
    EXPECT_EQ(folder.GetPath("none.drive") + ": the drive profile does not exist; check its path.", strError);
    EXPECT_FALSE(LoadDriveProfile(folder.GetPath(), profile, strError));
    EXPECT_NE(std::string::npos, strError.find("this is not a plain file"));
    EXPECT_FALSE(
        LoadDriveProfile(folder.Write("big.drive", std::string(PROFILE_MAX_BYTES + 1, '#')), profile, strError));
    EXPECT_NE(std::string::npos, strError.find("too large"));
    EXPECT_TRUE(LoadDriveProfile(folder.Write("full.drive", std::string(PROFILE_MAX_BYTES, '#')), profile, strError));
    const std::string strBad = folder.Write("bad.drive", "Seed = 1\nSpeed = 1000\n");
    EXPECT_FALSE(LoadDriveProfile(strBad, profile, strError));
    EXPECT_EQ(strBad +
                  ", line 2: \"1000\" does not do for \"Speed\"; write a multiple from 1 to 372, as in \"Speed = 48\".",
              strError);
    const std::string strGone = folder.Write("gone.drive", "ChangeDisc = 3, gone.cue\n");
    EXPECT_FALSE(LoadDriveProfile(strGone, profile, strError));
    EXPECT_NE(std::string::npos, strError.find("\"ChangeDisc\" is not there"));
}

TEST(ProfileValue, DecimalsAreExact)
{
    long long nNumber = 0;
    EXPECT_TRUE(ParseProfileDecimal("2", 1000, 5000, nNumber));
    EXPECT_EQ(2000, nNumber);
    EXPECT_TRUE(ParseProfileDecimal("0.000001", 1000000, 5000, nNumber));
    EXPECT_EQ(1, nNumber);
    EXPECT_TRUE(ParseProfileDecimal("4.999", 1000, 5000, nNumber));
    EXPECT_EQ(4999, nNumber);
    for (const char* pBad : {"", ".", ".5", "5.", "5.001", "-1", "1.0000001", "1,5", "1.-5", "9999999999999999999"})
        EXPECT_FALSE(ParseProfileDecimal(pBad, 1000, 5000, nNumber)) << pBad;
}
