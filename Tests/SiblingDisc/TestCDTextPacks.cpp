#include "CDTextPacks.h"
#include <gtest/gtest.h>

namespace
{
using Bytes = std::vector<unsigned char>;

DISC_CONTENT MakeContent(const std::vector<std::string>& aryTitles)
{
    DISC_CONTENT content;
    for (size_t i = 0; i < aryTitles.size(); ++i)
    {
        DISC_TRACK track;
        track.m_nNumber = static_cast<int>(i) + 1;
        track.m_nStartLBA = static_cast<int>(i) * 100;
        track.m_nSectors = 100;
        track.m_Text.m_strTitle = aryTitles[i];
        content.m_aryTracks.push_back(track);
    }
    DISC_SESSION session;
    session.m_nFirstTrack = 1;
    session.m_nLastTrack = static_cast<int>(aryTitles.size());
    session.m_nLeadOutLBA = static_cast<int>(aryTitles.size()) * 100;
    content.m_arySessions.push_back(session);
    return content;
}

// The strings of a pack type, put together from the text bytes of its packs, each closed by its NUL.
std::vector<std::string> GetStrings(const Bytes& packs, unsigned char nType)
{
    std::vector<std::string> ary(1);
    for (size_t i = 0; i < packs.size(); i += 18)
    {
        for (size_t j = 4; packs[i] == nType && j < 16; ++j)
        {
            if (packs[i + j] == 0)
                ary.emplace_back();
            else
                ary.back() += static_cast<char>(packs[i + j]);
        }
    }
    while (!ary.empty() && ary.back().empty())
        ary.pop_back();
    return ary;
}
} // namespace

TEST(CDTextPacks, ADiscWithoutTextHasNone)
{
    const DiscImage image(MakeContent({"", ""}));
    EXPECT_TRUE(MakeCDTextPacks(image).empty());
}

TEST(CDTextPacks, TheCRCIsTheInvertedCCITTOne)
{
    // CRC-16/GENIBUS without its initial value: the check value of "123456789" is 31C3h for XMODEM; a pack of zeros
    // gives 0, inverted FFFFh.
    const unsigned char aryZero[16] = {};
    EXPECT_EQ(0xFFFF, GetCDTextCRC(aryZero));
    // XMODEM of fifteen zeros and a 1 is the polynomial itself, 1021h.
    unsigned char aryOne[16] = {};
    aryOne[15] = 1;
    EXPECT_EQ(0xFFFF ^ 0x1021, GetCDTextCRC(aryOne));
}

TEST(CDTextPacks, StringsRunOnAcrossPacksWithTheirPositions)
{
    DISC_CONTENT content = MakeContent({"A title that is long", "B"});
    content.m_Text.m_strTitle = "Disc";
    const DiscImage image(std::move(content));
    const Bytes packs = MakeCDTextPacks(image);
    ASSERT_EQ(6U * 18, packs.size()); // 28 characters with NULs, and three packs of sizes
    const unsigned char aryHeads[6][4] = {{0x80, 0, 0, 0}, {0x80, 1, 1, 7}, {0x80, 1, 2, 15},
                                          {0x8F, 0, 3, 0}, {0x8F, 1, 4, 0}, {0x8F, 2, 5, 0}};
    for (size_t i = 0; i < 6; ++i)
    {
        EXPECT_EQ(Bytes(aryHeads[i], aryHeads[i] + 4), Bytes(&packs[i * 18], &packs[i * 18] + 4)) << i;
        const unsigned int nCRC = GetCDTextCRC(&packs[i * 18]);
        EXPECT_EQ(nCRC >> 8, packs[i * 18 + 16]);
        EXPECT_EQ(nCRC & 255, packs[i * 18 + 17]);
    }
    EXPECT_EQ((std::vector<std::string>{"Disc", "A title that is long", "B"}), GetStrings(packs, 0x80));
}

