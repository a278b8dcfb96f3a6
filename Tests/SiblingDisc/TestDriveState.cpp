#include "DriveState.h"
#include <gtest/gtest.h>

TEST(DriveState, TheAnswerToTestUnitReadyIsTheState)
{
    struct CASE
    {
        bool bGood;
        DRIVE_SENSE sense;
        DISC_DRIVE_STATE eState;
        const char* pReason; // a part of it; null: there is none
    };
    const CASE aryCases[] = {
        {true, {}, DISC_DRIVE_READY, nullptr},
        {true, {2, 0x3A, 1}, DISC_DRIVE_READY, nullptr}, // old sense data does not count
        {false, {2, 0x3A, 0}, DISC_DRIVE_NO_DISC, nullptr},
        {false, {2, 0x3A, 1}, DISC_DRIVE_NO_DISC, nullptr},
        {false, {2, 0x3A, 2}, DISC_DRIVE_TRAY_OPEN, nullptr},
        {false, {2, 0x04, 1}, DISC_DRIVE_BECOMING, nullptr},
        {false, {2, 0x04, 7}, DISC_DRIVE_BECOMING, nullptr},
        {false, {2, 0x30, 2}, DISC_DRIVE_UNUSABLE, "cannot read this kind of disc (2/30/02)"},
        {false, {3, 0x02, 0}, DISC_DRIVE_UNUSABLE, "cannot read this disc (3/02/00)"},
        {false, {4, 0x44, 0}, DISC_DRIVE_UNUSABLE, "the error 4/44/00"},
        {false, {0xB, 0x08, 1}, DISC_DRIVE_UNUSABLE, "the error B/08/01"},
        {false, {6, 0x28, 0}, DISC_DRIVE_UNUSABLE, "the error 6/28/00"}, // again and again
        {false, {}, DISC_DRIVE_UNUSABLE, "does not answer"},
    };
    for (const CASE& row : aryCases)
    {
        DRIVE_LISTING listing;
        listing.m_strReason = "of earlier";
        JudgeReadiness(listing, row.bGood, row.sense);
        EXPECT_EQ(row.eState, listing.m_eState) << int(row.sense.m_nASC);
        if (row.pReason == nullptr)
            EXPECT_EQ("", listing.m_strReason);
        else
            EXPECT_NE(std::string::npos, listing.m_strReason.find(row.pReason)) << listing.m_strReason;
    }
}
