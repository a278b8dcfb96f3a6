#include "Mp3Encoder.h"
#include "GlobalMacros.h"
#include "Mp3Check.h"
#include "UTF8.h"
#include <algorithm>

namespace
{
constexpr size_t CHUNK_FRAMES = 4096;
constexpr size_t ENCODED_BYTES = CHUNK_FRAMES * 5 / 4 + 7200; // the worst case, as lame.h has it
constexpr int s_arySampleRates[] = {8000, 11025, 12000, 16000, 22050, 24000, 32000, 44100, 48000};
constexpr int LAME_NO_MEMORY = -2; // lame.h: problem of malloc()

void Silent(const char*, va_list) {}

// With a byte order mark, as lame wants it. Characters beyond the first plane as pairs.
std::vector<unsigned short> MakeUTF16(const std::string& str)
{
    std::vector<unsigned short> aryUnits = {0xFEFF};
    for (wchar_t c : WidenUTF8(str))
    {
        const uint32_t n = static_cast<uint32_t>(c);
        if (n >= 0x10000)
            aryUnits.push_back(static_cast<unsigned short>(0xD800 + ((n - 0x10000) >> 10)));
        aryUnits.push_back(static_cast<unsigned short>(n >= 0x10000 ? 0xDC00 + (n & 0x3FF) : n));
    }
    aryUnits.push_back(0);
    return aryUnits;
}

// ID3v2.3.0, 3.3 and 4.15: a frame is its name, its length in four bytes, two of flags and the body, which for a
// picture is the encoding, the MIME type with a zero behind it, and the kind of the picture. The library calls each
// "other".
void MakeFrontCover(std::vector<unsigned char>& aryTag)
{
    constexpr size_t HEADER_BYTES = 10; // of the tag, and of each frame
    constexpr unsigned char FRONT_COVER = 3;
    for (size_t n = HEADER_BYTES; n + HEADER_BYTES < aryTag.size() && aryTag[n] != 0;)
    {
        const auto pFrame = aryTag.begin() + static_cast<std::ptrdiff_t>(n);
        const size_t nBytes = static_cast<size_t>(pFrame[4]) << 24 | static_cast<size_t>(pFrame[5]) << 16 |
                              static_cast<size_t>(pFrame[6]) << 8 | pFrame[7];
        if (std::equal(pFrame, pFrame + 4, "APIC"))
        {
            const auto pZero = std::find(pFrame + HEADER_BYTES + 1, aryTag.end(), 0);
            if (aryTag.end() - pZero > 1)
                pZero[1] = FRONT_COVER;
            return;
        }
        n += HEADER_BYTES + nBytes;
    }
}

bool IsLatin1(const std::string& str)
{
    return std::all_of(str.begin(), str.end(), [](char c) { return c >= ' ' && c <= '~'; });
}
} // namespace

Mp3Encoder::Mp3Encoder(ILyEncoderCallback* pCallback)
    : EncoderBase(pCallback, {"MP3", "mp3", "", std::string("libmp3lame ") + get_lame_version()})
{
}

Mp3Encoder::~Mp3Encoder() { Mp3Encoder::Abandon(); }

bool Mp3Encoder::ApplySettings(EncoderSettings& settings)
{
    m_Settings = {};
    const bool bCBR = settings.Find("cbr") != nullptr;
    const bool bABR = settings.Find("abr") != nullptr;
    if ((settings.Find("vbr") != nullptr ? 1 : 0) + (bCBR ? 1 : 0) + (bABR ? 1 : 0) > 1)
        return settings.Fail("Only one of 'vbr', 'cbr' and 'abr' can be set.");
    m_Settings.eMode = bCBR ? MODE_CBR : bABR ? MODE_ABR : MODE_VBR;
    return settings.AllowOnly({"vbr", "cbr", "abr", "effort"}) && settings.Get("vbr", 0, 9, m_Settings.nVBR) &&
           settings.Get("cbr", 8, 320, m_Settings.nKilobits) && settings.Get("abr", 8, 310, m_Settings.nKilobits) &&
           settings.Get("effort", 0, 9, m_Settings.nEffort);
}

