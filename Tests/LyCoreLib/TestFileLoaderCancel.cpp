// Cancelling a load, from the same and from another thread, and one load at a time.

#include "FileLoader.h"
#include "RawTable.h"
#include "TestReader/TestReader.h"
#include <atomic>
#include <condition_variable>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>

namespace
{
constexpr wchar_t URL[] = L"http://host/a.bin";

class CancelListener final : public ICancelHelperCallback
{
public:
    bool CancelHelper_Cancel(bool bCancel) override
    {
        m_aryFlags.push_back(bCancel);
        return true;
    }

    std::vector<bool> m_aryFlags;
};

// A loader of a caller's own, which counts what reaches it.
class CountingLoader final : public CFileLoader
{
public:
    bool CancelHelper_Cancel(bool bCancel) override
    {
        ++m_nCalls;
        return CFileLoader::CancelHelper_Cancel(bCancel);
    }

    int m_nCalls = 0;
};

// Opens once.
class Gate
{
public:
    void Open()
    {
        std::lock_guard<std::mutex> guard(m_Lock);
        m_bOpen = true;
        m_Opened.notify_all();
    }
    void Pass()
    {
        std::unique_lock<std::mutex> guard(m_Lock);
        m_Opened.wait(guard, [this] { return m_bOpen; });
    }

private:
    std::mutex m_Lock;
    std::condition_variable m_Opened;
    bool m_bOpen = false;
};

class FileLoaderCancel : public testing::Test
{
protected:
    FileLoaderCancel() { m_Script.strContent.assign(1'000'000, 'x'); }

    bool Load() { return m_Loader.LoadBuffer(LyFilename(URL), m_Buffer); }

    TestReaderLibrary m_Library;
    READER_SCRIPT& m_Script = m_Library.m_Script;
    READER_RECORD& m_Record = m_Library.m_Record;
    CFileLoader m_Loader;
    LyBuffer m_Buffer;
};
} // namespace

TEST_F(FileLoaderCancel, EndsTheLoadBehindTheChunk)
{
    m_Script.onRead = [this] { EXPECT_TRUE(m_Loader.Cancel(true)); };
    EXPECT_FALSE(Load());
    EXPECT_EQ(m_Record.aryReads.size(), 1u);
    EXPECT_EQ(m_Buffer.GetSize(), 0);
    EXPECT_TRUE(m_Loader.m_Cancel.m_bCancelled);
    EXPECT_EQ(m_Record.nClosed, 0) << "the reader can cancel by itself";
}

TEST_F(FileLoaderCancel, ClosesAReaderThatCannotCancel)
{
    m_Script.bCanCancel = false;
    m_Script.onRead = [this] { m_Loader.Cancel(true); };
    EXPECT_FALSE(Load());
    EXPECT_EQ(m_Record.nClosed, 1);
}

TEST_F(FileLoaderCancel, MayBeTakenBack)
{
    m_Script.bCanCancel = false;
    m_Script.onOpen = [this]
    {
        m_Loader.Cancel(true);
        m_Loader.Cancel(false);
    };
    EXPECT_TRUE(Load());
    EXPECT_EQ(m_Record.nClosed, 1);
}

TEST_F(FileLoaderCancel, BeforeALoadIsForgotten)
{
    EXPECT_TRUE(m_Loader.Cancel(true));
    EXPECT_TRUE(m_Loader.m_Cancel.m_bCancelled);
    EXPECT_TRUE(Load());
    EXPECT_FALSE(m_Loader.m_Cancel.m_bCancelled);
}

TEST_F(FileLoaderCancel, BothInterfacesLeadToIt)
{
    // Raw calls: each of the two tables holds its one operation.
    EXPECT_TRUE(CallSlot<bool>(static_cast<ILyWaitMessageCallback*>(&m_Loader), 0));
    EXPECT_TRUE(m_Loader.m_Cancel.m_bCancelled);
    EXPECT_TRUE(CallSlot<bool>(static_cast<ICancelHelperCallback*>(&m_Loader), 0, false));
    EXPECT_FALSE(m_Loader.m_Cancel.m_bCancelled);
    EXPECT_TRUE(CallSlot<bool>(static_cast<ICancelHelperCallback*>(&m_Loader), 0, true));
    EXPECT_TRUE(m_Loader.m_Cancel.m_bCancelled);
}

