#include "MMC.h"
#include "ScriptedDrives.h"
#include "TempFolder.h"
#include "UTF8.h"
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <new>
#include <sys/file.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{
// A process of its own that holds the advisory lock of a file while the object lives.
class ForeignLock
{
public:
    explicit ForeignLock(const std::string& strFile)
    {
        int aryPipe[2];
        if (pipe(aryPipe) != 0)
            abort();
        m_nChild = fork();
        if (m_nChild == 0)
        {
            const int nFile = open(strFile.c_str(), O_RDONLY | O_CLOEXEC);
            const char c = nFile >= 0 && flock(nFile, LOCK_EX) == 0 ? 'l' : 'x';
            (void)!write(aryPipe[1], &c, 1);
            for (;;)
                pause();
        }
        char c = 0;
        EXPECT_EQ(1, read(aryPipe[0], &c, 1));
        EXPECT_EQ('l', c);
        close(aryPipe[0]);
        close(aryPipe[1]);
    }
    ~ForeignLock()
    {
        kill(m_nChild, SIGKILL);
        (void)waitpid(m_nChild, nullptr, 0);
    }
    ForeignLock(const ForeignLock&) = delete;
    ForeignLock& operator=(const ForeignLock&) = delete;

private:
    pid_t m_nChild;
};

class DrivesTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_Machine.Plug("/dev/sr0");
        m_Machine.Plug("/dev/sr1");
        m_pManager = m_Machine.MakeManager();
    }
    SCRIPTED_NODE& Node(const char* pNode) { return m_Machine.m_mapNodes[pNode]; }
    bool Send(const wchar_t* pPath, unsigned char nOpcode = CDB_TEST_UNIT_READY)
    {
        unsigned char aryCDB[12] = {nOpcode};
        int nBytes = 0;
        m_Sense = {};
        return m_pManager->SendCommand(pPath, aryCDB, 12, nullptr, nBytes, DRIVE_TRANSFER_NONE, 1000,
                                       m_Sense.m_aryBytes, SENSE_BYTES);
    }
    // "D:/dev/sr0 E:/dev/sr1"
    std::string List()
    {
        std::string str;
        for (const DRIVE_LISTING& listing : m_pManager->ListDrives())
            str += (str.empty() ? "" : " ") + listing.m_strLetter + listing.m_strPath;
        return str;
    }
    std::vector<DISC_EVIDENCE> GetEvidence(const wchar_t* pPath)
    {
        std::vector<DISC_EVIDENCE> aryRecords(100);
        aryRecords.resize(static_cast<size_t>(m_pManager->ReadEvidence(pPath, 0, aryRecords.data(), 100)));
        return aryRecords;
    }
    ScriptedMachine m_Machine;
    std::unique_ptr<DiscManager> m_pManager;
    SENSE_DATA m_Sense;
};
} // namespace

TEST_F(DrivesTest, ALetterAndItsNodeAreOneDrive)
{
    IDiscDrive* pDrive = m_pManager->GetDrive(L"E:");
    ASSERT_NE(nullptr, pDrive);
    for (const wchar_t* pPath : {L"e:", L"E:\\", L"E:/", L"/dev/sr1", L"file:///dev/sr1", L"file:///E:"})
        EXPECT_EQ(pDrive, m_pManager->GetDrive(pPath)) << NarrowUTF8(pPath);
    EXPECT_NE(pDrive, m_pManager->GetDrive(L"D:"));
    EXPECT_EQ(1, Node("/dev/sr1").m_nLoads);
}

TEST_F(DrivesTest, ALetterOfNobodyIsRefusedWithASentence)
{
    for (const wchar_t* pPath : {L"Q:", L"q:\\", L"A:", L"C:"})
        EXPECT_EQ(nullptr, m_pManager->GetDrive(pPath));
    EXPECT_EQ("Q: is no drive here; 'rondel drives' lists them.", m_pManager->GetErrorText(L"Q:"));
    EXPECT_EQ("Q: is no drive here; 'rondel drives' lists them.", m_pManager->GetErrorText(L"q:/"));
    EXPECT_FALSE(m_pManager->AcquireDrive(L"Q:", true));
    EXPECT_EQ("Q: is no drive here; 'rondel drives' lists them.", m_pManager->GetErrorText(L"Q:"));
    EXPECT_FALSE(Send(L"Q:"));
    EXPECT_EQ(SENSE_NOT_READY, m_Sense.GetCodes().m_nKey);
    EXPECT_EQ(nullptr, m_pManager->GetDrive(L"E")); // a file, and there is none
    EXPECT_NE(std::string::npos, m_pManager->GetErrorText(L"E").find("/E is nothing."));
    EXPECT_EQ(nullptr, m_pManager->GetDrive(nullptr));
    EXPECT_NE("", m_pManager->GetErrorText(nullptr));
}

