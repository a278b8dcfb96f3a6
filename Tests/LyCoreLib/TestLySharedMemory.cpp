#include "LyFile.h"
#include "RawTable.h"
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <type_traits>
#include <unistd.h>

namespace
{
// A name that no other run of the tests uses, without the leading slash.
LyString MakeName(const wchar_t* pText)
{
    LyString str(L"LyTest Shared ");
    LyString strProcess;
    for (int n = getpid(); n > 0; n /= 10)
        strProcess += static_cast<wchar_t>(L'0' + n % 10);
    return str + strProcess + L" (" + pText + L")";
}

bool GetNameExists(const LyString& strName)
{
    int nDescriptor = shm_open(LyStringUTF8(L"/" + strName), O_RDONLY, 0);
    if (nDescriptor != -1)
        close(nDescriptor);
    return nDescriptor != -1;
}

// A block as some other program left it.
void MakeBlock(const LyString& strName, int nBytes)
{
    int nDescriptor = shm_open(LyStringUTF8(L"/" + strName), O_RDWR | O_CREAT, 0600);
    ASSERT_NE(nDescriptor, -1);
    ASSERT_EQ(ftruncate(nDescriptor, nBytes), 0);
    close(nDescriptor);
}

char* GetBytes(const LySharedMemory& memory) { return static_cast<char*>(memory.GetAddress()); }
} // namespace

TEST(LySharedMemory, NewBlockIsZeroAndOfWholePages)
{
    const int nPage = getpagesize();
    struct CASE
    {
        int nBytes;
        int nPages;
    };
    for (const CASE& c : {CASE{1, 1}, CASE{nPage, 1}, CASE{nPage + 1, 2}, CASE{6232, (6232 + nPage - 1) / nPage}})
    {
        LySharedMemory memory;
        ASSERT_TRUE(memory.Allocate(MakeName(L"new"), c.nBytes));
        EXPECT_EQ(memory.GetSize(), c.nPages * nPage);
        for (int n = 0; n < memory.GetSize(); ++n)
            ASSERT_EQ(GetBytes(memory)[n], 0);
        GetBytes(memory)[memory.GetSize() - 1] = 1;
    }
}

TEST(LySharedMemory, SameNameIsTheSameBlock)
{
    LySharedMemory first;
    LySharedMemory second;
    ASSERT_TRUE(first.Allocate(MakeName(L"same"), 100));
    std::strcpy(GetBytes(first), "shared");
    ASSERT_TRUE(second.Allocate(L"/" + MakeName(L"same"), 100)); // the slash is added where it is missing
    EXPECT_STREQ(GetBytes(second), "shared");
    GetBytes(second)[0] = 'S';
    EXPECT_STREQ(GetBytes(first), "Shared");
}

TEST(LySharedMemory, IsSharedBetweenProcesses)
{
    LyString strName = MakeName(L"processes");
    LySharedMemory memory;
    ASSERT_TRUE(memory.Allocate(strName, 100));
    std::strcpy(GetBytes(memory), "parent");
    pid_t nChild = fork();
    if (nChild == 0)
    {
        LySharedMemory child;
        if (!child.Allocate(strName, 100) || std::strcmp(GetBytes(child), "parent") != 0)
            _exit(1);
        std::strcpy(GetBytes(child), "child");
        _exit(0);
    }
    int nStatus = -1;
    waitpid(nChild, &nStatus, 0);
    EXPECT_EQ(nStatus, 0);
    EXPECT_STREQ(GetBytes(memory), "child");
}

TEST(LySharedMemory, WhoeverFreesFirstRemovesTheName)
{
    LyString strName = MakeName(L"free");
    LySharedMemory first;
    LySharedMemory second;
    ASSERT_TRUE(first.Allocate(strName, 100));
    ASSERT_TRUE(second.Allocate(strName, 100));
    std::strcpy(GetBytes(first), "old");
    EXPECT_TRUE(GetNameExists(strName));
    first.Free();
    EXPECT_FALSE(GetNameExists(strName));
    EXPECT_EQ(first.GetAddress(), nullptr);
    EXPECT_EQ(first.GetSize(), 0);
    EXPECT_STREQ(GetBytes(second), "old"); // who holds the block keeps it

    ASSERT_TRUE(first.Allocate(strName, 100));
    EXPECT_STREQ(GetBytes(first), ""); // a new one
    second.Free();
    EXPECT_FALSE(GetNameExists(strName)); // the name goes in every case
}

