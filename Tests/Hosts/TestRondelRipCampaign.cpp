// rondel rip on drives with random faults (RipperLib/FaultyDrive.h): every sector of every file that has its final name
// is right, or the log of the rip names it; of a rip that was broken off, its state.

#include "RipperLib/FaultyDrive.h"
#include "RipTest.h"
#include <atomic>

namespace
{
constexpr int DISC_SECTORS = 400;
constexpr int PIECES[] = {0, 20, 150, 160, DISC_SECTORS}; // hidden audio; the second track is smaller than most caches
constexpr const char* SHEET = "FILE \"disc.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 00 00:00:00\nINDEX 01 00:00:20\n"
                              "TRACK 02 AUDIO\nINDEX 01 00:02:00\nTRACK 03 AUDIO\nINDEX 01 00:02:10\n";

struct TALLY
{
    std::atomic<int> m_nWhole{0};  // rips without a doubt
    std::atomic<int> m_nBroken{0}; // that ended before their disc did
    std::atomic<int> m_nWrong{0};  // sectors, as the next two
    std::atomic<int> m_nNamed{0};
    std::atomic<int> m_nFiled{0}; // in files
};

// One drive, ripped into a folder of its own.
class CampaignRip
{
public:
    CampaignRip(int nSeed, TALLY& tally) : m_Maker(static_cast<unsigned int>(nSeed), DISC_SECTORS), m_Tally(tally)
    {
        m_Drive = m_Maker.Make();
        m_bImage = m_Maker.OneIn(4);
        m_strWhich = "seed " + std::to_string(nSeed) + (m_bImage ? ", an image\n" : "\n") + m_Drive.m_strProfile;
        (void)m_Folder.Write("disc.bin", s_strDisc);
        (void)m_Folder.Write("disc.cue", SHEET);
        (void)m_Folder.Write("disc.cue.drive", m_Drive.m_strProfile);
    }

    void Run()
    {
        std::vector<std::string> aryArguments = {
            "rip",     Get("disc.cue"), "--to",    Get("out"),
            "--name",  "%{track}",      "--cache", std::to_string(m_Drive.m_nCacheSectors),
            "--hidden"};
        if (m_bImage)
            aryArguments.push_back("--image");
        m_Result = HostProcess::Run(aryArguments);
        m_strWhich += m_Result.m_strErrors;
        ReadLog();
        CheckFiles();
        CheckVerdict();
    }

    static const std::string s_strDisc;

private:
    std::string Get(const std::string& strName) const { return m_Folder.Get(strName).string(); }

