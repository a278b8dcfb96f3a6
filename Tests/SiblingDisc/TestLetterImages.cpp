#include "DriveLetters.h"
#include "Tools/FakeTools.h"
#include <filesystem>
#include <gtest/gtest.h>

TEST(LetterImages, TheyStandInTheOptionsOfTheDiscService)
{
    FakeTools tools;
    ASSERT_TRUE(tools.GetIsLoaded());
    tools->SetOption(L"Disc Service", L"Letter A", L"/music/a.cue");
    tools->SetOption(L"Disc Service", L"Letter E", L"file:///music/b%2c.cue");
    tools->SetOption(L"Disc Service", L"Letter Z", L"z.cue");
    tools->SetOption(L"Disc Service", L"Letter e", L"/not/this.cue");
    tools->SetOption(L"Disc Service", L"Letter [", L"/nor/this.cue");
    const LETTER_IMAGES images = ReadLetterImages();
    EXPECT_EQ("/music/a.cue", images[0]);
    EXPECT_EQ("/music/b,.cue", images[4]);
    EXPECT_EQ(std::filesystem::current_path().string() + "/z.cue", images[25]);
    for (const size_t nOther : {1U, 2U, 3U, 5U, 24U})
        EXPECT_EQ("", images[nOther]);
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_OPTIONS_CREATED));
    EXPECT_EQ(1, tools->GetCount(FAKE_COUNT_OPTIONS_DESTROYED));
    EXPECT_EQ(0, tools->GetCount(FAKE_COUNT_OPTIONS_SET));
}