TEST_F(DrivesTest, DrivesComeAndGoAndTheOthersKeepTheirLetters)
{
    EXPECT_EQ("D:/dev/sr0 E:/dev/sr1", List());
    m_Machine.Plug("/dev/sr2");
    m_Machine.Unplug("/dev/sr0");
    IDiscDrive* pFirst = m_pManager->GetDrive(L"D:");
    ASSERT_NE(nullptr, pFirst);
    EXPECT_EQ(pFirst, m_pManager->GetDrive(L"/dev/sr2"));
    EXPECT_EQ("E:/dev/sr1 D:/dev/sr2", List()); // in the order of the nodes
    m_Machine.Unplug("/dev/sr2");
    EXPECT_EQ(nullptr, m_pManager->GetDrive(L"D:"));
    EXPECT_EQ("D: is no drive here; 'rondel drives' lists them.", m_pManager->GetErrorText(L"D:"));
    const int nSent = Node("/dev/sr0").m_nCommands + Node("/dev/sr2").m_nCommands; // by the lists
    EXPECT_FALSE(Send(L"D:"));                                                     // nobody has the letter
    EXPECT_EQ(nSent, Node("/dev/sr0").m_nCommands + Node("/dev/sr2").m_nCommands);
    m_Machine.Plug("/dev/sr0");
    EXPECT_NE(nullptr, m_pManager->GetDrive(L"D:"));
    EXPECT_TRUE(m_pManager->AcquireDrive(L"D:", true));
    EXPECT_TRUE(Send(L"D:"));
    EXPECT_EQ(1, Node("/dev/sr0").m_nAcquired);
    m_pManager->ReleaseDrive(L"D:", false);
}

TEST_F(DrivesTest, ADriveThatComesBackUnderItsNodeIsTheSameObject)
{
    IDiscDrive* pDrive = m_pManager->GetDrive(L"E:");
    m_Machine.Unplug("/dev/sr1");
    EXPECT_EQ(nullptr, m_pManager->GetDrive(L"E:"));
    m_Machine.Plug("/dev/sr1");
    EXPECT_EQ(pDrive, m_pManager->GetDrive(L"E:"));
}

// The commands of a player must not reach another drive because somebody pulls one cable and plugs in another.
TEST_F(DrivesTest, AHeldDriveKeepsItsNamesWhateverIsPlugged)
{
    IDiscDrive* pDrive = m_pManager->GetDrive(L"D:");
    ASSERT_TRUE(m_pManager->AcquireDrive(L"D:", true));
    m_Machine.Unplug("/dev/sr0");
    m_Machine.Plug("/dev/sr5");
    EXPECT_EQ("E:/dev/sr1 F:/dev/sr5", List());
    EXPECT_EQ(pDrive, m_pManager->GetDrive(L"D:"));
    EXPECT_EQ(pDrive, m_pManager->GetDrive(L"d:\\"));
    EXPECT_TRUE(Send(L"D:"));
    EXPECT_EQ(1, Node("/dev/sr0").m_nCommands);
    m_pManager->ReleaseDrive(L"D:", false);
    EXPECT_EQ(0, Node("/dev/sr0").m_nAcquired);
    EXPECT_EQ(nullptr, m_pManager->GetDrive(L"D:"));
    EXPECT_EQ(nullptr, m_pManager->GetDrive(L"d:\\"));
}

TEST_F(DrivesTest, NobodyLooksForDrivesUnlessALetterOrTheListIsAskedFor)
{
    (void)m_pManager->GetDrive(L"/dev/sr0");
    (void)Send(L"/dev/sr0");
    (void)m_pManager->GetErrorText(L"E:");
    EXPECT_EQ(0, m_Machine.m_nLooks);
    (void)m_pManager->GetDrive(L"E:");
    EXPECT_EQ(1, m_Machine.m_nLooks);
    (void)m_pManager->GetDrive(L"D:");
    EXPECT_EQ(1, m_Machine.m_nLooks); // nothing has changed
}

