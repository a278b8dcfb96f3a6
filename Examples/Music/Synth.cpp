#include "Synth.h"
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>

namespace
{
constexpr int RATE = 44100;
constexpr double TAU = 2 * std::numbers::pi;
constexpr double RELEASE_SECONDS = 1.5; // a note rings on behind its end
constexpr double FADE_SECONDS = 1.5;

double GetFrequency(int nPitch) { return 440.0 * std::pow(2.0, (nPitch - 69) / 12.0); }

// A generator of white noise (Marsaglia's xorshift).
class Noise
{
public:
    explicit Noise(uint32_t nSeed) : m_nState(nSeed * 2654435761U + 1) {}
    double Next()
    {
        m_nState ^= m_nState << 13;
        m_nState ^= m_nState >> 17;
        m_nState ^= m_nState << 5;
        return m_nState / 2147483648.0 - 1.0;
    }

private:
    uint32_t m_nState;
};

// Rises over fAttack, stays, and falls behind fLength.
double GetEnvelope(double fTime, double fLength, double fAttack, double fRelease)
{
    const double fRise = std::min(1.0, fTime / fAttack);
    const double fFall = fTime < fLength ? 1.0 : std::exp(-(fTime - fLength) * 4 / fRelease);
    return fRise * fFall;
}

// A plucked string after Karplus and Strong: a burst of noise goes round a damped delay line.
void Pluck(const NOTE& note, std::vector<double>& aryTone)
{
    const size_t nPeriod = static_cast<size_t>(RATE / GetFrequency(note.nPitch));
    std::vector<double> aryLine(nPeriod);
    Noise noise(static_cast<uint32_t>(note.nPitch * 7919 + static_cast<int>(note.fStart * 100)));
    double fSmooth = 0;
    for (double& f : aryLine)
        f = fSmooth += 0.5 * (noise.Next() - fSmooth);
    size_t i = 0;
    for (size_t n = 0; n < aryTone.size(); ++n)
    {
        const size_t nNext = i + 1 == nPeriod ? 0 : i + 1;
        const double fTime = static_cast<double>(n) / RATE;
        aryTone[n] = 1.6 * aryLine[i] * GetEnvelope(fTime, note.fLength, 0.001, RELEASE_SECONDS);
        aryLine[i] = 0.4985 * (aryLine[i] + aryLine[nNext]);
        i = nNext;
    }
}

// A bell by frequency modulation, with an inharmonic partner that dies away first.
void Bell(const NOTE& note, std::vector<double>& aryTone)
{
    const double fStep = TAU * GetFrequency(note.nPitch) / RATE;
    for (size_t n = 0; n < aryTone.size(); ++n)
    {
        const double fTime = static_cast<double>(n) / RATE;
        const double fPhase = fStep * static_cast<double>(n);
        const double fBright = 2.2 * std::exp(-fTime * 4);
        aryTone[n] = 0.5 * std::exp(-fTime * 1.6) * std::sin(fPhase + fBright * std::sin(fPhase * 3.51));
    }
}

// Three voices slightly out of tune, with slow swelling.
void Pad(const NOTE& note, std::vector<double>& aryTone)
{
    static constexpr double DETUNE[] = {0.9975, 1.0, 1.0028};
    const double fStep = TAU * GetFrequency(note.nPitch) / RATE;
    for (size_t n = 0; n < aryTone.size(); ++n)
    {
        const double fTime = static_cast<double>(n) / RATE;
        double fSum = 0;
        for (const double fDetune : DETUNE)
        {
            const double fPhase = fStep * fDetune * static_cast<double>(n);
            fSum += std::sin(fPhase) + 0.3 * std::sin(2 * fPhase) + 0.1 * std::sin(3 * fPhase);
        }
        aryTone[n] = 0.16 * fSum * GetEnvelope(fTime, note.fLength, 0.7, RELEASE_SECONDS);
    }
}

void Bass(const NOTE& note, std::vector<double>& aryTone)
{
    const double fStep = TAU * GetFrequency(note.nPitch) / RATE;
    for (size_t n = 0; n < aryTone.size(); ++n)
    {
        const double fTime = static_cast<double>(n) / RATE;
        const double fPhase = fStep * static_cast<double>(n);
        const double fTone = std::sin(fPhase) + 0.35 * std::exp(-fTime * 3) * std::sin(2 * fPhase);
        aryTone[n] = 0.6 * fTone * GetEnvelope(fTime, note.fLength, 0.012, 0.4) * std::exp(-fTime * 0.7);
    }
}

void AddNote(const NOTE& note, std::vector<float>& aryMix)
{
    std::vector<double> aryTone(static_cast<size_t>((note.fLength + RELEASE_SECONDS) * RATE));
    switch (note.eInstrument)
    {
    case PLUCK:
        Pluck(note, aryTone);
        break;
    case BELL:
        Bell(note, aryTone);
        break;
    case PAD:
        Pad(note, aryTone);
        break;
    case BASS:
        Bass(note, aryTone);
        break;
    }
    const double fLeft = note.fLevel * std::cos((note.fPan + 1) * TAU / 8);
    const double fRight = note.fLevel * std::sin((note.fPan + 1) * TAU / 8);
    const size_t nStart = static_cast<size_t>(note.fStart * RATE);
    for (size_t n = 0; n < aryTone.size() && nStart + n < aryMix.size() / 2; ++n)
    {
        aryMix[2 * (nStart + n)] += static_cast<float>(fLeft * aryTone[n]);
        aryMix[2 * (nStart + n) + 1] += static_cast<float>(fRight * aryTone[n]);
    }
}

// One damped echo of the room: a comb filter with a low pass in its loop.
class Comb
{
public:
    explicit Comb(size_t nDelay) : m_aryLine(nDelay) {}
    float Next(float fInput)
    {
        const float fOutput = m_aryLine[m_nPlace];
        m_fDamped += 0.6F * (fOutput - m_fDamped);
        m_aryLine[m_nPlace] = fInput + 0.78F * m_fDamped;
        m_nPlace = m_nPlace + 1 == m_aryLine.size() ? 0 : m_nPlace + 1;
        return fOutput;
    }

private:
    std::vector<float> m_aryLine;
    size_t m_nPlace = 0;
    float m_fDamped = 0;
};

void AddRoom(std::vector<float>& aryMix)
{
    // Delays without a common divisor, different on both sides.
    Comb aryCombs[2][4] = {{Comb(1557), Comb(1617), Comb(1491), Comb(1422)},
                           {Comb(1580), Comb(1640), Comb(1514), Comb(1445)}};
    for (size_t n = 0; n < aryMix.size(); ++n)
    {
        float fWet = 0;
        for (Comb& comb : aryCombs[n & 1])
            fWet += comb.Next(aryMix[n]);
        aryMix[n] += 0.07F * fWet;
    }
}
} // namespace

std::vector<float> Render(const std::vector<NOTE>& aryNotes, double fSeconds, bool bFadeIn, bool bFadeOut)
{
    std::vector<float> aryMix(2 * static_cast<size_t>(std::llround(fSeconds * RATE)));
    for (const NOTE& note : aryNotes)
        AddNote(note, aryMix);
    AddRoom(aryMix);
    float fPeak = 1e-6F;
    for (const float f : aryMix)
        fPeak = std::max(fPeak, std::fabs(f));
    const size_t nFrames = aryMix.size() / 2;
    for (size_t n = 0; n < aryMix.size(); ++n)
    {
        const size_t nFrame = n / 2;
        const double fFromStart = static_cast<double>(nFrame) / RATE;
        const double fFromEnd = static_cast<double>(nFrames - nFrame) / RATE;
        double fGain = 0.7 / fPeak;
        if (bFadeIn)
            fGain *= std::min(1.0, fFromStart / (FADE_SECONDS / 10));
        if (bFadeOut)
            fGain *= std::min(1.0, fFromEnd / FADE_SECONDS);
        aryMix[n] = static_cast<float>(aryMix[n] * fGain);
    }
    return aryMix;
}
