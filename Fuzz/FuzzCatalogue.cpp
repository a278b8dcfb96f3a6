// Message catalogues from hostile bytes: every text of one that loads lies in it and is found by its original.

#include "Catalogue.h"
#include "FuzzCheck.h"
#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    Catalogue catalogue;
    std::string strReason;
    const bool bLoaded = catalogue.Load(std::string(reinterpret_cast<const char*>(pData), nBytes), strReason);
    Check(bLoaded == strReason.empty() && bLoaded == (catalogue.GetCount() > 0));
    for (int nIndex = 0; nIndex < catalogue.GetCount(); ++nIndex)
    {
        const auto [strOriginal, strTranslation] = catalogue.GetAt(nIndex);
        Check(catalogue.Find(strOriginal).data() == strTranslation.data());
        Check(catalogue.Find(strOriginal).size() == strTranslation.size());
    }
    (void)catalogue.Find(std::string_view(reinterpret_cast<const char*>(pData), nBytes)); // there, or not
    return 0;
}
