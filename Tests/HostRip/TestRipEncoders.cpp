// What stands behind --encoder, the names that come of it, and the thread on which encoders work.

#include "HostError.h"
#include "RipEncoders.h"
#include "RipNames.h"
#include "RipRun.h"
#include "RipWorker.h"
#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace
{
struct CHOICE_CASE
{
    const char* pText;
    const char* pName; // null: refused
    const char* pSettings;
    const char* pSuffix;
};

const CHOICE_CASE s_aryChoices[] = {
    {"wav", "wav", "", "wav"},
    {"flac", "flac", "", ""},
    {"flac:level=8; padding=0", "flac", "level=8; padding=0", ""},
    {"x:a=\"b:c\"", "x", "a=\"b:c\"", ""},
    {"cmd=lame - %o", "cmd", "command=lame - %o", "out"},
    {"cmd.mp3=lame - %o", "cmd", "command=lame - %o", "mp3"},
    {"cmd.mp3=input=raw; command=lame -r - %o", "cmd", "input=raw; command=lame -r - %o", "mp3"},
    {"cmd=timeout=5; command=cat", "cmd", "timeout=5; command=cat", "out"},
    {"cmd=command=cat", "cmd", "command=cat", "out"},
    {"cmd=a=b", "cmd", "command=a=b", "out"},
    {"", nullptr, "", ""},
    {":x", nullptr, "", ""},
    {"cmd", nullptr, "", ""},
    {"cmd:x", nullptr, "", ""},
    {"cmd=", nullptr, "", ""},
    {"cmd= ", nullptr, "", ""},
    {"cmd.=cat", nullptr, "", ""},
    {"cmd.a/b=cat", nullptr, "", ""},
    {"cmd.0123456789abcdef=cat", "cmd", "command=cat", "0123456789abcdef"},
    {"cmd.0123456789abcdefg=cat", nullptr, "", ""}, // no room for it in a long name
    {"wav:x=1", nullptr, "", ""},
    {"fl/ac", nullptr, "", ""},
    {"../flac", nullptr, "", ""},
    {"flac level=8", nullptr, "", ""},
};

RIP_REPORT MakeReport()
{
    RIP_REPORT report;
    report.disc.strTitle = "A/B";
    report.disc.strPerformer = "Band";
    report.disc.layout.Add(0);
    report.disc.layout.Add(500);
    report.disc.layout.Finish(900);
    report.aryPieces.resize(2);
    for (size_t n = 0; n < 2; ++n)
    {
        report.aryPieces[n].nTrack = static_cast<int>(n) + 1;
        report.aryPieces[n].strTitle = "Same";
        report.aryPieces[n].nStart = n == 0 ? 0 : 500;
        report.aryPieces[n].nSectors = n == 0 ? 500 : 400;
    }
    report.aryPieces[1].strPerformer = "Guest";
    return report;
}

const std::vector<RIP_ENCODER_FACTS> s_aryEncoders = {{"wav", "wav", "", ""}, {"flac", "flac", "libFLAC", "level=8"}};

RIP_NAME_WISHES MakeWishes(const char* pTemplate, bool bImage = false) { return {"to", pTemplate, bImage, ""}; }
} // namespace

TEST(RipEncoders, ChoicesAreReadOrRefused)
{
    for (const CHOICE_CASE& row : s_aryChoices)
    {
        ENCODER_CHOICE choice;
        const std::string strFault = ParseEncoderChoice(row.pText, choice);
        EXPECT_EQ(row.pName == nullptr, !strFault.empty()) << row.pText;
        if (row.pName == nullptr)
            continue;
        EXPECT_EQ(row.pName, choice.strName) << row.pText;
        EXPECT_EQ(row.pSettings, choice.strSettings) << row.pText;
        EXPECT_EQ(row.pSuffix, choice.strSuffix) << row.pText;
        EXPECT_EQ(choice.strName == "wav", choice.bWAV);
    }
}

TEST(RipNames, FilesOfATrackDifferBySuffixAndTracksByNumber)
{
    const RIP_NAMES names = MakeRipNames(MakeReport(), s_aryEncoders, MakeWishes("X/%{title}"));
    EXPECT_EQ("to/X", names.strFolder);
    EXPECT_EQ("A-B", names.strBase);
    ASSERT_EQ(2U, names.aryGroups.size());
    EXPECT_EQ("Same.wav", names.aryGroups[0].aryOrders[0].file.strName);
    EXPECT_EQ("Same.flac", names.aryGroups[0].aryOrders[1].file.strName);
    EXPECT_EQ("Same (2).flac", names.aryGroups[1].aryOrders[1].file.strName);
    EXPECT_EQ("to/X/Same (2).flac", names.aryGroups[1].aryOrders[1].strPath);
    EXPECT_EQ(400 * 588, names.aryGroups[1].aryOrders[1].nFrames);
    EXPECT_EQ(4U + 3, names.GetAll().size());
}

