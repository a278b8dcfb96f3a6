#include "LyThread.h"
#include "RawTable.h"
#include <gtest/gtest.h>
#include <type_traits>

namespace
{
// Answers every operation with the place it has in the list of operations, 1 to 30.
class SlotThread : public LyThread
{
public:
    static inline int s_nSlot = 0;

    bool MainThreadMessageManager_ProcessMainThreadMessage(int, long long) override { return Note(1); }
    ~SlotThread() override { Note(2); }
    bool Start(int, bool) override { return Note(4); }
    bool Stop(int) override { return Note(5); }
    bool Cancel(bool) override { return Note(6); }
    void PumpMainThreadMessages() override { Note(7); }
    int SetPriority(int) override { return Note(8); }
    bool GetRunning() override { return Note(9); }
    void WaitUntilFinished() override { Note(10); }
    void WaitCheckingCancel(int, LyEvent*) override { Note(11); }
    void WaitCheckingCancel(int, void*) override { Note(12); }
    bool GetReturnValue() override { return Note(13); }
    pthread_t GetThreadId() override
    {
        Note(14);
        return pthread_t{};
    }
    bool GetCancel() override { return Note(15); }
    LyEvent* GetCancelEvent() override
    {
        Note(16);
        return nullptr;
    }
    bool GetAllowHardKill() override { return Note(17); }
    int GetRunCount() override { return Note(18); }
    void SetTimeout(int) override { Note(19); }
    void SetPumpCOMMessagesOnStop(bool) override { Note(20); }
    void SetWaitForStopLoopSleepMS(int) override { Note(21); }
    void SetAssertOnHardKill(bool) override { Note(22); }
    void SetPumpMainThreadMessagesOnStop(bool) override { Note(23); }
    void SetUsesCOM(bool) override { Note(24); }
    bool Thread() override { return Note(25); }
    bool ProcessMainThreadMessage(int, long long) override { return Note(26); }
    bool Setup() override { return Note(27); }
    bool StartThread(int) override { return Note(28); }
    void CleanupThread(void*) override { Note(29); }
    void EndThread() override { Note(30); }

private:
    static bool Note(int nSlot)
    {
        s_nSlot = nSlot;
        return true;
    }
};

// A class that adds an operation of its own: it must come right behind the list.
class LongerThread : public SlotThread
{
public:
    virtual void Added() { s_nSlot = 31; }
};
} // namespace

TEST(LyThreadSlots, OperationsStandInTheirOrder)
{
    LongerThread thread;
    const int DESTRUCTOR = 2;
    const int DELETING_DESTRUCTOR = 3;
    for (int nSlot = 1; nSlot <= 31; ++nSlot)
    {
        if (nSlot == DESTRUCTOR || nSlot == DELETING_DESTRUCTOR)
            continue;
        SlotThread::s_nSlot = 0;
        // Integer arguments go in registers here, so that operations that take fewer see their own.
        CallSlot<void, long, long>(static_cast<LyThread*>(&thread), nSlot - 1, 0, 0);
        EXPECT_EQ(SlotThread::s_nSlot, nSlot);
    }
}

TEST(LyThreadSlots, DestructorsStandSecondAndThird)
{
    LyThread* pThread = new LongerThread;
    SlotThread::s_nSlot = 0;
    CallSlot<void>(pThread, 3 - 1); // destroys and frees
    EXPECT_EQ(SlotThread::s_nSlot, 2);

    alignas(LongerThread) unsigned char aryMemory[sizeof(LongerThread)];
    pThread = new (aryMemory) LongerThread;
    SlotThread::s_nSlot = 0;
    CallSlot<void>(pThread, 2 - 1); // destroys only
    EXPECT_EQ(SlotThread::s_nSlot, 2);
}

TEST(LyThreadSlots, AConstReferenceReachesTheSameOperations)
{
    SlotThread worker;
    const LyThread& thread = worker;
    const auto GetSlot = [](auto Call)
    {
        SlotThread::s_nSlot = 0;
        (void)Call();
        return SlotThread::s_nSlot;
    };
    EXPECT_EQ(GetSlot([&] { return thread.GetRunning(); }), 9);
    EXPECT_EQ(GetSlot([&] { return thread.GetReturnValue(); }), 13);
    EXPECT_EQ(GetSlot([&] { return thread.GetThreadId(); }), 14);
    EXPECT_EQ(GetSlot([&] { return thread.GetCancel(); }), 15);
    EXPECT_EQ(GetSlot([&] { return thread.GetRunCount(); }), 18);
}

TEST(LyThreadSlots, CallbackInterfaceIsTheFirstBase)
{
    LyThread thread;
    EXPECT_EQ(static_cast<void*>(static_cast<IMainThreadMessageManagerCallback*>(&thread)),
              static_cast<void*>(&thread));
    static_assert(!std::has_virtual_destructor_v<IMainThreadMessageManagerCallback>);
    static_assert(std::has_virtual_destructor_v<LyThread>);
}

TEST(LyThreadSlots, FieldsStandInTheirOrder)
{
    struct Fields : LyThread
    {
        bool Check() const
        {
            const void* const aryFields[] = {&m_hThread,
                                             &m_hThreadId,
                                             &m_bCancel,
                                             &m_Lock,
                                             &m_CancelEvent,
                                             &m_nTimeoutMS,
                                             &m_nStopLoopSleepMS,
                                             &m_nRunCount,
                                             &m_bReturnValue,
                                             &m_bRegistered,
                                             &m_bRegisterOnStart,
                                             &m_bAssertOnHardKill,
                                             &m_bPumpCOMMessagesOnStop,
                                             &m_bPumpMainThreadMessagesOnStop,
                                             &m_bUsesCOM};
            const void* pLast = this;
            for (const void* pField : aryFields)
            {
                if (pField <= pLast)
                    return false;
                pLast = pField;
            }
            return m_nTimeoutMS == -1 && m_nStopLoopSleepMS == 20 && m_nRunCount == 0 && !m_bReturnValue &&
                   !m_bRegistered && !m_bRegisterOnStart && m_bAssertOnHardKill && !m_bPumpCOMMessagesOnStop &&
                   m_bPumpMainThreadMessagesOnStop && !m_bUsesCOM && m_CancelEvent.GetFlags() == 1;
        }
        bool CheckSetters()
        {
            SetTimeout(11);
            SetWaitForStopLoopSleepMS(12);
            SetAssertOnHardKill(false);
            SetPumpCOMMessagesOnStop(true);
            SetPumpMainThreadMessagesOnStop(false);
            SetUsesCOM(true);
            return m_nTimeoutMS == 11 && m_nStopLoopSleepMS == 12 && !m_bAssertOnHardKill && m_bPumpCOMMessagesOnStop &&
                   !m_bPumpMainThreadMessagesOnStop && m_bUsesCOM;
        }
    };
    Fields fields;
    EXPECT_TRUE(fields.Check());
    EXPECT_TRUE(fields.CheckSetters());
}
