// A wave file from hostile bytes: opened, asked, changed, saved, and opened again.
//
// Input: a byte of flags (FLAGS), the bytes of the file.
//
// The audio stays what it is, wherever it moves to. In a tidy file, whose chunks fill it and have even sizes, the tag
// is found again with every frame that was saved, and no frame that nobody knows is ever lost.

#include "../Tests/Fakes/MemoryReader.h"
#include "FuzzCheck.h"
#include "WAVInfo.h"
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace
{
enum FLAGS : int
{
    STRICT = 1,
    SCAN_ALL = 2,
    SET_SHORT = 4,
    SET_LONG = 8,
    SET_PAYLOAD = 16,
    TOUCH_PAYLOAD = 32,
    REMOVE_TAG = 64
};
constexpr size_t MAX_FILE_BYTES = 1 << 20;

using FRAMES = std::vector<std::string>;

FRAMES GetFrames(const CID3v2Tag& tag, bool bUnknownOnly)
{
    FRAMES aryFrames;
    for (const CID3v2Frame* pFrame : tag.m_aryFrames)
    {
        if (bUnknownOnly && pFrame->GetType() != ID3V2_FRAME_TYPE_OPAQUE)
            continue;
        std::string str(pFrame->m_Header.m_ID, sizeof pFrame->m_Header.m_ID);
        if (pFrame->m_Data.GetSize() > 0)
            str.append(reinterpret_cast<const char*>(pFrame->m_Data.GetData()),
                       static_cast<size_t>(pFrame->m_Data.GetSize()));
        aryFrames.push_back(str);
    }
    return aryFrames;
}

bool Contains(const FRAMES& aryAll, const FRAMES& arySome)
{
    return std::all_of(
        arySome.begin(), arySome.end(),
        [&](const std::string& str)
        { return std::count(aryAll.begin(), aryAll.end(), str) >= std::count(arySome.begin(), arySome.end(), str); });
}

void Ask(CWAVInfo& info)
{
    (void)info.GetLengthMS();
    (void)info.GetTotalSamples();
    (void)info.GetTagFormatString();
    LyString strValue;
    for (const wchar_t* pField : {L"Name", L"Comment", L"Date", L"UITS Payload", L"Genre", L"Publisher"})
        (void)info.Get(pField, strValue);
    unsigned char aryBytes[64];
    long long nRead = 0;
    const long long nBlockBytes = info.GetBlockBits() / 8 + 1;
    if (info.ReadBlocks(aryBytes, 1, static_cast<long long>(sizeof aryBytes) / nBlockBytes, &nRead, true) == 0)
        Check(nRead >= 0 && nRead <= static_cast<long long>(sizeof aryBytes));
}

// The chunks fill the file, and all have even sizes.
bool IsTidy(const CWAVInfo& info)
{
    long long nEnd = 12;
    for (const CIFFChunk& chunk : info.m_aryChunks)
    {
        if (chunk.size % 2 != 0 || chunk.offset != nEnd)
            return false;
        nEnd += chunk.GetFullBytes();
    }
    return nEnd == info.m_nTotalBytes;
}

void Change(CWAVInfo& info, int nFlags)
{
    if (nFlags & SET_SHORT)
        (void)info.Set(L"Name", L"Title");
    if (nFlags & SET_LONG)
        (void)info.Set(L"Album", std::wstring(5000, L'x').c_str());
    if (nFlags & SET_PAYLOAD)
        (void)info.Set(L"UITS Payload", L"text");
    if ((nFlags & TOUCH_PAYLOAD) && info.m_pUITSChunk != nullptr)
        info.m_pUITSChunk->m_bDirty = true;
}

void Forget(CWAVInfo& info) // without a further save
{
    info.m_ID3v2Tag.m_bDirty = false;
    if (info.m_pUITSChunk != nullptr)
        info.m_pUITSChunk->m_bDirty = false;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    if (nBytes < 1 || nBytes > MAX_FILE_BYTES)
        return 0;
    const int nFlags = pData[0];
    const std::string strFile(reinterpret_cast<const char*>(pData) + 1, nBytes - 1);
    MemoryReader reader(strFile);
    CWAVInfo info;
    info.m_nTagWritingEnabled = 1;
    const bool bOpen = info.Open(&reader, (nFlags & STRICT) != 0, (nFlags & SCAN_ALL) != 0) == 0;
    Check(reader.m_strContent == strFile);
    Ask(info);
    std::string strAudio;
    if (bOpen)
        strAudio = strFile.substr(static_cast<size_t>(info.GetHeaderBytes()), static_cast<size_t>(info.GetDataBytes()));
    const bool bTidy = bOpen && (nFlags & SCAN_ALL) && IsTidy(info);
    Change(info, nFlags);
    const bool bTagWritten = info.m_ID3v2Tag.m_bDirty && !(nFlags & REMOVE_TAG);
    const bool bUITSEven = info.m_pUITSChunk == nullptr || info.m_pUITSChunk->size % 2 == 0;
    const FRAMES aryUnknown = GetFrames(info.m_ID3v2Tag, true);
    (void)info.SaveMetadataChanges((nFlags & REMOVE_TAG) != 0);
    Check(reader.m_strContent.find(strAudio) != std::string::npos);
    Check(Contains(GetFrames(info.m_ID3v2Tag, true), aryUnknown));
    Forget(info);

    MemoryReader again(reader.m_strContent);
    CWAVInfo saved;
    saved.m_nTagWritingEnabled = 1;
    const bool bOpenAgain = saved.Open(&again, false, true) == 0;
    if (bTidy && bUITSEven)
    {
        Check(bOpenAgain);
        Check(reader.m_strContent.compare(static_cast<size_t>(saved.GetHeaderBytes()), strAudio.size(), strAudio) == 0);
        Check(!bTagWritten || GetFrames(saved.m_ID3v2Tag, false) == GetFrames(info.m_ID3v2Tag, false));
    }

    LyBuffer list;
    list.FromBuffer(pData, static_cast<int>(nBytes));
    CWAVInfoListChunk entries;
    (void)entries.Parse(list);
    return 0;
}