    // The log, or the state of what was broken off. A rip that has brought nothing leaves neither.
    void ReadLog()
    {
        for (const char* pName : {"out/rip.json", "out/rip.unfinished"})
            if (std::filesystem::exists(Get(pName)))
                m_Log = nlohmann::json::parse(ReadWholeFile(Get(pName)), nullptr, false);
        EXPECT_FALSE(m_Log.is_discarded()) << m_strWhich;
        for (size_t n = 0; m_Log.is_object() && n < m_Log["pieces"].size(); ++n)
            for (const nlohmann::json& entry : m_Log["pieces"][n]["entries"])
                for (int i = 0; entry["bad"].get<bool>() && i < entry["sectors"]; ++i)
                    m_setNamed.insert(entry["sector"].get<int>() + i);
    }
    void CheckFiles()
    {
        size_t nFiles = 0;
        std::error_code error; // a drive that could not be opened has no folder
        for (const auto& entry : std::filesystem::directory_iterator(Get("out"), error))
        {
            const std::string strName = entry.path().filename().string();
            EXPECT_EQ(std::string::npos, strName.find(".part")) << strName << "\n" << m_strWhich;
            if (!strName.ends_with(".wav"))
                continue;
            ++nFiles;
            const size_t nPiece = m_bImage ? 0 : static_cast<size_t>(strName[1] - '0');
            CheckSectors(entry.path(), PIECES[nPiece], m_bImage ? DISC_SECTORS : PIECES[nPiece + 1]);
        }
        EXPECT_TRUE(nFiles == 0 || m_Log.is_object()) << m_strWhich;
        if (m_Log.is_object() && m_Log["outcome"] != "failed")
        {
            EXPECT_EQ(m_bImage ? 1U : 4U, nFiles) << m_strWhich;
        }
    }
    void CheckSectors(const std::filesystem::path& path, int nFirst, int nEnd)
    {
        constexpr size_t HEADER_BYTES = 44;
        const std::string strWav = ReadWholeFile(path);
        const size_t nBytes = static_cast<size_t>(nEnd - nFirst) * LY_CD_SECTOR_BYTES;
        ASSERT_GE(strWav.size(), HEADER_BYTES + nBytes) << path << m_strWhich;
        for (int nSector = nFirst; nSector < nEnd; ++nSector)
        {
            const size_t nAt = static_cast<size_t>(nSector - nFirst) * LY_CD_SECTOR_BYTES;
            const bool bRight =
                strWav.compare(HEADER_BYTES + nAt, LY_CD_SECTOR_BYTES, s_strDisc,
                               static_cast<size_t>(nSector) * LY_CD_SECTOR_BYTES, LY_CD_SECTOR_BYTES) == 0;
            EXPECT_TRUE(bRight || m_setNamed.contains(nSector)) << "sector " << nSector << ", " << m_strWhich;
            m_Tally.m_nWrong += bRight ? 0 : 1;
            m_Tally.m_nNamed += m_setNamed.contains(nSector) ? 1 : 0;
        }
        m_Tally.m_nFiled += nEnd - nFirst;
    }
    // Exit code, outcome and the number of bad sectors say the same.
    void CheckVerdict()
    {
        const std::string strOutcome = m_Log.is_object() ? m_Log["outcome"].get<std::string>() : "failed";
        const int nBad = m_Log.is_object() ? m_Log["bad_sectors"].get<int>() : 0;
        EXPECT_EQ(strOutcome == "whole" ? 0 : 1, m_Result.m_nExit) << m_strWhich;
        if (strOutcome != "failed")
        {
            EXPECT_EQ(strOutcome == "doubtful", nBad > 0) << m_strWhich;
        }
        EXPECT_EQ(nBad > 0, !m_setNamed.empty()) << m_strWhich;
        // Of a drive whose cache holds much of the disc, honest reads are doubted, too: nothing pushes them out.
        const bool bSmallCache = m_Drive.m_nCacheSectors < DISC_SECTORS / 3;
        EXPECT_TRUE(!m_Drive.m_bCalm || (m_Log.is_object() && m_Log["re_reads"] == 0)) << m_strWhich;
        EXPECT_TRUE(!m_Drive.m_bCalm || !bSmallCache || strOutcome == "whole") << m_strWhich;
        m_Tally.m_nWhole += strOutcome == "whole" ? 1 : 0;
        m_Tally.m_nBroken += strOutcome == "failed" ? 1 : 0;
    }

    FaultyDriveMaker m_Maker;
    TALLY& m_Tally;
    DiscFolder m_Folder;
    FAULTY_DRIVE m_Drive;
    bool m_bImage = false;
    std::string m_strWhich;
    HOST_RESULT m_Result;
    nlohmann::json m_Log;
    std::set<int> m_setNamed;
};

const std::string CampaignRip::s_strDisc = MakePatternSectors(0, DISC_SECTORS);
} // namespace

TEST(RondelRipCampaign, EverySectorOfEveryFileIsRightOrNamed)
{
    constexpr int THREADS = 8;
    const int nSeeds = GetCampaignSeeds();
    TALLY tally;
    RunCampaign(THREADS, [&] { return [&](int nSeed) { CampaignRip(nSeed, tally).Run(); }; });
    std::printf("%d drives: %d whole, %d broken off, %d sectors in files, of them %d wrong and %d named\n", nSeeds,
                tally.m_nWhole.load(), tally.m_nBroken.load(), tally.m_nFiled.load(), tally.m_nWrong.load(),
                tally.m_nNamed.load());
    // The campaign has met something.
    if (nSeeds >= CAMPAIGN_SEEDS)
    {
        EXPECT_GT(tally.m_nWhole, nSeeds / 10);
        EXPECT_GT(tally.m_nBroken, 0);
        EXPECT_GT(tally.m_nWrong, nSeeds / 2);
    }
}
