#include "ProductInfo.h"
#include "ConfigFolder.h"
#include "UTF8.h"

const wchar_t* const ProductInfo::NAME = L"Rondel";
const wchar_t* const ProductInfo::VERSION = L"" RONDEL_VERSION;

namespace
{
wchar_t Fold(wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c; }

bool IsThisProduct(const wchar_t* pName)
{
    if (pName == nullptr || *pName == 0)
        return true;
    const wchar_t* pOwn = ProductInfo::NAME;
    while (*pName != 0 && Fold(*pName) == Fold(*pOwn))
    {
        pName++;
        pOwn++;
    }
    return *pName == *pOwn;
}
} // namespace

bool ProductInfo::Load(const wchar_t* pName, bool, bool, const wchar_t*, int)
{
    if (!IsThisProduct(pName))
        return false;
    m_bLoaded.store(true, std::memory_order_release);
    return true;
}

LyXString ProductInfo::GetAppdataDirectory()
{
    try
    {
        return {LyCom::SysAllocString(WidenUTF8(GetDataFolder()).c_str())};
    }
    catch (...)
    {
        return {};
    }
}
