// Metadata back into the open file: in its old place if it fits there, otherwise behind all other chunks, which close
// up.

#include "WAVInfo.h"
#include <algorithm>
#include <climits>
#include <cstring>

namespace
{
constexpr int FROM_START = 0;

long long PadToEven(long long nBytes) { return nBytes + (nBytes & 1); }

// One run of SaveMetadataChanges.
class MetadataSave
{
public:
    MetadataSave(CIFFInfo& info, bool bRemoveTag);
    bool IsPending() const { return m_bTagChange || m_bUITSChange; }
    bool Run();

private:
    bool IsInList(int nIndex) const { return nIndex >= 0 && nIndex < m_Info.m_aryChunks.GetSize(); }
    bool HadTagChunk() const { return m_nTagHeaderPos >= 1; }
    long long GetOldBytes(int nIndex) const { return IsInList(nIndex) ? m_Info.m_aryChunks[nIndex].GetFullBytes() : 0; }
    bool NeedsRewrite() const;
    bool WriteInPlace();
    bool Rewrite();
    bool RewriteUITS();
    bool WriteTagChunk();
    int GetFirstToCloseUp() const;
    long long GetTagDelta() const;
    long long GetUITSDelta() const;
    bool CloseUp(int nFirst, int nLeaveOut, int nLeaveOutToo);
    void MoveDown(const CIFFChunk& chunk, LyBuffer& block);
    void ChangeRoot(long long nDelta) { (void)m_Info.ChangeRootChunkLength(m_pReader, nDelta); }

