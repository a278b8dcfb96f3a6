// Metadata by field names, and the chunks that hold it.

#include "LyFileSystem.h"
#include "LyStringFormat.h"
#include "OptionsHelper.h"
#include "WAVInfo.h"
#include <climits>
#include <cstring>

namespace
{
constexpr wchar_t UITS_FIELD[] = L"UITS Payload";
constexpr wchar_t IMAGE_FIELD[] = L"Image File";
constexpr wchar_t OPTIONS_KEY[] = L"Plugins\\Input\\WAV";
constexpr wchar_t NO_TAGS_OPTION[] = L"DoNotWriteTagsToFiles";

// What a mime type holds, in the order in which it is looked for, and the extension that stands for it.
struct IMAGE_TYPE
{
    const wchar_t* pMime;
    const wchar_t* pExtension;
};
constexpr IMAGE_TYPE s_aryImageTypes[] = {
    {L"bmp", L"bmp"},  //
    {L"jpeg", L"jpg"}, //
    {L"jpg", L"jpg"},  //
    {L"gif", L"gif"},  //
    {L"png", L"png"},  //
    {L"tiff", L"tif"}, //
    {L"tif", L"tif"},  //
};
constexpr wchar_t OTHER_IMAGE_EXTENSION[] = L"jpg";

LyString GetImageExtension(LyString strMime)
{
    strMime.Lower();
    for (const IMAGE_TYPE& type : s_aryImageTypes)
    {
        if (strMime.Find(type.pMime) >= 0)
            return type.pExtension;
    }
    return OTHER_IMAGE_EXTENSION;
}

// Turns the base64 text of a picture into the name of a file that holds it. What fails leaves the text.
void MoveImageToFile(const LyString& strMime, LyString& strValue)
{
    LyBuffer image;
    const LyString strName = LyFileSystem::GetTemporaryFilename(L"WAV Image", GetImageExtension(strMime), false, true);
    if (image.FromStringBase64(strValue) && image.ToFile(strName))
        strValue = strName;
}

const wchar_t* GetTagName(int nMajorVersion)
{
    switch (nMajorVersion)
    {
    case 4:
        return L"ID3v2.4";
    case 3:
        return L"ID3v2.3";
    default:
        return L"ID3v2";
    }
}
} // namespace

bool CIFFInfo::GetTagWritingEnabled()
{
    if (m_nTagWritingEnabled == OPTION_NOT_READ)
        m_nTagWritingEnabled = COptionsHelper(OPTIONS_KEY, true).Get(NO_TAGS_OPTION, 0) == 0;
    return m_nTagWritingEnabled != 0;
}

bool CIFFInfo::ChunkIsID3(const void* pID)
{
    for (const char* pName : {"id3 ", "ID3 ", "tag "})
    {
        if (pID != nullptr && std::memcmp(pID, pName, sizeof CIFFChunk::id) == 0)
            return true;
    }
    return false;
}

int CIFFInfo::ReadID3Tags(unsigned int nSize)
{
    if (m_pReader == nullptr)
        return -1;
    const long long nPosition = m_pReader->GetPosition();
    // No memory is asked for that the file could not fill.
    if (nSize > INT_MAX || m_pReader->GetLength() - nPosition < nSize)
        return -1;
    // The first tag of a file is read to where it is kept, so that a large one is not there twice.
    LyBuffer furtherTag;
    LyBuffer& buffer = m_ID3v2Tag.m_RawTag.GetSize() == 0 ? m_ID3v2Tag.m_RawTag : furtherTag;
    (void)buffer.FromReader(m_pReader, static_cast<int>(nSize));
    if (buffer.GetSize() < static_cast<int>(nSize))
    {
        buffer.Empty(true);
        return -1;
    }
    if (!m_ID3v2Tag.Load(buffer, nPosition))
    {
        // Some writers count a byte too many.
        (void)buffer.RemoveRight(1);
        (void)m_ID3v2Tag.Load(buffer, nPosition);
    }
    return m_ID3v2Tag.m_bLoaded ? 1 : 0;
}

bool CIFFInfo::Get(const LyString& strField, LyString& strValue)
{
    if (LyHash::AreTextsEqual(strField, UITS_FIELD, false))
    {
        if (m_pUITSChunk == nullptr)
            return false;
        strValue.FromBuffer(m_pUITSChunk->m_Data, LYSTRING_ENCODING_FIND_OUT, false);
        return true;
    }
    LyPropertyMap map;
    if (!m_ID3v2Tag.Get(strField, map, 0))
        return false;
    strValue = map.GetProperty(L"Value");
    if (strField == IMAGE_FIELD)
        MoveImageToFile(map.GetProperty(L"Mime Type"), strValue);
    return true;
}

bool CIFFInfo::Set(const LyString& strField, const LyString& strValue)
{
    return GetSupportTags() && GetTagWritingEnabled() && m_ID3v2Tag.Set(strField, strValue);
}

LyString CIFFInfo::GetTagFormatString()
{
    LyString str;
    if (!m_ID3v2Tag.m_bLoaded)
        return str;
    str.Format(L"%s Tag: (%d bytes)\r\n", GetTagName(m_ID3v2Tag.m_Header.m_nMajorVersion),
               m_ID3v2Tag.m_RawTag.GetSize());
    for (int i = 0; i < m_ID3v2Tag.m_aryFrames.GetSize(); ++i)
    {
        const LyString strSummary = m_ID3v2Tag.GetFrameSummary(i);
        if (!strSummary.IsEmpty())
            str += LyFormatString(L"  %s\r\n", strSummary);
    }
    return str;
}