bool Mp3Encoder::Begin()
{
    m_pLame.reset(lame_init());
    if (m_pLame == nullptr)
        return Fail(ENCODER_NO_MEMORY, {});
    const bool bRate = std::find(std::begin(s_arySampleRates), std::end(s_arySampleRates), m_Format.nSampleRate) !=
                       std::end(s_arySampleRates);
    if (!bRate || m_Format.nChannels > 2)
        return Fail(ENCODER_REFUSED, "MP3 has no such sample rate, or no more than two channels.");
    if (!SetUp())
        return Fail(ENCODER_REFUSED, "The MP3 library has no such bit rate for this audio.");
    if (!SetTags())
        return Fail(ENCODER_NO_MEMORY, {});
    m_arySamples.resize(CHUNK_FRAMES * 2);
    m_aryEncoded.resize(ENCODED_BYTES);
    return m_Output.Open(m_strOutput) ? WriteTag() : FailByOutput();
}

bool Mp3Encoder::SetUp()
{
    lame_global_flags* p = m_pLame.get();
    (void)lame_set_errorf(p, Silent); // what it says goes nowhere: its answers are enough
    (void)lame_set_debugf(p, Silent);
    (void)lame_set_msgf(p, Silent);
    lame_set_write_id3tag_automatic(p, 0); // WriteTag does it
    id3tag_init(p);
    const bool bKnown = m_nExpectedFrames > 0 && m_nExpectedFrames < 0xFFFFFFFFLL;
    return lame_set_in_samplerate(p, m_Format.nSampleRate) >= 0 &&
           lame_set_out_samplerate(p, m_Format.nSampleRate) >= 0 && lame_set_num_channels(p, m_Format.nChannels) >= 0 &&
           (m_Format.nChannels == 2 || lame_set_mode(p, MONO) >= 0) && lame_set_bWriteVbrTag(p, 1) >= 0 &&
           (!bKnown || lame_set_num_samples(p, static_cast<unsigned long>(m_nExpectedFrames)) >= 0) &&
           lame_set_quality(p, m_Settings.nEffort) >= 0 && SetMode() && lame_init_params(p) >= 0 &&
           lame_get_out_samplerate(p) == m_Format.nSampleRate;
}

bool Mp3Encoder::SetMode()
{
    lame_global_flags* p = m_pLame.get();
    switch (m_Settings.eMode)
    {
    case MODE_CBR:
        return lame_set_VBR(p, vbr_off) >= 0 && lame_set_brate(p, m_Settings.nKilobits) >= 0;
    case MODE_ABR:
        return lame_set_VBR(p, vbr_abr) >= 0 && lame_set_VBR_mean_bitrate_kbps(p, m_Settings.nKilobits) >= 0;
    case MODE_VBR:
        break;
    }
    return lame_set_VBR(p, vbr_mtrh) >= 0 && lame_set_VBR_q(p, m_Settings.nVBR) >= 0;
}

bool Mp3Encoder::SetTags()
{
    for (const ENCODER_TAG& tag : m_Tags.GetAll())
        if (!SetTag(tag))
            return false;
    id3tag_add_v2(m_pLame.get());
    id3tag_v2_only(m_pLame.get());
    return !HasPicture() || id3tag_set_albumart(m_pLame.get(), m_Picture.strData.data(), m_Picture.strData.size()) == 0;
}

