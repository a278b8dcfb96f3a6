// The seal: any one byte that changes is found, and so is what is cut off or added.

#include "FullReport.h"
#include "LogSeal.h"
#include "ReportJson.h"
#include "ReportText.h"
#include <gtest/gtest.h>

namespace
{
// A log with a little of everything, so that all its bytes can be tried.
std::string MakeLog(bool bJson)
{
    RIP_REPORT report;
    report.strProgram = "rondel 1.0.0";
    report.aryFiles = {MakeFullFile(1)};
    return bJson ? MakeJsonLog(report) : MakeTextLog(report);
}
} // namespace

// The sums were made with sha256sum of what is ahead of the seal.
TEST(LogSeal, IsTheSHA256OfAllAheadOfIt)
{
    EXPECT_EQ("One line.\nSeal: SHA-256 b43a53f4b1f532bca5796d5a949423c2d849a7282513a9bd5f4ad40180c36c07\n",
              SealTextLog("One line.\n"));
    EXPECT_EQ(
        "{\"a\":1,\n  \"seal\": \"SHA-256 b77390ab5913d8b972cdccc8880478b48e8d4fa45c327ad443f578d3a41f75ed\"\n}\n",
        SealJsonLog("{\"a\":1}"));
}

TEST(LogSeal, EveryChangedByteIsFound)
{
    for (const bool bJson : {false, true})
    {
        std::string strLog = MakeLog(bJson);
        ASSERT_EQ(LOG_SEAL_RIGHT, CheckSeal(strLog));
        for (char& c : strLog)
        {
            const char cOriginal = c;
            for (const int nBit : {1, 32, 128})
            {
                c = static_cast<char>(cOriginal ^ nBit);
                ASSERT_NE(LOG_SEAL_RIGHT, CheckSeal(strLog)) << &c - strLog.data();
            }
            c = cOriginal;
        }
        EXPECT_EQ(LOG_SEAL_RIGHT, CheckSeal(strLog));
    }
}

TEST(LogSeal, EveryCutAndEveryAddedOrMissingByteIsFound)
{
    for (const bool bJson : {false, true})
    {
        const std::string strLog = MakeLog(bJson);
        for (size_t n = 0; n < strLog.size(); ++n)
        {
            ASSERT_NE(LOG_SEAL_RIGHT, CheckSeal(strLog.substr(0, n))) << n;
            ASSERT_NE(LOG_SEAL_RIGHT, CheckSeal(strLog.substr(n + 1))) << n;
            ASSERT_NE(LOG_SEAL_RIGHT, CheckSeal(std::string(strLog).erase(n, 1))) << n;
            ASSERT_NE(LOG_SEAL_RIGHT, CheckSeal(std::string(strLog).insert(n, 1, ' '))) << n;
        }
        EXPECT_EQ(LOG_SEAL_MISSING, CheckSeal(strLog + "\n"));
        EXPECT_EQ(LOG_SEAL_WRONG, CheckSeal(strLog + strLog));
    }
}

TEST(LogSeal, WrongIsNotMissing)
{
    for (const bool bJson : {false, true})
    {
        std::string strLog = MakeLog(bJson);
        strLog[strLog.find("1.0.0")] = '2';
        EXPECT_EQ(LOG_SEAL_WRONG, CheckSeal(strLog));
        strLog.resize(strLog.size() - 1);
        EXPECT_EQ(LOG_SEAL_MISSING, CheckSeal(strLog));
    }
    EXPECT_EQ(LOG_SEAL_MISSING, CheckSeal(""));
    EXPECT_EQ(LOG_SEAL_MISSING, CheckSeal("{}"));
    EXPECT_EQ(LOG_SEAL_MISSING, CheckSeal("Seal: SHA-256 \n"));
}

// A seal that has moved into the line ahead of it could stand in a title.
TEST(LogSeal, StandsOnALineOfItsOwn)
{
    std::string strLog = SealTextLog("Title: ");
    EXPECT_EQ(LOG_SEAL_MISSING, CheckSeal(strLog));
    EXPECT_EQ(LOG_SEAL_RIGHT, CheckSeal(SealTextLog("")));
}

TEST(LogSeal, TheKindIsToldByTheFirstByte)
{
    EXPECT_EQ(LOG_JSON, GetLogKind("{"));
    EXPECT_EQ(LOG_TEXT, GetLogKind(" {"));
    EXPECT_EQ(LOG_TEXT, GetLogKind(""));
}
