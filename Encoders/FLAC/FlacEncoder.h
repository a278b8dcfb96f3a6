// enc_flac: FLAC through libFLAC. The file has an MD5 sum of the audio, a seek table, the tags as Vorbis comments and
// the picture as a block of its own. When it is complete it is decoded from the disk, and its sum is compared.
//
// Settings: level=0..8 (5)    seek=0..600 seconds between seek points (10; 0: no table)
//           padding=0..1048576 bytes (4096)
// Errors and threads: as EncoderBase.

#pragma once

#include "EncoderBase.h"
#include <FLAC/metadata.h>
#include <FLAC/stream_encoder.h>
#include <memory>
#include <vector>

class FlacEncoder final : public EncoderBase
{
public:
    explicit FlacEncoder(ILyEncoderCallback* pCallback);
    ~FlacEncoder() override;

protected:
    bool ApplySettings(EncoderSettings& settings) override;
    bool Begin() override;
    bool Encode(const unsigned char* pData, size_t nFrames) override;
    bool End() override;
    void Abandon() override;

private:
    struct SETTINGS
    {
        int nLevel = 5;
        int nSeekSeconds = 10;
        int nPadding = 4096;
    };
    struct DELETE_BLOCK
    {
        void operator()(FLAC__StreamMetadata* p) const { FLAC__metadata_object_delete(p); }
    };
    struct DELETE_ENCODER
    {
        void operator()(FLAC__StreamEncoder* p) const { FLAC__stream_encoder_delete(p); }
    };

    FLAC__StreamMetadata* AddBlock(FLAC__MetadataType eType); // null without memory
    bool AddBlocks();
    bool AddSeekTable();
    bool AddTags();
    bool AddPicture();
    bool SetUp();
    bool FailByEncoder();
    void ForgetPointsBehindTheEnd();
    static FLAC__StreamEncoderWriteStatus OnWrite(const FLAC__StreamEncoder*, const FLAC__byte aryData[], size_t nBytes,
                                                  uint32_t, uint32_t, void* pThis);
    static FLAC__StreamEncoderSeekStatus OnSeek(const FLAC__StreamEncoder*, FLAC__uint64 nOffset, void* pThis);
    static FLAC__StreamEncoderTellStatus OnTell(const FLAC__StreamEncoder*, FLAC__uint64* pOffset, void* pThis);

    SETTINGS m_Settings;
    std::vector<std::unique_ptr<FLAC__StreamMetadata, DELETE_BLOCK>> m_aryBlocks; // which the encoder refers to
    std::unique_ptr<FLAC__StreamEncoder, DELETE_ENCODER> m_pEncoder;
    FLAC__StreamMetadata* m_pSeekTable = nullptr; // one of the blocks
    std::vector<FLAC__int32> m_arySamples;        // of one call
};