TEST_F(DrivesTest, AnImageMayHaveALetter)
{
    (void)m_Machine.m_mapNodes["/music/a.cue"];
    m_Machine.m_Images['D' - 'A'] = "/music/a.cue";
    m_Machine.m_Images['B' - 'A'] = "/gone.cue";
    EXPECT_EQ("E:/dev/sr0 F:/dev/sr1 B:/gone.cue D:/music/a.cue", List());
    EXPECT_EQ(m_pManager->GetDrive(L"D:"), m_pManager->GetDrive(L"/music/a.cue"));
    EXPECT_EQ(nullptr, m_pManager->GetDrive(L"B:"));
    EXPECT_EQ("/gone.cue is nothing.", m_pManager->GetErrorText(L"B:"));
    const std::vector<DRIVE_LISTING> aryListings = m_pManager->ListDrives();
    ASSERT_EQ(4u, aryListings.size());
    EXPECT_FALSE(aryListings[0].m_Description.m_bImage);
    EXPECT_EQ("DVD sr0", aryListings[0].m_Description.m_strModel); // the kernel's word, since the drive gives none
    EXPECT_TRUE(aryListings[2].m_Description.m_bImage);
    EXPECT_EQ(DISC_DRIVE_UNUSABLE, aryListings[2].m_eState);
    EXPECT_EQ("/gone.cue is nothing.", aryListings[2].m_strReason);
    EXPECT_EQ(DISC_DRIVE_READY, aryListings[3].m_eState);
}

TEST_F(DrivesTest, AnOptionMayMoveADriveThatIsListedOnce)
{
    m_Machine.m_Images['R' - 'A'] = "/dev/sr1";
    EXPECT_EQ("D:/dev/sr0 R:/dev/sr1", List());
}

TEST_F(DrivesTest, TheListTellsTheStateOfEveryDrive)
{
    Node("/dev/sr0").m_arySenses = {{6, 0x29, 0}, {6, 0x28, 0}, {2, 0x3A, 2}}; // told one at a time
    Node("/dev/sr1").m_strLoadError = "/dev/sr1 may not be opened; join the group cdrom.";
    const std::vector<DRIVE_LISTING> aryListings = m_pManager->ListDrives();
    ASSERT_EQ(2u, aryListings.size());
    EXPECT_EQ(DISC_DRIVE_TRAY_OPEN, aryListings[0].m_eState);
    EXPECT_EQ("", aryListings[0].m_strReason);
    EXPECT_EQ(DISC_DRIVE_UNUSABLE, aryListings[1].m_eState);
    EXPECT_EQ("/dev/sr1 may not be opened; join the group cdrom.", aryListings[1].m_strReason);
    EXPECT_EQ("ACME", aryListings[1].m_Description.m_strVendor);
    EXPECT_EQ(0, Node("/dev/sr0").m_nAcquired);
    EXPECT_EQ(3u, GetEvidence(L"/dev/sr0").size()); // what the list asks is evidence, too
}

TEST_F(DrivesTest, ADriveThatAlwaysReportsAChangeEndsTheAsking)
{
    Node("/dev/sr0").m_arySenses.assign(50, {6, 0x28, 0});
    EXPECT_EQ(DISC_DRIVE_UNUSABLE, m_pManager->ListDrives()[0].m_eState);
    EXPECT_EQ(4, Node("/dev/sr0").m_nCommands);
}

// Another process has the lock on the node, as a second player does; a file stands for the node.
TEST_F(DrivesTest, TheListTellsWhichDriveAnotherProgramHolds)
{
    const TempFolder folder;
    const std::string strNode = folder.Write("sr9", "");
    m_Machine.Plug(strNode);
    m_Machine.m_mapNodes[strNode].m_strLoadError = "It is in use by somebody.";
    EXPECT_EQ(DISC_DRIVE_UNUSABLE, m_pManager->ListDrives()[2].m_eState); // for some other reason
    const ForeignLock lock(strNode);
    const std::vector<DRIVE_LISTING> aryListings = m_pManager->ListDrives();
    EXPECT_EQ(strNode, aryListings[2].m_strPath);
    EXPECT_EQ(DISC_DRIVE_HELD, aryListings[2].m_eState);
    EXPECT_EQ("It is in use by somebody.", aryListings[2].m_strReason);
}

