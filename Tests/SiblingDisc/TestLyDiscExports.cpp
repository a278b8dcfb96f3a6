// The built library, as hosts and plug-ins use it: loaded at run time and asked through its exports.

#include "CDUnits.h"
#include "ImageFiles.h"
#include "LyDisc.h"
#include "MMC.h"
#include "Tools/FakeTools.h"
#include "UTF8.h"
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

namespace
{
constexpr const char* LIBRARY = RONDEL_BIN_DIR "/libLyDisc.dylib";

class DiscLibrary
{
public:
    DiscLibrary() : m_pLibrary(dlopen(LIBRARY, RTLD_NOW | RTLD_LOCAL))
    {
        if (m_pLibrary == nullptr)
        {
            ADD_FAILURE() << dlerror();
            abort();
        }
        Get<bool (*)(void*)>("Attach")(this);
        Get<void (*)(long long)>("LyDiscInitialize")(0);
    }
    ~DiscLibrary()
    {
        Get<void (*)(long long)>("LyDiscUninitialize")(0);
        Get<void (*)()>("Detach")();
        (void)dlclose(m_pLibrary);
    }
    DiscLibrary(const DiscLibrary&) = delete;
    DiscLibrary& operator=(const DiscLibrary&) = delete;

    template <class FUNCTION>
    FUNCTION Get(const char* pName) const
    {
        return reinterpret_cast<FUNCTION>(dlsym(m_pLibrary, pName));
    }
    IDiscManager* GetManager(bool bCreate) const
    {
        return Get<decltype(&GetDiscManagerDLL)>("GetDiscManagerDLL")(bCreate);
    }
    int Enumerate(DISC_DRIVE_CALLBACK pCallback, void* pContext) const
    {
        return Get<decltype(&EnumerateDiscDrives)>("EnumerateDiscDrives")(pCallback, pContext);
    }
    int GetEvidence(const wchar_t* pPath, unsigned long long nAfter, DISC_EVIDENCE* pRecords, int nRecords) const
    {
        return Get<decltype(&GetDiscEvidence)>("GetDiscEvidence")(pPath, nAfter, pRecords, nRecords);
    }
    std::string GetText(const char* pName, const wchar_t* pPath) const
    {
        wchar_t* pText = Get<wchar_t* (*)(const wchar_t*)>(pName)(pPath);
        const std::string str = NarrowUTF8(pText);
        LyCom::SysFreeString(pText);
        return str;
    }
    static bool IsLoaded()
    {
        void* pLibrary = dlopen(LIBRARY, RTLD_NOW | RTLD_NOLOAD);
        return pLibrary != nullptr && dlclose(pLibrary) == 0;
    }

private:
    void* m_pLibrary;
};

struct LISTED
{
    std::string m_strPath;
    std::string m_strLetter;
    std::string m_strNames;
    std::string m_strReason;
    int m_nState;
    bool m_bImage;
};

// Only the images: the machine that runs the test may have drives of its own.
bool NoteImage(void* pContext, const DISC_DRIVE_ENTRY* pEntry)
{
    if (pEntry->m_bImage)
        static_cast<std::vector<LISTED>*>(pContext)->push_back(
            {NarrowUTF8(pEntry->m_pPath), NarrowUTF8(pEntry->m_pLetter),
             NarrowUTF8(pEntry->m_pVendor) + "|" + NarrowUTF8(pEntry->m_pModel) + "|" + NarrowUTF8(pEntry->m_pRevision),
             NarrowUTF8(pEntry->m_pReason), pEntry->m_nState, pEntry->m_bImage});
    return true;
}

bool CountAndStop(void* pContext, const DISC_DRIVE_ENTRY*)
{
    ++*static_cast<int*>(pContext);
    return false;
}

// "fd" for open files, "task" for threads.
long CountOwn(const std::string& strWhat)
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/" + strWhat),
                         std::filesystem::directory_iterator());
}

