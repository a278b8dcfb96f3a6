// The bytes of a tag: its frames in order, then padding.

#include "IStringHelper.h"
#include "LySharedToolsHelper.h"
#include "MP3Tag.h"
#include <algorithm>
#include <climits>
#include <cstring>

namespace
{
constexpr int GROW_BYTES = LyBuffer::BYTE_WRITER_GROW_BYTES;
constexpr unsigned char OLDEST_WRITTEN_VERSION = 3;
constexpr int MANY_FRAMES = 1000; // more than a tag has that people make
constexpr int DESCRIPTION_ORDER = LY_STRING_COMPARE_IGNORE_CASE | LY_STRING_COMPARE_STABLE;

// What stands in front of what.
enum FRAME_RANKS : int
{
    RANK_KNOWN = 10000,
    RANK_COMMENT = 20000,
    RANK_USER_TEXT = 30000,
    RANK_OPAQUE = 40000
};

FRAME_RANKS GetRank(const CID3v2FrameHeader& header)
{
    if (header.HasID("COMM"))
        return RANK_COMMENT;
    if (header.HasID("TXXX"))
        return RANK_USER_TEXT;
    return CID3v2Frame::GetFrameType(header.m_ID) == ID3V2_FRAME_TYPE_OPAQUE ? RANK_OPAQUE : RANK_KNOWN;
}

// By the code points, folded or as they are. As the string helper does it, for a system that has none.
int CompareCodePoints(const wchar_t* pFirst, const wchar_t* pSecond, bool bFold)
{
    const auto Fold = [bFold](wchar_t c)
    { return bFold ? LyStringGlobals::GetGlobals().ToLower(c) : static_cast<int>(c); };
    while (*pFirst != 0 && Fold(*pFirst) == Fold(*pSecond))
    {
        ++pFirst;
        ++pSecond;
    }
    const int nFirst = Fold(*pFirst);
    const int nSecond = Fold(*pSecond);
    return nFirst < nSecond ? -1 : nFirst > nSecond;
}

int CompareDescriptions(const CID3v2Frame& first, const CID3v2Frame& second)
{
    const wchar_t* pFirst = first.GetDescription();
    const wchar_t* pSecond = second.GetDescription();
    IStringHelper* pHelper = GetStringHelper(true);
    if (pHelper != nullptr)
        return pHelper->Compare(pFirst, pSecond, DESCRIPTION_ORDER);
    const int nOrder = CompareCodePoints(pFirst, pSecond, true);
    return nOrder != 0 ? nOrder : CompareCodePoints(pFirst, pSecond, false);
}

int CompareIDs(const CID3v2FrameHeader& first, const CID3v2FrameHeader& second)
{
    for (size_t i = 0; i < sizeof first.m_ID; ++i)
    {
        if (first.m_ID[i] != second.m_ID[i])
            return static_cast<unsigned char>(first.m_ID[i]) - static_cast<unsigned char>(second.m_ID[i]);
    }
    return 0;
}

// The zero bytes behind frames that make, with the tag's header, nTotal bytes.
long long GetPadding(long long nTotal, bool bLoaded, long long nOldBytes, int nMaxPadding)
{
    const bool bExcess = nMaxPadding > 0 && nTotal < nOldBytes - nMaxPadding;
    if (bLoaded && nTotal <= nOldBytes && !bExcess)
        return nOldBytes - nTotal; // it can be written over its old place
    constexpr int nBlock = CID3v2Tag::PADDING_BLOCK_BYTES;
    return nBlock - nTotal % nBlock; // Deliberate: a total that is a whole number of blocks gets one more
}

// Deliberate: the flags are none. Unsynchronisation, an extended header and a footer do not outlive the reading.
unsigned char* WriteHeader(unsigned char* p, unsigned char cVersion, unsigned int nBodyBytes)
{
    CID3v2FrameHeader size;
    size.SetSyncSafeSize(nBodyBytes);
    CID3v2TagHeader header = {{'I', 'D', '3'}, cVersion, 0, 0, {}};
    memcpy(header.m_Size, size.m_Size, sizeof header.m_Size);
    memcpy(p, &header, sizeof header);
    return p + sizeof header;
}

unsigned char* WriteFrame(unsigned char* p, const CID3v2Frame& frame)
{
    memcpy(p, &frame.m_Header, sizeof frame.m_Header);
    return std::copy_n(frame.m_Data.GetData(), frame.m_Data.GetSize(), p + sizeof frame.m_Header);
}
} // namespace

