#include "CueLine.h"

#include "PathResolve.h"
#include "TextDecode.h"

namespace
{
constexpr std::string_view BLANKS = " \t";

struct CUE_FILE_TYPE
{
    std::string_view m_strWord;
    SECTOR_SOURCE_KIND m_nKind;
};

constexpr CUE_FILE_TYPE s_aryFileTypes[] = {
    {"BINARY", SECTOR_SOURCE_RAW},
    {"MOTOROLA", SECTOR_SOURCE_RAW_SWAPPED},
    {"WAVE", SECTOR_SOURCE_AUDIO},
    {"AIFF", SECTOR_SOURCE_AUDIO},
    {"MP3", SECTOR_SOURCE_AUDIO},
    // Not in the format, but written by converters.
    {"FLAC", SECTOR_SOURCE_AUDIO},
    {"OGG", SECTOR_SOURCE_AUDIO},
    {"OPUS", SECTOR_SOURCE_AUDIO},
    {"WAV", SECTOR_SOURCE_AUDIO},
};

const CUE_FILE_TYPE* FindFileType(std::string_view strWord)
{
    for (const CUE_FILE_TYPE& type : s_aryFileTypes)
        if (EqualNoCase(strWord, type.m_strWord))
            return &type;
    return nullptr;
}

SECTOR_SOURCE_KIND GuessKind(std::string_view strName)
{
    for (std::string_view strRaw : {".bin", ".img", ".iso", ".raw"})
        if (EqualNoCase(GetNameExtension(strName), strRaw))
            return SECTOR_SOURCE_RAW;
    return SECTOR_SOURCE_AUDIO;
}
} // namespace

std::string_view TrimBlanks(std::string_view str)
{
    size_t nFirst = str.find_first_not_of(BLANKS);
    return nFirst == std::string_view::npos ? std::string_view()
                                            : str.substr(nFirst, str.find_last_not_of(BLANKS) - nFirst + 1);
}

std::string_view TakeWord(std::string_view& strRest)
{
    strRest = TrimBlanks(strRest);
    std::string_view strWord = strRest.substr(0, strRest.find_first_of(BLANKS));
    strRest = TrimBlanks(strRest.substr(strWord.size()));
    return strWord;
}

std::string_view TakeLine(std::string_view& strText)
{
    size_t nEnd = strText.find_first_of("\r\n");
    std::string_view strLine = strText.substr(0, nEnd);
    if (nEnd == std::string_view::npos)
        strText = {};
    else
        strText.remove_prefix(strText.substr(nEnd).starts_with("\r\n") ? nEnd + 2 : nEnd + 1);
    return strLine;
}

std::string UnquoteArgument(std::string_view strArgument)
{
    strArgument = TrimBlanks(strArgument);
    if (strArgument.starts_with('"'))
        strArgument.remove_prefix(1);
    if (strArgument.ends_with('"'))
        strArgument.remove_suffix(1);
    return std::string(strArgument);
}

bool ParseFileArguments(std::string_view strArguments, std::string& strName, SECTOR_SOURCE_KIND& kind)
{
    strArguments = TrimBlanks(strArguments);
    std::string_view strQuoted = strArguments;
    std::string_view strType;
    size_t nLastMark = strArguments.rfind('"');
    if (strArguments.starts_with('"') && nLastMark > 0 && nLastMark != std::string_view::npos)
    {
        strType = TrimBlanks(strArguments.substr(nLastMark + 1));
        strQuoted = strArguments.substr(0, nLastMark + 1);
    }
    else if (size_t nBlank = strArguments.find_last_of(BLANKS); nBlank != std::string_view::npos)
    {
        // Without marks, or with one: the last word is the type if it is known as one, else a part of the name.
        std::string_view strWord = strArguments.substr(nBlank + 1);
        if (FindFileType(strWord) != nullptr)
        {
            strType = strWord;
            strQuoted = strArguments.substr(0, nBlank);
        }
    }
    strName = UnquoteArgument(strQuoted);
    const CUE_FILE_TYPE* pType = FindFileType(strType);
    if (pType != nullptr)
        kind = pType->m_nKind;
    else
        kind = strType.empty() ? GuessKind(strName) : SECTOR_SOURCE_AUDIO;
    return !strName.empty();
}