// The library stays loaded for all tests of the suite: the first library of a process that goes takes along the block
// in which the folder of the tools library stands.
class ExportsTest : public ::testing::Test
{
protected:
    static void TearDownTestSuite() { s_pLibrary.reset(); }
    void SetUp() override
    {
        if (s_pLibrary == nullptr)
            s_pLibrary = std::make_unique<DiscLibrary>();
        (void)m_Folder.Write("a.bin", MakeSectors(20, 1));
        m_strCue = m_Folder.Write("a.cue", "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\n INDEX 01 00:00:00\n");
        m_Tools->SetOption(L"Disc Service", L"Letter R", WidenUTF8(m_strCue).c_str());
        m_Tools->SetOption(L"Disc Service", L"Letter S", L"/no/such/image.cue");
    }
    static bool Read(IDiscManager* pManager, const wchar_t* pPath, int nLBA, std::vector<unsigned char>& aryData,
                     unsigned char* pSense)
    {
        aryData.assign(LY_CD_SECTOR_BYTES, 0xAA);
        unsigned char aryCDB[12] = {CDB_READ_CD, READ_CD_TYPE_CDDA, 0, 0, 0, 0, 0, 0, 1, READ_CD_USER_DATA, 0, 0};
        aryCDB[5] = static_cast<unsigned char>(nLBA);
        int nBytes = LY_CD_SECTOR_BYTES;
        return pManager->SendCommand(pPath, aryCDB, 12, aryData.data(), nBytes, DRIVE_TRANSFER_IN, 10000, pSense,
                                     SENSE_BYTES);
    }
    static std::unique_ptr<DiscLibrary> s_pLibrary;
    TempFolder m_Folder;
    FakeTools m_Tools;
    std::string m_strCue;
};

std::unique_ptr<DiscLibrary> ExportsTest::s_pLibrary;
} // namespace

TEST_F(ExportsTest, ImagesWithALetterAreListedAndOpenedByIt)
{
    const DiscLibrary& library = *s_pLibrary;
    std::vector<LISTED> aryListed;
    const int nAll = library.Enumerate(NoteImage, &aryListed);
    ASSERT_EQ(2u, aryListed.size());
    EXPECT_GE(nAll, 2);
    EXPECT_EQ(m_strCue, aryListed[0].m_strPath);
    EXPECT_EQ("R:", aryListed[0].m_strLetter);
    EXPECT_EQ("RONDEL|DISC IMAGE|1.0", aryListed[0].m_strNames);
    EXPECT_EQ(DISC_DRIVE_READY, aryListed[0].m_nState);
    EXPECT_EQ("", aryListed[0].m_strReason);
    EXPECT_EQ("S:", aryListed[1].m_strLetter);
    EXPECT_EQ(DISC_DRIVE_UNUSABLE, aryListed[1].m_nState);
    EXPECT_NE(std::string::npos, aryListed[1].m_strReason.find("/no/such/image.cue")) << aryListed[1].m_strReason;

    IDiscManager* pManager = library.GetManager(true);
    IDiscDrive* pDrive = pManager->GetDrive(L"r:");
    ASSERT_NE(nullptr, pDrive);
    EXPECT_EQ(pDrive, pManager->GetDrive(WidenUTF8(m_strCue).c_str()));
    EXPECT_EQ(nullptr, pManager->GetDrive(L"Q:"));
    EXPECT_EQ("Q: is no drive here; 'rondel drives' lists them.", library.GetText("GetDiscErrorText", L"Q:"));
}

TEST_F(ExportsTest, TheListEndsWhenTheCallbackHasEnough)
{
    const DiscLibrary& library = *s_pLibrary;
    int nCalls = 0;
    EXPECT_EQ(1, library.Enumerate(CountAndStop, &nCalls));
    EXPECT_EQ(1, nCalls);
    EXPECT_EQ(0, library.Enumerate(nullptr, nullptr));
}

