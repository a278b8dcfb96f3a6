#include "FlacCheck.h"
#include <algorithm>
#include <FLAC/stream_decoder.h>
#include <iterator>
#include <memory>

namespace
{
struct CHECK
{
    EncoderBytes& m_File;
    const ENCODER_FORMAT& m_Format;
    uint64_t m_nOffset = 0;
    uint64_t m_nFrames = 0;
    bool m_bError = false;
    bool m_bHasSum = false;
};

FLAC__StreamDecoderReadStatus OnRead(const FLAC__StreamDecoder*, FLAC__byte aryData[], size_t* pBytes, void* pCheck)
{
    CHECK& check = *static_cast<CHECK*>(pCheck);
    *pBytes = check.m_File.ReadAt(check.m_nOffset, aryData, *pBytes);
    check.m_nOffset += *pBytes;
    return *pBytes > 0 ? FLAC__STREAM_DECODER_READ_STATUS_CONTINUE : FLAC__STREAM_DECODER_READ_STATUS_END_OF_STREAM;
}

FLAC__StreamDecoderWriteStatus OnFrame(const FLAC__StreamDecoder*, const FLAC__Frame* pFrame,
                                       const FLAC__int32* const[], void* pCheck)
{
    static_cast<CHECK*>(pCheck)->m_nFrames += pFrame->header.blocksize;
    return FLAC__STREAM_DECODER_WRITE_STATUS_CONTINUE;
}

void OnMetadata(const FLAC__StreamDecoder*, const FLAC__StreamMetadata* pBlock, void* pCheck)
{
    if (pBlock->type != FLAC__METADATA_TYPE_STREAMINFO)
        return;
    CHECK& check = *static_cast<CHECK*>(pCheck);
    const FLAC__StreamMetadata_StreamInfo& info = pBlock->data.stream_info;
    // A sum of zeros stands for none.
    check.m_bHasSum = std::any_of(std::begin(info.md5sum), std::end(info.md5sum), [](FLAC__byte n) { return n != 0; });
    check.m_bError |= info.sample_rate != static_cast<uint32_t>(check.m_Format.nSampleRate) ||
                      info.channels != static_cast<uint32_t>(check.m_Format.nChannels) ||
                      info.bits_per_sample != static_cast<uint32_t>(check.m_Format.nBits);
}

void OnError(const FLAC__StreamDecoder*, FLAC__StreamDecoderErrorStatus, void* pCheck)
{
    static_cast<CHECK*>(pCheck)->m_bError = true;
}
} // namespace

std::string CheckFlac(EncoderBytes& file, const ENCODER_FORMAT& format, long long nFrames)
{
    CHECK check{file, format};
    const std::unique_ptr<FLAC__StreamDecoder, decltype(&FLAC__stream_decoder_delete)> pDecoder(
        FLAC__stream_decoder_new(), FLAC__stream_decoder_delete);
    if (pDecoder == nullptr || !FLAC__stream_decoder_set_md5_checking(pDecoder.get(), true) ||
        FLAC__stream_decoder_init_stream(pDecoder.get(), OnRead, nullptr, nullptr, nullptr, nullptr, OnFrame,
                                         OnMetadata, OnError, &check) != FLAC__STREAM_DECODER_INIT_STATUS_OK)
        return "The file could not be checked.";
    const bool bDecoded = FLAC__stream_decoder_process_until_end_of_stream(pDecoder.get());
    const bool bSameSum = FLAC__stream_decoder_finish(pDecoder.get());
    if (!bDecoded || check.m_bError || check.m_nFrames != static_cast<uint64_t>(nFrames))
        return "The file does not decode to what was encoded.";
    return bSameSum && check.m_bHasSum ? "" : "The file decodes to another MD5 sum.";
}
