// enc_opus: Opus through libopusenc, which resamples to 48 kHz. When the file is complete its pages are checked from
// the disk, and its length is compared.
//
// Settings: bitrate=6..510 kbit/s (128; per stereo pair)    vbr=on|off|constrained (on)    complexity=0..10 (10)
// Errors and threads: as EncoderBase.

#pragma once

#include "EncoderBase.h"
#include <memory>
#include <opus/opusenc.h>
#include <vector>

class OpusEncoderPlugin final : public EncoderBase
{
public:
    explicit OpusEncoderPlugin(ILyEncoderCallback* pCallback);
    ~OpusEncoderPlugin() override;

protected:
    bool ApplySettings(EncoderSettings& settings) override;
    bool Begin() override;
    bool Encode(const unsigned char* pData, size_t nFrames) override;
    bool End() override;
    void Abandon() override;

private:
    struct SETTINGS
    {
        int nKilobits = 128;
        bool bVBR = true;
        bool bConstrained = false;
        int nComplexity = 10;
    };
    struct DESTROY
    {
        void operator()(OggOpusEnc* p) const { ope_encoder_destroy(p); }
        void operator()(OggOpusComments* p) const { ope_comments_destroy(p); }
    };

    bool AddComments();
    bool SetUp();
    bool FailByLibrary(int nResult);
    static int OnWrite(void* pThis, const unsigned char* pData, opus_int32 nBytes);
    static int OnClose(void*) { return 0; }

    SETTINGS m_Settings;
    std::unique_ptr<OggOpusComments, DESTROY> m_pComments; // outlive the encoder
    std::unique_ptr<OggOpusEnc, DESTROY> m_pEncoder;
    std::vector<float> m_arySamples; // of one call
};
