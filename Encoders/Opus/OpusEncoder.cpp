#include "OpusEncoder.h"
#include "GlobalMacros.h"
#include "OggOpusCheck.h"
#include <algorithm>

namespace
{
constexpr size_t CHUNK_FRAMES = 4096;
constexpr int OPUS_SAMPLE_RATE = 48000;
constexpr int MIN_SAMPLE_RATE = 100; // libopusenc's
constexpr int FAMILY_STEREO = 0;     // RFC 7845, 5.1.1: channel mapping families
constexpr int FAMILY_SURROUND = 1;
} // namespace

OpusEncoderPlugin::OpusEncoderPlugin(ILyEncoderCallback* pCallback)
    : EncoderBase(pCallback, {"Opus", "opus", "", std::string(ope_get_version_string())})
{
}

OpusEncoderPlugin::~OpusEncoderPlugin() { OpusEncoderPlugin::Abandon(); }

bool OpusEncoderPlugin::ApplySettings(EncoderSettings& settings)
{
    m_Settings = {};
    const std::string* pVBR = settings.Find("vbr");
    m_Settings.bConstrained = pVBR != nullptr && *pVBR == "constrained";
    return settings.AllowOnly({"bitrate", "vbr", "complexity"}) &&
           settings.Get("bitrate", 6, 510, m_Settings.nKilobits) &&
           (m_Settings.bConstrained || settings.Get("vbr", m_Settings.bVBR)) &&
           settings.Get("complexity", 0, 10, m_Settings.nComplexity);
}

bool OpusEncoderPlugin::Begin()
{
    if (m_Format.nSampleRate < MIN_SAMPLE_RATE)
        return Fail(ENCODER_REFUSED, "The sample rate is too low for Opus.");
    m_pComments.reset(ope_comments_create());
    if (m_pComments == nullptr || !AddComments())
        return Fail(ENCODER_NO_MEMORY, {});
    if (!m_Output.Open(m_strOutput))
        return FailByOutput();
    const OpusEncCallbacks callbacks = {OnWrite, OnClose};
    int nResult = OPE_OK;
    m_pEncoder.reset(ope_encoder_create_callbacks(&callbacks, this, m_pComments.get(), m_Format.nSampleRate,
                                                  m_Format.nChannels,
                                                  m_Format.nChannels > 2 ? FAMILY_SURROUND : FAMILY_STEREO, &nResult));
    if (m_pEncoder == nullptr || !SetUp())
        return FailByLibrary(nResult);
    m_arySamples.resize(CHUNK_FRAMES * static_cast<size_t>(m_Format.nChannels));
    return true;
}

bool OpusEncoderPlugin::SetUp()
{
    OggOpusEnc* p = m_pEncoder.get();
    const int nPairs = (m_Format.nChannels + 1) / 2;
    return ope_encoder_ctl(p, OPUS_SET_BITRATE(m_Settings.nKilobits * 1000 * nPairs)) == OPE_OK &&
           ope_encoder_ctl(p, OPUS_SET_VBR(m_Settings.bVBR ? 1 : 0)) == OPE_OK &&
           ope_encoder_ctl(p, OPUS_SET_VBR_CONSTRAINT(m_Settings.bConstrained ? 1 : 0)) == OPE_OK &&
           ope_encoder_ctl(p, OPUS_SET_COMPLEXITY(m_Settings.nComplexity)) == OPE_OK &&
           ope_encoder_ctl(p, OPUS_SET_LSB_DEPTH(std::min(m_Format.nBits, 24))) == OPE_OK;
}

bool OpusEncoderPlugin::AddComments()
{
    for (const ENCODER_TAG& tag : m_Tags.GetAll())
        if (ope_comments_add(m_pComments.get(), EncoderVorbisName(tag.strName).c_str(), tag.strValue.c_str()) != OPE_OK)
            return false;
    return !HasPicture() ||
           ope_comments_add_picture_from_memory(m_pComments.get(), m_Picture.strData.data(), m_Picture.strData.size(),
                                                ENCODER_PICTURE::FRONT_COVER, nullptr) == OPE_OK;
}

bool OpusEncoderPlugin::Encode(const unsigned char* pData, size_t nFrames)
{
    const size_t nChannels = static_cast<size_t>(m_Format.nChannels);
    while (nFrames > 0)
    {
        const size_t nNow = std::min(nFrames, CHUNK_FRAMES);
        EncoderUnpack(pData, nNow * nChannels, m_Format.nBits, m_arySamples.data());
        const int nResult = ope_encoder_write_float(m_pEncoder.get(), m_arySamples.data(), static_cast<int>(nNow));
        if (nResult != OPE_OK)
            return FailByLibrary(nResult);
        pData += nNow * m_Format.GetFrameBytes();
        nFrames -= nNow;
    }
    return true;
}

bool OpusEncoderPlugin::End()
{
    const int nResult = ope_encoder_drain(m_pEncoder.get());
    if (nResult != OPE_OK)
        return FailByLibrary(nResult);
    const uint64_t nRate = static_cast<uint64_t>(m_Format.nSampleRate);
    const uint64_t nSamples = (static_cast<uint64_t>(m_nFrames) * OPUS_SAMPLE_RATE + nRate - 1) / nRate;
    const std::string strError = CheckOggOpus(m_Output, nSamples);
    return strError.empty() || Fail(ENCODER_OUTPUT_WRITE, strError);
}

void OpusEncoderPlugin::Abandon()
{
    m_pEncoder.reset();
    m_pComments.reset();
}

bool OpusEncoderPlugin::FailByLibrary(int nResult)
{
    if (m_Output.GetError() != ENCODER_OK)
        return FailByOutput();
    if (nResult == OPE_ALLOC_FAIL)
        return Fail(ENCODER_NO_MEMORY, {});
    return Fail(ENCODER_REFUSED, std::string("The Opus library: ") + ope_strerror(nResult));
}

int OpusEncoderPlugin::OnWrite(void* pThis, const unsigned char* pData, opus_int32 nBytes)
{
    const bool bWritten = static_cast<OpusEncoderPlugin*>(pThis)->m_Output.Write(pData, static_cast<size_t>(nBytes));
    return bWritten ? 0 : 1;
}

LY_EXPORT ILyEncoder* CreateEncoder(int, ILyEncoderCallback* pCallback)
{
    try
    {
        return new OpusEncoderPlugin(pCallback);
    }
    catch (...)
    {
        return nullptr;
    }
}
