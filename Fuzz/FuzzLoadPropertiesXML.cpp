// Property maps from hostile XML: what was loaded, saved and loaded again is the same.
//
// Input: one byte for each character of the document.

#include "FuzzCheck.h"
#include "PropertyMap.h"
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    LyString strXML;
    for (size_t i = 0; i < nBytes && pData[i] != 0; ++i)
        strXML += static_cast<wchar_t>(pData[i]);
    LyPropertyMap map;
    map.SetProperty(L"old", L"1", false);
    const bool bLoaded = map.LoadPropertiesXML(strXML, L"R", 1.0);
    Check(bLoaded || map.GetHasProperty(L"old"));

    // Control characters go on the first way, so the second one changes nothing.
    LyPropertyMap saved;
    Check(saved.LoadPropertiesXML(map.SavePropertiesXML(L"R", false, 1.0), L"R", 1.0));
    LyPropertyMap again;
    Check(again.LoadPropertiesXML(saved.SavePropertiesXML(L"R", false, 1.0), L"R", 1.0));
    Check(again.CompareProperties(saved) && saved.CompareProperties(again));
    return 0;
}
