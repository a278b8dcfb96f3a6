// Players that play, seek and close on drives with random faults, through the built plug-in and the built disc service.
// Every byte that comes is judged: it is the image's, or it is zero in a sector whose last read failed; and a sector
// whose last read failed is zero, so that old bytes never pass for new ones. What failed, the evidence tells.
//
//   RONDEL_SOAK_SECONDS=600   runs for longer than the usual 20 seconds, or 10 under a sanitizer
//   RONDEL_SOAK_SEED=12345    runs the drives of that seed; a failure prints its own

#include "MMC.h"
#include "PluginAsPlayer.h"
#include "ServiceFolder.h"
#include "Thinning.h"
#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <random>
#include <string_view>
#include <thread>

namespace
{
constexpr int PLAYERS = 3;
constexpr int DEFAULT_SECONDS = Thinning::Some(20, 10);
constexpr int SECONDS_OF_A_TRACK = 20;
constexpr int TRACKS = 3;
constexpr int TRACK_SECTORS = SECONDS_OF_A_TRACK * LY_CD_SECTORS_PER_SECOND;
constexpr int DISC_SECTORS = TRACKS * TRACK_SECTORS;

// A part of a sector of the disc.
std::string_view GetTruth(int nLBA, int nOffset, int nBytes)
{
    static const std::string s_strDisc = MakePatternSectors(0, DISC_SECTORS);
    return std::string_view(s_strDisc).substr(
        static_cast<size_t>(nLBA) * LY_CD_SECTOR_BYTES + static_cast<size_t>(nOffset), static_cast<size_t>(nBytes));
}

unsigned long long GetEnvironmentNumber(const char* pName, unsigned long long nDefault)
{
    const char* pText = getenv(pName);
    return pText != nullptr && *pText != '\0' ? strtoull(pText, nullptr, 10) : nDefault;
}

class Chance
{
public:
    explicit Chance(unsigned long long nSeed) : m_Engine(nSeed) {}
    // 0 to nLimit - 1. The standard's distributions differ between libraries; this does not.
    int Below(int nLimit) { return static_cast<int>(m_Engine() % static_cast<unsigned long long>(nLimit)); }
    bool OneIn(int n) { return Below(n) == 0; }
    std::string Number(int nMin, int nMax) { return std::to_string(nMin + Below(nMax - nMin + 1)); }

private:
    std::mt19937_64 m_Engine;
};

// A drive that fails now and then, openly. What spoils bytes in silence has no place here.
std::string MakeProfile(Chance& chance)
{
    std::string str = "Seed = " + chance.Number(0, 1000000000) + "\nUnitAttention = " + chance.Number(1, 4) + "\n";
    for (int n = chance.Below(4); n > 0; --n)
    {
        const int nFirst = chance.Below(DISC_SECTORS - 100);
        str += "Unreadable = " + std::to_string(nFirst) + "-" + std::to_string(nFirst + chance.Below(100));
        str += chance.OneIn(3) ? "\n" : chance.OneIn(2) ? ", every " + chance.Number(2, 5) + "\n" : ", 60%\n";
    }
    for (int n = chance.Below(3); n > 0; --n)
        str += "UnitAttention = read " + chance.Number(1, 200) + ", 6/29/00, " + chance.Number(1, 9) + "\n";
    for (int n = chance.Below(3); n > 0; --n)
        str += "Hang = read " + chance.Number(1, 100) + ", 0." + chance.Number(1, 4) + "\n";
    if (chance.OneIn(3))
        str += "FailRate = read " + chance.Number(1, 40) + "%, 4/44/00\n";
    if (chance.OneIn(5))
        str += "Remove = read " + chance.Number(5, 150) + "\n";
    if (chance.OneIn(2))
        str += "Buffer = " + chance.Number(16, 4096) + "\n";
    if (chance.OneIn(3))
        str += "ReadAhead = " + chance.Number(1, 200) + "\n";
    if (chance.OneIn(4))
        str += "Latency = 1\nSpinUp = 20\nSeek = 30\nSpeed = 300\n";
    return str;
}

// One player with a drive of its own.
class SoakPlayer
{
public:
    SoakPlayer(PlayerPlugin& plugin, const ServiceFolder& folder, int nPlayer, unsigned long long nSeed)
        : m_Plugin(plugin), m_Chance(nSeed * PLAYERS + static_cast<unsigned long long>(nPlayer)),
          m_strName("disc" + std::to_string(nPlayer))
    {
        (void)folder.Write(m_strName + ".bin", MakePatternSectors(0, DISC_SECTORS));
        std::string strSheet = "FILE \"" + m_strName + ".bin\" BINARY\n";
        for (int n = 0; n < TRACKS; ++n)
            strSheet +=
                "TRACK 0" + std::to_string(n + 1) + " AUDIO\nINDEX 01 " + FormatSheetTime(n * TRACK_SECTORS) + "\n";
        m_Disc = folder.Write(m_strName + ".cue", strSheet);
    }