    CIFFInfo& m_Info;
    ILyReader* m_pReader;
    CUITSChunk* m_pUITS;
    int m_nUITSIndex;
    bool m_bRemoval;
    bool m_bTagChange;
    bool m_bUITSChange;
    LyBuffer m_Tag;
    long long m_nTagHeaderPos; // below 1: the file has no tag chunk
    long long m_nWritePos = 0;
};

MetadataSave::MetadataSave(CIFFInfo& info, bool bRemoveTag)
    : m_Info(info), m_pReader(info.m_pReader), m_pUITS(info.m_pUITSChunk),
      m_nUITSIndex(m_pUITS != nullptr ? m_pUITS->m_nChunkIndex : CUITSChunk::NOT_IN_FILE),
      m_bRemoval(bRemoveTag && info.m_ID3v2Tag.m_nFilePosition >= CIFFInfo::FIRST_TAG_POSITION),
      m_bTagChange(info.m_ID3v2Tag.m_bDirty || m_bRemoval), m_bUITSChange(m_pUITS != nullptr && m_pUITS->m_bDirty),
      m_nTagHeaderPos(std::max<long long>(info.m_ID3v2Tag.m_nFilePosition, CIFFChunk::HEADER_BYTES) -
                      CIFFChunk::HEADER_BYTES)
{
}

bool MetadataSave::Run()
{
    m_nWritePos = m_pReader->GetLength();
    // Also for a save of the UITS chunk alone: the frames get their order, and the podcast fields their values.
    if (!m_bRemoval && !m_Info.m_ID3v2Tag.SaveToBuffer(m_Tag, CID3v2Tag::MAX_PADDING_BYTES))
        return false; // no memory, and the file keeps the tag it has
    if (!m_bTagChange)
    {
        (void)RewriteUITS();
        return true;
    }
    // Behind a tag that is new, the UITS chunk is written again.
    if (!HadTagChunk())
        m_bUITSChange = m_pUITS != nullptr;
    if (!NeedsRewrite() && WriteInPlace())
        return true;
    return Rewrite();
}

bool MetadataSave::NeedsRewrite() const
{
    return m_bRemoval || !HadTagChunk() || (m_bUITSChange && m_nUITSIndex < m_Info.m_nID3ChunkIndex);
}

// False, and nothing written, if the tag does not fit the chunk that is there.
bool MetadataSave::WriteInPlace()
{
    CIFFChunk header;
    if (m_pReader->Seek(m_nTagHeaderPos, FROM_START) != m_nTagHeaderPos)
        return false;
    (void)m_pReader->Read(&header, CIFFChunk::HEADER_BYTES);
    m_Info.FlipLong(&header.size);
    const int nBytes = m_Tag.GetSize();
    const long long nOldBytes = header.size;
    if (nBytes == 0 || (nBytes != nOldBytes && nBytes != PadToEven(nOldBytes)))
        return false;
    (void)m_pReader->Write(m_Tag.GetData(), nBytes);
    (void)m_Info.PadOneByteAtCurrentPositionIfNeeded(m_pReader, nBytes);
    if (nBytes != nOldBytes)
    {
        (void)m_pReader->Seek(m_nTagHeaderPos, FROM_START);
        header.size = static_cast<unsigned int>(nBytes);
        m_Info.FlipLong(&header.size);
        (void)m_pReader->Write(&header, CIFFChunk::HEADER_BYTES);
    }
    if (m_bUITSChange)
        (void)RewriteUITS();
    return true;
}

// The place from which the file is written anew.
// Deliberate: a clean UITS chunk that stands there, ahead of the tag, is not written again, and leaves the file.
int MetadataSave::GetFirstToCloseUp() const
{
    const int nTagIndex = m_Info.m_nID3ChunkIndex;
    return HadTagChunk() ? std::min(nTagIndex, m_nUITSIndex) : std::max(nTagIndex, m_nUITSIndex);
}

long long MetadataSave::GetTagDelta() const
{
    const long long nOld = HadTagChunk() ? GetOldBytes(m_Info.m_nID3ChunkIndex) : 0;
    return m_bRemoval ? -nOld : CIFFChunk::HEADER_BYTES + PadToEven(m_Tag.GetSize()) - nOld;
}

long long MetadataSave::GetUITSDelta() const
{
    return m_bUITSChange ? m_pUITS->GetFullBytes() - GetOldBytes(m_nUITSIndex) : 0;
}

bool MetadataSave::Rewrite()
{
    const int nLeaveOutUITS = m_bUITSChange ? m_nUITSIndex : CIFFInfo::NO_CHUNK;
    if (!CloseUp(GetFirstToCloseUp(), m_Info.m_nID3ChunkIndex, nLeaveOutUITS))
        return false;
    (void)m_pReader->Seek(m_nWritePos, FROM_START);
    const bool bWritten = m_bRemoval || WriteTagChunk();
    if (m_bUITSChange)
        (void)m_pUITS->Write(m_pReader);
    m_pReader->SetEndOfFile();
    if (GetTagDelta() != 0)
        ChangeRoot(GetTagDelta());
    if (GetUITSDelta() != 0)
        ChangeRoot(GetUITSDelta());
    return bWritten;
}

bool MetadataSave::RewriteUITS()
{
    if (!CloseUp(m_nUITSIndex, CIFFInfo::NO_CHUNK, CIFFInfo::NO_CHUNK))
        return false;
    (void)m_pReader->Seek(m_nWritePos, FROM_START);
    (void)m_pUITS->Write(m_pReader);
    m_pReader->SetEndOfFile();
    ChangeRoot(GetUITSDelta());
    return true;
}

bool MetadataSave::WriteTagChunk()
{
    const int nBytes = m_Tag.GetSize();
    CIFFChunk header;
    std::memcpy(header.id, m_Info.GetID3ChunkIDName(), sizeof header.id);
    header.size = static_cast<unsigned int>(nBytes);
    m_Info.FlipLong(&header.size);
    if (m_pReader->Write(&header, CIFFChunk::HEADER_BYTES) != CIFFChunk::HEADER_BYTES)
        return false;
    const bool bWritten = nBytes == 0 || m_pReader->Write(m_Tag.GetData(), nBytes) == nBytes;
    (void)m_Info.PadOneByteAtCurrentPositionIfNeeded(m_pReader, nBytes);
    return bWritten;
}

// Moves what stands behind the chunk nFirst to its place, but for what is left out. What lies outside the list moves
// nothing. False only if there is no memory for it, and then nothing has happened.
bool MetadataSave::CloseUp(int nFirst, int nLeaveOut, int nLeaveOutToo)
{
    if (!IsInList(nFirst))
        return true;
    m_nWritePos = m_Info.m_aryChunks[nFirst].offset;
    LyBuffer block;
    for (int i = nFirst + 1; i < m_Info.m_aryChunks.GetSize(); ++i)
    {
        if (i == nLeaveOut || i == nLeaveOutToo)
            continue;
        if (block.GetSize() == 0 && block.GetAppendBlock(CIFFInfo::MOVE_BLOCK_BYTES) == nullptr)
            return false;
        MoveDown(m_Info.m_aryChunks[i], block);
    }
    return true;
}

// Deliberate: the pad byte of a chunk of odd size does not move with it, and neither the root length nor what follows
// takes notice. The root length is mended at the next save.
void MetadataSave::MoveDown(const CIFFChunk& chunk, LyBuffer& block)
{
    long long nFrom = chunk.offset;
    for (long long nLeft = CIFFChunk::HEADER_BYTES + static_cast<long long>(chunk.size); nLeft > 0;)
    {
        const int nPiece = static_cast<int>(std::min<long long>(nLeft, block.GetSize()));
        (void)m_pReader->Seek(nFrom, FROM_START);
        const int nRead = std::min(m_pReader->Read(block.GetData(), nPiece), nPiece);
        if (nRead < 1)
            return; // the file ends here
        (void)m_pReader->Seek(m_nWritePos, FROM_START);
        (void)m_pReader->Write(block.GetData(), nRead);
        nFrom += nRead;
        nLeft -= nRead;
        m_nWritePos += nRead;
    }
}
} // namespace

