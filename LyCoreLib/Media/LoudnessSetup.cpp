#include "LoudnessSetup.h"
#include "AudioFormat.h"
#include "IIRFilter.h"
#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>

namespace
{
constexpr double PRINTED_RATE = 48000; // the rate for which BS.1770-4 prints its coefficients

// BS.1770-4, annex 1, table 1.
constexpr CLoudnessSetup::SECTION PRE_FILTER_48K = {1.53512485958697, -2.69169618940638, 1.19839281085285,
                                                    -1.69065929318241, 0.73248077421585};
// BS.1770-4, annex 1, table 2.
constexpr CLoudnessSetup::SECTION RLB_FILTER_48K = {1, -2, 1, -1.99004745483398, 0.99007225036621};

// BS.1770-4, annex 1, table 3 for the five main channels; table 4 has the same by position: 1.41 (some +1.5 dB) from
// 60 to 120 degrees off the front on either side, 1.0 anywhere else. The low-frequency channel is left out.
constexpr double WEIGHT_BESIDE = 1.41;
constexpr double WEIGHT_ELSEWHERE = 1.0;
constexpr double WEIGHT_LOW_FREQUENCY = 0;

// A polynomial of the second degree in s; s is j tan(w / 2) along the frequencies.
struct ANALOG
{
    double f2;
    double f1;
    double f0;
};

// The inverse of the bilinear transform: 1/z = (1 - s) / (1 + s), and both sides times (1 + s)^2.
constexpr ANALOG ToAnalog(double f0, double f1, double f2) { return {f0 - f1 + f2, 2 * (f0 - f2), f0 + f1 + f2}; }

// The transform itself: s = (1 - 1/z) / (1 + 1/z), in s stretched by 1 / fScale, and times (1 + 1/z)^2.
struct DIGITAL
{
    double f0;
    double f1;
    double f2;
};

DIGITAL ToDigital(const ANALOG& analog, double fScale)
{
    const double f1 = analog.f1 * fScale;
    const double f0 = analog.f0 * fScale * fScale;
    return {analog.f2 + f1 + f0, 2 * (f0 - analog.f2), analog.f2 - f1 + f0};
}

// How far the filter's own frequency, that of its poles, moves on the axis of s between 48 kHz and this rate.
double GetScale(const ANALOG& denominator, double fSampleRate)
{
    const double fPrinted = std::sqrt(denominator.f0 / denominator.f2);
    const double fHz = std::atan(fPrinted) * PRINTED_RATE / std::numbers::pi;
    return std::tan(std::numbers::pi * fHz / fSampleRate) / fPrinted;
}

bool HasSpeaker(const CAudioFormat& format, unsigned int nSpeaker)
{
    return std::any_of(std::begin(format.m_Channels), std::end(format.m_Channels),
                       [nSpeaker](const AUDIO_CHANNEL& channel)
                       { return channel.bUsed && channel.nSpeaker == nSpeaker; });
}
} // namespace

CLoudnessSetup::SECTION CLoudnessSetup::GetPreFilter(double fSampleRate)
{
    constexpr SECTION p = PRE_FILTER_48K;
    constexpr ANALOG denominator = ToAnalog(1, p.a1, p.a2);
    const double fScale = GetScale(denominator, fSampleRate);
    const DIGITAL a = ToDigital(denominator, fScale);
    const DIGITAL b = ToDigital(ToAnalog(p.b0, p.b1, p.b2), fScale);
    return {b.f0 / a.f0, b.f1 / a.f0, b.f2 / a.f0, a.f1 / a.f0, a.f2 / a.f0};
}

CLoudnessSetup::SECTION CLoudnessSetup::GetRLBFilter(double fSampleRate)
{
    constexpr SECTION p = RLB_FILTER_48K;
    constexpr ANALOG denominator = ToAnalog(1, p.a1, p.a2);
    const DIGITAL a = ToDigital(denominator, GetScale(denominator, fSampleRate));
    // Deliberate: the printed numerator is kept at every rate, as in all meters that people compare. Its gain moves
    // with the rate by that (0.2 dB at 8 kHz, 0.004 dB at 44.1 kHz, -0.03 dB at 192 kHz).
    return {p.b0, p.b1, p.b2, a.f1 / a.f0, a.f2 / a.f0};
}

void CLoudnessSetup::SetKWeighting(CIIRFilter& filter, double fSampleRate)
{
    const SECTION pre = GetPreFilter(fSampleRate);
    const SECTION rlb = GetRLBFilter(fSampleRate);
    // Direct form II has b0 of every section in the one gain ahead of all.
    const double aryCoefficients[] = {pre.b0 * rlb.b0, pre.a1, pre.a2,          pre.b1 / pre.b0, pre.b2 / pre.b0,
                                      rlb.a1,          rlb.a2, rlb.b1 / rlb.b0, rlb.b2 / rlb.b0};
    filter.m_nSections = 2;
    filter.m_nForm = 1;
    std::fill(std::begin(filter.m_Coef), std::end(filter.m_Coef), 0.0);
    std::copy(std::begin(aryCoefficients), std::end(aryCoefficients), filter.m_Coef);
    std::fill(std::begin(filter.m_State), std::end(filter.m_State), 0.0);
}

double CLoudnessSetup::GetChannelWeight(const CAudioFormat& format, int nChannel)
{
    if (nChannel < 0 || nChannel >= format.nChannels || nChannel >= CAudioFormat::MAX_CHANNELS ||
        !format.m_Channels[nChannel].bUsed)
        return 0;
    switch (format.m_Channels[nChannel].nSpeaker)
    {
    case SPEAKER_ID_LOW_FREQUENCY:
        return WEIGHT_LOW_FREQUENCY;
    case SPEAKER_ID_SIDE_LEFT:
    case SPEAKER_ID_SIDE_RIGHT:
        return WEIGHT_BESIDE;
    case SPEAKER_ID_BACK_LEFT:
        // Without a side pair the back pair is that of five channels, at 110 degrees; behind one it stands at 135.
        return HasSpeaker(format, SPEAKER_ID_SIDE_LEFT) ? WEIGHT_ELSEWHERE : WEIGHT_BESIDE;
    case SPEAKER_ID_BACK_RIGHT:
        return HasSpeaker(format, SPEAKER_ID_SIDE_RIGHT) ? WEIGHT_ELSEWHERE : WEIGHT_BESIDE;
    default:
        return WEIGHT_ELSEWHERE;
    }
}