TEST_F(DrivesTest, TheListLeavesADriveInUseAlone)
{
    ASSERT_NE(nullptr, m_pManager->GetDrive(L"D:"));
    ASSERT_TRUE(m_pManager->AcquireDrive(L"D:", true));
    Node("/dev/sr0").m_arySenses = {{6, 0x28, 0}}; // for the holder, not for the list
    EXPECT_EQ(DISC_DRIVE_READY, m_pManager->ListDrives()[0].m_eState);
    EXPECT_EQ(0, Node("/dev/sr0").m_nCommands);
    Node("/dev/sr0").m_nStateA = 0;
    EXPECT_EQ(DISC_DRIVE_NO_DISC, m_pManager->ListDrives()[0].m_eState);
    EXPECT_FALSE(Send(L"D:"));
    EXPECT_EQ(6, m_Sense.GetCodes().m_nKey);
}

TEST_F(DrivesTest, AFailedReadZeroesTheBufferAndStandsInTheEvidence)
{
    ASSERT_NE(nullptr, m_pManager->GetDrive(L"D:"));
    ASSERT_NE(nullptr, m_pManager->GetDrive(L"E:"));
    Node("/dev/sr0").m_arySenses = {{3, 0x11, 5}};
    Node("/dev/sr0").m_bZeroes = false; // a drive that forgets to
    unsigned char aryCDB[12] = {CDB_READ_CD, 4, 0, 0, 1, 0, 0, 0, 2, 0x10, 0, 0};
    std::vector<unsigned char> aryData(4704, 0xAA);
    int nBytes = 4704;
    EXPECT_FALSE(m_pManager->SendCommand(L"D:", aryCDB, 12, aryData.data(), nBytes, DRIVE_TRANSFER_IN, 1000,
                                         m_Sense.m_aryBytes, SENSE_BYTES));
    EXPECT_EQ(std::vector<unsigned char>(4704), aryData);
    EXPECT_EQ(3, m_Sense.GetCodes().m_nKey);
    EXPECT_TRUE(Send(L"E:"));
    const std::vector<DISC_EVIDENCE> aryRecords = GetEvidence(L"/dev/sr0");
    ASSERT_EQ(1u, aryRecords.size());
    EXPECT_EQ(CDB_READ_CD, aryRecords[0].m_nOpcode);
    EXPECT_EQ(256, aryRecords[0].m_nLBA);
    EXPECT_EQ(2, aryRecords[0].m_nSectors);
    EXPECT_EQ(0, aryRecords[0].m_nDataBytes);
    EXPECT_FALSE(aryRecords[0].m_bGood);
    EXPECT_EQ(0x11, aryRecords[0].m_nASC);
    EXPECT_EQ(5, aryRecords[0].m_nASCQ);
    EXPECT_EQ(2u, GetEvidence(nullptr).size());
    EXPECT_EQ(1u, GetEvidence(L"e:\\").size());
    EXPECT_EQ(0u, GetEvidence(L"Q:").size());
    EXPECT_EQ(0u, GetEvidence(L"/dev/sr9").size());
}

TEST_F(DrivesTest, DataOnItsWayToTheDriveSurvivesAFailure)
{
    ASSERT_NE(nullptr, m_pManager->GetDrive(L"D:"));
    Node("/dev/sr0").m_arySenses = {{5, 0x20, 0}};
    Node("/dev/sr0").m_bZeroes = false;
    constexpr auto DRIVE_TRANSFER_OUT = static_cast<DRIVE_TRANSFERTYPE>(16);
    unsigned char aryCDB[10] = {CDB_WRITE_10};
    unsigned char aryData[4] = {1, 2, 3, 4};
    int nBytes = 4;
    EXPECT_FALSE(m_pManager->SendCommand(L"D:", aryCDB, 10, aryData, nBytes, DRIVE_TRANSFER_OUT, 1000, nullptr, 0));
    EXPECT_EQ(4, aryData[3]);
}

