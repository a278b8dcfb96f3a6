#include "FlacEncoder.h"
#include "FlacCheck.h"
#include "GlobalMacros.h"
#include <algorithm>

namespace
{
constexpr size_t CHUNK_FRAMES = 4096;
constexpr long long UNKNOWN_LENGTH_SECONDS = 100 * 60; // for which there are seek points; longer than a disc
constexpr int MAX_BLOCK_BYTES = 0x100000;
constexpr uint32_t MAX_SUBSET_BITS = 24; // RFC 9639, 7: streamable subset
} // namespace

FlacEncoder::FlacEncoder(ILyEncoderCallback* pCallback)
    : EncoderBase(pCallback, {"FLAC", "flac", "", std::string("libFLAC ") + FLAC__VERSION_STRING})
{
}

// Without the encoder no more is written to the output.
FlacEncoder::~FlacEncoder() { FlacEncoder::Abandon(); }

bool FlacEncoder::ApplySettings(EncoderSettings& settings)
{
    m_Settings = {};
    return settings.AllowOnly({"level", "seek", "padding"}) && settings.Get("level", 0, 8, m_Settings.nLevel) &&
           settings.Get("seek", 0, 600, m_Settings.nSeekSeconds) &&
           settings.Get("padding", 0, MAX_BLOCK_BYTES, m_Settings.nPadding);
}

bool FlacEncoder::Begin()
{
    m_pEncoder.reset(FLAC__stream_encoder_new());
    if (m_pEncoder == nullptr || !AddBlocks())
        return Fail(ENCODER_NO_MEMORY, {});
    if (!SetUp())
        return Fail(ENCODER_REFUSED, "FLAC has no such format of audio.");
    if (!m_Output.Open(m_strOutput))
        return FailByOutput();
    m_arySamples.resize(CHUNK_FRAMES * static_cast<size_t>(m_Format.nChannels));
    const FLAC__StreamEncoderInitStatus eStatus =
        FLAC__stream_encoder_init_stream(m_pEncoder.get(), OnWrite, OnSeek, OnTell, nullptr, this);
    if (eStatus == FLAC__STREAM_ENCODER_INIT_STATUS_OK)
        return true;
    if (m_Output.GetError() != ENCODER_OK)
        return FailByOutput();
    return Fail(ENCODER_REFUSED, FLAC__StreamEncoderInitStatusString[eStatus]);
}

bool FlacEncoder::SetUp()
{
    FLAC__StreamEncoder* p = m_pEncoder.get();
    const uint32_t nRate = static_cast<uint32_t>(m_Format.nSampleRate);
    const uint32_t nBits = static_cast<uint32_t>(m_Format.nBits);
    const bool bSubset = FLAC__format_sample_rate_is_subset(nRate) && nBits <= MAX_SUBSET_BITS;
    std::vector<FLAC__StreamMetadata*> aryBlocks;
    for (const auto& pBlock : m_aryBlocks)
        aryBlocks.push_back(pBlock.get());
    return FLAC__format_sample_rate_is_valid(nRate) && FLAC__stream_encoder_set_streamable_subset(p, bSubset) &&
           FLAC__stream_encoder_set_channels(p, static_cast<uint32_t>(m_Format.nChannels)) &&
           FLAC__stream_encoder_set_bits_per_sample(p, nBits) && FLAC__stream_encoder_set_sample_rate(p, nRate) &&
           FLAC__stream_encoder_set_compression_level(p, static_cast<uint32_t>(m_Settings.nLevel)) &&
           FLAC__stream_encoder_set_total_samples_estimate(p, static_cast<FLAC__uint64>(m_nExpectedFrames)) &&
           FLAC__stream_encoder_set_metadata(p, aryBlocks.data(), static_cast<uint32_t>(aryBlocks.size()));
}

bool FlacEncoder::Encode(const unsigned char* pData, size_t nFrames)
{
    const size_t nChannels = static_cast<size_t>(m_Format.nChannels);
    while (nFrames > 0)
    {
        const size_t nNow = std::min(nFrames, CHUNK_FRAMES);
        EncoderUnpack(pData, nNow * nChannels, m_Format.nBits, m_arySamples.data());
        if (!FLAC__stream_encoder_process_interleaved(m_pEncoder.get(), m_arySamples.data(),
                                                      static_cast<uint32_t>(nNow)))
            return FailByEncoder();
        pData += nNow * m_Format.GetFrameBytes();
        nFrames -= nNow;
    }
    return true;
}

bool FlacEncoder::End()
{
    ForgetPointsBehindTheEnd();
    if (!FLAC__stream_encoder_finish(m_pEncoder.get()))
        return FailByEncoder();
    const std::string strError = CheckFlac(m_Output, m_Format, m_nFrames);
    return strError.empty() || Fail(ENCODER_OUTPUT_WRITE, strError);
}

void FlacEncoder::Abandon()
{
    m_pEncoder.reset(); // writes nothing: it knows that it is being deleted
    m_pSeekTable = nullptr;
    m_aryBlocks.clear();
}

bool FlacEncoder::FailByEncoder()
{
    if (m_Output.GetError() != ENCODER_OK)
        return FailByOutput();
    const FLAC__StreamEncoderState eState = FLAC__stream_encoder_get_state(m_pEncoder.get());
    if (eState == FLAC__STREAM_ENCODER_MEMORY_ALLOCATION_ERROR)
        return Fail(ENCODER_NO_MEMORY, {});
    return Fail(ENCODER_REFUSED, FLAC__StreamEncoderStateString[eState]);
}

// ---- Metadata

