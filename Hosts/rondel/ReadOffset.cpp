#include "ReadOffset.h"
#include "OptionsHelper.h"
#include "ReadOffsetOption.h"

int FindReadOffset(const std::string& strVendor, const std::string& strModel)
{
    const COptionsHelper options(DISC_SERVICE_STORE, false);
    const LyString strValue = options.Get(GetReadOffsetKey(strVendor, strModel).c_str(), LyString());
    return ParseReadOffset(static_cast<const wchar_t*>(strValue)).value_or(0);
}
