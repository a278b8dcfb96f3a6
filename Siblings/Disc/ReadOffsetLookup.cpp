#include "ReadOffsetLookup.h"
#include "OptionsHelper.h"
#include "ReadOffsetOption.h"
#include "SheetText.h"
#include "TextDecode.h"

namespace
{
std::wstring GetOption(const COptionsHelper& options, const std::wstring& strKey)
{
    return static_cast<const wchar_t*>(options.Get(strKey.c_str(), LyString()));
}

std::string MakeWarning(const std::wstring& strKey, const std::wstring& strValue, const char* pWanted)
{
    return "The option \"" + NarrowUTF8(strKey) + "\" of \"" + NarrowUTF8(DISC_SERVICE_STORE) + "\" is " +
           QuoteWord(NarrowUTF8(strValue)) + " and was left out of account; set it to " + pWanted + ".";
}
} // namespace

READ_OFFSET LookUpReadOffset(const DRIVE_DESCRIPTION& description)
{
    READ_OFFSET offset;
    const COptionsHelper options(DISC_SERVICE_STORE, false);
    const std::wstring strOffsetKey = GetReadOffsetKey(description.m_strVendor, description.m_strModel);
    const std::wstring strOffset = GetOption(options, strOffsetKey);
    if (strOffset.empty())
        return offset;
    const std::optional<int> nFrames = ParseReadOffset(strOffset);
    if (!nFrames)
    {
        offset.m_strWarning = MakeWarning(strOffsetKey, strOffset, "a whole number of sample frames, as +6 or -582");
        return offset;
    }
    offset.m_nFrames = *nFrames;
    const std::wstring strOverReadKey = GetOverReadKey(description.m_strVendor, description.m_strModel);
    const std::wstring strOverRead = GetOption(options, strOverReadKey);
    const std::string strWord = NarrowUTF8(strOverRead);
    offset.m_bOverRead = EqualNoCase(strWord, "true") || strWord == "1";
    if (!strWord.empty() && !offset.m_bOverRead && !EqualNoCase(strWord, "false") && strWord != "0")
        offset.m_strWarning = MakeWarning(strOverReadKey, strOverRead, "true or false");
    return offset;
}
