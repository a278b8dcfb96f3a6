// Who writes a disc service for this system names the operations that the system calls, and those alone; the slots
// between them are filled.

#include "LyCoreLib/RawTable.h"
#include "THDriveInterface.h"
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{
class NamedDrive final : public IDiscDrive
{
public:
    void AddUser(int) override { m_nUsers++; }
    void RemoveUser(int) override { m_nUsers--; }
    unsigned char GetStateA() override { return 'A'; }
    wchar_t* GetVendor() override { return LyCom::SysAllocString(L"vendor"); }
    wchar_t* GetModel() override { return LyCom::SysAllocString(L"model"); }
    unsigned char GetStateB() override { return 'B'; }
    wchar_t* GetPackedCapabilities() override { return LyCom::SysAllocString(L"packed"); }

    int m_nUsers = 0;
};

class NamedManager final : public IDiscManager
{
public:
    IDiscDrive* GetDrive(const wchar_t*) override { return &m_Drive; }
    bool AcquireDrive(LyString strPath, bool bAlwaysTrue) override
    {
        m_strAcquired = strPath;
        return bAlwaysTrue;
    }
    void ReleaseDrive(LyString, bool) override { m_strAcquired.Empty(); }
    bool SendCommand(const wchar_t*, unsigned char* pCDB, int nCDBBytes, unsigned char*, int& nDataBytes,
                     DRIVE_TRANSFERTYPE, int, unsigned char*, int) override
    {
        m_aryCDB.assign(pCDB, pCDB + nCDBBytes);
        nDataBytes = 0;
        return true;
    }

    NamedDrive m_Drive;
    LyString m_strAcquired;
    std::vector<unsigned char> m_aryCDB;
};

std::wstring TakeText(void* pDrive, int nSlot)
{
    auto* pText = CallSlot<wchar_t*>(pDrive, nSlot);
    const std::wstring strText = pText;
    LyCom::SysFreeString(pText);
    return strText;
}
} // namespace

TEST(DiscInterfaces, ADriveOfTheNamedOperationsAnswersInTheirSlots)
{
    NamedDrive drive;
    CallSlot<void>(&drive, 6, 2);
    CallSlot<void>(&drive, 6, 2);
    CallSlot<void>(&drive, 7, 2);
    EXPECT_EQ(1, drive.m_nUsers);
    EXPECT_EQ('A', CallSlot<unsigned char>(&drive, 8));
    EXPECT_EQ(L"vendor", TakeText(&drive, 9));
    EXPECT_EQ(L"model", TakeText(&drive, 10));
    EXPECT_EQ('B', CallSlot<unsigned char>(&drive, 12));
    EXPECT_EQ(L"packed", TakeText(&drive, 13));
}

TEST(DiscInterfaces, AManagerOfTheNamedOperationsAnswersInTheirSlots)
{
    NamedManager manager;
    EXPECT_EQ(&manager.m_Drive, CallSlot<IDiscDrive*>(&manager, 2, L"E:"));
    // A string by value arrives as the address of the caller's copy.
    const LyString strPath = L"E:";
    EXPECT_TRUE(CallSlot<bool>(&manager, 8, &strPath, true));
    EXPECT_STREQ(L"E:", manager.m_strAcquired);
    CallSlot<void>(&manager, 9, &strPath, false);
    EXPECT_TRUE(manager.m_strAcquired.IsEmpty());
    unsigned char cdb[] = {0x1B, 0, 0, 0, 2, 0};
    unsigned char sense[32] = {};
    int nDataBytes = 5;
    EXPECT_TRUE(CallSlot<bool>(&manager, 10, L"E:", cdb, 6, nullptr, &nDataBytes, DRIVE_TRANSFER_NONE, 100, sense, 32));
    EXPECT_EQ(std::vector<unsigned char>(cdb, cdb + 6), manager.m_aryCDB);
    EXPECT_EQ(0, nDataBytes);
}