TEST_F(ExportsTest, AFailedReadIsZeroAndStandsInTheEvidence)
{
    const DiscLibrary& library = *s_pLibrary;
    IDiscManager* pManager = library.GetManager(true);
    ASSERT_NE(nullptr, pManager->GetDrive(L"R:"));
    ASSERT_TRUE(pManager->AcquireDrive(L"R:", true));
    std::vector<unsigned char> aryData;
    unsigned char arySense[SENSE_BYTES] = {};
    EXPECT_TRUE(Read(pManager, L"R:", 7, aryData, arySense));
    EXPECT_EQ(8, aryData[100]);
    EXPECT_FALSE(Read(pManager, L"R:", 20, aryData, arySense)); // behind the end
    EXPECT_EQ(std::vector<unsigned char>(LY_CD_SECTOR_BYTES), aryData);
    std::filesystem::resize_file(m_Folder.GetPath("a.bin"), 19 * LY_CD_SECTOR_BYTES);
    EXPECT_FALSE(Read(pManager, L"R:", 19, aryData, arySense)); // lost
    EXPECT_EQ(std::vector<unsigned char>(LY_CD_SECTOR_BYTES), aryData);

    DISC_EVIDENCE aryRecords[10];
    ASSERT_EQ(3, library.GetEvidence(L"r:\\", 0, aryRecords, 10));
    EXPECT_TRUE(aryRecords[0].m_bGood);
    EXPECT_EQ(7, aryRecords[0].m_nLBA);
    EXPECT_EQ(1, aryRecords[0].m_nSectors);
    EXPECT_EQ(LY_CD_SECTOR_BYTES, aryRecords[0].m_nDataBytes);
    EXPECT_EQ(CDB_READ_CD, aryRecords[2].m_nOpcode);
    EXPECT_EQ(19, aryRecords[2].m_nLBA);
    EXPECT_FALSE(aryRecords[2].m_bGood);
    EXPECT_EQ(SENSE_MEDIUM_ERROR, aryRecords[2].m_nSenseKey);
    EXPECT_EQ(ASC_READ_ERROR, aryRecords[2].m_nASC);
    EXPECT_EQ(5, aryRecords[2].m_nASCQ);
    EXPECT_EQ(1, library.GetEvidence(nullptr, aryRecords[1].m_nNumber, aryRecords, 10));
    EXPECT_EQ(0, library.GetEvidence(nullptr, aryRecords[0].m_nNumber, nullptr, 10));
    EXPECT_NE("", library.GetText("GetDiscErrorText", L"R:"));
    pManager->ReleaseDrive(L"R:", false);
}

TEST_F(ExportsTest, ThreadsUseTheExportsAtOnce)
{
    const DiscLibrary& library = *s_pLibrary;
    const auto work = [&]
    {
        for (int i = 0; i < 20; ++i)
        {
            IDiscManager* pManager = library.GetManager(true);
            ASSERT_NE(nullptr, pManager->GetDrive(L"R:"));
            ASSERT_TRUE(pManager->AcquireDrive(L"R:", true));
            std::vector<unsigned char> aryData;
            unsigned char arySense[SENSE_BYTES];
            ASSERT_TRUE(Read(pManager, L"R:", i % 10, aryData, arySense));
            ASSERT_EQ(1 + i % 10, aryData[0]);
            std::vector<LISTED> aryListed;
            (void)library.Enumerate(NoteImage, &aryListed);
            ASSERT_EQ(2u, aryListed.size());
            DISC_EVIDENCE record;
            ASSERT_EQ(1, library.GetEvidence(L"R:", 0, &record, 1));
            pManager->ReleaseDrive(L"R:", false);
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
}

TEST(DiscLibraryAlone, TheManagerComesWhenItIsAskedFor)
{
    const DiscLibrary library;
    EXPECT_EQ(nullptr, library.GetManager(false));
    DISC_EVIDENCE record;
    EXPECT_EQ(0, library.GetEvidence(nullptr, 0, &record, 1));
    EXPECT_EQ("", library.GetText("GetDiscErrorText", L"/no"));
    EXPECT_EQ("", library.GetText("GetDiscWarnings", nullptr));
    IDiscManager* pManager = library.GetManager(true);
    ASSERT_NE(nullptr, pManager);
    EXPECT_EQ(pManager, library.GetManager(false));
    EXPECT_EQ(pManager, library.GetManager(true));
}

// Loaded and unloaded again and again, nothing stays: no library, no descriptor, no thread.
TEST(DiscLibraryAlone, TheLibraryLeavesNothingBehind)
{
    const TempFolder folder;
    (void)folder.Write("a.bin", MakeSectors(20, 1));
    const std::wstring strCue =
        WidenUTF8(folder.Write("a.cue", "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\n INDEX 01 00:00:00\n"));
    const long nThreads = CountOwn("task");
    long nDescriptors = 0;
    for (int i = 0; i < 5; ++i)
    {
        {
            const DiscLibrary library;
            std::vector<LISTED> aryListed;
            (void)library.Enumerate(NoteImage, &aryListed);
            IDiscManager* pManager = library.GetManager(true);
            ASSERT_NE(nullptr, pManager->GetDrive(strCue.c_str()));
            ASSERT_TRUE(pManager->AcquireDrive(strCue.c_str(), true)); // and not given back
        }
        EXPECT_FALSE(DiscLibrary::IsLoaded());
        if (i == 0)
            nDescriptors = CountOwn("fd");
        EXPECT_EQ(nDescriptors, CountOwn("fd"));
    }
    EXPECT_EQ(nThreads, CountOwn("task"));
}