    // One drive, opened, played and closed. False at the first wrong byte.
    bool PlayOnce()
    {
        m_strProfile = MakeProfile(m_Chance);
        ServiceFolder::WriteProfile(m_Disc, m_strProfile);
        const int nTrack = 1 + m_Chance.Below(TRACKS);
        m_nTrackLBA = (nTrack - 1) * TRACK_SECTORS;
        BeginStretch(0);
        PlayerSource source = m_Plugin.GetSource();
        if (source.Open(m_Disc, nTrack) != 0)
            return Fail("the drive did not open");
        for (int nSteps = 1 + m_Chance.Below(12); nSteps > 0; --nSteps)
        {
            if (m_Chance.OneIn(3))
                SeekSomewhere(source);
            const bool bToTheEnd = m_Chance.OneIn(8);
            if (!PlaySome(source, bToTheEnd ? DISC_SECTORS * LY_CD_SECTOR_BYTES : 1 + m_Chance.Below(2000000)))
                return false;
        }
        return true;
    }
    long long GetBytes() const { return m_nBytes; }
    long long GetSilentBytes() const { return m_nSilentBytes; }
    const std::string& GetFailure() const { return m_strFailure; }

private:
    bool Fail(const std::string& strWhat)
    {
        m_strFailure = m_strName + ": " + strWhat + "\n" + m_strProfile;
        return false;
    }
    void BeginStretch(int nPosition)
    {
        m_nPosition = nPosition;
        m_mapFailed.clear();
        while (TakeEvidence())
            m_mapFailed.clear(); // of earlier stretches
    }
    void SeekSomewhere(PlayerSource& source)
    {
        const int nSecond = m_Chance.Below(SECONDS_OF_A_TRACK);
        BeginStretch(nSecond * LY_CD_SECOND_BYTES);
        (void)source.Seek(nSecond * 1000 + m_Chance.Below(1000)); // to the whole second
    }
    bool PlaySome(PlayerSource& source, int nBytes)
    {
        std::vector<unsigned char> aryBytes(static_cast<size_t>(1 + m_Chance.Below(100000)), 0xEE);
        while (nBytes > 0)
        {
            const int nWanted = std::min(nBytes, static_cast<int>(aryBytes.size()));
            const int nGot = source.GetSamples(aryBytes.data(), nWanted);
            if (nGot < 1)
                return nGot == 0 && IsAtEnd() ? true
                                              : Fail("the track ended early, at byte " + std::to_string(m_nPosition));
            if (!Judge(aryBytes.data(), nGot))
                return false;
            nBytes -= nGot;
        }
        return true;
    }
    bool IsAtEnd() const { return m_nPosition + REQUEST_BYTES > TRACK_SECTORS * LY_CD_SECTOR_BYTES; }

