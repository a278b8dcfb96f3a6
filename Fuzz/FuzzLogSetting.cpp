// The setting of the log, and the lines that it leads to, from any text.

#include "LogSetting.h"
#include "OneLineText.h"
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    const std::string strText(reinterpret_cast<const char*>(pData), nBytes);
    LogSetting setting;
    const bool bGood = setting.Parse(strText.c_str());
    if (setting.IsAnyOn() && (!bGood || strText.c_str()[0] == 0))
        __builtin_trap(); // only a text of the right form switches something on
    if (setting.m_bAll && !setting.m_aryAreas.empty())
        __builtin_trap();
    for (int nArea : setting.m_aryAreas)
        if (nArea < 0 || !setting.IsOn(nArea))
            __builtin_trap();

    const std::wstring strWide(strText.begin(), strText.end());
    std::string strLine;
    AppendOneLine(strLine, strWide.data(), strWide.size());
    for (char c : strLine)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            __builtin_trap(); // a line holds no control character
    return 0;
}
