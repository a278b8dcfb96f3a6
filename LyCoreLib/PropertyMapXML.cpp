// The XML form of a property map.

#include "LyStringFormat.h"
#include "Markup.h"
#include "PropertyMap.h"
#include <climits>

namespace
{
constexpr wchar_t ITEM_ELEMENT[] = L"Item";
constexpr wchar_t NAME_ATTRIBUTE[] = L"Name";
constexpr wchar_t VERSION_ATTRIBUTE[] = L"version";
} // namespace

LyString LyPropertyMap::SavePropertiesXML(const LyString& strRootName, bool bEmptyIfNoProperties, double fVersion) const
{
    if (bEmptyIfNoProperties && m_pProperties == nullptr)
        return LyString();
    CMarkup markup;
    SavePropertiesExistingXML(markup);
    LyString strVersion;
    LyString::FromDecimalStatic(strVersion, fVersion, 1, true, 0, 0);
    return L"<" + strRootName + L" version=\"" + strVersion + L"\">\r\n" + markup.GetDoc() + L"</" + strRootName + L">";
}

bool LyPropertyMap::LoadPropertiesXML(const LyString& strXML, const LyString& strRootName, double fVersion)
{
    if (strXML.IsEmpty())
        return true;
    CMarkup markup(strXML);
    if (!markup.FindElem(strRootName))
        return false;
    const double fFound = LyString::GetDouble(markup.GetAttrib(VERSION_ATTRIBUTE), nullptr, true, INT_MAX, true);
    if (fFound != fVersion)
        return false;
    (void)markup.IntoElem(); // there is an element to step into, and one to step out of
    LoadPropertiesExistingXML(markup);
    (void)markup.OutOfElem();
    return true;
}

void LyPropertyMap::SavePropertiesExistingXML(CMarkup& markup) const
{
    if (m_pProperties == nullptr)
        return;
    LyString strKey;
    LyString strValue;
    LyPOSITION position = m_pProperties->GetStartPosition();
    while (m_pProperties->GetNextAssoc(position, strKey, strValue))
    {
        // A key above the limit of a tag is refused; the item stays without a name.
        if (markup.AddElem(ITEM_ELEMENT, strValue))
            (void)markup.SetAttrib(NAME_ATTRIBUTE, strKey);
    }
}

void LyPropertyMap::LoadPropertiesExistingXML(CMarkup& markup)
{
    DeleteProperties();
    while (markup.FindElem(ITEM_ELEMENT))
        SetProperty(markup.GetAttrib(NAME_ATTRIBUTE), markup.GetData(), false);
}