bool Mp3Encoder::SetTag(const ENCODER_TAG& tag)
{
    lame_global_flags* p = m_pLame.get();
    constexpr std::string_view USER_TEXT = "TXXX:";
    const char* pFrame = EncoderID3Frame(tag.strName);
    const bool bUserText = pFrame == nullptr || std::string_view(pFrame).starts_with(USER_TEXT);
    const std::string strName =
        pFrame != nullptr && bUserText ? pFrame + USER_TEXT.size() : EncoderVorbisName(tag.strName);
    int nResult = 0;
    if (strName == "COMMENT")
    {
        const std::vector<unsigned short> aryNoName = MakeUTF16({});
        nResult = id3tag_set_comment_utf16(p, "eng", aryNoName.data(), MakeUTF16(tag.strValue).data());
    }
    else if (bUserText)
        nResult = id3tag_set_fieldvalue_utf16(p, MakeUTF16("TXXX=" + strName + "=" + tag.strValue).data());
    else if (IsLatin1(tag.strValue)) // numbers must be plain text
        nResult = id3tag_set_textinfo_latin1(p, pFrame, tag.strValue.c_str());
    else
        nResult = id3tag_set_textinfo_utf16(p, pFrame, MakeUTF16(tag.strValue).data());
    return nResult != LAME_NO_MEMORY; // what it makes of a strange number is its own affair
}

bool Mp3Encoder::WriteTag()
{
    std::vector<unsigned char> aryTag(lame_get_id3v2_tag(m_pLame.get(), nullptr, 0));
    m_nTagBytes = lame_get_id3v2_tag(m_pLame.get(), aryTag.data(), aryTag.size());
    if (m_nTagBytes > aryTag.size())
        return Fail(ENCODER_REFUSED, "The MP3 library makes no tag.");
    MakeFrontCover(aryTag);
    return m_Output.Write(aryTag.data(), m_nTagBytes) || FailByOutput();
}

bool Mp3Encoder::WriteEncoded(int nBytes)
{
    if (nBytes < 0)
        return Fail(nBytes == LAME_NO_MEMORY ? ENCODER_NO_MEMORY : ENCODER_REFUSED, "The MP3 library fails.");
    return m_Output.Write(m_aryEncoded.data(), static_cast<size_t>(nBytes)) || FailByOutput();
}

bool Mp3Encoder::Encode(const unsigned char* pData, size_t nFrames)
{
    const size_t nChannels = static_cast<size_t>(m_Format.nChannels);
    lame_global_flags* p = m_pLame.get();
    const int nRoom = static_cast<int>(m_aryEncoded.size());
    while (nFrames > 0)
    {
        const size_t nNow = std::min(nFrames, CHUNK_FRAMES);
        EncoderUnpack(pData, nNow * nChannels, m_Format.nBits, m_arySamples.data());
        const int nCount = static_cast<int>(nNow);
        // The interleaved form takes two channels, whatever was set.
        const int nBytes = nChannels == 2 ? lame_encode_buffer_interleaved_ieee_float(p, m_arySamples.data(), nCount,
                                                                                      m_aryEncoded.data(), nRoom)
                                          : lame_encode_buffer_ieee_float(p, m_arySamples.data(), m_arySamples.data(),
                                                                          nCount, m_aryEncoded.data(), nRoom);
        if (!WriteEncoded(nBytes))
            return false;
        pData += nNow * m_Format.GetFrameBytes();
        nFrames -= nNow;
    }
    return true;
}

bool Mp3Encoder::End()
{
    lame_global_flags* p = m_pLame.get();
    if (!WriteEncoded(lame_encode_flush(p, m_aryEncoded.data(), static_cast<int>(m_aryEncoded.size()))))
        return false;
    // The place of the gapless header has been kept by an empty frame behind the tag.
    const size_t nHeader = lame_get_lametag_frame(p, m_aryEncoded.data(), m_aryEncoded.size());
    if (nHeader == 0 || nHeader > m_aryEncoded.size())
        return Fail(ENCODER_REFUSED, "The MP3 library makes no gapless header.");
    if (!m_Output.WriteAt(m_nTagBytes, m_aryEncoded.data(), nHeader))
        return FailByOutput();
    const std::string strError = CheckMp3(m_Output, m_nTagBytes, m_nFrames);
    return strError.empty() || Fail(ENCODER_OUTPUT_WRITE, strError);
}

void Mp3Encoder::Abandon() { m_pLame.reset(); }

LY_EXPORT ILyEncoder* CreateEncoder(int, ILyEncoderCallback* pCallback)
{
    try
    {
        return new Mp3Encoder(pCallback);
    }
    catch (...)
    {
        return nullptr;
    }
}
