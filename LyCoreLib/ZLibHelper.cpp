#include "ZLibHelper.h"
#include "LyBuffer.h"
#include "LyFile.h"
#include "LyFileSystem.h"

#include <algorithm>

namespace
{
constexpr int FILE_CHUNK_BYTES = 16384;
constexpr int BUFFER_CHUNK_BYTES = 8192;
constexpr int BUFFER_GROW_BYTES = 262144;
constexpr int COMPRESSOR_LEVEL = -1; // zlib's own choice
constexpr int COMPRESSOR_FORMAT = 1;

enum UNPACK_RESULT
{
    UNPACK_COMPLETE,
    UNPACK_DAMAGED, // up to a fault in the data
    UNPACK_CANCELLED,
    UNPACK_FAILED // what came could not be kept
};

bool GetIsCancelled(const volatile bool* pCancel)
{
    return pCancel != nullptr && __atomic_load_n(pCancel, __ATOMIC_RELAXED);
}

// Hands every chunk of the file to consume, which says whether it could be kept.
template <class CONSUME>
UNPACK_RESULT Unpack(IZLibFile& file, unsigned char* pChunk, int nChunkBytes, const volatile bool* pCancel,
                     CONSUME consume)
{
    for (;;)
    {
        // More than there is room for is not believed.
        const int nBytes = std::min(file.Read(pChunk, nChunkBytes), nChunkBytes);
        if (nBytes <= 0)
            return nBytes == 0 ? UNPACK_COMPLETE : UNPACK_DAMAGED;
        if (!consume(pChunk, nBytes))
            return UNPACK_FAILED;
        if (GetIsCancelled(pCancel))
            return UNPACK_CANCELLED;
    }
}

UNPACK_RESULT UnpackToFile(IZLibFile& source, LyFile& file, const volatile bool* pCancel)
{
    unsigned char aryChunk[FILE_CHUNK_BYTES];
    auto Write = [&file](const unsigned char* p, int nBytes)
    { return file.Write(p, static_cast<unsigned int>(nBytes)); };
    return Unpack(source, aryChunk, FILE_CHUNK_BYTES, pCancel, Write);
}

// Deliberate: what came ahead of a fault counts as the whole. A page that is cut short is better than none to a player.
bool GetIsResult(UNPACK_RESULT eResult) { return eResult == UNPACK_COMPLETE || eResult == UNPACK_DAMAGED; }
} // namespace

CZLibHelper::CZLibHelper()
{
    m_pZLib.Set(CreateZLib(), true, false);
    if (m_pZLib == nullptr)
        return;
    m_pCompressor.Set(m_pZLib->CreateBufferCompressor(COMPRESSOR_LEVEL, COMPRESSOR_FORMAT), true, false);
    m_pDecompressor.Set(m_pZLib->CreateBufferDecompressor(), true, false);
}

IZLibFile* CZLibHelper::OpenFile(const wchar_t* pPath)
{
    return m_pZLib != nullptr ? m_pZLib->OpenFile(pPath) : nullptr;
}

bool CZLibHelper::DecompressFile(LyString strSource, LyString strDestination, volatile bool* pCancel)
{
    m_bDamaged = false;
    if (strDestination.IsEmpty())
        strDestination = strSource;
    const LyString strTemp = strDestination + L".tmp";
    LyPtr<IZLibFile, IZLibFile> source(OpenFile(strSource), true, false);
    if (source == nullptr)
        return false;
    LyFile file(LyFilename(strTemp), LY_FILE_WRITE, LY_FILE_SHARE_READ_WRITE, LY_FILE_CREATE_ALWAYS);
    if (!file.Open())
        return false;
    const UNPACK_RESULT eResult = UnpackToFile(*source.Get(), file, pCancel);
    m_bDamaged = eResult == UNPACK_DAMAGED;
    source.Release();
    file.Close();
    if (GetIsResult(eResult) && LyFileSystem::SafeReplaceFile(strDestination, strTemp, 0, false, false))
        return true;
    (void)LyFileSystem::DeleteFile(strTemp);
    return false;
}

bool CZLibHelper::DecompressFileToBuffer(LyString strSource, LyBuffer& output, volatile bool* pCancel)
{
    m_bDamaged = false;
    output.Empty(true);
    const LyPtr<IZLibFile, IZLibFile> source(OpenFile(strSource), true, false);
    if (source == nullptr)
        return false;
    unsigned char aryChunk[BUFFER_CHUNK_BYTES];
    auto Append = [&output](const unsigned char* p, int nBytes)
    {
        unsigned char* pEnd = output.GetAppendBlock(nBytes, false, BUFFER_GROW_BYTES, true, false);
        if (pEnd != nullptr)
            std::copy_n(p, nBytes, pEnd);
        return pEnd != nullptr;
    };
    const UNPACK_RESULT eResult = Unpack(*source.Get(), aryChunk, BUFFER_CHUNK_BYTES, pCancel, Append);
    m_bDamaged = eResult == UNPACK_DAMAGED;
    if (!GetIsResult(eResult))
        output.Empty(true);
    return eResult != UNPACK_FAILED;
}
