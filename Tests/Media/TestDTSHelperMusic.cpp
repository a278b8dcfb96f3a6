// Music is never taken for a DTS stream: pieces of a synthesizer, noise of all levels and colours, and what outside
// programs make, in windows as a reader of WAV files looks at them.
//
// RONDEL_MUSIC_MINUTES sets how much of it is heard (2 without it; the long form takes 120), and RONDEL_MUSIC_FIRST the
// first piece, to repeat one.

#include "DTSHelper.h"
#include "Synth.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace
{
constexpr int RATE = 44100;
constexpr int PIECE_SECONDS = 20;
constexpr int PIECES_PER_MINUTE = 60 / PIECE_SECONDS;
constexpr size_t PIECE_SAMPLES = size_t{2} * RATE * PIECE_SECONDS;
constexpr int WINDOW_STEP_BYTES = 0x10000;

int GetNumber(const char* pVariable, int nDefault)
{
    const char* pValue = std::getenv(pVariable);
    return pValue != nullptr && std::atoi(pValue) > 0 ? std::atoi(pValue) : nDefault;
}

using DICE = std::mt19937;
int Below(DICE& dice, int nLimit) { return static_cast<int>(dice() % static_cast<unsigned int>(nLimit)); }
double Random(DICE& dice) { return static_cast<double>(dice()) / 4294967296.0; }

std::string ToBytes(const std::vector<float>& arySamples)
{
    std::string strBytes;
    strBytes.reserve(arySamples.size() * 2);
    for (const float fSample : arySamples)
    {
        const int n = static_cast<int>(std::lround(std::clamp(fSample, -1.0F, 1.0F) * 32767));
        strBytes += static_cast<char>(n & 255);
        strBytes += static_cast<char>(n >> 8 & 255);
    }
    return strBytes;
}

// Notes of a scale, some louder than there is room for.
std::string PlaySynth(DICE& dice)
{
    constexpr int SCALE[] = {0, 2, 4, 7, 9};
    const double fBeat = 0.15 + Random(dice) * 0.5;
    const double fLoudness = 0.2 + Random(dice) * 2;
    const int nRoot = 30 + Below(dice, 40);
    std::vector<NOTE> aryNotes;
    for (double fTime = 0; fTime < PIECE_SECONDS - 1; fTime += fBeat)
        for (int nVoice = 1 + Below(dice, 3); nVoice > 0; --nVoice)
            aryNotes.push_back({fTime, fBeat * (1 + Below(dice, 4)), nRoot + SCALE[Below(dice, 5)] + 12 * nVoice,
                                fLoudness * Random(dice), Random(dice) * 2 - 1,
                                static_cast<INSTRUMENT>(Below(dice, 4))});
    return ToBytes(Render(aryNotes, PIECE_SECONDS, true, true));
}

// White to brown, from silence to far beyond full scale, both channels alike or not.
std::string PlayNoise(DICE& dice)
{
    const float fLevel = static_cast<float>(std::pow(10.0, Random(dice) * 6 - 4));
    const float fKeep = static_cast<float>(Below(dice, 3)) * 0.45F;
    const bool bMono = Below(dice, 4) == 0;
    std::vector<float> arySamples(PIECE_SAMPLES);
    float aryLast[2] = {};
    for (size_t n = 0; n < PIECE_SAMPLES; ++n)
    {
        float& fLast = aryLast[n % 2];
        fLast = bMono && n % 2 == 1 ? aryLast[0]
                                    : fLast * fKeep + static_cast<float>(Random(dice) * 2 - 1) * fLevel * (1 - fKeep);
        arySamples[n] = fLast;
    }
    return ToBytes(arySamples);
}

// Raw 16-bit stereo from the standard output of a program.
std::string RunPlayer(const std::string& strCommand)
{
    std::string strBytes;
    FILE* pPipe = popen(strCommand.c_str(), "r");
    if (pPipe == nullptr)
        return strBytes;
    char aryBlock[65536];
    for (size_t n = 0; (n = fread(aryBlock, 1, sizeof aryBlock, pPipe)) > 0;)
        strBytes.append(aryBlock, n);
    EXPECT_EQ(0, pclose(pPipe)) << strCommand;
    return strBytes;
}

std::string PlaySox(DICE& dice)
{
    const char* const aryWaves[] = {"pluck", "sine", "square", "triangle", "sawtooth", "trapezium", "exp", "pinknoise"};
    const char* const aryEffects[] = {"",       "overdrive 20", "tremolo 5 60", "phaser 0.8 0.8 3 0.4 0.5",
                                      "reverb", "flanger",      "gain 12"};
    std::string strVoices;
    for (int nVoice = 0; nVoice < 4; ++nVoice)
        strVoices += std::string(" ") + aryWaves[Below(dice, 8)] + " " + (nVoice < 2 ? "" : "mix ") +
                     std::to_string(40 + Below(dice, 3000));
    return RunPlayer("sox -V1 -n -t raw -r 44100 -c 2 -b 16 -e signed - synth " + std::to_string(PIECE_SECONDS) +
                     strVoices + " " + aryEffects[Below(dice, 7)]);
}

std::string PlayFFmpeg(DICE& dice)
{
    const std::string strF = std::to_string(50 + Below(dice, 2000));
    const std::string strG = std::to_string(1 + Below(dice, 20));
    const std::string strH = std::to_string(1 + Below(dice, 300));
    const std::string strLevel = std::to_string(0.1 + Random(dice) * 3); // clips from a third of them on
    const std::string strSource = "aevalsrc=" + strLevel + "*sin(" + strF + "*t+" + strG + "*sin(" + strH +
                                  "*t))*exp(-" + strG + "*mod(t\\,0.5))|" + strLevel + "*sin(" + strF +
                                  "*t*(1+floor(mod(" + strG +
                                  "*t\\,8))/8))+0.05*random(0):s=44100:d=" + std::to_string(PIECE_SECONDS);
    return RunPlayer("ffmpeg -v error -nostdin -f lavfi -i '" + strSource + "' -f s16le -");
}

int CountFinds(const std::string& strPiece)
{
    int nFinds = 0;
    DTSHelper helper;
    LyBuffer window;
    for (size_t n = 0; n < strPiece.size(); n += WINDOW_STEP_BYTES)
    {
        const size_t nBytes = std::min<size_t>(DTSHelper::MAX_TEST_BYTES, strPiece.size() - n);
        (void)window.FromBuffer(strPiece.data() + n, static_cast<int>(nBytes));
        nFinds += helper.Analyze(window) ? 1 : 0;
    }
    return nFinds;
}
} // namespace

TEST(DTSMusic, IsNeverAStream)
{
    using PLAYER = std::string (*)(DICE&);
    constexpr PLAYER PLAYERS[] = {PlaySynth, PlayNoise, PlaySox, PlayFFmpeg};
    const int nFirst = GetNumber("RONDEL_MUSIC_FIRST", 1);
    const int nPieces = GetNumber("RONDEL_MUSIC_MINUTES", 2) * PIECES_PER_MINUTE;
    for (int nPiece = nFirst; nPiece < nFirst + nPieces; ++nPiece)
    {
        DICE dice(static_cast<unsigned int>(nPiece));
        const std::string strPiece = PLAYERS[nPiece % 4](dice);
        ASSERT_EQ(PIECE_SAMPLES * 2, strPiece.size()) << "piece " << nPiece;
        EXPECT_EQ(0, CountFinds(strPiece)) << "piece " << nPiece;
    }
}
