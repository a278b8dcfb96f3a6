// Fields of a tag: any names set to any values.
//
// Input: the version as a digit, then lines of UTF-8, a name and a value in turn.

#include "FuzzCheck.h"
#include "MP3Tag.h"
#include <cstddef>
#include <cstdint>
#include <string>

namespace
{
constexpr char STRANGER[] = "GEOB"; // a frame of which no field knows

bool IsASCII(const LyString& str)
{
    for (int i = 0; i < str.GetLength(); ++i)
    {
        if (str[i] < 1 || str[i] > 127)
            return false;
    }
    return true;
}

void LoadStranger(CID3v2Tag& tag, char cVersion)
{
    std::string strTag = "ID3";
    strTag += static_cast<char>(cVersion - '0');
    strTag.append("\0\0\0\0\0\x0D", 6).append(STRANGER).append("\0\0\0\x03\0\0abc", 9);
    LyBuffer buffer;
    Check(buffer.FromBuffer(strTag.data(), static_cast<int>(strTag.size())) && tag.Load(buffer, 0));
    Check(tag.m_aryFrames.GetSize() == 1);
}

void CheckStranger(const CID3v2Tag& tag)
{
    int nFound = 0;
    for (const CID3v2Frame* pFrame : tag.m_aryFrames)
        nFound += pFrame->m_Header.HasID(STRANGER) && pFrame->m_Data.GetSize() == 3;
    Check(nFound == 1);
}

void SetOne(CID3v2Tag& tag, const LyString& strName, const LyString& strValue)
{
    int nPos = 0;
    const bool bKnown = tag.FindField(strName, nPos, false, ID3V2_FIELD_ANY_FLAGS) != nullptr;
    const bool bSet = tag.Set(strName, strValue);
    const LyString strRead = tag.GetSimple(strName, 1);
    if (bSet)
    {
        Check(tag.m_bDirty && !strValue.IsEmpty());
        // A name beyond Latin-1 may have been cut, and then nobody finds it.
        Check(!IsASCII(strName) || tag.GetSimple(strName, 0).GetLength() >= 0);
        Check(bKnown || !IsASCII(strName) || !IsASCII(strValue) || strRead == strValue);
    }
    if (bKnown)
        return;
    const int nFrames = tag.m_aryFrames.GetSize();
    Check(!tag.Set(strName, L"") && tag.GetSimple(strName, 1).IsEmpty());
    Check(tag.m_aryFrames.GetSize() == nFrames - (bSet && IsASCII(strName)) || !IsASCII(strName));
    (void)tag.Set(strName, strValue);
}

void CheckWhole(CID3v2Tag& tag)
{
    for (int i = -1; i <= tag.m_aryFrames.GetSize(); ++i)
        Check(!tag.GetFrameSummary(i).IsEmpty());
    LyBuffer buffer;
    Check(tag.SaveToBuffer(buffer, 0));
    CheckStranger(tag);
    CID3v2Tag saved;
    Check(saved.Load(buffer, 0) && saved.m_aryFrames.GetSize() == tag.m_aryFrames.GetSize());
    for (int i = 0; i < saved.m_aryFrames.GetSize(); ++i)
        Check(saved.m_aryFrames[i]->m_Properties.CompareProperties(tag.m_aryFrames[i]->m_Properties));
}

LyString TakeLine(const uint8_t*& pData, const uint8_t* pEnd)
{
    std::string strLine;
    while (pData < pEnd && *pData != '\n')
        strLine += static_cast<char>(*pData++);
    pData += pData < pEnd;
    return LyString().FromUTF8(reinterpret_cast<const unsigned char*>(strLine.c_str()));
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    CID3v2Tag tag;
    const uint8_t* pEnd = pData + nBytes;
    const bool bVersion = nBytes > 0 && pData[0] >= '3' && pData[0] <= '4';
    LoadStranger(tag, bVersion ? static_cast<char>(*pData++) : '3');
    while (pData < pEnd)
    {
        const LyString strName = TakeLine(pData, pEnd);
        const LyString strValue = TakeLine(pData, pEnd);
        if (strName != L"Image File") // its value is a file to load
            SetOne(tag, strName, strValue);
        CheckStranger(tag);
    }
    CheckWhole(tag);
    return 0;
}