    bool Judge(const unsigned char* pBytes, int nBytes)
    {
        m_nBytes += nBytes;
        for (int nAt = 0; nAt < nBytes;)
        {
            const int nOffset = m_nPosition % LY_CD_SECTOR_BYTES;
            const int nLBA = m_nTrackLBA + m_nPosition / LY_CD_SECTOR_BYTES;
            const int nPart = std::min(nBytes - nAt, LY_CD_SECTOR_BYTES - nOffset);
            const std::string_view strGot(reinterpret_cast<const char*>(pBytes) + nAt, static_cast<size_t>(nPart));
            const bool bTrue = strGot == GetTruth(nLBA, nOffset, nPart);
            const bool bZero = strGot[0] == '\0' && strGot.substr(1) == strGot.substr(0, strGot.size() - 1);
            bool bFailed = false;
            if (!WasReadFailed(nLBA, bFailed))
                return Fail("no read of sector " + std::to_string(nLBA) + " stands in the evidence");
            if (bFailed ? !bZero : !bTrue)
                return Fail("sector " + std::to_string(nLBA) + " is neither the image's nor rightly silent; its read " +
                            (bFailed ? "failed" : "succeeded"));
            m_nSilentBytes += bFailed ? nPart : 0;
            m_nPosition += nPart;
            nAt += nPart;
        }
        return true;
    }
    // What the last read of the sector in this stretch came to. Records of other drives may hold ours up for a moment.
    bool WasReadFailed(int nLBA, bool& bFailed)
    {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        for (;;)
        {
            const bool bNews = TakeEvidence();
            const auto pFound = m_mapFailed.find(nLBA);
            if (pFound != m_mapFailed.end())
            {
                bFailed = pFound->second;
                return true;
            }
            if (!bNews && std::chrono::steady_clock::now() > limit)
                return false;
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        }
    }
    bool TakeEvidence()
    {
        const std::vector<DISC_EVIDENCE> aryNew = ReadEvidence(m_Disc, m_nLastRecord);
        for (const DISC_EVIDENCE& record : aryNew)
        {
            m_nLastRecord = record.m_nNumber;
            for (int n = 0; record.m_nOpcode == CDB_READ_CD && n < record.m_nSectors; ++n)
                m_mapFailed[record.m_nLBA + n] = !record.m_bGood;
        }
        return !aryNew.empty();
    }

    PlayerPlugin& m_Plugin;
    Chance m_Chance;
    std::string m_strName;
    std::filesystem::path m_Disc;
    std::string m_strProfile;
    std::string m_strFailure;
    int m_nTrackLBA = 0;
    int m_nPosition = 0; // of the next byte, in the track
    unsigned long long m_nLastRecord = 0;
    std::map<int, bool> m_mapFailed; // by sector: how its last read in this stretch ended
    long long m_nBytes = 0;
    long long m_nSilentBytes = 0;
};
} // namespace

TEST(Soak, EveryByteIsTheImagesOrSilenceThatTheEvidenceExplains)
{
    const unsigned long long nSeed = GetEnvironmentNumber("RONDEL_SOAK_SEED", std::random_device()());
    const std::chrono::seconds duration(GetEnvironmentNumber("RONDEL_SOAK_SECONDS", DEFAULT_SECONDS));
    SCOPED_TRACE("RONDEL_SOAK_SEED=" + std::to_string(nSeed));
    RecordProperty("Seed", std::to_string(nSeed));

    const ServiceFolder folder;
    PlayerPlugin plugin;
    ASSERT_TRUE(plugin.Attach());
    {
        // The library is loaded with the first drive, and evidence is there from then on.
        const auto disc = folder.WriteDisc("first", MakePatternSectors(0, 10));
        ASSERT_EQ(0, plugin.GetSource().Open(disc, 1));
    }
    std::vector<std::unique_ptr<SoakPlayer>> aryPlayers;
    for (int n = 0; n < PLAYERS; ++n)
        aryPlayers.push_back(std::make_unique<SoakPlayer>(plugin, folder, n, nSeed));
    std::atomic<bool> bStop{false};
    std::atomic<int> nDrives{0};
    const auto end = std::chrono::steady_clock::now() + duration;
    const auto run = [&](SoakPlayer* pPlayer)
    {
        while (!bStop && std::chrono::steady_clock::now() < end)
        {
            if (!pPlayer->PlayOnce())
                bStop = true;
            ++nDrives;
        }
    };
    std::vector<std::thread> aryThreads;
    for (const auto& pPlayer : aryPlayers)
        aryThreads.emplace_back(run, pPlayer.get());
    for (std::thread& thread : aryThreads)
        thread.join();
    long long nBytes = 0;
    long long nSilentBytes = 0;
    for (const auto& pPlayer : aryPlayers)
    {
        EXPECT_EQ("", pPlayer->GetFailure());
        nBytes += pPlayer->GetBytes();
        nSilentBytes += pPlayer->GetSilentBytes();
    }
    plugin.Detach();
    EXPECT_GT(nBytes, 0);
    printf("seed %llu: %d drives, %lld bytes, of which %lld in sectors that could not be read\n", nSeed, nDrives.load(),
           nBytes, nSilentBytes);
}
