#include "THCDAInputSource.h"
#include <gtest/gtest.h>

namespace
{
constexpr int UNTOUCHED = -77;

struct PATH_CASE
{
    const wchar_t* pPath;
    bool bGood;
    const wchar_t* pDrive;
    int nTrack; // what the caller's variable holds afterwards
};

const PATH_CASE s_aryCases[] = {
    // The URL form
    {L"cda://E:,5", true, L"E:", 5},
    {L"CDA://E:,5", true, L"E:", 5},
    {L"CdA://E:,99", true, L"E:", 99},
    {L"cda:///discs/a disc.cue,1", true, L"/discs/a disc.cue", 1},
    {L"cda://E:, 7x", true, L"E:", 7}, // what follows the digits is ignored
    {L"cda://E:,5,6", true, L"E:", 5}, // the first comma ends the drive
    {L"cda://,5", false, L"", 5},      // written, though the form fails
    {L"cda://E:,0", false, L"E:", 0},
    {L"cda://E:,100", false, L"E:", 100},
    {L"cda://E:,-3", false, L"E:", -3},
    {L"cda://E:,", false, L"E:", 0},
    {L"cda://E:,text", false, L"E:", 0},
    {L"cda://E:", false, L"as before", UNTOUCHED}, // no comma: neither is written
    {L"", false, L"as before", UNTOUCHED},
    {L"E:,5", false, L"as before", UNTOUCHED}, // no prefix, and no file of type cda
    // The file form: the drive is written and never the track
    {L"/media/cdrom/Track05.cda", true, L"/", UNTOUCHED},
    {L"/media/cdrom/TRACK05.cda", true, L"/", UNTOUCHED},
    {L"/media/cdrom/track99.cda", true, L"/", UNTOUCHED},
    {L"cda:///media/cdrom/Track05.cda", true, L"/", UNTOUCHED}, // seen without the prefix
    {L"/media/cdrom/Track5.cda", true, L"/", UNTOUCHED},        // "5." reads as 5
    {L"/media/cdrom/Track00.cda", false, L"/", UNTOUCHED},
    {L"/media/cdrom/Trackxx.cda", false, L"/", UNTOUCHED},
    {L"/media/cdrom/Track05.CDA", false, L"as before", UNTOUCHED}, // the type must be exactly "cda"
    {L"/media/cdrom/Track05.wav", false, L"as before", UNTOUCHED},
    {L"/media/cdrom/Song05.cda", false, L"as before", UNTOUCHED},
    {L"Track05.cda", false, L"", UNTOUCHED}, // no drive
    // A failed URL form that is a good file
    {L"cda:///media/Track07.cda,0/Track08.cda", true, L"/", 0},
};
} // namespace

TEST(TrackAndDrive, PathsGiveTheirParts)
{
    for (const PATH_CASE& row : s_aryCases)
    {
        LyString strDrive(L"as before");
        int nTrack = UNTOUCHED;
        EXPECT_EQ(row.bGood, CTHCDAInputSource::GetTrackAndDrive(row.pPath, strDrive, nTrack))
            << LyStringUTF8(row.pPath);
        EXPECT_STREQ(row.pDrive, strDrive) << LyStringUTF8(row.pPath);
        EXPECT_EQ(row.nTrack, nTrack) << LyStringUTF8(row.pPath);
    }
}

TEST(TrackAndDrive, TheCallersPathIsNotChanged)
{
    const LyString strPath(L"cda://E:,5");
    LyString strDrive;
    int nTrack = 0;
    EXPECT_TRUE(CTHCDAInputSource::GetTrackAndDrive(strPath, strDrive, nTrack));
    EXPECT_STREQ(L"cda://E:,5", strPath);
}
