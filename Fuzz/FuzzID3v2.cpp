// A tag: loaded, asked for every field, changed, and saved. No frame that was there may be lost by it, but those of the
// field that is set and of the podcast fields, which every save makes anew.

#include "FuzzCheck.h"
#include "LySharedToolsHelper.h"
#include "LyToolsRoot.h"
#include "MP3Tag.h"
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace
{
using FRAMES = std::multiset<std::string>;

const wchar_t* const s_aryPodcast[] = {
    L"!@#$% iTunes Podcast Description !@#$%", L"!@#$% iTunes Podcast Feed URL !@#$%",
    L"!@#$% iTunes Podcast Episode URL !@#$%", L"!@#$% iTunes Podcast Flag !@#$%",
    L"!@#$% iTunes Podcast Date !@#$%",        L"iTunes Podcast Flag"};

// The frames as they go to a file, without those of the field and of the podcast fields.
FRAMES GetFrames(CID3v2Tag& tag, const LyString& strField)
{
    std::set<const CID3v2Frame*> aryExcluded;
    auto Exclude = [&](const LyString& strName)
    {
        LyPointerArray<CID3v2Field> aryFields;
        LyPointerArray<CID3v2Frame> aryFrames;
        (void)tag.FindFieldAndFrame(strName, aryFields, aryFrames, false);
        aryExcluded.insert(aryFrames.begin(), aryFrames.end());
    };
    Exclude(strField);
    for (const wchar_t* pName : s_aryPodcast)
        Exclude(pName);
    FRAMES frames;
    for (const CID3v2Frame* pFrame : tag.m_aryFrames)
    {
        std::string str(reinterpret_cast<const char*>(&pFrame->m_Header), sizeof pFrame->m_Header);
        if (pFrame->m_Data.GetSize() > 0)
            str.append(reinterpret_cast<const char*>(pFrame->m_Data.GetData()),
                       static_cast<size_t>(pFrame->m_Data.GetSize()));
        if (aryExcluded.count(pFrame) == 0)
            frames.insert(str);
    }
    return frames;
}

// A binary value is the end of the body, and a copy of the properties has it before and after anybody asked for it.
void CheckBinaryValue(const CID3v2Frame& frame)
{
    const LyPropertyMap copy(frame.m_Properties);
    Check(copy.CompareProperties(frame.m_Properties));
    const bool bBinary = frame.GetType() == ID3V2_FRAME_TYPE_PICTURE || frame.GetType() == ID3V2_FRAME_TYPE_PRIVATE;
    if (!bBinary || frame.m_Header.HasFlag(ID3V2_FRAME_FLAG_UNSYNCHRONIZED) ||
        frame.m_Header.HasFlag(ID3V2_FRAME_FLAG_COMPRESSED))
        return;
    LyBuffer bytes;
    if (!bytes.FromStringBase64(frame.m_Properties.GetProperty(CID3v2Property::VALUE)))
        return;
    const int nBefore = frame.m_Data.GetSize() - bytes.GetSize();
    Check(nBefore >= 0 &&
          std::equal(bytes.GetData(), bytes.GetData() + bytes.GetSize(), frame.m_Data.GetData() + nBefore));
}

// The properties of a frame are made when somebody asks. Of its body alone they are the same, and those of a frame that
// was taken out of its tag are there when the tag is another one.
void CheckLateProperties(const LyBuffer& buffer)
{
    CID3v2Tag tag;
    CID3v2Tag twin;
    Check(tag.Load(buffer, 0) == twin.Load(buffer, 0) && tag.m_aryFrames.GetSize() == twin.m_aryFrames.GetSize());
    std::vector<std::unique_ptr<CID3v2Frame>> aryTaken;
    while (tag.m_aryFrames.GetSize() > 0)
        aryTaken.emplace_back(tag.m_aryFrames.Detach(tag.m_aryFrames.GetSize() - 1));
    (void)tag.Load(aryTaken.empty() ? LyBuffer() : aryTaken[0]->m_Data, 0); // seldom a tag
    for (const CID3v2Frame* pFrame : twin.m_aryFrames)
    {
        CID3v2Frame alone(*pFrame);
        (void)alone.Decode(); // false for an opaque frame
        Check(aryTaken.back()->m_Properties.CompareProperties(alone.m_Properties));
        Check(pFrame->m_Properties.CompareProperties(alone.m_Properties));
        aryTaken.pop_back();
    }
}

void AskForEverything(CID3v2Tag& tag)
{
    for (const CID3v2Frame* pFrame : tag.m_aryFrames)
        CheckBinaryValue(*pFrame);
    LyPropertyMap map;
    const int nRows = tag.m_aryFields.GetSize();
    for (int i = 0; i < nRows; ++i)
    {
        const LyString strName = tag.m_aryFields[i]->m_strName;
        const bool bRaw = tag.Get(strName, map, 1);
        Check(tag.Get(strName, map, 0) == bRaw);
        Check(bRaw || tag.GetSimple(strName, 0).IsEmpty());
    }
    for (int i = -1; i <= tag.m_aryFrames.GetSize(); ++i)
        Check(!tag.GetFrameSummary(i).IsEmpty());
    LyString strUnknown(L"Field of the fuzzer");
    Check(tag.m_aryFields.GetSize() == nRows);
    Check(!tag.Get(strUnknown, map, 0) || tag.m_aryFields.GetSize() == nRows + 2);
}

void SaveAndCompare(CID3v2Tag& tag, const LyString& strField)
{
    const FRAMES frames = GetFrames(tag, strField);
    LyBuffer buffer;
    Check(tag.SaveToBuffer(buffer, CID3v2Tag::MAX_PADDING_BYTES));
    CID3v2Tag again;
    Check(again.Load(buffer, 0) && again.m_aryFrames.GetSize() == tag.m_aryFrames.GetSize());
    const FRAMES saved = GetFrames(again, strField);
    Check(std::includes(saved.begin(), saved.end(), frames.begin(), frames.end()));
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    static LyToolsRoot s_tools;
    g_LySharedToolsHelper.m_pTools = &s_tools;
    LyBuffer buffer;
    (void)buffer.FromBuffer(pData, static_cast<int>(nBytes)); // false for nothing
    CheckLateProperties(buffer);
    CID3v2Tag tag;
    Check(tag.Load(buffer, 0) == tag.m_bLoaded);
    AskForEverything(tag);
    SaveAndCompare(tag, L"");
    // The input's last byte tells what is set.
    const int nField = nBytes > 0 ? pData[nBytes - 1] % tag.m_aryFields.GetSize() : 0;
    const LyString strField = tag.m_aryFields[nField]->m_strName;
    const FRAMES others = GetFrames(tag, strField);
    (void)tag.Set(strField, L"3/4; Value"); // not every field takes it
    Check(GetFrames(tag, strField) == others);
    SaveAndCompare(tag, strField);
    Check(tag.Set(L"Field of the fuzzer", L"Value \x20AC"));
    Check(tag.GetSimple(L"Field of the fuzzer", 0) == L"Value \x20AC");
    SaveAndCompare(tag, L"Field of the fuzzer");
    Check(!tag.Set(L"Field of the fuzzer", L""));
    return 0;
}