TEST(CDTextPacks, SizePacksCountThePacksOfEachType)
{
    DISC_CONTENT content = MakeContent({"One"});
    content.m_Text.m_strPerformer = "A band";
    const DiscImage image(std::move(content));
    const Bytes packs = MakeCDTextPacks(image);
    Bytes info;
    for (size_t i = packs.size() - 54; i < packs.size(); i += 18)
        info.insert(info.end(), &packs[i + 4], &packs[i + 16]);
    EXPECT_EQ(0, info[0]); // ISO 8859-1
    EXPECT_EQ(1, info[1]);
    EXPECT_EQ(1, info[2]);
    EXPECT_EQ(1, info[4]);  // titles
    EXPECT_EQ(1, info[5]);  // performers
    EXPECT_EQ(3, info[19]); // sizes
    EXPECT_EQ(4, info[20]); // the last sequence number
    EXPECT_EQ(9, info[28]); // English
}

TEST(CDTextPacks, MissingTextsBetweenOthersAreFilled)
{
    DISC_CONTENT content = MakeContent({"One", "", "Three", ""});
    content.m_Text.m_strTitle = "Disc";
    content.m_Text.m_strPerformer = "Band";
    content.m_aryTracks[2].m_Text.m_strPerformer = "Guest";
    const DiscImage image(std::move(content));
    const Bytes packs = MakeCDTextPacks(image);
    EXPECT_EQ((std::vector<std::string>{"Disc", "One", " ", "Three"}), GetStrings(packs, 0x80));
    EXPECT_EQ((std::vector<std::string>{"Band", "Band", "Band", "Guest"}), GetStrings(packs, 0x81));
}

TEST(CDTextPacks, TextsBecomeLatin1)
{
    DISC_CONTENT content = MakeContent({"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x8E\xB5!"});
    content.m_Text.m_strTitle = "D";
    const DiscImage image(std::move(content));
    EXPECT_EQ((std::vector<std::string>{"D", "caf\xE9 ? ?!"}), GetStrings(MakeCDTextPacks(image), 0x80));
}

TEST(CDTextPacks, TooMuchTextIsCutToOneBlock)
{
    std::vector<std::string> aryTitles(99, std::string(200, 'x'));
    DISC_CONTENT content = MakeContent(aryTitles);
    for (DISC_TRACK& track : content.m_aryTracks)
        track.m_Text.m_strPerformer = "P";
    const DiscImage image(std::move(content));
    const Bytes packs = MakeCDTextPacks(image);
    EXPECT_LE(packs.size() / 18, 255U);
    EXPECT_EQ(100U, GetStrings(packs, 0x80).size()); // every title keeps its beginning
}

TEST(CDTextPacks, TextsForWhichNoRoomIsLeftAreLeftOutTogether)
{
    // The titles fill 250 packs of the 252 that a block has for texts: 20 times 150 bytes with their NULs. What is
    // left, 24 bytes, is too little for 20 performers of one character each.
    DISC_CONTENT content = MakeContent(std::vector<std::string>(19, std::string(149, 'x')));
    content.m_Text.m_strTitle = std::string(149, 'd');
    for (DISC_TRACK& track : content.m_aryTracks)
        track.m_Text.m_strPerformer = "Somebody";
    content.m_Text.m_strPerformer = "Band";
    const DiscImage image(std::move(content));
    const Bytes packs = MakeCDTextPacks(image);
    EXPECT_EQ(253U, packs.size() / 18);
    EXPECT_EQ(std::string(149, 'x'), GetStrings(packs, 0x80)[19]);
    EXPECT_TRUE(GetStrings(packs, 0x81).empty());
}

TEST(CDTextPacks, PacksThatTheImageBroughtGoOutUnchanged)
{
    DISC_CONTENT content = MakeContent({"One"});
    content.m_aryCDTextPacks.assign(36, 0x5A);
    const DiscImage image(std::move(content));
    EXPECT_EQ(Bytes(36, 0x5A), MakeCDTextPacks(image));
}