TEST(RipNames, TheReportIsInTheFolderThatAllHaveInCommon)
{
    const RIP_NAMES names = MakeRipNames(MakeReport(), s_aryEncoders, MakeWishes("X/%{artist}/%{track}"));
    EXPECT_EQ("to/X", names.strFolder);
    EXPECT_EQ("Guest/02.wav", names.aryGroups[1].aryOrders[0].file.strName);
    EXPECT_EQ("to/X/A-B.log", names.GetLog());
}

TEST(RipNames, TagsTellOfTheTrackAndTheAlbum)
{
    const RIP_NAMES names = MakeRipNames(MakeReport(), s_aryEncoders, MakeWishes("%{track}"));
    const std::vector<std::pair<std::string, std::string>> aryWanted = {{"Title", "Same"}, {"Artist", "Guest"},
                                                                        {"Album", "A/B"},  {"Album Artist", "Band"},
                                                                        {"Track", "2/2"},  {"ISRC", ""}};
    EXPECT_EQ(aryWanted, names.aryGroups[1].aryOrders[1].aryTags);
}

TEST(RipNames, AnImageIsOneGroupWithASheetForEachEncoder)
{
    const RIP_NAMES names = MakeRipNames(MakeReport(), s_aryEncoders, MakeWishes("%{track}", true));
    ASSERT_EQ(1U, names.aryGroups.size());
    EXPECT_EQ(2U, names.aryGroups[0].aryPieces.size());
    EXPECT_EQ("A-B.flac", names.aryGroups[0].aryOrders[1].file.strName);
    EXPECT_EQ(900 * 588, names.aryGroups[0].aryOrders[1].nFrames);
    EXPECT_EQ((std::vector<std::string>{"A-B.wav.cue", "A-B.flac.cue"}), names.aryCues);
    EXPECT_EQ(std::vector<std::string>{"A-B.cue"},
              MakeRipNames(MakeReport(), {s_aryEncoders[0]}, MakeWishes("%{track}", true)).aryCues);
}

TEST(RipNames, EncodersWithTheSameSuffixAreRefused)
{
    EXPECT_THROW((void)MakeRipNames(MakeReport(), {s_aryEncoders[0], {"cmd", "wav", "", ""}}, MakeWishes("%{track}")),
                 HostError);
}

TEST(RipCommandLine, CanBeTyped)
{
    RIP_WISHES wishes;
    wishes.strDisc = "my disc.cue";
    wishes.choice.strTracks = "1-3";
    wishes.choice.bHidden = true;
    wishes.aryEncoders = {"flac:level=8", "cmd.mp3=lame -V 2 - %o", "it's"};
    wishes.names.strTo = "/music";
    wishes.nCacheSectors = 0;
    wishes.bResume = true;
    EXPECT_EQ("rondel rip 'my disc.cue' --tracks 1-3 --hidden --mode secure --encoder flac:level=8 "
              "--encoder 'cmd.mp3=lame -V 2 - %o' --encoder 'it'\\''s' --to /music --cache 0",
              MakeRipCommandLine(wishes));
}

TEST(RipWorker, TasksRunInTheirOrder)
{
    std::vector<int> aryDone;
    {
        RipWorker worker;
        for (int n = 0; n < 100; ++n)
            worker.Add([&aryDone, n] { aryDone.push_back(n); }, 1000);
        EXPECT_TRUE(worker.Wait(RipWorker::FOREVER));
        EXPECT_EQ(100U, aryDone.size());
        worker.Add([&aryDone] { aryDone.push_back(100); }); // and at the end what was added still runs
    }
    ASSERT_EQ(101U, aryDone.size());
    for (int n = 0; n < 101; ++n)
        EXPECT_EQ(n, aryDone[static_cast<size_t>(n)]);
}

TEST(RipWorker, WhoBringsTooMuchWaitsUntilThereIsRoom)
{
    std::atomic<bool> bGate{false};
    std::atomic<int> nAdded{0};
    RipWorker worker;
    std::thread feeder(
        [&]
        {
            for (int n = 0; n < 6; ++n)
            {
                worker.Add(
                    [&]
                    {
                        while (!bGate)
                            std::this_thread::yield();
                    },
                    RipWorker::MAX_BYTES / 4);
                ++nAdded;
            }
        });
    while (nAdded < 4)
        std::this_thread::yield();
    EXPECT_FALSE(worker.Wait(50));
    EXPECT_EQ(4, nAdded); // the fifth has to wait
    bGate = true;
    feeder.join();
    EXPECT_TRUE(worker.Wait(RipWorker::FOREVER));
    // What is larger than all that may wait passes, too.
    worker.Add([] {}, 2 * RipWorker::MAX_BYTES);
    EXPECT_TRUE(worker.Wait(RipWorker::FOREVER));
}
