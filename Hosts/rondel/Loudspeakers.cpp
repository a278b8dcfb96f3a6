#include "Loudspeakers.h"
#include "CDUnits.h"
#include "HostError.h"
#include <algorithm>
#include <alsa/asoundlib.h>

namespace
{
constexpr unsigned int LATENCY_US = 300000; // keys answer within this, and a busy machine has this long

// The library would write its own lines between ours.
void IgnoreMessage(const char*, int, const char*, int, const char*, ...) {}
} // namespace

Loudspeakers::Loudspeakers(const std::string& strDevice) : m_strDevice(strDevice)
{
    snd_lib_error_set_handler(IgnoreMessage);
    int nError = snd_pcm_open(&m_pCard, strDevice.c_str(), SND_PCM_STREAM_PLAYBACK, 0);
    if (nError < 0)
        throw HostError("no sound comes out of \"" + strDevice + "\" (" + snd_strerror(nError) +
                        "); name another card with --device, or use -o FILE.wav.");
    nError = snd_pcm_set_params(m_pCard, SND_PCM_FORMAT_S16_LE, SND_PCM_ACCESS_RW_INTERLEAVED, 2, LY_CD_SAMPLE_RATE, 1,
                                LATENCY_US);
    if (nError >= 0)
        return;
    snd_pcm_close(m_pCard);
    m_pCard = nullptr;
    Fail(nError);
}

Loudspeakers::~Loudspeakers()
{
    if (m_pCard != nullptr)
        snd_pcm_close(m_pCard);
    snd_config_update_free_global();
}

void Loudspeakers::Fail(int nError) const
{
    throw HostError("the sound card \"" + m_strDevice + "\" does not take the sound (" + snd_strerror(nError) +
                    "); name another one with --device, or use -o FILE.wav.");
}

void Loudspeakers::Write(const unsigned char* pData, int nBytes)
{
    int nFrames = nBytes / LY_CD_FRAME_BYTES;
    while (nFrames > 0)
    {
        snd_pcm_sframes_t nDone = snd_pcm_writei(m_pCard, pData, static_cast<snd_pcm_uframes_t>(nFrames));
        if (nDone < 0)
            nDone = snd_pcm_recover(m_pCard, static_cast<int>(nDone), 1);
        if (nDone < 0)
            Fail(static_cast<int>(nDone));
        pData += nDone * LY_CD_FRAME_BYTES;
        nFrames -= static_cast<int>(nDone);
    }
}

long long Loudspeakers::GetBytesAhead() const
{
    snd_pcm_sframes_t nFrames = 0;
    return snd_pcm_delay(m_pCard, &nFrames) < 0 ? 0 : std::max<long long>(0, nFrames) * LY_CD_FRAME_BYTES;
}

void Loudspeakers::Drop()
{
    (void)snd_pcm_drop(m_pCard); // a card that is silent already stays so
    const int nError = snd_pcm_prepare(m_pCard);
    if (nError < 0)
        Fail(nError);
}

void Loudspeakers::Finish()
{
    // Less than one period in the card is not begun by itself.
    const int nError = snd_pcm_drain(m_pCard);
    if (nError < 0)
        Fail(nError);
}
