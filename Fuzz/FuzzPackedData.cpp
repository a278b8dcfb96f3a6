// The packed mode pages of a drive, and every question that is answered from them. The input is the text, one character
// for each byte.

#include "FuzzCheck.h"
#include "THDriveInterface.h"
#include <cstddef>
#include <cstdint>

static void QueryAll(DSENSEMASK& mask)
{
    for (int nCode = -1; nCode <= 52; nCode++)
    {
        unsigned int nValue = 0xDEADBEEF;
        bool bResult = CTHDriveInterface::QueryCDParms(mask, nCode, nValue);
        Check(nValue <= 0xFFFF);
        Check(bResult || nValue == 0);
        bool bUnknown = nCode < 1 || nCode > 50 || (nCode >= 36 && nCode <= 39) || (nCode >= 42 && nCode <= 47);
        Check(!bUnknown || !bResult);
        bool bMultiplier = nCode == 29 || nCode == 48;
        Check(!bMultiplier || bResult == (nValue != 0));
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    LyString strPacked;
    strPacked.FromANSI(reinterpret_cast<const char*>(pData), static_cast<int>(nBytes), false);
    DSENSEMASK mask = {};
    mask.InitFromPackedData(strPacked);
    QueryAll(mask);
    mask.m_bCapabilitiesValid = true;
    mask.m_bCDParamsValid = true;
    QueryAll(mask);
    return 0;
}
