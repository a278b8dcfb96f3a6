#include "DeviceDrive.h"
#include "DriveFactory.h"
#include "ImageDrive.h"
#include "ImageFiles.h"
#include "OffsetDrive.h"
#include "ProfiledDrive.h"
#include <gtest/gtest.h>

namespace
{
std::string GetKind(const std::string& strPath)
{
    std::string strError;
    const std::unique_ptr<ServiceDrive> pDrive = CreateServiceDrive(strPath, strError);
    const auto* pCorrected = dynamic_cast<const OffsetDrive*>(pDrive.get());
    const ServiceDrive* pInner = pCorrected != nullptr ? &pCorrected->GetInner() : nullptr;
    if (dynamic_cast<const DeviceDrive*>(pInner) != nullptr)
        return "device";
    if (dynamic_cast<const ProfiledDrive*>(pInner) != nullptr)
        return "profile";
    return dynamic_cast<const ImageDrive*>(pInner) != nullptr ? "image" : strError;
}
} // namespace

TEST(DriveFactory, ThePathTellsTheKind)
{
    const TempFolder folder;
    (void)folder.Write("a.bin", MakeSectors(4, 1));
    const char* pSheet = "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\n INDEX 01 00:00:00\n";
    const std::string strPlain = folder.Write("plain.cue", pSheet);
    const std::string strBeside = folder.Write("a.cue", pSheet);
    (void)folder.Write("a.cue.drive", "Seed = 1\n");
    const std::string strProfile = folder.Write("b.drive", "Image = plain.cue\n");
    EXPECT_EQ("image", GetKind(strPlain));
    EXPECT_EQ("profile", GetKind(strBeside));
    EXPECT_EQ("profile", GetKind(strProfile));
    EXPECT_EQ("device", GetKind("/dev/sr0")); // plugged in or not
    EXPECT_EQ("image", GetKind(folder.GetPath("gone.cue")));
}

// What cannot be opened says why when it is loaded, whatever its kind.
TEST(DriveFactory, WhatIsNotThereSaysSo)
{
    for (const char* pPath : {"/dev/sr199", "/no/such/disc.cue", "/no/such/profile.drive"})
    {
        std::string strError;
        const std::unique_ptr<ServiceDrive> pDrive = CreateServiceDrive(pPath, strError);
        EXPECT_FALSE(pDrive != nullptr && pDrive->Load(strError)) << pPath;
        EXPECT_NE(std::string::npos, strError.find(pPath)) << strError;
    }
}
