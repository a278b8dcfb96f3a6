// A log of doubtful sectors from any text: what is taken comes back as the same text, and its ranges keep order.

#include "FuzzCheck.h"
#include "SecureRipLog.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    const std::string strText(reinterpret_cast<const char*>(pData), nBytes);
    SecureRipLog log;
    if (!log.SetText(strText))
    {
        if (log.GetSize() != 0)
            __builtin_trap();
        return 0;
    }
    SecureRipLog again;
    if (!again.SetText(log.GetText()) || again.GetText() != log.GetText())
        __builtin_trap();
    int nEnd = 0;
    int nSectors = 0;
    for (const RIP_SECTION& range : log.GetBadRanges())
    {
        if (range.nSectors < 1 || range.nStartSector < nEnd || !log.IsBad(range.nStartSector))
            __builtin_trap();
        nEnd = range.nStartSector + range.nSectors;
        nSectors += range.nSectors;
    }
    if (nSectors != log.CountBadSectors())
        __builtin_trap();
    (void)log.GetEntriesOfTrack(1);
    return 0;
}