TEST_F(FileLoaderCancel, DerivedLoaderHearsOfItFirst)
{
    CountingLoader loader;
    EXPECT_TRUE(static_cast<ICancelHelperCallback&>(loader).CancelHelper_Cancel(true));
    EXPECT_EQ(loader.m_nCalls, 1);
    EXPECT_TRUE(loader.m_Cancel.m_bCancelled);
}

TEST_F(FileLoaderCancel, OutsideRecordThatIsSetPreventsALoad)
{
    FILE_LOADER_CANCEL outside;
    outside.m_bCancelled = true;
    m_Loader.m_pCancel = &outside;
    m_Buffer.FromBuffer("old", 3);
    EXPECT_FALSE(Load());
    EXPECT_EQ(m_Record.nCreated, 0);
    EXPECT_EQ(m_Buffer.GetSize(), 0) << "as after any failure";
    EXPECT_TRUE(outside.m_bCancelled);
    outside.m_bCancelled = false;
    EXPECT_TRUE(Load());
}

TEST_F(FileLoaderCancel, OutsideRecordIsTheOneInForce)
{
    FILE_LOADER_CANCEL outside;
    CancelListener listener;
    m_Loader.m_pCancel = &outside;
    m_Loader.m_Cancel.m_pCallback = &listener;
    m_Loader.m_Cancel.m_bCancelled = true;
    m_Script.onRead = [&] { EXPECT_TRUE(outside.m_pCallback->CancelHelper_Cancel(true)); };
    EXPECT_FALSE(Load());
    EXPECT_EQ(m_Record.aryReads.size(), 1u);
    EXPECT_TRUE(outside.m_bCancelled);
    EXPECT_EQ(outside.m_pCallback, static_cast<ICancelHelperCallback*>(&m_Loader));
    EXPECT_FALSE(m_Loader.m_Cancel.m_bCancelled) << "its own is cleared when a load begins,";
    EXPECT_EQ(listener.m_aryFlags, std::vector<bool>{false}) << "and its callback is told";
}

TEST_F(FileLoaderCancel, CallbackHearsOfChangesOnly)
{
    CancelListener listener;
    m_Loader.m_Cancel.m_pCallback = &listener;
    for (bool bCancel : {true, true, false, false, true})
        m_Loader.Cancel(bCancel);
    EXPECT_EQ(listener.m_aryFlags, (std::vector<bool>{true, false, true}));
}

TEST_F(FileLoaderCancel, OneLoadAtATime)
{
    LyBuffer other;
    other.FromBuffer("old", 3);
    m_Script.onOpen = [&]
    {
        EXPECT_TRUE(m_Loader.m_bBusy);
        EXPECT_FALSE(m_Loader.LoadBuffer(LyFilename(URL), other));
    };
    EXPECT_TRUE(Load());
    EXPECT_EQ(m_Record.nCreated, 1);
    EXPECT_EQ(other.GetSize(), 3) << "at once: it may be the buffer of the load that is running";
    EXPECT_EQ(m_Buffer.GetSize(), 1'000'000);
}

TEST_F(FileLoaderCancel, FromAnotherThreadBreaksABlockingRead)
{
    Gate reading;
    Gate closed;
    m_Script.bCanCancel = false;
    m_Script.onRead = [&]
    {
        reading.Open();
        closed.Pass(); // as a reader that blocks until it is closed
    };
    bool bLoaded = true;
    std::thread loading([&] { bLoaded = Load(); });
    reading.Pass();
    m_Loader.Cancel(true); // the lock is free while the read blocks
    EXPECT_EQ(m_Record.nClosed, 1);
    closed.Open();
    loading.join();
    EXPECT_FALSE(bLoaded);
    EXPECT_EQ(m_Buffer.GetSize(), 0);
}

TEST_F(FileLoaderCancel, FromAnotherThreadAtAnyMoment)
{
    std::atomic<bool> bStop{false};
    std::thread cancelling(
        [&]
        {
            while (!bStop)
            {
                m_Loader.Cancel(true);
                std::this_thread::yield();
            }
        });
    for (int n = 0; n < 200; ++n)
    {
        const bool bLoaded = Load();
        EXPECT_EQ(m_Buffer.GetSize(), bLoaded ? 1'000'000 : 0);
    }
    bStop = true;
    cancelling.join();
    EXPECT_TRUE(Load());
}
