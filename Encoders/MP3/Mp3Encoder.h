// enc_mp3: MP3 through libmp3lame, with an ID3v2.3 tag and the header that players need for gapless playing. When the
// file is complete its frames are counted from the disk.
//
// Settings: vbr=0..9 (2; 0 is best)  or  cbr=8..320 kbit/s  or  abr=8..310 kbit/s    effort=0..9 (3; 0 is slowest)
// Audio:    mono or stereo, 8, 11.025, 12, 16, 22.05, 24, 32, 44.1 or 48 kHz: the length must stay what it is.
// Errors and threads: as EncoderBase.

#pragma once

#include "EncoderBase.h"
#include <lame/lame.h>
#include <memory>
#include <vector>

class Mp3Encoder final : public EncoderBase
{
public:
    explicit Mp3Encoder(ILyEncoderCallback* pCallback);
    ~Mp3Encoder() override;

protected:
    bool ApplySettings(EncoderSettings& settings) override;
    bool Begin() override;
    bool Encode(const unsigned char* pData, size_t nFrames) override;
    bool End() override;
    void Abandon() override;

private:
    enum MODE
    {
        MODE_VBR,
        MODE_CBR,
        MODE_ABR
    };
    struct SETTINGS
    {
        MODE eMode = MODE_VBR;
        int nVBR = 2;
        int nKilobits = 0;
        int nEffort = 3;
    };
    struct CLOSE
    {
        void operator()(lame_global_flags* p) const { lame_close(p); }
    };

    bool SetUp();
    bool SetMode();
    bool SetTags();
    bool SetTag(const ENCODER_TAG& tag);
    bool WriteTag();
    bool WriteEncoded(int nBytes); // what lame answered

    SETTINGS m_Settings;
    std::unique_ptr<lame_global_flags, CLOSE> m_pLame;
    uint64_t m_nTagBytes = 0;
    std::vector<float> m_arySamples;         // of one call
    std::vector<unsigned char> m_aryEncoded; // by one call
};
