// The first bytes of audio data: the search for a DTS stream, and what is told of it.

#include "DTSHelper.h"
#include "FuzzCheck.h"
#include <cstddef>
#include <cstdint>

static void CheckHeaders(const LyBuffer& buffer)
{
    for (int nOffset = -1; nOffset <= buffer.GetSize(); ++nOffset)
    {
        DTSHelper::FrameHeader header;
        if (!DTSHelper::ParseFrameHeader(header, buffer, nOffset))
            continue;
        Check(nOffset >= 0 && nOffset + DTSHelper::HEADER_BYTES <= buffer.GetSize());
        // The fields are those of their bits.
        const int nBit = nOffset * 8;
        Check(buffer.ReadBits(nBit, 32) == static_cast<unsigned int>(header.m_nSyncWord));
        Check(buffer.ReadBits(nBit + 32, 1) == static_cast<unsigned int>(header.m_nFrameType));
        Check(buffer.ReadBits(nBit + 33, 5) + 1 == static_cast<unsigned int>(header.m_nDeficitSamples));
        Check((buffer.ReadBits(nBit + 38, 1) != 0) == header.m_bCRCPresent);
        Check(buffer.ReadBits(nBit + 39, 7) + 1 == static_cast<unsigned int>(header.m_nSampleBlocks));
        Check(buffer.ReadBits(nBit + 46, 14) + 1 == static_cast<unsigned int>(header.m_nFrameBytes));
        Check(header.m_nSampleBlocks >= 5 && header.m_nFrameBytes >= 95);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    LyBuffer buffer;
    (void)buffer.FromBuffer(pData, static_cast<int>(nBytes));
    DTSHelper search;
    const bool bFound = search.SearchForFirstDTSFrame(buffer);
    Check(bFound == (search.m_nStreamType != DTS_STREAM_NONE));
    Check(bFound ? search.m_nFirstFrameOffset >= 0 && search.m_nFirstFrameOffset + 6 <= buffer.GetSize()
                 : search.m_nFirstFrameOffset == DTSHelper::NO_FRAME);
    DTSHelper helper;
    const bool bStream = helper.Analyze(buffer);
    Check(helper.m_nStreamType == search.m_nStreamType && helper.m_nFirstFrameOffset == search.m_nFirstFrameOffset);
    Check(!bStream || (bFound && helper.m_FirstFrameHeader.m_nFrameBytes >= DTSHelper::MIN_FRAME_BYTES));
    CheckHeaders(buffer);
    LyBuffer packed(buffer.GetSize());
    const int nWords = DTSHelper::ConvertFourteenBitDTS(buffer.GetData(), buffer.GetSize() / 2, packed.GetData());
    Check(nWords == buffer.GetSize() / 16 * 7);
    return 0;
}
