#include "RipMeter.h"
#include "CDUnits.h"
#include "LoudnessResults.h"
#include "TempoResults.h"
#include "WaveExtremes.h"
#include <algorithm>
#include <climits>
#include <cmath>

namespace
{
constexpr int MAX_PIECE_FRAMES = 1 << 20; // that the analysers are given at once
constexpr int CHANNELS = 2;

// All but the peaks.
void ReadLevels(const CLoudnessResults& results, RIP_LOUDNESS& loudness)
{
    loudness.fIntegrated = results.GetIntegrated();
    loudness.fMomentaryMax = results.GetMomentaryMax();
    loudness.fShortTermMax = results.GetShortTermMax();
    loudness.fRange = results.GetRange();
    double fGain = 0;
    if (results.GetReplayGain(fGain))
        loudness.fReplayGain = fGain;
}

RIP_LOUDNESS ReadLoudness(const CLoudnessResults& results, const CPeakLevelAnalyzer& peak)
{
    RIP_LOUDNESS loudness;
    ReadLevels(results, loudness);
    loudness.fSamplePeak = peak.GetSamplePeakDBFS();
    loudness.fTruePeak = peak.GetTruePeakDBTP();
    return loudness;
}

void ReadDynamicRange(const CDRAnalyzer& analyzer, RIP_ANALYSIS& analysis)
{
    const int nDR = analyzer.GetDRValue();
    if (nDR >= 0)
        analysis.nDR = nDR;
    for (int nChannel = 0; nChannel < CHANNELS; ++nChannel)
    {
        double fDB = 0;
        if (analyzer.GetDynamicRange(nChannel, fDB))
            analysis.aryChannelDR.push_back(fDB);
    }
}

std::vector<float> ToLevels(const LyNumberArray<double>& aryEnergies)
{
    std::vector<float> aryLevels;
    aryLevels.reserve(static_cast<size_t>(aryEnergies.GetSize()));
    for (int i = 0; i < aryEnergies.GetSize(); ++i)
        aryLevels.push_back(static_cast<float>(CLoudnessResults::ToLUFS(aryEnergies[i])));
    return aryLevels;
}

void AddEnergies(LyNumberArray<double>& aryEnergies, const std::vector<float>& aryLevels)
{
    for (const float fLevel : aryLevels)
        (void)aryEnergies.Add(CLoudnessResults::ToEnergy(static_cast<double>(fLevel)));
}

// A state may know a piece's figures without its series, of which those of the album are made.
bool IsMeasured(const RIP_PIECE& piece)
{
    constexpr int MOMENTARY_SECTORS = LY_CD_SECTORS_PER_SECOND * 2 / 5; // BS.1770-4: blocks of 400 ms
    return piece.analysis && (piece.nSectors < MOMENTARY_SECTORS || !piece.series.aryMomentary.empty());
}

// As lists of albums have it: the mean of the tracks' figures.
std::optional<int> GetMeanDR(const std::vector<RIP_PIECE>& aryPieces)
{
    int nSum = 0;
    int nCount = 0;
    for (const RIP_PIECE& piece : aryPieces)
    {
        nSum += piece.analysis->nDR.value_or(0);
        nCount += piece.analysis->nDR ? 1 : 0;
    }
    if (nCount == 0)
        return std::nullopt;
    return static_cast<int>(std::lround(static_cast<double>(nSum) / nCount));
}
} // namespace

void RipMeter::Begin(int nSectors)
{
    CAudioFormat format;
    format.SetFormat(16, LY_CD_SAMPLE_RATE, CHANNELS, false, _GUID(), true);
    m_bReady = m_bAnalyze && m_Analyzer.SetUp(format);
    m_nWaveSectors = std::max(1, (nSectors + WAVE_POINTS - 1) / WAVE_POINTS);
    m_aryWave.clear();
    m_aryWave.reserve(static_cast<size_t>(std::max(0, nSectors) / m_nWaveSectors + 1));
    m_nPointFrames = 0;
}

void RipMeter::Add(const short* pSamples, long long nFrames)
{
    AddToWave(pSamples, nFrames);
    while (m_bReady && nFrames > 0)
    {
        const int nPiece = static_cast<int>(std::min<long long>(nFrames, MAX_PIECE_FRAMES));
        (void)m_Analyzer.ProcessBlocks16Bit(pSamples, nPiece);
        pSamples += static_cast<ptrdiff_t>(nPiece) * CHANNELS;
        nFrames -= nPiece;
    }
}

void RipMeter::AddToWave(const short* pSamples, long long nFrames)
{
    while (nFrames > 0)
    {
        if (m_nPointFrames == 0)
        {
            m_aryWave.push_back({SHRT_MAX, SHRT_MIN});
            m_nPointFrames = static_cast<long long>(m_nWaveSectors) * LY_CD_SECTOR_FRAMES;
        }
        const long long nPart = std::min(nFrames, m_nPointFrames);
        AddExtremes(m_aryWave.back(), pSamples, static_cast<size_t>(nPart) * CHANNELS);
        m_nPointFrames -= nPart;
        nFrames -= nPart;
        pSamples += nPart * CHANNELS;
    }
}

void RipMeter::Finish(RIP_PIECE& piece)
{
    piece.series.nWaveSectors = m_nWaveSectors;
    piece.series.aryWave = std::move(m_aryWave);
    m_aryWave.clear();
    if (!m_bReady)
        return;
    (void)m_Analyzer.Finish();
    const CLoudnessResults results(m_Analyzer.m_R128);
    RIP_ANALYSIS analysis;
    analysis.loudness = ReadLoudness(results, m_Analyzer.m_Peak);
    ReadDynamicRange(m_Analyzer.m_DR, analysis);
    const CTempoResults tempo(m_Analyzer.m_BPM);
    if (tempo.m_fBPM > 0)
    {
        analysis.fBPM = tempo.m_fBPM;
        if (tempo.m_fOctaveBPM > 0)
            analysis.fOctaveBPM = tempo.m_fOctaveBPM;
        analysis.fBPMConfidence = tempo.m_fConfidence;
    }
    piece.analysis = std::move(analysis);
    piece.series.aryMomentary = ToLevels(results.m_Momentary);
    piece.series.aryShortTerm = ToLevels(results.m_ShortTerm);
}

void MeasureAlbum(RIP_REPORT& report)
{
    report.album.reset();
    report.nAlbumDR.reset();
    report.selection.reset();
    report.nSelectionDR.reset();
    CLoudnessResults results;
    RIP_LOUDNESS loudness;
    loudness.fSamplePeak = loudness.fTruePeak = -HUGE_VAL;
    if (report.aryPieces.empty() || !std::all_of(report.aryPieces.begin(), report.aryPieces.end(), IsMeasured))
        return;
    for (const RIP_PIECE& piece : report.aryPieces)
    {
        AddEnergies(results.m_Momentary, piece.series.aryMomentary);
        AddEnergies(results.m_ShortTerm, piece.series.aryShortTerm);
        loudness.fSamplePeak = std::max(loudness.fSamplePeak, piece.analysis->loudness.fSamplePeak);
        loudness.fTruePeak = std::max(loudness.fTruePeak, piece.analysis->loudness.fTruePeak);
    }
    ReadLevels(results, loudness);
    const bool bAlbum = report.HasAllAudio();
    if (!bAlbum)
        loudness.fReplayGain.reset(); // nobody shall take it for that of the album
    (bAlbum ? report.album : report.selection) = loudness;
    (bAlbum ? report.nAlbumDR : report.nSelectionDR) = GetMeanDR(report.aryPieces);
}
