#include "TagFileCopy.h"
#include <algorithm>
#include <vector>

namespace
{
constexpr int FROM_START = 0;
constexpr long long BLOCK_BYTES = 0x100000;
constexpr int ROOT_BYTES = 12; // "RIFF", the root length, "WAVE"

void Append(DescriptorReader& to, const CWAVInfo& info, int nIndex, DescriptorReader& from)
{
    if (nIndex < 0 || nIndex >= info.m_aryChunks.GetSize())
        return;
    const CIFFChunk& chunk = info.m_aryChunks[nIndex];
    const long long nBytes = CIFFChunk::HEADER_BYTES + static_cast<long long>(chunk.size);
    TagFileCopy::CopyBytes(from, chunk.offset, nBytes, to);
    const char cPad = 0;
    if (chunk.size & 1)
        (void)to.Write(&cPad, 1); // the copy knows of a failure
}
} // namespace

void TagFileCopy::CopyBytes(DescriptorReader& from, long long nPosition, long long nBytes, DescriptorReader& to)
{
    std::vector<char> aryBlock(static_cast<size_t>(std::clamp(nBytes, 1LL, BLOCK_BYTES)));
    (void)from.Seek(nPosition, FROM_START);
    while (nBytes > 0 && to.GetError() == 0)
    {
        const int nRead = from.Read(aryBlock.data(), static_cast<int>(std::min(nBytes, BLOCK_BYTES)));
        if (nRead == 0)
            break; // the file has become shorter, and the check of the copy finds it
        (void)to.Write(aryBlock.data(), nRead);
        nBytes -= nRead;
    }
}

void TagFileCopy::CopyChunks(CWAVInfo& info, DescriptorReader& from, DescriptorReader& to)
{
    const int nUITS = info.m_pUITSChunk != nullptr ? info.m_pUITSChunk->m_nChunkIndex : CIFFInfo::NO_CHUNK;
    CopyBytes(from, 0, ROOT_BYTES, to);
    for (int i = 0; i < info.m_aryChunks.GetSize(); ++i)
        if (i != info.m_nID3ChunkIndex && i != nUITS)
            Append(to, info, i, from);
    Append(to, info, info.m_nID3ChunkIndex, from);
    Append(to, info, nUITS, from);
}

bool TagFileCopy::SaveTag(CWAVInfo& info, DescriptorReader& copy)
{
    const bool bHasFrames = info.m_ID3v2Tag.m_aryFrames.GetSize() > 0;
    if (!bHasFrames && info.m_nID3ChunkIndex == CIFFInfo::NO_CHUNK)
        info.m_ID3v2Tag.m_bDirty = false; // what came has gone again
    // It stands behind the tag, and is written again there.
    if (info.m_pUITSChunk != nullptr)
        info.m_pUITSChunk->m_bDirty = true;
    const bool bSaved = info.SaveMetadataChanges(!bHasFrames);
    info.m_ID3v2Tag.m_bDirty = false; // closing does not save again
    if (info.m_pUITSChunk != nullptr)
        info.m_pUITSChunk->m_bDirty = false;
    const char cPad = 0;
    const long long nBytes = copy.GetLength();
    if ((nBytes & 1) != 0 && copy.Seek(nBytes, FROM_START) == nBytes)
        (void)copy.Write(&cPad, 1);
    (void)info.FixBadRootChunkSize(); // always true while the file is open
    return bSaved && copy.GetError() == 0;
}

void TagFileCopy::CopyTrailer(CWAVInfo& info, DescriptorReader& from, DescriptorReader& to)
{
    const int nChunks = info.m_aryChunks.GetSize();
    const long long nEnd =
        nChunks > 0 ? info.m_aryChunks[nChunks - 1].offset + info.m_aryChunks[nChunks - 1].GetFullBytes() : ROOT_BYTES;
    const long long nBytes = from.GetLength() - nEnd;
    if (nBytes <= 0)
        return;
    (void)to.Seek(to.GetLength(), FROM_START);
    CopyBytes(from, nEnd, nBytes, to);
    CIFFChunk root;
    (void)to.Seek(0, FROM_START);
    if (to.Read(&root, CIFFChunk::HEADER_BYTES) != CIFFChunk::HEADER_BYTES)
        return;
    root.size = static_cast<unsigned int>(to.GetLength() - CIFFChunk::HEADER_BYTES);
    (void)to.Seek(0, FROM_START);
    (void)to.Write(&root, CIFFChunk::HEADER_BYTES);
}
