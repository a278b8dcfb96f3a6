// Writes the music of the example disc: five pieces as WAV files of whole CD sectors. The second, third and fourth are
// one piece cut in three, so that they must play without a gap.
//
// Usage: example-music FOLDER

#include "Synth.h"
#include <array>
#include <cstdio>
#include <filesystem>
#include <sndfile.h>
#include <string>

namespace
{
constexpr int RATE = 44100;
constexpr int BEATS_PER_BAR = 4;

// A harmony for one bar: its root, and its notes above the root.
struct CHORD
{
    int nRoot;
    std::array<int, 4> aryNotes;
};

constexpr std::array<int, 4> MAJOR = {0, 4, 7, 11};
constexpr std::array<int, 4> MINOR = {0, 3, 7, 10};
constexpr std::array<int, 4> DOMINANT = {0, 4, 7, 10};

struct PIECE
{
    double fBeatSeconds;
    int nBars;
    std::vector<CHORD> aryChords; // one a bar, over and over
    std::array<int, 8> aryFigure; // which chord note each half beat plucks; 4 and up are an octave higher; -1 rests
    std::vector<std::array<int, 4>> aryMelody; // steps above the root on each beat of a bar; -1 rests
    INSTRUMENT eMelody;
};

double GetBarSeconds(const PIECE& piece) { return piece.fBeatSeconds * BEATS_PER_BAR; }

void AddBar(const PIECE& piece, int nBar, std::vector<NOTE>& aryNotes)
{
    const CHORD& chord = piece.aryChords[static_cast<size_t>(nBar) % piece.aryChords.size()];
    const double fBar = nBar * GetBarSeconds(piece);
    const bool bLast = nBar + 1 == piece.nBars;
    aryNotes.push_back({fBar, piece.fBeatSeconds * 2, chord.nRoot - 24, 0.55, 0, BASS});
    if (!bLast)
        aryNotes.push_back({fBar + 2.5 * piece.fBeatSeconds, piece.fBeatSeconds, chord.nRoot - 24 + 7, 0.35, 0, BASS});
    for (size_t i = 0; i < 3; ++i)
        aryNotes.push_back(
            {fBar, GetBarSeconds(piece), chord.nRoot + chord.aryNotes[i], 0.16, static_cast<double>(i) - 1, PAD});
    for (size_t i = 0; i < piece.aryFigure.size() && !bLast; ++i)
    {
        if (piece.aryFigure[i] < 0)
            continue;
        const size_t nNote = static_cast<size_t>(piece.aryFigure[i]);
        const int nPitch = chord.nRoot + chord.aryNotes[nNote % 4] + 12 * static_cast<int>(nNote / 4);
        const double fLevel = i % 4 == 0 ? 0.42 : 0.3;
        aryNotes.push_back({fBar + static_cast<double>(i) * piece.fBeatSeconds / 2, piece.fBeatSeconds, nPitch, fLevel,
                            i % 2 == 0 ? -0.4 : 0.4, PLUCK});
    }
    // The tune starts after an introduction of four bars and leaves every fourth phrase to the strings.
    if (nBar < 4 || nBar / 4 % 4 == 3 || bLast)
        return;
    const auto& arySteps = piece.aryMelody[static_cast<size_t>(nBar) % piece.aryMelody.size()];
    for (size_t i = 0; i < arySteps.size(); ++i)
    {
        if (arySteps[i] >= 0)
            aryNotes.push_back({fBar + static_cast<double>(i) * piece.fBeatSeconds, piece.fBeatSeconds * 1.4,
                                chord.nRoot + 12 + arySteps[i], 0.3, 0.15, piece.eMelody});
    }
}

std::vector<float> Play(const PIECE& piece)
{
    std::vector<NOTE> aryNotes;
    for (int i = 0; i < piece.nBars; ++i)
        AddBar(piece, i, aryNotes);
    return Render(aryNotes, piece.nBars * GetBarSeconds(piece), true, true);
}

// A beat is a whole number of sectors in each piece, so that a bar's start is a place where a track may start.
const PIECE MORNING = {0.64,
                       24,
                       {{60, MAJOR}, {57, MINOR}, {53, MAJOR}, {55, DOMINANT}},
                       {0, 1, 2, 4, 3, 2, 1, 2},
                       {{7, -1, 4, 7}, {12, -1, 10, 7}, {9, 7, 4, -1}, {5, 4, 2, -1}},
                       BELL};
const PIECE JOURNEY = {
    0.6,
    60,
    {{57, MINOR}, {53, MAJOR}, {60, MAJOR}, {55, DOMINANT}, {57, MINOR}, {62, MINOR}, {53, MAJOR}, {52, DOMINANT}},
    {0, 2, 4, 2, 1, 2, 5, 2},
    {{12, 10, 7, -1}, {7, 9, 11, 7}, {4, -1, 7, 12}, {-1, 10, 7, 4}, {3, 7, 12, -1}},
    PLUCK};
const PIECE EVENING = {0.8,
                       20,
                       {{55, MAJOR}, {59, MINOR}, {60, MAJOR}, {62, DOMINANT}},
                       {0, -1, 2, -1, 4, -1, 3, -1},
                       {{11, -1, 7, -1}, {7, -1, 10, 7}, {4, -1, 11, -1}, {7, 5, 4, -1}},
                       BELL};

bool Write(const std::filesystem::path& folder, const char* pName, const float* pSamples, size_t nFrames)
{
    SF_INFO info{};
    info.samplerate = RATE;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    const std::string strPath = (folder / pName).string();
    SNDFILE* pFile = sf_open(strPath.c_str(), SFM_WRITE, &info);
    if (pFile == nullptr)
    {
        std::fprintf(stderr, "example-music: %s cannot be written: %s\n", strPath.c_str(), sf_strerror(nullptr));
        return false;
    }
    const bool bWritten =
        sf_writef_float(pFile, pSamples, static_cast<sf_count_t>(nFrames)) == static_cast<sf_count_t>(nFrames);
    return sf_close(pFile) == 0 && bWritten;
}
} // namespace

int main(int nArguments, char** ppArguments)
{
    if (nArguments != 2)
    {
        std::fputs("Usage: example-music FOLDER\n", stderr);
        return 2;
    }
    const std::filesystem::path folder = ppArguments[1];
    const std::vector<float> aryMorning = Play(MORNING);
    const std::vector<float> aryJourney = Play(JOURNEY);
    const std::vector<float> aryEvening = Play(EVENING);
    const size_t nThird = aryJourney.size() / 2 / 3;
    static constexpr const char* PARTS[] = {"02 Setting Out.wav", "03 Over the Ridge.wav", "04 The Long Valley.wav"};
    bool bDone = Write(folder, "01 First Light.wav", aryMorning.data(), aryMorning.size() / 2);
    for (size_t i = 0; i < 3; ++i)
        bDone = Write(folder, PARTS[i], aryJourney.data() + 2 * i * nThird, nThird) && bDone;
    bDone = Write(folder, "05 Lamps Lit.wav", aryEvening.data(), aryEvening.size() / 2) && bDone;
    return bDone ? 0 : 1;
}
