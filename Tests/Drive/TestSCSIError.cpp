#include "RecordingTools.h"
#include "SCSIError.h"
#include <gtest/gtest.h>

static std::wstring ErrorText(int nSenseKey, int nASC, int nASCQ)
{
    return static_cast<const wchar_t*>(CSCSIError::GetErrorString(nSenseKey, nASC, nASCQ));
}

TEST(SCSIErrorTable, HoldsItsRowsInTheirOrder)
{
    ASSERT_EQ(197, static_cast<int>(std::size(g_SCSIErrorList)));
    EXPECT_STREQ("No additional error information available.", g_SCSIErrorList[0].pText);
    EXPECT_STREQ("Write error - recovery needed.", g_SCSIErrorList[49].pText);
    EXPECT_STREQ("Media load or eject failed.", g_SCSIErrorList[99].pText);
    EXPECT_STREQ("No more track reservations allowed.", g_SCSIErrorList[149].pText);
    EXPECT_STREQ("Read error - loss of streaming.", g_SCSIErrorList[196].pText);
}

// FNV-1a over the three values and the text of each row, worked out from the published list: no row is mistyped.
TEST(SCSIErrorTable, MatchesThePublishedListByteForByte)
{
    unsigned int nHash = 0x811c9dc5;
    auto add = [&nHash](int n) { nHash = (nHash ^ static_cast<unsigned char>(n)) * 16777619U; };
    for (const SCSI_ERROR_ROW& row : g_SCSIErrorList)
    {
        add(row.nSenseKey);
        add(row.nASC);
        add(row.nASCQ);
        for (const char* p = row.pText; *p != 0; p++)
            add(*p);
    }
    EXPECT_EQ(0x0ba9c574U, nHash);
}

TEST(SCSIErrorTable, EveryRowIsFoundByItsValues)
{
    for (const SCSI_ERROR_ROW& row : g_SCSIErrorList)
    {
        std::string strText(row.pText);
        EXPECT_EQ(std::wstring(strText.begin(), strText.end()), ErrorText(row.nSenseKey, row.nASC, row.nASCQ));
    }
}

struct ERROR_CASE
{
    const char* pName;
    int nSenseKey;
    int nASC;
    int nASCQ;
    const wchar_t* pText;
};

static const ERROR_CASE s_aryErrorCases[] = {
    {"ZerosAreTheFirstRow", 0, 0, 0, L"No additional error information available."},
    {"MediumNotPresent", 2, 0x3A, 0x00, L"Medium not present."},
    {"TheOddSpellingStays", 5, 0x24, 0x00, L"Invalid field in CDb."},
    {"TheMissingBlankStays", 5, 0x6F, 0x02, L"Copy protection key exchange failure -key not established."},
    {"QualifierInHexadecimal", 5, 0x30, 0x10, L"Medium not formatted."},
    {"QualifierFF", 1, 0x5D, 0xFF, L"Failure prediction threshold exceeded (false)."},
    {"Miscompare", 10, 0x1D, 0x00, L"Miscompare during verify operation."},
    {"EnclosureWhateverTheKey", 2, 0x35, 1, L"Enclosure services failure."},
    {"EnclosureUpToQualifier4", 9, 0x34, 4, L"Enclosure services failure."},
    {"EnclosureBeyondQualifier4", 5, 0x34, 9, L"Unknown error. Device codes: 5, 52, 9"},
    {"EnclosureQualifier5", 5, 0x35, 5, L"Unknown error. Device codes: 5, 53, 5"},
    {"ComponentDiagnostic", 4, 0x40, 7, L"Diagnostic failure on component 7"},
    {"ComponentNumberInDecimal", 4, 0x40, 0x80, L"Diagnostic failure on component 128"},
    {"ComponentNeedsTheKey", 5, 0x40, 7, L"Unknown error. Device codes: 5, 64, 7"},
    {"QueueTag", 11, 0x4D, 33, L"Tagged overlapped commands (33 = queue tag)"},
    {"QueueTagNeedsTheKey", 4, 0x4D, 33, L"Unknown error. Device codes: 4, 77, 33"},
    {"EnclosureGoesAheadOfTheKeys", 4, 0x34, 0, L"Enclosure services failure."},
    {"FlagBitsOfTheKeyFindNoRow", 0x82, 0x3A, 0, L"Unknown error. Device codes: 130, 58, 0"},
    {"NothingKnown", 9, 0x99, 0x11, L"Unknown error. Device codes: 9, 153, 17"},
    {"NegativeValues", -1, -2, -3, L"Unknown error. Device codes: -1, -2, -3"},
};

class SCSIError : public testing::TestWithParam<ERROR_CASE>
{
};

TEST_P(SCSIError, GivesTheText)
{
    const ERROR_CASE& error = GetParam();
    EXPECT_EQ(error.pText, ErrorText(error.nSenseKey, error.nASC, error.nASCQ));
}

INSTANTIATE_TEST_SUITE_P(Cases, SCSIError, testing::ValuesIn(s_aryErrorCases),
                         [](const auto& row) { return row.param.pName; });

TEST(SCSIErrorTranslation, ConcernsTheFallBacksOnly)
{
    RecordingTools tools;
    tools.m_strTranslationMark = L"~";
    EXPECT_EQ(L"Medium not present.", ErrorText(2, 0x3A, 0));
    EXPECT_EQ(L"~Enclosure services failure.", ErrorText(2, 0x35, 1));
    EXPECT_EQ(L"~Diagnostic failure on component 7", ErrorText(4, 0x40, 7));
    EXPECT_EQ(L"~Tagged overlapped commands (33 = queue tag)", ErrorText(11, 0x4D, 33));
    EXPECT_EQ(L"~Unknown error. Device codes: 9, 153, 17", ErrorText(9, 0x99, 0x11));
}