bool CIFFInfo::SaveMetadataChanges(bool bRemoveTag)
{
    if (!GetTagWritingEnabled())
        return true;
    if (m_pReader == nullptr || !m_pReader->GetIsOpen())
        return false;
    MetadataSave save(*this, bRemoveTag);
    if (!save.IsPending())
        return true;
    (void)FixBadRootChunkSize();
    return save.Run();
}

// ---- What a container is like, if nothing else is said

void CIFFInfo::FlipLong(void*) {}

bool CIFFInfo::ChangeRootChunkLength(ILyReader*, long long) { return false; }

unsigned int CIFFInfo::GetRootChunkLength(ILyReader*) { return 0; }

bool CIFFInfo::PadOneByteAtCurrentPositionIfNeeded(ILyReader* pReader, long long nSize)
{
    const unsigned char cPad = 0;
    return pReader != nullptr && (nSize & 1) != 0 && pReader->Write(&cPad, 1) == 1;
}

bool CIFFInfo::FixBadRootChunkSize()
{
    if (m_pReader == nullptr || !m_pReader->GetIsOpen())
        return false;
    const unsigned int nRight = static_cast<unsigned int>(m_pReader->GetLength() - CIFFChunk::HEADER_BYTES);
    const long long nPosition = m_pReader->GetPosition();
    CIFFChunk root;
    (void)m_pReader->Seek(0, FROM_START);
    const bool bRead = m_pReader->Read(&root, CIFFChunk::HEADER_BYTES) == CIFFChunk::HEADER_BYTES;
    if (bRead && (root.HasID("RIFF") || root.HasID("FORM")))
    {
        FlipLong(&root.size);
        if (root.size != nRight)
        {
            root.size = nRight;
            (void)m_pReader->Seek(0, FROM_START);
            FlipLong(&root.size);
            (void)m_pReader->Write(&root, CIFFChunk::HEADER_BYTES);
        }
    }
    (void)m_pReader->Seek(nPosition, FROM_START);
    return true;
}