FLAC__StreamMetadata* FlacEncoder::AddBlock(FLAC__MetadataType eType)
{
    FLAC__StreamMetadata* pBlock = FLAC__metadata_object_new(eType);
    if (pBlock != nullptr)
        m_aryBlocks.emplace_back(pBlock);
    return pBlock;
}

bool FlacEncoder::AddBlocks()
{
    if (!AddSeekTable() || !AddTags() || !AddPicture())
        return false;
    if (m_Settings.nPadding == 0)
        return true;
    FLAC__StreamMetadata* pBlock = AddBlock(FLAC__METADATA_TYPE_PADDING);
    if (pBlock == nullptr)
        return false;
    pBlock->length = static_cast<uint32_t>(m_Settings.nPadding);
    return true;
}

// The encoder fills the points in. How many there will be must be known now; those that are too many become
// placeholders at the end.
bool FlacEncoder::AddSeekTable()
{
    if (m_Settings.nSeekSeconds == 0)
        return true;
    const long long nStep = static_cast<long long>(m_Settings.nSeekSeconds) * m_Format.nSampleRate;
    const long long nLength = m_nExpectedFrames > 0 ? m_nExpectedFrames : UNKNOWN_LENGTH_SECONDS * m_Format.nSampleRate;
    m_pSeekTable = AddBlock(FLAC__METADATA_TYPE_SEEKTABLE);
    constexpr long long MAX_POINTS = MAX_BLOCK_BYTES / FLAC__STREAM_METADATA_SEEKPOINT_LENGTH;
    const long long nPoints = std::min((nLength + nStep - 1) / nStep, MAX_POINTS);
    if (m_pSeekTable == nullptr ||
        !FLAC__metadata_object_seektable_resize_points(m_pSeekTable, static_cast<uint32_t>(nPoints)))
        return false;
    for (long long i = 0; i < nPoints; ++i)
        m_pSeekTable->data.seek_table.points[i].sample_number = static_cast<FLAC__uint64>(i * nStep);
    return true;
}

void FlacEncoder::ForgetPointsBehindTheEnd()
{
    if (m_pSeekTable == nullptr)
        return;
    FLAC__StreamMetadata_SeekTable& table = m_pSeekTable->data.seek_table;
    for (uint32_t i = 0; i < table.num_points; ++i)
        if (table.points[i].sample_number >= static_cast<FLAC__uint64>(m_nFrames))
            table.points[i].sample_number = FLAC__STREAM_METADATA_SEEKPOINT_PLACEHOLDER;
}

bool FlacEncoder::AddTags()
{
    FLAC__StreamMetadata* pBlock = AddBlock(FLAC__METADATA_TYPE_VORBIS_COMMENT);
    if (pBlock == nullptr)
        return false;
    for (const ENCODER_TAG& tag : m_Tags.GetAll())
    {
        FLAC__StreamMetadata_VorbisComment_Entry entry;
        if (!FLAC__metadata_object_vorbiscomment_entry_from_name_value_pair(
                &entry, EncoderVorbisName(tag.strName).c_str(), tag.strValue.c_str()))
            return false;
        if (!FLAC__metadata_object_vorbiscomment_append_comment(pBlock, entry, false))
        {
            free(entry.entry);
            return false;
        }
    }
    return true;
}

bool FlacEncoder::AddPicture()
{
    if (!HasPicture())
        return true;
    FLAC__StreamMetadata* pBlock = AddBlock(FLAC__METADATA_TYPE_PICTURE);
    std::string strMime = m_Picture.pMime;
    if (pBlock == nullptr || !FLAC__metadata_object_picture_set_mime_type(pBlock, strMime.data(), true) ||
        !FLAC__metadata_object_picture_set_data(pBlock, reinterpret_cast<FLAC__byte*>(m_Picture.strData.data()),
                                                static_cast<uint32_t>(m_Picture.strData.size()), true))
        return false;
    FLAC__StreamMetadata_Picture& picture = pBlock->data.picture;
    picture.type = FLAC__STREAM_METADATA_PICTURE_TYPE_FRONT_COVER;
    picture.width = m_Picture.nWidth;
    picture.height = m_Picture.nHeight;
    picture.depth = m_Picture.nDepth;
    picture.colors = m_Picture.nColours;
    return true;
}

// ---- What the library calls

FLAC__StreamEncoderWriteStatus FlacEncoder::OnWrite(const FLAC__StreamEncoder*, const FLAC__byte aryData[],
                                                    size_t nBytes, uint32_t, uint32_t, void* pThis)
{
    return static_cast<FlacEncoder*>(pThis)->m_Output.Write(aryData, nBytes)
               ? FLAC__STREAM_ENCODER_WRITE_STATUS_OK
               : FLAC__STREAM_ENCODER_WRITE_STATUS_FATAL_ERROR;
}

FLAC__StreamEncoderSeekStatus FlacEncoder::OnSeek(const FLAC__StreamEncoder*, FLAC__uint64 nOffset, void* pThis)
{
    static_cast<FlacEncoder*>(pThis)->m_Output.Seek(nOffset);
    return FLAC__STREAM_ENCODER_SEEK_STATUS_OK;
}

FLAC__StreamEncoderTellStatus FlacEncoder::OnTell(const FLAC__StreamEncoder*, FLAC__uint64* pOffset, void* pThis)
{
    *pOffset = static_cast<FlacEncoder*>(pThis)->m_Output.GetPosition();
    return FLAC__STREAM_ENCODER_TELL_STATUS_OK;
}

LY_EXPORT ILyEncoder* CreateEncoder(int, ILyEncoderCallback* pCallback)
{
    try
    {
        return new FlacEncoder(pCallback);
    }
    catch (...)
    {
        return nullptr;
    }
}
