// The sound card, through ALSA.
//
// Data:    16-bit little-endian stereo PCM at 44,100 Hz; ALSA converts where the card wants something else.
// Errors:  HostError, with a way out. An underrun is none: the sound goes on.
// Threads: one.

#pragma once

#include <string>

struct _snd_pcm;

class Loudspeakers
{
public:
    explicit Loudspeakers(const std::string& strDevice); // a name of ALSA's, such as "default" or "hw:1,0"
    ~Loudspeakers();
    Loudspeakers(const Loudspeakers&) = delete;
    Loudspeakers& operator=(const Loudspeakers&) = delete;

    void Write(const unsigned char* pData, int nBytes); // whole frames; blocks while the card is busy with earlier ones
    long long GetBytesAhead() const;                    // written, not yet heard
    void Drop();                                        // what is not yet heard never will be
    void Finish();                                      // waits until all is heard

private:
    [[noreturn]] void Fail(int nError) const;

    std::string m_strDevice;
    _snd_pcm* m_pCard = nullptr;
};
