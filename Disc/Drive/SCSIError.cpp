#include "SCSIError.h"

#include "MMC.h"
#include "OptionsHelper.h"

static const SCSI_ERROR_ROW* FindRow(int nSenseKey, int nASC, int nASCQ)
{
    for (const SCSI_ERROR_ROW& row : g_SCSIErrorList)
    {
        if (row.nSenseKey == nSenseKey && row.nASC == nASC && row.nASCQ == nASCQ)
            return &row;
    }
    return nullptr;
}

LyString CSCSIError::GetErrorString(int nSenseKey, int nASC, int nASCQ)
{
    constexpr int LAST_ENCLOSURE_QUALIFIER = 4;

    LyString strText;
    if (const SCSI_ERROR_ROW* pRow = FindRow(nSenseKey, nASC, nASCQ))
        return strText.FromANSI(pRow->pText);
    if ((nASC == ASC_UNSUPPORTED_ENCLOSURE || nASC == ASC_ENCLOSURE_FAILURE) && nASCQ <= LAST_ENCLOSURE_QUALIFIER)
        return TranslateString(L"Enclosure services failure.");
    if (nSenseKey == SENSE_HARDWARE_ERROR && nASC == ASC_DIAGNOSTIC_FAILURE)
        return strText.Format(TranslateString(L"Diagnostic failure on component %d"), nASCQ);
    if (nSenseKey == SENSE_ABORTED_COMMAND && nASC == ASC_TAGGED_OVERLAP)
        return strText.Format(TranslateString(L"Tagged overlapped commands (%d = queue tag)"), nASCQ);

    LyString strUnknown = TranslateString(L"Unknown error. Device codes");
    return strText.Format(L"%s: %d, %d, %d", strUnknown, nSenseKey, nASC, nASCQ);
}