TEST_F(DrivesTest, WhatTheLibraryThrowsEndsAtTheBorder)
{
    ASSERT_NE(nullptr, m_pManager->GetDrive(L"D:"));
    Node("/dev/sr0").m_OnCommand = [] { throw std::bad_alloc(); };
    unsigned char aryCDB[12] = {CDB_READ_CD};
    unsigned char aryData[4] = {1, 2, 3, 4};
    int nBytes = 4;
    EXPECT_FALSE(m_pManager->SendCommand(L"D:", aryCDB, 12, aryData, nBytes, DRIVE_TRANSFER_IN, 1000, nullptr, 0));
    EXPECT_EQ(0, aryData[0] | aryData[3]);
}

TEST_F(DrivesTest, AcquireSaysWhyNotUntilItSucceeds)
{
    ASSERT_NE(nullptr, m_pManager->GetDrive(L"D:"));
    Node("/dev/sr0").m_strAcquireError = "/dev/sr0 is in use by player (4711).";
    EXPECT_FALSE(m_pManager->AcquireDrive(L"D:", true));
    EXPECT_EQ(nullptr, m_pManager->GetDrive(L"Q:")); // another path's error does not push this one out
    EXPECT_EQ("/dev/sr0 is in use by player (4711).", m_pManager->GetErrorText(L"/dev/sr0"));
    Node("/dev/sr0").m_strAcquireError.clear();
    EXPECT_TRUE(m_pManager->AcquireDrive(L"D:", true));
    EXPECT_EQ("read errors", m_pManager->GetErrorText(L"D:"));
    EXPECT_EQ("warnings", m_pManager->GetWarnings(L"D:"));
}

TEST_F(DrivesTest, AThousandWrongPathsLeaveNoThousandTexts)
{
    for (int i = 0; i < 1000; ++i)
        (void)m_pManager->GetDrive((L"/none/" + std::to_wstring(i)).c_str());
    EXPECT_EQ("", m_pManager->GetErrorText(L"/none/0"));
    EXPECT_EQ("/none/999 is nothing.", m_pManager->GetErrorText(L"/none/999"));
}

// One drive takes its time; the others go on.
TEST_F(DrivesTest, ASlowDriveHoldsUpNobodyElse)
{
    ASSERT_NE(nullptr, m_pManager->GetDrive(L"D:"));
    ASSERT_NE(nullptr, m_pManager->GetDrive(L"E:"));
    std::atomic<bool> bInside{false};
    std::atomic<bool> bGo{false};
    Node("/dev/sr0").m_OnCommand = [&]
    {
        bInside = true;
        while (!bGo)
            std::this_thread::yield();
    };
    std::thread slow([this] { EXPECT_TRUE(Send(L"D:")); });
    while (!bInside)
        std::this_thread::yield();
    unsigned char aryCDB[6] = {};
    int nBytes = 0;
    EXPECT_TRUE(m_pManager->SendCommand(L"E:", aryCDB, 6, nullptr, nBytes, DRIVE_TRANSFER_NONE, 1000, nullptr, 0));
    EXPECT_NE(nullptr, m_pManager->GetDrive(L"E:"));
    EXPECT_EQ(nullptr, m_pManager->GetDrive(L"Q:"));
    EXPECT_EQ("warnings", m_pManager->GetWarnings(L"E:"));
    bGo = true;
    slow.join();
}

TEST_F(DrivesTest, ThreadsOpenListAndSendAtOnce)
{
    std::atomic<int> nSent{0};
    const auto work = [&](const wchar_t* pPath)
    {
        for (int i = 0; i < 200; ++i)
        {
            ASSERT_NE(nullptr, m_pManager->GetDrive(pPath));
            ASSERT_TRUE(m_pManager->AcquireDrive(pPath, true));
            unsigned char aryCDB[6] = {};
            int nBytes = 0;
            nSent += m_pManager->SendCommand(pPath, aryCDB, 6, nullptr, nBytes, DRIVE_TRANSFER_NONE, 1000, nullptr, 0);
            m_pManager->ReleaseDrive(pPath, false);
            DISC_EVIDENCE record;
            ASSERT_EQ(1, m_pManager->ReadEvidence(pPath, 0, &record, 1));
        }
    };
    std::thread first(work, L"D:");
    std::thread second(work, L"d:/");
    std::thread third(work, L"/dev/sr1");
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(2u, m_pManager->ListDrives().size());
    first.join();
    second.join();
    third.join();
    EXPECT_EQ(600, nSent);
    EXPECT_EQ(0, Node("/dev/sr0").m_nAcquired);
}
