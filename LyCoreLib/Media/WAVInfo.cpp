// What RIFF WAVE adds to a file of chunks: places of blocks, the root length, the UITS chunk.

#include "WAVInfo.h"
#include "LyStringFormat.h"
#include "OptionsHelper.h"
#include <algorithm>
#include <climits>
#include <cstring>

namespace
{
constexpr int FROM_START = 0;
constexpr int BITS_OF_BYTE = 8;
constexpr wchar_t UITS_FIELD[] = L"UITS Payload";
constexpr char UITS_ID[] = "UITS";

// The first 8 bytes of a RIFF file.
bool ReadRoot(ILyReader* pReader, CIFFChunk& root)
{
    return pReader->Seek(0, FROM_START) == 0 &&
           pReader->Read(&root, CIFFChunk::HEADER_BYTES) == CIFFChunk::HEADER_BYTES && root.HasID("RIFF");
}

// UTF-8, without a terminator, filled up to an even length.
void FillPayload(LyBuffer& data, const LyString& strText)
{
    data.Empty(false);
    const int nBytes = LyCharacterHelper::GetUTF8Bytes(strText, false, strText.GetLength());
    if (nBytes < 1)
        return;
    unsigned char* p = data.GetAppendBlock(nBytes);
    if (p == nullptr)
        return;
    (void)LyCharacterHelper::DecodeUTFNToUTF8(strText, p, false, strText.GetLength());
    (void)data.PadForBlockAlign(2, 0, LyBuffer::BYTE_WRITER_GROW_BYTES);
}
} // namespace

// With nothing to save, a reader that is not owned is not touched: its owner may have ended it.
CWAVInfo::~CWAVInfo()
{
    if (m_ID3v2Tag.m_bDirty || (m_pUITSChunk != nullptr && m_pUITSChunk->m_bDirty))
        (void)CWAVInfo::Close();
}

int CWAVInfo::ReadBlocks(void* pDest, long long nFirstBlock, long long nBlocks, long long* pnBytesRead,
                         bool bRestorePosition)
{
    return CIFFInfo::ReadBlocks(pDest, nFirstBlock, nBlocks, pnBytesRead, bRestorePosition);
}

long long CWAVInfo::GetByteFromBlock(long long nBlock)
{
    long long nBits = 0;
    long long nByte = 0;
    if (!m_bOpen || __builtin_mul_overflow(GetBlockBits(), nBlock, &nBits) ||
        __builtin_add_overflow(nBits / BITS_OF_BYTE, m_nHeaderBytes, &nByte))
        return -1;
    return nByte;
}

long long CWAVInfo::GetBlockFromByte(long long nByte)
{
    long long nBits = 0;
    if (!m_bOpen || GetBlockBits() == 0 || __builtin_sub_overflow(nByte, m_nHeaderBytes, &nBits) ||
        __builtin_mul_overflow(nBits, BITS_OF_BYTE, &nBits))
        return -1;
    return nBits / GetBlockBits();
}

unsigned int CWAVInfo::GetRootChunkLength(ILyReader* pReader)
{
    CIFFChunk root;
    return pReader != nullptr && ReadRoot(pReader, root) ? root.size : 0;
}

bool CWAVInfo::ChangeRootChunkLength(ILyReader* pReader, long long nDelta)
{
    CIFFChunk root;
    if (pReader == nullptr || !pReader->GetIsOpen() || !ReadRoot(pReader, root))
        return false;
    root.size += static_cast<unsigned int>(nDelta);
    (void)pReader->Seek(0, FROM_START);
    return pReader->Write(&root, CIFFChunk::HEADER_BYTES) == CIFFChunk::HEADER_BYTES;
}

const char* CWAVInfo::GetID3ChunkIDName() { return "id3 "; }

bool CWAVInfo::Get(const LyString& strField, LyString& strValue)
{
    return CIFFInfo::Get(strField, strValue) || m_List.Get(strField, strValue);
}

bool CWAVInfo::Set(const LyString& strField, const LyString& strValue)
{
    if (!LyHash::AreTextsEqual(strField, UITS_FIELD, false))
        return CIFFInfo::Set(strField, strValue);
    if (m_pUITSChunk == nullptr)
    {
        m_pUITSChunk.Set(new CWAVUITSChunk, true, false);
        std::memcpy(m_pUITSChunk->id, UITS_ID, sizeof m_pUITSChunk->id);
    }
    FillPayload(m_pUITSChunk->m_Data, strValue);
    m_pUITSChunk->size = static_cast<unsigned int>(m_pUITSChunk->m_Data.GetSize());
    m_pUITSChunk->m_bDirty = true;
    return true;
}

LyString CWAVInfo::GetTagFormatString()
{
    LyString str = CIFFInfo::GetTagFormatString();
    if (str.IsEmpty() && m_List.GetCount() > 0)
        str = TranslateString(L"WAVE INFO LIST:\r\n") + m_List.GetTagFormatString();
    return str;
}

bool CWAVUITSChunk::Write(ILyReader* pReader)
{
    if (pReader == nullptr || size > static_cast<unsigned int>(m_Data.GetSize()))
        return false;
    const int nBytes = static_cast<int>(size);
    const bool bHeader = pReader->Write(&id, HEADER_BYTES) == HEADER_BYTES;
    const bool bBody = nBytes == 0 || pReader->Write(m_Data.GetData(), nBytes) == nBytes;
    return bHeader && bBody;
}
