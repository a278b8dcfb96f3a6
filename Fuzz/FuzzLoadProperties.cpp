// Property maps from hostile text: what was loaded, saved and loaded again is the same.
//
// Input: a byte for the position, then one byte for each character.

#include "FuzzCheck.h"
#include "PropertyMap.h"
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    if (nBytes < 1)
        return 0;
    LyString strText;
    for (size_t i = 1; i < nBytes && pData[i] != 0; ++i)
        strText += static_cast<wchar_t>(pData[i]);
    const int nStart = static_cast<signed char>(pData[0]);
    int nPosition = nStart;
    LyPropertyMap map;
    map.LoadProperties(strText, nPosition);
    Check(nPosition >= nStart && (nPosition <= strText.GetLength() || nPosition == nStart));
    Check(map.m_pProperties == nullptr || map.m_pProperties->GetCount() > 0);

    LyString strSaved(L"x");
    map.SaveProperties(strSaved, true);
    LyPropertyMap again;
    nPosition = 1;
    again.LoadProperties(strSaved, nPosition);
    Check(nPosition == strSaved.GetLength());
    Check(again.CompareProperties(map) && map.CompareProperties(again));
    (void)map.DumpProperties(L"<", L">");
    (void)map.GetPropertyInt(L"a", 1);
    (void)map.GetPropertyDouble(L"a", 1);
    (void)map.GetPropertyPointer(L"a", nullptr);
    return 0;
}