TEST(LySharedMemory, DestructorFrees)
{
    LyString strName = MakeName(L"destructor");
    {
        LySharedMemory memory;
        ASSERT_TRUE(memory.Allocate(strName, 100));
        EXPECT_TRUE(GetNameExists(strName));
    }
    EXPECT_FALSE(GetNameExists(strName));
}

TEST(LySharedMemory, AllocateFreesFirst)
{
    LySharedMemory memory;
    ASSERT_TRUE(memory.Allocate(MakeName(L"one"), 100));
    ASSERT_TRUE(memory.Allocate(MakeName(L"two"), 100));
    EXPECT_FALSE(GetNameExists(MakeName(L"one")));
    EXPECT_FALSE(memory.Allocate(nullptr, 100));
    EXPECT_FALSE(GetNameExists(MakeName(L"two")));
    EXPECT_EQ(memory.GetAddress(), nullptr);
}

TEST(LySharedMemory, BadArgumentsAreFalse)
{
    LyString strName = MakeName(L"bad");
    LySharedMemory memory;
    EXPECT_FALSE(memory.Allocate(nullptr, 100));
    EXPECT_FALSE(memory.Allocate(L"", 100));
    EXPECT_FALSE(memory.Allocate(strName, 0));
    EXPECT_FALSE(memory.Allocate(strName, -1));
    EXPECT_FALSE(memory.Allocate(strName, INT_MIN));
    EXPECT_FALSE(memory.Allocate(strName, INT_MAX)); // whole pages would pass the range of int
    EXPECT_FALSE(memory.Allocate(L"/", 100));
    EXPECT_FALSE(memory.Allocate(L"a/b", 100)); // the system takes no folders here
    LyString strLong;
    strLong.AppendLeft(L'x', 5000);
    EXPECT_FALSE(memory.Allocate(strLong, 100));
    EXPECT_EQ(memory.GetAddress(), nullptr);
    EXPECT_EQ(memory.GetSize(), 0);
    memory.Free();
    memory.Free();
    EXPECT_FALSE(GetNameExists(strName));
}

TEST(LySharedMemory, ExistingBlockIsNotSized)
{
    LyString strName = MakeName(L"large");
    MakeBlock(strName, 3 * getpagesize());
    LySharedMemory memory;
    ASSERT_TRUE(memory.Allocate(strName, 100));
    EXPECT_EQ(memory.GetSize(), getpagesize());
    int nDescriptor = shm_open(LyStringUTF8(L"/" + strName), O_RDONLY, 0);
    struct stat status = {};
    EXPECT_EQ(fstat(nDescriptor, &status), 0);
    EXPECT_EQ(status.st_size, 3 * getpagesize());
    close(nDescriptor);
}

// Deliberate behaviour: mapping it would end the process at the first touch behind its end.
TEST(LySharedMemory, ExistingBlockThatIsTooSmallIsRefusedAndItsNameGoes)
{
    for (int nBytes : {0, 100})
    {
        LyString strName = MakeName(L"small");
        MakeBlock(strName, nBytes);
        LySharedMemory memory;
        EXPECT_FALSE(memory.Allocate(strName, 2 * getpagesize()));
        EXPECT_EQ(memory.GetAddress(), nullptr);
        EXPECT_FALSE(GetNameExists(strName));
        EXPECT_TRUE(memory.Allocate(strName, 2 * getpagesize())); // and now there is a new one
        GetBytes(memory)[2 * getpagesize() - 1] = 1;
    }
}

TEST(LySharedMemory, DestructorIsTheFirstOperation)
{
    static_assert(std::has_virtual_destructor_v<LySharedMemory>);
    LyString strName = MakeName(L"table");
    auto* pMemory = new LySharedMemory;
    ASSERT_TRUE(pMemory->Allocate(strName, 100));
    CallSlot<void>(pMemory, 1); // destroys and frees
    EXPECT_FALSE(GetNameExists(strName));
}