bool CID3v2Tag::SaveToBuffer(LyBuffer& buffer, int nMaxPadding)
{
    buffer.Empty(false);
    SetPodcastFields();
    SortFrames();
    long long nFrameBytes = 0;
    for (const CID3v2Frame* pFrame : m_aryFrames)
        nFrameBytes += HEADER_BYTES + pFrame->m_Data.GetSize();
    const long long nPadding = GetPadding(nFrameBytes + HEADER_BYTES, m_bLoaded, m_RawTag.GetSize(), nMaxPadding);
    const long long nTotal = HEADER_BYTES + nFrameBytes + nPadding;
    unsigned char* p = nTotal <= INT_MAX ? buffer.GetAppendBlock(static_cast<int>(nTotal), false, GROW_BYTES) : nullptr;
    if (p == nullptr)
        return false; // no memory
    const int nVersion = std::max<int>(GetMajorVersion(), OLDEST_WRITTEN_VERSION);
    p = WriteHeader(p, static_cast<unsigned char>(nVersion), static_cast<unsigned int>(nFrameBytes + nPadding));
    for (const CID3v2Frame* pFrame : m_aryFrames)
        p = WriteFrame(p, *pFrame);
    memset(p, 0, static_cast<size_t>(nPadding));
    return true;
}

// A podcast's episode carries its feed a second time, for players that know only these fields. Whatever the tag has of
// them follows the other fields at each save.
void CID3v2Tag::SetPodcastFields()
{
    const LyString strFeedURL = GetSimple(L"Feed URL", 0);
    const bool bPodcast = !strFeedURL.IsEmpty();
    auto Value = [&](const wchar_t* pName) { return bPodcast ? GetSimple(pName, 0) : LyString(); };
    (void)Set(L"!@#$% iTunes Podcast Description !@#$%", Value(L"Comment")); // whether a frame came of it says the tag
    (void)Set(L"!@#$% iTunes Podcast Feed URL !@#$%", strFeedURL);
    (void)Set(L"!@#$% iTunes Podcast Episode URL !@#$%", Value(L"Episode URL"));
    (void)Set(L"!@#$% iTunes Podcast Flag !@#$%", bPodcast ? L"0" : L"");
    (void)Set(L"!@#$% iTunes Podcast Date !@#$%", Value(L"Date"));
}

// A frame is compared with many others, and its row is looked for once. Frames without a row have no order that the
// sort could use, and in a tag of very many of them it would compare each with each other. There they keep their order.
void CID3v2Tag::SortFrames()
{
    const bool bMany = m_aryFrames.GetSize() > MANY_FRAMES;
    for (int i = 0; i < m_aryFrames.GetSize(); ++i)
    {
        CID3v2Frame& frame = *m_aryFrames[i];
        frame.m_nOrderRow = FindOrderRow(frame);
        if (bMany && frame.m_nOrderRow < 0)
            frame.m_nOrderRow = m_aryFields.GetSize() + i;
    }
    m_bSorting = true;
    LyQSort<CID3v2Frame*> sort;
    sort.Sort(this, m_aryFrames.GetData(), static_cast<unsigned long>(m_aryFrames.GetSize()), false);
    m_bSorting = false;
}

int CID3v2Tag::FindOrderRow(const CID3v2Frame& frame) const
{
    return FindField(frame.m_Header.m_ID, frame.GetDescription(), ID3V2_FIELD_ORDERED);
}

// Deliberate: two frames that the table does not have stand behind each other, whichever is asked for first. The sort
// bears it, and where they end up is as good as any other place.
int CID3v2Tag::LyQSort_Compare(CID3v2Frame** ppFirst, CID3v2Frame** ppSecond)
{
    const CID3v2Frame& first = **ppFirst;
    const CID3v2Frame& second = **ppSecond;
    const int nRank = GetRank(first.m_Header);
    const int nRankDifference = nRank - GetRank(second.m_Header);
    if (nRankDifference != 0)
        return nRankDifference;
    int nOrder = 0;
    if (nRank == RANK_COMMENT || nRank == RANK_USER_TEXT)
        nOrder = CompareDescriptions(first, second);
    else if (nRank == RANK_OPAQUE)
        nOrder = CompareIDs(first.m_Header, second.m_Header);
    if (nOrder != 0)
        return nOrder;
    const int nFirst = m_bSorting ? first.m_nOrderRow : FindOrderRow(first);
    const int nSecond = m_bSorting ? second.m_nOrderRow : FindOrderRow(second);
    if (nFirst < 0)
        return 1;
    return nSecond < 0 ? -1 : nFirst - nSecond;
}
