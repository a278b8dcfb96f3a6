// The tempo of music: of many kinds whose tempo is known, of the example disc, and against an outside judge, the
// program `bpm`. Without that nothing is judged from outside.

#include "BeatsPerMinuteAnalyzer.h"
#include "TempFolder.h"
#include "TempoJudge.h"
#include "TempoPieces.h"
#include "TempoResults.h"
#include "Thinning.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

namespace
{
constexpr double TOLERANCE = 0.02;
constexpr double SECONDS = 30;
constexpr double SURE = 0.35; // of music that comes again, however unevenly

bool IsNear(double fMeasured, double fBPM) { return std::fabs(fMeasured / fBPM - 1) < TOLERANCE; }

CTempoResults Listen(const std::vector<short>& arySamples, int nChannels)
{
    CBeatsPerMinuteAnalyzerV1 analyzer;
    EXPECT_TRUE(analyzer.SetUp(TempoBand::RATE));
    std::vector<double> aryDoubles(arySamples.size());
    std::transform(arySamples.begin(), arySamples.end(), aryDoubles.begin(), [](short n) { return n / 32768.0; });
    analyzer.ProcessFrames(aryDoubles.data(), static_cast<int>(aryDoubles.size()) / nChannels, nChannels);
    return CTempoResults(analyzer);
}

// The pieces: all, or each fifth.
constexpr size_t PIECES_STEP = Thinning::Some<size_t>(1, 5);
const std::vector<TEMPO_PIECE>& GetPieces()
{
    static const std::vector<TEMPO_PIECE> s_aryPieces = []
    {
        std::vector<TEMPO_PIECE> aryPieces;
        for (size_t i = 0; i < std::size(s_aryTempoPieces); i += PIECES_STEP)
            aryPieces.push_back(s_aryTempoPieces[i]);
        return aryPieces;
    }();
    return s_aryPieces;
}

// The pieces, each played once.
const std::vector<std::vector<short>>& GetMusic()
{
    static const std::vector<std::vector<short>> s_aryMusic = []
    {
        std::vector<std::vector<short>> aryMusic;
        for (const TEMPO_PIECE& piece : GetPieces())
            aryMusic.push_back(TempoBand::Play(piece, SECONDS));
        return aryMusic;
    }();
    return s_aryMusic;
}

// What is heard of them.
const std::vector<CTempoResults>& GetHeard()
{
    static const std::vector<CTempoResults> s_aryHeard = []
    {
        std::vector<CTempoResults> aryHeard;
        for (const std::vector<short>& arySamples : GetMusic())
            aryHeard.push_back(Listen(arySamples, 1));
        return aryHeard;
    }();
    return s_aryHeard;
}

// The tempo itself, or its octave with the tempo told beside it.
void ExpectTempo(const CTempoResults& results, double fBPM, const std::string& strName)
{
    const bool bOctave = IsNear(results.m_fBPM * 2, fBPM) || IsNear(results.m_fBPM / 2, fBPM);
    EXPECT_TRUE(IsNear(results.m_fBPM, fBPM) || (bOctave && IsNear(results.m_fOctaveBPM, fBPM)))
        << strName << ": " << fBPM << " read as " << results.m_fBPM << " or " << results.m_fOctaveBPM;
    EXPECT_GT(results.m_fConfidence, SURE) << strName;
}

struct EXAMPLE_ROW
{
    const char* pFile;
    double fBPM; // as it was composed: a beat is 0.64, 0.6 or 0.8 seconds
};

const EXAMPLE_ROW s_aryExamples[] = {{"01 First Light.wav", 93.75},
                                     {"02 Setting Out.wav", 100},
                                     {"03 Over the Ridge.wav", 100},
                                     {"04 The Long Valley.wav", 100},
                                     {"05 Lamps Lit.wav", 75}};

constexpr size_t EXAMPLES_STEP = Thinning::Some<size_t>(1, 4);

// The music of the example disc, as it is made for it: 16-bit stereo behind a header of 44 bytes.
const std::vector<std::vector<short>>& GetExamples()
{
    static const std::vector<std::vector<short>> s_aryExampleMusic = []
    {
        std::vector<std::vector<short>> aryMusic;
        for (const EXAMPLE_ROW& row : s_aryExamples)
        {
            constexpr size_t HEADER_BYTES = 44;
            const std::string strBytes = ReadBlocks(std::filesystem::path(RONDEL_EXAMPLE_MUSIC) / row.pFile);
            std::vector<short>& arySamples = aryMusic.emplace_back();
            if (strBytes.size() <= HEADER_BYTES)
                continue;
            arySamples.resize((strBytes.size() - HEADER_BYTES) / sizeof(short));
            std::memcpy(arySamples.data(), strBytes.data() + HEADER_BYTES, arySamples.size() * sizeof(short));
        }
        return aryMusic;
    }();
    return s_aryExampleMusic;
}
} // namespace

TEST(TempoMusic, EveryKindIsReadOrItsOctaveWithItBeside)
{
    int nExact = 0;
    for (size_t i = 0; i < GetHeard().size(); ++i)
    {
        const TEMPO_PIECE& piece = GetPieces()[i];
        ExpectTempo(GetHeard()[i], piece.fBPM, piece.pName);
        nExact += IsNear(GetHeard()[i].m_fBPM, piece.fBPM) ? 1 : 0;
    }
    EXPECT_GE(nExact, Thinning::Some(16, 3)) << "of " << GetPieces().size() << " without the octave";
}

TEST(TempoMusic, EveryExampleIsReadAsItWasComposed)
{
    for (size_t i = 0; i < GetExamples().size(); i += EXAMPLES_STEP)
    {
        const EXAMPLE_ROW& row = s_aryExamples[i];
        ASSERT_GT(GetExamples()[i].size(), 1000000U) << row.pFile;
        const CTempoResults results = Listen(GetExamples()[i], 2);
        EXPECT_TRUE(IsNear(results.m_fBPM, row.fBPM)) << row.pFile << " read as " << results.m_fBPM;
        EXPECT_GT(results.m_fConfidence, SURE) << row.pFile;
    }
}

// The judge knows nothing of bars in three and of syncopes: where its answer is no octave of what is played, it says
// nothing of ours.
TEST(TempoMusic, TheJudgeAgreesWhereverItIsRight)
{
    if (!HaveTempoJudge())
        GTEST_SKIP() << "no bpm-tools on this machine";
    int nJudged = 0;
    for (size_t i = 0; i < GetMusic().size(); ++i)
    {
        const TEMPO_PIECE& piece = GetPieces()[i];
        const double fJudged = AskTempoJudge(GetMusic()[i], 1);
        ASSERT_GT(fJudged, 0) << piece.pName;
        if (!IsNear(fJudged, piece.fBPM) && !IsNear(fJudged * 2, piece.fBPM) && !IsNear(fJudged / 2, piece.fBPM))
            continue;
        ++nJudged;
        ExpectTempo(GetHeard()[i], fJudged, piece.pName);
    }
    EXPECT_GE(nJudged, Thinning::Some(14, 2));
}

TEST(TempoMusic, TheJudgeAgreesOnTheExamplesThatItReads)
{
    if (!HaveTempoJudge())
        GTEST_SKIP() << "no bpm-tools on this machine";
    for (const size_t nTrack : {4U, 1U, 3U}) // of the others it reads two thirds of the tempo
    {
        ExpectTempo(Listen(GetExamples()[nTrack], 2), AskTempoJudge(GetExamples()[nTrack], 2),
                    s_aryExamples[nTrack].pFile);
        if (Thinning::SANITIZED)
            break;
    }
}
